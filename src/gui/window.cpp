#include "tarvix/window.h"

#include "core/walk.h"
#include "gui/alive.h"
#include "gui/press.h"
#include "tarvix/button.h"
#include "tarvix/control.h"
#include "tarvix/error.h"
#include "tarvix/frame.h"
#include "tarvix/globals.h"
#include "tarvix/keyboard.h"
#include "tarvix/mouse.h"
#include "tarvix/screen.h"
#include "tarvix/strings.h"
#include "tarvix/titlebar.h"
#include "tarvix/winctrl.h"

#include <algorithm>

namespace
{
enum
{
    TITLEBAR_HEIGHT = 16,
    TITLEBAR_FLAGS = CNTRL_EXTRUDED
};

const xlong s_lNowhere = -30000; ///< a place of the pointer outside of every window

void Restore(const CWindowBase &window, xlong lLeft, xlong lTop, xlong lRight, xlong lBottom)
{
    if (glb->m_pScreen && !(window.m_lFlags & XWIN_HIDDEN))
        glb->m_pScreen->AddClearAreaGui(lLeft, lTop, lRight, lBottom);
}

bool CanHaveFocus(CControlBase &control)
{
    const xlong lState = control.GetState();
    return lState != XGUI_DISABLED && lState != XGUI_HIDDEN;
}

void DrawPieces(CControlBase &control, xlong lX, xlong lY, xlong lPage)
{
    if (!control.m_lClipCount)
        return;
    CScreenBase *const pScreen = glb->m_pScreen;
    if (pScreen->PushClip())
    {
        for (xlong l = 0; l < control.m_lClipCount; ++l)
        {
            const CRect &rc = control.m_rClip[l];
            pScreen->SetClip(rc.m_lLeft, rc.m_lTop, rc.m_lRight, rc.m_lBottom);
            control.Draw(lX, lY, lPage);
        }
        pScreen->PopClip();
    }
    control.ClearClipListIndex();
}
} // namespace

CWindowBase::CWindowBase()
    : m_lWidth(0), m_lHeight(0), m_lID(0), m_lFlags(0), m_lDragX(0), m_lDragY(0), m_lReserved(0), m_bStaticCntrls(0),
      m_lX(0), m_lY(0), m_bActive(0), m_pFocus(nullptr), m_pMouseCntrl(nullptr), m_pFirstLinked(nullptr)
{
}

xlong CWindowBase::Enable(xlong bEnable)
{
    return GuiMsgHandler(XGUIMSG_ENABLE, m_lID, 0, bEnable, nullptr);
}

xlong CWindowBase::ShowWindow()
{
    m_lFlags &= ~XWIN_HIDDEN;
    if (glb->m_pWinCtrl)
    {
        glb->m_pWinCtrl->Validate();
        glb->m_pWinCtrl->OnShown(*this);
    }
    return 1;
}

xlong CWindowBase::HideWindow()
{
    Restore(*this, m_rArea.m_lLeft, m_rArea.m_lTop, m_rArea.m_lRight, m_rArea.m_lBottom);
    const bool bWasHidden = (m_lFlags & XWIN_HIDDEN) != 0;
    m_lFlags |= XWIN_HIDDEN;
    const CAlive alive(*this);
    for (CListWalk walk(m_Cntrls); CControlBase *pCntrl = walk.Next<CControlBase>();)
        pCntrl->LoseHotKey();
    if (!alive || bWasHidden)
        return 1;
    // No mouse message comes any more: a drag, presses and highlights end here.
    if (CTitlebar *const pTitlebar = Titlebar())
        pTitlebar->LosePress();
    if (CFrame *const pFrame = alive ? Frame() : nullptr)
        pFrame->GuiMsgHandler(XGUIMSG_MOUSE, s_lNowhere, s_lNowhere, 0, nullptr);
    if (!alive)
        return 1;
    m_pMouseCntrl = nullptr;
    // The first takes a press back to a highlight, the second ends that.
    for (int n = 0; n < 2 && alive && !m_bStaticCntrls; ++n)
        for (CListWalk walk(m_Cntrls); CControlBase *pCntrl = walk.Next<CControlBase>();)
            pCntrl->GuiMsgHandler(XGUIMSG_MOUSE, s_lNowhere, s_lNowhere, 0, nullptr);
    if (alive && (m_lFlags & XWIN_HIDDEN) && glb->m_pWinCtrl)
        glb->m_pWinCtrl->OnHidden(*this);
    return 1;
}

