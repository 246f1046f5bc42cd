#include "core/walk.h"

// Walks stand on the stack, each inside the one before.
CListWalk *CListWalk::s_pInnermost = nullptr;

CListWalk::CListWalk(const CLList &list, bool bBackward)
    : m_pList(&list), m_pNode(bBackward ? list.m_pLast : list.m_pFirst), m_bBackward(bBackward), m_bLeft(true),
      m_pOuter(s_pInnermost)
{
    s_pInnermost = this;
}

CListWalk::~CListWalk()
{
    s_pInnermost = m_pOuter;
}

void *CListWalk::Step()
{
    if (!m_bLeft && m_pNode)
        m_pNode = Behind(m_pNode);
    m_bLeft = false;
    return m_pNode ? m_pNode->pData : nullptr;
}

void CListWalk::Leave(const CNode *pNode)
{
    if (m_pNode != pNode)
        return;
    m_pNode = Behind(pNode);
    m_bLeft = true;
}

void CListWalk::OnLeave(const CNode *pFirst, const CNode *pLast)
{
    for (CListWalk *pWalk = s_pInnermost; pWalk; pWalk = pWalk->m_pOuter)
    {
        const CNode *const pEnd = pWalk->m_bBackward ? pFirst : pLast;
        for (const CNode *pNode = pWalk->m_bBackward ? pLast : pFirst;; pNode = pWalk->Behind(pNode))
        {
            pWalk->Leave(pNode);
            if (pNode == pEnd)
                break;
        }
    }
}

void CListWalk::OnClear(const CLList &list)
{
    for (CListWalk *pWalk = s_pInnermost; pWalk; pWalk = pWalk->m_pOuter)
        if (pWalk->m_pList == &list)
            pWalk->m_pNode = nullptr;
}
