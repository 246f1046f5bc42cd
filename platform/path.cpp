#include "platform/path.h"

#include <dirent.h>
#include <errno.h>
#include <string.h>
#include <sys/stat.h>

namespace
{
/// Next character of a UTF-8 text; bytes that are none count by themselves.
uint32_t NextChar(const char **ppsz)
{
    const unsigned char *p = (const unsigned char *)*ppsz;
    uint32_t ul = p[0];
    int nLength = 1;
    if (p[0] >= 0xC2 && p[0] < 0xE0 && (p[1] & 0xC0) == 0x80)
    {
        ul = (p[0] & 0x1Fu) << 6 | (p[1] & 0x3F);
        nLength = 2;
    }
    else if (p[0] >= 0xE0 && p[0] < 0xF0 && (p[1] & 0xC0) == 0x80 && (p[2] & 0xC0) == 0x80)
    {
        ul = (p[0] & 0x0Fu) << 12 | (p[1] & 0x3Fu) << 6 | (p[2] & 0x3F);
        nLength = 3;
    }
    *ppsz += nLength;
    return ul;
}

/// Lower case of Latin, Greek and Cyrillic letters.
uint32_t Fold(uint32_t ul)
{
    if ((ul >= 'A' && ul <= 'Z') || (ul >= 0xC0 && ul <= 0xDE && ul != 0xD7) ||
        (ul >= 0x391 && ul <= 0x3A9 && ul != 0x3A2) || (ul >= 0x410 && ul <= 0x42F))
        return ul + 0x20;
    if (ul >= 0x400 && ul <= 0x40F)
        return ul + 0x50;
    // Pairs, upper case first; the middle part of the block begins them at odd places.
    if ((ul >= 0x100 && ul <= 0x137 && ul != 0x130 && ul != 0x131) || (ul >= 0x14A && ul <= 0x177))
        return ul | 1;
    if ((ul >= 0x139 && ul <= 0x148) || (ul >= 0x179 && ul <= 0x17E))
        return ul & 1 ? ul + 1 : ul;
    return ul == 0x178 ? 0xFF : ul;
}

/// Looks for a name in a folder without regard to case. Of several the first
/// in the order of bytes counts, so that the answer is always the same.
bool FindName(const char *pszFolder, const char *pszName, char *pszFound)
{
    DIR *pDir = opendir(pszFolder);
    if (!pDir)
        return false;
    bool bFound = false;
    while (const dirent *pEntry = readdir(pDir))
    {
        if (CompareNames(pEntry->d_name, pszName) == 0 && (!bFound || strcmp(pEntry->d_name, pszFound) < 0))
        {
            strcpy(pszFound, pEntry->d_name);
            bFound = true;
        }
    }
    closedir(pDir);
    return bFound;
}

bool Exists(const char *pszPath)
{
    struct stat info;
    return lstat(pszPath, &info) == 0;
}
} // namespace

int CompareNames(const char *pszA, const char *pszB)
{
    while (*pszA || *pszB)
    {
        const uint32_t ulA = *pszA ? Fold(NextChar(&pszA)) : 0, ulB = *pszB ? Fold(NextChar(&pszB)) : 0;
        if (ulA != ulB)
            return ulA < ulB ? -1 : 1;
    }
    return 0;
}

bool ResolvePath(const char *pszPath, char *pszReal)
{
    if (!pszPath || !pszPath[0])
    {
        errno = ENOENT;
        return false;
    }
    const size_t ulLength = strlen(pszPath);
    if (ulLength >= PATH_MAX)
    {
        errno = ENAMETOOLONG;
        return false;
    }
    for (size_t i = 0; i <= ulLength; ++i)
        pszReal[i] = pszPath[i] == '\\' ? '/' : pszPath[i];
    if (Exists(pszReal))
        return true;

    // Component by component, and only where the written one is missing.
    char szWritten[PATH_MAX], szFound[NAME_MAX + 1];
    memcpy(szWritten, pszReal, ulLength + 1);
    size_t ulReal = 0;
    for (size_t i = 0; i < ulLength;)
    {
        if (szWritten[i] == '/')
        {
            pszReal[ulReal++] = szWritten[i++];
            continue;
        }
        size_t ulEnd = i;
        while (ulEnd < ulLength && szWritten[ulEnd] != '/')
            ++ulEnd;
        const size_t ulPart = ulEnd - i;
        if (ulReal + ulPart >= PATH_MAX)
        {
            errno = ENAMETOOLONG;
            return false;
        }
        memcpy(pszReal + ulReal, szWritten + i, ulPart);
        pszReal[ulReal + ulPart] = 0;
        if (!Exists(pszReal))
        {
            char szName[PATH_MAX];
            memcpy(szName, szWritten + i, ulPart);
            szName[ulPart] = 0;
            pszReal[ulReal] = 0;
            if (!FindName(ulReal ? pszReal : ".", szName, szFound))
            {
                // From here on nothing exists.
                if (ulReal + (ulLength - i) >= PATH_MAX)
                {
                    errno = ENAMETOOLONG;
                    return false;
                }
                memcpy(pszReal + ulReal, szWritten + i, ulLength - i + 1);
                return true;
            }
            // Upper and lower case of a letter may differ in length.
            if (ulReal + strlen(szFound) + (ulLength - ulEnd) >= PATH_MAX)
            {
                errno = ENAMETOOLONG;
                return false;
            }
            strcpy(pszReal + ulReal, szFound);
            ulReal += strlen(szFound);
        }
        else
            ulReal += ulPart;
        i = ulEnd;
    }
    pszReal[ulReal] = 0;
    return true;
}

