#include "platform/gdi.h"

#include <stdlib.h>
#include <string.h>

namespace
{
HBRUSH__ s_Brushes[] = {
    { { GDI_BRUSH, true, 0 }, RGB(255, 255, 255), false }, { { GDI_BRUSH, true, 0 }, RGB(192, 192, 192), false },
    { { GDI_BRUSH, true, 0 }, RGB(128, 128, 128), false }, { { GDI_BRUSH, true, 0 }, RGB(64, 64, 64), false },
    { { GDI_BRUSH, true, 0 }, RGB(0, 0, 0), false },       { { GDI_BRUSH, true, 0 }, 0, true },
};

/// What a memory context holds before a bitmap is selected: one pixel, as on Windows.
HBITMAP DefaultBitmap()
{
    static BYTE s_aucPixel[4];
    static HBITMAP__ s_Bitmap = {};
    s_Bitmap.eKind = GDI_BITMAP;
    s_Bitmap.bStock = true;
    s_Bitmap.nWidth = s_Bitmap.nHeight = 1;
    s_Bitmap.nDepth = 8;
    s_Bitmap.nPitch = 4;
    s_Bitmap.bTopDown = true;
    s_Bitmap.pBits = s_aucPixel;
    return &s_Bitmap;
}

int DesktopDepth()
{
    int nWidth, nHeight, nDepth;
    Backend()->GetDesktop(&nWidth, &nHeight, &nDepth);
    return nDepth;
}
} // namespace

HDC NewDC(HWND hWnd, bool bMemory)
{
    const HDC hDC = (HDC)calloc(1, sizeof(HDC__));
    if (!hDC)
    {
        SetLastError(ERROR_NOT_ENOUGH_MEMORY);
        return nullptr;
    }
    hDC->hWnd = hWnd;
    hDC->bMemory = bMemory;
    hDC->hBitmap = bMemory ? DefaultBitmap() : nullptr;
    hDC->hPalette = DefaultPalette();
    ++hDC->hPalette->nSelected;
    return hDC;
}

void FreeDC(HDC hDC)
{
    if (hDC->hBitmap)
        --hDC->hBitmap->nSelected;
    --hDC->hPalette->nSelected;
    free(hDC);
}

HDC CreateCompatibleDC(HDC)
{
    return NewDC(nullptr, true);
}

BOOL DeleteDC(HDC hDC)
{
    if (!hDC || !hDC->bMemory)
    {
        SetLastError(ERROR_INVALID_HANDLE);
        return FALSE;
    }
    FreeDC(hDC);
    return TRUE;
}

HGDIOBJ SelectObject(HDC hDC, HGDIOBJ hObject)
{
    TGdiObject *pObject = (TGdiObject *)hObject;
    if (!hDC || !pObject || pObject->eKind != GDI_BITMAP || !hDC->bMemory)
    {
        SetLastError(ERROR_INVALID_HANDLE);
        return nullptr;
    }
    const HBITMAP hBitmap = static_cast<HBITMAP>(pObject), hOld = hDC->hBitmap;
    // A bitmap can be in one context only.
    if (hBitmap != hOld && hBitmap->nSelected && !hBitmap->bStock)
        return nullptr;
    --hOld->nSelected;
    ++hBitmap->nSelected;
    hDC->hBitmap = hBitmap;
    return static_cast<TGdiObject *>(hOld);
}

BOOL DeleteObject(HGDIOBJ hObject)
{
    TGdiObject *pObject = (TGdiObject *)hObject;
    if (!pObject)
        return FALSE;
    if (pObject->bStock)
        return TRUE;
    if (pObject->nSelected)
        return FALSE;
    if (pObject->eKind == GDI_BITMAP)
    {
        free(static_cast<HBITMAP>(pObject)->pBits);
        free(static_cast<HBITMAP>(pObject));
        return TRUE;
    }
    if (pObject->eKind == GDI_PALETTE)
    {
        FreePalette(static_cast<HPALETTE>(pObject));
        return TRUE;
    }
    return FALSE;
}

HGDIOBJ GetStockObject(int nObject)
{
    if (nObject >= WHITE_BRUSH && nObject <= NULL_BRUSH)
        return static_cast<TGdiObject *>(&s_Brushes[nObject]);
    return nObject == DEFAULT_PALETTE ? static_cast<TGdiObject *>(DefaultPalette()) : nullptr;
}

int GetDeviceCaps(HDC hDC, int nIndex)
{
    if (!hDC || !Backend()->Start())
        return 0;
    int nWidth, nHeight, nDepth;
    Backend()->GetDesktop(&nWidth, &nHeight, &nDepth);
    switch (nIndex)
    {
    case HORZRES:
        return nWidth;
    case VERTRES:
        return nHeight;
    case BITSPIXEL:
        return nDepth;
    case PLANES:
        return 1;
    case NUMCOLORS:
        return nDepth <= 8 ? 20 : -1;
    case RASTERCAPS:
        return RC_BITBLT | RC_DI_BITMAP | (nDepth <= 8 ? RC_PALETTE : 0);
    case SIZEPALETTE:
        return nDepth <= 8 ? 256 : 0;
    case NUMRESERVED:
        return nDepth <= 8 ? 20 : 0;
    default:
        return 0;
    }
}

