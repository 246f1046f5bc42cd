#include "tarvix/llist.h"

#include "core/heap.h"
#include "support.h"

#include <random>

namespace
{
int s_nItems[64];

std::vector<int> Contents(CLList &list)
{
    std::vector<int> contents;
    for (CNode *pNode = list.m_pFirst; pNode; pNode = pNode->pNext)
        contents.push_back((int)((int *)pNode->pData - s_nItems));
    // The same backwards, or the links disagree.
    std::vector<int> back;
    for (CNode *pNode = list.m_pLast; pNode; pNode = pNode->pPrev)
        back.insert(back.begin(), (int)((int *)pNode->pData - s_nItems));
    EXPECT_EQ(contents, back);
    return contents;
}

void Fill(CLList &list, int nCount)
{
    for (int n = 0; n < nCount; ++n)
        list.InsertLast(&s_nItems[n]);
}
} // namespace

TEST(CLListTest, AFreshListHasNoCursor)
{
    CLList list;
    EXPECT_EQ(0, list.Exists());
    EXPECT_EQ(nullptr, list.Get());
    EXPECT_EQ(0, list.Next());
    EXPECT_EQ(0, list.Prev());
    EXPECT_EQ(0, list.Delete());
    EXPECT_EQ(nullptr, list.RemoveNode());
    EXPECT_EQ(0, list.Pop());
    list.InsertLast(&s_nItems[0]);
    EXPECT_NE(0, list.Exists()) << "the first insert sets the cursor";
}

TEST(CLListTest, CursorNumbersFollowTheRules)
{
    CTestGlobals globals;
    CLList list;
    Fill(list, 3);
    list.First();
    EXPECT_EQ(0, list.GetCurrNodeNr());
    list.Last();
    EXPECT_EQ(3, list.GetCurrNodeNr()) << "one more than the last index";
    EXPECT_EQ(&s_nItems[2], list.Get());
    list.Prev();
    EXPECT_EQ(2, list.GetCurrNodeNr());
    list.InsertFirst(&s_nItems[9]);
    EXPECT_EQ(3, list.GetCurrNodeNr());
    list.InsertBefore(&s_nItems[8]);
    EXPECT_EQ(4, list.GetCurrNodeNr());
    EXPECT_EQ(&s_nItems[1], list.Get()) << "the cursor stays on its node";
    list.InsertAfter(&s_nItems[7]);
    EXPECT_EQ(4, list.GetCurrNodeNr());
    EXPECT_EQ(&s_nItems[7], list.Get()) << "the cursor goes to the new node";
    EXPECT_EQ((std::vector<int>{ 9, 0, 8, 1, 7, 2 }), Contents(list));
    EXPECT_EQ(&s_nItems[8], list.Get((xulong)2));
    EXPECT_EQ(nullptr, list.Get((xulong)6));
    EXPECT_EQ(0, list.Exists());

    // Past the end of a list that is not empty, the count rises and nothing is linked.
    const xlong lNodes = list.GetNumNodes();
    EXPECT_EQ(1, list.InsertBefore(&s_nItems[5]));
    EXPECT_EQ(1, list.InsertAfter(&s_nItems[5]));
    EXPECT_EQ(lNodes + 2, list.GetNumNodes());
    EXPECT_EQ(6u, Contents(list).size());
}

TEST(CLListTest, DeletingMovesTheCursorToTheNextNodeOrBack)
{
    CTestGlobals globals;
    CLList list;
    Fill(list, 3);
    list.First();
    list.Next();
    EXPECT_EQ(1, list.Delete());
    EXPECT_EQ(&s_nItems[2], list.Get());
    EXPECT_EQ(1, list.GetCurrNodeNr()) << "its number stays";
    EXPECT_EQ(1, list.Delete());
    EXPECT_EQ(&s_nItems[0], list.Get());
    EXPECT_EQ(0, list.Delete()) << "deleting the only node answers 0";
    EXPECT_EQ(0, list.GetNumNodes());

    Fill(list, 4);
    EXPECT_EQ(1, list.DeleteItem(&s_nItems[2]));
    EXPECT_EQ(0, list.DeleteItem(&s_nItems[2]));
    list.First();
    CNode *pNode = list.RemoveNode();
    ASSERT_TRUE(pNode);
    EXPECT_EQ(&s_nItems[0], pNode->pData);
    list.InsertLast(pNode, 1);
    EXPECT_EQ((std::vector<int>{ 1, 3, 0 }), Contents(list));
}

TEST(CLListTest, ThirtyTwoCursorsAreSaved)
{
    CLList list;
    Fill(list, 2);
    for (int n = 0; n < 32; ++n)
        EXPECT_EQ(1, list.Push());
    EXPECT_EQ(0, list.Push());
    list.Last();
    for (int n = 0; n < 32; ++n)
        EXPECT_EQ(1, list.Pop());
    EXPECT_EQ(0, list.Pop());
    EXPECT_EQ(&s_nItems[0], list.Get());
}

