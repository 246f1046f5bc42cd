#pragma once

#include "pictures/pixelformat.h"
#include "tarvix/bitmap.h"
#include "tarvix/types.h"

#include <stdint.h>

/// The pixels that an area is copied from or to: those of a bitmap, of a locked
/// frame buffer or of a working copy. Owns nothing.
struct TPixelBlock
{
    unsigned char *pData;
    xlong lPitch;
    xlong lDepth;             ///< bits per pixel
    TPixelFormat format;      ///< of direct colour
    const CPalette *pPalette; ///< of 8 bits; null without one
    const CRect *pClip;       ///< within the pixels
};

inline TPixelBlock BlockOf(const CBitmapBase &bitmap)
{
    return { bitmap.m_pData, bitmap.m_lPitch, bitmap.m_lDepth, FormatOf(bitmap), bitmap.m_pPalette, &bitmap.m_rcClip };
}

inline void ClipToAll(CBitmapBase &bitmap)
{
    bitmap.m_rcClip.SetXYWH(0, 0, bitmap.m_lWidth, bitmap.m_lHeight);
}

/// @return a palette that equals it, for the caller to delete; null without memory
CPalette *NewClone(const CPalette &palette);

/// The width or height that a drawing call means: -1 and -2 stand for the bitmap's.
inline xlong SizeOrDefault(xlong lSize, xlong lDefault)
{
    return lSize == -1 || lSize == -2 ? lDefault : lSize;
}

// Sizes of a bitmap's block. They come from files and hosts, so they are
// worked out in 64 bits.

inline xlong BytesPerPixel(xlong lDepth)
{
    return (xlong)(((int64_t)lDepth + 7) / 8);
}

/// Bytes of a row, padded to 4; meaningful where BlockSize is not -1.
inline xlong PaddedPitch(xlong lWidth, xlong lBytesPerPixel)
{
    return (xlong)(((int64_t)lBytesPerPixel * lWidth + 3) & ~(int64_t)3);
}

/// Bytes of a block of rows; -1 when they are negative or can't be counted in 31 bits.
inline xlong RowsSize(int64_t llPitch, xlong lHeight)
{
    const int64_t llMost = 0x7fff0000; // room for the allocator's own bytes
    if (llPitch < 0 || lHeight < 0 || llPitch > llMost || llPitch * lHeight > llMost)
        return -1;
    return (xlong)(llPitch * lHeight);
}

inline xlong BlockSize(xlong lWidth, xlong lHeight, xlong lBytesPerPixel)
{
    if (lWidth < 0 || lBytesPerPixel < 0)
        return -1;
    return RowsSize(((int64_t)lBytesPerPixel * lWidth + 3) & ~(int64_t)3, lHeight);
}
