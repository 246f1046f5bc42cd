#pragma once

#include "tarvix/pictype.h"

#include <stdint.h>

/// A Huffman table as it stands in the file.
struct THuffTable
{
    unsigned char m_ucCounts[17]; ///< codes of each length; the first is not used
    unsigned char m_ucSymbols[256];
};

/// A Huffman table made ready for decoding.
struct TDerivedTbl
{
    enum
    {
        FAST_BITS = 10
    };

    xlong m_lMaxCode[18];     ///< largest code of each length, -1 where there is none; the last one stops a search
    xlong m_lValueOffset[17]; ///< index of a length's first symbol less its first code
    const THuffTable *m_pTable;
    /// What begins with the bits of the index: a code, and the value behind it
    /// where that fits in too. From bit 0: bits to take, from bit 8: run, from
    /// bit 12: what it is, from bit 16: value or size of the value.
    xulong m_ulFast[1 << FAST_BITS];
    xlong m_lFastMost; ///< largest value in the above, either sign
};

/// View of the bits of a scan. Stuffed bytes are gone from what it points at,
/// and zeros lie behind the last byte before a marker.
struct TBitreadWorkingState
{
#ifdef _WIN32
#ifdef _WIN64
    typedef uint64_t TWord;
#else
    typedef uint32_t TWord;
#endif
#else
    typedef uintptr_t TWord;
#endif

    TWord m_Buffer;               ///< next bits, the first one on top
    xlong m_lBits;                ///< of them, those that count
    const unsigned char *m_pNext; ///< byte behind those bits
    const unsigned char *m_pEnd;
};

struct TJpegQuant;

/// A component of the frame. Sizes are in samples of this component.
struct TCompInfo
{
    xlong m_lIdentifier;
    xlong m_lIndex;
    xlong m_lH; ///< horizontal sampling factor
    xlong m_lV; ///< vertical sampling factor
    xlong m_lQuantTable;
    xlong m_lDCTable;
    xlong m_lACTable;
    xlong m_lWidthInBlocks;
    xlong m_lHeightInBlocks;
    xlong m_bNeeded;
    xlong m_lMCUWidth;  ///< blocks of an MCU beside each other
    xlong m_lMCUHeight; ///< blocks of an MCU above each other
    xlong m_lMCUBlocks;
    xlong m_lMCUSampleWidth;
    xlong m_lLastColWidth;  ///< blocks of the last MCU of a row that lie in the picture
    xlong m_lLastRowHeight; ///< rows of blocks of the last MCU row that lie in the picture
    const xlong *m_pQuant;  ///< dequantisation table in natural order, not owned
};

/// Reader of baseline JPEG pictures that begin with a JFIF header. What it
/// reads becomes a bitmap of 24 bits, blue first. One load at a time.
///
/// Load runs the stages below, which are open for a program that wants to look
/// at a file without decoding all of it. Those that can fail give 0, without a
/// text where nothing else is said; damaged entropy data is no failure and
/// shows in the picture.
class TARVIX_API CJPGPic : public CPicType
{
public:
    enum
    {
        MAX_COMPONENTS = 10,
        MAX_MCU_BLOCKS = 10,
        MAX_SIZE = 65500 ///< pixels, in both directions
    };

    /// Registers itself with the globals' list.
    CJPGPic();
    CJPGPic(const CJPGPic &) = default;
    CJPGPic &operator=(const CJPGPic &) = default;
    ~CJPGPic() override;

    xlong Load(const char *pszFileName, CBitmapBase *pBitmap, void *pParameters) override;
    /// Leaves the file behind the last byte that was looked at.
    xlong Load(CFile *pFile, CBitmapBase *pBitmap, void *pParameters) override;
    /// @return 0: there is no writer
    xlong Save(const char *pszFileName, CBitmapBase *pBitmap, void *pParameters, CRect *pArea, xlong lFlags) override;
    xlong Save(CFile *pFile, CBitmapBase *pBitmap, void *pParameters, CRect *pArea, xlong lFlags) override;
    /// Knows "jpg" alone.
    xlong IsType(const char *pszName, const char *pszExtension) override;
    xlong GetDesc(const char **ppszExtension, const char **ppszDescription) override;

