#pragma once

#include "tarvix/file.h"

/// One level of a XIFF file: the data of the chunk that was entered there.
struct TXIFFLevel
{
    xulong ulStart; ///< from the start of the file
    xulong ulLen;   ///< bytes; 0 for a length that is not known, up to the end of the file
    xulong ulReserved;
};

enum
{
    XIFF_MAX_DEPTH = 16 ///< levels of chunks, the root among them
};

/// A file that is a tree of named chunks. A chunk is its name, ended by a
/// zero byte, a 32-bit length of its data in the byte order that the flags of
/// Open choose, and the data: bytes, or further chunks. There is no padding.
/// The root is named "XIFF" and ends with the file.
///
/// A reader calls Open, FindChunk, EnterChunk, reads, ExitChunk; a writer Open,
/// AddChunk, writes, EndChunk, Close. Positions and sizes are those of the chunk
/// at hand. Results are 1 or 0; trouble with the file reports as in CFile.
class TARVIX_API CXIFF : public CFile
{
public:
    CXIFF();

    /// Enters the root, or writes its header to a new file.
    /// @return 0 with a text when the file is no XIFF file; it is open all the same until Close
    xlong Open(const char *pszPath, xlong lFlags) override;
    /// Finds a chunk by name and goes to its header. The search only ends with
    /// the file: it walks on into the chunks behind the one that was entered.
    /// @param plLen      receives the length; may be null
    /// @param bContinue  0 searches from the first chunk of the level, otherwise from the position
    /// @return 0, mostly without a report, when there is none; the position is then undefined
    xlong FindChunk(const char *pszName, xlong *plLen, xlong bContinue);
    /// From a chunk's header into its data. @return 0 with a text at the deepest level
    xlong EnterChunk();
    /// To the first chunk of the parent's level. @return 0 outside the root
    xlong ExitChunk();
    /// To the first chunk of the level.
    xlong FirstChunk();
    /// From a chunk's header to the next one. The end of the level is not looked at.
    xlong NextChunk();
    /// Writes a chunk's header and enters it.
    /// @param lLen  0 lets EndChunk measure the length
    /// @return 0 with a text at the deepest level
    xlong AddChunk(const char *pszName, xlong lLen);
    /// Writes the length of the chunk that was added last, and leaves it where
    /// the position stands. @return 1 also when none is open
    xlong EndChunk();
    /// Ends all chunks that were added.
    void Close() override;
    ~CXIFF() override;

    xlong m_lDepth;            ///< 0 outside the root
    TXIFFLevel *m_pChunkStack; ///< null while closed
    xlong m_lReserved;
    xlong m_lOpenChunks; ///< added and not ended

private:
    xlong ReadHeader(const char *pszName, bool &bSame, xlong &lLen);
    void SetLevel();
};
