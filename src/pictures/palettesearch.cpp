#include "pictures/palettesearch.h"

#include "core/simd.h"

#include <algorithm>
#include <limits.h>
#include <string.h>

namespace
{
// 256 times the squared distance, plus the index: the least one is wanted.
xulong EntryKey(const TRGBA *pColours, xlong lIndex, const TRGBA &colour)
{
    const xlong lRed = pColours[lIndex].ucRed - colour.ucRed;
    const xlong lGreen = pColours[lIndex].ucGreen - colour.ucGreen;
    const xlong lBlue = pColours[lIndex].ucBlue - colour.ucBlue;
    return (xulong)(lRed * lRed + lGreen * lGreen + lBlue * lBlue) << 8 | (xulong)lIndex;
}

xulong SearchPlain(const TRGBA *pColours, xlong lFirst, xlong lLast, const TRGBA &colour, xulong &ulSecond)
{
    xulong ulBest = INT_MAX;
    ulSecond = INT_MAX;
    for (xlong i = lFirst; i < lLast; ++i)
    {
        const xulong ulKey = EntryKey(pColours, i, colour);
        ulSecond = std::min(ulSecond, std::max(ulBest, ulKey));
        ulBest = std::min(ulBest, ulKey);
    }
    return ulBest;
}

struct TIndices
{
    constexpr TIndices() : an()
    {
        for (int i = 0; i < 256; ++i)
            an[i] = i;
    }

    int an[256];
};

constexpr TIndices s_Indices;

namespace base
{
struct TVec
{
    typedef __m128i T;
    enum
    {
        LANES = 4
    };
    static T Load(const void *p) { return _mm_loadu_si128((const __m128i *)p); }
    static void Store(int *p, T a) { _mm_storeu_si128((__m128i *)p, a); }
    static T Set(int n) { return _mm_set1_epi32(n); }
    static T And(T a, T b) { return _mm_and_si128(a, b); }
    static T Or(T a, T b) { return _mm_or_si128(a, b); }
    static T Add(T a, T b) { return _mm_add_epi32(a, b); }
    static T Sub(T a, T b) { return _mm_sub_epi32(a, b); }
    static T Sub16(T a, T b) { return _mm_sub_epi16(a, b); }
    static T Madd(T a, T b) { return _mm_madd_epi16(a, b); }
    static T RedBlue(T a) { return And(_mm_slli_epi32(a, 4), Set(0x0ff00ff0)); }
    static T Green(T a) { return And(_mm_srli_epi32(a, 4), Set(0x00000ff0)); }
    static T ShiftRight(T a, int n) { return _mm_srli_epi32(a, n); }
    static T Greater(T a, T b) { return _mm_cmpgt_epi32(a, b); }
    static T Pick(T mask, T a, T b) { return _mm_or_si128(_mm_and_si128(mask, a), _mm_andnot_si128(mask, b)); }
    static T Min(T a, T b) { return Pick(Greater(a, b), b, a); }
    static T Max(T a, T b) { return Pick(Greater(a, b), a, b); }
    static int Least(T a)
    {
        a = Min(a, _mm_shuffle_epi32(a, 0x4e));
        return _mm_cvtsi128_si32(Min(a, _mm_shuffle_epi32(a, 0xb1)));
    }
};
#define SEARCH_TARGET
#include "pictures/palettesearch.inl"
#undef SEARCH_TARGET
} // namespace base

namespace wide
{
#define SEARCH_TARGET TARVIX_TARGET_AVX2
struct TVec
{
    typedef __m256i T;
    enum
    {
        LANES = 8
    };
    SEARCH_TARGET static T Load(const void *p) { return _mm256_loadu_si256((const __m256i *)p); }
    SEARCH_TARGET static void Store(int *p, T a) { _mm256_storeu_si256((__m256i *)p, a); }
    SEARCH_TARGET static T Set(int n) { return _mm256_set1_epi32(n); }
    SEARCH_TARGET static T Or(T a, T b) { return _mm256_or_si256(a, b); }
    SEARCH_TARGET static T Add(T a, T b) { return _mm256_add_epi32(a, b); }
    SEARCH_TARGET static T Sub(T a, T b) { return _mm256_sub_epi32(a, b); }
    SEARCH_TARGET static T Sub16(T a, T b) { return _mm256_sub_epi16(a, b); }
    SEARCH_TARGET static T Madd(T a, T b) { return _mm256_madd_epi16(a, b); }
    SEARCH_TARGET static T RedBlue(T a) { return _mm256_maddubs_epi16(a, Set(0x00100010)); }
    SEARCH_TARGET static T Green(T a) { return _mm256_maddubs_epi16(a, Set(0x00001000)); }
    SEARCH_TARGET static T ShiftRight(T a, int n) { return _mm256_srli_epi32(a, n); }
    SEARCH_TARGET static T Greater(T a, T b) { return _mm256_cmpgt_epi32(a, b); }
    SEARCH_TARGET static T Min(T a, T b) { return _mm256_min_epi32(a, b); }
    SEARCH_TARGET static T Max(T a, T b) { return _mm256_max_epi32(a, b); }
    SEARCH_TARGET static int Least(T a)
    {
        __m128i b = _mm_min_epi32(_mm256_castsi256_si128(a), _mm256_extracti128_si256(a, 1));
        b = _mm_min_epi32(b, _mm_shuffle_epi32(b, 0x4e));
        return _mm_cvtsi128_si32(_mm_min_epi32(b, _mm_shuffle_epi32(b, 0xb1)));
    }
};
#include "pictures/palettesearch.inl"
#undef SEARCH_TARGET
} // namespace wide

template <bool SECOND>
inline xulong SearchRange(const TRGBA *pColours, xlong lFirst, xlong lLast, const TRGBA &colour, xulong &ulSecond)
{
    if (lLast - lFirst >= wide::TVec::LANES)
        return HasAvx2() ? wide::SearchEntries<SECOND>(pColours, lFirst, lLast, colour, ulSecond)
                         : base::SearchEntries<SECOND>(pColours, lFirst, lLast, colour, ulSecond);
    return SearchPlain(pColours, lFirst, lLast, colour, ulSecond);
}
} // namespace

