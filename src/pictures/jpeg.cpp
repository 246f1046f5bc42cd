#include "tarvix/jpeg.h"

#include "pictures/jpegkernels.h"
#include "pictures/scrambled.h"
#include "tarvix/bitmap.h"
#include "tarvix/error.h"
#include "tarvix/globals.h"
#include "tarvix/strings.h"

#include <algorithm>
#include <stdint.h>
#include <string.h>

namespace
{
const char s_szNoError[] = "JPG - No error";

enum
{
    START_OF_IMAGE = 0xd8,
    FRAME = 0xc0,
    SCAN = 0xda,
    // Pictures up to this size are made without asking whether the file can fill them.
    FREE_BYTES = 0x4000000,
    CALLBACK_ROWS = 32,
    LIMIT_BYTES = 1408,
    LIMIT_CENTRE = 256
};

xlong CeilDiv(xlong lValue, xlong lBy)
{
    return (lValue + lBy - 1) / lBy;
}

const unsigned char *RangeLimit()
{
    return (const unsigned char *)glb->m_pJpegRange;
}

// Clamps indices from -256 to 1151; and, 128 behind the centre and modulo
// 1024, what the transform gives around 0.
void FillLimitTable(unsigned char *pTable)
{
    unsigned char *pCentre = pTable + LIMIT_CENTRE;
    memset(pTable, 0, LIMIT_BYTES);
    for (int i = 0; i < 256; ++i)
        pCentre[i] = (unsigned char)i;
    memset(pCentre + 256, 255, 384);
    for (int i = 0; i < 128; ++i)
        pCentre[1024 + i] = (unsigned char)i;
}
} // namespace

CJPGPic::CJPGPic()
{
    m_pszError = s_szNoError;
    // Everything behind the base is plain data.
    memset((void *)&m_bCrypt, 0, (size_t)((char *)(this + 1) - (char *)&m_bCrypt));
    if (glb && glb->m_pPicTypeList)
        glb->m_pPicTypeList->Register(this);
}

CJPGPic::~CJPGPic()
{
    Free();
}

xlong CJPGPic::Load(const char *pszFileName, CBitmapBase *pBitmap, void *pParameters)
{
    CFile file;
    if (!file.Open(pszFileName, FILE_READ))
    {
        // CBitmap::Load hands on the type's text.
        m_pszError = glb->m_szErrorBuffer;
        return glb->m_Error.SetErrorf("JPG - Unable to open \"%s\"", pszFileName);
    }
    const xlong lOk = Load(&file, pBitmap, nullptr);
    file.Close();
    return lOk;
}

xlong CJPGPic::Load(CFile *pFile, CBitmapBase *pBitmap, void *pParameters)
{
    if (glb->m_pfnLoadData)
        glb->m_pfnLoadData();
    Free();
    m_pszError = s_szNoError;
    m_pFile = pFile;
    m_pBitmap = pBitmap;
    m_bCrypt = IsScrambled(pFile, START_OF_IMAGE << 8, 0xff00);
    unsigned short usStart;
    const xlong lOk = ReadWord(&usStart) && (usStart & 0xff) == START_OF_IMAGE && InitJpeg() && ReadJFIFHeader() &&
                      ReadMarkers() == FRAME && DecodeFrame();
    ReturnRaw();
    Free();
    if (!lOk && m_pszError == s_szNoError)
        m_pszError = "JPG - Damaged or cut off";
    return lOk;
}

xlong CJPGPic::Save(const char *pszFileName, CBitmapBase *pBitmap, void *pParameters, CRect *pArea, xlong lFlags)
{
    return SetError("JPG - Save function not yet implemented", 0);
}

xlong CJPGPic::Save(CFile *pFile, CBitmapBase *pBitmap, void *pParameters, CRect *pArea, xlong lFlags)
{
    return SetError("JPG - Save function not yet implemented", 0);
}

xlong CJPGPic::IsType(const char *pszName, const char *pszExtension)
{
    return pszExtension && !xStricmp(pszExtension, "jpg");
}

xlong CJPGPic::GetDesc(const char **ppszExtension, const char **ppszDescription)
{
    if (ppszExtension)
        *ppszExtension = "jpg";
    if (ppszDescription)
        *ppszDescription = "JPEG";
    return 1;
}

