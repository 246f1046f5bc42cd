#include "gui/look.h"

#include "gui/press.h"
#include "tarvix/bitmap.h"
#include "tarvix/font.h"
#include "tarvix/globals.h"
#include "tarvix/window.h"

#include <algorithm>

int LookOf(xlong lState)
{
    switch (lState)
    {
    case XGUI_RELEASED:
        return XLOOK_RELEASED;
    case XGUI_PRESSED:
        return XLOOK_PRESSED;
    case XGUI_HIGHLIGHT:
        return XLOOK_HIGHLIGHT;
    case XGUI_DISABLED:
        return XLOOK_DISABLED;
    }
    return -1;
}

bool IsSeen(const CControlBase &control)
{
    return glb->m_pScreen && !(control.m_pWindow && (control.m_pWindow->m_lFlags & XWIN_HIDDEN));
}

bool CanDraw(const CControlBase &control, xlong lPage)
{
    return glb->m_pScreen && !((xulong)lPage < 3 && control.m_lPageDone[lPage] == 1);
}

bool PushSubClip(const TPlace &place)
{
    CScreenBase &screen = *glb->m_pScreen;
    const CRect &rc = screen.m_rcClip;
    const xlong lRight = place.lX + place.lWidth - 1, lBottom = place.lY + place.lHeight - 1;
    if (place.lWidth < 1 || place.lHeight < 1 || place.lX > rc.m_lRight || place.lY > rc.m_lBottom ||
        lRight < rc.m_lLeft || lBottom < rc.m_lTop || !screen.PushClip())
        return false;
    screen.SetSubClip(place.lX, place.lY, lRight, lBottom);
    return true;
}

void DrawFace(const CControlBase &control, const TPlace &place, const TRGBA *pFace)
{
    if (pFace && !IsSeeThrough(control))
        glb->m_pScreen->FillRect(place.lX, place.lY, place.lWidth, place.lHeight, *pFace);
}

void DrawAlpha(const CControlBase &control, const TPlace &place)
{
    if (control.m_lFlags & CNTRL_ALPHA)
        glb->m_pScreen->FillRectAlpha(place.lX, place.lY, place.lWidth, place.lHeight, control.m_Look.m_lAlpha);
}

void DrawBevel(const CControlBase &control, const TPlace &place, const TCntrlColor *pColors, int nBevel)
{
    if (!pColors)
        return;
    CScreenBase *const pScreen = glb->m_pScreen;
    const bool bSunken = nBevel == BEVEL_SUNKEN;
    const TRGBA crTopLeft = bSunken ? pColors->crDark : pColors->crLight;
    const TRGBA crBottomRight = bSunken ? pColors->crLight : pColors->crDark;
    xlong lLeft = place.lX, lTop = place.lY;
    xlong lRight = place.lX + place.lWidth - 1, lBottom = place.lY + place.lHeight - 1;
    // A bevel wider than half of the control would turn inside out.
    const xlong lSteps = std::min(control.m_Look.m_lBevel, (std::min(place.lWidth, place.lHeight) + 1) / 2);
    for (xlong l = 0; l < lSteps; ++l)
    {
        pScreen->DrawLine(lLeft + l, lTop + l, lRight - l, lTop + l, crTopLeft);
        pScreen->DrawLine(lLeft + l, lTop + l, lLeft + l, lBottom - l, crTopLeft);
        pScreen->DrawLine(lRight - l, lTop + l, lRight - l, lBottom - l, crBottomRight);
        pScreen->DrawLine(lLeft + l, lBottom - l, lRight - l, lBottom - l, crBottomRight);
    }
    if (lSteps < 1)
        return;
    const xlong lEnd = lSteps - 1;
    pScreen->DrawLine(lLeft, lTop, lLeft + lEnd, lTop + lEnd,
                      bSunken ? pColors->crCornerBottomRight : pColors->crCornerTopLeft);
    pScreen->DrawLine(lRight - lEnd, lBottom - lEnd, lRight, lBottom,
                      bSunken ? pColors->crCornerTopLeft : pColors->crCornerBottomRight);
    // From left to right: lines against their long axis come out mirrored.
    pScreen->DrawLine(lRight - lEnd, lTop + lEnd, lRight, lTop, pColors->crCornerMiddle);
    pScreen->DrawLine(lLeft, lBottom, lLeft + lEnd, lBottom - lEnd, pColors->crCornerMiddle);
}

