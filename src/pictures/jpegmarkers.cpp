#include "tarvix/crypt.h"
#include "tarvix/error.h"
#include "tarvix/globals.h"
#include "tarvix/jpeg.h"

#include <algorithm>
#include <string.h>

// The file as bytes, and the segments between its markers.

namespace
{
enum
{
    RAW_BYTES = 0x10000,
    HIGHEST_JFIF_MAJOR = 1
};

enum
{
    SOF0 = 0xc0,
    DHT = 0xc4,
    JPG = 0xc8,
    SOF15 = 0xcf,
    EOI = 0xd9,
    SOS = 0xda,
    DQT = 0xdb,
    DNL = 0xdc,
    DRI = 0xdd
};
} // namespace

xlong CJPGPic::ReadJFIFHeader()
{
    unsigned short usMarker, usLength, usVersion;
    char szMark[5];
    if (!ReadWord(&usMarker) || (usMarker & 1))
        return 0;
    const xulong ulSegment = Position();
    if (!ReadWord(&usLength) || !Read(szMark, sizeof szMark) || memcmp(szMark, "JFIF", sizeof szMark) != 0 ||
        !ReadWord(&usVersion) || usVersion >> 8 != HIGHEST_JFIF_MAJOR)
        return 0;
    return Seek(ulSegment + usLength);
}

xlong CJPGPic::ReadMarkers()
{
    for (;;)
    {
        if (!m_uUnreadMarker && !GetNextMarker())
            return 0;
        const unsigned short usMarker = m_uUnreadMarker;
        m_uUnreadMarker = 0;
        xlong lOk;
        switch (usMarker)
        {
        case SOF0:
        case EOI:
            return usMarker;
        case DHT:
            lOk = ReadDHTMarker();
            break;
        case SOS:
            return ReadSOSMarker() ? SOS : 0;
        case DQT:
            lOk = ReadDQTMarker();
            break;
        case DNL:
        {
            unsigned short usLength;
            lOk = ReadWord(&usLength) && ReadWord(&m_uHeight);
            break;
        }
        case DRI:
            lOk = ReadDRIMarker();
            break;
        default:
            if (usMarker > SOF0 && usMarker <= SOF15 && usMarker != JPG)
            {
                const char *pszText = "Unhandle jpeg format. We only support baseline jpegs!";
                m_pszError = pszText; // for those who ask the type for its text
                return xErrorTxt(pszText);
            }
            lOk = SkipSegment();
        }
        if (!lOk)
            return 0;
    }
}

xlong CJPGPic::ReadFrameHeader()
{
    const xulong ulSegment = Position();
    unsigned short usLength, usHeight;
    unsigned char ucPrecision, ucComponents;
    if (!ReadWord(&usLength) || !ReadByte(&ucPrecision) || ucPrecision != 8 || !ReadWord(&usHeight) ||
        !ReadWord(&m_uWidth) || !ReadByte(&ucComponents))
        return 0;
    if (usHeight)
        m_uHeight = usHeight;
    // A colour takes three components.
    if (ucComponents > MAX_COMPONENTS || ucComponents == 0 || ucComponents == 2)
        return 0;
    m_ucComponents = ucComponents;
    if (!m_pComps)
        m_pComps = XNEW(TCompInfo[MAX_COMPONENTS]);
    if (!m_pComps)
        return xError(XERR_MEMORY);
    memset(m_pComps, 0, MAX_COMPONENTS * sizeof(TCompInfo));
    for (xlong i = 0; i < m_ucComponents; ++i)
    {
        TCompInfo &comp = m_pComps[i];
        unsigned char aucFields[3];
        if (!Read(aucFields, sizeof aucFields))
            return 0;
        comp.m_lIdentifier = aucFields[0];
        comp.m_lIndex = i;
        comp.m_lH = aucFields[1] >> 4;
        comp.m_lV = aucFields[1] & 15;
        comp.m_lQuantTable = aucFields[2];
        comp.m_bNeeded = i < 3;
    }
    return Seek(ulSegment + usLength);
}

xlong CJPGPic::GetNextMarker()
{
    unsigned char ucByte;
    do
    {
        do
        {
            if (!ReadByte(&ucByte))
                return 0;
        } while (ucByte != 0xff);
        do
        {
            if (!ReadByte(&ucByte))
                return 0;
        } while (ucByte == 0xff);
    } while (!ucByte);
    m_uUnreadMarker = ucByte;
    return 1;
}

xlong CJPGPic::ReadDQTMarker()
{
    unsigned short usLength;
    if (!ReadWord(&usLength))
        return 0;
    for (xlong lLeft = usLength - 2; lLeft > 0;)
    {
        unsigned char ucTable, aucValues[128];
        if (!ReadByte(&ucTable) || (ucTable & 15) > 3)
            return 0;
        const xlong lBytes = ucTable >> 4 ? 2 : 1;
        xlong *&pQuant = m_Quant[ucTable & 15];
        if (!Read(aucValues, (xulong)(64 * lBytes)))
            return 0;
        if (!pQuant)
            pQuant = XNEW(xlong[64]);
        if (!pQuant)
            return xError(XERR_MEMORY);
        for (xlong i = 0; i < 64; ++i)
            pQuant[glb->m_ausJpegOrder[i] & 63] =
                lBytes == 2 ? aucValues[2 * i] << 8 | aucValues[2 * i + 1] : aucValues[i];
        lLeft -= 1 + 64 * lBytes;
    }
    return 1;
}

