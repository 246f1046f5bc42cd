#pragma once

#include "tarvix/keyboard.h"

/// Puts a key behind those that wait.
/// @return false when the queue is full
bool QueueKey(CKeyboardBase &keyboard, unsigned short usKey, xlong lFlags);
/// Sets a key's state and keeps the number of keys that are down.
/// @param usKey  below CODES
void StoreKeyState(CKeyboardBase &keyboard, unsigned short usKey, xlong lState);
