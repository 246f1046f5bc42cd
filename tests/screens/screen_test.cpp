#include "tarvix/screen.h"

#include "screensupport.h"

#include <algorithm>
#include <array>
#include <random>
#include <vector>

namespace
{
std::array<xlong, 4> Corners(const CRect &rc)
{
    return { rc.m_lLeft, rc.m_lTop, rc.m_lRight, rc.m_lBottom };
}

// The merging by its rule alone, with products that wrap on 32 bits.
class CAreaModel
{
public:
    void Add(const std::array<xlong, 4> &rcNew)
    {
        std::array<xlong, 4> rc = { std::min(rcNew[0], rcNew[2]), std::min(rcNew[1], rcNew[3]),
                                    std::max(rcNew[0], rcNew[2]), std::max(rcNew[1], rcNew[3]) };
        size_t i = 0;
        while (i < m_Areas.size() && m_Areas[i] == s_Cancelled)
            ++i;
        for (; i < m_Areas.size(); ++i)
        {
            std::array<xlong, 4> &entry = m_Areas[i];
            if (entry == rc)
                return;
            const std::array<xlong, 4> low = { std::min(entry[0], entry[2]), std::min(entry[1], entry[3]),
                                               std::max(entry[0], entry[2]), std::max(entry[1], entry[3]) };
            const std::array<xlong, 4> both = { std::min(low[0], rc[0]), std::min(low[1], rc[1]),
                                                std::max(low[2], rc[2]), std::max(low[3], rc[3]) };
            if ((int)(Size(both) - Size(low) - Size(rc)) < 0)
            {
                entry = s_Cancelled;
                rc = both;
            }
        }
        if (m_Areas.size() < 128)
            m_Areas.push_back(rc);
        else
            m_Areas = { { 0, 0, 639, 479 } };
    }

    std::vector<std::array<xlong, 4>> m_Areas;

private:
    static constexpr std::array<xlong, 4> s_Cancelled = { -100, -100, -101, -101 };

    static unsigned Distance(xlong lA, xlong lB)
    {
        const unsigned u = (unsigned)lB - (unsigned)lA;
        return (int)u < 0 ? 0u - u : u;
    }
    static unsigned Size(const std::array<xlong, 4> &rc) { return Distance(rc[1], rc[3]) * Distance(rc[0], rc[2]); }
};

class CScreenBaseTest : public CScreenTest
{
};
} // namespace

TEST_F(CScreenBaseTest, AreasMergeWhenTheyOverlapEnough)
{
    SetMode(640, 480, 16);
    CDibScreen &s = *Screen();
    xlong &lCount = s.m_lClearCount[0];
    ASSERT_EQ(0, lCount);
    s.AddClearArea(0, 0, 10, 10);
    s.AddClearArea(0, 0, 10, 10);
    EXPECT_EQ(1, lCount) << "an equal area is there already";
    s.AddClearArea(15, 15, 5, 5);
    EXPECT_EQ(2, lCount) << "reversed, and too little in common";
    EXPECT_EQ((std::array<xlong, 4>{ 5, 5, 15, 15 }), Corners(s.m_ClearAreas[0][1]));
    s.AddClearArea(1, 1, 9, 9);
    EXPECT_EQ(3, lCount);
    EXPECT_EQ((std::array<xlong, 4>{ -100, -100, -101, -101 }), Corners(s.m_ClearAreas[0][0])) << "cancelled";
    EXPECT_EQ((std::array<xlong, 4>{ 0, 0, 10, 10 }), Corners(s.m_ClearAreas[0][2]));
    s.m_bPersistentMode = 0;
    s.AddClearArea(100, 100, 110, 110);
    EXPECT_EQ(3, lCount) << "only with a persistent picture";
    s.m_bPersistentMode = 1;

    lCount = 0;
    for (xlong i = 0; i < 128; ++i)
        s.AddClearArea(i * 4, 0, i * 4, 0);
    EXPECT_EQ(128, lCount);
    s.AddClearArea(0, 300, 5, 305);
    EXPECT_EQ(1, lCount);
    EXPECT_EQ((std::array<xlong, 4>{ 0, 0, 639, 479 }), Corners(s.m_ClearAreas[0][0]));
}

