#pragma once

#include "tarvix/control.h"

class CGroupbox;
class CStatic;

/// One of several choices of a CGroupbox; looks and states as of CCheckbox. A
/// click on the selected one does nothing.
class TARVIX_API CRadiobutton : public CControlBase
{
public:
    CRadiobutton();
    /// Leaves its group.
    ~CRadiobutton() override;

    void TimerHandler(xulong ulInterval) override;
    xlong SetTextColor(TRGBA Color) override;
    xlong SetPos(xlong lX, xlong lY) override;
    xlong SetSize(xlong lWidth, xlong lHeight) override;
    xlong GuiMsgHandler(xlong lMsg, xlong lP1, xlong lP2, xparam lP3, void *pData) override;
    xlong Draw(xlong lX, xlong lY, xlong lPage) override;
    /// Any change makes the other radio buttons of the group yield.
    xlong SetState(xlong lState) override;
    void ClearClipListIndex() override;

    using CControlBase::Create;
    using CControlBase::SetParent;
    /// As of CCheckbox.
    xlong Create(xlong lID, char *pszText, xlong lX, xlong lY, xlong lWidth, xlong lHeight, xlong lBoxWidth,
                 short sHotkey, xlong lFlags);
    xlong SetParent(xlong lWindowID, CWindowBase *pWindow, CGroupbox *pGroup);
    void DrawExtruded(xlong lX, xlong lY, TCntrlColor *pColors);
    void DrawExtrudedButton(xlong lX, xlong lY, TCntrlColor *pColors);

    CBitmap *m_pCheck; ///< not owned
    xlong m_lBoxWidth;
    xlong m_bClickDone; ///< 1 until the button goes up
    CGroupbox *m_pGroup;
    xlong m_bNoCaption;
    CStatic *m_pCaption; ///< owned, null without a box

private:
    void UpdateMouseArea();
};
