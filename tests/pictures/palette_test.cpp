#include "tarvix/palette.h"

#include "core/heap.h"
#include "core/simd.h"
#include "palettemodel.h"
#include "slots.h"
#include "support.h"

#include <random>

namespace
{
class CPaletteTest : public CFolderTest
{
};

std::string PalBytes()
{
    std::string str(24, 'h');
    for (int i = 0; i < 256; ++i)
        str += { (char)(i * 3), (char)(i * 5 + 1), (char)(255 - i), 'x' };
    return str;
}

TEST_F(CPaletteTest, SearchesAsTheModelDoes)
{
    std::mt19937 random(11);
    const int anSpans[] = { 256, 256, 4, 2 }; // few values make ties
    for (int i = 0; i < 4000; ++i)
    {
        CPalette palette;
        const int nSpan = anSpans[i % 4];
        const auto Byte = [&] { return (unsigned char)(nSpan == 256 ? random() : random() % nSpan * 85); };
        for (TRGBA &colour : palette.m_Colors)
            colour = TRGBA(Byte(), Byte(), Byte(), (unsigned char)random());
        if (i % 3)
        {
            palette.m_ucFirst = (unsigned char)random();
            palette.m_ucLast = (unsigned char)(i % 2 ? random() : palette.m_ucFirst + random() % 20);
        }
        const unsigned auRGB[] = { Byte(), Byte(), Byte() };
        const TRGBA colour((unsigned char)auRGB[0], (unsigned char)auRGB[1], (unsigned char)auRGB[2], 9);
        for (int nLimit : { SIMD_BASE, SIMD_ALL })
        {
            s_lSimdLimit = nLimit;
            ASSERT_EQ(MatchModel(palette, auRGB), palette.FindMatch(&colour)) << i;
            ASSERT_EQ(SecondModel(palette, auRGB), palette.FindSecondBest(&colour)) << i;
        }
    }
}

TEST_F(CPaletteTest, SearchLeavesOutTheLastEntryOnce)
{
    CPalette palette;
    const TRGBA white(255, 255, 255);
    EXPECT_EQ(254, palette.FindMatch(&white));
    EXPECT_EQ(255, palette.FindSecondBest(&white));
    palette.m_ucFirst = palette.m_ucLast = 10;
    EXPECT_EQ(10, palette.FindMatch(&white));
    EXPECT_EQ(10, palette.FindSecondBest(&white));
    palette.m_ucLast = 5;
    EXPECT_EQ(10, palette.FindMatch(&white));
    EXPECT_EQ(10, palette.FindSecondBest(&white));
}

TEST_F(CPaletteTest, IndicesOutOfRange)
{
    CPalette palette;
    const TRGBA red(1, 2, 3, 4);
    palette.m_Colors[7].ucAlpha = 77;
    for (xlong lIndex : { 256, 300, -1, INT_MIN })
    {
        TRGBA colour(9, 9, 9, 42);
        EXPECT_EQ(1, palette.SetIndex(&red, lIndex));
        EXPECT_EQ(0, palette.GetIndex(&colour, lIndex));
        EXPECT_EQ(TRGBA(0, 0, 0, 42), colour);
    }
    for (int i = 0; i < 256; ++i)
        EXPECT_EQ(i, palette.m_Colors[i].ucGreen) << "changed by an index out of range";
    EXPECT_EQ(1, palette.SetIndex(&red, 7));
    EXPECT_EQ(TRGBA(1, 2, 3, 77), palette.m_Colors[7]);
    TRGBA colour(0, 0, 0, 42);
    EXPECT_EQ(1, palette.GetIndex(&colour, 7));
    EXPECT_EQ(TRGBA(1, 2, 3, 42), colour);
}

TEST_F(CPaletteTest, LoadsWhatIsThere)
{
    const std::string strFile = PalBytes();
    for (size_t ulSize = 0; ulSize <= strFile.size() + 3; ulSize += ulSize < 60 || ulSize > 1040 ? 1 : 14)
    {
        WriteFile(Path("cut.pal"), (strFile + "abc").substr(0, ulSize));
        CPalette palette;
        palette.m_Colors[0].ucAlpha = 5;
        ASSERT_EQ(ulSize >= strFile.size(), palette.Load("cut.pal") == 1) << ulSize;
        EXPECT_STREQ("cut.pal", palette.m_pszName);
        const int nWhole = ulSize < 28 ? 0 : std::min((int)(ulSize - 24) / 4, 256);
        for (int i = 0; i < 256; ++i)
            ASSERT_EQ(i < nWhole ? (unsigned char)(i * 5 + 1) : i, palette.m_Colors[i].ucGreen) << ulSize;
        EXPECT_EQ(5, palette.m_Colors[0].ucAlpha);
    }
    CPalette palette;
    EXPECT_EQ(0, palette.Load("missing.pal"));
    EXPECT_EQ("Palette - Unable to open file", LastError());
    EXPECT_STREQ(".pal", palette.m_pszName);
}

TEST_F(CPaletteTest, CloneCopiesAllButAnEqualName)
{
    CPalette from, to;
    WriteFile(Path("a.pal"), PalBytes());
    ASSERT_EQ(1, from.Load("a.pal"));
    from.m_ucFirst = 3;
    from.m_ucLast = 200;
    from.m_Colors[9].ucAlpha = 88;
    ASSERT_EQ(1, to.Clone(&from));
    EXPECT_EQ(3, to.m_ucFirst);
    EXPECT_EQ(200, to.m_ucLast);
    EXPECT_EQ(0, memcmp(from.m_Colors, to.m_Colors, sizeof from.m_Colors));
    EXPECT_STREQ("a.pal", to.m_pszName);
    EXPECT_NE(from.m_pszName, to.m_pszName);
    const char *pszName = to.m_pszName;
    ASSERT_EQ(1, to.Clone(&from));
    EXPECT_EQ(pszName, to.m_pszName);
    EXPECT_EQ(0, to.Clone(nullptr));
    EXPECT_EQ(200, to.m_ucLast);

    CPalette other;
    HeapFailAt(1);
    EXPECT_EQ(0, other.Clone(&from));
    EXPECT_EQ("CPalette::Clone: Memory allocation for palette name failed.", LastError());
    HeapFailAt(1);
    EXPECT_EQ(0, other.Load("a.pal"));
    EXPECT_EQ("CPalette::Load: Memory allocation for palette name failed.", LastError());
    HeapFailAt(0);
    EXPECT_STREQ(".pal", other.m_pszName);
}

TEST_F(CPaletteTest, MembersLieWhereHostsLookForThem)
{
    CPalette palette;
    const int nTable = sizeof(void *);
    EXPECT_EQ(nTable, OffsetOf(palette, palette.m_ucFirst));
    EXPECT_EQ(nTable + 1, OffsetOf(palette, palette.m_ucLast));
    EXPECT_EQ(nTable + 2, OffsetOf(palette, palette.m_Colors));
    EXPECT_EQ((nTable + 1026 + nTable - 1) / nTable * nTable, OffsetOf(palette, palette.m_pszName));
}
} // namespace
