#include "tarvix/bitmap.h"

#include "pictures/bitmapblock.h"
#include "pictures/kernels.h"
#include "tarvix/error.h"
#include "tarvix/globals.h"
#include "tarvix/misc.h"
#include "tarvix/pictype.h"
#include "tarvix/strings.h"
#include "tarvix/systemfiles.h"

#include <algorithm>
#include <stdint.h>
#include <stdio.h>
#include <string.h>

namespace
{
enum
{
    LAST_SAVE_NUMBER = 101
};

// An empty block in place of what the bitmap holds, and its size.
xlong CreateBlock(CBitmap &bitmap, xlong lWidth, xlong lHeight, xlong lDepth, xlong lBytesPerPixel)
{
    bitmap.Free();
    const xlong lSize = BlockSize(lWidth, lHeight, lBytesPerPixel);
    if (lSize < 0)
        return 0;
    bitmap.m_pData = XNEW(unsigned char[(size_t)lSize]);
    if (!bitmap.m_pData)
        return 0;
    memset(bitmap.m_pData, 0, (size_t)lSize);
    bitmap.m_lWidth = lWidth;
    bitmap.m_lHeight = lHeight;
    bitmap.m_lDepth = lDepth;
    bitmap.m_lBytesPerPixel = lBytesPerPixel;
    bitmap.m_lPitch = PaddedPitch(lWidth, lBytesPerPixel);
    ClipToAll(bitmap);
    bitmap.m_bChanged = 1;
    bitmap.m_bOnSurface = 0;
    return 1;
}

// The first free name of the numbered series.
bool NumberedName(const char *pszFileName, CPicType *pType, char *pszName, size_t ulSize)
{
    const char *pszExtension = "";
    pType->GetDesc(&pszExtension, nullptr);
    const char *pszDot = xStrrchr(pszFileName, '.');
    const int nStem = pszDot ? (int)(pszDot - pszFileName) : 0;
    TDate date;
    GetCurrentDate(&date);
    for (xlong i = 1; i <= LAST_SAVE_NUMBER; ++i)
    {
        snprintf(pszName, ulSize, "%.*s%04ld-%02ld-%02ld_%02ld.%s", nStem, pszFileName, (long)date.sYear,
                 (long)date.sMonth, (long)date.sDay, (long)i, pszExtension);
        if (!xFileExists(pszName))
            return true;
    }
    return false;
}

// The bytes of a 32-bit pixel.
struct TBytes32
{
    explicit TBytes32(const CBitmapBase &bitmap)
        : lRed(BytePos(bitmap.m_lRedShift, 4)), lGreen(BytePos(bitmap.m_lGreenShift, 4)),
          lBlue(BytePos(bitmap.m_lBlueShift, 4)), lAlpha(BytePos(bitmap.m_lAlphaShift, 4))
    {
    }

    void Put(unsigned char *pPixel, const TRGBA &colour) const
    {
        // A format without alpha has its shift at 0, where a colour can be.
        pPixel[lAlpha] = colour.ucAlpha;
        pPixel[lRed] = colour.ucRed;
        pPixel[lGreen] = colour.ucGreen;
        pPixel[lBlue] = colour.ucBlue;
    }

    xlong lRed;
    xlong lGreen;
    xlong lBlue;
    xlong lAlpha;
};

void FillRun32(CBitmapBase &bitmap, const TRGBA &colour)
{
    const TBytes32 bytes(bitmap);
    unsigned char *pPixel = bitmap.m_pData;
    // Without regard to the pitch, but not past the block.
    const int64_t llBlock = (int64_t)bitmap.m_lPitch * bitmap.m_lHeight / 4;
    const int64_t llCount = std::min((int64_t)bitmap.m_lWidth * bitmap.m_lHeight, llBlock);
    for (int64_t i = 0; i < llCount; ++i, pPixel += 4)
        bytes.Put(pPixel, colour);
}
} // namespace

CBitmapBase::~CBitmapBase() = default;

CBitmap::CBitmap()
{
    m_lWidth = m_lHeight = m_lDepth = m_lPitch = m_lBytesPerPixel = 0;
    m_lRedBits = m_lGreenBits = m_lBlueBits = m_lAlphaBits = 0;
    m_lRedShift = m_lGreenShift = m_lBlueShift = m_lAlphaShift = 0;
    m_pData = nullptr;
    m_bRGB = 1;
    m_bChanged = 1;
    m_pPalette = nullptr;
    m_rcClip.Set(0, 0, -1, -1);
    m_pSurface = nullptr;
    m_bOnSurface = 0;
}

