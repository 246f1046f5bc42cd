#include "platform/window.h"

#include <stdio.h>

namespace
{
CBackend *s_pBackend = nullptr;

} // namespace

CBackend *Backend()
{
    return s_pBackend ? s_pBackend : SdlBackend();
}

#ifdef TARVIX_TESTING
void SetBackend(CBackend *pBackend)
{
    s_pBackend = pBackend;
}
#endif

int MessageBoxA(HWND hOwner, LPCSTR pszText, LPCSTR pszCaption, UINT ulType)
{
    if ((ulType & MB_TYPEMASK) > MB_RETRYCANCEL)
    {
        SetLastError(ERROR_INVALID_PARAMETER);
        return 0;
    }
    if (hOwner && !CheckWindow(hOwner))
        return 0;
    pszText = pszText ? pszText : "";
    pszCaption = pszCaption ? pszCaption : "Error";
    PresentAll();
    const int nButton = Backend()->ShowMessageBox(hOwner, pszText, pszCaption, ulType);
    if (!nButton)
    {
        // Nobody can see a box: the terminal is the next best place for it.
        fprintf(stderr, "%s: %s\n", pszCaption, pszText);
        SetLastError(ERROR_NOT_SUPPORTED);
    }
    return nButton;
}
