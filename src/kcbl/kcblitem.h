// What the files of CKCBL share.
#pragma once

#include "tarvix/kcbl.h"

#include <stdint.h>
#include <string.h>

/// Blanks that the writer puts before a line at most: a tree of a hundred
/// thousand chunks in each other stays a file that can be written.
const xlong s_lKCBLMaxIndent = 400;

/// Where an item's list node lies: an item and its node are one block.
inline CNode *KCBLNodeOf(const TKCBLKeyword *pItem)
{
    const uintptr_t nEnd = (uintptr_t)pItem->pszKeyword + (size_t)pItem->lSize + 3;
    return (CNode *)((nEnd + alignof(CNode) - 1) & ~(uintptr_t)(alignof(CNode) - 1));
}

/// A block for an item with its node, whose fields and pointers are set up for
/// a body that the caller fills. Three bytes are spare behind the body.
/// @return null when memory is exhausted; nothing is reported
inline TKCBLKeyword *KCBLNewItem(xlong lSize, xlong lNumStrings)
{
    const size_t ulHead = sizeof(TKCBLKeyword) + (size_t)lNumStrings * sizeof(char *);
    const size_t ulSize = ulHead + (size_t)lSize + 3 + alignof(CNode) - 1 + sizeof(CNode);
    TKCBLKeyword *pItem = (TKCBLKeyword *)XNEW(char[ulSize]);
    if (!pItem)
        return nullptr;
    pItem->pszKeyword = (char *)pItem + ulHead;
    pItem->ppszStrings = (char **)(pItem + 1);
    pItem->lNumStrings = lNumStrings;
    pItem->lSize = lSize;
    pItem->pChunk = nullptr;
    KCBLNodeOf(pItem)->pData = pItem;
    return pItem;
}

/// For walks over a large tree: items made in a row lie in a row, so what comes
/// some items later is fetched from memory now.
inline void KCBLFetchAhead(const TKCBLKeyword *pItem)
{
    for (int n = 1024; n < 1024 + 4 * 64; n += 64)
        __builtin_prefetch((const char *)((uintptr_t)pItem + (uintptr_t)n));
}

/// Frees one item; null is ignored.
inline void KCBLDeleteItem(TKCBLKeyword *pItem)
{
    XDELETE_ARRAY((char *)pItem);
}

inline bool KCBLIsChunk(const TKCBLKeyword *pItem)
{
    return pItem->pszKeyword[0] == '{' && !pItem->pszKeyword[1];
}

/// Gives a "{" item its chunk with the first item in it, and leaves others as
/// they are.
/// @return false when memory is exhausted; nothing is left behind then
bool KCBLAttachChunk(TKCBLKeyword *pItem, TKCBLChunk *pParent);
/// Takes the current item out of its list, whose cursor goes to the item before.
/// @return null without a current item and for the first of the list, which stays
TKCBLKeyword *KCBLDetach(TKCBLChunk *pList);
/// Frees an item with all below it.
void KCBLDeleteTree(TKCBLKeyword *pItem);

/// Makes a block of ulNeeded bytes or more of a smaller one, whose first
/// ulKeep bytes stay. @return false when memory is exhausted; the old block stays
bool KCBLGrow(char *&pBuf, xlong &lSize, int64_t llNeeded, size_t ulKeep, int64_t llNewSize);
