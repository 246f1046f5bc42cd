#include "tarvix/systemdirs.h"

#include "core/filefault.h"

#include "core/chars.h"
#include "tarvix/error.h"
#include "tarvix/globals.h"
#include "tarvix/llist.h"
#include "tarvix/memory.h"
#include "tarvix/strings.h"
#include "win/win32.h"

#include <stdio.h>
#include <string.h>

namespace
{
const DWORD s_ulWorkingDirectory = 257;

char s_szSavedDir[512];

char *NewFormatted(const char *pszFormat, const char *pszA, const char *pszB)
{
    const size_t ulSize = strlen(pszFormat) + strlen(pszA) + strlen(pszB) + 1;
    char *psz = ulSize < 0x7fffff00 ? (char *)String_Alloc((xulong)ulSize) : nullptr;
    if (psz)
        snprintf(psz, ulSize, pszFormat, pszA, pszB);
    return psz;
}

void AppendString(CLList *pList, char *psz)
{
    if (psz && !pList->InsertLast(psz))
        String_Free(psz);
}

// Enters one directory, making it if need be.
xlong EnterOrCreate(const char *pszDir)
{
    if (SetCurrentDirectoryA(pszDir))
        return 1;
    if (FailsFileCall() || !CreateDirectoryA(pszDir, nullptr))
        return glb->m_Error.SetErrorf("Unable to create dir %s. Errorcode: %ld", pszDir, (long)GetLastError());
    if (!SetCurrentDirectoryA(pszDir))
        return glb->m_Error.SetErrorf("Unable to change dir %s.", pszDir);
    return 1;
}

xlong EnterAll(char *pszDir)
{
    for (char *pszAt = pszDir; *pszAt;)
    {
        const size_t ulLen = strcspn(pszAt, "/\\");
        const bool bMore = pszAt[ulLen] != 0;
        pszAt[ulLen] = 0;
        // Separators may stand side by side.
        if (ulLen && !EnterOrCreate(pszAt))
            return 0;
        pszAt += ulLen + bMore;
    }
    return 1;
}

const char *DriveLabel(UINT uType)
{
    switch (uType)
    {
    case DRIVE_REMOVABLE:
        return "Removable Disk";
    case DRIVE_FIXED:
        return "Fixed Disk";
    case DRIVE_REMOTE:
        return "Remote Disk";
    case DRIVE_CDROM:
        return "Compact Disc";
    }
    return "Unknown Disk";
}
} // namespace

xlong xCreateDirsForFile(const char *pszPath)
{
    char szDrive[_MAX_DRIVE], szDir[_MAX_DIR], szName[_MAX_FNAME], szExt[_MAX_EXT];
    if (!pszPath || strlen(pszPath) >= _MAX_DIR)
        return xErrorTxt("xCreateDirsForFile: Parsing error!");
    _splitpath(pszPath, szDrive, szDir, szName, szExt);
    char *pszOld = xGetWorkingDirectory();
    if (!pszOld)
        return xErrorTxt("xCreateDirsForFile: Unable to allocate memory");

    char *pszFirst = szDir;
    // A path from the root starts there, and one of another drive on that drive.
    xlong lResult = 1;
    if (*szDrive || IsSeparator(*szDir))
    {
        char szRoot[_MAX_DRIVE + 2];
        snprintf(szRoot, sizeof(szRoot), "%s%s", szDrive, IsSeparator(*szDir) ? "/" : "");
        if (!SetCurrentDirectoryA(szRoot))
            lResult = glb->m_Error.SetErrorf("Unable to change dir %s.", szRoot);
    }
    // Dots in front that are no part of a name.
    while (IsSeparator(*pszFirst) || (*pszFirst == '.' && IsSeparator(pszFirst[1])))
        ++pszFirst;
    lResult = lResult && EnterAll(pszFirst);
    SetCurrentDirectoryA(pszOld);
    String_Free(pszOld);
    return lResult;
}