TEST_F(CScreenBaseTest, AreasMergeByTheRuleWhereverTheyLie)
{
    SetMode(640, 480, 16);
    CDibScreen &s = *Screen();
    std::mt19937 random(7);
    // The rows with a frame begin with one area that holds all others.
    struct TCase
    {
        unsigned uSpread;
        xlong lFrame;
    };
    for (const auto [uSpread, lFrame] : { TCase{ 60, 0 },
                                          { 700, 0 },
                                          { 40000, 0 },
                                          { 200000, 0 },
                                          { 4000000000u, 0 },
                                          { 40, 60 },
                                          { 400, 240 },
                                          { 4000, 16384 },
                                          { 4000, 20000 },
                                          { 40000, 60000 } })
    {
        s.m_lClearCount[0] = 0;
        CAreaModel model;
        if (lFrame)
        {
            s.AddClearArea(-lFrame, -lFrame, lFrame - 1, lFrame - 1);
            model.Add({ -lFrame, -lFrame, lFrame - 1, lFrame - 1 });
        }
        for (int n = 0; n < 600; ++n)
        {
            std::array<xlong, 4> rc;
            for (xlong &l : rc)
                l = (xlong)(random() % uSpread - uSpread / 2);
            if (n % 16 == 15 && n > 16)
                rc = model.m_Areas.back();
            else if (n % 3)
            {
                rc[2] = rc[0] + (xlong)(random() % 20);
                rc[3] = rc[1] + (xlong)(random() % 20);
            }
            s.AddClearArea(rc[0], rc[1], rc[2], rc[3]);
            model.Add(rc);
            ASSERT_EQ((xlong)model.m_Areas.size(), s.m_lClearCount[0]) << uSpread << ", " << n;
            for (size_t i = 0; i < model.m_Areas.size(); ++i)
                ASSERT_EQ(model.m_Areas[i], Corners(s.m_ClearAreas[0][i])) << uSpread << ", " << n << ", " << i;
        }
    }
}

TEST_F(CScreenBaseTest, ListsReachTheirPages)
{
    SetMode(640, 480, 8);
    CDibScreen &s = *Screen();
    s.m_lValidateCount[0] = 0;
    s.AddClearAreaPersistent(1, 2, 3, 4);
    EXPECT_EQ(1, s.m_lPersistentCount[0]);
    EXPECT_LE(1, s.m_lPersistentCount[1]);
    EXPECT_EQ(0, s.m_lPersistentCount[2]) << "two pages in a window";
    s.AddClearAreaGui(1, 2, 3, 4);
    EXPECT_EQ(1, s.m_lClearCount[0]);
    EXPECT_EQ(0, s.m_lClearCount[1]) << "a window takes the plain operation";
    s.SetClip(10, 10, 20, 20);
    s.m_lPage = 1;
    s.AddShadowArea(0, 0, 12, 12);
    s.AddShadowArea(0, 0, 5, 5);
    for (int nPage = 0; nPage < 3; ++nPage)
    {
        ASSERT_EQ(1, s.m_lValidateCount[nPage]);
        EXPECT_EQ((std::array<xlong, 4>{ 10, 10, 12, 12 }), Corners(s.m_ValidateAreas[nPage][0]));
    }
    EXPECT_EQ(1, s.m_lPage) << "still the present page";
    s.m_lPage = 0;
}

TEST_F(CScreenBaseTest, ClipStackHolds32)
{
    SetMode(640, 480, 8);
    CDibScreen &s = *Screen();
    s.SetClip(-5, 10, 1000, 20);
    EXPECT_EQ((std::array<xlong, 4>{ 0, 10, 639, 20 }), Corners(s.m_rcClip));
    s.SetSubClip(100, 0, 50, 15);
    EXPECT_EQ((std::array<xlong, 4>{ 50, 10, 100, 15 }), Corners(s.m_rcClip));
    EXPECT_EQ(1, s.PushClip());
    s.SetSubClip(0, 0, 5, 5);
    EXPECT_EQ((std::array<xlong, 4>{ 0, 0, 0, 0 }), Corners(s.m_rcClip)) << "one pixel is still let through";
    for (int i = 1; i < 32; ++i)
        EXPECT_EQ(1, s.PushClip());
    EXPECT_EQ(0, s.PushClip());
    for (int i = 0; i < 32; ++i)
        EXPECT_EQ(1, s.PopClip());
    EXPECT_EQ((std::array<xlong, 4>{ 50, 10, 100, 15 }), Corners(s.m_rcClip));
    EXPECT_EQ(0, s.PopClip());
    EXPECT_EQ(1, s.PushClip()) << "a pop too many does no harm";
}

