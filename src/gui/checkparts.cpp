#include "gui/checkparts.h"

#include "gui/create.h"
#include "gui/press.h"
#include "tarvix/bitmap.h"
#include "tarvix/error.h"
#include "tarvix/font.h"

#include <algorithm>

xlong CreateCheck(const TCheckParts &parts, xlong lID, char *pszText, const TPlace &place, xlong lBoxWidth,
                  short sHotkey, xlong lFlags)
{
    CControlBase &control = parts.control;
    parts.bNoCaption = !lBoxWidth;
    parts.lBoxWidth = lBoxWidth;
    parts.bClickDone = 0;
    if (lBoxWidth)
        lFlags |= CNTRL_HASBITMAP | CNTRL_BMTRANS;
    BeginCreate(control, lID, pszText, place, sHotkey, lFlags, 1);
    control.m_lState = control.m_lNextState = XGUI_UNCHECKED;
    XDELETE(parts.pCaption);
    parts.pCaption = nullptr;
    if (lBoxWidth)
    {
        parts.pCaption = XNEW(CStatic);
        if (!parts.pCaption)
            return xError(XERR_MEMORY);
        parts.pCaption->Create(pszText, place.lX + lBoxWidth, place.lY, place.lWidth - lBoxWidth, place.lHeight, 0);
    }
    UpdateCheckArea(parts);
    TakeColors(control, &CWinCtrl::m_pDefButtonColors);
    TakeCursor(control, &CWinCtrl::m_ulCursorHand);
    parts.pCheck = glb->m_pWinCtrl ? glb->m_pWinCtrl->m_pDefCheck : nullptr;
    return 1;
}

void UpdateCheckArea(const TCheckParts &parts)
{
    CControlBase &control = parts.control;
    xlong lWidth = control.m_lWidth;
    xlong lHeight = control.m_lHeight;
    if (parts.pCaption)
    {
        CStatic &caption = *parts.pCaption;
        CFont *const pFont = caption.m_Look.m_pFont;
        const char *const pszText = caption.m_pszText;
        const bool bText = pFont && pszText && *pszText;
        const short sWidth = (short)caption.m_lWidth, sHeight = (short)caption.m_lHeight;
        const xlong lTextWidth = bText ? pFont->GetTextWidth(pszText, sWidth, sHeight, 0) : 0;
        const xlong lTextHeight = bText ? pFont->GetTextHeight(pszText, sWidth, sHeight, 0) : 0;
        lWidth = std::max(parts.lBoxWidth, caption.m_lX + lTextWidth - control.m_lX);
        lHeight = std::max(parts.lBoxWidth, caption.m_lY + lTextHeight - control.m_lY);
    }
    control.m_rMouseArea.SetXYWH(control.m_lX, control.m_lY, lWidth, lHeight);
}

void PlaceCheckCaption(const TCheckParts &parts)
{
    if (parts.pCaption)
    {
        const CControlBase &control = parts.control;
        parts.pCaption->SetPos(control.m_lX + parts.lBoxWidth, control.m_lY);
        parts.pCaption->SetSize(control.m_lWidth - parts.lBoxWidth, control.m_lHeight);
    }
    UpdateCheckArea(parts);
}

void DrawCheck(const TCheckParts &parts, xlong lX, xlong lY, xlong lPage)
{
    CControlBase &control = parts.control;
    const int nLook = CheckLookOf(control.m_lState);
    if (!parts.pCaption)
    {
        DrawButton(control, PlaceOf(control, lX, lY), nLook, PANEL_BORDER);
        DrawFocus(control, PlaceOf(control, lX, lY).Inset(control.m_Look.m_lBevel + 1));
        return;
    }
    const TPlace box = CheckBoxPlace(parts, lX, lY);
    const TCntrlColor *const pColors = nLook < 0 ? nullptr : control.m_Look.m_pColors[nLook];
    DrawFace(control, box, pColors ? &pColors->crFace : nullptr);
    if (control.m_lFlags & CNTRL_EXTRUDED)
        DrawButtonBevel(control, box, pColors);
    CBitmap *const pLookBitmap = nLook < 0 ? nullptr : control.m_Look.m_pBitmap[nLook];
    if (pLookBitmap)
        control.DrawBitmap(pLookBitmap, box.lX, box.lY);
    if (control.m_lState == XGUI_CHECKED && parts.pCheck)
    {
        const TPlace mark = box.Inset(control.m_lFlags & CNTRL_EXTRUDED ? control.m_Look.m_lBevel : 0);
        glb->m_pScreen->DrawBitmapScreenGui(parts.pCheck, 0, 0, mark.lX, mark.lY, -1, -1, 1, 0);
    }
    parts.pCaption->Draw(lX, lY, lPage);
    DrawFocus(control, box.Inset(control.m_lFlags & CNTRL_EXTRUDED ? control.m_Look.m_lBevel : 0));
}

TPlace CheckBoxPlace(const TCheckParts &parts, xlong lX, xlong lY)
{
    return { lX + parts.control.m_lX, lY + parts.control.m_lY, parts.lBoxWidth, parts.lBoxWidth };
}

int CheckLookOf(xlong lState)
{
    switch (lState)
    {
    case XGUI_CHECKED:
        return XLOOK_PRESSED;
    case XGUI_UNCHECKED:
        return XLOOK_RELEASED;
    case XGUI_DISABLED:
        return XLOOK_DISABLED;
    }
    return -1;
}

int FollowCheckMouse(const TCheckParts &parts, xlong lX, xlong lY, xparam lButtons)
{
    CControlBase &control = parts.control;
    const bool bHeld = IsLeftOnly(lButtons);
    if (!IsInside(control.m_rMouseArea, lX, lY))
    {
        if (control.m_lPressMode != PRESS_HOTKEY && !bHeld)
        {
            parts.bClickDone = 0;
            control.m_lPressMode = PRESS_IDLE;
        }
        return CHECK_PASSED;
    }
    if (control.m_lPressMode == PRESS_IDLE && !bHeld)
    {
        control.m_lPressMode = PRESS_ARMED;
        return CHECK_ARMED;
    }
    if (control.m_lPressMode != PRESS_ARMED)
        return CHECK_HELD;
    if (!bHeld)
    {
        parts.bClickDone = 0;
        return CHECK_WAITING;
    }
    return parts.bClickDone ? CHECK_HELD : CHECK_CLICKED;
}
