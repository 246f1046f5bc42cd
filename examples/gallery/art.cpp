#include "art.h"

#include "tarvix/bitmap.h"
#include "tarvix/palette.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <string>

namespace
{
struct TColor
{
    int nRed, nGreen, nBlue;
};

const TColor s_Key = { 255, 0, 255 }; // left out where a picture is transparent

TColor Mix(const TColor &a, const TColor &b, int nPart, int nWhole)
{
    nPart = std::clamp(nPart, 0, nWhole);
    return { a.nRed + (b.nRed - a.nRed) * nPart / nWhole, a.nGreen + (b.nGreen - a.nGreen) * nPart / nWhole,
             a.nBlue + (b.nBlue - a.nBlue) * nPart / nWhole };
}

int Noise(int nX, int nY)
{
    uint32_t u = (uint32_t)nX * 374761393u + (uint32_t)nY * 668265263u;
    u = (u ^ u >> 13) * 1274126177u;
    return (int)((u ^ u >> 16) & 255);
}

/// A picture of 24 bits under the brush.
class CPainting
{
public:
    CPainting(int nWidth, int nHeight, const TColor &ground) : m_nWidth(nWidth), m_nHeight(nHeight)
    {
        m_bOk = m_Bitmap.CreateRGB(nWidth, nHeight, 24, 8, 8, 8, 0, 8, 16, 0) != 0;
        for (int y = 0; y < nHeight; ++y)
            for (int x = 0; x < nWidth; ++x)
                Set(x, y, ground);
    }

    void Set(int nX, int nY, const TColor &color)
    {
        if (!m_bOk || nX < 0 || nY < 0 || nX >= m_nWidth || nY >= m_nHeight)
            return;
        unsigned char *p = m_Bitmap.m_pData + (size_t)nY * m_Bitmap.m_lPitch + (size_t)nX * 3;
        p[0] = (unsigned char)std::clamp(color.nBlue, 0, 255);
        p[1] = (unsigned char)std::clamp(color.nGreen, 0, 255);
        p[2] = (unsigned char)std::clamp(color.nRed, 0, 255);
    }

    bool Save(const std::string &strFolder, const char *pszName)
    {
        return m_bOk && m_Bitmap.Save((strFolder + "/" + pszName).c_str(), nullptr, nullptr, nullptr, 0);
    }

