#pragma once

#include "tarvix/control.h"

class CStatic;

/// A box with a check mark and a caption, or a button that stays down. Its
/// states are XGUI_CHECKED and XGUI_UNCHECKED in the place of XGUI_RELEASED;
/// SetState(XGUI_CHECKED) checks it. A click toggles it at the press.
class TARVIX_API CCheckbox : public CControlBase
{
public:
    CCheckbox();
    ~CCheckbox() override;

    void TimerHandler(xulong ulInterval) override;
    void Copy(CControlBase *pFrom) override;
    xlong SetTextColor(TRGBA Color) override;
    xlong SetPos(xlong lX, xlong lY) override;
    xlong SetSize(xlong lWidth, xlong lHeight) override;
    xlong SetParent(xlong lWindowID, CWindowBase *pWindow) override;
    xlong GuiMsgHandler(xlong lMsg, xlong lP1, xlong lP2, xparam lP3, void *pData) override;
    xlong Draw(xlong lX, xlong lY, xlong lPage) override;
    void ClearClipListIndex() override;

    using CControlBase::Create;
    /// @param pszText    kept, not copied; may be null
    /// @param lBoxWidth  pixels of the square box; 0 draws the control as a button
    /// @param sHotkey    XKEY_... or a character; 0 for none
    /// @return 0 without memory
    xlong Create(xlong lID, char *pszText, xlong lX, xlong lY, xlong lWidth, xlong lHeight, xlong lBoxWidth,
                 short sHotkey, xlong lFlags);
    void DrawExtruded(xlong lX, xlong lY, TCntrlColor *pColors);
    void DrawExtrudedButton(xlong lX, xlong lY, TCntrlColor *pColors);

    CBitmap *m_pCheck; ///< not owned
    xlong m_lBoxWidth;
    xlong m_bClickDone; ///< 1 until the button goes up
    xlong m_bNoCaption;
    CStatic *m_pCaption; ///< owned, null without a box

private:
    void UpdateMouseArea();
};
