#include "pictures/jpegkernels.h"
#include "tarvix/error.h"
#include "tarvix/globals.h"
#include "tarvix/jpeg.h"

#include <algorithm>
#include <stddef.h>
#include <stdint.h>
#include <string.h>

// Entropy decoding. FillBitBuffer takes the stuffed bytes out before and puts
// zeros behind the end, enough for the largest MCU, so that nothing is tested
// while an MCU is decoded.

namespace
{
typedef TBitreadWorkingState::TWord TWord;

enum
{
    WORD_BITS = 8 * sizeof(TWord),
    FAST_BITS = TDerivedTbl::FAST_BITS,
    // A block has 64 codes of 17 bits at most, with values of 15.
    MCU_BYTES = CJPGPic::MAX_MCU_BLOCKS * 64 * 32 / 8 + 64,
    SCAN_BYTES = 0x4000
};

// What an entry of the fast table is.
enum
{
    FAST_VALUE = 0x0000, // code and value
    FAST_END = 0x1000,   // code of the end of the block
    FAST_SIZE = 0x2000,  // code, the value follows
    FAST_LONG = 0x3000,  // a longer code, or none
    FAST_KIND = 0x3000
};

// The value that lSize bits stand for.
inline xlong Extended(xlong lBits, xlong lSize)
{
    return lBits < 1 << (lSize - 1) ? lBits - (1 << lSize) + 1 : lBits;
}

#define STEP __attribute__((always_inline)) inline

// Makes at least WORD_BITS - 8 bits count. The bits below them are those that
// follow too: to put them there again changes nothing.
STEP void Refill(TBitreadWorkingState &bits)
{
    TWord word;
    memcpy(&word, bits.m_pNext, sizeof word);
    if (sizeof word == 8)
        word = (TWord)__builtin_bswap64(word);
    else
        word = (TWord)__builtin_bswap32((uint32_t)word);
    bits.m_Buffer |= word >> bits.m_lBits;
    bits.m_pNext += (WORD_BITS - 1 - bits.m_lBits) >> 3;
    bits.m_lBits |= WORD_BITS - 8;
}

STEP void Drop(TBitreadWorkingState &bits, xulong ulCount)
{
    bits.m_Buffer <<= ulCount;
    bits.m_lBits -= (xlong)ulCount;
}

STEP xlong TakeValue(TBitreadWorkingState &bits, xlong lSize)
{
    if (WORD_BITS < 64)
        Refill(bits);
    const xlong lValue = (xlong)(bits.m_Buffer >> (WORD_BITS - lSize));
    Drop(bits, (xulong)lSize);
    return Extended(lValue, lSize);
}

// A code that is not in the fast table.
xlong LongCode(TBitreadWorkingState &bits, const TDerivedTbl &derived, xlong lMinBits)
{
    xlong lLength = lMinBits;
    while ((xlong)(bits.m_Buffer >> (WORD_BITS - lLength)) > derived.m_lMaxCode[lLength])
        ++lLength;
    const xlong lCode = (xlong)(bits.m_Buffer >> (WORD_BITS - lLength));
    Drop(bits, (xulong)lLength);
    return lLength > 16 ? 0 : derived.m_pTable->m_ucSymbols[(lCode + derived.m_lValueOffset[lLength]) & 255];
}

STEP xlong DecodeDC(TBitreadWorkingState &bits, const TDerivedTbl &derived)
{
    Refill(bits);
    const xulong ulFast = derived.m_ulFast[bits.m_Buffer >> (WORD_BITS - FAST_BITS)];
    if ((ulFast & FAST_KIND) == FAST_VALUE)
    {
        Drop(bits, ulFast & 0xff);
        return (xlong)ulFast >> 16;
    }
    xlong lSize;
    if ((ulFast & FAST_KIND) == FAST_SIZE)
    {
        Drop(bits, ulFast & 0xff);
        lSize = (xlong)(ulFast >> 16);
    }
    else
        lSize = LongCode(bits, derived, FAST_BITS + 1);
    return lSize ? TakeValue(bits, lSize) : 0;
}

// The other coefficients of a block.
// @return place of the last one; what values that did not come from the fast
// table can reach is put into ulMost
STEP xlong DecodeAC(TBitreadWorkingState &bits, const TDerivedTbl &derived, const unsigned char *pOrder, short *pBlock,
                    xulong &ulMost)
{
    xlong k = 1;
    do
    {
        if (WORD_BITS < 64 || bits.m_lBits < 32)
            Refill(bits);
        const xulong ulFast = derived.m_ulFast[bits.m_Buffer >> (WORD_BITS - FAST_BITS)];
        if ((ulFast & FAST_KIND) == FAST_VALUE)
        {
            Drop(bits, ulFast & 0xff);
            k += (xlong)(ulFast >> 8 & 15);
            // For a run of 16 zeros this is the last of them.
            pBlock[pOrder[k]] = (short)(ulFast >> 16);
            ++k;
            continue;
        }
        xlong lSize;
        if ((ulFast & FAST_KIND) == FAST_SIZE)
        {
            Drop(bits, ulFast & 0xff);
            k += (xlong)(ulFast >> 8 & 15);
            lSize = (xlong)(ulFast >> 16);
        }
        else if ((ulFast & FAST_KIND) == FAST_END)
        {
            Drop(bits, ulFast & 0xff);
            break;
        }
        else
        {
            const xlong lSymbol = LongCode(bits, derived, FAST_BITS + 1);
            lSize = lSymbol & 15;
            if (!lSize && lSymbol != 0xf0)
                break;
            k += lSymbol >> 4;
        }
        if (lSize)
        {
            ulMost |= (1u << lSize) - 1;
            pBlock[pOrder[k]] = (short)TakeValue(bits, lSize);
        }
        ++k;
    } while (k < 64);
    return std::min(k - 1, (xlong)63);
}

// Fast entries of all that begins with a code.
void AddFast(TDerivedTbl &derived, xulong ulCode, xulong ulLength, xulong ulSymbol, bool bDC)
{
    const xulong ulSize = ulSymbol & 15, ulRun = bDC ? 0 : ulSymbol >> 4;
    const xulong ulFree = FAST_BITS - ulLength; // bits behind the code
    const xulong ulFirst = ulCode << ulFree;
    for (xulong i = 0; i < 1u << ulFree; ++i)
    {
        xulong ulEntry;
        if (!ulSize && !bDC && ulRun != 15)
            ulEntry = FAST_END | ulLength;
        else if (ulSize > ulFree)
            ulEntry = ulSize << 16 | FAST_SIZE | ulRun << 8 | ulLength;
        else
        {
            const xlong lValue = ulSize ? Extended((xlong)(i >> (ulFree - ulSize)), (xlong)ulSize) : 0;
            ulEntry = (xulong)lValue << 16 | FAST_VALUE | ulRun << 8 | (ulLength + ulSize);
            derived.m_lFastMost = std::max(derived.m_lFastMost, lValue);
        }
        derived.m_ulFast[ulFirst + i] = ulEntry;
    }
}
} // namespace