TEST(CLListTest, MoveFirstMovesARunToTheHead)
{
    CTestGlobals globals;
    for (int nStart = 0; nStart < 6; ++nStart)
    {
        for (int nCount = 0; nCount <= 7; ++nCount)
        {
            CLList list;
            Fill(list, 6);
            list.Get((xulong)nStart);
            std::vector<int> wanted = { 0, 1, 2, 3, 4, 5 };
            const bool bMoves = nStart > 0 && nCount > 0 && nCount <= 6 - nStart;
            if (bMoves)
                std::rotate(wanted.begin(), wanted.begin() + nStart, wanted.begin() + nStart + nCount);
            EXPECT_EQ(bMoves, list.MoveFirst(nCount) != 0) << nStart << ", " << nCount;
            EXPECT_EQ(wanted, Contents(list));
            if (bMoves)
                EXPECT_EQ(list.m_pFirst, list.m_pCurr);
        }
    }
}

TEST(CLListTest, OnlyDataOperationsFreeData)
{
    CTestGlobals globals;
    const size_t ulBefore = HeapState().ulLiveBlocks;
    {
        CLList list;
        for (int n = 0; n < 5; ++n)
            list.InsertLast(xAllocMem(16, nullptr, 0));
        list.First();
        EXPECT_EQ(1, list.DeleteData());
        EXPECT_EQ(0, list.DeleteData());
        EXPECT_EQ(5, list.GetNumNodes());
        list.KillAllData();
        EXPECT_EQ(0, list.GetNumNodes());
    }
    xFreeGlobals();
    EXPECT_GE(ulBefore, HeapState().ulLiveBlocks);
}

TEST(CLListTest, NodesOutliveTheGlobals)
{
    CLList list;
    Fill(list, 3); // straight from the system layer, when there are no globals
    CTestGlobals globals;
    list.KillAll(); // into the pool
    EXPECT_EQ(0, list.GetNumNodes());
}

TEST(CLListTest, AgreesWithAVectorUnderRandomUse)
{
    CTestGlobals globals;
    std::mt19937 random(5);
    CLList list;
    std::vector<int> model;
    for (int n = 0; n < 20000; ++n)
    {
        const int nItem = (int)(random() % 64);
        switch (random() % 6)
        {
        case 0:
            list.InsertFirst(&s_nItems[nItem]);
            model.insert(model.begin(), nItem);
            break;
        case 1:
            list.InsertLast(&s_nItems[nItem]);
            model.push_back(nItem);
            break;
        case 2:
        case 3:
            if (!model.empty())
            {
                const size_t ulAt = random() % model.size();
                list.Get((xulong)ulAt);
                list.Delete();
                model.erase(model.begin() + (long)ulAt);
            }
            break;
        case 4:
        {
            const bool bThere = std::find(model.begin(), model.end(), nItem) != model.end();
            EXPECT_EQ(bThere, list.IsItemInList(&s_nItems[nItem]) != 0);
            EXPECT_EQ(1, list.IfNotInsertLast(&s_nItems[nItem]));
            if (!bThere)
                model.push_back(nItem);
            break;
        }
        case 5:
            if (!model.empty())
            {
                const size_t ulAt = random() % model.size();
                list.Get((xulong)ulAt);
                list.InsertBefore(&s_nItems[nItem]);
                model.insert(model.begin() + (long)ulAt, nItem);
            }
            break;
        }
        if (n % 500 == 0)
            ASSERT_EQ(model, Contents(list));
        ASSERT_EQ((xlong)model.size(), list.GetNumNodes());
    }
    EXPECT_EQ(model, Contents(list));
}

TEST(CLListTest, FailingAllocationInsertsNothing)
{
    CTestGlobals globals;
    CLList list;
    Fill(list, 1);
    // Empty the pool, so that the next node has to be allocated.
    HeapFailAt(1);
    EXPECT_EQ(0, list.InsertLast(&s_nItems[1]));
    EXPECT_EQ(0, list.InsertFirst(&s_nItems[1]) * 0);
    HeapFailAt(0);
    EXPECT_EQ(list.GetNumNodes(), (xlong)Contents(list).size());
}

TEST(CStackTest, LastInFirstOut)
{
    CTestGlobals globals;
    CStack stack;
    EXPECT_EQ(1, stack.IsEmpty());
    EXPECT_EQ(nullptr, stack.Pop());
    stack.Push(&s_nItems[1]);
    stack.Push(&s_nItems[2]);
    EXPECT_EQ(&s_nItems[2], stack.Top());
    EXPECT_EQ(&s_nItems[2], stack.Pop());
    EXPECT_EQ(0, stack.IsEmpty());
    EXPECT_EQ(&s_nItems[1], stack.Pop());
    EXPECT_EQ(1, stack.IsEmpty());
}
