#include "tarvix/frame.h"

#include "gui/create.h"
#include "gui/press.h"
#include "tarvix/titlebar.h"
#include "tarvix/window.h"

namespace
{
// Clicks on the line around a frame are meant for it.
void SetWideMouseArea(CFrame &frame)
{
    frame.m_rMouseArea.Set(frame.m_lX - 1, frame.m_lY - 1, frame.m_lX + frame.m_lWidth, frame.m_lY + frame.m_lHeight);
}
} // namespace

CFrame::CFrame() = default;

CFrame::~CFrame() = default;

xlong CFrame::SetDefault()
{
    return BecomeTemplate(*this, &CWinCtrl::m_pDefaultFrame);
}

xlong CFrame::SetPos(xlong lX, xlong lY)
{
    m_lX = lX;
    m_lY = lY;
    SetWideMouseArea(*this);
    return 1;
}

xlong CFrame::SetSize(xlong lWidth, xlong lHeight)
{
    m_lWidth = lWidth;
    m_lHeight = lHeight;
    SetWideMouseArea(*this);
    return 1;
}

xlong CFrame::GuiMsgHandler(xlong lMsg, xlong lP1, xlong lP2, xparam lP3, void *pData)
{
    if (m_lState == XGUI_DISABLED)
        return 0;
    switch (lMsg)
    {
    case XGUIMSG_KEY:
        return DecorKey(*this, lP3);
    case XGUIMSG_MOUSE:
    {
        const xlong lResult = DecorMouse(*this, lP1, lP2, lP3);
        const bool bThrough = (m_lFlags & (CNTRL_TRANSPARENT | CNTRL_HASBITMAP)) == CNTRL_TRANSPARENT;
        return bThrough ? 0 : lResult;
    }
    }
    return 0;
}

xlong CFrame::Draw(xlong lX, xlong lY, xlong lPage)
{
    if (!CanDraw(*this, lPage))
        return 0;
    if (m_lState == XGUI_HIDDEN)
        return 1;
    DrawControlText(*this, DrawPanel(*this, PlaceOf(*this, lX, lY), LookOf(m_lState), PANEL_BORDER | PANEL_ALPHA), 0);
    return CControlBase::Draw(lX, lY, lPage);
}

xlong CFrame::Create(char *pszText, xlong lWidth, xlong lHeight, CWindowBase *pWindow)
{
    BeginCreate(*this, XCNTRL_FRAME, pszText, { 0, 0, lWidth, lHeight }, 0, CNTRL_FRAME, 2);
    SetParent(pWindow->m_lID, pWindow);
    CTitlebar *const pTitlebar = pWindow->m_lFlags & XWIN_TITLEBAR ? pWindow->Titlebar() : nullptr;
    if (pTitlebar)
    {
        pTitlebar->SetPos(1, 1);
        pTitlebar->SetSize(lWidth - 2, pTitlebar->m_lHeight);
    }
    if (pWindow->m_lFlags & XWIN_BORDER)
    {
        const xlong lBevel = m_Look.m_lBevel;
        SetFlag(CNTRL_EXTRUDED);
        if (pTitlebar)
        {
            pTitlebar->SetPos(lBevel + 1, lBevel + 1);
            pTitlebar->SetSize(lWidth - (2 * lBevel + 2), pTitlebar->m_lHeight);
        }
    }
    if (pWindow->m_lFlags & XWIN_ALPHA)
        SetFlag(CNTRL_ALPHA | CNTRL_TRANSPARENT);
    SetWideMouseArea(*this);
    TakeColors(*this, &CWinCtrl::m_pDefFrameColors);
    TakeCursor(*this, &CWinCtrl::m_ulCursorDefault);
    TakeTemplate(*this, &CWinCtrl::m_pDefaultFrame);
    return 1;
}

void CFrame::DrawExtruded(xlong lX, xlong lY, TCntrlColor *pColors)
{
    DrawButtonBevel(*this, PlaceOf(*this, lX, lY), pColors);
}