CBitmap::~CBitmap()
{
    CBitmap::Free();
}

xlong CBitmap::CreateIndex(xlong lWidth, xlong lHeight, xlong lDepth, const CPalette *pPalette, xlong lFlags)
{
    // The palette can be the one that Free is about to delete.
    CPalette *pClone = nullptr;
    if (pPalette)
    {
        pClone = NewClone(*pPalette);
        if (!pClone)
        {
            Free();
            return 0;
        }
    }
    if (!CreateBlock(*this, lWidth, lHeight, lDepth, BytesPerPixel(lDepth)))
    {
        XDELETE(pClone);
        return 0;
    }
    m_bRGB = 0;
    m_pPalette = pClone;
    return 1;
}

xlong CBitmap::CreateRGB(xlong lWidth, xlong lHeight, xlong lDepth, xlong lRedBits, xlong lGreenBits, xlong lBlueBits,
                         xlong lRedShift, xlong lGreenShift, xlong lBlueShift, xlong lFlags)
{
    return CreateRGBA(lWidth, lHeight, lDepth, lRedBits, lGreenBits, lBlueBits, 0, lRedShift, lGreenShift, lBlueShift,
                      0, lFlags);
}

xlong CBitmap::CreateRGBA(xlong lWidth, xlong lHeight, xlong lDepth, xlong lRedBits, xlong lGreenBits, xlong lBlueBits,
                          xlong lAlphaBits, xlong lRedShift, xlong lGreenShift, xlong lBlueShift, xlong lAlphaShift,
                          xlong lFlags)
{
    if (lDepth != 8 && lDepth != 16 && lDepth != 24 && lDepth != 32)
        return 0;
    if (!CreateBlock(*this, lWidth, lHeight, lDepth, BytesPerPixel(lDepth)))
        return 0;
    SetFormat(*this, { lRedBits, lGreenBits, lBlueBits, lRedShift, lGreenShift, lBlueShift });
    m_lAlphaBits = lAlphaBits;
    m_lAlphaShift = lAlphaShift;
    m_bRGB = 1;
    return 1;
}

xlong CBitmap::Load(const char *pszFileName, xlong lUnused)
{
    CPicType *pType = glb->m_pPicTypeList->GetType(pszFileName);
    if (!pType)
        return xError(XERR_PICTURE_FORMAT);
    if (!pType->Load(pszFileName, this, nullptr))
        return xErrorTxt(pType->GetError());
    ClipToAll(*this);
    m_bChanged = 1;
    m_bOnSurface = 0;
    return 1;
}

xlong CBitmap::Save(const char *pszFileName, CPicType *pType, void *pParameters, CRect *pArea, xlong lFlags)
{
    if (!pType)
        pType = glb->m_pPicTypeList->GetType(pszFileName);
    if (!pType)
        return 0;
    char *pszNumbered = nullptr;
    if (lFlags & XBMP_SAVE_NUMBERED)
    {
        const size_t ulSize = strlen(pszFileName) + 80; // date, number and extension
        pszNumbered = XNEW(char[ulSize]);
        if (!pszNumbered)
            return xError(XERR_MEMORY);
        if (!NumberedName(pszFileName, pType, pszNumbered, ulSize))
        {
            XDELETE_ARRAY(pszNumbered);
            return 0;
        }
        pszFileName = pszNumbered;
    }
    const xlong lSaved = pType->Save(pszFileName, this, pParameters, pArea, lFlags);
    XDELETE_ARRAY(pszNumbered);
    return lSaved ? lSaved : xErrorTxt(pType->GetError());
}

xlong CBitmap::BltScale(CBitmapBase *pSource, CRect *pSourceArea, CRect *pTargetArea, xlong lFlags)
{
    m_bChanged = 1;
    return 1;
}

xlong CBitmap::Free()
{
    XDELETE_ARRAY(m_pData);
    m_pData = nullptr;
    XDELETE(m_pPalette);
    m_pPalette = nullptr;
    return 1;
}