xlong CJPGPic::InitJpeg()
{
    m_uRestartInterval = 0;
    m_lScans = 0;
    m_uUnreadMarker = 0;
    m_uWidth = m_uHeight = 0;
    if (m_bHasRange)
        return 1;
    if (!glb->m_pJpegRangeBlock)
    {
        unsigned char *pTable = XNEW(unsigned char[LIMIT_BYTES]);
        if (!pTable)
            return xError(XERR_MEMORY);
        FillLimitTable(pTable);
        glb->m_pJpegRangeBlock = pTable;
        glb->m_pJpegRange = pTable + LIMIT_CENTRE;
    }
    ++glb->m_lJpegUsers;
    m_bHasRange = 1;
    return 1;
}

xlong CJPGPic::DecodeFrame()
{
    if (!ReadFrameHeader() || ReadMarkers() != SCAN || !InitialSetup())
        return 0;
    m_pBitmap->Free();
    if (!CanFill() || !m_pBitmap->CreateRGB(m_uWidth, m_uHeight, 24, 8, 8, 8, 0, 8, 16, 0))
        return 0;
    for (xlong i = 0; i < m_ucComponents; ++i)
    {
        // Apart from the samples: room for the wide conversions, and rows that
        // do not all fall on the same lines of the cache.
        TRowBuffer &rows = m_Rows[i];
        rows.m_lPitch = (8 * m_pComps[i].m_lWidthInBlocks + 63) / 64 * 64 + JPEG_ROW_SLACK;
        const size_t ulSize = (size_t)rows.m_lPitch * 8 * (size_t)m_pComps[i].m_lV;
        rows.m_pBlock = XNEW(unsigned char[ulSize]);
        if (!rows.m_pBlock)
            return xError(XERR_MEMORY);
        memset(rows.m_pBlock, 0, ulSize);
    }
    if (!InitUpsampler() || !InitIDCT() || !InitHuffmanDecoder() || !InitCoefCtrler() || !PerScanSetup() ||
        !StartHuffDecoderScan())
        return 0;
    if (m_ucComponents != 1)
        BuildYCCtoRGBTable();
    if (m_ucComponents != 1 && !m_pCrToRed)
        return xError(XERR_MEMORY);
    m_pBitmap->LockBitmapData();
    DecompressImage();
    m_pBitmap->ReleaseBitmapData();
    ReturnRaw();
    Free();
    return 1;
}

xlong CJPGPic::DecompressImage()
{
    StartUpsamplePass();
    unsigned char *pRow = m_pBitmap->m_pData;
    for (xlong y = 1; y <= m_uHeight; ++y, pRow += m_pBitmap->m_lPitch)
    {
        if (ProcessiMCURow(pRow) < 0)
            return 0;
        if (y % CALLBACK_ROWS == 0 && glb->m_pfnLoadData)
            glb->m_pfnLoadData();
    }
    return 1;
}

xlong CJPGPic::ProcessiMCURow(unsigned char *pOutput)
{
    if (m_lRowsUsed == 8 * m_sMaxV && DecompressiMCURow() < 0)
        return -1;
    Postprocess(pOutput, 0, 1);
    return 1;
}

xlong CJPGPic::InitialSetup()
{
    if (m_uWidth > MAX_SIZE || m_uHeight > MAX_SIZE)
        return 0;
    m_sMaxH = m_sMaxV = 1;
    for (xlong i = 0; i < m_ucComponents; ++i)
    {
        const TCompInfo &comp = m_pComps[i];
        if (comp.m_lH < 1 || comp.m_lH > 4 || comp.m_lV < 1 || comp.m_lV > 4)
            return 0;
        m_sMaxH = (short)std::max((xlong)m_sMaxH, comp.m_lH);
        m_sMaxV = (short)std::max((xlong)m_sMaxV, comp.m_lV);
    }
    for (xlong i = 0; i < m_ucComponents; ++i)
    {
        TCompInfo &comp = m_pComps[i];
        comp.m_lWidthInBlocks = CeilDiv(m_uWidth * comp.m_lH, 8 * m_sMaxH);
        comp.m_lHeightInBlocks = CeilDiv(m_uHeight * comp.m_lV, 8 * m_sMaxV);
    }
    m_lMCURows = CeilDiv(m_uHeight, 8 * m_sMaxV);
    return 1;
}

