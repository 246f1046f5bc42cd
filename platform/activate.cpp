// Which window is active, and the messages that tell of it.
#include "platform/window.h"

namespace
{
HWND s_hActive = nullptr;
HWND s_hFocus = nullptr;

void MoveFocus(HWND hWnd)
{
    const HWND hOld = s_hFocus;
    if (hOld == hWnd)
        return;
    s_hFocus = hWnd;
    if (hOld)
        SendMessageA(hOld, WM_KILLFOCUS, (WPARAM)hWnd, 0);
    if (hWnd && s_hFocus == hWnd)
        SendMessageA(hWnd, WM_SETFOCUS, (WPARAM)hOld, 0);
}
} // namespace

HWND ActiveWindow()
{
    return s_hActive;
}

void Activate(HWND hWnd, int nHow)
{
    if (s_hActive == hWnd || !IsWindow(hWnd) || hWnd->bDestroying)
        return;
    const HWND hOld = s_hActive;
    s_hActive = hWnd;
    ToTop(hWnd);
    if (hOld)
    {
        SendMessageA(hOld, WM_NCACTIVATE, FALSE, 0);
        SendMessageA(hOld, WM_ACTIVATE, WA_INACTIVE, (LPARAM)hWnd);
    }
    SendMessageA(hWnd, WM_QUERYNEWPALETTE, 0, 0);
    if (!hOld)
        SendMessageA(HWND_BROADCAST, WM_ACTIVATEAPP, TRUE, 0);
    SendMessageA(hWnd, WM_NCACTIVATE, TRUE, 0);
    const bool bIconic = IsIconic(hWnd);
    SendMessageA(hWnd, WM_ACTIVATE, MAKEWPARAM(nHow, bIconic), (LPARAM)hOld);
    if (s_hActive == hWnd && !bIconic)
        MoveFocus(hWnd);
}

void Deactivate(bool bMinimized)
{
    const HWND hOld = s_hActive;
    if (!hOld)
        return;
    s_hActive = nullptr;
    SendMessageA(hOld, WM_NCACTIVATE, FALSE, 0);
    SendMessageA(hOld, WM_ACTIVATE, MAKEWPARAM(WA_INACTIVE, bMinimized), 0);
    SendMessageA(HWND_BROADCAST, WM_ACTIVATEAPP, FALSE, 0);
    if (!s_hActive)
        MoveFocus(nullptr);
}

void ForgetActive(HWND hWnd)
{
    if (s_hActive == hWnd)
        s_hActive = nullptr;
    if (s_hFocus == hWnd)
        s_hFocus = nullptr;
}

HWND SetFocus(HWND hWnd)
{
    const HWND hOld = s_hFocus;
    if (!hWnd)
    {
        MoveFocus(nullptr);
        return hOld;
    }
    if (!CheckWindow(hWnd))
        return nullptr;
    if (s_hActive != hWnd)
        Activate(hWnd, WA_ACTIVE);
    MoveFocus(hWnd);
    return hOld;
}

HWND GetFocus()
{
    return s_hFocus;
}

BOOL SetForegroundWindow(HWND hWnd)
{
    if (!CheckWindow(hWnd))
        return FALSE;
    Backend()->RaiseWindow(hWnd);
    Activate(hWnd, WA_ACTIVE);
    return IsWindow(hWnd) && s_hActive == hWnd;
}
