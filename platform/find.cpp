// FindFirstFile: a folder is read at once and handed out in order of names, as
// Windows' own file system does.
#include "platform/errors.h"
#include "platform/filetime.h"
#include "platform/path.h"

#include <algorithm>
#include <dirent.h>
#include <errno.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>

namespace
{
const unsigned s_ulFindMagic = 0x444E4946;

struct TFind
{
    unsigned ulMagic;
    size_t ulNext;
    size_t ulCount;
    size_t ulRoom;
    char **ppszNames;
    char szFolder[PATH_MAX]; ///< ends in a separator
};

void FreeFind(TFind *pFind)
{
    for (size_t i = 0; i < pFind->ulCount; ++i)
        free(pFind->ppszNames[i]);
    free(pFind->ppszNames);
    pFind->ulMagic = 0;
    free(pFind);
}

bool AddName(TFind *pFind, const char *pszName)
{
    if (pFind->ulCount == pFind->ulRoom)
    {
        const size_t ulRoom = pFind->ulRoom ? 2 * pFind->ulRoom : 32;
        char **ppszNames = (char **)realloc(pFind->ppszNames, ulRoom * sizeof(char *));
        if (!ppszNames)
            return false;
        pFind->ppszNames = ppszNames;
        pFind->ulRoom = ulRoom;
    }
    char *pszCopy = strdup(pszName);
    if (!pszCopy)
        return false;
    pFind->ppszNames[pFind->ulCount++] = pszCopy;
    return true;
}

/// "." and ".." lead, the others follow by their letters.
bool ComesBefore(const char *pszA, const char *pszB)
{
    const int nA = strcmp(pszA, ".") == 0 ? 0 : strcmp(pszA, "..") == 0 ? 1 : 2;
    const int nB = strcmp(pszB, ".") == 0 ? 0 : strcmp(pszB, "..") == 0 ? 1 : 2;
    if (nA != nB)
        return nA < nB;
    const int nOrder = CompareNames(pszA, pszB);
    return nOrder ? nOrder < 0 : strcmp(pszA, pszB) < 0;
}

bool FillData(const TFind *pFind, const char *pszName, WIN32_FIND_DATAA *pData)
{
    char szPath[PATH_MAX];
    struct stat info;
    if (strlen(pFind->szFolder) + strlen(pszName) >= sizeof(szPath))
        return false;
    strcpy(szPath, pFind->szFolder);
    strcat(szPath, pszName);
    // A link that leads nowhere is still an entry.
    if (stat(szPath, &info) != 0 && lstat(szPath, &info) != 0)
        return false;
    memset(pData, 0, sizeof(*pData));
    pData->dwFileAttributes = AttributesOf(info, pszName);
    pData->ftCreationTime = ToFileTime(info.st_mtim);
    pData->ftLastAccessTime = ToFileTime(info.st_atim);
    pData->ftLastWriteTime = ToFileTime(info.st_mtim);
    if (!S_ISDIR(info.st_mode))
    {
        pData->nFileSizeHigh = (DWORD)((ULONGLONG)info.st_size >> 32);
        pData->nFileSizeLow = (DWORD)info.st_size;
    }
    strcpy(pData->cFileName, pszName);
    return true;
}

/// Hands out the next name that still exists.
BOOL TakeNext(TFind *pFind, WIN32_FIND_DATAA *pData)
{
    while (pFind->ulNext < pFind->ulCount)
        if (FillData(pFind, pFind->ppszNames[pFind->ulNext++], pData))
            return TRUE;
    return FALSE;
}

HANDLE Fail(DWORD ulError)
{
    SetLastError(ulError);
    return INVALID_HANDLE_VALUE;
}
} // namespace

HANDLE FindFirstFileA(LPCSTR pszPattern, WIN32_FIND_DATAA *pData)
{
    if (!pszPattern || !pszPattern[0] || !pData)
        return Fail(pszPattern && pData ? ERROR_PATH_NOT_FOUND : ERROR_INVALID_PARAMETER);
    const size_t ulLength = strlen(pszPattern);
    if (ulLength >= PATH_MAX)
        return Fail(ERROR_FILENAME_EXCED_RANGE);
    size_t ulFolder = ulLength;
    while (ulFolder && pszPattern[ulFolder - 1] != '/' && pszPattern[ulFolder - 1] != '\\')
        --ulFolder;
    const char *pszName = pszPattern + ulFolder;
    if (!pszName[0])
        return Fail(ERROR_FILE_NOT_FOUND);

    TFind *pFind = (TFind *)calloc(1, sizeof(TFind));
    if (!pFind)
        return Fail(ERROR_NOT_ENOUGH_MEMORY);
    pFind->ulMagic = s_ulFindMagic;
    char szFolder[PATH_MAX];
    memcpy(szFolder, pszPattern, ulFolder);
    szFolder[ulFolder] = 0;
    DIR *pDir = nullptr;
    if (ResolvePath(ulFolder ? szFolder : "./", pFind->szFolder))
        pDir = opendir(pFind->szFolder);
    if (!pDir)
    {
        const DWORD ulError = errno == EACCES ? ERROR_ACCESS_DENIED : ERROR_PATH_NOT_FOUND;
        FreeFind(pFind);
        return Fail(ulError);
    }
    const bool bRoot = strcmp(pFind->szFolder, "/") == 0;
    bool bRoom = true;
    while (const dirent *pEntry = readdir(pDir))
    {
        const char *psz = pEntry->d_name;
        if (bRoot && (strcmp(psz, ".") == 0 || strcmp(psz, "..") == 0))
            continue;
        if (bRoom && MatchesPattern(pszName, psz))
            bRoom = AddName(pFind, psz);
    }
    closedir(pDir);
    if (!bRoom)
    {
        FreeFind(pFind);
        return Fail(ERROR_NOT_ENOUGH_MEMORY);
    }
    std::sort(pFind->ppszNames, pFind->ppszNames + pFind->ulCount, ComesBefore);
    if (!TakeNext(pFind, pData))
    {
        FreeFind(pFind);
        return Fail(ERROR_FILE_NOT_FOUND);
    }
    return pFind;
}

BOOL FindNextFileA(HANDLE hFind, WIN32_FIND_DATAA *pData)
{
    TFind *pFind = (TFind *)hFind;
    if (!hFind || hFind == INVALID_HANDLE_VALUE || pFind->ulMagic != s_ulFindMagic || !pData)
    {
        SetLastError(ERROR_INVALID_HANDLE);
        return FALSE;
    }
    if (TakeNext(pFind, pData))
        return TRUE;
    SetLastError(ERROR_NO_MORE_FILES);
    return FALSE;
}

BOOL FindClose(HANDLE hFind)
{
    TFind *pFind = (TFind *)hFind;
    if (!hFind || hFind == INVALID_HANDLE_VALUE || pFind->ulMagic != s_ulFindMagic)
    {
        SetLastError(ERROR_INVALID_HANDLE);
        return FALSE;
    }
    FreeFind(pFind);
    return TRUE;
}
