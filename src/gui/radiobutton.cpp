#include "tarvix/radiobutton.h"

#include "gui/alive.h"
#include "gui/checkparts.h"
#include "gui/cntrlanim.h"
#include "gui/press.h"
#include "tarvix/groupbox.h"

namespace
{
TCheckParts PartsOf(CRadiobutton &radio)
{
    return { radio, radio.m_pCheck, radio.m_lBoxWidth, radio.m_bClickDone, radio.m_bNoCaption, radio.m_pCaption };
}

void TellGroup(CRadiobutton &radio)
{
    if (radio.m_pGroup)
        radio.m_pGroup->GuiMsgHandler(XGUIMSG_RADIOSELECT, radio.m_lWindowID, radio.m_lID, 1, nullptr);
}

// @return false when the radio button has died on the way
bool Select(CRadiobutton &radio)
{
    const CAlive alive(radio);
    radio.m_lNextState = XGUI_CHECKED;
    TellGroup(radio);
    return alive && Tell(radio, XGUIMSG_CHECKED);
}
} // namespace

CRadiobutton::CRadiobutton()
    : m_pCheck(nullptr), m_lBoxWidth(0), m_bClickDone(0), m_pGroup(nullptr), m_bNoCaption(0), m_pCaption(nullptr)
{
}

CRadiobutton::~CRadiobutton()
{
    CGroupbox *const pGroup = m_pGroup;
    m_pGroup = nullptr; // the window's list may hold it too, and is left later
    while (pGroup && pGroup->Remove(this))
        continue;
    XDELETE(m_pCaption);
}

void CRadiobutton::TimerHandler(xulong ulInterval)
{
    TickAnimations(*this, CheckLookOf(m_lState), ulInterval);
}

xlong CRadiobutton::SetTextColor(TRGBA Color)
{
    CControlBase::SetTextColor(Color);
    if (m_pCaption)
        m_pCaption->SetTextColor(Color);
    return 1;
}

xlong CRadiobutton::SetPos(xlong lX, xlong lY)
{
    CControlBase::SetPos(lX, lY);
    PlaceCheckCaption(PartsOf(*this));
    return 1;
}

xlong CRadiobutton::SetSize(xlong lWidth, xlong lHeight)
{
    CControlBase::SetSize(lWidth, lHeight);
    PlaceCheckCaption(PartsOf(*this));
    return 1;
}

xlong CRadiobutton::GuiMsgHandler(xlong lMsg, xlong lP1, xlong lP2, xparam lP3, void *pData)
{
    if (m_lState == XGUI_DISABLED)
        return 0;
    switch (lMsg)
    {
    case XGUIMSG_UNCHECKED:
        m_lNextState = XGUI_UNCHECKED;
        m_bClickDone = 0;
        if (Tell(*this, XGUIMSG_UNCHECKED))
            Invalidate();
        return 1;
    case XGUIMSG_KEY:
        if (m_lState == XGUI_HIDDEN || !IsHotKeyDown(*this, lP3))
            return 0;
        // The mouse message that would show it can end at another radio button.
        if (Select(*this))
            Invalidate();
        return 1;
    case XGUIMSG_MOUSE:
        if (m_lState == XGUI_HIDDEN)
            return 0;
        break;
    default:
        return 0;
    }
    if (m_pCaption)
        m_pCaption->GuiMsgHandler(lMsg, lP1, lP2, lP3, pData);
    const int nMouse = FollowCheckMouse(PartsOf(*this), lP1, lP2, lP3);
    if (nMouse == CHECK_CLICKED && m_lState == XGUI_UNCHECKED)
    {
        m_bClickDone = 1;
        if (!Select(*this))
            return 1;
    }
    Invalidate();
    return nMouse != CHECK_PASSED && nMouse != CHECK_ARMED;
}

xlong CRadiobutton::Draw(xlong lX, xlong lY, xlong lPage)
{
    if (!CanDraw(*this, lPage))
        return 0;
    if (m_lState == XGUI_HIDDEN)
        return 1;
    DrawCheck(PartsOf(*this), lX, lY, lPage);
    return CControlBase::Draw(lX, lY, lPage);
}

xlong CRadiobutton::SetState(xlong lState)
{
    const xlong lResult = CControlBase::SetState(lState);
    if (lResult)
        TellGroup(*this);
    return lResult;
}

void CRadiobutton::ClearClipListIndex()
{
    CControlBase::ClearClipListIndex();
    if (m_pCaption)
        m_pCaption->ClearClipListIndex();
}

xlong CRadiobutton::Create(xlong lID, char *pszText, xlong lX, xlong lY, xlong lWidth, xlong lHeight, xlong lBoxWidth,
                           short sHotkey, xlong lFlags)
{
    return CreateCheck(PartsOf(*this), lID, pszText, { lX, lY, lWidth, lHeight }, lBoxWidth, sHotkey, lFlags);
}

xlong CRadiobutton::SetParent(xlong lWindowID, CWindowBase *pWindow, CGroupbox *pGroup)
{
    CControlBase::SetParent(lWindowID, pWindow);
    m_pGroup = pGroup;
    if (m_pCaption)
        m_pCaption->SetParent(lWindowID, pWindow);
    return 1;
}

void CRadiobutton::DrawExtruded(xlong lX, xlong lY, TCntrlColor *pColors)
{
    DrawButtonBevel(*this, CheckBoxPlace(PartsOf(*this), lX, lY), pColors);
}

void CRadiobutton::DrawExtrudedButton(xlong lX, xlong lY, TCntrlColor *pColors)
{
    DrawButtonBevel(*this, PlaceOf(*this, lX, lY), pColors);
}

void CRadiobutton::UpdateMouseArea()
{
    UpdateCheckArea(PartsOf(*this));
}
