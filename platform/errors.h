#pragma once

#include "platform/win32.h"

/// The last error is that no window can be shown; FormatMessageA tells why.
void SetDisplayError(const char *pszReason);
/// The Win32 error that stands for a value of errno.
DWORD ErrorOf(int nErrno);
/// Sets the last error from errno. @return FALSE
BOOL FailWithErrno();
