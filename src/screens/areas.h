#pragma once

#include "tarvix/rect.h"

/// A list of changed areas of one page.
struct TAreaList
{
    CRect *pAreas;
    xlong *plCount;
    xlong *plFirst; ///< those before this one are cancelled
};

struct SVmode;

/// Merges and appends an area, which may be in the list already.
/// @param mode  whose whole picture a full list becomes
void AddArea(TAreaList list, const CRect &rcNew, const SVmode &mode);
