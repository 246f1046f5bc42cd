#include "platform/win32.h"

#include <gtest/gtest.h>

#include <cstring>
#include <sys/mman.h>

namespace
{
const SIZE_T PAGE = 4096, UNIT = 65536;

MEMORY_BASIC_INFORMATION Query(const void *p)
{
    MEMORY_BASIC_INFORMATION info = {};
    EXPECT_EQ(sizeof(info), VirtualQuery(p, &info, sizeof(info)));
    return info;
}
} // namespace

TEST(PlatformMemory, ReserveCommitDecommitRelease)
{
    char *p = (char *)VirtualAlloc(nullptr, 16 * UNIT, MEM_RESERVE, PAGE_NOACCESS);
    ASSERT_NE(nullptr, p);
    EXPECT_EQ(0u, (uintptr_t)p % UNIT);
    MEMORY_BASIC_INFORMATION info = Query(p + 5000);
    EXPECT_EQ((DWORD)MEM_RESERVE, info.State);
    EXPECT_EQ(p + PAGE, info.BaseAddress);
    EXPECT_EQ(16 * UNIT - PAGE, info.RegionSize);

    // A byte over a page commits the next one too.
    EXPECT_EQ(p + PAGE, VirtualAlloc(p + PAGE + 10, PAGE, MEM_COMMIT, PAGE_READWRITE));
    memset(p + PAGE, 0x55, 2 * PAGE);
    info = Query(p + PAGE);
    EXPECT_EQ((DWORD)MEM_COMMIT, info.State);
    EXPECT_EQ(2 * PAGE, info.RegionSize);
    EXPECT_EQ(p, info.AllocationBase);
    EXPECT_EQ(PAGE, Query(p).RegionSize);

    VirtualAlloc(p, 4 * PAGE, MEM_COMMIT, PAGE_READWRITE);
    EXPECT_EQ(0x55, p[PAGE]) << "committing again keeps what is there";
    EXPECT_EQ(0, p[0]);
    EXPECT_TRUE(VirtualFree(p + PAGE, PAGE, MEM_DECOMMIT));
    EXPECT_EQ((DWORD)MEM_RESERVE, Query(p + PAGE).State);
    VirtualAlloc(p + PAGE, PAGE, MEM_COMMIT, PAGE_READWRITE);
    EXPECT_EQ(0, p[PAGE]) << "decommitted pages come back empty";
    EXPECT_EQ(0x55, p[2 * PAGE]);

    EXPECT_FALSE(VirtualFree(p, PAGE, MEM_RELEASE));
    EXPECT_FALSE(VirtualFree(p + PAGE, 0, MEM_RELEASE));
    EXPECT_FALSE(VirtualFree(p, 17 * UNIT, MEM_DECOMMIT));
    EXPECT_TRUE(VirtualFree(p, 0, MEM_RELEASE));
    EXPECT_EQ((DWORD)MEM_FREE, Query(p).State);
    EXPECT_FALSE(VirtualFree(p, 0, MEM_RELEASE));
}

TEST(PlatformMemory, AddressIsKeptOrRefused)
{
    char *p = (char *)VirtualAlloc(nullptr, 4 * UNIT, MEM_RESERVE, PAGE_NOACCESS);
    ASSERT_NE(nullptr, p);
    EXPECT_EQ(nullptr, VirtualAlloc(p + UNIT, UNIT, MEM_RESERVE, PAGE_NOACCESS));
    EXPECT_EQ((DWORD)ERROR_INVALID_ADDRESS, GetLastError());
    VirtualFree(p, 0, MEM_RELEASE);
    EXPECT_EQ(p + UNIT, VirtualAlloc(p + UNIT + 300, UNIT, MEM_RESERVE, PAGE_NOACCESS)) << "rounded down to 64 KB";
    EXPECT_EQ(nullptr, VirtualAlloc(p, PAGE, MEM_COMMIT, PAGE_READWRITE)) << "not reserved";
    EXPECT_EQ(nullptr, VirtualAlloc(p + 2 * UNIT, 2 * UNIT, MEM_COMMIT, PAGE_READWRITE)) << "reaches past the end";
    VirtualFree(p + UNIT, 0, MEM_RELEASE);
}

