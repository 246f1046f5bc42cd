#pragma once

#include "pictures/pixelformat.h"
#include "tarvix/bitmap.h"
#include "tarvix/palette.h"
#include "tarvix/rect.h"
#include "tarvix/types.h"

// Copies of pixel areas between blocks, with a change of format. They take raw
// pointers, so that bitmaps and locked display surfaces are served alike. Each
// clips first, gives 0 when nothing is left and otherwise 1, changes the target
// area alone and calls the load-data callback before every 32nd row. Source
// and target areas must not overlap. lTransparent 1 leaves out what equals the
// first pixel of the source block.

/// The clipping that all of them begin with. Nothing overflows, whatever the
/// arguments; where the result is 1, the area lies inside both clips and holds a pixel.
/// @return 1 with the six values adjusted; 0 when nothing is left
TARVIX_INTERNAL xlong ClipAreas(xlong *plSourceX, xlong *plSourceY, xlong *plWidth, xlong *plHeight,
                                const CRect *pSourceClip, xlong *plTargetX, xlong *plTargetY, const CRect *pTargetClip);

TARVIX_INTERNAL xlong Convert8To8(const unsigned char *pSource, xlong lSourcePitch, xlong lSourceX, xlong lSourceY,
                                  xlong lWidth, xlong lHeight, const CRect *pSourceClip, xlong lTransparent,
                                  unsigned char *pTarget, xlong lTargetPitch, xlong lTargetX, xlong lTargetY,
                                  const CRect *pTargetClip);
/// @param pPalette  of the source; 0 is returned for null, here and wherever a palette is taken
TARVIX_INTERNAL xlong Convert8To16(const unsigned char *pSource, xlong lSourcePitch, xlong lSourceX, xlong lSourceY,
                                   xlong lWidth, xlong lHeight, const CPalette *pPalette, const CRect *pSourceClip,
                                   xlong lTransparent, unsigned char *pTarget, xlong lTargetPitch, xlong lTargetX,
                                   xlong lTargetY, const TPixelFormat &fmtTarget, const CRect *pTargetClip);
TARVIX_INTERNAL xlong Convert8To24(const unsigned char *pSource, xlong lSourcePitch, xlong lSourceX, xlong lSourceY,
                                   xlong lWidth, xlong lHeight, const CPalette *pPalette, const CRect *pSourceClip,
                                   xlong lTransparent, unsigned char *pTarget, xlong lTargetPitch, xlong lTargetX,
                                   xlong lTargetY, const TPixelFormat &fmtTarget, const CRect *pTargetClip);
TARVIX_INTERNAL xlong Convert16To16(const unsigned char *pSource, xlong lSourcePitch, xlong lSourceX, xlong lSourceY,
                                    xlong lWidth, xlong lHeight, const TPixelFormat &fmtSource,
                                    const CRect *pSourceClip, xlong lTransparent, unsigned char *pTarget,
                                    xlong lTargetPitch, xlong lTargetX, xlong lTargetY, const TPixelFormat &fmtTarget,
                                    const CRect *pTargetClip);
TARVIX_INTERNAL xlong Convert16To24(const unsigned char *pSource, xlong lSourcePitch, xlong lSourceX, xlong lSourceY,
                                    xlong lWidth, xlong lHeight, const TPixelFormat &fmtSource,
                                    const CRect *pSourceClip, xlong lTransparent, unsigned char *pTarget,
                                    xlong lTargetPitch, xlong lTargetX, xlong lTargetY, const TPixelFormat &fmtTarget,
                                    const CRect *pTargetClip);
TARVIX_INTERNAL xlong Convert24To24(const unsigned char *pSource, xlong lSourcePitch, xlong lSourceX, xlong lSourceY,
                                    xlong lWidth, xlong lHeight, const TPixelFormat &fmtSource,
                                    const CRect *pSourceClip, xlong lTransparent, unsigned char *pTarget,
                                    xlong lTargetPitch, xlong lTargetX, xlong lTargetY, const TPixelFormat &fmtTarget,
                                    const CRect *pTargetClip);
