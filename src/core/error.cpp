#include "tarvix/error.h"

#include "tarvix/globals.h"
#include "tarvix/memory.h"
#include "tarvix/strings.h"

#include <stdarg.h>
#include <stdio.h>
#include <string.h>

namespace
{
const char *const s_Texts[] = {
    "No error",
    "Function not implemented yet!",
    "Undefined error",
    "System specific error",
    "Unable to open file",
    "End of file reached",
    "Read error",
    "Write error",
    "Seek error",
    "Unable to get the position in the file",
    "File is read only",
    "Unable to delete file",
    "File or path not found",
    "Unable to rename file/dir",
    "Out of memory",
    "Memory entry not found",
    "The overflow bytes have been changed!",
    "Unable to start the sound system",
    "Specified output format not supported",
    "Audio device is already in use",
    "Not a wave file",
    "Unable to find the specified sample name",
    "Invalid channel",
    "Unable to play the sound(s)!",
    "Unknown/unsupported picture format",
};
const xlong s_lNumTexts = sizeof(s_Texts) / sizeof(s_Texts[0]);

// What follows the text in the error buffer stays free for a host's additions.
const int s_nMaxText = 1949;

const char *OrEmpty(const char *psz)
{
    return psz ? psz : "";
}

// A null object is allowed in every operation, and the compiler must not count
// on this being set.
template <class T>
bool IsNullObject(T *pObject)
{
    T *volatile pTested = pObject;
    return !pTested;
}
} // namespace

CErrorBase::CErrorBase() : m_lErrCode(0), m_lSysErrCode(0) {}

xlong CErrorBase::Clear()
{
    m_pszFile = "";
    m_lErrCode = 0;
    m_lSysErrCode = 0;
    m_lLine = -1;
    return 1;
}

xlong CErrorBase::SetError(xlong lCode, xlong lSysCode, xlong lRet, const char *pszFile, xlong lLine)
{
    if (IsNullObject(this))
        return 1;
    m_lErrCode = lCode;
    m_lSysErrCode = lSysCode;
    // A null file stays null: CreateErrorString leaves the place out then.
    m_pszFile = pszFile;
    m_lLine = lLine;
    return lRet;
}

xlong CErrorBase::SetErrorTxt(const char *pszText, xlong lRet, const char *pszFile, xlong lLine)
{
    if (IsNullObject(this))
        return 1;
    m_pszErrorTxt = pszText ? pszText : "Undefined error";
    m_pszFile = pszFile ? pszFile : "Unknown file";
    m_lErrCode = XERR_TEXT;
    m_lLine = lLine;
    return lRet;
}

xlong CErrorBase::SetErrorf(const char *pszFormat, ...)
{
    if (IsNullObject(this))
        return 1;
    int nLen = -1;
    if (glb)
    {
        // The arguments may quote the text that stands in the buffer.
        char szText[sizeof(glb->m_szErrorBuffer)];
        va_list args;
        va_start(args, pszFormat);
        nLen = vsnprintf(szText, sizeof(szText), pszFormat, args);
        va_end(args);
        memcpy(glb->m_szErrorBuffer, szText, sizeof(szText));
    }
    if (nLen >= 0 && nLen < s_nMaxText)
        m_pszErrorTxt = glb->m_szErrorBuffer;
    else
        m_pszErrorTxt = "CRITICAL ERROR: The real error msg is to big. Please notify the development team about this "
                        "as soon as possible";
    m_lErrCode = XERR_TEXT;
    m_pszFile = nullptr;
    m_lLine = 0;
    return 0;
}

const char *CErrorBase::GetError(xlong *plCode)
{
    if (IsNullObject(this))
        return "Unknown error (error class is undefined)";
    if (plCode)
        *plCode = m_lErrCode;
    if (m_lErrCode == XERR_TEXT)
        return m_pszErrorTxt;
    if (m_lErrCode < 0 || m_lErrCode >= s_lNumTexts)
        return "Unknown error code!";
    return s_Texts[m_lErrCode];
}

void CErrorBase::GetFileAndLine(const char **ppszFile, xlong *plLine)
{
    if (ppszFile)
        *ppszFile = m_pszFile;
    if (plLine)
        *plLine = m_lLine;
}

xlong CErrorBase::GetErrCode()
{
    return IsNullObject(this) ? 1 : m_lErrCode;
}

xlong CErrorBase::CreateErrorString(char *pszBuffer, xlong lSize)
{
    if (IsNullObject(this))
        return 1;
    if (GetErrCode() == XERR_NONE)
        return 0;

    const char *pszFile = nullptr;
    xlong lLine = 0;
    xlong lCode = 0;
    GetFileAndLine(&pszFile, &lLine);
    const char *pszText = OrEmpty(GetError(&lCode));
    const bool bStdDebug = glb && glb->m_lStdDebug;
    const bool bPlace = bStdDebug && (pszFile || GetSysSpecErrCode());

    char *pszAt = pszBuffer;
    if (bPlace)
        pszAt += sprintf(pszAt, "Error in : %s\nOn line : %ld\n\n", OrEmpty(pszFile), (long)lLine);
    if (lCode == XERR_TEXT && !GetSysSpecErrCode())
        pszAt += sprintf(pszAt, "%s", pszText);
    else
        pszAt += sprintf(pszAt, "Error code 0x%lx :\n%s", (unsigned long)(xulong)lCode, pszText);
    if (GetSysSpecErrCode())
    {
        xlong lSysCode = 0;
        const char *pszSysText = OrEmpty(GetSysSpecError(&lSysCode));
        sprintf(pszAt, "\n\nSystem specific error (%ld):\n%s", (long)lSysCode, pszSysText);
    }
    return 1;
}

const char *CError::GetSysSpecError(xlong *plCode)
{
    if (plCode)
        *plCode = m_lSysErrCode;
    return m_lSysErrCode ? "Unknown error code" : nullptr;
}

xlong CError::GetSysSpecErrCode()
{
    return m_lSysErrCode;
}

xlong xError_Func(xlong lCode, const char *pszFile, xlong lLine)
{
    if (glb)
        glb->m_Error.SetError(lCode, 0, 0, pszFile, lLine);
    return 0;
}

xlong xErrorTxt_Func(const char *pszText, const char *pszFile, xlong lLine)
{
    if (glb)
        glb->m_Error.SetErrorTxt(pszText, 0, pszFile, lLine);
    return 0;
}

char *xErrorMerge(const char *pszA, const char *pszB)
{
    pszA = OrEmpty(pszA);
    pszB = OrEmpty(pszB);
    const size_t ulSize = strlen(pszA) + strlen(pszB) + 4;
    char *pszMerged = XNEW(char[ulSize]);
    if (!pszMerged)
        return nullptr;
    snprintf(pszMerged, ulSize, "[%s] %s", pszA, pszB);
    return pszMerged;
}

void xprintf(const char *pszFile, xlong lLine, void *pObject, xlong lLevel, const char *pszFormat, ...) {}
