// What the controls share in drawing: one place for fills, bevels and texts.
#pragma once

#include "tarvix/control.h"
#include "tarvix/screen.h"

/// An area of the screen: corner and size in pixels.
struct TPlace
{
    xlong lX;
    xlong lY;
    xlong lWidth;
    xlong lHeight;

    TPlace Inset(xlong lBy) const { return { lX + lBy, lY + lBy, lWidth - 2 * lBy, lHeight - 2 * lBy }; }
};

/// Where a control lies on the screen, given its window's position.
inline TPlace PlaceOf(const CControlBase &control, xlong lX, xlong lY)
{
    return { lX + control.m_lX, lY + control.m_lY, control.m_lWidth, control.m_lHeight };
}

/// Place of a state in the arrays of a look; -1 when it has none.
int LookOf(xlong lState);

/// Puts something for each state into an array of a look. @return 1
template <class T>
xlong StoreLook(T **ppTo, T *pReleased, T *pPressed, T *pHighlight, T *pDisabled)
{
    ppTo[XLOOK_RELEASED] = pReleased;
    ppTo[XLOOK_PRESSED] = pPressed;
    ppTo[XLOOK_HIGHLIGHT] = pHighlight;
    ppTo[XLOOK_DISABLED] = pDisabled;
    return 1;
}

inline bool IsSeeThrough(const CControlBase &control)
{
    return (control.m_lFlags & (CNTRL_ALPHA | CNTRL_TRANSPARENT)) != 0;
}

/// False in a hidden window: what changes there is seen when it is shown, and
/// then as a whole.
bool IsSeen(const CControlBase &control);

/// False when a class's Draw has nothing to do: without a screen, and for a
/// page that is marked as done.
bool CanDraw(const CControlBase &control, xlong lPage);

/// Saves the clip and narrows it to the place; PopClip undoes it.
/// @return false, with the clip as it was, when nothing of the place is left:
///         the narrowed clip would still hold a pixel then
bool PushSubClip(const TPlace &place);

/// Fills with a face colour unless the control is see-through; null fills nothing.
void DrawFace(const CControlBase &control, const TPlace &place, const TRGBA *pFace);
/// Darkens what lies behind a control with CNTRL_ALPHA.
void DrawAlpha(const CControlBase &control, const TPlace &place);

enum
{
    BEVEL_RAISED,
    BEVEL_SUNKEN, ///< the light comes from below
};

/// Draws m_lBevel lines inside the place, with corners; null colours draw nothing.
void DrawBevel(const CControlBase &control, const TPlace &place, const TCntrlColor *pColors, int nBevel);
/// As a raised bevel, with the border of CNTRL_BUTTONBORDER around the place.
void DrawButtonBevel(const CControlBase &control, const TPlace &place, const TCntrlColor *pColors);
/// Draws the bitmap of a state, if the flags ask for one.
void DrawLookBitmap(CControlBase &control, const TPlace &place, int nLook);
/// Draws the control's text into the place, clipped to it.
/// @param lStyle  FONT_...
void DrawControlText(const CControlBase &control, const TPlace &place, xlong lStyle);
/// FONT_ style of the flags for centred text.
xlong TextStyle(xlong lFlags);
/// Colours of a look; null for -1.
TCntrlColor *ColorsOf(const CControlBase &control, int nLook);

enum
{
    PANEL_BORDER = 1, ///< CNTRL_BUTTONBORDER counts
    PANEL_ALPHA = 2   ///< so does CNTRL_ALPHA
};

/// Face, bevel and bitmap of a look.
/// @param nOptions  PANEL_...
/// @return where the text goes: the place inside the bevel
TPlace DrawPanel(CControlBase &control, const TPlace &place, int nLook, int nOptions);
/// A panel with the text as a button shows it: it moves by one pixel in a pressed look.
void DrawButton(CControlBase &control, const TPlace &place, int nLook, int nOptions);
/// Shows that the control has the keyboard, if the host has set the option.
/// @param place  what the mark surrounds from inside
void DrawFocus(const CControlBase &control, const TPlace &place);
/// The whole Draw of a button.
xlong DrawButtonControl(CControlBase &control, xlong lX, xlong lY, xlong lPage, int nOptions);
