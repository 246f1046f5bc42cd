#include "platform/window.h"

#include <stdlib.h>
#include <string.h>

namespace
{
// Both kinds of frame are equally thick: callers mix their metrics when they
// turn a pointer position into one of the client area.
const int s_nFrame = 4;
const int s_nCaption = 23;

const UINT s_ulNothingChanged = SWP_NOSIZE | SWP_NOMOVE | SWP_NOCLIENTSIZE | SWP_NOCLIENTMOVE;

HWND s_hFirst = nullptr; // topmost first

bool SameRect(const RECT &a, const RECT &b)
{
    return a.left == b.left && a.top == b.top && a.right == b.right && a.bottom == b.bottom;
}

bool SameSize(const RECT &a, const RECT &b)
{
    return WidthOf(a) == WidthOf(b) && HeightOf(a) == HeightOf(b);
}

void Unlink(HWND hWnd)
{
    for (HWND *phLink = &s_hFirst; *phLink; phLink = &(*phLink)->pNext)
    {
        if (*phLink == hWnd)
        {
            *phLink = hWnd->pNext;
            return;
        }
    }
}

void LinkBelowTopmost(HWND hWnd)
{
    HWND *phLink = &s_hFirst;
    if (!hWnd->bTopmost)
        while (*phLink && (*phLink)->bTopmost)
            phLink = &(*phLink)->pNext;
    hWnd->pNext = *phLink;
    *phLink = hWnd;
}

void LinkLast(HWND hWnd)
{
    HWND *phLink = &s_hFirst;
    while (*phLink)
        phLink = &(*phLink)->pNext;
    hWnd->pNext = nullptr;
    *phLink = hWnd;
}

/// Client rectangle of a window rectangle; a window too small has none inside.
RECT ClientOf(const RECT &rcWindow, DWORD ulStyle)
{
    RECT rcFrame;
    GetFrame(ulStyle, &rcFrame);
    RECT rc = { rcWindow.left + rcFrame.left, rcWindow.top + rcFrame.top, rcWindow.right - rcFrame.right,
                rcWindow.bottom - rcFrame.bottom };
    if (rc.right < rc.left)
        rc.right = rc.left;
    if (rc.bottom < rc.top)
        rc.bottom = rc.top;
    return rc;
}

RECT WindowOf(const RECT &rcClient, DWORD ulStyle)
{
    RECT rcFrame;
    GetFrame(ulStyle, &rcFrame);
    return { rcClient.left - rcFrame.left, rcClient.top - rcFrame.top, rcClient.right + rcFrame.right,
             rcClient.bottom + rcFrame.bottom };
}

void SendPosChanged(HWND hWnd, UINT ulFlags)
{
    WINDOWPOS pos = {
        hWnd,   nullptr, hWnd->rcWindow.left, hWnd->rcWindow.top, WidthOf(hWnd->rcWindow), HeightOf(hWnd->rcWindow),
        ulFlags
    };
    SendMessageA(hWnd, WM_WINDOWPOSCHANGED, 0, (LPARAM)&pos);
}

void SendPosChanging(HWND hWnd, UINT ulFlags)
{
    WINDOWPOS pos = { hWnd, nullptr, 0, 0, 0, 0, ulFlags | SWP_NOSIZE | SWP_NOMOVE };
    SendMessageA(hWnd, WM_WINDOWPOSCHANGING, 0, (LPARAM)&pos);
}

/// Takes new rectangles over and says what stayed, as s_ulNothingChanged.
UINT TakeRects(HWND hWnd, const RECT &rcWindow, const RECT &rcClient)
{
    UINT ulFlags = 0;
    if (SameSize(rcWindow, hWnd->rcWindow))
        ulFlags |= SWP_NOSIZE;
    if (rcWindow.left == hWnd->rcWindow.left && rcWindow.top == hWnd->rcWindow.top)
        ulFlags |= SWP_NOMOVE;
    if (SameSize(rcClient, hWnd->rcClient))
        ulFlags |= SWP_NOCLIENTSIZE;
    if (rcClient.left == hWnd->rcClient.left && rcClient.top == hWnd->rcClient.top)
        ulFlags |= SWP_NOCLIENTMOVE;
    hWnd->rcWindow = rcWindow;
    hWnd->rcClient = rcClient;
    if (!(ulFlags & SWP_NOCLIENTSIZE))
    {
        hWnd->nDirty = 0;
        hWnd->rcInvalid = {};
        InvalidateRect(hWnd, nullptr, TRUE);
    }
    return ulFlags;
}

EShowState StateOf(HWND hWnd)
{
    if (!(hWnd->ulStyle & WS_VISIBLE))
        return SHOW_HIDDEN;
    if (hWnd->ulStyle & WS_MINIMIZE)
        return SHOW_MINIMIZED;
    return hWnd->ulStyle & WS_MAXIMIZE ? SHOW_MAXIMIZED : SHOW_NORMAL;
}

/// Where a maximised window lies: its side and bottom frames are off the desktop.
RECT MaximizedRect(DWORD ulStyle)
{
    int nWidth, nHeight, nDepth;
    Backend()->GetDesktop(&nWidth, &nHeight, &nDepth);
    RECT rcFrame;
    GetFrame(ulStyle, &rcFrame);
    return { -rcFrame.left, -rcFrame.right, nWidth + rcFrame.right, nHeight + rcFrame.bottom };
}

/// Place and size of a SetWindowPos. Returns what stayed, as s_ulNothingChanged.
UINT TakePlace(HWND hWnd, const WINDOWPOS &pos)
{
    RECT rcWindow = hWnd->rcWindow;
    if (!(pos.flags & SWP_NOMOVE))
        rcWindow = { pos.x, pos.y, pos.x + WidthOf(rcWindow), pos.y + HeightOf(rcWindow) };
    if (!(pos.flags & SWP_NOSIZE))
    {
        rcWindow.right = rcWindow.left + (pos.cx > 0 ? pos.cx : 0);
        rcWindow.bottom = rcWindow.top + (pos.cy > 0 ? pos.cy : 0);
    }
    // A new style counts from the next change of size on, unless the caller asks for it.
    if ((pos.flags & SWP_FRAMECHANGED) || !SameSize(rcWindow, hWnd->rcWindow))
        return TakeRects(hWnd, rcWindow, ClientOf(rcWindow, hWnd->ulStyle));
    const int nMoveX = rcWindow.left - hWnd->rcWindow.left, nMoveY = rcWindow.top - hWnd->rcWindow.top;
    const RECT rc = hWnd->rcClient;
    return TakeRects(hWnd, rcWindow, { rc.left + nMoveX, rc.top + nMoveY, rc.right + nMoveX, rc.bottom + nMoveY });
}

/// Place of a SetWindowPos in the order of windows.
/// @param bPlace  the backend has not been told of the window yet
/// @return true when it is a new one
bool TakeOrder(HWND hWnd, HWND hInsertAfter, bool bPlace)
{
    const bool bTopmost = hWnd->bTopmost;
    const HWND hFirst = s_hFirst;
    if (hInsertAfter == HWND_TOPMOST)
        hWnd->bTopmost = true;
    else if (hInsertAfter == HWND_NOTOPMOST || hInsertAfter == HWND_BOTTOM)
        hWnd->bTopmost = false;
    if (hInsertAfter == HWND_BOTTOM)
    {
        Unlink(hWnd);
        LinkLast(hWnd);
    }
    else if (hInsertAfter == HWND_TOP || bTopmost != hWnd->bTopmost)
        ToTop(hWnd);
    if (bTopmost != hWnd->bTopmost && bPlace)
        Backend()->PlaceWindow(hWnd);
    return bTopmost != hWnd->bTopmost || s_hFirst != hFirst;
}

void TakeVisible(HWND hWnd, bool bShow)
{
    if (bShow)
    {
        hWnd->ulStyle |= WS_VISIBLE;
        Backend()->ShowWindow(hWnd, StateOf(hWnd));
        InvalidateRect(hWnd, nullptr, TRUE);
        return;
    }
    hWnd->ulStyle &= ~WS_VISIBLE;
    hWnd->nDirty = 0;
    Backend()->ShowWindow(hWnd, SHOW_HIDDEN);
}

void FreeWindow(HWND hWnd)
{
    Unlink(hWnd);
    FreeDCs(hWnd);
    --hWnd->pClass->nWindows;
    free(hWnd->pszTitle);
    free(hWnd);
}

/// @return what was left of the state's change in flags for WM_WINDOWPOSCHANGED
UINT EnterState(HWND hWnd, DWORD ulStateStyle)
{
    const DWORD ulOld = hWnd->ulStyle;
    RECT rcWindow = hWnd->rcWindow;
    RECT rcClient = hWnd->rcClient;
    if (ulStateStyle == WS_MINIMIZE)
        hWnd->bRestoreMaximized = ulOld & WS_MAXIMIZE;
    else if (ulStateStyle == WS_MAXIMIZE && !(ulOld & WS_MAXIMIZE) && !hWnd->bRestoreMaximized)
        hWnd->rcNormal = rcWindow;
    hWnd->ulStyle = (ulOld & ~(WS_MINIMIZE | WS_MAXIMIZE)) | ulStateStyle | WS_VISIBLE;
    if (ulStateStyle != WS_MINIMIZE)
    {
        if (ulStateStyle == WS_MAXIMIZE)
            rcWindow = MaximizedRect(hWnd->ulStyle);
        else if ((ulOld & WS_MAXIMIZE) || hWnd->bRestoreMaximized)
            rcWindow = hWnd->rcNormal;
        rcClient = ClientOf(rcWindow, hWnd->ulStyle);
        hWnd->bRestoreMaximized = false;
    }

    Backend()->ShowWindow(hWnd, StateOf(hWnd));
    RECT rcPlace;
    if (ulStateStyle != WS_MINIMIZE && Backend()->GetPlace(hWnd, &rcPlace))
    {
        rcClient = rcPlace;
        rcWindow = WindowOf(rcClient, hWnd->ulStyle);
    }
    UINT ulFlags = TakeRects(hWnd, rcWindow, rcClient);
    if (ulStateStyle != WS_MINIMIZE)
        InvalidateRect(hWnd, nullptr, TRUE);
    // Coming from or going to an icon changes place and size whatever the rectangles say.
    if ((ulOld | ulStateStyle) & WS_MINIMIZE)
        ulFlags &= ~(SWP_NOSIZE | SWP_NOMOVE | SWP_NOCLIENTSIZE | SWP_NOCLIENTMOVE);
    return ulFlags | SWP_STATECHANGED;
}
} // namespace

