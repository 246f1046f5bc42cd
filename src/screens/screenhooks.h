#pragma once

#include "tarvix/types.h"

// What the rooms above want to hear of the screens. They register themselves;
// null takes a hook out.

/// @param pfnMayActivate  is asked before a screen becomes active or inactive; false leaves it as it is
void SetActivateHook(bool (*pfnMayActivate)(xlong bActive));
/// @param pfnPaletteSet  is called when an 8-bit screen has got a palette
void SetPaletteHook(void (*pfnPaletteSet)());
