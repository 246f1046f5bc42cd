// VirtualAlloc and its companions over mmap. Address space is reserved without
// access; committing is granting access, page by page.
#include "platform/errors.h"

#include <errno.h>
#include <stdlib.h>
#include <string.h>
#include <sys/mman.h>
#include <unistd.h>

namespace
{
const uintptr_t s_ulGranularity = 0x10000;
const uintptr_t s_ulLowStart = 0x10000000, s_ulLowEnd = 0x80000000;
const uintptr_t s_ulTopOfSpace = 0x7FFFFFFF0000;

struct TReservation
{
    TReservation *pNext; ///< by rising address
    uintptr_t ulBase;
    uintptr_t ulSize;
    DWORD ulProtect;
    BYTE *pPages; ///< protection of each page, 0 when it isn't committed
};

TReservation *s_pFirst = nullptr;

uintptr_t PageSize()
{
    static const uintptr_t s_ulSize = (uintptr_t)sysconf(_SC_PAGESIZE);
    return s_ulSize;
}

uintptr_t PageDown(uintptr_t ul)
{
    return ul & ~(PageSize() - 1);
}

uintptr_t PageUp(uintptr_t ul)
{
    return PageDown(ul + PageSize() - 1);
}

bool IsProtection(DWORD ulProtect)
{
    return ulProtect == PAGE_NOACCESS || ulProtect == PAGE_READONLY || ulProtect == PAGE_READWRITE;
}

int MmapProtection(DWORD ulProtect)
{
    return ulProtect == PAGE_READWRITE ? PROT_READ | PROT_WRITE : ulProtect == PAGE_READONLY ? PROT_READ : PROT_NONE;
}

TReservation *FindReservation(uintptr_t ulAddress)
{
    for (TReservation *p = s_pFirst; p; p = p->pNext)
        if (ulAddress >= p->ulBase && ulAddress - p->ulBase < p->ulSize)
            return p;
    return nullptr;
}

bool MapAt(uintptr_t ulBase, uintptr_t ulSize)
{
    void *p = mmap((void *)ulBase, ulSize, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE | MAP_FIXED_NOREPLACE,
                   -1, 0);
    if (p == MAP_FAILED)
        return false;
    // Kernels that don't know the flag take the address as a hint.
    if ((uintptr_t)p == ulBase)
        return true;
    munmap(p, ulSize);
    return false;
}

/// One line of the kernel's list of mappings.
struct TMapping
{
    uintptr_t ulStart;
    uintptr_t ulEnd;
    char szAccess[5];
};

class CMappings
{
public:
    CMappings() : m_pFile(fopen("/proc/self/maps", "re")) {}
    ~CMappings()
    {
        if (m_pFile)
            fclose(m_pFile);
    }

    bool IsOpen() const { return m_pFile != nullptr; }

