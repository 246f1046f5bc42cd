// The private heap: boundary tags, 128 bins, best fit in the large ones, and a
// top block that grows and shrinks at the end of the heap's memory. A free
// block repeats its size in its last word, which is the first word of the
// block behind it; a block in use lends that word to its caller.
//
// Invariants, which HeapState checks for tests
// 1. Blocks lie one behind the other from the start of a segment to the top, or
//    in a closed segment to its two fences. Sizes are multiples of s_ulAlign.
// 2. No two free blocks stand side by side: freeing joins at once.
// 3. A block's flag says whether the one before it is in use, and a free
//    block's size stands in its last word too.
// 4. A free block is in the bin of its size, but for the remainder of the last
//    split and the top. In a bin sizes fall, and a bin that is filled has its bit.
// 5. The top reaches to the end of what was reserved.

#include "core/heap.h"

#include "tarvix/memory.h"

#include <algorithm>
#include <stddef.h>
#include <string.h>

#if defined(__SANITIZE_ADDRESS__)
#define TARVIX_ASAN
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define TARVIX_ASAN
#endif
#endif
#ifdef TARVIX_ASAN
#include <sanitizer/asan_interface.h>
// Tags lie in memory that is poisoned for everybody else.
#define HEAP_CODE __attribute__((no_sanitize("address"), noinline))
#define HEAP_INLINE __attribute__((no_sanitize("address"))) inline
#else
#define HEAP_CODE
#define HEAP_INLINE __attribute__((always_inline)) inline
#endif

