#include "pictures/bitmapblock.h"
#include "pictures/kernels.h"
#include "tarvix/bitmap.h"

#include <stdint.h>
#include <string.h>

namespace
{
// The format of the picture between 24 and 8 bits: the index of the colour cube.
const TPixelFormat s_fmt15 = { 5, 5, 5, 10, 5, 0 };

// A block that is about to take a bitmap's place.
struct TBlock
{
    unsigned char *pData;
    xlong lPitch;
    xlong lSize;
};

bool AllocBlock(TBlock &block, xlong lWidth, xlong lHeight, xlong lBytesPerPixel)
{
    block.lSize = BlockSize(lWidth, lHeight, lBytesPerPixel);
    block.lPitch = PaddedPitch(lWidth, lBytesPerPixel);
    block.pData = block.lSize < 0 ? nullptr : XNEW(unsigned char[(size_t)block.lSize]);
    return block.pData != nullptr;
}

// Whether the rows hold what a kernel is going to read from them: a converted
// bitmap can call its data indexed, and an indexed one can have any depth.
bool HasRows(const CBitmapBase &bitmap, xlong lBytesPerPixel)
{
    return bitmap.m_pData && bitmap.m_lPitch >= (int64_t)bitmap.m_lWidth * lBytesPerPixel;
}

// The whole of a bitmap and the block, both with the bitmap's clip.
TCopy WholeOf(const CBitmapBase &bitmap, xlong lDither)
{
    return { .lWidth = bitmap.m_lWidth, .lHeight = bitmap.m_lHeight, .lDither = lDither };
}

// Conversion of a whole bitmap to 16 or 24 bits, with the key pass.
void ConvertWhole(CBitmapBase &bitmap, TBlock &block, xlong lDepth, const TPixelFormat &fmt, xlong lFlags)
{
    TPixelBlock source = BlockOf(bitmap);
    if (!bitmap.m_bRGB)
        source.lDepth = 8;
    const TKernelPair *pPair = FindKernels(source.lDepth, lDepth);
    if (!pPair || !HasRows(bitmap, source.lDepth / 8))
        return;
    const TPixelBlock target = { block.pData, block.lPitch, lDepth, fmt, nullptr, source.pClip };
    const TCopy copy = WholeOf(bitmap, lFlags);
    pPair->pfnConvert(source, target, copy);
    if (!(lFlags & XBMP_NO_KEY_PASS))
        pPair->pfnKeepKey(source, target, copy);
}

// From one palette to another. Unless it is told not to, it sees to it that the
// key's new index is given to the key alone.
void MapIndices(const CBitmapBase &bitmap, TBlock &block, const CPalette &palette, xlong lFlags)
{
    unsigned char aucMap[256];
    for (xlong i = 0; i < 256; ++i)
        aucMap[i] = (unsigned char)palette.FindMatch(&bitmap.m_pPalette->m_Colors[i]);
    if (!(lFlags & XBMP_NO_KEY_PASS) && block.lSize)
    {
        const unsigned char ucKey = bitmap.m_pData[0];
        const unsigned char ucKeyTarget = aucMap[ucKey];
        const unsigned char ucOther = (unsigned char)palette.FindSecondBest(&bitmap.m_pPalette->m_Colors[ucKey]);
        for (xlong i = 0; i < 256; ++i)
            if (i != ucKey && aucMap[i] == ucKeyTarget)
                aucMap[i] = ucOther;
    }
    for (xlong y = 0; y < bitmap.m_lHeight; ++y)
    {
        const unsigned char *pSource = bitmap.m_pData + (size_t)y * (size_t)bitmap.m_lPitch;
        unsigned char *pTarget = block.pData + (size_t)y * (size_t)block.lPitch;
        for (xlong x = 0; x < bitmap.m_lWidth; ++x)
            pTarget[x] = aucMap[pSource[x]];
    }
}

// From 24 to 8 bits. @return 0 when the working copy can't be had
bool ConvertTo8(CBitmapBase &bitmap, TBlock &block, const CPalette *pPalette, xlong lFlags)
{
    const xlong lWorkSize = RowsSize((int64_t)block.lPitch * 2, bitmap.m_lHeight);
    unsigned char *pWork = lWorkSize < 0 ? nullptr : XNEW(unsigned char[(size_t)lWorkSize]);
    if (!pWork)
        return false;
    const TPixelBlock source = BlockOf(bitmap);
    const TPixelBlock work = { pWork, block.lPitch * 2, 16, s_fmt15, nullptr, source.pClip };
    const TPixelBlock target = { block.pData, block.lPitch, 8, TPixelFormat(), pPalette, source.pClip };
    const TCopy copy = WholeOf(bitmap, lFlags);
    Convert24To16(source, work, copy);
    Convert16To8(work, target, copy);
    if (!(lFlags & XBMP_NO_KEY_PASS))
        KeepKey8(source, target, copy);
    XDELETE_ARRAY(pWork);
    return true;
}
} // namespace

