#pragma once

#include "tarvix/control.h"

class CWindowBase;

/// Background and border of a window.
class TARVIX_API CFrame : public CControlBase
{
public:
    CFrame();
    ~CFrame() override;

    xlong SetDefault() override;
    xlong SetPos(xlong lX, xlong lY) override;
    xlong SetSize(xlong lWidth, xlong lHeight) override;
    /// @return 0 for the mouse on a frame that is transparent without a
    ///         bitmap: a click goes through it
    xlong GuiMsgHandler(xlong lMsg, xlong lP1, xlong lP2, xparam lP3, void *pData) override;
    xlong Draw(xlong lX, xlong lY, xlong lPage) override;

    using CControlBase::Create;
    /// Fits the window's title bar into the frame.
    /// @param pszText  kept, not copied; may be null
    xlong Create(char *pszText, xlong lWidth, xlong lHeight, CWindowBase *pWindow);
    void DrawExtruded(xlong lX, xlong lY, TCntrlColor *pColors);
};