xlong CJPGPic::PerScanSetup()
{
    if (m_uScanComponents < 1 || m_uScanComponents > 4)
        return 0;
    const bool bAlone = m_uScanComponents == 1;
    m_lMCUsPerRow = bAlone ? m_ScanComps[0]->m_lWidthInBlocks : CeilDiv(m_uWidth, 8 * m_sMaxH);
    m_lMCUBlocks = 0;
    for (xlong i = 0; i < m_uScanComponents; ++i)
    {
        TCompInfo &comp = *m_ScanComps[i];
        comp.m_lMCUWidth = bAlone ? 1 : comp.m_lH;
        comp.m_lMCUHeight = bAlone ? 1 : comp.m_lV;
        comp.m_lMCUBlocks = comp.m_lMCUWidth * comp.m_lMCUHeight;
        comp.m_lMCUSampleWidth = comp.m_lMCUWidth * 8;
        const xlong lRestX = comp.m_lWidthInBlocks % comp.m_lMCUWidth;
        const xlong lRestY = comp.m_lHeightInBlocks % comp.m_lV;
        comp.m_lLastColWidth = lRestX ? lRestX : comp.m_lMCUWidth;
        comp.m_lLastRowHeight = lRestY ? lRestY : comp.m_lV;
        if (m_lMCUBlocks + comp.m_lMCUBlocks > MAX_MCU_BLOCKS)
            return 0;
        for (xlong j = 0; j < comp.m_lMCUBlocks; ++j)
            m_ucMCUMember[m_lMCUBlocks++] = (unsigned char)i;
    }
    m_lMCURow = 0;
    return 1;
}

xlong CJPGPic::InitIDCT()
{
    if (!m_pQuants)
        m_pQuants = XNEW(TJpegQuant[MAX_COMPONENTS]);
    if (!m_pQuants)
        return xError(XERR_MEMORY);
    for (xlong i = 0; i < m_uScanComponents; ++i)
    {
        TCompInfo &comp = *m_ScanComps[i];
        if (comp.m_lQuantTable > 3 || !m_Quant[comp.m_lQuantTable])
            return 0;
        comp.m_pQuant = m_Quant[comp.m_lQuantTable];
        JpegSetQuant(&m_pQuants[comp.m_lIndex], comp.m_pQuant);
    }
    return 1;
}

xlong CJPGPic::InitCoefCtrler()
{
    if (!m_pCoefs)
        m_pCoefs = XNEW(short[MAX_MCU_BLOCKS * 64]);
    return m_pCoefs ? 1 : xError(XERR_MEMORY);
}

void CJPGPic::InverseDCT(const TCompInfo *pComp, const short *pCoefs, xlong lLast, unsigned char *pOutput, xlong lPitch)
{
    const TJpegQuant &quant = m_pQuants[pComp->m_lIndex];
    if (lLast == JPEG_LARGE)
        JpegIdctPlain(pCoefs, quant, pOutput, lPitch, RangeLimit());
    else
        JpegIdctWide(pCoefs, quant, lLast, pOutput, lPitch);
}

// A scan of one component has MCUs of one block, so it goes on below each other.
void CJPGPic::StartiMCURow()
{
    const TCompInfo &comp = *m_ScanComps[0];
    m_lMCURowHeight = m_uScanComponents > 1 ? 1 : m_lMCURow < m_lMCURows - 1 ? comp.m_lV : comp.m_lLastRowHeight;
}

xlong CJPGPic::DecompressiMCURow()
{
    StartiMCURow();
    m_lRowsUsed = 0;
    const bool bLastRow = m_lMCURow == m_lMCURows - 1;
    for (xlong lOffset = 0; lOffset < m_lMCURowHeight; ++lOffset)
        for (xlong lColumn = 0; lColumn < m_lMCUsPerRow; ++lColumn)
        {
            memset(m_pCoefs, 0, (size_t)m_lMCUBlocks * 128);
            if (!DecodeMCU(m_pCoefs))
                return -1;
            xlong lBlock = 0;
            for (xlong i = 0; i < m_uScanComponents; ++i)
            {
                const TCompInfo &comp = *m_ScanComps[i];
                const TRowBuffer &rows = m_Rows[comp.m_lIndex];
                if (!comp.m_bNeeded)
                {
                    lBlock += comp.m_lMCUBlocks;
                    continue;
                }
                const xlong lUseful = lColumn < m_lMCUsPerRow - 1 ? comp.m_lMCUWidth : comp.m_lLastColWidth;
                unsigned char *pTo = rows.m_pBlock + (size_t)(lOffset * 8 * rows.m_lPitch) +
                                     (size_t)lColumn * (size_t)comp.m_lMCUSampleWidth;
                for (xlong y = 0; y < comp.m_lMCUHeight; ++y, pTo += 8 * rows.m_lPitch)
                {
                    const bool bInPicture = !bLastRow || lOffset + y < comp.m_lLastRowHeight;
                    for (xlong x = 0; x < comp.m_lMCUWidth; ++x, ++lBlock)
                        if (bInPicture && x < lUseful)
                            InverseDCT(&comp, m_pCoefs + lBlock * 64, m_ucMCULast[lBlock], pTo + 8 * x, rows.m_lPitch);
                }
            }
        }
    ++m_lMCURow;
    return 1;
}

