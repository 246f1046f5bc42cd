#include "platform/face.h"

namespace
{
class PlatformQueue : public CFaceTest
{
protected:
    std::vector<UINT> Drain(UINT ulFirst = 0, UINT ulLast = 0)
    {
        std::vector<UINT> found;
        MSG msg;
        while (found.size() < 100 && PeekMessageA(&msg, nullptr, ulFirst, ulLast, PM_REMOVE))
        {
            found.push_back(msg.message);
            m_Last = msg;
            if (msg.message == WM_PAINT)
                ValidateRect(msg.hwnd, nullptr);
        }
        return found;
    }

    MSG m_Last = {};
};

typedef std::vector<UINT> TMessages;
} // namespace

TEST_F(PlatformQueue, PostedThenQuitThenInputThenPaint)
{
    const HWND hWnd = OpenShown(WS_POPUP, 0, 0, 100, 100);
    InvalidateRect(hWnd, nullptr, FALSE);
    FaceMovePointerIn(hWnd, 5, 6);
    PostQuitMessage(7);
    PostMessageA(hWnd, WM_USER, 1, 2);
    PostMessageA(hWnd, WM_USER + 1, 1, 2);
    EXPECT_EQ((TMessages{ WM_USER, WM_USER + 1, WM_QUIT, WM_MOUSEMOVE, WM_PAINT }), Drain());
    EXPECT_EQ(TMessages{}, Drain()) << "all was taken";
}

TEST_F(PlatformQueue, FiltersTakeTheirOwnAndTheQuit)
{
    const HWND hWnd = OpenShown(WS_POPUP, 0, 0, 100, 100);
    PostMessageA(hWnd, WM_USER, 0, 0);
    PostMessageA(nullptr, WM_USER + 5, 0, 0);
    MSG msg;
    EXPECT_FALSE(PeekMessageA(&msg, nullptr, WM_KEYFIRST, WM_KEYLAST, PM_REMOVE));
    ASSERT_TRUE(PeekMessageA(&msg, (HWND)(intptr_t)-1, 0, 0, PM_REMOVE));
    EXPECT_EQ(WM_USER + 5u, msg.message);
    ASSERT_TRUE(PeekMessageA(&msg, hWnd, 0, 0, PM_NOREMOVE));
    ASSERT_TRUE(PeekMessageA(&msg, hWnd, 0, 0, PM_REMOVE));
    EXPECT_EQ((UINT)WM_USER, msg.message);
    PostQuitMessage(3);
    ASSERT_TRUE(PeekMessageA(&msg, hWnd, WM_KEYFIRST, WM_KEYLAST, PM_REMOVE));
    EXPECT_EQ((UINT)WM_QUIT, msg.message);
    EXPECT_EQ(3u, msg.wParam);
}

TEST_F(PlatformQueue, PointerMovesAreOneUntilSomethingHappens)
{
    const HWND hWnd = OpenShown(WS_POPUP, 0, 0, 100, 100);
    for (int i = 0; i < 20; ++i)
        FaceMovePointerIn(hWnd, i, 2 * i);
    FaceButton(VK_RBUTTON, true);
    FaceMovePointerIn(hWnd, 50, 60);
    MSG msg;
    ASSERT_TRUE(PeekMessageA(&msg, nullptr, 0, 0, PM_REMOVE));
    EXPECT_EQ(MAKELPARAM(19, 38), msg.lParam);
    EXPECT_EQ(0u, msg.wParam);
    ASSERT_TRUE(PeekMessageA(&msg, nullptr, 0, 0, PM_REMOVE));
    EXPECT_EQ((UINT)WM_RBUTTONDOWN, msg.message);
    EXPECT_EQ((WPARAM)MK_RBUTTON, msg.wParam);
    ASSERT_TRUE(PeekMessageA(&msg, nullptr, 0, 0, PM_REMOVE));
    EXPECT_EQ(MAKELPARAM(50, 60), msg.lParam);
    EXPECT_EQ((WPARAM)MK_RBUTTON, msg.wParam);
    FaceButton(VK_RBUTTON, false);
    ASSERT_TRUE(PeekMessageA(&msg, nullptr, 0, 0, PM_REMOVE));
    EXPECT_EQ((UINT)WM_RBUTTONUP, msg.message);
    EXPECT_EQ(0u, msg.wParam);
}

TEST_F(PlatformQueue, PointerMovesOfTwoWindowsStayApart)
{
    const HWND hFirst = OpenShown(WS_POPUP, 0, 0, 100, 100), hSecond = OpenShown(WS_POPUP, 200, 0, 100, 100);
    std::string strSeen;
    for (const HWND hWnd : { hFirst, hSecond, hSecond, hFirst })
        FaceMovePointerIn(hWnd, 10, (int)(strSeen += "x").size());
    strSeen.clear();
    for (MSG msg; PeekMessageA(&msg, nullptr, WM_MOUSEMOVE, WM_MOUSEMOVE, PM_REMOVE);)
        strSeen += (msg.hwnd == hFirst ? "1:" : "2:") + std::to_string(msg.lParam >> 16) + " ";
    EXPECT_EQ("1:1 2:3 1:4 ", strSeen);
}

