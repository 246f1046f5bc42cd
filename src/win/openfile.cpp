#include "core/openfile.h"
#include "win/win32.h"

#include <stdio.h>

FILE *OpenStream(const char *pszPath, const char *pszMode)
{
    return pszPath && *pszPath ? PlatformOpenFile(pszPath, pszMode) : nullptr;
}
