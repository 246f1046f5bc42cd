#include "tarvix/control.h"

#include "gui/alive.h"
#include "gui/cntrlanim.h"
#include "gui/look.h"
#include "gui/press.h"
#include "tarvix/bitmap.h"
#include "tarvix/font.h"
#include "tarvix/frame.h"
#include "tarvix/globals.h"
#include "tarvix/strings.h"
#include "tarvix/winctrl.h"
#include "tarvix/window.h"

#include <algorithm>
#include <string.h>

namespace
{
const xlong s_lDefaultAlpha = 25;

// The control on the screen, as inclusive corners.
struct TScreenArea
{
    explicit TScreenArea(const CControlBase &control, xlong lGrow = 0)
    {
        const CWindowBase *const pWindow = control.m_pWindow;
        lLeft = control.m_lX + (pWindow ? pWindow->m_lX : 0) - lGrow;
        lTop = control.m_lY + (pWindow ? pWindow->m_lY : 0) - lGrow;
        lRight = lLeft + control.m_lWidth - 1 + 2 * lGrow;
        lBottom = lTop + control.m_lHeight - 1 + 2 * lGrow;
    }

    xlong lLeft, lTop, lRight, lBottom;
};

void RestoreBackground(const CControlBase &control)
{
    const TScreenArea area(control);
    if (IsSeen(control))
        glb->m_pScreen->AddClearAreaGui(area.lLeft, area.lTop, area.lRight, area.lBottom);
}

xlong BorderOf(xlong lFlags)
{
    return lFlags & CNTRL_BUTTONBORDER ? 1 : 0;
}

xlong AnimFlagOf(xlong lState)
{
    switch (lState)
    {
    case XGUI_PRESSED:
        return CNTRL_ANIMPRESSED;
    case XGUI_RELEASED:
        return CNTRL_ANIMNORMAL;
    case XGUI_HIGHLIGHT:
        return CNTRL_ANIMHIGHLIGHT;
    }
    return 0;
}

// The animation that runs in a state, or null.
TCntrlAnim *RunningAnim(const CControlBase &control, xlong lState)
{
    return control.m_lFlags & AnimFlagOf(lState) ? control.m_Look.m_pAnim[LookOf(lState)] : nullptr;
}

// What lies behind a see-through control has to be put back before it is drawn
// again, unless something opaque is drawn there anyway.
bool NeedsBackground(const CControlBase &control)
{
    if (!IsSeeThrough(control) || control.m_lID == XCNTRL_FRAME || !control.m_pWindow)
        return false;
    CWindowBase &window = *control.m_pWindow;
    if (window.m_lFlags & XWIN_ALPHA)
        return true;
    if ((control.m_lFlags & (CNTRL_HASBITMAP | CNTRL_BMTRANS)) == CNTRL_HASBITMAP)
        return false;
    const CFrame *const pFrame = window.m_lFlags & XWIN_FRAME ? window.Frame() : nullptr;
    return !pFrame || (pFrame->m_lFlags & (CNTRL_TRANSPARENT | CNTRL_HASBITMAP)) == CNTRL_TRANSPARENT;
}

bool IsWithin(const CRect &rc, const CRect &rcOuter)
{
    return rc.m_lLeft >= rcOuter.m_lLeft && rc.m_lTop >= rcOuter.m_lTop && rc.m_lRight <= rcOuter.m_lRight &&
           rc.m_lBottom <= rcOuter.m_lBottom;
}

// The area of both, if that is a rectangle with nothing else in it.
bool IsWholeTogether(const CRect &rc1, const CRect &rc2)
{
    const bool bColumn = rc1.m_lLeft == rc2.m_lLeft && rc1.m_lRight == rc2.m_lRight;
    const bool bRow = rc1.m_lTop == rc2.m_lTop && rc1.m_lBottom == rc2.m_lBottom;
    return bColumn || bRow || IsWithin(rc1, rc2) || IsWithin(rc2, rc1);
}

// Appends a piece to those that are to be redrawn. What is blended must not be
// blended twice, nor where nothing was put back: pieces of such a control grow
// together when that adds no pixel, and lie apart otherwise.
// @param lFrom  the pieces before it are known to lie apart
void AddPiece(CControlBase &control, CRect rcPiece, xlong lFrom)
{
    CRect *const pClips = control.m_rClip;
    xlong &lCount = control.m_lClipCount;
    for (xlong l = lFrom; (control.m_lFlags & CNTRL_ALPHA) && l < lCount;)
    {
        CRect rcClip = pClips[l], rcCommon;
        if (!rcCommon.Intersect(&rcClip, &rcPiece))
        {
            ++l;
            continue;
        }
        if (IsWholeTogether(rcClip, rcPiece))
        {
            rcPiece.Union(&rcClip, &rcPiece);
            pClips[l] = pClips[--lCount];
            l = lFrom;
            continue;
        }
        CRect rcRest;
        if (rcPiece.m_lTop < rcCommon.m_lTop)
        {
            rcRest.Set(rcPiece.m_lLeft, rcPiece.m_lTop, rcPiece.m_lRight, rcCommon.m_lTop - 1);
            AddPiece(control, rcRest, l + 1);
        }
        if (rcPiece.m_lBottom > rcCommon.m_lBottom)
        {
            rcRest.Set(rcPiece.m_lLeft, rcCommon.m_lBottom + 1, rcPiece.m_lRight, rcPiece.m_lBottom);
            AddPiece(control, rcRest, l + 1);
        }
        if (rcPiece.m_lLeft < rcCommon.m_lLeft)
        {
            rcRest.Set(rcPiece.m_lLeft, rcCommon.m_lTop, rcCommon.m_lLeft - 1, rcCommon.m_lBottom);
            AddPiece(control, rcRest, l + 1);
        }
        if (rcPiece.m_lRight > rcCommon.m_lRight)
        {
            rcRest.Set(rcCommon.m_lRight + 1, rcCommon.m_lTop, rcPiece.m_lRight, rcCommon.m_lBottom);
            AddPiece(control, rcRest, l + 1);
        }
        return;
    }
    if (lCount < CControlBase::MAX_CLIPS)
        ::new ((void *)&pClips[lCount++]) CRect(rcPiece);
    else
        // No room: the last piece grows, so that nothing stays undrawn.
        pClips[lCount - 1].Union(&pClips[lCount - 1], &rcPiece);
}

// Tiles that the clip leaves out altogether are passed over.
void DrawTiles(CBitmap &bitmap, const TPlace &place, xlong bTransparent)
{
    const xlong lWidth = bitmap.m_lWidth, lHeight = bitmap.m_lHeight;
    if (lWidth < 1 || lHeight < 1)
        return;
    const CRect rcClip = glb->m_pScreen->m_rcClip;
    const xlong lLastX = std::min(place.lWidth - 1, rcClip.m_lRight - place.lX) / lWidth;
    const xlong lLastY = std::min(place.lHeight - 1, rcClip.m_lBottom - place.lY) / lHeight;
    const xlong lFirstX = std::max<xlong>(0, rcClip.m_lLeft - place.lX) / lWidth;
    for (xlong lRow = std::max<xlong>(0, rcClip.m_lTop - place.lY) / lHeight; lRow <= lLastY; ++lRow)
        for (xlong lColumn = lFirstX; lColumn <= lLastX; ++lColumn)
            glb->m_pScreen->DrawBitmapScreenGui(&bitmap, 0, 0, place.lX + lColumn * lWidth, place.lY + lRow * lHeight,
                                                -1, -1, bTransparent, 0);
}

// A control that dies is no template any more.
void LeaveTemplates(const CControlBase *pControl)
{
    if (!glb || !glb->m_pWinCtrl)
        return;
    CWinCtrl &manager = *glb->m_pWinCtrl;
    for (CControlBase **ppTemplate : { &manager.m_pDefaultButton, &manager.m_pDefaultStatic,
                                       &manager.m_pDefaultTitlebar, &manager.m_pDefaultFrame })
        if (*ppTemplate == pControl)
            *ppTemplate = nullptr;
}

void FreeOwnText(CControlBase &control)
{
    if (control.m_bOwnBuffer)
    {
        XDELETE_ARRAY(control.m_pszText);
        control.m_pszText = nullptr;
        control.m_lBufferSize = 0;
    }
    control.m_bOwnBuffer = 0;
}
} // namespace

