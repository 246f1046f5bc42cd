// The steps that the Create of every class begins with.
#pragma once

#include "gui/look.h"
#include "gui/press.h"
#include "tarvix/globals.h"
#include "tarvix/winctrl.h"

#include <string.h>

/// Id, flags, place, size, hot key and bevel; text and mouse area; default font.
inline void BeginCreate(CControlBase &control, xlong lID, char *pszText, const TPlace &place, short sHotkey,
                        xlong lFlags, xlong lBevel)
{
    control.m_lID = lID;
    control.m_lFlags = lFlags;
    control.m_lX = place.lX;
    control.m_lY = place.lY;
    control.m_lWidth = place.lWidth;
    control.m_lHeight = place.lHeight;
    control.m_sHotkey = sHotkey;
    control.m_Look.m_lBevel = lBevel;
    control.m_Look.m_lBitmapX = control.m_Look.m_lBitmapY = 0;
    control.m_lPressMode = PRESS_IDLE;
    control.m_rMouseArea.SetXYWH(place.lX, place.lY, place.lWidth, place.lHeight);
    if (glb->m_pWinCtrl)
        control.m_Look.m_pFont = glb->m_pWinCtrl->m_pDefFont;
    control.CControlBase::SetText(pszText);
}

/// Default colours of a class, in the manager's order.
inline void TakeColors(CControlBase &control, TCntrlColor *const (CWinCtrl::*ppColors)[4])
{
    if (glb->m_pWinCtrl)
        memcpy(control.m_Look.m_pColors, glb->m_pWinCtrl->*ppColors, sizeof(control.m_Look.m_pColors));
}

/// Points the cursor at one of the manager's.
inline void TakeCursor(CControlBase &control, xulong CWinCtrl::*pCursor)
{
    if (glb->m_pWinCtrl)
        control.m_pCursor = &(glb->m_pWinCtrl->*pCursor);
}

/// The look of the template of a class, where one is set.
inline void TakeTemplate(CControlBase &control, CControlBase *CWinCtrl::*ppTemplate)
{
    if (glb->m_pWinCtrl && glb->m_pWinCtrl->*ppTemplate != &control)
        control.Copy(glb->m_pWinCtrl->*ppTemplate);
}

/// Makes a control that template of its class.
inline xlong BecomeTemplate(CControlBase &control, CControlBase *CWinCtrl::*ppTemplate)
{
    if (glb->m_pWinCtrl)
        glb->m_pWinCtrl->*ppTemplate = &control;
    return 1;
}
