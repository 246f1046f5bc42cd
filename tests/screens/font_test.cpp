#include "tarvix/font.h"

#include "allocations.h"
#include "screensupport.h"
#include "tarvix/bitmap.h"
#include "tarvix/xiff.h"

namespace
{
// Every printable glyph is 5 wide, 9 high; a blank is 4, spacing 1, a line 11.
class CFontTest : public CScreenTest
{
protected:
    CFontTest()
    {
        SetMode(640, 480, 24);
        for (int n = 0; n < 94; ++n)
            m_Cells[n] = { (short)(n % 20 * 5), (short)(n / 20 * 9), 5 };
        m_Cells[94] = { 0, 0, -1 };
        EXPECT_EQ(1, m_Picture.CreateRGB(100, 45, 24, 8, 8, 8, 16, 8, 0, 0));
        m_Picture.m_rcClip.Set(0, 0, 99, 44);
        // Each cell its own grey, none of them the key; the key is the first pixel.
        for (int n = 0; n < 94; ++n)
            for (int y = 0; y < 9; ++y)
                for (int x = 0; x < 5; ++x)
                {
                    const TRGBA Grey((unsigned char)(100 + n), (unsigned char)(100 + n), (unsigned char)(100 + n));
                    m_Picture.PutPixel(m_Cells[n].sX + x, m_Cells[n].sY + y, &Grey);
                }
        const TRGBA Key(0, 0, 0);
        m_Picture.PutPixel(0, 0, &Key);
        EXPECT_EQ(1, m_Font.SetFont(&m_Picture, m_Cells, 33, 9, 1));
    }

    std::string Size(const char *pszText, short sWidth, short sHeight, xlong lFlags)
    {
        return std::to_string(m_Font.GetTextWidth(pszText, sWidth, sHeight, lFlags)) + " x " +
               std::to_string(m_Font.GetTextHeight(pszText, sWidth, sHeight, lFlags));
    }

