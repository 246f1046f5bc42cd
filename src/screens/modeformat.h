#pragma once

#include "pictures/pixelformat.h"
#include "tarvix/screen.h"

inline TPixelFormat FormatOf(const SVmode &mode)
{
    return { mode.lRedBits, mode.lGreenBits, mode.lBlueBits, mode.lRedShift, mode.lGreenShift, mode.lBlueShift };
}
