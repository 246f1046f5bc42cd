#include "core/simd.h"
#include "palettemodel.h"
#include "pictures/kernels.h"
#include "pictures/palettesearch.h"
#include "support.h"

#include <random>

// Every kernel against a model that goes pixel by pixel through the rules and
// shares no code with them.

namespace
{
typedef std::vector<unsigned char> TBytes;

enum EKernel
{
    K_8TO8,
    K_8TO16,
    K_8TO24,
    K_16TO16,
    K_16TO24,
    K_24TO24,
    K_24TO16,
    K_24TO8,
    K_KEEP16,
    K_KEEP8,
    K_COUNT
};

// In the order of EKernel; bytes of a pixel.
const struct
{
    const char *pszName;
    TKernel *pfnDraw;
    int nFrom, nTo;
} s_Kernels[K_COUNT] = {
    { "8to8", Convert8To8, 1, 1 },     { "8to16", Convert8To16, 1, 2 },   { "8to24", Convert8To24, 1, 3 },
    { "16to16", Convert16To16, 2, 2 }, { "16to24", Convert16To24, 2, 3 }, { "24to24", Convert24To24, 3, 3 },
    { "24to16", Convert24To16, 3, 2 }, { "24to8", Convert24To8, 3, 1 },   { "keep16", KeepKey16, 3, 2 },
    { "keep8", KeepKey8, 3, 1 },
};

const TPixelFormat s_Formats16[] = {
    { 5, 5, 5, 10, 5, 0 }, { 5, 6, 5, 11, 5, 0 }, { 5, 6, 5, 0, 5, 11 }, { 5, 5, 5, 0, 5, 10 },
    { 4, 4, 4, 8, 4, 0 },  { 3, 3, 2, 5, 2, 0 },  { 8, 4, 4, 0, 8, 12 }, { 1, 2, 3, 15, 0, 7 },
    { 5, 5, 5, 11, 6, 1 }, { 8, 8, 8, 8, 4, 0 },  { 6, 6, 6, 12, 9, 3 }, { 5, 0, 5, 10, 5, 0 },
};
const TPixelFormat s_Formats24[] = {
    { 8, 8, 8, 0, 8, 16 }, { 8, 8, 8, 16, 8, 0 }, { 8, 8, 8, 8, 0, 16 }, { 8, 8, 8, 8, 16, 0 }, { 8, 8, 8, 0, 16, 8 },
    { 8, 8, 8, 16, 0, 8 }, { 5, 5, 5, 0, 8, 16 }, { 8, 8, 8, 0, 0, 8 },  { 8, 8, 8, 4, 8, 0 },
};

struct TBlock
{
    TBytes bytes;
    long lPitch;
    CRect rcClip;
};

// Copies of a case have a palette of their own.
struct TCasePalette : CPalette
{
    TCasePalette() = default;
    TCasePalette(const TCasePalette &other) : CPalette() { Clone(&other); }
};

struct TCase
{
    int From() const { return s_Kernels[kernel].nFrom; }
    int To() const { return s_Kernels[kernel].nTo; }

