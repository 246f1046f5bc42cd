#include "tarvix/groupbox.h"

#include "core/walk.h"
#include "gui/alive.h"
#include "gui/create.h"
#include "gui/press.h"
#include "tarvix/error.h"
#include "tarvix/radiobutton.h"

CGroupbox::CGroupbox() = default;

CGroupbox::~CGroupbox()
{
    // Its radio buttons stand in no window's list: without it they have no parent.
    for (CRadiobutton *pRadio : Each<CRadiobutton>(m_Radios))
        pRadio->SetParent(pRadio->m_lWindowID, nullptr, nullptr);
}

xlong CGroupbox::SetPos(xlong lX, xlong lY)
{
    const xlong lMoveX = lX - m_lX, lMoveY = lY - m_lY;
    CControlBase::SetPos(lX, lY);
    for (CRadiobutton *pRadio : Each<CRadiobutton>(m_Radios))
        pRadio->SetPos(pRadio->m_lX + lMoveX, pRadio->m_lY + lMoveY);
    return 1;
}

xlong CGroupbox::SetParent(xlong lWindowID, CWindowBase *pWindow)
{
    CControlBase::SetParent(lWindowID, pWindow);
    for (CRadiobutton *pRadio : Each<CRadiobutton>(m_Radios))
        pRadio->SetParent(lWindowID, pWindow, this);
    return 1;
}

xlong CGroupbox::GuiMsgHandler(xlong lMsg, xlong lP1, xlong lP2, xparam lP3, void *pData)
{
    if (m_lState == XGUI_DISABLED)
        return 0;
    const CAlive alive(*this);
    switch (lMsg)
    {
    case XGUIMSG_KEY:
        for (CListWalk walk(m_Radios); CRadiobutton *pRadio = walk.Next<CRadiobutton>();)
            pRadio->GuiMsgHandler(lMsg, lP1, lP2, lP3, pData);
        return alive ? DecorKey(*this, lP3) : 1;
    case XGUIMSG_MOUSE:
        for (CListWalk walk(m_Radios); CRadiobutton *pRadio = walk.Next<CRadiobutton>();)
        {
            const CAlive radioAlive(*pRadio);
            const xlong lAnswer = pRadio->GuiMsgHandler(lMsg, lP1, lP2, lP3, pData);
            if (!alive)
                return 1;
            if (lAnswer != 1)
                continue;
            if (radioAlive)
                m_pCursor = pRadio->m_pCursor;
            return 1;
        }
        TakeCursor(*this, &CWinCtrl::m_ulCursorDefault);
        return DecorMouse(*this, lP1, lP2, lP3);
    case XGUIMSG_RADIOSELECT:
        for (CListWalk walk(m_Radios); CRadiobutton *pRadio = walk.Next<CRadiobutton>();)
            if (pRadio->m_lID != lP2)
                pRadio->GuiMsgHandler(XGUIMSG_UNCHECKED, 0, 0, 0, nullptr);
        return 1;
    }
    return 0;
}

xlong CGroupbox::Draw(xlong lX, xlong lY, xlong lPage)
{
    if (!CanDraw(*this, lPage))
        return 0;
    if (m_lState == XGUI_HIDDEN)
        return 1;
    DrawControlText(*this, DrawPanel(*this, PlaceOf(*this, lX, lY), LookOf(m_lState), 0), 0);
    for (CRadiobutton *pRadio : Each<CRadiobutton>(m_Radios))
        pRadio->Draw(lX, lY, lPage);
    return CControlBase::Draw(lX, lY, lPage);
}

xlong CGroupbox::Validate()
{
    for (xlong &lDone : m_lPageDone)
    {
        lDone = 0;
        for (CRadiobutton *pRadio : Each<CRadiobutton>(m_Radios))
            pRadio->Validate();
    }
    return 1;
}

xlong CGroupbox::Validate(CRect *pArea, xlong lIndex)
{
    return CControlBase::Validate(pArea, lIndex);
}

void CGroupbox::ClearClipListIndex()
{
    CControlBase::ClearClipListIndex();
    for (CRadiobutton *pRadio : Each<CRadiobutton>(m_Radios))
        pRadio->ClearClipListIndex();
}

xlong CGroupbox::GetSelected()
{
    for (CRadiobutton *pRadio : Each<CRadiobutton>(m_Radios))
        if (pRadio->GetState() == XGUI_CHECKED)
            return pRadio->GetID();
    return -1;
}

xlong CGroupbox::SetSelected(xlong lID)
{
    xlong lFound = 0;
    for (CListWalk walk(m_Radios); CRadiobutton *pRadio = walk.Next<CRadiobutton>();)
    {
        const bool bThis = pRadio->GetID() == lID;
        pRadio->SetState(bThis ? XGUI_CHECKED : XGUI_UNCHECKED);
        lFound |= bThis;
    }
    return lFound;
}

xlong CGroupbox::Create(xlong lID, char *pszText, xlong lX, xlong lY, xlong lWidth, xlong lHeight, xlong lFlags)
{
    BeginCreate(*this, lID, pszText, { lX, lY, lWidth, lHeight }, 0, lFlags, 2);
    TakeColors(*this, &CWinCtrl::m_pDefFrameColors);
    TakeCursor(*this, &CWinCtrl::m_ulCursorDefault);
    return 1;
}

xlong CGroupbox::Add(CRadiobutton *pRadio)
{
    if (CGroupbox *pOther = pRadio->m_pGroup != this ? pRadio->m_pGroup : nullptr)
        while (pOther->Remove(pRadio))
            continue;
    if (!m_Radios.InsertLast(pRadio))
        return xError(XERR_MEMORY);
    pRadio->SetParent(m_lWindowID, m_pWindow, this);
    pRadio->SetPos(m_lX + pRadio->m_lX, m_lY + pRadio->m_lY);
    if (m_Radios.GetNumNodes() == 1)
        pRadio->SetState(XGUI_CHECKED);
    return 1;
}

xlong CGroupbox::Remove(CRadiobutton *pRadio)
{
    if (pRadio->m_pGroup == this)
        pRadio->SetParent(pRadio->m_lWindowID, nullptr, nullptr);
    return m_Radios.DeleteItem(pRadio);
}