xlong CJPGPic::ProcessRestart()
{
    m_Bits.m_Buffer = 0;
    m_Bits.m_lBits = 0;
    m_Bits.m_pNext = m_Bits.m_pEnd = m_pScan;
    if (!ReadRestartMarker())
        return 0;
    memset(m_lPrediction, 0, sizeof m_lPrediction);
    m_lRestartsToGo = m_uRestartInterval;
    m_bScanEnd = 0;
    return 1;
}

// The number of the restart is not looked at.
xlong CJPGPic::ReadRestartMarker()
{
    enum
    {
        FIRST_RESTART = 0xd0,
        LAST_RESTART = 0xd7,
        END_OF_IMAGE = 0xd9
    };
    for (;;)
    {
        if (!m_uUnreadMarker && !GetNextMarker())
            return 0;
        if (m_uUnreadMarker == END_OF_IMAGE)
            return 0;
        const bool bFound = m_uUnreadMarker >= FIRST_RESTART && m_uUnreadMarker <= LAST_RESTART;
        m_uUnreadMarker = 0;
        if (bFound)
            return 1;
    }
}

xlong CJPGPic::InitHuffmanDecoder()
{
    for (xlong i = 0; i < 80; ++i)
        m_ucOrder[i] = (unsigned char)JpegPlace(glb->m_ausJpegOrder[i] & 63);
    if (!m_pScan)
        m_pScan = XNEW(unsigned char[SCAN_BYTES + MCU_BYTES]);
    return m_pScan ? 1 : xError(XERR_MEMORY);
}

xlong CJPGPic::StartHuffDecoderScan()
{
    for (xlong i = 0; i < m_uScanComponents; ++i)
    {
        const xlong lDC = m_ScanComps[i]->m_lDCTable, lAC = m_ScanComps[i]->m_lACTable;
        if (lDC > 3 || lAC > 3 || !m_DCTables[lDC] || !m_ACTables[lAC] ||
            !MakeDerivedHuffTable(m_DCTables[lDC], 1, &m_DCDerived[lDC]) ||
            !MakeDerivedHuffTable(m_ACTables[lAC], 0, &m_ACDerived[lAC]))
            return 0;
        TJpegQuant &quant = m_pQuants[m_ScanComps[i]->m_lIndex];
        if (m_ACDerived[lAC]->m_lFastMost > quant.m_lLimitAC)
            quant.m_lLimitAC = -1;
    }
    memset(m_lPrediction, 0, sizeof m_lPrediction);
    m_lRestartsToGo = m_uRestartInterval;
    m_Bits.m_Buffer = 0;
    m_Bits.m_lBits = 0;
    m_Bits.m_pNext = m_Bits.m_pEnd = m_pScan;
    m_bScanEnd = 0;
    return 1;
}

