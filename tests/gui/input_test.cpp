// What people do with mouse and keys, between frames and at awkward times.
#include "gui/guisupport.h"
#include "input/clicks.h"
#include "tarvix/button.h"
#include "tarvix/checkbox.h"
#include "tarvix/groupbox.h"
#include "tarvix/radiobutton.h"
#include "tarvix/static.h"
#include "tarvix/titlebar.h"

namespace
{
class CInputTest : public CGuiTest
{
protected:
    CInputTest()
    {
        s_pTest = this;
        m_Window.Create(1, m_szTitle, 100, 100, 300, 200,
                        XWIN_TITLEBAR | XWIN_FRAME | XWIN_CLOSE | XWIN_DRAG); // controls begin at 100, 116
        m_Button.Create(7, m_szTitle, 50, 40, 80, 20, 'k', CNTRL_EXTRUDED | CNTRL_TABSTOP);
        m_Other.Create(8, m_szTitle, 50, 80, 80, 20, XKEY_ESC, CNTRL_EXTRUDED | CNTRL_TABSTOP);
        m_Window.AddCntrl(&m_Button);
        m_Window.AddCntrl(&m_Other);
        Show(m_Window);
        Point(600, 470);
    }
    ~CInputTest() override { s_pTest = nullptr; }

    static void Feed(xlong lX, xlong lY, xlong lDown) { glb->m_pMouse->Feed(lX, lY, 0, 0, lDown); }
    static void Frames(int nFrames)
    {
        while (nFrames--)
            Frame();
    }
    static int Count(const std::string &str, const char *pszPart)
    {
        int nCount = 0;
        for (size_t n = str.find(pszPart); n != std::string::npos; n = str.find(pszPart, n + 1))
            ++nCount;
        return nCount;
    }

    char m_szTitle[4] = "xy";
    CWindow m_Window;
    CButton m_Button, m_Other;
};

// Places on the screen.
const xlong s_lX = 160, s_lY = 166; // in the button
const xlong s_lOtherY = 206;        // in the one below
} // namespace

TEST_F(CInputTest, WhatHappensBetweenTwoFramesIsSeenInTurn)
{
    for (int n = 0; n < 20; ++n)
    {
        Feed(s_lX, s_lY, 1);
        Feed(s_lX + 1, s_lY, 0);
        signed char cButtons = 1;
        glb->m_pMouse->GetState(nullptr, nullptr, &cButtons);
        EXPECT_EQ(0, cButtons) << "a host's own look is that of now";
    }
    std::string strMessages;
    for (int n = 0; n < 42; ++n)
    {
        Frame();
        const std::string str = TakeLog();
        EXPECT_LE(Count(str, "1:1:7") + Count(str, "2:1:7"), 1) << "one thing a frame";
        strMessages += str + " ";
    }
    EXPECT_EQ(20, Count(" " + strMessages, " 1:1:7 "));
    EXPECT_EQ(20, Count(" " + strMessages, " 2:1:7 "));
    EXPECT_EQ(1, Count(strMessages, "3:1:7"));
    Feed(s_lX, s_lY, 1);
    Feed(600, 470, 1);
    Feed(s_lX, s_lOtherY, 0);
    Frames(3);
    EXPECT_EQ(0, Count(TakeLog(), "2:1:")) << "a press that is let go over another one is none of it";
}

TEST_F(CInputTest, WhatNobodySawIsNotKeptForAWindowToCome)
{
    glb->m_pWinCtrl->RemoveWindow(1);
    for (int n = 0; n < 100; ++n)
        Feed(s_lX, s_lY, n & 1);
    Feed(600, 470, 0);
    Frame();
    Show(m_Window);
    Frames(5);
    EXPECT_EQ("", TakeLog());
    // More than can be kept: the last look is right all the same.
    for (int n = 0; n < 201; ++n)
        Feed(s_lX, s_lY, n & 1);
    Frames(100);
    EXPECT_EQ(XGUI_HIGHLIGHT, m_Button.GetState());
    TClick click;
    EXPECT_FALSE(TakeClick(glb->m_pMouse, click));
}

