#include "tarvix/bitmap.h"

#include "allocations.h"
#include "slots.h"
#include "support.h"
#include "tarvix/misc.h"
#include "tarvix/pictype.h"

#include <random>

namespace
{
class CBitmapTest : public CFolderTest
{
protected:
    // 24 bits, blue first, of random colours.
    void MakeNoise(CBitmap &bitmap, xlong lWidth, xlong lHeight, unsigned uSeed = 1)
    {
        ASSERT_EQ(1, bitmap.CreateRGB(lWidth, lHeight, 24, 8, 8, 8, 0, 8, 16, 0));
        std::mt19937 random(uSeed);
        for (xlong i = 0; i < bitmap.m_lPitch * lHeight; ++i)
            bitmap.m_pData[i] = (unsigned char)random();
    }
    std::string Bytes(const CBitmap &bitmap)
    {
        return std::string((const char *)bitmap.m_pData, (size_t)bitmap.m_lPitch * bitmap.m_lHeight);
    }
};

TEST_F(CBitmapTest, IsEmptyAtFirst)
{
    CBitmap bitmap;
    EXPECT_EQ(1, bitmap.m_bRGB);
    EXPECT_EQ(1, bitmap.m_bChanged);
    EXPECT_EQ(nullptr, bitmap.m_pData);
    CRect rcEmpty;
    rcEmpty.Set(0, 0, -1, -1);
    EXPECT_EQ(1, bitmap.m_rcClip.IsEqual(&rcEmpty));
    EXPECT_EQ(1, bitmap.Free());
}

struct TSizeCase
{
    xlong lWidth, lHeight, lDepth, lResult, lPitch;
};

TEST_F(CBitmapTest, CreatesPaddedRowsOfZeroes)
{
    const TSizeCase aCases[] = {
        { 0, 0, 24, 1, 0 },          { 1, 1, 8, 1, 4 },
        { 5, 2, 16, 1, 12 },         { 5, 3, 24, 1, 16 },
        { 3, 2, 32, 1, 12 },         { 5, 3, 15, 0, 0 },
        { -1, 5, 8, 0, 0 },          { 5, -1, 8, 0, 0 },
        { -4, -4, 24, 0, 0 },        { 0x10000, 0x10000, 8, 0, 0 },
        { INT_MAX, 1, 32, 0, 0 },    { INT_MAX, INT_MAX, 24, 0, 0 },
        { 0x40000001, 4, 32, 0, 0 },
    };
    for (const TSizeCase &c : aCases)
    {
        CBitmap bitmap;
        ASSERT_EQ(c.lResult, bitmap.CreateRGBA(c.lWidth, c.lHeight, c.lDepth, 5, 6, 5, 0, 11, 5, 0, 0, 0))
            << c.lWidth << " by " << c.lHeight;
        EXPECT_EQ(c.lResult != 0, bitmap.m_pData != nullptr);
        if (!c.lResult)
            continue;
        EXPECT_EQ(c.lPitch, bitmap.m_lPitch);
        EXPECT_EQ(c.lDepth / 8, bitmap.m_lBytesPerPixel);
        EXPECT_EQ(c.lWidth - 1, bitmap.m_rcClip.m_lRight);
        EXPECT_EQ(c.lHeight - 1, bitmap.m_rcClip.m_lBottom);
        EXPECT_EQ(std::string((size_t)(c.lPitch * c.lHeight), 0), Bytes(bitmap));
    }
}

TEST_F(CBitmapTest, CreateWithABadDepthChangesNothing)
{
    CBitmap bitmap;
    MakeNoise(bitmap, 4, 4);
    const unsigned char *pData = bitmap.m_pData;
    EXPECT_EQ(0, bitmap.CreateRGBA(9, 9, 15, 5, 5, 5, 0, 10, 5, 0, 0, 0));
    EXPECT_EQ(pData, bitmap.m_pData);
    EXPECT_EQ(4, bitmap.m_lWidth);
    CPalette palette;
    EXPECT_EQ(1, bitmap.CreateIndex(9, 2, 4, &palette, 0)) << "an indexed bitmap takes any depth";
    EXPECT_EQ(0, bitmap.m_bRGB);
    EXPECT_NE(&palette, bitmap.m_pPalette);
    EXPECT_EQ(1, bitmap.CreateIndex(9, 2, 8, bitmap.m_pPalette, 0)) << "its own palette";
    EXPECT_STREQ(".pal", bitmap.m_pPalette->m_pszName);
}

struct TPixelCase
{
    xlong lDepth;
    xlong alBits[4], alShifts[4];
    TRGBA colour;
    std::string strBytes;
    TRGBA read;
};

TEST_F(CBitmapTest, PixelsFollowTheirLayout)
{
    const TPixelCase aCases[] = {
        { 16, { 5, 6, 5 }, { 11, 5, 0 }, TRGBA(255, 255, 255), "\xff\xff", TRGBA(248, 252, 248, 99) },
        { 16, { 5, 6, 5 }, { 11, 5, 0 }, TRGBA(0x12, 0x34, 0x56), "\xaa\x11", TRGBA(0x10, 0x34, 0x50, 99) },
        { 16, { 5, 5, 5 }, { 10, 5, 0 }, TRGBA(255, 0, 8), "\x01\x7c", TRGBA(248, 0, 8, 99) },
        { 24, { 8, 8, 8 }, { 0, 8, 16 }, TRGBA(1, 2, 3), "\3\2\1", TRGBA(1, 2, 3, 99) },
        { 24, { 8, 8, 8 }, { 16, 8, 0 }, TRGBA(1, 2, 3), "\1\2\3", TRGBA(1, 2, 3, 99) },
        { 32, { 8, 8, 8, 8 }, { 24, 16, 8, 0 }, TRGBA(1, 2, 3, 4), "\1\2\3\4", TRGBA(1, 2, 3, 4) },
        { 32, { 8, 8, 8, 8 }, { 0, 8, 16, 24 }, TRGBA(1, 2, 3, 4), "\4\3\2\1", TRGBA(1, 2, 3, 4) },
    };
    for (const TPixelCase &c : aCases)
    {
        CBitmap bitmap;
        const xlong *b = c.alBits, *s = c.alShifts;
        ASSERT_EQ(1, bitmap.CreateRGBA(3, 3, c.lDepth, b[0], b[1], b[2], b[3], s[0], s[1], s[2], s[3], 0));
        EXPECT_EQ(1, bitmap.PutPixel(1, 2, &c.colour));
        const xlong lOffset = 2 * bitmap.m_lPitch + c.lDepth / 8;
        std::string strExpected((size_t)bitmap.m_lPitch * 3, 0);
        strExpected.replace((size_t)lOffset, c.strBytes.size(), c.strBytes);
        EXPECT_EQ(strExpected, Bytes(bitmap));
        TRGBA read(9, 9, 9, 99);
        EXPECT_EQ(1, bitmap.GetPixel(lOffset, &read));
        EXPECT_EQ(c.read, read);
        const bool bFill = c.lDepth == 32 || c.colour.ucRed != c.colour.ucGreen;
        if (!bFill)
            continue;
        ASSERT_EQ(1, bitmap.Fill(&c.colour));
        for (xlong y = 0; y < 3; ++y)
            for (xlong x = 0; x < 3; ++x)
                EXPECT_EQ(c.strBytes,
                          Bytes(bitmap).substr((size_t)(y * bitmap.m_lPitch + x * c.lDepth / 8), c.strBytes.size()));
    }
}

TEST_F(CBitmapTest, FillHasItsWays)
{
    CBitmap bitmap;
    const TRGBA grey(100, 100, 100), red(255, 0, 0);
    ASSERT_EQ(1, bitmap.CreateRGB(3, 2, 16, 5, 6, 5, 11, 5, 0, 0));
    bitmap.m_bChanged = 0;
    EXPECT_EQ(1, bitmap.Fill(&grey));
    EXPECT_EQ(std::string(16, 'd'), Bytes(bitmap)) << "the byte, not the packed value, and padding too";
    EXPECT_EQ(1, bitmap.m_bChanged);
    EXPECT_EQ(1, bitmap.Fill(&red));
    EXPECT_EQ(std::string("\0\xf8\0\xf8\0\xf8", 6) + "dd", Bytes(bitmap).substr(0, 8)) << "padding is left alone";

    // Bytes by position, which is wrong for this format, and meant.
    ASSERT_EQ(1, bitmap.CreateRGB(1, 1, 24, 8, 8, 8, 8, 16, 0, 0));
    const TRGBA colour(1, 2, 3);
    EXPECT_EQ(1, bitmap.Fill(&colour));
    EXPECT_EQ(std::string("\2\1\3", 3), Bytes(bitmap).substr(0, 3));

    CPalette palette;
    ASSERT_EQ(1, bitmap.CreateIndex(3, 2, 8, &palette, 0));
    EXPECT_EQ(1, bitmap.Fill(&grey));
    EXPECT_EQ(std::string(8, 'd'), Bytes(bitmap));
    ASSERT_EQ(1, bitmap.CreateIndex(3, 2, 4, &palette, 0));
    EXPECT_EQ(0, bitmap.Fill(&grey));
}

TEST_F(CBitmapTest, BltPicksThePairs)
{
    CPalette palette;
    CBitmap source, target;
    const xlong alDepths[] = { 8, 16, 24, 32 };
    for (xlong lFrom : alDepths)
        for (xlong lTo : alDepths)
        {
            if (lFrom == 8)
                source.CreateIndex(6, 6, 8, &palette, 0);
            else
                source.CreateRGB(6, 6, lFrom, 5, 6, 5, lFrom == 24 ? 0 : 11, lFrom == 24 ? 8 : 5, lFrom == 24 ? 16 : 0,
                                 0);
            memset(source.m_pData, 0xff, (size_t)source.m_lPitch * 6);
            if (lTo == 8)
                target.CreateIndex(4, 4, 8, &palette, 0);
            else
                target.CreateRGB(4, 4, lTo, 5, 6, 5, lTo == 24 ? 0 : 11, lTo == 24 ? 8 : 5, lTo == 24 ? 16 : 0, 0);
            target.m_bChanged = 0;
            EXPECT_EQ(1, target.Blt(&source, 0, 0, 0, 0, -1, -1, 0, 0, 0));
            EXPECT_EQ(1, target.m_bChanged);
            const bool bCopied = lFrom != 32 && lTo != 32 && (lTo != 8 || lFrom == 8);
            EXPECT_EQ(bCopied, target.m_pData[0] != 0) << lFrom << " to " << lTo;
        }
    source.Free();
    EXPECT_EQ(1, target.Blt(&source, 0, 0, 0, 0, -1, -1, 0, 0, 0)) << "clip and size are still those of the pixels";
    CRect rcArea;
    target.m_bChanged = 0;
    EXPECT_EQ(1, target.BltScale(&source, &rcArea, &rcArea, 0));
    EXPECT_EQ(1, target.m_bChanged);
}

// What a conversion gives is what a copy into a bitmap of that format gives,
// but for the key pass.
TEST_F(CBitmapTest, ConvertRGBIsACopyWithTheKeyKept)
{
    const xlong alTargets[][7] = { { 16, 5, 5, 5, 10, 5, 0 }, { 16, 5, 6, 5, 11, 5, 0 }, { 24, 8, 8, 8, 16, 8, 0 } };
    for (const xlong *t : alTargets)
        for (xlong lFlags : { 0, 1, 2, 3 })
        {
            CBitmap bitmap, copy;
            MakeNoise(bitmap, 37, 11);
            // Neighbours of the key that become equal to it at 16 bits.
            for (xlong x = 0; x < 37; x += 3)
                for (xlong i = 0; i < 3; ++i)
                    bitmap.m_pData[3 * x + i] = (unsigned char)((bitmap.m_pData[i] & ~7) | (x % 8));
            const std::string strBefore = Bytes(bitmap);
            ASSERT_EQ(1, copy.CreateRGB(37, 11, t[0], t[1], t[2], t[3], t[4], t[5], t[6], 0));
            copy.Blt(&bitmap, 0, 0, 0, 0, -1, -1, 0, lFlags, 0);
            const xlong lOldPitch = bitmap.m_lPitch;
            ASSERT_EQ(1, bitmap.ConvertRGB(-1, -1, t[0], t[1], t[2], t[3], t[4], t[5], t[6], lFlags));
            ASSERT_EQ(copy.m_lPitch, bitmap.m_lPitch);
            EXPECT_EQ(1, bitmap.m_bChanged);
            const size_t ulBytes = (size_t)t[0] / 8;
            int nMoved = 0;
            for (xlong y = 0; y < 11; ++y)
                for (xlong x = 0; x < bitmap.m_lPitch / (xlong)ulBytes; ++x)
                {
                    const size_t ulAt = (size_t)y * bitmap.m_lPitch + x * ulBytes;
                    if (x >= 37)
                    {
                        ASSERT_EQ(255, bitmap.m_pData[ulAt]) << "padding";
                        continue;
                    }
                    const bool bWasKey = !memcmp(&strBefore[(size_t)y * lOldPitch + 3 * x], &strBefore[0], 3);
                    const bool bIsKey = !memcmp(bitmap.m_pData + ulAt, bitmap.m_pData, ulBytes);
                    const bool bAsCopied = !memcmp(bitmap.m_pData + ulAt, copy.m_pData + ulAt, ulBytes);
                    nMoved += !bAsCopied;
                    if (lFlags & XBMP_NO_KEY_PASS)
                        ASSERT_TRUE(bAsCopied);
                    else if (t[0] == 16)
                        ASSERT_EQ(bWasKey, bIsKey) << x << ", " << y;
                }
            EXPECT_EQ(t[0] == 16 && !(lFlags & XBMP_NO_KEY_PASS), nMoved > 0);
        }
}

TEST_F(CBitmapTest, ConvertRGBOfOtherDepths)
{
    CPalette palette;
    CBitmap bitmap;
    ASSERT_EQ(1, bitmap.CreateIndex(5, 2, 8, &palette, 0));
    memset(bitmap.m_pData, 8, 16);
    ASSERT_EQ(1, bitmap.ConvertRGB(-1, -1, 16, 5, 5, 5, 10, 5, 0, 0));
    EXPECT_EQ(0x0421, bitmap.m_pData[0] | bitmap.m_pData[1] << 8);
    EXPECT_EQ(0, bitmap.m_bRGB);
    EXPECT_NE(nullptr, bitmap.m_pPalette);
    // Its words are taken for indices the second time: 0x21 and 0x04 in turn.
    ASSERT_EQ(1, bitmap.ConvertRGB(-1, -1, 24, 8, 8, 8, 0, 8, 16, 0));
    EXPECT_EQ(0x21, bitmap.m_pData[0]);
    EXPECT_EQ(0x04, bitmap.m_pData[3]);
    ASSERT_EQ(1, bitmap.ConvertRGB(-1, -1, 32, 8, 8, 8, 0, 8, 16, 0));
    EXPECT_EQ(std::string(40, '\xff'), Bytes(bitmap));

    ASSERT_EQ(1, bitmap.CreateRGB(5, 2, 32, 8, 8, 8, 0, 8, 16, 0));
    const unsigned char *pData = bitmap.m_pData;
    EXPECT_EQ(0, bitmap.ConvertRGB(-1, -1, 16, 5, 5, 5, 10, 5, 0, 0));
    EXPECT_EQ(pData, bitmap.m_pData);
    EXPECT_EQ(32, bitmap.m_lDepth);
    EXPECT_EQ(1, bitmap.ConvertRGB(-1, -1, 32, 8, 8, 8, 0, 8, 16, 0)) << "its own format";
    EXPECT_EQ(pData, bitmap.m_pData);
    for (xlong lDepth : { INT_MIN, -8, INT_MAX })
        EXPECT_EQ(0, bitmap.ConvertRGB(-1, -1, lDepth, 8, 8, 8, 0, 8, 16, 0)) << lDepth;

    // Without a palette, and of a depth that has no bytes, there is nothing to read.
    ASSERT_EQ(1, bitmap.CreateIndex(5, 2, 8, nullptr, 0));
    ASSERT_EQ(1, bitmap.ConvertRGB(-1, -1, 24, 8, 8, 8, 0, 8, 16, 0));
    EXPECT_EQ(std::string(32, '\xff'), Bytes(bitmap));
    ASSERT_EQ(1, bitmap.CreateIndex(5, 2, 0, &palette, 0));
    ASSERT_EQ(1, bitmap.ConvertRGB(-1, -1, 24, 8, 8, 8, 0, 8, 16, 0));
    EXPECT_EQ(std::string(32, '\xff'), Bytes(bitmap));
}

TEST_F(CBitmapTest, ConvertIndexFromAnotherPalette)
{
    CPalette from, to;
    for (int i = 0; i < 256; ++i)
    {
        from.m_Colors[i].Set((unsigned char)i, 0, 0);
        to.m_Colors[i].Set((unsigned char)(i & ~15), 0, 0); // 16 of each
    }
    for (xlong lFlags : { 0, 2 })
    {
        CBitmap bitmap;
        ASSERT_EQ(1, bitmap.CreateIndex(6, 1, 8, &from, 0));
        memcpy(bitmap.m_pData, "\x40\x41\x40\x51\x3f\x20", 6);
        ASSERT_EQ(1, bitmap.ConvertIndex(-1, -1, 8, &to, lFlags));
        // 0x3f is nearer to 0x40 than to 0x30. The key's twin is the second best.
        const std::string strExpected =
            lFlags ? "\x40\x40\x40\x50\x40\x20\x7f\x7f" : "\x40\x41\x40\x50\x41\x20\x7f\x7f";
        EXPECT_EQ(strExpected, Bytes(bitmap));
        EXPECT_EQ(0, memcmp(to.m_Colors, bitmap.m_pPalette->m_Colors, sizeof to.m_Colors));
    }
    CBitmap bitmap;
    ASSERT_EQ(1, bitmap.CreateIndex(6, 1, 8, &from, 0));
    EXPECT_EQ(0, bitmap.ConvertIndex(-1, -1, 8, nullptr, 0));
    ASSERT_EQ(1, bitmap.ConvertIndex(-1, -1, 8, bitmap.m_pPalette, 0)) << "its own palette";
}

TEST_F(CBitmapTest, ConvertIndexFromDirectColour)
{
    CPalette palette;
    CBitmap bitmap;
    MakeNoise(bitmap, 21, 9);
    // The flags are the dither's too.
    CBitmap words;
    ASSERT_EQ(1, words.CreateRGB(21, 9, 16, 5, 5, 5, 10, 5, 0, 0));
    words.Blt(&bitmap, 0, 0, 0, 0, -1, -1, 0, 1, 0);
    ASSERT_EQ(1, bitmap.ConvertIndex(-1, -1, 8, &palette, 2));
    EXPECT_EQ(8, bitmap.m_lDepth);
    EXPECT_EQ(24, bitmap.m_lPitch);
    EXPECT_EQ(1, bitmap.m_bRGB);
    for (xlong y = 0; y < 9; ++y)
        for (xlong x = 0; x < 24; ++x)
        {
            TRGBA colour(0, 0, 0);
            if (x < 21)
                words.GetPixel(x, y, &colour);
            ASSERT_EQ(x < 21 ? palette.FindMatch(&colour) : 127, bitmap.m_pData[24 * y + x]);
        }
    ASSERT_EQ(1, bitmap.CreateRGB(3, 2, 16, 5, 5, 5, 10, 5, 0, 0));
    ASSERT_EQ(1, bitmap.ConvertIndex(-1, -1, 8, &palette, 0));
    EXPECT_EQ(std::string(8, 127), Bytes(bitmap));

    // The pixels of the key's colour, and only they, end as the key.
    MakeNoise(bitmap, 40, 5);
    for (xlong x = 0; x < 40; x += 4)
        memcpy(bitmap.m_pData + 3 * x, bitmap.m_pData, 3);
    const std::string strNoise = Bytes(bitmap);
    ASSERT_EQ(1, bitmap.ConvertIndex(-1, -1, 8, &palette, 0));
    for (xlong i = 0; i < 200; ++i)
        EXPECT_EQ(!memcmp(&strNoise[(size_t)i * 3], &strNoise[0], 3), bitmap.m_pData[i] == bitmap.m_pData[0]) << i;
}

// Whatever allocation fails: a conversion leaves the bitmap as it was.
TEST_F(CBitmapTest, FailedAllocations)
{
    CPalette palette;
    glb->m_pColourIndexMap = (unsigned char *)xAllocMem(32768, nullptr, 0);
    memset(glb->m_pColourIndexMap, 3, 32768);
    const struct
    {
        const char *pszName;
        bool bIndexed, bStays;
        xlong (*pfnCall)(CBitmap &, const CPalette &);
    } cases[] = {
        { "24 to 8", false, true, [](CBitmap &b, const CPalette &p) { return b.ConvertIndex(-1, -1, 8, &p, 0); } },
        { "8 to 8", true, true, [](CBitmap &b, const CPalette &p) { return b.ConvertIndex(-1, -1, 8, &p, 0); } },
        { "24 to 16", false, true,
          [](CBitmap &b, const CPalette &) { return b.ConvertRGB(-1, -1, 16, 5, 6, 5, 11, 5, 0, 0); } },
        { "create", false, false, [](CBitmap &b, const CPalette &p) { return b.CreateIndex(7, 7, 8, &p, 0); } },
    };
    for (const auto &c : cases)
        FailEachAllocation(
            [&](auto arm)
            {
                CBitmap bitmap;
                if (c.bIndexed)
                    EXPECT_EQ(1, bitmap.CreateIndex(9, 9, 8, &palette, 0));
                else
                    MakeNoise(bitmap, 9, 9);
                const std::string strBefore = Bytes(bitmap);
                arm();
                const xlong lResult = c.pfnCall(bitmap, palette);
                if (!lResult && c.bStays)
                    EXPECT_EQ(strBefore, Bytes(bitmap)) << c.pszName;
                else if (!lResult)
                    EXPECT_EQ(nullptr, bitmap.m_pData) << c.pszName;
                return lResult == 1;
            });
}

TEST_F(CBitmapTest, SavesUnderNumbers)
{
    CBMPPic type;
    CBitmap bitmap;
    MakeNoise(bitmap, 4, 4);
    TDate date;
    GetCurrentDate(&date);
    char szDate[40];
    snprintf(szDate, sizeof szDate, "%04d-%02d-%02d", date.sYear, date.sMonth, date.sDay);
    ASSERT_EQ(1, bitmap.Save("shot.bmp", nullptr, nullptr, nullptr, XBMP_SAVE_NUMBERED));
    ASSERT_EQ(1, bitmap.Save("shot.bmp", nullptr, nullptr, nullptr, XBMP_SAVE_NUMBERED));
    EXPECT_TRUE(std::filesystem::exists(std::string("shot") + szDate + "_01.bmp"));
    EXPECT_TRUE(std::filesystem::exists(std::string("shot") + szDate + "_02.bmp"));
    EXPECT_FALSE(std::filesystem::exists("shot.bmp"));
    ASSERT_EQ(1, bitmap.Save("nodot", &type, nullptr, nullptr, XBMP_SAVE_NUMBERED));
    EXPECT_TRUE(std::filesystem::exists(std::string(szDate) + "_01.bmp"));
    for (int i = 3; i <= 101; ++i)
    {
        char szNumber[20];
        snprintf(szNumber, sizeof szNumber, "_%02d.bmp", i);
        WriteFile(std::string("shot") + szDate + szNumber, "");
    }
    EXPECT_EQ(0, bitmap.Save("shot.bmp", nullptr, nullptr, nullptr, XBMP_SAVE_NUMBERED));
    EXPECT_EQ(0, bitmap.Save("shot.xyz", nullptr, nullptr, nullptr, 0));
    EXPECT_EQ(0, bitmap.Load("shot.xyz", 0));
    EXPECT_EQ(XERR_PICTURE_FORMAT, glb->m_Error.GetErrCode());
    EXPECT_EQ(0, bitmap.Load("missing.bmp", 0));
    EXPECT_EQ("BMP - Unable to open \"missing.bmp\"", LastError());
}

TEST_F(CBitmapTest, MembersAndOperationsLieWhereHostsLookForThem)
{
    ExpectSlots(2, &CBitmapBase::CreateIndex, &CBitmapBase::CreateRGB, &CBitmapBase::CreateRGBA, &CBitmapBase::Load,
                &CBitmapBase::Save, &CBitmapBase::ConvertIndex, &CBitmapBase::ConvertRGB, &CBitmapBase::Blt,
                &CBitmapBase::BltScale, &CBitmapBase::Free, &CBitmapBase::LockBitmapData,
                &CBitmapBase::ReleaseBitmapData, &CBitmapBase::ScreenLockBitmapData,
                &CBitmapBase::ScreenReleaseBitmapData);
    CBitmap b;
    const int n = sizeof(void *);
    const void *const apLongs[] = { &b.m_lWidth,         &b.m_lHeight,   &b.m_lDepth,      &b.m_lPitch,
                                    &b.m_lBytesPerPixel, &b.m_lRedBits,  &b.m_lGreenBits,  &b.m_lBlueBits,
                                    &b.m_lAlphaBits,     &b.m_lRedShift, &b.m_lGreenShift, &b.m_lBlueShift,
                                    &b.m_lAlphaShift };
    for (int i = 0; i < 13; ++i)
        EXPECT_EQ((const char *)&b + n + 4 * i, apLongs[i]) << i;
    if (n != 4)
        return;
    EXPECT_EQ(56, OffsetOf(b, b.m_pData));
    EXPECT_EQ(60, OffsetOf(b, b.m_bRGB));
    EXPECT_EQ(64, OffsetOf(b, b.m_bChanged));
    EXPECT_EQ(68, OffsetOf(b, b.m_pPalette));
    EXPECT_EQ(72, OffsetOf(b, b.m_rcClip));
    EXPECT_EQ(92, OffsetOf(b, b.m_pSurface));
    EXPECT_EQ(96, OffsetOf(b, b.m_bOnSurface));
}
} // namespace
