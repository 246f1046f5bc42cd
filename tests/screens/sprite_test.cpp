#include "tarvix/sprite.h"

#include "allocations.h"
#include "screensupport.h"
#include "tarvix/bitmap.h"

namespace
{
class CSpriteTest : public CScreenTest
{
protected:
    CSpriteTest() { SetMode(640, 480, 24); }

    // Frames side by side, each of one colour, the key in the picture's first pixel.
    void MakeStrip(CBitmap &bitmap, xlong lFrames, xlong lWidth, xlong lHeight)
    {
        ASSERT_EQ(1, bitmap.CreateRGB(lFrames * lWidth, lHeight, 24, 8, 8, 8, 16, 8, 0, 0));
        bitmap.m_rcClip.Set(0, 0, bitmap.m_lWidth - 1, lHeight - 1);
        for (xlong y = 0; y < lHeight; ++y)
            for (xlong x = 0; x < bitmap.m_lWidth; ++x)
            {
                const TRGBA Color((unsigned char)(50 + x / lWidth * 40), (unsigned char)(x + y ? 200 : 1), 7);
                bitmap.PutPixel(x, y, &Color);
            }
    }

    static TRGBA Shown(xlong lX, xlong lY)
    {
        const unsigned char *p = Screen()->LockScreenBuffer() + lY * Mode().lRowBytes + lX * 3;
        return TRGBA(p[2], p[1], p[0]);
    }

