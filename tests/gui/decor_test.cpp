// Statics, frames, title bars, tickers and links.
#include "gui/guisupport.h"
#include "tarvix/button.h"
#include "tarvix/frame.h"
#include "tarvix/static.h"
#include "tarvix/titlebar.h"
#include "tarvix/url.h"

#include <chrono>
#include <thread>

namespace
{
class CDecorTest : public CGuiTest
{
protected:
    char m_szText[6] = "title";
};

TEST_F(CDecorTest, StaticsDrawTheirTextAtTheLeft)
{
    CWindow window;
    window.Create(1, nullptr, 100, 100, 300, 200, 0);
    CStatic label;
    label.Create(m_szText, 10, 10, 100, 30, CNTRL_CENTERH | CNTRL_CENTERV);
    EXPECT_EQ(XCNTRL_STATIC, label.GetID());
    window.AddCntrl(&label);
    Show(window);
    EXPECT_EQ(190, Shown(110, 110).ucRed);
    EXPECT_EQ(255, Shown(111, 110).ucRed) << "a pixel in from the left, and at the top";
    EXPECT_EQ(255, Shown(115, 117).ucRed);
    EXPECT_EQ(190, Shown(111, 118).ucRed);
    label.SetFlag(CNTRL_EXTRUDED);
    label.Validate();
    Frame();
    EXPECT_EQ(32, Shown(150, 110).ucRed) << "the bevel is sunken";
    EXPECT_EQ(250, Shown(150, 139).ucRed);
    EXPECT_EQ(255, Shown(113, 112).ucRed);
    EXPECT_EQ(190, Shown(112, 112).ucRed);
    EXPECT_EQ(1, label.GuiMsgHandler(XGUIMSG_MOUSE, 10, 39, 0, nullptr));
    EXPECT_EQ(0, label.GuiMsgHandler(XGUIMSG_MOUSE, 10, 40, 0, nullptr));
    label.SetState(XGUI_HIDDEN);
    EXPECT_EQ(0, label.GuiMsgHandler(XGUIMSG_MOUSE, 10, 39, 0, nullptr));
    Frame();
    Frame();
    EXPECT_EQ(0, Shown(113, 112).ucRed);
}

TEST_F(CDecorTest, AnAlphaStaticDarkensOnce)
{
    CWindow window;
    window.Create(1, nullptr, 100, 100, 300, 200, 0);
    CStatic shade;
    shade.Create(nullptr, 0, 0, 100, 100, CNTRL_ALPHA);
    shade.SetAlpha(50);
    window.AddCntrl(&shade);
    memset(Screen()->m_pPersistent->m_pData, 200, (size_t)Screen()->m_pPersistent->m_lPitch * 480);
    Screen()->AddClearAreaPersistent(0, 0, 639, 479);
    Show(window);
    Frame();
    const int nOnce = Shown(150, 150).ucRed;
    Screen()->FillRectAlpha(300, 300, 1, 1, 50);
    EXPECT_EQ(Shown(300, 300).ucRed, nOnce);
    EXPECT_LT(nOnce, 200);
    // Two areas that overlap change below it in one frame.
    Screen()->AddClearArea(110, 110, 160, 160);
    Screen()->AddClearArea(140, 140, 190, 190);
    Frame();
    Frame();
    EXPECT_EQ(nOnce, Shown(150, 150).ucRed);
    EXPECT_EQ(200, Shown(250, 250).ucRed);
}

TEST_F(CDecorTest, FramesFitTheTitleBarAndLetClicksThroughWhenTransparent)
{
    const struct
    {
        const char *pszName;
        xlong lFlags, lX, lY, lWidth, lFrameFlags;
    } cases[] = {
        { "TitleAlone", XWIN_TITLEBAR, 0, 0, 200, 0 },
        { "Frame", XWIN_TITLEBAR | XWIN_FRAME, 1, 1, 198, CNTRL_FRAME },
        { "Border", XWIN_TITLEBAR | XWIN_FRAME | XWIN_BORDER, 3, 3, 194, CNTRL_FRAME | CNTRL_EXTRUDED },
        { "Alpha", XWIN_TITLEBAR | XWIN_FRAME | XWIN_ALPHA, 1, 1, 198, CNTRL_FRAME | CNTRL_ALPHA | CNTRL_TRANSPARENT },
    };
    for (const auto &c : cases)
    {
        CWindow window;
        ASSERT_EQ(1, window.Create(1, m_szText, 100, 100, 200, 100, c.lFlags | XWIN_CLOSE));
        const CTitlebar &bar = *window.m_pTitlebar;
        EXPECT_EQ(c.lX, bar.m_lX) << c.pszName;
        EXPECT_EQ(c.lY, bar.m_lY) << c.pszName;
        EXPECT_EQ(c.lWidth, bar.m_lWidth) << c.pszName;
        EXPECT_EQ(c.lX + c.lWidth - 15, bar.m_pClose->m_lX) << c.pszName;
        EXPECT_EQ(c.lX + 3, bar.m_pCaption->m_lX) << c.pszName;
        if (!window.m_pFrame)
            continue;
        EXPECT_EQ(c.lFrameFlags, window.m_pFrame->GetFlags()) << c.pszName;
        const bool bTakes = !(c.lFlags & XWIN_ALPHA);
        EXPECT_EQ(bTakes, window.GuiMsgHandler(XGUIMSG_MOUSE, 150, 180, 0, nullptr)) << c.pszName;
        EXPECT_EQ(bTakes, window.GuiMsgHandler(XGUIMSG_MOUSE, 99, 99, 0, nullptr)) << "the line around " << c.pszName;
        EXPECT_EQ(0, window.GuiMsgHandler(XGUIMSG_MOUSE, 98, 99, 0, nullptr)) << c.pszName;
    }
}

class CTitlebarTest : public CDecorTest
{
protected:
    CTitlebarTest()
    {
        m_Window.Create(1, m_szText, 100, 100, 200, 100, XWIN_TITLEBAR | XWIN_FRAME | XWIN_CLOSE | XWIN_DRAG);
        Show(m_Window);
    }

