// Bitmaps that are made for the screen in the globals.
#pragma once

#include "tarvix/bitmap.h"

/// Makes an empty bitmap of 24 bits, to be filled and then brought to the screen's format.
/// @return 0 with the bitmap empty when the memory can't be had
xlong CreateForScreen(CBitmap *pBitmap, xlong lWidth, xlong lHeight);
/// Into the kind of bitmap that the screen draws fastest, or at least into its format.
/// @return 1, also without a screen, which leaves it as it is
xlong BringToScreen(CBitmap *pBitmap);
