#include "platform/face.h"

#include <random>
#include <tuple>

namespace
{
// The plain model of a bitmap: a colour for each pixel, 0xRRGGBB.
struct TModel
{
    int nWidth, nHeight;
    std::vector<uint32_t> pixels;

    uint32_t &At(int x, int y) { return pixels[(size_t)y * nWidth + x]; }
};

RGBQUAD TestColor(int i)
{
    return { (BYTE)(i * 7), (BYTE)(255 - i), (BYTE)(i * 31), 0 };
}

uint32_t ColorOf(RGBQUAD c)
{
    return (uint32_t)c.rgbRed << 16 | (uint32_t)c.rgbGreen << 8 | c.rgbBlue;
}

/// A DIB section with random pixels, selected in a context of its own.
class CDibSection
{
public:
    CDibSection(int nWidth, int nHeight, int nDepth, unsigned uSeed)
        : m_lWidth(nWidth), m_lHeight(nHeight < 0 ? -nHeight : nHeight), m_lDepth(nDepth), m_bTopDown(nHeight < 0)
    {
        struct
        {
            BITMAPINFOHEADER header;
            RGBQUAD aColors[256];
        } info = {};
        info.header.biSize = sizeof(BITMAPINFOHEADER);
        info.header.biWidth = nWidth;
        info.header.biHeight = nHeight;
        info.header.biPlanes = 1;
        info.header.biBitCount = (WORD)nDepth;
        for (int i = 0; i < 256; ++i)
            info.aColors[i] = TestColor(i);
        m_hDC = CreateCompatibleDC(nullptr);
        void *pBits = nullptr;
        m_hBitmap = CreateDIBSection(m_hDC, (BITMAPINFO *)&info, DIB_RGB_COLORS, &pBits, nullptr, 0);
        m_pBits = (BYTE *)pBits;
        EXPECT_NE(nullptr, SelectObject(m_hDC, m_hBitmap));
        std::mt19937 random(uSeed);
        for (int i = 0; i < Pitch() * m_lHeight; ++i)
            m_pBits[i] = (BYTE)random();
    }

    ~CDibSection()
    {
        EXPECT_FALSE(DeleteObject(m_hBitmap)) << "still selected";
        EXPECT_TRUE(DeleteDC(m_hDC));
        EXPECT_TRUE(DeleteObject(m_hBitmap));
    }

    int Pitch() const { return (m_lWidth * m_lDepth / 8 + 3) & ~3; }

    /// The colour of a pixel, worked out from the bytes.
    uint32_t At(int x, int y) const
    {
        const BYTE *p = m_pBits + Pitch() * (m_bTopDown ? y : m_lHeight - 1 - y) + x * m_lDepth / 8;
        if (m_lDepth == 8)
            return ColorOf(TestColor(*p));
        if (m_lDepth == 24)
            return (uint32_t)p[2] << 16 | (uint32_t)p[1] << 8 | p[0];
        const unsigned us = p[0] | p[1] << 8;
        uint32_t ul = 0;
        for (int nShift : { 10, 5, 0 })
        {
            // GDI repeats the bits of a channel until the byte is full.
            const unsigned uc = us >> nShift & 31;
            ul = ul << 8 | uc << 3 | uc >> 2;
        }
        return ul;
    }

    TModel Model() const
    {
        TModel model = { m_lWidth, m_lHeight, {} };
        for (int y = 0; y < m_lHeight; ++y)
            for (int x = 0; x < m_lWidth; ++x)
                model.pixels.push_back(At(x, y));
        return model;
    }

    int m_lWidth, m_lHeight, m_lDepth;
    bool m_bTopDown;
    HDC m_hDC;
    HBITMAP m_hBitmap;
    BYTE *m_pBits;
};

struct TArea
{
    const char *pszName;
    int nX, nY, nWidth, nHeight, nSourceX, nSourceY;
};

// For a target of 41 by 23 and a source of 37 by 19.
const TArea s_Areas[] = {
    { "Whole", 0, 0, 37, 19, 0, 0 },
    { "OnePixel", 40, 22, 1, 1, 36, 18 },
    { "OverLeftTop", -5, -3, 20, 10, 2, 1 },
    { "OverRightBottom", 30, 15, 30, 30, 3, 4 },
    { "SourceLeft", 10, 8, 20, 10, -6, -2 },
    { "SourceRight", 1, 2, 40, 20, 20, 10 },
    { "Outside", 50, 5, 10, 10, 0, 0 },
    { "Nothing", 5, 5, 0, 10, 0, 0 },
    { "Huge", -2000000000, -2000000000, 2147483647, 2147483647, -2000000000, -2000000000 },
};

/// Copies pixel by pixel what both sides have.
void ModelBlit(TModel &target, TModel source, const TArea &a)
{
    for (int y = 0; y < target.nHeight; ++y)
        for (int x = 0; x < target.nWidth; ++x)
        {
            const long long llX = (long long)x - a.nX, llY = (long long)y - a.nY;
            const long long llSX = llX + a.nSourceX, llSY = llY + a.nSourceY;
            if (llX >= 0 && llX < a.nWidth && llY >= 0 && llY < a.nHeight && llSX >= 0 && llSX < source.nWidth &&
                llSY >= 0 && llSY < source.nHeight)
                target.At(x, y) = source.At((int)llSX, (int)llSY);
        }
}

class PlatformBlit : public CFaceTest, public testing::WithParamInterface<std::tuple<int, bool, TArea>>
{
};
} // namespace

