#include "core/heap.h"
#include "win/win32.h"

#include <algorithm>
#include <stddef.h>
#include <stdint.h>

// Address space is reserved in regions and committed from their start. Pages
// are committed a few ahead of the break, which spares a call for most of them.
// A region that begins where the present one ends continues it: the break goes
// on, and comes back when the memory is free again. The system wants each
// reservation to be named by itself all the same.

namespace
{
const size_t s_ulFirstRegion = 67108864;
const size_t s_ulNextRegion = 2097152;
const size_t s_ulAhead = 16 * s_ulHeapPage;
#ifdef _WIN64
const uintptr_t s_uLimit = (uintptr_t)1 << 47;
#else
const uintptr_t s_uLimit = sizeof(void *) == 4 ? 0x80000000u : (uintptr_t)-1 >> 17;
#endif

// Regions after the first.
struct TRegion
{
    TRegion *pNext;
    char *pStart;
};

char *s_pStart; // of the current region
char *s_pRegionEnd;
char *s_pBreak;
char *s_pCommitEnd;
TRegion *s_pRegions;

size_t RoundUp(size_t ulValue, size_t ulStep)
{
    return (ulValue + ulStep - 1) / ulStep * ulStep;
}

void EnterRegion(char *pStart, size_t ulSize)
{
    s_pStart = s_pBreak = s_pCommitEnd = pStart;
    s_pRegionEnd = pStart + ulSize;
}

char *ReservationEnd(const char *pAt)
{
    char *pEnd = s_pRegionEnd;
    for (const TRegion *p = s_pRegions; p; p = p->pNext)
        if (p->pStart > pAt && p->pStart < pEnd)
            pEnd = p->pStart;
    return pEnd;
}

bool Commit(char *pFrom, size_t ulBytes)
{
    for (char *const pTo = pFrom + ulBytes; pFrom < pTo;)
    {
        char *const pEnd = std::min(pTo, ReservationEnd(pFrom));
        if (!VirtualAlloc(pFrom, (size_t)(pEnd - pFrom), MEM_COMMIT, PAGE_READWRITE))
            return false;
        pFrom = pEnd;
    }
    return true;
}

bool Decommit(char *pFrom, size_t ulBytes)
{
    for (char *const pTo = pFrom + ulBytes; pFrom < pTo;)
    {
        char *const pEnd = std::min(pTo, ReservationEnd(pFrom));
        if (!VirtualFree(pFrom, (size_t)(pEnd - pFrom), MEM_DECOMMIT))
            return false;
        pFrom = pEnd;
    }
    return true;
}

// Reserves the first free range behind the present region.
bool ReserveNext(size_t ulBytes)
{
    const size_t ulSize = std::max(RoundUp(ulBytes, 65536), s_ulNextRegion);
    TRegion *pRegion = (TRegion *)LocalAlloc(LMEM_FIXED, sizeof(TRegion));
    if (!pRegion)
        return false;
    MEMORY_BASIC_INFORMATION info;
    uintptr_t uAt = (uintptr_t)s_pRegionEnd;
    while (uAt < s_uLimit && VirtualQuery((void *)uAt, &info, sizeof(info)))
    {
        const uintptr_t uEnd = (uintptr_t)info.BaseAddress + info.RegionSize;
        // Reservations start on multiples of 64 KB.
        const uintptr_t uStart = RoundUp(uAt, 65536);
        if (info.State == MEM_FREE && uStart + ulSize <= uEnd && uStart + ulSize <= s_uLimit)
        {
            if (void *pStart = VirtualAlloc((void *)uStart, ulSize, MEM_RESERVE, PAGE_NOACCESS))
            {
                pRegion->pStart = (char *)pStart;
                pRegion->pNext = s_pRegions;
                s_pRegions = pRegion;
                if (pStart == s_pRegionEnd)
                    s_pRegionEnd += ulSize;
                else
                    EnterRegion((char *)pStart, ulSize);
                return true;
            }
        }
        if (uEnd <= uAt)
            break;
        uAt = uEnd;
    }
    LocalFree(pRegion);
    return false;
}

char *Grow(size_t ulBytes)
{
    if (!s_pStart)
    {
        const size_t ulSize = std::max(s_ulFirstRegion, RoundUp(ulBytes, s_ulHeapPage));
        void *pStart = VirtualAlloc(nullptr, ulSize, MEM_RESERVE, PAGE_NOACCESS);
        if (!pStart)
            return nullptr;
        EnterRegion((char *)pStart, ulSize);
    }
    if ((size_t)(s_pRegionEnd - s_pBreak) < ulBytes && !ReserveNext(ulBytes))
        return nullptr;
    char *pOld = s_pBreak;
    char *pNew = pOld + ulBytes;
    if (pNew > s_pCommitEnd)
    {
        const size_t ulLeft = (size_t)(s_pRegionEnd - s_pCommitEnd);
        const size_t ulNeed = (size_t)(pNew - s_pCommitEnd);
        const size_t ulCommit = std::min(ulLeft, ulNeed + s_ulAhead);
        if (Commit(s_pCommitEnd, ulCommit))
            s_pCommitEnd += ulCommit;
        else if (Commit(s_pCommitEnd, ulNeed))
            s_pCommitEnd += ulNeed;
        else
            return nullptr;
    }
    s_pBreak = pNew;
    return pOld;
}
} // namespace

char *HeapBreak(ptrdiff_t lBytes)
{
    if (lBytes >= 0)
        return lBytes ? Grow((size_t)lBytes) : s_pBreak;
    const size_t ulBytes = (size_t)-lBytes;
    if (ulBytes > (size_t)(s_pBreak - s_pStart))
        return nullptr;
    char *pOld = s_pBreak;
    char *pNew = pOld - ulBytes;
    if (!Decommit(pNew, (size_t)(s_pCommitEnd - pNew)))
        return nullptr;
    s_pBreak = s_pCommitEnd = pNew;
    return pOld;
}
