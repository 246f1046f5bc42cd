#include "core/chars.h"
#include "tarvix/error.h"
#include "tarvix/memory.h"
#include "tarvix/strings.h"

#include <string.h>

namespace
{
// The longest path plus what joining adds must stay a block's size.
bool IsTooLong(size_t ulLen)
{
    return ulLen > 0x7ffffe00;
}

char *NewString(size_t ulLen, const char *pszError)
{
    char *psz = IsTooLong(ulLen) ? nullptr : (char *)String_Alloc((xulong)ulLen + 1);
    if (psz)
        psz[ulLen] = 0;
    else
        xErrorTxt(pszError);
    return psz;
}

char *NewCopy(const char *pszFrom, size_t ulLen, const char *pszError)
{
    char *psz = NewString(ulLen, pszError);
    if (psz)
        memcpy(psz, pszFrom, ulLen);
    return psz;
}

char *NewJoined(const char *pszA, size_t ulA, bool bSlash, const char *pszB, const char *pszError)
{
    const size_t ulB = strlen(pszB);
    char *psz = NewString(ulA + bSlash + ulB, pszError);
    if (!psz)
        return nullptr;
    memcpy(psz, pszA, ulA);
    if (bSlash)
        psz[ulA] = '/';
    memcpy(psz + ulA + bSlash, pszB, ulB + 1);
    return psz;
}

// The last name of a path, up to a blank or the end, and up to a dot if bStem.
char *NewLastName(const char *pszPath, bool bStem, const char *pszError)
{
    if (!pszPath)
        return nullptr;
    size_t ulStart = strlen(pszPath);
    bool bName = false;
    while (ulStart && !IsSeparator(pszPath[ulStart - 1]))
        bName |= pszPath[--ulStart] != ' ';
    if (!bName)
        return nullptr;
    const size_t ulLen = strcspn(pszPath + ulStart, bStem ? " ." : " ");
    return ulLen ? NewCopy(pszPath + ulStart, ulLen, pszError) : nullptr;
}
} // namespace

char *String_ParentDir(const char *pszPath, xlong lMode)
{
    if (!pszPath)
        return nullptr;
    xlong lCounted = 0;
    bool bName = false;
    for (size_t ul = strlen(pszPath) + 1; ul--;)
    {
        const bool bSeparator = IsSeparator(pszPath[ul]);
        if (bSeparator || ul == 0)
        {
            if (lMode == 1 ? ++lCounted == 2 : bName)
                return NewCopy(pszPath, bSeparator ? ul : ul + 1,
                               "String_ParentDir:Unable to allocate memory for new string");
        }
        else if (pszPath[ul] && pszPath[ul] != ' ')
            bName = true;
    }
    return nullptr;
}

char *String_SubDir(const char *pszDir, const char *pszSub)
{
    if (!pszDir || !pszSub)
        return nullptr;
    const size_t ulDir = strlen(pszDir);
    if (ulDir && (IsSeparator(*pszSub) || *pszSub == ' '))
        ++pszSub;
    const bool bSlash = ulDir && !IsSeparator(pszDir[ulDir - 1]);
    return NewJoined(pszDir, ulDir, bSlash, pszSub, "String_SubDir: Unable to allocate memory for new string");
}

char *String_FileNamePath(const char *pszPath)
{
    if (!pszPath)
        return nullptr;
    size_t ulLen = strlen(pszPath);
    while (ulLen && !IsSeparator(pszPath[ulLen]))
        --ulLen;
    return NewCopy(pszPath, ulLen, "String_ParentDir:Unable to allocate memory for new string");
}

char *String_FileNameFirstName(const char *pszPath)
{
    return NewLastName(pszPath, true, "String_FileNameFirstName: Unable to allocate memory for the new string");
}

char *String_FileName(const char *pszPath)
{
    return NewLastName(pszPath, false, "String_FileName: Unable to allocate memory for the new string");
}

char *String_FileNameExtension(const char *pszPath)
{
    const char *pszError = "String_FileNameExtension: Unable to allocate memory for the new string";
    if (!pszPath)
        return nullptr;
    bool bName = false;
    for (size_t ul = strlen(pszPath); ul--;)
    {
        const char c = pszPath[ul];
        if (c == '.')
        {
            const char *pszStart = pszPath + ul + 1;
            if (!*pszStart)
                return nullptr;
            // A blank that ends the extension stays its last character.
            const size_t ulLen = strcspn(pszStart, " ");
            return NewCopy(pszStart, ulLen + (pszStart[ulLen] == ' '), pszError);
        }
        if (IsSeparator(c) || (c == ' ' && bName))
            break;
        bName |= c != ' ';
    }
    return NewCopy("", 0, pszError);
}

char *String_MergeDirectoryAndFile(const char *pszDir, const char *pszFile)
{
    if (!pszDir || !pszFile)
        return nullptr;
    const size_t ulDir = strlen(pszDir);
    size_t ulLast = ulDir;
    while (ulLast && pszDir[ulLast - 1] == ' ')
        --ulLast;
    const bool bSlash = ulLast && !IsSeparator(pszDir[ulLast - 1]);
    return NewJoined(pszDir, ulDir, bSlash, pszFile,
                     "String_FileNameExtension: Unable to allocate memory for the new string");
}

char *String_FullNameWithoutExtension(const char *pszPath)
{
    char *pszDir = String_FileNamePath(pszPath);
    char *pszName = String_FileNameFirstName(pszPath);
    char *pszFull = pszDir && pszName ? String_MergeDirectoryAndFile(pszDir, pszName) : nullptr;
    String_Free(pszDir);
    String_Free(pszName);
    return pszFull;
}

void *String_Alloc(xulong ulSize)
{
    return XNEW(char[ulSize]);
}

void String_Free(void *pString)
{
    XDELETE_ARRAY((char *)pString);
}
