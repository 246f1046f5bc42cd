#pragma once

#include "tarvix/types.h"

#include <stddef.h>

/// Where the heap gets its memory: a pointer that moves like a break inside
/// reserved address space, page by page. See src/win/heapbreak.cpp.
/// @param lBytes  a multiple of s_ulHeapPage; positive grows, negative gives
///                back what lies at the end of the current region, 0 asks
/// @return the old end, as the break of a process would; null on failure. A
///         growth that starts a new region answers that region's start.
char *HeapBreak(ptrdiff_t lBytes);
const size_t s_ulHeapPage = 4096;

#ifdef TARVIX_TESTING
struct THeapState
{
    size_t ulLiveBlocks;
    size_t ulLiveBytes;  ///< requested by callers
    size_t ulHeldBytes;  ///< taken from the system and not given back
    size_t ulFreeBlocks; ///< in bins, the top not counted
    size_t ulTopBytes;
    const char *pszFault; ///< null when all tags, bins and bits agree
};

/// Walks the whole heap.
TARVIX_API THeapState HeapState();
/// Makes one allocation fail: the lCount-th from now on, 1 for the next, 0 for
/// none. HeapFailed tells whether it has come to that.
TARVIX_API void HeapFailAt(xlong lCount);
TARVIX_API xlong HeapFailed();
#endif