CControlBase::CControlBase()
    : m_pszText(nullptr), m_bMouseOver(0), m_lID(0), m_lWindowID(0), m_pWindow(nullptr), m_lX(0), m_lY(0), m_lWidth(0),
      m_lHeight(0), m_sHotkey(0), m_lFlags(0), m_lPressMode(PRESS_IDLE), m_bHighlightIfInactive(0), m_bOwnBuffer(0),
      m_lBufferSize(0), m_lSavedState(XGUI_NO_STATE), m_bDirty(0), m_Look(), m_bVisibleFlag(1), m_lMsgSystem(0),
      m_lState(XGUI_RELEASED), m_lNextState(XGUI_RELEASED), m_lPageDone(), m_pCursor(nullptr), m_lClipCount(0),
      m_pLinked(nullptr), m_pNextLinked(nullptr), m_pPrevLinked(nullptr)
{
    m_Look.m_lAlpha = s_lDefaultAlpha;
    m_Look.m_TextColor.Set(255, 255, 255, m_Look.m_TextColor.ucAlpha);
    for (xlong &lMode : m_Look.m_PMode.lMode)
        lMode = ANIM_LOOP;
    if (glb && glb->m_pWinCtrl)
        m_pCursor = &glb->m_pWinCtrl->m_ulCursorDefault;
}