xlong CJPGPic::ReadDRIMarker()
{
    unsigned short usLength;
    return ReadWord(&usLength) && usLength == 4 && ReadWord(&m_uRestartInterval);
}

xlong CJPGPic::ReadDHTMarker()
{
    unsigned short usLength;
    if (!ReadWord(&usLength))
        return 0;
    for (xlong lLeft = usLength - 2; lLeft > 0;)
    {
        unsigned char ucTable;
        THuffTable table = {};
        if (!ReadByte(&ucTable) || (ucTable & ~0x10) > 3 || !Read(table.m_ucCounts + 1, 16))
            return 0;
        lLeft -= 17;
        xlong lSymbols = 0;
        for (xlong i = 1; i <= 16; ++i)
            lSymbols += table.m_ucCounts[i];
        if (lSymbols > 256 || lSymbols > lLeft || !Read(table.m_ucSymbols, (xulong)lSymbols))
            return 0;
        lLeft -= lSymbols;
        THuffTable *&pTable = (ucTable & 0x10 ? m_ACTables : m_DCTables)[ucTable & 3];
        if (!pTable)
            pTable = XNEW(THuffTable);
        if (!pTable)
            return xError(XERR_MEMORY);
        *pTable = table;
    }
    return 1;
}

xlong CJPGPic::ReadSOSMarker()
{
    unsigned short usLength;
    unsigned char ucCount;
    if (!ReadWord(&usLength) || !ReadByte(&ucCount) || ucCount < 1 || ucCount > 4 || usLength != 2 * ucCount + 6)
        return 0;
    m_uScanComponents = ucCount;
    for (xlong i = 0; i < ucCount; ++i)
    {
        unsigned char aucFields[2];
        if (!Read(aucFields, sizeof aucFields))
            return 0;
        TCompInfo *pComp = nullptr;
        for (xlong j = 0; m_pComps && j < m_ucComponents && !pComp; ++j)
            if (m_pComps[j].m_lIdentifier == aucFields[0])
                pComp = &m_pComps[j];
        if (!pComp)
            return 0;
        pComp->m_lDCTable = aucFields[1] >> 4;
        pComp->m_lACTable = aucFields[1] & 15;
        m_ScanComps[i] = pComp;
    }
    if (!ReadByte(&m_ucSpectralStart) || !ReadByte(&m_ucSpectralEnd) || !ReadByte(&m_ucApproximation))
        return 0;
    ++m_lScans;
    return 1;
}

xlong CJPGPic::Read(void *pBuffer, xulong ulLen)
{
    unsigned char *pTo = (unsigned char *)pBuffer;
    while (ulLen)
    {
        if (m_lRawPos == m_lRawEnd && !FillRaw())
            return 0;
        const xulong ulPart = std::min(ulLen, (xulong)(m_lRawEnd - m_lRawPos));
        memcpy(pTo, m_pRaw + m_lRawPos, ulPart);
        pTo += ulPart;
        ulLen -= ulPart;
        m_lRawPos += (xlong)ulPart;
    }
    return 1;
}

xlong CJPGPic::ReadByte(unsigned char *pucValue)
{
    if (m_lRawPos == m_lRawEnd && !FillRaw())
        return 0;
    *pucValue = m_pRaw[m_lRawPos++];
    return 1;
}

xlong CJPGPic::ReadWord(unsigned short *pusValue)
{
    unsigned char aucBytes[2];
    if (!Read(aucBytes, 2))
        return 0;
    *pusValue = (unsigned short)(aucBytes[0] << 8 | aucBytes[1]);
    return 1;
}

// Goes to a place in the file; one behind its end shows at the next reading.
xlong CJPGPic::Seek(xulong ulPos)
{
    if (ulPos >= m_ulRawStart && ulPos - m_ulRawStart <= (xulong)m_lRawEnd)
    {
        m_lRawPos = (xlong)(ulPos - m_ulRawStart);
        return 1;
    }
    if (!m_pFile->Seek((xlong)ulPos, FILE_SEEK_START))
        return 0;
    m_ulRawStart = ulPos;
    m_lRawPos = m_lRawEnd = 0;
    return 1;
}

xulong CJPGPic::Position() const
{
    return m_ulRawStart + (xulong)m_lRawPos;
}

// The next bytes of the file, when all before are used up.
xlong CJPGPic::FillRaw()
{
    if (!m_pRaw)
    {
        m_pRaw = XNEW(unsigned char[RAW_BYTES]);
        if (!m_pRaw)
            return xError(XERR_MEMORY);
        if (!m_pFile->GetPos(&m_ulRawStart, 0) || !m_pFile->GetSize(&m_ulFileSize))
            return 0;
    }
    m_ulRawStart += (xulong)m_lRawEnd;
    m_lRawPos = m_lRawEnd = 0;
    if (m_ulRawStart >= m_ulFileSize)
        return 0;
    const xulong ulPart = std::min(m_ulFileSize - m_ulRawStart, (xulong)RAW_BYTES);
    if (!m_pFile->Read(m_pRaw, ulPart))
        return 0;
    if (m_bCrypt)
        xDecrypt(m_pRaw, ulPart);
    m_lRawEnd = (xlong)ulPart;
    return 1;
}

// Leaves the file behind what was looked at.
void CJPGPic::ReturnRaw()
{
    if (m_pRaw)
        m_pFile->Seek((xlong)Position(), FILE_SEEK_START);
}

// A segment of no interest.
xlong CJPGPic::SkipSegment()
{
    const xulong ulSegment = Position();
    unsigned short usLength;
    return ReadWord(&usLength) && Seek(ulSegment + usLength);
}
