// BitBlt: what a bitmap holds becomes window pixels, or another bitmap's.
#include "platform/gdi.h"

#include <algorithm>
#include <emmintrin.h>
#include <string.h>

namespace
{
const uint32_t s_ulOpaqueBlack = 0xFF000000u;

inline uint32_t Expand16(unsigned ulPixel)
{
    // The top bits come again below, so that 31 shows as 255.
    const uint32_t ulRed = ulPixel >> 10 & 31, ulGreen = ulPixel >> 5 & 31, ulBlue = ulPixel & 31;
    return s_ulOpaqueBlack | (ulRed << 3 | ulRed >> 2) << 16 | (ulGreen << 3 | ulGreen >> 2) << 8 |
           (ulBlue << 3 | ulBlue >> 2);
}

void Row16ToScreen(uint32_t *pTarget, const BYTE *pSource, int nCount)
{
    const __m128i mRed = _mm_set1_epi16(0x7C00), mGreen = _mm_set1_epi16(0x03E0), mBlue = _mm_set1_epi16(0x001F);
    const __m128i mAlpha = _mm_set1_epi16((short)0xFF00);
    int x = 0;
    for (; x + 8 <= nCount; x += 8)
    {
        const __m128i m = _mm_loadu_si128((const __m128i *)(pSource + 2 * x));
        const __m128i mR = _mm_and_si128(m, mRed), mG = _mm_and_si128(m, mGreen), mB = _mm_and_si128(m, mBlue);
        const __m128i mR8 = _mm_or_si128(_mm_srli_epi16(mR, 7), _mm_srli_epi16(mR, 12));
        const __m128i mG8 =
            _mm_and_si128(_mm_or_si128(_mm_slli_epi16(mG, 6), _mm_slli_epi16(mG, 1)), _mm_set1_epi16((short)0xFF00));
        const __m128i mB8 = _mm_or_si128(_mm_slli_epi16(mB, 3), _mm_srli_epi16(mB, 2));
        const __m128i mLow = _mm_or_si128(mG8, mB8), mHigh = _mm_or_si128(mAlpha, mR8);
        _mm_storeu_si128((__m128i *)(pTarget + x), _mm_unpacklo_epi16(mLow, mHigh));
        _mm_storeu_si128((__m128i *)(pTarget + x + 4), _mm_unpackhi_epi16(mLow, mHigh));
    }
    for (; x < nCount; ++x)
        pTarget[x] = Expand16(pSource[2 * x] | pSource[2 * x + 1] << 8);
}

void Row24ToScreen(uint32_t *pTarget, const BYTE *pSource, int nCount)
{
    const __m128i mAlpha = _mm_set1_epi32((int)s_ulOpaqueBlack);
    int x = 0;
    // Sixteen bytes are read for four pixels: two more pixels must follow.
    for (; x + 6 <= nCount; x += 4, pSource += 12)
    {
        const __m128i m = _mm_loadu_si128((const __m128i *)pSource);
        const __m128i m01 = _mm_unpacklo_epi32(m, _mm_srli_si128(m, 3));
        const __m128i m23 = _mm_unpacklo_epi32(_mm_srli_si128(m, 6), _mm_srli_si128(m, 9));
        _mm_storeu_si128((__m128i *)(pTarget + x), _mm_or_si128(_mm_unpacklo_epi64(m01, m23), mAlpha));
    }
    for (; x < nCount; ++x, pSource += 3)
        pTarget[x] = pSource[0] | pSource[1] << 8 | pSource[2] << 16 | s_ulOpaqueBlack;
}

void Row8ToScreen(uint32_t *pTarget, const BYTE *pSource, int nCount, const uint32_t *pulColors)
{
    int x = 0;
    for (; x + 4 <= nCount; x += 4)
    {
        pTarget[x] = pulColors[pSource[x]];
        pTarget[x + 1] = pulColors[pSource[x + 1]];
        pTarget[x + 2] = pulColors[pSource[x + 2]];
        pTarget[x + 3] = pulColors[pSource[x + 3]];
    }
    for (; x < nCount; ++x)
        pTarget[x] = pulColors[pSource[x]];
}

uint32_t ToPixel(const RGBQUAD &color)
{
    return s_ulOpaqueBlack | (uint32_t)color.rgbRed << 16 | (uint32_t)color.rgbGreen << 8 | color.rgbBlue;
}

/// One row of a bitmap as true colours.
void ReadRow(HBITMAP hBitmap, int nX, int nY, int nCount, const uint32_t *pulColors, uint32_t *pTarget)
{
    const BYTE *pRow = hBitmap->Row(nY);
    switch (hBitmap->nDepth)
    {
    case 8:
        Row8ToScreen(pTarget, pRow + nX, nCount, pulColors);
        break;
    case 16:
        Row16ToScreen(pTarget, pRow + 2 * nX, nCount);
        break;
    case 24:
        Row24ToScreen(pTarget, pRow + 3 * nX, nCount);
        break;
    }
}

BYTE NearestInTable(const RGBQUAD *pColors, uint32_t ulPixel)
{
    int nBest = INT32_MAX;
    BYTE ucBest = 0;
    for (int i = 0; i < 256 && nBest; ++i)
    {
        const int nRed = pColors[i].rgbRed - (int)(ulPixel >> 16 & 0xFF);
        const int nGreen = pColors[i].rgbGreen - (int)(ulPixel >> 8 & 0xFF);
        const int nBlue = pColors[i].rgbBlue - (int)(ulPixel & 0xFF);
        const int nDistance = nRed * nRed + nGreen * nGreen + nBlue * nBlue;
        if (nDistance < nBest)
        {
            nBest = nDistance;
            ucBest = (BYTE)i;
        }
    }
    return ucBest;
}

void WriteRow(HBITMAP hBitmap, int nX, int nY, int nCount, const uint32_t *pSource)
{
    BYTE *pRow = hBitmap->Row(nY) + (size_t)nX * (hBitmap->nDepth / 8);
    uint32_t ulLast = 0;
    BYTE ucLast = 0;
    bool bLast = false;
    for (int x = 0; x < nCount; ++x)
    {
        const uint32_t ul = pSource[x];
        switch (hBitmap->nDepth)
        {
        case 8:
            if (!bLast || ul != ulLast)
                ucLast = NearestInTable(hBitmap->aColors, ul);
            bLast = true;
            ulLast = ul;
            pRow[x] = ucLast;
            break;
        case 16:
        {
            const unsigned us = (ul >> 9 & 0x7C00) | (ul >> 6 & 0x03E0) | (ul >> 3 & 0x001F);
            pRow[2 * x] = (BYTE)us;
            pRow[2 * x + 1] = (BYTE)(us >> 8);
            break;
        }
        case 24:
            pRow[3 * x] = (BYTE)ul;
            pRow[3 * x + 1] = (BYTE)(ul >> 8);
            pRow[3 * x + 2] = (BYTE)(ul >> 16);
            break;
        }
    }
}

/// Colours of an 8-bit bitmap as the desktop can show them.
const uint32_t *ScreenColors(HBITMAP hBitmap)
{
    const bool bSystem = HasSystemPalette();
    const unsigned ulState = bSystem ? SystemPaletteState() : UINT32_MAX;
    if (hBitmap->ulScreenColors != ulState)
    {
        for (int i = 0; i < 256; ++i)
        {
            const uint32_t ul = ToPixel(hBitmap->aColors[i]);
            hBitmap->aulScreen[i] = bSystem ? NearestSystemColor(ul) : ul;
        }
        hBitmap->ulScreenColors = ulState;
    }
    return hBitmap->aulScreen;
}

struct TBlit
{
    RECT rc;            ///< of the target
    int nMoveX, nMoveY; ///< from target to source
};

void BitmapToWindow(const TBlit &blit, const TPixelView &view, HBITMAP hSource)
{
    const uint32_t *pulColors = hSource->nDepth == 8 ? ScreenColors(hSource) : nullptr;
    const bool bMap = hSource->nDepth != 8 && HasSystemPalette();
    const int nCount = WidthOf(blit.rc);
    for (int y = blit.rc.top; y < blit.rc.bottom; ++y)
    {
        uint32_t *pTarget = view.pPixels + (size_t)y * view.nPitch + blit.rc.left;
        ReadRow(hSource, blit.rc.left + blit.nMoveX, y + blit.nMoveY, nCount, pulColors, pTarget);
        for (int x = 0; bMap && x < nCount; ++x)
            pTarget[x] = NearestSystemColor(pTarget[x]);
    }
}

/// Rows of the same shape, which may be the same memory.
template <class TRow>
void MoveRows(const TBlit &blit, const TRow &MoveRow)
{
    if (blit.nMoveY < 0)
        for (int y = blit.rc.bottom - 1; y >= blit.rc.top; --y)
            MoveRow(y);
    else
        for (int y = blit.rc.top; y < blit.rc.bottom; ++y)
            MoveRow(y);
}

void WindowToWindow(const TBlit &blit, const TPixelView &target, const TPixelView &source)
{
    MoveRows(blit,
             [&](int y)
             {
                 memmove(target.pPixels + (size_t)y * target.nPitch + blit.rc.left,
                         source.pPixels + (size_t)(y + blit.nMoveY) * source.nPitch + blit.rc.left + blit.nMoveX,
                         (size_t)WidthOf(blit.rc) * 4);
             });
}

void WindowToBitmap(const TBlit &blit, HBITMAP hTarget, const TPixelView &view)
{
    for (int y = blit.rc.top; y < blit.rc.bottom; ++y)
        WriteRow(hTarget, blit.rc.left, y, WidthOf(blit.rc),
                 view.pPixels + (size_t)(y + blit.nMoveY) * view.nPitch + blit.rc.left + blit.nMoveX);
}

void BitmapToBitmap(const TBlit &blit, HBITMAP hTarget, HBITMAP hSource)
{
    const int nBytes = hTarget->nDepth / 8;
    if (hTarget->nDepth == hSource->nDepth &&
        (nBytes > 1 || memcmp(hTarget->aColors, hSource->aColors, sizeof(hTarget->aColors)) == 0))
    {
        MoveRows(blit,
                 [&](int y)
                 {
                     memmove(hTarget->Row(y) + (size_t)blit.rc.left * nBytes,
                             hSource->Row(y + blit.nMoveY) + (size_t)(blit.rc.left + blit.nMoveX) * nBytes,
                             (size_t)WidthOf(blit.rc) * nBytes);
                 });
        return;
    }
    uint32_t aulColors[256];
    for (int i = 0; hSource->nDepth == 8 && i < 256; ++i)
        aulColors[i] = ToPixel(hSource->aColors[i]);
    uint32_t aulRow[256];
    for (int y = blit.rc.top; y < blit.rc.bottom; ++y)
    {
        for (int x = blit.rc.left; x < blit.rc.right; x += 256)
        {
            const int nCount = blit.rc.right - x < 256 ? blit.rc.right - x : 256;
            ReadRow(hSource, x + blit.nMoveX, y + blit.nMoveY, nCount, aulColors, aulRow);
            WriteRow(hTarget, x, y, nCount, aulRow);
        }
    }
}

/// What can be read of a context, or written to it.
/// @return false when that is nothing
bool OpenArea(HDC hDC, TPixelView *pView, RECT *prc)
{
    if (!hDC->bMemory)
        return OpenTarget(hDC, pView, prc);
    *prc = { 0, 0, hDC->hBitmap->nWidth, hDC->hBitmap->nHeight };
    return true;
}

/// Clips without overflow for whatever numbers a caller gives.
bool ClipBlit(TBlit *pBlit, long long llX, long long llY, long long llWidth, long long llHeight, long long llMoveX,
              long long llMoveY, const RECT &rcTarget, const RECT &rcSource)
{
    const long long llLeft = std::max({ llX, (long long)rcTarget.left, rcSource.left - llMoveX });
    const long long llTop = std::max({ llY, (long long)rcTarget.top, rcSource.top - llMoveY });
    const long long llRight = std::min({ llX + llWidth, (long long)rcTarget.right, rcSource.right - llMoveX });
    const long long llBottom = std::min({ llY + llHeight, (long long)rcTarget.bottom, rcSource.bottom - llMoveY });
    if (llLeft >= llRight || llTop >= llBottom)
        return false;
    pBlit->rc = { (LONG)llLeft, (LONG)llTop, (LONG)llRight, (LONG)llBottom };
    pBlit->nMoveX = (int)llMoveX;
    pBlit->nMoveY = (int)llMoveY;
    return true;
}
} // namespace

