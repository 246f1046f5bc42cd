#include "base/areas.h"
#include "tarvix/globals.h"
#include "tarvix/screen.h"

namespace
{
// Plain numbers of a rectangle in order, for the walk over a list.
struct TArea
{
    explicit TArea(const CRect &rc)
        : lLeft(std::min(rc.m_lLeft, rc.m_lRight)), lTop(std::min(rc.m_lTop, rc.m_lBottom)),
          lRight(std::max(rc.m_lLeft, rc.m_lRight)), lBottom(std::max(rc.m_lTop, rc.m_lBottom))
    {
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

CRect MakeArea(xlong lLeft, xlong lTop, xlong lRight, xlong lBottom)
{
    CRect rc;
    rc.m_lLeft = std::min(lLeft, lRight);
    rc.m_lTop = std::min(lTop, lBottom);
    rc.m_lRight = std::max(lLeft, lRight);
    rc.m_lBottom = std::max(lTop, lBottom);
    return rc;
}
} // namespace

bool MergeArea(TAreaList list, CRect &rcNew, bool bSkipEqual)
{
    TArea area(rcNew);
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
            rcEntry.m_lLeft = rcEntry.m_lTop = -100;
            rcEntry.m_lRight = rcEntry.m_lBottom = -101;
            area = both;
        }
    }
    rcNew.m_lLeft = area.lLeft;
    rcNew.m_lTop = area.lTop;
    rcNew.m_lRight = area.lRight;
    rcNew.m_lBottom = area.lBottom;
    return true;
}

void AppendArea(TAreaList list, const CRect &rcNew, xlong lWidth, xlong lHeight)
{
    if (!*list.plCount)
        *list.plFirst = 0;
    if (*list.plCount < CScreenBase::MAX_AREAS)
    {
        list.pAreas[(*list.plCount)++] = rcNew;
        return;
    }
    list.pAreas[0].Set(0, 0, lWidth - 1, lHeight - 1);
    *list.plCount = 1;
    *list.plFirst = 0;
}

void CScreenBase::AddClearArea(xlong lLeft, xlong lTop, xlong lRight, xlong lBottom)
{
    if (!m_bPersistentMode || !m_pMode)
        return;
    CRect rc = MakeArea(lLeft, lTop, lRight, lBottom);
    const TAreaList list = { m_ClearAreas[m_lPage], &m_lClearCount[m_lPage], &m_lClearFirst[m_lPage] };
    if (MergeArea(list, rc, true))
        AppendArea(list, rc, m_pMode->lWidth, m_pMode->lHeight);
}

void CScreenBase::AddClearAreaGui(xlong lLeft, xlong lTop, xlong lRight, xlong lBottom)
{
    const xlong lPage = m_lPage;
    for (m_lPage = 0; m_lPage < PAGES; ++m_lPage)
        AddClearArea(lLeft, lTop, lRight, lBottom);
    m_lPage = lPage;
}

void CScreenBase::AddClearAreaPersistent(xlong lLeft, xlong lTop, xlong lRight, xlong lBottom)
{
    if (!m_pMode)
        return;
    CRect rc = MakeArea(lLeft, lTop, lRight, lBottom);
    MergeArea({ m_PersistentAreas[m_lPage], &m_lPersistentCount[m_lPage], &m_lPersistentFirst[m_lPage] }, rc, false);
    // Every page shows the persistent picture, so each has to be restored.
    const xlong lPages = std::min<xlong>(m_lNumPages, PAGES);
    for (xlong i = 0; i < lPages; ++i)
        AppendArea({ m_PersistentAreas[i], &m_lPersistentCount[i], &m_lPersistentFirst[i] }, rc, m_pMode->lWidth,
                   m_pMode->lHeight);
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
    const xlong lPage = m_lPage;
    for (m_lPage = 0; m_lPage < PAGES; ++m_lPage)
        ASA(lLeft, lTop, lRight, lBottom);
    m_lPage = lPage;
}

void CScreenBase::ASA(xlong lLeft, xlong lTop, xlong lRight, xlong lBottom)
{
    if (!m_pMode)
        return;
    CRect rc = MakeArea(lLeft, lTop, lRight, lBottom);
    const TAreaList list = { m_ValidateAreas[m_lPage], &m_lValidateCount[m_lPage], &m_lValidateFirst[m_lPage] };
    if (MergeArea(list, rc, true))
        AppendArea(list, rc, m_pMode->lWidth, m_pMode->lHeight);
}
