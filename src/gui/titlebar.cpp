#include "tarvix/titlebar.h"

#include "gui/alive.h"
#include "gui/create.h"
#include "gui/press.h"
#include "tarvix/button.h"
#include "tarvix/error.h"
#include "tarvix/static.h"
#include "tarvix/window.h"

namespace
{
const xlong s_lCloseSize = 14; // pixels
} // namespace

CTitlebar::CTitlebar() : m_pClose(nullptr), m_pCaption(nullptr), m_lCloseSize(s_lCloseSize) {}

CTitlebar::~CTitlebar()
{
    CTitlebar::Destroy();
}

xlong CTitlebar::Destroy()
{
    XDELETE(m_pClose);
    XDELETE(m_pCaption);
    m_pClose = nullptr;
    m_pCaption = nullptr;
    return CControlBase::Destroy();
}

void CTitlebar::Copy(CControlBase *pFrom)
{
    CControlBase::Copy(pFrom);
    const CTitlebar *const pTitlebar = dynamic_cast<CTitlebar *>(pFrom);
    if (pTitlebar && m_pCaption && pTitlebar->m_pCaption)
        m_pCaption->Copy(pTitlebar->m_pCaption);
}

xlong CTitlebar::SetDefault()
{
    return BecomeTemplate(*this, &CWinCtrl::m_pDefaultTitlebar);
}

xlong CTitlebar::SetPos(xlong lX, xlong lY)
{
    CControlBase::SetPos(lX, lY);
    PlaceParts();
    return 1;
}

xlong CTitlebar::SetSize(xlong lWidth, xlong lHeight)
{
    CControlBase::SetSize(lWidth, lHeight);
    PlaceParts();
    return 1;
}

xlong CTitlebar::GuiMsgHandler(xlong lMsg, xlong lP1, xlong lP2, xparam lP3, void *pData)
{
    if (m_lState == XGUI_DISABLED)
        return 0;
    switch (lMsg)
    {
    case XGUIMSG_KEY:
    {
        const int nKey = TakeHotKey(*this, lP3);
        if (nKey != HOTKEY_NONE)
            m_lNextState = nKey == HOTKEY_DOWN ? XGUI_PRESSED : XGUI_HIGHLIGHT;
        return nKey != HOTKEY_NONE;
    }
    case XGUIMSG_MOUSE:
        return MouseMessage(lP1, lP2, lP3);
    case XGUIMSG_ACTIVATE:
        if (lP3)
            m_lNextState = XGUI_HIGHLIGHT;
        else if (!m_pWindow || !(m_pWindow->m_lFlags & XWIN_DRAGGING))
            m_lNextState = XGUI_RELEASED;
        Invalidate();
        return 0;
    }
    return 0;
}

xlong CTitlebar::Draw(xlong lX, xlong lY, xlong lPage)
{
    if (!CanDraw(*this, lPage))
        return 0;
    if (m_lState == XGUI_HIDDEN)
        return 1;
    DrawPanel(*this, PlaceOf(*this, lX, lY), LookOf(m_lState), PANEL_BORDER);
    if (m_pCaption)
        m_pCaption->Draw(lX, lY, lPage);
    if (m_pClose && (m_lFlags & CNTRL_CLOSEBUTTON))
        m_pClose->Draw(lX, lY, lPage);
    return CControlBase::Draw(lX, lY, lPage);
}

xlong CTitlebar::Validate()
{
    CControlBase::Validate();
    if (m_pCaption)
        m_pCaption->Validate();
    if (m_pClose)
        m_pClose->Validate();
    return 1;
}

xlong CTitlebar::Validate(CRect *pArea, xlong lIndex)
{
    return CControlBase::Validate(pArea, lIndex);
}

void CTitlebar::ClearClipListIndex()
{
    CControlBase::ClearClipListIndex();
    if (m_pCaption)
        m_pCaption->ClearClipListIndex();
    if (m_pClose)
        m_pClose->ClearClipListIndex();
}

xlong CTitlebar::Create(char *pszTitle, xlong lWidth, xlong lHeight, CWindowBase *pWindow, xlong lFlags)
{
    CTitlebar::Destroy();
    BeginCreate(*this, XCNTRL_TITLEBAR, nullptr, { 0, 0, lWidth, lHeight }, 0, lFlags, 1);
    m_lState = XGUI_HIGHLIGHT;
    m_lNextState = XGUI_RELEASED;
    SetParent(pWindow->m_lID, pWindow);
    if (lFlags & CNTRL_CLOSEBUTTON)
    {
        m_pClose = XNEW(CButton);
        if (!m_pClose)
            return xError(XERR_MEMORY);
        m_pClose->Create(XCNTRL_CLOSE, nullptr, lWidth - m_lCloseSize - 1, 1, m_lCloseSize, m_lCloseSize, 0,
                         CNTRL_EXTRUDED | CNTRL_HASBITMAP | CNTRL_BMTRANS);
        if (CBitmap **ppClose = glb->m_pWinCtrl ? glb->m_pWinCtrl->m_pDefClose : nullptr)
            m_pClose->SetBitmap(ppClose[XLOOK_RELEASED], ppClose[XLOOK_PRESSED], ppClose[XLOOK_HIGHLIGHT],
                                ppClose[XLOOK_DISABLED]);
        m_pClose->SetParent(pWindow->m_lID, pWindow);
    }
    m_pCaption = XNEW(CStatic);
    if (!m_pCaption)
        return xError(XERR_MEMORY);
    m_pCaption->Create(pszTitle, 0, 0, lWidth - m_lCloseSize - 1, lHeight - 2, 0);
    PlaceParts();
    m_pCaption->SetFlag(CNTRL_TRANSPARENT | CNTRL_CENTERV);
    m_pCaption->SetParent(pWindow->m_lID, pWindow);
    m_pCaption->SetTextColor(TRGBA(255, 255, 255));
    TakeColors(*this, &CWinCtrl::m_pDefTitlebarColors);
    TakeCursor(*this, &CWinCtrl::m_ulCursorDefault);
    TakeTemplate(*this, &CWinCtrl::m_pDefaultTitlebar);
    return 1;
}

