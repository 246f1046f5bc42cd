#include "tarvix/mouse.h"

#include "tarvix/globals.h"
#include "tarvix/screen.h"
#include "tarvix/sprite.h"

namespace
{
// Where delta mode holds the pointer, whatever the size of the screen.
const xlong s_lCentreX = 320, s_lCentreY = 240;
const xulong s_ulFollowTime = 20; // milliseconds

// Windows reports a move when the window opens that nobody made.
bool s_bSkipMove = true;

struct TButton
{
    WPARAM wKey;
    xulong ulBit;
    xlong CMouseBase::*pbDown;
};

const TButton s_Buttons[] = { { MK_LBUTTON, XBTN_LEFT, &CMouseBase::m_bLeftDown },
                              { MK_MBUTTON, XBTN_MIDDLE, &CMouseBase::m_bMiddleDown },
                              { MK_RBUTTON, XBTN_RIGHT, &CMouseBase::m_bRightDown } };

bool IsMouseEvent(unsigned int uMsg)
{
    return uMsg == WM_MOUSEMOVE || uMsg == WM_LBUTTONDOWN || uMsg == WM_LBUTTONUP || uMsg == WM_RBUTTONDOWN ||
           uMsg == WM_RBUTTONUP;
}

void TakePosition(CMouseBase &mouse, const RECT &rcWindow)
{
    POINT pt = {};
    if (!GetCursorPos(&pt))
        return;
    const xlong lDX = pt.x - rcWindow.left - s_lCentreX, lDY = pt.y - rcWindow.top - s_lCentreY;
    if (!lDX && !lDY)
        return;
    if (mouse.m_ulFlags & CMouseBase::DELTA_MODE)
    {
        mouse.m_lX += lDX;
        mouse.m_lY += lDY;
        mouse.m_lDeltaX += lDX;
        mouse.m_lDeltaY += lDY;
        SetCursorPos(rcWindow.left + s_lCentreX, rcWindow.top + s_lCentreY);
        return;
    }
    mouse.m_lX = pt.x - mouse.m_lAddX - rcWindow.left;
    mouse.m_lY = pt.y - mouse.m_lAddY - rcWindow.top;
}

void TakeButtons(CMouseBase &mouse, xuparam wParam)
{
    mouse.m_ulButtons &= ~(xulong)XBTN_DOWN_MASK;
    for (const TButton &button : s_Buttons)
    {
        const bool bDown = wParam & button.wKey;
        mouse.*button.pbDown = bDown;
        if (bDown)
            mouse.m_ulButtons |= button.ulBit;
    }
    const xulong ulDown = mouse.m_ulButtons & XBTN_DOWN_MASK, ulWasDown = mouse.m_ulPrevButtons & XBTN_DOWN_MASK;
    mouse.m_ulButtons |= (ulDown & ~ulWasDown) << 8 | (ulWasDown & ~ulDown) << 16;
    mouse.m_ulPrevButtons = mouse.m_ulButtons;
}
} // namespace

CMouse::CMouse()
    : m_hArrow(LoadCursorA(nullptr, IDC_ARROW)), m_hFinger(LoadCursorA(nullptr, IDC_HAND)),
      m_hIBeam(LoadCursorA(nullptr, IDC_IBEAM))
{
    if (!m_hFinger)
        m_hFinger = m_hArrow;
    for (const UINT uMsg :
         { WM_LBUTTONUP, WM_LBUTTONDOWN, WM_RBUTTONUP, WM_RBUTTONDOWN, WM_MOUSEMOVE, WM_ACTIVATEAPP, WM_SETCURSOR })
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
        ShowCursor(TRUE);
        return 1;
    }
    IsFullScreen(1);
    ShowCursor(FALSE);
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
    RECT rcWindow = {};
    GetWindowRect(hWnd, &rcWindow);
    if (uMsg == WM_ACTIVATEAPP && wParam == 1 && m_ulFlags & (DELTA_MODE | FULL_SCREEN))
        SetCursorPos(s_lCentreX, s_lCentreY);
    if (!IsMouseEvent(uMsg))
        return 0;
    if (uMsg == WM_MOUSEMOVE && s_bSkipMove)
    {
        s_bSkipMove = false;
        return 0;
    }
    TakePosition(*this, rcWindow);
    TakeButtons(*this, wParam);
    if (m_pfnUpdate)
        m_pfnUpdate(m_lX, m_lY, (xlong)m_ulButtons);
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
