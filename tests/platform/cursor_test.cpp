#include "platform/face.h"

using PlatformCursor = CFaceTest;

TEST_F(PlatformCursor, ShapesAndTheirCounter)
{
    OpenShown(WS_POPUP, 100, 100, 50, 50);
    const HCURSOR hArrow = LoadCursorA(nullptr, IDC_ARROW), hHand = LoadCursorA(nullptr, IDC_HAND);
    ASSERT_NE(nullptr, hArrow);
    EXPECT_NE(hArrow, hHand);
    EXPECT_EQ(hArrow, LoadCursorA(nullptr, IDC_ARROW));
    EXPECT_EQ(nullptr, LoadCursorA(nullptr, MAKEINTRESOURCE(1)));
    EXPECT_EQ(nullptr, LoadCursorA((HINSTANCE)&m_Desktop, IDC_ARROW)) << "a program carries no resources";
    EXPECT_EQ((DWORD)ERROR_RESOURCE_NAME_NOT_FOUND, GetLastError());
    EXPECT_EQ(hArrow, SetCursor(hHand));
    EXPECT_EQ(hHand, FaceCursor());
    EXPECT_EQ(-1, ShowCursor(FALSE));
    EXPECT_EQ(-2, ShowCursor(FALSE));
    EXPECT_EQ(nullptr, FaceCursor());
    EXPECT_EQ(hHand, SetCursor(hArrow));
    EXPECT_EQ(-1, ShowCursor(TRUE));
    EXPECT_EQ(nullptr, FaceCursor());
    EXPECT_EQ(0, ShowCursor(TRUE));
    EXPECT_EQ(hArrow, FaceCursor());
    EXPECT_EQ(hArrow, SetCursor(nullptr));
    EXPECT_EQ(nullptr, FaceCursor());
}

TEST_F(PlatformCursor, PlacesOnDesktopAndWindow)
{
    const HWND hWnd = OpenShown(0xCF0000, 100, 100, 208, 131);
    EXPECT_TRUE(SetCursorPos(150, 160));
    POINT pt = {};
    EXPECT_TRUE(GetCursorPos(&pt));
    EXPECT_EQ(150, pt.x);
    EXPECT_EQ(160, pt.y);
    EXPECT_TRUE(ScreenToClient(hWnd, &pt));
    EXPECT_EQ(46, pt.x);
    EXPECT_EQ(33, pt.y);
    EXPECT_TRUE(ClientToScreen(hWnd, &pt));
    EXPECT_EQ(160, pt.y);
    Run();
    ASSERT_FALSE(m_Messages.empty());
    EXPECT_EQ((UINT)WM_MOUSEMOVE, m_Messages.back().message) << "a pointer that is set moves";
    EXPECT_EQ(MAKELPARAM(46, 33), m_Messages.back().lParam);
    m_Messages.clear();
    SetCursorPos(-50, 5000);
    GetCursorPos(&pt);
    EXPECT_EQ(0, pt.x);
    EXPECT_EQ(599, pt.y);
    Run();
    EXPECT_TRUE(m_Messages.empty()) << "the pointer is over no window";
}

TEST_F(PlatformCursor, TopmostWindowGetsThePointer)
{
    const HWND hBelow = OpenShown(WS_POPUP, 0, 0, 100, 100), hAbove = OpenShown(WS_POPUP, 50, 50, 100, 100);
    FaceMovePointer(60, 60);
    Run();
    EXPECT_EQ(hAbove, m_Messages.back().hwnd);
    FaceClick(hBelow, 10, 10);
    FaceMovePointer(60, 60);
    Run();
    EXPECT_EQ(hBelow, m_Messages.back().hwnd) << "the click brought it to the top";
}

TEST(PlatformClock, StandsUnderTestsUntilToldToGo)
{
    const DWORD ulReal = timeGetTime();
    Sleep(2);
    EXPECT_GE(timeGetTime() - ulReal, 1u);
    const TFaceDesktop desktop = { 100, 100, 32 };
    ASSERT_TRUE(FaceStart(&desktop));
    EXPECT_EQ(1000u, timeGetTime());
    Sleep(250);
    EXPECT_EQ(1250u, GetTickCount());
    FaceAdvanceClock(10);
    EXPECT_EQ(1260u, timeGetTime());
    FaceSetClock(0xFFFFFFF0);
    Sleep(0x20);
    EXPECT_EQ(0x10u, timeGetTime()) << "wraps at 32 bits";
    FaceStop();
}
