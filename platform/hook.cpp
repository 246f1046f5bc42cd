// Keyboard hooks of this thread, the newest first.
#include "platform/hook.h"

#include <stdlib.h>

struct HHOOK__
{
    HHOOK pNext;
    HOOKPROC pfnProc;
    bool bDead; ///< ended while it was called
};

namespace
{
HHOOK s_hFirst = nullptr;
HHOOK s_hCalled = nullptr;
int s_nDepth = 0;

void FreeDead()
{
    for (HHOOK *ppHook = &s_hFirst; *ppHook;)
    {
        const HHOOK hHook = *ppHook;
        if (!hHook->bDead)
        {
            ppHook = &hHook->pNext;
            continue;
        }
        *ppHook = hHook->pNext;
        free(hHook);
    }
}

LRESULT CallFrom(HHOOK hHook, int nCode, WPARAM wParam, LPARAM lParam)
{
    while (hHook && hHook->bDead)
        hHook = hHook->pNext;
    if (!hHook)
        return 0;
    const HHOOK hOuter = s_hCalled;
    s_hCalled = hHook;
    ++s_nDepth;
    const LRESULT lResult = hHook->pfnProc(nCode, wParam, lParam);
    s_hCalled = hOuter;
    if (!--s_nDepth)
        FreeDead();
    return lResult;
}
} // namespace

HHOOK SetWindowsHookExA(int nKind, HOOKPROC pfnProc, HINSTANCE hInstance, DWORD ulThread)
{
    if (nKind != WH_KEYBOARD || !pfnProc || ulThread != GetCurrentThreadId())
    {
        SetLastError(nKind != WH_KEYBOARD ? ERROR_INVALID_HOOK_FILTER
                     : !pfnProc           ? ERROR_INVALID_FILTER_PROC
                                          : ERROR_INVALID_PARAMETER);
        return nullptr;
    }
    const HHOOK hHook = (HHOOK)malloc(sizeof(HHOOK__));
    if (!hHook)
    {
        SetLastError(ERROR_NOT_ENOUGH_MEMORY);
        return nullptr;
    }
    *hHook = { s_hFirst, pfnProc, false };
    s_hFirst = hHook;
    return hHook;
}

BOOL UnhookWindowsHookEx(HHOOK hHook)
{
    for (HHOOK h = s_hFirst; h; h = h->pNext)
    {
        if (h != hHook || h->bDead)
            continue;
        h->bDead = true;
        if (!s_nDepth)
            FreeDead();
        return TRUE;
    }
    SetLastError(ERROR_INVALID_HOOK_HANDLE);
    return FALSE;
}

LRESULT CallNextHookEx(HHOOK, int nCode, WPARAM wParam, LPARAM lParam)
{
    // Windows goes by the hook that is being called, too, and not by the handle.
    return s_hCalled ? CallFrom(s_hCalled->pNext, nCode, wParam, lParam) : 0;
}

bool CallKeyboardHooks(int nCode, WPARAM wParam, LPARAM lParam)
{
    return !CallFrom(s_hFirst, nCode, wParam, lParam);
}