    EKernel kernel;
    TBlock source, target;
    long lSourceX, lSourceY, lWidth, lHeight, lTargetX, lTargetY;
    TPixelFormat fmtSource, fmtTarget;
    long lTransparent, lDither;
    TCasePalette palette;
};

// The clipping one axis after the other, without thought of overflow.
bool ModelClip(TCase &c)
{
    const CRect &s = c.source.rcClip, &t = c.target.rcClip;
    const auto Axis = [](long &lFrom, long &lTo, long &lCount, long lFirst, long lLast, long lToFirst, long lToLast)
    {
        const long lEnd = lFrom + lCount - 1;
        if (lEnd < lFirst || lFrom > lLast)
            return false;
        if (lFrom < lFirst)
        {
            lTo += lFirst - lFrom;
            lFrom = lFirst;
        }
        lCount = std::min(lEnd, lLast) - lFrom + 1;
        const long lToEnd = lTo + lCount - 1;
        if (lToEnd < lToFirst || lTo > lToLast)
            return false;
        if (lTo < lToFirst)
        {
            lFrom += lToFirst - lTo;
            lTo = lToFirst;
        }
        lCount = std::min(lToEnd, lToLast) - lTo + 1;
        return lCount > 0;
    };
    return Axis(c.lSourceX, c.lTargetX, c.lWidth, s.m_lLeft, s.m_lRight, t.m_lLeft, t.m_lRight) &&
           Axis(c.lSourceY, c.lTargetY, c.lHeight, s.m_lTop, s.m_lBottom, t.m_lTop, t.m_lBottom);
}

unsigned Widen(unsigned uWord, long lBits, long lShift)
{
    return (unsigned char)((unsigned)(unsigned char)(uWord >> lShift) << (8 - lBits));
}

unsigned Narrow(unsigned uByte, long lBits, long lShift)
{
    return (uByte >> (8 - lBits)) << lShift;
}

unsigned PackModel(const unsigned *pRGB, const TPixelFormat &f)
{
    return (Narrow(pRGB[0], f.lRedBits, f.lRedShift) | Narrow(pRGB[1], f.lGreenBits, f.lGreenShift) |
            Narrow(pRGB[2], f.lBlueBits, f.lBlueShift)) &
           0xffff;
}

int Position(long lShift)
{
    switch (lShift)
    {
    case 0:
        return 2;
    case 8:
        return 1;
    default:
        return 0;
    }
}

void ReadModel(const TCase &c, const unsigned char *p, unsigned *pRGB)
{
    const TPixelFormat &f = c.fmtSource;
    if (c.From() == 1)
    {
        pRGB[0] = c.palette.m_Colors[*p].ucRed;
        pRGB[1] = c.palette.m_Colors[*p].ucGreen;
        pRGB[2] = c.palette.m_Colors[*p].ucBlue;
    }
    else if (c.From() == 2)
    {
        const unsigned uWord = p[0] | p[1] << 8;
        pRGB[0] = Widen(uWord, f.lRedBits, f.lRedShift);
        pRGB[1] = Widen(uWord, f.lGreenBits, f.lGreenShift);
        pRGB[2] = Widen(uWord, f.lBlueBits, f.lBlueShift);
    }
    else
    {
        pRGB[0] = p[Position(f.lRedShift)];
        pRGB[1] = p[Position(f.lGreenShift)];
        pRGB[2] = p[Position(f.lBlueShift)];
    }
}

void WriteModel(const TCase &c, unsigned char *p, const unsigned *pRGB)
{
    const TPixelFormat &f = c.fmtTarget;
    if (c.To() == 1)
        *p = (unsigned char)MatchModel(c.palette, pRGB);
    else if (c.To() == 2)
    {
        const unsigned uWord = PackModel(pRGB, f);
        p[0] = (unsigned char)uWord;
        p[1] = (unsigned char)(uWord >> 8);
    }
    else
    {
        p[Position(f.lRedShift)] = (unsigned char)pRGB[0];
        p[Position(f.lGreenShift)] = (unsigned char)pRGB[1];
        p[Position(f.lBlueShift)] = (unsigned char)pRGB[2];
    }
}

// One channel of the dither.
unsigned DitherModel(unsigned uByte, long lBits, unsigned &uError)
{
    const unsigned uValue = std::min(uByte + uError, 255u);
    const unsigned uField = uValue >> (8 - lBits);
    uError = uValue - (uField << (8 - lBits));
    return uValue;
}

void PixelModel(const TCase &c, const unsigned char *pFrom, unsigned char *pTo, const TBytes &key, unsigned *pErrors)
{
    const int nFrom = c.From(), nTo = c.To();
    const bool bKey = !memcmp(pFrom, key.data(), nFrom);
    unsigned auRGB[3], auKey[3];
    ReadModel(c, pFrom, auRGB);
    ReadModel(c, key.data(), auKey);
    if (c.kernel == K_KEEP16)
    {
        const unsigned uKey = PackModel(auKey, c.fmtTarget);
        const unsigned uBlue = auKey[2] >> (8 - c.fmtTarget.lBlueBits);
        const unsigned uOther = (Narrow(auKey[0], c.fmtTarget.lRedBits, c.fmtTarget.lRedShift) |
                                 Narrow(auKey[1], c.fmtTarget.lGreenBits, c.fmtTarget.lGreenShift) |
                                 (uBlue < 4 ? uBlue + 1 : uBlue - 1) << c.fmtTarget.lBlueShift) &
                                0xffff;
        unsigned uWord = pTo[0] | pTo[1] << 8;
        uWord = bKey ? uKey : uWord == uKey ? uOther : uWord;
        pTo[0] = (unsigned char)uWord;
        pTo[1] = (unsigned char)(uWord >> 8);
    }
    else if (c.kernel == K_KEEP8)
    {
        const long lKey = MatchModel(c.palette, auKey);
        *pTo = (unsigned char)(bKey ? lKey : *pTo == lKey ? SecondModel(c.palette, auKey) : *pTo);
    }
    else if (c.kernel == K_24TO8)
    {
        if (c.lTransparent != 1 || MatchModel(c.palette, auRGB) != MatchModel(c.palette, auKey))
            WriteModel(c, pTo, auRGB);
    }
    else if (c.lTransparent == 1 && bKey)
        return;
    else if (nFrom == nTo && (nFrom == 1 || c.fmtSource == c.fmtTarget))
        memcpy(pTo, pFrom, nFrom);
    else
    {
        if (c.kernel == K_24TO16 && c.lDither && c.lTransparent != 1)
        {
            auRGB[0] = DitherModel(auRGB[0], c.fmtTarget.lRedBits, pErrors[0]);
            auRGB[1] = DitherModel(auRGB[1], c.fmtTarget.lGreenBits, pErrors[1]);
            auRGB[2] = DitherModel(auRGB[2], c.fmtTarget.lBlueBits, pErrors[2]);
        }
        WriteModel(c, pTo, auRGB);
    }
}

long Model(TCase c, TBytes &result)
{
    result = c.target.bytes;
    if (!ModelClip(c))
        return 0;
    const int nFrom = c.From(), nTo = c.To();
    const TBytes key(c.source.bytes.begin(), c.source.bytes.begin() + nFrom);
    for (long y = 0; y < c.lHeight; ++y)
    {
        unsigned auErrors[3] = {};
        for (long x = 0; x < c.lWidth; ++x)
            PixelModel(c, &c.source.bytes[(c.lSourceY + y) * c.source.lPitch + (c.lSourceX + x) * nFrom],
                       &result[(c.lTargetY + y) * c.target.lPitch + (c.lTargetX + x) * nTo], key, auErrors);
    }
    return 1;
}

long Draw(TCase &c, unsigned char *pTarget)
{
    const TPixelBlock source = { c.source.bytes.data(), (xlong)c.source.lPitch, c.From() * 8, c.fmtSource, &c.palette,
                                 &c.source.rcClip };
    const TPixelBlock target = {
        pTarget, (xlong)c.target.lPitch, c.To() * 8, c.fmtTarget, &c.palette, &c.target.rcClip
    };
    const TCopy copy = { (xlong)c.lSourceX, (xlong)c.lSourceY, (xlong)c.lTargetX,     (xlong)c.lTargetY,
                         (xlong)c.lWidth,   (xlong)c.lHeight,  (xlong)c.lTransparent, (xlong)c.lDither };
    return s_Kernels[c.kernel].pfnDraw(source, target, copy);
}

class CRandom
{
public:
    explicit CRandom(unsigned uSeed) : m_Engine(uSeed) {}
    long Below(long lLimit) { return (long)(m_Engine() % (unsigned)lLimit); }
    long Between(long lFirst, long lLast) { return lFirst + Below(lLast - lFirst + 1); }
    // Bytes from a few values only make keys and ties likely.
    void Fill(TBytes &bytes, long lValues)
    {
        static const unsigned char s_auc[] = { 0, 8, 255, 7, 127, 128, 248 };
        for (unsigned char &uc : bytes)
            uc = lValues == 256 ? (unsigned char)Below(256) : s_auc[Below(lValues)];
    }
    void Fill(CPalette &palette, long lValues)
    {
        TBytes bytes(768);
        Fill(bytes, lValues);
        for (int i = 0; i < 256; ++i)
            palette.m_Colors[i].Set(bytes[3 * i], bytes[3 * i + 1], bytes[3 * i + 2], (unsigned char)Below(256));
    }
    // The block ends with its last pixel, so that a step too far shows.
    void Make(TBlock &block, int nBytes, long lWidth, long lHeight, long lValues)
    {
        block.lPitch = lWidth * nBytes + Below(4);
        block.bytes.resize((lHeight - 1) * block.lPitch + lWidth * nBytes);
        Fill(block.bytes, lValues);
        block.rcClip.Set(0, 0, lWidth - 1, lHeight - 1);
        if (Below(3) == 0)
            block.rcClip.Set(Below(lWidth), Below(lHeight), Below(lWidth), Below(lHeight));
    }

private:
    std::mt19937 m_Engine;
};

void MakeCase(TCase &c, CRandom &random)
{
    const long lValues = random.Below(2) ? 256 : random.Between(1, 7);
    const long lMost = random.Below(4) ? 40 : 150;
    const long lWidth = random.Between(1, lMost), lHeight = random.Between(1, 40);
    random.Make(c.source, c.From(), lWidth, lHeight, lValues);
    random.Make(c.target, c.To(), random.Between(1, lMost), random.Between(1, 40), lValues);
    c.lSourceX = random.Below(3) ? 0 : random.Between(-20, lWidth + 5);
    c.lSourceY = random.Below(3) ? 0 : random.Between(-10, lHeight + 5);
    c.lTargetX = random.Below(3) ? 0 : random.Between(-20, 40);
    c.lTargetY = random.Below(3) ? 0 : random.Between(-10, 40);
    c.lWidth = random.Below(3) ? lWidth : random.Between(-2, 160);
    c.lHeight = random.Below(3) ? lHeight : random.Between(-2, 80);
    c.fmtSource = c.From() == 3 ? s_Formats24[random.Below(std::size(s_Formats24))]
                                : s_Formats16[random.Below(std::size(s_Formats16))];
    c.fmtTarget = c.To() == 3 ? s_Formats24[random.Below(std::size(s_Formats24))]
                              : s_Formats16[random.Below(std::size(s_Formats16))];
    c.lTransparent = random.Below(3);
    c.lDither = random.Below(3);
    random.Fill(c.palette, lValues);
    if (random.Below(4) == 0)
    {
        c.palette.m_ucFirst = (unsigned char)random.Below(256);
        c.palette.m_ucLast = (unsigned char)random.Below(256);
    }
}

int s_nCallbacks;

// Each kernel with each set of instructions.
class CKernels : public testing::TestWithParam<std::tuple<int, int>>
{
protected:
    CKernels() { s_lSimdLimit = std::get<1>(GetParam()); }
    ~CKernels() override { s_lSimdLimit = SIMD_ALL; }