HWND FirstWindow()
{
    return s_hFirst;
}

BOOL IsWindow(HWND hWnd)
{
    for (HWND hOther = s_hFirst; hOther; hOther = hOther->pNext)
        if (hOther == hWnd)
            return TRUE;
    return FALSE;
}

HWND CheckWindow(HWND hWnd)
{
    if (hWnd && IsWindow(hWnd))
        return hWnd;
    SetLastError(ERROR_INVALID_WINDOW_HANDLE);
    return nullptr;
}

void GetFrame(DWORD ulStyle, RECT *prcFrame)
{
    int nSide = 0;
    if (ulStyle & (WS_THICKFRAME | WS_DLGFRAME))
        nSide = s_nFrame;
    else if (ulStyle & WS_BORDER)
        nSide = 1;
    const bool bCaption = (ulStyle & WS_CAPTION) == WS_CAPTION;
    *prcFrame = { nSide, nSide + (bCaption ? s_nCaption : 0), nSide, nSide };
}

void ToTop(HWND hWnd)
{
    Unlink(hWnd);
    LinkBelowTopmost(hWnd);
}

void AcceptPlace(HWND hWnd, const RECT &rcClient)
{
    if (SameRect(rcClient, hWnd->rcClient) || (hWnd->ulStyle & WS_MINIMIZE))
        return;
    const UINT ulFlags = TakeRects(hWnd, WindowOf(rcClient, hWnd->ulStyle), rcClient);
    SendPosChanged(hWnd, ulFlags | SWP_NOZORDER | SWP_NOACTIVATE);
}

