#include "tarvix/objpool.h"

#include "support.h"
#include "tarvix/llist.h"

#ifndef _WIN32
#include "platform/testing/testface.h"
#endif

namespace
{
int s_nAllocs, s_nFrees, s_nCreates, s_nDestroys;
bool s_bAllocFails;

void *CountAlloc()
{
    if (s_bAllocFails)
        return nullptr;
    ++s_nAllocs;
    return xSysAllocMem(8);
}

void CountFree(void *pObject)
{
    ++s_nFrees;
    xSysFreeMem(pObject);
}

void CountCreate(void *)
{
    ++s_nCreates;
}

void CountDestroy(void *)
{
    ++s_nDestroys;
}

// Deletes the pool that calls it.
std::unique_ptr<CObjPool> s_pDying;

void *DyingAlloc()
{
    void *const pObject = CountAlloc();
    s_pDying.reset();
    return pObject;
}

void DyingFree(void *pObject)
{
    CountFree(pObject);
    s_pDying.reset();
}

void DyingDestroy(void *)
{
    s_pDying.reset();
}

class CObjPoolTest : public testing::Test
{
protected:
    CObjPoolTest()
    {
        s_nAllocs = s_nFrees = s_nCreates = s_nDestroys = 0;
        s_bAllocFails = false;
    }

    static xlong Init(CObjPool &pool, xulong ulMin, xlong lShrink, xulong ulSlots)
    {
        return pool.Init(ulMin, lShrink, ulSlots, CountAlloc, CountFree, CountCreate, CountDestroy);
    }

    static void Empty(CObjPool &pool)
    {
        while (void *pObject = pool.Dequeue())
            xSysFreeMem(pObject);
    }

    CTestGlobals m_Globals;
};
} // namespace

TEST_F(CObjPoolTest, TheRingHoldsOneLessThanItsSlots)
{
    CObjPool pool;
    ASSERT_EQ(1, Init(pool, 0, -1, 4));
    void *pObjects[4];
    for (void *&pObject : pObjects)
        pObject = pool.Alloc();
    EXPECT_EQ(4, s_nAllocs);
    EXPECT_EQ(0u, pool.m_ulCount) << "an empty ring does not count";
    for (void *pObject : pObjects)
        pool.Free(pObject);
    EXPECT_EQ(3u, pool.m_ulCount);
    EXPECT_EQ(1, s_nFrees);
    EXPECT_EQ(4, s_nDestroys);
    EXPECT_EQ(pObjects[0], pool.Alloc()) << "first in, first out";
    EXPECT_EQ(2u, pool.m_ulCount);
    EXPECT_EQ(4, s_nAllocs);
    EXPECT_EQ(5, s_nCreates);
    xSysFreeMem(pObjects[0]);
    Empty(pool);

    s_bAllocFails = true;
    EXPECT_EQ(nullptr, pool.Alloc());
    EXPECT_EQ(5, s_nCreates) << "nothing to prepare";
}

TEST_F(CObjPoolTest, AMinimumFillsTheRingAndFails)
{
    CObjPool pool;
    EXPECT_EQ(0, Init(pool, 2, -1, 4));
    EXPECT_EQ(4, s_nAllocs);
    EXPECT_EQ(1, s_nFrees) << "the one that found the ring full";
    void *pObject = pool.Alloc();
    EXPECT_EQ(0xffffffffu, (unsigned)pool.m_ulCount) << "the count follows Alloc alone";
    xSysFreeMem(pObject);
    Empty(pool);
}

TEST_F(CObjPoolTest, ThePumpListHoldsPoolsThatShrink)
{
    {
        CObjPool still, shrinking;
        ASSERT_EQ(1, Init(still, 0, -1, 8));
        EXPECT_EQ(nullptr, glb->m_pObjPoolList);
        ASSERT_EQ(1, Init(shrinking, 0, 0, 8));
        ASSERT_TRUE(glb->m_pObjPoolList);
        EXPECT_EQ(1, glb->m_pObjPoolList->GetNumNodes());

        shrinking.Free(shrinking.Alloc());
#ifndef _WIN32
        FaceSetClock(shrinking.m_ulLastShrink + 5);
        shrinking.m_ulShrinkTime = 5;
        EXPECT_EQ(1, shrinking.Handler());
        EXPECT_EQ(0, s_nFrees) << "longer than the time has to pass";
        FaceAdvanceClock(1);
#else
        shrinking.m_ulLastShrink -= 5;
#endif
        EXPECT_EQ(1, shrinking.Handler());
        EXPECT_EQ(1, s_nFrees);
        EXPECT_EQ(1, shrinking.Handler());
        EXPECT_EQ(1, s_nFrees) << "nothing is left to release";
    }
    EXPECT_EQ(0, glb->m_pObjPoolList->GetNumNodes());
#ifndef _WIN32
    FaceStop();
#endif
}

TEST_F(CObjPoolTest, MayDieInItsOwnCallbacks)
{
    CObjPool &pool = *(s_pDying = std::make_unique<CObjPool>());
    ASSERT_EQ(1, pool.Init(0, 0, 8, DyingAlloc, CountFree, CountCreate, CountDestroy));
    pool.m_ulMinObjects = 1;
    EXPECT_EQ(1, pool.Handler());
    EXPECT_EQ(nullptr, s_pDying);

    CObjPool &second = *(s_pDying = std::make_unique<CObjPool>());
    ASSERT_EQ(1, second.Init(0, -1, 8, DyingAlloc, CountFree, CountCreate, CountDestroy));
    void *const pObject = second.Alloc();
    EXPECT_NE(nullptr, pObject);
    CountFree(pObject);

    CObjPool &third = *(s_pDying = std::make_unique<CObjPool>());
    ASSERT_EQ(1, third.Init(0, -1, 8, CountAlloc, CountFree, CountCreate, DyingDestroy));
    third.Free(third.Alloc());

    CObjPool &fourth = *(s_pDying = std::make_unique<CObjPool>());
    ASSERT_EQ(1, fourth.Init(0, -1, 0, CountAlloc, DyingFree, CountCreate, CountDestroy));
    fourth.Free(fourth.Alloc());
    EXPECT_EQ(nullptr, s_pDying);
    EXPECT_EQ(s_nAllocs, s_nFrees);
    EXPECT_EQ(0, glb->m_pObjPoolList ? glb->m_pObjPoolList->GetNumNodes() : 0);
}
