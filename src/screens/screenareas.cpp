// The lists of changed areas. What holds of each, between two calls:
// 1. The count lies from 0 to MAX_AREAS. Whoever has used a list up sets it to 0
//    and leaves the first alone; the next area that comes puts that right.
// 2. An entry that was merged into a later one is cancelled in place, as
//    (-100, -100, -101, -101): it lies outside every picture, so that readers
//    need not look for it. Nothing moves up.
// 3. Entries before the first are cancelled; so can later ones be. The first is
//    not behind the count, except as told under 1.
// 4. All others have their corners in order. They may overlap, by too little to
//    be worth merging, and may lie outside the picture: readers clip.

#include "screens/areas.h"

#include "core/invariant.h"
#include "tarvix/globals.h"
#include "tarvix/screen.h"

#include <algorithm>
#include <utility>

namespace
{
// Plain numbers of a rectangle in order, for the walk over a list.
struct TArea
{
    TArea(xlong lX1, xlong lY1, xlong lX2, xlong lY2)
        : lLeft(std::min(lX1, lX2)), lTop(std::min(lY1, lY2)), lRight(std::max(lX1, lX2)), lBottom(std::max(lY1, lY2))
    {
    }
    explicit TArea(const CRect &rc) : TArea(rc.m_lLeft, rc.m_lTop, rc.m_lRight, rc.m_lBottom) {}

    void Store(CRect &rc) const
    {
        rc.m_lLeft = lLeft;
        rc.m_lTop = lTop;
        rc.m_lRight = lRight;
        rc.m_lBottom = lBottom;
    }

    // Of the corners' distances, not of pixels: the merging rule counts on it.
    xlong Area() const { return Distance(lTop, lBottom) * Distance(lLeft, lRight); }
    static xlong Distance(xlong lA, xlong lB) { return lB - lA < 0 ? lA - lB : lB - lA; }

    void Add(const TArea &other)
    {
        lLeft = std::min(lLeft, other.lLeft);
        lTop = std::min(lTop, other.lTop);
        lRight = std::max(lRight, other.lRight);
        lBottom = std::max(lBottom, other.lBottom);
    }

    // Whether an area that holds both is sure to be as large as the two. Said
    // only of coordinates whose products can't wrap.
    bool IsApart(const TArea &other) const
    {
        const bool bApart =
            (other.lLeft >= lRight) | (lLeft >= other.lRight) | (other.lTop >= lBottom) | (lTop >= other.lBottom);
        return bApart && IsSmall() && other.IsSmall();
    }
    bool IsSmall() const
    {
        return !(((lLeft + 16384) | (lTop + 16384) | (lRight + 16384) | (lBottom + 16384)) & ~32767);
    }

    xlong lLeft, lTop, lRight, lBottom;
};

bool IsCancelled(const CRect &rc)
{
    return rc.m_lLeft == -100 && rc.m_lRight == -101;
}

void Cancel(CRect &rcEntry)
{
    rcEntry.m_lLeft = rcEntry.m_lTop = -100;
    rcEntry.m_lRight = rcEntry.m_lBottom = -101;
}

[[maybe_unused]] bool IsSound(TAreaList list)
{
    if (*list.plCount < 0 || *list.plCount > CScreenBase::MAX_AREAS || *list.plFirst < 0 ||
        *list.plFirst > *list.plCount)
        return false;
    for (xlong i = 0; i < *list.plCount; ++i)
    {
        const CRect &rc = list.pAreas[i];
        if (i < *list.plFirst ? !IsCancelled(rc)
                              : !IsCancelled(rc) && (rc.m_lLeft > rc.m_lRight || rc.m_lTop > rc.m_lBottom))
            return false;
    }
    return true;
}

// Joins the new area with those of the list that it overlaps enough; these are
// cancelled in place. False when the area is in the list already and bSkipEqual.
bool MergeArea(TAreaList list, TArea &area, bool bSkipEqual)
{
    xlong &lFirst = *list.plFirst;
    if (lFirst > *list.plCount)
        lFirst = 0;
    while (lFirst < *list.plCount && IsCancelled(list.pAreas[lFirst]))
        ++lFirst;
    for (xlong i = lFirst; i < *list.plCount; ++i)
    {
        CRect &rcEntry = list.pAreas[i];
        if (bSkipEqual && rcEntry.m_lLeft == area.lLeft && rcEntry.m_lTop == area.lTop &&
            rcEntry.m_lRight == area.lRight && rcEntry.m_lBottom == area.lBottom)
            return false;
        const TArea entry(rcEntry);
        if (area.IsApart(entry))
            continue;
        TArea both = area;
        both.Add(entry);
        if (both.Area() - entry.Area() - area.Area() < 0)
        {
            Cancel(rcEntry);
            area = both;
        }
    }
    return true;
}

// A full list becomes one area of the whole picture.
void AppendArea(TAreaList list, const TArea &area, const SVmode &mode)
{
    if (!*list.plCount)
        *list.plFirst = 0;
    if (*list.plCount < CScreenBase::MAX_AREAS)
    {
        area.Store(list.pAreas[(*list.plCount)++]);
        TARVIX_INVARIANT(IsSound(list));
        return;
    }
    list.pAreas[0].Set(0, 0, mode.lWidth - 1, mode.lHeight - 1);
    *list.plCount = 1;
    *list.plFirst = 0;
}

// What merging and appending come to when all of the list is one last entry
// that holds the area: the entry moves to the end. So it goes when windows are
// shown, again and again for each of their controls.
bool MoveHolder(TAreaList list, const TArea &area)
{
    const xlong lLast = *list.plCount - 1;
    if (lLast < 0 || *list.plFirst != lLast || lLast + 1 >= CScreenBase::MAX_AREAS || area.lLeft == area.lRight ||
        area.lTop == area.lBottom)
        return false;
    CRect *const pLast = list.pAreas + lLast;
    const __m128i NewArea = _mm_setr_epi32(area.lLeft, area.lTop, area.lRight, area.lBottom);
    const __m128i Entry = _mm_loadu_si128((const __m128i *)&pLast->m_lLeft);
    const __m128i IsLess = _mm_cmpgt_epi32(NewArea, Entry);
    const __m128i IsOutside = _mm_unpacklo_epi64(_mm_cmpgt_epi32(Entry, NewArea), _mm_unpackhi_epi64(IsLess, IsLess));
    const __m128i IsLarge = _mm_andnot_si128(_mm_set1_epi32(32767), _mm_add_epi32(Entry, _mm_set1_epi32(16384)));
    const __m128i IsBad = _mm_or_si128(IsOutside, IsLarge);
    if (_mm_movemask_epi8(_mm_cmpeq_epi32(IsBad, _mm_setzero_si128())) != 0xffff ||
        _mm_movemask_epi8(_mm_cmpeq_epi32(Entry, NewArea)) == 0xffff)
        return false;
    _mm_storeu_si128((__m128i *)&pLast[1].m_lLeft, Entry);
    _mm_storeu_si128((__m128i *)&pLast->m_lLeft, _mm_setr_epi32(-100, -100, -101, -101));
    *list.plFirst = (*list.plCount)++;
    TARVIX_INVARIANT(IsSound(list));
    return true;
}

[[gnu::noinline]] void AddToMany(TAreaList list, TArea area, const SVmode &mode)
{
    if (MergeArea(list, area, true))
        AppendArea(list, area, mode);
}

// Calls the function with each page in turn as the present one.
template <class TFunction>
void OnEachPage(CScreenBase &screen, TFunction function)
{
    const xlong lPage = screen.m_lPage;
    for (screen.m_lPage = 0; screen.m_lPage < CScreenBase::PAGES; ++screen.m_lPage)
        function();
    screen.m_lPage = lPage;
}

inline void Add(TAreaList list, const TArea &area, const SVmode &mode)
{
    if (!MoveHolder(list, area))
        AddToMany(list, area, mode);
}
} // namespace