CControlBase::~CControlBase()
{
    CAlive::OnDeath(*this);
    LeaveTemplates(this);
    // It may stand there more than once.
    if (CWindowBase *pWindow = m_pLinked)
        while (pWindow->RemoveCntrl(this))
            continue;
    LinkTo(nullptr);
    CControlBase::Destroy();
    FreeAnimLines(*this);
}

xlong CControlBase::Create(xlong lID)
{
    m_lID = lID;
    return 1;
}

xlong CControlBase::Destroy()
{
    RemoveAllTimers();
    m_lID = 0;
    FreeOwnText(*this);
    return 1;
}

void CControlBase::Copy(CControlBase *pFrom)
{
    if (!pFrom)
        return;
    // Lines of animation step with the control that they were made for.
    CLList *pLines[XLOOK_STATES];
    TAnimLine *pLine[XLOOK_STATES];
    memcpy(pLines, m_Look.m_pAnimLines, sizeof(pLines));
    memcpy(pLine, m_Look.m_pAnimLine, sizeof(pLine));
    m_Look = pFrom->m_Look;
    memcpy(m_Look.m_pAnimLines, pLines, sizeof(pLines));
    memcpy(m_Look.m_pAnimLine, pLine, sizeof(pLine));
    SetFlag(pFrom->m_lFlags);
}

void CControlBase::LoseHotKey()
{
    if (m_lPressMode != PRESS_HOTKEY)
        return;
    m_lNextState = XGUI_RELEASED;
    m_lPressMode = PRESS_IDLE;
    if (m_lState == XGUI_PRESSED)
        Invalidate();
    Tell(*this, XGUIMSG_RELEASED);
}

xlong CControlBase::SetFont(CFont *pFont, const TRGBA *pColor)
{
    m_Look.m_pFont = pFont;
    if (pColor)
        SetTextColor(*pColor);
    return 1;
}

xlong CControlBase::SetTextColor(TRGBA Color)
{
    m_Look.m_TextColor = Color;
    if (m_Look.m_pFont)
        m_Look.m_pFont->CreateColor(Color);
    return 1;
}

xlong CControlBase::SetBitmap(CBitmap *pReleased, CBitmap *pPressed, CBitmap *pHighlight, CBitmap *pDisabled)
{
    StoreLook(m_Look.m_pBitmap, pReleased, pPressed, pHighlight, pDisabled);
    return 1;
}

