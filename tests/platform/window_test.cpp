#include "platform/face.h"

namespace
{
class PlatformWindow : public CFaceTest
{
protected:
    LRESULT Handle(HWND hWnd, UINT ulMsg, WPARAM wParam, LPARAM lParam) override
    {
        if (ulMsg == WM_WINDOWPOSCHANGED)
            m_ulPosFlags = ((const WINDOWPOS *)lParam)->flags & (SWP_NOMOVE | SWP_NOSIZE);
        if (ulMsg == WM_DESTROY)
            EXPECT_FALSE(DestroyWindow(hWnd)) << "it goes already";
        return DefWindowProcA(hWnd, ulMsg, wParam, lParam);
    }

    UINT m_ulPosFlags = 0; ///< of the last message
};

RECT WindowRect(HWND hWnd)
{
    RECT rc = {};
    EXPECT_TRUE(GetWindowRect(hWnd, &rc));
    return rc;
}

POINT ClientCorner(HWND hWnd)
{
    POINT pt = {};
    EXPECT_TRUE(ClientToScreen(hWnd, &pt));
    return pt;
}
} // namespace

TEST_F(PlatformWindow, LifeIsToldInOrder)
{
    const HWND hWnd = Open(WS_POPUP, 0, 0, 1, 1);
    ASSERT_NE(nullptr, hWnd);
    EXPECT_EQ("NCCREATE CREATE", TakeLog());
    EXPECT_FALSE(ShowWindow(hWnd, SW_SHOWDEFAULT));
    EXPECT_EQ("SHOWWINDOW1 QUERYNEWPALETTE ACTIVATEAPP1 ACTIVATE SETFOCUS POSCHANGED SIZE0 MOVE", TakeLog());
    EXPECT_TRUE(UpdateWindow(hWnd));
    EXPECT_EQ("PAINT ERASEBKGND", TakeLog());
    EXPECT_TRUE(ShowWindow(hWnd, SW_RESTORE));
    EXPECT_TRUE(ShowWindow(hWnd, SW_SHOW));
    EXPECT_TRUE(UpdateWindow(hWnd));
    EXPECT_EQ("", TakeLog()) << "a shown window has nothing to show";

    SetWindowLongA(hWnd, GWL_STYLE, 0xCF0000);
    EXPECT_EQ("STYLECHANGED", TakeLog());
    SetWindowPos(hWnd, nullptr, 50, 60, 648, 511, 0);
    EXPECT_EQ("POSCHANGED MOVE SIZE0", TakeLog());
    ShowWindow(hWnd, SW_SHOW);
    EXPECT_EQ("SHOWWINDOW1 POSCHANGED", TakeLog()) << "the new style had no WS_VISIBLE";
    Run();
    EXPECT_EQ("PAINT ERASEBKGND", TakeLog());

    EXPECT_TRUE(DestroyWindow(hWnd));
    EXPECT_EQ("POSCHANGED ACTIVATE ACTIVATEAPP0 KILLFOCUS DESTROY NCDESTROY", TakeLog());
    EXPECT_FALSE(IsWindow(hWnd));
    EXPECT_FALSE(DestroyWindow(hWnd));
    EXPECT_EQ((DWORD)ERROR_INVALID_WINDOW_HANDLE, GetLastError());
}

struct TStyleCase
{
    const char *pszName;
    DWORD ulStyle;
    int nSide, nTop;
};

class PlatformFrame : public CFaceTest, public testing::WithParamInterface<TStyleCase>
{
};