    TCharData m_Cells[95];
    CBitmap m_Picture;
    CFont m_Font;
};

TEST_F(CFontTest, MeasuresLinesWordsAndBlanks)
{
    EXPECT_EQ(1, m_Font.SetCtrlCode(1, FONT_RIGHT));
    EXPECT_EQ(1, m_Font.SetCtrlCode(2, FONT_LEFT));
    EXPECT_EQ(1, m_Font.SetBasic(3, FONT_DOWN, 7));
    EXPECT_EQ(1, m_Font.SetBasic(4, FONT_UP, 2));
    EXPECT_EQ(1, m_Font.SetCtrlCode(5, 55)); // no effect, and its argument is none either
    EXPECT_EQ(0, m_Font.SetBasic(65, FONT_NEWLINE, 255));
    const struct
    {
        const char *pszText;
        short sWidth, sHeight;
        xlong lFlags;
        const char *pszSize;
    } cases[] = {
        { "abc", -1, -1, 0, "18 x 9" },
        { "abc ", -1, -1, 0, "22 x 9" },
        { "abc ", -1, -1, FONT_NOTRAILING, "18 x 9" },
        { "a\nbcd", -1, -1, 0, "18 x 20" },
        { "abcd\nb", -1, -1, 0, "24 x 20" },
        { "abc\n", -1, -1, 0, "18 x 20" },
        { "a\nbcd", -1, -1, FONT_SINGLELINE, "6 x 20" }, // the step down counts
        { "ab cd", 27, -1, 0, "16 x 20" },
        { "ab cd", 28, -1, 0, "28 x 9" },
        { "ab cd", 27, -1, FONT_NOTRAILING, "12 x 20" },
        { "ab cd", 27, -1, FONT_SINGLELINE, "27 x 9" },
        { "ab cd", 27, -1, FONT_SINGLELINE | FONT_NOTRAILING, "12 x 9" },
        { "abcdef", 20, -1, 0, "36 x 9" },          // no break inside a word
        { "x abcdef y", 20, -1, 0, "40 x 31" },     // but one before and behind it
        { "a b\tc\x80z\xff", -1, -1, 0, "30 x 9" }, // a code without a cell takes the spacing, 255 nothing
        { "a\1\x14z", -1, -1, 0, "32 x 9" },
        { "ab\2\6z", -1, -1, 0, "12 x 9" },
        { "a\3b\4c", -1, -1, 0, "18 x 14" },
        { "a\5zb", -1, -1, 0, "12 x 9" },
        { "a\1", -1, -1, 0, "261 x 9" }, // the argument is missing: the text ends
        { "", 50, 50, FONT_CENTERH, "0 x 9" },
    };
    for (const auto &c : cases)
        EXPECT_EQ(c.pszSize, Size(c.pszText, c.sWidth, c.sHeight, c.lFlags)) << c.pszText << ", " << c.sWidth;
}

// Greedy wrapping once more, by words.
TEST_F(CFontTest, FindsTheLinesThatAPlainModelFinds)
{
    std::mt19937 random(12);
    for (int nCase = 0; nCase < 500; ++nCase)
    {
        std::string strText;
        for (unsigned u = 0; u < 2 + random() % 12; ++u)
        {
            strText += std::string(1 + random() % 7, (char)('a' + u));
            strText += random() % 5 ? std::string(random() % 3 ? 1 : 2, ' ') : "\n";
        }
        const short sWidth = (short)(20 + random() % 60);
        std::vector<size_t> starts = { 0 };
        for (size_t ul = 0, ulX = 0; ul < strText.size();)
        {
            if (strText[ul] == '\n')
            {
                starts.push_back(++ul);
                ulX = 0;
            }
            else if (strText[ul] == ' ')
            {
                ++ul;
                ulX += 4;
            }
            else
            {
                const size_t ulEnd = std::min(strText.find_first_of(" \n", ul), strText.size());
                if (ulX && ulX + (ulEnd - ul) * 6 > (size_t)sWidth)
                {
                    starts.push_back(ul);
                    ulX = 0;
                }
                ulX += (ulEnd - ul) * 6;
                ul = ulEnd;
            }
        }
        EXPECT_EQ((short)(starts.size() * 11 - 2), m_Font.GetTextHeight(strText.c_str(), sWidth, -1, 0));
        TTextInfo info;
        for (size_t ul = 0; ul < starts.size(); ++ul)
        {
            ASSERT_EQ(1, m_Font.GetLineIndex(strText.c_str(), sWidth, -1, (short)(ul + 1), &info, 0));
            ASSERT_EQ(starts[ul], (size_t)info.sLineStart) << strText;
            ASSERT_EQ(ul + 1 < starts.size() ? starts[ul + 1] : strText.size(), (size_t)info.sLineEnd) << strText;
        }
        ASSERT_EQ(0, m_Font.GetLineIndex(strText.c_str(), sWidth, -1, (short)(starts.size() + 1), &info, 0));
        ASSERT_EQ(0, info.sLineStart + info.sLineEnd);
        EXPECT_EQ(0, m_Font.GetLineIndex(strText.c_str(), sWidth, -1, 0, &info, 0));
    }
}

// What each target shows, glyph by glyph: cells are told apart by their grey.
TEST_F(CFontTest, DrawsWhereTheBoxSaysOnEveryTarget)
{
    const struct
    {
        const char *pszName, *pszText;
        short sX, sY, sWidth, sHeight;
        xlong lFlags;
        bool bAll;
        std::vector<std::pair<xlong, xlong>> glyphs; ///< of "a", "b", ... in order
    } cases[] = {
        { "Plain", "ab", 10, 20, 100, 50, 0, true, { { 10, 20 }, { 16, 20 } } },
        { "Wrapped", "a b", 10, 20, 12, 50, 0, true, { { 10, 20 }, { 10, 31 } } },
        { "Centred", "a\nbc", 10, 20, 40, 50, FONT_CENTERH, true, { { 27, 20 }, { 24, 31 }, { 30, 31 } } },
        { "CentredDown", "a", 10, 20, 40, 50, FONT_CENTERV, true, { { 10, 40 } } },
        { "WholeTarget", "ab", 10, 20, -1, -1, 0, true, { { 10, 20 }, { 16, 20 } } },
        { "BelowTheBox", "a\nb", 10, 20, 40, 11, 0, true, { { 10, 20 } } },
        { "CutOff", "ab c", 10, 20, 8, 50, FONT_SINGLELINE, false, { { 10, 20 }, { 16, 20 } } },
    };
    for (const auto &c : cases)
        for (const int nTarget : { (int)FONT_TARGET_SCREEN, (int)FONT_TARGET_GUI, 1 })
        {
            SCOPED_TRACE(std::string(c.pszName) + " on " + std::to_string(nTarget));
            CBitmap bitmap;
            ASSERT_EQ(1, bitmap.CreateRGB(640, 480, 24, 8, 8, 8, 16, 8, 0, 0));
            bitmap.m_rcClip.Set(0, 0, 639, 479);
            memset(Screen()->LockScreenBuffer(), 0, (size_t)Mode().lRowBytes * 480);
            TTextInfo info;
            const xulong ulResult = m_Font.Text(nTarget == 1 ? &bitmap : (CBitmap *)(xparam)nTarget, c.pszText, c.sX,
                                                c.sY, c.sWidth, c.sHeight, nullptr, &info, c.lFlags);
            EXPECT_EQ(c.bAll ? (xulong)-1 : (xulong)c.sHeight << 16 | (xulong)c.sWidth, ulResult);
            std::vector<unsigned char> model(640 * 480);
            char cGlyph = 'a';
            for (const auto &[lX, lY] : c.glyphs)
            {
                for (xlong y = 0; y < 9; ++y)
                    for (xlong x = 0; x < 5; ++x)
                        if (c.bAll || lX + x < c.sX + c.sWidth)
                            model[(size_t)((lY + y) * 640 + lX + x)] = (unsigned char)(100 + cGlyph - 33);
                ++cGlyph;
            }
            const unsigned char *pRow = nTarget == 1 ? bitmap.m_pData : Screen()->LockScreenBuffer();
            const xlong lPitch = nTarget == 1 ? bitmap.m_lPitch : Mode().lRowBytes;
            for (size_t ul = 0; ul < model.size(); ++ul)
                ASSERT_EQ(model[ul], pRow[ul / 640 * (size_t)lPitch + ul % 640 * 3]) << ul % 640 << ", " << ul / 640;
        }
    EXPECT_EQ(1u, m_Font.Text(nullptr, "", 0, 0, 10, 10, nullptr, nullptr, 0));
    EXPECT_EQ(1u, m_Font.Text(nullptr, nullptr, 0, 0, 10, 10, nullptr, nullptr, 0));
}

TEST_F(CFontTest, ColoursArePreparedOnce)
{
    const TRGBA Orange(255, 128, 0), Other(1, 2, 3);
    EXPECT_EQ(1, m_Font.CreateColor(Orange));
    EXPECT_EQ(0, m_Font.CreateColor(Orange));
    CBitmap bitmap;
    ASSERT_EQ(1, bitmap.CreateRGB(20, 20, 24, 8, 8, 8, 16, 8, 0, 0));
    bitmap.m_rcClip.Set(0, 0, 19, 19);
    const auto Drawn = [&](const TRGBA &Color)
    {
        TRGBA Pixel;
        m_Font.Text(&bitmap, "A", 0, 0, -1, -1, &Color, nullptr, 0);
        bitmap.GetPixel(2, 2, &Pixel);
        return std::vector<int>{ Pixel.ucRed, Pixel.ucGreen, Pixel.ucBlue };
    };
    const int nGrey = 100 + 'A' - 33;
    EXPECT_EQ((std::vector<int>{ nGrey, nGrey * 128 / 255, 0 }), Drawn(Orange));
    EXPECT_EQ((std::vector<int>{ nGrey, nGrey, nGrey }), Drawn(Other)) << "not prepared: the font's own";
    CFont empty;
    EXPECT_EQ(0, empty.CreateColor(Orange));
    EXPECT_EQ(0, empty.Create(1, 1, 1, nullptr));
    EXPECT_EQ(XERR_NOT_IMPLEMENTED, glb->m_Error.GetErrCode());
}

TEST_F(CFontTest, FilesComeBackTheSame)
{
    EXPECT_EQ(1, m_Font.SetCtrlCode(6, FONT_DOWN));
    ASSERT_EQ(1, m_Font.Save("font.xbf", 0));
    for (const xlong lDepth : { 8, 16, 24 })
    {
        SetMode(640, 480, lDepth);
        CFont font;
        ASSERT_EQ(1, font.Load("font.xbf", 0)) << LastError();
        EXPECT_EQ(0, memcmp(font.m_Chars, m_Font.m_Chars, sizeof(font.m_Chars)));
        EXPECT_EQ(9, font.m_sHeight);
        EXPECT_EQ(1, font.m_sSpacing);
        EXPECT_EQ(11, font.m_sLineHeight);
        EXPECT_EQ(lDepth, font.m_pScreenBitmap->m_lDepth);
        EXPECT_EQ(lDepth, Mode().lDepth);
        EXPECT_EQ(1, font.CreateColor(TRGBA(0, 255, 0)));
        EXPECT_EQ((xulong)-1, font.Text(nullptr, "Text", 5, 5, 100, 20, nullptr, nullptr, 0));
        ASSERT_EQ(1, font.Save("again.xbf", 0));
        CFont again;
        EXPECT_EQ(1, again.Load("again.xbf", 0)) << LastError();
    }
}

TEST_F(CFontTest, DamagedFilesAreRefused)
{
    ASSERT_EQ(1, m_Font.Save("font.xbf", 0));
    const std::string strGood = ReadFile("font.xbf");
    const auto Without = [&](const char *pszChunk)
    {
        std::string str = strGood;
        str[str.find(pszChunk)] = 'x';
        return str;
    };
    std::string strVersion = strGood;
    strVersion[strGood.find("HEADER") + 11] = 2;
    const struct
    {
        std::string strBytes;
        const char *pszText;
    } cases[] = {
        { Without("XBF"), "Not a XBF file" },
        { Without("HEADER"), "Header chunk missing in XBF file" },
        { strVersion, "Unsupported XBF version" },
        { Without("LETTER DATA"), "Letter data chunk missing in XBF file" },
        { Without("FONT BITMAP"), "Bitmap chunk missing in XBF file" },
    };
    for (const auto &c : cases)
    {
        WriteFile("bad.xbf", c.strBytes);
        CFont font;
        EXPECT_EQ(0, font.Load("bad.xbf", 0));
        EXPECT_EQ(c.pszText, LastError());
    }
    for (size_t ul = 0; ul < strGood.size(); ul += ul < 2400 ? 7 : 997)
    {
        WriteFile("cut.xbf", strGood.substr(0, ul));
        CFont font;
        EXPECT_EQ(0, font.Load("cut.xbf", 0)) << ul;
    }
    // Cells outside the picture: drawn as far as there are pixels.
    for (CFont::TChar &c : m_Font.m_Chars)
        c = { (short)(c.sX * 300), (short)(c.sY - 20000), (short)(c.sWidth + 32000), c.ucType, c.ucValue };
    ASSERT_EQ(1, m_Font.Save("wild.xbf", 0));
    CFont wild;
    ASSERT_EQ(1, wild.Load("wild.xbf", 0));
    wild.CreateColor(TRGBA(9, 9, 9));
    const TRGBA Color(9, 9, 9);
    wild.Text(nullptr, "wild text\nin a box", 5, 5, 100, 20, &Color, nullptr, FONT_CENTERH);
}

TEST_F(CFontTest, LoadRunsOutOfMemoryWithoutLoss)
{
    ASSERT_EQ(1, m_Font.Save("font.xbf", 0));
    FailEachAllocation(
        [](auto arm)
        {
            CFont font;
            arm();
            return font.Load("font.xbf", 0) && font.CreateColor(TRGBA(1, 2, 3));
        },
        4);
}
} // namespace
