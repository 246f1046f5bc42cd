#pragma once

#include "tarvix/llist.h"
#include "tarvix/memory.h"
#include "tarvix/types.h"

/// Orders two items. @return negative if pA sorts before pB, 0 if they are equal, positive otherwise
typedef xlong (*TAvlCompare)(void *pA, void *pB);

/// One node; the work on a subtree is done from its root. Nodes come from a
/// pool of the globals, so no tree is used before these exist. The operations
/// that change a subtree return its new root.
class TARVIX_API CAvlBinaryTreeNode
{
    friend class CAvlBinaryTree;

public:
    CAvlBinaryTreeNode();
    CAvlBinaryTreeNode(const CAvlBinaryTreeNode &) = default;
    CAvlBinaryTreeNode &operator=(const CAvlBinaryTreeNode &) = default;
    ~CAvlBinaryTreeNode();

    /// All members to 0.
    void Constructor();
    /// All members but the value to 0.
    void Destructor();
    void Init(TAvlCompare pfnCompare, void *pValue);
    /// The balance is 0: the children should be of one height.
    void Init(TAvlCompare pfnCompare, void *pValue, CAvlBinaryTreeNode *pLeft, CAvlBinaryTreeNode *pRight);

    CAvlBinaryTreeNode *GetLeftNode();
    CAvlBinaryTreeNode *GetRightNode();
    void SetLeftNode(CAvlBinaryTreeNode *pNode);
    void SetRightNode(CAvlBinaryTreeNode *pNode);
    void *GetValue();
    void SetValue(void *pValue);

    /// Adds an item; one that equals another goes to its right.
    /// @return null with a text when there is no memory; the subtree is as before
    CAvlBinaryTreeNode *Add(void *pItem);
    /// Takes a node that equals pItem out of the subtree.
    /// @param pRemoved  receives the node, for the caller to free; untouched if there is none
    CAvlBinaryTreeNode *Remove(void *pItem, CAvlBinaryTreeNode *&pRemoved);
    /// Copies the subtree; the items are shared.
    /// @return null with a text when there is no memory
    CAvlBinaryTreeNode *Duplicate();
    /// Frees both subtrees; the node itself is its owner's.
    void DeleteTree();

    void *m_pValue;   ///< not owned
    xlong m_lBalance; ///< height of the right subtree minus that of the left
    CAvlBinaryTreeNode *m_pLeft;
    CAvlBinaryTreeNode *m_pRight;
    TAvlCompare m_pfnCompare;

private:
    CAvlBinaryTreeNode *SingleRotateLeft();
    CAvlBinaryTreeNode *SingleRotateRight();
    /// After the left child shrank. @param lOldBalance  of that child, before
    CAvlBinaryTreeNode *RestoreLeftBalance(xlong lOldBalance);
    CAvlBinaryTreeNode *RestoreRightBalance(xlong lOldBalance);
    CAvlBinaryTreeNode *Balance();
    CAvlBinaryTreeNode *RemoveLeftmostDescendent(CAvlBinaryTreeNode *&pOut);
};

/// Balanced search tree of pointers. It owns its nodes, which only DeleteTree
/// frees, and not the items. Equal items may be kept side by side. Results are
/// 1 or 0.
class TARVIX_API CAvlBinaryTree
{
public:
    explicit CAvlBinaryTree(TAvlCompare pfnCompare);
    CAvlBinaryTree(const CAvlBinaryTree &) = default;
    CAvlBinaryTree &operator=(const CAvlBinaryTree &) = default;
    /// Frees no nodes: DeleteTree comes first.
    ~CAvlBinaryTree();

    /// @return 0 with a text when there is no memory; the tree is as before
    xlong AddItem(void *pItem);
    /// Removes one item that equals pItem. @return 0 if there is none
    xlong Remove(void *pItem);
    xlong Includes(void *pItem);
    /// @param pItem  receives the stored item that equals pKey
    xlong Find(void *pKey, void *&pItem);
    xlong IsEmpty();
    CAvlBinaryTreeNode *GetRoot();
    void DeleteTree();
    /// Becomes a copy of pFrom that shares its items; empty, with a text, when there is no memory.
    void Duplicate(CAvlBinaryTree *pFrom);

    // All items in ascending order: Init, then while Exists: Get, Next; Exit.
    // The tree must not change meanwhile.
    void FullTraversal_Init();
    xlong FullTraversal_Exists();
    void *FullTraversal_Get();
    void FullTraversal_Next();
    void FullTraversal_Exit();

    // A walk from the root that the caller steers.
    void Traversal_Init();
    /// @return null if there is no position
    void *Traversal_Get();
    xlong Traversal_Exists();
    /// Steps down, also where there is no child. @return 0 with a text if there is no position
    xlong Traversal_GoLeft();
    xlong Traversal_GoRight();
    /// @return 1 if that child exists; 0 with a text if there is no position
    xlong Traversal_AbleToGoLeft();
    xlong Traversal_AbleToGoRight();

    CAvlBinaryTreeNode *m_pRoot;
    CAvlBinaryTreeNode *m_pTraversal; ///< position of the steered walk
    TAvlCompare m_pfnCompare;
    CStack m_Stack; ///< of CAvlBinaryTreeNode: state of the full walk

private:
    /// Takes pNode out. @return what takes its place, without rebalancing
    CAvlBinaryTreeNode *RemoveTop(CAvlBinaryTreeNode *pNode);
    void SlideLeft(CAvlBinaryTreeNode *pNode);
};
