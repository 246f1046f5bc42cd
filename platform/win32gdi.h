// Device contexts, DIB sections and palettes. Included by platform/win32.h.
#pragma once

struct RGBQUAD
{
    BYTE rgbBlue;
    BYTE rgbGreen;
    BYTE rgbRed;
    BYTE rgbReserved;
};

struct BITMAPINFOHEADER
{
    DWORD biSize;
    LONG biWidth;
    LONG biHeight;
    WORD biPlanes;
    WORD biBitCount;
    DWORD biCompression;
    DWORD biSizeImage;
    LONG biXPelsPerMeter;
    LONG biYPelsPerMeter;
    DWORD biClrUsed;
    DWORD biClrImportant;
};

typedef struct tagBITMAPINFO
{
    BITMAPINFOHEADER bmiHeader;
    RGBQUAD bmiColors[1];
} BITMAPINFO;

struct PALETTEENTRY
{
    BYTE peRed;
    BYTE peGreen;
    BYTE peBlue;
    BYTE peFlags;
};

struct LOGPALETTE
{
    WORD palVersion;
    WORD palNumEntries;
    PALETTEENTRY palPalEntry[1];
};

static_assert(sizeof(BITMAPINFOHEADER) == 40 && sizeof(PALETTEENTRY) == 4 && sizeof(RGBQUAD) == 4);

#define RGB(r, g, b) ((COLORREF)((BYTE)(r) | ((DWORD)(BYTE)(g) << 8) | ((DWORD)(BYTE)(b) << 16)))

enum : DWORD
{
    BI_RGB = 0,
};

enum : UINT
{
    DIB_RGB_COLORS = 0,
    DIB_PAL_COLORS = 1,
};

enum : DWORD
{
    SRCCOPY = 0x00CC0020,
};

enum
{
    WHITE_BRUSH = 0,
    LTGRAY_BRUSH = 1,
    GRAY_BRUSH = 2,
    DKGRAY_BRUSH = 3,
    BLACK_BRUSH = 4,
    NULL_BRUSH = 5,
    DEFAULT_PALETTE = 15,
};

enum
{
    HORZRES = 8,
    VERTRES = 10,
    BITSPIXEL = 12,
    PLANES = 14,
    NUMCOLORS = 24,
    RASTERCAPS = 38,
    SIZEPALETTE = 104,
    NUMRESERVED = 106,
};

enum
{
    RC_BITBLT = 0x0001,
    RC_DI_BITMAP = 0x0080,
    RC_PALETTE = 0x0100,
};

enum
{
    PC_RESERVED = 0x01,
    PC_EXPLICIT = 0x02,
    PC_NOCOLLAPSE = 0x04,
};

enum : UINT
{
    SYSPAL_ERROR = 0,
    SYSPAL_STATIC = 1,
    SYSPAL_NOSTATIC = 2,
    SYSPAL_NOSTATIC256 = 3,
};

#define GDI_ERROR ((DWORD)0xFFFFFFFF)

TARVIX_INTERNAL HDC CreateCompatibleDC(HDC hDC);
TARVIX_INTERNAL BOOL DeleteDC(HDC hDC);
TARVIX_INTERNAL HGDIOBJ SelectObject(HDC hDC, HGDIOBJ hObject);
TARVIX_INTERNAL BOOL DeleteObject(HGDIOBJ hObject);
TARVIX_INTERNAL HGDIOBJ GetStockObject(int nObject);
TARVIX_INTERNAL int GetDeviceCaps(HDC hDC, int nIndex);
TARVIX_INTERNAL BOOL GdiFlush();

/// 8 bits with a colour table, 16 bits as 5-5-5, 24 bits with blue first.
TARVIX_INTERNAL HBITMAP CreateDIBSection(HDC hDC, const BITMAPINFO *pInfo, UINT ulUsage, void **ppBits, HANDLE hSection,
                                         DWORD ulOffset);
TARVIX_INTERNAL UINT SetDIBColorTable(HDC hDC, UINT ulStart, UINT ulCount, const RGBQUAD *pColors);
TARVIX_INTERNAL UINT GetDIBColorTable(HDC hDC, UINT ulStart, UINT ulCount, RGBQUAD *pColors);

/// SRCCOPY is the one operation that there is; others give FALSE.
TARVIX_INTERNAL BOOL BitBlt(HDC hTarget, int nX, int nY, int nWidth, int nHeight, HDC hSource, int nSourceX,
                            int nSourceY, DWORD ulOperation);

TARVIX_INTERNAL HPALETTE CreatePalette(const LOGPALETTE *pPalette);
TARVIX_INTERNAL HPALETTE SelectPalette(HDC hDC, HPALETTE hPalette, BOOL bBackground);
TARVIX_INTERNAL UINT RealizePalette(HDC hDC);
TARVIX_INTERNAL BOOL ResizePalette(HPALETTE hPalette, UINT ulEntries);
TARVIX_INTERNAL UINT SetPaletteEntries(HPALETTE hPalette, UINT ulStart, UINT ulCount, const PALETTEENTRY *pEntries);
TARVIX_INTERNAL UINT GetPaletteEntries(HPALETTE hPalette, UINT ulStart, UINT ulCount, PALETTEENTRY *pEntries);
TARVIX_INTERNAL UINT GetSystemPaletteEntries(HDC hDC, UINT ulStart, UINT ulCount, PALETTEENTRY *pEntries);
TARVIX_INTERNAL UINT SetSystemPaletteUse(HDC hDC, UINT ulUse);
TARVIX_INTERNAL BOOL UpdateColors(HDC hDC);