CWindowBase::~CWindowBase()
{
    CAlive::OnDeath(*this);
    if (glb && glb->m_pWinCtrl)
        glb->m_pWinCtrl->TakeWindow(this);
    CWindowBase::Destroy();
    while (m_pFirstLinked)
        LoseParent(*m_pFirstLinked);
}

CTitlebar *CWindowBase::Titlebar()
{
    return nullptr;
}

CFrame *CWindowBase::Frame()
{
    return nullptr;
}

xlong CWindowBase::Create(xlong lID, xlong lX, xlong lY, xlong lWidth, xlong lHeight, xlong lFlags)
{
    m_lID = lID;
    m_lWidth = lWidth;
    m_lHeight = lHeight;
    m_lFlags = lFlags;
    const SVmode *const pMode = (lFlags & XWIN_CENTER) && glb->m_pScreen ? glb->m_pScreen->GetActiveMode() : nullptr;
    if (pMode)
    {
        lX = pMode->lWidth > lWidth ? (pMode->lWidth - lWidth) / 2 : 0;
        lY = pMode->lHeight > lHeight ? (pMode->lHeight - lHeight) / 2 : 0;
    }
    m_lX = lX;
    m_lY = lY;
    UpdateArea();
    m_pFocus = nullptr;
    m_pMouseCntrl = nullptr;
    m_bActive = 1;
    m_bStaticCntrls = 0;
    return 1;
}

xlong CWindowBase::SetPos(xlong lX, xlong lY)
{
    Restore(*this, m_lX - 1, m_lY - 1, m_lX + m_lWidth + 2, m_lY + m_lHeight + 2);
    m_lX = lX;
    m_lY = lY;
    Validate();
    UpdateArea();
    return 1;
}

xlong CWindowBase::SetSize(xlong lWidth, xlong lHeight)
{
    Restore(*this, m_lX, m_lY, m_lX + m_lWidth, m_lY + m_lHeight);
    Validate();
    m_lWidth = lWidth;
    m_lHeight = lHeight;
    UpdateArea();
    return 1;
}

xlong CWindowBase::GetPos(xlong &lX, xlong &lY)
{
    lX = m_lX;
    lY = m_lY;
    return 1;
}

xlong CWindowBase::GetSize(xlong &lWidth, xlong &lHeight)
{
    lWidth = m_lWidth;
    lHeight = m_lHeight;
    return 1;
}

xlong CWindowBase::GetFlags()
{
    return m_lFlags;
}

xlong CWindowBase::GetID()
{
    return m_lID;
}

xlong CWindowBase::SetFlag(xlong lFlags)
{
    m_lFlags |= lFlags;
    return 1;
}

xlong CWindowBase::RemoveFlag(xlong lFlags)
{
    m_lFlags &= ~lFlags;
    return 1;
}

xlong CWindowBase::SetID(xlong lID)
{
    m_lID = lID;
    if (CTitlebar *const pTitlebar = Titlebar())
    {
        pTitlebar->SetParent(lID, this);
        for (CControlBase *pPart : { (CControlBase *)pTitlebar->m_pClose, (CControlBase *)pTitlebar->m_pCaption })
            if (pPart)
                pPart->SetParent(lID, this);
    }
    if (CControlBase *const pFrame = Frame())
        pFrame->SetParent(lID, this);
    for (CControlBase *pCntrl : Each<CControlBase>(m_Cntrls))
        pCntrl->SetParent(lID, this);
    return 1;
}

void CWindowBase::ToFront()
{
    if (glb->m_pWinCtrl)
        glb->m_pWinCtrl->SendMessageA(XGUIMSG_TOFRONT, m_lID, 0, 0, nullptr);
}

void CWindowBase::StaticWindowCntrls(int nStatic)
{
    m_bStaticCntrls = nStatic;
    SetFocus(nullptr);
    m_pFocus = nullptr;
}

