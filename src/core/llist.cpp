#include "tarvix/llist.h"

#include "core/invariant.h"
#include "core/nodepool.h"
#include "core/walk.h"
#include "tarvix/globals.h"

#include <string.h>

// Invariants
// 1. Neighbours point to each other. The first node has none before it, the
//    last none behind it; a list has both or neither.
// 2. The cursor and the saved ones are null or on a node of the list.
// 3. m_lNumNodes counts the nodes, and besides the calls of InsertBefore and
//    InsertAfter with a cursor past the end, which link nothing.
// 4. A walk that runs is told of each node before it leaves its place.

namespace
{
void *NewNode()
{
    return xSysAllocMem(sizeof(CNode));
}

void ClearNode(void *pNode)
{
    memset(pNode, 0, sizeof(CNode));
}

CObjPool *NodePool()
{
    return glb ? GetNodePool(glb->m_pListNodePool, NewNode, ClearNode, ClearNode) : nullptr;
}

CNode *List_AllocNode()
{
    CObjPool *const pPool = NodePool();
    void *pNode = pPool ? TakePooledNode(pPool) : nullptr;
    if (!pNode && (pPool || !glb))
        pNode = NewNode();
    return (CNode *)pNode;
}

void List_FreeNode(CNode *pNode)
{
    if (!pNode)
        return;
    CObjPool *const pPool = NodePool();
    if (!pPool || !GivePooledNode(pPool, pNode))
        xSysFreeMem(pNode);
}

// The node to link: the caller's own, or a new one with the data.
CNode *NodeFor(void *pItem, xlong lIsNode)
{
    if (lIsNode)
        return (CNode *)pItem;
    CNode *pNode = List_AllocNode();
    if (pNode)
        *pNode = { nullptr, nullptr, pItem };
    return pNode;
}

// Invariant 1 for one node.
bool IsLinked(const CLList &list, const CNode *pNode)
{
    return (pNode->pPrev ? pNode->pPrev->pNext : list.m_pFirst) == pNode &&
           (pNode->pNext ? pNode->pNext->pPrev : list.m_pLast) == pNode;
}

// Inline for callers, and yet exported for those that link them.
[[gnu::used]] short (CLList::*const s_apfnSteps[])() = { &CLList::First, &CLList::Last, &CLList::Next, &CLList::Prev,
                                                         &CLList::Exists };
[[gnu::used]] void *(CLList::*const s_pfnGet)() = &CLList::Get;
[[gnu::used]] xlong (CLList::*const s_apfnKeep[])() = { &CLList::Push, &CLList::Pop };
} // namespace

// The stack is most of a list, and a tree of scripts is thousands of lists: it
// is not touched before it is used.
CLList::CLList()
    : m_lNumNodes(0), m_lCurrNodeNr(0), m_pFirst(nullptr), m_pLast(nullptr), m_pCurr(nullptr), m_lStackDepth(0)
{
}

CLList::~CLList()
{
    KillAll();
}

void *CLList::Get(xulong ulIndex)
{
    for (First(); m_pCurr && ulIndex; --ulIndex)
        Next();
    return Get();
}

xlong CLList::GetNumNodes()
{
    return m_lNumNodes;
}

xlong CLList::GetCurrNodeNr()
{
    return m_lCurrNodeNr;
}

short CLList::LinkAlone(CNode *pNode)
{
    pNode->pNext = nullptr;
    pNode->pPrev = nullptr;
    m_pFirst = m_pLast = m_pCurr = pNode;
    ++m_lNumNodes;
    return 1;
}

short CLList::InsertFirst(void *pItem, xlong lIsNode)
{
    CNode *pNode = NodeFor(pItem, lIsNode);
    if (!pNode)
        return 0;
    ++m_lCurrNodeNr;
    if (!m_pFirst)
        return LinkAlone(pNode);
    pNode->pPrev = nullptr;
    pNode->pNext = m_pFirst;
    m_pFirst->pPrev = pNode;
    m_pFirst = pNode;
    ++m_lNumNodes;
    TARVIX_INVARIANT(IsLinked(*this, pNode));
    return 1;
}

