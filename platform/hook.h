#pragma once

#include "platform/win32.h"

/// Shows a key message to the keyboard hooks.
/// @return false when one of them swallows it
bool CallKeyboardHooks(int nCode, WPARAM wParam, LPARAM lParam);
