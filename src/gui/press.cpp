#include "gui/press.h"

#include "gui/alive.h"
#include "tarvix/bitmap.h"
#include "tarvix/globals.h"
#include "tarvix/keyboard.h"
#include "tarvix/winctrl.h"
#include "tarvix/window.h"

#include <string.h>

namespace
{
bool IsLetter(unsigned short usKey)
{
    return (usKey >= 'A' && usKey <= 'Z') || (usKey >= 'a' && usKey <= 'z');
}

xlong ButtonKey(CControlBase &control, xparam lP3)
{
    switch (TakeHotKey(control, lP3))
    {
    case HOTKEY_DOWN:
        control.m_lNextState = XGUI_PRESSED;
        control.Invalidate();
        Tell(control, XGUIMSG_PRESSED);
        return 1;
    case HOTKEY_UP:
        // At once: the next mouse message would take it for a press that the
        // pointer has left, and light it.
        control.m_lNextState = XGUI_RELEASED;
        control.Invalidate();
        Tell(control, XGUIMSG_RELEASED);
        return 1;
    }
    return 0;
}

xlong ButtonMouse(CControlBase &control, const TPressRules &rules, xlong lX, xlong lY, xparam lButtons)
{
    const bool bHeld = IsLeftOnly(lButtons);
    bool bInside = IsInside(control.m_rMouseArea, lX, lY);
    if (bInside && IsSeeThroughButton(control, rules.lSeeThroughFlags))
        bInside = !IsOnKeyColour(control, lX, lY);

    // In a window that shows no highlight the button falls back each time; that
    // the pointer came is told once all the same.
    const bool bShown = !IsWindowInactive(control) || (rules.bInactiveHighlights && control.m_bHighlightIfInactive);
    const bool bCame = bInside && !control.m_bMouseOver;
    control.m_bMouseOver = bInside;

    xlong lResult = 0;
    const xlong lState = control.m_lState;
    if (bInside)
    {
        if (lState != XGUI_PRESSED && (rules.bHeldHighlights || !bHeld))
        {
            control.m_lNextState = XGUI_HIGHLIGHT;
            lResult = 1;
            if (lState == XGUI_RELEASED && rules.bTellsHighlight && (bShown || bCame) &&
                !Tell(control, XGUIMSG_HIGHLIGHT))
                return 1;
        }
        // A press that began elsewhere finds the button idle and leaves it alone.
        if (control.m_lPressMode == PRESS_IDLE && !bHeld)
            control.m_lPressMode = PRESS_ARMED;
        if (control.m_lPressMode == PRESS_ARMED)
        {
            if (bHeld)
            {
                // In every frame of the press: sliders count on it.
                control.m_lNextState = XGUI_PRESSED;
                lResult = 1;
                if (!Tell(control, XGUIMSG_PRESSED))
                    return 1;
            }
            else if (lState == XGUI_PRESSED)
            {
                control.m_lNextState = XGUI_HIGHLIGHT;
                lResult = 1;
                if (!Tell(control, XGUIMSG_RELEASED))
                    return 1;
            }
        }
    }
    else if (control.m_lPressMode != PRESS_HOTKEY)
    {
        if (lState == XGUI_PRESSED)
        {
            control.m_lNextState = XGUI_HIGHLIGHT;
            lResult = 1;
        }
        else if (bHeld && lState == XGUI_HIGHLIGHT)
        {
            if (control.m_lPressMode == PRESS_IDLE)
            {
                if (rules.bTellsHighlight && !Tell(control, XGUIMSG_UNHIGHLIGHT))
                    return 1;
                control.m_lNextState = XGUI_RELEASED;
            }
            lResult = 1;
        }
        else if (!bHeld)
        {
            if (lState == XGUI_HIGHLIGHT && rules.bTellsHighlight && !Tell(control, XGUIMSG_UNHIGHLIGHT))
                return 1;
            control.m_lNextState = XGUI_RELEASED;
            control.m_lPressMode = PRESS_IDLE;
        }
    }

    if (control.m_lNextState == XGUI_HIGHLIGHT && IsWindowInactive(control) &&
        !(rules.bInactiveHighlights && control.m_bHighlightIfInactive))
    {
        control.m_lNextState = XGUI_RELEASED;
        // It was lit, or has just told that it would be.
        if (rules.bTellsHighlight && (bCame || lState != XGUI_RELEASED) && !Tell(control, XGUIMSG_UNHIGHLIGHT))
            return 1;
    }
    control.Invalidate();
    return lResult;
}
} // namespace

bool HasGuiOption(xlong lOption)
{
    return glb && glb->m_pWinCtrl && (glb->m_pWinCtrl->GetOptions() & lOption);
}

bool IsKeyOf(const CControlBase &control, unsigned short usKey)
{
    const unsigned short usHotkey = (unsigned short)control.m_sHotkey;
    if (usKey == usHotkey)
        return true;
    if ((usKey ^ usHotkey) == ('a' ^ 'A') && IsLetter(usKey) && HasGuiOption(XGUIOPT_CASE))
        return true;
    return usKey == XKEY_SPACE && IsFocusShown(control);
}