TEST_F(CInputTest, APointerThatLeavesEndsWhatItBegan)
{
    const struct
    {
        const char *pszName;
        xlong lOptions;
        std::vector<std::array<xlong, 3>> steps;
        const char *pszMessages;
        xlong lState;
    } cases[] = {
        { "Hover", XGUIOPT_POINTER, { { s_lX, s_lY, 0 }, { -5, 10, 0 } }, "3 19", XGUI_RELEASED },
        { "HoverOfThePlainManager", 0, { { s_lX, s_lY, 0 }, { -5, 10, 0 } }, "3", XGUI_HIGHLIGHT },
        { "ReleasedOutside",
          XGUIOPT_POINTER,
          { { s_lX, s_lY, 0 }, { s_lX, s_lY, 1 }, { 700, 10, 1 }, { 701, 10, 0 }, { s_lX, s_lY, 0 } },
          "3 1 19 3",
          XGUI_HIGHLIGHT },
        { "BackWithTheButtonHeld",
          XGUIOPT_POINTER,
          { { s_lX, s_lY, 0 }, { s_lX, s_lY, 1 }, { 700, 10, 1 }, { s_lX, s_lY, 1 }, { s_lX, s_lY, 0 } },
          "3 1 1 2",
          XGUI_HIGHLIGHT },
    };
    for (const auto &c : cases)
    {
        glb->m_pWinCtrl->SetOptions(c.lOptions);
        Point(600, 470);
        TakeLog();
        for (const auto &step : c.steps)
        {
            Feed(step[0], step[1], step[2]);
            Frame();
        }
        Frame();
        EXPECT_EQ(c.pszMessages, TakeMessages(":1:7")) << c.pszName;
        EXPECT_EQ(c.lState, m_Button.GetState()) << c.pszName;
        Point(600, 470);
        Point(600, 470);
    }
}

TEST_F(CInputTest, ADragEndsOutsideWithTheTitleBarInReach)
{
    glb->m_pWinCtrl->SetOptions(XGUIOPT_POINTER);
    Feed(150, 106, 0);
    Frame();
    Feed(150, 106, 1);
    Frame();
    Feed(-400, 900, 1);
    Frames(2);
    EXPECT_EQ(-50, m_Window.m_lX);
    EXPECT_EQ(479 - 6, m_Window.m_lY);
    Feed(-400, 900, 0);
    Frame();
    Feed(300, 300, 0);
    Frames(2);
    EXPECT_EQ(-50, m_Window.m_lX) << "let go outside";
}

TEST_F(CInputTest, AHiddenModalWindowLeavesTheKeysToTheNext)
{
    CWindow modal;
    CButton ok;
    modal.Create(2, m_szTitle, 150, 120, 200, 150, XWIN_TITLEBAR | XWIN_FRAME | XWIN_MODAL);
    ok.Create(9, m_szTitle, 20, 20, 60, 20, XKEY_ENTER, 0);
    modal.AddCntrl(&ok);
    glb->m_pWinCtrl->AddWindow(&modal, Log, this);
    for (int n = 0; n < 10; ++n)
    {
        TakeLog();
        Key(XKEY_ENTER);
        Key(XKEY_ENTER, false);
        Key(XKEY_ESC);
        EXPECT_EQ("1:2:9 2:2:9", TakeLog()) << n;
        modal.HideWindow();
        EXPECT_EQ(0, modal.m_bActive);
        EXPECT_EQ(1, m_Window.m_bActive);
        Key(XKEY_ESC);
        Key(XKEY_ESC, false);
        Key(XKEY_ENTER);
        EXPECT_EQ("1:1:8 2:1:8", TakeLog()) << n;
        Feed(s_lX, s_lY, 1);
        Feed(s_lX, s_lY, 0);
        Frames(2);
        EXPECT_EQ("3:1:7 1:1:7 2:1:7", TakeLog()) << n;
        Point(600, 470);
        modal.ShowWindow();
    }
    CWindow hidden;
    hidden.Create(3, m_szTitle, 0, 0, 50, 50, 0);
    glb->m_pWinCtrl->AddWindow(&hidden, nullptr, nullptr);
    hidden.HideWindow();
    glb->m_pWinCtrl->RemoveWindow(2);
    EXPECT_EQ(1, m_Window.m_bActive) << "the next one that can be seen";
}