HWND CreateWindowExA(DWORD ulExStyle, LPCSTR pszClass, LPCSTR pszTitle, DWORD ulStyle, int nX, int nY, int nWidth,
                     int nHeight, HWND hParent, HMENU hMenu, HINSTANCE hInstance, LPVOID pParam)
{
    TWindowClass *pClass = pszClass ? FindClass(pszClass, hInstance) : nullptr;
    if (!pClass)
    {
        SetLastError(ERROR_CANNOT_FIND_WND_CLASS);
        return nullptr;
    }
    // Top-level windows without menus are all that there is.
    if ((ulStyle & WS_CHILD) || hParent || hMenu)
    {
        SetLastError(ERROR_INVALID_PARAMETER);
        return nullptr;
    }
    if (!Backend()->Start())
        return nullptr;
    HWND hWnd = (HWND)calloc(1, sizeof(HWND__));
    char *pszCopy = strdup(pszTitle ? pszTitle : "");
    if (!hWnd || !pszCopy)
    {
        free(hWnd);
        free(pszCopy);
        SetLastError(ERROR_NOT_ENOUGH_MEMORY);
        return nullptr;
    }

    int nDesktopWidth, nDesktopHeight, nDepth;
    Backend()->GetDesktop(&nDesktopWidth, &nDesktopHeight, &nDepth);
    if (nWidth == CW_USEDEFAULT)
    {
        nWidth = nDesktopWidth * 3 / 4;
        nHeight = nDesktopHeight * 3 / 4;
    }
    if (nX == CW_USEDEFAULT)
    {
        nX = (nDesktopWidth - nWidth) / 2;
        nY = (nDesktopHeight - nHeight) / 2;
    }
    if (!(ulStyle & WS_POPUP))
        ulStyle |= WS_CAPTION;
    const bool bShow = ulStyle & WS_VISIBLE;
    hWnd->pClass = pClass;
    hWnd->pszTitle = pszCopy;
    hWnd->ulStyle = (ulStyle | WS_CLIPSIBLINGS) & ~(WS_VISIBLE | WS_MINIMIZE | WS_MAXIMIZE);
    hWnd->ulExStyle = ulExStyle;
    hWnd->rcWindow = { nX, nY, nX + (nWidth > 0 ? nWidth : 0), nY + (nHeight > 0 ? nHeight : 0) };
    hWnd->rcClient = ClientOf(hWnd->rcWindow, hWnd->ulStyle);
    hWnd->rcNormal = hWnd->rcWindow;
    ++pClass->nWindows;
    LinkBelowTopmost(hWnd);
    if (((pClass->wc.style & CS_OWNDC) && !OpenOwnDC(hWnd)) || !Backend()->OpenWindow(hWnd))
    {
        FreeWindow(hWnd);
        SetLastError(ERROR_NOT_ENOUGH_MEMORY);
        return nullptr;
    }

    CREATESTRUCTA create = { pParam, hInstance, nullptr,       nullptr,  nHeight,  nWidth,
                             nY,     nX,        (LONG)ulStyle, pszTitle, pszClass, ulExStyle };
    if (!SendMessageA(hWnd, WM_NCCREATE, 0, (LPARAM)&create) ||
        SendMessageA(hWnd, WM_CREATE, 0, (LPARAM)&create) == -1 || !IsWindow(hWnd))
    {
        if (IsWindow(hWnd))
            DestroyWindow(hWnd);
        return nullptr;
    }
    if (bShow)
        ShowWindow(hWnd, ulStyle & WS_MAXIMIZE ? SW_SHOWMAXIMIZED : ulStyle & WS_MINIMIZE ? SW_SHOWMINIMIZED : SW_SHOW);
    return IsWindow(hWnd) ? hWnd : nullptr;
}