CPalette *NewClone(const CPalette &palette)
{
    CPalette *pClone = XNEW(CPalette);
    if (pClone && !pClone->Clone(&palette))
    {
        XDELETE(pClone);
        return nullptr;
    }
    return pClone;
}

xlong CBitmap::ConvertIndex(xlong lWidth, xlong lHeight, xlong lDepth, const CPalette *pPalette, xlong lFlags)
{
    ClipToAll(*this);
    m_bOnSurface = 0;
    if (m_lDepth == 8 && (!m_pPalette || !pPalette || !HasRows(*this, 1)))
        return 0;
    const bool bSame =
        m_lDepth != 8 && m_lBytesPerPixel == 1 && m_lDepth == lDepth && m_lPitch == PaddedPitch(m_lWidth, 1);
    CPalette *pClone = nullptr;
    if (pPalette)
    {
        pClone = NewClone(*pPalette);
        if (!pClone)
            return 0;
    }
    TBlock block = { nullptr, 0, 0 };
    if (!bSame)
    {
        if (!AllocBlock(block, m_lWidth, m_lHeight, 1))
        {
            XDELETE(pClone);
            return 0;
        }
        memset(block.pData, 127, (size_t)block.lSize);
        if (m_lDepth == 8)
            MapIndices(*this, block, *pPalette, lFlags);
        else if (m_lDepth == 24 && HasRows(*this, 3) && !ConvertTo8(*this, block, pPalette, lFlags))
        {
            XDELETE_ARRAY(block.pData);
            XDELETE(pClone);
            return 0;
        }
    }
    // A palette of a bitmap that is not of 8 bits is not the bitmap's to delete.
    if (m_lDepth == 8)
        XDELETE(m_pPalette);
    if (pClone)
        m_pPalette = pClone;
    if (bSame)
        return 1;
    XDELETE_ARRAY(m_pData);
    m_pData = block.pData;
    m_lPitch = block.lPitch;
    m_lBytesPerPixel = 1;
    m_lDepth = lDepth;
    m_bChanged = 1;
    return 1;
}

xlong CBitmap::ConvertRGB(xlong lWidth, xlong lHeight, xlong lDepth, xlong lRedBits, xlong lGreenBits, xlong lBlueBits,
                          xlong lRedShift, xlong lGreenShift, xlong lBlueShift, xlong lFlags)
{
    ClipToAll(*this);
    m_bOnSurface = 0;
    const xlong lBytesPerPixel = BytesPerPixel(lDepth);
    const TPixelFormat fmt = { lRedBits, lGreenBits, lBlueBits, lRedShift, lGreenShift, lBlueShift };
    if (m_lBytesPerPixel == lBytesPerPixel && m_lDepth == lDepth && FormatOf(*this) == fmt)
        return 1;
    TBlock block;
    if (!AllocBlock(block, m_lWidth, m_lHeight, lBytesPerPixel))
        return 0;
    memset(block.pData, 255, (size_t)block.lSize);
    if (m_bRGB && m_lDepth != 16 && m_lDepth != 24)
    {
        XDELETE_ARRAY(block.pData);
        return 0;
    }
    if (lDepth == 16 || lDepth == 24)
        ConvertWhole(*this, block, lDepth, fmt, lFlags);
    XDELETE_ARRAY(m_pData);
    m_pData = block.pData;
    m_lPitch = block.lPitch;
    m_lBytesPerPixel = lBytesPerPixel;
    m_lDepth = lDepth;
    SetFormat(*this, fmt);
    m_bChanged = 1;
    return 1;
}

xlong CBitmap::Blt(CBitmapBase *pSource, xlong lSourceX, xlong lSourceY, xlong lTargetX, xlong lTargetY, xlong lWidth,
                   xlong lHeight, xlong lTransparent, xlong lDither, xlong lUnused)
{
    if (lWidth == -1)
        lWidth = pSource->m_lWidth;
    if (lHeight == -1)
        lHeight = pSource->m_lHeight;
    m_bChanged = 1;
    CopyArea(BlockOf(*pSource), BlockOf(*this),
             { lSourceX, lSourceY, lTargetX, lTargetY, lWidth, lHeight, lTransparent, lDither });
    return 1;
}