xlong CWindowBase::SetFocus(CControlBase *pCntrl)
{
    ShowFocus(pCntrl);
    m_pFocus = pCntrl;
    for (CListWalk walk(m_Cntrls); CControlBase *pEach = walk.Next<CControlBase>();)
        pEach->GuiMsgHandler(XGUIMSG_FOCUS, 0, 0, pEach == pCntrl, nullptr);
    return 1;
}

xlong CWindowBase::AddCntrl(CControlBase *pCntrl)
{
    CControlBase *const pTitlebar = m_lFlags & XWIN_TITLEBAR ? Titlebar() : nullptr;
    if (pTitlebar)
    {
        xlong lX = 0, lY = 0;
        pCntrl->GetPos(lX, lY);
        const CControlBase *const pFrame = Frame();
        if ((m_lFlags & (XWIN_BORDER | XWIN_FRAME)) == (XWIN_BORDER | XWIN_FRAME) && pFrame)
        {
            lX += pFrame->m_Look.m_lBevel;
            lY += pFrame->m_Look.m_lBevel;
        }
        pCntrl->SetPos(lX, lY + pTitlebar->m_lHeight);
    }
    if (!m_Cntrls.InsertLast(pCntrl))
        return xError(XERR_MEMORY);
    pCntrl->SetParent(m_lID, this);
    return 1;
}

// The control can outlive the window.
void CWindowBase::LoseParent(CControlBase &control)
{
    control.SetParent(control.m_lWindowID, nullptr);
    control.LinkTo(nullptr);
}

xlong CWindowBase::RemoveCntrl(CControlBase *pCntrl)
{
    if (m_pFocus == pCntrl)
        m_pFocus = nullptr;
    if (m_pMouseCntrl == pCntrl)
        m_pMouseCntrl = nullptr;
    // Many are taken out in the order in which they came, or against it.
    if (!(m_Cntrls.Last() && m_Cntrls.Get() == pCntrl) && !m_Cntrls.ItemExists(pCntrl))
        return 0;
    const xlong lResult = m_Cntrls.Delete();
    LoseParent(*pCntrl);
    return lResult;
}

xlong CWindowBase::RemoveAllCntrl()
{
    m_pFocus = nullptr;
    m_pMouseCntrl = nullptr;
    for (CControlBase *pCntrl : Each<CControlBase>(m_Cntrls))
        LoseParent(*pCntrl);
    m_Cntrls.KillAll();
    return 1;
}

xlong CWindowBase::Destroy()
{
    return RemoveAllCntrl();
}

xlong CWindowBase::CntrlFirst()
{
    return m_Cntrls.First();
}

xlong CWindowBase::CntrlNext()
{
    return m_Cntrls.Next();
}

xlong CWindowBase::CntrlExists()
{
    return m_Cntrls.Exists();
}

CControlBase *CWindowBase::GetCntrl()
{
    return (CControlBase *)m_Cntrls.Get();
}

xlong CWindowBase::NumCntrls()
{
    return m_Cntrls.GetNumNodes();
}

xlong CWindowBase::GuiMsgHandler(xlong lMsg, xlong lP1, xlong lP2, xparam lP3, void *pData)
{
    switch (lMsg)
    {
    case XGUIMSG_KEY:
        return KeyMessage(lP1, lP2, lP3, pData);
    case XGUIMSG_MOUSE:
        return MouseMessage(lP1, lP2, lP3, pData);
    case XGUIMSG_DRAGBEGIN:
        if (!(m_lFlags & XWIN_DRAG))
            return 0;
        if (!(m_lFlags & XWIN_DRAGGING))
        {
            m_lDragX = lP1;
            m_lDragY = lP2;
            m_lFlags |= XWIN_DRAGGING;
        }
        return 1;
    case XGUIMSG_DRAGEND:
        if (!(m_lFlags & XWIN_DRAG))
            return 0;
        m_lFlags &= ~XWIN_DRAGGING;
        return 1;
    case XGUIMSG_ACTIVATE:
        return ActivateMessage(lP1, lP3);
    case XGUIMSG_ENABLE:
        if (lP1 == m_lID)
        {
            for (CListWalk walk(m_Cntrls); CControlBase *pCntrl = walk.Next<CControlBase>();)
                // One that is enabled may be checked, and stays so.
                if (const xlong lState = pCntrl->GetState();
                    lP3 != 1 || (lState != XGUI_CHECKED && lState != XGUI_UNCHECKED))
                    pCntrl->SetState(lP3 == 1 ? XGUI_RELEASED : XGUI_DISABLED);
        }
        return 0;
    case XGUIMSG_PASTE:
        return PasteMessage((const char *)pData);
    }
    if (m_bStaticCntrls)
        return 0;
    for (CControlBase *pCntrl : Each<CControlBase>(m_Cntrls))
        if (pCntrl->GetID() == lP3)
        {
            pCntrl->GuiMsgHandler(lMsg, lP1, lP2, lP3, nullptr);
            return 1;
        }
    return 0;
}