namespace
{
struct TChunk
{
    size_t ulPrevSize; ///< of the block before, while that is free
    size_t ulSize;     ///< bytes with this word; bit 0: the block before is in use
    // The rest belongs to the caller while the block is in use.
    TChunk *pNext;
    TChunk *pPrev;
    // In large bins the first block of each size is linked with the next sizes.
    TChunk *pSmaller;
    TChunk *pLarger;
};

const size_t s_ulWord = sizeof(size_t);
const size_t s_ulAlign = 2 * s_ulWord;
const size_t s_ulMinSize = 4 * s_ulWord;
const size_t s_ulLargeSize = 512;
const size_t s_ulTrimSize = 131072;
const size_t s_ulPrevInUse = 1;
const unsigned s_uBins = 128;
const unsigned s_uBinsPerBit = 4;

struct THeap
{
    TChunk *pTop;
    TChunk *pRemainder; ///< rest of the last split, in no bin; or null
    char *pEnd;         ///< end of the top
    unsigned uBinBits;  ///< one bit for four bins; set when one of them may hold a block
    TChunk aBins[s_uBins];
#ifdef TARVIX_TESTING
    char *apSegments[64];
    unsigned uSegments;
    size_t ulLiveBlocks;
    size_t ulLiveBytes;
    size_t ulHeldBytes;
    xlong lFailAt;
    xlong lFailed;
#endif
};

THeap s_Heap;

#ifdef TARVIX_TESTING
#define COUNT_LIVE(lBlocks, lBytes) (s_Heap.ulLiveBlocks += (lBlocks), s_Heap.ulLiveBytes += (lBytes))
#else
#define COUNT_LIVE(lBlocks, lBytes) ((void)0)
#endif

HEAP_INLINE void PoisonBytes(void *pMem, size_t ulSize)
{
#ifdef TARVIX_ASAN
    __asan_poison_memory_region(pMem, ulSize);
#endif
}

HEAP_INLINE void UnpoisonBytes(void *pMem, size_t ulSize)
{
#ifdef TARVIX_ASAN
    __asan_unpoison_memory_region(pMem, ulSize);
#endif
}

HEAP_INLINE size_t SizeOf(const TChunk *pChunk)
{
    return pChunk->ulSize & ~s_ulPrevInUse;
}

HEAP_INLINE TChunk *At(TChunk *pChunk, size_t ulOffset)
{
    return (TChunk *)((char *)pChunk + ulOffset);
}

HEAP_INLINE TChunk *FromMem(void *pMem)
{
    return (TChunk *)((char *)pMem - 2 * s_ulWord);
}

HEAP_INLINE void *ToMem(TChunk *pChunk)
{
    return (char *)pChunk + 2 * s_ulWord;
}

// The top counts as in use: nothing lies behind it that could say so.
HEAP_INLINE bool IsInUse(TChunk *pChunk)
{
    return At(pChunk, SizeOf(pChunk))->ulSize & s_ulPrevInUse;
}

HEAP_INLINE size_t BlockSize(size_t ulRequest)
{
    const size_t ulSize = (ulRequest + s_ulWord + s_ulAlign - 1) & ~(s_ulAlign - 1);
    return std::max(ulSize, s_ulMinSize);
}

HEAP_INLINE unsigned BinIndex(size_t ulSize)
{
    const size_t k = ulSize / 512;
    if (k == 0)
        return (unsigned)(ulSize / 8);
    if (k <= 4)
        return (unsigned)(ulSize / 64 + 56);
    if (k <= 20)
        return (unsigned)(ulSize / 512 + 91);
    if (k <= 84)
        return (unsigned)(ulSize / 4096 + 110);
    if (k <= 340)
        return (unsigned)(ulSize / 32768 + 119);
    if (k <= 1364)
        return (unsigned)(ulSize / 262144 + 124);
    return 126;
}

HEAP_CODE void InitBins()
{
    for (TChunk &bin : s_Heap.aBins)
        bin.pNext = bin.pPrev = &bin;
}

HEAP_INLINE void SetFree(TChunk *pChunk, size_t ulSize)
{
    // The block before a free one is always in use, or they would be one.
    pChunk->ulSize = ulSize | s_ulPrevInUse;
    At(pChunk, ulSize)->ulPrevSize = ulSize;
}

HEAP_CODE void FileLarge(TChunk *pChunk, size_t ulSize, TChunk *pBin)
{
    TChunk *pBefore = pBin;
    pChunk->pSmaller = pChunk->pLarger = nullptr;
    if (pBin->pNext == pBin)
        pChunk->pSmaller = pChunk->pLarger = pChunk;
    else
    {
        TChunk *const pLargest = pBin->pNext;
        // The last block may not be its size's first, but its size is known.
        if (ulSize < SizeOf(pBin->pPrev))
        {
            pBefore = pBin->pPrev;
            pChunk->pSmaller = pLargest;
            pChunk->pLarger = pLargest->pLarger;
            pLargest->pLarger->pSmaller = pChunk;
            pLargest->pLarger = pChunk;
        }
        else
        {
            TChunk *pAt = pLargest;
            while (ulSize < SizeOf(pAt))
                pAt = pAt->pSmaller;
            if (ulSize == SizeOf(pAt))
                pBefore = pAt;
            else
            {
                pBefore = pAt->pPrev;
                pChunk->pSmaller = pAt;
                pChunk->pLarger = pAt->pLarger;
                pAt->pLarger->pSmaller = pChunk;
                pAt->pLarger = pChunk;
            }
        }
    }
    pChunk->pPrev = pBefore;
    pChunk->pNext = pBefore->pNext;
    pBefore->pNext->pPrev = pChunk;
    pBefore->pNext = pChunk;
}

HEAP_INLINE void FileInBin(TChunk *pChunk, size_t ulSize)
{
    const unsigned uIndex = BinIndex(ulSize);
    TChunk *pBin = &s_Heap.aBins[uIndex];
    s_Heap.uBinBits |= 1u << (uIndex / s_uBinsPerBit);
    if (ulSize >= s_ulLargeSize)
        FileLarge(pChunk, ulSize, pBin);
    else
    {
        pChunk->pPrev = pBin;
        pChunk->pNext = pBin->pNext;
        pBin->pNext->pPrev = pChunk;
        pBin->pNext = pChunk;
    }
}

HEAP_CODE void UnlinkSize(TChunk *pChunk)
{
    TChunk *pNext = pChunk->pNext;
    if (pNext->ulSize == pChunk->ulSize && !pNext->pSmaller)
    {
        // The next block of this size takes the place of its first.
        if (pChunk->pSmaller == pChunk)
            pNext->pSmaller = pNext->pLarger = pNext;
        else
        {
            pNext->pSmaller = pChunk->pSmaller;
            pNext->pLarger = pChunk->pLarger;
            pNext->pSmaller->pLarger = pNext;
            pNext->pLarger->pSmaller = pNext;
        }
        return;
    }
    pChunk->pSmaller->pLarger = pChunk->pLarger;
    pChunk->pLarger->pSmaller = pChunk->pSmaller;
}

HEAP_INLINE void TakeFromBin(TChunk *pChunk)
{
    if (SizeOf(pChunk) >= s_ulLargeSize && pChunk->pSmaller)
        UnlinkSize(pChunk);
    pChunk->pNext->pPrev = pChunk->pPrev;
    pChunk->pPrev->pNext = pChunk->pNext;
}

// Takes a free block out of wherever it stands.
HEAP_INLINE void TakeFree(TChunk *pChunk)
{
    if (pChunk == s_Heap.pRemainder)
        s_Heap.pRemainder = nullptr;
    else
        TakeFromBin(pChunk);
}

HEAP_INLINE TChunk *UseWhole(TChunk *pChunk)
{
    At(pChunk, SizeOf(pChunk))->ulSize |= s_ulPrevInUse;
    return pChunk;
}

// Uses the front of a free block that is in no bin; the rest becomes the last
// remainder.
HEAP_INLINE TChunk *UseFront(TChunk *pChunk, size_t ulSize)
{
    const size_t ulRest = SizeOf(pChunk) - ulSize;
    if (ulRest < s_ulMinSize)
        return UseWhole(pChunk);
    pChunk->ulSize = ulSize | (pChunk->ulSize & s_ulPrevInUse);
    TChunk *pRest = At(pChunk, ulSize);
    SetFree(pRest, ulRest);
    s_Heap.pRemainder = pRest;
    return pChunk;
}

// The smallest block of a bin that holds ulSize, null if none does.
HEAP_INLINE TChunk *FindInBin(TChunk *pBin, size_t ulSize, bool bLarge)
{
    TChunk *pChunk = pBin->pPrev;
    if (pChunk == pBin)
        return nullptr;
    if (!bLarge)
        return pChunk;
    pChunk = pBin->pNext;
    if (SizeOf(pChunk) < ulSize)
        return nullptr;
    do
        pChunk = pChunk->pLarger; // first step: from the largest round to the smallest
    while (SizeOf(pChunk) < ulSize);
    // Not the first of its size, when there is another: that needs less relinking.
    TChunk *pNext = pChunk->pNext;
    return pNext != pBin && SizeOf(pNext) == SizeOf(pChunk) ? pNext : pChunk;
}

// The smallest block of the smallest bin from uIndex on that fits.
HEAP_CODE TChunk *FindByBits(unsigned uIndex, size_t ulSize)
{
    unsigned uGroup = uIndex / s_uBinsPerBit;
    unsigned uBits = uGroup < 32 ? s_Heap.uBinBits >> uGroup << uGroup : 0;
    while (uBits)
    {
        uGroup = (unsigned)__builtin_ctz(uBits);
        const unsigned uEnd = (uGroup + 1) * s_uBinsPerBit;
        bool bAllEmpty = uIndex <= uGroup * s_uBinsPerBit;
        for (unsigned u = std::max(uIndex, uGroup * s_uBinsPerBit); u < uEnd; ++u)
        {
            TChunk *pBin = &s_Heap.aBins[u];
            if (pBin->pNext == pBin)
                continue;
            bAllEmpty = false;
            if (TChunk *pFound = FindInBin(pBin, ulSize, u >= s_ulLargeSize / 8))
                return pFound;
        }
        if (bAllEmpty)
            s_Heap.uBinBits &= ~(1u << uGroup);
        uBits &= uBits - 1;
    }
    return nullptr;
}

// Closes the old top off when the heap goes on in another place: two small
// blocks in use at its end keep merging inside, and the rest is free.
HEAP_CODE void CloseTop()
{
    TChunk *pTop = s_Heap.pTop;
    if (!pTop)
        return;
    const size_t ulRest = SizeOf(pTop) - 2 * s_ulAlign;
    TChunk *pFence = At(pTop, ulRest);
    pFence->ulSize = s_ulAlign;
    At(pFence, s_ulAlign)->ulSize = s_ulAlign | s_ulPrevInUse;
    if (ulRest >= s_ulMinSize)
    {
        SetFree(pTop, ulRest);
        FileInBin(pTop, ulRest);
    }
    else
    {
        pTop->ulSize = ulRest | s_ulPrevInUse;
        pFence->ulSize |= s_ulPrevInUse;
    }
}

HEAP_CODE bool GrowTop(size_t ulSize)
{
    const size_t ulBytes = (ulSize + s_ulMinSize + 2 * s_ulAlign + s_ulHeapPage - 1) & ~(s_ulHeapPage - 1);
    char *pNew = HeapBreak((ptrdiff_t)ulBytes);
    if (!pNew)
        return false;
#ifdef TARVIX_TESTING
    s_Heap.ulHeldBytes += ulBytes;
#endif
    PoisonBytes(pNew, ulBytes);
    if (pNew == s_Heap.pEnd)
        s_Heap.pTop->ulSize += ulBytes;
    else
    {
        CloseTop();
        // Caller's bytes are aligned when the block is.
        s_Heap.pTop = (TChunk *)pNew;
        s_Heap.pTop->ulSize = ulBytes | s_ulPrevInUse;
#ifdef TARVIX_TESTING
        if (s_Heap.uSegments < 64)
            s_Heap.apSegments[s_Heap.uSegments++] = pNew;
#endif
    }
    s_Heap.pEnd = pNew + ulBytes;
    return true;
}

HEAP_CODE void TrimTop()
{
    const size_t ulTop = SizeOf(s_Heap.pTop);
    const size_t ulSurplus = (ulTop / s_ulHeapPage - 1) * s_ulHeapPage; // at least one page stays
    if (!HeapBreak(-(ptrdiff_t)ulSurplus))
        return;
    s_Heap.pTop->ulSize -= ulSurplus;
    s_Heap.pEnd -= ulSurplus;
#ifdef TARVIX_TESTING
    s_Heap.ulHeldBytes -= ulSurplus;
#endif
}

HEAP_INLINE TChunk *UseTop(size_t ulSize)
{
    TChunk *pTop = s_Heap.pTop;
    const size_t ulRest = SizeOf(pTop) - ulSize;
    pTop->ulSize = ulSize | s_ulPrevInUse;
    s_Heap.pTop = At(pTop, ulSize);
    s_Heap.pTop->ulSize = ulRest | s_ulPrevInUse;
    return pTop;
}

HEAP_CODE TChunk *AllocSlow(size_t ulSize, unsigned uIndex)
{
    if (TChunk *pRemainder = s_Heap.pRemainder)
    {
        s_Heap.pRemainder = nullptr;
        if (SizeOf(pRemainder) >= ulSize)
            return UseFront(pRemainder, ulSize);
        FileInBin(pRemainder, SizeOf(pRemainder));
    }
    if (TChunk *pFound = FindByBits(uIndex, ulSize))
    {
        TakeFromBin(pFound);
        return UseFront(pFound, ulSize);
    }
    if (!s_Heap.pTop || SizeOf(s_Heap.pTop) < ulSize + s_ulMinSize + 2 * s_ulAlign)
        if (!GrowTop(ulSize))
            return nullptr;
    return UseTop(ulSize);
}

HEAP_INLINE TChunk *AllocChunk(size_t ulSize)
{
    unsigned uIndex = BinIndex(ulSize);
    if (ulSize < s_ulLargeSize - s_ulAlign)
    {
        // What a block of the next size would leave is too small to live.
        const unsigned uNextIndex = uIndex + s_ulAlign / 8;
        for (unsigned u : { uIndex, uNextIndex })
        {
            TChunk *pBin = &s_Heap.aBins[u];
            TChunk *pChunk = pBin->pNext;
            if (pChunk != pBin)
            {
                pChunk->pNext->pPrev = pBin;
                pBin->pNext = pChunk->pNext;
                return UseWhole(pChunk);
            }
        }
        return AllocSlow(ulSize, uNextIndex + 1);
    }
    TChunk *pFit = FindInBin(&s_Heap.aBins[uIndex], ulSize, ulSize >= s_ulLargeSize);
    if (pFit && SizeOf(pFit) - ulSize < s_ulMinSize)
    {
        TakeFromBin(pFit);
        return UseWhole(pFit);
    }
    return AllocSlow(ulSize, uIndex);
}

HEAP_INLINE void FreeChunk(TChunk *pChunk)
{
    size_t ulSize = SizeOf(pChunk);
    TChunk *pNext = At(pChunk, ulSize);
    bool bRemainder = false;
    if (!(pChunk->ulSize & s_ulPrevInUse))
    {
        ulSize += pChunk->ulPrevSize;
        pChunk = At(pChunk, (size_t)0 - pChunk->ulPrevSize);
        bRemainder = pChunk == s_Heap.pRemainder;
        TakeFree(pChunk);
    }
    if (pNext == s_Heap.pTop)
    {
        ulSize += SizeOf(pNext);
        pChunk->ulSize = ulSize | s_ulPrevInUse;
        s_Heap.pTop = pChunk;
        if (ulSize >= s_ulTrimSize)
            TrimTop();
        return;
    }
    if (!IsInUse(pNext))
    {
        ulSize += SizeOf(pNext);
        bRemainder |= pNext == s_Heap.pRemainder;
        TakeFree(pNext);
    }
    else
        pNext->ulSize &= ~s_ulPrevInUse;
    SetFree(pChunk, ulSize);
    if (bRemainder)
        s_Heap.pRemainder = pChunk;
    else
        FileInBin(pChunk, ulSize);
}

// Gives back what a block in use has too much.
HEAP_CODE void CutTail(TChunk *pChunk, size_t ulSize)
{
    const size_t ulRest = SizeOf(pChunk) - ulSize;
    if (ulRest < s_ulMinSize)
        return;
    pChunk->ulSize = ulSize | (pChunk->ulSize & s_ulPrevInUse);
    TChunk *pRest = At(pChunk, ulSize);
    pRest->ulSize = ulRest | s_ulPrevInUse;
    At(pRest, ulRest)->ulSize |= s_ulPrevInUse;
    PoisonBytes(ToMem(pRest), ulRest - s_ulWord);
    FreeChunk(pRest);
}

#ifdef TARVIX_TESTING
HEAP_CODE bool MustFail()
{
    if (s_Heap.lFailAt <= 0 || --s_Heap.lFailAt)
        return false;
    s_Heap.lFailed = 1;
    return true;
}
#else
inline bool MustFail()
{
    return false;
}
#endif

// Grows a block in use without moving its bytes, or by moving them down into
// the free block before it. Null when neither helps.
HEAP_CODE TChunk *GrowChunk(TChunk *pChunk, size_t ulSize)
{
    const size_t ulOld = SizeOf(pChunk);
    TChunk *pNext = At(pChunk, ulOld);
    size_t ulNext = 0;
    bool bTop = false;
    if (pNext == s_Heap.pTop)
    {
        // The top keeps enough to be closed off later.
        bTop = true;
        ulNext = SizeOf(pNext);
        ulNext = ulNext >= s_ulMinSize + 2 * s_ulAlign ? ulNext - (s_ulMinSize + 2 * s_ulAlign) : 0;
    }
    else if (!IsInUse(pNext))
        ulNext = SizeOf(pNext);

    TChunk *pFrom = pChunk;
    size_t ulHave = ulOld + ulNext;
    if (ulHave < ulSize)
    {
        if (pChunk->ulSize & s_ulPrevInUse)
            return nullptr;
        pFrom = At(pChunk, (size_t)0 - pChunk->ulPrevSize);
        // Without the next block when the one before is enough.
        if (ulOld + SizeOf(pFrom) >= ulSize)
            ulNext = 0;
        ulHave = ulOld + SizeOf(pFrom) + ulNext;
        if (ulHave < ulSize)
            return nullptr;
    }

    TChunk *pEnd = At(pChunk, ulOld);
    if (ulNext && bTop)
    {
        const size_t ulTake = ulSize - (ulHave - ulNext);
        const size_t ulTop = SizeOf(pNext);
        ulHave = ulSize;
        s_Heap.pTop = pEnd = At(pNext, ulTake);
        pEnd->ulSize = (ulTop - ulTake) | s_ulPrevInUse;
    }
    else if (ulNext)
    {
        TakeFree(pNext);
        pEnd = At(pNext, ulNext);
        pEnd->ulSize |= s_ulPrevInUse;
    }
    if (pFrom != pChunk)
    {
        TakeFree(pFrom);
        UnpoisonBytes(ToMem(pFrom), (size_t)((char *)pChunk - (char *)pFrom) + ulOld - s_ulWord);
        memmove(ToMem(pFrom), ToMem(pChunk), ulOld - s_ulWord);
        pFrom->ulSize = ulHave | s_ulPrevInUse;
    }
    else
        pFrom->ulSize = ulHave | (pFrom->ulSize & s_ulPrevInUse);
    return pFrom;
}
} // namespace

