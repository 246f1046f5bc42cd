#pragma once

#include <stdio.h>

/// fopen as the library means it: both separators, and on file systems that
/// tell upper and lower case apart a name that differs in case alone is found.
/// @return null for null, empty and unusable paths too
FILE *OpenStream(const char *pszPath, const char *pszMode);
