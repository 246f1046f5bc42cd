#include "gui/cntrlanim.h"

#include "core/walk.h"
#include "gui/look.h"
#include "tarvix/bitmap.h"
#include "tarvix/error.h"
#include "tarvix/globals.h"
#include "tarvix/misc.h"
#include "tarvix/screen.h"
#include "tarvix/strings.h"
#include "tarvix/window.h"

namespace
{
const xulong s_ulLineTick = 20; // milliseconds

enum
{
    LINE_SET,
    LINE_WAIT,
    LINE_DELAY_BEGIN,
    LINE_DELAY,
    LINE_PLAY_BEGIN,
    LINE_PLAY,
    LINE_AFTER_BEGIN,
    LINE_AFTER,
    LINE_NEXT,
    LINE_PASSES = 5 // that one tick makes at most
};

xlong FlagOf(int nLook)
{
    switch (nLook)
    {
    case XLOOK_RELEASED:
        return CNTRL_ANIMNORMAL;
    case XLOOK_PRESSED:
        return CNTRL_ANIMPRESSED;
    case XLOOK_HIGHLIGHT:
        return CNTRL_ANIMHIGHLIGHT;
    }
    return 0;
}

bool IsTrue(xlong lVariable)
{
    return GlobalVar_IsTrue(lVariable) != 0;
}

void SetVariables(xlong lSetTrue, xlong lSetFalse)
{
    if (lSetTrue)
        GlobalVar_SetTrue(lSetTrue);
    if (lSetFalse)
        GlobalVar_SetFalse(lSetFalse);
}

// The rule of a line and of its successors: one variable to be true, or else
// one to be false.
bool MayGo(xlong lWaitTrue, xlong lWaitFalse)
{
    return lWaitTrue ? IsTrue(lWaitTrue) : !lWaitFalse || !IsTrue(lWaitFalse);
}

void Advance(TCntrlAnim &anim, xlong lMode, xlong &lDirection)
{
    switch (lMode)
    {
    case ANIM_ONCE:
        if (!anim.Next())
            anim.Last();
        break;
    case ANIM_LOOP:
        if (!anim.Next())
            anim.First();
        break;
    case ANIM_PINGPONG:
        if (!lDirection)
        {
            if (!anim.Next())
            {
                anim.Last();
                lDirection = 1;
            }
        }
        else if (!anim.Prev())
        {
            anim.First();
            lDirection = 0;
        }
        break;
    case ANIM_BACKWARD:
        if (!anim.Prev())
            anim.Last();
        break;
    }
}

void BeginDelay(TAnimLine &line, xulong ulMin, xulong ulMax, xlong lWait, xlong lDone)
{
    line.ulStart = xGetTime();
    line.lStep = ulMin == ulMax ? lDone : lWait;
    if (ulMin != ulMax)
        line.ulDelay = ulMin + xRand(ulMax - ulMin);
}

bool HasPassed(const TAnimLine &line)
{
    return xTimeDiff(line.ulStart, xGetTime()) > line.ulDelay;
}

// The successor by force or by lot; null for none.
TAnimNext *ChooseNext(TAnimLine &line)
{
    TAnimNext *pForced = nullptr;
    xlong lCandidates = 0;
    for (TAnimNext *pNext : Each<TAnimNext>(line.NextList))
    {
        if (!MayGo(pNext->lWaitTrue, pNext->lWaitFalse))
            continue;
        ++lCandidates;
        if ((pNext->lForceFalse && !IsTrue(pNext->lForceFalse)) || (pNext->lForceTrue && IsTrue(pNext->lForceTrue)))
            pForced = pNext;
    }
    if (pForced || !lCandidates)
        return pForced;
    xlong lPlace = (xlong)xRand((xulong)lCandidates);
    for (TAnimNext *pNext : Each<TAnimNext>(line.NextList))
        if (MayGo(pNext->lWaitTrue, pNext->lWaitFalse) && !lPlace--)
            return pNext;
    return nullptr;
}

TAnimLine *FindLine(CLList &lines, const char *pszName)
{
    for (TAnimLine *pLine : Each<TAnimLine>(lines))
        if (xStricmp(pLine->pszName, pszName) == 0)
            return pLine;
    return nullptr;
}

// The record dies with the control, not with its place in the list.
void FreeLine(TAnimLine *pLine)
{
    pLine->NextList.KillAllData();
    XDELETE(pLine);
}

void FreeLines(CLList &lines)
{
    for (TAnimLine *pLine : Each<TAnimLine>(lines))
        FreeLine(pLine);
    lines.KillAll();
}

// What runs in one state of a control.
struct TLineRun
{
    CControlBase &control;
    CBitmap *&pBitmap;
    TCntrlAnim *&pAnim;
    TAnimLine *&pLine;
    CLList *pLines;
    TPMode &mode;
    xlong lAnimFlag;
};

// Of the first state, whichever runs: that is how lines are meant.
void SetOnce(TPMode &mode)
{
    mode.lMode[0] = ANIM_ONCE;
    mode.lDirection[0] = 0;
}

void BeginPlay(const TLineRun &run)
{
    run.pLine->lStep = LINE_AFTER_BEGIN;
    if (!run.pLine->pAnim)
        return;
    run.pAnim = run.pLine->pAnim;
    run.pAnim->First();
    run.pBitmap = run.pAnim->pSheet ? nullptr : (CBitmap *)run.pAnim->Get();
    run.control.SetFlag(run.lAnimFlag);
    run.control.AddTimer(run.pAnim->ulDelay);
    SetOnce(run.mode);
    run.pLine->lStep = LINE_PLAY;
}

void EndPlayed(const TLineRun &run)
{
    if (run.pAnim && run.pAnim->Exists() && run.pAnim->m_pCurr != run.pAnim->m_pLast)
        return;
    if (run.pAnim)
    {
        run.control.RemoveTimer(run.pAnim->ulDelay);
        run.pAnim->First();
    }
    run.pAnim = nullptr;
    run.control.RemoveFlag(run.lAnimFlag);
    SetOnce(run.mode);
    run.pLine->lStep = LINE_AFTER_BEGIN;
}

// Goes on with a successor. Where it is "End" or unknown, all lines go and none runs any more.
void GoOn(const TLineRun &run)
{
    const TAnimNext *const pNext = ChooseNext(*run.pLine);
    if (!pNext)
        return;
    const bool bEnd = xStricmp(pNext->pszName, "End") == 0;
    if (TAnimLine *pFound = run.pLines && !bEnd ? FindLine(*run.pLines, pNext->pszName) : nullptr)
    {
        SetVariables(pNext->lSetTrue, pNext->lSetFalse);
        run.pLine = pFound;
        run.pLine->lStep = LINE_SET;
        return;
    }
    if (!bEnd)
        xErrorTxt("Unable to find any animation matching the name");
    run.pAnim = nullptr;
    run.pLine = nullptr;
    if (run.pLines)
        FreeLines(*run.pLines);
}
} // namespace

