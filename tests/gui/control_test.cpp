#include "tarvix/control.h"

#include "core/heap.h"
#include "gui/guisupport.h"
#include "slots.h"
#include "tarvix/button.h"
#include "tarvix/static.h"

#include <random>

namespace
{
class CControlTest : public CGuiTest
{
protected:
    CControlTest()
    {
        m_Window.Create(1, nullptr, 100, 100, 300, 200, 0);
        m_Button.Create(7, nullptr, 50, 40, 100, 20, 0, 0);
        m_Window.AddCntrl(&m_Button);
        Show(m_Window);
    }

    CWindow m_Window;
    CButton m_Button;
};

TEST_F(CControlTest, StatesAreSavedWhileDisabled)
{
    const struct
    {
        const char *pszName;
        std::vector<xlong> states;
        xlong lState;
    } cases[] = {
        { "Highlighted", { XGUI_HIGHLIGHT, XGUI_DISABLED, XGUI_RELEASED }, XGUI_HIGHLIGHT },
        { "Checked", { XGUI_CHECKED, XGUI_DISABLED, XGUI_RELEASED }, XGUI_CHECKED },
        { "Pressed", { XGUI_PRESSED, XGUI_DISABLED, XGUI_RELEASED }, XGUI_RELEASED },
        { "Hidden", { XGUI_HIDDEN, XGUI_DISABLED, XGUI_RELEASED }, XGUI_RELEASED },
        { "TwiceReleased", { XGUI_HIGHLIGHT, XGUI_DISABLED, XGUI_RELEASED, XGUI_RELEASED }, XGUI_RELEASED },
        { "AnotherBetween", { XGUI_HIGHLIGHT, XGUI_DISABLED, XGUI_HIDDEN, XGUI_RELEASED }, XGUI_RELEASED },
    };
    for (const auto &c : cases)
    {
        CButton button;
        for (const xlong lState : c.states)
            EXPECT_EQ(1, button.SetState(lState)) << c.pszName;
        EXPECT_EQ(c.lState, button.GetState()) << c.pszName;
        EXPECT_EQ(0, button.SetState(c.lState)) << c.pszName;
    }
}

// Counts the pixels of a piece in the button, or marks them.
void Paint(std::vector<int> &pixels, const CRect &rc, bool bCount)
{
    for (xlong y = std::max<xlong>(rc.m_lTop, 140); y <= std::min<xlong>(rc.m_lBottom, 159); ++y)
        for (xlong x = std::max<xlong>(rc.m_lLeft, 150); x <= std::min<xlong>(rc.m_lRight, 249); ++x)
        {
            int &n = pixels[(size_t)((y - 140) * 100 + x - 150)];
            n = bCount ? n + 1 : 1;
        }
}

TEST_F(CControlTest, CollectsPiecesAndKeepsAlphaOnesApart)
{
    CRect a, b, c;
    a.Set(150, 140, 169, 150);
    b.Set(160, 145, 180, 159);
    c.Set(0, 0, 149, 139); // beside the control
    EXPECT_EQ(1, m_Button.Validate(&a, 0));
    EXPECT_EQ(1, m_Button.Validate(&b, 0));
    EXPECT_EQ(0, m_Button.Validate(&c, 0));
    EXPECT_EQ(2, m_Button.m_lClipCount);
    m_Button.ClearClipListIndex();

    m_Button.SetFlag(CNTRL_ALPHA);
    std::mt19937 random(3);
    for (int nRound = 0; nRound < 300; ++nRound)
    {
        std::vector<int> wanted(100 * 20), seen(100 * 20); // how often each pixel is blended
        for (int nPiece = 0; nPiece < 6; ++nPiece)
        {
            const xlong lX = 140 + (xlong)(random() % 40), lY = 135 + (xlong)(random() % 24);
            CRect rc;
            rc.Set(lX, lY, lX + (xlong)(random() % 20), nPiece % 3 ? lY + (xlong)(random() % 20) : 159);
            m_Button.Validate(&rc, 0);
            Paint(wanted, rc, false);
        }
        for (xlong l = 0; l < m_Button.m_lClipCount; ++l)
            Paint(seen, m_Button.m_rClip[l], true);
        ASSERT_EQ(wanted, seen) << nRound;
        m_Button.ClearClipListIndex();
    }
    CRect left, right;
    left.Set(150, 140, 160, 159);
    right.Set(155, 140, 169, 159);
    m_Button.Validate(&left, 0);
    m_Button.Validate(&right, 0);
    EXPECT_EQ(1, m_Button.m_lClipCount) << "they make one rectangle";
    m_Button.ClearClipListIndex();
    m_Button.RemoveFlag(CNTRL_ALPHA);

    // With the border the control is a pixel larger, and the 101st piece grows the last.
    m_Button.SetFlag(CNTRL_BUTTONBORDER);
    EXPECT_EQ(1, m_Button.Validate(&c, 0));
    for (xlong l = 1; l < 104; ++l)
    {
        CRect rc;
        rc.Set(149 + l % 100, 145, 149 + l % 100, 145);
        EXPECT_EQ(1, m_Button.Validate(&rc, 0));
    }
    EXPECT_EQ(CControlBase::MAX_CLIPS, m_Button.m_lClipCount);
    CRect &rcLast = m_Button.m_rClip[CControlBase::MAX_CLIPS - 1];
    EXPECT_EQ(149, rcLast.m_lLeft);
    EXPECT_EQ(248, rcLast.m_lRight);
    m_Button.ClearClipListIndex();
}

TEST_F(CControlTest, ReportsItsAreaAndWhatLiesBehind)
{
    const struct
    {
        const char *pszName;
        xlong lFlags, lWindowFlags;
        bool bRestores;
    } cases[] = {
        { "Opaque", 0, 0, false },
        { "Transparent", CNTRL_TRANSPARENT, 0, true },
        { "Alpha", CNTRL_ALPHA, 0, true },
        { "OpaqueBitmap", CNTRL_TRANSPARENT | CNTRL_HASBITMAP, 0, false },
        { "TransparentBitmap", CNTRL_TRANSPARENT | CNTRL_HASBITMAP | CNTRL_BMTRANS, 0, true },
        { "OnFrame", CNTRL_TRANSPARENT, XWIN_FRAME, false },
        { "OnAlphaFrame", CNTRL_TRANSPARENT, XWIN_FRAME | XWIN_ALPHA, true },
        { "BitmapInAlphaWindow", CNTRL_TRANSPARENT | CNTRL_HASBITMAP, XWIN_FRAME | XWIN_ALPHA, true },
    };
    for (const auto &c : cases)
    {
        CWindow window;
        window.Create(2, nullptr, 10, 20, 300, 200, c.lWindowFlags);
        CStatic control;
        control.Create(nullptr, 30, 40, 50, 60, (xulong)c.lFlags);
        window.AddCntrl(&control);
        Frame();
        Frame();
        control.Validate();
        EXPECT_EQ(1, Screen()->m_lValidateCount[0]) << c.pszName;
        CRect rc;
        rc.SetXYWH(40, 60, 50, 60);
        EXPECT_EQ(1, Screen()->m_ValidateAreas[0][0].IsEqual(&rc)) << c.pszName;
        ASSERT_EQ(c.bRestores, Screen()->m_lClearCount[0]) << c.pszName;
        if (c.bRestores)
            EXPECT_EQ(1, Screen()->m_ClearAreas[0][0].IsEqual(&rc)) << c.pszName;
    }
}

TEST_F(CControlTest, KeepsOrOwnsItsText)
{
    char szText[] = "mixed CASE \xe4";
    const struct
    {
        xlong lFlags;
        const char *pszText, *pszResult;
    } cases[] = {
        { 0, "mIXed", "mIXed" },
        { CNTRL_UPPERCASE, "mIXed", "MIXED" },
        { CNTRL_LOWERCASE, "mIXed", "mixed" },
        { CNTRL_INITIALCAPITAL, "mIXed", "Mixed" },
        { CNTRL_INITIALCAPITAL | CNTRL_UPPERCASE, "mIXed", "Mixed" },
        { CNTRL_UPPERCASE | CNTRL_LOWERCASE, "mIXed", "MIXED" },
        { CNTRL_INITIALCAPITAL, "\xe4pfel", "\xc4pfel" },
        { CNTRL_INITIALCAPITAL, "1a", "1a" },
        { CNTRL_INITIALCAPITAL, "", "" },
    };
    for (const auto &c : cases)
    {
        CButton button;
        button.SetFlag(c.lFlags);
        char szBuffer[20];
        strcpy(szBuffer, c.pszText);
        button.SetText(szBuffer);
        EXPECT_STREQ(c.pszResult, button.m_pszText) << c.pszText << " with flags " << c.lFlags;
        EXPECT_EQ(szBuffer, button.GetTextBuffer(0)) << "the pointer is kept";
    }
    ASSERT_NE(nullptr, m_Button.AllocBuffer(10));
    EXPECT_EQ(10, m_Button.GetTextBufferSize());
    EXPECT_STREQ("", m_Button.GetTextBuffer(1));
    EXPECT_EQ(1, m_Button.m_bDirty);
    m_Button.SetText(szText);
    EXPECT_EQ(0, m_Button.GetTextBufferSize());
    EXPECT_EQ(nullptr, m_Button.AllocBuffer(0));
    EXPECT_EQ(nullptr, m_Button.AllocBuffer(-5));
    EXPECT_EQ(nullptr, m_Button.GetTextBuffer(0));
}

// The piece of a bitmap that a control shows, at each placing.
TEST_F(CControlTest, DrawsBitmapsTiledCutAndFromSheets)
{
    CBitmap bitmap, tall; // red tells x, green tells y
    for (CBitmap *pBitmap : { &bitmap, &tall })
    {
        const xlong lWidth = pBitmap == &tall ? 8 : 16, lHeight = 24 - lWidth;
        ASSERT_EQ(1, pBitmap->CreateRGB(lWidth, lHeight, 24, 8, 8, 8, 16, 8, 0, 0));
        for (xlong y = 0; y < lHeight; ++y)
            for (xlong x = 0; x < lWidth; ++x)
            {
                const TRGBA Color((unsigned char)(10 * x), (unsigned char)(10 * y), 0);
                pBitmap->PutPixel(x, y, &Color);
            }
        ASSERT_EQ(1, Screen()->MakeScreenFormat(pBitmap, XBMP_NO_KEY_PASS));
    }
    CRect rcCut;
    rcCut.Set(4, 2, 9, 6);
    const struct
    {
        const char *pszName;
        xlong lFlags;
        bool bCut, bSheet;
        xlong lX, lY; ///< in the control
        int nRed, nGreen;
        bool bTall;
    } cases[] = {
        { "Plain", 0, false, false, 3, 5, 30, 50 },
        { "BesidePlain", 0, false, false, 20, 5, 190, 190 },
        { "Tiled", CNTRL_TILED, false, false, 16 * 5 + 3, 8 + 5, 30, 50 },
        { "TiledLastRow", CNTRL_TILED, false, false, 99, 19, 30, 30 },
        { "TallTilesLastColumn", CNTRL_TILED, false, false, 99, 13, 30, 130, true },
        { "TallTilesLastRow", CNTRL_TILED, false, false, 99, 19, 30, 30, true },
        { "Inset", CNTRL_EXTRUDED, false, false, 4, 6, 30, 50 },
        { "Cut", 0, true, false, 1, 1, 50, 30 },
        { "BesideCut", 0, true, false, 6, 1, 190, 190 },
        { "Sheet", 0, false, true, 1, 1, 50, 30 },
        { "BesideSheet", 0, false, true, 1, 5, 190, 190 },
    };
    for (const auto &c : cases)
    {
        m_Button.m_lFlags = CNTRL_HASBITMAP | c.lFlags;
        CBitmap *const pBitmap = c.bSheet ? nullptr : c.bTall ? &tall : &bitmap;
        m_Button.SetBitmap(pBitmap, pBitmap, pBitmap, pBitmap);
        m_Button.m_Look.m_pSheet = c.bSheet ? &bitmap : nullptr;
        m_Button.m_Look.m_pSheetRect = c.bSheet ? &rcCut : nullptr;
        CRect rcNone;
        rcNone.SetEmpty();
        m_Button.SetBkgClip(c.bCut ? &rcCut : &rcNone);
        m_Button.Validate();
        Frame();
        EXPECT_EQ(c.nRed, Shown(150 + c.lX, 140 + c.lY).ucRed) << c.pszName;
        EXPECT_EQ(c.nGreen, Shown(150 + c.lX, 140 + c.lY).ucGreen) << c.pszName;
    }
    CRect rcLarge;
    rcLarge.Set(2, 3, 2 + 100, 3 + 20); // a pixel too much
    m_Button.SetBkgClip(&rcLarge);
    EXPECT_EQ(2 + 99, m_Button.GetBkgClip().m_lRight) << "trimmed to the control";
    EXPECT_EQ(3 + 19, m_Button.GetBkgClip().m_lBottom);
}

// Places that hosts compiled against.
TEST_F(CControlTest, KeepsItsSlotsAndMembers)
{
    typedef xlong (CControlBase::*TValidate)();
    typedef xlong (CControlBase::*TValidateArea)(CRect *, xlong);
    EXPECT_EQ(0, SlotOf(&CControlBase::TimerHandler));
    EXPECT_EQ(3, SlotOf((xlong(CControlBase::*)(xlong)) & CControlBase::Create));
    EXPECT_EQ(5, SlotOf(&CControlBase::Copy));
    EXPECT_EQ(12, SlotOf(&CControlBase::SetDefault));
    EXPECT_EQ(22, SlotOf(&CControlBase::GetFlags));
    EXPECT_EQ(26, SlotOf(&CControlBase::GuiMsgHandler));
    EXPECT_EQ(27, SlotOf(&CControlBase::Draw));
    EXPECT_EQ(29, SlotOf((TValidate)&CControlBase::Validate));
    EXPECT_EQ(30, SlotOf((TValidateArea)&CControlBase::Validate));
    EXPECT_EQ(36, SlotOf(&CControlBase::DrawBitmap));
    EXPECT_EQ(44, SlotOf(&CControlBase::SetText));
    EXPECT_EQ(50, SlotOf(&CControlBase::AnimLineHandlerAll));
    if (sizeof(void *) == 4)
    {
        EXPECT_EQ(4, OffsetOf(m_Button, m_Button.m_pszText));
        EXPECT_EQ(40, OffsetOf(m_Button, m_Button.m_sHotkey));
        EXPECT_EQ(48, OffsetOf(m_Button, m_Button.m_rMouseArea));
        EXPECT_EQ(40, OffsetOf(m_Button.m_Look, m_Button.m_Look.m_pAnim[2]));
        EXPECT_EQ(80, OffsetOf(m_Button.m_Look, m_Button.m_Look.m_PMode));
        EXPECT_EQ(120, OffsetOf(m_Button.m_Look, m_Button.m_Look.m_TextColor));
    }
}

// An animation of three frames that are told apart by their size.
class CAnimTest : public CControlTest
{
protected:
    CAnimTest()
    {
        for (CBitmap &bitmap : m_Frames)
            m_Anim.InsertLast(&bitmap);
        m_Anim.First();
        m_Anim.ulDelay = 50;
    }

