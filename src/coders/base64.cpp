#include "tarvix/base64.h"

#include "core/simd.h"
#include "tarvix/memory.h"

#include <algorithm>
#include <stdint.h>
#include <string.h>

namespace
{
constexpr char s_szAlphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
const unsigned char s_ucNone = 0xff;
const xulong s_ulLineChars = 76;

struct TDecodeTable
{
    constexpr TDecodeTable() : ucValues()
    {
        for (unsigned char &uc : ucValues)
            uc = s_ucNone;
        for (unsigned u = 0; u < 64; ++u)
            ucValues[(unsigned char)s_szAlphabet[u]] = (unsigned char)u;
    }

    unsigned char ucValues[256];
};

constexpr TDecodeTable s_Decode;

// Each 24 bytes become 32 characters. Reads from 4 bytes before the first on.
TARVIX_TARGET_AVX2 void EncodeBlocks(const unsigned char *pSource, size_t ulBlocks, unsigned char *pDest)
{
    // Each half takes 12 bytes; every four lanes get three of them as 1 0 2 1.
    const __m256i xOrder = _mm256_set_epi8(14, 15, 13, 14, 11, 12, 10, 11, 8, 9, 7, 8, 5, 6, 4, 5, 14, 15, 13, 14, 11,
                                           12, 10, 11, 8, 9, 7, 8, 5, 6, 4, 5);
    // What is added to a value depends on its range: 0 to 25, 26 to 51, then one for each of 52 to 63.
    const __m256i xOffsets = _mm256_broadcastsi128_si256(_mm_setr_epi8('a' - 26, '0' - 52, '0' - 52, '0' - 52, '0' - 52,
                                                                       '0' - 52, '0' - 52, '0' - 52, '0' - 52, '0' - 52,
                                                                       '0' - 52, '+' - 62, '/' - 63, 'A', 0, 0));
    for (; ulBlocks; --ulBlocks, pSource += 24, pDest += 32)
    {
        const __m128i xLow = _mm_loadu_si128((const __m128i *)(pSource - 4));
        const __m128i xHigh = _mm_loadu_si128((const __m128i *)(pSource + 8));
        const __m256i xBytes =
            _mm256_shuffle_epi8(_mm256_inserti128_si256(_mm256_castsi128_si256(xLow), xHigh, 1), xOrder);
        // The halves of a 32-bit lane move by multiplication: values 0 and 2 down, 1 and 3 up.
        const __m256i xDown =
            _mm256_mulhi_epu16(_mm256_and_si256(xBytes, _mm256_set1_epi32(0x0fc0fc00)), _mm256_set1_epi32(0x04000040));
        const __m256i xUp =
            _mm256_mullo_epi16(_mm256_and_si256(xBytes, _mm256_set1_epi32(0x003f03f0)), _mm256_set1_epi32(0x01000010));
        const __m256i xValues = _mm256_or_si256(xDown, xUp);
        const __m256i xUpper = _mm256_and_si256(_mm256_cmpgt_epi8(_mm256_set1_epi8(26), xValues), _mm256_set1_epi8(13));
        const __m256i xRange = _mm256_or_si256(_mm256_subs_epu8(xValues, _mm256_set1_epi8(51)), xUpper);
        _mm256_storeu_si256((__m256i *)pDest, _mm256_add_epi8(xValues, _mm256_shuffle_epi8(xOffsets, xRange)));
    }
}

// Each 32 characters become 24 bytes, and 8 more are written behind them.
// @return blocks done: it stops at one with another character in it
TARVIX_TARGET_AVX2 size_t DecodeBlocks(const unsigned char *pSource, size_t ulBlocks, unsigned char *pDest)
{
    // For each upper half of a character, a bit; for each lower half, the bits
    // of the upper ones with which it makes no character of the alphabet.
    const __m256i xUpperBits = _mm256_broadcastsi128_si256(
        _mm_setr_epi8(0x10, 0x10, 0x01, 0x02, 0x04, 0x08, 0x04, 0x08, 0x10, 0x10, 0x10, 0x10, 0x10, 0x10, 0x10, 0x10));
    const __m256i xLowerBad = _mm256_broadcastsi128_si256(
        _mm_setr_epi8(0x15, 0x11, 0x11, 0x11, 0x11, 0x11, 0x11, 0x11, 0x11, 0x11, 0x13, 0x1a, 0x1b, 0x1b, 0x1b, 0x1a));
    // What a character is moved by, from its upper half; "/" counts as one less.
    const __m256i xMoves = _mm256_broadcastsi128_si256(
        _mm_setr_epi8(0, 63 - '/', 62 - '+', 52 - '0', -'A', -'A', 26 - 'a', 26 - 'a', 0, 0, 0, 0, 0, 0, 0, 0));
    const __m256i xHalf = _mm256_set1_epi8(15);
    const __m256i xPack =
        _mm256_broadcastsi128_si256(_mm_setr_epi8(2, 1, 0, 6, 5, 4, 10, 9, 8, 14, 13, 12, -1, -1, -1, -1));
    const __m256i xJoin = _mm256_setr_epi32(0, 1, 2, 4, 5, 6, 3, 7);
    size_t ul = 0;
    for (; ul < ulBlocks; ++ul, pSource += 32, pDest += 24)
    {
        const __m256i xChars = _mm256_loadu_si256((const __m256i *)pSource);
        const __m256i xUpper = _mm256_and_si256(_mm256_srli_epi32(xChars, 4), xHalf);
        const __m256i xLower = _mm256_and_si256(xChars, xHalf);
        if (!_mm256_testz_si256(_mm256_shuffle_epi8(xLowerBad, xLower), _mm256_shuffle_epi8(xUpperBits, xUpper)))
            break;
        const __m256i xSlash = _mm256_cmpeq_epi8(xChars, _mm256_set1_epi8('/'));
        const __m256i xValues = _mm256_add_epi8(xChars, _mm256_shuffle_epi8(xMoves, _mm256_add_epi8(xSlash, xUpper)));
        // Pairs of 6 bits to 12, pairs of 12 to 24, then the three bytes of each lane together.
        const __m256i xPairs = _mm256_maddubs_epi16(xValues, _mm256_set1_epi32(0x01400140));
        const __m256i xFours = _mm256_madd_epi16(xPairs, _mm256_set1_epi32(0x00011000));
        _mm256_storeu_si256((__m256i *)pDest, _mm256_permutevar8x32_epi32(_mm256_shuffle_epi8(xFours, xPack), xJoin));
    }
    return ul;
}

bool IsSpace(unsigned char uc)
{
    return uc == '\r' || uc == '\n' || uc == ' ' || uc == '\t';
}
} // namespace