char *xGetWorkingDirectory()
{
    xulong ulRoom = s_ulWorkingDirectory;
    while (char *const psz = (char *)String_Alloc(ulRoom))
    {
        *psz = 0;
        const DWORD ulLen = GetCurrentDirectoryA(ulRoom, psz);
        if (ulLen && ulLen < ulRoom)
            return psz;
        String_Free(psz);
        if (!ulLen)
            break;
        ulRoom = ulLen + 1; // what a longer one takes
    }
    return nullptr;
}

xlong xSetWorkingDirectory(const char *pszDir)
{
    return xSys_SetCurrDir(pszDir) ? 1 : xErrorTxt("xSetWorkingDirectory: Unable to set the directory");
}

xlong xDoDirectoryExists(const char *pszDir)
{
    char *pszOld = xGetWorkingDirectory();
    if (!pszOld)
        return 0;
    xlong lResult = xSys_SetCurrDir(pszDir);
    if (lResult && !xSys_SetCurrDir(pszOld))
        lResult = xErrorTxt("xDoDirectoryExists: Unable to set old directory again");
    String_Free(pszOld);
    return lResult;
}

int xFolderExists(const char *pszPath)
{
    if (!pszPath)
        return (int)xErrorTxt("xFolderExists: No path.");
    const DWORD ulAttributes = GetFileAttributesA(pszPath);
    return ulAttributes != INVALID_FILE_ATTRIBUTES && (ulAttributes & FILE_ATTRIBUTE_DIRECTORY);
}

xlong xSys_SaveCurrDir()
{
    const DWORD ulLen = GetCurrentDirectoryA(sizeof(s_szSavedDir), s_szSavedDir);
    if (ulLen && ulLen < sizeof(s_szSavedDir))
        return 1;
    *s_szSavedDir = 0;
    return 0;
}

xlong xSys_RestoreCurrDir()
{
    return *s_szSavedDir && xSys_SetCurrDir(s_szSavedDir);
}

xlong xSys_SetCurrDir(const char *pszDir)
{
    return pszDir && SetCurrentDirectoryA(pszDir);
}

void xAddDrives(CLList *pList, char cFirst, char cLast)
{
    const int nLetters = cLast - cFirst + 1;
    for (int n = 0; n < nLetters; ++n)
    {
        const char szRoot[] = { (char)(cFirst + n), ':', '\\', 0 };
        const UINT uType = GetDriveTypeA(szRoot);
        if (uType == DRIVE_NO_ROOT_DIR)
            continue;
        char szLabel[MAX_PATH] = "";
        if (!GetVolumeInformationA(szRoot, szLabel, sizeof(szLabel), nullptr, nullptr, nullptr, nullptr, 0) ||
            !*szLabel)
            strcpy(szLabel, DriveLabel(uType));
        AppendString(pList, NewFormatted("%s (%s)", szRoot, szLabel));
    }
}

void xAddFolderContent(CLList *pList, const char *pszDir, const char *pszPattern, int nFiles, int nFolders,
                       int nFullPath)
{
    const size_t ulDir = strlen(pszDir);
    const bool bEnds = ulDir && IsSeparator(pszDir[ulDir - 1]);
    char *pszBase = NewFormatted("%s%s", pszDir, bEnds ? "" : "\\");
    char *pszSearch = pszBase ? NewFormatted("%s%s", pszBase, pszPattern) : nullptr;
    WIN32_FIND_DATAA found;
    HANDLE hFind = pszSearch ? FindFirstFileA(pszSearch, &found) : INVALID_HANDLE_VALUE;
    if (hFind != INVALID_HANDLE_VALUE)
    {
        const DWORD ulUnwanted = FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM | FILE_ATTRIBUTE_TEMPORARY;
        do
        {
            const bool bFolder = (found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
            if (!strcmp(found.cFileName, ".") || (found.dwFileAttributes & ulUnwanted) ||
                !(bFolder ? nFolders : nFiles))
                continue;
            AppendString(pList, NewFormatted("%s%s", nFullPath ? pszBase : "", found.cFileName));
        } while (FindNextFileA(hFind, &found));
        FindClose(hFind);
    }
    String_Free(pszSearch);
    String_Free(pszBase);
}
