#include "core/simd.h"
#include "pictures/jpegkernels.h"

#include <algorithm>
#include <stddef.h>
#include <stdint.h>
#include <string.h>

namespace
{
enum
{
    FRACTION = 13,
    FIRST_BITS = 2, // more precise results of the first pass
    FIRST_SHIFT = FRACTION - FIRST_BITS,
    SECOND_SHIFT = FRACTION + FIRST_BITS + 3
};

// Eight values through the transform, before rounding.
void TransformPlain(const xlong *pIn, xlong *pOut)
{
    const xlong lShared = (pIn[2] + pIn[6]) * 4433; // 0.541196100
    const xlong lEven2 = lShared - pIn[6] * 15137;  // 1.847759065
    const xlong lEven3 = lShared + pIn[2] * 6270;   // 0.765366865
    const xlong lEven0 = (xlong)((xulong)(pIn[0] + pIn[4]) << FRACTION);
    const xlong lEven1 = (xlong)((xulong)(pIn[0] - pIn[4]) << FRACTION);
    const xlong alEven[4] = { lEven0 + lEven3, lEven1 + lEven2, lEven1 - lEven2, lEven0 - lEven3 };

    const xlong lAll = (pIn[7] + pIn[3] + pIn[5] + pIn[1]) * 9633; // 1.175875602
    const xlong l71 = (pIn[7] + pIn[1]) * -7373;                   // 0.899976223
    const xlong l53 = (pIn[5] + pIn[3]) * -20995;                  // 2.562915447
    const xlong l73 = (pIn[7] + pIn[3]) * -16069 + lAll;           // 1.961570560
    const xlong l51 = (pIn[5] + pIn[1]) * -3196 + lAll;            // 0.390180644
    const xlong alOdd[4] = {
        pIn[1] * 12299 + l71 + l51, // 1.501321110
        pIn[3] * 25172 + l53 + l73, // 3.072711026
        pIn[5] * 16819 + l53 + l51, // 2.053119869
        pIn[7] * 2446 + l71 + l73,  // 0.298631336
    };
    for (int i = 0; i < 4; ++i)
    {
        pOut[i] = alEven[i] + alOdd[i];
        pOut[7 - i] = alEven[i] - alOdd[i];
    }
}
} // namespace

void JpegSetQuant(TJpegQuant *pQuant, const xlong *pTable)
{
    pQuant->m_pQuant = pTable;
    xlong lMost = 1;
    for (xlong i = 0; i < 64; ++i)
    {
        pQuant->m_sPlaced[JpegPlace(i)] = (short)pTable[i];
        if (i)
            lMost = std::max(lMost, pTable[i]);
    }
    pQuant->m_lLimitDC = 32767 / std::max(pTable[0], (xlong)1);
    pQuant->m_lLimitAC = 32767 / lMost;
}

void JpegIdctPlain(const short *pCoefs, const TJpegQuant &quant, unsigned char *pOutput, ptrdiff_t lPitch,
                   const unsigned char *pLimit)
{
    short asRows[64];
    xlong alIn[8], alOut[8];
    for (xlong x = 0; x < 8; ++x)
    {
        bool bFlat = true;
        for (xlong y = 0; y < 8; ++y)
        {
            const xlong lNatural = y * 8 + x;
            alIn[y] = pCoefs[JpegPlace(lNatural)] * quant.m_pQuant[lNatural];
            bFlat = bFlat && (!y || !pCoefs[JpegPlace(lNatural)]);
        }
        if (!bFlat)
            TransformPlain(alIn, alOut);
        for (xlong y = 0; y < 8; ++y)
            asRows[y * 8 + x] = (short)(bFlat ? (xlong)((xulong)alIn[0] << FIRST_BITS)
                                              : (alOut[y] + (1 << (FIRST_SHIFT - 1))) >> FIRST_SHIFT);
    }
    const unsigned char *pCentre = pLimit + 128;
    for (xlong y = 0; y < 8; ++y)
    {
        for (xlong x = 0; x < 8; ++x)
            alIn[x] = asRows[y * 8 + x];
        TransformPlain(alIn, alOut);
        for (xlong x = 0; x < 8; ++x)
            pOutput[y * lPitch + x] = pCentre[((alOut[x] + (1 << (SECOND_SHIFT - 1))) >> SECOND_SHIFT) & 1023];
    }
}

