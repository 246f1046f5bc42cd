#include "tarvix/winctrl.h"

#include "gui/guisupport.h"
#include "tarvix/button.h"
#include "tarvix/frame.h"
#include "tarvix/static.h"

#include <random>

namespace
{
class CWinCtrlTest : public CGuiTest
{
protected:
    CWinCtrlTest() { s_pTest = this; }
    ~CWinCtrlTest() override { s_pTest = nullptr; }

    // Windows 1, 2, ... of 100 by 100, each 20 further right and down, in the order of adding.
    CWindow &Add(xlong lFlags)
    {
        CWindow &window = m_Windows[m_nCount++];
        const xlong lPlace = 20 * (xlong)m_nCount;
        window.Create((xlong)m_nCount, nullptr, lPlace, lPlace, 100, 100, XWIN_FRAME | lFlags);
        glb->m_pWinCtrl->AddWindow(&window, Log, this);
        return window;
    }

    // Front to back, the active one with a star.
    static std::string Order()
    {
        std::string str;
        CLList &windows = glb->m_pWinCtrl->m_Windows;
        for (windows.First(); windows.Exists(); windows.Next())
        {
            const CWindowBase &window = *glb->m_pWinCtrl->GetWindow();
            str += std::to_string(window.m_lID) + (window.m_bActive ? "* " : " ");
        }
        if (!str.empty())
            str.pop_back();
        return str;
    }

