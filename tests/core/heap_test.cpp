#include "core/heap.h"

#include "support.h"
#include "tarvix/memory.h"

#include <cstring>
#include <random>
#include <set>

namespace
{
struct TBlock
{
    unsigned char *pMem;
    size_t ulSize;
    unsigned char ucFill;
};

bool IsIntact(const TBlock &block)
{
    for (size_t i = 0; i < block.ulSize; ++i)
        if (block.pMem[i] != block.ucFill)
            return false;
    return true;
}

// A size as programs ask for them: mostly small, now and then a page or more.
size_t DrawSize(std::mt19937 &random)
{
    switch (random() % 10)
    {
    case 0:
        return random() % 200000;
    case 1:
    case 2:
        return random() % 5000;
    }
    return random() % 200;
}
} // namespace

// Every block keeps its bytes, no two overlap, and the heap's own tags, bins
// and bits agree all the way. All of it comes back at the end.
TEST(HeapTest, ChurnKeepsEveryByteAndLeavesNothing)
{
    const THeapState before = HeapState();
    ASSERT_EQ(nullptr, before.pszFault);
    for (unsigned uSeed = 1; uSeed <= 4; ++uSeed)
    {
        std::mt19937 random(uSeed);
        std::vector<TBlock> blocks;
        for (int n = 0; n < 6000; ++n)
        {
            const unsigned uAction = random() % 10;
            if (blocks.empty() || uAction < 5)
            {
                const size_t ulSize = DrawSize(random);
                unsigned char *pMem = (unsigned char *)xSysAllocMem((xlong)ulSize);
                ASSERT_TRUE(pMem);
                ASSERT_EQ(0u, (uintptr_t)pMem % (sizeof(void *) == 4 ? 8 : 16));
                blocks.push_back({ pMem, ulSize, (unsigned char)random() });
                memset(pMem, blocks.back().ucFill, ulSize);
                continue;
            }
            const size_t ulIndex = random() % blocks.size();
            TBlock &block = blocks[ulIndex];
            ASSERT_TRUE(IsIntact(block));
            if (uAction < 7)
            {
                const size_t ulSize = DrawSize(random);
                unsigned char *pMem = (unsigned char *)xSysReallocMem(block.pMem, (xlong)ulSize);
                ASSERT_TRUE(pMem);
                ASSERT_TRUE(IsIntact({ pMem, std::min(ulSize, block.ulSize), block.ucFill }));
                block = { pMem, ulSize, (unsigned char)random() };
                memset(pMem, block.ucFill, ulSize);
            }
            else
            {
                xSysFreeMem(block.pMem);
                block = blocks.back();
                blocks.pop_back();
            }
            if (n % 97 == 0)
                ASSERT_STREQ(nullptr, HeapState().pszFault) << "seed " << uSeed << ", step " << n;
        }
        for (const TBlock &block : blocks)
        {
            ASSERT_TRUE(IsIntact(block));
            xSysFreeMem(block.pMem);
        }
        const THeapState after = HeapState();
        EXPECT_STREQ(nullptr, after.pszFault);
        EXPECT_EQ(before.ulLiveBlocks, after.ulLiveBlocks);
        EXPECT_EQ(before.ulLiveBytes, after.ulLiveBytes);
    }
}

TEST(HeapTest, GivesAllBackAndGoesOnInANewRegion)
{
    // More than many regions hold, in blocks that fill up their ends.
    const size_t ulBefore = HeapState().ulHeldBytes;
    std::vector<void *> blocks;
    for (int n = 0; n < 100; ++n)
    {
        void *pMem = xSysAllocMem(3 << 20);
        ASSERT_TRUE(pMem);
        memset(pMem, n, 1 << 10);
        blocks.push_back(pMem);
    }
    EXPECT_STREQ(nullptr, HeapState().pszFault);
    const size_t ulHeld = HeapState().ulHeldBytes;
    EXPECT_GE(ulHeld, (size_t)300 << 20);
    for (void *pMem : blocks)
        xSysFreeMem(pMem);
    const THeapState state = HeapState();
    EXPECT_STREQ(nullptr, state.pszFault);
    EXPECT_LT(state.ulHeldBytes, std::max<size_t>(ulBefore, 80 << 20)) << "regions that touch shrink as one";
    EXPECT_LT(state.ulTopBytes, 131072u);
}

TEST(HeapTest, MergesFreedNeighboursAndGrowsInPlace)
{
    // Four blocks side by side: what was freed before may lie in between at first.
    const size_t ulStep = 1008; // on either size of pointer
    std::vector<char *> blocks;
    size_t ulFound = 0;
    for (size_t ulRun = 1; ulRun < 4;)
    {
        blocks.push_back((char *)xSysAllocMem(1000));
        const size_t ulLast = blocks.size() - 1;
        ulRun = ulLast && blocks[ulLast] == blocks[ulLast - 1] + ulStep ? ulRun + 1 : 1;
        ulFound = ulLast - 3;
        ASSERT_LT(blocks.size(), 10000u);
    }
    char *pA = blocks[ulFound], *pB = blocks[ulFound + 1], *pC = blocks[ulFound + 2];
    blocks.erase(blocks.begin() + (long)ulFound, blocks.begin() + (long)ulFound + 3);
    memcpy(pB, "moved down", 11);
    xSysFreeMem(pC);
    ASSERT_EQ(pB, xSysReallocMem(pB, 1900)) << "into the free block behind";
    xSysFreeMem(pA);
    char *pMoved = (char *)xSysReallocMem(pB, 2900);
    ASSERT_EQ(pA, pMoved) << "down into the free block before";
    EXPECT_STREQ("moved down", pMoved);
    EXPECT_EQ(pMoved, xSysReallocMem(pMoved, 10)) << "shrinking stays";
    EXPECT_STREQ(nullptr, HeapState().pszFault);
    xSysFreeMem(pMoved);
    for (char *pBlock : blocks)
        xSysFreeMem(pBlock);
    EXPECT_EQ(nullptr, xSysAllocMem(-1));
    EXPECT_EQ(nullptr, xSysReallocMem(nullptr, -1));
    xSysFreeMem(nullptr);
}

TEST(HeapTest, TheNthAllocationFailsOnce)
{
    HeapFailAt(2);
    void *pFirst = xSysAllocMem(8);
    EXPECT_TRUE(pFirst);
    EXPECT_FALSE(HeapFailed());
    EXPECT_EQ(nullptr, xSysAllocMem(8));
    EXPECT_TRUE(HeapFailed());
    void *pThird = xSysAllocMem(8);
    EXPECT_TRUE(pThird);
    xSysFreeMem(pFirst);
    xSysFreeMem(pThird);
    HeapFailAt(0);
}