void DrawButtonBevel(const CControlBase &control, const TPlace &place, const TCntrlColor *pColors)
{
    if (pColors && (control.m_lFlags & CNTRL_BUTTONBORDER))
    {
        CScreenBase *const pScreen = glb->m_pScreen;
        const xlong lLeft = place.lX - 1, lTop = place.lY - 1;
        const xlong lRight = place.lX + place.lWidth, lBottom = place.lY + place.lHeight;
        pScreen->DrawLine(lLeft, lTop, lRight, lTop, pColors->crBorder);
        pScreen->DrawLine(lLeft, lTop, lLeft, lBottom, pColors->crBorder);
        pScreen->DrawLine(lRight, lTop, lRight, lBottom, pColors->crBorder);
        pScreen->DrawLine(lLeft, lBottom, lRight, lBottom, pColors->crBorder);
    }
    DrawBevel(control, place, pColors, BEVEL_RAISED);
}

void DrawLookBitmap(CControlBase &control, const TPlace &place, int nLook)
{
    if (nLook < 0 || !(control.m_lFlags & CNTRL_HASBITMAP))
        return;
    CBitmap *const pBitmap = control.m_Look.m_pBitmap[nLook];
    if (pBitmap || control.m_Look.m_pSheet)
        control.DrawBitmap(pBitmap, place.lX, place.lY);
}

void DrawControlText(const CControlBase &control, const TPlace &place, xlong lStyle)
{
    const char *const pszText = control.m_pszText;
    if (!pszText || !*pszText || !control.m_Look.m_pFont || !PushSubClip(place))
        return;
    control.m_Look.m_pFont->Text((CBitmap *)(xparam)FONT_TARGET_GUI, pszText, (short)place.lX, (short)place.lY,
                                 (short)place.lWidth, (short)place.lHeight, &control.m_Look.m_TextColor, nullptr,
                                 lStyle);
    glb->m_pScreen->PopClip();
}

xlong TextStyle(xlong lFlags)
{
    return (lFlags & CNTRL_CENTERH ? FONT_CENTERH : 0) | (lFlags & CNTRL_CENTERV ? FONT_CENTERV : 0);
}

TCntrlColor *ColorsOf(const CControlBase &control, int nLook)
{
    return nLook < 0 ? nullptr : control.m_Look.m_pColors[nLook];
}

TPlace DrawPanel(CControlBase &control, const TPlace &place, int nLook, int nOptions)
{
    const TCntrlColor *const pColors = ColorsOf(control, nLook);
    DrawFace(control, place, pColors ? &pColors->crFace : nullptr);
    if (nOptions & PANEL_ALPHA)
        DrawAlpha(control, place);
    const bool bExtruded = (control.m_lFlags & CNTRL_EXTRUDED) != 0;
    if (bExtruded && (nOptions & PANEL_BORDER))
        DrawButtonBevel(control, place, pColors);
    else if (bExtruded)
        DrawBevel(control, place, pColors, BEVEL_RAISED);
    DrawLookBitmap(control, place, nLook);
    return place.Inset(bExtruded ? control.m_Look.m_lBevel : 0);
}

void DrawButton(CControlBase &control, const TPlace &place, int nLook, int nOptions)
{
    TPlace text = DrawPanel(control, place, nLook, nOptions);
    if (nLook == XLOOK_PRESSED)
    {
        ++text.lX;
        ++text.lY;
        --text.lWidth;
        --text.lHeight;
    }
    DrawControlText(control, text, TextStyle(control.m_lFlags));
}

void DrawFocus(const CControlBase &control, const TPlace &place)
{
    if (place.lWidth < 3 || place.lHeight < 3 || !IsFocusShown(control))
        return;
    // Dark and light in turn, to be seen on every ground; counted on the screen,
    // so that a mark drawn in pieces stays one.
    const TCntrlColor *const pColors = ColorsOf(control, XLOOK_RELEASED);
    const TRGBA Dark = pColors ? pColors->crDark : TRGBA(0, 0, 0);
    const TRGBA Light = pColors ? pColors->crLight : TRGBA(255, 255, 255);
    const xlong lRight = place.lX + place.lWidth - 1, lBottom = place.lY + place.lHeight - 1;
    const auto Dot = [&](xlong lX, xlong lY)
    { glb->m_pScreen->DrawLine(lX, lY, lX, lY, (lX + lY) & 1 ? Light : Dark); };
    for (xlong lX = place.lX; lX <= lRight; ++lX)
    {
        Dot(lX, place.lY);
        Dot(lX, lBottom);
    }
    for (xlong lY = place.lY + 1; lY < lBottom; ++lY)
    {
        Dot(place.lX, lY);
        Dot(lRight, lY);
    }
}

xlong DrawButtonControl(CControlBase &control, xlong lX, xlong lY, xlong lPage, int nOptions)
{
    if (!CanDraw(control, lPage))
        return 0;
    if (control.m_lState == XGUI_HIDDEN)
        return 1;
    const TPlace place = PlaceOf(control, lX, lY);
    DrawButton(control, place, LookOf(control.m_lState), nOptions);
    DrawFocus(control, place.Inset(control.m_lFlags & CNTRL_EXTRUDED ? control.m_Look.m_lBevel + 1 : 1));
    return control.CControlBase::Draw(lX, lY, lPage);
}