    CBitmap m_Strip;
};

TEST_F(CSpriteTest, LeavesNoTraceWhereItHasBeen)
{
    for (const xlong lDepth : { 8, 16, 24 })
    {
        SCOPED_TRACE(lDepth);
        SetMode(640, 480, lDepth);
        CBitmap strip;
        MakeStrip(strip, 2, 20, 16);
        if (lDepth == 8)
            ASSERT_EQ(1, strip.ConvertIndex(-1, -1, 8, Screen()->GetPalette(), 0));
        else
            ASSERT_EQ(1, Screen()->MakeScreenFormat(&strip, 0));
        const std::vector<unsigned char> before = FillFrame(3);
        CSprite one, two, top;
        ASSERT_EQ(1, one.Create(&strip, nullptr, 20, 16, 100, 100, XSPRITE_LOOP, 0, 1));
        ASSERT_EQ(1, two.Create(&strip, nullptr, 20, 16, 110, 108, XSPRITE_LOOP, 0, 0));
        ASSERT_EQ(1, top.Create(&strip, nullptr, 20, 16, 95, 95, XSPRITE_LOOP | XSPRITE_ON_TOP, 0, 1));
        std::mt19937 random(9);
        for (int nFrame = 0; nFrame < 30; ++nFrame)
        {
            Screen()->FlipPage();
            ASSERT_NE("", FirstDifference(before, Frame(), Mode()));
            Screen()->ClearBuffer();
            ASSERT_EQ("", FirstDifference(before, Frame(), Mode())) << nFrame;
            // Over all four edges too.
            one.SetPosition((xlong)(random() % 700) - 30, (xlong)(random() % 520) - 20);
            two.SetPosition(one.GetPositionX() + 5, one.GetPositionY() - 5);
            top.SetRelativePosition((xlong)(random() % 21) - 10, 3);
        }
        one.ClearBaseFlag(XSPRITE_VISIBLE);
        two.ClearBaseFlag(XSPRITE_VISIBLE);
        top.ClearBaseFlag(XSPRITE_VISIBLE);
        Screen()->FlipPage();
        EXPECT_EQ("", FirstDifference(before, Frame(), Mode()));
        Screen()->ClearBuffer();
        EXPECT_EQ("", FirstDifference(before, Frame(), Mode()));
    }
}

TEST_F(CSpriteTest, AnimatesByItsMode)
{
    const struct
    {
        xlong lMode, lDelay;
        const char *pszFrames; ///< current frame after each screen frame; then the status
    } cases[] = {
        { XSPRITE_LOOP, 0, "1201201 1" },
        { XSPRITE_ONCE, 0, "1222222 0" },
        { XSPRITE_ONCE_BACK, 0, "1200000 0" },
        { XSPRITE_PING_PONG, 0, "1210121 2" },
        { XSPRITE_PING_PONG_ONCE, 0, "1210000 0" },
        { 3, 0, "0000000 1" },
        { 0, 0, "0000000 1" },
        { XSPRITE_LOOP, 2, "1112220 1" },
    };
    MakeStrip(m_Strip, 3, 10, 10);
    for (const auto &c : cases)
    {
        CSprite sprite;
        ASSERT_EQ(1, sprite.Create(&m_Strip, nullptr, 10, 10, 5, 5, c.lMode, c.lDelay, 0));
        EXPECT_EQ(3, sprite.m_lNumFrames);
        std::string strFrames;
        for (int n = 0; n < 7; ++n)
        {
            Screen()->FlipPage();
            Screen()->ClearBuffer();
            strFrames += (char)('0' + sprite.m_lCurFrame);
        }
        strFrames += std::string(" ") + (char)('0' + sprite.m_lAnimStatus);
        EXPECT_EQ(c.pszFrames, strFrames) << c.lMode << ", " << c.lDelay;
    }
    // One frame alone: there is nowhere to go.
    CSprite single;
    ASSERT_EQ(1, single.Create(&m_Strip, nullptr, 30, 10, 5, 5, XSPRITE_PING_PONG, 0, 0));
    for (int n = 0; n < 5; ++n)
    {
        Screen()->FlipPage();
        Screen()->ClearBuffer();
        EXPECT_EQ(0, single.m_lCurFrame);
    }
}

TEST_F(CSpriteTest, TakesFramesFromAListAndDrawsInItsClip)
{
    MakeStrip(m_Strip, 3, 10, 10);
    FillFrame(1);
    const TPoint frames[] = { { 20, 0 }, { 0, 0 }, { -1, 0 } };
    CSprite sprite;
    ASSERT_EQ(1, sprite.Create(&m_Strip, frames, 10, 10, 50, 60, XSPRITE_LOOP, 20, 0));
    EXPECT_EQ(2, sprite.m_lNumFrames);
    CRect rcClip;
    rcClip.Set(50, 60, 54, 69);
    sprite.SetSpriteClipArea(rcClip);
    EXPECT_EQ(1, sprite.CheckBaseFlag(XSPRITE_USE_CLIP));
    const TRGBA Outside = Shown(55, 62);
    Screen()->FlipPage();
    EXPECT_EQ(130, Shown(52, 62).ucRed) << "the third field of the picture";
    EXPECT_EQ(Outside.ucRed, Shown(55, 62).ucRed);
    EXPECT_EQ(0, Screen()->m_lClipDepth) << "the screen's own clip is back";
    Screen()->ClearBuffer();
    sprite.SetCurrentFrame(2);
    EXPECT_NE(2, sprite.m_lCurFrame);
    sprite.SetCurrentFrame(1);
    EXPECT_EQ(1, sprite.m_lCurFrame);
    sprite.SetFrameDelay(0);
    EXPECT_EQ(20, sprite.m_lFrameDelay);
    sprite.SetAnimationStatus(3);
    EXPECT_EQ(XSPRITE_FORWARD, sprite.m_lAnimStatus);

    // A list that ends at once: nothing is drawn.
    const TPoint none[] = { { -1, 5 } };
    CSprite empty;
    ASSERT_EQ(1, empty.Create(&m_Strip, none, 10, 10, 300, 300, XSPRITE_LOOP, 0, 0));
    const std::vector<unsigned char> before = FillFrame(2);
    sprite.ClearBaseFlag(XSPRITE_VISIBLE);
    Screen()->FlipPage();
    EXPECT_EQ("", FirstDifference(before, Frame(), Mode()));
    EXPECT_EQ(0, empty.Create(nullptr, nullptr, 1, 1, 0, 0, 0, 0, 0));
}

TEST_F(CSpriteTest, RunsOutOfMemoryWithoutLoss)
{
    MakeStrip(m_Strip, 3, 10, 10);
    FailEachAllocation(
        [&](auto arm)
        {
            CSprite sprite;
            arm();
            return sprite.Create(&m_Strip, nullptr, 10, 10, 0, 0, XSPRITE_LOOP, 0, 1) != 0;
        },
        6);
}
} // namespace
