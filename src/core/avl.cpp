#include "tarvix/avl.h"

#include "core/nodepool.h"
#include "tarvix/error.h"
#include "tarvix/globals.h"

namespace
{
void *NewNode()
{
    return xSysAllocMem(sizeof(CAvlBinaryTreeNode));
}

void ConstructNode(void *pNode)
{
    ((CAvlBinaryTreeNode *)pNode)->Constructor();
}

void DestructNode(void *pNode)
{
    ((CAvlBinaryTreeNode *)pNode)->Destructor();
}

CObjPool *NodePool()
{
    return glb ? GetNodePool(glb->m_pAvlNodePool, NewNode, ConstructNode, DestructNode) : nullptr;
}

CAvlBinaryTreeNode *AllocNode()
{
    CObjPool *const pPool = NodePool();
    void *pNode = pPool ? TakePooledNode(pPool) : nullptr;
    if (!pNode && (pPool || !glb))
        pNode = NewNode();
    if (pNode)
        ((CAvlBinaryTreeNode *)pNode)->Constructor();
    return (CAvlBinaryTreeNode *)pNode;
}

void FreeNode(CAvlBinaryTreeNode *pNode)
{
    CObjPool *const pPool = NodePool();
    if (!pPool || !GivePooledNode(pPool, pNode))
        xSysFreeMem(pNode);
}

void FreeSubtree(CAvlBinaryTreeNode *pNode)
{
    if (!pNode)
        return;
    pNode->DeleteTree();
    FreeNode(pNode);
}

CAvlBinaryTreeNode *FindNode(CAvlBinaryTreeNode *pNode, void *pKey, TAvlCompare pfnCompare)
{
    while (pNode)
    {
        const xlong lOrder = pfnCompare(pKey, pNode->m_pValue);
        if (!lOrder)
            break;
        pNode = lOrder < 0 ? pNode->m_pLeft : pNode->m_pRight;
    }
    return pNode;
}
} // namespace

CAvlBinaryTreeNode::CAvlBinaryTreeNode()
{
    Constructor();
}

CAvlBinaryTreeNode::~CAvlBinaryTreeNode()
{
    Destructor();
}

void CAvlBinaryTreeNode::Constructor()
{
    Init(nullptr, nullptr, nullptr, nullptr);
}

void CAvlBinaryTreeNode::Destructor()
{
    Init(nullptr, m_pValue, nullptr, nullptr);
}

void CAvlBinaryTreeNode::Init(TAvlCompare pfnCompare, void *pValue)
{
    Init(pfnCompare, pValue, nullptr, nullptr);
}

void CAvlBinaryTreeNode::Init(TAvlCompare pfnCompare, void *pValue, CAvlBinaryTreeNode *pLeft,
                              CAvlBinaryTreeNode *pRight)
{
    m_pValue = pValue;
    m_lBalance = 0;
    m_pLeft = pLeft;
    m_pRight = pRight;
    m_pfnCompare = pfnCompare;
}

CAvlBinaryTreeNode *CAvlBinaryTreeNode::GetLeftNode()
{
    return m_pLeft;
}

CAvlBinaryTreeNode *CAvlBinaryTreeNode::GetRightNode()
{
    return m_pRight;
}

void CAvlBinaryTreeNode::SetLeftNode(CAvlBinaryTreeNode *pNode)
{
    m_pLeft = pNode;
}

void CAvlBinaryTreeNode::SetRightNode(CAvlBinaryTreeNode *pNode)
{
    m_pRight = pNode;
}

void *CAvlBinaryTreeNode::GetValue()
{
    return m_pValue;
}

void CAvlBinaryTreeNode::SetValue(void *pValue)
{
    m_pValue = pValue;
}

