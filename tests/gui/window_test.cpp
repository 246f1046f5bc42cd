#include "tarvix/window.h"

#include "gui/guisupport.h"
#include "slots.h"
#include "tarvix/button.h"
#include "tarvix/frame.h"
#include "tarvix/static.h"
#include "tarvix/titlebar.h"

namespace
{
// Says what it hears; a text buffer makes it an edit for the window.
class CListener : public CStatic
{
public:
    CListener(std::string &strLog, xlong lID, xlong lX, xlong lAnswer = 1) : m_strLog(strLog), m_lAnswer(lAnswer)
    {
        CStatic::Create(nullptr, lX, 0, 40, 40, 0);
        m_lID = lID;
    }
    xlong GuiMsgHandler(xlong lMsg, xlong lP1, xlong lP2, xparam lP3, void *pData) override
    {
        m_strLog += std::to_string(lMsg) + ":" + std::to_string(m_lID);
        if (lMsg == XGUIMSG_FOCUS)
            m_strLog += "=" + std::to_string((long)lP3);
        if (lMsg == XGUIMSG_MOUSE)
            m_strLog += "@" + std::to_string(lP1) + "," + std::to_string(lP2);
        m_strLog += " ";
        return m_lAnswer;
    }
    std::string &m_strLog;
    xlong m_lAnswer;
};

class CWindowTest : public CGuiTest
{
protected:
    CWindowTest() : m_A(m_strHeard, 11, 0), m_B(m_strHeard, 12, 20), m_C(m_strHeard, 13, 40)
    {
        m_Window.Create(1, nullptr, 100, 100, 300, 200, 0);
        for (CListener *pListener : { &m_A, &m_B, &m_C })
            m_Window.AddCntrl(pListener);
        Show(m_Window);
        m_strHeard.clear();
    }

    std::string Heard()
    {
        std::string str;
        str.swap(m_strHeard);
        if (!str.empty())
            str.pop_back();
        return str;
    }

    xlong SendKey(unsigned short usKey, bool bDown = true)
    {
        TQueueChar key = { usKey, bDown ? XKEYF_DOWN : 0 };
        return m_Window.GuiMsgHandler(XGUIMSG_KEY, 0, 0, (xparam)&key, nullptr);
    }