BOOL GdiFlush()
{
    // Drawing is never put off; only showing is.
    PresentAll();
    return TRUE;
}

bool HasSystemPalette()
{
    return DesktopDepth() <= 8;
}

HBITMAP CreateDIBSection(HDC hDC, const BITMAPINFO *pInfo, UINT ulUsage, void **ppBits, HANDLE hSection, DWORD)
{
    if (ppBits)
        *ppBits = nullptr;
    const BITMAPINFOHEADER *pHeader = pInfo ? &pInfo->bmiHeader : nullptr;
    if (!pHeader || !ppBits || hSection || pHeader->biSize < sizeof(BITMAPINFOHEADER) || pHeader->biPlanes != 1 ||
        pHeader->biCompression != BI_RGB || pHeader->biWidth <= 0 || pHeader->biHeight == 0 ||
        pHeader->biHeight == INT32_MIN ||
        (pHeader->biBitCount != 8 && pHeader->biBitCount != 16 && pHeader->biBitCount != 24) || ulUsage > 1 ||
        (ulUsage == DIB_PAL_COLORS && !hDC))
    {
        SetLastError(ERROR_INVALID_PARAMETER);
        return nullptr;
    }
    const int nHeight = pHeader->biHeight < 0 ? -pHeader->biHeight : pHeader->biHeight;
    const long long llPitch = ((long long)pHeader->biWidth * pHeader->biBitCount + 31) / 32 * 4;
    if (llPitch * nHeight > INT32_MAX)
    {
        SetLastError(ERROR_NOT_ENOUGH_MEMORY);
        return nullptr;
    }
    const HBITMAP hBitmap = (HBITMAP)calloc(1, sizeof(HBITMAP__));
    BYTE *pBits = (BYTE *)calloc((size_t)nHeight, (size_t)llPitch);
    if (!hBitmap || !pBits)
    {
        free(hBitmap);
        free(pBits);
        SetLastError(ERROR_NOT_ENOUGH_MEMORY);
        return nullptr;
    }
    hBitmap->eKind = GDI_BITMAP;
    hBitmap->nWidth = pHeader->biWidth;
    hBitmap->nHeight = nHeight;
    hBitmap->nDepth = pHeader->biBitCount;
    hBitmap->nPitch = (int)llPitch;
    hBitmap->bTopDown = pHeader->biHeight < 0;
    hBitmap->pBits = pBits;
    if (hBitmap->nDepth == 8)
    {
        const UINT ulColors = pHeader->biClrUsed && pHeader->biClrUsed < 256 ? pHeader->biClrUsed : 256;
        const BYTE *pTable = (const BYTE *)pInfo + pHeader->biSize;
        if (ulUsage == DIB_RGB_COLORS)
            memcpy(hBitmap->aColors, pTable, ulColors * sizeof(RGBQUAD));
        for (UINT i = 0; ulUsage == DIB_PAL_COLORS && i < ulColors; ++i)
        {
            WORD usIndex;
            PALETTEENTRY entry = {};
            memcpy(&usIndex, pTable + i * sizeof(WORD), sizeof(WORD));
            GetPaletteEntries(hDC->hPalette, usIndex, 1, &entry);
            hBitmap->aColors[i] = { entry.peBlue, entry.peGreen, entry.peRed, 0 };
        }
    }
    *ppBits = pBits;
    return hBitmap;
}

UINT SetDIBColorTable(HDC hDC, UINT ulStart, UINT ulCount, const RGBQUAD *pColors)
{
    if (!hDC || !hDC->bMemory || hDC->hBitmap->bStock || hDC->hBitmap->nDepth != 8 || !pColors || ulStart >= 256)
        return 0;
    ulCount = ulCount < 256 - ulStart ? ulCount : 256 - ulStart;
    memcpy(hDC->hBitmap->aColors + ulStart, pColors, ulCount * sizeof(RGBQUAD));
    hDC->hBitmap->ulScreenColors = 0;
    return ulCount;
}

UINT GetDIBColorTable(HDC hDC, UINT ulStart, UINT ulCount, RGBQUAD *pColors)
{
    if (!hDC || !hDC->bMemory || hDC->hBitmap->bStock || hDC->hBitmap->nDepth != 8 || !pColors || ulStart >= 256)
        return 0;
    ulCount = ulCount < 256 - ulStart ? ulCount : 256 - ulStart;
    memcpy(pColors, hDC->hBitmap->aColors + ulStart, ulCount * sizeof(RGBQUAD));
    return ulCount;
}