BOOL DestroyWindow(HWND hWnd)
{
    if (!CheckWindow(hWnd))
        return FALSE;
    if (hWnd->bDestroying)
        return FALSE;
    hWnd->bDestroying = true;
    if (hWnd->ulStyle & WS_VISIBLE)
        SetWindowPos(hWnd, nullptr, 0, 0, 0, 0,
                     SWP_HIDEWINDOW | SWP_NOSIZE | SWP_NOMOVE | SWP_NOZORDER | SWP_NOACTIVATE);
    if (ActiveWindow() == hWnd)
        Deactivate(false);
    SendMessageA(hWnd, WM_DESTROY, 0, 0);
    SendMessageA(hWnd, WM_NCDESTROY, 0, 0);
    ForgetActive(hWnd);
    ForgetPointer(hWnd);
    ForgetMessages(hWnd);
    Backend()->CloseWindow(hWnd);
    FreeWindow(hWnd);
    return TRUE;
}

BOOL IsWindowVisible(HWND hWnd)
{
    return CheckWindow(hWnd) && (hWnd->ulStyle & WS_VISIBLE);
}

BOOL IsIconic(HWND hWnd)
{
    return CheckWindow(hWnd) && (hWnd->ulStyle & WS_MINIMIZE);
}

BOOL IsZoomed(HWND hWnd)
{
    return CheckWindow(hWnd) && (hWnd->ulStyle & WS_MAXIMIZE);
}