TEST_F(PlatformQueue, MessagesOfAWindowGoWithIt)
{
    const HWND hWnd = OpenShown(WS_POPUP, 0, 0, 100, 100);
    PostMessageA(hWnd, WM_USER, 0, 0);
    FaceMovePointerIn(hWnd, 1, 1);
    FaceClose(hWnd);
    DestroyWindow(hWnd);
    EXPECT_EQ(TMessages{}, Drain());
    EXPECT_FALSE(PostMessageA(hWnd, WM_USER, 0, 0));
    MSG msg = { hWnd, WM_USER, 0, 0, 0, {} };
    EXPECT_EQ(0, DispatchMessageA(&msg));
}

TEST_F(PlatformQueue, FullAtTenThousand)
{
    const HWND hWnd = OpenShown(WS_POPUP, 0, 0, 100, 100);
    for (int i = 0; i < 10000; ++i)
        ASSERT_TRUE(PostMessageA(hWnd, WM_USER, (WPARAM)i, 0));
    EXPECT_FALSE(PostMessageA(hWnd, WM_USER, 0, 0));
    EXPECT_EQ((DWORD)ERROR_NOT_ENOUGH_QUOTA, GetLastError());
}

TEST_F(PlatformQueue, TimeAndPlaceOfAMessage)
{
    const HWND hWnd = OpenShown(WS_POPUP, 10, 20, 100, 100);
    FaceSetClock(5555);
    FaceMovePointerIn(hWnd, 7, 8);
    EXPECT_EQ(TMessages{ WM_MOUSEMOVE }, Drain());
    EXPECT_EQ(5555u, m_Last.time);
    EXPECT_EQ(17, m_Last.pt.x);
    EXPECT_EQ(28, m_Last.pt.y);
}

struct TKeyCase
{
    const char *pszName;
    std::vector<std::pair<int, bool>> keys;
    std::string strMessages;
    DWORD ulLastKey, ulLastData;
};

class PlatformKeys : public CFaceTest, public testing::WithParamInterface<TKeyCase>
{
};

TEST_P(PlatformKeys, BecomeMessages)
{
    const TKeyCase &c = GetParam();
    OpenShown(WS_POPUP, 0, 0, 100, 100);
    for (const auto &[nKey, bDown] : c.keys)
        FaceKey(nKey, bDown, nKey == 'A' && bDown ? 'a' : 0);
    Run();
    std::string strLog;
    MSG last = {};
    for (const MSG &msg : m_Messages)
    {
        if (msg.message < WM_KEYFIRST || msg.message > WM_SYSCOMMAND)
            continue;
        strLog += msg.message == WM_KEYDOWN      ? "D"
                  : msg.message == WM_KEYUP      ? "U"
                  : msg.message == WM_SYSKEYDOWN ? "d"
                  : msg.message == WM_SYSKEYUP   ? "u"
                  : msg.message == WM_CHAR       ? "c"
                  : msg.message == WM_SYSCHAR    ? "s"
                                                 : (msg.wParam == SC_KEYMENU ? "M" : "C");
        if (msg.message != WM_SYSCOMMAND)
            last = msg;
    }
    EXPECT_EQ(c.strMessages, strLog);
    EXPECT_EQ(c.ulLastKey, last.wParam);
    EXPECT_EQ(c.ulLastData, (DWORD)last.lParam);
}

// Scan codes and bits of the key data are those of a PC keyboard.
INSTANTIATE_TEST_SUITE_P(
    Cases, PlatformKeys,
    testing::Values(TKeyCase{ "Letter", { { 'A', true } }, "Dc", 'a', 0x001E0001 },
                    TKeyCase{ "Release", { { 'A', true }, { 'A', false } }, "DcU", 'A', 0xC01E0001 },
                    TKeyCase{ "HeldDown", { { 'A', true }, { 'A', true } }, "DcDc", 'a', 0x401E0001 },
                    TKeyCase{ "RightShiftIsShift", { { VK_RSHIFT, true } }, "D", VK_SHIFT, 0x00360001 },
                    TKeyCase{ "RightControlIsExtended", { { VK_RCONTROL, true } }, "D", VK_CONTROL, 0x011D0001 },
                    TKeyCase{ "ArrowIsExtended", { { VK_LEFT, true } }, "D", VK_LEFT, 0x014B0001 },
                    TKeyCase{ "AltAlone", { { VK_LMENU, true }, { VK_LMENU, false } }, "duM", VK_MENU, 0xE0380001 },
                    TKeyCase{ "AltWithKey",
                              { { VK_LMENU, true }, { 'A', true }, { 'A', false }, { VK_LMENU, false } },
                              "ddsuU",
                              VK_MENU,
                              0xC0380001 },
                    TKeyCase{ "F10", { { VK_F10, true }, { VK_F10, false } }, "duM", VK_F10, 0xC0440001 },
                    TKeyCase{ "F4", { { VK_F4, true } }, "D", VK_F4, 0x003E0001 }),
    [](const auto &info) { return info.param.pszName; });

TEST_F(PlatformQueue, AltF4Closes)
{
    const HWND hWnd = OpenShown(WS_POPUP, 0, 0, 100, 100);
    FaceKey(VK_LMENU, true, 0);
    FaceKey(VK_F4, true, 0);
    Run();
    EXPECT_FALSE(IsWindow(hWnd));
}
