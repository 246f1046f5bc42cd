#include "scene.h"

#include "tarvix/error.h"

#include <algorithm>

namespace
{
struct TColor
{
    int nRed, nGreen, nBlue;
};

TColor Mix(const TColor &a, const TColor &b, int nPart, int nWhole)
{
    nPart = std::clamp(nPart, 0, nWhole);
    return { a.nRed + (b.nRed - a.nRed) * nPart / nWhole, a.nGreen + (b.nGreen - a.nGreen) * nPart / nWhole,
             a.nBlue + (b.nBlue - a.nBlue) * nPart / nWhole };
}

unsigned Noise(unsigned uX, unsigned uY)
{
    unsigned u = uX * 374761393u + uY * 668265263u;
    u = (u ^ u >> 13) * 1274126177u;
    return u ^ u >> 16;
}

// Height of a range of hills above the horizon, in 1/1000 of the picture's height.
int Ridge(int nX, int nWidth, int nRange)
{
    const int nAt = nX * 1024 / nWidth;
    static const int s_nWaves[3][3][3] = { { { 90, 2, 100 }, { 46, 5, 700 }, { 22, 13, 40 } },
                                           { { 62, 3, 600 }, { 30, 7, 90 }, { 14, 17, 350 } },
                                           { { 30, 4, 260 }, { 16, 9, 820 }, { 8, 23, 130 } } };
    static const int s_nBase[3] = { 120, 72, 30 };
    int nHeight = s_nBase[nRange];
    for (const auto &wave : s_nWaves[nRange])
        nHeight += wave[0] * Sine(nAt * wave[1] / 2 + wave[2]) / 4096;
    return std::max(nHeight, 2);
}

const TColor s_Hills[3] = { { 104, 78, 122 }, { 66, 54, 98 }, { 34, 32, 64 } };
const TColor s_Mist[3] = { { 214, 138, 122 }, { 132, 92, 122 }, { 62, 52, 88 } };

TColor Sky(int nX, int nY, int nWidth, int nHeight, int nHorizon)
{
    const TColor top = { 38, 44, 98 }, middle = { 172, 92, 128 }, low = { 250, 176, 112 };
    TColor color =
        nY * 2 < nHorizon ? Mix(top, middle, nY * 2, nHorizon) : Mix(middle, low, nY * 2 - nHorizon, nHorizon);
    // The sun and its glow.
    const int nDX = (nX - nWidth * 2 / 3) * 1000 / nHeight;
    const int nDY = (nY - nHorizon * 3 / 4) * 1000 / nHeight;
    const int nDistance = nDX * nDX + nDY * nDY;
    const int nSun = 3000, nGlow = 110000;
    if (nDistance < nSun)
        return { 255, 240, 205 };
    color = Mix({ 255, 226, 160 }, color, std::min(nDistance - nSun, nGlow) / 100, nGlow / 100);
    // Stars where it is dark.
    if (nY * 3 < nHorizon && Noise(nX, nY) % 1500 == 0)
        return { 225, 225, 245 };
    return color;
}

TColor AboveWater(int nX, int nY, int nWidth, int nHeight, int nHorizon)
{
    TColor color = Sky(nX, nY, nWidth, nHeight, nHorizon);
    for (int nRange = 0; nRange < 3; ++nRange)
    {
        const int nTop = nHorizon - Ridge(nX, nWidth, nRange) * nHeight / 1000;
        if (nY >= nTop)
            color = Mix(s_Hills[nRange], s_Mist[nRange], nY - nTop, std::max(nHorizon - nTop, 1) + nHeight / 40);
    }
    return color;
}
} // namespace

xlong Sine(xlong lAngle)
{
    // A parabola through the half circle, bent towards the true curve.
    lAngle &= 1023;
    const bool bNegative = lAngle >= 512;
    const xlong lHalf = lAngle & 511;
    const xlong lParabola = lHalf * (512 - lHalf) / 16;
    const xlong lBent = lParabola + (lParabola * lParabola / 4096 - lParabola) * 225 / 1000;
    return bNegative ? -lBent : lBent;
}

xlong PaintLandscape(CBitmap &bitmap, xlong lWidth, xlong lHeight)
{
    if (!bitmap.CreateRGB(lWidth, lHeight, 24, 8, 8, 8, 0, 8, 16, 0))
        return xError(XERR_MEMORY);
    const int nWidth = (int)lWidth, nHeight = (int)lHeight;
    const int nHorizon = nHeight * 5 / 8;
    bitmap.LockBitmapData();
    for (int y = 0; y < nHeight; ++y)
    {
        for (int x = 0; x < nWidth; ++x)
        {
            TColor color;
            if (y < nHorizon)
                color = AboveWater(x, y, nWidth, nHeight, nHorizon);
            else
            {
                // The lake shows the sky again, broken by its waves.
                const int nDepth = y - nHorizon;
                const int nWave = (int)(Sine(nDepth * nDepth / 3 + x) * (2 + nDepth / 16) / 4096);
                const int nBack = std::clamp(nHorizon - 1 - nDepth * 3 / 2 + nWave, 0, nHorizon - 1);
                color = AboveWater(std::clamp(x + nWave * 2, 0, nWidth - 1), nBack, nWidth, nHeight, nHorizon);
                color = Mix(color, { 22, 30, 66 }, 30 + nDepth * 40 / std::max(nHeight - nHorizon, 1), 100);
            }
            TRGBA rgba((unsigned char)color.nRed, (unsigned char)color.nGreen, (unsigned char)color.nBlue);
            bitmap.PutPixel(x, y, &rgba);
        }
    }
    bitmap.ReleaseBitmapData();
    return 1;
}

xlong PaintTile(CBitmap &bitmap)
{
    if (!bitmap.CreateRGB(64, 64, 24, 8, 8, 8, 0, 8, 16, 0))
        return xError(XERR_MEMORY);
    bitmap.LockBitmapData();
    for (int y = 0; y < 64; ++y)
    {
        for (int x = 0; x < 64; ++x)
        {
            const int nEdge = std::min({ x, y, 63 - x, 63 - y });
            const int nRing = std::max(std::abs(x * 2 - 63), std::abs(y * 2 - 63));
            TColor color = Mix({ 92, 200, 196 }, { 24, 82, 118 }, x + y, 126);
            if (nEdge < 3)
                color = { 240, 246, 232 };
            else if (nRing < 22)
                color = Mix({ 255, 214, 120 }, { 220, 120, 70 }, nRing, 22);
            else if ((x ^ y) & 8)
                color = Mix(color, { 12, 34, 58 }, 1, 4);
            TRGBA rgba((unsigned char)color.nRed, (unsigned char)color.nGreen, (unsigned char)color.nBlue);
            bitmap.PutPixel(x, y, &rgba);
        }
    }
    bitmap.ReleaseBitmapData();
    return 1;
}

void MakePalette(CPalette &palette)
{
    for (int i = 0; i < 256; ++i)
    {
        const int nGrey = (i - 215) * 255 / 41;
        TRGBA color((unsigned char)(i / 36 * 51), (unsigned char)(i / 6 % 6 * 51), (unsigned char)(i % 6 * 51));
        if (i >= 216)
            color.Set((unsigned char)nGrey, (unsigned char)nGrey, (unsigned char)nGrey);
        palette.SetIndex(&color, i);
    }
}