BOOL ShowWindow(HWND hWnd, int nShow)
{
    if (!CheckWindow(hWnd))
        return FALSE;
    const bool bWasVisible = hWnd->ulStyle & WS_VISIBLE;
    if (nShow == SW_HIDE)
    {
        if (!bWasVisible)
            return FALSE;
        SendMessageA(hWnd, WM_SHOWWINDOW, FALSE, 0);
        SetWindowPos(hWnd, nullptr, 0, 0, 0, 0,
                     SWP_HIDEWINDOW | SWP_NOSIZE | SWP_NOMOVE | SWP_NOZORDER | SWP_NOACTIVATE);
        if (ActiveWindow() == hWnd)
            Deactivate(false);
        return TRUE;
    }

    const DWORD ulState = hWnd->ulStyle & (WS_MINIMIZE | WS_MAXIMIZE);
    DWORD ulNewState = ulState;
    bool bActivate = true;
    switch (nShow)
    {
    case SW_SHOWMINIMIZED:
        ulNewState = WS_MINIMIZE;
        break;
    case SW_MINIMIZE:
    case SW_FORCEMINIMIZE:
    case SW_SHOWMINNOACTIVE:
        ulNewState = WS_MINIMIZE;
        bActivate = false;
        break;
    case SW_SHOWMAXIMIZED:
        ulNewState = WS_MAXIMIZE;
        break;
    case SW_SHOWNOACTIVATE:
        bActivate = false;
        [[fallthrough]];
    case SW_SHOWNORMAL:
    case SW_RESTORE:
    case SW_SHOWDEFAULT:
        ulNewState = (ulState & WS_MINIMIZE) && hWnd->bRestoreMaximized ? (DWORD)WS_MAXIMIZE : 0;
        if (bWasVisible && ulState == ulNewState)
            return TRUE;
        break;
    case SW_SHOW:
        break;
    case SW_SHOWNA:
        bActivate = false;
        break;
    default:
        return bWasVisible;
    }

    if (!bWasVisible)
        SendMessageA(hWnd, WM_SHOWWINDOW, TRUE, 0);
    if (!IsWindow(hWnd))
        return bWasVisible;
    if (ulState != ulNewState)
    {
        SendPosChanging(hWnd, SWP_STATECHANGED | (bWasVisible ? 0u : (UINT)SWP_SHOWWINDOW));
        if (!IsWindow(hWnd))
            return bWasVisible;
        const UINT ulFlags = EnterState(hWnd, ulNewState) | (bWasVisible ? 0u : (UINT)SWP_SHOWWINDOW);
        if (bActivate)
            Activate(hWnd, WA_ACTIVE);
        if (IsWindow(hWnd))
        {
            hWnd->bSizeSent = true;
            SendPosChanged(hWnd, ulFlags);
        }
        // An icon can be active but takes no keys; they come back to the window.
        if (bActivate && IsWindow(hWnd) && ActiveWindow() == hWnd && !IsIconic(hWnd))
            SetFocus(hWnd);
        if (ulNewState == WS_MINIMIZE && !bActivate && IsWindow(hWnd) && ActiveWindow() == hWnd)
            Deactivate(true);
        return bWasVisible;
    }
    UINT ulFlags = SWP_SHOWWINDOW | SWP_NOSIZE | SWP_NOMOVE;
    if (!bActivate)
        ulFlags |= SWP_NOACTIVATE | SWP_NOZORDER;
    if (!bWasVisible || ActiveWindow() != hWnd)
        SetWindowPos(hWnd, HWND_TOP, 0, 0, 0, 0, ulFlags);
    if (IsWindow(hWnd) && !hWnd->bSizeSent)
    {
        // The size of creation is told when the window is first seen.
        hWnd->bSizeSent = true;
        SendMessageA(hWnd, WM_SIZE, SIZE_RESTORED, MAKELPARAM(WidthOf(hWnd->rcClient), HeightOf(hWnd->rcClient)));
        if (IsWindow(hWnd))
            SendMessageA(hWnd, WM_MOVE, 0, MAKELPARAM(hWnd->rcClient.left, hWnd->rcClient.top));
    }
    return bWasVisible;
}

