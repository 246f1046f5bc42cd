// What the controls share in answering mouse and keyboard.
#pragma once

#include "tarvix/control.h"

/// Values of m_lPressMode.
enum
{
    PRESS_IDLE,
    PRESS_ARMED, ///< the pointer came in with the button up: a press belongs to the control
    PRESS_HOTKEY ///< the hot key is held
};

/// What a key message does to a control.
enum
{
    HOTKEY_NONE,
    HOTKEY_DOWN, ///< m_lPressMode is PRESS_HOTKEY now
    HOTKEY_UP    ///< the held key was let go; m_lPressMode is PRESS_IDLE
};

/// Tests a key message for the control's hot key.
int TakeHotKey(CControlBase &control, xparam lP3);
/// True when the message is a key-down of the hot key.
bool IsHotKeyDown(const CControlBase &control, xparam lP3);

inline bool IsInside(const CRect &rcArea, xlong lX, xlong lY)
{
    return lX >= rcArea.m_lLeft && lX <= rcArea.m_lRight && lY >= rcArea.m_lTop && lY <= rcArea.m_lBottom;
}

/// The left button and no other.
inline bool IsLeftOnly(xparam lButtons)
{
    return lButtons == 1;
}

/// True when the host has set the option.
/// @param lOption  XGUIOPT_...
bool HasGuiOption(xlong lOption);
/// True when the control has the keyboard and the host wants that to be seen.
bool IsFocusShown(const CControlBase &control);
/// True when the key presses the control: its hot key, or Space while it has the focus.
bool IsKeyOf(const CControlBase &control, unsigned short usKey);

/// Sends a message of the control through the manager.
/// @return false when the control has died on the way
bool Tell(CControlBase &control, xlong lMsg);

/// True when the point lies on a pixel of the key colour of the released
/// bitmap, or beside that bitmap. Known at 16 and 24 bits.
/// @param lX  in the window, as lY
bool IsOnKeyColour(const CControlBase &control, xlong lX, xlong lY);
/// The flags make clicks on transparent pixels miss the control.
/// @param lWanted  flags that have to be set for that
bool IsSeeThroughButton(const CControlBase &control, xlong lWanted);

/// How the buttons differ from each other.
struct TPressRules
{
    xlong lSeeThroughFlags;   ///< with all of them set, transparent pixels miss the button
    bool bHeldHighlights;     ///< the pointer highlights it with the button held too
    bool bTellsHighlight;     ///< messages 3 and 19
    bool bInactiveHighlights; ///< m_bHighlightIfInactive counts in an inactive window
};

/// The message handler of a button.
xlong ButtonMessage(CControlBase &control, const TPressRules &rules, xlong lMsg, xlong lP1, xlong lP2, xparam lP3);

/// The key message of controls that only look.
xlong DecorKey(CControlBase &control, xparam lP3);
/// Follows the press in a frame or box, without messages.
/// @return 1 when the mouse message belongs to it
xlong DecorMouse(CControlBase &control, xlong lX, xlong lY, xparam lButtons);

/// True in a window that is not in front.
bool IsWindowInactive(const CControlBase &control);
/// A highlight that an inactive window does not show becomes XGUI_RELEASED.
void DropInactiveHighlight(CControlBase &control);