CAvlBinaryTreeNode *CAvlBinaryTreeNode::Add(void *pItem)
{
    const bool bLeft = m_pfnCompare(pItem, m_pValue) < 0;
    CAvlBinaryTreeNode *&pChild = bLeft ? m_pLeft : m_pRight;
    if (pChild)
    {
        const xlong lOldBalance = pChild->m_lBalance;
        CAvlBinaryTreeNode *const pNew = pChild->Add(pItem);
        if (!pNew)
            return nullptr;
        pChild = pNew;
        if (pNew->m_lBalance == lOldBalance || !pNew->m_lBalance)
            return this;
    }
    else
    {
        pChild = AllocNode();
        if (!pChild)
        {
            xErrorTxt("CAvlBinaryTreeNode::Add: Out of memory.");
            return nullptr;
        }
        pChild->Init(m_pfnCompare, pItem);
    }
    m_lBalance += bLeft ? -1 : 1;
    return m_lBalance >= -1 && m_lBalance <= 1 ? this : Balance();
}

CAvlBinaryTreeNode *CAvlBinaryTreeNode::Remove(void *pItem, CAvlBinaryTreeNode *&pRemoved)
{
    const xlong lOrder = m_pfnCompare(pItem, m_pValue);
    if (!lOrder)
    {
        pRemoved = this;
        if (!m_pRight)
            return m_pLeft;
        const xlong lOldBalance = m_pRight->m_lBalance;
        CAvlBinaryTreeNode *pNext = nullptr;
        CAvlBinaryTreeNode *const pRight = m_pRight->RemoveLeftmostDescendent(pNext);
        pNext->m_pLeft = m_pLeft;
        pNext->m_pRight = pRight;
        pNext->m_lBalance = m_lBalance;
        return pNext->RestoreRightBalance(lOldBalance);
    }
    CAvlBinaryTreeNode *&pChild = lOrder > 0 ? m_pRight : m_pLeft;
    if (!pChild)
        return this;
    const xlong lOldBalance = pChild->m_lBalance;
    pChild = pChild->Remove(pItem, pRemoved);
    return lOrder > 0 ? RestoreRightBalance(lOldBalance) : RestoreLeftBalance(lOldBalance);
}

CAvlBinaryTreeNode *CAvlBinaryTreeNode::Duplicate()
{
    CAvlBinaryTreeNode *const pLeft = m_pLeft ? m_pLeft->Duplicate() : nullptr;
    CAvlBinaryTreeNode *const pRight = m_pRight && (pLeft || !m_pLeft) ? m_pRight->Duplicate() : nullptr;
    CAvlBinaryTreeNode *pCopy = nullptr;
    if (!pLeft == !m_pLeft && !pRight == !m_pRight)
    {
        pCopy = AllocNode();
        if (!pCopy)
            xErrorTxt("CAvlBinaryTreeNode::Duplicate: Out of memory.");
    }
    if (!pCopy)
    {
        FreeSubtree(pLeft);
        FreeSubtree(pRight);
        return nullptr;
    }
    pCopy->Init(m_pfnCompare, m_pValue, pLeft, pRight);
    pCopy->m_lBalance = m_lBalance;
    return pCopy;
}

void CAvlBinaryTreeNode::DeleteTree()
{
    FreeSubtree(m_pLeft);
    m_pLeft = nullptr;
    FreeSubtree(m_pRight);
    m_pRight = nullptr;
}

CAvlBinaryTreeNode *CAvlBinaryTreeNode::SingleRotateLeft()
{
    CAvlBinaryTreeNode *const pRoot = m_pRight;
    m_pRight = pRoot->m_pLeft;
    pRoot->m_pLeft = this;
    const xlong b = m_lBalance, c = pRoot->m_lBalance;
    if (c > 0)
    {
        pRoot->m_lBalance = b > c ? c - 1 : b - 2;
        m_lBalance = b - c - 1;
    }
    else
    {
        m_lBalance = b - 1;
        pRoot->m_lBalance = b < 1 ? c + b - 2 : c - 1;
    }
    return pRoot;
}

