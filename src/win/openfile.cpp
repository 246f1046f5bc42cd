#include "ansi/openfile.h"

FILE *OpenStream(const char *pszPath, const char *pszMode)
{
    return pszPath && *pszPath ? PlatformOpenFile(pszPath, pszMode) : nullptr;
}
