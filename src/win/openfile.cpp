#include "core/openfile.h"
#include "core/filefault.h"
#include "win/win32.h"

#include <stdio.h>

FILE *OpenStream(const char *pszPath, const char *pszMode)
{
    return pszPath && *pszPath && !FailsFileCall() ? PlatformOpenFile(pszPath, pszMode) : nullptr;
}

bool FindWholeTarget(const char *pszPath, char *pszTarget, bool *pbDirect)
{
    return pszPath && *pszPath && PlatformWholeTarget(pszPath, pszTarget, WHOLE_PATH_SIZE, pbDirect);
}

int MakeWholePart(const char *pszPart, const char *pszTarget)
{
    return FailsFileCall() ? -1 : PlatformMakePart(pszPart, pszTarget);
}

bool ReplaceWhole(const char *pszPart, const char *pszTarget)
{
    return !FailsFileCall() && PlatformReplaceFile(pszPart, pszTarget);
}

void RemoveWholePart(const char *pszPart)
{
    PlatformRemovePart(pszPart);
}
