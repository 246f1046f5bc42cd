#include "core/simd.h"
#include "pictures/kernelrows.h"

#include <algorithm>
#include <stddef.h>
#include <stdint.h>
#include <string.h>
#include <type_traits>

#define STEP TARVIX_TARGET_SSE41 __attribute__((always_inline)) inline

namespace
{
typedef __m128i V;

STEP V Load16(const unsigned char *p)
{
    return _mm_loadu_si128((const V *)p);
}

STEP V Load8(const unsigned char *p)
{
    return _mm_loadl_epi64((const V *)p);
}

STEP void Store16(unsigned char *p, V v)
{
    _mm_storeu_si128((V *)p, v);
}

STEP void Store8(unsigned char *p, V v)
{
    _mm_storel_epi64((V *)p, v);
}

// The result, or what stood there before where the mask is set.
template <bool TRANSPARENT>
STEP void Put16(unsigned char *p, V v, V mask)
{
    Store16(p, TRANSPARENT ? _mm_blendv_epi8(v, Load16(p), mask) : v);
}

template <bool TRANSPARENT>
STEP void Put8(unsigned char *p, V v, V mask)
{
    Store8(p, TRANSPARENT ? _mm_blendv_epi8(v, Load8(p), mask) : v);
}

// Twice four pixels of four bytes to 24 bytes.
STEP void PackTriples(V low, V high, V &start, V &end)
{
    start =
        _mm_or_si128(_mm_shuffle_epi8(low, _mm_setr_epi8(0, 1, 2, 4, 5, 6, 8, 9, 10, 12, 13, 14, -1, -1, -1, -1)),
                     _mm_shuffle_epi8(high, _mm_setr_epi8(-1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, 0, 1, 2, 4)));
    end = _mm_shuffle_epi8(high, _mm_setr_epi8(5, 6, 8, 9, 10, 12, 13, 14, -1, -1, -1, -1, -1, -1, -1, -1));
}

// A step does PIXELS pixels, reads and writes no byte beside them, and can be
// done twice on the same ones.

template <bool SMALL>
struct TSame8
{
    enum
    {
        FROM = 1,
        TO = 1,
        PIXELS = SMALL ? 8 : 16
    };
    STEP explicit TSame8(const TRowCall &call) : key(_mm_set1_epi8((char)call.aucKey[0])) {}
    STEP void operator()(const unsigned char *pSource, unsigned char *pTarget) const
    {
        const V v = SMALL ? Load8(pSource) : Load16(pSource);
        const V mask = _mm_cmpeq_epi8(v, key);
        SMALL ? Put8<true>(pTarget, v, mask) : Put16<true>(pTarget, v, mask);
    }

    V key;
};

// Any bytes, without a key.
struct TBytes
{
    enum
    {
        FROM = 1,
        TO = 1,
        PIXELS = 16
    };
    STEP explicit TBytes(const TRowCall &) {}
    STEP void operator()(const unsigned char *pSource, unsigned char *pTarget) const
    {
        Store16(pTarget, Load16(pSource));
    }
};

struct TSame16
{
    enum
    {
        FROM = 2,
        TO = 2,
        PIXELS = 8
    };
    STEP explicit TSame16(const TRowCall &call) : key(_mm_set1_epi16((short)LoadWord(call.aucKey))) {}
    STEP void operator()(const unsigned char *pSource, unsigned char *pTarget) const
    {
        const V v = Load16(pSource);
        Put16<true>(pTarget, v, _mm_cmpeq_epi16(v, key));
    }