    CTestGlobals m_Globals;
};

TEST_P(CKernels, DoWhatTheModelDoes)
{
    CRandom random(20240 + (unsigned)std::get<0>(GetParam()));
    int nDrawn = 0;
    for (int i = 0; i < 1200; ++i)
    {
        TCase c;
        c.kernel = (EKernel)std::get<0>(GetParam());
        MakeCase(c, random);
        TBytes expected;
        const long lExpected = Model(c, expected);
        nDrawn += lExpected == 1 && expected != c.target.bytes;
        ASSERT_EQ(lExpected, Draw(c, c.target.bytes.data())) << "case " << i;
        if (expected == c.target.bytes)
            continue;
        const size_t ulAt =
            (size_t)(std::mismatch(expected.begin(), expected.end(), c.target.bytes.begin()).first - expected.begin());
        const long lRow = (long)ulAt / c.target.lPitch;
        FAIL() << "case " << i << ": byte " << ulAt - (size_t)(lRow * c.target.lPitch) << " of row " << lRow
               << ", width " << c.lWidth << ", transparent " << c.lTransparent << ", dither " << c.lDither
               << ", red shifts " << c.fmtSource.lRedShift << " and " << c.fmtTarget.lRedShift << ": "
               << (int)c.target.bytes[ulAt] << " instead of " << (int)expected[ulAt];
    }
    EXPECT_GT(nDrawn, 150) << "the cases miss the target";
}

INSTANTIATE_TEST_SUITE_P(All, CKernels,
                         testing::Combine(testing::Range(0, (int)K_COUNT),
                                          testing::Values(SIMD_BASE, SIMD_SSE41, SIMD_AVX2, SIMD_AVX512)),
                         [](const auto &info) {
                             return s_Kernels[std::get<0>(info.param)].pszName + std::string("Set") +
                                    std::to_string(std::get<1>(info.param));
                         });

// Formats that no display has. There is no right picture for them, but nothing
// beside the area may change and all sets of instructions give the same bytes.
TEST(Kernels, OddFormatsStayInTheirArea)
{
    CTestGlobals globals;
    const xlong alOdd[] = { INT_MIN, -9, -1, 0, 3, 8, 9, 15, 16, 24, 31, 32, 33, 1000, INT_MAX };
    CRandom random(7);
    for (int i = 0; i < 3000; ++i)
    {
        TCase c;
        c.kernel = (EKernel)random.Below(K_KEEP16);
        MakeCase(c, random);
        for (TPixelFormat *pFormat : { &c.fmtSource, &c.fmtTarget })
            for (xlong *pl : { &pFormat->lRedBits, &pFormat->lGreenBits, &pFormat->lBlueBits, &pFormat->lRedShift,
                               &pFormat->lGreenShift, &pFormat->lBlueShift })
                if (random.Below(2))
                    *pl = alOdd[random.Below(std::size(alOdd))];
        TBytes first = c.target.bytes, second = first;
        Draw(c, first.data());
        s_lSimdLimit = SIMD_BASE;
        Draw(c, second.data());
        s_lSimdLimit = SIMD_ALL;
        ASSERT_EQ(first, second) << "case " << i;
        TCase clipped = c;
        const bool bDrawn = ModelClip(clipped);
        const int nBytes = c.To();
        for (size_t j = 0; j < first.size(); ++j)
        {
            const long y = (long)j / c.target.lPitch, x = (long)j % c.target.lPitch;
            const bool bInside = bDrawn && y >= clipped.lTargetY && y < clipped.lTargetY + clipped.lHeight &&
                                 x >= clipped.lTargetX * nBytes && x < (clipped.lTargetX + clipped.lWidth) * nBytes;
            ASSERT_TRUE(bInside || first[j] == c.target.bytes[j]) << "case " << i << ", byte " << j;
        }
    }
}

TEST(Kernels, ClippingTakesAnyNumbers)
{
    const xlong alEnds[] = { INT_MIN, INT_MIN + 1, -5, -1, 0, 1, 4, 9, 10, INT_MAX - 1, INT_MAX };
    CRandom random(3);
    const auto Pick = [&] { return alEnds[random.Below(std::size(alEnds))]; };
    int nLeft = 0;
    for (int i = 0; i < 200000; ++i)
    {
        CRect rcSource, rcTarget;
        rcSource.Set(0, 0, 9, 9);
        rcTarget.Set(2, 3, 7, 8);
        xlong sx = Pick(), sy = Pick(), w = Pick(), h = Pick(), tx = Pick(), ty = Pick();
        if (!ClipAreas(&sx, &sy, &w, &h, &rcSource, &tx, &ty, &rcTarget))
            continue;
        ++nLeft;
        ASSERT_TRUE(w > 0 && h > 0 && sx >= 0 && sy >= 0 && sx + w <= 10 && sy + h <= 10 && tx >= 2 && ty >= 3 &&
                    tx + w <= 8 && ty + h <= 9)
            << sx << " " << sy << " " << w << " " << h << " " << tx << " " << ty;
    }
    EXPECT_GT(nLeft, 1000);
}

TEST(Kernels, CallTheLoadCallbackEvery32Rows)
{
    CTestGlobals globals;
    glb->m_pfnLoadData = [] { ++s_nCallbacks; };
    const std::pair<long, int> aRows[] = { { 1, 1 }, { 31, 1 }, { 32, 1 }, { 33, 2 }, { 64, 2 }, { 100, 4 } };
    for (int k = 0; k < K_COUNT; ++k)
        for (const auto &rows : aRows)
        {
            TCase c;
            c.kernel = (EKernel)k;
            CRandom random(1);
            MakeCase(c, random);
            c.lSourceX = c.lSourceY = c.lTargetX = c.lTargetY = 0;
            c.source.bytes.assign(400, 0);
            c.target.bytes.assign(400, 0);
            c.source.lPitch = c.target.lPitch = 3;
            c.lWidth = 1;
            c.lHeight = rows.first;
            c.source.rcClip.Set(0, 0, 0, rows.first - 1);
            c.target.rcClip = c.source.rcClip;
            s_nCallbacks = 0;
            Draw(c, c.target.bytes.data());
            EXPECT_EQ(rows.second, s_nCallbacks) << s_Kernels[k].pszName << ", rows " << rows.first;
        }
    s_nCallbacks = 0;
    EXPECT_EQ(1, KeepKeyNone({}, {}, {}));
    EXPECT_EQ(1, s_nCallbacks);
}

// Worked out by hand, blue alone: dithering carries errors of 7 at most to the
// right, and the key pass moves what became the key's word by one.
struct TBlueCase
{
    const char *pszName;
    TKernel *pfnDraw;
    std::vector<unsigned char> blues;
    std::vector<unsigned short> before, after;
};

TEST(Kernels, BlueByHand)
{
    const TBlueCase aCases[] = {
        { "Dither", Convert24To16, { 7, 7, 1, 255, 255, 3 }, { 9, 9, 9, 9, 9, 9 }, { 0, 1, 0, 31, 31, 1 } },
        { "Key 31", KeepKey16, { 255, 254 }, { 31, 31 }, { 31, 30 } },
        { "Key 0", KeepKey16, { 0, 1 }, { 0, 0 }, { 0, 1 } },
        { "Key 3", KeepKey16, { 24, 25 }, { 3, 3 }, { 3, 4 } },
        { "Key 4", KeepKey16, { 32, 33 }, { 4, 4 }, { 4, 3 } },
    };
    for (const TBlueCase &c : aCases)
    {
        TBytes source;
        for (unsigned char uc : c.blues)
            source.insert(source.end(), { uc, 0, 0 });
        std::vector<unsigned short> target = c.before;
        const xlong lWidth = (xlong)c.blues.size();
        CRect rcClip;
        rcClip.Set(0, 0, lWidth - 1, 0);
        const TPixelBlock from = { source.data(), lWidth * 3, 24, { 8, 8, 8, 0, 8, 16 }, nullptr, &rcClip };
        const TPixelBlock to = {
            (unsigned char *)target.data(), lWidth * 2, 16, { 5, 5, 5, 10, 5, 0 }, nullptr, &rcClip
        };
        EXPECT_EQ(1, c.pfnDraw(from, to, { 0, 0, 0, 0, lWidth, 1, 0, 1 }));
        EXPECT_EQ(c.after, target) << c.pszName;
    }
}

class CCube : public CFolderTest
{
protected:
    CCube()
    {
        m_Clip.Set(0, 0, 1023, 31);
        for (unsigned u = 0; u < 32768; ++u)
        {
            m_Source[2 * u] = (unsigned char)u;
            m_Source[2 * u + 1] = (unsigned char)(u >> 8);
        }
    }
    // All 15-bit colours through the cube.
    long Convert(const CPalette &palette, long lTransparent = 0)
    {
        const TPixelBlock from = { m_Source.data(), 2048, 16, {}, nullptr, &m_Clip };
        const TPixelBlock to = { m_Target.data(), 1024, 8, {}, &palette, &m_Clip };
        return Convert16To8(from, to, { 0, 0, 0, 0, 1024, 32, (xlong)lTransparent, 0 });
    }
    void Drop()
    {
        xFreeMemFunc(glb->m_pColourIndexMap, nullptr, 0);
        glb->m_pColourIndexMap = nullptr;
    }