xlong CControlBase::SetColors(TCntrlColor *pReleased, TCntrlColor *pPressed, TCntrlColor *pHighlight,
                              TCntrlColor *pDisabled)
{
    m_Look.m_pColors[XLOOK_RELEASED] = pReleased;
    m_Look.m_pColors[XLOOK_PRESSED] = pPressed;
    m_Look.m_pColors[XLOOK_HIGHLIGHT] = pHighlight;
    m_Look.m_pColors[XLOOK_DISABLED] = pDisabled;
    return 1;
}

xlong CControlBase::SetBevelSize(xlong lPixels)
{
    m_Look.m_lBevel = lPixels;
    return 1;
}

xlong CControlBase::SetDefault()
{
    return 1;
}

xlong CControlBase::SetID(xlong lID)
{
    m_lID = lID;
    return 1;
}

xlong CControlBase::GetID()
{
    return m_lID;
}

xlong CControlBase::GetPos(xlong &lX, xlong &lY)
{
    lX = m_lX;
    lY = m_lY;
    return 1;
}

xlong CControlBase::SetPos(xlong lX, xlong lY)
{
    m_lX = lX;
    m_lY = lY;
    m_rMouseArea.SetXYWH(m_lX, m_lY, m_lWidth, m_lHeight);
    return 1;
}

xlong CControlBase::GetSize(xlong &lWidth, xlong &lHeight)
{
    lWidth = m_lWidth;
    lHeight = m_lHeight;
    return 1;
}

xlong CControlBase::SetSize(xlong lWidth, xlong lHeight)
{
    m_lWidth = lWidth;
    m_lHeight = lHeight;
    m_rMouseArea.SetXYWH(m_lX, m_lY, m_lWidth, m_lHeight);
    return 1;
}

xlong CControlBase::SetHotkey(short sKey)
{
    m_sHotkey = sKey;
    return 1;
}

short CControlBase::GetHotkey()
{
    return m_sHotkey;
}

xlong CControlBase::SetFlag(xlong lFlags)
{
    m_lFlags |= lFlags;
    return 1;
}

xlong CControlBase::GetFlags()
{
    return m_lFlags;
}

xlong CControlBase::GetParent(xlong *plWindowID, CWindowBase **ppWindow)
{
    if (!plWindowID)
        return 0;
    *plWindowID = m_lWindowID;
    if (ppWindow)
        *ppWindow = m_pWindow;
    return 1;
}

xlong CControlBase::SetParent(xlong lWindowID, CWindowBase *pWindow)
{
    m_lWindowID = lWindowID;
    m_pWindow = pWindow;
    if (pWindow)
        LinkTo(pWindow);
    if (pWindow && (pWindow->m_lFlags & XWIN_HIGHLIGHTIFINACTIVE))
        m_bHighlightIfInactive = 1;
    return 1;
}

void CControlBase::LinkTo(CWindowBase *pWindow)
{
    if (m_pLinked == pWindow)
        return;
    if (m_pLinked)
    {
        // A control knows one window alone: another one's list would keep it beyond its death.
        if (pWindow)
            while (m_pLinked->m_Cntrls.DeleteItem(this))
                continue;
        if (m_pLinked->m_pFocus == this)
            m_pLinked->m_pFocus = nullptr;
        if (m_pLinked->m_pMouseCntrl == this)
            m_pLinked->m_pMouseCntrl = nullptr;
        (m_pPrevLinked ? m_pPrevLinked->m_pNextLinked : m_pLinked->m_pFirstLinked) = m_pNextLinked;
        if (m_pNextLinked)
            m_pNextLinked->m_pPrevLinked = m_pPrevLinked;
    }
    m_pLinked = pWindow;
    m_pPrevLinked = nullptr;
    m_pNextLinked = pWindow ? pWindow->m_pFirstLinked : nullptr;
    if (m_pNextLinked)
        m_pNextLinked->m_pPrevLinked = this;
    if (pWindow)
        pWindow->m_pFirstLinked = this;
}

xlong CControlBase::RemoveFlag(xlong lFlags)
{
    m_lFlags &= ~lFlags;
    return 1;
}