    CWindow m_Window;
};

TEST_F(CTitlebarTest, DragsTheWindowHoweverFastTheMouseIs)
{
    Point(150, 108);
    Point(150, 108, 1);
    EXPECT_TRUE(m_Window.m_lFlags & XWIN_DRAGGING);
    Point(400, 300, 1);
    EXPECT_EQ(350, m_Window.m_lX);
    EXPECT_EQ(292, m_Window.m_lY);
    Point(160, 20, 1);
    EXPECT_EQ(110, m_Window.m_lX);
    EXPECT_EQ(12, m_Window.m_lY);
    TakeLog();
    Point(160, 20, 0);
    Point(160, 20, 0);
    EXPECT_FALSE(m_Window.m_lFlags & XWIN_DRAGGING);
    EXPECT_EQ("10:1:0", TakeLog().substr(0, 6));
    Point(300, 300, 0);
    EXPECT_EQ(110, m_Window.m_lX);
    Frame();
    Frame();
    EXPECT_EQ(0, Shown(150, 130).ucRed) << "nothing is left behind";
    EXPECT_EQ(192, Shown(150, 80).ucRed);
}

TEST_F(CTitlebarTest, ADragThatEndsInAnInactiveWindowLeavesNoHighlight)
{
    CWindow other;
    other.Create(2, nullptr, 400, 400, 50, 50, 0);
    Point(150, 108);
    Point(150, 108, 1);
    Point(150, 108, 1);
    EXPECT_EQ(XGUI_PRESSED, m_Window.m_pTitlebar->GetState());
    Mouse(150, 108, 0);
    Show(other);
    EXPECT_EQ(XGUI_RELEASED, m_Window.m_pTitlebar->GetState());
    EXPECT_FALSE(m_Window.m_lFlags & XWIN_DRAGGING);
}

TEST_F(CTitlebarTest, TellsTheHostOfADragInTheFirstRowOnly)
{
    CWindow window;
    window.Create(2, m_szText, 300, 200, 100, 50, XWIN_TITLEBAR | XWIN_DRAG);
    Show(window);
    Point(320, 200);
    TakeLog();
    Point(320, 200, 1);
    EXPECT_EQ("9:2:20", TakeLog());
    Point(320, 200, 0);
    Frame();
    TakeLog();
    Point(320, 205);
    Point(320, 205, 1);
    EXPECT_EQ(std::string::npos, TakeLog().find("9:2"));
    EXPECT_EQ(5, window.m_lDragY) << "the message that came back changed nothing";
}

TEST_F(CTitlebarTest, ASystemWindowMovesTheWholeScreen)
{
    m_Window.SetFlag(XWIN_SYSTEMWINDOW);
    Point(150, 108);
    Point(150, 108, 1);
    Point(160, 120, 1);
    xlong lX = 0, lY = 0;
    Screen()->GetScreenPos(&lX, &lY, nullptr, nullptr);
    EXPECT_EQ(160, lX);
    EXPECT_EQ(120, lY);
    EXPECT_EQ(100, m_Window.m_lX) << "the window of the GUI stays in its place";
    Point(160, 120, 0);
    Point(160, 120, 0);
    EXPECT_FALSE(m_Window.m_lFlags & XWIN_DRAGGING);
}

TEST_F(CTitlebarTest, ClosesByItsButton)
{
    Click(100 + 1 + 198 - 15 + 5, 100 + 1 + 1 + 5);
    EXPECT_EQ("3:1:1002 1:1:1002 2:1:1002", TakeLog());
    EXPECT_FALSE(m_Window.m_lFlags & XWIN_DRAGGING);
}

TEST_F(CTitlebarTest, ShowsWhichWindowIsActive)
{
    EXPECT_EQ(XGUI_HIGHLIGHT, m_Window.m_pTitlebar->GetState());
    EXPECT_EQ(240, Shown(200, 110).ucRed);
    Click(500, 400);
    Frame();
    EXPECT_EQ(XGUI_RELEASED, m_Window.m_pTitlebar->GetState());
    EXPECT_EQ(205, Shown(200, 110).ucRed);
    Click(150, 150);
    Frame();
    EXPECT_EQ(240, Shown(200, 110).ucRed);
}

TEST_F(CDecorTest, TickersScrollWaitAndStop)
{
    CWindow window;
    window.Create(1, nullptr, 100, 100, 300, 200, 0);
    CScrollText ticker;
    char szText[] = "ab\1c\7";
    // 40 wide: 9 blanks of padding with a widest character of 5.
    ASSERT_EQ(1, ticker.Create(szText, 0, 0, 40, 10, 4, 0));
    szText[0] = 'x';
    EXPECT_STREQ("ab\1c\7         ", ticker.m_pszBuffer) << "copied and padded";
    window.AddCntrl(&ticker);
    Show(window);
    EXPECT_EQ(0, ticker.IsScrolling());
    ticker.Start(30);
    EXPECT_EQ(1, ticker.IsScrolling());
    ticker.TimerHandler(31);
    EXPECT_EQ(0, ticker.m_lPixelOffset);
    ticker.TimerHandler(30);
    EXPECT_EQ(4, ticker.m_lPixelOffset);
    ticker.TimerHandler(30);
    EXPECT_EQ(2, ticker.m_lPixelOffset) << "two pixels behind a character of 6 that has gone by";
    EXPECT_EQ(1, ticker.m_lCharIndex);
    Frame();
    EXPECT_EQ(255, Shown(102, 103).ucRed);
    ticker.TimerHandler(30);
    EXPECT_EQ(2, ticker.m_lCharIndex);
    ticker.TimerHandler(30);
    EXPECT_EQ(25, ticker.m_lPauseTicks);
    for (int n = 0; n < 25 + 2; ++n)
        ticker.TimerHandler(30);
    EXPECT_EQ(4, ticker.m_lCharIndex);
    ticker.TimerHandler(30);
    EXPECT_EQ(0, ticker.IsScrolling());
    EXPECT_EQ(nullptr, ticker.m_pszBuffer);
    ticker.TimerHandler(30);
    Frame();
    Frame();
    EXPECT_EQ(0, Shown(102, 103).ucRed);
    EXPECT_EQ(1, ticker.SetText(nullptr));
    EXPECT_EQ(9, ticker.m_lLength);
}

#ifndef _WIN32 // a program in the path takes the browser's place
TEST_F(CDecorTest, LinksOpenTheirAddress)
{
    std::filesystem::create_directory("bin");
    WriteFile("bin/xdg-open", "#!/bin/sh\necho \"$1\" >>\"" + Path("opened") + "\"\n");
    std::filesystem::permissions("bin/xdg-open", std::filesystem::perms::owner_all);
    const std::string strOldPath = getenv("PATH");
    setenv("PATH", (Path("bin") + ":" + strOldPath).c_str(), 1);
    const struct
    {
        const char *pszURL, *pszOpened;
    } cases[] = { { "http://localhost/page", "http://localhost/page\n" }, { "me@localhost", "mailto:me@localhost\n" } };
    for (const auto &c : cases)
    {
        SCOPED_TRACE(c.pszURL);
        std::filesystem::remove("opened");
        CWindow window;
        window.Create(1, nullptr, 100, 100, 300, 200, 0);
        CURL link;
        ASSERT_EQ(1, link.Create(9, m_szText, c.pszURL, 0, 0, 100, 20, 'u', 0));
        window.AddCntrl(&link);
        Show(window);
        const auto Opened = [&]
        {
            for (int n = 0; n < 200 && !std::filesystem::exists("opened"); ++n)
                std::this_thread::sleep_for(std::chrono::milliseconds(10));
            return ReadFile("opened");
        };
        Point(110, 110);
        Point(110, 110, 1);
        Point(300, 110, 1);
        Point(300, 110, 0);
        Frame();
        EXPECT_FALSE(std::filesystem::exists("opened")) << "let go outside";
        Click(110, 110);
        EXPECT_EQ(c.pszOpened, Opened());
        window.RemoveAllCntrl();
    }
    setenv("PATH", strOldPath.c_str(), 1);
    CURL none;
    EXPECT_EQ(0, none.Create(9, m_szText, nullptr, 0, 0, 100, 20, 'u', 0));
    EXPECT_EQ("CURL::Create: Missing URL.", LastError());
}
#endif
} // namespace
