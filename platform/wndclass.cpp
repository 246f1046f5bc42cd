#include "platform/window.h"

#include <stdlib.h>
#include <string.h>
#include <strings.h>

namespace
{
TWindowClass *s_pClasses = nullptr;
ATOM s_usNextAtom = 0xC000; // the range Win32 gives to string atoms

bool IsAtom(LPCSTR psz)
{
    return (ULONG_PTR)psz < 0x10000;
}
} // namespace

bool SameName(const char *pszA, const char *pszB)
{
    return strcasecmp(pszA, pszB) == 0;
}

TWindowClass *FindClass(LPCSTR pszNameOrAtom, HINSTANCE hInstance)
{
    for (TWindowClass *pClass = s_pClasses; pClass; pClass = pClass->pNext)
    {
        const bool bMatch = IsAtom(pszNameOrAtom) ? pClass->usAtom == (ULONG_PTR)pszNameOrAtom
                                                  : SameName(pClass->szName, pszNameOrAtom);
        if (bMatch && pClass->wc.hInstance == hInstance)
            return pClass;
    }
    return nullptr;
}

ATOM RegisterClassA(const WNDCLASSA *pClass)
{
    if (!pClass || !pClass->lpfnWndProc || IsAtom(pClass->lpszClassName) || !pClass->lpszClassName[0] ||
        strlen(pClass->lpszClassName) > 256 || pClass->cbClsExtra != 0 || pClass->cbWndExtra != 0)
    {
        SetLastError(ERROR_INVALID_PARAMETER);
        return 0;
    }
    if (FindClass(pClass->lpszClassName, pClass->hInstance))
    {
        SetLastError(ERROR_CLASS_ALREADY_EXISTS);
        return 0;
    }
    // Classes of one name in several instances share the name's atom.
    ATOM usAtom = 0;
    for (const TWindowClass *pOther = s_pClasses; pOther && !usAtom; pOther = pOther->pNext)
        if (SameName(pOther->szName, pClass->lpszClassName))
            usAtom = pOther->usAtom;
    TWindowClass *pNew = (TWindowClass *)calloc(1, sizeof(TWindowClass));
    if (!pNew || (!usAtom && s_usNextAtom == 0xFFFF))
    {
        free(pNew);
        SetLastError(ERROR_NOT_ENOUGH_MEMORY);
        return 0;
    }
    pNew->usAtom = usAtom ? usAtom : s_usNextAtom++;
    pNew->wc = *pClass;
    strcpy(pNew->szName, pClass->lpszClassName);
    pNew->wc.lpszClassName = pNew->szName;
    pNew->wc.lpszMenuName = nullptr;
    pNew->pNext = s_pClasses;
    s_pClasses = pNew;
    return pNew->usAtom;
}

BOOL UnregisterClassA(LPCSTR pszClass, HINSTANCE hInstance)
{
    TWindowClass *pClass = pszClass ? FindClass(pszClass, hInstance) : nullptr;
    if (!pClass)
    {
        SetLastError(ERROR_CLASS_DOES_NOT_EXIST);
        return FALSE;
    }
    if (pClass->nWindows)
    {
        SetLastError(ERROR_CLASS_HAS_WINDOWS);
        return FALSE;
    }
    TWindowClass **ppLink = &s_pClasses;
    while (*ppLink != pClass)
        ppLink = &(*ppLink)->pNext;
    *ppLink = pClass->pNext;
    free(pClass);
    return TRUE;
}