TEST_P(PlatformBlit, ToAWindowEqualsThePlainModel)
{
    const auto &[nDepth, bTopDown, area] = GetParam();
    const HWND hWnd = OpenShown(WS_POPUP, 0, 0, 41, 23);
    CDibSection dib(37, bTopDown ? -19 : 19, nDepth, 11);
    TModel expected = { 41, 23, std::vector<uint32_t>(41 * 23) };
    ModelBlit(expected, dib.Model(), area);
    ASSERT_TRUE(BitBlt(GetDC(hWnd), area.nX, area.nY, area.nWidth, area.nHeight, dib.m_hDC, area.nSourceX,
                       area.nSourceY, SRCCOPY));
    Run();
    for (int y = 0; y < 23; ++y)
        for (int x = 0; x < 41; ++x)
            ASSERT_EQ(expected.At(x, y), ShownPixel(hWnd, x, y)) << x << "," << y;
}

TEST_P(PlatformBlit, BetweenBitmapsEqualsThePlainModel)
{
    const auto &[nDepth, bTopDown, area] = GetParam();
    CDibSection source(37, bTopDown ? -19 : 19, nDepth, 11), target(41, -23, nDepth, 12);
    const std::vector<BYTE> before(target.m_pBits, target.m_pBits + target.Pitch() * 23);
    TModel expected = target.Model();
    ModelBlit(expected, source.Model(), area);
    ASSERT_TRUE(BitBlt(target.m_hDC, area.nX, area.nY, area.nWidth, area.nHeight, source.m_hDC, area.nSourceX,
                       area.nSourceY, SRCCOPY));
    EXPECT_EQ(expected.pixels, target.Model().pixels);
    for (int y = 0; y < 23; ++y)
        for (int i = 41 * nDepth / 8; i < target.Pitch(); ++i)
            EXPECT_EQ(before[(size_t)(y * target.Pitch() + i)], target.m_pBits[y * target.Pitch() + i]) << "padding";
}

std::string NameOf(const testing::TestParamInfo<std::tuple<int, bool, TArea>> &info)
{
    const auto &[nDepth, bTopDown, area] = info.param;
    return area.pszName + std::to_string(nDepth) + (bTopDown ? "TopDown" : "BottomUp");
}

INSTANTIATE_TEST_SUITE_P(Formats, PlatformBlit,
                         testing::Combine(testing::Values(8, 16, 24), testing::Bool(), testing::ValuesIn(s_Areas)),
                         NameOf);

using PlatformDib = CFaceTest;

TEST_F(PlatformDib, MovesWithinItselfLikeThroughACopy)
{
    const TArea areas[] = { { "RightDown", 3, 2, 20, 10, 0, 0 },
                            { "LeftUp", 0, 0, 20, 10, 5, 4 },
                            { "Left", 4, 3, 20, 10, 6, 3 },
                            { "Right", 6, 3, 20, 10, 4, 3 },
                            { "LeftDown", 2, 8, 20, 10, 5, 1 } };
    for (int nHeight : { 21, -21 })
        for (const TArea &a : areas)
        {
            CDibSection dib(33, nHeight, 16, 5);
            TModel expected = dib.Model();
            ModelBlit(expected, dib.Model(), a);
            BitBlt(dib.m_hDC, a.nX, a.nY, a.nWidth, a.nHeight, dib.m_hDC, a.nSourceX, a.nSourceY, SRCCOPY);
            EXPECT_EQ(expected.pixels, dib.Model().pixels) << a.pszName << ", height " << nHeight;
        }
}

TEST_F(PlatformDib, DepthsConvert)
{
    CDibSection dib24(5, -3, 24, 1), dib16(5, 3, 16, 2), dib8(5, -3, 8, 3);
    BitBlt(dib24.m_hDC, 0, 0, 5, 3, dib8.m_hDC, 0, 0, SRCCOPY);
    EXPECT_EQ(dib8.Model().pixels, dib24.Model().pixels);
    BitBlt(dib16.m_hDC, 0, 0, 5, 3, dib24.m_hDC, 0, 0, SRCCOPY);
    for (int y = 0; y < 3; ++y)
        for (int x = 0; x < 5; ++x)
            EXPECT_EQ(dib24.At(x, y) & 0xF8F8F8, dib16.At(x, y) & 0xF8F8F8);
    BitBlt(dib8.m_hDC, 0, 0, 5, 3, dib16.m_hDC, 0, 0, SRCCOPY);
    for (int y = 0; y < 3; ++y)
        for (int x = 0; x < 5; ++x)
        {
            const auto Distance = [&](uint32_t ul)
            {
                int l = 0;
                for (int s : { 0, 8, 16 })
                    l += ((int)(ul >> s & 255) - (int)(dib16.At(x, y) >> s & 255)) *
                         ((int)(ul >> s & 255) - (int)(dib16.At(x, y) >> s & 255));
                return l;
            };
            int nBest = INT32_MAX;
            for (int i = 0; i < 256; ++i)
                nBest = std::min(nBest, Distance(ColorOf(TestColor(i))));
            EXPECT_EQ(nBest, Distance(dib8.At(x, y))) << "not the nearest colour";
        }
}

