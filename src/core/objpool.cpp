#include "tarvix/objpool.h"

#include "tarvix/globals.h"
#include "tarvix/llist.h"

#include <string.h>

namespace
{
// Watches a pool while one of its callbacks runs, which may delete it.
class CPoolAlive
{
public:
    explicit CPoolAlive(const CObjPool &pool) : m_pPool(&pool), m_pOuter(s_pInnermost) { s_pInnermost = this; }
    ~CPoolAlive() { s_pInnermost = m_pOuter; }
    CPoolAlive(const CPoolAlive &) = delete;
    CPoolAlive &operator=(const CPoolAlive &) = delete;

    explicit operator bool() const { return m_pPool != nullptr; }

    static void OnDeath(const CObjPool &pool)
    {
        for (CPoolAlive *p = s_pInnermost; p; p = p->m_pOuter)
            if (p->m_pPool == &pool)
                p->m_pPool = nullptr;
    }

private:
    const CObjPool *m_pPool;
    CPoolAlive *m_pOuter;

    static CPoolAlive *s_pInnermost;
};

CPoolAlive *CPoolAlive::s_pInnermost = nullptr;
} // namespace

CObjPool::CObjPool()
    : m_pfnAlloc(nullptr), m_pfnFree(nullptr), m_pfnCreate(nullptr), m_pfnDestroy(nullptr), m_ulMinObjects(0),
      m_ulShrinkTime(-1), m_ulLastShrink(xGetTime()), m_ulCount(0), m_ulSlots(0), m_ulWrite(0), m_ulRead(0),
      m_ppRing(nullptr)
{
}

CObjPool::~CObjPool()
{
    CPoolAlive::OnDeath(*this);
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
    void (*const pfnCreate)(void *) = m_pfnCreate;
    void *pObject = Alloc_FromPool();
    if (pObject)
        --m_ulCount;
    else
        pObject = Alloc_FromSystem();
    if (pObject)
        pfnCreate(pObject);
    return pObject;
}

void CObjPool::Free(void *pObject)
{
    const CPoolAlive alive(*this);
    void (*const pfnFree)(void *) = m_pfnFree;
    m_pfnDestroy(pObject);
    if (!alive)
        return pfnFree(pObject);
    if (Free_ToPool(pObject))
        ++m_ulCount;
    else
        Free_ToSystem(pObject);
}

xlong CObjPool::Handler()
{
    const CPoolAlive alive(*this);
    if (m_ulMinObjects && m_ulCount < m_ulMinObjects)
        Handler_AddNewToPool();
    if (!alive)
        return 1;
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
    const CPoolAlive alive(*this);
    void (*const pfnFree)(void *) = m_pfnFree;
    void *pObject = Alloc_FromSystem();
    if (!pObject)
        return 0;
    if (!alive)
    {
        pfnFree(pObject);
        return 0;
    }
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
