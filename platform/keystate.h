// The keyboard as the program has seen it: what GetKeyState tells changes when
// a message is taken out of the queue, not when the key moves.
#pragma once

#include "platform/win32.h"

/// The key that stands for both sides of a modifier; 0 for other keys.
int BothSides(int nVirtualKey);
/// Takes over a message of a key or mouse button.
/// @param nVirtualKey  of one side where there are two
/// @param ucChar       what a key-down types, 0 for nothing
void TakeKeyState(int nVirtualKey, bool bDown, unsigned char ucChar);
/// Sets a lock as the desktop has it.
void SetLockState(int nVirtualKey, bool bOn);
/// Keys and buttons go up without a message; locks stay.
void ReleaseKeyState();
/// As at the start of a program.
void ResetKeyState();
