// The windowed screen. What its lists of areas mean, of the present page, in
// the course of a frame (FlipPage, with Validate in its draw message; ClearBuffer):
// 1. Clear: what the host has drawn on the frame buffer since the last
//    ClearBuffer. FlipPage shows it and leaves it in the list; ClearBuffer puts
//    the persistent picture back there and empties the list.
// 2. Persistent: what has changed on the persistent picture. It goes the same
//    way, so it shows on the frame buffer from ClearBuffer on.
// 3. Dib: what the window lacks. FlipPage adds both lists, copies all of it and
//    empties it; after a failed copy it stays for the next flip. ClearBuffer
//    adds what it put back, and sprites what they draw.
// 4. Validate: what the GUI has to draw again, because ClearBuffer put the
//    picture back over it. Validate draws and empties it.
// 5. The clear and persistent lists do not grow while they are walked.

#include "tarvix/dibscreen.h"

#include "core/invariant.h"
#include "core/msgsys.h"
#include "pictures/kernels.h"
#include "screens/areas.h"
#include "screens/modeformat.h"
#include "tarvix/error.h"
#include "tarvix/globals.h"
#include "tarvix/mouse.h"
#include "tarvix/winctrl.h"
#include "win/win32.h"

#include <algorithm>
#include <string.h>

namespace
{
const xlong s_lMessagePriority = -102;
const size_t s_ulInfoSize = sizeof(BITMAPINFOHEADER) + 256 * sizeof(WORD);

// Metrics and style groups of the window.
enum
{
    STYLE_WINDOW = 0xCF0000,     ///< caption, frame and all boxes
    STYLE_FRAME = 0xF0000,       ///< thick frame without a caption
    STYLE_CAPTION = 0xCA0000,    ///< caption with a thin border
    STYLE_MINIMISABLE = 0xC40000 ///< caption or thick frame
};

const UINT s_uMessages[] = { WM_ACTIVATEAPP, WM_PAINT, WM_QUERYNEWPALETTE, WM_PALETTECHANGED, WM_SIZE, WM_SYSCOMMAND };

struct TModeName
{
    xlong lWidth, lHeight, lDepth;
    const char *pszName;
    xlong lWindowId, lDesktopId;
};

const TModeName s_Modes[] = {
    { 640, 480, 24, "Windows 640*480 24bit", 13, 18 },   { 640, 480, 16, "Windows 640*480 16bit", 14, 17 },
    { 640, 480, 8, "Windows 640*480 8bit", 15, 16 },     { 800, 600, 8, "Windows 800*600 8bit", 19, 20 },
    { 800, 600, 16, "Windows 800*600 16bit", 21, 22 },   { 800, 600, 24, "Windows 800*600 24bit", 23, 24 },
    { 1024, 768, 8, "Windows 1024*768 8bit", 25, 26 },   { 1024, 768, 16, "Windows 1024*768 16bit", 27, 28 },
    { 1024, 768, 24, "Windows 1024*768 24bit", 29, 30 },
};

SVmode *NewMode(xlong lWidth, xlong lHeight, xlong lDepth, xlong lKind, xlong lId, const char *pszName)
{
    SVmode *pMode = XNEW(SVmode());
    if (!pMode)
        return nullptr;
    pMode->lWidth = lWidth;
    pMode->lHeight = lHeight;
    pMode->lDepth = lDepth;
    pMode->lBytesPerPixel = lDepth / 8;
    pMode->lRowBytes = (lWidth * pMode->lBytesPerPixel + 3) & ~3; // as GDI lays its rows
    pMode->lIndexed = lDepth == 8;
    if (lDepth == 16)
    {
        pMode->lRedBits = pMode->lGreenBits = pMode->lBlueBits = 5;
        pMode->lRedShift = 10;
        pMode->lGreenShift = 5;
    }
    else if (lDepth == 24)
    {
        pMode->lRedBits = pMode->lGreenBits = pMode->lBlueBits = 8;
        pMode->lGreenShift = 8;
        pMode->lBlueShift = 16;
    }
    pMode->lKind = lKind;
    pMode->lId = lId;
    strcpy(pMode->szName, pszName);
    return pMode;
}

// Appends a mode in a window and its twin over the desktop, both or none.
xlong AddModePair(CLList &modes, const TModeName &name)
{
    SVmode *pWindow = NewMode(name.lWidth, name.lHeight, name.lDepth, XMODE_WINDOW, name.lWindowId, name.pszName);
    SVmode *pDesktop = NewMode(name.lWidth, name.lHeight, name.lDepth, XMODE_DESKTOP, name.lDesktopId, name.pszName);
    if (pWindow && pDesktop && modes.InsertLast(pWindow))
    {
        if (modes.InsertLast(pDesktop))
            return 1;
        modes.DeleteItem(pWindow);
    }
    if (pWindow)
        XDELETE(pWindow);
    if (pDesktop)
        XDELETE(pDesktop);
    return xError(XERR_MEMORY);
}

xlong WindowStyle()
{
    return (xlong)GetWindowLongA(sglb->m_hWnd, GWL_STYLE);
}

bool IsBareWindow()
{
    return !(WindowStyle() & STYLE_WINDOW);
}

// A palette can't be deleted while a context holds it.
void DropPalette(CDibScreen &screen)
{
    if (!screen.m_pDibPal)
        return;
    HPALETTE hDefault = (HPALETTE)GetStockObject(DEFAULT_PALETTE);
    if (sglb->m_hDC)
        SelectPalette(sglb->m_hDC, hDefault, FALSE);
    if (screen.m_pDib)
        SelectPalette(screen.m_pDib->m_hDC, hDefault, FALSE);
    XDELETE(screen.m_pDibPal);
    screen.m_pDibPal = nullptr;
}

// A list of areas that may not grow while it is walked.
struct TWalkedList
{
    template <class TFunction>
    void ForEach(TFunction function) const
    {
        const xlong lAll = lCount;
        TARVIX_INVARIANT(lAll >= 0 && lAll <= CScreenBase::MAX_AREAS);
        for (xlong i = 0; i < lAll; ++i)
            function(pAreas[i]);
        TARVIX_INVARIANT(lCount == lAll);
    }

