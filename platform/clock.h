#pragma once

#include "platform/win32.h"

#ifdef TARVIX_TESTING
/// A clock that stands still but for Sleep, for tests.
void UseTestClock(bool bUse, DWORD ulTime);
#endif