// It may have died when it comes back.
xlong CControlBase::GuiMsgHandler(xlong lMsg, xlong lP1, xlong lP2, xparam lP3, void *pData)
{
    if (lMsg != XGUIMSG_MOUSE)
        return 0;
    const bool bInside = IsInside(m_rMouseArea, lP1, lP2);
    if (bInside != (m_bMouseOver != 0))
    {
        m_bMouseOver = bInside;
        Tell(*this, bInside ? XGUIMSG_MOUSEENTER : XGUIMSG_MOUSELEAVE);
    }
    return 0;
}

xlong CControlBase::Draw(xlong lX, xlong lY, xlong lPage)
{
    const bool bSeeThrough = (m_lFlags & CNTRL_TRANSPARENT) || ((m_lFlags & CNTRL_ALPHA) && m_lID != XCNTRL_FRAME);
    if (bSeeThrough && m_pWindow && (m_pWindow->m_lFlags & XWIN_ALPHA) && glb->m_pScreen)
        glb->m_pScreen->AddClearArea(lX + m_lX, lY + m_lY, lX + m_lX + m_lWidth, lY + m_lY + m_lHeight);
    m_bDirty = 0;
    return 1;
}

xlong CControlBase::Invalidate()
{
    if (m_lNextState == m_lState)
        return 1;
    if (const TCntrlAnim *pOld = RunningAnim(*this, m_lState))
        RemoveTimer(pOld->ulDelay);
    if (TCntrlAnim *pNew = RunningAnim(*this, m_lNextState))
    {
        AddTimer(pNew->ulDelay);
        pNew->First();
    }
    if (m_lNextState == XGUI_HIDDEN)
        RestoreBackground(*this);
    m_lState = m_lNextState;
    Validate();
    return 1;
}

xlong CControlBase::Validate()
{
    if (IsSeen(*this))
    {
        const TScreenArea area(*this, BorderOf(GetFlags()));
        glb->m_pScreen->AddShadowArea(area.lLeft, area.lTop, area.lRight, area.lBottom);
        if (NeedsBackground(*this))
            RestoreBackground(*this);
    }
    m_bDirty = 1;
    return 1;
}

xlong CControlBase::Validate(CRect *pArea, xlong lIndex)
{
    const TScreenArea area(*this, BorderOf(GetFlags()));
    CRect rcPiece;
    rcPiece.m_lLeft = std::max(area.lLeft, std::min(pArea->m_lLeft, pArea->m_lRight));
    rcPiece.m_lTop = std::max(area.lTop, std::min(pArea->m_lTop, pArea->m_lBottom));
    rcPiece.m_lRight = std::min(area.lRight, std::max(pArea->m_lLeft, pArea->m_lRight));
    rcPiece.m_lBottom = std::min(area.lBottom, std::max(pArea->m_lTop, pArea->m_lBottom));
    if (rcPiece.m_lLeft > rcPiece.m_lRight || rcPiece.m_lTop > rcPiece.m_lBottom)
        return 0;
    AddPiece(*this, rcPiece, 0);
    return 1;
}

xlong CControlBase::SetState(xlong lState)
{
    if (lState == m_lState)
        return 0;
    if (lState == XGUI_RELEASED)
    {
        if (m_lSavedState != XGUI_NO_STATE)
            lState = m_lSavedState;
        m_lSavedState = XGUI_NO_STATE;
    }
    else if (lState == XGUI_DISABLED)
    {
        if (m_lState != XGUI_PRESSED && m_lState != XGUI_HIDDEN)
            m_lSavedState = m_lState;
    }
    else
        m_lSavedState = XGUI_NO_STATE;
    m_lNextState = lState;
    Invalidate();
    return 1;
}

xlong CControlBase::GetState()
{
    return m_lState;
}

xlong CControlBase::SetAlpha(xlong lAlpha)
{
    m_Look.m_lAlpha = lAlpha;
    return 1;
}

xlong CControlBase::SetCntrlMessagingSystem(xlong lOwnerID)
{
    m_lMsgSystem = lOwnerID;
    return 1;
}