void StepAnimation(CControlBase &control, int nLook, xulong ulInterval)
{
    TCntrlLook &look = control.m_Look;
    if (nLook < 0 || !(control.m_lFlags & FlagOf(nLook)))
        return;
    TCntrlAnim *const pAnim = look.m_pAnim[nLook];
    if (!pAnim || pAnim->ulDelay != ulInterval)
        return;
    Advance(*pAnim, look.m_PMode.lMode[nLook], look.m_PMode.lDirection[nLook]);
    void *const pFrame = pAnim->Exists() ? pAnim->Get() : nullptr;
    if (pFrame && !pAnim->pSheet)
        look.m_pBitmap[nLook] = (CBitmap *)pFrame;
    else if (pFrame)
    {
        look.m_pBitmap[nLook] = nullptr;
        look.m_pSheetRect = (CRect *)pFrame;
        look.m_pSheet = pAnim->pSheet;
    }
    CScreenBase *const pScreen = glb->m_pScreen;
    if (!pScreen)
        return;
    const TPlace place = PlaceOf(control, control.m_pWindow ? control.m_pWindow->m_lX : 0,
                                 control.m_pWindow ? control.m_pWindow->m_lY : 0);
    const xlong lRight = place.lX + place.lWidth - 1, lBottom = place.lY + place.lHeight - 1;
    if (control.m_lFlags & CNTRL_BMTRANS)
        pScreen->AddClearAreaGui(place.lX, place.lY, lRight, lBottom);
    else
        pScreen->AddShadowArea(place.lX, place.lY, lRight, lBottom);
}

