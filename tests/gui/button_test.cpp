#include "tarvix/button.h"

#include "gui/guisupport.h"

namespace
{
// A button 7 at (50, 40) to (149, 59) of a window without decor at (100, 100).
class CButtonTest : public CGuiTest
{
protected:
    CButtonTest()
    {
        m_Window.Create(1, nullptr, 100, 100, 300, 200, 0);
        m_Button.Create(7, m_szText, 50, 40, 100, 20, 'k', CNTRL_EXTRUDED);
        m_Window.AddCntrl(&m_Button);
        Show(m_Window);
    }

    char m_szText[3] = "ok";
    CWindow m_Window;
    CButton m_Button;
};

struct TPointer
{
    bool bInside;
    xlong lButtons;
};

struct TSequence
{
    const char *pszName;
    std::vector<TPointer> steps;
    const char *pszMessages;
    xlong lState;
};

const TSequence s_Sequences[] = {
    { "Click", { { true, 0 }, { true, 1 }, { true, 0 } }, "3 1 2", XGUI_HIGHLIGHT },
    { "HeldForThreeFrames", { { true, 0 }, { true, 1 }, { true, 1 }, { true, 1 } }, "3 1 1 1", XGUI_PRESSED },
    { "OutAndBack", { { true, 0 }, { true, 1 }, { false, 1 }, { true, 1 }, { true, 0 } }, "3 1 1 2", XGUI_HIGHLIGHT },
    { "ReleasedOutside", { { true, 0 }, { true, 1 }, { false, 1 }, { false, 0 } }, "3 1 19", XGUI_RELEASED },
    { "LeftAtOnce", { { true, 0 }, { true, 1 }, { false, 0 }, { false, 0 } }, "3 1 19", XGUI_RELEASED },
    { "SlidOn", { { false, 1 }, { true, 1 }, { true, 1 } }, "", XGUI_RELEASED },
    { "SlidOnAndReleased", { { false, 1 }, { true, 1 }, { true, 0 } }, "3", XGUI_HIGHLIGHT },
    { "RightButton", { { true, 0 }, { true, 2 }, { true, 0 } }, "3", XGUI_HIGHLIGHT },
    { "PassedOver", { { true, 0 }, { false, 0 } }, "3 19", XGUI_RELEASED },
};

TEST_F(CButtonTest, TellsWhatThePointerDoes)
{
    for (const TSequence &c : s_Sequences)
    {
        Point(400, 400);
        Point(110, 110, 0);
        m_Window.GuiMsgHandler(XGUIMSG_ACTIVATE, 1, 0, 1, nullptr);
        m_strLog.clear();
        for (const TPointer &step : c.steps)
        {
            // The window has no frame: a press beside the button would make it inactive.
            Point(step.bInside ? 160 : 110, step.bInside ? 150 : 110, step.lButtons);
            m_Window.m_bActive = 1;
        }
        EXPECT_EQ(c.pszMessages, TakeMessages(":1:7")) << c.pszName;
        EXPECT_EQ(c.lState, m_Button.GetState()) << c.pszName;
    }
}

TEST_F(CButtonTest, AnswersItsHotKeyWithThePointerElsewhere)
{
    Point(110, 110);
    m_Window.m_bActive = 1;
    Key('k');
    EXPECT_EQ("1:1:7", TakeLog());
    EXPECT_EQ(2, m_Button.m_lPressMode);
    Frame(); // the mouse is outside, and leaves the held key alone
    EXPECT_EQ(XGUI_PRESSED, m_Button.GetState());
    Key('x');
    Key('k', false);
    EXPECT_EQ("2:1:7", TakeLog());
    EXPECT_EQ(XGUI_RELEASED, m_Button.GetState());
    Frame();
    Frame();
    EXPECT_EQ("", TakeLog()) << "no highlight: the pointer was never there";

    Key('k');
    Frame();
    TakeLog();
    m_Window.HideWindow();
    EXPECT_EQ("2:1:7", TakeLog()) << "a hidden window lets go of its keys";
    m_Window.ShowWindow();
    m_Button.SetState(XGUI_DISABLED);
    Key('k');
    Click(160, 150);
    EXPECT_EQ("", TakeLog());
    m_Button.SetState(XGUI_HIDDEN);
    Click(160, 150);
    EXPECT_EQ("", TakeLog());
}

TEST_F(CButtonTest, HighlightsInAnInactiveWindowOnlyWhereThatIsWanted)
{
    m_Window.m_bActive = 0;
    Point(160, 150);
    EXPECT_EQ("3:1:7 19:1:7", TakeLog());
    EXPECT_EQ(XGUI_RELEASED, m_Button.GetState());
    m_Window.SetFlag(XWIN_HIGHLIGHTIFINACTIVE);
    m_Button.SetParent(1, &m_Window);
    Point(160, 150);
    EXPECT_EQ("3:1:7", TakeLog());
    EXPECT_EQ(XGUI_HIGHLIGHT, m_Button.GetState());
}

TEST_F(CButtonTest, LetsClicksThroughTransparentPixels)
{
    const struct
    {
        const char *pszName;
        xlong lDepth, lFlags;
        bool bHole, bBeside; ///< clicks count there
    } cases[] = {
        { "SeeThrough16", 16, CNTRL_TRANSPARENT | CNTRL_HASBITMAP | CNTRL_BMTRANS, false, false },
        { "SeeThrough24", 24, CNTRL_TRANSPARENT | CNTRL_HASBITMAP | CNTRL_BMTRANS, false, false },
        { "SeeThrough8", 8, CNTRL_TRANSPARENT | CNTRL_HASBITMAP | CNTRL_BMTRANS, true, false },
        { "TransClick", 24, CNTRL_TRANSPARENT | CNTRL_HASBITMAP | CNTRL_BMTRANS | CNTRL_BTNTRANSCLICK, true, true },
        { "Extruded", 24, CNTRL_TRANSPARENT | CNTRL_HASBITMAP | CNTRL_BMTRANS | CNTRL_EXTRUDED, true, true },
        { "OpaqueBitmap", 24, CNTRL_TRANSPARENT | CNTRL_HASBITMAP, true, true },
    };
    for (const auto &c : cases)
    {
        // 40 by 20 in a control of 100 by 20; the hole is the left half.
        CBitmap bitmap;
        ASSERT_EQ(1, bitmap.CreateRGB(40, 20, 24, 8, 8, 8, 16, 8, 0, 0));
        const TRGBA White(255, 255, 255);
        for (xlong y = 0; y < 20; ++y)
            for (xlong x = 20; x < 40; ++x)
                bitmap.PutPixel(x, y, &White);
        if (c.lDepth == 16)
            ASSERT_EQ(1, bitmap.ConvertRGB(-1, -1, 16, 5, 5, 5, 10, 5, 0, 0));
        if (c.lDepth == 8)
            ASSERT_EQ(1, bitmap.ConvertIndex(-1, -1, 8, Screen()->GetPalette(), 0));
        CButton button;
        button.Create(8, nullptr, 0, 0, 100, 20, 0, c.lFlags);
        button.SetBitmap(&bitmap, &bitmap, &bitmap, &bitmap);
        EXPECT_EQ(1, button.GuiMsgHandler(XGUIMSG_MOUSE, 30, 10, 0, nullptr)) << c.pszName;
        button.GuiMsgHandler(XGUIMSG_MOUSE, 300, 300, 0, nullptr);
        EXPECT_EQ(c.bHole, button.GuiMsgHandler(XGUIMSG_MOUSE, 5, 10, 0, nullptr)) << c.pszName;
        button.GuiMsgHandler(XGUIMSG_MOUSE, 300, 300, 0, nullptr);
        EXPECT_EQ(c.bBeside, button.GuiMsgHandler(XGUIMSG_MOUSE, 70, 10, 0, nullptr)) << c.pszName;
    }
}

// The colours of a button by their red: border 10, light 20, face 30, dark 40,
// corners 50, 60 and 70.
void SetReds(CButton &button)
{
    TRGBA colors[8];
    for (int n = 0; n < 8; ++n)
        colors[n] = TRGBA((unsigned char)(10 * n + 10), 0, 0);
    static TCntrlColor set; // not copied
    glb->m_pWinCtrl->SetupColors(&set, &colors[0], &colors[1], &colors[2], &colors[3], &colors[4], &colors[5],
                                 &colors[6], &colors[7]);
    button.SetColors(&set, &set, &set, &set);
}

// Pixels of the corner and the middle, worked out by hand for a bevel of 2.
TEST_F(CButtonTest, DrawsFaceBevelBorderAndText)
{
    SetReds(m_Button);
    m_Button.SetBevelSize(2);
    m_Button.SetFlag(CNTRL_BUTTONBORDER);
    m_Button.Validate();
    Frame();
    const xlong lLeft = 150, lTop = 140, lRight = 249, lBottom = 159;
    const struct
    {
        const char *pszWhat;
        xlong lX, lY;
        int nRed;
    } pixels[] = {
        { "border", lLeft - 1, lTop - 1, 10 },
        { "border", lRight + 1, lBottom + 1, 10 },
        { "border", lLeft + 40, lTop - 1, 10 },
        { "light top", lLeft + 40, lTop, 20 },
        { "light top, second line", lLeft + 40, lTop + 1, 20 },
        { "light left", lLeft + 1, lTop + 9, 20 },
        { "face", lLeft + 60, lTop + 2, 30 },
        { "dark right", lRight - 1, lTop + 9, 40 },
        { "dark bottom", lLeft + 40, lBottom, 40 },
        { "corner", lLeft, lTop, 50 },
        { "corner, second pixel", lLeft + 1, lTop + 1, 50 },
        { "top right", lRight, lTop, 60 },
        { "top right, second pixel", lRight - 1, lTop + 1, 60 },
        { "bottom left", lLeft, lBottom, 60 },
        { "bottom right", lRight, lBottom, 70 },
        { "text", lLeft + 2, lTop + 2, 255 },
        { "gap of the text", lLeft + 7, lTop + 2, 30 },
    };
    for (const auto &c : pixels)
        EXPECT_EQ(c.nRed, Shown(c.lX, c.lY).ucRed) << c.pszWhat << " at " << c.lX << ", " << c.lY;
    Point(160, 150);
    Point(160, 150, 1);
    Frame();
    EXPECT_EQ(30, Shown(lLeft + 2, lTop + 2).ucRed) << "the text of a pressed button moves";
    EXPECT_EQ(255, Shown(lLeft + 3, lTop + 3).ucRed);
}

// A bevel of more than half: the middle row of an odd height belongs to it, and
// nothing turns inside out.
TEST_F(CButtonTest, AWideBevelMeetsInTheMiddle)
{
    CButton small;
    small.Create(8, nullptr, 200, 100, 7, 5, 0, CNTRL_EXTRUDED);
    SetReds(small);
    small.SetBevelSize(9);
    m_Window.AddCntrl(&small);
    small.Validate();
    Frame();
    const int anReds[5][7] = {
        { 50, 20, 20, 20, 20, 20, 60 }, { 20, 50, 20, 20, 20, 60, 40 }, { 20, 20, 60, 40, 60, 40, 40 },
        { 20, 60, 40, 40, 40, 70, 40 }, { 60, 40, 40, 40, 40, 40, 70 },
    };
    for (xlong y = 0; y < 5; ++y)
        for (xlong x = 0; x < 7; ++x)
            EXPECT_EQ(anReds[y][x], Shown(300 + x, 200 + y).ucRed) << x << ", " << y;
}

TEST_F(CButtonTest, TheBorderComesBackWhenAWindowMovesOffIt)
{
    SetReds(m_Button);
    m_Button.SetFlag(CNTRL_BUTTONBORDER);
    m_Button.Validate();
    Frame();
    ASSERT_EQ(10, Shown(149, 150).ucRed);
    CWindow cover; // of the border's left column alone
    cover.Create(2, nullptr, 140, 145, 10, 10, XWIN_FRAME);
    Show(cover);
    ASSERT_NE(10, Shown(149, 150).ucRed);
    cover.SetPos(400, 400);
    Frame();
    Frame();
    EXPECT_EQ(10, Shown(149, 150).ucRed);
}

// The border of a button that fills its window lies around the window.
TEST_F(CButtonTest, AMovedWindowLeavesNoBorderBehind)
{
    CWindow window;
    CButton button;
    window.Create(2, nullptr, 450, 300, 40, 20, 0);
    button.Create(8, nullptr, 0, 0, 40, 20, 0, CNTRL_EXTRUDED | CNTRL_BUTTONBORDER);
    SetReds(button);
    window.AddCntrl(&button);
    Show(window);
    const struct
    {
        const char *pszSide;
        xlong lX, lY;
    } sides[] = { { "left", 449, 310 }, { "right", 490, 310 }, { "top", 470, 299 }, { "bottom", 470, 320 } };
    for (const auto &c : sides)
        ASSERT_EQ(10, Shown(c.lX, c.lY).ucRed) << c.pszSide;
    window.SetPos(150, 350);
    Frame();
    Frame();
    for (const auto &c : sides)
        EXPECT_EQ(0, Shown(c.lX, c.lY).ucRed) << c.pszSide;
}

TEST_F(CButtonTest, TakesTheLookOfItsTemplate)
{
    CBitmap bitmap;
    CButton next;
    {
        CButton pattern;
        pattern.Create(9, nullptr, 0, 0, 10, 10, 0, CNTRL_HASBITMAP);
        pattern.SetBitmap(&bitmap, &bitmap, &bitmap, nullptr);
        pattern.SetDefault();
        next.Create(10, nullptr, 0, 0, 10, 10, 0, CNTRL_CENTERH);
        EXPECT_EQ(&bitmap, next.m_Look.m_pBitmap[XLOOK_HIGHLIGHT]);
        EXPECT_EQ(CNTRL_HASBITMAP | CNTRL_CENTERH, next.GetFlags());
    }
    next.Create(10, nullptr, 0, 0, 10, 10, 0, 0);
    EXPECT_EQ(0, next.GetFlags()) << "a template that is gone leaves no trace";
}

TEST_F(CButtonTest, AKnobIsQuiet)
{
    CDragbutton knob;
    knob.Create(11, nullptr, 0, 0, 20, 20, 0, 0);
    knob.SetParent(1, &m_Window);
    m_Window.m_bActive = 1;
    EXPECT_EQ(knob.m_Look.m_pColors[XLOOK_RELEASED], knob.m_Look.m_pColors[XLOOK_HIGHLIGHT]);
    EXPECT_EQ(1, knob.GuiMsgHandler(XGUIMSG_MOUSE, 5, 5, 1, nullptr)) << "a held button highlights it too";
    EXPECT_EQ(XGUI_HIGHLIGHT, knob.GetState());
    knob.GuiMsgHandler(XGUIMSG_MOUSE, 50, 5, 0, nullptr);
    EXPECT_EQ("", TakeLog());
    knob.GuiMsgHandler(XGUIMSG_MOUSE, 5, 5, 0, nullptr);
    knob.GuiMsgHandler(XGUIMSG_MOUSE, 5, 5, 1, nullptr);
    knob.GuiMsgHandler(XGUIMSG_MOUSE, 5, 5, 0, nullptr);
    EXPECT_EQ("1:1:11 2:1:11", TakeLog());
}
} // namespace