// The walk that a growing heap makes: from the end of one region to free space.
TEST(PlatformMemory, WalkFindsRoomThatCanBeReserved)
{
    char *pFirst = (char *)VirtualAlloc(nullptr, 1024 * UNIT, MEM_RESERVE, PAGE_NOACCESS);
    ASSERT_NE(nullptr, pFirst);
    uintptr_t ul = (uintptr_t)pFirst;
    EXPECT_LT(ul, 0x80000000u) << "low space serves callers with 31 bits";
    char *pSecond = nullptr;
    for (int i = 0; i < 10000 && !pSecond; ++i)
    {
        MEMORY_BASIC_INFORMATION info = {};
        if (!VirtualQuery((void *)ul, &info, sizeof(info)))
            break;
        ASSERT_GT(info.RegionSize, 0u);
        const uintptr_t ulAligned = (ul + UNIT - 1) & ~(UNIT - 1);
        if (info.State == MEM_FREE && info.RegionSize >= 32 * UNIT + (ulAligned - ul))
            pSecond = (char *)VirtualAlloc((void *)ulAligned, 32 * UNIT, MEM_RESERVE, PAGE_NOACCESS);
        ul = (uintptr_t)info.BaseAddress + info.RegionSize;
    }
    EXPECT_NE(nullptr, pSecond);
    VirtualFree(pSecond, 0, MEM_RELEASE);
    VirtualFree(pFirst, 0, MEM_RELEASE);
}

// Too large for the low space: more is mapped then, for the alignment.
TEST(PlatformMemory, NothingStaysMappedAroundALargeReservation)
{
    const SIZE_T ulSize = (SIZE_T)2 << 30;
    char *const p = (char *)VirtualAlloc(nullptr, ulSize, MEM_RESERVE, PAGE_NOACCESS);
    ASSERT_NE(nullptr, p);
    EXPECT_EQ(0u, (uintptr_t)p % UNIT);
    const auto IsMapped = [](char *pPage) { return msync(pPage, PAGE, MS_ASYNC) == 0; };
    EXPECT_TRUE(IsMapped(p));
    EXPECT_TRUE(IsMapped(p + ulSize - PAGE));
    EXPECT_FALSE(IsMapped(p - PAGE));
    EXPECT_FALSE(IsMapped(p + ulSize));
    EXPECT_TRUE(VirtualFree(p, 0, MEM_RELEASE));
    EXPECT_FALSE(IsMapped(p + ulSize - PAGE));
}

TEST(PlatformMemory, OthersMappingsAreNotFree)
{
    void *p = mmap(nullptr, 4 * PAGE, PROT_READ, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    ASSERT_NE(MAP_FAILED, p);
    const MEMORY_BASIC_INFORMATION info = Query((char *)p + PAGE);
    EXPECT_EQ((DWORD)MEM_COMMIT, info.State);
    EXPECT_EQ((DWORD)PAGE_READONLY, info.Protect);
    munmap(p, 4 * PAGE);
    MEMORY_BASIC_INFORMATION none;
    EXPECT_EQ(0u, VirtualQuery((void *)~(uintptr_t)0, &none, sizeof(none)));
    EXPECT_EQ(0u, VirtualQuery(p, &none, 4));
}

TEST(PlatformMemory, WrongRequestsFail)
{
    EXPECT_EQ(nullptr, VirtualAlloc(nullptr, 0, MEM_RESERVE, PAGE_NOACCESS));
    EXPECT_EQ(nullptr, VirtualAlloc(nullptr, UNIT, 0, PAGE_NOACCESS));
    EXPECT_EQ(nullptr, VirtualAlloc(nullptr, UNIT, MEM_RESERVE, 0x1234));
    EXPECT_EQ(nullptr, VirtualAlloc(nullptr, ~(SIZE_T)0, MEM_RESERVE, PAGE_NOACCESS));
    EXPECT_FALSE(VirtualFree(nullptr, 0, MEM_RELEASE));
    BYTE *p = (BYTE *)VirtualAlloc(nullptr, 10, MEM_RESERVE | MEM_COMMIT, PAGE_READWRITE);
    ASSERT_NE(nullptr, p);
    p[4095] = 1;
    EXPECT_FALSE(VirtualFree(p, 0, 0));
    EXPECT_TRUE(VirtualFree(p, 0, MEM_RELEASE));
}

TEST(PlatformMemory, LocalAndGlobalBlocks)
{
    BYTE *p = (BYTE *)LocalAlloc(LPTR, 100);
    ASSERT_NE(nullptr, p);
    for (int i = 0; i < 100; ++i)
        EXPECT_EQ(0, p[i]);
    EXPECT_EQ(nullptr, LocalFree(p));
    p = (BYTE *)GlobalAlloc(GMEM_FIXED, 0);
    EXPECT_NE(nullptr, p);
    EXPECT_EQ(nullptr, GlobalFree(p));
}
