#pragma once

#include "pictures/bitmapblock.h"
#include "tarvix/palette.h"
#include "tarvix/rect.h"
#include "tarvix/types.h"

// Copies of pixel areas between blocks, with a change of format. They take
// blocks, so that bitmaps and locked display surfaces are served alike.

/// The clipping that all of them begin with. Nothing overflows, whatever the
/// arguments; where the result is 1, the area lies inside both clips and holds a pixel.
/// @return 1 with the six values adjusted; 0 when nothing is left
TARVIX_INTERNAL xlong ClipAreas(xlong *plSourceX, xlong *plSourceY, xlong *plWidth, xlong *plHeight,
                                const CRect *pSourceClip, xlong *plTargetX, xlong *plTargetY, const CRect *pTargetClip);

/// An area as a caller wants it, which the kernels clip, and how it is copied.
struct TCopy
{
    xlong lSourceX;
    xlong lSourceY;
    xlong lTargetX;
    xlong lTargetY;
    xlong lWidth; ///< pixels
    xlong lHeight;
    xlong lTransparent; ///< 1 leaves out what equals the first pixel of the source block
    xlong lDither; ///< not 0 carries each row's rounding errors on to the right, from 24 to 16 bits, unless transparent
};

/// Copies an area; source and target must not overlap. It clips, changes the
/// target area alone and calls the load-data callback before every 32nd row.
/// The blocks are of the depths that the kernel's name tells.
/// @return 1; 0 when clipping leaves nothing, and without the palette of the block that is of 8 bits
typedef xlong TKernel(const TPixelBlock &source, const TPixelBlock &target, const TCopy &copy);

/// Needs no palette.
TARVIX_INTERNAL TKernel Convert8To8;
TARVIX_INTERNAL TKernel Convert8To16;
TARVIX_INTERNAL TKernel Convert8To24;
TARVIX_INTERNAL TKernel Convert16To16;
TARVIX_INTERNAL TKernel Convert16To24;
TARVIX_INTERNAL TKernel Convert24To24;
TARVIX_INTERNAL TKernel Convert24To16;
/// Searches the palette for every pixel. Transparent leaves out the pixels
/// that get the key's index.
TARVIX_INTERNAL TKernel Convert24To8;
/// Looks 15-bit words up in the globals' colour cube. The cube is made for the
/// first palette that is used, or read from the file named after it, and stays
/// until the globals drop it. Transparent, it leaves out index 0 and steps
/// four source pixels for each target pixel.
TARVIX_INTERNAL TKernel Convert16To8;

// Passes after a conversion, with the same arguments: exactly the pixels of the
// source's first colour get the first pixel's value.

/// Where no other pixel can get it. Calls the load-data callback once.
TARVIX_INTERNAL TKernel KeepKeyNone;
/// After a conversion from 24 to 16 bits.
TARVIX_INTERNAL TKernel KeepKey16;
/// After a conversion from 24 to 8 bits.
TARVIX_INTERNAL TKernel KeepKey8;

/// What there is for a pair of depths.
struct TKernelPair
{
    TKernel *pfnConvert;
    TKernel *pfnKeepKey;
    bool bCopies; ///< for plain copies too; the others search a palette
};

/// @return null for a pair without a kernel
const TKernelPair *FindKernels(xlong lFrom, xlong lTo);

/// Copies an area by the depths of both blocks, as far as copies go.
TARVIX_INTERNAL void CopyArea(const TPixelBlock &source, const TPixelBlock &target, const TCopy &copy);
