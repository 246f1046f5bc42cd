#include "tarvix/timer.h"

#include "core/invariant.h"
#include "core/walk.h"
#include "tarvix/globals.h"
#include "tarvix/llist.h"
#include "tarvix/memory.h"

// Invariants
// 1. A timer enters by the pending list. The active list takes it over only
//    before and after the walk of an update, so handlers may add and remove.
// 2. A pair of object and interval stands in both lists together at most once;
//    marked entries, whose object is null, don't count.
// 3. An entry whose object's handler runs stays until the handler is back: a
//    handler may run frames of its own, whose updates sweep too.
// The walk is on the list's own cursor, which handlers move when they add or
// remove: that ends a pass early, and the order of calls is part of it.

namespace
{
struct TRunning
{
    const TTimerEntry *pEntry;
    const TRunning *pOuter;
};

const TRunning *s_pRunning = nullptr;

bool IsRunning(const TTimerEntry *pEntry)
{
    for (const TRunning *p = s_pRunning; p; p = p->pOuter)
        if (p->pEntry == pEntry)
            return true;
    return false;
}

// Invariant 2.
bool IsSingle(const CTimer *pTimer, xulong ulInterval)
{
    xlong lFound = 0;
    for (const TTimerEntry *pEntry : Each<TTimerEntry>(*glb->m_pActiveTimers))
        lFound += pEntry->pTimer == pTimer && pEntry->ulInterval == ulInterval;
    for (const TTimerPending *pRecord : Each<TTimerPending>(*glb->m_pPendingTimers))
        lFound += pRecord->pTimer == pTimer && pRecord->ulInterval == ulInterval;
    return lFound <= 1;
}

template <class TRecord>
TRecord *FindPair(CLList *pList, CTimer *pTimer, xulong ulInterval)
{
    for (pList->First(); pList->Exists(); pList->Next())
    {
        TRecord *pRecord = (TRecord *)pList->Get();
        if (pRecord->pTimer == pTimer && pRecord->ulInterval == ulInterval)
            return pRecord;
    }
    return nullptr;
}

// Deletes the pending records of the timer, all of them or those of one interval.
void DropPending(CTimer *pTimer, bool bAll, xulong ulInterval)
{
    CLList *pList = glb->m_pPendingTimers;
    pList->First();
    while (pList->Exists())
    {
        TTimerPending *pRecord = (TTimerPending *)pList->Get();
        if (pRecord->pTimer == pTimer && (bAll || pRecord->ulInterval == ulInterval))
        {
            XDELETE(pRecord);
            pList->Delete();
            pList->First();
        }
        else
            pList->Next();
    }
}

xulong CountTicks(TTimerEntry *pEntry)
{
    pEntry->ulNowTime = xGetTime();
    if (!pEntry->ulLastTime)
    {
        pEntry->ulLastTime = pEntry->ulNowTime;
        pEntry->fRemainder = 0;
    }
    const double dTotal = (double)(pEntry->ulNowTime - pEntry->ulLastTime) + pEntry->fRemainder;
    pEntry->ulLastTime = pEntry->ulNowTime;
    if (!pEntry->ulInterval)
        return 0;
    const xulong ulTicks = (xulong)(dTotal / pEntry->ulInterval);
    pEntry->fRemainder = (float)(dTotal - (double)ulTicks * pEntry->ulInterval);
    return ulTicks;
}
} // namespace

void CTimer::TimerHandler(xulong ulInterval) {}

CTimer::~CTimer()
{
    xRemoveTimerAll(this);
}

xlong CTimer::AddTimer(xulong ulInterval)
{
    return xAddTimer(this, ulInterval);
}

void CTimer::RemoveTimer(xulong ulInterval)
{
    xRemoveTimer(this, ulInterval);
}

void CTimer::RemoveAllTimers()
{
    xRemoveTimerAll(this);
}

