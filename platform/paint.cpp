// What of a window is out of date, and what was drawn and not yet shown.
#include "platform/gdi.h"

#include <stdlib.h>
#include <string.h>

namespace
{
bool Contains(const RECT &rcOuter, const RECT &rc)
{
    return rc.left >= rcOuter.left && rc.top >= rcOuter.top && rc.right <= rcOuter.right && rc.bottom <= rcOuter.bottom;
}

RECT UnionOf(const RECT &a, const RECT &b)
{
    return { a.left < b.left ? a.left : b.left, a.top < b.top ? a.top : b.top, a.right > b.right ? a.right : b.right,
             a.bottom > b.bottom ? a.bottom : b.bottom };
}

long long AreaOf(const RECT &rc)
{
    return (long long)WidthOf(rc) * HeightOf(rc);
}

RECT ClientArea(HWND hWnd)
{
    return { 0, 0, WidthOf(hWnd->rcClient), HeightOf(hWnd->rcClient) };
}

bool IsShown(HWND hWnd)
{
    return (hWnd->ulStyle & WS_VISIBLE) && !(hWnd->ulStyle & WS_MINIMIZE);
}
} // namespace

TPixelView LockWindow(HWND hWnd)
{
    TPixelView view = {};
    if (!IsShown(hWnd) || !Backend()->LockPixels(hWnd, &view))
        return {};
    if (view.bLost)
    {
        for (int y = 0; y < view.nHeight; ++y)
            memset(view.pPixels + (size_t)y * view.nPitch, 0, (size_t)view.nWidth * 4);
        hWnd->nDirty = 0;
        AddDirty(hWnd, { 0, 0, view.nWidth, view.nHeight });
        InvalidateRect(hWnd, nullptr, TRUE);
    }
    return view;
}

void AddDirty(HWND hWnd, const RECT &rcArea)
{
    RECT rcNew = rcArea;
    if (IsEmpty(rcNew))
        return;
    int nKept = 0;
    for (int i = 0; i < hWnd->nDirty; ++i)
    {
        const RECT rc = hWnd->arcDirty[i];
        if (Contains(rc, rcNew))
            return;
        if (!Contains(rcNew, rc))
            hWnd->arcDirty[nKept++] = rc;
    }
    hWnd->nDirty = nKept;
    if (hWnd->nDirty < MAX_DIRTY_RECTS)
    {
        hWnd->arcDirty[hWnd->nDirty++] = rcNew;
        return;
    }
    // No room: it joins the area that grows least by it.
    int nBest = 0;
    long long llBest = -1;
    for (int i = 0; i < hWnd->nDirty; ++i)
    {
        const long long llGrowth = AreaOf(UnionOf(hWnd->arcDirty[i], rcNew)) - AreaOf(hWnd->arcDirty[i]);
        if (llBest < 0 || llGrowth < llBest)
        {
            llBest = llGrowth;
            nBest = i;
        }
    }
    hWnd->arcDirty[nBest] = UnionOf(hWnd->arcDirty[nBest], rcNew);
}

void PresentWindow(HWND hWnd)
{
    if (!hWnd->nDirty)
        return;
    if (IsShown(hWnd))
        Backend()->Present(hWnd, hWnd->arcDirty, hWnd->nDirty);
    hWnd->nDirty = 0;
}

void PresentAll()
{
    for (HWND hWnd = FirstWindow(); hWnd; hWnd = hWnd->pNext)
        PresentWindow(hWnd);
}

BOOL InvalidateRect(HWND hWnd, const RECT *prcArea, BOOL bErase)
{
    if (!hWnd)
    {
        // No window means all of them, erased at once.
        for (HWND hEach = FirstWindow(); hEach; hEach = hEach->pNext)
            InvalidateRect(hEach, nullptr, TRUE);
        return TRUE;
    }
    if (!CheckWindow(hWnd))
        return FALSE;
    RECT rc = ClientArea(hWnd);
    if (prcArea && !IntersectWith(&rc, *prcArea))
        return TRUE;
    hWnd->rcInvalid = IsEmpty(hWnd->rcInvalid) ? rc : UnionOf(hWnd->rcInvalid, rc);
    if (bErase)
        hWnd->bErase = true;
    return TRUE;
}