CAvlBinaryTreeNode *CAvlBinaryTreeNode::SingleRotateRight()
{
    CAvlBinaryTreeNode *const pRoot = m_pLeft;
    m_pLeft = pRoot->m_pRight;
    pRoot->m_pRight = this;
    const xlong b = m_lBalance, c = pRoot->m_lBalance;
    if (c > 0)
    {
        m_lBalance = b + 1;
        pRoot->m_lBalance = b > -1 ? c + b + 2 : c + 1;
    }
    else
    {
        pRoot->m_lBalance = c > b ? c + 1 : b + 2;
        m_lBalance = b - c + 1;
    }
    return pRoot;
}

CAvlBinaryTreeNode *CAvlBinaryTreeNode::RestoreLeftBalance(xlong lOldBalance)
{
    if (!m_pLeft || (m_pLeft->m_lBalance != lOldBalance && !m_pLeft->m_lBalance))
        ++m_lBalance;
    return m_lBalance >= 2 ? Balance() : this;
}

CAvlBinaryTreeNode *CAvlBinaryTreeNode::RestoreRightBalance(xlong lOldBalance)
{
    if (!m_pRight || (m_pRight->m_lBalance != lOldBalance && !m_pRight->m_lBalance))
        --m_lBalance;
    return m_lBalance <= -2 ? Balance() : this;
}

CAvlBinaryTreeNode *CAvlBinaryTreeNode::Balance()
{
    if (m_lBalance >= 0)
    {
        if (m_pRight->m_lBalance < 0)
            m_pRight = m_pRight->SingleRotateRight();
        return SingleRotateLeft();
    }
    if (m_pLeft->m_lBalance > 0)
        m_pLeft = m_pLeft->SingleRotateLeft();
    return SingleRotateRight();
}

CAvlBinaryTreeNode *CAvlBinaryTreeNode::RemoveLeftmostDescendent(CAvlBinaryTreeNode *&pOut)
{
    if (!m_pLeft)
    {
        pOut = this;
        return m_pRight;
    }
    const xlong lOldBalance = m_pLeft->m_lBalance;
    m_pLeft = m_pLeft->RemoveLeftmostDescendent(pOut);
    return RestoreLeftBalance(lOldBalance);
}

CAvlBinaryTree::CAvlBinaryTree(TAvlCompare pfnCompare)
    : m_pRoot(nullptr), m_pTraversal(nullptr), m_pfnCompare(pfnCompare)
{
}

CAvlBinaryTree::~CAvlBinaryTree()
{
    m_pfnCompare = nullptr;
    FullTraversal_Exit();
}

xlong CAvlBinaryTree::AddItem(void *pItem)
{
    if (!m_pRoot)
    {
        m_pRoot = AllocNode();
        if (!m_pRoot)
            return xErrorTxt("CAvlBinaryTree::AddItem: Out of memory.");
        m_pRoot->Init(m_pfnCompare, pItem);
        return 1;
    }
    CAvlBinaryTreeNode *const pRoot = m_pRoot->Add(pItem);
    if (!pRoot)
        return xErrorTxt("CAvlBinaryTree::AddItem: Unable to add item.");
    m_pRoot = pRoot;
    return 1;
}

xlong CAvlBinaryTree::Remove(void *pItem)
{
    if (!m_pRoot)
        return 0;
    CAvlBinaryTreeNode *pRemoved = nullptr;
    m_pRoot = m_pRoot->Remove(pItem, pRemoved);
    if (!pRemoved)
        return 0;
    FreeNode(pRemoved);
    return 1;
}

xlong CAvlBinaryTree::Includes(void *pItem)
{
    return FindNode(m_pRoot, pItem, m_pfnCompare) != nullptr;
}

xlong CAvlBinaryTree::Find(void *pKey, void *&pItem)
{
    CAvlBinaryTreeNode *const pNode = FindNode(m_pRoot, pKey, m_pfnCompare);
    if (!pNode)
        return 0;
    pItem = pNode->m_pValue;
    return 1;
}

xlong CAvlBinaryTree::IsEmpty()
{
    return !m_pRoot;
}

CAvlBinaryTreeNode *CAvlBinaryTree::GetRoot()
{
    return m_pRoot;
}

