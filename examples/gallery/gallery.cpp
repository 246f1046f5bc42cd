#include "gallery.h"

#include "tarvix/bitmap.h"
#include "tarvix/frame.h"
#include "tarvix/globals.h"
#include "tarvix/screen.h"

#include <stdio.h>
#include <string.h>

namespace
{
const char *NameOf(xlong lMsg)
{
    switch (lMsg)
    {
    case XGUIMSG_KEY:
        return "a key";
    case XGUIMSG_PRESSED:
        return "pressed";
    case XGUIMSG_RELEASED:
        return "clicked";
    case XGUIMSG_HIGHLIGHT:
        return "highlighted";
    case XGUIMSG_CHECKED:
        return "checked";
    case XGUIMSG_UNCHECKED:
        return "unchecked";
    case XGUIMSG_DRAGBEGIN:
        return "drag begins";
    case XGUIMSG_DRAGEND:
        return "drag ends";
    case XGUIMSG_TOFRONT:
        return "to the front";
    case XGUIMSG_UNHIGHLIGHT:
        return "left";
    case XGUIMSG_MOUSEENTER:
        return "the mouse came";
    case XGUIMSG_MOUSELEAVE:
        return "the mouse went";
    }
    return "a message";
}

// What passes by all the time would hide the rest from the status line.
bool IsWorthTelling(xlong lMsg)
{
    return lMsg != XGUIMSG_DRAGEND && lMsg != XGUIMSG_TOFRONT && lMsg != XGUIMSG_UNHIGHLIGHT &&
           lMsg != XGUIMSG_MOUSELEAVE;
}

const xlong s_lGlass = 9; // percent of full light that is lost behind it

// A wave of 256 steps between -64 and 64, made of parabolas.
xlong Wave(xlong lAt)
{
    const xlong l = lAt & 127;
    const xlong lHeight = l * (128 - l) / 64;
    return lAt & 128 ? -lHeight : lHeight;
}

const struct
{
    xlong lX, lY, lWide, lHigh, lSpeed;
} s_Flights[] = { { 400, 250, 5, 3, 1 }, { 560, 420, 3, 2, 2 }, { 230, 380, 3, 3, 1 } };
} // namespace

bool CGallery::Load(const char *pszScript)
{
    if (!m_Res.Load(pszScript))
        return false;
    CBitmap desktop;
    if (!desktop.Load("desktop.bmp", 0) || !glb->m_pScreen->MakeScreenFormat(&desktop, 1))
        return false;
    glb->m_pScreen->DrawBitmapPersistent(&desktop, 0, 0, 0, 0, -1, -1, 0, 0);
    if (glb->m_pScreen->GetActiveMode()->lIndexed)
        glb->m_pScreen->SetSystemPalette();
    for (xlong lID = WIN_STATUS; lID >= WIN_BUTTONS; --lID)
    {
        // A group is added in its order, so the left one comes first.
        const xlong lNext = lID == WIN_RIGHT ? WIN_LEFT : lID == WIN_LEFT ? WIN_RIGHT : lID;
        if (!m_Dialogs[lNext - 1].Create(&m_Res, lNext, OnMessage, 0, this))
            return false;
    }
    m_Dialogs[WIN_BUTTONS - 1].GetCtrl(BTN_OFF)->SetState(XGUI_DISABLED);
    m_Dialogs[WIN_BUTTONS - 1].GetCtrl(BTN_GEM_OFF)->SetState(XGUI_DISABLED);
    m_Dialogs[WIN_CHOICES - 1].GetCtrl(CHK_OFF)->SetState(XGUI_DISABLED);
    m_Dialogs[WIN_GLASS - 1].m_pFrame->SetAlpha(s_lGlass);
    return AddMoths();
}

void CGallery::Step()
{
    ++m_lStep;
    for (int n = 0; n < MOTHS; ++n)
    {
        const auto &flight = s_Flights[n];
        const xlong lAt = m_lStep * flight.lSpeed + 80 * n;
        m_Moths[n].SetPosition(flight.lX + Wave(lAt) * flight.lWide / 2,
                               flight.lY + Wave(lAt * 2 + 40) * flight.lHigh / 2);
    }
}

void CGallery::OnMessage(xlong lMsg, xlong lWindowID, xlong lCntrlID, xparam, void *pUser)
{
    // A key brings its record with it; nobody here asks for keys.
    if (lMsg != XGUIMSG_KEY)
        ((CGallery *)pUser)->Take(lMsg, lWindowID, lCntrlID);
}

void CGallery::Take(xlong lMsg, xlong lWindowID, xlong lCntrlID)
{
    if (m_bPrint)
        printf("%ld %ld %ld\n", (long)lMsg, (long)lWindowID, (long)lCntrlID);
    Tell(lMsg, lWindowID, lCntrlID);
    if (lMsg != XGUIMSG_RELEASED)
        return;
    CDialog &dialog = m_Dialogs[lWindowID - 1];
    if (lCntrlID == XCNTRL_CLOSE || lCntrlID == ABT_OK)
    {
        // A window may not be destroyed in its own callback; hidden it takes nothing any more.
        dialog.HideWindow();
        if (lWindowID == WIN_ABOUT)
            glb->m_pWinCtrl->TakeWindow(&dialog);
    }
    else if (lCntrlID == BTN_HIDE)
    {
        CControlBase &next = *dialog.GetCtrl(BTN_HIDDEN);
        next.SetState(next.GetState() == XGUI_HIDDEN ? XGUI_RELEASED : XGUI_HIDDEN);
    }
    else if (lCntrlID == BTN_ABOUT)
    {
        CDialog &about = m_Dialogs[WIN_ABOUT - 1];
        about.Destroy();
        if (!about.Create(&m_Res, WIN_ABOUT, OnMessage, 0, this))
            fprintf(stderr, "gallery: %s\n", glb->m_Error.GetError(nullptr));
    }
}

void CGallery::Tell(xlong lMsg, xlong lWindowID, xlong lCntrlID)
{
    CDialog &status = m_Dialogs[WIN_STATUS - 1];
    char *const pszText = IsWorthTelling(lMsg) ? status.GetTextBuffer(STA_TEXT, 1) : nullptr;
    if (!pszText)
        return;
    const char *const pszWindow = m_Res.GetResName(lWindowID);
    const char *const pszCntrl = m_Res.GetResName(lCntrlID);
    snprintf(pszText, (size_t)status.GetTextBufferSize(STA_TEXT), "%s: %s (message %ld)",
             lCntrlID && pszCntrl ? pszCntrl
             : pszWindow          ? pszWindow
                                  : "?",
             NameOf(lMsg), (long)lMsg);
}

bool CGallery::AddMoths()
{
    static const char *const s_pszWings[] = { "moth1.bmp", "moth2.bmp" };
    for (int n = 0; n < 2; ++n)
    {
        m_Wings[n] = std::make_unique<CBitmap>();
        if (!m_Wings[n]->Load(s_pszWings[n], 0) || !glb->m_pScreen->MakeScreenFormat(m_Wings[n].get(), 1))
            return false;
    }
    for (int n = 0; n < MOTHS; ++n)
        if (!m_Moths[n].Create(m_Wings[n % 2].get(), nullptr, 32, 32, s_Flights[n].lX, s_Flights[n].lY, XSPRITE_LOOP,
                               2 + n, 1))
            return false;
    return true;
}