    const CRect *pAreas;
    xlong &lCount;
};

// Where a drawing call puts a bitmap.
CRect AreaOf(const CBitmap &bitmap, xlong lX, xlong lY, xlong lWidth, xlong lHeight)
{
    CRect rc;
    rc.SetXYWH(lX, lY, SizeOrDefault(lWidth, bitmap.m_lWidth), SizeOrDefault(lHeight, bitmap.m_lHeight));
    return rc;
}

// The frame buffer seen as a bitmap, for as long as it is locked.
class TFrameView : public CBitmap
{
public:
    TFrameView(CDibScreen &screen, unsigned char *pBits)
    {
        const SVmode &mode = *screen.m_pMode;
        m_lWidth = mode.lWidth;
        m_lHeight = mode.lHeight;
        m_lDepth = mode.lDepth;
        m_lPitch = mode.lRowBytes;
        m_lBytesPerPixel = mode.lBytesPerPixel;
        SetFormat(*this, FormatOf(mode));
        m_bRGB = !mode.lIndexed;
        m_pPalette = mode.lIndexed ? &screen.m_Palette : nullptr;
        m_rcClip = screen.m_rcClip;
        m_pData = pBits;
    }

    ~TFrameView() override
    {
        m_pData = nullptr;
        m_pPalette = nullptr;
    }
};
} // namespace

CDibScreen::CDibScreen()
    : m_lDibCount(), m_lOffsetX(0), m_lOffsetY(0), m_pDibPal(nullptr), m_lNextModeId(1024), m_ulWindowFlags(0),
      m_ulDefaultFlags(XWINDOW_CAPTION | XWINDOW_THICK_FRAME), m_pDib(nullptr), m_pBitmapInfo(nullptr), m_lDibFirst()
{
    m_bActive = 1;
}

CDibScreen::~CDibScreen()
{
    ExitMode();
}

