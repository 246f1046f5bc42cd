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
#else
#include "platform/win32.h"
#include <netdb.h>
#include <unistd.h>
#endif
