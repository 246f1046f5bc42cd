#include "tarvix/rect.h"

#include <algorithm>
#include <utility>

namespace
{
// True when all of a lies strictly on the low side of all of b.
bool IsBelow(xlong lA1, xlong lA2, xlong lB1, xlong lB2)
{
    return lA1 < lB1 && lA1 < lB2 && lA2 < lB1 && lA2 < lB2;
}
} // namespace

CRect::CRect() : m_lLeft(0), m_lTop(0), m_lRight(0), m_lBottom(0) {}

CRect::~CRect() {}

void CRect::Set(xlong lLeft, xlong lTop, xlong lRight, xlong lBottom)
{
    m_lLeft = lLeft;
    m_lTop = lTop;
    m_lRight = lRight;
    m_lBottom = lBottom;
}

void CRect::SetXYWH(xlong lX, xlong lY, xlong lWidth, xlong lHeight)
{
    Set(lX, lY, lX + lWidth - 1, lY + lHeight - 1);
}

xlong CRect::Width()
{
    const xlong lDistance = m_lRight - m_lLeft;
    return lDistance < 0 ? -lDistance : lDistance;
}

xlong CRect::Height()
{
    const xlong lDistance = m_lBottom - m_lTop;
    return lDistance < 0 ? -lDistance : lDistance;
}

void CRect::SetEmpty()
{
    Set(0, 0, 0, 0);
}

xlong CRect::IsEmpty()
{
    return m_lRight == m_lLeft && m_lBottom == m_lTop;
}

xlong CRect::IsNull()
{
    return !m_lLeft && !m_lTop && !m_lRight && !m_lBottom;
}

xlong CRect::IsPntInRect(xlong lX, xlong lY)
{
    return m_lLeft <= lX && lX <= m_lRight && m_lTop <= lY && lY <= m_lBottom;
}

void CRect::Copy(const CRect *pSource)
{
    *this = *pSource;
}

xlong CRect::IsEqual(const CRect *pOther)
{
    return m_lLeft == pOther->m_lLeft && m_lTop == pOther->m_lTop && m_lRight == pOther->m_lRight &&
           m_lBottom == pOther->m_lBottom;
}

void CRect::Inflate(xlong lDX, xlong lDY)
{
    Set(m_lLeft - lDX, m_lTop - lDY, m_lRight + lDX, m_lBottom + lDY);
}

void CRect::Normalize()
{
    if (m_lRight < m_lLeft)
        std::swap(m_lLeft, m_lRight);
    if (m_lBottom < m_lTop)
        std::swap(m_lTop, m_lBottom);
}

void CRect::Move(xlong lDX, xlong lDY)
{
    Set(m_lLeft + lDX, m_lTop + lDY, m_lRight + lDX, m_lBottom + lDY);
}

xlong CRect::Intersect(CRect *pA, CRect *pB)
{
    pA->Normalize();
    pB->Normalize();
    if (IsBelow(pA->m_lLeft, pA->m_lRight, pB->m_lLeft, pB->m_lRight) ||
        IsBelow(pB->m_lLeft, pB->m_lRight, pA->m_lLeft, pA->m_lRight) ||
        IsBelow(pA->m_lTop, pA->m_lBottom, pB->m_lTop, pB->m_lBottom) ||
        IsBelow(pB->m_lTop, pB->m_lBottom, pA->m_lTop, pA->m_lBottom))
        return 0;
    // The two inner values of four sorted ones are those of the overlap.
    Set(std::max(pA->m_lLeft, pB->m_lLeft), std::max(pA->m_lTop, pB->m_lTop), std::min(pA->m_lRight, pB->m_lRight),
        std::min(pA->m_lBottom, pB->m_lBottom));
    return 1;
}

void CRect::Union(CRect *pA, CRect *pB)
{
    pA->Normalize();
    pB->Normalize();
    Set(std::min(pA->m_lLeft, pB->m_lLeft), std::min(pA->m_lTop, pB->m_lTop), std::max(pA->m_lRight, pB->m_lRight),
        std::max(pA->m_lBottom, pB->m_lBottom));
}
