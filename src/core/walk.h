// The two ways to walk a list. Both leave its cursor alone.
#pragma once

#include "tarvix/llist.h"

/// The items of a list, for a body that changes nothing in it and calls nobody
/// who might: for (CControlBase *pCntrl : Each<CControlBase>(m_Cntrls)).
template <class T, CNode *CNode::*pStep = &CNode::pNext>
class Each
{
public:
    explicit Each(const CLList &list) : m_pBegin(pStep == &CNode::pNext ? list.m_pFirst : list.m_pLast) {}

    struct TPlace
    {
        T *operator*() const { return (T *)pNode->pData; }
        TPlace &operator++()
        {
            pNode = pNode->*pStep;
            return *this;
        }
        bool operator!=(const TPlace &other) const { return pNode != other.pNode; }

        const CNode *pNode;
    };

    TPlace begin() const { return { m_pBegin }; }
    TPlace end() const { return { nullptr }; }

private:
    const CNode *m_pBegin;
};

/// The same from the last item to the first.
template <class T>
using EachBack = Each<T, &CNode::pPrev>;

/// A walk whose body may do anything: items may leave the list, come and change
/// places, and the list may die. An item that leaves is passed over, one that
/// comes behind the present place is met.
///
///     for (CListWalk walk(m_Cntrls); CControlBase *pCntrl = walk.Next<CControlBase>();)
class TARVIX_INTERNAL CListWalk
{
public:
    explicit CListWalk(const CLList &list, bool bBackward = false);
    ~CListWalk();
    CListWalk(const CListWalk &) = delete;
    CListWalk &operator=(const CListWalk &) = delete;

    /// @return the next item; null at the end
    template <class T>
    T *Next()
    {
        return (T *)Step();
    }

    // What lists tell of their changes.

    static bool IsAny() { return s_pInnermost != nullptr; }
    /// Nodes that are about to be unlinked or moved, from pFirst to pLast.
    static void OnLeave(const CNode *pFirst, const CNode *pLast);
    static void OnClear(const CLList &list);

private:
    void *Step();
    void Leave(const CNode *pNode);
    const CNode *Behind(const CNode *pNode) const { return m_bBackward ? pNode->pPrev : pNode->pNext; }

    const CLList *m_pList;
    const CNode *m_pNode; ///< the present one, or when it has left the next one
    bool m_bBackward;
    bool m_bLeft; ///< m_pNode is still to come
    CListWalk *m_pOuter;

    static CListWalk *s_pInnermost;
};

/// Keeps the cursor of a list through code that moves it.
class TKeepCursor
{
public:
    explicit TKeepCursor(CLList &list) : m_List(list), m_lPushed(list.Push()) {}
    ~TKeepCursor()
    {
        if (m_lPushed)
            m_List.Pop();
    }
    TKeepCursor(const TKeepCursor &) = delete;
    TKeepCursor &operator=(const TKeepCursor &) = delete;

private:
    CLList &m_List;
    xlong m_lPushed;
};
