#include "platform/clock.h"

#include <errno.h>
#include <sched.h>
#include <time.h>

#ifdef TARVIX_TESTING
namespace
{
bool s_bTestClock = false;
DWORD s_ulTestTime = 0;
} // namespace

void UseTestClock(bool bUse, DWORD ulTime)
{
    s_bTestClock = bUse;
    s_ulTestTime = ulTime;
}
#endif

DWORD timeGetTime()
{
#ifdef TARVIX_TESTING
    if (s_bTestClock)
        return s_ulTestTime;
#endif
    timespec now;
    clock_gettime(CLOCK_MONOTONIC, &now);
    return (DWORD)((ULONGLONG)now.tv_sec * 1000 + (ULONGLONG)now.tv_nsec / 1000000);
}

DWORD GetTickCount()
{
    return timeGetTime();
}

void Sleep(DWORD ulMilliseconds)
{
#ifdef TARVIX_TESTING
    if (s_bTestClock)
    {
        s_ulTestTime += ulMilliseconds;
        return;
    }
#endif
    if (!ulMilliseconds)
    {
        sched_yield();
        return;
    }
    do
    {
        timespec left = { (time_t)(ulMilliseconds / 1000), (long)(ulMilliseconds % 1000) * 1000000 };
        while (nanosleep(&left, &left) == -1 && errno == EINTR)
        {
        }
    } while (ulMilliseconds == INFINITE);
}