    bool Next(TMapping *pMapping)
    {
        char szLine[512];
        bool bWhole = true; // a long path spreads over several reads
        while (fgets(szLine, sizeof(szLine), m_pFile))
        {
            const bool bStart = bWhole;
            bWhole = strchr(szLine, '\n') != nullptr;
            unsigned long ulStart, ulEnd;
            if (bStart && sscanf(szLine, "%lx-%lx %4s", &ulStart, &ulEnd, pMapping->szAccess) == 3)
            {
                pMapping->ulStart = ulStart;
                pMapping->ulEnd = ulEnd;
                return true;
            }
        }
        return false;
    }

private:
    FILE *m_pFile;
};

/// Free space below 2 GB, the lowest first. Callers that grow upward and stay
/// within 31 bits find room behind it.
uintptr_t MapLow(uintptr_t ulSize)
{
    CMappings mappings;
    if (!mappings.IsOpen() || ulSize > s_ulLowEnd - s_ulLowStart)
        return 0;
    uintptr_t ulFree = s_ulLowStart;
    TMapping mapping;
    bool bMore;
    do
    {
        bMore = mappings.Next(&mapping);
        const uintptr_t ulEnd = bMore && mapping.ulStart < s_ulLowEnd ? mapping.ulStart : s_ulLowEnd;
        if (ulEnd > ulFree && ulEnd - ulFree >= ulSize && MapAt(ulFree, ulSize))
            return ulFree;
        if (bMore && mapping.ulEnd > ulFree)
            ulFree = (mapping.ulEnd + s_ulGranularity - 1) & ~(s_ulGranularity - 1);
    } while (bMore && ulFree < s_ulLowEnd && s_ulLowEnd - ulFree >= ulSize);
    return 0;
}

uintptr_t MapAnywhere(uintptr_t ulSize)
{
    const uintptr_t ulLow = MapLow(ulSize);
    if (ulLow)
        return ulLow;
    void *p = mmap(nullptr, ulSize + s_ulGranularity, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    if (p == MAP_FAILED)
        return 0;
    const uintptr_t ulStart = (uintptr_t)p, ulEnd = ulStart + ulSize + s_ulGranularity;
    const uintptr_t ulBase = (ulStart + s_ulGranularity - 1) & ~(s_ulGranularity - 1);
    if (ulBase > ulStart)
        munmap(p, ulBase - ulStart);
    if (ulEnd > ulBase + ulSize)
        munmap((void *)(ulBase + ulSize), ulEnd - ulBase - ulSize);
    return ulBase;
}

TReservation *Reserve(uintptr_t ulAddress, uintptr_t ulSize, DWORD ulProtect)
{
    const uintptr_t ulBase = ulAddress & ~(s_ulGranularity - 1);
    ulSize = PageUp(ulSize + (ulAddress - ulBase));
    TReservation *pNew = (TReservation *)calloc(1, sizeof(TReservation));
    BYTE *pPages = (BYTE *)calloc(ulSize / PageSize(), 1);
    if (!pNew || !pPages)
    {
        free(pNew);
        free(pPages);
        SetLastError(ERROR_NOT_ENOUGH_MEMORY);
        return nullptr;
    }
    pNew->ulBase = ulAddress ? (ulBase && MapAt(ulBase, ulSize) ? ulBase : 0) : MapAnywhere(ulSize);
    if (!pNew->ulBase)
    {
        free(pNew);
        free(pPages);
        SetLastError(ulAddress ? ERROR_INVALID_ADDRESS : ERROR_NOT_ENOUGH_MEMORY);
        return nullptr;
    }
    pNew->ulSize = ulSize;
    pNew->ulProtect = ulProtect;
    pNew->pPages = pPages;
    TReservation **ppLink = &s_pFirst;
    while (*ppLink && (*ppLink)->ulBase < pNew->ulBase)
        ppLink = &(*ppLink)->pNext;
    pNew->pNext = *ppLink;
    *ppLink = pNew;
    return pNew;
}

void Release(TReservation *pReservation)
{
    TReservation **ppLink = &s_pFirst;
    while (*ppLink != pReservation)
        ppLink = &(*ppLink)->pNext;
    *ppLink = pReservation->pNext;
    munmap((void *)pReservation->ulBase, pReservation->ulSize);
    free(pReservation->pPages);
    free(pReservation);
}

bool Commit(TReservation *pReservation, uintptr_t ulStart, uintptr_t ulEnd, DWORD ulProtect)
{
    if (mprotect((void *)ulStart, ulEnd - ulStart, MmapProtection(ulProtect)) != 0)
    {
        SetLastError(ERROR_COMMITMENT_LIMIT);
        return false;
    }
    memset(pReservation->pPages + (ulStart - pReservation->ulBase) / PageSize(), (int)ulProtect,
           (ulEnd - ulStart) / PageSize());
    return true;
}

void QueryReservation(const TReservation *pReservation, uintptr_t ulAddress, MEMORY_BASIC_INFORMATION *pInfo)
{
    const size_t ulPages = pReservation->ulSize / PageSize();
    const size_t ulFirst = (ulAddress - pReservation->ulBase) / PageSize();
    size_t ulEnd = ulFirst + 1;
    while (ulEnd < ulPages && pReservation->pPages[ulEnd] == pReservation->pPages[ulFirst])
        ++ulEnd;
    pInfo->AllocationBase = (LPVOID)pReservation->ulBase;
    pInfo->AllocationProtect = pReservation->ulProtect;
    pInfo->RegionSize = (ulEnd - ulFirst) * PageSize();
    pInfo->State = pReservation->pPages[ulFirst] ? MEM_COMMIT : MEM_RESERVE;
    pInfo->Protect = pReservation->pPages[ulFirst];
    pInfo->Type = MEM_PRIVATE;
}

/// Space that isn't ours: another's mapping, or the gap up to the next one.
bool QueryMappings(uintptr_t ulAddress, MEMORY_BASIC_INFORMATION *pInfo)
{
    CMappings mappings;
    if (!mappings.IsOpen())
        return false;
    TMapping mapping;
    uintptr_t ulFreeEnd = s_ulTopOfSpace;
    while (mappings.Next(&mapping))
    {
        if (mapping.ulEnd <= ulAddress)
            continue;
        if (mapping.ulStart > ulAddress)
        {
            ulFreeEnd = mapping.ulStart;
            break;
        }
        pInfo->AllocationBase = (LPVOID)mapping.ulStart;
        pInfo->RegionSize = mapping.ulEnd - ulAddress;
        pInfo->State = MEM_COMMIT;
        pInfo->Protect = mapping.szAccess[0] != 'r' ? PAGE_NOACCESS
                         : mapping.szAccess[2] == 'x'
                             ? (mapping.szAccess[1] == 'w' ? PAGE_EXECUTE_READWRITE : PAGE_EXECUTE_READ)
                         : mapping.szAccess[1] == 'w' ? PAGE_READWRITE
                                                      : PAGE_READONLY;
        pInfo->AllocationProtect = pInfo->Protect;
        pInfo->Type = mapping.szAccess[3] == 's' ? MEM_MAPPED : MEM_PRIVATE;
        return true;
    }
    if (ulAddress >= ulFreeEnd)
        return false;
    pInfo->RegionSize = ulFreeEnd - ulAddress;
    pInfo->State = MEM_FREE;
    pInfo->Protect = PAGE_NOACCESS;
    return true;
}

void *PlainAlloc(UINT ulFlags, SIZE_T ulSize)
{
    if (!ulSize)
        ulSize = 1;
    void *p = ulFlags & LMEM_ZEROINIT ? calloc(ulSize, 1) : malloc(ulSize);
    if (!p)
        SetLastError(ERROR_NOT_ENOUGH_MEMORY);
    return p;
}
} // namespace

LPVOID VirtualAlloc(LPVOID pAddress, SIZE_T ulSize, DWORD ulType, DWORD ulProtect)
{
    const uintptr_t ulAddress = (uintptr_t)pAddress;
    if (!ulSize || ulSize > s_ulTopOfSpace || ulAddress > s_ulTopOfSpace - ulSize || !IsProtection(ulProtect) ||
        !(ulType & (MEM_RESERVE | MEM_COMMIT)) || (ulType & ~(DWORD)(MEM_RESERVE | MEM_COMMIT)))
    {
        SetLastError(ERROR_INVALID_PARAMETER);
        return nullptr;
    }
    TReservation *pReservation = nullptr;
    const bool bReserve = (ulType & MEM_RESERVE) || !pAddress;
    if (bReserve)
    {
        pReservation = Reserve(ulAddress, ulSize, ulProtect);
        if (!pReservation)
            return nullptr;
        if (!(ulType & MEM_COMMIT))
            return (LPVOID)pReservation->ulBase;
    }
    else
        pReservation = FindReservation(ulAddress);
    const uintptr_t ulStart = pAddress ? PageDown(ulAddress) : pReservation ? pReservation->ulBase : 0;
    const uintptr_t ulEnd = PageUp((pAddress ? ulAddress : ulStart) + ulSize);
    if (!pReservation || ulEnd > pReservation->ulBase + pReservation->ulSize)
    {
        SetLastError(ERROR_INVALID_ADDRESS);
        return nullptr;
    }
    if (!Commit(pReservation, ulStart, ulEnd, ulProtect))
    {
        if (bReserve)
            Release(pReservation);
        return nullptr;
    }
    return (LPVOID)(bReserve ? pReservation->ulBase : ulStart);
}

BOOL VirtualFree(LPVOID pAddress, SIZE_T ulSize, DWORD ulType)
{
    const uintptr_t ulAddress = (uintptr_t)pAddress;
    TReservation *pReservation = FindReservation(ulAddress);
    if (ulType != MEM_RELEASE && ulType != MEM_DECOMMIT)
    {
        SetLastError(ERROR_INVALID_PARAMETER);
        return FALSE;
    }
    if (!pReservation)
    {
        SetLastError(ERROR_INVALID_ADDRESS);
        return FALSE;
    }
    if (ulType == MEM_RELEASE)
    {
        if (ulSize || ulAddress != pReservation->ulBase)
        {
            SetLastError(ulSize ? ERROR_INVALID_PARAMETER : ERROR_INVALID_ADDRESS);
            return FALSE;
        }
        Release(pReservation);
        return TRUE;
    }
    const uintptr_t ulLimit = pReservation->ulBase + pReservation->ulSize;
    if ((!ulSize && ulAddress != pReservation->ulBase) || ulSize > ulLimit - ulAddress)
    {
        SetLastError(ERROR_INVALID_PARAMETER);
        return FALSE;
    }
    const uintptr_t ulStart = PageDown(ulAddress);
    const uintptr_t ulEnd = ulSize ? PageUp(ulAddress + ulSize) : ulLimit;
    // A fresh mapping in the old one's place is empty when it is committed again.
    if (mmap((void *)ulStart, ulEnd - ulStart, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE | MAP_FIXED, -1,
             0) == MAP_FAILED)
        return FailWithErrno();
    memset(pReservation->pPages + (ulStart - pReservation->ulBase) / PageSize(), 0, (ulEnd - ulStart) / PageSize());
    return TRUE;
}

SIZE_T VirtualQuery(LPCVOID pAddress, MEMORY_BASIC_INFORMATION *pInfo, SIZE_T ulLength)
{
    if (!pInfo || ulLength < sizeof(*pInfo))
    {
        SetLastError(ERROR_INVALID_PARAMETER);
        return 0;
    }
    const uintptr_t ulAddress = PageDown((uintptr_t)pAddress);
    *pInfo = {};
    pInfo->BaseAddress = (LPVOID)ulAddress;
    if (const TReservation *pReservation = FindReservation(ulAddress))
        QueryReservation(pReservation, ulAddress, pInfo);
    else if (!QueryMappings(ulAddress, pInfo))
    {
        SetLastError(ERROR_INVALID_PARAMETER);
        return 0;
    }
    return sizeof(*pInfo);
}

HLOCAL LocalAlloc(UINT ulFlags, SIZE_T ulSize)
{
    return PlainAlloc(ulFlags, ulSize);
}

HLOCAL LocalFree(HLOCAL hMemory)
{
    free(hMemory);
    return nullptr;
}

HGLOBAL GlobalAlloc(UINT ulFlags, SIZE_T ulSize)
{
    return PlainAlloc(ulFlags, ulSize);
}

HGLOBAL GlobalFree(HGLOBAL hMemory)
{
    free(hMemory);
    return nullptr;
}

// Blocks don't move here, so a handle is the block.
LPVOID GlobalLock(HGLOBAL hMemory)
{
    return hMemory;
}

BOOL GlobalUnlock(HGLOBAL hMemory)
{
    return hMemory != nullptr;
}
