#pragma once

#include "tarvix/button.h"

/// A button that opens an address. One with a "@" is taken as a mail address.
class TARVIX_API CURL : public CButton
{
public:
    CURL();
    ~CURL() override;

    xlong SetDefault() override;
    xlong GuiMsgHandler(xlong lMsg, xlong lP1, xlong lP2, xparam lP3, void *pData) override;
    xlong Draw(xlong lX, xlong lY, xlong lPage) override;

    using CControlBase::Create;
    /// @param pszText  kept, not copied; may be null
    /// @param pszURL   copied
    /// @return 0 with a text
    xlong Create(xlong lID, char *pszText, const char *pszURL, xlong lX, xlong lY, xlong lWidth, xlong lHeight,
                 short sHotkey, xlong lFlags);

    char *m_pszURL; ///< owned
};