    CWindow m_Windows[8];
    size_t m_nCount = 0;
};

TEST_F(CWinCtrlTest, WindowsStayWholeOverWhatTheHostDraws)
{
    Add(0);
    Frame();
    Frame();
    const auto Picture = []
    {
        std::vector<TRGBA> picture;
        for (xlong y = 20; y < 120; y += 3)
            for (xlong x = 20; x < 120; ++x)
                picture.push_back(Shown(x, y));
        return picture;
    };
    const std::vector<TRGBA> before = Picture();
    std::mt19937 random(9);
    for (int n = 0; n < 20; ++n)
    {
        const xlong lX = (xlong)(random() % 110), lY = (xlong)(random() % 110);
        Screen()->FillRect(lX, lY, 60, 40, TRGBA(255, 0, 0));
        Screen()->AddClearArea(lX, lY, lX + 59, lY + 39);
        Screen()->FlipPage();
        EXPECT_EQ(before, Picture()) << n;
        Screen()->ClearBuffer();
    }
}

TEST_F(CWinCtrlTest, StacksWindows)
{
    Add(0);
    Add(0);
    Add(0);
    EXPECT_EQ("3* 2 1", Order());
    m_Windows[0].ToFront();
    EXPECT_EQ("1* 3 2", Order());
    Click(155, 155); // the third alone
    EXPECT_EQ("3* 1 2", Order());
    Click(400, 400);
    EXPECT_EQ("3 1 2", Order()) << "nobody is active after a click beside all";
    Click(25, 25);
    EXPECT_EQ("1* 3 2", Order());
    Point(155, 155, 0);
    Point(155, 155, 3);
    EXPECT_EQ("1* 3 2", Order()) << "two buttons are no click";
    Point(155, 155, 0);
    Point(155, 155, 4);
    EXPECT_EQ("3* 1 2", Order());
    EXPECT_EQ(1, glb->m_pWinCtrl->RemoveWindow(3));
    EXPECT_EQ("1* 2", Order());
    EXPECT_EQ(0, glb->m_pWinCtrl->RemoveWindow(3));
    glb->m_pWinCtrl->SendMessageA(XGUIMSG_TOFRONT, 2, 0, 0, nullptr);
    EXPECT_EQ("2* 1", Order());
}

TEST_F(CWinCtrlTest, KeepsModalAndLastWindowsInTheirPlaces)
{
    Add(0);
    Add(XWIN_ALWAYSLAST);
    Add(0);
    EXPECT_EQ("3* 1 2", Order());
    m_Windows[1].ToFront();
    EXPECT_EQ("3 1 2*", Order());
    Add(XWIN_MODAL);
    Add(0);
    EXPECT_EQ("4 5* 3 1 2", Order()) << "the new one is told it is active, behind the modal one";
    Click(25, 25); // in the first
    EXPECT_EQ("4 5* 3 1 2", Order());
    EXPECT_EQ(XGUI_RELEASED, m_Windows[0].m_pFrame->GetState());
    m_Windows[3].HideWindow();
    Click(25, 25);
    EXPECT_EQ("4 1* 5 3 2", Order()) << "a hidden one takes nothing";
    glb->m_pWinCtrl->RemoveWindow(4);
    EXPECT_EQ("1* 5 3 2", Order());
}

TEST_F(CWinCtrlTest, OfTwoModalWindowsTheFrontOneTakesTheInput)
{
    Add(0);
    Add(XWIN_MODAL);
    Add(XWIN_MODAL);
    EXPECT_EQ("3* 2 1", Order());
    Click(45, 45); // in the second alone
    EXPECT_EQ("3* 2 1", Order());
    m_Windows[1].ToFront();
    EXPECT_EQ("2* 3 1", Order());
    Click(155, 155); // in the third alone
    EXPECT_EQ("2* 3 1", Order());
    m_Windows[1].HideWindow();
    Click(155, 155);
    EXPECT_EQ("2 3* 1", Order()) << "the next modal one takes over";
    Click(25, 25);
    EXPECT_EQ("2 3* 1", Order());
    glb->m_pWinCtrl->RemoveWindow(3);
    EXPECT_EQ("2 1*", Order()) << "a hidden one does not";
    m_Windows[1].ShowWindow();
    Click(25, 25);
    EXPECT_EQ("2* 1", Order()) << "until it is shown";
    glb->m_pWinCtrl->RemoveWindow(2);
    Click(25, 25);
    EXPECT_EQ("1*", Order());
}

TEST_F(CWinCtrlTest, MovesGroupsAsOneBlock)
{
    Add(0);
    Add(XWIN_ZORDER | XWIN_ZORDERFIRST);
    Add(XWIN_ZORDER);
    Add(XWIN_ZORDER | XWIN_ZORDERLAST);
    EXPECT_EQ("2 3 4 1", Order());
    Add(0);
    EXPECT_EQ("5* 2 3 4 1", Order());
    m_Windows[2].ToFront();
    EXPECT_EQ("2 3* 4 5 1", Order());
    m_Windows[0].ToFront();
    m_Windows[3].ToFront();
    EXPECT_EQ("2 3 4* 1 5", Order());
}

TEST_F(CWinCtrlTest, DeliversMessages)
{
    Add(0);
    Add(0);
    CWinCtrl &manager = *glb->m_pWinCtrl;
    CWindow silent;
    silent.Create(9, nullptr, 300, 300, 10, 10, 0);
    manager.AddWindow(&silent, nullptr, nullptr);
    TakeLog();
    EXPECT_EQ(0, manager.SendMessageA(2, 9, 5, 0, nullptr)) << "no callback";
    EXPECT_EQ(0, manager.SendMessageA(2, 77, 5, 0, nullptr)) << "no such window";
    EXPECT_EQ(0, manager.SendMessageA(14, 77, 5, 6, nullptr));
    EXPECT_EQ(1, manager.SendMessageA(2, 2, 5, 0, nullptr));
    EXPECT_EQ("2:2:5", TakeLog());
    TQueueChar key = { 'x', 1 };
    EXPECT_EQ(1, manager.SendMessageA(0, 1, 5, (xparam)&key, nullptr)) << "keys reach the host whatever they carry";
    EXPECT_EQ("0:1:5", TakeLog());

    // With a third parameter the message is for that control.
    CButton slider;
    slider.Create(6, nullptr, 0, 0, 10, 10, 'k', 0);
    m_Windows[0].AddCntrl(&slider);
    EXPECT_EQ(1, manager.SendMessageA(XGUIMSG_MOUSE, 1, 2, 6, nullptr));
    EXPECT_EQ("", TakeLog());
    manager.PrintWinList();
}

TEST_F(CWinCtrlTest, ReadsOneKeyAFrameForWhomItConcerns)
{
    CKeyboardBase &keyboard = *glb->m_pKeyboard;
    Key('a');
    EXPECT_NE(0, keyboard.IsKeyWaiting()) << "nobody to hear it";
    keyboard.Clear(1);

    CButton buttons[3];
    for (int n = 0; n < 3; ++n)
    {
        Add(n == 0 ? XWIN_HIGHLIGHTIFINACTIVE : 0);
        buttons[n].Create(10 + n, nullptr, 200, 200, 5, 5, 'k', 0);
        m_Windows[n].AddCntrl(&buttons[n]);
    }
    TakeLog();
    Key('k');
    EXPECT_EQ("1:3:12 1:1:10", TakeLog()) << "the front window and the one that always listens";
    Frame();
    m_Windows[2].m_bActive = 0;
    Key('k', false);
    TakeLog();
    Key('k');
    EXPECT_EQ("1:1:10", TakeLog());
    m_Windows[2].m_bActive = 1;
    buttons[2].SetFlag(CNTRL_TABSTOP);
    m_Windows[2].SetFocus(&buttons[2]);
    Key('k', false);
    TakeLog();
    Key('k');
    EXPECT_EQ("1:3:12", TakeLog()) << "a focus in front keeps keys for itself";
    for (int n = 0; n < 3; ++n)
        m_Windows[n].RemoveAllCntrl();
}

TEST_F(CWinCtrlTest, ChoosesTheCursor)
{
    // Counts and notes what is asked of the platform.
    class CNotedMouse : public CMouseBase
    {
    public:
        xlong Init() override { return 1; }
        void SetCursor(xulong ulId, xlong lFrame) override
        {
            m_strSet += std::to_string(ulId) + " ";
            CMouseBase::SetCursor(ulId, lFrame);
        }
        std::string Take() { return std::exchange(m_strSet, ""); }
        std::string m_strSet;
    } mouse;
    CMouseBase *const pReal = std::exchange(glb->m_pMouse, &mouse);
    glb->m_pWinCtrl->SetCursors(5, 6, 7);
    CWindow &window = Add(0);
    CButton button;
    button.Create(10, nullptr, 0, 0, 50, 50, 0, 0);
    window.AddCntrl(&button);
    mouse.Take();
    Point(30, 30);
    EXPECT_EQ("7 ", mouse.Take());
    Point(100, 100);
    EXPECT_EQ("5 ", mouse.Take());
    Point(-1, 30);
    EXPECT_EQ("5 ", mouse.Take());
    EXPECT_EQ(XGUI_RELEASED, button.GetState());
    Point(30, 480);
    EXPECT_EQ("5 ", mouse.Take());
    window.SetFlag(XWIN_MODAL);
    Point(30, 30);
    EXPECT_EQ("7 ", mouse.Take());
    EXPECT_EQ(XGUI_HIGHLIGHT, button.GetState());
    glb->m_pMouse = pReal;
    window.RemoveAllCntrl();
}

TEST_F(CWinCtrlTest, CallbacksMayTakeWindowsAway)
{
    struct THost
    {
        static void OnMessage(xlong lMsg, xlong lWindow, xlong, xparam, void *)
        {
            if (lMsg == XGUIMSG_RELEASED)
                glb->m_pWinCtrl->RemoveWindow(lWindow);
        }
    };
    CButton button;
    for (const xlong lFlags : { (xlong)0, (xlong)XWIN_MODAL })
    {
        SCOPED_TRACE(lFlags ? "modal" : "plain");
        CWindow &below = Add(0);
        CWindow window;
        window.Create(50, nullptr, 300, 300, 100, 100, lFlags);
        button.Create(10, nullptr, 0, 0, 50, 50, 0, 0);
        window.AddCntrl(&button);
        glb->m_pWinCtrl->AddWindow(&window, THost::OnMessage, nullptr);
        Click(310, 310);
        EXPECT_EQ(std::to_string(below.m_lID) + "*", Order().substr(0, 2));
        Frame();
    }
}

TEST_F(CWinCtrlTest, DefaultColoursStandAsTheyAre)
{
    CWinCtrl &manager = *glb->m_pWinCtrl;
    EXPECT_EQ(TRGBA(250, 250, 250), manager.m_pDefButtonColors[XLOOK_RELEASED]->crLight);
    EXPECT_EQ(TRGBA(32, 32, 32), manager.m_pDefButtonColors[XLOOK_PRESSED]->crLight);
    EXPECT_EQ(TRGBA(210, 210, 210), manager.m_pDefButtonColors[XLOOK_HIGHLIGHT]->crFace);
    EXPECT_EQ(TRGBA(80, 80, 80), manager.m_pDefButtonColors[XLOOK_DISABLED]->crExtra);
    EXPECT_EQ(TRGBA(0, 0, 128), manager.m_pDefTitlebarColors[XLOOK_HIGHLIGHT]->crLight);
    EXPECT_EQ(TRGBA(205, 205, 205), manager.m_pDefTitlebarColors[XLOOK_DISABLED]->crFace);
    EXPECT_EQ(TRGBA(0, 0, 160), manager.m_pDefProgressColors[XLOOK_RELEASED]->crBorder);
    EXPECT_EQ(TRGBA(192, 192, 192), manager.m_pDefFrameColors[XLOOK_PRESSED]->crFace);
}

// Whatever happens to windows and controls, what was redrawn in pieces equals
// the whole drawn anew.
TEST_F(CWinCtrlTest, PiecewiseRedrawEqualsTheWholePicture)
{
    for (const xlong lDepth : { 8, 16, 24 })
    {
        glb->m_pWinCtrl->RemoveAll();
        SetMode(640, 480, lDepth);
        std::mt19937 random((unsigned)lDepth);
        const auto Pick = [&](int n) { return (int)(random() % (unsigned)n); };
        for (xlong y = 0; y < 480; ++y) // a picture behind it all, without holes in its colours
            memset(Screen()->m_pPersistent->m_pData + (size_t)y * Screen()->m_pPersistent->m_lPitch, (int)(y % 100),
                   (size_t)Screen()->m_pPersistent->m_lPitch);
        Screen()->AddClearAreaPersistent(0, 0, 639, 479);
        const xlong flags[] = { XWIN_FRAME | XWIN_ALPHA | XWIN_TITLEBAR,
                                XWIN_FRAME | XWIN_TITLEBAR | XWIN_BORDER | XWIN_CLOSE | XWIN_DRAG, XWIN_TITLEBAR,
                                XWIN_FRAME | XWIN_BORDER, 0 };
        const xlong lControlFlags[] = { CNTRL_ALPHA, CNTRL_EXTRUDED, CNTRL_TRANSPARENT,
                                        CNTRL_EXTRUDED | CNTRL_BUTTONBORDER, CNTRL_TRANSPARENT | CNTRL_EXTRUDED };
        CStatic statics[5];
        char szText[] = "words to show";
        CWindow windows[5];
        CButton buttons[5][4];
        for (int n = 0; n < 5; ++n)
        {
            windows[n].Create(n + 1, szText, 30 + 80 * n, 40 + 60 * n, 200, 150, flags[n]);
            for (int b = 0; b < 4; ++b)
            {
                buttons[n][b].Create(b + 1, szText, 10 + 60 * (b % 2), 10 + 40 * (b / 2), 80, 35, 0,
                                     lControlFlags[(n + b) % 5]);
                windows[n].AddCntrl(&buttons[n][b]);
            }
            statics[n].Create(szText, 40, 50, 120, 60, (xulong)lControlFlags[n]);
            windows[n].AddCntrl(&statics[n]);
            glb->m_pWinCtrl->AddWindow(&windows[n], nullptr, nullptr);
        }
        for (int nStep = 0; nStep < 150; ++nStep)
        {
            CWindow &window = windows[Pick(5)];
            CButton &button = buttons[Pick(5)][Pick(4)];
            switch (Pick(6))
            {
            case 0:
                window.SetPos(Pick(700) - 100, Pick(500) - 60);
                break;
            case 1:
                if (window.m_lFlags & XWIN_HIDDEN)
                    window.ShowWindow();
                else if (Pick(3) == 0)
                    window.HideWindow();
                break;
            case 2:
                window.ToFront();
                break;
            case 3:
                button.SetState(1 + Pick(5));
                break;
            case 4:
                Screen()->FillRect(Pick(600), Pick(400), 30, 30, TRGBA(200, 100, 50));
                Screen()->AddClearArea(0, 0, 639, 479); // it lasts one frame
                break;
            case 5:
                Mouse(Pick(640), Pick(480), Pick(2));
                break;
            }
            for (int n = 0; n < 3; ++n)
                Frame();
            Screen()->FlipPage();
            const std::vector<unsigned char> pieces = CScreenTest::Frame();
            Screen()->ClearBuffer();
            Screen()->AddClearArea(0, 0, 639, 479);
            Screen()->ClearBuffer();
            Screen()->FlipPage();
            ASSERT_EQ("", FirstDifference(CScreenTest::Frame(), pieces, Mode())) << lDepth << ", step " << nStep;
            Screen()->ClearBuffer();
        }
        glb->m_pWinCtrl->RemoveAll();
    }
}
} // namespace