void CJPGPic::BuildYCCtoRGBTable()
{
    if (!m_pCrToRed)
        m_pCrToRed = XNEW(xlong[4 * 256]);
    if (!m_pCrToRed)
        return;
    m_pCbToBlue = m_pCrToRed + 256;
    m_pCrToGreen = m_pCrToRed + 512;
    m_pCbToGreen = m_pCrToRed + 768;
    for (xlong i = 0; i < 256; ++i)
    {
        const xlong lValue = i - 128;
        m_pCrToRed[i] = (91881 * lValue + 32768) >> 16;
        m_pCbToBlue[i] = (116130 * lValue + 32768) >> 16;
        m_pCrToGreen[i] = -46802 * lValue;
        m_pCbToGreen[i] = -22554 * lValue + 32768;
    }
}

void CJPGPic::ConvertYCCtoRGB(const unsigned char *const *ppInput, unsigned char *pOutput, xlong lWidth)
{
    const xlong lDone = JpegColourWide(ppInput, false, pOutput, lWidth);
    const unsigned char *apRest[3] = { ppInput[0] + lDone, ppInput[1] + lDone, ppInput[2] + lDone };
    JpegColourPlain(apRest, { m_pCrToRed, m_pCbToBlue, m_pCrToGreen, m_pCbToGreen, RangeLimit() }, pOutput + 3 * lDone,
                    lWidth - lDone);
}

void CJPGPic::ConvertYtoRGB(const unsigned char *const *ppInput, unsigned char *pOutput, xlong lWidth)
{
    JpegGrey(ppInput[0], pOutput, lWidth);
}

void CJPGPic::StartUpsamplePass()
{
    m_lRowsLeft = m_uHeight;
    m_lRowsUsed = 8 * m_sMaxV;
}

xlong CJPGPic::Postprocess(unsigned char *pOutput, xlong lPitch, xlong lRows)
{
    lRows = std::min({ lRows, m_lRowsLeft, 8 * m_sMaxV - m_lRowsUsed });
    for (xlong i = 0; i < lRows; ++i, pOutput += lPitch)
    {
        ConvertRow(pOutput);
        ++m_lRowsUsed;
        --m_lRowsLeft;
    }
    return lRows;
}

xlong CJPGPic::InitUpsampler()
{
    for (xlong i = 0; i < m_ucComponents; ++i)
    {
        const TCompInfo &comp = m_pComps[i];
        TRowBuffer &rows = m_Rows[i];
        if (!comp.m_bNeeded)
        {
            rows.m_lMethod = UPSAMPLE_NONE;
            continue;
        }
        if (m_sMaxH % comp.m_lH || m_sMaxV % comp.m_lV)
            return 0;
        rows.m_lExpandH = m_sMaxH / comp.m_lH;
        rows.m_lExpandV = m_sMaxV / comp.m_lV;
        rows.m_lMethod = rows.m_lExpandH == 1 && rows.m_lExpandV == 1   ? UPSAMPLE_FULL
                         : rows.m_lExpandH == 2 && rows.m_lExpandV == 1 ? UPSAMPLE_H2
                         : rows.m_lExpandH == 2 && rows.m_lExpandV == 2 ? UPSAMPLE_H2V2
                                                                        : UPSAMPLE_COUNT;
        if (rows.m_lMethod == UPSAMPLE_FULL)
            continue;
        rows.m_pWide = XNEW(unsigned char[(size_t)rows.m_lPitch * (size_t)rows.m_lExpandH]);
        if (!rows.m_pWide)
            return xError(XERR_MEMORY);
    }
    return 1;
}