    V key;
};

template <bool TRANSPARENT>
struct TMap16
{
    enum
    {
        FROM = 1,
        TO = 2,
        PIXELS = 8
    };
    STEP explicit TMap16(const TRowCall &call) : pusMap(call.pusMap), key(_mm_set1_epi8((char)call.aucKey[0])) {}
    STEP void operator()(const unsigned char *pSource, unsigned char *pTarget) const
    {
        uint64_t ullSource;
        memcpy(&ullSource, pSource, 8);
        const uint32_t u0 = (uint32_t)ullSource, u1 = (uint32_t)(ullSource >> 32);
        if (!TRANSPARENT)
        {
            StoreFour(pTarget, u0);
            StoreFour(pTarget + 8, u1);
            return;
        }
        V v = _mm_cvtsi32_si128(pusMap[u0 & 255]);
        v = _mm_insert_epi16(v, pusMap[u0 >> 8 & 255], 1);
        v = _mm_insert_epi16(v, pusMap[u0 >> 16 & 255], 2);
        v = _mm_insert_epi16(v, pusMap[u0 >> 24], 3);
        v = _mm_insert_epi16(v, pusMap[u1 & 255], 4);
        v = _mm_insert_epi16(v, pusMap[u1 >> 8 & 255], 5);
        v = _mm_insert_epi16(v, pusMap[u1 >> 16 & 255], 6);
        v = _mm_insert_epi16(v, pusMap[u1 >> 24], 7);
        const V same = _mm_cmpeq_epi8(Load8(pSource), key);
        Put16<TRANSPARENT>(pTarget, v, _mm_unpacklo_epi8(same, same));
    }
    STEP void StoreFour(unsigned char *pTarget, uint32_t u) const
    {
        StoreWord(pTarget, pusMap[u & 255]);
        StoreWord(pTarget + 2, pusMap[u >> 8 & 255]);
        StoreWord(pTarget + 4, pusMap[u >> 16 & 255]);
        StoreWord(pTarget + 6, pusMap[u >> 24]);
    }

    const unsigned short *pusMap;
    V key;
};

// Source words to channels with their highest bit on top, of one channel.
struct TTop
{
    STEP TTop(const TChannel16 &channel)
        : shift(_mm_cvtsi32_si128((int)(16 - channel.ucShift - channel.ucBits))),
          mask(_mm_set1_epi16((short)(0xffff0000 >> channel.ucBits)))
    {
    }
    STEP V operator()(V words) const { return _mm_and_si128(_mm_sll_epi16(words, shift), mask); }

    V shift;
    V mask;
};

template <bool TRANSPARENT>
struct TMove16
{
    enum
    {
        FROM = 2,
        TO = 2,
        PIXELS = 8
    };
    STEP explicit TMove16(const TRowCall &call) : key(_mm_set1_epi16((short)LoadWord(call.aucKey)))
    {
        for (int i = 0; i < 3; ++i)
        {
            aMask[i] = _mm_set1_epi16((short)call.aMoves[i].usMask);
            aLeft[i] = _mm_cvtsi32_si128((int)call.aMoves[i].ucLeft);
            aRight[i] = _mm_cvtsi32_si128((int)call.aMoves[i].ucRight);
        }
    }
    STEP void operator()(const unsigned char *pSource, unsigned char *pTarget) const
    {
        const V v = Load16(pSource);
        V result = _mm_setzero_si128();
        for (int i = 0; i < 3; ++i)
            result =
                _mm_or_si128(result, _mm_srl_epi16(_mm_sll_epi16(_mm_and_si128(v, aMask[i]), aLeft[i]), aRight[i]));
        Put16<TRANSPARENT>(pTarget, result, _mm_cmpeq_epi16(v, key));
    }

