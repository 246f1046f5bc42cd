#pragma once

#include "tarvix/globals.h"

// Darkening through the shade tables of alpha.h, safe for words that have no
// place of their own in the cube.

/// The cube's value for a colour index, lSteps (0 to 31) down on each channel.
inline unsigned short ShadeDown(unsigned short usIndex, xlong lSteps)
{
    const unsigned short *pPlace = glb->m_ShadePointers[usIndex];
    const xlong lBack = glb->m_ShadeStepAll[lSteps];
    return pPlace - glb->m_pShadeCube >= lBack ? pPlace[-lBack] : *glb->m_pShadeCube;
}

/// The 5-bit value of one channel of a screen word, by the format of Set16Bit.
inline unsigned ScreenChannel(unsigned uWord, unsigned uShift, unsigned uLoss)
{
    const unsigned uMove = uShift + 3 > uLoss ? uShift + 3 - uLoss : 0;
    return uMove < 16 ? uWord >> uMove & 31 : 0;
}

/// The 15-bit colour index of a screen word.
inline unsigned short ScreenIndex(unsigned uWord)
{
    return (unsigned short)(ScreenChannel(uWord, glb->m_uRedShift, glb->m_uRedLoss) << 10 |
                            ScreenChannel(uWord, glb->m_uGreenShift, glb->m_uGreenLoss) << 5 |
                            ScreenChannel(uWord, glb->m_uBlueShift, glb->m_uBlueLoss));
}

inline bool IsShadeReady(xlong lDepth)
{
    return lDepth != 16 || glb->m_pShadeCube;
}