BOOL SetWindowPos(HWND hWnd, HWND hInsertAfter, int nX, int nY, int nWidth, int nHeight, UINT ulFlags)
{
    if (!CheckWindow(hWnd))
        return FALSE;
    if (hInsertAfter != HWND_TOP && hInsertAfter != HWND_BOTTOM && hInsertAfter != HWND_TOPMOST &&
        hInsertAfter != HWND_NOTOPMOST && !(ulFlags & SWP_NOZORDER) && !CheckWindow(hInsertAfter))
        return FALSE;
    WINDOWPOS pos = { hWnd, hInsertAfter, nX, nY, nWidth, nHeight, ulFlags };
    if (!(ulFlags & SWP_NOSENDCHANGING))
    {
        SendMessageA(hWnd, WM_WINDOWPOSCHANGING, 0, (LPARAM)&pos);
        if (!IsWindow(hWnd))
            return FALSE;
    }
    ulFlags = pos.flags;
    const bool bVisible = hWnd->ulStyle & WS_VISIBLE;
    const bool bShow = (ulFlags & SWP_SHOWWINDOW) && !bVisible;
    const bool bHide = (ulFlags & SWP_HIDEWINDOW) && bVisible && !bShow;

    UINT ulUnchanged = TakePlace(hWnd, pos);
    bool bChanged = ulUnchanged != s_ulNothingChanged || (ulFlags & SWP_FRAMECHANGED);
    if (bChanged)
        Backend()->PlaceWindow(hWnd);
    if (hWnd->ulStyle & WS_MINIMIZE)
    {
        // That was the place to come back to; an icon neither moves nor grows.
        ulUnchanged = s_ulNothingChanged;
        bChanged = false;
    }
    if (!(ulFlags & SWP_NOZORDER))
    {
        if (TakeOrder(hWnd, hInsertAfter, !bChanged))
            bChanged = true;
        else
            ulFlags |= SWP_NOZORDER;
    }
    if (bShow || bHide)
        TakeVisible(hWnd, bShow);
    if (!(ulFlags & (SWP_NOACTIVATE | SWP_HIDEWINDOW)) && (hWnd->ulStyle & WS_VISIBLE) && ActiveWindow() != hWnd &&
        (bShow || !(pos.flags & SWP_NOZORDER)))
    {
        if (!bShow)
            Backend()->RaiseWindow(hWnd);
        Activate(hWnd, WA_ACTIVE);
        if (!IsWindow(hWnd))
            return TRUE;
    }
    if (bChanged || bShow || bHide)
    {
        ulFlags &= ~(s_ulNothingChanged | SWP_SHOWWINDOW | SWP_HIDEWINDOW);
        SendPosChanged(hWnd, ulFlags | ulUnchanged | (bShow ? (UINT)SWP_SHOWWINDOW : 0u) |
                                 (bHide ? (UINT)SWP_HIDEWINDOW : 0u));
    }
    return TRUE;
}

BOOL GetClientRect(HWND hWnd, RECT *prcClient)
{
    if (!CheckWindow(hWnd) || !prcClient)
        return FALSE;
    *prcClient = { 0, 0, WidthOf(hWnd->rcClient), HeightOf(hWnd->rcClient) };
    if (hWnd->ulStyle & WS_MINIMIZE)
        *prcClient = {};
    return TRUE;
}

