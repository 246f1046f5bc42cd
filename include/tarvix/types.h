#pragma once

#include <stddef.h>

/// 32-bit integers of the interface on every target. On Windows they are long
/// and unsigned long, since these types are part of the names that programs
/// there link. Print them with %ld and a cast to (long).
#ifdef _WIN32
typedef long xlong;
typedef unsigned long xulong;
#else
typedef int xlong;
typedef unsigned int xulong;
#endif

/// Message parameters and results that can carry a pointer: pointer-sized,
/// and on 32-bit Windows long and unsigned int.
#if defined(_WIN64)
typedef long long xparam;
typedef unsigned long long xuparam;
#elif defined(_WIN32)
typedef long xparam;
typedef unsigned int xuparam;
#else
typedef long xparam;
typedef unsigned long xuparam;
#endif

static_assert(sizeof(xlong) == 4 && sizeof(xulong) == 4, "the interface counts on 32 bits");
static_assert(sizeof(xparam) == sizeof(void *) && sizeof(xuparam) == sizeof(void *), "must carry a pointer");

/// TARVIX_API marks what a host may use. TARVIX_INTERNAL marks inner functions
/// that the tests call: they are exported in the library that the tests link,
/// and hidden in the product.
#ifdef _WIN32
#ifdef TARVIX_BUILD
#define TARVIX_API __declspec(dllexport)
#else
#define TARVIX_API __declspec(dllimport)
#endif
#define TARVIX_HIDDEN
#else
#define TARVIX_API __attribute__((visibility("default")))
#define TARVIX_HIDDEN __attribute__((visibility("hidden")))
#endif
#ifdef TARVIX_TESTING
#define TARVIX_INTERNAL TARVIX_API
#else
#define TARVIX_INTERNAL TARVIX_HIDDEN
#endif

#ifdef __GNUC__
#define TARVIX_PRINTF(lFormat, lFirst) __attribute__((format(printf, lFormat, lFirst)))
#else
#define TARVIX_PRINTF(lFormat, lFirst)
#endif

// The platform's handles, declared as the platform's own header declares them.
struct HWND__;
struct HDC__;
struct HINSTANCE__;
typedef struct HWND__ *HWND;
typedef struct HDC__ *HDC;
typedef struct HINSTANCE__ *HINSTANCE;