TEST_F(CInputTest, AWindowThatIsHiddenLosesPressAndDrag)
{
    Point(150, 106);
    Point(150, 106, 1);
    Point(170, 116, 1);
    EXPECT_EQ(120, m_Window.m_lX);
    m_Window.HideWindow();
    Point(300, 300, 1);
    EXPECT_EQ(120, m_Window.m_lX);
    m_Window.ShowWindow();
    Point(200, 200, 1);
    Point(210, 200, 1);
    EXPECT_EQ(120, m_Window.m_lX);
    m_Window.SetPos(100, 100);
    Point(s_lX, s_lY, 0);
    Point(s_lX, s_lY, 1);
    TakeLog();
    m_Window.HideWindow();
    Point(s_lX, s_lY, 0);
    m_Window.ShowWindow();
    Frames(2);
    EXPECT_EQ(0, Count(TakeLog(), "2:1:7")) << "let go while nobody saw it";
    m_Button.SetState(XGUI_RELEASED);
    Point(s_lX, s_lY, 0);
    Point(s_lX, s_lY, 1);
    m_Window.HideWindow();
    EXPECT_EQ(XGUI_RELEASED, m_Button.GetState());
    EXPECT_EQ("3 1 19", TakeMessages(":1:7"));
}

TEST_F(CInputTest, HiddenWindowsDirtyNothing)
{
    m_Window.HideWindow();
    Frames(3);
    m_Button.SetState(XGUI_DISABLED);
    m_Button.SetText(m_szTitle);
    m_Button.SetState(XGUI_HIDDEN);
    m_Window.SetPos(120, 130);
    m_Window.Validate();
    glb->m_pWinCtrl->Validate();
    const CScreenBase &screen = *Screen();
    EXPECT_EQ(0, screen.m_lValidateCount[screen.m_lPage] + screen.m_lClearCount[screen.m_lPage]);
    glb->m_pWinCtrl->RemoveWindow(1);
    EXPECT_EQ(0, screen.m_lValidateCount[screen.m_lPage] + screen.m_lClearCount[screen.m_lPage]);
}

TEST_F(CInputTest, KeysThatTheFocusHasNoUseForGoOn)
{
    for (const xlong lOptions : { (xlong)0, (xlong)XGUIOPT_KEYS })
    {
        glb->m_pWinCtrl->SetOptions(lOptions);
        m_Window.SetFocus(nullptr);
        Key(XKEY_TAB);
        ASSERT_EQ(&m_Button, m_Window.m_pFocus);
        TakeLog();
        Key(XKEY_ESC);
        Key(XKEY_ESC, false);
        EXPECT_EQ(lOptions ? "1:1:8 2:1:8" : "", TakeLog());
        Key('k');
        Key('k', false);
        EXPECT_EQ("1:1:7 2:1:7", TakeLog()) << "once";
    }
}

