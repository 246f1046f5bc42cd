#include "tarvix/base64.h"

#include "ansi/simd.h"
#include "tarvix/memory.h"

#include <algorithm>

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

// 24 bytes become 32 characters. Reads 28 bytes, from 4 before the first on.
TARVIX_TARGET_AVX2 void EncodeBlock(const unsigned char *pSource, unsigned char *pDest)
{
    // Each half takes 12 bytes; every four lanes get three of them as 1 0 2 1.
    const __m256i xBytes = _mm256_shuffle_epi8(
        _mm256_inserti128_si256(_mm256_castsi128_si256(_mm_loadu_si128((const __m128i *)(pSource - 4))),
                                _mm_loadu_si128((const __m128i *)(pSource + 8)), 1),
        _mm256_set_epi8(14, 15, 13, 14, 11, 12, 10, 11, 8, 9, 7, 8, 5, 6, 4, 5, 14, 15, 13, 14, 11, 12, 10, 11, 8, 9, 7,
                        8, 5, 6, 4, 5));
    // The halves of a 32-bit lane move by multiplication: values 0 and 2 down, 1 and 3 up.
    const __m256i xDown =
        _mm256_mulhi_epu16(_mm256_and_si256(xBytes, _mm256_set1_epi32(0x0fc0fc00)), _mm256_set1_epi32(0x04000040));
    const __m256i xUp =
        _mm256_mullo_epi16(_mm256_and_si256(xBytes, _mm256_set1_epi32(0x003f03f0)), _mm256_set1_epi32(0x01000010));
    const __m256i xValues = _mm256_or_si256(xDown, xUp);
    // What is added to a value depends on its range: 0 to 25, 26 to 51, then one for each of 52 to 63.
    const __m256i xOffsets = _mm256_setr_epi8('a' - 26, '0' - 52, '0' - 52, '0' - 52, '0' - 52, '0' - 52, '0' - 52,
                                              '0' - 52, '0' - 52, '0' - 52, '0' - 52, '+' - 62, '/' - 63, 'A', 0, 0,
                                              'a' - 26, '0' - 52, '0' - 52, '0' - 52, '0' - 52, '0' - 52, '0' - 52,
                                              '0' - 52, '0' - 52, '0' - 52, '0' - 52, '+' - 62, '/' - 63, 'A', 0, 0);
    const __m256i xUpper = _mm256_and_si256(_mm256_cmpgt_epi8(_mm256_set1_epi8(26), xValues), _mm256_set1_epi8(13));
    const __m256i xRange = _mm256_or_si256(_mm256_subs_epu8(xValues, _mm256_set1_epi8(51)), xUpper);
    _mm256_storeu_si256((__m256i *)pDest, _mm256_add_epi8(xValues, _mm256_shuffle_epi8(xOffsets, xRange)));
}

TARVIX_TARGET_AVX2 inline __m256i InRange(__m256i xChars, char cFirst, char cLast)
{
    return _mm256_and_si256(_mm256_cmpgt_epi8(xChars, _mm256_set1_epi8((char)(cFirst - 1))),
                            _mm256_cmpgt_epi8(_mm256_set1_epi8((char)(cLast + 1)), xChars));
}

TARVIX_TARGET_AVX2 inline __m256i Offset(__m256i xMask, int nOffset)
{
    return _mm256_and_si256(xMask, _mm256_set1_epi8((char)nOffset));
}

// 32 characters become 24 bytes, and 8 more are written.
// @return false, with nothing done, if there is another character among them
TARVIX_TARGET_AVX2 bool DecodeBlock(const unsigned char *pSource, unsigned char *pDest)
{
    const __m256i xChars = _mm256_loadu_si256((const __m256i *)pSource);
    const __m256i xUpper = InRange(xChars, 'A', 'Z'), xLower = InRange(xChars, 'a', 'z');
    const __m256i xDigit = InRange(xChars, '0', '9');
    const __m256i xPlus = _mm256_cmpeq_epi8(xChars, _mm256_set1_epi8('+'));
    const __m256i xSlash = _mm256_cmpeq_epi8(xChars, _mm256_set1_epi8('/'));
    const __m256i xGood =
        _mm256_or_si256(_mm256_or_si256(xUpper, xLower), _mm256_or_si256(xDigit, _mm256_or_si256(xPlus, xSlash)));
    if (_mm256_movemask_epi8(xGood) != -1)
        return false;
    const __m256i xOffset = _mm256_or_si256(
        _mm256_or_si256(Offset(xUpper, -'A'), Offset(xLower, 26 - 'a')),
        _mm256_or_si256(Offset(xDigit, 52 - '0'), _mm256_or_si256(Offset(xPlus, 62 - '+'), Offset(xSlash, 63 - '/'))));
    const __m256i xValues = _mm256_add_epi8(xChars, xOffset);
    // Pairs of 6 bits to 12, pairs of 12 to 24, then the three bytes of each lane together.
    const __m256i xPairs = _mm256_maddubs_epi16(xValues, _mm256_set1_epi32(0x01400140));
    const __m256i xFours = _mm256_madd_epi16(xPairs, _mm256_set1_epi32(0x00011000));
    const __m256i xPacked =
        _mm256_shuffle_epi8(xFours, _mm256_setr_epi8(2, 1, 0, 6, 5, 4, 10, 9, 8, 14, 13, 12, -1, -1, -1, -1, 2, 1, 0, 6,
                                                     5, 4, 10, 9, 8, 14, 13, 12, -1, -1, -1, -1));
    _mm256_storeu_si256((__m256i *)pDest,
                        _mm256_permutevar8x32_epi32(xPacked, _mm256_setr_epi32(0, 1, 2, 4, 5, 6, 3, 7)));
    return true;
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
    memset(pDest, '!', ulSize);
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
        if (bBlocks && pSource - pStart >= 4 && pEnd - pSource >= 24 && (!bCRLF || ulLine + 32 <= s_ulLineChars))
        {
            EncodeBlock(pSource, pTo);
            pSource += 24;
            pTo += 32;
            ulLine += 32;
            continue;
        }
        Encode24Bits(pSource, pTo);
        pSource += 3;
        pTo += 4;
        ulLine += 4;
    }
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
        if (bBlocks && !ulGood && pEnd - pSource >= 32 && pDestEnd - pTo >= 32 && DecodeBlock(pSource, pTo))
        {
            pSource += 32;
            pTo += 24;
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
