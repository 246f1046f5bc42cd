// Paths as programs from Windows write them, found on a file system that parts
// upper from lower case.
#pragma once

#include "platform/win32.h"

#include <limits.h>

/// Where the path really is. Components that don't exist stay as they are
/// written, so that they can be made.
/// @param pszReal  PATH_MAX bytes
/// @return false, with errno set, for a null, empty or too long path
TARVIX_INTERNAL bool ResolvePath(const char *pszPath, char *pszReal);

/// The same for a file that is to be made: its last part stays as it is written,
/// as another spelling is another file.
bool ResolveNewPath(const char *pszPath, char *pszReal);

/// Whether the folder that a resolved path lies in exists.
bool ParentExists(const char *pszReal);

/// Compares names without regard to case, as strcmp. UTF-8.
TARVIX_INTERNAL int CompareNames(const char *pszA, const char *pszB);

/// Whether a DOS pattern with * and ? takes the name.
TARVIX_INTERNAL bool MatchesPattern(const char *pszPattern, const char *pszName);
