#include "platform/gdi.h"

#include <stdlib.h>
#include <string.h>

namespace
{
bool s_bMenuKeyAlone = false; // Alt went down and nothing was pressed since

LRESULT EraseBackground(HWND hWnd, HDC hDC)
{
    const HBRUSH hBrush = hWnd->pClass->wc.hbrBackground;
    if (!hBrush || !hDC)
        return 0;
    RECT rcClient;
    GetClientRect(hWnd, &rcClient);
    if (!hBrush->bHollow)
        FillWindowRect(hDC, rcClient, hBrush->ulColor);
    return 1;
}

LRESULT SysCommand(HWND hWnd, WPARAM wParam)
{
    switch (wParam & 0xFFF0)
    {
    case SC_CLOSE:
        SendMessageA(hWnd, WM_CLOSE, 0, 0);
        break;
    case SC_MINIMIZE:
        ShowWindow(hWnd, SW_MINIMIZE);
        break;
    case SC_MAXIMIZE:
        ShowWindow(hWnd, SW_MAXIMIZE);
        break;
    case SC_RESTORE:
        ShowWindow(hWnd, SW_RESTORE);
        break;
    }
    return 0;
}

/// Alt or F10 by itself opens the menu, Alt+F4 closes.
LRESULT SysKey(HWND hWnd, UINT ulMsg, WPARAM wParam, LPARAM lParam)
{
    const bool bAlt = lParam & (1 << 29);
    if (ulMsg == WM_SYSKEYDOWN)
    {
        s_bMenuKeyAlone = wParam == VK_MENU || wParam == VK_F10;
        if (wParam == VK_F4 && bAlt)
            SendMessageA(hWnd, WM_SYSCOMMAND, SC_CLOSE, 0);
    }
    else if (s_bMenuKeyAlone && (wParam == VK_MENU || wParam == VK_F10))
    {
        s_bMenuKeyAlone = false;
        SendMessageA(hWnd, WM_SYSCOMMAND, SC_KEYMENU, 0);
    }
    return 0;
}

LRESULT PosChanged(HWND hWnd, const WINDOWPOS *pPos)
{
    RECT rcClient;
    if (!(pPos->flags & SWP_NOCLIENTMOVE))
    {
        POINT ptCorner = {};
        ClientToScreen(hWnd, &ptCorner);
        if (hWnd->ulStyle & WS_MINIMIZE)
            ptCorner = { -32000, -32000 };
        SendMessageA(hWnd, WM_MOVE, 0, MAKELPARAM(ptCorner.x, ptCorner.y));
    }
    if (IsWindow(hWnd) && (!(pPos->flags & SWP_NOCLIENTSIZE) || (pPos->flags & SWP_STATECHANGED)))
    {
        GetClientRect(hWnd, &rcClient);
        const WPARAM wHow = hWnd->ulStyle & WS_MINIMIZE   ? SIZE_MINIMIZED
                            : hWnd->ulStyle & WS_MAXIMIZE ? SIZE_MAXIMIZED
                                                          : SIZE_RESTORED;
        hWnd->bSizeSent = true;
        SendMessageA(hWnd, WM_SIZE, wHow, MAKELPARAM(rcClient.right, rcClient.bottom));
    }
    return 0;
}

LRESULT SetTitle(HWND hWnd, LPCSTR pszTitle)
{
    char *pszCopy = strdup(pszTitle ? pszTitle : "");
    if (!pszCopy)
    {
        SetLastError(ERROR_NOT_ENOUGH_MEMORY);
        return FALSE;
    }
    free(hWnd->pszTitle);
    hWnd->pszTitle = pszCopy;
    Backend()->SetTitle(hWnd);
    return TRUE;
}
} // namespace

LRESULT DefWindowProcA(HWND hWnd, UINT ulMsg, WPARAM wParam, LPARAM lParam)
{
    if (!CheckWindow(hWnd))
        return 0;
    PAINTSTRUCT paint;
    switch (ulMsg)
    {
    case WM_NCCREATE:
    case WM_NCACTIVATE:
        return TRUE;
    case WM_PAINT:
        if (BeginPaint(hWnd, &paint))
            EndPaint(hWnd, &paint);
        return 0;
    case WM_ERASEBKGND:
        return EraseBackground(hWnd, (HDC)wParam);
    case WM_CLOSE:
        DestroyWindow(hWnd);
        return 0;
    case WM_SYSCOMMAND:
        return SysCommand(hWnd, wParam);
    case WM_WINDOWPOSCHANGED:
        return PosChanged(hWnd, (const WINDOWPOS *)lParam);
    case WM_SETTEXT:
        return SetTitle(hWnd, (LPCSTR)lParam);
    case WM_SETCURSOR:
        if (LOWORD(lParam) == HTCLIENT && hWnd->pClass->wc.hCursor)
        {
            SetCursor(hWnd->pClass->wc.hCursor);
            return TRUE;
        }
        return FALSE;
    case WM_KEYDOWN:
        // F10 comes as a system key, others mean that Alt isn't alone any more.
        s_bMenuKeyAlone = false;
        return 0;
    case WM_SYSKEYDOWN:
    case WM_SYSKEYUP:
        return SysKey(hWnd, ulMsg, wParam, lParam);
    default:
        return 0;
    }
}
