#include "core/debug.h"

#include "core/openfile.h"
#include "tarvix/error.h"
#include "tarvix/globals.h"
#include "tarvix/memory.h"
#include "tarvix/strings.h"
#include "tarvix/systemfiles.h"

#include <stdio.h>
#include <string.h>

namespace
{
const char s_szStdFile[] = "DbgStd.txt";
const char s_szLevelFile[] = "DbgLevel.txt";

const struct
{
    const char *pszName;
    xlong lLevel;
} s_Levels[] = {
    { "DBGL_NONE", DBGL_NONE }, { "DBGL_MEMORY", DBGL_MEMORY }, { "DBGL_RESDATA", DBGL_RESDATA },
    { "DBGL_KCBL", DBGL_KCBL }, { "DBGL_ALL", DBGL_ALL },
};

void AppendText(const char *pszFile, const char *pszText)
{
    FILE *pFile = OpenStream(pszFile, "a+");
    if (!pFile)
        return;
    fputs(pszText, pFile);
    fclose(pFile);
    fputs(pszText, stderr);
}

bool IsLetterOrDigit(char c)
{
    return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
}

// A new string of what stands from pszFrom up to pszEnd without the characters
// at both ends that are neither letters nor digits; null if nothing is left.
char *NewTrimmed(const char *pszFrom, const char *pszEnd)
{
    while (pszFrom < pszEnd && !IsLetterOrDigit(*pszFrom))
        ++pszFrom;
    while (pszEnd > pszFrom && !IsLetterOrDigit(pszEnd[-1]))
        --pszEnd;
    if (pszFrom == pszEnd)
        return nullptr;
    const size_t ulLen = (size_t)(pszEnd - pszFrom);
    char *pszNew = XNEW(char[ulLen + 1]);
    if (pszNew)
    {
        memcpy(pszNew, pszFrom, ulLen);
        pszNew[ulLen] = 0;
    }
    return pszNew;
}

void SetLevelByName(const char *pszName)
{
    for (const auto &level : s_Levels)
        if (!xStricmp(pszName, level.pszName))
            xSetDebugLevel(level.lLevel);
}

void ApplyOption(char *pszKey, char *pszValue, void (*pfnOption)(char *, char *))
{
    const bool bOn = !xStricmp(pszValue, "on");
    if (!xStricmp(pszKey, "validate"))
    {
        // The reverse of the other switches: the member says "no".
        if (glb)
            glb->m_bNoValidate = !bOn;
    }
    else if (!xStricmp(pszKey, "debugscreen"))
    {
        if (glb)
            glb->m_lDebugScreen = bOn;
    }
    else if (!xStricmp(pszKey, "debugflag"))
        xStartStdDebug(bOn);
    else if (!xStricmp(pszKey, "debuglevel"))
        SetLevelByName(pszValue);
    else if (pfnOption)
        pfnOption(pszKey, pszValue);
}

void DeleteIfThere(const char *pszFile)
{
    if (xFileExists(pszFile))
        xFileDelete(pszFile);
}
} // namespace

void DebugStdOut(const char *pszText)
{
    AppendText(s_szStdFile, pszText);
}

void DebugLevelOut(const char *pszText)
{
    AppendText(s_szLevelFile, pszText);
}

void xGetDebugOptions(const char *pszPath, void (*pfnOption)(char *, char *))
{
    FILE *pFile = OpenStream(pszPath, "rb");
    if (!pFile)
        return;
    char szLine[99];
    while (fgets(szLine, sizeof(szLine), pFile))
    {
        // A zero byte in the file cuts its line short here.
        const size_t ulLen = strlen(szLine);
        const char *pszDivide = strrchr(szLine, '=');
        if (ulLen < 3 || !pszDivide || pszDivide - szLine < 2 || !pszDivide[1])
            continue;
        char *pszKey = NewTrimmed(szLine, pszDivide);
        char *pszValue = NewTrimmed(pszDivide + 1, szLine + ulLen);
        if (pszKey && pszValue)
            ApplyOption(pszKey, pszValue, pfnOption);
        XDELETE_ARRAY(pszKey);
        XDELETE_ARRAY(pszValue);
    }
    fclose(pFile);
}

void xStartStdDebug(xlong lOn)
{
    if (glb)
        glb->m_lStdDebug = lOn;
}

void xSetDbgStdOut(void (*pfnOut)(const char *))
{
    if (glb)
        glb->m_pfnDbgStdOut = pfnOut;
}

void xSetDbgLvlOut(void (*pfnOut)(const char *))
{
    if (glb)
        glb->m_pfnDbgLvlOut = pfnOut;
}

void xSetDebugLevel(xlong lLevel)
{
    if (glb)
        glb->m_lDebugLevel = lLevel;
}

xlong xGetDebugLevel(xlong lMask)
{
    return glb && (glb->m_lDebugLevel & lMask) ? 1 : 0;
}

void xDeleteDbgFiles()
{
    DeleteIfThere(s_szStdFile);
    DeleteIfThere(s_szLevelFile);
}
