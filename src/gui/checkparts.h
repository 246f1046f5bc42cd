// What check boxes and radio buttons share: a box with a mark and a caption.
#pragma once

#include "gui/look.h"
#include "tarvix/static.h"

/// The members of either class.
struct TCheckParts
{
    CControlBase &control;
    CBitmap *&pCheck;
    xlong &lBoxWidth;
    xlong &bClickDone;
    xlong &bNoCaption;
    CStatic *&pCaption;
};

/// @return 0 without memory
xlong CreateCheck(const TCheckParts &parts, xlong lID, char *pszText, const TPlace &place, xlong lBoxWidth,
                  short sHotkey, xlong lFlags);
/// From the corner to the end of the caption's text, or the whole control.
void UpdateCheckArea(const TCheckParts &parts);
/// After a change of place or size: the caption follows.
void PlaceCheckCaption(const TCheckParts &parts);
void DrawCheck(const TCheckParts &parts, xlong lX, xlong lY, xlong lPage);
/// The box at the left of the control.
TPlace CheckBoxPlace(const TCheckParts &parts, xlong lX, xlong lY);
/// Place of a state in the look: the pressed one is checked; -1 for none.
int CheckLookOf(xlong lState);

enum
{
    CHECK_PASSED,  ///< outside, or nothing to do
    CHECK_ARMED,   ///< the pointer has just come in
    CHECK_WAITING, ///< inside with the button up
    CHECK_CLICKED, ///< the press: once, until the button goes up
    CHECK_HELD     ///< inside with the button held
};

/// Follows the mouse as far as the two classes agree.
int FollowCheckMouse(const TCheckParts &parts, xlong lX, xlong lY, xparam lButtons);