bool ResolveNewPath(const char *pszPath, char *pszReal)
{
    const size_t ulLength = pszPath ? strlen(pszPath) : 0;
    size_t ulName = ulLength;
    while (ulName && pszPath[ulName - 1] != '/' && pszPath[ulName - 1] != '\\')
        --ulName;
    if (!ulName || ulName == ulLength || ulLength >= PATH_MAX)
    {
        if (!ulLength || ulName)
            return ResolvePath(pszPath, pszReal);
        if (ulLength >= PATH_MAX)
        {
            errno = ENAMETOOLONG;
            return false;
        }
        strcpy(pszReal, pszPath);
        return true;
    }
    char szFolder[PATH_MAX];
    memcpy(szFolder, pszPath, ulName);
    szFolder[ulName] = 0;
    if (!ResolvePath(szFolder, pszReal))
        return false;
    if (strlen(pszReal) + ulLength - ulName >= PATH_MAX)
    {
        errno = ENAMETOOLONG;
        return false;
    }
    strcat(pszReal, pszPath + ulName);
    return true;
}

bool ParentExists(const char *pszReal)
{
    char szParent[PATH_MAX];
    size_t ulLength = strlen(pszReal);
    while (ulLength && pszReal[ulLength - 1] == '/')
        --ulLength;
    while (ulLength && pszReal[ulLength - 1] != '/')
        --ulLength;
    if (!ulLength)
        return true;
    memcpy(szParent, pszReal, ulLength);
    szParent[ulLength] = 0;
    struct stat info;
    return stat(szParent, &info) == 0 && S_ISDIR(info.st_mode);
}

bool MatchesPattern(const char *pszPattern, const char *pszName)
{
    if (strcmp(pszPattern, "*.*") == 0)
        pszPattern = "*";
    // The rules that DOS left behind: ? also stands for nothing before a dot and
    // at the end, a dot before a wildcard also for the end, and a star before a
    // dot doesn't reach past the last dot.
    enum : unsigned char
    {
        CHAR,
        STAR,
        STAR_TO_DOT,
        ONE,
        DOT_OR_END,
    };
    struct TItem
    {
        unsigned char ucKind;
        uint32_t ulChar;
    };
    const int MAX_ITEMS = 512;
    static TItem s_aItems[MAX_ITEMS];
    int nItems = 0;
    for (const char *p = pszPattern; *p;)
    {
        if (nItems == MAX_ITEMS)
            return false;
        TItem &item = s_aItems[nItems++];
        const uint32_t ul = Fold(NextChar(&p));
        item = { CHAR, ul };
        if (ul == '?')
            item.ucKind = ONE;
        else if (ul == '*')
            item.ucKind = *p == '.' ? STAR_TO_DOT : STAR;
        else if (ul == '.' && (*p == '?' || *p == '*'))
            item.ucKind = DOT_OR_END;
    }
    const char *pszLastDot = strrchr(pszName, '.');

    // All places in the pattern that the name so far can have led to.
    bool abAt[MAX_ITEMS + 1] = { true }, abNext[MAX_ITEMS + 1];
    for (const char *p = pszName;;)
    {
        const bool bEnd = !*p;
        for (int i = 0; i < nItems; ++i)
        {
            if (!abAt[i])
                continue;
            const unsigned char ucKind = s_aItems[i].ucKind;
            if (ucKind == STAR || ucKind == STAR_TO_DOT || (ucKind == ONE && (bEnd || *p == '.')) ||
                (ucKind == DOT_OR_END && bEnd))
                abAt[i + 1] = true;
            // "name." asks for a name without extension.
            if (ucKind == CHAR && s_aItems[i].ulChar == '.' && bEnd && i == nItems - 1)
                abAt[i + 1] = true;
        }
        if (bEnd)
            return abAt[nItems];
        memset(abNext, 0, sizeof(abNext));
        const bool bLastDot = p == pszLastDot;
        const uint32_t ul = Fold(NextChar(&p));
        for (int i = 0; i < nItems; ++i)
        {
            if (!abAt[i])
                continue;
            switch (s_aItems[i].ucKind)
            {
            case STAR:
                abNext[i] = true;
                break;
            case STAR_TO_DOT:
                abNext[i] = abNext[i] || !bLastDot;
                break;
            case ONE:
                abNext[i + 1] = abNext[i + 1] || ul != '.';
                break;
            default:
                abNext[i + 1] = abNext[i + 1] || s_aItems[i].ulChar == ul;
                break;
            }
        }
        memcpy(abAt, abNext, sizeof(abAt));
    }
}