    V aMask[3], aLeft[3], aRight[3];
    V key;
};

template <bool TRANSPARENT>
struct TWiden
{
    enum
    {
        FROM = 2,
        TO = 3,
        PIXELS = 8
    };
    STEP explicit TWiden(const TRowCall &call)
        : first(At(call, 0)), middle(At(call, 1)), last(At(call, 2)), key(_mm_set1_epi16((short)LoadWord(call.aucKey)))
    {
    }
    STEP static TTop At(const TRowCall &call, int nByte)
    {
        const TFormat24 &to = call.target24;
        return to.ucRed == nByte ? call.source16.red : to.ucGreen == nByte ? call.source16.green : call.source16.blue;
    }
    STEP void operator()(const unsigned char *pSource, unsigned char *pTarget) const
    {
        const V v = Load16(pSource);
        const V two = _mm_or_si128(_mm_srli_epi16(first(v), 8), middle(v));
        const V one = _mm_srli_epi16(last(v), 8);
        const V mask = _mm_cmpeq_epi16(v, key);
        V start, end, maskStart = mask, maskEnd = mask;
        PackTriples(_mm_unpacklo_epi16(two, one), _mm_unpackhi_epi16(two, one), start, end);
        if (TRANSPARENT)
            PackTriples(_mm_unpacklo_epi16(mask, mask), _mm_unpackhi_epi16(mask, mask), maskStart, maskEnd);
        Put16<TRANSPARENT>(pTarget, start, maskStart);
        Put8<TRANSPARENT>(pTarget + 16, end, maskEnd);
    }
    TTop first, middle, last;
    V key;
};

// Eight pixels of an indexed picture as their colours of four bytes.
struct TColours
{
    STEP explicit TColours(const unsigned char *pColours) : start(Load16(pColours)), end(Load16(pColours + 16)) {}
    STEP TColours(const unsigned char *pSource, const unsigned char *pColours)
        : start(Four(pSource, pColours)), end(Four(pSource + 4, pColours))
    {
    }
    STEP static V Four(const unsigned char *pSource, const unsigned char *pColours)
    {
        return _mm_setr_epi32(One(pColours, pSource[0]), One(pColours, pSource[1]), One(pColours, pSource[2]),
                              One(pColours, pSource[3]));
    }
    STEP static int One(const unsigned char *pColours, size_t ulIndex)
    {
        int n;
        memcpy(&n, pColours + 4 * ulIndex, 4);
        return n;
    }

    V start;
    V end;
};

template <bool TRANSPARENT>
struct TLookup24
{
    enum
    {
        FROM = 1,
        TO = 3,
        PIXELS = 8
    };
    STEP explicit TLookup24(const TRowCall &call)
        : pColours((const unsigned char *)call.pColours), key(_mm_set1_epi8((char)call.aucKey[0]))
    {
        const TFormat24 &to = call.target24;
        const int nOrder = 0 << 8 * to.ucRed | 1 << 8 * to.ucGreen | 2 << 8 * to.ucBlue;
        // Red, green, blue and no alpha, in the target's order.
        order = _mm_add_epi8(_mm_set1_epi32(nOrder | 0x80 << 24), _mm_setr_epi32(0, 0x040404, 0x080808, 0x0c0c0c));
    }
    STEP void operator()(const unsigned char *pSource, unsigned char *pTarget) const
    {
        const TColours v(pSource, pColours);
        V start, end;
        PackTriples(_mm_shuffle_epi8(v.start, order), _mm_shuffle_epi8(v.end, order), start, end);
        const V same = _mm_cmpeq_epi8(Load8(pSource), key);
        Put16<TRANSPARENT>(pTarget, start,
                           _mm_shuffle_epi8(same, _mm_setr_epi8(0, 0, 0, 1, 1, 1, 2, 2, 2, 3, 3, 3, 4, 4, 4, 5)));
        Put8<TRANSPARENT>(pTarget + 16, end,
                          _mm_shuffle_epi8(same, _mm_setr_epi8(5, 5, 6, 6, 6, 7, 7, 7, 0, 0, 0, 0, 0, 0, 0, 0)));
    }

    const unsigned char *pColours;
    V key, order;
};

// Eight pixels of three bytes: the first 16 bytes and the last 16. The first
// five pixels are whole in the one, the others in the other, from byte 7 on.
struct TTriples
{
    STEP explicit TTriples(const unsigned char *p) : start(Load16(p)), end(Load16(p + 8)) {}