HEAP_CODE void *xSysAllocMem(xlong lSize)
{
    if (lSize < 0 || MustFail())
        return nullptr;
    if (!s_Heap.aBins[0].pNext)
        InitBins();
    TChunk *pChunk = AllocChunk(BlockSize((size_t)lSize));
    if (!pChunk)
        return nullptr;
    COUNT_LIVE(1, SizeOf(pChunk));
    UnpoisonBytes(ToMem(pChunk), (size_t)lSize);
    return ToMem(pChunk);
}

HEAP_CODE void *xSysReallocMem(void *pMem, xlong lSize)
{
    if (!pMem)
        return xSysAllocMem(lSize);
    if (lSize < 0 || MustFail())
        return nullptr;
    TChunk *pChunk = FromMem(pMem);
    const size_t ulSize = BlockSize((size_t)lSize);
    const size_t ulOld = SizeOf(pChunk);
    // The whole old block is open while its bytes move.
    UnpoisonBytes(pMem, ulOld - s_ulWord);
    if (ulSize > ulOld)
    {
        TChunk *pGrown = GrowChunk(pChunk, ulSize);
        if (!pGrown)
        {
            TChunk *pNew = AllocChunk(ulSize);
            if (!pNew)
                return nullptr;
            UnpoisonBytes(ToMem(pNew), ulSize - s_ulWord);
            memcpy(ToMem(pNew), pMem, ulOld - s_ulWord);
            COUNT_LIVE(1, SizeOf(pNew));
            xSysFreeMem(pMem);
            PoisonBytes(ToMem(pNew), SizeOf(pNew) - s_ulWord);
            UnpoisonBytes(ToMem(pNew), (size_t)lSize);
            return ToMem(pNew);
        }
        pChunk = pGrown;
    }
    PoisonBytes(ToMem(pChunk), SizeOf(pChunk) - s_ulWord);
    UnpoisonBytes(ToMem(pChunk), (size_t)lSize);
    CutTail(pChunk, ulSize);
    COUNT_LIVE(0, SizeOf(pChunk) - ulOld);
    return ToMem(pChunk);
}

