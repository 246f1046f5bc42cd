#pragma once

#include "tarvix/types.h"

// Files. Results are 1 or 0; what reports is said.

/// 1 if the file can be opened for reading.
TARVIX_API xlong xFileExists(const char *pszPath);
/// @return 0 with code 10 when access is denied, otherwise code 11
TARVIX_API xlong xFileDelete(const char *pszPath);
/// The new name comes first.
/// @return 0 with code 12 when the old one is missing, otherwise code 13
TARVIX_API xlong xFileRename(const char *pszNewName, const char *pszOldName);
TARVIX_API xlong xFileSize(const char *pszPath, xulong *pulSize);
/// Makes missing directories of pszTo. On failure pszTo may be left behind, incomplete.
TARVIX_API xlong xCopyFile(const char *pszTo, const char *pszFrom);
TARVIX_API xlong xReadFile(const char *pszPath, void *pBuf, xulong ulLen);
TARVIX_API xlong xWriteFile(const char *pszPath, const void *pBuf, xulong ulLen);
/// Time of the last write, in 100 ns since 1601, as low and high part.
TARVIX_API xlong xFileGetLastWriteTime(const char *pszPath, xulong &ulLow, xulong &ulHigh);
/// Makes an existing file readable and writable for its owner.
TARVIX_API void xRemoveReadOnly(const char *pszPath);
