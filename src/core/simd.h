#pragma once

#include "tarvix/types.h"

// Wider instructions than the baseline's SSE2 are chosen at run time. The
// answers come from a table that the compiler's runtime fills at load.

/// Sets of instructions, each with those before it.
enum
{
    SIMD_BASE,
    SIMD_SSE41,
    SIMD_AVX2,
    SIMD_AVX512, ///< with byte permutations
    SIMD_ALL = SIMD_AVX512
};

#ifdef TARVIX_TESTING
/// The widest set that may be used: tests run all of them.
extern TARVIX_API xlong s_lSimdLimit;
#else
const xlong s_lSimdLimit = SIMD_ALL;
#endif

#if defined(__SSE2__)
#define TARVIX_SSE2
#define TARVIX_TARGET_SSE41 __attribute__((target("sse4.1")))
#define TARVIX_TARGET_AVX2 __attribute__((target("avx2")))
#define TARVIX_TARGET_AVX512 __attribute__((target("avx512f,avx512bw,avx512vbmi")))

inline bool HasSse41()
{
    return s_lSimdLimit >= SIMD_SSE41 && __builtin_cpu_supports("sse4.1");
}

// On 64-bit Windows the compiler spills registers of 32 bytes and more to
// addresses that are not aligned for them.
#if defined(_WIN64)
inline bool HasAvx2()
{
    return false;
}

inline bool HasAvx512()
{
    return false;
}
#else
inline bool HasAvx2()
{
    return s_lSimdLimit >= SIMD_AVX2 && __builtin_cpu_supports("avx2");
}

inline bool HasAvx512()
{
    return s_lSimdLimit >= SIMD_AVX512 && __builtin_cpu_supports("avx512bw") && __builtin_cpu_supports("avx512vbmi");
}
#endif
#endif
