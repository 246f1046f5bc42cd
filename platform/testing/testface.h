// The face that tests work on: windows are memory, the clock stands until it is
// told to go, and the user is the test. All else is the real thing: the same
// queue, the same order of messages, the same window procedures.
#pragma once

#include "platform/win32.h"

/// Desktop of the face, in pixels and bits of a pixel (8, 16 or 32). With 8 bits
/// there is a system palette.
struct TFaceDesktop
{
    int nWidth;
    int nHeight;
    int nDepth;
};

/// Puts the face in SDL's place and stops the clock at 1000.
/// @return false when there are windows already
TARVIX_INTERNAL bool FaceStart(const TFaceDesktop *pDesktop);
/// Ends windows and messages that were left and goes back to SDL and the real clock.
TARVIX_INTERNAL void FaceStop();
/// The desktop changes while windows are open.
TARVIX_INTERNAL void FaceSetDesktop(const TFaceDesktop *pDesktop);
/// Makes the next windows fail to open, as without a display.
TARVIX_INTERNAL void FaceFailWindows(bool bFail);

TARVIX_INTERNAL void FaceSetClock(DWORD ulTime);
TARVIX_INTERNAL void FaceAdvanceClock(DWORD ulMilliseconds);

// What the user does. It happens at once for the desktop and reaches the
// program in its next PeekMessageA, as with SDL.

/// Moves the pointer, in pixels of the desktop. The topmost window there gets the message.
TARVIX_INTERNAL void FaceMovePointer(int nX, int nY);
/// The same in pixels of a window's client area.
TARVIX_INTERNAL void FaceMovePointerIn(HWND hWnd, int nX, int nY);
/// @param nButton  VK_LBUTTON, VK_RBUTTON or VK_MBUTTON. A press activates the window below.
TARVIX_INTERNAL void FaceButton(int nButton, bool bDown);
/// Moves the pointer there, presses and releases the left button.
TARVIX_INTERNAL void FaceClick(HWND hWnd, int nX, int nY);
/// Down or up of a key, for the active window.
/// @param nVirtualKey  of one side where there are two: VK_LSHIFT, not VK_SHIFT
/// @param ucChar       what the key types, 0 for nothing
TARVIX_INTERNAL void FaceKey(int nVirtualKey, bool bDown, unsigned char ucChar);
/// Another key-down of a held key.
TARVIX_INTERNAL void FaceRepeatKey(int nVirtualKey, unsigned char ucChar);
/// Presses and releases the keys that type a text; letters, digits and blanks.
TARVIX_INTERNAL void FaceType(const char *pszText);
/// A character out of an input method, which no key types.
TARVIX_INTERNAL void FaceTypeInputMethod(unsigned char ucChar);
/// Text that another program has copied, UTF-8.
TARVIX_INTERNAL void FaceSetClipboard(const char *pszUtf8);
TARVIX_INTERNAL const char *FaceClipboard();
/// The clipboard says that it has text and then neither gives nor takes any.
TARVIX_INTERNAL void FaceFailClipboard(bool bFail);
TARVIX_INTERNAL void FaceClose(HWND hWnd);
TARVIX_INTERNAL void FaceMinimize(HWND hWnd);
TARVIX_INTERNAL void FaceMaximize(HWND hWnd);
TARVIX_INTERNAL void FaceRestore(HWND hWnd);
/// New size of the client area.
TARVIX_INTERNAL void FaceResize(HWND hWnd, int nWidth, int nHeight);
/// New place of the client area.
TARVIX_INTERNAL void FaceMove(HWND hWnd, int nX, int nY);
/// Another program comes to the front, or goes back behind the window.
TARVIX_INTERNAL void FaceActivate(HWND hWnd, bool bActive);
/// Something that covered the window went away.
TARVIX_INTERNAL void FaceExpose(HWND hWnd);

// What can be seen.

/// Pixels of the client area as they were last presented: 0xFFRRGGBB, rows one
/// after the other. They belong to the window and hold until it changes.
/// @return null when it shows nothing
TARVIX_INTERNAL const uint32_t *FaceShownPixels(HWND hWnd, int *pnWidth, int *pnHeight);
/// Areas presented since the last call, at most nMax of them; all are forgotten then.
/// @param pllPixels  receives how many pixels they have together, or null
/// @return how many there were
TARVIX_INTERNAL int FaceTakePresented(HWND hWnd, RECT *prcAreas, int nMax, long long *pllPixels);
/// Times that something was presented since the last call.
TARVIX_INTERNAL int FaceTakePresentCalls(HWND hWnd);
/// The pointer's shape, null while it is hidden.
TARVIX_INTERNAL HCURSOR FaceCursor();
TARVIX_INTERNAL const char *FaceTitle(HWND hWnd);

/// Button ids that the next message boxes are answered with, in turn; 0 is a
/// box that can't be shown.
TARVIX_INTERNAL void FaceAnswerMessageBox(int nButton);
/// Text of the last message box, "" for none.
TARVIX_INTERNAL const char *FaceMessageBoxText();
