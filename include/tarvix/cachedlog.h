#pragma once

#include "tarvix/memory.h"
#include "tarvix/types.h"

/// Writes time-stamped lines to a text file, which is opened for each write
/// only: through a cache where one is wanted, so that a crash loses no more
/// than its contents. A line is "YYYYMMDD HHMMSS MODULE MESSAGE" in local time,
/// cut to 1,023 characters. Nothing reports once Init has succeeded.
class TARVIX_API CCachedLog
{
public:
    TARVIX_HEAP_CLASS

    CCachedLog();
    CCachedLog(const CCachedLog &) = default;
    CCachedLog &operator=(const CCachedLog &) = default;
    /// Writes what the cache holds.
    virtual ~CCachedLog();

    /// @param pszFileName  copied
    /// @param ulMaxSize    bytes: a file that has reached it gets nothing more
    /// @param ulCacheSize  bytes, 0 for no cache
    /// @return 1; 0 with a text
    int Init(const char *pszFileName, xulong ulMaxSize, xulong ulCacheSize);
    /// @param ulLevel  ignored
    void LogMessage(xulong ulLevel, const char *pszModule, const char *pszMessage);
    void LogMessageF(xulong ulLevel, const char *pszModule, const char *pszFormat, ...) TARVIX_PRINTF(4, 5);
    /// Bytes as they are; a full cache splits them.
    void WriteToLog(const void *pData, xulong ulSize);

    char *m_pszFileName;
    xulong m_ulMaxSize;
    char *m_pszTempMessage; ///< 1,024 bytes, as the next
    char *m_pszTempMessageF;
    char *m_pszDefaultModule;
    char *m_pszDefaultMessage;
    void *m_pCache;
    xulong m_ulCacheUsed;
    xulong m_ulCacheSize;

private:
    void WriteToDisc(const void *pData, xulong ulSize, int nFlush);
};