    V start;
    V end;
};

// Which of eight pixels equal the key, as masks of four bytes each.
struct TKey24
{
    STEP explicit TKey24(const TRowCall &call)
        : key(_mm_set1_epi32(call.aucKey[0] | call.aucKey[1] << 8 | call.aucKey[2] << 16))
    {
    }
    STEP TTriples Compare(const TTriples &v) const
    {
        TTriples same = v;
        same.start = _mm_cmpeq_epi32(
            _mm_shuffle_epi8(v.start, _mm_setr_epi8(0, 1, 2, -1, 3, 4, 5, -1, 6, 7, 8, -1, 9, 10, 11, -1)), key);
        same.end = _mm_cmpeq_epi32(
            _mm_shuffle_epi8(v.end, _mm_setr_epi8(4, 5, 6, -1, 7, 8, 9, -1, 10, 11, 12, -1, 13, 14, 15, -1)), key);
        return same;
    }
    // The masks of eight 16-bit pixels.
    STEP V Words(const TTriples &v) const
    {
        const TTriples same = Compare(v);
        return _mm_packs_epi32(same.start, same.end);
    }

    V key;
};

// Where the bytes of eight pixels come from: those of the first five, the first
// byte of the sixth, and the rest, for every order of source bytes.
struct TTripleOrder
{
    unsigned char aucFirst[16];
    unsigned char aucSixth[16];
    unsigned char aucRest[8];
};

struct TTripleOrders
{
    constexpr TTripleOrders() : aOrders()
    {
        for (int n = 0; n < 27; ++n)
        {
            const int anFrom[3] = { n / 9, n / 3 % 3, n % 3 };
            TTripleOrder &order = aOrders[anFrom[0]][anFrom[1]][anFrom[2]];
            for (int i = 0; i < 15; ++i)
            {
                order.aucFirst[i] = (unsigned char)(i / 3 * 3 + anFrom[i % 3]);
                order.aucSixth[i] = 0x80;
            }
            order.aucFirst[15] = 0x80;
            order.aucSixth[15] = (unsigned char)(15 + anFrom[0] - 8);
            for (int i = 16; i < 24; ++i)
                order.aucRest[i - 16] = (unsigned char)(i / 3 * 3 + anFrom[i % 3] - 8);
        }
    }

    TTripleOrder aOrders[3][3][3];
};

constexpr TTripleOrders s_Orders;

template <bool PERMUTE, bool TRANSPARENT>
struct TTriple
{
    enum
    {
        FROM = 3,
        TO = 3,
        PIXELS = 8
    };
    STEP explicit TTriple(const TRowCall &call) : key(call)
    {
        if (!PERMUTE)
            return;
        unsigned char aucFrom[3];
        aucFrom[call.target24.ucRed] = call.source24.ucRed;
        aucFrom[call.target24.ucGreen] = call.source24.ucGreen;
        aucFrom[call.target24.ucBlue] = call.source24.ucBlue;
        const TTripleOrder &order = s_Orders.aOrders[aucFrom[0]][aucFrom[1]][aucFrom[2]];
        orderFirst = Load16(order.aucFirst);
        orderSixth = Load16(order.aucSixth);
        orderRest = Load8(order.aucRest);
    }
    STEP void operator()(const unsigned char *pSource, unsigned char *pTarget) const
    {
        const TTriples v(pSource);
        const V start = PERMUTE
                            ? _mm_or_si128(_mm_shuffle_epi8(v.start, orderFirst), _mm_shuffle_epi8(v.end, orderSixth))
                            : v.start;
        const V rest = PERMUTE ? _mm_shuffle_epi8(v.end, orderRest) : _mm_srli_si128(v.end, 8);
        if (!TRANSPARENT)
        {
            Store16(pTarget, start);
            Store8(pTarget + 16, rest);
            return;
        }
        const TTriples same = key.Compare(v);
        V maskStart, maskRest;
        PackTriples(same.start, same.end, maskStart, maskRest);
        Put16<true>(pTarget, start, maskStart);
        Put8<true>(pTarget + 16, rest, maskRest);
    }

