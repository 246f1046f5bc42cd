#pragma once

#include "tarvix/types.h"

#include <new>

/// System layer: a private heap apart from the runtime's. Blocks are aligned
/// on 8 bytes in 32-bit builds and on 16 in 64-bit builds. Not thread-safe.
/// @param lSize  bytes; 0 gives a smallest block, negative fails
/// @return null when memory is exhausted; nothing is reported
TARVIX_API void *xSysAllocMem(xlong lSize);
/// Resizes in place where it can. The contents are kept up to the smaller size.
/// @param pMem  from the system layer; null allocates
/// @return null when memory is exhausted, and pMem is then still valid
TARVIX_API void *xSysReallocMem(void *pMem, xlong lSize);
/// @param pMem  from the system layer; null is ignored
TARVIX_API void xSysFreeMem(void *pMem);

/// Plain layer: a block with the tag "XFAL" in the four bytes before it.
/// @param ulSize   bytes, 0 allowed
/// @param pszFile  ignored, as lLine
/// @return null on exhaustion; nothing is reported
TARVIX_API void *xAllocMemFunc(xulong ulSize, const char *pszFile, xlong lLine);
TARVIX_API void *xAllocMem(xulong ulSize, const char *pszFile, xlong lLine);
/// Frees a plain or a tracked block, told apart by its tag.
/// @param pszFile  the caller's place for the error text; may be null
/// @return 1; 0 with a text for a null pointer and for a block without a tag,
///         which is left alone
TARVIX_API int xFreeMem(void *pMem, const char *pszFile, xlong lLine);
/// As xFreeMem, but a null pointer gives 0 without a report.
TARVIX_API int xFreeMemFunc(void *pMem, const char *pszFile, xlong lLine);

/// As the runtime's memchr with the low byte of sValue.
TARVIX_API void *xMemchr(const void *pMem, short sValue, xulong ulLen);
/// @return -1, 0 or 1, comparing unsigned bytes; 0 for length 0
TARVIX_API xlong xMemcmp(const void *pA, const void *pB, xulong ulLen);
/// Regions must not overlap.
/// @return pTo
TARVIX_API void *xMemcpy(void *pTo, const void *pFrom, xulong ulLen);
/// Fills with the low byte of sValue.
/// @return pMem
TARVIX_API void *xMemset(void *pMem, short sValue, xulong ulLen);
/// Fills ulCount 16-bit values; the block may begin at an odd address.
TARVIX_API void *xMemset16(void *pMem, unsigned short usValue, xulong ulCount);
/// Fills ulCount 24-bit values, each stored as bits 23 to 16, 15 to 8, 7 to 0.
/// @param ulCount  at least 1: the first value is stored before the count is looked at
TARVIX_API void *xMemset24(void *pMem, xulong ulValue, xulong ulCount);
TARVIX_API void xMemZero(void *pMem, xulong ulLen);
/// @return 1 if c occurs from pStart up to but not including pEnd, else 0
TARVIX_API xlong xCheckForCharInBlock(const char *pStart, const char *pEnd, char c);
TARVIX_API xlong xCheckForCharInBlock(const char *pStart, xulong ulLen, char c);

/// Stamping: the place of a new or delete is stored in the globals while it
/// runs, where the tracking layer reads it.
TARVIX_API void xStampBegin(const char *pszFile, xlong lLine);
TARVIX_API void xStampEnd();

template <class T>
inline T *xStampEndWith(T *pObject)
{
    xStampEnd();
    return pObject;
}

/// XNEW(CRect), XNEW(CThing(1, 2)), XNEW(char[80]): null when memory is
/// exhausted, so the result is always tested. Inside the library the block is
/// a plain one; in a host it is the host's own, except for classes that carry
/// TARVIX_HEAP_CLASS.
#define XNEW(...) xStampEndWith((xStampBegin(__FILE__, __LINE__), new (std::nothrow) __VA_ARGS__))
#define XDELETE(pObject) (xStampBegin(__FILE__, __LINE__), delete (pObject), xStampEnd())
#define XDELETE_ARRAY(pArray) (xStampBegin(__FILE__, __LINE__), delete[](pArray), xStampEnd())

/// Lets objects of a class with a virtual destructor be made by the host and
/// deleted by the library and the other way round: both sides take the
/// library's blocks. Sinks that hosts mix in beside other bases go without it.
#define TARVIX_HEAP_CLASS                                                                                              \
    static void *operator new(size_t ulSize) noexcept                                                                  \
    {                                                                                                                  \
        return xHeapClassNew(ulSize);                                                                                  \
    }                                                                                                                  \
    static void *operator new(size_t ulSize, const std::nothrow_t &) noexcept                                          \
    {                                                                                                                  \
        return xHeapClassNew(ulSize);                                                                                  \
    }                                                                                                                  \
    static void *operator new(size_t, void *pPlace) noexcept                                                           \
    {                                                                                                                  \
        return pPlace;                                                                                                 \
    }                                                                                                                  \
    static void operator delete(void *pMem) noexcept                                                                   \
    {                                                                                                                  \
        xFreeMemFunc(pMem, nullptr, 0);                                                                                \
    }                                                                                                                  \
    static void operator delete(void *pMem, const std::nothrow_t &) noexcept                                           \
    {                                                                                                                  \
        xFreeMemFunc(pMem, nullptr, 0);                                                                                \
    }                                                                                                                  \
    static void operator delete(void *, void *) noexcept {}

inline void *xHeapClassNew(size_t ulSize)
{
    return ulSize > 0x7fffff00 ? nullptr : xAllocMem((xulong)ulSize, nullptr, 0);
}