// A caller that asks for a picture's size and the metrics of its frame gets a
// client area of exactly that picture.
TEST_P(PlatformFrame, MetricsAndStylesAgree)
{
    const TStyleCase &c = GetParam();
    const HWND hWnd = OpenShown(WS_POPUP, 0, 0, 1, 1);
    SetWindowLongA(hWnd, GWL_STYLE, (LONG)c.ulStyle);
    RECT rc;
    GetClientRect(hWnd, &rc);
    EXPECT_EQ("0,0,1,1", Text(rc)) << "a style takes effect with the next change of size";
    SetWindowPos(hWnd, nullptr, 20, 30, 320 + 2 * c.nSide, 200 + c.nTop + c.nSide, 0);
    GetClientRect(hWnd, &rc);
    EXPECT_EQ("0,0,320,200", Text(rc));
    EXPECT_EQ(20 + c.nSide, ClientCorner(hWnd).x);
    EXPECT_EQ(30 + c.nTop, ClientCorner(hWnd).y);
    ASSERT_FALSE(m_Messages.empty());
    for (const MSG &msg : m_Messages)
        if (msg.message == WM_SIZE)
            EXPECT_EQ(MAKELPARAM(320, 200), msg.lParam);
}

INSTANTIATE_TEST_SUITE_P(Styles, PlatformFrame,
                         testing::Values(TStyleCase{ "Overlapped", 0xCF0000, 4, 27 },
                                         TStyleCase{ "ThickOnly", 0xF0000, 4, 4 },
                                         TStyleCase{ "Caption", 0xCA0000, 4, 27 }, TStyleCase{ "Bare", 0, 0, 0 },
                                         TStyleCase{ "Border", WS_BORDER, 1, 1 }),
                         [](const auto &info) { return info.param.pszName; });

TEST_F(PlatformWindow, MetricsAreThoseOfTheFrames)
{
    const struct
    {
        int nIndex, lValue;
    } cases[] = { { SM_CXSCREEN, 800 },   { SM_CYSCREEN, 600 },   { SM_CYCAPTION, 23 },
                  { SM_CXFIXEDFRAME, 4 }, { SM_CXFRAME, 4 },      { SM_CYFIXEDFRAME, 4 },
                  { SM_CYFRAME, 4 },      { SM_MOUSEPRESENT, 1 }, { 9999, 0 } };
    for (const auto &c : cases)
        EXPECT_EQ(c.lValue, GetSystemMetrics(c.nIndex)) << c.nIndex;
}

TEST_F(PlatformWindow, PositionFlagsLeaveOutWhatTheySay)
{
    const HWND hWnd = OpenShown(WS_POPUP, 10, 20, 100, 50);
    SetWindowPos(hWnd, nullptr, 30, 40, 999, 999, SWP_NOSIZE | SWP_NOZORDER | SWP_NOOWNERZORDER);
    EXPECT_EQ("30,40,130,90", Text(WindowRect(hWnd)));
    EXPECT_EQ("POSCHANGED MOVE", TakeLog());
    SetWindowPos(hWnd, nullptr, 999, 999, 60, 70, SWP_NOMOVE | SWP_NOZORDER | SWP_NOOWNERZORDER);
    EXPECT_EQ("30,40,90,110", Text(WindowRect(hWnd)));
    EXPECT_EQ("POSCHANGED SIZE0", TakeLog());
    EXPECT_EQ((UINT)SWP_NOMOVE, m_ulPosFlags);
    for (const int nMove : { 1, 0 })
    {
        SetWindowPos(hWnd, nullptr, 30, 40 + nMove, 60, 70, SWP_NOZORDER);
        EXPECT_EQ((UINT)SWP_NOSIZE, m_ulPosFlags) << "it moves down and up alone";
    }
    TakeLog();
    SetWindowPos(hWnd, nullptr, 30, 40, 60, 70, SWP_NOZORDER);
    EXPECT_EQ("", TakeLog()) << "nothing has changed";
}

TEST_F(PlatformWindow, IconComesAndGoes)
{
    const HWND hWnd = OpenShown(0xCF0000, 100, 100, 208, 131);
    FaceMinimize(hWnd);
    Run();
    EXPECT_EQ("SYSCOMMAND POSCHANGED MOVE SIZE1 ACTIVATE ACTIVATEAPP0 KILLFOCUS", TakeLog());
    EXPECT_TRUE(IsIconic(hWnd));
    RECT rc;
    GetClientRect(hWnd, &rc);
    EXPECT_EQ("0,0,0,0", Text(rc));
    EXPECT_EQ(nullptr, FaceShownPixels(hWnd, nullptr, nullptr));
    FaceRestore(hWnd);
    Run();
    EXPECT_EQ("SYSCOMMAND QUERYNEWPALETTE ACTIVATEAPP1 ACTIVATE SETFOCUS POSCHANGED MOVE SIZE0 PAINT ERASEBKGND",
              TakeLog());
    EXPECT_EQ("100,100,308,231", Text(WindowRect(hWnd)));
    EXPECT_EQ(hWnd, GetFocus());
}

