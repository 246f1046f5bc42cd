// The tree beside std::set and Boost's intrusive tree, all with the same
// comparison through a pointer.

#include "paired.h"

#include "tarvix/avl.h"
#include "tarvix/globals.h"

#include <boost/intrusive/avl_set.hpp>

#include <random>
#include <set>
#include <vector>

namespace
{
struct TItem : boost::intrusive::avl_set_base_hook<>
{
    xlong lKey;
};

xlong CompareItems(void *pA, void *pB)
{
    return ((TItem *)pA)->lKey - ((TItem *)pB)->lKey;
}

TAvlCompare s_pfnCompare = CompareItems;

struct TLess
{
    bool operator()(const TItem *pA, const TItem *pB) const { return s_pfnCompare((void *)pA, (void *)pB) < 0; }
    bool operator()(const TItem &a, const TItem &b) const { return s_pfnCompare((void *)&a, (void *)&b) < 0; }
};

typedef boost::intrusive::avl_multiset<TItem, boost::intrusive::compare<TLess>> TBoost;

struct TOurs
{
    CAvlBinaryTree tree{ s_pfnCompare };

    void Add(TItem *pItem) { tree.AddItem(pItem); }
    bool Has(TItem *pItem) { return tree.Includes(pItem) != 0; }
    void Remove(TItem *pItem) { tree.Remove(pItem); }
    size_t Sum()
    {
        size_t ul = 0;
        for (tree.FullTraversal_Init(); tree.FullTraversal_Exists(); tree.FullTraversal_Next())
            ul += (size_t)((TItem *)tree.FullTraversal_Get())->lKey;
        return ul;
    }
};

struct TSet
{
    std::multiset<TItem *, TLess> tree;

    void Add(TItem *pItem) { tree.insert(pItem); }
    bool Has(TItem *pItem) { return tree.find(pItem) != tree.end(); }
    void Remove(TItem *pItem) { tree.erase(tree.find(pItem)); }
    size_t Sum()
    {
        size_t ul = 0;
        for (TItem *pItem : tree)
            ul += (size_t)pItem->lKey;
        return ul;
    }
};

struct TIntrusive
{
    TBoost tree;

    void Add(TItem *pItem) { tree.insert(*pItem); }
    bool Has(TItem *pItem) { return tree.find(*pItem) != tree.end(); }
    void Remove(TItem *pItem) { tree.erase(tree.find(*pItem)); }
    size_t Sum()
    {
        size_t ul = 0;
        for (TItem &item : tree)
            ul += (size_t)item.lKey;
        return ul;
    }
};

template <class TTree>
struct TWork
{
    explicit TWork(size_t ulCount) : items(ulCount)
    {
        std::mt19937 random(9);
        for (TItem &item : items)
            item.lKey = (xlong)(random() & 0x3fffffff);
    }
    ~TWork() { RemoveAll(); }

    void AddAll()
    {
        for (TItem &item : items)
            tree.Add(&item);
    }
    void RemoveAll()
    {
        while (ulRemoved < items.size())
            tree.Remove(&items[ulRemoved++]);
    }
    void FillAndEmpty()
    {
        AddAll();
        ulRemoved = 0;
        RemoveAll();
    }
    void FindAll()
    {
        size_t ul = 0;
        for (TItem &item : items)
            ul += tree.Has(&item);
        paired::Keep((void *)ul);
    }

    std::vector<TItem> items;
    TTree tree;
    size_t ulRemoved = items.size();
};

template <class TPeer>
void Compare(paired::CTable &table, size_t ulCount, const char *pszPeer, double dGoal)
{
    const std::string strSize = std::to_string(ulCount);
    TWork<TOurs> ours(ulCount);
    TWork<TPeer> peer(ulCount);
    table.Row("tree: insert and remove", strSize,
              paired::Measure([&] { ours.FillAndEmpty(); }, [&] { peer.FillAndEmpty(); }), pszPeer, dGoal);
    ours.AddAll();
    peer.AddAll();
    ours.ulRemoved = peer.ulRemoved = 0;
    if (ours.tree.Sum() != peer.tree.Sum())
        return table.Differs("tree: walk", strSize, pszPeer);
    table.Row("tree: find", strSize, paired::Measure([&] { ours.FindAll(); }, [&] { peer.FindAll(); }), pszPeer, dGoal);
    table.Row(
        "tree: walk", strSize,
        paired::Measure([&] { paired::Keep((void *)ours.tree.Sum()); }, [&] { paired::Keep((void *)peer.tree.Sum()); }),
        pszPeer, dGoal);
}
} // namespace

int main()
{
    glb = new SGlobals;
    sglb = new SSysGlobals;
    paired::CTable table("Tree");
    for (const size_t ulCount : { 16, 1000, 100000 })
    {
        Compare<TSet>(table, ulCount, "std::multiset", 1);
        Compare<TIntrusive>(table, ulCount, "boost intrusive", 1 / 1.2);
    }
    return 0;
}