void CWindowBase::UpdateArea()
{
    m_rArea.Set(m_lX - 1, m_lY - 1, m_lX + m_lWidth, m_lY + m_lHeight);
}

xlong CWindowBase::KeyMessage(xlong lP1, xlong lP2, xparam lP3, void *pData)
{
    const TQueueChar *const pKey = (const TQueueChar *)lP3;
    const CAlive alive(*this);
    if (CControlBase *pTitlebar = m_lFlags & XWIN_TITLEBAR ? Titlebar() : nullptr)
        pTitlebar->GuiMsgHandler(XGUIMSG_KEY, lP1, lP2, lP3, pData);
    if (!alive || m_bStaticCntrls || !pKey)
        return 1;
    if (pKey->usKey == XKEY_TAB && (pKey->lFlags & XKEYF_DOWN) && m_Cntrls.GetNumNodes())
        TabToNext(lP1, lP2, lP3, pData);
    if (!alive)
        return 1;

    const CControlBase *pUser = nullptr;
    const xlong lFocusFlags = m_pFocus ? m_pFocus->GetFlags() : 0;
    if ((lFocusFlags & CNTRL_TABSTOP) && (pKey->usKey != XKEY_ENTER || (lFocusFlags & CNTRL_MULTILINE)))
    {
        pUser = m_pFocus;
        if (m_pFocus->GuiMsgHandler(XGUIMSG_KEY, lP1, lP2, lP3, pData) || !alive || !HasGuiOption(XGUIOPT_KEYS))
            return 1;
    }
    for (CListWalk walk(m_Cntrls); CControlBase *pCntrl = walk.Next<CControlBase>();)
        if (pCntrl != pUser)
            pCntrl->GuiMsgHandler(XGUIMSG_KEY, lP1, lP2, lP3, pData);
    return 1;
}

// Both the old and the new focus look different then.
void CWindowBase::ShowFocus(CControlBase *pNew)
{
    if (m_pFocus == pNew || !HasGuiOption(XGUIOPT_FOCUS))
        return;
    if (m_pFocus)
        m_pFocus->Validate();
    if (pNew)
        pNew->Validate();
}

void CWindowBase::TabToNext(xlong lP1, xlong lP2, xparam lP3, void *pData)
{
    CControlBase *const pOld = m_pFocus;
    CControlBase *pFirst = nullptr;
    bool bPassed = false;
    const bool bPassOver = HasGuiOption(XGUIOPT_FOCUS);
    for (CControlBase *pCntrl : Each<CControlBase>(m_Cntrls))
    {
        const bool bStop = (pCntrl->GetFlags() & CNTRL_TABSTOP) != 0 && (!bPassOver || CanHaveFocus(*pCntrl));
        if (bStop && !pFirst)
            pFirst = pCntrl;
        if (bPassed && bStop)
        {
            const CAlive alive(*this), cntrlAlive(*pCntrl);
            pCntrl->GuiMsgHandler(XGUIMSG_KEY, lP1, lP2, lP3, pData);
            if (alive && cntrlAlive && pCntrl->m_pWindow == this)
                SetFocus(pCntrl);
            return;
        }
        if (pCntrl == pOld)
            bPassed = true;
    }
    // Behind the last one, or without a focus, it starts with the first.
    const CAlive alive(*this), firstAlive(pFirst);
    if (bPassed)
        pOld->GuiMsgHandler(XGUIMSG_FOCUS, 0, 0, 0, nullptr);
    if (!alive)
        return;
    ShowFocus(nullptr);
    m_pFocus = nullptr;
    if (firstAlive)
        SetFocus(pFirst);
}