TEST_F(PlatformWindow, MaximisedWindowReturnsToItsPlace)
{
    const HWND hWnd = OpenShown(0xCF0000, 100, 100, 208, 131);
    FaceMaximize(hWnd);
    Run();
    RECT rc;
    GetClientRect(hWnd, &rc);
    EXPECT_EQ("0,0,800,577", Text(rc)) << "the caption stays, the other sides are off the desktop";
    EXPECT_NE(std::string::npos, TakeLog().find("SIZE2"));
    ShowWindow(hWnd, SW_MINIMIZE);
    ShowWindow(hWnd, SW_RESTORE);
    EXPECT_TRUE(IsZoomed(hWnd)) << "an icon goes back to what it was";
    ShowWindow(hWnd, SW_RESTORE);
    EXPECT_EQ("100,100,308,231", Text(WindowRect(hWnd)));
}

TEST_F(PlatformWindow, UserResizesAndMoves)
{
    const HWND hWnd = OpenShown(0xCF0000, 100, 100, 208, 131);
    FaceResize(hWnd, 300, 150);
    Run();
    EXPECT_EQ("POSCHANGED SIZE0 PAINT ERASEBKGND", TakeLog());
    EXPECT_EQ("100,100,408,281", Text(WindowRect(hWnd)));
    FaceMove(hWnd, 54, 77);
    Run();
    EXPECT_EQ("POSCHANGED MOVE", TakeLog());
    EXPECT_EQ("50,50,358,231", Text(WindowRect(hWnd)));
}

TEST_F(PlatformWindow, WhatIsHiddenOrAnIconHasNoFocus)
{
    const HWND hWnd = OpenShown(0xCF0000, 100, 100, 208, 131);
    EXPECT_TRUE(ShowWindow(hWnd, SW_HIDE));
    EXPECT_EQ("SHOWWINDOW0 POSCHANGED ACTIVATE ACTIVATEAPP0 KILLFOCUS", TakeLog());
    EXPECT_EQ(nullptr, GetFocus());
    EXPECT_FALSE(ShowWindow(hWnd, SW_SHOW));
    EXPECT_EQ(hWnd, GetFocus());
    FaceMinimize(hWnd);
    Run();
    FaceActivate(hWnd, true);
    Run();
    EXPECT_EQ(nullptr, GetFocus());
}

TEST_F(PlatformWindow, CloseGoesThroughTheSystemCommand)
{
    const HWND hWnd = OpenShown(0xCF0000, 0, 0, 100, 100);
    FaceClose(hWnd);
    Run();
    EXPECT_EQ("SYSCOMMAND CLOSE POSCHANGED ACTIVATE ACTIVATEAPP0 KILLFOCUS DESTROY NCDESTROY", TakeLog());
    EXPECT_FALSE(IsWindow(hWnd));
}

TEST_F(PlatformWindow, ActivityFollowsTheUser)
{
    const HWND hWnd = OpenShown(0xCF0000, 0, 0, 100, 100);
    FaceActivate(hWnd, false);
    Run();
    EXPECT_EQ("ACTIVATE ACTIVATEAPP0 KILLFOCUS", TakeLog());
    EXPECT_EQ(nullptr, GetFocus());
    FaceClick(hWnd, 10, 10);
    Run();
    EXPECT_EQ("QUERYNEWPALETTE ACTIVATEAPP1 ACTIVATE SETFOCUS SETCURSOR MOUSEMOVE SETCURSOR LBUTTONDOWN SETCURSOR "
              "LBUTTONUP",
              TakeLog());
}

