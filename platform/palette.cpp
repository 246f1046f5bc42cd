// Logical palettes, and the system palette of a desktop with 8 bits.
#include "platform/gdi.h"

#include <stdlib.h>
#include <string.h>

namespace
{
const UINT s_ulMaxEntries = 1024;

// The colours that the desktop keeps for itself: the first and the last ten.
const PALETTEENTRY s_StaticColors[20] = {
    { 0, 0, 0, 0 },       { 128, 0, 0, 0 },     { 0, 128, 0, 0 },     { 128, 128, 0, 0 },   { 0, 0, 128, 0 },
    { 128, 0, 128, 0 },   { 0, 128, 128, 0 },   { 192, 192, 192, 0 }, { 192, 220, 192, 0 }, { 166, 202, 240, 0 },
    { 255, 251, 240, 0 }, { 160, 160, 164, 0 }, { 128, 128, 128, 0 }, { 255, 0, 0, 0 },     { 0, 255, 0, 0 },
    { 255, 255, 0, 0 },   { 0, 0, 255, 0 },     { 255, 0, 255, 0 },   { 0, 255, 255, 0 },   { 255, 255, 255, 0 },
};

PALETTEENTRY s_aSystem[256];
bool s_abUsed[256]; // belongs to a palette that was realised, or to the desktop
UINT s_ulUse = 0;   // 0 until the first use
unsigned s_ulState = 1;

struct TNearest
{
    unsigned ulState;
    uint32_t ulColor;
    uint32_t ulNearest;
};
TNearest s_aNearest[4096];

bool IsStatic(UINT i)
{
    return s_ulUse == SYSPAL_STATIC ? i < 10 || i >= 246 : s_ulUse == SYSPAL_NOSTATIC && (i == 0 || i == 255);
}

bool SameColor(const PALETTEENTRY &a, const PALETTEENTRY &b)
{
    return a.peRed == b.peRed && a.peGreen == b.peGreen && a.peBlue == b.peBlue;
}

int Distance(const PALETTEENTRY &a, int nRed, int nGreen, int nBlue)
{
    const int nR = a.peRed - nRed, nG = a.peGreen - nGreen, nB = a.peBlue - nBlue;
    return nR * nR + nG * nG + nB * nB;
}

UINT Nearest(int nRed, int nGreen, int nBlue)
{
    UINT ulBest = 0;
    int nBest = INT32_MAX;
    for (UINT i = 0; i < 256 && nBest; ++i)
    {
        const int nDistance = Distance(s_aSystem[i], nRed, nGreen, nBlue);
        if (nDistance < nBest)
        {
            nBest = nDistance;
            ulBest = i;
        }
    }
    return ulBest;
}

/// @return true when a colour of the desktop was not in its place
bool PutStaticColors()
{
    bool bChanged = false;
    for (UINT i = 0; i < 256; ++i)
    {
        if (!IsStatic(i))
            continue;
        const PALETTEENTRY &color = s_StaticColors[i < 10 ? i : i - 236];
        bChanged = bChanged || !SameColor(s_aSystem[i], color);
        s_aSystem[i] = color;
        s_abUsed[i] = true;
    }
    return bChanged;
}

void Prepare()
{
    if (s_ulUse)
        return;
    s_ulUse = SYSPAL_STATIC;
    PutStaticColors();
}

/// A slot of the system palette for one colour.
/// @param pbChanged  set when a slot got a new colour
UINT PlaceColor(const PALETTEENTRY &color, bool *pbChanged)
{
    if (color.peFlags & PC_EXPLICIT)
        return color.peRed;
    const bool bOwnSlot = color.peFlags & (PC_RESERVED | PC_NOCOLLAPSE);
    for (UINT i = 0; i < 256; ++i)
    {
        if (SameColor(s_aSystem[i], color) && !(bOwnSlot && s_abUsed[i]))
        {
            s_abUsed[i] = true;
            return i;
        }
    }
    for (UINT i = 0; i < 256; ++i)
    {
        if (s_abUsed[i])
            continue;
        s_abUsed[i] = true;
        s_aSystem[i] = { color.peRed, color.peGreen, color.peBlue, 0 };
        *pbChanged = true;
        return i;
    }
    return Nearest(color.peRed, color.peGreen, color.peBlue);
}

bool IsPalette(HPALETTE hPalette)
{
    return hPalette && hPalette->eKind == GDI_PALETTE;
}
} // namespace

