#pragma once

#include "tarvix/types.h"

// What must hold between two statements, whatever hosts and files do. Checked
// in test and sanitizer builds; the product does not even compute it.

#if defined(TARVIX_TESTING) || defined(__SANITIZE_ADDRESS__)
#define TARVIX_INVARIANTS
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define TARVIX_INVARIANTS
#endif
#endif

#ifdef TARVIX_INVARIANTS
/// Writes place and text to standard error and ends the program.
[[noreturn]] TARVIX_INTERNAL void InvariantFailed(const char *pszFile, int nLine, const char *pszText);
#define TARVIX_INVARIANT(condition) ((condition) ? (void)0 : InvariantFailed(__FILE__, __LINE__, #condition))
#else
// The operand is not evaluated; so what it names alone counts as used.
#define TARVIX_INVARIANT(condition) ((void)sizeof(!(condition)))
#endif
