#pragma once

#include "tarvix/control.h"

/// Text or a picture.
class TARVIX_API CStatic : public CControlBase
{
public:
    CStatic();
    ~CStatic() override;

    using CControlBase::Create;
    /// The id is XCNTRL_STATIC until SetID.
    /// @param pszText  kept, not copied; may be null
    xlong Create(char *pszText, xlong lX, xlong lY, xlong lWidth, xlong lHeight, xulong ulFlags);
    xlong SetDefault() override;
    xlong GuiMsgHandler(xlong lMsg, xlong lP1, xlong lP2, xparam lP3, void *pData) override;
    xlong Draw(xlong lX, xlong lY, xlong lPage) override;
};

/// A ticker. The bytes 1 to 6 in its text hold it for that many times 25
/// ticks, 7 ends it.
class TARVIX_API CScrollText : public CStatic
{
public:
    CScrollText();
    ~CScrollText() override;

    void TimerHandler(xulong ulInterval) override;
    xlong SetDefault() override;
    xlong GuiMsgHandler(xlong lMsg, xlong lP1, xlong lP2, xparam lP3, void *pData) override;
    xlong Draw(xlong lX, xlong lY, xlong lPage) override;
    /// The text is copied, padded with blanks to the control's width.
    /// @param pszText  null as an empty one
    /// @return 0 without memory or a font
    xlong SetText(char *pszText) override;

    using CControlBase::Create;
    /// @param lPixPerFrame  that the text moves at each tick
    xlong Create(char *pszText, xlong lX, xlong lY, xlong lWidth, xlong lHeight, xlong lPixPerFrame, xlong lFlags);
    xlong SetPixPerFrame(xlong lPixPerFrame);
    /// @param ulDelay  milliseconds a tick
    xlong Start(xulong ulDelay);
    /// Clears the ticker and frees the text.
    xlong Stop();
    xlong IsScrolling();

    xulong m_ulDelay;
    char *m_pszBuffer; ///< padded text, owned
    xlong m_lPixelOffset;
    xlong m_lCharIndex;
    xlong m_lLength; ///< of text and padding
    xlong m_lPixPerFrame;
    xlong m_lPauseTicks;
    xlong m_lPadding;
    CBitmap *m_pBitmap; ///< strip with the text, owned
    xlong m_bScrolling;

private:
    void FillStrip();
    xlong CharWidth(unsigned char ucCode);
};
