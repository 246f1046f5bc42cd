// The Win32 calls of src/win: the system's own on Windows, and elsewhere the
// subset under platform/.
#pragma once

#ifdef _WIN32
#define WIN32_LEAN_AND_MEAN
#ifndef NOMINMAX
#define NOMINMAX
#endif
// Sockets before the rest, the rest behind windows.h.
#include <winsock2.h>

#include <windows.h>

#include <direct.h>
#include <io.h>
#include <mmsystem.h>
#include <objbase.h>
#include <rpc.h>
#include <shellapi.h>
#include <shlobj.h>
#include <stdio.h>
#include <string.h>

inline FILE *PlatformOpenFile(const char *pszPath, const char *pszMode)
{
    return fopen(pszPath, pszMode);
}

inline int PlatformRemoveFile(const char *pszPath)
{
    return remove(pszPath);
}

inline int PlatformRenameFile(const char *pszOldPath, const char *pszNewPath)
{
    return rename(pszOldPath, pszNewPath);
}
inline bool PlatformWholeTarget(const char *pszPath, char *pszTarget, size_t ulSize, bool *pbDirect)
{
    if (strlen(pszPath) >= ulSize)
        return false;
    strcpy(pszTarget, pszPath);
    const auto ulAttributes = GetFileAttributesA(pszPath);
    *pbDirect = ulAttributes != INVALID_FILE_ATTRIBUTES && (ulAttributes & FILE_ATTRIBUTE_DEVICE);
    return ulAttributes == INVALID_FILE_ATTRIBUTES ||
           !(ulAttributes & (FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_READONLY));
}

inline int PlatformMakePart(const char *pszPart, const char *)
{
    const auto hFile = CreateFileA(pszPart, GENERIC_WRITE, 0, nullptr, CREATE_NEW, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (hFile == INVALID_HANDLE_VALUE)
        return GetLastError() == ERROR_FILE_EXISTS ? 0 : -1;
    CloseHandle(hFile);
    return 1;
}

inline bool PlatformReplaceFile(const char *pszPart, const char *pszTarget)
{
    return MoveFileExA(pszPart, pszTarget, MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH) != 0;
}

inline void PlatformRemovePart(const char *pszPart)
{
    DeleteFileA(pszPart);
}
#else
#include "platform/win32.h"
#include <netdb.h>
#include <unistd.h>
#endif