bool IsFocusShown(const CControlBase &control)
{
    return control.m_pWindow && control.m_pWindow->m_pFocus == &control && (control.m_lFlags & CNTRL_TABSTOP) &&
           HasGuiOption(XGUIOPT_FOCUS);
}

int TakeHotKey(CControlBase &control, xparam lP3)
{
    const TQueueChar *const pKey = (const TQueueChar *)lP3;
    if (!pKey || !IsKeyOf(control, pKey->usKey))
        return HOTKEY_NONE;
    if (pKey->lFlags & XKEYF_DOWN)
    {
        control.m_lPressMode = PRESS_HOTKEY;
        return HOTKEY_DOWN;
    }
    if (control.m_lPressMode != PRESS_HOTKEY)
        return HOTKEY_NONE;
    control.m_lPressMode = PRESS_IDLE;
    return HOTKEY_UP;
}

bool IsHotKeyDown(const CControlBase &control, xparam lP3)
{
    const TQueueChar *const pKey = (const TQueueChar *)lP3;
    return pKey && (pKey->lFlags & XKEYF_DOWN) && IsKeyOf(control, pKey->usKey);
}

bool Tell(CControlBase &control, xlong lMsg)
{
    const CAlive alive(control);
    if (glb->m_pWinCtrl)
        glb->m_pWinCtrl->SendMessageA(lMsg, control.m_lWindowID, control.m_lID, control.m_lMsgSystem, nullptr);
    return (bool)alive;
}

bool IsOnKeyColour(const CControlBase &control, xlong lX, xlong lY)
{
    const CBitmap *const pBitmap = control.m_Look.m_pBitmap[XLOOK_RELEASED];
    if (!pBitmap || !pBitmap->m_pData)
        return false;
    lX -= control.m_lX;
    lY -= control.m_lY;
    if (lX < 0 || lY < 0 || lX >= pBitmap->m_lWidth || lY >= pBitmap->m_lHeight)
        return true;
    if (pBitmap->m_lDepth != 16 && pBitmap->m_lDepth != 24)
        return false;
    const size_t ulBytes = (size_t)pBitmap->m_lDepth / 8;
    const unsigned char *const pPixel = pBitmap->m_pData + (size_t)lY * pBitmap->m_lPitch + (size_t)lX * ulBytes;
    return memcmp(pPixel, pBitmap->m_pData, ulBytes) == 0;
}

bool IsSeeThroughButton(const CControlBase &control, xlong lWanted)
{
    return (control.m_lFlags & lWanted) == lWanted && !(control.m_lFlags & (CNTRL_EXTRUDED | CNTRL_BTNTRANSCLICK));
}

xlong ButtonMessage(CControlBase &control, const TPressRules &rules, xlong lMsg, xlong lP1, xlong lP2, xparam lP3)
{
    if (control.m_lState == XGUI_DISABLED || control.m_lState == XGUI_HIDDEN)
        return 0;
    switch (lMsg)
    {
    case XGUIMSG_KEY:
        return ButtonKey(control, lP3);
    case XGUIMSG_MOUSE:
        return ButtonMouse(control, rules, lP1, lP2, lP3);
    }
    return 0;
}

xlong DecorKey(CControlBase &control, xparam lP3)
{
    const int nKey = TakeHotKey(control, lP3);
    if (nKey == HOTKEY_DOWN)
        control.m_lNextState = XGUI_RELEASED;
    return nKey != HOTKEY_NONE;
}

xlong DecorMouse(CControlBase &control, xlong lX, xlong lY, xparam lButtons)
{
    xlong lResult = 0;
    const bool bHeld = IsLeftOnly(lButtons);
    if (IsInside(control.m_rMouseArea, lX, lY))
    {
        lResult = 1;
        if (control.m_lPressMode == PRESS_IDLE && !bHeld)
            control.m_lPressMode = PRESS_ARMED;
        if (control.m_lPressMode == PRESS_ARMED && bHeld)
            control.m_lState = control.m_lNextState = XGUI_PRESSED;
    }
    else if (control.m_lPressMode != PRESS_HOTKEY)
    {
        if (control.m_lState == XGUI_PRESSED && bHeld)
            lResult = 1;
        else if (control.m_lState == XGUI_PRESSED)
        {
            control.m_lNextState = XGUI_RELEASED;
            control.m_lPressMode = PRESS_IDLE;
        }
    }
    DropInactiveHighlight(control);
    control.Invalidate();
    return lResult;
}

bool IsWindowInactive(const CControlBase &control)
{
    return control.m_pWindow && !control.m_pWindow->m_bActive;
}

void DropInactiveHighlight(CControlBase &control)
{
    if (control.m_lNextState == XGUI_HIGHLIGHT && !control.m_bHighlightIfInactive && IsWindowInactive(control))
        control.m_lNextState = XGUI_RELEASED;
}