bool OpenTarget(HDC hDC, TPixelView *pView, RECT *prcClip)
{
    if (!hDC->hWnd)
        return false;
    *pView = LockWindow(hDC->hWnd);
    if (!pView->pPixels)
        return false;
    *prcClip = { 0, 0, WidthOf(hDC->hWnd->rcClient), HeightOf(hDC->hWnd->rcClient) };
    if (hDC->bPainting)
        IntersectWith(prcClip, hDC->rcPaint);
    return IntersectWith(prcClip, { 0, 0, pView->nWidth, pView->nHeight });
}

void FillWindowRect(HDC hDC, const RECT &rcArea, COLORREF ulColor)
{
    TPixelView view;
    RECT rc;
    if (!OpenTarget(hDC, &view, &rc) || !IntersectWith(&rc, rcArea))
        return;
    uint32_t ulPixel = s_ulOpaqueBlack | (ulColor & 0xFF) << 16 | (ulColor & 0xFF00) | (ulColor >> 16 & 0xFF);
    if (HasSystemPalette())
        ulPixel = NearestSystemColor(ulPixel);
    for (int y = rc.top; y < rc.bottom; ++y)
        std::fill_n(view.pPixels + (size_t)y * view.nPitch + rc.left, WidthOf(rc), ulPixel);
    AddDirty(hDC->hWnd, rc);
}