TEST_F(PlatformDib, ColourTableCountsFromTheNextCopyOn)
{
    const HWND hWnd = OpenShown(WS_POPUP, 0, 0, 4, 4);
    CDibSection dib(2, -2, 8, 1);
    dib.m_pBits[0] = 200;
    BitBlt(GetDC(hWnd), 0, 0, 1, 1, dib.m_hDC, 0, 0, SRCCOPY);
    const RGBQUAD blue = { 255, 0, 0, 0 };
    EXPECT_EQ(1u, SetDIBColorTable(dib.m_hDC, 200, 1, &blue));
    BitBlt(GetDC(hWnd), 1, 0, 1, 1, dib.m_hDC, 0, 0, SRCCOPY);
    Run();
    EXPECT_EQ(ColorOf(TestColor(200)), ShownPixel(hWnd, 0, 0));
    EXPECT_EQ(0x0000FFu, ShownPixel(hWnd, 1, 0));
    RGBQUAD table[300] = {};
    EXPECT_EQ(56u, GetDIBColorTable(dib.m_hDC, 200, 100, table)) << "cut at the end of the table";
    EXPECT_EQ(255, table[0].rgbBlue);
    EXPECT_EQ(0u, SetDIBColorTable(GetDC(hWnd), 0, 1, &blue)) << "a window has no table";
}

TEST_F(PlatformDib, WindowCanBeReadBack)
{
    const HWND hWnd = OpenShown(WS_POPUP, 0, 0, 20, 20);
    CDibSection source(8, -8, 24, 1), target(8, -8, 24, 2);
    BitBlt(GetDC(hWnd), 5, 5, 8, 8, source.m_hDC, 0, 0, SRCCOPY);
    BitBlt(target.m_hDC, 0, 0, 8, 8, GetDC(hWnd), 5, 5, SRCCOPY);
    EXPECT_EQ(source.Model().pixels, target.Model().pixels);
    BitBlt(GetDC(hWnd), 7, 6, 8, 8, GetDC(hWnd), 5, 5, SRCCOPY);
    BitBlt(target.m_hDC, 0, 0, 8, 8, GetDC(hWnd), 7, 6, SRCCOPY);
    EXPECT_EQ(source.Model().pixels, target.Model().pixels) << "overlapping copy within the window";
}

TEST_F(PlatformDib, BadRequestsAreRefused)
{
    const struct
    {
        const char *pszName;
        LONG nWidth, nHeight;
        WORD usPlanes, usDepth;
        DWORD ulCompression, ulError;
    } cases[] = {
        { "NoWidth", 0, 5, 1, 24, BI_RGB, ERROR_INVALID_PARAMETER },
        { "NoHeight", 5, 0, 1, 24, BI_RGB, ERROR_INVALID_PARAMETER },
        { "NegativeWidth", -5, 5, 1, 24, BI_RGB, ERROR_INVALID_PARAMETER },
        { "TwoPlanes", 5, 5, 2, 24, BI_RGB, ERROR_INVALID_PARAMETER },
        { "TwelveBits", 5, 5, 1, 12, BI_RGB, ERROR_INVALID_PARAMETER },
        { "Compressed", 5, 5, 1, 8, 1, ERROR_INVALID_PARAMETER },
        { "LowestHeight", 5, INT32_MIN, 1, 24, BI_RGB, ERROR_INVALID_PARAMETER },
        { "Huge", 100000, 100000, 1, 24, BI_RGB, ERROR_NOT_ENOUGH_MEMORY },
    };
    for (const auto &c : cases)
    {
        SCOPED_TRACE(c.pszName);
        BITMAPINFO info = {};
        info.bmiHeader = {
            sizeof(BITMAPINFOHEADER), c.nWidth, c.nHeight, c.usPlanes, c.usDepth, c.ulCompression, 0, 0, 0, 0, 0
        };
        void *pBits = &info;
        EXPECT_EQ(nullptr, CreateDIBSection(nullptr, &info, DIB_RGB_COLORS, &pBits, nullptr, 0));
        EXPECT_EQ(nullptr, pBits);
        EXPECT_EQ(c.ulError, GetLastError());
    }
    CDibSection a(4, 4, 24, 1), b(4, 4, 24, 2);
    EXPECT_EQ(nullptr, SelectObject(b.m_hDC, a.m_hBitmap)) << "a bitmap is in one context at a time";
    EXPECT_FALSE(BitBlt(a.m_hDC, 0, 0, 4, 4, b.m_hDC, 0, 0, 0x00EE0086)) << "not SRCCOPY";
    EXPECT_FALSE(BitBlt(a.m_hDC, 0, 0, 4, 4, nullptr, 0, 0, SRCCOPY));
}