xlong CDibScreen::InitMode()
{
    const SVmode *pMode = (SVmode *)m_Modes.Get();
    if (pMode)
    {
        if (pMode->lWidth > GetSystemMetrics(SM_CXSCREEN) || pMode->lHeight > GetSystemMetrics(SM_CYSCREEN))
            return xErrorTxt("CDibScreen::InitMode: Desktop is too small.");
        ShowWindow(sglb->m_hWnd, SW_SHOW);
        UpdateWindow(sglb->m_hWnd);
        if (!m_pDib)
            m_pDib = XNEW(CDib);
        if (!m_pDib)
            return xError(XERR_MEMORY);
        if (!m_pDib->Create(pMode->lWidth, pMode->lHeight, pMode->lDepth))
            return 0;

        if (!m_pBitmapInfo)
            m_pBitmapInfo = GlobalAlloc(GMEM_FIXED, s_ulInfoSize);
        if (!m_pBitmapInfo)
            return xError(XERR_MEMORY);
        memcpy(m_pBitmapInfo, (void *)m_pDib->m_pInfo, sizeof(BITMAPINFOHEADER));
        ((BITMAPINFOHEADER *)m_pBitmapInfo)->biClrUsed = 0;
        WORD *pIndexes = (WORD *)((BITMAPINFOHEADER *)m_pBitmapInfo + 1);
        for (WORD w = 0; w < 256; ++w)
            pIndexes[w] = w;

        if (!m_pMode)
            m_pMode = XNEW(SVmode());
        if (!m_pMode)
            return xError(XERR_MEMORY);
        *m_pMode = *pMode;
    }
    for (UINT uMsg : s_uMessages)
        RegisterWinMsg(this, uMsg);
    MsgSysRegister(this, XFRAME_DRAW, s_lMessagePriority);
    return 1;
}

xlong CDibScreen::ExitMode()
{
    // The registration for WM_SIZE stays until the object goes.
    for (UINT uMsg : s_uMessages)
        if (uMsg != WM_SIZE)
            UnRegisterWinMsg(this, uMsg);
    MsgSysUnregister(this, XFRAME_DRAW, s_lMessagePriority);
    DropPalette(*this);
    if (m_pDib)
        XDELETE(m_pDib);
    m_pDib = nullptr;
    if (m_pBitmapInfo)
        GlobalFree((HGLOBAL)m_pBitmapInfo);
    m_pBitmapInfo = nullptr;
    if (m_pMode)
        XDELETE(m_pMode);
    CleanUp();
    return 1;
}

xlong CDibScreen::GetVideoModes()
{
    for (const TModeName &name : s_Modes)
        if (!AddModePair(m_Modes, name))
            return 0;
    return 1;
}

xlong CDibScreen::AddWindowVideoMode(xlong lWidth, xlong lHeight, xlong lDepth, xlong lId)
{
    const char *pszName = lDepth == 8    ? "Windows 8bit"
                          : lDepth == 16 ? "Windows 16bit"
                          : lDepth == 24 ? "Windows 24bit"
                                         : nullptr;
    // A picture of more than this many pixels a side has no DIB section.
    if (!pszName || lWidth < 1 || lHeight < 1 || lWidth > 32767 || lHeight > 32767)
        return 0;
    if (lId == -1)
    {
        lId = m_lNextModeId;
        m_lNextModeId += 2;
    }
    return AddModePair(m_Modes, { lWidth, lHeight, lDepth, pszName, lId, lId + 1 });
}

