#pragma once

#include "tarvix/memory.h"
#include "tarvix/types.h"

#include <stdio.h>

/// Flags of CFile::Open. Exactly one of the first four; the first one set wins.
enum
{
    FILE_READ = 0x01,
    FILE_WRITE = 0x02,
    FILE_READWRITE = 0x04,
    FILE_APPEND = 0x08,
    FILE_LITTLE_ENDIAN = 0x20,
    FILE_BIG_ENDIAN = 0x40,
    FILE_MAKE_DIRS = 0x100 ///< with FILE_WRITE or FILE_READWRITE: make missing directories
};

/// Flags of CFile::Seek and GetPos.
enum
{
    FILE_SEEK_START = 0x01,
    FILE_SEEK_CUR = 0x02,
    FILE_SEEK_END = 0x04,
    FILE_ABSOLUTE = 0x80 ///< ignore the bounds
};

/// Interface of a file. Offsets and sizes are 32-bit byte counts. Results are
/// 1, or 0 with a report, where nothing else is said.
class TARVIX_API CFileBase
{
public:
    TARVIX_HEAP_CLASS

    virtual xlong Open(const char *pszPath, xlong lFlags) = 0;
    virtual xlong Read(void *pBuf, xulong ulLen) = 0;
    virtual xlong SetFileBounds(xulong ulStart, xulong ulLen) = 0;
    virtual xlong Write(const void *pBuf, xulong ulLen) = 0;
    virtual xlong ReadByte(signed char *pcValue) = 0;
    virtual xlong WriteByte(signed char cValue) = 0;
    virtual xlong ReadWord(short *psValue) = 0;
    virtual xlong WriteWord(short sValue) = 0;
    virtual xlong ReadLong(xlong *plValue) = 0;
    virtual xlong WriteLong(xlong lValue) = 0;
    virtual xlong ReadFloat(float *pfValue) = 0;
    virtual xlong WriteFloat(float fValue) = 0;
    virtual xlong ReadDouble(double *pdValue) = 0;
    virtual xlong WriteDouble(double dValue) = 0;
    virtual xlong Seek(xlong lOffset, short sFlags) = 0;
    virtual xlong GetPos(xulong *pulPos, xlong lFlags) = 0;
    virtual xlong GetSize(xulong *pulSize) = 0;
    virtual xlong ReadString(char *pszBuf, xlong lLen) = 0;
    virtual xlong Print(const char *pszFormat, ...) TARVIX_PRINTF(2, 3) = 0;
    virtual void Close() = 0;
    virtual ~CFileBase();
};

/// A buffered file, optionally seen through bounds inside it (an archive's
/// member, a chunk) and with a byte order of its own for the typed transfers.
class TARVIX_API CFile : public CFileBase
{
public:
    CFile();

    /// Does not close a file that is open already. Separators may be slash or
    /// back-slash; where the file system tells upper and lower case apart and
    /// the exact name is missing, a name that differs in case alone is opened.
    /// @return 0 with a text naming path and access
    xlong Open(const char *pszPath, xlong lFlags) override;
    /// Reads exactly ulLen bytes, not limited by the bounds.
    xlong Read(void *pBuf, xulong ulLen) override;
    /// Binds positions and sizes, checks nothing and moves nothing.
    /// @param ulLen  bytes; 0 means to the end of the file
    xlong SetFileBounds(xulong ulStart, xulong ulLen) override;
    xlong Write(const void *pBuf, xulong ulLen) override;
    /// @return 0 without a report at the end of the file
    xlong ReadByte(signed char *pcValue) override;
    xlong WriteByte(signed char cValue) override;
    xlong ReadWord(short *psValue) override;
    xlong WriteWord(short sValue) override;
    xlong ReadLong(xlong *plValue) override;
    xlong WriteLong(xlong lValue) override;
    xlong ReadFloat(float *pfValue) override;
    xlong WriteFloat(float fValue) override;
    xlong ReadDouble(double *pdValue) override;
    xlong WriteDouble(double dValue) override;
    /// @param sFlags  FILE_SEEK_..., alone or with FILE_ABSOLUTE
    xlong Seek(xlong lOffset, short sFlags) override;
    /// @param lFlags  0 or FILE_ABSOLUTE
    /// @return 0 with XERR_FILE_POS, also behind 2 GB, as GetSize for larger files
    xlong GetPos(xulong *pulPos, xlong lFlags) override;
    xlong GetSize(xulong *pulSize) override;
    /// One line with its line ending.
    /// @param lLen  size of the buffer
    /// @return length; 0 without a report at the end and on an error
    xlong ReadString(char *pszBuf, xlong lLen) override;
    /// A result of more than 10,000 characters is replaced by a notice.
    xlong Print(const char *pszFormat, ...) override TARVIX_PRINTF(2, 3);
    void Close() override;
    ~CFile() override;

    /// Hands buffered bytes to the system, so that a full disk shows now and
    /// not at Close, which can't tell. @return 0 with code 7
    xlong Flush();

    FILE *m_pFile;
    unsigned char m_ucNativeEndian; ///< FILE_LITTLE_ENDIAN or FILE_BIG_ENDIAN
    unsigned char m_bSwapBytes;
    xulong m_ulFileStart;
    xulong m_ulFileLen;
};
