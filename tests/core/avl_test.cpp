#include "tarvix/avl.h"

#include "core/heap.h"
#include "support.h"

#include <algorithm>
#include <numeric>
#include <random>

namespace
{
struct TItem
{
    int nKey, nSerial;
};

xlong CompareItems(void *pA, void *pB)
{
    return ((TItem *)pA)->nKey - ((TItem *)pB)->nKey;
}

// Height of a subtree; every node has to state its balance truly.
int CheckedHeight(CAvlBinaryTreeNode *pNode)
{
    if (!pNode)
        return 0;
    const int nLeft = CheckedHeight(pNode->GetLeftNode()), nRight = CheckedHeight(pNode->GetRightNode());
    EXPECT_EQ(nRight - nLeft, pNode->m_lBalance);
    EXPECT_LE(std::abs(nRight - nLeft), 1);
    return std::max(nLeft, nRight) + 1;
}

std::vector<TItem *> Walk(CAvlBinaryTree &tree)
{
    std::vector<TItem *> items;
    for (tree.FullTraversal_Init(); tree.FullTraversal_Exists(); tree.FullTraversal_Next())
        items.push_back((TItem *)tree.FullTraversal_Get());
    tree.FullTraversal_Exit();
    return items;
}

std::vector<int> Keys(CAvlBinaryTree &tree)
{
    std::vector<int> keys;
    for (TItem *pItem : Walk(tree))
        keys.push_back(pItem->nKey);
    return keys;
}

class CAvlTest : public testing::Test
{
protected:
    CAvlTest() : m_Tree(CompareItems)
    {
        for (int n = 0; n < 2000; ++n)
            m_Items.push_back({ n, n });
    }
    ~CAvlTest() override { m_Tree.DeleteTree(); }

    void *Item(int nKey) { return &m_Items[(size_t)nKey]; }