xlong CDibScreen::SetScreenWindowProperties(xulong ulFlags, xlong lWidth, xlong lHeight)
{
    if (!m_pMode)
        return 0;
    m_ulWindowFlags = ulFlags;
    if (lWidth == -1)
        lWidth = m_pMode->lWidth;
    if (lHeight == -1)
        lHeight = m_pMode->lHeight;
    const xlong lDesktopWidth = GetSystemMetrics(SM_CXSCREEN);
    const xlong lDesktopHeight = GetSystemMetrics(SM_CYSCREEN);
    const xlong lCaption = GetSystemMetrics(SM_CYCAPTION);
    xlong lStyle = STYLE_WINDOW;
    xlong lFrameX = 0, lFrameY = 0, lTitle = 0;
    if (lDesktopHeight <= lHeight)
    {
        if (lDesktopWidth < m_pMode->lWidth || lDesktopHeight < m_pMode->lHeight)
            return xErrorTxt("Desktop area is to small!");
        lStyle = 0;
    }
    else if (ulFlags & XWINDOW_THICK_FRAME)
    {
        lFrameX = GetSystemMetrics(SM_CXFRAME);
        lFrameY = GetSystemMetrics(SM_CYFRAME);
        if (ulFlags & XWINDOW_CAPTION)
            lTitle = lCaption;
        else
            lStyle = STYLE_FRAME;
    }
    else if (ulFlags & XWINDOW_CAPTION)
    {
        lStyle = STYLE_CAPTION;
        lFrameX = GetSystemMetrics(SM_CXDLGFRAME);
        lFrameY = GetSystemMetrics(SM_CYDLGFRAME);
        lTitle = lCaption;
    }
    lWidth += 2 * lFrameX;
    lHeight += 2 * lFrameY + lTitle;
    m_lOffsetX = lFrameX;
    m_lOffsetY = lFrameY + lTitle;
    if (glb->m_pMouse)
        glb->m_pMouse->SetMouseAdd(m_lOffsetX, m_lOffsetY);

    SetWindowLongA(sglb->m_hWnd, GWL_STYLE, lStyle);
    if (m_pMode->lKind == XMODE_WINDOW)
    {
        SetWindowPos(sglb->m_hWnd, nullptr, (lDesktopWidth - lWidth) / 2, (lDesktopHeight - lHeight) / 2, lWidth,
                     lHeight, SWP_NOZORDER | SWP_FRAMECHANGED);
        // No message tells of a size that stayed the same.
        UpdateWindowVariables();
    }
    else
    {
        SetWindowPos(sglb->m_hWnd, nullptr, 0, 0, lDesktopWidth, lDesktopHeight, SWP_NOZORDER | SWP_FRAMECHANGED);
        m_lOffsetX = (lDesktopWidth - m_pMode->lWidth) / 2;
        m_lOffsetY = (lDesktopHeight - m_pMode->lHeight) / 2;
    }
    m_rcClip.Set(0, 0, m_pMode->lWidth - 1, m_pMode->lHeight - 1);
    m_lNumPages = 2;
    m_lPage = 0;
    SetCursor(LoadCursorA(nullptr, IDC_ARROW));
    ShowWindow(sglb->m_hWnd, SW_SHOW);
    UpdateWindow(sglb->m_hWnd);
    return 1;
}

xlong CDibScreen::SetDefaultScreenWindowProperties(xulong ulFlags)
{
    m_ulDefaultFlags = ulFlags;
    return 1;
}

xlong CDibScreen::ModeAvailable()
{
    return 1;
}

xlong CDibScreen::ScreenAvailable()
{
    return 1;
}

xlong CDibScreen::GetDepth()
{
    return GetDeviceCaps(sglb->m_hDC, BITSPIXEL);
}

xlong CDibScreen::SetFlipScreen(xlong lOn)
{
    if (m_bFlipScreen == lOn)
        return 1;
    m_bFlipScreen = lOn;
    if (lOn && glb->m_pWinCtrl)
        glb->m_pWinCtrl->Validate();
    if (lOn && m_pMode)
        AddDibLayerArea(0, 0, m_pMode->lWidth, m_pMode->lHeight);
    return 1;
}

xlong CDibScreen::MakeScreenBitmap(CBitmap *pBitmap, xlong lFlags)
{
    if (!MakeScreenFormat(pBitmap, lFlags))
        return 0;
    pBitmap->m_bOnSurface = 1;
    return 1;
}

xlong CDibScreen::MakeScreenTexture(CBitmap *pBitmap, xlong lFlags)
{
    return 1;
}

void CDibScreen::DrawBitmapScreen(CBitmap *pBitmap, xlong lSourceX, xlong lSourceY, xlong lX, xlong lY, xlong lWidth,
                                  xlong lHeight, xlong lTransparent, xlong lFlags)
{
    DrawBitmapToScreenInternal(pBitmap, lSourceX, lSourceY, lX, lY, lWidth, lHeight, lTransparent, lFlags);
    const CRect rc = AreaOf(*pBitmap, lX, lY, lWidth, lHeight);
    AddClearArea(rc.m_lLeft, rc.m_lTop, rc.m_lRight, rc.m_lBottom);
}