TEST_F(CInputTest, TheFocusIsShownAndPressedBySpace)
{
    CCheckbox box;
    box.Create(9, m_szTitle, 50, 110, 80, 20, 14, 0, CNTRL_EXTRUDED | CNTRL_TABSTOP);
    m_Window.AddCntrl(&box);
    m_Window.Validate();
    Frames(2);
    const auto Picture = []
    {
        std::vector<unsigned char> picture;
        for (xlong y = 150; y < 260; ++y)
            for (xlong x = 140; x < 240; ++x)
                picture.push_back(Shown(x, y).ucGreen);
        return picture;
    };
    const std::vector<unsigned char> plain = Picture();
    m_Window.SetFocus(&m_Button);
    Key(XKEY_SPACE);
    Frames(2);
    EXPECT_EQ(plain, Picture()) << "not unless the host asks for it";
    EXPECT_EQ("", TakeLog());

    glb->m_pWinCtrl->SetOptions(XGUIOPT_FOCUS);
    m_Window.SetFocus(nullptr);
    m_Other.SetState(XGUI_DISABLED);
    Frames(2);
    std::vector<std::vector<unsigned char>> pictures = { Picture() };
    for (CControlBase *pFocus : { (CControlBase *)&m_Button, (CControlBase *)&box })
    {
        Key(XKEY_TAB);
        EXPECT_EQ(pFocus, m_Window.m_pFocus) << "the disabled one is passed over";
        Frames(2);
        EXPECT_EQ(0, std::count(pictures.begin(), pictures.end(), Picture())) << "the mark moves";
        pictures.push_back(Picture());
        TakeLog();
        Key(XKEY_SPACE);
        Key(XKEY_SPACE, false);
        EXPECT_EQ(pFocus == &box ? "6:1:9 2:1:9" : "1:1:7 2:1:7", TakeLog());
    }
    box.SetState(XGUI_UNCHECKED);
    m_Window.SetFocus(nullptr);
    Frames(2);
    EXPECT_EQ(pictures[0], Picture());
}

TEST_F(CInputTest, HotKeysOfLettersAnswerToBothCases)
{
    const struct
    {
        short sHotkey;
        unsigned short usKey;
        bool bPlain, bBoth;
    } cases[] = { { 'k', 'K', false, true },  { 'K', 'k', false, true },  { 'k', 'k', true, true },
                  { '[', '{', false, false }, { '@', '`', false, false }, { XKEY_F1, XKEY_F1 ^ 32, false, false } };
    for (const auto &c : cases)
        for (const xlong lOptions : { (xlong)0, (xlong)XGUIOPT_CASE })
        {
            glb->m_pWinCtrl->SetOptions(lOptions);
            m_Button.SetHotkey(c.sHotkey);
            TakeLog();
            Key(c.usKey);
            Key(c.usKey, false);
            EXPECT_EQ((lOptions ? c.bBoth : c.bPlain) ? "1:1:7 2:1:7" : "", TakeLog()) << c.sHotkey << " " << c.usKey;
        }
}

TEST_F(CInputTest, AnInactiveWindowTellsOfThePointerOnce)
{
    CWindow front;
    front.Create(2, nullptr, 450, 300, 50, 50, XWIN_FRAME);
    glb->m_pWinCtrl->AddWindow(&front, Log, this);
    TakeLog();
    for (int n = 0; n < 100; ++n)
        Point(s_lX, s_lY);
    Point(600, 470);
    EXPECT_EQ("3:1:7 19:1:7", TakeLog());
    Point(s_lX, s_lY);
    EXPECT_EQ("3:1:7 19:1:7", TakeLog());
    m_Window.ToFront();
    TakeLog();
    Point(s_lX, s_lY);
    EXPECT_EQ(XGUI_HIGHLIGHT, m_Button.GetState()) << "active now, and still under the pointer";
    EXPECT_EQ("3:1:7", TakeLog());
}

