#include "tarvix/button.h"

#include "gui/create.h"
#include "gui/press.h"

namespace
{
const TPressRules s_Button = { CNTRL_TRANSPARENT | CNTRL_HASBITMAP | CNTRL_BMTRANS, false, true, true };
} // namespace

CButton::CButton() = default;

CButton::~CButton() = default;

xlong CButton::Create(xlong lID, char *pszText, xlong lX, xlong lY, xlong lWidth, xlong lHeight, short sHotkey,
                      xlong lFlags)
{
    BeginCreate(*this, lID, pszText, { lX, lY, lWidth, lHeight }, sHotkey, lFlags, 1);
    TakeColors(*this, &CWinCtrl::m_pDefButtonColors);
    TakeCursor(*this, &CWinCtrl::m_ulCursorHand);
    TakeTemplate(*this, &CWinCtrl::m_pDefaultButton);
    return 1;
}

xlong CButton::SetDefault()
{
    return BecomeTemplate(*this, &CWinCtrl::m_pDefaultButton);
}

xlong CButton::GuiMsgHandler(xlong lMsg, xlong lP1, xlong lP2, xparam lP3, void *pData)
{
    // The others concern no button, and each change of the active window sends one to all of them.
    if (lMsg != XGUIMSG_KEY && lMsg != XGUIMSG_MOUSE)
        return 0;
    return ButtonMessage(*this, s_Button, lMsg, lP1, lP2, lP3);
}

xlong CButton::Draw(xlong lX, xlong lY, xlong lPage)
{
    return DrawButtonControl(*this, lX, lY, lPage, PANEL_BORDER);
}

void CButton::DrawExtruded(xlong lX, xlong lY, TCntrlColor *pColors)
{
    DrawButtonBevel(*this, PlaceOf(*this, lX, lY), pColors);
}
