#include "tarvix/url.h"

#include "gui/alive.h"
#include "gui/press.h"
#include "tarvix/error.h"
#include "tarvix/strings.h"
#include "tarvix/systemshell.h"

#include <stdio.h>
#include <string.h>

namespace
{
const char s_szMail[] = "mailto:";

char *CopyText(const char *pszFirst, const char *pszSecond)
{
    const size_t ulSize = strlen(pszFirst) + strlen(pszSecond) + 1;
    char *const psz = XNEW(char[ulSize]);
    if (psz)
        snprintf(psz, ulSize, "%s%s", pszFirst, pszSecond);
    return psz;
}

void Open(const char *pszURL)
{
    if (!pszURL)
        return;
    if (!xStrchr(pszURL, '@'))
    {
        xShowURL(pszURL);
        return;
    }
    char *const pszMail = CopyText(s_szMail, pszURL);
    if (!pszMail)
    {
        xErrorTxt("CURL::GuiMsgHandler: Failed to allocate mem for mail URL.");
        return;
    }
    xShowURL(pszMail);
    XDELETE_ARRAY(pszMail);
}
} // namespace

CURL::CURL() : m_pszURL(nullptr) {}

CURL::~CURL()
{
    XDELETE_ARRAY(m_pszURL);
}

xlong CURL::SetDefault()
{
    return CButton::SetDefault();
}

xlong CURL::GuiMsgHandler(xlong lMsg, xlong lP1, xlong lP2, xparam lP3, void *pData)
{
    const bool bOpaque = !IsSeeThroughButton(*this, CNTRL_TRANSPARENT | CNTRL_HASBITMAP | CNTRL_BMTRANS) ||
                         lMsg != XGUIMSG_MOUSE || !IsOnKeyColour(*this, lP1, lP2);
    const xlong lOldState = m_lState;
    const CAlive alive(*this);
    const xlong lResult = CButton::GuiMsgHandler(lMsg, lP1, lP2, lP3, pData);
    if (!alive)
        return lResult;
    const bool bByKey = lMsg == XGUIMSG_KEY && lOldState == XGUI_PRESSED && m_lNextState == XGUI_RELEASED;
    const bool bByMouse = lMsg == XGUIMSG_MOUSE && bOpaque && lOldState == XGUI_PRESSED && m_lState == XGUI_HIGHLIGHT;
    // A pressed link that the pointer leaves is highlighted too, but not clicked.
    if (lResult && (bByKey || (bByMouse && IsInside(m_rMouseArea, lP1, lP2))))
        Open(m_pszURL);
    return lResult;
}

xlong CURL::Draw(xlong lX, xlong lY, xlong lPage)
{
    return CButton::Draw(lX, lY, lPage);
}

xlong CURL::Create(xlong lID, char *pszText, const char *pszURL, xlong lX, xlong lY, xlong lWidth, xlong lHeight,
                   short sHotkey, xlong lFlags)
{
    if (!pszURL)
        return xErrorTxt("CURL::Create: Missing URL.");
    XDELETE_ARRAY(m_pszURL);
    m_pszURL = CopyText(pszURL, "");
    if (!m_pszURL)
        return xErrorTxt("CURL::Create: Failed to allocate memory for URL.");
    return CButton::Create(lID, pszText, lX, lY, lWidth, lHeight, sHotkey, lFlags);
}
