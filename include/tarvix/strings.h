#pragma once

#include "tarvix/types.h"

// The runtime's string functions under the library's names. Characters are
// single bytes; texts end in a zero byte.
TARVIX_API xlong xStrlen(const char *psz);
TARVIX_API void xStrcpy(char *pszTo, const char *pszFrom);
TARVIX_API void xStrcat(char *pszTo, const char *pszFrom);
/// Pads with zero bytes; a longer text is left without its end.
TARVIX_API void xStrncpy(char *pszTo, const char *pszFrom, xlong lLen);
TARVIX_API void xStrncat(char *pszTo, const char *pszFrom, xlong lLen);
TARVIX_API char *xStrchr(const char *psz, signed char c);
TARVIX_API char *xStrrchr(const char *psz, signed char c);
/// @return -1, 0 or 1, comparing unsigned bytes
TARVIX_API xlong xStrcmp(const char *pszA, const char *pszB);
/// Without regard to the case of ASCII letters.
TARVIX_API xlong xStricmp(const char *pszA, const char *pszB);
TARVIX_API xlong xStrncmp(const char *pszA, const char *pszB, xlong lLen);
TARVIX_API xlong xStrnicmp(const char *pszA, const char *pszB, xlong lLen);
TARVIX_API char *xStrstr(const char *psz, const char *pszPart);
TARVIX_API char *xStrpbrk(const char *psz, const char *pszSet);
/// In place. @return psz
TARVIX_API char *xStrUpperCase(char *psz);
TARVIX_API char *xStrLowerCase(char *psz);
/// @return number of characters of psz that occur in pszSet; 0 for a null argument
TARVIX_API xulong xStrCntSet(const char *psz, const char *pszSet);
/// Removes in place all characters of pszSet. @return psz
TARVIX_API char *xStrRemoveSet(char *psz, const char *pszSet);
/// Doubles each character of pszSet in a copy.
/// @param ulSize  size of pszOut: length + 2 * matches + 1 at least
/// @return pszOut; psz itself when there is nothing to double, no room, or a null argument
TARVIX_API char *xStuffSet(char *psz, char *pszOut, xulong ulSize, const char *pszSet);
/// Appends the name and "TRUE" for 1, "FALSE" for 0, otherwise the number.
TARVIX_API void xStrcatVariableTRUEFALSE(char *pszTo, const char *pszName, xlong lValue);
TARVIX_API void xStrcatVariableSTRING(char *pszTo, const char *pszName, const char *pszValue);

// Paths. Slash and back-slash both separate; joining puts "/". Results are new
// strings for String_Free, or null: with a report when memory is exhausted,
// without one when the path has no such piece.

/// @param lMode  1: a separator at the end counts as the first one found
TARVIX_API char *String_ParentDir(const char *pszPath, xlong lMode);
TARVIX_API char *String_SubDir(const char *pszDir, const char *pszSub);
/// What stands before the last separator; an empty string without one.
TARVIX_API char *String_FileNamePath(const char *pszPath);
/// The last name up to its first dot.
TARVIX_API char *String_FileNameFirstName(const char *pszPath);
TARVIX_API char *String_FileName(const char *pszPath);
/// Without the dot; an empty string without a dot, null when the dot is the last character.
TARVIX_API char *String_FileNameExtension(const char *pszPath);
TARVIX_API char *String_MergeDirectoryAndFile(const char *pszDir, const char *pszFile);
TARVIX_API char *String_FullNameWithoutExtension(const char *pszPath);

/// @return bytes from the library's heap, null when exhausted
TARVIX_API void *String_Alloc(xulong ulSize);
/// Null is ignored.
TARVIX_API void String_Free(void *pString);