int CBase64::Encode(const unsigned char *pSource, xulong ulLen, unsigned char *&pDest, xulong &ulDestLen, int bCRLF)
{
    pDest = nullptr;
    size_t ulSize = (size_t)(ulLen / 3) * 4 + 8;
    ulSize += ulSize / s_ulLineChars * 2 + 2;
    if (ulSize > 0x7fffff00)
        return 0;
    pDest = XNEW(unsigned char[ulSize]);
    if (!pDest)
        return 0;
    unsigned char *pTo = pDest;
    const unsigned char *const pStart = pSource;
    const unsigned char *const pEnd = pSource + ulLen;
    const bool bBlocks = HasAvx2();
    for (xulong ulLine = 0;;)
    {
        if (bCRLF && ulLine == s_ulLineChars && pSource != pEnd)
        {
            *pTo++ = '\r';
            *pTo++ = '\n';
            ulLine = 0;
        }
        if (pEnd - pSource < 3)
            break;
        const size_t ulMost = bCRLF ? (s_ulLineChars - ulLine) / 32 : SIZE_MAX;
        const size_t ulBlocks = std::min((size_t)(pEnd - pSource) / 24, ulMost);
        if (bBlocks && ulBlocks && pSource - pStart >= 4)
        {
            EncodeBlocks(pSource, ulBlocks, pTo);
            pSource += ulBlocks * 24;
            pTo += ulBlocks * 32;
            ulLine += (xulong)ulBlocks * 32;
            continue;
        }
        Encode24Bits(pSource, pTo);
        pSource += 3;
        pTo += 4;
        ulLine += 4;
    }
    memset(pTo, '!', (size_t)(pDest + ulSize - pTo));
    if (pSource != pEnd)
    {
        EncodeLastBits(pSource, (xulong)(pEnd - pSource), pTo);
        pTo += 4;
        if (bCRLF)
        {
            // The text ends in two of the block's marks, with the line's end
            // behind its zero byte: readers of these texts know it so.
            pTo[4] = '\r';
            pTo[5] = '\n';
            pTo += 2;
        }
    }
    else if (bCRLF)
    {
        *pTo++ = '\r';
        *pTo++ = '\n';
    }
    *pTo = 0;
    ulDestLen = (xulong)(pTo - pDest);
    return 1;
}