void CJPGPic::Free()
{
    for (xlong i = 0; i < 4; ++i)
    {
        XDELETE_ARRAY(m_Quant[i]);
        XDELETE(m_DCTables[i]);
        XDELETE(m_ACTables[i]);
        XDELETE(m_DCDerived[i]);
        XDELETE(m_ACDerived[i]);
        m_Quant[i] = nullptr;
        m_DCTables[i] = m_ACTables[i] = nullptr;
        m_DCDerived[i] = m_ACDerived[i] = nullptr;
    }
    for (TRowBuffer &rows : m_Rows)
    {
        XDELETE_ARRAY(rows.m_pBlock);
        XDELETE_ARRAY(rows.m_pWide);
        rows.m_pBlock = rows.m_pWide = nullptr;
    }
    XDELETE_ARRAY(m_pComps);
    m_pComps = nullptr;
    XDELETE_ARRAY(m_pQuants);
    m_pQuants = nullptr;
    XDELETE_ARRAY(m_pCrToRed);
    m_pCrToRed = m_pCbToBlue = m_pCrToGreen = m_pCbToGreen = nullptr;
    XDELETE_ARRAY(m_pCoefs);
    m_pCoefs = nullptr;
    XDELETE_ARRAY(m_pScan);
    m_pScan = nullptr;
    XDELETE_ARRAY(m_pRaw);
    m_pRaw = nullptr;
    m_lRawPos = m_lRawEnd = 0;
    if (m_bHasRange && glb && !--glb->m_lJpegUsers)
    {
        XDELETE_ARRAY((unsigned char *)glb->m_pJpegRangeBlock);
        glb->m_pJpegRangeBlock = glb->m_pJpegRange = nullptr;
    }
    m_bHasRange = 0;
}

// Whether a large picture is worth making: a header alone must not cost
// gigabytes. A block takes two bits at least.
xlong CJPGPic::CanFill()
{
    if ((int64_t)m_uWidth * m_uHeight * 3 <= FREE_BYTES)
        return 1;
    int64_t llBlocks = 0;
    for (xlong i = 0; i < m_uScanComponents; ++i)
        llBlocks += (int64_t)m_ScanComps[i]->m_lWidthInBlocks * m_ScanComps[i]->m_lHeightInBlocks;
    return ((int64_t)m_ulFileSize - Position()) * 4 >= llBlocks;
}

// The component's samples for the present row, each lTimes times.
const unsigned char *CJPGPic::WideRow(xlong lComponent, xlong lTimes)
{
    TRowBuffer &rows = m_Rows[lComponent];
    const unsigned char *pRow = rows.m_pBlock + (size_t)(m_lRowsUsed / rows.m_lExpandV) * (size_t)rows.m_lPitch;
    if (lTimes == 1)
        return pRow;
    // Rows that are wanted several times come one after the other.
    if (m_lRowsUsed % rows.m_lExpandV == 0)
        JpegWiden(pRow, rows.m_pWide, CeilDiv(m_uWidth, lTimes), lTimes);
    return rows.m_pWide;
}

// One row of pixels from the samples of the MCU row.
void CJPGPic::ConvertRow(unsigned char *pOutput)
{
    const unsigned char *apRows[3];
    if (m_ucComponents == 1)
    {
        apRows[0] = WideRow(0, 1);
        ConvertYtoRGB(apRows, pOutput, m_uWidth);
        return;
    }
    xlong lDone = 0;
    if (m_Rows[0].m_lExpandH == 1 && m_Rows[1].m_lExpandH == 2 && m_Rows[2].m_lExpandH == 2)
    {
        // Without doubling the chroma before, but for the end of the row.
        for (xlong i = 0; i < 3; ++i)
            apRows[i] = WideRow(i, 1);
        lDone = JpegColourWide(apRows, true, pOutput, m_uWidth);
        for (xlong i = 1; i < 3; ++i)
        {
            JpegWiden(apRows[i] + lDone / 2, m_Rows[i].m_pWide, CeilDiv(m_uWidth - lDone, 2), 2);
            apRows[i] = m_Rows[i].m_pWide;
        }
        apRows[0] += lDone;
    }
    else
        for (xlong i = 0; i < 3; ++i)
            apRows[i] = WideRow(i, m_Rows[i].m_lExpandH);
    ConvertYCCtoRGB(apRows, pOutput + 3 * lDone, m_uWidth - lDone);
}