/// @param lDither  not 0 carries each row's rounding errors on to the right, unless transparent
TARVIX_INTERNAL xlong Convert24To16(const unsigned char *pSource, xlong lSourcePitch, xlong lSourceX, xlong lSourceY,
                                    xlong lWidth, xlong lHeight, const TPixelFormat &fmtSource,
                                    const CRect *pSourceClip, xlong lTransparent, xlong lDither, unsigned char *pTarget,
                                    xlong lTargetPitch, xlong lTargetX, xlong lTargetY, const TPixelFormat &fmtTarget,
                                    const CRect *pTargetClip);
/// Searches the palette for every pixel. Transparent leaves out the pixels
/// that get the key's index.
TARVIX_INTERNAL xlong Convert24To8(const unsigned char *pSource, xlong lSourcePitch, xlong lSourceX, xlong lSourceY,
                                   xlong lWidth, xlong lHeight, const TPixelFormat &fmtSource, const CRect *pSourceClip,
                                   xlong lTransparent, unsigned char *pTarget, xlong lTargetPitch, xlong lTargetX,
                                   xlong lTargetY, const CPalette *pPalette, const CRect *pTargetClip);
/// Looks 15-bit words up in the globals' colour cube. The cube is made for the
/// first palette that is used, or read from the file named after it, and stays
/// until the globals drop it. Transparent, it leaves out index 0 and steps
/// four source pixels for each target pixel.
TARVIX_INTERNAL xlong Convert16To8(const unsigned char *pSource, xlong lSourcePitch, xlong lSourceX, xlong lSourceY,
                                   xlong lWidth, xlong lHeight, const CRect *pSourceClip, xlong lTransparent,
                                   unsigned char *pTarget, xlong lTargetPitch, xlong lTargetX, xlong lTargetY,
                                   const CPalette *pPalette, const CRect *pTargetClip);

// Passes after a conversion: exactly the pixels of the source's first colour
// get the first pixel's value.

/// Calls the load-data callback once.
TARVIX_INTERNAL xlong KeepKeyNone();
/// After a conversion from 24 to 16 bits.
TARVIX_INTERNAL xlong KeepKey16(const unsigned char *pSource, xlong lSourcePitch, xlong lSourceX, xlong lSourceY,
                                xlong lWidth, xlong lHeight, const TPixelFormat &fmtSource, const CRect *pSourceClip,
                                unsigned char *pTarget, xlong lTargetPitch, xlong lTargetX, xlong lTargetY,
                                const TPixelFormat &fmtTarget, const CRect *pTargetClip);
/// After a conversion from 24 to 8 bits.
TARVIX_INTERNAL xlong KeepKey8(const unsigned char *pSource, xlong lSourcePitch, xlong lSourceX, xlong lSourceY,
                               xlong lWidth, xlong lHeight, const TPixelFormat &fmtSource, const CRect *pSourceClip,
                               unsigned char *pTarget, xlong lTargetPitch, xlong lTargetX, xlong lTargetY,
                               const CPalette *pPalette, const CRect *pTargetClip);

/// Where an area is copied to: the pixels of a bitmap or of a locked frame buffer.
struct TPixelBlock
{
    unsigned char *pData;
    xlong lPitch;
    xlong lDepth; ///< bits per pixel
    TPixelFormat format;
    const CRect *pClip;
};

/// Copies an area of a bitmap, by the depths of both; pairs without a kernel copy nothing.
/// @param lWidth  pixels; likewise lHeight
/// @param lDither  not 0 dithers from 24 to 16 bits, unless transparent
TARVIX_INTERNAL void CopyArea(const TPixelBlock &target, const CBitmapBase &source, xlong lSourceX, xlong lSourceY,
                              xlong lTargetX, xlong lTargetY, xlong lWidth, xlong lHeight, xlong lTransparent,
                              xlong lDither);
