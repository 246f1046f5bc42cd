#pragma once

#include "tarvix/file.h"

/// A file read or written bit by bit: the first bit is the highest of a byte,
/// and of a field. Reading and writing must not be mixed.
class TARVIX_API CBitFile : public CFile
{
public:
    CBitFile();
    /// Closes the file; bits that were not flushed are lost.
    ~CBitFile() override;

    /// Behind the end of the file the bits of the last byte come again.
    short ReadBit();
    /// @param sCount  bits; below 1 gives 0
    short ReadBits(short sCount);
    /// The same with an answer at the end of the file.
    /// @param lCount  0 to 32
    /// @return 1; 0 without a report when the file ends first
    xlong TryReadBits(xlong lCount, xulong *pulValue);
    /// @param ucBit  0 or 1
    void WriteBit(unsigned char ucBit);
    /// Writes the low ucCount bits.
    void WriteBits(xulong ulValue, unsigned char ucCount);
    /// Writes a part byte, filled up with zeros below.
    void FlushBits();
    /// Forgets a part byte.
    void FlushBitbuf();

    unsigned char m_ucBitBuffer;
    unsigned char m_ucBitCount; ///< bits left to read, or gathered to write
};

/// The same on a block of memory.
class TARVIX_API CBitStream
{
public:
    CBitStream();

    /// @param pData  not owned; large enough for what is read or written
    void InitStream(unsigned char *pData);
    /// @param lCount  bits; below 1 gives 0, and of more than 32 the last 32 are returned
    xulong ReadBits(xlong lCount);
    /// @param lCount  bits; those above 32 are zeros
    void WriteBits(xulong ulValue, xlong lCount);
    /// Writes a part byte; bits that follow complete it.
    void FlushBits();
    /// Forgets a part byte and goes back to the start.
    void FlushBitbuf();
    /// @return bytes done
    xlong GetLen();

    unsigned char m_ucBuffer;
    unsigned char m_ucCount; ///< bits left to read, or gathered to write
    unsigned char *m_pData;
    xlong m_lPos;
};
