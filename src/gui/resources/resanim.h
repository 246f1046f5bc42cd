// Frame animations of controls.
#pragma once

#include "tarvix/control.h"

class CBitmap;

/// Cuts a picture into frames of equal size, row by row from the top.
/// @param pSheet    not owned; must outlive the result unless lMode is 1
/// @param lFrameW   pixels, as lFrameH
/// @param lCount    of frames; 0 for lPerRow times lRows
/// @param lPerRow   0 for all in one row
/// @param lRows     0 for as many as it takes
/// @param lMode     1 makes a picture of each frame, in the format of the screen
///                  in the globals; otherwise the frames are areas of the sheet
/// @param lTrans    1 leaves out the sheet's key colour
/// @return with a delay of 20 ms, for FreeCntrlAnim; null without frames, for
///         more than RES_MAX_FRAMES or RES_MAX_PIXELS, and with XERR_MEMORY
TARVIX_INTERNAL TCntrlAnim *MakeCntrlAnim(CBitmap *pSheet, xlong lFrameW, xlong lFrameH, xlong lCount, xlong lPerRow,
                                          xlong lRows, xlong lMode, xlong lTrans);
/// Null is ignored.
TARVIX_INTERNAL void FreeCntrlAnim(TCntrlAnim *pAnim);