    int m_nWidth, m_nHeight;

private:
    CBitmap m_Bitmap;
    bool m_bOk;
};

// The desktop: dusk over two soft ranges of dunes.
bool PaintDesktop(const std::string &strFolder)
{
    CPainting desk(800, 600, s_Key);
    const TColor top = { 22, 30, 52 }, low = { 66, 92, 118 };
    const struct
    {
        int nX, nY, nRadius;
        TColor color;
    } glows[] = { { 640, 470, 420, { 226, 150, 96 } }, { 150, 120, 380, { 52, 96, 128 } } };
    const TColor dunes[] = { { 70, 74, 100 }, { 44, 50, 76 }, { 30, 36, 58 } };
    for (int y = 0; y < 600; ++y)
        for (int x = 0; x < 800; ++x)
        {
            TColor color = Mix(top, low, y, 600);
            for (const auto &glow : glows)
            {
                const int nDX = x - glow.nX, nDY = (y - glow.nY) * 3 / 2;
                const int nFar = (nDX * nDX + nDY * nDY) / 64, nEnd = glow.nRadius * glow.nRadius / 64;
                if (nFar < nEnd)
                    color = Mix(color, glow.color, (nEnd - nFar) * 5 / 8, nEnd);
            }
            for (int n = 0; n < 3; ++n)
            {
                // A parabola every so many pixels, each range lower than the one behind.
                const int nLength = 520 - 110 * n, nAt = (x + 190 * n) % nLength - nLength / 2;
                const int nTop = 430 + 52 * n + nAt * nAt / (900 - 150 * n);
                if (y > nTop)
                    color = Mix(dunes[n], { 18, 22, 40 }, y - nTop, 260);
            }
            const int nGrain = Noise(x, y) % 5 - 2;
            desk.Set(x, y, { color.nRed + nGrain, color.nGreen + nGrain, color.nBlue + nGrain });
        }
    return desk.Save(strFolder, "desktop.bmp");
}

bool PaintPanel(const std::string &strFolder)
{
    CPainting panel(64, 64, s_Key);
    for (int y = 0; y < 64; ++y)
        for (int x = 0; x < 64; ++x)
        {
            const int nGrain = Noise(x, y) % 5 - 2 + ((x + y) % 4 == 0);
            panel.Set(x, y, { 52 + nGrain, 60 + nGrain, 78 + nGrain });
        }
    return panel.Save(strFolder, "panel.bmp");
}

bool PaintTitle(const std::string &strFolder, const char *pszName, const TColor &top, const TColor &low)
{
    CPainting title(16, 16, s_Key);
    for (int y = 0; y < 16; ++y)
        for (int x = 0; x < 16; ++x)
            title.Set(x, y, y == 0 ? Mix(top, { 255, 255, 255 }, 1, 4) : Mix(top, low, y, 15));
    return title.Save(strFolder, pszName);
}

// A cross of two pixels' width, in four states side by side.
bool PaintClose(const std::string &strFolder)
{
    const TColor grounds[] = { { 60, 68, 88 }, { 150, 56, 56 }, { 196, 78, 72 }, { 60, 66, 80 } };
    const TColor marks[] = { { 214, 222, 232 }, { 255, 255, 255 }, { 255, 255, 255 }, { 104, 112, 126 } };
    CPainting close(56, 14, s_Key);
    for (int n = 0; n < 4; ++n)
        for (int y = 0; y < 14; ++y)
            for (int x = 0; x < 14; ++x)
            {
                const bool bMark =
                    x >= 2 && x < 10 && y >= 2 && y < 10 && (x == y || x == y + 1 || x + y == 11 || x + y == 12);
                // The first pixel of all is the key of each state.
                close.Set(14 * n + x, y, x + y == 0 ? s_Key : bMark ? marks[n] : grounds[n]);
            }
    return close.Save(strFolder, "close.bmp");
}

bool PaintCheck(const std::string &strFolder)
{
    CPainting check(10, 10, s_Key);
    static const char *const s_pszMark[10] = { "..........", ".........#", "........##", "#......##.", "##....##..",
                                               ".##..##...", "..####....", "...##.....", "..........", ".........." };
    for (int y = 0; y < 10; ++y)
        for (int x = 0; x < 10; ++x)
            if (s_pszMark[y][x] == '#')
                check.Set(x, y, { 255, 206, 120 });
    return check.Save(strFolder, "check.bmp");
}

// Round glass buttons, whose corners can be clicked through.
bool PaintGems(const std::string &strFolder)
{
    const TColor bodies[] = { { 48, 128, 148 }, { 36, 92, 112 }, { 74, 170, 186 }, { 84, 90, 102 } };
    CPainting gems(4 * 40, 40, s_Key);
    for (int n = 0; n < 4; ++n)
        for (int y = 0; y < 40; ++y)
            for (int x = 0; x < 40; ++x)
            {
                const int nDX = 2 * x - 39, nDY = 2 * y - 39, nFar = nDX * nDX + nDY * nDY;
                if (nFar > 38 * 38)
                    continue;
                TColor color = Mix(Mix(bodies[n], { 255, 255, 255 }, 1, 3), Mix(bodies[n], { 0, 0, 0 }, 1, 3), y, 39);
                if (nFar > 34 * 34)
                    color = Mix(bodies[n], { 10, 14, 24 }, 2, 3);
                const int nLX = nDX, nLY = (nDY + 18) * 2;
                if (n != 1 && nLX * nLX + nLY * nLY < 24 * 24)
                    color = Mix(color, { 255, 255, 255 }, 2, 5);
                gems.Set(40 * n + x, y, color);
            }
    return gems.Save(strFolder, "gems.bmp");
}

// A moth in eight positions of its wings.
bool PaintMoth(const std::string &strFolder, const char *pszName, const TColor &wing)
{
    static const int s_nSpan[8] = { 15, 13, 10, 6, 3, 6, 10, 13 };
    CPainting moth(8 * 32, 32, s_Key);
    for (int n = 0; n < 8; ++n)
        for (int y = 0; y < 32; ++y)
            for (int x = 0; x < 32; ++x)
            {
                const int nDX = 2 * x - 31, nUp = y - 12, nDown = y - 21, nSpan = s_nSpan[n];
                const int nSide = std::abs(nDX);
                const int nUpper = nSide * nSide * 100 / (4 * nSpan * nSpan) + nUp * nUp * 100 / 64;
                const int nLower = nSide * nSide * 100 / (3 * nSpan * nSpan) + nDown * nDown * 100 / 30;
                const int nBest = std::min(nUpper, nLower);
                if (nSide <= 2 && y >= 8 && y <= 25)
                    moth.Set(32 * n + x, y, { 52, 44, 40 });
                else if (nBest < 100)
                    moth.Set(32 * n + x, y,
                             nBest > 74                 ? Mix(wing, { 20, 16, 24 }, 3, 5)
                             : nBest > 24 && nBest < 40 ? Mix(wing, { 255, 255, 255 }, 2, 3)
                                                        : Mix(wing, { 255, 255, 255 }, 32 - y, 64));
            }
    return moth.Save(strFolder, pszName);
}

// Four signs of the weather, as pictures for statics.
bool PaintSigns(const std::string &strFolder)
{
    CPainting signs(4 * 32, 32, s_Key);
    const auto Disc = [&](int nSign, int nX, int nY, int nRadius, const TColor &color)
    {
        for (int y = 0; y < 32; ++y)
            for (int x = 0; x < 32; ++x)
                if ((x - nX) * (x - nX) + (y - nY) * (y - nY) <= nRadius * nRadius)
                    signs.Set(32 * nSign + x, y, Mix(Mix(color, { 255, 255, 255 }, 1, 4), color, y, 31));
    };
    const TColor sun = { 255, 196, 84 }, moon = { 222, 228, 240 }, cloud = { 176, 190, 208 }, drop = { 92, 164, 224 };
    Disc(0, 16, 16, 8, sun);
    for (int n = 0; n < 8; ++n)
    {
        static const int s_nRay[8][2] = { { 16, 3 },  { 25, 7 }, { 29, 16 }, { 25, 25 },
                                          { 16, 29 }, { 7, 25 }, { 3, 16 },  { 7, 7 } };
        Disc(0, s_nRay[n][0], s_nRay[n][1], 2, sun);
    }
    Disc(1, 15, 16, 12, moon);
    Disc(1, 21, 12, 10, s_Key);
    for (int y = 0; y < 32; ++y) // the shadow is a hole, not a lighter key
        for (int x = 0; x < 32; ++x)
            if ((x - 21) * (x - 21) + (y - 12) * (y - 12) <= 100)
                signs.Set(32 + x, y, s_Key);
    Disc(2, 11, 19, 7, cloud);
    Disc(2, 20, 16, 9, cloud);
    Disc(2, 25, 21, 5, cloud);
    Disc(3, 16, 20, 8, drop);
    for (int y = 4; y < 20; ++y)
        for (int x = 16 - (y - 4) / 2; x <= 16 + (y - 4) / 2; ++x)
            signs.Set(96 + x, y, Mix(Mix(drop, { 255, 255, 255 }, 1, 3), drop, y, 24));
    return signs.Save(strFolder, "signs.bmp");
}

// 256 colours for the modes with a palette: a coarse cube, and ramps of what the
// pictures are made of.
bool PaintPalette(const std::string &strFolder)
{
    static const struct
    {
        TColor from, to;
        int nCount;
    } s_Ramps[] = { { { 14, 20, 38 }, { 66, 92, 118 }, 40 },   { { 60, 84, 110 }, { 226, 150, 96 }, 36 },
                    { { 40, 70, 100 }, { 52, 110, 140 }, 12 }, { { 24, 28, 46 }, { 76, 78, 106 }, 28 },
                    { { 20, 24, 34 }, { 240, 244, 250 }, 40 }, { { 70, 36, 12 }, { 255, 206, 120 }, 18 },
                    { { 16, 52, 64 }, { 130, 206, 220 }, 18 } };
    CPalette palette;
    xlong lCount = 0;
    const auto Add = [&](const TColor &color)
    {
        const TRGBA Color((unsigned char)color.nRed, (unsigned char)color.nGreen, (unsigned char)color.nBlue);
        palette.SetIndex(&Color, lCount++);
    };
    for (int n = 0; n < 64; ++n)
        Add({ n / 16 * 85, n / 4 % 4 * 85, n % 4 * 85 });
    for (const auto &ramp : s_Ramps)
        for (int n = 0; n < ramp.nCount; ++n)
            Add(Mix(ramp.from, ramp.to, n, ramp.nCount - 1));
    // The table of an earlier palette of this name would be taken for this one's.
    std::remove((strFolder + "/dusk.tab").c_str());
    CBitmap swatch;
    if (!swatch.CreateIndex(16, 16, 8, &palette, 0))
        return false;
    for (int n = 0; n < 256; ++n)
        swatch.m_pData[n / 16 * swatch.m_lPitch + n % 16] = (unsigned char)n;
    return swatch.Save((strFolder + "/dusk.bmp").c_str(), nullptr, nullptr, nullptr, 0) != 0;
}
} // namespace

bool PaintArt(const char *pszFolder)
{
    const std::string strFolder = pszFolder;
    return PaintDesktop(strFolder) && PaintPanel(strFolder) &&
           PaintTitle(strFolder, "title_on.bmp", { 74, 136, 166 }, { 40, 84, 114 }) &&
           PaintTitle(strFolder, "title_off.bmp", { 88, 96, 114 }, { 66, 72, 88 }) && PaintClose(strFolder) &&
           PaintCheck(strFolder) && PaintGems(strFolder) && PaintMoth(strFolder, "moth1.bmp", { 226, 150, 84 }) &&
           PaintMoth(strFolder, "moth2.bmp", { 120, 176, 214 }) && PaintSigns(strFolder) && PaintPalette(strFolder);
}
