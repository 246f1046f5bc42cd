#pragma once

#include "tarvix/msgsys.h"
#include "tarvix/screen.h"

struct tagBITMAPINFO;
struct HBITMAP__;
struct HPALETTE__;

/// A block of pixels that the platform can copy to a window, top row first.
class TARVIX_API CDib
{
public:
    TARVIX_HEAP_CLASS

    CDib();
    CDib(const CDib &) = delete;
    CDib &operator=(const CDib &) = delete;
    ~CDib();

    /// Makes a DIB section for the screen's window.
    /// @param nDepth  8, 16 (5 bits a channel) or 24 (blue first)
    /// @return 1; 0 with a text
    xlong Create(int nWidth, int nHeight, int nDepth);
    /// Describes pixels that lie elsewhere.
    /// @param pInfo  header and colours, copied
    /// @param pBits  not owned
    /// @return 1; 0 with m_pszError set
    xlong Create(tagBITMAPINFO *pInfo, unsigned char *pBits);
    void Exit();
    /// Entries of the colour table: 256 at 8 bits, 0 without one.
    xlong GetNumColorEntries();
    /// @return behind the header, null without one
    void *GetColTabAddress();
    xlong GetWidth();
    /// Negative, as in the header: top row first.
    xlong GetHeight();

    tagBITMAPINFO *m_pInfo; ///< owned
    unsigned char *m_pBits; ///< not owned when they belong to the DIB section
    HDC m_hDC;
    HBITMAP__ *m_hBitmap;
    xlong m_bOwnBits;
    const char *m_pszError;

private:
    xlong IsWinDIB();
    xlong NumDIBColorEntries();
};

/// The platform's palette, for desktops of 8 bits.
class TARVIX_API CDIBPal
{
public:
    TARVIX_HEAP_CLASS

    CDIBPal();
    CDIBPal(const CDIBPal &) = delete;
    CDIBPal &operator=(const CDIBPal &) = delete;
    ~CDIBPal();

    xlong Create(CDib *pDib);
    xlong Create(CPalette *pPalette);
    /// Takes the system's entries into the palette, on a device of not more
    /// than 256 palette entries.
    void SetSysPalColors(HDC hDC);
    void Exit();

    HPALETTE__ *m_hPalette;
};

/// The windowed back end: the frame buffer is a DIB section, and a flip copies
/// the changed areas to the window.
class TARVIX_API CDibScreen : public CScreenBase, public CWinMsg, public CMsgSys
{
public:
    TARVIX_HEAP_CLASS

    CDibScreen();
    ~CDibScreen() override;

    /// @return 1; 0 with a text, for instance for a mode larger than the desktop
    xlong InitMode() override;
    xlong ExitMode() override;
    /// Adds the 18 modes of the windowed screen.
    xlong GetVideoModes() override;
    xlong AddWindowVideoMode(xlong lWidth, xlong lHeight, xlong lDepth, xlong lId) override;
    xlong SetScreenWindowProperties(xulong ulFlags, xlong lWidth, xlong lHeight) override;
    xlong SetDefaultScreenWindowProperties(xulong ulFlags) override;
    xlong ModeAvailable() override;
    xlong ScreenAvailable() override;
    xlong GetDepth() override;
    xlong SetFlipScreen(xlong lOn) override;
    xlong MakeScreenBitmap(CBitmap *pBitmap, xlong lFlags) override;
    xlong MakeScreenTexture(CBitmap *pBitmap, xlong lFlags) override;
    void DrawBitmapScreen(CBitmap *pBitmap, xlong lSourceX, xlong lSourceY, xlong lX, xlong lY, xlong lWidth,
                          xlong lHeight, xlong lTransparent, xlong lFlags) override;
    void DrawBitmapScreenGui(CBitmap *pBitmap, xlong lSourceX, xlong lSourceY, xlong lX, xlong lY, xlong lWidth,
                             xlong lHeight, xlong lTransparent, xlong lFlags) override;
    void DrawSpriteScreen(CBitmap *pBitmap, xlong lSourceX, xlong lSourceY, xlong lX, xlong lY, xlong lWidth,
                          xlong lHeight, xlong lTransparent, xlong lFlags) override;
    void RestoreSpriteScreen(CBitmap *pBitmap, xlong lX, xlong lY, xlong lWidth, xlong lHeight) override;
    void UpdateSpriteRestore(xlong lX, xlong lY, xlong lWidth, xlong lHeight, xlong lUnused, xlong lFlags,
                             CBitmap *pBitmap) override;
    void SetTexture(CBitmap *pTexture) override;
    xlong DrawPolygonScreen(CRect *&pBounds) override;
    xlong DrawShadowPolygonScreen(CRect *&pArea) override;
    void UpdateFromBackgroundToPersistent(xlong lLeft, xlong lTop, xlong lRight, xlong lBottom) override;
    CBitmap *LockPersistentBitmap(xlong lLeft, xlong lTop, xlong lRight, xlong lBottom) override;
    void UnlockPersistentBitmap() override;
    CBitmap *LockBackgroundBitmap(xlong lLeft, xlong lTop, xlong lRight, xlong lBottom) override;
    void UnlockBackgroundBitmap() override;
    unsigned char *LockScreenBuffer() override;
    void ReleaseScreenBuffer() override;
    xlong FlipPage() override;
    xlong ClearBuffer() override;
    void Validate() override;
    void AddClearAreaGui(xlong lLeft, xlong lTop, xlong lRight, xlong lBottom) override;
    void SetPalette(CPalette *pPalette) override;
    void GetScreenPos(xlong *plX, xlong *plY, xlong *plWidth, xlong *plHeight) override;
    void SetScreenPos(xlong lX, xlong lY) override;
    void SetScreenSize(xlong lWidth, xlong lHeight) override;
    void SetSystemPalette() override;

    xparam WinMsgHandler(HWND hWnd, unsigned int uMsg, xuparam wParam, xparam lParam) override;
    xlong MsgHandler(xulong ulMsg, xlong lA, xlong lB) override;

    /// Copies a bitmap into the frame buffer; queues nothing.
    void DrawBitmapToScreenInternal(CBitmap *pBitmap, xlong lSourceX, xlong lSourceY, xlong lX, xlong lY, xlong lWidth,
                                    xlong lHeight, xlong lTransparent, xlong lFlags);
    /// Copies an area of the frame buffer into a bitmap.
    /// @param lX, lY              place in the bitmap
    /// @param lSourceX, lSourceY  place on the screen
    void DrawScreenToBitmapInternal(CBitmap *pBitmap, xlong lX, xlong lY, xlong lSourceX, xlong lSourceY, xlong lWidth,
                                    xlong lHeight, xlong lTransparent, xlong lFlags);

    CRect m_DibAreas[PAGES][MAX_AREAS]; ///< what must reach the window at the next flip
    xlong m_lDibCount[PAGES];
    xlong m_lOffsetX; ///< the picture's corner in the client area
    xlong m_lOffsetY;
    CDIBPal *m_pDibPal;
    xlong m_lNextModeId;
    xulong m_ulWindowFlags;
    xulong m_ulDefaultFlags;
    CDib *m_pDib;
    void *m_pBitmapInfo;      ///< header and 256 index words
    xlong m_lDibFirst[PAGES]; ///< those before are cancelled

protected:
    void AddDibLayerArea(xlong lLeft, xlong lTop, xlong lRight, xlong lBottom);
    /// Finds the picture's place anew after a change of the window's size.
    void UpdateWindowVariables();
};
