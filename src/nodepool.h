#pragma once

class CObjPool;

/// Nodes of lists and trees never come from the tracking allocator, which
/// keeps its records in lists itself: they come from pools on the system layer.

/// The pool at pPool, made on first use. @return null when there is no memory
CObjPool *GetNodePool(CObjPool *&pPool, void *(*pfnAlloc)(), void (*pfnCreate)(void *), void (*pfnDestroy)(void *));

/// Gives back a pool with its nodes once the library's containers are gone. A
/// container that a host still holds makes a new pool.
void FreeNodePool(CObjPool *&pPool);
