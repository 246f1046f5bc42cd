#pragma once

#include "platform/win32.h"

/// SHGetFolderPathA of the built-in module: the desktop's own folders.
HRESULT GetFolderPath(HWND hOwner, int nFolder, HANDLE hToken, DWORD ulFlags, LPSTR pszPath);
