// The windows of the gallery, and what they tell each other.
#pragma once

#include "tarvix/dialog.h"
#include "tarvix/resdata.h"
#include "tarvix/sprite.h"

#include <memory>

/// Ids of the script's "Defines" that the program knows.
enum
{
    WIN_BUTTONS = 1,
    WIN_CHOICES,
    WIN_TEXT,
    WIN_PICTURES,
    WIN_GLASS,
    WIN_LEFT,
    WIN_RIGHT,
    WIN_STATUS,
    WIN_ABOUT,
    BTN_OFF = 102,
    BTN_HIDE = 105,
    BTN_HIDDEN = 106,
    BTN_GEM_OFF = 108,
    BTN_ABOUT = 109,
    CHK_OFF = 202,
    STA_TEXT = 801,
    ABT_OK = 902
};

/// All windows of the script on the screen, with sprites above them.
class CGallery
{
public:
    explicit CGallery(bool bPrintMessages) : m_bPrint(bPrintMessages) {}

    /// @param pszScript  text or packed form
    /// @return false with the library's error stored
    bool Load(const char *pszScript);
    /// Moves the sprites; once a frame.
    void Step();

private:
    static void OnMessage(xlong lMsg, xlong lWindowID, xlong lCntrlID, xparam lP3, void *pUser);
    void Take(xlong lMsg, xlong lWindowID, xlong lCntrlID);
    void Tell(xlong lMsg, xlong lWindowID, xlong lCntrlID);
    bool AddMoths();

    enum
    {
        WINDOWS = 9,
        MOTHS = 3
    };

    bool m_bPrint;
    CResData m_Res; // outlives the dialogs
    CDialog m_Dialogs[WINDOWS];
    std::unique_ptr<CBitmap> m_Wings[2];
    CSprite m_Moths[MOTHS];
    xlong m_lStep = 0;
};