    /// Takes the shared table and forgets an earlier picture.
    xlong InitJpeg();
    /// The APP0 segment, which must be the first.
    xlong ReadJFIFHeader();
    /// Reads segments up to one that needs the caller.
    /// @return 0xC0 for a baseline frame, 0xDA for a scan whose header has been
    ///         read, 0xD9 for the end; 0 with a text for other kinds of JPEG
    xlong ReadMarkers();
    /// The frame and its first scan, into the bitmap.
    xlong DecodeFrame();
    xlong DecompressImage();
    /// @param pOutput  receives one row of pixels
    /// @return 1; -1 when the data can't be followed any farther
    xlong ProcessiMCURow(unsigned char *pOutput);
    xlong ReadFrameHeader();
    /// Sizes of the components, in blocks.
    xlong InitialSetup();
    /// Sizes of the MCUs of the scan.
    xlong PerScanSetup();
    /// Goes to the next marker, which is then the unread one.
    /// @return 0 at the end of the file
    xlong GetNextMarker();
    xlong ReadDQTMarker();
    xlong ReadDRIMarker();
    xlong ProcessRestart();
    xlong ReadRestartMarker();
    xlong ReadDHTMarker();
    xlong ReadSOSMarker();
    /// Connects the components with their dequantisation tables.
    xlong InitIDCT();
    xlong InitHuffmanDecoder();
    xlong StartHuffDecoderScan();
    /// @param bDC        symbols are sizes alone
    /// @param ppDerived  made on first use, deleted by the caller
    /// @return 0 for codes that can't be, symbols that can't be, and for no memory
    xlong MakeDerivedHuffTable(const THuffTable *pTable, xlong bDC, TDerivedTbl **ppDerived);
    /// @param pBlocks  receives the coefficients, 64 for each block of the MCU,
    ///                 in the order of m_ucOrder
    xlong DecodeMCU(short *pBlocks);
    /// Puts bytes of the scan behind those of the state, enough for any MCU, and
    /// zeros behind the last one before a marker or the end of the file.
    void FillBitBuffer(TBitreadWorkingState *pState);
    /// Takes the code at the head of the bits, of which 17 must be there.
    /// @param lMinBits  length to begin with
    /// @return its symbol; 0 when no code fits
    xlong DecodeHuff(TBitreadWorkingState *pState, const TDerivedTbl *pDerived, xlong lMinBits);
    xlong InitCoefCtrler();
    /// @param pCoefs   64 coefficients in the order of m_ucOrder
    /// @param lLast    how many follow the first in the file's order; or 64 if
    ///                 some could be too large for the fast ways
    /// @param pOutput  receives 8 rows of 8 samples
    /// @param lPitch   bytes between the rows
    void InverseDCT(const TCompInfo *pComp, const short *pCoefs, xlong lLast, unsigned char *pOutput, xlong lPitch);
    void StartiMCURow();
    /// @return 1; -1 when the data can't be followed any farther
    xlong DecompressiMCURow();
    void BuildYCCtoRGBTable();
    /// @param ppInput  a row of each of three components
    void ConvertYCCtoRGB(const unsigned char *const *ppInput, unsigned char *pOutput, xlong lWidth);
    void ConvertYtoRGB(const unsigned char *const *ppInput, unsigned char *pOutput, xlong lWidth);
    void StartUpsamplePass();
    /// Upsamples and converts.
    /// @param pOutput  the rows of pixels
    /// @param lPitch   bytes between them
    /// @param lRows    how many are wanted
    /// @return how many were made
    xlong Postprocess(unsigned char *pOutput, xlong lPitch, xlong lRows);
    xlong InitUpsampler();
    xlong Read(void *pBuffer, xulong ulLen);
    xlong ReadByte(unsigned char *pucValue);
    /// The first byte is the upper one.
    xlong ReadWord(unsigned short *pusValue);
    /// Releases all that a load has made.
    void Free();