    TKey24 key;
    V orderFirst, orderSixth, orderRest;
};

// The bytes of one channel of eight pixels, as the high bytes of words, and
// from there to their field. BYTES are those of a pixel.
template <int BYTES>
struct TField
{
    STEP TField(const TChannel16 &channel, int nByte)
        : shift(_mm_cvtsi32_si128((int)(16 - channel.ucShift - channel.ucBits))),
          mask(_mm_set1_epi16((short)(0xffff0000 >> channel.ucBits)))
    {
        // The first byte's order; the others' lie one and two bytes on.
        const char N = -128;
        const V on = _mm_set1_epi16((short)(nByte << 8));
        orderStart = BYTES == 3 ? _mm_setr_epi8(N, 0, N, 3, N, 6, N, 9, N, 12, N, N, N, N, N, N)
                                : _mm_setr_epi8(N, 0, N, 4, N, 8, N, 12, N, N, N, N, N, N, N, N);
        orderEnd = BYTES == 3 ? _mm_setr_epi8(N, N, N, N, N, N, N, N, N, N, N, 7, N, 10, N, 13)
                              : _mm_setr_epi8(N, N, N, N, N, N, N, N, N, 0, N, 4, N, 8, N, 12);
        orderStart = _mm_add_epi8(on, orderStart);
        orderEnd = _mm_add_epi8(on, orderEnd);
    }
    template <class TEight>
    STEP V operator()(const TEight &v) const
    {
        const V bytes = _mm_or_si128(_mm_shuffle_epi8(v.start, orderStart), _mm_shuffle_epi8(v.end, orderEnd));
        return _mm_srl_epi16(_mm_and_si128(bytes, mask), shift);
    }

    V shift, mask, orderStart, orderEnd;
};

template <int BYTES>
struct TFields
{
    STEP TFields(const TFormat16 &to, int nRed, int nGreen, int nBlue)
        : red(to.red, nRed), green(to.green, nGreen), blue(to.blue, nBlue)
    {
    }
    template <class TEight>
    STEP V operator()(const TEight &v) const
    {
        return _mm_or_si128(_mm_or_si128(red(v), green(v)), blue(v));
    }

    TField<BYTES> red, green, blue;
};

// A whole palette to words: eight colours in a step.
struct TPackColours
{
    enum
    {
        FROM = 4,
        TO = 2,
        PIXELS = 8
    };
    STEP explicit TPackColours(const TRowCall &call) : fields(call.target16, 0, 1, 2) {}
    STEP void operator()(const unsigned char *pSource, unsigned char *pTarget) const
    {
        Store16(pTarget, fields(TColours(pSource)));
    }

    TFields<4> fields;
};

template <bool TRANSPARENT>
struct TLookup16
{
    enum
    {
        FROM = 1,
        TO = 2,
        PIXELS = 8
    };
    STEP explicit TLookup16(const TRowCall &call)
        : fields(call.target16, 0, 1, 2), pColours((const unsigned char *)call.pColours),
          key(_mm_set1_epi8((char)call.aucKey[0]))
    {
    }
    STEP void operator()(const unsigned char *pSource, unsigned char *pTarget) const
    {
        const V same = _mm_cmpeq_epi8(Load8(pSource), key);
        Put16<TRANSPARENT>(pTarget, fields(TColours(pSource, pColours)), _mm_unpacklo_epi8(same, same));
    }

    TFields<4> fields;
    const unsigned char *pColours;
    V key;
};

template <bool TRANSPARENT>
struct TNarrow
{
    enum
    {
        FROM = 3,
        TO = 2,
        PIXELS = 8
    };
    STEP explicit TNarrow(const TRowCall &call)
        : fields(call.target16, call.source24.ucRed, call.source24.ucGreen, call.source24.ucBlue), key(call)
    {
    }
    STEP void operator()(const unsigned char *pSource, unsigned char *pTarget) const
    {
        const TTriples v(pSource);
        const V result = fields(v);
        Put16<TRANSPARENT>(pTarget, result, TRANSPARENT ? key.Words(v) : result);
    }

