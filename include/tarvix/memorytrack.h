#pragma once

#include "tarvix/llist.h"
#include "tarvix/memory.h"
#include "tarvix/types.h"

/// Record of one tracked block.
struct TMemEntry
{
    char *pszFile; ///< in the block; null if the place is not known
    xlong lLine;
    void *pMem;    ///< the caller's pointer
    xulong ulSize; ///< the caller's bytes
};

/// Interface of an allocator that knows its blocks.
class TARVIX_API CMemoryBase
{
public:
    TARVIX_HEAP_CLASS

    virtual void *Alloc(xulong ulSize, const char *pszFile, xlong lLine) = 0;
    virtual xlong Free(void *pMem, const char *pszFile, xlong lLine) = 0;
    virtual xlong GetAvail(xulong *pulAvail) = 0;
    virtual xlong FreeAll() = 0;
    virtual xulong GetBytesAlloc() = 0;
    virtual xlong PrintMemList(const char *pszPath) = 0;
};

/// Tracking allocator, for diagnosis: it lists every block with the place of
/// its allocation and guards its end with two bytes. The library's own blocks
/// are not made here; xFreeMem sends a tracked block here by its tag.
class TARVIX_API CMemory : public CMemoryBase
{
public:
    CMemory();
    CMemory(const CMemory &) = default;
    CMemory &operator=(const CMemory &) = default;
    /// Traces the blocks that are left and frees them.
    ~CMemory();

    /// The place of a new that is under way goes before pszFile and lLine.
    /// @param pszFile  copied; may be null
    /// @return null with code 14 on exhaustion
    void *Alloc(xulong ulSize, const char *pszFile, xlong lLine) override;
    /// Searches the list from its start.
    /// @param pszFile  the caller's place for the error text; may be null
    /// @return 1, also for null and when nothing is allocated; 0 with code 16 when
    ///         the guard was overwritten, with the block freed; 0 with a text for
    ///         an unknown block or a damaged header, with the block left alone
    xlong Free(void *pMem, const char *pszFile, xlong lLine) override;
    /// Not provided. @return 0 with code 1
    xlong GetAvail(xulong *pulAvail) override;
    /// @return 1
    xlong FreeAll() override;
    /// Bytes of all live blocks with their guards.
    xulong GetBytesAlloc() override;
    /// Writes a table of the live blocks and their sums in bytes and in pages.
    xlong PrintMemList(const char *pszPath) override;
    /// The same to the trace output; nothing when no block is left.
    void PrintLeakList();

    xulong m_ulBytesAlloc;
    CLList m_List; ///< of TMemEntry
};
