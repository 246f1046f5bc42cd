#include "tarvix/static.h"

#include "gui/create.h"
#include "gui/press.h"

CStatic::CStatic() = default;

CStatic::~CStatic() = default;

xlong CStatic::Create(char *pszText, xlong lX, xlong lY, xlong lWidth, xlong lHeight, xulong ulFlags)
{
    BeginCreate(*this, XCNTRL_STATIC, pszText, { lX, lY, lWidth, lHeight }, 0, (xlong)ulFlags, 1);
    TakeColors(*this, &CWinCtrl::m_pDefButtonColors);
    TakeCursor(*this, &CWinCtrl::m_ulCursorDefault);
    TakeTemplate(*this, &CWinCtrl::m_pDefaultStatic);
    return 1;
}

xlong CStatic::SetDefault()
{
    return BecomeTemplate(*this, &CWinCtrl::m_pDefaultStatic);
}

xlong CStatic::GuiMsgHandler(xlong lMsg, xlong lP1, xlong lP2, xparam lP3, void *pData)
{
    if (m_lState == XGUI_DISABLED || m_lState == XGUI_HIDDEN)
        return 0;
    switch (lMsg)
    {
    case XGUIMSG_KEY:
        return DecorKey(*this, lP3);
    case XGUIMSG_MOUSE:
        return IsInside(m_rMouseArea, lP1, lP2);
    }
    return 0;
}

xlong CStatic::Draw(xlong lX, xlong lY, xlong lPage)
{
    if (!CanDraw(*this, lPage))
        return 0;
    if (m_lState != XGUI_HIDDEN)
    {
        const TPlace place = PlaceOf(*this, lX, lY);
        const TCntrlColor *const pColors = m_Look.m_pColors[XLOOK_RELEASED];
        DrawFace(*this, place, pColors ? &pColors->crFace : nullptr);
        DrawAlpha(*this, place);
        DrawLookBitmap(*this, place, XLOOK_RELEASED);
        const bool bExtruded = (m_lFlags & CNTRL_EXTRUDED) != 0;
        if (bExtruded)
            DrawBevel(*this, place, pColors, BEVEL_SUNKEN);
        TPlace text = place.Inset(bExtruded ? m_Look.m_lBevel + 1 : 0);
        ++text.lX;
        --text.lWidth;
        DrawControlText(*this, text, 0);
    }
    return CControlBase::Draw(lX, lY, lPage);
}
