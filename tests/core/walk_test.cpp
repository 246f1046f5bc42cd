#include "core/walk.h"

#include "support.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <vector>

namespace
{
enum
{
    ITEMS = 10,
    MOST_STEPS = 200
};

struct TItem
{
    bool bIn;      ///< the list
    bool bTouched; ///< it left or moved: being passed over, or met again, is no fault
    int nMet;
};
} // namespace

class CListWalkTest : public testing::TestWithParam<bool>
{
};

// What neither leaves nor moves is met once and in its order, whatever happens
// to the others, the present one among them.
TEST_P(CListWalkTest, MeetsWhatStaysOnceThroughEveryChange)
{
    std::mt19937 random(7);
    for (int nRun = 0; nRun < 4000; ++nRun)
    {
        CLList list;
        std::vector<TItem> items(ITEMS, { true, false, 0 });
        items.reserve(MOST_STEPS + ITEMS);
        for (TItem &item : items)
            list.InsertLast(&item);
        const TItem *pBefore = nullptr;
        int nSteps = 0;
        for (CListWalk walk(list, GetParam()); TItem *pItem = walk.Next<TItem>(); ++nSteps)
        {
            ASSERT_TRUE(pItem->bIn) << "run " << nRun << ": it had left";
            ++pItem->nMet;
            if (!pItem->bTouched)
            {
                EXPECT_TRUE(!pBefore || (GetParam() ? pItem < pBefore : pItem > pBefore)) << "run " << nRun;
                pBefore = pItem;
            }
            TItem &victim = random() % 3 ? items[random() % items.size()] : *pItem;
            const size_t ulChange = nSteps < MOST_STEPS - 1 ? random() % 8 : 0;
            if (ulChange < 5 && !list.IsItemInList(&victim))
                continue;
            switch (ulChange)
            {
            case 0:
            case 1:
                list.Delete();
                victim = { false, true, victim.nMet };
                break;
            case 2:
                list.InsertFirst(list.RemoveNode(), 1);
                victim.bTouched = true;
                break;
            case 3:
                list.InsertLast(list.RemoveNode(), 1);
                victim.bTouched = true;
                break;
            case 4:
            {
                const CNode *pNode = list.m_pCurr;
                const xlong lCount = 1 + (xlong)(random() % 3);
                for (xlong l = 0; l < lCount && pNode; ++l, pNode = pNode->pNext)
                    ((TItem *)pNode->pData)->bTouched = true;
                list.m_lCurrNodeNr = 0; // the number may lag behind the cursor
                list.MoveFirst(lCount);
                break;
            }
            case 5:
                items.push_back({ true, false, 0 });
                list.InsertLast(&items.back());
                if (GetParam())
                    items.back().bTouched = true; // a walk back has passed its place
                break;
            case 6:
                for (CListWalk inner(list); inner.Next<TItem>();)
                    list.Last();
                break;
            default:
                if (random() % 10 == 0)
                {
                    list.KillAll();
                    for (TItem &item : items)
                        item = { false, true, 0 };
                }
            }
        }
        for (const TItem &item : items)
            EXPECT_TRUE(item.bTouched || item.nMet == 1) << "run " << nRun << ", item " << &item - items.data();
    }
}

INSTANTIATE_TEST_SUITE_P(Directions, CListWalkTest, testing::Bool(),
                         [](const auto &info) { return info.param ? "Backward" : "Forward"; });

TEST(CListWalk, WalksInsideEachOtherAllHearOfChanges)
{
    int anItems[4] = {};
    CLList list;
    for (int &nItem : anItems)
        list.InsertLast(&nItem);
    CListWalk outer(list);
    outer.Next<int>();
    {
        CListWalk middle(list), inner(list);
        inner.Next<int>();
        middle.Next<int>();
        list.DeleteItem(&anItems[0]);
        list.DeleteItem(&anItems[1]);
        EXPECT_EQ(&anItems[2], inner.Next<int>());
        EXPECT_EQ(&anItems[2], middle.Next<int>());
    }
    EXPECT_EQ(&anItems[2], outer.Next<int>());
    CListWalk inner(list);
    inner.Next<int>();
    list.KillAll();
    EXPECT_EQ(nullptr, inner.Next<int>());
    EXPECT_EQ(nullptr, outer.Next<int>());
}

TEST(CListWalk, OutlivesItsList)
{
    int nItem = 0;
    CLList *const pList = new CLList;
    pList->InsertLast(&nItem);
    pList->InsertLast(&nItem);
    CListWalk walk(*pList);
    EXPECT_EQ(&nItem, walk.Next<int>());
    delete pList;
    EXPECT_EQ(nullptr, walk.Next<int>());
}