    std::string m_strHeard;
    CWindow m_Window;
    CListener m_A, m_B, m_C;
};

TEST_F(CWindowTest, PlacesAreMeantBelowTheTitleBarAndInsideTheBorder)
{
    const struct
    {
        const char *pszName;
        xlong lFlags, lX, lY;
    } cases[] = {
        { "Bare", 0, 10, 20 },
        { "BorderAlone", XWIN_BORDER | XWIN_FRAME, 10, 20 },
        { "Title", XWIN_TITLEBAR, 10, 36 },
        { "TitleAndFrame", XWIN_TITLEBAR | XWIN_FRAME, 10, 36 },
        { "TitleAndBorder", XWIN_TITLEBAR | XWIN_FRAME | XWIN_BORDER, 12, 38 },
        { "TitleAndBorderWithoutFrame", XWIN_TITLEBAR | XWIN_BORDER, 10, 36 },
    };
    for (const auto &c : cases)
    {
        SCOPED_TRACE(c.pszName);
        CWindow window;
        ASSERT_EQ(1, window.Create(2, nullptr, 0, 0, 200, 100, c.lFlags));
        CButton button;
        button.Create(5, nullptr, 10, 20, 30, 10, 0, 0);
        window.AddCntrl(&button);
        xlong lX, lY, lWindow;
        button.GetPos(lX, lY);
        EXPECT_EQ(c.lX, lX);
        EXPECT_EQ(c.lY, lY);
        CWindowBase *pWindow;
        EXPECT_EQ(1, button.GetParent(&lWindow, &pWindow));
        EXPECT_EQ(2, lWindow);
        EXPECT_EQ(&window, pWindow);
        EXPECT_EQ(0, button.GetParent(nullptr, &pWindow));
        window.SetID(3);
        EXPECT_EQ(3, button.m_lWindowID);
    }
}

TEST_F(CWindowTest, CentresOnTheScreen)
{
    const struct
    {
        xlong lWidth, lHeight, lX, lY;
    } cases[] = { { 200, 100, 220, 190 }, { 640, 480, 0, 0 }, { 700, 100, 0, 190 }, { 201, 481, 219, 0 } };
    for (const auto &c : cases)
    {
        SCOPED_TRACE(std::to_string(c.lWidth) + " by " + std::to_string(c.lHeight));
        CWindow window;
        window.Create(2, nullptr, 7, 7, c.lWidth, c.lHeight, XWIN_CENTER);
        xlong lX, lY;
        window.GetPos(lX, lY);
        EXPECT_EQ(c.lX, lX);
        EXPECT_EQ(c.lY, lY);
    }
}

TEST_F(CWindowTest, TabGoesRoundTheTabStops)
{
    SendKey(XKEY_TAB);
    EXPECT_EQ("0:11 0:12 0:13", Heard()) << "without a tab stop the key is for all";
    EXPECT_EQ(nullptr, m_Window.m_pFocus);
    m_A.SetFlag(CNTRL_TABSTOP);
    m_C.SetFlag(CNTRL_TABSTOP);
    SendKey(XKEY_TAB);
    EXPECT_EQ(&m_A, m_Window.m_pFocus);
    EXPECT_EQ("16:11=1 16:12=0 16:13=0 0:11", Heard());
    SendKey(XKEY_TAB);
    EXPECT_EQ(&m_C, m_Window.m_pFocus);
    EXPECT_EQ("0:13 16:11=0 16:12=0 16:13=1 0:13", Heard());
    SendKey(XKEY_TAB);
    EXPECT_EQ(&m_A, m_Window.m_pFocus);
    EXPECT_EQ("16:13=0 16:11=1 16:12=0 16:13=0 0:11", Heard());
    SendKey(XKEY_TAB, false);
    EXPECT_EQ(&m_A, m_Window.m_pFocus) << "the release moves nothing";
}

TEST_F(CWindowTest, KeysGoToTheFocusOrToAll)
{
    m_B.SetFlag(CNTRL_TABSTOP);
    m_Window.SetFocus(&m_B);
    Heard();
    SendKey('x');
    EXPECT_EQ("0:12", Heard());
    SendKey(XKEY_ENTER);
    EXPECT_EQ("0:11 0:12 0:13", Heard());
    m_B.SetFlag(CNTRL_MULTILINE);
    SendKey(XKEY_ENTER);
    EXPECT_EQ("0:12", Heard());
    m_Window.StaticWindowCntrls(1);
    Heard();
    EXPECT_EQ(1, SendKey('x'));
    EXPECT_EQ(0, m_Window.GuiMsgHandler(XGUIMSG_MOUSE, 105, 105, 0, nullptr));
    EXPECT_EQ(0, m_Window.GuiMsgHandler(XGUIMSG_VALUE, 1, 0, 12, nullptr));
    EXPECT_EQ("", Heard());
    m_Window.StaticWindowCntrls(0);
    Heard();
    EXPECT_EQ(1, m_Window.GuiMsgHandler(XGUIMSG_VALUE, 1, 0, 12, nullptr));
    EXPECT_EQ(0, m_Window.GuiMsgHandler(XGUIMSG_VALUE, 1, 0, 99, nullptr));
    EXPECT_EQ("14:12", Heard());
}

TEST_F(CWindowTest, TheMouseMeetsTheTopmostFirst)
{
    m_A.m_lAnswer = 0;
    EXPECT_EQ(1, m_Window.GuiMsgHandler(XGUIMSG_MOUSE, 125, 105, 1, nullptr));
    EXPECT_EQ("8:13@25,5 8:12@25,5 8:11@25,5", Heard());
    EXPECT_EQ(&m_B, m_Window.m_pMouseCntrl) << "the third answers, but the point is beside it";
    m_C.m_lAnswer = 2;
    EXPECT_EQ(1, m_Window.GuiMsgHandler(XGUIMSG_MOUSE, 145, 105, 1, nullptr));
    EXPECT_EQ("8:13@45,5", Heard());
    m_B.m_lAnswer = m_C.m_lAnswer = 0;
    EXPECT_EQ(0, m_Window.GuiMsgHandler(XGUIMSG_MOUSE, 145, 105, 1, nullptr));
    EXPECT_EQ(nullptr, m_Window.m_pMouseCntrl);
}

TEST_F(CWindowTest, PastesOneLineOfPlainText)
{
    const struct
    {
        const char *pszName, *pszClipboard;
        xlong lFlags;
        const char *pszResult;
    } cases[] = {
        { "Plain", "a c", CNTRL_TABSTOP, "a c" },
        { "Cut", "abcdefghij", CNTRL_TABSTOP, "abcdefg" },
        { "LineEnd", "ab\r\ncd", CNTRL_TABSTOP | CNTRL_MULTILINE, "old" },
        { "Accent",
          "\xe4"
          "bc",
          CNTRL_TABSTOP, "old" },
        { "ReadOnly", "abc", CNTRL_TABSTOP | CNTRL_READONLY, "old" },
        { "NoTabStop", "abc", 0, "old" },
        { "Nothing", nullptr, CNTRL_TABSTOP, "old" },
        { "Empty", "", CNTRL_TABSTOP, "" },
    };
    for (const auto &c : cases)
    {
        SCOPED_TRACE(c.pszName);
        CListener edit(m_strHeard, 20, 0);
        strcpy(edit.AllocBuffer(8), "old");
        edit.SetFlag(c.lFlags);
        m_Window.AddCntrl(&edit);
        m_Window.SetFocus(&edit);
        EXPECT_EQ(1, m_Window.GuiMsgHandler(XGUIMSG_PASTE, 0, 0, 0, (void *)c.pszClipboard));
        EXPECT_STREQ(c.pszResult, edit.m_pszText);
        m_Window.RemoveCntrl(&edit);
        EXPECT_EQ(nullptr, m_Window.m_pFocus);
    }
}

TEST_F(CWindowTest, MovesAndSizesWithoutStalePixels)
{
    CWindow window;
    window.Create(2, nullptr, 50, 50, 100, 80, XWIN_FRAME);
    Show(window);
    EXPECT_EQ(192, Shown(60, 60).ucRed);
    window.SetPos(300, 200);
    Frame();
    Frame();
    EXPECT_EQ(0, Shown(60, 60).ucRed);
    EXPECT_EQ(192, Shown(399, 279).ucRed);
    EXPECT_EQ(0, Shown(400, 280).ucRed);
    window.SetSize(40, 30);
    window.Frame()->SetSize(40, 30);
    window.Validate();
    Frame();
    Frame();
    EXPECT_EQ(0, Shown(399, 279).ucRed);
    EXPECT_EQ(192, Shown(339, 229).ucRed);
    EXPECT_EQ(339 + 1, window.m_rArea.m_lRight);
    window.HideWindow();
    Frame();
    Frame();
    EXPECT_EQ(0, Shown(339, 229).ucRed);
    window.ShowWindow();
    Frame();
    EXPECT_EQ(192, Shown(339, 229).ucRed);
    window.Enable(0);
    m_Window.Enable(0);
    EXPECT_EQ(XGUI_DISABLED, m_A.GetState());
    m_Window.Enable(1);
    EXPECT_EQ(XGUI_RELEASED, m_A.GetState());
}

TEST_F(CWindowTest, AControlMayLeaveDuringAMessage)
{
    // Takes the control below itself out.
    class CLeaver : public CListener
    {
    public:
        using CListener::CListener;
        xlong GuiMsgHandler(xlong lMsg, xlong lP1, xlong lP2, xparam lP3, void *pData) override
        {
            if (m_pVictim)
                m_pWindow->RemoveCntrl(m_pVictim);
            m_pVictim = nullptr;
            return CListener::GuiMsgHandler(lMsg, lP1, lP2, lP3, pData);
        }
        CControlBase *m_pVictim = nullptr;
    } leaver(m_strHeard, 14, 60);
    m_Window.AddCntrl(&leaver);
    leaver.m_pVictim = &m_C;
    m_Window.GuiMsgHandler(XGUIMSG_MOUSE, 500, 105, 0, nullptr);
    EXPECT_EQ("8:14@400,5 8:12@400,5 8:11@400,5", Heard());
    leaver.m_pVictim = &leaver;
    m_Window.GuiMsgHandler(XGUIMSG_MOUSE, 500, 105, 0, nullptr);
    EXPECT_EQ(2, m_Window.NumCntrls());
}

TEST_F(CWindowTest, KeepsItsSlotsAndMembers)
{
    EXPECT_EQ(0, SlotOf(&CWindowBase::Enable));
    EXPECT_EQ(1, SlotOf(&CWindowBase::ShowWindow));
    EXPECT_EQ(2, SlotOf(&CWindowBase::HideWindow));
    EXPECT_EQ(3, SlotOf(&CWindowBase::Draw));
    EXPECT_EQ(4, SlotOf((xlong(CWindowBase::*)()) & CWindowBase::Validate));
    EXPECT_EQ(5, SlotOf((xlong(CWindowBase::*)(CRect *, xlong)) & CWindowBase::Validate));
    if (sizeof(void *) == 4)
    {
        EXPECT_EQ(4, OffsetOf(m_Window, m_Window.m_lWidth));
        EXPECT_EQ(36, OffsetOf(m_Window, m_Window.m_rArea));
        EXPECT_EQ(76, OffsetOf(m_Window, m_Window.m_Cntrls));
    }
}
} // namespace