short CLList::InsertLast(void *pItem, xlong lIsNode)
{
    CNode *pNode = NodeFor(pItem, lIsNode);
    if (!pNode)
        return 0;
    if (!m_pFirst)
        return LinkAlone(pNode);
    pNode->pNext = nullptr;
    pNode->pPrev = m_pLast;
    m_pLast->pNext = pNode;
    m_pLast = pNode;
    ++m_lNumNodes;
    TARVIX_INVARIANT(IsLinked(*this, pNode));
    return 1;
}

short CLList::InsertBefore(void *pItem, xlong lIsNode)
{
    if (m_pFirst && !m_pCurr)
    {
        ++m_lNumNodes;
        return 1;
    }
    CNode *pNode = NodeFor(pItem, lIsNode);
    if (!pNode)
        return 0;
    ++m_lCurrNodeNr;
    if (!m_pFirst)
        return LinkAlone(pNode);
    pNode->pNext = m_pCurr;
    pNode->pPrev = m_pCurr->pPrev;
    if (m_pCurr->pPrev)
        m_pCurr->pPrev->pNext = pNode;
    else
        m_pFirst = pNode;
    m_pCurr->pPrev = pNode;
    ++m_lNumNodes;
    TARVIX_INVARIANT(IsLinked(*this, pNode));
    return 1;
}

short CLList::InsertAfter(void *pItem, xlong lIsNode)
{
    if (m_pFirst && !m_pCurr)
    {
        ++m_lNumNodes;
        return 1;
    }
    CNode *pNode = NodeFor(pItem, lIsNode);
    if (!pNode)
        return 0;
    if (!m_pFirst)
        return LinkAlone(pNode);
    pNode->pPrev = m_pCurr;
    pNode->pNext = m_pCurr->pNext;
    if (m_pCurr->pNext)
        m_pCurr->pNext->pPrev = pNode;
    else
        m_pLast = pNode;
    m_pCurr->pNext = pNode;
    m_pCurr = pNode;
    ++m_lNumNodes;
    TARVIX_INVARIANT(IsLinked(*this, pNode));
    return 1;
}

short CLList::IfNotInsertFirst(void *pItem)
{
    return IsItemInList(pItem) ? 1 : InsertFirst(pItem);
}

short CLList::IfNotInsertLast(void *pItem)
{
    return IsItemInList(pItem) ? 1 : InsertLast(pItem);
}

short CLList::IfNotInsertBefore(void *pItem)
{
    return IsItemInList(pItem) ? 1 : InsertBefore(pItem);
}

short CLList::IfNotInsertAfter(void *pItem)
{
    return IsItemInList(pItem) ? 1 : InsertAfter(pItem);
}

xlong CLList::IsItemInList(void *pItem)
{
    for (First(); m_pCurr; Next())
        if (m_pCurr->pData == pItem)
            return 1;
    return 0;
}

short CLList::ItemExists(void *pItem)
{
    return (short)IsItemInList(pItem);
}

void CLList::Unlink(CNode *pNode)
{
    TARVIX_INVARIANT(IsLinked(*this, pNode));
    if (CListWalk::IsAny())
        CListWalk::OnLeave(pNode, pNode);
    // A cursor that was kept on this node comes back past the end.
    for (xlong l = 0; l < m_lStackDepth; ++l)
        if (m_aStack[l].pNode == pNode)
            m_aStack[l].pNode = nullptr;
    if (pNode->pPrev)
        pNode->pPrev->pNext = pNode->pNext;
    else
        m_pFirst = pNode->pNext;
    if (pNode->pNext)
        pNode->pNext->pPrev = pNode->pPrev;
    else
        m_pLast = pNode->pPrev;
    if (m_pCurr == pNode)
        m_pCurr = pNode->pNext ? pNode->pNext : pNode->pPrev;
    --m_lNumNodes;
}