void TickAnimations(CControlBase &control, int nLook, xulong ulInterval)
{
    if (ulInterval == s_ulLineTick)
        control.AnimLineHandlerAll();
    if (!control.m_pWindow || !(control.m_pWindow->m_lFlags & XWIN_HIDDEN))
        StepAnimation(control, nLook, ulInterval);
}

void FreeAnimLines(CControlBase &control)
{
    for (int n = 0; n < XLOOK_STATES; ++n)
    {
        control.m_Look.m_pAnimLine[n] = nullptr;
        CLList *&pLines = control.m_Look.m_pAnimLines[n];
        if (!pLines)
            continue;
        FreeLines(*pLines);
        XDELETE(pLines);
        pLines = nullptr;
    }
}

void CControlBase::TimerHandler(xulong ulInterval)
{
    const int nLook = m_lState == XGUI_DISABLED ? -1 : LookOf(m_lState);
    TickAnimations(*this, nLook, ulInterval);
}

xlong CControlBase::SetAnimBitmap(TCntrlAnim *pAnim, xlong lType, xlong lMode)
{
    const int nLook = LookOf(lType);
    if (nLook < 0 || !pAnim)
        return 1;
    m_Look.m_pAnim[nLook] = pAnim;
    if (pAnim->pSheet)
    {
        m_Look.m_pBitmap[nLook] = nullptr;
        m_Look.m_pSheet = pAnim->pSheet;
        m_Look.m_pSheetRect = (CRect *)pAnim->Get();
    }
    else
        m_Look.m_pBitmap[nLook] = (CBitmap *)pAnim->Get();
    AddTimer(pAnim->ulDelay);
    if (nLook == XLOOK_DISABLED)
        return 1;
    SetFlag(FlagOf(nLook));
    m_Look.m_PMode.lMode[nLook] = lMode;
    m_Look.m_PMode.lDirection[nLook] = 0;
    return 1;
}

xlong CControlBase::SetFrameRate(xlong lState, xlong lDelay)
{
    // In this order, each case goes on with the next one.
    static const int s_Looks[] = { XLOOK_RELEASED, XLOOK_PRESSED, XLOOK_HIGHLIGHT };
    const int nFirst = lState == XGUI_RELEASED ? 0 : lState == XGUI_PRESSED ? 1 : lState == XGUI_HIGHLIGHT ? 2 : 3;
    for (int n = nFirst; n < 3; ++n)
    {
        if (!(m_lFlags & FlagOf(s_Looks[n])))
            continue;
        TCntrlAnim *const pAnim = m_Look.m_pAnim[s_Looks[n]];
        if (!pAnim)
            return 0;
        RemoveTimer(pAnim->ulDelay);
        pAnim->ulDelay = (xulong)lDelay;
        AddTimer(pAnim->ulDelay);
    }
    return 1;
}

xlong CControlBase::SetAnimLine(xlong lType, char *pszName, xulong ulDelayMin, xulong ulDelayMax, TCntrlAnim *pAnim,
                                xulong ulAfterMin, xulong ulAfterMax, char *pszNext1, char *pszNext2, char *pszNext3,
                                char *pszNext4, char *pszNext5)
{
    const int nLook = LookOf(lType);
    if (nLook < 0)
        return xErrorTxt("CControlBase::SetAnimLine: Invalid type.");
    CLList *&pLines = m_Look.m_pAnimLines[nLook];
    if (!pLines)
        pLines = XNEW(CLList);
    TAnimLine *const pLine = pLines ? XNEW(TAnimLine()) : nullptr;
    if (!pLine)
        return xErrorTxt("CControlBase::SetAnimLine: Out of memory.");
    pLine->pszName = SetAnimLine_GetObj_Name(pszName);
    pLine->lWaitTrue = SetAnimLine_GetObj_WaitForVariableSet(pszName);
    pLine->lWaitFalse = SetAnimLine_GetObj_WaitForVariableZero(pszName);
    pLine->lSetTrue = SetAnimLine_GetObj_VariableSetTrue(pszName);
    pLine->lSetFalse = SetAnimLine_GetObj_VariableSetFalse(pszName);
    pLine->ulDelayMin = ulDelayMin;
    pLine->ulDelayMax = ulDelayMax;
    pLine->pAnim = pAnim;
    pLine->ulAfterMin = ulAfterMin;
    pLine->ulAfterMax = ulAfterMax;
    for (char *pszNext : { pszNext1, pszNext2, pszNext3, pszNext4, pszNext5 })
        if (pszNext && !SetAnimLine_InsertNewAnimLine(&pLine->NextList, pszNext))
        {
            FreeLine(pLine);
            return 0;
        }
    if (!pLines->InsertLast(pLine))
    {
        FreeLine(pLine);
        return xErrorTxt("CControlBase::SetAnimLine: Out of memory.");
    }
    AddTimer(s_ulLineTick);
    return 1;
}

