#include "core/nodepool.h"

#include "tarvix/objpool.h"

namespace
{
const xulong s_ulPoolSlots = 256;

void DeletePool(CObjPool *pPool)
{
    pPool->~CObjPool();
    xSysFreeMem(pPool);
}

CObjPool *MakePool(void *(*pfnAlloc)(), void (*pfnCreate)(void *), void (*pfnDestroy)(void *))
{
    void *pPlace = xSysAllocMem(sizeof(CObjPool));
    if (!pPlace)
        return nullptr;
    CObjPool *pPool = new (pPlace) CObjPool;
    if (pPool->Init(0, -1, s_ulPoolSlots, pfnAlloc, xSysFreeMem, pfnCreate, pfnDestroy))
        return pPool;
    DeletePool(pPool);
    return nullptr;
}
} // namespace

CObjPool *GetNodePool(CObjPool *&pPool, void *(*pfnAlloc)(), void (*pfnCreate)(void *), void (*pfnDestroy)(void *))
{
    if (!pPool)
        pPool = MakePool(pfnAlloc, pfnCreate, pfnDestroy);
    return pPool;
}

void FreeNodePool(CObjPool *&pPool)
{
    CObjPool *const pOld = pPool;
    if (!pOld)
        return;
    pPool = nullptr;
    while (void *pNode = pOld->Dequeue())
        xSysFreeMem(pNode);
    DeletePool(pOld);
}
