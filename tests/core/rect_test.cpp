#include "tarvix/rect.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <random>

namespace
{
CRect Make(xlong lLeft, xlong lTop, xlong lRight, xlong lBottom)
{
    CRect rc;
    rc.Set(lLeft, lTop, lRight, lBottom);
    return rc;
}

std::array<xlong, 4> Corners(const CRect &rc)
{
    return { rc.m_lLeft, rc.m_lTop, rc.m_lRight, rc.m_lBottom };
}
} // namespace

TEST(CRectTest, SizesAreDistancesOfInclusiveCorners)
{
    CRect rc;
    EXPECT_TRUE(rc.IsNull() && rc.IsEmpty());
    rc.SetXYWH(10, 20, 5, 7);
    EXPECT_EQ((std::array<xlong, 4>{ 10, 20, 14, 26 }), Corners(rc));
    EXPECT_EQ(4, rc.Width());
    EXPECT_EQ(6, rc.Height());
    rc.SetXYWH(0, 0, 0, 0);
    EXPECT_EQ(1, rc.Width());
    EXPECT_EQ(0, rc.IsEmpty());
    EXPECT_EQ(0, rc.IsNull());
    rc = Make(5, 5, 1, 1);
    EXPECT_EQ(4, rc.Width());
    EXPECT_EQ(0, rc.IsPntInRect(3, 3));
    rc.Normalize();
    EXPECT_EQ(1, rc.IsPntInRect(3, 3));
    EXPECT_EQ(1, rc.IsPntInRect(5, 1));
    EXPECT_EQ(0, rc.IsPntInRect(6, 1));
    rc.Inflate(1, 2);
    rc.Move(10, 0);
    EXPECT_EQ((std::array<xlong, 4>{ 10, -1, 16, 7 }), Corners(rc));
}

struct TPairCase
{
    const char *pszName;
    std::array<xlong, 4> a, b;
    bool bMeets;
    std::array<xlong, 4> common, all;
};

const TPairCase s_Pairs[] = {
    { "TouchInOnePixel", { 0, 0, 10, 10 }, { 10, 10, 20, 20 }, true, { 10, 10, 10, 10 }, { 0, 0, 20, 20 } },
    { "SideBySide", { 0, 0, 10, 10 }, { 11, 0, 20, 10 }, false, {}, { 0, 0, 20, 10 } },
    { "Above", { 0, 0, 10, 4 }, { 0, 5, 10, 9 }, false, {}, { 0, 0, 10, 9 } },
    { "Inside", { 0, 0, 10, 10 }, { 2, 3, 4, 5 }, true, { 2, 3, 4, 5 }, { 0, 0, 10, 10 } },
    { "Cross", { 0, 4, 10, 6 }, { 4, 0, 6, 10 }, true, { 4, 4, 6, 6 }, { 0, 0, 10, 10 } },
    { "Reversed", { 10, 10, 0, 0 }, { 8, 20, 20, 8 }, true, { 8, 8, 10, 10 }, { 0, 0, 20, 20 } },
    { "ZeroPullsToTheOrigin", { 5, 5, 6, 6 }, { 0, 0, 0, 0 }, false, {}, { 0, 0, 6, 6 } },
};

TEST(CRectTest, IntersectAndUnionNormaliseTheirArguments)
{
    for (const TPairCase &c : s_Pairs)
        for (const bool bSwapped : { false, true })
        {
            SCOPED_TRACE(c.pszName);
            CRect a = Make(c.a[0], c.a[1], c.a[2], c.a[3]), b = Make(c.b[0], c.b[1], c.b[2], c.b[3]);
            CRect rc = Make(-7, -7, -7, -7);
            ASSERT_EQ(c.bMeets, (bSwapped ? rc.Intersect(&b, &a) : rc.Intersect(&a, &b)) == 1);
            EXPECT_EQ(c.bMeets ? c.common : (std::array<xlong, 4>{ -7, -7, -7, -7 }), Corners(rc));
            EXPECT_LE(a.m_lLeft, a.m_lRight);
            EXPECT_LE(b.m_lTop, b.m_lBottom);
            rc.Union(&a, &b);
            EXPECT_EQ(c.all, Corners(rc));
            a.Intersect(&a, &b);
            EXPECT_EQ(c.bMeets ? c.common[0] : std::min(c.a[0], c.a[2]), a.m_lLeft) << "the result may be an argument";
        }
}

TEST(CRectTest, AgreesWithCountingPixels)
{
    std::mt19937 random(1);
    for (int n = 0; n < 2000; ++n)
    {
        CRect a = Make(random() % 8, random() % 8, random() % 8, random() % 8);
        CRect b = Make(random() % 8, random() % 8, random() % 8, random() % 8);
        CRect rc;
        const xlong lMeets = rc.Intersect(&a, &b);
        for (xlong y = 0; y < 8; ++y)
            for (xlong x = 0; x < 8; ++x)
                ASSERT_EQ(a.IsPntInRect(x, y) && b.IsPntInRect(x, y), lMeets && rc.IsPntInRect(x, y));
    }
}