    // The frame after each of some ticks.
    std::string Play(CControlBase &control, int nTicks, xulong ulInterval = 50)
    {
        std::string str;
        for (int n = 0; n < nTicks; ++n)
        {
            control.TimerHandler(ulInterval);
            str += (char)('0' + (control.m_Look.m_pBitmap[XLOOK_RELEASED] - m_Frames));
        }
        return str;
    }

    CBitmap m_Frames[3];
    TCntrlAnim m_Anim;
};

TEST_F(CAnimTest, PlaysByItsMode)
{
    const struct
    {
        const char *pszName;
        xlong lMode;
        const char *pszFrames;
    } cases[] = {
        { "Once", ANIM_ONCE, "1222222" },
        { "Loop", ANIM_LOOP, "1201201" },
        { "PingPong", ANIM_PINGPONG, "1221001" },
        { "Backward", ANIM_BACKWARD, "2102102" },
    };
    for (const auto &c : cases)
    {
        m_Anim.First();
        EXPECT_EQ(1, m_Button.SetAnimBitmap(&m_Anim, XGUI_RELEASED, c.lMode)) << c.pszName;
        EXPECT_EQ(c.pszFrames, Play(m_Button, 7)) << c.pszName;
    }
    EXPECT_EQ("2", Play(m_Button, 1, 49)) << "another timer's tick";
    m_Window.HideWindow();
    EXPECT_EQ("2", Play(m_Button, 1)) << "nobody sees it";
    EXPECT_EQ(1, m_Button.SetAnimBitmap(&m_Anim, 9, ANIM_LOOP));
    EXPECT_EQ(1, m_Button.SetFrameRate(XGUI_RELEASED, 70));
    EXPECT_EQ(70u, m_Anim.ulDelay);
    m_Button.SetFlag(CNTRL_ANIMPRESSED);
    EXPECT_EQ(0, m_Button.SetFrameRate(XGUI_RELEASED, 80)) << "a state without its animation";
    EXPECT_EQ(1, m_Button.SetFrameRate(XGUI_HIGHLIGHT, 80));
}

#ifndef _WIN32 // the clock is the test's
TEST_F(CAnimTest, LinesWaitPlayAndChooseTheNext)
{
    char szFirst[] = "First", szSecond[] = "Second", szEnd[] = "end", szNowhere[] = "Nowhere";
    ASSERT_EQ(1, m_Button.SetAnimLine(XGUI_RELEASED, szFirst, 100, 101, &m_Anim, 0, 0, szSecond, nullptr, nullptr,
                                      nullptr, nullptr));
    ASSERT_EQ(1, m_Button.SetAnimLine(XGUI_RELEASED, szSecond, 0, 0, nullptr, 0, 0, szEnd, nullptr, nullptr, nullptr,
                                      nullptr));
    EXPECT_EQ(0, m_Button.SetAnimLine(5, szFirst, 0, 0, nullptr, 0, 0, szEnd, nullptr, nullptr, nullptr, nullptr));
    EXPECT_EQ("CControlBase::SetAnimLine: Invalid type.", LastError());

    m_Button.TimerHandler(20);
    EXPECT_FALSE(m_Button.GetFlags() & CNTRL_ANIMNORMAL) << "it still waits";
    FaceAdvanceClock(150);
    m_Button.TimerHandler(20);
    EXPECT_TRUE(m_Button.GetFlags() & CNTRL_ANIMNORMAL);
    EXPECT_EQ("12", Play(m_Button, 2));
    m_Button.TimerHandler(20);
    EXPECT_FALSE(m_Button.GetFlags() & CNTRL_ANIMNORMAL);
    for (int n = 0; n < 5; ++n)
        m_Button.TimerHandler(20);
    EXPECT_EQ(0, m_Button.m_Look.m_pAnimLines[XLOOK_RELEASED]->GetNumNodes()) << "ended for good";

    glb->m_Error.Clear();
    ASSERT_EQ(1, m_Button.SetAnimLine(XGUI_PRESSED, szFirst, 0, 0, nullptr, 0, 0, szNowhere, nullptr, nullptr, nullptr,
                                      nullptr));
    for (int n = 0; n < 5; ++n)
        m_Button.TimerHandler(20);
    EXPECT_EQ("Unable to find any animation matching the name", LastError());
}
#endif
} // namespace
