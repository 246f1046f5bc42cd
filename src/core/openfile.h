#pragma once

#include <stdio.h>

/// fopen as the library means it: both separators, and on file systems that
/// tell upper and lower case apart a name that differs in case alone is found.
/// @return null for null, empty and unusable paths too
FILE *OpenStream(const char *pszPath, const char *pszMode);

// What CWholeFile asks of the platform, in paths of this size.
enum
{
    WHOLE_PATH_SIZE = 4096
};

/// @param pszTarget  receives where the file really goes, behind links
/// @param pbDirect   set for what takes bytes as they come: devices, pipes
/// @return false for a path that can't be written to
bool FindWholeTarget(const char *pszPath, char *pszTarget, bool *pbDirect);
/// Makes an empty file with the mode of the target, where there is one.
/// @return 1; 0 when that name is taken; -1 when no file can be made there
int MakeWholePart(const char *pszPart, const char *pszTarget);
/// Brings a closed file to the disk and to the target's name.
bool ReplaceWhole(const char *pszPart, const char *pszTarget);
void RemoveWholePart(const char *pszPart);