    CTestGlobals m_Globals;
    std::vector<TItem> m_Items;
    CAvlBinaryTree m_Tree;
};

TEST_F(CAvlTest, StaysBalancedInEveryOrder)
{
    for (const char *pszOrder : { "rising", "falling", "shuffled" })
    {
        SCOPED_TRACE(pszOrder);
        std::vector<int> keys(1000);
        std::iota(keys.begin(), keys.end(), 0);
        if (*pszOrder == 'f')
            std::reverse(keys.begin(), keys.end());
        if (*pszOrder == 's')
            std::shuffle(keys.begin(), keys.end(), std::mt19937(3));
        for (int n : keys)
            ASSERT_EQ(1, m_Tree.AddItem(Item(n)));
        EXPECT_LE(CheckedHeight(m_Tree.GetRoot()), 14);
        std::sort(keys.begin(), keys.end());
        EXPECT_EQ(keys, Keys(m_Tree));
        m_Tree.DeleteTree();
        EXPECT_EQ(1, m_Tree.IsEmpty());
    }
}

// Against a sorted list: keys repeat, so equal items stand side by side.
TEST_F(CAvlTest, MatchesAPlainModelWhileItemsComeAndGo)
{
    std::mt19937 random(11);
    std::vector<int> model;
    for (int nStep = 0; nStep < 20000; ++nStep)
    {
        const int nKey = (int)(random() % 300);
        const bool bThere = std::binary_search(model.begin(), model.end(), nKey);
        void *pFound = nullptr;
        ASSERT_EQ(bThere, m_Tree.Includes(Item(nKey)));
        ASSERT_EQ(bThere, m_Tree.Find(Item(nKey), pFound));
        ASSERT_EQ(bThere ? Item(nKey) : nullptr, pFound);
        // Grows at first, shrinks at the end.
        if ((int)(random() % 20000) > nStep)
        {
            ASSERT_EQ(1, m_Tree.AddItem(Item(nKey)));
            model.insert(std::upper_bound(model.begin(), model.end(), nKey), nKey);
        }
        else
        {
            ASSERT_EQ(bThere, m_Tree.Remove(Item(nKey)));
            if (bThere)
                model.erase(std::lower_bound(model.begin(), model.end(), nKey));
        }
        if (nStep % 500 == 0)
        {
            CheckedHeight(m_Tree.GetRoot());
            ASSERT_EQ(model, Keys(m_Tree));
        }
    }
}

TEST_F(CAvlTest, EqualItemsGoRightAndOneIsRemoved)
{
    TItem first = { 5, 1 }, second = { 5, 2 };
    m_Tree.AddItem(&first);
    m_Tree.AddItem(&second);
    EXPECT_EQ((std::vector<TItem *>{ &first, &second }), Walk(m_Tree));
    EXPECT_EQ(1, m_Tree.Remove(&second));
    EXPECT_EQ(1u, Walk(m_Tree).size());
    EXPECT_EQ(1, m_Tree.Remove(&second));
    EXPECT_EQ(0, m_Tree.Remove(&second));
}

TEST_F(CAvlTest, SteeredWalkReportsOnlyWithoutAPosition)
{
    m_Tree.Traversal_Init();
    EXPECT_EQ(0, m_Tree.Traversal_Exists());
    EXPECT_EQ(nullptr, m_Tree.Traversal_Get());
    struct
    {
        xlong (CAvlBinaryTree::*pfnStep)();
        const char *pszText;
    } steps[] = {
        { &CAvlBinaryTree::Traversal_GoLeft,
          "CAvlBinaryTree::Traversal_GoLeft: Unable to go left, the traversal node is NULL." },
        { &CAvlBinaryTree::Traversal_GoRight,
          "CAvlBinaryTree::Traversal_GoRight: Unable to go right, the traversal node is NULL." },
        { &CAvlBinaryTree::Traversal_AbleToGoLeft,
          "CAvlBinaryTree::Traversal_AbleToGoLeft: Unable to go find current node, the traversal node is NULL." },
        { &CAvlBinaryTree::Traversal_AbleToGoRight,
          "CAvlBinaryTree::Traversal_AbleToGoRight: Unable to go find current node, the traversal node is NULL." },
    };
    for (const auto &step : steps)
    {
        EXPECT_EQ(0, (m_Tree.*step.pfnStep)()) << step.pszText;
        EXPECT_EQ(step.pszText, LastError());
    }
    for (int n : { 1, 0, 2, 3 })
        m_Tree.AddItem(Item(n));
    m_Tree.Traversal_Init();
    EXPECT_EQ(Item(1), m_Tree.Traversal_Get());
    EXPECT_EQ(1, m_Tree.Traversal_AbleToGoRight());
    EXPECT_EQ(1, m_Tree.Traversal_GoRight());
    EXPECT_EQ(Item(2), m_Tree.Traversal_Get());
    EXPECT_EQ(0, m_Tree.Traversal_AbleToGoLeft());
    EXPECT_EQ(1, m_Tree.Traversal_GoLeft());
    EXPECT_EQ(0, m_Tree.Traversal_Exists());
}

TEST_F(CAvlTest, FailsWithoutMemoryAndLosesNothing)
{
    CAvlBinaryTree copy(CompareItems);
    // Past what the pool of nodes holds.
    for (int n = 0; n < 600; ++n)
        m_Tree.AddItem(Item(n));
    const std::vector<int> before = Keys(m_Tree);
    HeapFailAt(1);
    EXPECT_EQ(0, m_Tree.AddItem(Item(700)));
    HeapFailAt(0);
    EXPECT_EQ("CAvlBinaryTree::AddItem: Unable to add item.", LastError());
    EXPECT_EQ(before, Keys(m_Tree));

    HeapFailAt(300);
    copy.Duplicate(&m_Tree);
    HeapFailAt(0);
    EXPECT_EQ("CAvlBinaryTreeNode::Duplicate: Out of memory.", LastError());
    EXPECT_EQ(1, copy.IsEmpty());

    copy.Duplicate(&m_Tree);
    EXPECT_EQ(before, Keys(copy));
    CheckedHeight(copy.GetRoot());
    m_Tree.Remove(Item(5));
    EXPECT_EQ(before, Keys(copy));
    copy.DeleteTree();
}
} // namespace
