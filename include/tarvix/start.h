#pragma once

#include "tarvix/types.h"

struct SGlobals;
struct SSysGlobals;

/// The three ways to everything. They are null at load, only the host writes
/// them: ThisInstance first, then the two records that it makes and owns.
extern TARVIX_API HINSTANCE ThisInstance;
extern TARVIX_API SGlobals *glb;
extern TARVIX_API SSysGlobals *sglb;

/// Creates the objects of the portable record.
/// @return 1; 0 with code 14, what was made stays for xFreeGlobals
TARVIX_API xlong xCreateGlobals();
TARVIX_API void xFreeGlobals();
/// Creates picture types, screens and input, and a 1-by-1 window; no mode is
/// set. Both arguments are ignored.
/// @return 1; 0 on failure, what was made stays for xExit
TARVIX_API xlong xInit(int nArgs, char **const ppszArgs);
TARVIX_API void xExit();

/// Runs one frame: timers, flip, platform messages, wait, restore, pools.
/// @return 0; on the platform's quit message its parameter
TARVIX_API xlong xHandler();

/// @param lTime  milliseconds; 0 means do not wait
TARVIX_API void SetMinimumFrameTime(xlong lTime);
/// @param lTime  milliseconds of one update step, positive; with 0 no steps are counted
TARVIX_API void SetUpdateTime(xlong lTime);
/// Non-zero lets the wait go through the wait callback.
TARVIX_API void xSetXHandlerWaitMode(xlong lMode);
/// Caps the next wait, for one frame; the tightest cap wins.
/// @param lTime  milliseconds; negative means 20
TARVIX_API void xSetXHandlerMaxWaitTime(xlong lTime);

/// The load callback is called during long loads and conversions; null takes it out.
TARVIX_API void SetLoadDataCallback(void (*pfnLoadData)());
/// A model of a callback that throttles itself; it does nothing else.
TARVIX_API void DefaultLoadDataCallback();
/// @param pfnWait  gets the milliseconds to wait
TARVIX_API void SetWaitTimeOrSocketsCallback(void (*pfnWait)(xulong ulTime));
/// Sleeps.
TARVIX_API void DefaultWaitTimeOrSocketsCallback(xulong ulTime);

/// The quit flag, raised when the user closes the window.
TARVIX_API xlong xDoUserWantToQuit();
TARVIX_API void xSetUserWantToQuit(unsigned char bQuit);
/// Window title and class name, "Noname" at first.
TARVIX_API char *GetApplicationName();
/// @param pszName  copied if shorter than 160 characters, otherwise ignored
TARVIX_API void SetApplicationName(const char *pszName);
/// Changes the title of the window that is there.
TARVIX_API void xSetWindowTitle(const char *pszTitle);
/// Replaces the top-level window by a new one of 1 by 1.
TARVIX_API void ShowScreenWindow();

/// Milliseconds of a clock that wraps.
TARVIX_API xulong xGetTime();
TARVIX_API void xSleep(xulong ulTime);
/// Milliseconds from ulA to ulB over a wrap of the clock.
TARVIX_API xulong xTimeDiff(xulong ulA, xulong ulB);