HPALETTE DefaultPalette()
{
    static PALETTEENTRY s_aEntries[20];
    static HPALETTE__ s_Palette = {};
    if (!s_Palette.pEntries)
    {
        memcpy(s_aEntries, s_StaticColors, sizeof(s_aEntries));
        s_Palette.eKind = GDI_PALETTE;
        s_Palette.bStock = true;
        s_Palette.ulEntries = 20;
        s_Palette.pEntries = s_aEntries;
    }
    return &s_Palette;
}

void FreePalette(HPALETTE hPalette)
{
    free(hPalette->pEntries);
    free(hPalette);
}

unsigned SystemPaletteState()
{
    Prepare();
    return s_ulState;
}

uint32_t NearestSystemColor(uint32_t ulColor)
{
    Prepare();
    ulColor &= 0xFFFFFF;
    TNearest &slot = s_aNearest[(ulColor * 0x9E3779B1u) >> 20];
    if (slot.ulState != s_ulState || slot.ulColor != ulColor)
    {
        const PALETTEENTRY &found = s_aSystem[Nearest(ulColor >> 16, ulColor >> 8 & 0xFF, ulColor & 0xFF)];
        slot.ulState = s_ulState;
        slot.ulColor = ulColor;
        slot.ulNearest = 0xFF000000u | (uint32_t)found.peRed << 16 | (uint32_t)found.peGreen << 8 | found.peBlue;
    }
    return slot.ulNearest;
}

void ResetSystemPalette()
{
    memset(s_aSystem, 0, sizeof(s_aSystem));
    memset(s_abUsed, 0, sizeof(s_abUsed));
    s_ulUse = 0;
    ++s_ulState;
}

HPALETTE CreatePalette(const LOGPALETTE *pPalette)
{
    if (!pPalette || pPalette->palVersion != 0x300 || !pPalette->palNumEntries ||
        pPalette->palNumEntries > s_ulMaxEntries)
    {
        SetLastError(ERROR_INVALID_PARAMETER);
        return nullptr;
    }
    const HPALETTE hPalette = (HPALETTE)calloc(1, sizeof(HPALETTE__));
    PALETTEENTRY *pEntries = (PALETTEENTRY *)calloc(pPalette->palNumEntries, sizeof(PALETTEENTRY));
    if (!hPalette || !pEntries)
    {
        free(hPalette);
        free(pEntries);
        SetLastError(ERROR_NOT_ENOUGH_MEMORY);
        return nullptr;
    }
    hPalette->eKind = GDI_PALETTE;
    hPalette->ulEntries = pPalette->palNumEntries;
    hPalette->pEntries = pEntries;
    memcpy(pEntries, pPalette->palPalEntry, pPalette->palNumEntries * sizeof(PALETTEENTRY));
    return hPalette;
}

HPALETTE SelectPalette(HDC hDC, HPALETTE hPalette, BOOL bBackground)
{
    if (!hDC || !IsPalette(hPalette))
    {
        SetLastError(ERROR_INVALID_HANDLE);
        return nullptr;
    }
    const HPALETTE hOld = hDC->hPalette;
    --hOld->nSelected;
    ++hPalette->nSelected;
    hDC->hPalette = hPalette;
    hDC->bBackground = bBackground;
    return hOld;
}

UINT RealizePalette(HDC hDC)
{
    if (!hDC || !Backend()->Start())
        return GDI_ERROR;
    const HPALETTE hPalette = hDC->hPalette;
    if (!HasSystemPalette())
        return 0;
    Prepare();
    bool bChanged = PutStaticColors();
    // The active window has all colours but the desktop's at its disposal,
    // others have what it left.
    const bool bForeground = !hDC->bBackground && hDC->hWnd && hDC->hWnd == ActiveWindow();
    if (bForeground)
        for (UINT i = 0; i < 256; ++i)
            s_abUsed[i] = IsStatic(i);
    UINT ulMapped = 0;
    for (UINT i = 0; i < hPalette->ulEntries; ++i)
    {
        const BYTE ucSlot = (BYTE)PlaceColor(hPalette->pEntries[i], &bChanged);
        if (!hPalette->bRealized || hPalette->aucMap[i] != ucSlot)
            ++ulMapped;
        hPalette->aucMap[i] = ucSlot;
    }
    hPalette->bRealized = true;
    if (bChanged)
    {
        ++s_ulState;
        if (hDC->hWnd)
            SendMessageA(HWND_BROADCAST, WM_PALETTECHANGED, (WPARAM)hDC->hWnd, 0);
    }
    return ulMapped;
}