void CDibScreen::DrawBitmapScreenGui(CBitmap *pBitmap, xlong lSourceX, xlong lSourceY, xlong lX, xlong lY, xlong lWidth,
                                     xlong lHeight, xlong lTransparent, xlong lFlags)
{
    DrawBitmapToScreenInternal(pBitmap, lSourceX, lSourceY, lX, lY, lWidth, lHeight, lTransparent, lFlags);
}

void CDibScreen::DrawSpriteScreen(CBitmap *pBitmap, xlong lSourceX, xlong lSourceY, xlong lX, xlong lY, xlong lWidth,
                                  xlong lHeight, xlong lTransparent, xlong lFlags)
{
    DrawBitmapToScreenInternal(pBitmap, lSourceX, lSourceY, lX, lY, lWidth, lHeight, lTransparent, lFlags);
    const CRect rc = AreaOf(*pBitmap, lX, lY, lWidth, lHeight);
    AddDibLayerArea(rc.m_lLeft, rc.m_lTop, rc.m_lRight, rc.m_lBottom);
}

void CDibScreen::RestoreSpriteScreen(CBitmap *pBitmap, xlong lX, xlong lY, xlong lWidth, xlong lHeight)
{
    if (pBitmap)
        DrawSpriteScreen(pBitmap, 0, 0, lX, lY, lWidth, lHeight, 0, 0);
}

void CDibScreen::UpdateSpriteRestore(xlong lX, xlong lY, xlong lWidth, xlong lHeight, xlong lUnused, xlong lFlags,
                                     CBitmap *pBitmap)
{
    DrawScreenToBitmapInternal(pBitmap, 0, 0, lX, lY, lWidth, lHeight, 0, lFlags);
}

void CDibScreen::SetTexture(CBitmap *pTexture)
{
    m_pTexture = pTexture;
}

xlong CDibScreen::DrawPolygonScreen(CRect *&pBounds)
{
    unsigned char *pBuffer = LockScreenBuffer();
    if (!pBuffer)
        return 0;
    CRect rc;
    CRect *pArea = &rc;
    const xlong lResult = DrawPolygonSoftware(pBuffer, &m_rcClip, m_pMode->lRowBytes, m_pMode->lHeight,
                                              m_pMode->lBytesPerPixel, pArea, pBounds);
    ReleaseScreenBuffer();
    if (!lResult)
        return 0;
    rc.Normalize();
    AddClearArea(rc.m_lLeft, rc.m_lTop, rc.m_lRight + 1, rc.m_lBottom + 1);
    if (pBounds)
        pBounds->Normalize();
    return 1;
}

xlong CDibScreen::DrawShadowPolygonScreen(CRect *&pArea)
{
    unsigned char *pBuffer = LockScreenBuffer();
    if (!pBuffer)
        return 0;
    CRect rc;
    CRect *pDrawn = &rc;
    const xlong lResult = DrawShadowPolygonSoftware(pBuffer, pDrawn);
    ReleaseScreenBuffer();
    if (!lResult)
        return 0;
    AddClearArea(rc.m_lLeft, rc.m_lTop, rc.m_lRight + 2, rc.m_lBottom + 2);
    if (pArea)
        pArea->Copy(&rc);
    return 1;
}

void CDibScreen::UpdateFromBackgroundToPersistent(xlong lLeft, xlong lTop, xlong lRight, xlong lBottom)
{
    if (m_bPersistentMode != 1 || m_bBackgroundMode != 1 || !m_pPersistent || !m_pBackground)
        return;
    m_pPersistent->Blt(m_pBackground, 0, 0, 0, 0, 640, 480, 0, 0, 0);
    AddClearAreaPersistent(0, 0, 639, 479);
}

CBitmap *CDibScreen::LockPersistentBitmap(xlong lLeft, xlong lTop, xlong lRight, xlong lBottom)
{
    return m_pPersistent;
}

