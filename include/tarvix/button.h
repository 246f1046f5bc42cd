#pragma once

#include "tarvix/control.h"

/// A button that can be pressed. It tells the host when it is highlighted (3),
/// pressed (1), released inside (2) and left (19).
class TARVIX_API CButton : public CControlBase
{
public:
    CButton();
    ~CButton() override;

    using CControlBase::Create;
    /// @param pszText  kept, not copied; may be null
    /// @param lX       in the window, as lY; pixels
    /// @param sHotkey  XKEY_... or a character; 0 for none
    /// @param lFlags   CNTRL_...
    xlong Create(xlong lID, char *pszText, xlong lX, xlong lY, xlong lWidth, xlong lHeight, short sHotkey,
                 xlong lFlags);
    xlong SetDefault() override;
    xlong GuiMsgHandler(xlong lMsg, xlong lP1, xlong lP2, xparam lP3, void *pData) override;
    xlong Draw(xlong lX, xlong lY, xlong lPage) override;

    void DrawExtruded(xlong lX, xlong lY, TCntrlColor *pColors);
};

/// The knob of a slider: a button without highlight messages.
class TARVIX_API CDragbutton : public CControlBase
{
public:
    CDragbutton();
    ~CDragbutton() override;

    using CControlBase::Create;
    /// As of CButton.
    xlong Create(xlong lID, char *pszText, xlong lX, xlong lY, xlong lWidth, xlong lHeight, short sHotkey,
                 xlong lFlags);
    xlong SetDefault() override;
    xlong GuiMsgHandler(xlong lMsg, xlong lP1, xlong lP2, xparam lP3, void *pData) override;
    xlong Draw(xlong lX, xlong lY, xlong lPage) override;

    void DrawExtruded(xlong lX, xlong lY, TCntrlColor *pColors);
};
