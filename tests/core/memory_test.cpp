#include "tarvix/memory.h"

#include "core/heap.h"
#include "support.h"
#include "tarvix/llist.h"
#include "tarvix/rect.h"

#include <cstring>
#include <random>

TEST(MemoryTest, TagsTellTheLayersApart)
{
    CTestGlobals globals;
    void *pPlain = xAllocMem(10, nullptr, 0);
    ASSERT_TRUE(pPlain);
    EXPECT_EQ(0, memcmp((char *)pPlain - 4, "XFAL", 4));
    EXPECT_EQ(1, xFreeMem(pPlain, nullptr, 0));

    EXPECT_EQ(0, xFreeMemFunc(nullptr, nullptr, 0));
    EXPECT_EQ("", LastError());
    EXPECT_EQ(0, xFreeMem(nullptr, nullptr, 0));
    EXPECT_EQ("xFreeMem: Invalid pointer (NULL pointer)", LastError());

    char *pSys = (char *)xSysAllocMem(64);
    memset(pSys, 0, 64);
    EXPECT_EQ(0, xFreeMem(pSys + 16, "file.cpp", 12));
    EXPECT_EQ("xFreeMem: invalid memory pointer (no XCAL or XFAL header)\nFreed in file file.cpp at line 12",
              LastError());
    xSysFreeMem(pSys);

    void *pEmpty = xAllocMem(0, nullptr, 0);
    EXPECT_TRUE(pEmpty);
    EXPECT_EQ(1, xFreeMem(pEmpty, nullptr, 0));
    EXPECT_EQ(nullptr, xAllocMem(0xfffffff0, nullptr, 0));
}

TEST(MemoryTest, ObjectsCrossBetweenHostAndLibrary)
{
    const size_t ulBefore = HeapState().ulLiveBlocks;
    CRect *pRect = new CRect;
    EXPECT_EQ(0, memcmp((char *)pRect - 4, "XFAL", 4)) << "made by the host on the library's heap";
    CRect *pStamped = XNEW(CRect);
    EXPECT_EQ(ulBefore + 2, HeapState().ulLiveBlocks);
    delete pRect;
    XDELETE(pStamped);
    EXPECT_EQ(ulBefore, HeapState().ulLiveBlocks);
}

TEST(MemoryTest, StampsOnlyWithGlobals)
{
    xStampBegin("nowhere.cpp", 1);
    xStampEnd();
    CTestGlobals globals;
    xStampBegin("here.cpp", 7);
    EXPECT_STREQ("here.cpp", glb->m_pszNewFile);
    EXPECT_EQ(7, glb->m_lNewLine);
    xStampEnd();
    EXPECT_EQ(nullptr, glb->m_pszNewFile);
    EXPECT_EQ(0, glb->m_lNewLine);
}

TEST(MemoryTest, FillsEqualAPlainLoopAtEveryAlignment)
{
    std::mt19937 random(3);
    for (xulong ulCount : { 0u, 1u, 2u, 3u, 7u, 8u, 9u, 15u, 16u, 17u, 31u, 33u, 100u, 1001u })
    {
        for (size_t ulStart = 0; ulStart < 34; ++ulStart)
        {
            std::vector<unsigned char> plain(ulStart + ulCount * 3 + 40, 0xEE), ours;
            for (xulong ulColor : std::vector<xulong>{ 0x123456, 0xababab, (xulong)random() })
            {
                ours = plain;
                std::vector<unsigned char> wanted = plain;
                const unsigned short us = (unsigned short)ulColor;
                for (xulong i = 0; i < ulCount; ++i)
                    memcpy(&wanted[ulStart + i * 2], &us, 2);
                EXPECT_EQ(&ours[ulStart], xMemset16(&ours[ulStart], us, ulCount));
                ASSERT_EQ(wanted, ours) << "16 bits, " << ulCount << " from " << ulStart;

                ours = wanted = plain;
                for (xulong i = 0; i < std::max<xulong>(ulCount, 1); ++i)
                    for (int nByte = 0; nByte < 3; ++nByte)
                        wanted[ulStart + i * 3 + nByte] = (unsigned char)(ulColor >> (16 - 8 * nByte));
                xMemset24(&ours[ulStart], ulColor, ulCount);
                ASSERT_EQ(wanted, ours) << "24 bits, " << ulCount << " from " << ulStart;
            }
        }
    }
}

TEST(MemoryTest, ComparesAndSearches)
{
    EXPECT_EQ(1, xMemcmp("\x80", "\x01", 1));
    EXPECT_EQ(-1, xMemcmp("ab", "ac", 2));
    EXPECT_EQ(0, xMemcmp("ab", "ac", 1));
    EXPECT_EQ(0, xMemcmp("a", "b", 0));
    const char szText[] = "abc";
    EXPECT_EQ(szText + 1, xMemchr(szText, 'b', 3));
    EXPECT_EQ(nullptr, xMemchr(szText, 'd', 3));
    EXPECT_EQ(1, xCheckForCharInBlock(szText, szText + 3, 'c'));
    EXPECT_EQ(0, xCheckForCharInBlock(szText, szText + 2, 'c'));
    EXPECT_EQ(1, xCheckForCharInBlock(szText, (xulong)3, 'c'));
    EXPECT_EQ(0, xCheckForCharInBlock(szText, (xulong)0, 'a'));
}