xlong xAddTimer(CTimer *pTimer, xulong ulInterval)
{
    ValidateTimerList();
    if (!glb || !glb->m_pActiveTimers || !glb->m_pPendingTimers)
        return 0;
    if (FindPair<TTimerPending>(glb->m_pPendingTimers, pTimer, ulInterval) ||
        FindPair<TTimerEntry>(glb->m_pActiveTimers, pTimer, ulInterval))
        return 1;
    TTimerPending *pRecord = XNEW(TTimerPending());
    if (!pRecord)
        return 0;
    pRecord->pTimer = pTimer;
    pRecord->ulInterval = ulInterval;
    const xlong lResult = glb->m_pPendingTimers->InsertLast(pRecord);
    if (!lResult)
        XDELETE(pRecord);
    TARVIX_INVARIANT(IsSingle(pTimer, ulInterval));
    return lResult;
}

void xRemoveTimer(CTimer *pTimer, xulong ulInterval)
{
    if (!glb)
        return;
    if (glb->m_pActiveTimers)
        if (TTimerEntry *pEntry = FindPair<TTimerEntry>(glb->m_pActiveTimers, pTimer, ulInterval))
            pEntry->pTimer = nullptr;
    if (glb->m_pPendingTimers)
        DropPending(pTimer, false, ulInterval);
}

void xRemoveTimerAll(CTimer *pTimer)
{
    if (!glb || !glb->m_pActiveTimers)
        return;
    CLList *pList = glb->m_pActiveTimers;
    for (pList->First(); pList->Exists(); pList->Next())
    {
        TTimerEntry *pEntry = (TTimerEntry *)pList->Get();
        if (pEntry->pTimer == pTimer)
            pEntry->pTimer = nullptr;
    }
    if (glb->m_pPendingTimers)
        DropPending(pTimer, true, 0);
}

void ValidateTimerList()
{
    if (!glb)
        return;
    if (!glb->m_pActiveTimers)
        glb->m_pActiveTimers = XNEW(CLList);
    if (!glb->m_pPendingTimers)
        glb->m_pPendingTimers = XNEW(CLList);
}

void xUpdateObjTimers()
{
    ValidateTimerList();
    if (!glb || !glb->m_pActiveTimers || !glb->m_pPendingTimers)
        return;
    xRemoveNotActiveTimers();
    xAddPendingTimers();
    CLList *pList = glb->m_pActiveTimers;
    for (pList->First(); pList->Exists(); pList->Next())
    {
        TTimerEntry *pEntry = (TTimerEntry *)pList->Get();
        const TRunning running = { pEntry, s_pRunning };
        s_pRunning = &running;
        // The object is looked at anew before each tick: a handler can remove it.
        for (xulong ulTicks = CountTicks(pEntry); ulTicks && pEntry->pTimer; --ulTicks)
            pEntry->pTimer->TimerHandler(pEntry->ulInterval);
        s_pRunning = running.pOuter;
    }
    xRemoveNotActiveTimers();
    xAddPendingTimers();
}

void xRemoveNotActiveTimers()
{
    if (!glb || !glb->m_pActiveTimers)
        return;
    CLList *pList = glb->m_pActiveTimers;
    pList->First();
    while (pList->Exists())
    {
        TTimerEntry *pEntry = (TTimerEntry *)pList->Get();
        if (pEntry->pTimer || IsRunning(pEntry))
            pList->Next();
        else
        {
            pList->Delete();
            XDELETE(pEntry);
            pList->First();
        }
    }
}

void xAddPendingTimers()
{
    if (!glb || !glb->m_pActiveTimers || !glb->m_pPendingTimers)
        return;
    CLList *pPending = glb->m_pPendingTimers;
    while (pPending->First())
    {
        TTimerPending *pRecord = (TTimerPending *)pPending->Get();
        TTimerEntry *pEntry = XNEW(TTimerEntry());
        // Without memory the rest stays pending: the next frame tries again.
        if (!pEntry)
            return;
        pEntry->pTimer = pRecord->pTimer;
        pEntry->ulInterval = pRecord->ulInterval;
        if (!glb->m_pActiveTimers->InsertLast(pEntry))
        {
            XDELETE(pEntry);
            return;
        }
        pPending->Delete();
        XDELETE(pRecord);
    }
}
