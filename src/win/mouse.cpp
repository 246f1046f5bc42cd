#include "tarvix/mouse.h"

#include "input/replayhooks.h"
#include "tarvix/globals.h"
#include "tarvix/replay.h"
#include "tarvix/screen.h"
#include "tarvix/sprite.h"
#include "tarvix/winctrl.h"
#include "win/win32.h"

namespace
{
// Where delta mode holds the pointer, whatever the size of the screen.
const xlong s_lCentreX = 320, s_lCentreY = 240;
const xulong s_ulFollowTime = 20; // milliseconds

// Windows reports a move when the window opens that nobody made.
bool s_bSkipMove = true;

bool IsPointerFollowed()
{
    return glb->m_pWinCtrl && (glb->m_pWinCtrl->GetOptions() & XGUIOPT_POINTER);
}

// Asks for one WM_MOUSELEAVE.
void TrackLeave(HWND hWnd)
{
    TRACKMOUSEEVENT track = { sizeof(track), TME_LEAVE, hWnd, 0 };
    TrackMouseEvent(&track);
}

bool IsMouseEvent(unsigned int uMsg)
{
    return uMsg == WM_MOUSEMOVE || uMsg == WM_LBUTTONDOWN || uMsg == WM_LBUTTONUP || uMsg == WM_RBUTTONDOWN ||
           uMsg == WM_RBUTTONUP;
}

xlong ButtonsOf(xuparam wParam)
{
    return (wParam & MK_LBUTTON ? XBTN_LEFT : 0) | (wParam & MK_RBUTTON ? XBTN_RIGHT : 0) |
           (wParam & MK_MBUTTON ? XBTN_MIDDLE : 0);
}
} // namespace

CMouse::CMouse()
    : m_hArrow(LoadCursorA(nullptr, IDC_ARROW)), m_hFinger(LoadCursorA(nullptr, IDC_HAND)),
      m_hIBeam(LoadCursorA(nullptr, IDC_IBEAM))
{
    if (!m_hFinger)
        m_hFinger = m_hArrow;
    for (const UINT uMsg : { WM_LBUTTONUP, WM_LBUTTONDOWN, WM_RBUTTONUP, WM_RBUTTONDOWN, WM_MOUSEMOVE, WM_ACTIVATEAPP,
                             WM_SETCURSOR, WM_MOUSELEAVE })
        RegisterWinMsg(this, uMsg);
}

CMouse::~CMouse() {}

xlong CMouse::Init()
{
    if (!GetSystemMetrics(SM_MOUSEPRESENT))
        return 0;
    const SVmode *pMode = glb->m_pScreen ? glb->m_pScreen->GetActiveMode() : nullptr;
    if (!pMode)
        return 1;
    if (pMode->lKind == XMODE_WINDOW)
    {
        IsFullScreen(0);
        // It counts: as many steps as the other way.
        while (ShowCursor(TRUE) < 0)
            continue;
        return 1;
    }
    IsFullScreen(1);
    while (ShowCursor(FALSE) >= 0)
        continue;
    AddTimer(s_ulFollowTime);
    return 1;
}

void CMouse::SetCursor(xulong ulId, xlong lFrame)
{
    CMouseBase::SetCursor(ulId, lFrame);
    if (!(m_ulFlags & FULL_SCREEN))
        ::SetCursor(ulId == XCURSOR_IBEAM ? m_hIBeam : ulId == XCURSOR_FINGER ? m_hFinger : m_hArrow);
}

xparam CMouse::WinMsgHandler(HWND hWnd, unsigned int uMsg, xuparam wParam, xparam lParam)
{
    if (IsInputReplayed())
        return 0;
    RECT rcWindow = {};
    GetWindowRect(hWnd, &rcWindow);
    if (uMsg == WM_ACTIVATEAPP && wParam == 1 && m_ulFlags & (DELTA_MODE | FULL_SCREEN))
        SetCursorPos(s_lCentreX, s_lCentreY);
    const bool bFollow = IsPointerFollowed() && !(m_ulFlags & (DELTA_MODE | FULL_SCREEN));
    POINT pt = {};
    if (uMsg == WM_MOUSELEAVE && bFollow && GetCursorPos(&pt))
    {
        xlong lX = pt.x - m_lAddX - rcWindow.left, lY = pt.y - m_lAddY - rcWindow.top;
        // Another window can lie over this one.
        const SVmode *const pMode = glb->m_pScreen ? glb->m_pScreen->GetActiveMode() : nullptr;
        if (pMode && lX >= 0 && lY >= 0 && lX < pMode->lWidth && lY < pMode->lHeight)
            lX = lY = -1;
        Feed(lX, lY, 0, 0, 0);
    }
    if (!IsMouseEvent(uMsg))
        return 0;
    if (uMsg == WM_MOUSEMOVE && s_bSkipMove)
    {
        s_bSkipMove = false;
        if (!bFollow)
            return 0;
    }
    if (bFollow)
        TrackLeave(hWnd);
    const xlong lDown = ButtonsOf(wParam);
    // A press owns the pointer: its release is heard wherever it happens.
    if (lDown && GetCapture() != hWnd)
        SetCapture(hWnd);
    else if (!lDown && GetCapture() == hWnd)
        ReleaseCapture();
    const bool bPlace = GetCursorPos(&pt);
    const xlong lDX = pt.x - rcWindow.left - s_lCentreX, lDY = pt.y - rcWindow.top - s_lCentreY;
    if (!bPlace || (!lDX && !lDY))
        Feed(m_lX, m_lY, 0, 0, lDown);
    else if (m_ulFlags & DELTA_MODE)
    {
        SetCursorPos(rcWindow.left + s_lCentreX, rcWindow.top + s_lCentreY);
        Feed(m_lX + lDX, m_lY + lDY, lDX, lDY, lDown);
    }
    else
        Feed(pt.x - m_lAddX - rcWindow.left, pt.y - m_lAddY - rcWindow.top, 0, 0, lDown);
    return 0;
}

void CMouse::TimerHandler(xulong ulInterval)
{
    if (!(m_ulFlags & FULL_SCREEN))
        return;
    POINT pt;
    if (GetCursorPos(&pt))
    {
        m_lX = pt.x;
        m_lY = pt.y;
        if (CReplay *pReplay = ActiveReplay())
            pReplay->OnPoint(&m_lX, &m_lY);
    }
    if (m_pCurrent)
        m_pCurrent->pSprite->SetPosition(m_lX, m_lY);
    if (m_pfnUpdate)
        m_pfnUpdate(m_lX, m_lY, (xlong)m_ulButtons);
}

void CMouse::SetFingerResourceId(xulong ulId)
{
    if (m_hFinger != m_hArrow)
        return;
    if (HCURSOR hFinger = LoadCursorA(ThisInstance, MAKEINTRESOURCEA(ulId)))
        m_hFinger = hFinger;
}