BOOL GetWindowRect(HWND hWnd, RECT *prcWindow)
{
    if (!CheckWindow(hWnd) || !prcWindow)
        return FALSE;
    *prcWindow = hWnd->rcWindow;
    if (hWnd->ulStyle & WS_MINIMIZE)
        *prcWindow = { -32000, -32000, -32000 + 160, -32000 + s_nCaption + 2 * s_nFrame }; // where Windows keeps icons
    return TRUE;
}

BOOL ClientToScreen(HWND hWnd, POINT *pPoint)
{
    if (!CheckWindow(hWnd) || !pPoint)
        return FALSE;
    pPoint->x += hWnd->rcClient.left;
    pPoint->y += hWnd->rcClient.top;
    return TRUE;
}

BOOL ScreenToClient(HWND hWnd, POINT *pPoint)
{
    if (!CheckWindow(hWnd) || !pPoint)
        return FALSE;
    pPoint->x -= hWnd->rcClient.left;
    pPoint->y -= hWnd->rcClient.top;
    return TRUE;
}

LONG GetWindowLongA(HWND hWnd, int nIndex)
{
    if (!CheckWindow(hWnd))
        return 0;
    if (nIndex == GWL_STYLE)
        return (LONG)hWnd->ulStyle;
    if (nIndex == GWL_EXSTYLE)
        return (LONG)hWnd->ulExStyle;
    SetLastError(ERROR_INVALID_INDEX);
    return 0;
}

LONG SetWindowLongA(HWND hWnd, int nIndex, LONG lValue)
{
    if (!CheckWindow(hWnd))
        return 0;
    if (nIndex != GWL_STYLE && nIndex != GWL_EXSTYLE)
    {
        SetLastError(ERROR_INVALID_INDEX);
        return 0;
    }
    DWORD &ulField = nIndex == GWL_STYLE ? hWnd->ulStyle : hWnd->ulExStyle;
    STYLESTRUCT style = { ulField, (DWORD)lValue };
    SendMessageA(hWnd, WM_STYLECHANGING, nIndex, (LPARAM)&style);
    if (!IsWindow(hWnd))
        return 0;
    // A style without WS_VISIBLE takes nothing off the desktop: it is what the
    // next ShowWindow sees. The state of an icon is not the caller's to change.
    if (nIndex == GWL_STYLE)
        style.styleNew = (style.styleNew & ~(DWORD)(WS_MINIMIZE | WS_MAXIMIZE)) | WS_CLIPSIBLINGS |
                         (hWnd->ulStyle & (WS_MINIMIZE | WS_MAXIMIZE));
    ulField = style.styleNew;
    SendMessageA(hWnd, WM_STYLECHANGED, nIndex, (LPARAM)&style);
    return (LONG)style.styleOld;
}

BOOL SetWindowTextA(HWND hWnd, LPCSTR pszTitle)
{
    if (!CheckWindow(hWnd))
        return FALSE;
    return SendMessageA(hWnd, WM_SETTEXT, 0, (LPARAM)(pszTitle ? pszTitle : "")) != 0;
}

HWND FindWindowA(LPCSTR pszClass, LPCSTR pszTitle)
{
    for (HWND hWnd = s_hFirst; hWnd; hWnd = hWnd->pNext)
    {
        if (pszClass && FindClass(pszClass, hWnd->pClass->wc.hInstance) != hWnd->pClass)
            continue;
        if (pszTitle && !SameName(pszTitle, hWnd->pszTitle))
            continue;
        return hWnd;
    }
    return nullptr;
}

int GetSystemMetrics(int nIndex)
{
    int nWidth = 0, nHeight = 0, nDepth = 0;
    switch (nIndex)
    {
    case SM_CXSCREEN:
    case SM_CYSCREEN:
        if (!Backend()->Start())
            return 0;
        Backend()->GetDesktop(&nWidth, &nHeight, &nDepth);
        return nIndex == SM_CXSCREEN ? nWidth : nHeight;
    case SM_CYCAPTION:
        return s_nCaption;
    case SM_CXFIXEDFRAME:
    case SM_CYFIXEDFRAME:
    case SM_CXFRAME:
    case SM_CYFRAME:
        return s_nFrame;
    case SM_MOUSEPRESENT:
        return 1;
    default:
        return 0;
    }
}
