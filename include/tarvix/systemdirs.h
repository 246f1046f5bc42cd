#pragma once

#include "tarvix/types.h"

class CLList;

// Directories and drives.

/// Creates all directories of a file's path, which may lead up ("../x/file");
/// the working directory is kept.
/// @param pszPath  below 256 characters, wherever the working directory lies
/// @return 0 with a text
TARVIX_API xlong xCreateDirsForFile(const char *pszPath);
/// @return new string for String_Free
TARVIX_API char *xGetWorkingDirectory();
TARVIX_API xlong xSetWorkingDirectory(const char *pszDir);
TARVIX_API xlong xDoDirectoryExists(const char *pszDir);
TARVIX_API int xFolderExists(const char *pszPath);
/// One place to save the working directory; there is no nesting.
TARVIX_API xlong xSys_SaveCurrDir();
TARVIX_API xlong xSys_RestoreCurrDir();
TARVIX_API xlong xSys_SetCurrDir(const char *pszDir);
/// Appends a new string "C:\ (Label)" for each drive letter of the range.
TARVIX_API void xAddDrives(CLList *pList, char cFirst, char cLast);
/// Appends a new string for each match, in the platform's order. Hidden,
/// system and temporary entries are passed over.
/// @param pszPattern  with * and ?
/// @param nFullPath   non-zero puts the directory before the name
TARVIX_API void xAddFolderContent(CLList *pList, const char *pszDir, const char *pszPattern, int nFiles, int nFolders,
                                  int nFullPath);