void CTitlebar::DrawExtruded(xlong lX, xlong lY, TCntrlColor *pColors)
{
    DrawButtonBevel(*this, PlaceOf(*this, lX, lY), pColors);
}

void CTitlebar::LosePress()
{
    m_lPressMode = PRESS_IDLE;
    const CAlive alive(*this);
    if (m_pClose)
        m_pClose->GuiMsgHandler(XGUIMSG_MOUSE, m_lX - 1, m_lY - 1, 0, nullptr);
    if (alive && m_pWindow && (m_pWindow->m_lFlags & XWIN_DRAGGING) && EndDrag())
        Invalidate();
}

void CTitlebar::PlaceParts()
{
    if (m_pCaption)
    {
        m_pCaption->SetPos(m_lX + m_Look.m_lBevel + 2, m_lY + m_Look.m_lBevel + 1);
        m_pCaption->SetSize(m_lWidth - m_lCloseSize - 1, m_lHeight - 2);
    }
    if (m_pClose)
        m_pClose->SetPos(m_lX + m_lWidth - m_lCloseSize - 1, m_lY + 1);
}

xlong CTitlebar::MouseMessage(xlong lX, xlong lY, xparam lP3)
{
    const bool bHeld = IsLeftOnly(lP3);
    bool bInside = IsInside(m_rMouseArea, lX, lY);
    xlong lResult = 0;
    const CAlive alive(*this);
    const xlong lClose = m_pClose ? m_pClose->GuiMsgHandler(XGUIMSG_MOUSE, lX, lY, lP3, nullptr) : 0;
    if (!alive)
        return 1;
    if (lClose == 1)
    {
        m_lPressMode = PRESS_IDLE;
        lResult = 1;
        bInside = false;
    }
    if (bInside)
    {
        if (m_lPressMode == PRESS_IDLE && !bHeld)
        {
            m_lPressMode = PRESS_ARMED;
            Invalidate();
            return 0;
        }
        if (m_lPressMode == PRESS_ARMED)
        {
            if (bHeld)
            {
                m_lNextState = XGUI_PRESSED;
                return DragStep(lX, lY);
            }
            if (EndDrag())
                Invalidate();
            return 1;
        }
    }
    else if (m_lPressMode != PRESS_HOTKEY)
    {
        // The drag stays alive while the pointer outruns the bar.
        if (m_lState == XGUI_PRESSED)
        {
            m_lNextState = XGUI_HIGHLIGHT;
            return DragStep(lX, lY);
        }
        if (!bHeld)
        {
            const xlong lPressMode = m_lPressMode;
            m_lPressMode = PRESS_IDLE;
            if (lPressMode != PRESS_IDLE && !EndDrag())
                return 1;
        }
    }
    Invalidate();
    return lResult;
}

// @return false when the title bar has died on the way
bool CTitlebar::EndDrag()
{
    const CAlive alive(*this);
    if (m_lState == XGUI_PRESSED)
        m_lNextState = IsWindowInactive(*this) ? XGUI_RELEASED : XGUI_HIGHLIGHT;
    if (m_pWindow)
        m_pWindow->GuiMsgHandler(XGUIMSG_DRAGEND, 0, 0, 0, nullptr);
    if (glb->m_pWinCtrl)
        glb->m_pWinCtrl->SendMessageA(XGUIMSG_DRAGEND, m_lWindowID, 0, 0, nullptr);
    return (bool)alive;
}

xlong CTitlebar::DragStep(xlong lX, xlong lY)
{
    const CAlive alive(*this);
    if (m_pWindow)
        m_pWindow->GuiMsgHandler(XGUIMSG_DRAGBEGIN, lX, lY, 1, nullptr);
    // With a y that is not 0 the message goes to the window once more, and the
    // host hears of a drag only in the first row.
    if (glb->m_pWinCtrl)
        glb->m_pWinCtrl->SendMessageA(XGUIMSG_DRAGBEGIN, m_lWindowID, lX, lY, nullptr);
    if (alive)
        Invalidate();
    return 1;
}