TEST_F(CScreenBaseTest, BuffersComeAndGo)
{
    CDibScreen &s = *Screen();
    EXPECT_EQ(0, s.SetPersistentMode(1)) << "not without a mode";
    EXPECT_EQ(0, s.m_bPersistentMode);
    SetMode(800, 600, 24);
    EXPECT_EQ(1, s.SetBackgroundMode(1));
    EXPECT_EQ(1, s.SetAlphaBufferMode(1));
    ASSERT_TRUE(s.m_pPersistent && s.m_pBackground && s.m_pAlpha);
    EXPECT_EQ(24, s.m_pBackground->m_lDepth);
    EXPECT_EQ(8, s.m_pAlpha->m_lDepth);
    EXPECT_EQ(800, s.m_pAlpha->m_lWidth);

    // The background's copies have odd sizes.
    TRGBA white(255, 255, 255), found;
    s.m_pPersistent->Fill(&white);
    s.SetPersistentToBackground();
    s.m_pBackground->GetPixel(798, 598, &found);
    EXPECT_EQ(255, found.ucRed);
    s.m_pBackground->GetPixel(799, 598, &found);
    EXPECT_EQ(0, found.ucRed);
    TRGBA black(0, 0, 0);
    s.m_pPersistent->Fill(&black);
    s.UpdateFromBackgroundToPersistent(0, 0, 1, 1);
    s.m_pPersistent->GetPixel(639, 479, &found);
    EXPECT_EQ(255, found.ucRed);
    s.m_pPersistent->GetPixel(640, 479, &found);
    EXPECT_EQ(0, found.ucRed);

    // A grey copy of the alpha source, made in place.
    CBitmap alpha;
    alpha.CreateRGB(4, 4, 24, 8, 8, 8, 0, 8, 16, 0);
    alpha.Fill(&white);
    s.DrawBitmapAlpha(&alpha, 0, 0, 2, 3, -1, -1, 0, 0);
    EXPECT_EQ(8, alpha.m_lDepth);
    EXPECT_EQ(alpha.m_pData[0], s.m_pAlpha->m_pData[3 * s.m_pAlpha->m_lPitch + 2]);

    EXPECT_EQ(1, s.SetPersistent(0));
    EXPECT_EQ(0, s.m_bPersistentMode);
    EXPECT_EQ(nullptr, s.m_pPersistent);
    s.ExitMode();
    EXPECT_EQ(nullptr, s.GetActiveMode());
    EXPECT_EQ(nullptr, s.m_pAlpha);
    EXPECT_EQ(0, s.ModeFirst()) << "the mode records are gone too";
}

// Each depth has its own way to grey.
TEST_F(CScreenBaseTest, AGreyScreenBecomesThePersistentPicture)
{
    for (xlong lDepth : { 8, 16, 24 })
    {
        SetMode(640, 480, lDepth);
        CDibScreen &s = *Screen();
        const std::vector<unsigned char> frame = FillFrame(5);
        EXPECT_EQ(1, s.SetScreenToPersistentGrey());
        s.FlipPage();
        EXPECT_EQ(0, s.m_bGreyPending);
        const CBitmap &p = *s.m_pPersistent;
        TRGBA black(0, 0, 0);
        for (xlong y = 0; y < 480; y += 7)
        {
            for (xlong x = 0; x < 640; x += 5)
            {
                const unsigned char *pFrom = &frame[(size_t)y * Mode().lRowBytes + x * Mode().lBytesPerPixel];
                const unsigned char *pTo = p.m_pData + y * p.m_lPitch + x * p.m_lBytesPerPixel;
                if (lDepth == 8)
                    ASSERT_EQ((x + y) % 2 ? s.m_Palette.FindMatch(&black) : *pFrom, *pTo);
                else if (lDepth == 16)
                {
                    unsigned short usFrom, usTo;
                    memcpy(&usFrom, pFrom, 2);
                    memcpy(&usTo, pTo, 2);
                    const int nGrey = ((usFrom >> 10 & 31) + (usFrom >> 5 & 31) + (usFrom & 31)) / 6;
                    ASSERT_EQ(nGrey << 10 | nGrey << 5 | nGrey, usTo);
                }
                else
                    ASSERT_EQ((pFrom[0] + pFrom[1] + pFrom[2]) / 6, pTo[2]);
            }
        }
    }
}

TEST_F(CScreenBaseTest, PersistentDrawingQueuesWhatItDrew)
{
    SetMode(640, 480, 16);
    CDibScreen &s = *Screen();
    CBitmap bitmap;
    bitmap.CreateRGB(20, 10, 16, 5, 5, 5, 10, 5, 0, 0);
    TRGBA white(255, 255, 255);
    bitmap.Fill(&white);
    s.m_lPersistentCount[0] = 0;
    s.DrawBitmapPersistent(&bitmap, 0, 0, 630, -4, -1, -2, 0, 0);
    ASSERT_EQ(1, s.m_lPersistentCount[0]);
    EXPECT_EQ((std::array<xlong, 4>{ 630, 0, 639, 5 }), Corners(s.m_PersistentAreas[0][0]));
    s.DrawBitmapPersistent(&bitmap, 0, 0, 640, 0, -1, -1, 0, 0);
    EXPECT_EQ(1, s.m_lPersistentCount[0]);
    CRect rcFrom, rcTo;
    rcTo.Set(100, 100, 110, 110);
    s.DrawBitmapPersistentScale(&bitmap, &rcFrom, &rcTo, 0);
    EXPECT_EQ(2, s.m_lPersistentCount[0]);
    s.m_bPersistentMode = 0;
    s.DrawBitmapPersistent(&bitmap, 0, 0, 0, 0, -1, -1, 0, 0);
    EXPECT_EQ(2, s.m_lPersistentCount[0]);
}
