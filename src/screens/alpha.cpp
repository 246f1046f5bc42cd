#include "tarvix/alpha.h"

#include "tarvix/error.h"
#include "tarvix/globals.h"
#include "tarvix/memory.h"

#include <algorithm>

namespace
{
enum
{
    CUBE_SIDE = 96,
    CUBE_MARGIN = 32, // steps below the darkest value
    BRIGHT_SIDE = 64
};

// Channels of one byte each.
unsigned short ColourIndex(xlong lRed, xlong lGreen, xlong lBlue)
{
    return (unsigned short)((lRed & ~7) * 128 | (lGreen & ~7) * 4 | lBlue / 8);
}

xlong Clamp31(xlong lValue)
{
    return std::clamp(lValue, (xlong)0, (xlong)31);
}

// Steps of a channel in 1/31 of its largest value. The constant is a little
// less than 1/31, and hosts' pictures count on what that makes of the values.
struct TScale
{
    TScale(xulong ulLoss, xulong ulChannelShift)
        : dScale((double)((1u << (ulLoss < 8 ? 8 - ulLoss : 0)) - 1) * 0.032258064f), ulShift(ulChannelShift & 31)
    {
    }

    unsigned short At(xlong lStep) const { return (unsigned short)((xulong)(lStep * dScale) << ulShift); }

    double dScale;
    xulong ulShift;
};

xlong Divide(xlong lValue, double dFactor)
{
    const double dResult = lValue / dFactor;
    // Hosts get something defined for a factor of 0.
    return dResult > -32768.0 && dResult < 32767.0 ? (xlong)dResult : 31;
}
} // namespace

unsigned short Set16Bit(unsigned short usRedShift, unsigned short usRedLoss, unsigned short usGreenShift,
                        unsigned short usGreenLoss, unsigned short usBlueShift, unsigned short usBlueLoss)
{
    XDELETE_ARRAY(glb->m_pIndexToScreen);
    glb->m_pIndexToScreen = XNEW(unsigned short[32768]);
    if (!glb->m_pIndexToScreen)
        return 0;
    glb->m_uRedShift = usRedShift;
    glb->m_uRedLoss = usRedLoss;
    glb->m_uGreenShift = usGreenShift;
    glb->m_uGreenLoss = usGreenLoss;
    glb->m_uBlueShift = usBlueShift;
    glb->m_uBlueLoss = usBlueLoss;
    const TScale red(usRedLoss, usRedShift), green(usGreenLoss, usGreenShift), blue(usBlueLoss, usBlueShift);
    unsigned short *pusEntry = glb->m_pIndexToScreen;
    for (xlong r = 0; r < 32; ++r)
        for (xlong g = 0; g < 32; ++g)
            for (xlong b = 0; b < 32; ++b)
                *pusEntry++ = red.At(r) | green.At(g) | blue.At(b);
    return 1;
}

xlong PreCalcShade()
{
    if (glb->m_bShadeDone)
        return 1;
    glb->m_bShadeDone = 1;
    glb->m_pShadeCube = XNEW(unsigned short[CUBE_SIDE * CUBE_SIDE * CUBE_SIDE]);
    if (!glb->m_pShadeCube)
        return xErrorTxt("Couldn't allocate memory for alpha channel table");
    std::fill_n(glb->m_ShadePointers, 65536, glb->m_pShadeCube);
    unsigned short *pusEntry = glb->m_pShadeCube;
    const auto IsInside = [](xlong l) { return l >= CUBE_MARGIN && l < CUBE_MARGIN + 32; };
    for (xlong i = 0; i < CUBE_SIDE; ++i)
        for (xlong j = 0; j < CUBE_SIDE; ++j)
            for (xlong k = 0; k < CUBE_SIDE; ++k, ++pusEntry)
            {
                *pusEntry = ColourIndex(Clamp31(i - CUBE_MARGIN) * 8, Clamp31(j - CUBE_MARGIN) * 8,
                                        Clamp31(k - CUBE_MARGIN) * 8);
                if (IsInside(i) && IsInside(j) && IsInside(k))
                    glb->m_ShadePointers[*pusEntry] = pusEntry;
            }
    for (xlong i = 0; i < 32; ++i)
    {
        glb->m_ShadeStepRed[i] = i * CUBE_SIDE * CUBE_SIDE;
        glb->m_ShadeStepGreen[i] = i * CUBE_SIDE;
        glb->m_ShadeStepBlue[i] = i;
        glb->m_ShadeStepAll[i] = i * (CUBE_SIDE * CUBE_SIDE + CUBE_SIDE + 1);
    }
    std::fill_n(glb->m_BrightPointers, 65536, &glb->m_BrightCube[0]);
    pusEntry = glb->m_BrightCube;
    for (xlong i = 0; i < BRIGHT_SIDE; ++i)
        for (xlong j = 0; j < BRIGHT_SIDE; ++j)
            for (xlong k = 0; k < BRIGHT_SIDE; ++k, ++pusEntry)
            {
                *pusEntry = ColourIndex(Clamp31(i) * 8, Clamp31(j) * 8, Clamp31(k) * 8);
                if (i < 32 && j < 32 && k < 32)
                    glb->m_BrightPointers[*pusEntry] = pusEntry;
            }
    CalcShadow(2.0f);
    return 1;
}

void PreCalcShade24()
{
    for (xlong i = 0; i < 768; ++i)
        glb->m_ClampTable[i] = (unsigned char)std::clamp(i - 256, (xlong)0, (xlong)255);
}

void CalcShadow(float fFactor)
{
    xlong r = 0, g = 0, b = 0;
    for (xlong i = 0; i < 65535; ++i)
    {
        glb->m_ShadowTable[ColourIndex(r * 8, g * 8, b * 8)] =
            ColourIndex(Divide(r, fFactor) * 8, Divide(g, fFactor) * 8, Divide(b, fFactor) * 8);
        if (++b == 32)
        {
            b = 0;
            if (++g == 32)
            {
                g = 0;
                ++r;
            }
        }
    }
}

void DeleteShade()
{
    XDELETE_ARRAY(glb->m_pShadeCube);
    glb->m_pShadeCube = nullptr;
    XDELETE_ARRAY(glb->m_pIndexToScreen);
    glb->m_pIndexToScreen = nullptr;
}