void CDibScreen::UnlockPersistentBitmap() {}

CBitmap *CDibScreen::LockBackgroundBitmap(xlong lLeft, xlong lTop, xlong lRight, xlong lBottom)
{
    return m_pBackground;
}

void CDibScreen::UnlockBackgroundBitmap() {}

unsigned char *CDibScreen::LockScreenBuffer()
{
    return m_pDib && m_pMode ? m_pDib->m_pBits : nullptr;
}

void CDibScreen::ReleaseScreenBuffer() {}

xlong CDibScreen::FlipPage()
{
    MsgSysSend(XFRAME_DRAW, 0, 0);
    xlong &lCount = m_lDibCount[m_lPage];
    if (!m_bFlipScreen || !m_pMode || !m_pDib)
    {
        lCount = 0;
        return 1;
    }
    const TWalkedList lists[] = { { m_PersistentAreas[m_lPage], m_lPersistentCount[m_lPage] },
                                  { m_ClearAreas[m_lPage], m_lClearCount[m_lPage] } };
    for (const TWalkedList &list : lists)
        list.ForEach([&](const CRect &rc) { AddDibLayerArea(rc.m_lLeft, rc.m_lTop, rc.m_lRight, rc.m_lBottom); });
    for (xlong i = 0; i < lCount; ++i)
    {
        const CRect rc = m_DibAreas[m_lPage][i];
        xlong lX = rc.m_lLeft, lY = rc.m_lTop;
        xlong lTargetX = lX, lTargetY = lY;
        xlong lWidth = rc.m_lRight - rc.m_lLeft + 1;
        xlong lHeight = rc.m_lBottom - rc.m_lTop + 1;
        if (!ClipAreas(&lX, &lY, &lWidth, &lHeight, &rc, &lTargetX, &lTargetY, &m_rcClip))
            continue;
        if (!BitBlt(sglb->m_hDC, lX + m_lOffsetX, lY + m_lOffsetY, lWidth, lHeight, m_pDib->m_hDC, lX, lY, SRCCOPY))
            return xErrorTxt("Bit Blit failed");
    }
    lCount = 0;
    return 1;
}

xlong CDibScreen::ClearBuffer()
{
    MsgSysSend(XFRAME_END, 0, 0);
    const TWalkedList lists[] = { { m_PersistentAreas[m_lPage], m_lPersistentCount[m_lPage] },
                                  { m_ClearAreas[m_lPage], m_lClearCount[m_lPage] } };
    for (const TWalkedList &list : lists)
    {
        list.ForEach(
            [&](const CRect &rc)
            {
                ASA(rc.m_lLeft, rc.m_lTop, rc.m_lRight, rc.m_lBottom);
                if (m_pPersistent)
                    DrawBitmapToScreenInternal(m_pPersistent, rc.m_lLeft, rc.m_lTop, rc.m_lLeft, rc.m_lTop,
                                               rc.m_lRight - rc.m_lLeft + 1, rc.m_lBottom - rc.m_lTop + 1, 0, 0);
                AddDibLayerArea(rc.m_lLeft, rc.m_lTop, rc.m_lRight, rc.m_lBottom);
            });
        list.lCount = 0;
    }
    return 1;
}

void CDibScreen::Validate()
{
    const TWalkedList clear = { m_ClearAreas[m_lPage], m_lClearCount[m_lPage] };
    clear.ForEach([&](const CRect &rc) { ASA(rc.m_lLeft, rc.m_lTop, rc.m_lRight, rc.m_lBottom); });
    for (xlong i = 0; i < m_lValidateCount[m_lPage] && glb->m_pWinCtrl && m_pMode; ++i)
    {
        // What lies outside, as merged entries do, would become the clip of a
        // pixel inside.
        CRect rcMode, rc = m_ValidateAreas[m_lPage][i];
        rcMode.Set(0, 0, m_pMode->lWidth - 1, m_pMode->lHeight - 1);
        if (rc.Intersect(&rc, &rcMode) && glb->m_pWinCtrl->Validate(&rc, m_lPage))
            AddDibLayerArea(rc.m_lLeft, rc.m_lTop, rc.m_lRight, rc.m_lBottom);
    }
    m_lValidateCount[m_lPage] = 0;
}

