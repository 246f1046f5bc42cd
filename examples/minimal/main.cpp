// The smallest host: a window with a square that moves.

#include "tarvix/host.h"

int main()
{
    CTarvixHost host("Minimal");
    if (!host.SetMode(640, 480, 16))
        return host.Fail();
    SetMinimumFrameTime(20);
    xlong lX = 0;
    do
    {
        lX = (lX + 4) % 600;
        host.Screen()->FillRect(lX, 220, 40, 40, TRGBA(255, 170, 60));
        host.Screen()->AddClearArea(lX, 220, lX + 39, 259);
    } while (host.Frame());
    return 0;
}