void CControlBase::ClearClipListIndex()
{
    m_lClipCount = 0;
}

xlong CControlBase::DrawBitmap(CBitmap *pBitmap, xlong lX, xlong lY)
{
    CScreenBase *const pScreen = glb->m_pScreen;
    if (!pScreen)
        return 1;
    const TPlace whole = { lX + m_Look.m_lBitmapX, lY + m_Look.m_lBitmapY, m_lWidth, m_lHeight };
    const TPlace place = whole.Inset(m_lFlags & CNTRL_EXTRUDED ? m_Look.m_lBevel : 0);
    if (!PushSubClip(place))
        return 1;
    const xlong bTransparent = m_lFlags & CNTRL_BMTRANS ? 1 : 0;
    const auto Draw = [&](CBitmap *pSource, CRect rcPart)
    {
        pScreen->DrawBitmapScreenGui(pSource, rcPart.m_lLeft, rcPart.m_lTop, place.lX, place.lY, rcPart.Width() + 1,
                                     rcPart.Height() + 1, bTransparent, 0);
    };
    if (!pBitmap)
    {
        if (m_Look.m_pSheet && m_Look.m_pSheetRect)
            Draw(m_Look.m_pSheet, *m_Look.m_pSheetRect);
    }
    else if (m_lFlags & CNTRL_TILED)
        DrawTiles(*pBitmap, place, bTransparent);
    else if (m_Look.m_rBkgClip.IsEmpty())
        pScreen->DrawBitmapScreenGui(pBitmap, 0, 0, place.lX, place.lY, m_lWidth, m_lHeight, bTransparent, 0);
    else
        Draw(pBitmap, m_Look.m_rBkgClip);
    pScreen->PopClip();
    return 1;
}

xlong CControlBase::GetTextBufferSize()
{
    return m_lBufferSize;
}

char *CControlBase::GetTextBuffer(xlong bValidate)
{
    if (bValidate == 1)
        Validate();
    return m_pszText;
}

char *CControlBase::AllocBuffer(xlong lSize)
{
    FreeOwnText(*this);
    m_pszText = lSize > 0 ? XNEW(char[(size_t)lSize]) : nullptr;
    m_lBufferSize = 0;
    if (!m_pszText)
        return nullptr;
    m_pszText[0] = 0;
    m_bOwnBuffer = 1;
    m_lBufferSize = lSize;
    return m_pszText;
}

xlong CControlBase::SetText(char *pszText)
{
    FreeOwnText(*this);
    m_pszText = pszText;
    FormatText();
    Validate();
    return 1;
}

xlong CControlBase::FormatText()
{
    if (!m_pszText || !*m_pszText)
        return 1;
    if (m_lFlags & CNTRL_INITIALCAPITAL)
    {
        xStrLowerCase(m_pszText);
        // All that sorts behind the letters too: accented ones lie 32 apart as well.
        if ((unsigned char)*m_pszText >= 97)
            *m_pszText = (char)(*m_pszText - 32);
    }
    else if (m_lFlags & CNTRL_UPPERCASE)
        xStrUpperCase(m_pszText);
    else if (m_lFlags & CNTRL_LOWERCASE)
        xStrLowerCase(m_pszText);
    return 1;
}

xlong CControlBase::GetSelected()
{
    return 0;
}

xlong CControlBase::SetSelected(xlong lID)
{
    return 0;
}

xlong CControlBase::GetMouseArea(CRect *pArea)
{
    *pArea = m_rMouseArea;
    return 1;
}

void CControlBase::SetBkgClip(CRect *pClip)
{
    m_Look.m_rBkgClip = *pClip;
    CRect &rc = m_Look.m_rBkgClip;
    if (rc.Width() + 1 > m_lWidth)
        rc.m_lRight = rc.m_lLeft + m_lWidth - 1;
    if (rc.Height() + 1 > m_lHeight)
        rc.m_lBottom = rc.m_lTop + m_lHeight - 1;
}

CRect CControlBase::GetBkgClip()
{
    return m_Look.m_rBkgClip;
}
