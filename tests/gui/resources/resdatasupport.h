// What the tests of resource data share.
#pragma once

#include "screensupport.h"
#include "tarvix/pictype.h"
#include "tarvix/resdata.h"
#include "tarvix/winctrl.h"

/// A screen, and files that scripts name: pic.bmp of 24 bits and pal.bmp of 8
/// bits, 8 by 6 pixels, each with its own colour; and font.xbf.
class CResDataTest : public CScreenTest
{
protected:
    enum
    {
        WIDTH = 8,
        HEIGHT = 6
    };

    CResDataTest()
    {
        SetMode(640, 480, 24);
        EXPECT_EQ(1, glb->m_pWinCtrl->Create());
        CBitmap picture;
        EXPECT_EQ(1, picture.CreateRGB(WIDTH, HEIGHT, 24, 8, 8, 8, 0, 8, 16, 0));
        CPalette palette;
        for (xlong y = 0; y < HEIGHT; ++y)
            for (xlong x = 0; x < WIDTH; ++x)
            {
                const TRGBA Color = ColorAt(x, y);
                picture.PutPixel(x, y, &Color);
                palette.SetIndex(&Color, y * WIDTH + x);
            }
        EXPECT_EQ(1, picture.Save("pic.bmp", nullptr, nullptr, nullptr, 0)) << LastError();
        CBitmap indexed;
        EXPECT_EQ(1, indexed.CreateIndex(WIDTH, HEIGHT, 8, &palette, 0));
        for (xlong y = 0; y < HEIGHT; ++y)
            for (xlong x = 0; x < WIDTH; ++x)
                indexed.m_pData[y * indexed.m_lPitch + x] = (unsigned char)(y * WIDTH + x);
        EXPECT_EQ(1, indexed.Save("pal.bmp", nullptr, nullptr, nullptr, 0)) << LastError();
        CFont font;
        const TCharData chars[] = { { 1, 0, 3 }, { 4, 0, 3 }, { 0, 0, -1 } };
        font.SetFont(&indexed, chars, 'A', 5, 1);
        EXPECT_EQ(1, font.Save("font.xbf", 0)) << LastError();
    }

    /// All multiples of 8, so that 16 bits hold them.
    static TRGBA ColorAt(xlong lX, xlong lY)
    {
        return TRGBA((unsigned char)(8 + 8 * lX), (unsigned char)(16 + 8 * lY), (unsigned char)(240 - 8 * lX));
    }

    /// The pixels of a bitmap as "r,g,b" one behind the other.
    static std::string Pixels(CBitmap *pBitmap)
    {
        std::string str;
        for (xlong y = 0; y < pBitmap->m_lHeight; ++y)
            for (xlong x = 0; x < pBitmap->m_lWidth; ++x)
            {
                TRGBA Color(0, 0, 0);
                pBitmap->GetPixel(x, y, &Color);
                str += Text(Color) + " ";
            }
        return str;
    }

    /// What Pixels gives of an area of the picture, black outside of it.
    static std::string Area(xlong lX, xlong lY, xlong lWidth, xlong lHeight)
    {
        std::string str;
        for (xlong y = lY; y < lY + lHeight; ++y)
            for (xlong x = lX; x < lX + lWidth; ++x)
                str += Text(x < 0 || y < 0 || x >= WIDTH || y >= HEIGHT ? TRGBA(0, 0, 0) : ColorAt(x, y)) + " ";
        return str;
    }

    static std::string Text(const TRGBA &Color)
    {
        return std::to_string(Color.ucRed) + "," + std::to_string(Color.ucGreen) + "," + std::to_string(Color.ucBlue);
    }

    /// Goes to an item of the "Data" chunk.
    static void GoTo(CResData &res, const char *pszKeyword)
    {
        ASSERT_EQ(1, res.EnterDataChunk());
        ASSERT_EQ(1, res.FindItem(pszKeyword, nullptr, nullptr, nullptr)) << pszKeyword;
    }
};