namespace
{
// Shifts that leave 16 bits of a first result and 10 of a second one, signed,
// as the plain pass does by its types and its table.
enum
{
    FIRST_LEFT = 16 - FIRST_SHIFT,
    SECOND_LEFT = 32 - 10 - SECOND_SHIFT,
    SECOND_RIGHT = 32 - 10
};

namespace sse2
{
typedef __m128i V;
#define STEP __attribute__((always_inline)) inline
#define OP(name) _mm_##name
#include "pictures/jpegsimd.inl"

STEP V Product(const short *pCoefs, const short *pQuant, int nPlace)
{
    return _mm_mullo_epi16(_mm_loadu_si128((const V *)(pCoefs + nPlace)),
                           _mm_loadu_si128((const V *)(pQuant + nPlace)));
}

// Pairs of four rows to four of each pair.
STEP void Transpose(const V *pRows, V *pPairs)
{
    const V low01 = _mm_unpacklo_epi32(pRows[0], pRows[1]), high01 = _mm_unpackhi_epi32(pRows[0], pRows[1]);
    const V low23 = _mm_unpacklo_epi32(pRows[2], pRows[3]), high23 = _mm_unpackhi_epi32(pRows[2], pRows[3]);
    pPairs[0] = _mm_unpacklo_epi64(low01, low23);
    pPairs[1] = _mm_unpackhi_epi64(low01, low23);
    pPairs[2] = _mm_unpacklo_epi64(high01, high23);
    pPairs[3] = _mm_unpackhi_epi64(high01, high23);
}

STEP void StorePair(unsigned char *pOutput, ptrdiff_t lPitch, V rows)
{
    _mm_storel_epi64((V *)pOutput, rows);
    _mm_storel_epi64((V *)(pOutput + lPitch), _mm_unpackhi_epi64(rows, rows));
}

void Idct(const short *pCoefs, const short *pQuant, unsigned char *pOutput, ptrdiff_t lPitch)
{
    V rows[8], sums[8], columns[8];
    const V first = _mm_set1_epi32(1 << (FIRST_SHIFT - 1)), second = _mm_set1_epi32(1 << (SECOND_SHIFT - 1));
    // The first half of the columns becomes the lower words, the second the upper ones.
    Butterfly(Product(pCoefs, pQuant, 0), Product(pCoefs, pQuant, 16), Product(pCoefs, pQuant, 32),
              Product(pCoefs, pQuant, 48), first, sums);
    for (int i = 0; i < 8; ++i)
        rows[i] = _mm_srli_epi32(_mm_slli_epi32(sums[i], FIRST_LEFT), 16);
    Butterfly(Product(pCoefs, pQuant, 8), Product(pCoefs, pQuant, 24), Product(pCoefs, pQuant, 40),
              Product(pCoefs, pQuant, 56), first, sums);
    const V upper = _mm_set1_epi32((int)0xffff0000);
    for (int i = 0; i < 8; ++i)
        rows[i] = _mm_or_si128(rows[i], _mm_and_si128(_mm_slli_epi32(sums[i], FIRST_LEFT), upper));

    V pairs[4];
    Transpose(rows, pairs);
    Butterfly(pairs[0], pairs[1], pairs[2], pairs[3], second, columns);
    Transpose(rows + 4, pairs);
    Butterfly(pairs[0], pairs[1], pairs[2], pairs[3], second, sums);
    for (int i = 0; i < 8; ++i)
        columns[i] = _mm_packs_epi32(_mm_srai_epi32(_mm_slli_epi32(columns[i], SECOND_LEFT), SECOND_RIGHT),
                                     _mm_srai_epi32(_mm_slli_epi32(sums[i], SECOND_LEFT), SECOND_RIGHT));
    const V c04 = _mm_packs_epi16(columns[0], columns[4]), c15 = _mm_packs_epi16(columns[1], columns[5]);
    const V c26 = _mm_packs_epi16(columns[2], columns[6]), c37 = _mm_packs_epi16(columns[3], columns[7]);
    const V c01 = _mm_unpacklo_epi8(c04, c15), c45 = _mm_unpackhi_epi8(c04, c15);
    const V c23 = _mm_unpacklo_epi8(c26, c37), c67 = _mm_unpackhi_epi8(c26, c37);
    const V upperLeft = _mm_unpacklo_epi16(c01, c23), lowerLeft = _mm_unpackhi_epi16(c01, c23);
    const V upperRight = _mm_unpacklo_epi16(c45, c67), lowerRight = _mm_unpackhi_epi16(c45, c67);
    const V centre = _mm_set1_epi8(-128);
    StorePair(pOutput, lPitch, _mm_xor_si128(_mm_unpacklo_epi32(upperLeft, upperRight), centre));
    StorePair(pOutput + 2 * lPitch, lPitch, _mm_xor_si128(_mm_unpackhi_epi32(upperLeft, upperRight), centre));
    StorePair(pOutput + 4 * lPitch, lPitch, _mm_xor_si128(_mm_unpacklo_epi32(lowerLeft, lowerRight), centre));
    StorePair(pOutput + 6 * lPitch, lPitch, _mm_xor_si128(_mm_unpackhi_epi32(lowerLeft, lowerRight), centre));
}
#undef STEP
#undef OP
} // namespace sse2

namespace avx2
{
typedef __m256i V;
#define STEP TARVIX_TARGET_AVX2 __attribute__((always_inline)) inline
#define OP(name) _mm256_##name
#include "pictures/jpegsimd.inl"

STEP V Product(const short *pCoefs, const short *pQuant, int nPlace)
{
    return _mm256_mullo_epi16(_mm256_loadu_si256((const V *)(pCoefs + nPlace)),
                              _mm256_loadu_si256((const V *)(pQuant + nPlace)));
}

// Two rows as words, each in a lane of its own, its columns in pairs.
STEP V Pairs(V row, V other)
{
    const V words = _mm256_packs_epi32(_mm256_srai_epi32(_mm256_slli_epi32(row, FIRST_LEFT), 16),
                                       _mm256_srai_epi32(_mm256_slli_epi32(other, FIRST_LEFT), 16));
    const V order = _mm256_broadcastsi128_si256(_mm_setr_epi8(0, 1, 8, 9, 2, 3, 10, 11, 4, 5, 12, 13, 6, 7, 14, 15));
    return _mm256_shuffle_epi8(_mm256_permute4x64_epi64(words, 0xd8), order);
}

STEP V Words(V column, V other)
{
    return _mm256_packs_epi32(_mm256_srai_epi32(_mm256_slli_epi32(column, SECOND_LEFT), SECOND_RIGHT),
                              _mm256_srai_epi32(_mm256_slli_epi32(other, SECOND_LEFT), SECOND_RIGHT));
}

TARVIX_TARGET_AVX2 void Idct(const short *pCoefs, const short *pQuant, unsigned char *pOutput, ptrdiff_t lPitch)
{
    V sums[8];
    Butterfly(Product(pCoefs, pQuant, 0), Product(pCoefs, pQuant, 16), Product(pCoefs, pQuant, 32),
              Product(pCoefs, pQuant, 48), _mm256_set1_epi32(1 << (FIRST_SHIFT - 1)), sums);
    // Rows 0 to 3 in the lower lanes, 4 to 7 in the upper ones.
    const V rows0 = Pairs(sums[0], sums[4]), rows1 = Pairs(sums[1], sums[5]);
    const V rows2 = Pairs(sums[2], sums[6]), rows3 = Pairs(sums[3], sums[7]);
    const V low01 = _mm256_unpacklo_epi32(rows0, rows1), high01 = _mm256_unpackhi_epi32(rows0, rows1);
    const V low23 = _mm256_unpacklo_epi32(rows2, rows3), high23 = _mm256_unpackhi_epi32(rows2, rows3);
    Butterfly(_mm256_unpacklo_epi64(low01, low23), _mm256_unpackhi_epi64(low01, low23),
              _mm256_unpacklo_epi64(high01, high23), _mm256_unpackhi_epi64(high01, high23),
              _mm256_set1_epi32(1 << (SECOND_SHIFT - 1)), sums);
    const V centre = _mm256_set1_epi8(-128);
    const V order = _mm256_broadcastsi128_si256(_mm_setr_epi8(0, 4, 8, 12, 1, 5, 9, 13, 2, 6, 10, 14, 3, 7, 11, 15));
    V left = _mm256_packs_epi16(Words(sums[0], sums[1]), Words(sums[2], sums[3]));
    V right = _mm256_packs_epi16(Words(sums[4], sums[5]), Words(sums[6], sums[7]));
    left = _mm256_shuffle_epi8(_mm256_xor_si256(left, centre), order);
    right = _mm256_shuffle_epi8(_mm256_xor_si256(right, centre), order);
    const V rows0145 = _mm256_unpacklo_epi32(left, right), rows2367 = _mm256_unpackhi_epi32(left, right);
    sse2::StorePair(pOutput, lPitch, _mm256_castsi256_si128(rows0145));
    sse2::StorePair(pOutput + 2 * lPitch, lPitch, _mm256_castsi256_si128(rows2367));
    sse2::StorePair(pOutput + 4 * lPitch, lPitch, _mm256_extracti128_si256(rows0145, 1));
    sse2::StorePair(pOutput + 6 * lPitch, lPitch, _mm256_extracti128_si256(rows2367, 1));
}
#undef STEP
#undef OP
} // namespace avx2
} // namespace

void JpegIdctWide(const short *pCoefs, const TJpegQuant &quant, xlong lLast, unsigned char *pOutput, ptrdiff_t lPitch)
{
    if (!lLast)
    {
        // A block of one shade: both passes come down to shifts.
        const xlong lFirst = (short)((xulong)(pCoefs[0] * quant.m_sPlaced[0]) << FIRST_BITS);
        const xlong lLevel = (xlong)((xulong)((lFirst + 16) >> 5) << SECOND_RIGHT) >> SECOND_RIGHT;
        const uint64_t ullRow = 0x0101010101010101 * (uint64_t)std::clamp(lLevel + 128, (xlong)0, (xlong)255);
        for (int y = 0; y < 8; ++y)
            memcpy(pOutput + y * lPitch, &ullRow, 8);
    }
    else if (HasAvx2())
        avx2::Idct(pCoefs, quant.m_sPlaced, pOutput, lPitch);
    else
        sse2::Idct(pCoefs, quant.m_sPlaced, pOutput, lPitch);
}