xlong CJPGPic::MakeDerivedHuffTable(const THuffTable *pTable, xlong bDC, TDerivedTbl **ppDerived)
{
    if (!*ppDerived)
        *ppDerived = XNEW(TDerivedTbl);
    TDerivedTbl *pDerived = *ppDerived;
    if (!pDerived)
        return xError(XERR_MEMORY);
    pDerived->m_pTable = pTable;
    pDerived->m_lFastMost = 0;
    for (xulong &ulEntry : pDerived->m_ulFast)
        ulEntry = FAST_LONG;
    xulong ulCode = 0, ulSymbol = 0;
    for (xulong ulLength = 1; ulLength <= 16; ++ulLength, ulCode <<= 1)
    {
        const xulong ulCount = pTable->m_ucCounts[ulLength];
        if (ulCode + ulCount > 1u << ulLength || ulSymbol + ulCount > 256)
            return 0;
        pDerived->m_lValueOffset[ulLength] = (xlong)ulSymbol - (xlong)ulCode;
        for (xulong i = 0; i < ulCount; ++i, ++ulSymbol, ++ulCode)
        {
            if (bDC && pTable->m_ucSymbols[ulSymbol] > 15)
                return 0;
            if (ulLength <= FAST_BITS)
                AddFast(*pDerived, ulCode, ulLength, pTable->m_ucSymbols[ulSymbol], bDC != 0);
        }
        pDerived->m_lMaxCode[ulLength] = ulCount ? (xlong)ulCode - 1 : -1;
    }
    pDerived->m_lMaxCode[17] = 0x7fffffff;
    return 1;
}

xlong CJPGPic::DecodeMCU(short *pBlocks)
{
    if (m_uRestartInterval)
    {
        if (!m_lRestartsToGo && !ProcessRestart())
            return 0;
        --m_lRestartsToGo;
    }
    if (m_Bits.m_pEnd - m_Bits.m_pNext < MCU_BYTES)
        FillBitBuffer(&m_Bits);
    TBitreadWorkingState bits = m_Bits;
    for (xlong i = 0; i < m_lMCUBlocks; ++i, pBlocks += 64)
    {
        const TCompInfo &comp = *m_ScanComps[m_ucMCUMember[i]];
        const TJpegQuant &quant = m_pQuants[comp.m_lIndex];
        xlong &lPrediction = m_lPrediction[comp.m_lIndex];
        lPrediction += DecodeDC(bits, *m_DCDerived[comp.m_lDCTable]);
        const short sDC = (short)lPrediction;
        pBlocks[0] = sDC;
        xulong ulMost = 0;
        xlong lLast = DecodeAC(bits, *m_ACDerived[comp.m_lACTable], m_ucOrder, pBlocks, ulMost);
        if ((xlong)ulMost > quant.m_lLimitAC || sDC > quant.m_lLimitDC || sDC < -quant.m_lLimitDC)
            lLast = JPEG_LARGE;
        m_ucMCULast[i] = (unsigned char)lLast;
    }
    m_Bits = bits;
    return 1;
}

void CJPGPic::FillBitBuffer(TBitreadWorkingState *pState)
{
    if (m_bScanEnd)
    {
        // In the zeros: any of them will do.
        if (pState->m_pNext > pState->m_pEnd)
            pState->m_pNext = pState->m_pEnd;
        return;
    }
    const size_t ulKept = (size_t)(pState->m_pEnd - pState->m_pNext);
    memmove(m_pScan, pState->m_pNext, ulKept);
    unsigned char *pTo = m_pScan + ulKept, *const pLimit = m_pScan + SCAN_BYTES;
    while (pTo < pLimit)
    {
        if (m_lRawPos == m_lRawEnd && !FillRaw())
        {
            m_bScanEnd = 1;
            break;
        }
        const size_t ulSpan = (size_t)std::min((ptrdiff_t)(m_lRawEnd - m_lRawPos), pLimit - pTo);
        const unsigned char *pFrom = m_pRaw + m_lRawPos;
        const unsigned char *pFound = (const unsigned char *)memchr(pFrom, 0xff, ulSpan);
        const size_t ulPlain = pFound ? (size_t)(pFound - pFrom) : ulSpan;
        memcpy(pTo, pFrom, ulPlain);
        pTo += ulPlain;
        m_lRawPos += (xlong)ulPlain;
        if (!pFound)
            continue;
        unsigned char ucCode = 0xff;
        while (ucCode == 0xff && ReadByte(&ucCode))
        {
        }
        if (ucCode)
        {
            // A marker, or the end of the file behind 0xff.
            m_uUnreadMarker = ucCode == 0xff ? 0 : ucCode;
            m_bScanEnd = 1;
            break;
        }
        *pTo++ = 0xff;
    }
    memset(pTo, 0, (size_t)(m_bScanEnd ? MCU_BYTES : 0));
    pState->m_pNext = m_pScan;
    pState->m_pEnd = pTo;
}

xlong CJPGPic::DecodeHuff(TBitreadWorkingState *pState, const TDerivedTbl *pDerived, xlong lMinBits)
{
    return LongCode(*pState, *pDerived, lMinBits);
}
