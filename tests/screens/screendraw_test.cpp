#include "screensupport.h"

#include <array>
#include <utility>

namespace
{
const xlong s_lDepths[] = { 8, 16, 24 };

// What one pixel of a colour is, worked out plainly.
std::vector<unsigned char> PixelOf(CDibScreen &s, TRGBA color)
{
    switch (s.GetActiveMode()->lDepth)
    {
    case 8:
        return { (unsigned char)s.m_Palette.FindMatch(&color) };
    case 16:
    {
        const int n = color.ucRed / 8 << 10 | color.ucGreen / 8 << 5 | color.ucBlue / 8;
        return { (unsigned char)n, (unsigned char)(n >> 8) };
    }
    }
    return { color.ucBlue, color.ucGreen, color.ucRed };
}

class CDrawTest : public CScreenTest
{
protected:
    // Puts a pixel into the model, inside the picture.
    static void Put(std::vector<unsigned char> &frame, const std::vector<unsigned char> &pixel, xlong lX, xlong lY)
    {
        if (lX >= 0 && lY >= 0 && lX < Mode().lWidth && lY < Mode().lHeight)
            memcpy(&frame[(size_t)lY * Mode().lRowBytes + lX * pixel.size()], pixel.data(), pixel.size());
    }
};
} // namespace

TEST_F(CDrawTest, FillRectEqualsAPlainLoop)
{
    for (xlong lDepth : s_lDepths)
    {
        SetMode(640, 480, lDepth);
        CDibScreen &s = *Screen();
        std::mt19937 random(7);
        std::vector<unsigned char> wanted = FillFrame(1);
        for (int n = 0; n < 300; ++n)
        {
            s.SetClip(random() % 700 - 30, random() % 500 - 10, random() % 700 - 30, random() % 500 - 10);
            const xlong lX = random() % 760 - 60, lY = random() % 560 - 40;
            const xlong lWidth = random() % 120 - 5, lHeight = random() % 60 - 5;
            const TRGBA color((unsigned char)random(), (unsigned char)random(), (unsigned char)random());
            s.FillRect(lX, lY, lWidth, lHeight, color);
            for (xlong y = lY; y < lY + lHeight; ++y)
                for (xlong x = lX; x < lX + lWidth; ++x)
                    if (s.m_rcClip.IsPntInRect(x, y))
                        Put(wanted, PixelOf(s, color), x, y);
        }
        EXPECT_EQ("", FirstDifference(wanted, Frame(), Mode())) << lDepth << " bits";
    }
}

// By the tables' definition at every level, and against the quirks at 0.
TEST_F(CDrawTest, FillRectAlphaFollowsTheTables)
{
    for (xlong lDepth : s_lDepths)
    {
        SetMode(640, 480, lDepth);
        for (xlong lPercent : { 0, 1, 3, 4, 33, 50, 99, 100 })
        {
            std::vector<unsigned char> wanted = FillFrame(2);
            Screen()->SetClip(0, 0, 638, 479);
            Screen()->FillRectAlpha(-3, 5, 1000, 100, lPercent);
            for (xlong y = 5; y < 105; ++y)
            {
                for (xlong x = 0; x < 639; ++x)
                {
                    unsigned char *pPixel = &wanted[(size_t)y * Mode().lRowBytes + x * Mode().lBytesPerPixel];
                    if (lDepth == 16)
                    {
                        unsigned short us;
                        memcpy(&us, pPixel, 2);
                        us = *(glb->m_ShadePointers[us] - glb->m_ShadeStepAll[lPercent * 31 / 100]);
                        memcpy(pPixel, &us, 2);
                    }
                    if (lDepth == 24)
                        for (int i = 0; i < 3; ++i)
                            pPixel[i] = glb->m_ClampTable[(unsigned char)-(lPercent * 255 / 100) + pPixel[i]];
                }
            }
            ASSERT_EQ("", FirstDifference(wanted, Frame(), Mode())) << lDepth << " bits, " << lPercent << " percent";
        }
    }
}

TEST_F(CDrawTest, FillRectAlphaSeesWhatAHostPutsIntoTheTables)
{
    SetMode(640, 480, 24);
    glb->m_ClampTable[129 + 200] = 77; // 50 percent of 200
    unsigned char *pFrame = Screen()->LockScreenBuffer();
    memset(pFrame, 200, 640 * 3);
    Screen()->FillRectAlpha(0, 0, 100, 1, 50);
    EXPECT_EQ(std::vector<unsigned char>(300, 77), std::vector<unsigned char>(pFrame, pFrame + 300));
    EXPECT_EQ(200, pFrame[300]);

    SetMode(640, 480, 16);
    glb->m_ShadePointers[0x4d4d][-glb->m_ShadeStepAll[15]] = 0x2323;
    pFrame = Screen()->LockScreenBuffer();
    memset(pFrame, 0x4d, 640 * 2);
    Screen()->FillRectAlpha(0, 0, 100, 1, 50);
    EXPECT_EQ(std::vector<unsigned char>(200, 0x23), std::vector<unsigned char>(pFrame, pFrame + 200));
    EXPECT_EQ(0x4d, pFrame[200]);
}

