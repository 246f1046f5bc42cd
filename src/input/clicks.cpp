#include "input/clicks.h"

namespace
{
const int s_nSlots = 64;

struct TQueued
{
    const CMouseBase *pMouse;
    TClick click;
};

TQueued s_aQueue[s_nSlots];
int s_nRead = 0, s_nCount = 0;
} // namespace

void QueueClick(const CMouseBase *pMouse, const TClick &click)
{
    if (s_nCount < s_nSlots)
        s_aQueue[(s_nRead + s_nCount++) % s_nSlots] = { pMouse, click };
}

bool TakeClick(const CMouseBase *pMouse, TClick &click)
{
    while (s_nCount)
    {
        const TQueued &queued = s_aQueue[s_nRead];
        s_nRead = (s_nRead + 1) % s_nSlots;
        --s_nCount;
        click = queued.click;
        if (queued.pMouse == pMouse)
            return true;
    }
    return false;
}

void ForgetClicks(const CMouseBase *pMouse)
{
    for (int n = 0; n < s_nCount; ++n)
        if (TQueued &queued = s_aQueue[(s_nRead + n) % s_nSlots]; queued.pMouse == pMouse)
            queued.pMouse = nullptr;
}