    xlong m_bCrypt;         ///< the file being loaded is scrambled
    CFile *m_pFile;         ///< not owned
    CBitmapBase *m_pBitmap; ///< not owned
    unsigned short m_uWidth;
    unsigned short m_uHeight;
    unsigned char m_ucComponents;
    unsigned short m_uRestartInterval; ///< MCUs, 0 for no restarts
    unsigned short m_uUnreadMarker;    ///< 0 for none
    short m_uScanComponents;
    short m_sMaxH;
    short m_sMaxV;
    xlong *m_Quant[4]; ///< 64 in natural order
    THuffTable *m_DCTables[4];
    THuffTable *m_ACTables[4];
    TCompInfo *m_pComps;
    TCompInfo *m_ScanComps[4];

    /// How a component's samples become those of pixels.
    enum
    {
        UPSAMPLE_NONE,  ///< not needed
        UPSAMPLE_FULL,  ///< its rows are used as they are
        UPSAMPLE_H2,    ///< two to one horizontally
        UPSAMPLE_H2V2,  ///< and vertically
        UPSAMPLE_COUNT, ///< m_lExpandH to one horizontally, m_lExpandV vertically
    };
    struct TRowBuffer
    {
        unsigned char *m_pBlock; ///< owned: samples of an MCU row
        xlong m_lPitch;
        xlong m_lMethod;
        xlong m_lExpandH;
        xlong m_lExpandV;
        unsigned char *m_pWide; ///< owned: a row of samples of pixels
    };
    TRowBuffer m_Rows[MAX_COMPONENTS];
    xlong *m_pCrToRed; ///< owned: four tables of 256
    xlong *m_pCbToBlue;
    xlong *m_pCrToGreen;
    xlong *m_pCbToGreen;

    xlong m_lScans;
    unsigned char m_ucSpectralStart;
    unsigned char m_ucSpectralEnd;
    unsigned char m_ucApproximation;
    TDerivedTbl *m_DCDerived[4];
    TDerivedTbl *m_ACDerived[4];
    TBitreadWorkingState m_Bits;
    xlong m_lPrediction[MAX_COMPONENTS];
    xlong m_lRestartsToGo; ///< MCUs up to the next restart
    /// Place of each coefficient of the file's order in a block in memory, with
    /// a guard for runs that lead past its end.
    unsigned char m_ucOrder[80];
    /// Blocks of an MCU: their component, and place of the last coefficient.
    unsigned char m_ucMCUMember[MAX_MCU_BLOCKS];
    unsigned char m_ucMCULast[MAX_MCU_BLOCKS];
    xlong m_lMCUBlocks;
    xlong m_lMCUsPerRow;
    xlong m_lMCURows;      ///< of the picture
    xlong m_lMCURow;       ///< the next one
    xlong m_lMCURowHeight; ///< MCUs above each other in it
    xlong m_lRowsUsed;     ///< of the pixels of the MCU row that was decompressed last
    xlong m_lRowsLeft;     ///< of the picture
    short *m_pCoefs;       ///< owned: the blocks of an MCU

private:
    xlong Seek(xulong ulPos);
    xulong Position() const;
    xlong FillRaw();
    void ReturnRaw();
    xlong SkipSegment();
    xlong CanFill();
    const unsigned char *WideRow(xlong lComponent, xlong lTimes);
    void ConvertRow(unsigned char *pOutput);

    unsigned char *m_pRaw; ///< owned: bytes of the file, unscrambled
    xlong m_lRawPos;
    xlong m_lRawEnd;
    xulong m_ulRawStart; ///< place of m_pRaw in the file
    xulong m_ulFileSize;
    unsigned char *m_pScan; ///< owned: what m_Bits points at
    xlong m_bScanEnd;       ///< a marker or the end of the file has been met
    TJpegQuant *m_pQuants;  ///< owned: of each component, for the transform
    xlong m_bHasRange;      ///< counted as user of the shared table
};
