#include "gui/create.h"
#include "gui/press.h"
#include "tarvix/button.h"

namespace
{
const TPressRules s_Knob = { CNTRL_TRANSPARENT | CNTRL_HASBITMAP, true, false, false };
} // namespace

CDragbutton::CDragbutton() = default;

CDragbutton::~CDragbutton() = default;

xlong CDragbutton::Create(xlong lID, char *pszText, xlong lX, xlong lY, xlong lWidth, xlong lHeight, short sHotkey,
                          xlong lFlags)
{
    BeginCreate(*this, lID, pszText, { lX, lY, lWidth, lHeight }, sHotkey, lFlags, 1);
    TakeColors(*this, &CWinCtrl::m_pDefButtonColors);
    TCntrlColor **const ppColors = m_Look.m_pColors;
    SetColors(ppColors[XLOOK_RELEASED], ppColors[XLOOK_RELEASED], ppColors[XLOOK_RELEASED], ppColors[XLOOK_DISABLED]);
    TakeCursor(*this, &CWinCtrl::m_ulCursorDefault);
    return 1;
}

xlong CDragbutton::SetDefault()
{
    return BecomeTemplate(*this, &CWinCtrl::m_pDefaultButton);
}

xlong CDragbutton::GuiMsgHandler(xlong lMsg, xlong lP1, xlong lP2, xparam lP3, void *pData)
{
    return ButtonMessage(*this, s_Knob, lMsg, lP1, lP2, lP3);
}

xlong CDragbutton::Draw(xlong lX, xlong lY, xlong lPage)
{
    return DrawButtonControl(*this, lX, lY, lPage, 0);
}

void CDragbutton::DrawExtruded(xlong lX, xlong lY, TCntrlColor *pColors)
{
    DrawBevel(*this, PlaceOf(*this, lX, lY), pColors, BEVEL_RAISED);
}
