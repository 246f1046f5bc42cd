#include "platform/input.h"
#include "platform/keystate.h"
#include "platform/window.h"

#include <string.h>

namespace
{
bool s_abKeyDown[256];
bool s_abButtonDown[3];
bool s_bKeyWithAlt = false; // a key was pressed while Alt is held

const WPARAM s_aButtonFlags[] = { MK_LBUTTON, MK_RBUTTON, MK_MBUTTON };
const UINT s_aulButtonMsgs[] = { WM_LBUTTONDOWN, WM_RBUTTONDOWN, WM_MBUTTONDOWN };

WPARAM HeldFlags()
{
    WPARAM wFlags = 0;
    for (int i = 0; i < 3; ++i)
        if (s_abButtonDown[i])
            wFlags |= s_aButtonFlags[i];
    if (s_abKeyDown[VK_LSHIFT] || s_abKeyDown[VK_RSHIFT])
        wFlags |= MK_SHIFT;
    if (s_abKeyDown[VK_LCONTROL] || s_abKeyDown[VK_RCONTROL])
        wFlags |= MK_CONTROL;
    return wFlags;
}

/// Messages name the key without its side; the scan code and the extended bit tell it.
int MessageKey(int nVirtualKey)
{
    const int nBoth = BothSides(nVirtualKey);
    return nBoth ? nBoth : nVirtualKey;
}

void PostSysCommand(HWND hWnd, WPARAM wCommand)
{
    POINT pt = {};
    GetCursorPos(&pt);
    PostMessageA(hWnd, WM_SYSCOMMAND, wCommand, MAKELPARAM(pt.x, pt.y));
}
} // namespace

void InputPointer(HWND hWnd, int nX, int nY)
{
    PostInput(hWnd, WM_MOUSEMOVE, HeldFlags(), MAKELPARAM(nX, nY), nullptr);
}

void InputButton(HWND hWnd, EMouseButton eButton, bool bDown, int nX, int nY)
{
    s_abButtonDown[eButton] = bDown;
    PostInput(hWnd, s_aulButtonMsgs[eButton] + (bDown ? 0 : 1), HeldFlags(), MAKELPARAM(nX, nY), nullptr);
}

void InputKey(HWND hWnd, const TKeyEvent *pKey)
{
    const int nKey = pKey->nVirtualKey & 0xFF;
    const bool bWasDown = s_abKeyDown[nKey];
    const bool bAltWasDown = s_abKeyDown[VK_LMENU] || s_abKeyDown[VK_RMENU];
    s_abKeyDown[nKey] = pKey->bDown;
    const bool bAlt = s_abKeyDown[VK_LMENU] || s_abKeyDown[VK_RMENU];
    const bool bControl = s_abKeyDown[VK_LCONTROL] || s_abKeyDown[VK_RCONTROL];
    const int nMessageKey = MessageKey(nKey);

    bool bSystem;
    if (nMessageKey == VK_MENU)
    {
        bSystem = !bControl && (pKey->bDown || !s_bKeyWithAlt);
        if (pKey->bDown && !bWasDown)
            s_bKeyWithAlt = false;
    }
    else
    {
        bSystem = (bAlt && !bControl) || nMessageKey == VK_F10;
        if (bAlt && pKey->bDown)
            s_bKeyWithAlt = true;
    }
    DWORD ulData = 1 | (DWORD)(pKey->nScanCode & 0xFF) << 16;
    if (pKey->bExtended)
        ulData |= 1u << 24;
    if (bSystem && (bAlt || bAltWasDown))
        ulData |= 1u << 29;
    if (bWasDown || !pKey->bDown || pKey->bRepeat)
        ulData |= 1u << 30;
    if (!pKey->bDown)
        ulData |= 1u << 31;
    const UINT ulMsg = bSystem ? (pKey->bDown ? WM_SYSKEYDOWN : WM_SYSKEYUP) : (pKey->bDown ? WM_KEYDOWN : WM_KEYUP);
    PostInput(hWnd, ulMsg, (WPARAM)nMessageKey, (LPARAM)ulData, pKey);
}

void InputClose(HWND hWnd)
{
    PostSysCommand(hWnd, SC_CLOSE);
}

void InputState(HWND hWnd, EShowState eState)
{
    const DWORD ulNow = hWnd->ulStyle & (WS_MINIMIZE | WS_MAXIMIZE);
    switch (eState)
    {
    case SHOW_MINIMIZED:
        if (!(ulNow & WS_MINIMIZE))
            PostSysCommand(hWnd, SC_MINIMIZE);
        break;
    case SHOW_MAXIMIZED:
        if (ulNow != WS_MAXIMIZE)
            PostSysCommand(hWnd, SC_MAXIMIZE);
        break;
    case SHOW_NORMAL:
        if (ulNow)
            PostSysCommand(hWnd, SC_RESTORE);
        break;
    case SHOW_HIDDEN:
        break;
    }
}

void InputPlace(HWND hWnd, const RECT *prcClient)
{
    AcceptPlace(hWnd, *prcClient);
}

void InputFocus(HWND hWnd, bool bFocus)
{
    if (bFocus)
        Activate(hWnd, WA_ACTIVE);
    else if (ActiveWindow() == hWnd)
    {
        // What is let go in another program is not told here.
        ResetInput();
        ReleaseKeyState();
        Deactivate(false);
    }
}

void InputLocks(bool bCaps, bool bNum, bool bScroll)
{
    SetLockState(VK_CAPITAL, bCaps);
    SetLockState(VK_NUMLOCK, bNum);
    SetLockState(VK_SCROLL, bScroll);
}

void InputText(HWND hWnd, unsigned char ucChar)
{
    TKeyEvent key = {};
    key.nVirtualKey = VK_PACKET;
    key.bDown = true;
    key.ucChar = ucChar;
    InputKey(hWnd, &key);
    key.bDown = false;
    InputKey(hWnd, &key);
}

void InputExpose(HWND hWnd)
{
    InvalidateRect(hWnd, nullptr, TRUE);
}

void ResetInput()
{
    memset(s_abKeyDown, 0, sizeof(s_abKeyDown));
    memset(s_abButtonDown, 0, sizeof(s_abButtonDown));
    s_bKeyWithAlt = false;
}
