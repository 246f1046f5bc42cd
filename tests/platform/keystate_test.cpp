#include "platform/face.h"

namespace
{
struct THookCall
{
    int nCode;
    WPARAM wParam;
    LPARAM lParam;
    int nHook;
};
std::vector<THookCall> s_Calls;
bool s_bSwallow, s_bPass;
HHOOK s_hEnd;

LRESULT CALLBACK HookOne(int nCode, WPARAM wParam, LPARAM lParam)
{
    s_Calls.push_back({ nCode, wParam, lParam, 1 });
    return s_bSwallow;
}

LRESULT CALLBACK HookTwo(int nCode, WPARAM wParam, LPARAM lParam)
{
    s_Calls.push_back({ nCode, wParam, lParam, 2 });
    if (s_hEnd)
        UnhookWindowsHookEx(s_hEnd);
    s_hEnd = nullptr;
    return s_bPass ? CallNextHookEx(nullptr, nCode, wParam, lParam) : 0;
}

class PlatformKeyState : public CFaceTest
{
protected:
    PlatformKeyState()
    {
        s_Calls.clear();
        s_bSwallow = false;
        s_bPass = true;
        s_hEnd = nullptr;
        OpenShown(WS_POPUP, 0, 0, 100, 100);
    }

    int Typed(UINT ulKey)
    {
        BYTE aucState[256];
        WORD usChar = 0xABCD;
        EXPECT_TRUE(GetKeyboardState(aucState));
        const int nCount = ToAscii(ulKey, 0, aucState, &usChar, 0);
        return nCount == 1 ? usChar : -nCount - 1;
    }
};
} // namespace

TEST_F(PlatformKeyState, HooksSeeKeysWhenTheyAreTakenNewestFirst)
{
    const HHOOK hOne = SetWindowsHookExA(WH_KEYBOARD, HookOne, nullptr, GetCurrentThreadId());
    const HHOOK hTwo = SetWindowsHookExA(WH_KEYBOARD, HookTwo, nullptr, GetCurrentThreadId());
    ASSERT_TRUE(hOne && hTwo);
    FaceKey('A', true, 'a');
    MSG msg;
    ASSERT_TRUE(PeekMessageA(&msg, nullptr, 0, 0, PM_NOREMOVE));
    ASSERT_EQ(2u, s_Calls.size());
    EXPECT_EQ((int)HC_NOREMOVE, s_Calls[0].nCode);
    EXPECT_EQ(0, GetKeyState('A')) << "still in the queue";
    s_Calls.clear();
    ASSERT_TRUE(PeekMessageA(&msg, nullptr, 0, 0, PM_REMOVE));
    ASSERT_EQ(2u, s_Calls.size());
    EXPECT_EQ(2, s_Calls[0].nHook);
    EXPECT_EQ((int)HC_ACTION, s_Calls[1].nCode);
    EXPECT_EQ((WPARAM)'A', s_Calls[1].wParam);
    EXPECT_EQ(0x001E0001, s_Calls[1].lParam);
    EXPECT_LT(GetKeyState('A'), 0);

    s_Calls.clear();
    s_bPass = false;
    FaceKey('A', false, 0);
    Run();
    EXPECT_EQ(1u, s_Calls.size());
    s_bPass = s_bSwallow = true;
    m_Messages.clear();
    FaceKey('B', true, 'b');
    FaceMovePointer(5, 5);
    Run();
    for (const MSG &message : m_Messages)
        EXPECT_TRUE(message.message != WM_KEYDOWN && message.message != WM_CHAR) << "swallowed";
    EXPECT_EQ((UINT)WM_MOUSEMOVE, m_Messages.back().message) << "what follows comes all the same";
    FaceKey('B', false, 0);
    EXPECT_FALSE(PeekMessageA(&msg, nullptr, 0, 0, PM_NOREMOVE));

    // A hook may end itself, or the next one, while it runs.
    s_Calls.clear();
    s_bSwallow = false;
    s_hEnd = hOne;
    FaceKey('C', true, 0);
    Run();
    EXPECT_EQ(1u, s_Calls.size());
    s_hEnd = hTwo;
    FaceKey('C', false, 0);
    FaceKey('C', true, 0);
    Run();
    EXPECT_EQ(2u, s_Calls.size());
    EXPECT_FALSE(UnhookWindowsHookEx(hTwo));
    EXPECT_EQ((DWORD)ERROR_INVALID_HOOK_HANDLE, GetLastError());
}

