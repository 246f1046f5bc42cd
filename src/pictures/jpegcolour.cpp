#include "core/simd.h"
#include "pictures/jpegkernels.h"

void JpegColourPlain(const unsigned char *const *ppRows, const TJpegColours &colours, unsigned char *pOutput,
                     xlong lWidth)
{
    const unsigned char *pLuma = ppRows[0], *pCb = ppRows[1], *pCr = ppRows[2], *pLimit = colours.m_pLimit;
    for (xlong x = 0; x < lWidth; ++x, pOutput += 3)
    {
        const xlong lLuma = pLuma[x];
        pOutput[2] = pLimit[lLuma + colours.m_pCrToRed[pCr[x]]];
        pOutput[1] = pLimit[lLuma + ((colours.m_pCbToGreen[pCb[x]] + colours.m_pCrToGreen[pCr[x]]) >> 16)];
        pOutput[0] = pLimit[lLuma + colours.m_pCbToBlue[pCb[x]]];
    }
}

void JpegWiden(const unsigned char *pRow, unsigned char *pOutput, xlong lSamples, xlong lTimes)
{
    for (xlong x = 0; x < lSamples; ++x)
        for (xlong i = 0; i < lTimes; ++i)
            *pOutput++ = pRow[x];
}

namespace
{
namespace sse2
{
typedef __m128i V;
enum
{
    PIXELS = 16
};
#define STEP __attribute__((always_inline)) inline
#define OP(name) _mm_##name
#include "pictures/jpegsimd.inl"

STEP V Load(const unsigned char *p)
{
    return _mm_loadu_si128((const V *)p);
}

STEP V LoadWords(const unsigned char *p)
{
    return _mm_unpacklo_epi8(_mm_loadl_epi64((const V *)p), _mm_setzero_si128());
}

// Four pixels of four bytes, the last 0: 14 bytes are written.
STEP void StoreFour(unsigned char *p, V pixels)
{
    const V low = _mm_and_si128(pixels, _mm_set1_epi64x(0xffffff));
    const V high = _mm_and_si128(_mm_srli_epi64(pixels, 8), _mm_set1_epi64x(0xffffff000000));
    const V packed = _mm_or_si128(low, high);
    _mm_storel_epi64((V *)p, packed);
    _mm_storel_epi64((V *)(p + 6), _mm_unpackhi_epi64(packed, packed));
}

STEP void Store(unsigned char *p, const TBytes &bytes)
{
    const V zero = _mm_setzero_si128();
    const V bgLow = _mm_unpacklo_epi8(bytes.blue, bytes.green), bgHigh = _mm_unpackhi_epi8(bytes.blue, bytes.green);
    const V rLow = _mm_unpacklo_epi8(bytes.red, zero), rHigh = _mm_unpackhi_epi8(bytes.red, zero);
    StoreFour(p, _mm_unpacklo_epi16(bgLow, rLow));
    StoreFour(p + 12, _mm_unpackhi_epi16(bgLow, rLow));
    StoreFour(p + 24, _mm_unpacklo_epi16(bgHigh, rHigh));
    StoreFour(p + 36, _mm_unpackhi_epi16(bgHigh, rHigh));
}

template <bool HALF>
xlong Colour(const unsigned char *pLuma, const unsigned char *pCb, const unsigned char *pCr, unsigned char *pOutput,
             xlong lWidth)
{
    // A step writes two bytes more than its pixels.
    const xlong lEnd = lWidth - 1;
    xlong x = 0;
    for (; x + PIXELS <= lEnd; x += PIXELS)
        Store(pOutput + 3 * x, HALF ? PixelsHalf(Load(pLuma + x), LoadWords(pCb + x / 2), LoadWords(pCr + x / 2))
                                    : PixelsFull(Load(pLuma + x), Load(pCb + x), Load(pCr + x)));
    return x;
}

xlong Grey(const unsigned char *pRow, unsigned char *pOutput, xlong lWidth)
{
    xlong x = 0;
    for (; x + PIXELS < lWidth; x += PIXELS)
    {
        const V luma = Load(pRow + x);
        Store(pOutput + 3 * x, { luma, luma, luma });
    }
    return x;
}
#undef STEP
#undef OP
} // namespace sse2

namespace avx2
{
typedef __m256i V;
enum
{
    PIXELS = 32
};
#define STEP TARVIX_TARGET_AVX2 __attribute__((always_inline)) inline
#define OP(name) _mm256_##name
#include "pictures/jpegsimd.inl"

STEP V Load(const unsigned char *p)
{
    return _mm256_loadu_si256((const V *)p);
}

STEP V LoadWords(const unsigned char *p)
{
    return _mm256_cvtepu8_epi16(_mm_loadu_si128((const __m128i *)p));
}

// Of 16 pixels, the bytes of a channel go 3 apart, which modulo 16 is a place
// for each; then each of three registers takes from every channel what is its.
STEP void Store(unsigned char *p, const TBytes &bytes)
{
    const V blueOrder =
        _mm256_broadcastsi128_si256(_mm_setr_epi8(0, 11, 6, 1, 12, 7, 2, 13, 8, 3, 14, 9, 4, 15, 10, 5));
    const V greenOrder =
        _mm256_broadcastsi128_si256(_mm_setr_epi8(5, 0, 11, 6, 1, 12, 7, 2, 13, 8, 3, 14, 9, 4, 15, 10));
    const V redOrder = _mm256_broadcastsi128_si256(_mm_setr_epi8(10, 5, 0, 11, 6, 1, 12, 7, 2, 13, 8, 3, 14, 9, 4, 15));
    // Every third byte, from the second and from the third one on.
    const V second = _mm256_broadcastsi128_si256(_mm_setr_epi8(0, -1, 0, 0, -1, 0, 0, -1, 0, 0, -1, 0, 0, -1, 0, 0));
    const V third = _mm256_broadcastsi128_si256(_mm_setr_epi8(0, 0, -1, 0, 0, -1, 0, 0, -1, 0, 0, -1, 0, 0, -1, 0));
    const V blue = _mm256_shuffle_epi8(bytes.blue, blueOrder);
    const V green = _mm256_shuffle_epi8(bytes.green, greenOrder);
    const V red = _mm256_shuffle_epi8(bytes.red, redOrder);
    const V start = _mm256_blendv_epi8(_mm256_blendv_epi8(blue, green, second), red, third);
    const V middle = _mm256_blendv_epi8(_mm256_blendv_epi8(green, red, second), blue, third);
    const V end = _mm256_blendv_epi8(_mm256_blendv_epi8(red, blue, second), green, third);
    __m128i *pTo = (__m128i *)p;
    _mm_storeu_si128(pTo, _mm256_castsi256_si128(start));
    _mm_storeu_si128(pTo + 1, _mm256_castsi256_si128(middle));
    _mm_storeu_si128(pTo + 2, _mm256_castsi256_si128(end));
    _mm_storeu_si128(pTo + 3, _mm256_extracti128_si256(start, 1));
    _mm_storeu_si128(pTo + 4, _mm256_extracti128_si256(middle, 1));
    _mm_storeu_si128(pTo + 5, _mm256_extracti128_si256(end, 1));
}

template <bool HALF>
TARVIX_TARGET_AVX2 xlong Colour(const unsigned char *pLuma, const unsigned char *pCb, const unsigned char *pCr,
                                unsigned char *pOutput, xlong lWidth)
{
    xlong x = 0;
    for (; x + PIXELS <= lWidth; x += PIXELS)
        Store(pOutput + 3 * x, HALF ? PixelsHalf(Load(pLuma + x), LoadWords(pCb + x / 2), LoadWords(pCr + x / 2))
                                    : PixelsFull(Load(pLuma + x), Load(pCb + x), Load(pCr + x)));
    return x;
}

TARVIX_TARGET_AVX2 xlong Grey(const unsigned char *pRow, unsigned char *pOutput, xlong lWidth)
{
    xlong x = 0;
    for (; x + PIXELS <= lWidth; x += PIXELS)
    {
        const V luma = Load(pRow + x);
        Store(pOutput + 3 * x, { luma, luma, luma });
    }
    return x;
}
#undef STEP
#undef OP
} // namespace avx2
} // namespace

xlong JpegColourWide(const unsigned char *const *ppRows, bool bHalf, unsigned char *pOutput, xlong lWidth)
{
    if (HasAvx2())
        return bHalf ? avx2::Colour<true>(ppRows[0], ppRows[1], ppRows[2], pOutput, lWidth)
                     : avx2::Colour<false>(ppRows[0], ppRows[1], ppRows[2], pOutput, lWidth);
    return bHalf ? sse2::Colour<true>(ppRows[0], ppRows[1], ppRows[2], pOutput, lWidth)
                 : sse2::Colour<false>(ppRows[0], ppRows[1], ppRows[2], pOutput, lWidth);
}

void JpegGrey(const unsigned char *pRow, unsigned char *pOutput, xlong lWidth)
{
    const xlong lDone = HasAvx2() ? avx2::Grey(pRow, pOutput, lWidth) : sse2::Grey(pRow, pOutput, lWidth);
    JpegWiden(pRow + lDone, pOutput + 3 * lDone, lWidth - lDone, 3);
}
