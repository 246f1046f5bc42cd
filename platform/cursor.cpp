#include "platform/cursor.h"
#include "platform/window.h"

namespace
{
HCURSOR__ s_Cursors[CURSOR_COUNT] = {
    { 32512 }, { 32513 }, { 32514 }, { 32515 }, { 32516 }, { 32642 }, { 32643 },
    { 32644 }, { 32645 }, { 32646 }, { 32648 }, { 32649 }, { 32650 },
};
HCURSOR s_hCursor = &s_Cursors[0];
int s_nShowCount = 0;

void ShowShape()
{
    if (FirstWindow())
        Backend()->SetPointerShape(s_nShowCount >= 0 ? s_hCursor : nullptr);
}
} // namespace

HCURSOR LoadCursorA(HINSTANCE hInstance, LPCSTR pszName)
{
    // There are no resources in a program here, so an instance has none.
    if (!hInstance)
        for (HCURSOR__ &cursor : s_Cursors)
            if (cursor.usId == (ULONG_PTR)pszName)
                return &cursor;
    SetLastError(ERROR_RESOURCE_NAME_NOT_FOUND);
    return nullptr;
}

HCURSOR SetCursor(HCURSOR hCursor)
{
    const HCURSOR hOld = s_hCursor;
    s_hCursor = hCursor;
    if (hOld != hCursor)
        ShowShape();
    return hOld;
}

int ShowCursor(BOOL bShow)
{
    const bool bWasShown = s_nShowCount >= 0;
    s_nShowCount += bShow ? 1 : -1;
    if (bWasShown != (s_nShowCount >= 0))
        ShowShape();
    return s_nShowCount;
}

BOOL GetCursorPos(POINT *pPoint)
{
    if (!pPoint || !Backend()->Start())
        return FALSE;
    Backend()->GetPointer(pPoint);
    return TRUE;
}

BOOL SetCursorPos(int nX, int nY)
{
    if (!Backend()->Start())
        return FALSE;
    Backend()->SetPointer(nX, nY);
    return TRUE;
}

void ResetCursor()
{
    s_hCursor = &s_Cursors[0];
    s_nShowCount = 0;
}
