// The words of resource scripts.
#pragma once

#include "tarvix/resdata.h"

/// Of flag fields.
extern const TResData g_ResFlags[];
/// Of hotkeys: the names of the key codes.
const TResData *ResHotkeys();
