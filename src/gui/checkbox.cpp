#include "tarvix/checkbox.h"

#include "gui/alive.h"
#include "gui/checkparts.h"
#include "gui/cntrlanim.h"
#include "gui/press.h"

namespace
{
TCheckParts PartsOf(CCheckbox &box)
{
    return { box, box.m_pCheck, box.m_lBoxWidth, box.m_bClickDone, box.m_bNoCaption, box.m_pCaption };
}

// @return false when the box has died on the way
bool Toggle(CCheckbox &box)
{
    const bool bChecked = box.m_lState == XGUI_CHECKED;
    box.m_lNextState = bChecked ? XGUI_UNCHECKED : XGUI_CHECKED;
    return Tell(box, bChecked ? XGUIMSG_UNCHECKED : XGUIMSG_CHECKED);
}
} // namespace

CCheckbox::CCheckbox() : m_pCheck(nullptr), m_lBoxWidth(0), m_bClickDone(0), m_bNoCaption(0), m_pCaption(nullptr) {}

CCheckbox::~CCheckbox()
{
    XDELETE(m_pCaption);
}

void CCheckbox::TimerHandler(xulong ulInterval)
{
    TickAnimations(*this, CheckLookOf(m_lState), ulInterval);
}

void CCheckbox::Copy(CControlBase *pFrom)
{
    CControlBase::Copy(pFrom);
    if (const CCheckbox *pBox = dynamic_cast<CCheckbox *>(pFrom))
        m_pCheck = pBox->m_pCheck;
}

xlong CCheckbox::SetTextColor(TRGBA Color)
{
    CControlBase::SetTextColor(Color);
    if (m_pCaption)
        m_pCaption->SetTextColor(Color);
    return 1;
}

xlong CCheckbox::SetPos(xlong lX, xlong lY)
{
    CControlBase::SetPos(lX, lY);
    PlaceCheckCaption(PartsOf(*this));
    return 1;
}

xlong CCheckbox::SetSize(xlong lWidth, xlong lHeight)
{
    CControlBase::SetSize(lWidth, lHeight);
    PlaceCheckCaption(PartsOf(*this));
    return 1;
}

xlong CCheckbox::SetParent(xlong lWindowID, CWindowBase *pWindow)
{
    CControlBase::SetParent(lWindowID, pWindow);
    if (m_pCaption)
        m_pCaption->SetParent(lWindowID, pWindow);
    return 1;
}

xlong CCheckbox::GuiMsgHandler(xlong lMsg, xlong lP1, xlong lP2, xparam lP3, void *pData)
{
    if (m_lState == XGUI_HIDDEN)
        return 0;
    const CAlive alive(*this);
    CControlBase::GuiMsgHandler(lMsg, lP1, lP2, lP3, pData);
    if (!alive)
        return 1;
    if (m_lState == XGUI_DISABLED || (m_lFlags & CNTRL_READONLY))
        return 0;
    if (lMsg == XGUIMSG_KEY)
    {
        switch (TakeHotKey(*this, lP3))
        {
        case HOTKEY_DOWN:
            Toggle(*this);
            return 1;
        case HOTKEY_UP:
            Tell(*this, XGUIMSG_RELEASED);
            return 1;
        }
        return 0;
    }
    if (lMsg != XGUIMSG_MOUSE)
        return 0;
    xlong lResult = m_pCaption && m_pCaption->GuiMsgHandler(lMsg, lP1, lP2, lP3, pData) ? 1 : 0;
    const int nMouse = FollowCheckMouse(PartsOf(*this), lP1, lP2, lP3);
    if (nMouse == CHECK_CLICKED)
    {
        m_bClickDone = 1;
        if ((m_lState == XGUI_CHECKED || m_lState == XGUI_UNCHECKED) && !Toggle(*this))
            return 1;
    }
    if (nMouse != CHECK_PASSED)
        lResult = 1;
    Invalidate();
    return lResult;
}

xlong CCheckbox::Draw(xlong lX, xlong lY, xlong lPage)
{
    if (!CanDraw(*this, lPage))
        return 0;
    if (m_lState == XGUI_HIDDEN)
        return 1;
    DrawCheck(PartsOf(*this), lX, lY, lPage);
    return CControlBase::Draw(lX, lY, lPage);
}

void CCheckbox::ClearClipListIndex()
{
    CControlBase::ClearClipListIndex();
    if (m_pCaption)
        m_pCaption->ClearClipListIndex();
}

xlong CCheckbox::Create(xlong lID, char *pszText, xlong lX, xlong lY, xlong lWidth, xlong lHeight, xlong lBoxWidth,
                        short sHotkey, xlong lFlags)
{
    return CreateCheck(PartsOf(*this), lID, pszText, { lX, lY, lWidth, lHeight }, lBoxWidth, sHotkey, lFlags);
}

void CCheckbox::DrawExtruded(xlong lX, xlong lY, TCntrlColor *pColors)
{
    DrawButtonBevel(*this, CheckBoxPlace(PartsOf(*this), lX, lY), pColors);
}

void CCheckbox::DrawExtrudedButton(xlong lX, xlong lY, TCntrlColor *pColors)
{
    DrawButtonBevel(*this, PlaceOf(*this, lX, lY), pColors);
}

void CCheckbox::UpdateMouseArea()
{
    UpdateCheckArea(PartsOf(*this));
}