BOOL BitBlt(HDC hTarget, int nX, int nY, int nWidth, int nHeight, HDC hSource, int nSourceX, int nSourceY,
            DWORD ulOperation)
{
    if (!hTarget || !hSource || ulOperation != SRCCOPY)
    {
        SetLastError(hTarget && hSource ? ERROR_INVALID_PARAMETER : ERROR_INVALID_HANDLE);
        return FALSE;
    }
    TPixelView target = {}, source = {};
    RECT rcTarget, rcSource;
    TBlit blit;
    // A window that shows nothing takes everything and keeps none of it.
    if (!OpenArea(hTarget, &target, &rcTarget) || !OpenArea(hSource, &source, &rcSource) ||
        !ClipBlit(&blit, nX, nY, nWidth, nHeight, (long long)nSourceX - nX, (long long)nSourceY - nY, rcTarget,
                  rcSource))
        return TRUE;
    if (hTarget->bMemory && hSource->bMemory)
        BitmapToBitmap(blit, hTarget->hBitmap, hSource->hBitmap);
    else if (hTarget->bMemory)
        WindowToBitmap(blit, hTarget->hBitmap, source);
    else if (hSource->bMemory)
        BitmapToWindow(blit, target, hSource->hBitmap);
    else
        WindowToWindow(blit, target, source);
    if (!hTarget->bMemory)
        AddDirty(hTarget->hWnd, blit.rc);
    return TRUE;
}
