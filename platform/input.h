// What a backend reports: it becomes messages here, in Windows' order.
#pragma once

#include "platform/backend.h"

enum EMouseButton
{
    BUTTON_LEFT,
    BUTTON_RIGHT,
    BUTTON_MIDDLE,
};

struct TKeyEvent
{
    int nVirtualKey; ///< of the left or right key where there are two
    int nScanCode;
    bool bExtended;
    bool bDown;
    bool bRepeat;
    unsigned char ucChar; ///< what it types, 0 for nothing
};

/// Positions are in pixels of the client area.
void InputPointer(HWND hWnd, int nX, int nY);
void InputButton(HWND hWnd, EMouseButton eButton, bool bDown, int nX, int nY);
/// The pointer is over the window no more.
void InputLeave(HWND hWnd);
void InputKey(HWND hWnd, const TKeyEvent *pKey);

/// A character that no key typed, as input methods give it.
void InputText(HWND hWnd, unsigned char ucChar);
/// Locks as the desktop has them when the window gets its focus.
void InputLocks(bool bCaps, bool bNum, bool bScroll);

void InputClose(HWND hWnd);
void InputState(HWND hWnd, EShowState eState);
void InputPlace(HWND hWnd, const RECT *prcClient);
void InputFocus(HWND hWnd, bool bFocus);
void InputExpose(HWND hWnd);

/// Forgets keys and buttons that are held.
void ResetInput();