    TFields<3> fields;
    TKey24 key;
};

struct TKeep16
{
    enum
    {
        FROM = 3,
        TO = 2,
        PIXELS = 8
    };
    STEP explicit TKeep16(const TRowCall &call)
        : key(call), keyWord(_mm_set1_epi16((short)call.usKeyWord)), otherWord(_mm_set1_epi16((short)call.usOtherWord))
    {
    }
    STEP void operator()(const unsigned char *pSource, unsigned char *pTarget) const
    {
        const V old = Load16(pTarget);
        const V moved = _mm_blendv_epi8(old, otherWord, _mm_cmpeq_epi16(old, keyWord));
        Store16(pTarget, _mm_blendv_epi8(moved, keyWord, key.Words(TTriples(pSource))));
    }

    TKey24 key;
    V keyWord, otherWord;
};

// Rows that are too short for one step are done in buffers. The last step of
// the others lies over the one before.
template <class TStep, class TSmall = TStep>
TARVIX_TARGET_SSE41 void FastRows(const TRows &area, const TRowCall &call)
{
    if (!std::is_same_v<TStep, TSmall> && area.lWidth < TStep::PIXELS && area.lWidth >= TSmall::PIXELS)
    {
        FastRows<TSmall>(area, call);
        return;
    }
    const TStep step(call);
    const ptrdiff_t lLast = area.lWidth - TStep::PIXELS;
    const unsigned char *pSource = area.pSource;
    unsigned char *pTarget = area.pTarget;
    const ptrdiff_t lSourcePitch = area.lSourcePitch, lTargetPitch = area.lTargetPitch;
    if (lLast >= 0)
    {
        for (xlong y = area.lHeight; y > 0; --y, pSource += lSourcePitch, pTarget += lTargetPitch)
        {
            for (ptrdiff_t x = 0; x < lLast; x += TStep::PIXELS)
                step(pSource + x * TStep::FROM, pTarget + x * TStep::TO);
            step(pSource + lLast * TStep::FROM, pTarget + lLast * TStep::TO);
        }
        return;
    }
    unsigned char aucSource[TStep::PIXELS * TStep::FROM] = {}, aucTarget[TStep::PIXELS * TStep::TO];
    const size_t ulSource = (size_t)area.lWidth * TStep::FROM, ulTarget = (size_t)area.lWidth * TStep::TO;
    for (xlong y = area.lHeight; y > 0; --y, pSource += lSourcePitch, pTarget += lTargetPitch)
    {
        memcpy(aucSource, pSource, ulSource);
        memcpy(aucTarget, pTarget, ulTarget);
        step(aucSource, aucTarget);
        memcpy(pTarget, aucTarget, ulTarget);
    }
}

// Indices to words by permutations: a map of 256 words is as many bytes twice,
// in four registers each.
TARVIX_TARGET_AVX512 __attribute__((always_inline)) inline __m512i MapBytes(const __m512i *pTable, __m512i indices)
{
    return _mm512_mask_blend_epi8(_mm512_movepi8_mask(indices), _mm512_permutex2var_epi8(pTable[0], indices, pTable[1]),
                                  _mm512_permutex2var_epi8(pTable[2], indices, pTable[3]));
}

template <bool TRANSPARENT>
TARVIX_TARGET_AVX512 void MapRows16(const TRows &area, const TRowCall &call)
{
    unsigned char aucLow[256], aucHigh[256];
    for (int i = 0; i < 256; ++i)
    {
        aucLow[i] = (unsigned char)call.pusMap[i];
        aucHigh[i] = (unsigned char)(call.pusMap[i] >> 8);
    }
    __m512i aLow[4], aHigh[4];
    for (int i = 0; i < 4; ++i)
    {
        aLow[i] = _mm512_loadu_si512(aucLow + 64 * i);
        aHigh[i] = _mm512_loadu_si512(aucHigh + 64 * i);
    }
    const __m512i key = _mm512_set1_epi8((char)call.aucKey[0]);
    // So that the halves of unpacking come out one behind the other.
    const __m512i order = _mm512_setr_epi64(0, 4, 1, 5, 2, 6, 3, 7);
    for (xlong y = 0; y < area.lHeight; ++y)
    {
        const unsigned char *pSource = area.pSource + y * area.lSourcePitch;
        unsigned char *pTarget = area.pTarget + y * area.lTargetPitch;
        for (xlong x = 0; x < area.lWidth; x += 64)
        {
            const xlong lLeft = area.lWidth - x;
            __mmask64 mask = lLeft < 64 ? ((__mmask64)1 << lLeft) - 1 : ~(__mmask64)0;
            __m512i indices = _mm512_maskz_loadu_epi8(mask, pSource + x);
            if (TRANSPARENT)
                mask &= _mm512_cmpneq_epi8_mask(indices, key);
            indices = _mm512_maskz_permutexvar_epi64(0xff, order, indices);
            const __m512i low = MapBytes(aLow, indices), high = MapBytes(aHigh, indices);
            _mm512_mask_storeu_epi16(pTarget + 2 * (ptrdiff_t)x, (__mmask32)mask, _mm512_unpacklo_epi8(low, high));
            _mm512_mask_storeu_epi16(pTarget + 2 * (ptrdiff_t)x + 64, (__mmask32)(mask >> 32),
                                     _mm512_unpackhi_epi8(low, high));
        }
    }
}

// One channel of dithered pixels that stand in four bytes each.
struct TDitherField
{
    STEP TDitherField(const TChannel16 &channel, int nByte)
    {
        const int nTop = 8 * nByte + 8, nTo = (int)(channel.ucShift + channel.ucBits);
        mask = _mm_set1_epi32((int)(((0xff00u >> channel.ucBits) & 0xff) << 8 * nByte));
        left = _mm_cvtsi32_si128(std::max(nTo - nTop, 0));
        right = _mm_cvtsi32_si128(std::max(nTop - nTo, 0));
    }
    STEP V operator()(V v) const { return _mm_srl_epi32(_mm_sll_epi32(_mm_and_si128(v, mask), left), right); }

