#pragma once

#include "tarvix/rect.h"

/// A list of changed areas of one page.
struct TAreaList
{
    CRect *pAreas;
    xlong *plCount;
    xlong *plFirst; ///< those before this one are cancelled
};

/// Joins the new area with those of the list that it overlaps enough; these
/// are cancelled in place.
/// @return false when the area is in the list already and bSkipEqual
bool MergeArea(TAreaList list, CRect &rcNew, bool bSkipEqual);
/// Appends an area; a full list becomes one area of the whole picture.
void AppendArea(TAreaList list, const CRect &rcNew, xlong lWidth, xlong lHeight);
