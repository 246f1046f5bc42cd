#pragma once

#include "platform/win32.h"

#include <sys/stat.h>

DWORD AttributesOf(const struct stat &info, const char *pszName);
FILETIME ToFileTime(const timespec &time);
