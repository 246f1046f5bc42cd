#include "core/msgsys.h"

#include "core/invariant.h"
#include "core/walk.h"
#include "tarvix/globals.h"
#include "tarvix/llist.h"
#include "tarvix/memory.h"

// Invariants
// 1. Frame sinks stand by falling priority, those of one priority by age.
// 2. Sink, message and priority of a frame sink stand in the list once; sink
//    and message of a window-message sink too.
// 3. No record points to a sink that is gone: the destructors take them out.
// Handlers may register, unregister and die: the walks survive it.

namespace
{
// Leaves the cursor on the sink's first registration, or on that of one message.
bool FindWinMsg(CLList *pList, CWinMsg *pSink, const xulong *pulMsg = nullptr)
{
    for (pList->First(); pList->Exists(); pList->Next())
    {
        const TWinMsgSink *pRecord = (TWinMsgSink *)pList->Get();
        if (pRecord->pSink == pSink && (!pulMsg || pRecord->ulMsg == *pulMsg))
            return true;
    }
    return false;
}

// The one at the cursor.
void DeleteWinMsg()
{
    sglb->m_pWinMsgList->DeleteData();
    sglb->m_pWinMsgList->Delete();
}

// Invariant 1.
bool AreSorted(const CLList &sinks)
{
    const TMsgSink *pBefore = nullptr;
    for (const TMsgSink *pRecord : Each<TMsgSink>(sinks))
    {
        if (pBefore && pBefore->lPriority < pRecord->lPriority)
            return false;
        pBefore = pRecord;
    }
    return true;
}
} // namespace

xlong CMsgSys::MsgHandler(xulong ulMsg, xlong lA, xlong lB)
{
    return 0;
}

CMsgSys::~CMsgSys()
{
    if (!glb || !glb->m_pMsgSinkList)
        return;
    CLList *pList = glb->m_pMsgSinkList;
    pList->First();
    while (pList->Exists())
    {
        TMsgSink *pRecord = (TMsgSink *)pList->Get();
        if (pRecord->pSink == this)
        {
            XDELETE(pRecord);
            pList->Delete();
            pList->First();
        }
        else
            pList->Next();
    }
}

xparam CWinMsg::WinMsgHandler(HWND hWnd, unsigned int uMsg, xuparam wParam, xparam lParam)
{
    return 0;
}

CWinMsg::~CWinMsg()
{
    UnRegisterWinMsgAll(this);
    // It passes over records; no message may find a sink that is gone.
    while (sglb && sglb->m_pWinMsgList && FindWinMsg(sglb->m_pWinMsgList, this))
        DeleteWinMsg();
}

xlong MsgSysRegister(CMsgSys *pSink, xulong ulMsg, xlong lPriority)
{
    if (!glb->m_pMsgSinkList)
        glb->m_pMsgSinkList = XNEW(CLList);
    CLList *pList = glb->m_pMsgSinkList;
    if (!pList)
        return 0;
    for (pList->First(); pList->Exists(); pList->Next())
    {
        const TMsgSink *pRecord = (TMsgSink *)pList->Get();
        if (pRecord->pSink == pSink && pRecord->ulMsg == ulMsg && pRecord->lPriority == lPriority)
            return 1;
    }
    TMsgSink *pNew = XNEW(TMsgSink());
    if (!pNew)
        return 0;
    pNew->pSink = pSink;
    pNew->ulMsg = ulMsg;
    pNew->lPriority = lPriority;
    for (pList->First(); pList->Exists(); pList->Next())
        if (((TMsgSink *)pList->Get())->lPriority < lPriority)
            break;
    xlong lResult;
    if (pList->Exists())
        lResult = pList->InsertBefore(pNew);
    else
    {
        pList->Last();
        lResult = pList->InsertAfter(pNew);
    }
    if (!lResult)
        XDELETE(pNew);
    TARVIX_INVARIANT(AreSorted(*pList));
    return lResult;
}

xlong MsgSysSend(xulong ulMsg, xlong lA, xlong lB)
{
    CLList *pList = glb->m_pMsgSinkList;
    xlong lResult = 0;
    if (!pList)
        return 0;
    for (CListWalk walk(*pList); const TMsgSink *pRecord = walk.Next<TMsgSink>();)
        if (pRecord->ulMsg == ulMsg)
        {
            pRecord->pSink->MsgHandler(ulMsg, lA, lB);
            lResult = 1;
        }
    return lResult;
}

void MsgSysUnregister(CMsgSys *pSink, xulong ulMsg, xlong lPriority)
{
    CLList *pList = glb ? glb->m_pMsgSinkList : nullptr;
    if (!pList)
        return;
    for (pList->First(); pList->Exists(); pList->Next())
    {
        TMsgSink *pRecord = (TMsgSink *)pList->Get();
        if (pRecord->pSink == pSink && pRecord->ulMsg == ulMsg && (lPriority == -1 || pRecord->lPriority == lPriority))
        {
            XDELETE(pRecord);
            pList->Delete();
            return;
        }
    }
}

xlong RegisterWinMsg(CWinMsg *pSink, xulong ulMsg)
{
    if (!sglb)
        return 0;
    if (!sglb->m_pWinMsgList)
        sglb->m_pWinMsgList = XNEW(CLList);
    CLList *pList = sglb->m_pWinMsgList;
    if (!pList)
        return 0;
    if (FindWinMsg(pList, pSink, &ulMsg))
        return 1;
    TWinMsgSink *pRecord = XNEW(TWinMsgSink());
    if (!pRecord)
        return 0;
    pRecord->pSink = pSink;
    pRecord->ulMsg = ulMsg;
    const xlong lResult = pList->InsertLast(pRecord);
    if (!lResult)
        XDELETE(pRecord);
    return lResult;
}

void UnRegisterWinMsg(CWinMsg *pSink, xulong ulMsg)
{
    if (!sglb || !sglb->m_pWinMsgList || !FindWinMsg(sglb->m_pWinMsgList, pSink, &ulMsg))
        return;
    DeleteWinMsg();
}

void UnRegisterWinMsgAll(CWinMsg *pSink)
{
    if (!sglb || !sglb->m_pWinMsgList)
        return;
    CLList *pList = sglb->m_pWinMsgList;
    for (pList->First(); pList->Exists(); pList->Next())
    {
        TWinMsgSink *pRecord = (TWinMsgSink *)pList->Get();
        if (pRecord->pSink == pSink)
        {
            DeleteWinMsg();
            // The step that follows passes over the new first record.
            pList->First();
        }
    }
}