void CBitmap::LockBitmapData() {}

void CBitmap::ReleaseBitmapData()
{
    m_bChanged = 1;
}

void CBitmap::ScreenLockBitmapData() {}

void CBitmap::ScreenReleaseBitmapData()
{
    m_bChanged = 0;
}

xlong CBitmap::Fill(const TRGBA *pColour)
{
    if (m_lDepth != 8 && m_lDepth != 16 && m_lDepth != 24 && m_lDepth != 32)
        return 0;
    if (!m_pData)
        return 1;
    LockBitmapData();
    const size_t ulPitch = (size_t)m_lPitch;
    const size_t ulSize = ulPitch * (size_t)m_lHeight;
    const bool bGrey = pColour->ucRed == pColour->ucGreen && pColour->ucRed == pColour->ucBlue;
    const TPixelFormat fmt = FormatOf(*this);
    if (m_lDepth == 8)
        memset(m_pData, m_pPalette ? m_pPalette->FindMatch(pColour) : 0, ulSize);
    else if (m_lDepth == 32)
        FillRun32(*this, *pColour);
    else if (bGrey)
        memset(m_pData, pColour->ucRed, ulSize);
    else if (m_lDepth == 16)
    {
        const unsigned short usValue = TFormat16(fmt).Pack(*pColour);
        for (xlong y = 0; y < m_lHeight; ++y)
            xMemset16(m_pData + (size_t)y * ulPitch, usValue, (xulong)m_lWidth);
    }
    else
    {
        unsigned char aucBytes[3];
        FillBytes24(fmt, *pColour, aucBytes);
        const xulong ulValue = (xulong)aucBytes[0] << 16 | (xulong)aucBytes[1] << 8 | aucBytes[2];
        for (xlong y = 0; y < m_lHeight && m_lWidth > 0; ++y)
            xMemset24(m_pData + (size_t)y * ulPitch, ulValue, (xulong)m_lWidth);
    }
    ReleaseBitmapData();
    return 1;
}

xlong CBitmap::PutPixel(xlong lOffset, const TRGBA *pColour)
{
    LockBitmapData();
    unsigned char *pPixel = m_pData + lOffset;
    switch (m_lDepth)
    {
    case 8:
        *pPixel = (unsigned char)(m_pPalette ? m_pPalette->FindMatch(pColour) : 0);
        break;
    case 16:
        StoreWord(pPixel, TFormat16(FormatOf(*this)).Pack(*pColour));
        break;
    case 24:
        pPixel[BytePos(m_lRedShift, 3)] = pColour->ucRed;
        pPixel[BytePos(m_lGreenShift, 3)] = pColour->ucGreen;
        pPixel[BytePos(m_lBlueShift, 3)] = pColour->ucBlue;
        break;
    case 32:
        TBytes32(*this).Put(pPixel, *pColour);
        break;
    }
    ReleaseBitmapData();
    return 1;
}

xlong CBitmap::GetPixel(xlong lOffset, TRGBA *pColour)
{
    const unsigned char *pPixel = m_pData + lOffset;
    switch (m_lDepth)
    {
    case 8:
        if (m_pPalette)
            m_pPalette->GetIndex(pColour, *pPixel);
        break;
    case 16:
        TFormat16(FormatOf(*this)).Unpack(LoadWord(pPixel), *pColour);
        break;
    case 24:
        pColour->ucRed = pPixel[BytePos(m_lRedShift, 3)];
        pColour->ucGreen = pPixel[BytePos(m_lGreenShift, 3)];
        pColour->ucBlue = pPixel[BytePos(m_lBlueShift, 3)];
        break;
    case 32:
    {
        const TBytes32 bytes(*this);
        pColour->Set(pPixel[bytes.lRed], pPixel[bytes.lGreen], pPixel[bytes.lBlue], pPixel[bytes.lAlpha]);
        break;
    }
    }
    return 1;
}

xlong CBitmap::PutPixel(xlong lX, xlong lY, const TRGBA *pColour)
{
    return PutPixel(m_lPitch * lY + m_lBytesPerPixel * lX, pColour);
}

xlong CBitmap::GetPixel(xlong lX, xlong lY, TRGBA *pColour)
{
    return GetPixel(m_lPitch * lY + m_lBytesPerPixel * lX, pColour);
}
