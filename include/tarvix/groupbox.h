#pragma once

#include "tarvix/control.h"

class CRadiobutton;

/// A frame with radio buttons, of which one is selected. It hands them their
/// messages and draws them; they are not in the window's list.
class TARVIX_API CGroupbox : public CControlBase
{
public:
    CGroupbox();
    /// Lets its radio buttons go.
    ~CGroupbox() override;

    xlong SetPos(xlong lX, xlong lY) override;
    xlong SetParent(xlong lWindowID, CWindowBase *pWindow) override;
    xlong GuiMsgHandler(xlong lMsg, xlong lP1, xlong lP2, xparam lP3, void *pData) override;
    xlong Draw(xlong lX, xlong lY, xlong lPage) override;
    /// Reports the radio buttons, not the box itself.
    xlong Validate() override;
    xlong Validate(CRect *pArea, xlong lIndex) override;
    void ClearClipListIndex() override;
    /// @return id of the selected radio button; -1 for none
    xlong GetSelected() override;
    /// @return 0 for an id that is not here, with none selected then
    xlong SetSelected(xlong lID) override;

    using CControlBase::Create;
    /// @param pszText  kept, not copied; may be null
    xlong Create(xlong lID, char *pszText, xlong lX, xlong lY, xlong lWidth, xlong lHeight, xlong lFlags);
    /// Appends a radio button; its place is meant relative to the box. The
    /// first one is selected.
    /// @param pRadio  not owned
    /// @return 0 without memory
    xlong Add(CRadiobutton *pRadio);
    xlong Remove(CRadiobutton *pRadio);

    CLList m_Radios; ///< of CRadiobutton, not owned
};
