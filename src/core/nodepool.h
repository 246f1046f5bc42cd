#pragma once

#include "tarvix/objpool.h"

/// Nodes of lists and trees never come from the tracking allocator, which
/// keeps its records in lists itself: they come from pools on the system layer.

/// The pool at pPool, made on first use. @return null when there is no memory
CObjPool *GetNodePool(CObjPool *&pPool, void *(*pfnAlloc)(), void (*pfnCreate)(void *), void (*pfnDestroy)(void *));

/// Gives back a pool with its nodes once the library's containers are gone. A
/// container that a host still holds makes a new pool.
void FreeNodePool(CObjPool *&pPool);

/// CObjPool::Alloc and Free in line, for nodes that the caller sets up and that
/// need no call on their way back.
/// @return null when the ring is empty
inline void *TakePooledNode(CObjPool *pPool)
{
    if (pPool->m_ulRead == pPool->m_ulWrite)
        return nullptr;
    void *const pNode = pPool->m_ppRing[pPool->m_ulRead];
    if (++pPool->m_ulRead == pPool->m_ulSlots)
        pPool->m_ulRead = 0;
    --pPool->m_ulCount;
    return pNode;
}

/// @return false when the ring is full
inline bool GivePooledNode(CObjPool *pPool, void *pNode)
{
    const xulong ulNext = pPool->m_ulWrite + 1 == pPool->m_ulSlots ? 0 : pPool->m_ulWrite + 1;
    if (ulNext == pPool->m_ulRead)
        return false;
    pPool->m_ppRing[pPool->m_ulWrite] = pNode;
    pPool->m_ulWrite = ulNext;
    ++pPool->m_ulCount;
    return true;
}
