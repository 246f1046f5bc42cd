// Presses and releases on their way to the windows. A frame looks at the mouse
// once, and what came and went since the last look would be lost.
#pragma once

#include "tarvix/types.h"

class CMouseBase;

/// What the mouse was like when a button went down or up.
struct TClick
{
    xlong lX;
    xlong lY;
    signed char cButtons; ///< XBTN_..., down then
};

/// Keeps a change of the buttons. Without room it is left to the next look.
void QueueClick(const CMouseBase *pMouse, const TClick &click);
/// Takes the oldest.
/// @return false when all changes of this mouse have been seen
TARVIX_INTERNAL bool TakeClick(const CMouseBase *pMouse, TClick &click);
/// Drops those of a mouse that goes, or that nobody looks at.
void ForgetClicks(const CMouseBase *pMouse);
