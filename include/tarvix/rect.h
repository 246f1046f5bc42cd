#pragma once

#include "tarvix/memory.h"
#include "tarvix/types.h"

/// Rectangle with inclusive corners, in pixels. Nothing keeps the corners in
/// order. Coordinates wrap on 32 bits.
class TARVIX_API CRect
{
public:
    TARVIX_HEAP_CLASS

    CRect();
    CRect(const CRect &) = default;
    CRect &operator=(const CRect &) = default;
    virtual ~CRect();

    /// Stores the corners as given.
    void Set(xlong lLeft, xlong lTop, xlong lRight, xlong lBottom);
    /// The right corner is x + width - 1, so Width then gives one less than lWidth.
    void SetXYWH(xlong lX, xlong lY, xlong lWidth, xlong lHeight);
    /// Distance of the corners: one less than the count of pixels.
    xlong Width();
    xlong Height();
    /// All coordinates 0.
    void SetEmpty();
    /// 1 when the corners are one pixel.
    xlong IsEmpty();
    /// 1 when all coordinates are 0.
    xlong IsNull();
    xlong IsPntInRect(xlong lX, xlong lY);
    void Copy(const CRect *pSource);
    /// Compares as stored.
    xlong IsEqual(const CRect *pOther);
    void Inflate(xlong lDX, xlong lDY);
    void Normalize();
    void Move(xlong lDX, xlong lDY);
    /// Both arguments are normalised and stay so; this may be one of them.
    /// @return 1 with the common area stored; 0 with this left as it was
    xlong Intersect(CRect *pA, CRect *pB);
    /// Both arguments are normalised and stay so.
    void Union(CRect *pA, CRect *pB);

    xlong m_lLeft;
    xlong m_lTop;
    xlong m_lRight;
    xlong m_lBottom;
};