void CAvlBinaryTree::DeleteTree()
{
    FreeSubtree(m_pRoot);
    m_pRoot = nullptr;
    // Both walks stood on nodes that are gone.
    m_pTraversal = nullptr;
    FullTraversal_Exit();
}

void CAvlBinaryTree::Duplicate(CAvlBinaryTree *pFrom)
{
    if (pFrom == this)
        return;
    DeleteTree();
    if (pFrom->m_pRoot)
        m_pRoot = pFrom->m_pRoot->Duplicate();
}

void CAvlBinaryTree::FullTraversal_Init()
{
    FullTraversal_Exit();
    SlideLeft(m_pRoot);
}

xlong CAvlBinaryTree::FullTraversal_Exists()
{
    return !m_Stack.IsEmpty();
}

void *CAvlBinaryTree::FullTraversal_Get()
{
    CAvlBinaryTreeNode *const pNode = (CAvlBinaryTreeNode *)m_Stack.Top();
    return pNode ? pNode->m_pValue : nullptr;
}

void CAvlBinaryTree::FullTraversal_Next()
{
    CAvlBinaryTreeNode *const pNode = (CAvlBinaryTreeNode *)m_Stack.Pop();
    if (pNode)
        SlideLeft(pNode->m_pRight);
}

void CAvlBinaryTree::FullTraversal_Exit()
{
    while (!m_Stack.IsEmpty())
        m_Stack.Pop();
}

void CAvlBinaryTree::Traversal_Init()
{
    m_pTraversal = m_pRoot;
}

void *CAvlBinaryTree::Traversal_Get()
{
    return m_pTraversal ? m_pTraversal->m_pValue : nullptr;
}

xlong CAvlBinaryTree::Traversal_Exists()
{
    return m_pTraversal != nullptr;
}

xlong CAvlBinaryTree::Traversal_GoLeft()
{
    if (!m_pTraversal)
        return xErrorTxt("CAvlBinaryTree::Traversal_GoLeft: Unable to go left, the traversal node is NULL.");
    m_pTraversal = m_pTraversal->m_pLeft;
    return 1;
}

xlong CAvlBinaryTree::Traversal_GoRight()
{
    if (!m_pTraversal)
        return xErrorTxt("CAvlBinaryTree::Traversal_GoRight: Unable to go right, the traversal node is NULL.");
    m_pTraversal = m_pTraversal->m_pRight;
    return 1;
}

xlong CAvlBinaryTree::Traversal_AbleToGoLeft()
{
    if (!m_pTraversal)
        return xErrorTxt(
            "CAvlBinaryTree::Traversal_AbleToGoLeft: Unable to go find current node, the traversal node is NULL.");
    return m_pTraversal->m_pLeft != nullptr;
}

xlong CAvlBinaryTree::Traversal_AbleToGoRight()
{
    if (!m_pTraversal)
        return xErrorTxt(
            "CAvlBinaryTree::Traversal_AbleToGoRight: Unable to go find current node, the traversal node is NULL.");
    return m_pTraversal->m_pRight != nullptr;
}

CAvlBinaryTreeNode *CAvlBinaryTree::RemoveTop(CAvlBinaryTreeNode *pNode)
{
    if (!pNode->m_pRight)
        return pNode->m_pLeft;
    if (!pNode->m_pLeft)
        return pNode->m_pRight;
    CAvlBinaryTreeNode *pParent = pNode;
    CAvlBinaryTreeNode *pNext = pNode->m_pRight;
    for (; pNext->m_pLeft; pNext = pNext->m_pLeft)
        pParent = pNext;
    if (pParent != pNode)
    {
        pParent->m_pLeft = pNext->m_pRight;
        pNext->m_pRight = pNode->m_pRight;
    }
    pNext->m_pLeft = pNode->m_pLeft;
    return pNext;
}

void CAvlBinaryTree::SlideLeft(CAvlBinaryTreeNode *pNode)
{
    for (; pNode; pNode = pNode->m_pLeft)
        m_Stack.Push(pNode);
}
