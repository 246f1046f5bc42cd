#pragma once

#include "tarvix/memory.h"
#include "tarvix/types.h"

/// Keeps a ring of ready objects of one kind. The ring holds one object less
/// than it has slots.
class TARVIX_API CObjPool
{
public:
    CObjPool();
    CObjPool(const CObjPool &) = default;
    CObjPool &operator=(const CObjPool &) = default;
    /// Frees the ring, not the objects in it.
    ~CObjPool();

    /// @param ulMinObjects  lowest number to hold; 0 means no refill
    /// @param lShrinkTime   milliseconds between releases of surplus objects;
    ///                      -1 means never, and that the pump passes the pool by
    /// @param ulSlots       size of the ring
    /// @param pfnAlloc      makes an object, null when it can't
    /// @param pfnCreate     called on each object when it is handed out
    /// @param pfnDestroy    called on each object when it comes back
    /// @return 1; 0 when the ring or an object of the minimum can't be had
    xlong Init(xulong ulMinObjects, xlong lShrinkTime, xulong ulSlots, void *(*pfnAlloc)(), void (*pfnFree)(void *),
               void (*pfnCreate)(void *), void (*pfnDestroy)(void *));
    /// @return null when the ring is empty and no object can be made
    void *Alloc();
    void Free(void *pObject);
    /// One step of refilling and shrinking, made by the pump each frame.
    /// @return 1
    xlong Handler();

    void *Alloc_FromPool();
    void *Alloc_FromSystem();
    xlong Free_ToPool(void *pObject);
    void Free_ToSystem(void *pObject);
    /// @return 0 if the object can't be made or the ring is full
    xlong Handler_AddNewToPool();
    void Handler_DeleteOneFromPool();
    /// @return 0 if the ring is full
    xlong Enqueue(void *pObject);
    /// @return null if the ring is empty
    void *Dequeue();

    void *(*m_pfnAlloc)();
    void (*m_pfnFree)(void *);
    void (*m_pfnCreate)(void *);
    void (*m_pfnDestroy)(void *);
    xulong m_ulMinObjects;
    xlong m_ulShrinkTime; ///< milliseconds, or -1
    xulong m_ulLastShrink;
    xulong m_ulCount; ///< follows Alloc and Free only
    xulong m_ulSlots;
    xulong m_ulWrite;
    xulong m_ulRead;
    void **m_ppRing;
};
