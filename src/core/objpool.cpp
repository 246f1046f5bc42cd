#include "tarvix/objpool.h"

#include "tarvix/globals.h"
#include "tarvix/llist.h"

#include <string.h>

CObjPool::CObjPool()
    : m_pfnAlloc(nullptr), m_pfnFree(nullptr), m_pfnCreate(nullptr), m_pfnDestroy(nullptr), m_ulMinObjects(0),
      m_ulShrinkTime(-1), m_ulLastShrink(xGetTime()), m_ulCount(0), m_ulSlots(0), m_ulWrite(0), m_ulRead(0),
      m_ppRing(nullptr)
{
}

CObjPool::~CObjPool()
{
    xSysFreeMem(m_ppRing);
    if (m_ulShrinkTime != -1 && glb && glb->m_pObjPoolList)
        glb->m_pObjPoolList->DeleteItem(this);
}

xlong CObjPool::Init(xulong ulMinObjects, xlong lShrinkTime, xulong ulSlots, void *(*pfnAlloc)(),
                     void (*pfnFree)(void *), void (*pfnCreate)(void *), void (*pfnDestroy)(void *))
{
    m_pfnAlloc = pfnAlloc;
    m_pfnFree = pfnFree;
    m_pfnCreate = pfnCreate;
    m_pfnDestroy = pfnDestroy;
    m_ulMinObjects = ulMinObjects;
    m_ulShrinkTime = lShrinkTime;
    m_ulSlots = ulSlots;
    m_ulLastShrink = xGetTime();
    m_ulCount = 0;
    m_ulWrite = 0;
    m_ulRead = 0;
    xSysFreeMem(m_ppRing);
    m_ppRing = nullptr;
    if (ulSlots > 0x7fffffff / sizeof(void *))
        return 0;
    m_ppRing = (void **)xSysAllocMem((xlong)(ulSlots * sizeof(void *)));
    if (!m_ppRing)
        return 0;
    memset(m_ppRing, 0, ulSlots * sizeof(void *));
    // The count doesn't follow, so a minimum fills the ring until it is full.
    while (m_ulCount < m_ulMinObjects)
        if (!Handler_AddNewToPool())
            return 0;
    if (m_ulShrinkTime == -1)
        return 1;
    if (!glb)
        return 0;
    if (!glb->m_pObjPoolList)
        glb->m_pObjPoolList = XNEW(CLList);
    return glb->m_pObjPoolList && glb->m_pObjPoolList->IfNotInsertLast(this);
}

void *CObjPool::Alloc()
{
    void *pObject = Alloc_FromPool();
    if (pObject)
        --m_ulCount;
    else
        pObject = Alloc_FromSystem();
    if (pObject)
        m_pfnCreate(pObject);
    return pObject;
}

void CObjPool::Free(void *pObject)
{
    m_pfnDestroy(pObject);
    if (Free_ToPool(pObject))
        ++m_ulCount;
    else
        Free_ToSystem(pObject);
}

xlong CObjPool::Handler()
{
    if (m_ulMinObjects && m_ulCount < m_ulMinObjects)
        Handler_AddNewToPool();
    if (m_ulShrinkTime == -1 || m_ulCount <= m_ulMinObjects)
        return 1;
    const xulong ulNow = xGetTime();
    if (xTimeDiff(m_ulLastShrink, ulNow) <= (xulong)m_ulShrinkTime)
        return 1;
    m_ulLastShrink = ulNow;
    Handler_DeleteOneFromPool();
    return 1;
}

void *CObjPool::Alloc_FromPool()
{
    return Dequeue();
}

void *CObjPool::Alloc_FromSystem()
{
    return m_pfnAlloc();
}

xlong CObjPool::Free_ToPool(void *pObject)
{
    return Enqueue(pObject);
}

void CObjPool::Free_ToSystem(void *pObject)
{
    m_pfnFree(pObject);
}

xlong CObjPool::Handler_AddNewToPool()
{
    void *pObject = Alloc_FromSystem();
    if (!pObject)
        return 0;
    if (Free_ToPool(pObject))
        return 1;
    Free_ToSystem(pObject);
    return 0;
}

void CObjPool::Handler_DeleteOneFromPool()
{
    if (void *pObject = Alloc_FromPool())
        Free_ToSystem(pObject);
}

xlong CObjPool::Enqueue(void *pObject)
{
    if (!m_ulSlots)
        return 0;
    xulong ulNext = m_ulWrite + 1;
    if (ulNext == m_ulSlots)
        ulNext = 0;
    if (ulNext == m_ulRead)
        return 0;
    m_ppRing[m_ulWrite] = pObject;
    m_ulWrite = ulNext;
    return 1;
}

void *CObjPool::Dequeue()
{
    if (m_ulRead == m_ulWrite)
        return nullptr;
    void *pObject = m_ppRing[m_ulRead];
    if (++m_ulRead == m_ulSlots)
        m_ulRead = 0;
    return pObject;
}
