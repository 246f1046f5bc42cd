#pragma once

#include "tarvix/lzss.h"
#include "tarvix/memory.h"
#include "tarvix/types.h"

class CFile;

/// What the archive says of one file.
struct TArchiveEntry
{
    const char *pszName;
    xulong ulSize; ///< bytes of the file
    xulong ulData; ///< bytes in the archive
    xlong lStored; ///< 1 when they are not packed
};

/// Files packed one behind the other, to be unpacked from front to back. A
/// record, with its numbers in little-endian order:
///   4 bytes  packed size; 0xFFFFFFFF for data that is stored as it is
///   4 bytes  unpacked size
///   2 bytes  length of the name
///   the name, without a zero byte; it may hold directories
///   the data, packed as a CLzss stream or stored
/// Results are 1 or 0.
class TARVIX_API CArchive
{
public:
    CArchive();
    CArchive(const CArchive &) = delete;
    CArchive &operator=(const CArchive &) = delete;
    ~CArchive();

    /// For records over those that are there, from the first on.
    /// @return 0 also when one is open
    xlong Open(const char *pszFile);
    xlong OpenNew(const char *pszFile);
    void Close();
    xlong IsOpen();
    /// @return bytes, with what was added
    xulong GetSize();
    /// Files below 2,049 bytes and those of the extensions mp3, jpg and xrs are stored.
    /// @param pszStoreAs  name in the archive, of up to 65,535 characters; null for pszFile
    xlong AddFile(const char *pszFile, const char *pszStoreAs);
    /// Makes missing directories and replaces files. What was unpacked before a failure stays.
    /// @param pszDestDir  null for the names as they are
    /// @param bDelete     deletes the archive behind a good end
    xlong ExtractArchive(const char *pszArchive, const char *pszDestDir, int bDelete);
    /// Calls pfnEntry with each record, from front to back, until it returns 0;
    /// the entry and its name are only valid meanwhile.
    /// @return 1; 0 when a record is damaged or pfnEntry has ended the walk
    xlong ListArchive(const char *pszArchive, xlong (*pfnEntry)(const TArchiveEntry *pEntry, void *pUser), void *pUser);
    /// Progress of files that are packed; of an extraction, once for each file.
    /// @param lPeriod  milliseconds between calls
    xlong SetCallback(void (*pFunc)(xlong lPos, xlong lTotal, xlong bStart), xlong lPeriod);

    /// Whether ExtractArchive refuses, with a text, names that lead out of
    /// pszDestDir. Names are trusted at first.
    void SetSafeNames(int bSafe);
    /// Whether a name stays below the directory that it is put into: it is not
    /// empty or absolute, has no drive and no "..". @return 1 or 0
    static xlong IsSafeName(const char *pszName);

    CLzss m_Lzss;
    CFile *m_pFile;
    xulong m_ulSize;
    void (*m_pfnCallback)(xlong lPos, xlong lTotal, xlong bStart);
    char *m_pSource;
    char *m_pPacked;

private:
    typedef xlong (*TRecordWork)(CArchive &archive, CFile &file, const TArchiveEntry &entry, void *pUser);
    xlong WalkRecords(const char *pszArchive, TRecordWork pfnWork, void *pUser);
    xlong ExtractEntry(CFile &file, const TArchiveEntry &entry, const char *pszDestDir);
    xlong ReadData(CFile &file, const TArchiveEntry &entry);
    void FreeBuffers();

    int m_bSafeNames;
};
