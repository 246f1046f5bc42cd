#include "tarvix/dibscreen.h"
#include "tarvix/error.h"
#include "tarvix/globals.h"
#include "win/win32.h"

#include <algorithm>
#include <string.h>

namespace
{
const size_t s_ulFullInfo = sizeof(BITMAPINFOHEADER) + 256 * sizeof(RGBQUAD);
const int s_nPaletteEntries = 256;

BITMAPINFOHEADER &HeaderOf(CDib &dib)
{
    return dib.m_pInfo->bmiHeader;
}

// GDI's record of a palette with all its entries.
struct TFullPalette
{
    WORD wVersion;
    WORD wEntries;
    PALETTEENTRY entries[s_nPaletteEntries];
};

xlong MakePalette(CDIBPal &pal, TFullPalette &full)
{
    pal.Exit();
    full.wVersion = 768;
    full.wEntries = s_nPaletteEntries;
    pal.m_hPalette = CreatePalette((LOGPALETTE *)&full);
    return pal.m_hPalette != nullptr;
}
} // namespace

CDib::CDib()
    : m_pInfo(nullptr), m_pBits(nullptr), m_hDC(nullptr), m_hBitmap(nullptr), m_bOwnBits(0), m_pszError(nullptr)
{
}

CDib::~CDib()
{
    Exit();
}

xlong CDib::Create(int nWidth, int nHeight, int nDepth)
{
    Exit();
    const size_t ulSize = sizeof(BITMAPINFOHEADER) + (nDepth == 24 ? 0 : (size_t)4 << nDepth);
    m_pInfo = (BITMAPINFO *)XNEW(unsigned char[ulSize]);
    if (!m_pInfo)
        return xError(XERR_MEMORY);
    memset((void *)m_pInfo, 0, ulSize);
    BITMAPINFOHEADER &header = HeaderOf(*this);
    header.biSize = sizeof(BITMAPINFOHEADER);
    header.biWidth = nWidth;
    header.biHeight = -nHeight;
    header.biPlanes = 1;
    header.biBitCount = (WORD)nDepth;
    header.biClrUsed = nDepth < 24 ? 1u << nDepth : 0;
    header.biSizeImage = (DWORD)((nWidth + 15) / 16 * nHeight * nDepth);

    m_hDC = CreateCompatibleDC(sglb->m_hDC);
    void *pBits = nullptr;
    if (m_hDC)
        m_hBitmap = CreateDIBSection(m_hDC, m_pInfo, DIB_RGB_COLORS, &pBits, nullptr, 0);
    if (!m_hBitmap)
        return glb->m_Error.SetErrorf("Couldn't create dib section: %ld!", (long)GetLastError());
    m_pBits = (unsigned char *)pBits;
    if (!SelectObject(m_hDC, m_hBitmap))
        return xErrorTxt("Couldn't select bitmap into device context");
    return 1;
}

xlong CDib::Create(BITMAPINFO *pInfo, unsigned char *pBits)
{
    Exit();
    m_pInfo = (BITMAPINFO *)XNEW(unsigned char[s_ulFullInfo]);
    if (!m_pInfo)
    {
        m_pszError = "Out of memory";
        return 0;
    }
    memset((void *)m_pInfo, 0, s_ulFullInfo);
    memcpy((void *)m_pInfo, pInfo, sizeof(BITMAPINFOHEADER));
    const xlong lColors = std::clamp<xlong>(GetNumColorEntries(), 0, s_nPaletteEntries);
    memcpy(GetColTabAddress(), (const char *)pInfo + sizeof(BITMAPINFOHEADER), (size_t)lColors * sizeof(RGBQUAD));
    m_pBits = pBits;
    return 1;
}

void CDib::Exit()
{
    // The context goes first: a bitmap can't be deleted while it is selected.
    if (m_hDC)
        DeleteDC(m_hDC);
    if (m_hBitmap)
        DeleteObject(m_hBitmap);
    else if (m_bOwnBits)
        XDELETE_ARRAY(m_pBits);
    XDELETE_ARRAY((unsigned char *)m_pInfo);
    m_hDC = nullptr;
    m_hBitmap = nullptr;
    m_pInfo = nullptr;
    m_pBits = nullptr;
    m_bOwnBits = 0;
}

xlong CDib::GetNumColorEntries()
{
    return m_pInfo ? NumDIBColorEntries() : 0;
}

void *CDib::GetColTabAddress()
{
    return m_pInfo ? (char *)m_pInfo + sizeof(BITMAPINFOHEADER) : nullptr;
}

xlong CDib::GetWidth()
{
    return m_pInfo ? HeaderOf(*this).biWidth : 0;
}

xlong CDib::GetHeight()
{
    return m_pInfo ? HeaderOf(*this).biHeight : 0;
}

xlong CDib::IsWinDIB()
{
    return HeaderOf(*this).biSize != 12;
}

xlong CDib::NumDIBColorEntries()
{
    const BITMAPINFOHEADER &header = HeaderOf(*this);
    if (IsWinDIB() && header.biClrUsed)
        return (xlong)header.biClrUsed;
    switch (header.biBitCount)
    {
    case 1:
        return 2;
    case 4:
        return 16;
    case 8:
        return 256;
    }
    return 0;
}

CDIBPal::CDIBPal() : m_hPalette(nullptr) {}

CDIBPal::~CDIBPal()
{
    Exit();
}

xlong CDIBPal::Create(CDib *pDib)
{
    TFullPalette full = {};
    const RGBQUAD *pColors = (const RGBQUAD *)pDib->GetColTabAddress();
    const xlong lColors = std::clamp<xlong>(pDib->GetNumColorEntries(), 0, s_nPaletteEntries);
    for (xlong l = 0; l < lColors; ++l)
        full.entries[l] = { pColors[l].rgbRed, pColors[l].rgbGreen, pColors[l].rgbBlue, 0 };
    return MakePalette(*this, full);
}

xlong CDIBPal::Create(CPalette *pPalette)
{
    TFullPalette full = {};
    for (int i = 0; i < s_nPaletteEntries; ++i)
    {
        const TRGBA &color = pPalette->m_Colors[i];
        full.entries[i] = { color.ucRed, color.ucGreen, color.ucBlue, 0 };
    }
    return MakePalette(*this, full);
}

void CDIBPal::SetSysPalColors(HDC hDC)
{
    if (!m_hPalette || !(GetDeviceCaps(hDC, RASTERCAPS) & RC_PALETTE))
        return;
    const int nEntries = GetDeviceCaps(hDC, SIZEPALETTE);
    if (nEntries < 1 || nEntries > s_nPaletteEntries)
        return;
    // There and back makes the system forget its mapping of the palette.
    SetSystemPaletteUse(hDC, SYSPAL_NOSTATIC);
    SetSystemPaletteUse(hDC, SYSPAL_STATIC);
    HPALETTE hOld = SelectPalette(hDC, m_hPalette, FALSE);
    RealizePalette(hDC);
    SelectPalette(hDC, hOld, FALSE);

    PALETTEENTRY entries[s_nPaletteEntries];
    const UINT uRead = GetSystemPaletteEntries(hDC, 0, (UINT)nEntries, entries);
    for (UINT u = 0; u < uRead; ++u)
        entries[u].peFlags = 0;
    ResizePalette(m_hPalette, (UINT)nEntries);
    SetPaletteEntries(m_hPalette, 0, uRead, entries);
}

void CDIBPal::Exit()
{
    if (m_hPalette)
        DeleteObject(m_hPalette);
    m_hPalette = nullptr;
}