    V mask, left, right;
};

struct TDither
{
    STEP explicit TDither(const TRowCall &call)
        : red(call.target16.red, call.source24.ucRed), green(call.target16.green, call.source24.ucGreen),
          blue(call.target16.blue, call.source24.ucBlue), error(_mm_setzero_si128())
    {
        const V fields = _mm_or_si128(_mm_or_si128(red.mask, green.mask), blue.mask);
        errorMask = _mm_andnot_si128(fields, _mm_set1_epi32(0xffffff));
    }
    // One column of four rows.
    STEP V operator()(V column)
    {
        const V v = _mm_adds_epu8(column, error);
        error = _mm_and_si128(v, errorMask);
        return _mm_or_si128(_mm_or_si128(red(v), green(v)), blue(v));
    }

    TDitherField red, green, blue;
    V errorMask, error;
};

// Four pixels, of which lPixels are there, in four bytes each.
STEP V LoadFour(const unsigned char *p, xlong lPixels)
{
    const V order = _mm_setr_epi8(0, 1, 2, -1, 3, 4, 5, -1, 6, 7, 8, -1, 9, 10, 11, -1);
    if (lPixels >= 6)
        return _mm_shuffle_epi8(Load16(p), order);
    if (lPixels >= 4)
    {
        int nLast;
        memcpy(&nLast, p + 8, 4);
        return _mm_shuffle_epi8(_mm_unpacklo_epi64(Load8(p), _mm_cvtsi32_si128(nLast)), order);
    }
    unsigned char auc[16] = {};
    memcpy(auc, p, (size_t)lPixels * 3);
    return _mm_shuffle_epi8(Load16(auc), order);
}

STEP void StoreFour(unsigned char *p, V words, xlong lPixels)
{
    if (lPixels >= 4)
    {
        Store8(p, words);
        return;
    }
    unsigned char auc[16];
    Store16(auc, words);
    memcpy(p, auc, (size_t)lPixels * 2);
}

// The error runs along the rows, so that four rows go side by side; of the
// last four, some can be missing, and are done again as another one.
TARVIX_TARGET_SSE41 void DitherFour(const TRows &area, xlong lFirst, const TRowCall &call)
{
    TDither dither(call);
    const unsigned char *apSource[4];
    unsigned char *apTarget[4];
    for (xlong i = 0; i < 4; ++i)
    {
        const xlong lRow = std::min(lFirst + i, area.lHeight - 1);
        apSource[i] = area.pSource + lRow * area.lSourcePitch;
        apTarget[i] = area.pTarget + lRow * area.lTargetPitch;
    }
    for (ptrdiff_t x = 0; x < area.lWidth; x += 4)
    {
        const xlong lLeft = area.lWidth - (xlong)x;
        const V a = LoadFour(apSource[0] + 3 * x, lLeft), b = LoadFour(apSource[1] + 3 * x, lLeft);
        const V c = LoadFour(apSource[2] + 3 * x, lLeft), d = LoadFour(apSource[3] + 3 * x, lLeft);
        const V ab = _mm_unpacklo_epi32(a, b), cd = _mm_unpacklo_epi32(c, d);
        const V ab2 = _mm_unpackhi_epi32(a, b), cd2 = _mm_unpackhi_epi32(c, d);
        const V column0 = dither(_mm_unpacklo_epi64(ab, cd));
        const V column1 = dither(_mm_unpackhi_epi64(ab, cd));
        const V column2 = dither(_mm_unpacklo_epi64(ab2, cd2));
        const V column3 = dither(_mm_unpackhi_epi64(ab2, cd2));
        const V start = _mm_or_si128(column0, _mm_slli_epi32(column1, 16));
        const V end = _mm_or_si128(column2, _mm_slli_epi32(column3, 16));
        const V rows01 = _mm_unpacklo_epi32(start, end), rows23 = _mm_unpackhi_epi32(start, end);
        StoreFour(apTarget[0] + 2 * x, rows01, lLeft);
        StoreFour(apTarget[1] + 2 * x, _mm_srli_si128(rows01, 8), lLeft);
        StoreFour(apTarget[2] + 2 * x, rows23, lLeft);
        StoreFour(apTarget[3] + 2 * x, _mm_srli_si128(rows23, 8), lLeft);
    }
}

void DitherRows(const TRows &area, const TRowCall &call)
{
    for (xlong lFirst = 0; lFirst < area.lHeight; lFirst += 4)
        DitherFour(area, lFirst, call);
}

template <bool TRANSPARENT>
TRowFunction PickFast(TRowKind kind)
{
    // In the order of TRowKind.
    static constexpr TRowFunction s_apfn[ROW_KINDS] = {
        FastRows<TBytes>,
        FastRows<TSame8<false>, TSame8<true>>,
        FastRows<TSame16>,
        FastRows<TTriple<false, true>>,
        FastRows<TLookup16<TRANSPARENT>>,
        FastRows<TMap16<TRANSPARENT>>,
        FastRows<TPackColours>,
        FastRows<TLookup24<TRANSPARENT>>,
        FastRows<TMove16<TRANSPARENT>>,
        FastRows<TWiden<TRANSPARENT>>,
        FastRows<TTriple<true, TRANSPARENT>>,
        FastRows<TNarrow<TRANSPARENT>>,
        DitherRows,
        FastRows<TKeep16>,
    };
    return s_apfn[kind];
}

bool FitsWord(const TFormat16 &format)
{
    return format.red.ucShift + format.red.ucBits <= 16 && format.green.ucShift + format.green.ucBits <= 16 &&
           format.blue.ucShift + format.blue.ucBits <= 16;
}

} // namespace

TRowFunction FastRow(TRowKind kind, bool bTransparent, const TRowCall &call)
{
    if (!HasSse41() || (kind == ROW_16TO24 && !FitsWord(call.source16)) ||
        ((kind == ROW_24TO16 || kind == ROW_8TO16 || kind == ROW_COLOURS) && !FitsWord(call.target16)) ||
        (kind == ROW_DITHER && (!FitsWord(call.target16) || !call.source24.IsComplete())))
        return nullptr;
    if (kind == ROW_8TO16_MAP && HasAvx512())
        return bTransparent ? MapRows16<true> : MapRows16<false>;
    return bTransparent ? PickFast<true>(kind) : PickFast<false>(kind);
}
