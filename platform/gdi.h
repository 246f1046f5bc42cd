// The inside of device contexts, bitmaps and palettes.
#pragma once

#include "platform/window.h"

enum EGdiKind : int
{
    GDI_BITMAP = 0x4D42,
    GDI_BRUSH = 0x5342,
    GDI_PALETTE = 0x4150,
};

struct TGdiObject
{
    EGdiKind eKind;
    bool bStock;
    int nSelected; ///< contexts that hold it
};

struct HBRUSH__ : TGdiObject
{
    COLORREF ulColor;
    bool bHollow;
};

struct HBITMAP__ : TGdiObject
{
    int nWidth;
    int nHeight;
    int nDepth;
    int nPitch; ///< bytes
    bool bTopDown;
    BYTE *pBits;
    RGBQUAD aColors[256];
    unsigned ulScreenColors; ///< state of the system palette that aulScreen was made for, 0 for none
    uint32_t aulScreen[256]; ///< aColors as window pixels

    BYTE *Row(int nY) const { return pBits + (size_t)nPitch * (bTopDown ? nY : nHeight - 1 - nY); }
};

struct HPALETTE__ : TGdiObject
{
    UINT ulEntries;
    PALETTEENTRY *pEntries;
    bool bRealized; ///< aucMap holds
    BYTE aucMap[1024];
};

struct HDC__
{
    HDC pNext; ///< of the same window
    HWND hWnd; ///< null for a memory context, and when the window is gone
    bool bMemory;
    bool bOwn;
    bool bPainting;
    RECT rcPaint; ///< clip while painting
    HBITMAP hBitmap;
    HPALETTE hPalette;
    bool bBackground;
};

HDC NewDC(HWND hWnd, bool bMemory);
void FreeDC(HDC hDC);
void FillWindowRect(HDC hDC, const RECT &rcArea, COLORREF ulColor);

/// Area of the window that the context may draw on, in client pixels.
/// @return false when there is nothing to draw on now
bool OpenTarget(HDC hDC, TPixelView *pView, RECT *prcClip);

// palette.cpp
bool HasSystemPalette();
/// Changes whenever the system palette does; never 0.
unsigned SystemPaletteState();
/// The system palette's nearest colour.
uint32_t NearestSystemColor(uint32_t ulColor);
HPALETTE DefaultPalette();
void FreePalette(HPALETTE hPalette);
void ResetSystemPalette();
