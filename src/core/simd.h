#pragma once

#include "tarvix/types.h"

#include <immintrin.h>

// SSE2 is there on every target. What is wider is chosen at run time, by the
// questions below and nowhere else; their answers come from a table that the
// compiler's runtime fills at load.

#ifndef __SSE2__
#error "The library counts on SSE2 (-msse2 on 32-bit processors)."
#endif

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

#define TARVIX_TARGET_SSE41 __attribute__((target("sse4.1")))
#define TARVIX_TARGET_AVX2 __attribute__((target("avx2")))
#define TARVIX_TARGET_AVX512 __attribute__((target("avx512f,avx512bw,avx512vbmi")))

inline bool HasSse41()
{
    return s_lSimdLimit >= SIMD_SSE41 && __builtin_cpu_supports("sse4.1");
}

// On 64-bit Windows the compiler spills registers of 32 bytes and more to
// addresses that are not aligned for them.
#ifdef _WIN64
const bool s_bWideRegisters = false;
#else
const bool s_bWideRegisters = true;
#endif

inline bool HasAvx2()
{
    return s_bWideRegisters && s_lSimdLimit >= SIMD_AVX2 && __builtin_cpu_supports("avx2");
}

inline bool HasAvx512()
{
    return s_bWideRegisters && s_lSimdLimit >= SIMD_AVX512 && __builtin_cpu_supports("avx512bw") &&
           __builtin_cpu_supports("avx512vbmi");
}
