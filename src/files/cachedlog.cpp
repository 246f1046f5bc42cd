#include "tarvix/cachedlog.h"

#include "core/openfile.h"
#include "tarvix/error.h"

#include <algorithm>
#include <stdarg.h>
#include <stdio.h>
#include <string.h>
#include <time.h>

namespace
{
const size_t s_ulLineSize = 1024;
const int s_nTextSize = 1005; // of module and message

char *CopyText(const char *psz)
{
    const size_t ulSize = strlen(psz) + 1;
    char *pszCopy = XNEW(char[ulSize]);
    return pszCopy ? (char *)memcpy(pszCopy, psz, ulSize) : nullptr;
}
} // namespace

CCachedLog::CCachedLog()
    : m_pszFileName(nullptr), m_ulMaxSize(0), m_pszTempMessage(nullptr), m_pszTempMessageF(nullptr),
      m_pszDefaultModule(nullptr), m_pszDefaultMessage(nullptr), m_pCache(nullptr), m_ulCacheUsed(0), m_ulCacheSize(0)
{
}

CCachedLog::~CCachedLog()
{
    if (m_pCache)
        WriteToDisc(m_pCache, m_ulCacheUsed, 1);
    XDELETE_ARRAY((char *)m_pCache);
    XDELETE_ARRAY(m_pszDefaultMessage);
    XDELETE_ARRAY(m_pszDefaultModule);
    XDELETE_ARRAY(m_pszTempMessageF);
    XDELETE_ARRAY(m_pszTempMessage);
    XDELETE_ARRAY(m_pszFileName);
}

int CCachedLog::Init(const char *pszFileName, xulong ulMaxSize, xulong ulCacheSize)
{
    if (!pszFileName)
        return xErrorTxt("CCachedLog::Init: Missing log file name.");
    if (m_pszFileName || m_pszTempMessage)
        return xErrorTxt("CCachedLog::Init: Already initialized.");
    m_pszFileName = CopyText(pszFileName);
    if (!m_pszFileName)
        return xErrorTxt("CCachedLog::Init: Out of mem (m_pszFileName).");
    m_ulMaxSize = ulMaxSize;
    m_pszTempMessage = XNEW(char[s_ulLineSize]);
    if (!m_pszTempMessage)
        return xErrorTxt("CCachedLog::Init: Out of mem (m_pszTempMessage).");
    m_pszTempMessageF = XNEW(char[s_ulLineSize]);
    if (!m_pszTempMessageF)
        return xErrorTxt("CCachedLog::Init: Out of mem (m_pszTempMessageF).");
    m_pszDefaultModule = CopyText("Unknown Module");
    if (!m_pszDefaultModule)
        return xErrorTxt("CCachedLog::Init: Out of mem (m_pszDefaultModule).");
    m_pszDefaultMessage = CopyText("No message.");
    if (!m_pszDefaultMessage)
        return xErrorTxt("CCachedLog::Init: Out of mem (m_pszDefaultMessage).");
    m_ulCacheUsed = 0;
    if (ulCacheSize)
    {
        m_pCache = XNEW(char[ulCacheSize]);
        if (!m_pCache)
            return xErrorTxt("CCachedLog::Init: Out of mem (m_pCache).");
    }
    m_ulCacheSize = ulCacheSize;
    return 1;
}

void CCachedLog::LogMessage(xulong ulLevel, const char *pszModule, const char *pszMessage)
{
    if (!pszModule || !pszMessage || !m_pszTempMessage)
        return;
    const time_t now = time(nullptr);
    const tm *const pNow = localtime(&now);
    char szTime[16] = "";
    if (pNow)
        strftime(szTime, sizeof(szTime), "%Y%m%d %H%M%S", pNow);
    const int nModule = (int)std::min(strlen(pszModule), (size_t)s_nTextSize);
    const int nLen = snprintf(m_pszTempMessage, s_ulLineSize, "%s %.*s %.*s\n", szTime, nModule, pszModule,
                              s_nTextSize - nModule, pszMessage);
    if (nLen > 0)
        WriteToLog(m_pszTempMessage, (xulong)nLen);
}

void CCachedLog::LogMessageF(xulong ulLevel, const char *pszModule, const char *pszFormat, ...)
{
    if (!pszFormat || !m_pszTempMessageF)
        return;
    va_list args;
    va_start(args, pszFormat);
    vsnprintf(m_pszTempMessageF, s_ulLineSize, pszFormat, args);
    va_end(args);
    LogMessage(ulLevel, pszModule, m_pszTempMessageF);
}

void CCachedLog::WriteToLog(const void *pData, xulong ulSize)
{
    if (!m_pCache)
    {
        WriteToDisc(pData, ulSize, 0);
        return;
    }
    if (!pData)
        return;
    for (const char *pFrom = (const char *)pData;;)
    {
        const xulong ulPart = std::min(ulSize, m_ulCacheSize - m_ulCacheUsed);
        memcpy((char *)m_pCache + m_ulCacheUsed, pFrom, ulPart);
        m_ulCacheUsed += ulPart;
        ulSize -= ulPart;
        if (!ulSize)
            return;
        pFrom += ulPart;
        WriteToDisc(m_pCache, m_ulCacheSize, 0);
        m_ulCacheUsed = 0;
    }
}

void CCachedLog::WriteToDisc(const void *pData, xulong ulSize, int nFlush)
{
    if (!pData || !m_pszFileName || !ulSize)
        return;
    FILE *const pFile = OpenStream(m_pszFileName, "ab");
    if (!pFile)
        return;
    long lPos = -1;
    if (!fseek(pFile, 0, SEEK_END))
        lPos = ftell(pFile);
    if (lPos == -1 || (unsigned long)lPos < m_ulMaxSize)
        fwrite(pData, 1, ulSize, pFile);
    if (nFlush)
        fflush(pFile);
    fclose(pFile);
}