HEAP_CODE void xSysFreeMem(void *pMem)
{
    if (!pMem)
        return;
    TChunk *pChunk = FromMem(pMem);
    COUNT_LIVE(-1, (size_t)0 - SizeOf(pChunk));
    PoisonBytes(pMem, SizeOf(pChunk) - s_ulWord);
    FreeChunk(pChunk);
}

#ifdef TARVIX_TESTING
namespace
{
// Checks one segment block by block; counts the free ones that must be in bins.
HEAP_CODE const char *CheckSegment(char *pStart, size_t &ulFree)
{
    TChunk *pChunk = (TChunk *)pStart;
    bool bPrevFree = false;
    for (;;)
    {
        if (bPrevFree == (bool)(pChunk->ulSize & s_ulPrevInUse))
            return "a block's flag is wrong about the block before it";
        if (pChunk == s_Heap.pTop)
            return (char *)pChunk + SizeOf(pChunk) == s_Heap.pEnd ? nullptr : "the top does not reach the end";
        const size_t ulSize = SizeOf(pChunk);
        if (ulSize == s_ulAlign && (pChunk->ulSize & s_ulPrevInUse))
            return nullptr; // second fence of a closed segment
        if (ulSize == s_ulAlign)
        {
            bPrevFree = false;
            pChunk = At(pChunk, ulSize);
            continue;
        }
        if (ulSize < s_ulMinSize || ulSize % s_ulAlign)
            return "a block's size is impossible";
        const bool bFree = !IsInUse(pChunk);
        if (bFree && bPrevFree)
            return "two free blocks stand side by side";
        if (bFree && At(pChunk, ulSize)->ulPrevSize != ulSize)
            return "a free block's last word is not its size";
        ulFree += bFree;
        bPrevFree = bFree;
        pChunk = At(pChunk, ulSize);
    }
}

HEAP_CODE const char *CheckBin(unsigned uIndex, size_t &ulFiled)
{
    TChunk *pBin = &s_Heap.aBins[uIndex];
    if (pBin->pNext != pBin && !(s_Heap.uBinBits & 1u << (uIndex / s_uBinsPerBit)))
        return "a filled bin has no bit";
    for (TChunk *pChunk = pBin->pNext; pChunk != pBin; pChunk = pChunk->pNext)
    {
        ++ulFiled;
        if (pChunk->pNext->pPrev != pChunk || BinIndex(SizeOf(pChunk)) != uIndex || IsInUse(pChunk))
            return "a bin holds a wrong block";
        if (pChunk->pNext != pBin && SizeOf(pChunk) < SizeOf(pChunk->pNext))
            return "a bin is out of order";
        const bool bFirstOfSize = pChunk->pPrev == pBin || SizeOf(pChunk->pPrev) != SizeOf(pChunk);
        if (SizeOf(pChunk) >= s_ulLargeSize && bFirstOfSize != (pChunk->pSmaller != nullptr))
            return "the links between sizes are wrong";
    }
    return nullptr;
}
} // namespace

HEAP_CODE THeapState HeapState()
{
    THeapState state = { s_Heap.ulLiveBlocks, s_Heap.ulLiveBytes, s_Heap.ulHeldBytes, 0, 0, nullptr };
    if (!s_Heap.pTop)
        return state;
    state.ulTopBytes = SizeOf(s_Heap.pTop);
    size_t ulFree = 0;
    for (unsigned u = 0; u < s_Heap.uSegments && !state.pszFault; ++u)
        state.pszFault = CheckSegment(s_Heap.apSegments[u], ulFree);
    size_t ulFiled = s_Heap.pRemainder ? 1 : 0;
    for (unsigned u = 0; u < s_uBins && !state.pszFault; ++u)
        state.pszFault = CheckBin(u, ulFiled);
    state.ulFreeBlocks = ulFiled;
    if (!state.pszFault && ulFree != ulFiled)
        state.pszFault = "a free block is in no bin";
    return state;
}

HEAP_CODE void HeapFailAt(xlong lCount)
{
    s_Heap.lFailAt = lCount;
    s_Heap.lFailed = 0;
}

HEAP_CODE xlong HeapFailed()
{
    return s_Heap.lFailed;
}
#endif