xlong CWindowBase::MouseMessage(xlong lX, xlong lY, xparam lP3, void *pData)
{
    xlong lResult = 0;
    const CAlive alive(*this);
    CControlBase *const pTitlebar = m_lFlags & XWIN_TITLEBAR ? Titlebar() : nullptr;
    if (pTitlebar && pTitlebar->GuiMsgHandler(XGUIMSG_MOUSE, lX - m_lX, lY - m_lY, lP3, pData) == 1)
        lResult = 1;
    if (!alive)
        return 1;
    if (m_lFlags & XWIN_DRAGGING)
        return DragTo(lX, lY) || lResult;
    CControlBase *const pFrame = m_lFlags & XWIN_FRAME ? Frame() : nullptr;
    if (pFrame && pFrame->GuiMsgHandler(XGUIMSG_MOUSE, lX - m_lX, lY - m_lY, lP3, pData) == 1)
        lResult = 1;
    lX -= m_lX;
    lY -= m_lY;
    m_pMouseCntrl = nullptr;
    if (m_bStaticCntrls)
        return lResult;
    CRect rcArea;
    for (CListWalk walk(m_Cntrls, true); CControlBase *pCntrl = walk.Next<CControlBase>();)
    {
        const CAlive cntrlAlive(*pCntrl);
        pCntrl->GetMouseArea(&rcArea);
        const xlong lAnswer = pCntrl->GuiMsgHandler(XGUIMSG_MOUSE, lX, lY, lP3, pData);
        if (!alive)
            return 1;
        if (!lAnswer)
            continue;
        lResult = 1;
        // In its own callback it may have left, or died.
        if (!m_pMouseCntrl && IsInside(rcArea, lX, lY) && cntrlAlive && pCntrl->m_pWindow == this)
            m_pMouseCntrl = pCntrl;
        if (lAnswer == 2)
            break;
    }
    return lResult;
}

xlong CWindowBase::DragTo(xlong lX, xlong lY)
{
    if (!(m_lFlags & XWIN_SYSTEMWINDOW))
    {
        // Its title bar has to stay where the pointer can take it again.
        if (const SVmode *const pMode = glb->m_pScreen ? glb->m_pScreen->GetActiveMode() : nullptr)
        {
            lX = std::clamp<xlong>(lX, 0, pMode->lWidth - 1);
            lY = std::clamp<xlong>(lY, 0, pMode->lHeight - 1);
        }
        // A pointer that rests redraws nothing.
        if (lX - m_lDragX != m_lX || lY - m_lDragY != m_lY)
            SetPos(lX - m_lDragX, lY - m_lDragY);
        return 0;
    }
    if (glb->m_pMouse)
        glb->m_pMouse->GetState(&lX, &lY, nullptr);
    if (glb->m_pScreen)
        glb->m_pScreen->SetScreenPos(lX, lY);
    xprintf(nullptr, 0, nullptr, 0, "x: %ld y: %ld\n", (long)lX, (long)lY);
    return 1;
}

xlong CWindowBase::ActivateMessage(xlong lP1, xparam lP3)
{
    const bool bMine = lP1 == m_lID;
    const xlong bActive = bMine ? (xlong)lP3 : 0;
    // A click into the window in front comes here too: it must not take the
    // keyboard from the control that it has just given it to.
    const bool bChanges = !bMine || m_bActive != bActive;
    m_bActive = bActive;
    if (!bChanges)
        return 1;
    if (CControlBase *pTitlebar = Titlebar())
    {
        pTitlebar->GuiMsgHandler(XGUIMSG_ACTIVATE, 0, 0, bActive, nullptr);
        pTitlebar->Validate();
    }
    SetFocus(nullptr);
    return 1;
}