void CDibScreen::AddClearAreaGui(xlong lLeft, xlong lTop, xlong lRight, xlong lBottom)
{
    AddClearArea(lLeft, lTop, lRight, lBottom);
}

void CDibScreen::SetPalette(CPalette *pPalette)
{
    if (!m_pMode || m_pMode->lDepth != 8)
        return;
    CScreenBase::SetPalette(pPalette);
    m_Palette.Clone(pPalette);
    m_Palette.m_ucFirst = 0;
    m_Palette.m_ucLast = 255;
}

void CDibScreen::GetScreenPos(xlong *plX, xlong *plY, xlong *plWidth, xlong *plHeight)
{
    RECT rect = {};
    GetWindowRect(sglb->m_hWnd, &rect);
    if (plX)
        *plX = rect.left;
    if (plY)
        *plY = rect.top;
    if (plWidth)
        *plWidth = rect.right - rect.left;
    if (plHeight)
        *plHeight = rect.bottom - rect.top;
}

void CDibScreen::SetScreenPos(xlong lX, xlong lY)
{
    SetWindowPos(sglb->m_hWnd, nullptr, lX, lY, 0, 0, SWP_NOSIZE | SWP_NOZORDER | SWP_NOOWNERZORDER);
}

void CDibScreen::SetScreenSize(xlong lWidth, xlong lHeight)
{
    SetWindowPos(sglb->m_hWnd, nullptr, 0, 0, lWidth, lHeight, SWP_NOMOVE | SWP_NOZORDER | SWP_NOOWNERZORDER);
}

void CDibScreen::SetSystemPalette()
{
    if (!m_pMode || m_pMode->lDepth != 8 || !m_pDib)
        return;
    DropPalette(*this);
    m_pDibPal = XNEW(CDIBPal);
    if (!m_pDibPal || !m_pDibPal->Create(&m_Palette))
        return;
    m_pDibPal->SetSysPalColors(sglb->m_hDC);
    for (HDC hDC : { sglb->m_hDC, m_pDib->m_hDC })
    {
        SelectPalette(hDC, m_pDibPal->m_hPalette, FALSE);
        RealizePalette(hDC);
    }
    RGBQUAD colors[256];
    for (int i = 0; i < 256; ++i)
    {
        const TRGBA &color = m_Palette.m_Colors[i];
        colors[i] = { color.ucBlue, color.ucGreen, color.ucRed, 0 };
    }
    for (HDC hDC : { sglb->m_hDC, m_pDib->m_hDC })
    {
        SetDIBColorTable(hDC, 0, 256, colors);
        UpdateColors(hDC);
    }
}

xparam CDibScreen::WinMsgHandler(HWND hWnd, unsigned int uMsg, xuparam wParam, xparam lParam)
{
    switch (uMsg)
    {
    case WM_SYSCOMMAND:
        // The menu key would stop the program's messages until it is left.
        return (wParam & 0xfff0) == SC_KEYMENU ? 0 : DefWindowProcA(hWnd, uMsg, wParam, lParam);
    case WM_SIZE:
        if (wParam == SIZE_RESTORED || wParam == SIZE_MAXIMIZED)
        {
            Activate();
            if (IsBareWindow())
                ShowWindow(hWnd, SW_RESTORE);
        }
        else if (wParam == SIZE_MINIMIZED)
        {
            DeActivate();
            if (!(WindowStyle() & STYLE_MINIMISABLE))
                ShowWindow(hWnd, SW_MINIMIZE);
            return 0;
        }
        UpdateWindowVariables();
        return 0;
    case WM_PAINT:
    {
        PAINTSTRUCT ps;
        HDC hDC = BeginPaint(hWnd, &ps);
        if (m_pMode && m_pDib &&
            !BitBlt(hDC, m_lOffsetX, m_lOffsetY, m_pMode->lWidth, m_pMode->lHeight, m_pDib->m_hDC, 0, 0, SRCCOPY))
            xErrorTxt("Bit Blit failed");
        EndPaint(hWnd, &ps);
        return 0;
    }
    case WM_ACTIVATEAPP:
        if (wParam)
        {
            Activate();
            if (IsBareWindow())
                ShowWindow(hWnd, SW_RESTORE);
        }
        else
            DeActivate();
        return 0;
    case WM_QUERYNEWPALETTE:
        if (!m_pDibPal)
            return 0;
        SelectPalette(sglb->m_hDC, m_pDibPal->m_hPalette, FALSE);
        RealizePalette(sglb->m_hDC);
        InvalidateRect(hWnd, nullptr, FALSE);
        UpdateWindow(hWnd);
        return 1;
    case WM_PALETTECHANGED:
        if ((HWND)wParam != hWnd)
            SetSystemPalette();
        return 0;
    }
    return 0;
}