TEST_F(CInputTest, HiddenBoxesTakeNothing)
{
    CCheckbox box;
    CGroupbox group;
    CRadiobutton first, second;
    box.Create(9, m_szTitle, 50, 110, 80, 20, 14, 'b', 0);
    group.Create(20, nullptr, 150, 20, 100, 100, 0);
    first.Create(21, m_szTitle, 5, 5, 80, 20, 14, 0, 0);
    second.Create(22, m_szTitle, 5, 35, 80, 20, 14, 'r', 0);
    m_Window.AddCntrl(&box);
    m_Window.AddCntrl(&group);
    group.Add(&first);
    group.Add(&second);
    Frame();
    box.SetState(XGUI_HIDDEN);
    second.SetState(XGUI_HIDDEN);
    TakeLog();
    Key('b');
    Key('b', false);
    Key('r');
    Key('r', false);
    Click(100 + box.m_lX + 4, 100 + box.m_lY + 4);
    Click(100 + second.m_lX + 4, 100 + second.m_lY + 4);
    EXPECT_EQ("", TakeLog());
    EXPECT_EQ(XGUI_HIDDEN, box.GetState());
    EXPECT_EQ(XGUI_HIDDEN, second.GetState());
}

TEST_F(CInputTest, EnableLeavesMarksAndSetIDLeavesTheCloseButton)
{
    CCheckbox box;
    box.Create(9, m_szTitle, 50, 110, 80, 20, 14, 0, 0);
    m_Window.AddCntrl(&box);
    box.SetState(XGUI_CHECKED);
    for (const xlong lEnable : { 1, 0, 1, 1 })
        m_Window.Enable(lEnable);
    EXPECT_EQ(XGUI_CHECKED, box.GetState());
    m_Button.SetState(XGUI_HIDDEN);
    m_Window.Enable(1);
    EXPECT_EQ(XGUI_RELEASED, m_Button.GetState());

    m_Window.SetID(77);
    TakeLog();
    const CButton &close = *m_Window.m_pTitlebar->m_pClose;
    Click(100 + close.m_lX + 3, 100 + close.m_lY + 3);
    EXPECT_NE(std::string::npos, TakeLog().find("2:77:1002"));
}

namespace
{
void TakeOut(xlong lMsg, xlong, xlong, xparam, void *pUser)
{
    std::pair<int, CControlBase *> &calls = *(std::pair<int, CControlBase *> *)pUser;
    if (lMsg != XGUIMSG_PRESSED)
        return;
    ++calls.first;
    calls.second->m_pWindow->RemoveCntrl(calls.second);
}
} // namespace

TEST_F(CInputTest, AControlThatTakesItselfOutIsPressedOnce)
{
    std::pair<int, CControlBase *> calls = { 0, &m_Button };
    glb->m_pWinCtrl->RemoveWindow(1);
    glb->m_pWinCtrl->AddWindow(&m_Window, TakeOut, &calls);
    Click(s_lX, s_lY);
    Point(s_lX, s_lY, 1);
    EXPECT_EQ(1, calls.first);
    EXPECT_EQ(nullptr, m_Button.m_pWindow);
}

// Blended over what changes below it, by pieces that touch and cross.
TEST_F(CInputTest, ASeeThroughControlKeepsItsColourOverWhatChanges)
{
    CStatic veil;
    veil.Create(m_szTitle, 40, 30, 110, 90, CNTRL_ALPHA);
    veil.SetAlpha(100);
    m_Window.AddCntrl(&veil);
    m_Window.Validate();
    Frames(3);
    const auto Row = []
    {
        std::vector<unsigned char> row;
        for (xlong y = 140; y < 250; ++y)
            for (xlong x = 135; x < 260; ++x)
                row.push_back(Shown(x, y).ucRed);
        return row;
    };
    const std::vector<unsigned char> before = Row();
    for (int n = 0; n < 4; ++n)
    {
        m_Button.SetState(XGUI_PRESSED);
        m_Other.SetState(XGUI_PRESSED);
        Frame();
        m_Button.SetState(XGUI_RELEASED);
        m_Other.SetState(XGUI_RELEASED);
        Frame();
        EXPECT_EQ(before, Row()) << n;
    }
}