xlong CWindowBase::PasteMessage(const char *pszText)
{
    if (!pszText || !m_pFocus || (m_pFocus->GetFlags() & (CNTRL_TABSTOP | CNTRL_READONLY)) != CNTRL_TABSTOP)
        return 1;
    for (const char *psz = pszText; *psz; ++psz)
        if ((signed char)*psz < 32)
            return 1;
    const xlong lSize = m_pFocus->GetTextBufferSize();
    char *const pszBuffer = m_pFocus->GetTextBuffer(1);
    if (!pszBuffer || lSize < 1)
        return 1;
    xMemset(pszBuffer, 0, (xulong)lSize);
    xStrncpy(pszBuffer, pszText, lSize - 1);
    return 1;
}

CWindow::CWindow() : m_pTitlebar(nullptr), m_pFrame(nullptr) {}

CWindow::~CWindow()
{
    // Before anything of it is gone: the manager's lists are walked on the way.
    if (glb && glb->m_pWinCtrl)
        glb->m_pWinCtrl->TakeWindow(this);
    CWindow::Destroy();
}

xlong CWindow::Draw(xlong lPage)
{
    if (!glb->m_pScreen)
        return 0;
    if ((m_lFlags & XWIN_FRAME) && m_pFrame)
        DrawPieces(*m_pFrame, m_lX, m_lY, lPage);
    if ((m_lFlags & XWIN_TITLEBAR) && m_pTitlebar)
        DrawPieces(*m_pTitlebar, m_lX, m_lY, lPage);
    for (CListWalk walk(m_Cntrls); CControlBase *pCntrl = walk.Next<CControlBase>();)
        DrawPieces(*pCntrl, m_lX, m_lY, lPage);
    return 1;
}

xlong CWindow::Validate()
{
    if (m_pFrame)
        m_pFrame->Validate();
    if (m_pTitlebar)
        m_pTitlebar->Validate();
    if ((m_lFlags & XWIN_CLOSE) && m_pTitlebar && m_pTitlebar->m_pClose)
        m_pTitlebar->m_pClose->Validate();
    for (CControlBase *pCntrl : Each<CControlBase>(m_Cntrls))
        pCntrl->Validate();
    return 1;
}

xlong CWindow::Validate(CRect *pArea, xlong lIndex)
{
    CRect rcArea;
    CRect rcMine = m_rArea;
    if (!rcArea.Intersect(pArea, &rcMine))
        return 0;
    if (m_pFrame)
        m_pFrame->Validate(&rcArea, lIndex);
    if (m_pTitlebar)
        m_pTitlebar->Validate(&rcArea, lIndex);
    for (CControlBase *pCntrl : Each<CControlBase>(m_Cntrls))
        pCntrl->Validate(&rcArea, lIndex);
    return 1;
}

CTitlebar *CWindow::Titlebar()
{
    return m_pTitlebar;
}

CFrame *CWindow::Frame()
{
    return m_pFrame;
}

xlong CWindow::Create(xlong lID, char *pszTitle, xlong lX, xlong lY, xlong lWidth, xlong lHeight, xlong lFlags)
{
    CWindowBase::Create(lID, lX, lY, lWidth, lHeight, lFlags);
    if (lFlags & XWIN_TITLEBAR)
    {
        XDELETE(m_pTitlebar);
        m_pTitlebar = XNEW(CTitlebar);
        if (!m_pTitlebar)
            return xError(XERR_MEMORY);
        if (!m_pTitlebar->Create(pszTitle, lWidth, TITLEBAR_HEIGHT, this,
                                 TITLEBAR_FLAGS | (lFlags & XWIN_CLOSE ? CNTRL_CLOSEBUTTON : 0)))
            return 0;
    }
    if (lFlags & XWIN_FRAME)
    {
        XDELETE(m_pFrame);
        m_pFrame = XNEW(CFrame);
        if (!m_pFrame)
            return xError(XERR_MEMORY);
        m_pFrame->Create(nullptr, lWidth, lHeight, this);
    }
    return 1;
}

xlong CWindow::Destroy()
{
    XDELETE(m_pTitlebar);
    XDELETE(m_pFrame);
    m_pTitlebar = nullptr;
    m_pFrame = nullptr;
    return CWindowBase::Destroy();
}
