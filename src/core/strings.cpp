#include "tarvix/strings.h"

#include <stdio.h>
#include <string.h>

namespace
{
xlong Sign(xlong lValue)
{
    return (lValue > 0) - (lValue < 0);
}

unsigned char Lower(char c)
{
    return c >= 'A' && c <= 'Z' ? (unsigned char)(c + 32) : (unsigned char)c;
}

// Difference of the first unlike characters, without regard to case.
xlong CompareNoCase(const char *pszA, const char *pszB, size_t ulLen)
{
    for (; ulLen; --ulLen, ++pszA, ++pszB)
        if (Lower(*pszA) != Lower(*pszB) || !*pszA)
            return Lower(*pszA) - Lower(*pszB);
    return 0;
}

size_t Length(xlong lLen)
{
    return lLen > 0 ? (size_t)lLen : 0;
}
} // namespace

xlong xStrlen(const char *psz)
{
    return (xlong)strlen(psz);
}

void xStrcpy(char *pszTo, const char *pszFrom)
{
    strcpy(pszTo, pszFrom);
}

void xStrcat(char *pszTo, const char *pszFrom)
{
    strcat(pszTo, pszFrom);
}

void xStrncpy(char *pszTo, const char *pszFrom, xlong lLen)
{
    strncpy(pszTo, pszFrom, Length(lLen));
}

void xStrncat(char *pszTo, const char *pszFrom, xlong lLen)
{
    strncat(pszTo, pszFrom, Length(lLen));
}

char *xStrchr(const char *psz, signed char c)
{
    return (char *)strchr(psz, c);
}

char *xStrrchr(const char *psz, signed char c)
{
    return (char *)strrchr(psz, c);
}

xlong xStrcmp(const char *pszA, const char *pszB)
{
    return Sign(strcmp(pszA, pszB));
}

xlong xStricmp(const char *pszA, const char *pszB)
{
    return CompareNoCase(pszA, pszB, (size_t)-1);
}

xlong xStrncmp(const char *pszA, const char *pszB, xlong lLen)
{
    return strncmp(pszA, pszB, Length(lLen));
}

xlong xStrnicmp(const char *pszA, const char *pszB, xlong lLen)
{
    return CompareNoCase(pszA, pszB, Length(lLen));
}

char *xStrstr(const char *psz, const char *pszPart)
{
    return (char *)strstr(psz, pszPart);
}

char *xStrpbrk(const char *psz, const char *pszSet)
{
    return (char *)strpbrk(psz, pszSet);
}

char *xStrUpperCase(char *psz)
{
    for (char *pc = psz; *pc; ++pc)
        if (*pc >= 'a' && *pc <= 'z')
            *pc = (char)(*pc - 32);
    return psz;
}

char *xStrLowerCase(char *psz)
{
    for (char *pc = psz; *pc; ++pc)
        *pc = (char)Lower(*pc);
    return psz;
}

xulong xStrCntSet(const char *psz, const char *pszSet)
{
    xulong ulCount = 0;
    if (!psz || !pszSet)
        return 0;
    for (; *psz; ++psz)
        ulCount += strchr(pszSet, *psz) != nullptr;
    return ulCount;
}

char *xStrRemoveSet(char *psz, const char *pszSet)
{
    if (!psz || !pszSet)
        return psz;
    char *pcTo = psz;
    for (const char *pcFrom = psz; *pcFrom; ++pcFrom)
        if (!strchr(pszSet, *pcFrom))
            *pcTo++ = *pcFrom;
    *pcTo = 0;
    return psz;
}

char *xStuffSet(char *psz, char *pszOut, xulong ulSize, const char *pszSet)
{
    if (!psz || !pszOut || !ulSize || !pszSet)
        return psz;
    const size_t ulMatches = xStrCntSet(psz, pszSet);
    // Twice the matches: the margin is part of the limit.
    if (!ulMatches || strlen(psz) + 2 * ulMatches + 1 > ulSize)
        return psz;
    char *pcTo = pszOut;
    for (const char *pcFrom = psz; *pcFrom; ++pcFrom)
    {
        *pcTo++ = *pcFrom;
        if (strchr(pszSet, *pcFrom))
            *pcTo++ = *pcFrom;
    }
    *pcTo = 0;
    return pszOut;
}

void xStrcatVariableTRUEFALSE(char *pszTo, const char *pszName, xlong lValue)
{
    strcat(pszTo, pszName);
    if (lValue == 1)
        strcat(pszTo, "TRUE");
    else if (lValue == 0)
        strcat(pszTo, "FALSE");
    else
        sprintf(pszTo + strlen(pszTo), "%ld", (long)lValue);
}

void xStrcatVariableSTRING(char *pszTo, const char *pszName, const char *pszValue)
{
    strcat(pszTo, pszName);
    strcat(pszTo, pszValue);
}
