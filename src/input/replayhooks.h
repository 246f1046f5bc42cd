#pragma once

#include "tarvix/types.h"

class CKeyboardBase;
class CReplay;

/// The replay or recording that runs, or null.
CReplay *ActiveReplay();
/// True while a replay stands in for the user.
bool IsInputReplayed();

// The pump's three places of a frame.
TARVIX_INTERNAL void ReplayBeginFrame();
TARVIX_INTERNAL void ReplayTakeInput();
TARVIX_INTERNAL void ReplayEndFrame();

// Where the real clock comes from: src/win.
xulong RealTime();
void RealSleep(xulong ulTime);