BOOL ValidateRect(HWND hWnd, const RECT *prcArea)
{
    if (!CheckWindow(hWnd))
        return FALSE;
    RECT &rc = hWnd->rcInvalid;
    if (!prcArea || Contains(*prcArea, rc))
        rc = {};
    // The invalid area is kept as one rectangle: only a whole strip along one
    // side of it can be taken off.
    else if (prcArea->left <= rc.left && prcArea->right >= rc.right)
    {
        if (prcArea->top <= rc.top && prcArea->bottom > rc.top)
            rc.top = prcArea->bottom;
        else if (prcArea->bottom >= rc.bottom && prcArea->top < rc.bottom)
            rc.bottom = prcArea->top;
    }
    else if (prcArea->top <= rc.top && prcArea->bottom >= rc.bottom)
    {
        if (prcArea->left <= rc.left && prcArea->right > rc.left)
            rc.left = prcArea->right;
        else if (prcArea->right >= rc.right && prcArea->left < rc.right)
            rc.right = prcArea->left;
    }
    if (IsEmpty(rc))
    {
        rc = {};
        hWnd->bErase = false;
    }
    return TRUE;
}

BOOL UpdateWindow(HWND hWnd)
{
    if (!CheckWindow(hWnd))
        return FALSE;
    if (IsShown(hWnd) && !IsEmpty(hWnd->rcInvalid))
        SendMessageA(hWnd, WM_PAINT, 0, 0);
    if (IsWindow(hWnd))
        PresentWindow(hWnd);
    return TRUE;
}

HDC GetDC(HWND hWnd)
{
    if (!CheckWindow(hWnd))
        return nullptr;
    if (hWnd->hOwnDC)
        return hWnd->hOwnDC;
    const HDC hDC = NewDC(hWnd, false);
    if (hDC)
    {
        hDC->pNext = hWnd->hFirstDC;
        hWnd->hFirstDC = hDC;
    }
    return hDC;
}

int ReleaseDC(HWND hWnd, HDC hDC)
{
    if (!CheckWindow(hWnd) || !hDC)
        return 0;
    if (hDC == hWnd->hOwnDC)
        return 1;
    for (HDC *phLink = &hWnd->hFirstDC; *phLink; phLink = &(*phLink)->pNext)
    {
        if (*phLink == hDC)
        {
            *phLink = hDC->pNext;
            FreeDC(hDC);
            return 1;
        }
    }
    return 0;
}

bool OpenOwnDC(HWND hWnd)
{
    hWnd->hOwnDC = NewDC(hWnd, false);
    if (hWnd->hOwnDC)
        hWnd->hOwnDC->bOwn = true;
    return hWnd->hOwnDC != nullptr;
}

void FreeDCs(HWND hWnd)
{
    if (hWnd->hOwnDC)
        FreeDC(hWnd->hOwnDC);
    while (hWnd->hFirstDC)
    {
        const HDC hDC = hWnd->hFirstDC;
        hWnd->hFirstDC = hDC->pNext;
        FreeDC(hDC);
    }
}

HDC BeginPaint(HWND hWnd, PAINTSTRUCT *pPaint)
{
    if (!CheckWindow(hWnd) || !pPaint)
        return nullptr;
    const HDC hDC = GetDC(hWnd);
    if (!hDC)
        return nullptr;
    // A lost picture must count as invalid before the area is taken.
    LockWindow(hWnd);
    memset(pPaint, 0, sizeof(*pPaint));
    pPaint->hdc = hDC;
    pPaint->rcPaint = hWnd->rcInvalid;
    const bool bErase = hWnd->bErase && !IsEmpty(hWnd->rcInvalid);
    hWnd->rcInvalid = {};
    hWnd->bErase = false;
    hDC->bPainting = true;
    hDC->rcPaint = pPaint->rcPaint;
    if (bErase)
        pPaint->fErase = !SendMessageA(hWnd, WM_ERASEBKGND, (WPARAM)hDC, 0);
    return hDC;
}

BOOL EndPaint(HWND hWnd, const PAINTSTRUCT *pPaint)
{
    if (!CheckWindow(hWnd) || !pPaint || !pPaint->hdc)
        return FALSE;
    pPaint->hdc->bPainting = false;
    ReleaseDC(hWnd, pPaint->hdc);
    return TRUE;
}
