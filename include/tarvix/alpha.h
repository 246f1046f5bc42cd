#pragma once

#include "tarvix/types.h"

// Tables for darkening pixels, kept in the globals. A host builds them after
// it has chosen a display mode: Set16Bit and PreCalcShade at 16 bits,
// PreCalcShade24 at 24. Nothing here is tied to the mode afterwards. A colour
// index is red * 1024 + green * 32 + blue, of 5 bits each.

/// Stores the display's 16-bit format and builds the map from colour indices
/// to its words. The map never reaches full white.
/// @param usRedShift  position in bits; likewise green and blue
/// @param usRedLoss   8 less the channel's bits; likewise green and blue
/// @return 1; 0 when the memory can't be had
TARVIX_API unsigned short Set16Bit(unsigned short usRedShift, unsigned short usRedLoss, unsigned short usGreenShift,
                                   unsigned short usGreenLoss, unsigned short usBlueShift, unsigned short usBlueLoss);
/// Builds the cubes and CalcShadow(2), once: after DeleteShade it builds
/// nothing again, as it goes by m_bShadeDone.
/// @return 1; 0 with a text when the memory can't be had
TARVIX_API xlong PreCalcShade();
/// Builds the table that limits sums of bytes: index b + a gives b + a - 256 within 0 and 255.
TARVIX_API void PreCalcShade24();
/// Builds the shadow table, which maps a colour index to that of its shadow.
/// @param fFactor  what the channels are divided by, above 0
TARVIX_API void CalcShadow(float fFactor);
/// Frees the shade cube and the map of Set16Bit.
TARVIX_API void DeleteShade();
