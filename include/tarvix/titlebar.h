#pragma once

#include "tarvix/control.h"

class CButton;
class CStatic;
class CWindowBase;

/// Caption, handle for dragging and close button of a window. The states are
/// XGUI_HIGHLIGHT for the active window and XGUI_RELEASED for the others.
class TARVIX_API CTitlebar : public CControlBase
{
public:
    CTitlebar();
    ~CTitlebar() override;

    xlong Destroy() override;
    void Copy(CControlBase *pFrom) override;
    xlong SetDefault() override;
    xlong SetPos(xlong lX, xlong lY) override;
    xlong SetSize(xlong lWidth, xlong lHeight) override;
    xlong GuiMsgHandler(xlong lMsg, xlong lP1, xlong lP2, xparam lP3, void *pData) override;
    xlong Draw(xlong lX, xlong lY, xlong lPage) override;
    xlong Validate() override;
    xlong Validate(CRect *pArea, xlong lIndex) override;
    void ClearClipListIndex() override;

    using CControlBase::Create;
    /// @param pszTitle  kept, not copied; may be null
    /// @param lFlags    CNTRL_CLOSEBUTTON among them makes the close button
    /// @return 0 without memory
    xlong Create(char *pszTitle, xlong lWidth, xlong lHeight, CWindowBase *pWindow, xlong lFlags);
    void DrawExtruded(xlong lX, xlong lY, TCntrlColor *pColors);

    CButton *m_pClose;   ///< owned, or null
    CStatic *m_pCaption; ///< owned
    xlong m_lCloseSize;  ///< pixels

private:
    friend class CWindowBase;
    void LosePress();
    void PlaceParts();
    xlong MouseMessage(xlong lX, xlong lY, xparam lP3);
    bool EndDrag();
    xlong DragStep(xlong lX, xlong lY);
};