BOOL ResizePalette(HPALETTE hPalette, UINT ulEntries)
{
    if (!IsPalette(hPalette) || hPalette->bStock || !ulEntries || ulEntries > s_ulMaxEntries)
    {
        SetLastError(ERROR_INVALID_PARAMETER);
        return FALSE;
    }
    PALETTEENTRY *pEntries = (PALETTEENTRY *)realloc(hPalette->pEntries, ulEntries * sizeof(PALETTEENTRY));
    if (!pEntries)
    {
        SetLastError(ERROR_NOT_ENOUGH_MEMORY);
        return FALSE;
    }
    if (ulEntries > hPalette->ulEntries)
        memset(pEntries + hPalette->ulEntries, 0, (ulEntries - hPalette->ulEntries) * sizeof(PALETTEENTRY));
    hPalette->pEntries = pEntries;
    hPalette->ulEntries = ulEntries;
    hPalette->bRealized = false;
    return TRUE;
}

UINT SetPaletteEntries(HPALETTE hPalette, UINT ulStart, UINT ulCount, const PALETTEENTRY *pEntries)
{
    if (!IsPalette(hPalette) || hPalette->bStock || !pEntries || ulStart >= hPalette->ulEntries)
        return 0;
    ulCount = ulCount < hPalette->ulEntries - ulStart ? ulCount : hPalette->ulEntries - ulStart;
    memcpy(hPalette->pEntries + ulStart, pEntries, ulCount * sizeof(PALETTEENTRY));
    hPalette->bRealized = false;
    return ulCount;
}

UINT GetPaletteEntries(HPALETTE hPalette, UINT ulStart, UINT ulCount, PALETTEENTRY *pEntries)
{
    if (!IsPalette(hPalette))
        return 0;
    if (!pEntries)
        return hPalette->ulEntries;
    if (ulStart >= hPalette->ulEntries)
        return 0;
    ulCount = ulCount < hPalette->ulEntries - ulStart ? ulCount : hPalette->ulEntries - ulStart;
    memcpy(pEntries, hPalette->pEntries + ulStart, ulCount * sizeof(PALETTEENTRY));
    return ulCount;
}

UINT GetSystemPaletteEntries(HDC hDC, UINT ulStart, UINT ulCount, PALETTEENTRY *pEntries)
{
    if (!hDC || !Backend()->Start() || !HasSystemPalette())
        return 0;
    Prepare();
    if (!pEntries)
        return 256;
    if (ulStart >= 256)
        return 0;
    ulCount = ulCount < 256 - ulStart ? ulCount : 256 - ulStart;
    memcpy(pEntries, s_aSystem + ulStart, ulCount * sizeof(PALETTEENTRY));
    return ulCount;
}

UINT SetSystemPaletteUse(HDC hDC, UINT ulUse)
{
    if (!hDC || !Backend()->Start() || !HasSystemPalette() || ulUse < SYSPAL_STATIC || ulUse > SYSPAL_NOSTATIC256)
        return SYSPAL_ERROR;
    Prepare();
    const UINT ulOld = s_ulUse;
    s_ulUse = ulUse;
    for (UINT i = 0; i < 256; ++i)
        if (IsStatic(i))
            s_abUsed[i] = true;
        else if (ulUse != ulOld && (i < 10 || i >= 246))
            s_abUsed[i] = false;
    return ulOld;
}

BOOL UpdateColors(HDC hDC)
{
    TPixelView view;
    RECT rcClip;
    if (!hDC || hDC->bMemory || !HasSystemPalette())
        return FALSE;
    if (!OpenTarget(hDC, &view, &rcClip))
        return TRUE;
    for (int y = rcClip.top; y < rcClip.bottom; ++y)
        for (int x = rcClip.left; x < rcClip.right; ++x)
        {
            uint32_t &ulPixel = view.pPixels[(size_t)y * view.nPitch + x];
            ulPixel = NearestSystemColor(ulPixel);
        }
    AddDirty(hDC->hWnd, rcClip);
    return TRUE;
}