    TBytes m_Source = TBytes(65536), m_Target = TBytes(32768, 77);
    CRect m_Clip;
    CPalette m_Palette;
};

TEST_F(CCube, IsFindMatchOfEveryColourAndKeptInAFile)
{
    CRandom random(5);
    random.Fill(m_Palette, 256);
    ASSERT_EQ(1, Convert(m_Palette));
    for (unsigned u = 0; u < 32768; ++u)
    {
        const unsigned auRGB[] = { (u >> 10) * 8, (u >> 5 & 31) * 8, (u & 31) * 8 };
        ASSERT_EQ(MatchModel(m_Palette, auRGB), m_Target[u]) << u;
    }
    const std::string strCube(m_Target.begin(), m_Target.end());
    EXPECT_EQ(strCube, ReadFile(Path(".pal.tab")));

    // A second palette gets the first one's cube, until it is dropped; then the file counts.
    CPalette other;
    ASSERT_EQ(1, Convert(other));
    EXPECT_EQ(strCube, std::string(m_Target.begin(), m_Target.end()));
    Drop();
    WriteFile(Path(".pal.tab"), std::string(32768, '\5') + "more");
    ASSERT_EQ(1, Convert(other));
    EXPECT_EQ(TBytes(32768, 5), m_Target);
}

TEST_F(CCube, FailsOnAShortFile)
{
    WriteFile(Path(".pal.tab"), std::string(32767, '\5'));
    EXPECT_EQ(0, Convert(m_Palette));
    EXPECT_EQ(TBytes(32768, 77), m_Target);
    EXPECT_EQ(nullptr, glb->m_pColourIndexMap);
}

TEST_F(CCube, OfANamelessPaletteIsComputed)
{
    m_Palette.m_pszName[0] = 0;
    WriteFile(Path(".tab"), "no cube");
    ASSERT_EQ(1, Convert(m_Palette));
    EXPECT_EQ(32768u, ReadFile(Path(".tab")).size());
}

TEST_F(CCube, TransparentStepsFourPixelsAndStaysInTheBlock)
{
    std::string strCube(32768, 0);
    for (size_t i = 0; i < strCube.size(); ++i)
        strCube[i] = (char)(i % 251);
    WriteFile(Path(".pal.tab"), strCube);
    ASSERT_EQ(1, Convert(m_Palette, 1));
    for (unsigned y = 0; y < 32; ++y)
        for (unsigned x = 0; x < 1024; ++x)
        {
            const unsigned uFrom = y * 1024 + x * 4;
            const unsigned uIndex = uFrom < 32768 ? uFrom % 251 : 0;
            ASSERT_EQ(uIndex ? uIndex : 77, m_Target[y * 1024 + x]) << x << ", " << y;
        }
}
} // namespace