xlong CDibScreen::MsgHandler(xulong ulMsg, xlong lA, xlong lB)
{
    if (ulMsg == XFRAME_DRAW && m_bGreyPending)
    {
        ScreenToPersistentGray();
        m_bGreyPending = 0;
    }
    return 0;
}

void CDibScreen::DrawBitmapToScreenInternal(CBitmap *pBitmap, xlong lSourceX, xlong lSourceY, xlong lX, xlong lY,
                                            xlong lWidth, xlong lHeight, xlong lTransparent, xlong lFlags)
{
    unsigned char *pBits = LockScreenBuffer();
    if (!pBits)
        return;
    lWidth = SizeOrDefault(lWidth, pBitmap->m_lWidth);
    lHeight = SizeOrDefault(lHeight, pBitmap->m_lHeight);
    const SVmode &mode = *m_pMode;
    const TPixelBlock source = BlockOf(*pBitmap);
    const TPixelBlock target = { pBits, mode.lRowBytes, mode.lDepth, FormatOf(mode), &m_Palette, &m_rcClip };
    const TCopy copy = { lSourceX, lSourceY, lX, lY, lWidth, lHeight, lTransparent, 0 };
    // A bitmap does not search the palette on its own; a screen does.
    if (target.lDepth != 8 || source.lDepth != 24)
        CopyArea(source, target, copy);
    else if (source.pData)
        Convert24To8(source, target, copy);
    ReleaseScreenBuffer();
}

void CDibScreen::DrawScreenToBitmapInternal(CBitmap *pBitmap, xlong lX, xlong lY, xlong lSourceX, xlong lSourceY,
                                            xlong lWidth, xlong lHeight, xlong lTransparent, xlong lFlags)
{
    unsigned char *pBits = LockScreenBuffer();
    if (!pBits)
        return;
    TFrameView view(*this, pBits);
    pBitmap->Blt(&view, lSourceX, lSourceY, lX, lY, lWidth, lHeight, lTransparent, 0, lFlags);
    ReleaseScreenBuffer();
}

void CDibScreen::AddDibLayerArea(xlong lLeft, xlong lTop, xlong lRight, xlong lBottom)
{
    if (!m_pMode)
        return;
    CRect rc;
    rc.Set(lLeft, lTop, lRight, lBottom);
    AddArea({ m_DibAreas[m_lPage], &m_lDibCount[m_lPage], &m_lDibFirst[m_lPage] }, rc, *m_pMode);
}

void CDibScreen::UpdateWindowVariables()
{
    if (!m_pMode)
        return;
    RECT rect = {};
    GetClientRect(sglb->m_hWnd, &rect);
    m_lOffsetX = std::max<xlong>((rect.right - m_pMode->lWidth) / 2, 0);
    m_lOffsetY = std::max<xlong>((rect.bottom - m_pMode->lHeight) / 2, 0);
    if (!glb->m_pMouse)
        return;
    // Any one bit of the style counts as a whole frame.
    xlong lFrameX = 0, lFrameY = 0;
    if (!IsBareWindow())
    {
        lFrameX = GetSystemMetrics(SM_CXFRAME);
        lFrameY = GetSystemMetrics(SM_CYFRAME) + GetSystemMetrics(SM_CYCAPTION);
    }
    glb->m_pMouse->SetMouseAdd(m_lOffsetX + lFrameX, m_lOffsetY + lFrameY);
}
