// Animations of controls, as their classes call them.
#pragma once

#include "tarvix/control.h"

/// A timer tick: lines of animation, then the running animation.
/// @param nLook  place of the state in the look, -1 for one that is not animated
void TickAnimations(CControlBase &control, int nLook, xulong ulInterval);
/// Shows the next frame when the interval is that of the look's animation.
void StepAnimation(CControlBase &control, int nLook, xulong ulInterval);
/// Deletes the lines of all states, when the control goes.
void FreeAnimLines(CControlBase &control);