TEST_F(CDrawTest, EveryShadeOfEveryColourEqualsTheCube)
{
    SetMode(640, 480, 16);
    unsigned char *pFrame = Screen()->LockScreenBuffer();
    for (xlong lPercent = 0; lPercent <= 100; lPercent += 4)
    {
        for (unsigned u = 0; u < 32768; ++u)
        {
            const unsigned short us = (unsigned short)u;
            memcpy(pFrame + u * 2, &us, 2);
        }
        Screen()->FillRectAlpha(0, 0, 640, 52, lPercent);
        for (unsigned u = 0; u < 32768; ++u)
        {
            unsigned short us;
            memcpy(&us, pFrame + u * 2, 2);
            ASSERT_EQ(*(glb->m_ShadePointers[u] - glb->m_ShadeStepAll[lPercent * 31 / 100]), us);
        }
    }
    // A word above 15 bits has no place in the cube.
    const unsigned short us = 0x8123;
    memcpy(pFrame, &us, 2);
    Screen()->FillRectAlpha(0, 0, 1, 1, 50);
    EXPECT_EQ(0, pFrame[0] | pFrame[1]);
}

// The walk pixel by pixel, with its mirroring.
TEST_F(CDrawTest, LinesEqualAPlainWalk)
{
    for (xlong lDepth : s_lDepths)
    {
        SetMode(640, 480, lDepth);
        CDibScreen &s = *Screen();
        std::mt19937 random(11);
        std::vector<unsigned char> wanted = FillFrame(3);
        for (int n = 0; n < 1500; ++n)
        {
            s.SetClip(random() % 200, random() % 200, 300 + random() % 400, 300 + random() % 250);
            xlong lX1 = random() % 800 - 80, lY1 = random() % 640 - 80;
            xlong lX2 = random() % 800 - 80, lY2 = random() % 640 - 80;
            if (n % 5 == 0)
                lX2 = lX1;
            if (n % 7 == 0)
                lY2 = lY1;
            const TRGBA color((unsigned char)random(), (unsigned char)random(), (unsigned char)random());
            s.DrawLine(lX1, lY1, lX2, lY2, color);
            if (!s.ClipLine(lX1, lY1, lX2, lY2))
                continue;
            const xlong lDX = std::abs(lX1 - lX2), lDY = std::abs(lY1 - lY2);
            const bool bRows = lDY > lDX;
            if (bRows ? lY2 < lY1 : lX2 < lX1)
            {
                std::swap(lX1, lX2);
                std::swap(lY1, lY2);
                (bRows ? lX2 : lY2) = 2 * (bRows ? lX1 : lY1) - (bRows ? lX2 : lY2);
            }
            const xlong lLong = bRows ? lDY : lDX, lShort = bRows ? lDX : lDY;
            const xlong lStep = (bRows ? lX1 <= lX2 : lY1 <= lY2) ? 1 : -1;
            xlong lError = 2 * lShort - lLong, lSide = 0;
            for (xlong l = 0; l <= lLong; ++l)
            {
                Put(wanted, PixelOf(s, color), lX1 + (bRows ? lSide : l), lY1 + (bRows ? l : lSide));
                if (lError >= 0)
                {
                    lSide += lStep;
                    lError += 2 * (lShort - lLong);
                }
                else
                    lError += 2 * lShort;
            }
        }
        ASSERT_EQ("", FirstDifference(wanted, Frame(), Mode())) << lDepth << " bits";
    }
}

TEST_F(CDrawTest, LinesAgainstTheirLongAxisAreMirrored)
{
    SetMode(640, 480, 8);
    CDibScreen &s = *Screen();
    s.SetClip(0, 0, 639, 479);
    memset(s.LockScreenBuffer(), 0, 640 * 480);
    s.m_Palette.m_Colors[7].Set(1, 2, 3);
    s.DrawLine(10, 0, 0, 10, TRGBA(1, 2, 3));
    const std::vector<unsigned char> frame = Frame();
    EXPECT_EQ(11, std::count(frame.begin(), frame.end(), 7));
    for (int i = 0; i <= 10; ++i)
        EXPECT_EQ(7, frame[(10 + i) * 640 + i]) << "from (0, 10) downwards";
    // Mirrored out of the picture nothing is written.
    s.DrawLine(10, 470, 0, 479, TRGBA(1, 2, 3));
    s.DrawLine(5, 5, 5, 5, TRGBA(1, 2, 3));
    EXPECT_EQ(7, Frame()[5 * 640 + 5]);
}

TEST_F(CDrawTest, LinesPastACornerEnd)
{
    SetMode(640, 480, 8);
    CDibScreen &s = *Screen();
    s.SetClip(100, 100, 200, 200);
    const struct
    {
        xlong lX1, lY1, lX2, lY2, lResult;
    } cases[] = {
        { 90, 150, 150, 90, 1 },
        { 0, 120, 120, 0, 0 },
        { 50, 101, 120, 60, 0 },
        { 210, 150, 150, 260, 1 },
        { 0, 0, 300, 300, 1 },
        { 150, 0, 150, 500, 1 },
        { 0, 99, 300, 99, 0 },
        { -2000000000, 150, 2000000000, 150, 1 },
        { -2147483647, -2147483647, 2147483647, 2147483647, 1 },
    };
    for (const auto &c : cases)
    {
        xlong lX1 = c.lX1, lY1 = c.lY1, lX2 = c.lX2, lY2 = c.lY2;
        EXPECT_EQ(c.lResult, s.ClipLine(lX1, lY1, lX2, lY2)) << c.lX1 << ", " << c.lY1;
        if (c.lResult)
            EXPECT_TRUE(s.m_rcClip.IsPntInRect(lX1, lY1) && s.m_rcClip.IsPntInRect(lX2, lY2));
    }
}