short CLList::Delete(xlong lFree)
{
    CNode *pNode = m_pCurr;
    if (!pNode)
        return 0;
    Unlink(pNode);
    if (lFree == 1)
        List_FreeNode(pNode);
    if (m_pFirst)
        return 1;
    m_lNumNodes = 0;
    m_lCurrNodeNr = 0;
    return 0;
}

short CLList::DeleteData()
{
    if (!m_pCurr || !m_pCurr->pData)
        return 0;
    xFreeMem(m_pCurr->pData, nullptr, 0);
    m_pCurr->pData = nullptr;
    return 1;
}

short CLList::DeleteItem(void *pItem)
{
    if (!IsItemInList(pItem))
        return 0;
    Delete(1);
    return 1;
}

CNode *CLList::RemoveNode()
{
    CNode *pNode = m_pCurr;
    if (pNode)
        Unlink(pNode);
    return pNode;
}

void CLList::KillAll()
{
    if (CListWalk::IsAny())
        CListWalk::OnClear(*this);
    for (CNode *pNode = m_pFirst; pNode;)
    {
        CNode *pNext = pNode->pNext;
        List_FreeNode(pNode);
        pNode = pNext;
    }
    m_pFirst = m_pLast = m_pCurr = nullptr;
    m_lNumNodes = 0;
    m_lCurrNodeNr = 0;
    m_lStackDepth = 0;
}

void CLList::KillAllData()
{
    for (CNode *pNode = m_pFirst; pNode; pNode = pNode->pNext)
    {
        if (pNode->pData)
            xFreeMem(pNode->pData, nullptr, 0);
        pNode->pData = nullptr;
    }
    KillAll();
}

xlong CLList::MoveFirst(xlong lCount)
{
    if (lCount < 1 || !m_pCurr || lCount > m_lNumNodes - m_lCurrNodeNr || m_pCurr == m_pFirst || !Push())
        return 0;
    CNode *pRun = m_pCurr;
    CNode *pBefore = pRun->pPrev;
    // The number may have fallen behind the cursor, so the end is looked for too.
    for (xlong l = 1; l < lCount && m_pCurr->pNext; ++l)
        Next();
    CNode *pRunEnd = m_pCurr;
    Pop();
    if (CListWalk::IsAny())
        CListWalk::OnLeave(pRun, pRunEnd);

    pBefore->pNext = pRunEnd->pNext;
    if (pRunEnd->pNext)
        pRunEnd->pNext->pPrev = pBefore;
    else
        m_pLast = pBefore;
    pRunEnd->pNext = m_pFirst;
    m_pFirst->pPrev = pRunEnd;
    pRun->pPrev = nullptr;
    m_pFirst = pRun;
    First();
    TARVIX_INVARIANT(IsLinked(*this, pRun) && IsLinked(*this, pRunEnd));
    return 1;
}

void CLList::First_NodeChunk() {}

void CLList::Next_NodeChunk() {}

xlong CLList::Exists_NodeChunk()
{
    return 1;
}

CNode *CLList::PreAllocated_AllocNode()
{
    return nullptr;
}

void CLList::PreAllocated_FreeNode(CNode *pNode) {}

CStack::CStack() {}

CStack::~CStack() {}

xlong CStack::Push(void *pItem)
{
    return m_List.InsertFirst(pItem);
}

void *CStack::Pop()
{
    void *pItem = Top();
    m_List.First();
    m_List.Delete();
    return pItem;
}

void *CStack::Top()
{
    m_List.First();
    return m_List.Get();
}

xlong CStack::IsEmpty()
{
    return m_List.GetNumNodes() == 0;
}

Node::Node() : m_lValues() {}

Node::~Node() {}
