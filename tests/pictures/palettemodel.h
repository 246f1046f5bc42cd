// The palette search by its definition, entry by entry.
#pragma once

#include "tarvix/palette.h"

inline long Distance(const TRGBA &a, const unsigned *pRGB)
{
    const long r = a.ucRed - (long)pRGB[0], g = a.ucGreen - (long)pRGB[1], b = a.ucBlue - (long)pRGB[2];
    return r * r + g * g + b * b;
}

inline long MatchModel(const CPalette &palette, const unsigned *pRGB)
{
    if (palette.m_ucFirst >= palette.m_ucLast)
        return palette.m_ucFirst;
    long lBest = 196608, lIndex = palette.m_ucFirst;
    for (long i = palette.m_ucFirst; i < palette.m_ucLast; ++i)
    {
        const long lDistance = Distance(palette.m_Colors[i], pRGB);
        if (!lDistance)
            return i;
        if (lDistance < lBest)
        {
            lBest = lDistance;
            lIndex = i;
        }
    }
    return lIndex;
}

inline long SecondModel(const CPalette &palette, const unsigned *pRGB)
{
    const long lMatch = MatchModel(palette, pRGB);
    if (palette.m_ucFirst > palette.m_ucLast)
        return palette.m_ucFirst;
    long lBest = 196608, lIndex = palette.m_ucFirst;
    for (long i = palette.m_ucFirst; i <= palette.m_ucLast; ++i)
    {
        const long lDistance = Distance(palette.m_Colors[i], pRGB);
        if (lDistance < lBest && i != lMatch)
        {
            lBest = lDistance;
            lIndex = i;
        }
    }
    return lIndex;
}
