#pragma once

#include "tarvix/memory.h"
#include "tarvix/types.h"

struct CNode
{
    CNode *pNext;
    CNode *pPrev;
    void *pData;
};

/// Doubly linked list of pointers with one built-in cursor. It owns its nodes
/// and, unless an operation says so, not what they point to. A copy shares the
/// nodes with its source: only one of the two may free them.
///
/// The usual walk is First, then while Exists: Get, Next. A second walk over
/// the same list moves the cursor of the first; Push and Pop keep it.
class TARVIX_API CLList
{
public:
    CLList();
    CLList(const CLList &) = default;
    CLList &operator=(const CLList &) = default;
    /// Frees the nodes.
    ~CLList();

    /// To the first node, number 0. @return non-zero if there is one
    short First();
    /// To the last node; the number becomes the count of nodes, one more than its index.
    short Last();
    /// @return non-zero if the cursor is still on a node; 0 without a cursor
    short Next();
    short Prev();
    short Exists();
    /// @return the data at the cursor; null past the end
    void *Get();
    /// Moves the cursor to a node by its index.
    /// @return its data; null with the cursor past the end if the list is shorter
    void *Get(xulong ulIndex);
    xlong GetNumNodes();
    xlong GetCurrNodeNr();
    /// Saves the cursor. @return 0 if 32 are saved already
    xlong Push();
    /// @return 0 if none is saved
    xlong Pop();

    // lIsNode 0: pItem is the data of a new node. Otherwise it is a CNode from
    // RemoveNode, linked again with its data. The result is 1, or 0 when no
    // node could be had. With a cursor past the end of a list that is not
    // empty, InsertBefore and InsertAfter count one more and link nothing.
    short InsertFirst(void *pItem, xlong lIsNode = 0);
    short InsertLast(void *pItem, xlong lIsNode = 0);
    /// The cursor stays on its node.
    short InsertBefore(void *pItem, xlong lIsNode = 0);
    /// The cursor moves to the new node; its number stays.
    short InsertAfter(void *pItem, xlong lIsNode = 0);
    /// 1 if the item is there already. The search moves the cursor.
    short IfNotInsertFirst(void *pItem);
    short IfNotInsertLast(void *pItem);
    short IfNotInsertBefore(void *pItem);
    short IfNotInsertAfter(void *pItem);

    /// The cursor ends on the match, or past the end.
    xlong IsItemInList(void *pItem);
    short ItemExists(void *pItem);

    /// Unlinks the node at the cursor, which goes to the next one or, at the
    /// end, to the previous one. Its number stays.
    /// @param lFree  1 frees the node
    /// @return 1; 0 without a cursor, and also when the only node was deleted
    short Delete(xlong lFree = 1);
    /// Frees the data at the cursor through the library's delete; the node
    /// stays with null. @return 0 if there is no data
    short DeleteData();
    /// Deletes the item's node, not the item. @return 0 if absent
    short DeleteItem(void *pItem);
    /// Unlinks the node at the cursor and hands it over.
    CNode *RemoveNode();
    /// Frees all nodes.
    void KillAll();
    /// Frees all data through the library's delete, without destructors, and all nodes.
    void KillAllData();
    /// Moves lCount nodes from the cursor on to the head; the cursor ends on the first node.
    /// @return 0 if there are fewer than lCount, or the cursor is first already
    xlong MoveFirst(xlong lCount);

    // Names from an earlier allocator, kept for hosts that link them.
    void First_NodeChunk();
    void Next_NodeChunk();
    xlong Exists_NodeChunk();
    CNode *PreAllocated_AllocNode();
    void PreAllocated_FreeNode(CNode *pNode);

    struct TCursor
    {
        xlong lNumber;
        CNode *pNode;
    };

    xlong m_lNumNodes;
    xlong m_lCurrNodeNr;
    CNode *m_pFirst;
    CNode *m_pLast;
    CNode *m_pCurr; ///< null past the end
    TCursor m_aStack[32];
    xlong m_lStackDepth;

private:
    short LinkAlone(CNode *pNode);
    void Unlink(CNode *pNode);
};

inline short CLList::First()
{
    m_pCurr = m_pFirst;
    m_lCurrNodeNr = 0;
    return m_pCurr != nullptr;
}

inline short CLList::Last()
{
    m_pCurr = m_pLast;
    m_lCurrNodeNr = m_lNumNodes;
    return m_pCurr != nullptr;
}

inline short CLList::Next()
{
    if (!m_pCurr)
        return 0;
    m_pCurr = m_pCurr->pNext;
    ++m_lCurrNodeNr;
    return m_pCurr != nullptr;
}

inline short CLList::Prev()
{
    if (!m_pCurr)
        return 0;
    m_pCurr = m_pCurr->pPrev;
    --m_lCurrNodeNr;
    return m_pCurr != nullptr;
}

inline short CLList::Exists()
{
    return m_pCurr != nullptr;
}

inline void *CLList::Get()
{
    return m_pCurr ? m_pCurr->pData : nullptr;
}

inline xlong CLList::Push()
{
    if (m_lStackDepth >= 32)
        return 0;
    m_aStack[m_lStackDepth++] = { m_lCurrNodeNr, m_pCurr };
    return 1;
}

inline xlong CLList::Pop()
{
    if (m_lStackDepth <= 0)
        return 0;
    const TCursor &cursor = m_aStack[--m_lStackDepth];
    m_lCurrNodeNr = cursor.lNumber;
    m_pCurr = cursor.pNode;
    return 1;
}

/// Last in, first out. The destructor frees the nodes, not the data.
class TARVIX_API CStack
{
public:
    CStack();
    CStack(const CStack &) = default;
    CStack &operator=(const CStack &) = default;
    ~CStack();

    xlong Push(void *pItem);
    /// @return null if empty
    void *Pop();
    void *Top();
    xlong IsEmpty();

private:
    CLList m_List;
};

/// A list behind six numbers, for hosts that link it; the library does not use it.
struct TARVIX_API Node
{
    Node();
    Node(const Node &) = default;
    Node &operator=(const Node &) = default;
    ~Node();

    xlong m_lValues[6];
    CLList m_List;
};