xlong CControlBase::SetAnimLine_InsertNewAnimLine(CLList *pList, char *pszName)
{
    TAnimNext *const pNext = XNEW(TAnimNext());
    if (pNext)
    {
        pNext->pszName = pszName;
        if (pList->InsertLast(pNext))
            return 1;
        XDELETE(pNext);
    }
    return xErrorTxt("CControlBase::SetAnimLine_InsertNewAnimLine: Out of memory.");
}

char *CControlBase::SetAnimLine_GetObj_Name(char *pszName)
{
    return pszName;
}

xlong CControlBase::SetAnimLine_GetObj_WaitForVariableSet(char *pszName)
{
    return 0;
}

xlong CControlBase::SetAnimLine_GetObj_WaitForVariableZero(char *pszName)
{
    return 0;
}

xlong CControlBase::SetAnimLine_GetObj_VariableSetTrue(char *pszName)
{
    return 0;
}

xlong CControlBase::SetAnimLine_GetObj_VariableSetFalse(char *pszName)
{
    return 0;
}

void CControlBase::AnimLineHandler(CBitmap *&pBitmap, TCntrlAnim *&pAnim, TAnimLine *&pLine, CLList *pLines,
                                   TPMode &Mode, xlong lAnimFlag)
{
    const TLineRun run = { *this, pBitmap, pAnim, pLine, pLines, Mode, lAnimFlag };
    for (int nPass = 0; nPass < LINE_PASSES; ++nPass)
    {
        if (!pLine && pLines && pLines->First())
        {
            pLine = (TAnimLine *)pLines->Get();
            pLine->lStep = LINE_SET;
        }
        if (!pLine || pLine->lStep < LINE_SET || pLine->lStep > LINE_NEXT)
            return;
        const TAnimLine *const pOldLine = pLine;
        const xlong lOldStep = pLine->lStep;
        switch (lOldStep)
        {
        case LINE_SET:
            SetVariables(pLine->lSetTrue, pLine->lSetFalse);
            pLine->lStep = LINE_WAIT;
            break;
        case LINE_WAIT:
            if (MayGo(pLine->lWaitTrue, pLine->lWaitFalse))
                pLine->lStep = LINE_DELAY_BEGIN;
            break;
        case LINE_DELAY_BEGIN:
            BeginDelay(*pLine, pLine->ulDelayMin, pLine->ulDelayMax, LINE_DELAY, LINE_PLAY_BEGIN);
            break;
        case LINE_DELAY:
            if (HasPassed(*pLine))
                pLine->lStep = LINE_PLAY_BEGIN;
            break;
        case LINE_PLAY_BEGIN:
            BeginPlay(run);
            break;
        case LINE_PLAY:
            EndPlayed(run);
            break;
        case LINE_AFTER_BEGIN:
            BeginDelay(*pLine, pLine->ulAfterMin, pLine->ulAfterMax, LINE_AFTER, LINE_NEXT);
            break;
        case LINE_AFTER:
            if (HasPassed(*pLine))
                pLine->lStep = LINE_NEXT;
            break;
        case LINE_NEXT:
            GoOn(run);
            break;
        }
        if (!pLine || (pLine == pOldLine && pLine->lStep == lOldStep))
            return;
    }
}

void CControlBase::AnimLineHandlerAll()
{
    for (int n = XLOOK_RELEASED; n <= XLOOK_HIGHLIGHT; ++n)
        AnimLineHandler(m_Look.m_pBitmap[n], m_Look.m_pAnim[n], m_Look.m_pAnimLine[n], m_Look.m_pAnimLines[n],
                        m_Look.m_PMode, FlagOf(n));
}