TEST_F(PlatformWindow, OrdinaryWindowsStayBelowTheTopmost)
{
    const HWND hTop = OpenShown(WS_POPUP, 0, 0, 10, 10), hOld = OpenShown(WS_POPUP, 0, 0, 10, 10);
    SetWindowPos(hTop, HWND_TOPMOST, 0, 0, 0, 0, SWP_NOMOVE | SWP_NOSIZE);
    const HWND hNew = OpenShown(WS_POPUP, 0, 0, 10, 10);
    SetWindowPos(hOld, HWND_TOP, 0, 0, 0, 0, SWP_NOMOVE | SWP_NOSIZE);
    EXPECT_EQ(hTop, FindWindowA("FaceTest", nullptr));
    SetWindowPos(hTop, HWND_BOTTOM, 0, 0, 0, 0, SWP_NOMOVE | SWP_NOSIZE | SWP_NOACTIVATE);
    EXPECT_EQ(hOld, FindWindowA("FaceTest", nullptr)) << "the bottom one is topmost no longer";
    DestroyWindow(hOld);
    EXPECT_EQ(hNew, FindWindowA("FaceTest", nullptr));
}

TEST_F(PlatformWindow, ClassesAreKeptByNameInstanceAndAtom)
{
    WNDCLASSA wc = {};
    wc.lpfnWndProc = Proc;
    wc.lpszClassName = "ClassTest";
    const ATOM usAtom = RegisterClassA(&wc);
    ASSERT_GE(usAtom, 0xC000);
    EXPECT_EQ(0, RegisterClassA(&wc));
    EXPECT_EQ((DWORD)ERROR_CLASS_ALREADY_EXISTS, GetLastError());
    EXPECT_EQ(nullptr, CreateWindowExA(0, "NoSuchClass", "", WS_POPUP, 0, 0, 1, 1, nullptr, nullptr, nullptr, nullptr));
    EXPECT_EQ((DWORD)ERROR_CANNOT_FIND_WND_CLASS, GetLastError());
    const HWND hWnd =
        CreateWindowExA(0, MAKEINTATOM(usAtom), "By atom", WS_POPUP, 0, 0, 1, 1, nullptr, nullptr, nullptr, nullptr);
    ASSERT_NE(nullptr, hWnd);
    EXPECT_EQ(hWnd, FindWindowA(nullptr, "by ATOM"));
    EXPECT_EQ(hWnd, FindWindowA("classtest", nullptr));
    EXPECT_EQ(nullptr, FindWindowA("classtest", "Other"));
    EXPECT_TRUE(SetWindowTextA(hWnd, "Renamed"));
    EXPECT_STREQ("Renamed", FaceTitle(hWnd));
    EXPECT_FALSE(UnregisterClassA(MAKEINTATOM(usAtom), nullptr));
    EXPECT_EQ((DWORD)ERROR_CLASS_HAS_WINDOWS, GetLastError());
    DestroyWindow(hWnd);
    EXPECT_TRUE(UnregisterClassA(MAKEINTATOM(usAtom), nullptr));
    EXPECT_FALSE(UnregisterClassA("ClassTest", nullptr));
}

TEST_F(PlatformWindow, NoDisplayMeansNoWindow)
{
    FaceFailWindows(true);
    EXPECT_EQ(nullptr, Open(WS_POPUP, 0, 0, 1, 1));
    EXPECT_EQ(0, GetSystemMetrics(SM_CXSCREEN));
    FaceFailWindows(false);
    EXPECT_NE(nullptr, Open(WS_POPUP, 0, 0, 1, 1));
}

TEST_F(PlatformWindow, MessageBoxAnswersOrFails)
{
    FaceAnswerMessageBox(IDNO);
    EXPECT_EQ(IDNO, MessageBoxA(nullptr, "Really?", "Question", MB_YESNO));
    EXPECT_STREQ("Really?", FaceMessageBoxText());
    EXPECT_EQ(0, MessageBoxA(nullptr, "Unseen", "Nobody looks", MB_OK));
    EXPECT_EQ(0, MessageBoxA(nullptr, "Wrong", "Type", 9));
    EXPECT_EQ((DWORD)ERROR_INVALID_PARAMETER, GetLastError());
}
