#pragma once

#include "tarvix/types.h"

/// Base of everything that is called at regular intervals. A timer is the pair
/// of object and interval in milliseconds; one object can have several.
/// Missed ticks arrive in a burst. Intervals must be positive: one of 0 never ticks.
class TARVIX_API CTimer
{
public:
    virtual void TimerHandler(xulong ulInterval);
    /// Removes all timers of the object.
    virtual ~CTimer();

    /// @return 1, also if the timer exists; 0 when memory is exhausted
    xlong AddTimer(xulong ulInterval);
    void RemoveTimer(xulong ulInterval);
    void RemoveAllTimers();
};

/// Record of the globals' active list.
struct TTimerEntry
{
    CTimer *pTimer; ///< null marks a removed timer until the next sweep
    xulong ulInterval;
    float fRemainder;  ///< milliseconds not yet turned into ticks
    xulong ulLastTime; ///< 0 means none yet
    xulong ulNowTime;
};

/// Record of the globals' pending list.
struct TTimerPending
{
    CTimer *pTimer;
    xulong ulInterval;
};

TARVIX_API xlong xAddTimer(CTimer *pTimer, xulong ulInterval);
TARVIX_API void xRemoveTimer(CTimer *pTimer, xulong ulInterval);
TARVIX_API void xRemoveTimerAll(CTimer *pTimer);
/// Creates the two lists.
TARVIX_API void ValidateTimerList();
/// Runs all timers; the pump's first step.
TARVIX_API void xUpdateObjTimers();
/// Sweeps marked records.
TARVIX_API void xRemoveNotActiveTimers();
/// Moves pending records to the active list.
TARVIX_API void xAddPendingTimers();