int CBase64::Decode(const unsigned char *pSource, xulong ulLen, unsigned char *&pDest, xulong &ulDestLen)
{
    const size_t ulSize = ((size_t)ulLen / 4 + 1) * 3;
    ulDestLen = (xulong)ulSize;
    pDest = ulLen && ulSize <= 0x7fffff00 ? XNEW(unsigned char[ulSize]) : nullptr;
    if (!pDest)
        return 0;
    const unsigned char *const pEnd = pSource + ulLen;
    unsigned char *pTo = pDest;
    unsigned char *const pDestEnd = pDest + ulSize;
    const bool bBlocks = HasAvx2();
    bool bBad = false;
    xulong ulValue = 0, ulGood = 0;
    while (pSource != pEnd)
    {
        if (bBlocks && !ulGood && pEnd - pSource >= 32 && pDestEnd - pTo >= 32)
        {
            const size_t ulMost = std::min((size_t)(pEnd - pSource) / 32, (size_t)(pDestEnd - pTo - 8) / 24);
            const size_t ulDone = DecodeBlocks(pSource, ulMost, pTo);
            pSource += ulDone * 32;
            pTo += ulDone * 24;
            if (ulDone)
                continue;
        }
        const unsigned char uc = *pSource++;
        if (uc == '=')
            break;
        if (!IsBase64(uc))
        {
            bBad = bBad || !IsSpace(uc);
            continue;
        }
        ulValue = ulValue << 6 | s_Decode.ucValues[uc];
        if (++ulGood < 4)
            continue;
        *pTo++ = (unsigned char)(ulValue >> 16);
        *pTo++ = (unsigned char)(ulValue >> 8);
        *pTo++ = (unsigned char)ulValue;
        ulGood = 0;
    }
    const bool bPadded = pSource[-1] == '=';
    memset(pTo, 0, (size_t)(pDestEnd - pTo));
    if (bPadded && ulGood == 3)
    {
        pTo[0] = (unsigned char)(ulValue >> 10);
        pTo[1] = (unsigned char)(ulValue >> 2);
        ulDestLen -= 1;
    }
    else if (bPadded && ulGood == 2)
    {
        pTo[0] = (unsigned char)(ulValue >> 4);
        ulDestLen -= 2;
    }
    if (!bBad)
        return 0;
    XDELETE_ARRAY(pDest);
    pDest = nullptr;
    return 1;
}

void CBase64::Encode24Bits(const unsigned char *pSource, unsigned char *pDest)
{
    const xulong ulValue = (xulong)(pSource[0] << 16 | pSource[1] << 8 | pSource[2]);
    pDest[0] = (unsigned char)s_szAlphabet[ulValue >> 18];
    pDest[1] = (unsigned char)s_szAlphabet[ulValue >> 12 & 63];
    pDest[2] = (unsigned char)s_szAlphabet[ulValue >> 6 & 63];
    pDest[3] = (unsigned char)s_szAlphabet[ulValue & 63];
}

void CBase64::EncodeLastBits(const unsigned char *pSource, xulong ulLen, unsigned char *pDest)
{
    const unsigned char ucLast[3] = { pSource[0], ulLen > 1 ? pSource[1] : (unsigned char)0, 0 };
    Encode24Bits(ucLast, pDest);
    if (ulLen < 2)
        pDest[2] = '=';
    pDest[3] = '=';
}

int CBase64::IsBase64(unsigned char ucChar)
{
    return s_Decode.ucValues[ucChar] != s_ucNone;
}

xulong UUEncode(const char *pSource, char *pDest, xulong ulLen)
{
    char *pTo = pDest;
    while (ulLen)
    {
        const xulong ulLine = std::min<xulong>(ulLen, 45);
        unsigned char ucWork[48] = {};
        memcpy(ucWork, pSource, ulLine);
        pSource += ulLine;
        ulLen -= ulLine;
        *pTo++ = (char)(ulLine + ' ');
        for (xulong ul = 0; ul < ulLine; ul += 3)
        {
            *pTo++ = (char)((ucWork[ul] >> 2) + ' ');
            *pTo++ = (char)(((ucWork[ul] << 4 & 0x30) | ucWork[ul + 1] >> 4) + ' ');
            *pTo++ = (char)(((ucWork[ul + 1] << 2 & 0x3c) | ucWork[ul + 2] >> 6) + ' ');
            *pTo++ = (char)((ucWork[ul + 2] & 0x3f) + ' ');
        }
        *pTo++ = '\n';
    }
    return (xulong)(pTo - pDest);
}

xulong UUDecode(const char *pSource, char *pDest, xulong ulLen)
{
    return UUDecode(pSource, pDest, ulLen, 0xffffffff);
}

xulong UUDecode(const char *pSource, char *pDest, xulong ulLen, xulong ulDestLen)
{
    const xulong ulLongestLine = 79;
    const char *const pEnd = pSource + ulLen;
    xulong ulDone = 0;
    while (pSource != pEnd)
    {
        // A line may promise more than it holds: the rest counts as blanks.
        char szWork[1 + 21 * 4 + 1];
        memset(szWork, ' ', sizeof(szWork));
        for (xulong ul = 0; ul < ulLongestLine && pSource != pEnd; ++ul)
        {
            if (*pSource == '\r' || *pSource == '\n' || !*pSource)
                break;
            szWork[ul] = *pSource++;
        }
        if (pSource != pEnd && *pSource == '\r')
            ++pSource;
        if (pSource != pEnd && (*pSource == '\n' || !*pSource))
            ++pSource;
        const auto Value = [&](xulong ul) { return (xulong)(szWork[ul] - ' ') & 63; };
        const xulong ulLine = Value(0);
        if (!ulLine)
            break;
        for (xulong ul = 0; ul < ulLine; ++ul, ++ulDone)
        {
            const xulong ulGroup = 1 + ul / 3 * 4, ulPlace = ul % 3;
            const xulong ulPair = Value(ulGroup + ulPlace) << 6 | Value(ulGroup + ulPlace + 1);
            if (ulDone < ulDestLen)
                pDest[ulDone] = (char)(ulPair >> (4 - 2 * ulPlace));
        }
    }
    return ulDone;
}
