// The words of resource scripts.
#pragma once

#include "tarvix/resdata.h"

/// Of flag fields and of hotkeys.
extern const TResData g_ResFlags[];
extern const TResData g_ResHotkeys[];
