// The real thing behind the windows, on SDL's driver that shows nothing.
#include "platform/win32.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>

namespace
{
int s_nSizes = 0, s_nPaints = 0;
LPARAM s_lSize = 0;

LRESULT CALLBACK Proc(HWND hWnd, UINT ulMsg, WPARAM wParam, LPARAM lParam)
{
    if (ulMsg == WM_SIZE)
    {
        ++s_nSizes;
        s_lSize = lParam;
    }
    if (ulMsg == WM_PAINT)
        ++s_nPaints;
    return DefWindowProcA(hWnd, ulMsg, wParam, lParam);
}

void HandleMessages()
{
    MSG msg;
    for (int i = 0; i < 1000 && PeekMessageA(&msg, nullptr, 0, 0, PM_REMOVE); ++i)
        DispatchMessageA(&msg);
}
} // namespace

TEST(PlatformSdl, WindowTakesSizeStyleAndPixels)
{
    setenv("SDL_VIDEODRIVER", "dummy", 1);
    WNDCLASSA wc = {};
    wc.style = CS_OWNDC;
    wc.lpfnWndProc = Proc;
    wc.hbrBackground = (HBRUSH)GetStockObject(BLACK_BRUSH);
    wc.lpszClassName = "SdlTest";
    ASSERT_NE(0, RegisterClassA(&wc));
    const HWND hWnd = CreateWindowExA(0, "SdlTest", "SDL", WS_POPUP, 0, 0, 1, 1, nullptr, nullptr, nullptr, nullptr);
    ASSERT_NE(nullptr, hWnd);
    EXPECT_GE(GetSystemMetrics(SM_CXSCREEN), 640);
    ShowWindow(hWnd, SW_SHOWDEFAULT);
    UpdateWindow(hWnd);
    const HDC hDC = GetDC(hWnd);
    EXPECT_EQ(32, GetDeviceCaps(hDC, BITSPIXEL));
    SetWindowLongA(hWnd, GWL_STYLE, 0xCF0000);
    SetWindowPos(hWnd, nullptr, 10, 10, 328, 231, 0);
    ShowWindow(hWnd, SW_SHOW);
    HandleMessages();
    EXPECT_EQ(MAKELPARAM(320, 200), s_lSize);
    EXPECT_GE(s_nPaints, 1);

    BITMAPINFO info = {};
    info.bmiHeader = { sizeof(BITMAPINFOHEADER), 64, -48, 1, 24, BI_RGB, 0, 0, 0, 0, 0 };
    void *pBits, *pBack;
    const HDC hSource = CreateCompatibleDC(hDC), hBack = CreateCompatibleDC(hDC);
    const HBITMAP hBitmap = CreateDIBSection(hDC, &info, DIB_RGB_COLORS, &pBits, nullptr, 0);
    const HBITMAP hCopy = CreateDIBSection(hDC, &info, DIB_RGB_COLORS, &pBack, nullptr, 0);
    SelectObject(hSource, hBitmap);
    SelectObject(hBack, hCopy);
    for (int i = 0; i < 64 * 48 * 3; ++i)
        ((BYTE *)pBits)[i] = (BYTE)(i * 31 >> 3);
    ASSERT_TRUE(BitBlt(hDC, 256, 152, 64, 48, hSource, 0, 0, SRCCOPY));
    HandleMessages();
    ASSERT_TRUE(BitBlt(hBack, 0, 0, 64, 48, hDC, 256, 152, SRCCOPY));
    EXPECT_EQ(0, memcmp(pBits, pBack, 64 * 48 * 3));

    // A new size is a new surface: the old picture is gone and asked for.
    const int nPaints = s_nPaints;
    SetWindowPos(hWnd, nullptr, 0, 0, 428, 331, SWP_NOMOVE | SWP_NOZORDER);
    HandleMessages();
    EXPECT_EQ(MAKELPARAM(420, 300), s_lSize);
    EXPECT_GT(s_nPaints, nPaints);
    ShowWindow(hWnd, SW_HIDE);
    EXPECT_TRUE(BitBlt(hDC, 0, 0, 64, 48, hSource, 0, 0, SRCCOPY));

    EXPECT_NE(nullptr, SetCursor(LoadCursorA(nullptr, IDC_HAND)));
    EXPECT_EQ(LoadCursorA(nullptr, IDC_HAND), SetCursor(LoadCursorA(nullptr, IDC_ARROW)));
    DeleteDC(hSource);
    DeleteDC(hBack);
    EXPECT_TRUE(DeleteObject(hBitmap));
    EXPECT_TRUE(DeleteObject(hCopy));
    EXPECT_TRUE(DestroyWindow(hWnd));
    EXPECT_TRUE(UnregisterClassA("SdlTest", nullptr));
}