void AddArea(TAreaList list, const CRect &rcNew, const SVmode &mode)
{
    Add(list, TArea(rcNew), mode);
}

void CScreenBase::AddClearArea(xlong lLeft, xlong lTop, xlong lRight, xlong lBottom)
{
    if (!m_bPersistentMode || !m_pMode)
        return;
    Add({ m_ClearAreas[m_lPage], &m_lClearCount[m_lPage], &m_lClearFirst[m_lPage] },
        TArea(lLeft, lTop, lRight, lBottom), *m_pMode);
}

void CScreenBase::AddClearAreaGui(xlong lLeft, xlong lTop, xlong lRight, xlong lBottom)
{
    OnEachPage(*this, [&] { AddClearArea(lLeft, lTop, lRight, lBottom); });
}

void CScreenBase::AddClearAreaPersistent(xlong lLeft, xlong lTop, xlong lRight, xlong lBottom)
{
    if (!m_pMode)
        return;
    TArea area(lLeft, lTop, lRight, lBottom);
    MergeArea({ m_PersistentAreas[m_lPage], &m_lPersistentCount[m_lPage], &m_lPersistentFirst[m_lPage] }, area, false);
    // Every page shows the persistent picture, so each has to be restored.
    const xlong lPages = std::min<xlong>(m_lNumPages, PAGES);
    for (xlong i = 0; i < lPages; ++i)
        AppendArea({ m_PersistentAreas[i], &m_lPersistentCount[i], &m_lPersistentFirst[i] }, area, *m_pMode);
}

void CScreenBase::AddShadowArea(xlong lLeft, xlong lTop, xlong lRight, xlong lBottom)
{
    if (lLeft > lRight)
        std::swap(lLeft, lRight);
    if (lTop > lBottom)
        std::swap(lTop, lBottom);
    const CRect &rcClip = glb->m_pScreen ? glb->m_pScreen->m_rcClip : m_rcClip;
    lLeft = std::max(lLeft, rcClip.m_lLeft);
    lTop = std::max(lTop, rcClip.m_lTop);
    lRight = std::min(lRight, rcClip.m_lRight);
    lBottom = std::min(lBottom, rcClip.m_lBottom);
    if (lLeft > lRight || lTop > lBottom)
        return;
    OnEachPage(*this, [&] { ASA(lLeft, lTop, lRight, lBottom); });
}

void CScreenBase::ASA(xlong lLeft, xlong lTop, xlong lRight, xlong lBottom)
{
    if (!m_pMode)
        return;
    Add({ m_ValidateAreas[m_lPage], &m_lValidateCount[m_lPage], &m_lValidateFirst[m_lPage] },
        TArea(lLeft, lTop, lRight, lBottom), *m_pMode);
}
