#include "tarvix/memorytrack.h"

#include "core/heap.h"
#include "support.h"

#include <cinttypes>

namespace
{
class CMemoryTest : public CFolderTest
{
protected:
    CMemoryTest() : m_Memory(*glb->m_pMemory) {}

    CMemory &m_Memory;
};

TEST_F(CMemoryTest, BlocksAreKnownByPlaceAndSize)
{
    EXPECT_EQ(1, m_Memory.Free((void *)1, "file.cpp", 1)) << "nothing is allocated, so nothing is searched";
    char *p = (char *)m_Memory.Alloc(100, "file.cpp", 12);
    ASSERT_TRUE(p);
    EXPECT_EQ(0, memcmp(p - 4, "XCAL", 4));
    EXPECT_EQ(0u, (uintptr_t)p % (sizeof(void *) == 4 ? 4 : 16));
    memset(p, 0xaa, 100);
    EXPECT_EQ(102u, m_Memory.GetBytesAlloc());
    m_Memory.m_List.First();
    const TMemEntry *pEntry = (const TMemEntry *)m_Memory.m_List.Get();
    EXPECT_STREQ("file.cpp", pEntry->pszFile);
    EXPECT_EQ(12, pEntry->lLine);
    EXPECT_EQ(100u, pEntry->ulSize);

    EXPECT_EQ(0, m_Memory.Free(p + 1, "other.cpp", 77));
    EXPECT_EQ("Memory entry not found in file \"other.cpp\" at line 77", LastError());
    EXPECT_EQ(0, m_Memory.Free(p + 1, nullptr, 0));
    EXPECT_EQ("Memory entry not found", LastError());
    EXPECT_EQ(1, xFreeMem(p, nullptr, 0)) << "found by its tag";
    EXPECT_EQ(0u, m_Memory.GetBytesAlloc());
    EXPECT_EQ(1, m_Memory.Free(nullptr, nullptr, 0));

    // The place of a new under way goes first.
    xStampBegin("stamp.cpp", 5);
    p = (char *)m_Memory.Alloc(0, "file.cpp", 12);
    xStampEnd();
    m_Memory.m_List.First();
    EXPECT_STREQ("stamp.cpp", ((const TMemEntry *)m_Memory.m_List.Get())->pszFile);
    EXPECT_EQ(1, m_Memory.FreeAll());
    EXPECT_EQ(0, m_Memory.GetAvail(nullptr));
    EXPECT_EQ(XERR_NOT_IMPLEMENTED, glb->m_Error.GetErrCode());
}

TEST_F(CMemoryTest, DamageIsReported)
{
    m_Memory.Free(m_Memory.Alloc(1, nullptr, 0), nullptr, 0); // a list node stays in the pool
    const size_t ulBlocks = HeapState().ulLiveBlocks;
    for (int nByte = 0; nByte < 2; ++nByte)
    {
        char *p = (char *)m_Memory.Alloc(10, nullptr, 0);
        p[10 + nByte] = 'x';
        EXPECT_EQ(0, m_Memory.Free(p, nullptr, 0));
        EXPECT_EQ(XERR_OVERFLOW_BYTES, glb->m_Error.GetErrCode());
        EXPECT_EQ(0u, m_Memory.GetBytesAlloc()) << "freed all the same";
    }
    EXPECT_EQ(ulBlocks, HeapState().ulLiveBlocks);

    char *p = (char *)m_Memory.Alloc(10, nullptr, 0);
    p[-1] = 'x';
    EXPECT_EQ(0, m_Memory.Free(p, nullptr, 0));
    EXPECT_EQ("Memory entry header is incorrect (not XCAL)", LastError());
    EXPECT_EQ(12u, m_Memory.GetBytesAlloc());
    // FreeAll gives such a block up, or it would go on for ever.
    p[-1] = 'x';
    EXPECT_EQ(1, m_Memory.FreeAll());
    EXPECT_EQ(0, m_Memory.m_List.GetNumNodes());
    p[-1] = 'L';
    xSysFreeMem(p - (sizeof(void *) == 4 ? 4 : 16));
    m_Memory.m_ulBytesAlloc = 0;
}

TEST_F(CMemoryTest, ListShowsBytesAndPages)
{
    void *p[] = { m_Memory.Alloc(100, "a.cpp", 1), m_Memory.Alloc(5000, nullptr, 0), m_Memory.Alloc(9000, "b.cpp", 3) };
    ASSERT_EQ(1, m_Memory.PrintMemList("list.txt"));
    char szRows[400];
    snprintf(szRows, sizeof(szRows),
             "|    0 | %8" PRIxPTR " |      100 |        1 | a.cpp\n"
             "|    1 | %8" PRIxPTR " |     5000 |        0 | <File info missing>\n"
             "|    2 | %8" PRIxPTR " |     9000 |        3 | b.cpp\n",
             (uintptr_t)p[0], (uintptr_t)p[1], (uintptr_t)p[2]);
    const std::string strRule = "+------+----------+----------+----------+----------->\n";
    EXPECT_EQ(strRule + "| Nr.  | Adress   | Size     | Line nr  | Allocated in file\n" + strRule + szRows + strRule +
                  "|    3 |        0 |    14106 |          |\n"
                  "|   -  |        0 |    16384 |          |\n"
                  "+------+----------+----------+----------+\n",
              ReadFile("list.txt"));
    EXPECT_EQ(0, m_Memory.PrintMemList("missing/list.txt"));
    m_Memory.PrintLeakList();
    m_Memory.FreeAll();
}

TEST_F(CMemoryTest, RunsOutOfMemoryWithoutLoss)
{
    m_Memory.Free(m_Memory.Alloc(1, nullptr, 0), nullptr, 0); // a list node stays in the pool
    const size_t ulBlocks = HeapState().ulLiveBlocks;
    for (xlong l = 1; l <= 2; ++l)
    {
        HeapFailAt(l);
        EXPECT_EQ(nullptr, m_Memory.Alloc(50, "file.cpp", 1));
        HeapFailAt(0);
        EXPECT_EQ(XERR_MEMORY, glb->m_Error.GetErrCode());
        EXPECT_EQ(ulBlocks, HeapState().ulLiveBlocks);
    }
    EXPECT_EQ(nullptr, m_Memory.Alloc(0xffffffff, nullptr, 0));
    EXPECT_EQ(ulBlocks, HeapState().ulLiveBlocks);

    // Without the tracking object its blocks can't be freed.
    void *p = m_Memory.Alloc(1, nullptr, 0);
    CMemory *const pMemory = glb->m_pMemory;
    glb->m_pMemory = nullptr;
    EXPECT_EQ(0, xFreeMem(p, nullptr, 0));
    EXPECT_EQ("xFreemem: Memory was allocated with memory class but the memory object do not exists", LastError());
    glb->m_pMemory = pMemory;
    EXPECT_EQ(1, xFreeMem(p, nullptr, 0));
}
} // namespace