xlong FindNearest(const TRGBA *pColours, xlong lFirst, xlong lLast, const TRGBA &colour)
{
    xulong ulSecond;
    return (xlong)(SearchRange<false>(pColours, lFirst, lLast, colour, ulSecond) & 255);
}

xlong FindSecondNearest(const TRGBA *pColours, xlong lFirst, xlong lLast, const TRGBA &colour)
{
    xulong ulSecond;
    SearchRange<true>(pColours, lFirst, lLast, colour, ulSecond);
    return (xlong)(std::min(ulSecond, EntryKey(pColours, lLast, colour)) & 255);
}

CPaletteSearch::CPaletteSearch(const CPalette &palette)
    : m_lFirst(palette.m_ucFirst), m_lGroups(std::max(0, (palette.m_ucLast - palette.m_ucFirst + 15) / 16 * 2)),
      m_bWide(HasAvx2())
{
    // An empty slot matches white alone, which is always searched.
    memset(m_aulCache, 0xff, sizeof m_aulCache);
    const xlong lEntries = palette.m_ucLast - m_lFirst;
    for (xlong i = 0; i < m_lGroups * 8; ++i)
    {
        const bool bThere = i < lEntries;
        const TRGBA colour = bThere ? palette.m_Colors[m_lFirst + i] : TRGBA(0, 0, 0);
        const int nSquare =
            colour.ucRed * colour.ucRed + colour.ucGreen * colour.ucGreen + colour.ucBlue * colour.ucBlue;
        m_asRedGreen[2 * i] = (short)(colour.ucRed * 4);
        m_asRedGreen[2 * i + 1] = (short)(colour.ucGreen * 4);
        m_asBlue[2 * i] = (short)(colour.ucBlue * 4);
        m_asBlue[2 * i + 1] = 0;
        m_anSquares[i] = bThere ? nSquare << 8 | (m_lFirst + i) : INT_MAX;
    }
}

xulong CPaletteSearch::Search(xulong ulRed, xulong ulGreen, xulong ulBlue) const
{
    if (!m_lGroups)
        return (xulong)m_lFirst;
    return m_bWide ? wide::SearchPrepared(m_asRedGreen, m_asBlue, m_anSquares, m_lGroups * 8, ulRed, ulGreen, ulBlue)
                   : base::SearchPrepared(m_asRedGreen, m_asBlue, m_anSquares, m_lGroups * 8, ulRed, ulGreen, ulBlue);
}