TEST_F(PlatformKeyState, HooksOfOtherKindsAreRefused)
{
    EXPECT_EQ(nullptr, SetWindowsHookExA(3, HookOne, nullptr, GetCurrentThreadId()));
    EXPECT_EQ((DWORD)ERROR_INVALID_HOOK_FILTER, GetLastError());
    EXPECT_EQ(nullptr, SetWindowsHookExA(WH_KEYBOARD, nullptr, nullptr, GetCurrentThreadId()));
    EXPECT_EQ((DWORD)ERROR_INVALID_FILTER_PROC, GetLastError());
    EXPECT_EQ(nullptr, SetWindowsHookExA(WH_KEYBOARD, HookOne, nullptr, 0));
    EXPECT_EQ(0, CallNextHookEx(nullptr, 0, 0, 0));
}

TEST_F(PlatformKeyState, SidesTogetherAndToggles)
{
    const auto Key = [this](int nKey, bool bDown)
    {
        FaceKey(nKey, bDown, 0);
        Run();
    };
    Key(VK_RSHIFT, true);
    EXPECT_LT(GetKeyState(VK_RSHIFT), 0);
    EXPECT_LT(GetKeyState(VK_SHIFT), 0);
    EXPECT_EQ(0, GetKeyState(VK_LSHIFT));
    Key(VK_LSHIFT, true);
    Key(VK_RSHIFT, false);
    EXPECT_LT(GetKeyState(VK_SHIFT), 0) << "the left one is down";
    Key(VK_LSHIFT, false);
    EXPECT_GE(GetKeyState(VK_SHIFT), 0);
    for (const int nKey : { (int)VK_CAPITAL, (int)VK_NUMLOCK, (int)'X' })
    {
        SCOPED_TRACE(nKey);
        Key(nKey, true);
        Key(nKey, true); // held
        EXPECT_EQ(1, GetKeyState(nKey) & 1);
        Key(nKey, false);
        EXPECT_EQ(1, GetKeyState(nKey));
        Key(nKey, true);
        Key(nKey, false);
        EXPECT_EQ(0, GetKeyState(nKey));
    }
    FaceMovePointer(5, 5);
    FaceButton(VK_RBUTTON, true);
    Run();
    EXPECT_LT(GetKeyState(VK_RBUTTON), 0);
    BYTE aucState[256];
    ASSERT_TRUE(GetKeyboardState(aucState));
    EXPECT_EQ(0x80, aucState[VK_RBUTTON] & 0x80);
    EXPECT_EQ(0, aucState[VK_LBUTTON] & 0x80);
    EXPECT_FALSE(GetKeyboardState(nullptr));
}

TEST_F(PlatformKeyState, ReleasesTypeWhatThePressTyped)
{
    FaceKey('Q', true, '@');
    Run();
    EXPECT_EQ('@', Typed('Q'));
    FaceKey('Q', false, 0);
    Run();
    EXPECT_EQ('@', Typed('Q'));
    FaceKey('Q', true, 0);
    Run();
    EXPECT_EQ(-1, Typed('Q'));
    EXPECT_EQ(-1, Typed(VK_F1));
    EXPECT_EQ(-1, Typed(0x1234));
}

TEST_F(PlatformKeyState, LosingTheFocusLetsGo)
{
    const HWND hWnd = OpenShown(WS_POPUP, 0, 0, 100, 100);
    FaceKey(VK_LSHIFT, true, 0);
    FaceKey(VK_CAPITAL, true, 0);
    FaceKey('A', true, 'A');
    Run();
    FaceActivate(hWnd, false);
    Run();
    EXPECT_EQ(0, GetKeyState(VK_LSHIFT) & 0x8000);
    EXPECT_EQ(1, GetKeyState(VK_CAPITAL)) << "a lock stays on";
    FaceActivate(hWnd, true);
    m_Messages.clear();
    FaceKey('A', true, 'a');
    Run();
    bool bSeen = false;
    for (const MSG &msg : m_Messages)
    {
        if (msg.message != WM_KEYDOWN)
            continue;
        bSeen = true;
        EXPECT_EQ(0x001E0001, msg.lParam) << "a first press, no repeat";
    }
    EXPECT_TRUE(bSeen);
}
