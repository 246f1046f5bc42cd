#include "platform/face.h"

#include <utility>

CFaceTest *CFaceTest::s_pTest = nullptr;

namespace
{
const char *NameOf(UINT ulMsg)
{
#define NAMED(name)                                                                                                    \
    {                                                                                                                  \
        WM_##name, #name                                                                                               \
    }
    static const std::pair<UINT, const char *> s_Names[] = {
        NAMED(NCCREATE),       NAMED(CREATE),
        NAMED(SHOWWINDOW),     NAMED(QUERYNEWPALETTE),
        NAMED(PALETTECHANGED), NAMED(ACTIVATEAPP),
        NAMED(ACTIVATE),       NAMED(SETFOCUS),
        NAMED(KILLFOCUS),      NAMED(MOVE),
        NAMED(SIZE),           NAMED(PAINT),
        NAMED(ERASEBKGND),     NAMED(CLOSE),
        NAMED(DESTROY),        NAMED(NCDESTROY),
        NAMED(SYSCOMMAND),     NAMED(SETCURSOR),
        NAMED(MOUSEMOVE),      NAMED(LBUTTONDOWN),
        NAMED(LBUTTONUP),      NAMED(RBUTTONDOWN),
        NAMED(RBUTTONUP),      NAMED(KEYDOWN),
        NAMED(KEYUP),          NAMED(SYSKEYDOWN),
        NAMED(SYSKEYUP),       NAMED(CHAR),
        NAMED(STYLECHANGED),   { WM_WINDOWPOSCHANGED, "POSCHANGED" },
    };
#undef NAMED
    for (const auto &[ulNamed, pszName] : s_Names)
        if (ulNamed == ulMsg)
            return pszName;
    return nullptr;
}

bool SaysHow(UINT ulMsg)
{
    return ulMsg == WM_SIZE || ulMsg == WM_ACTIVATEAPP || ulMsg == WM_SHOWWINDOW;
}
} // namespace

LRESULT CALLBACK CFaceTest::Proc(HWND hWnd, UINT ulMsg, WPARAM wParam, LPARAM lParam)
{
    if (!s_pTest)
        return DefWindowProcA(hWnd, ulMsg, wParam, lParam);
    s_pTest->m_Messages.push_back({ hWnd, ulMsg, wParam, lParam, 0, {} });
    const char *pszName = NameOf(ulMsg);
    if (pszName)
    {
        s_pTest->m_Log += s_pTest->m_Log.empty() ? "" : " ";
        s_pTest->m_Log += pszName;
        if (SaysHow(ulMsg))
            s_pTest->m_Log += std::to_string(wParam);
    }
    return s_pTest->Handle(hWnd, ulMsg, wParam, lParam);
}

HWND CFaceTest::Open(DWORD ulStyle, int nX, int nY, int nWidth, int nHeight, UINT ulClassStyle)
{
    s_pTest = this;
    WNDCLASSA wc = {};
    wc.style = ulClassStyle;
    wc.lpfnWndProc = Proc;
    wc.hbrBackground = (HBRUSH)GetStockObject(BLACK_BRUSH);
    wc.lpszClassName = "FaceTest";
    RegisterClassA(&wc);
    return CreateWindowExA(0, "FaceTest", "A window", ulStyle, nX, nY, nWidth, nHeight, nullptr, nullptr, nullptr,
                           nullptr);
}

HWND CFaceTest::OpenShown(DWORD ulStyle, int nX, int nY, int nWidth, int nHeight, UINT ulClassStyle)
{
    const HWND hWnd = Open(ulStyle, nX, nY, nWidth, nHeight, ulClassStyle);
    EXPECT_NE(nullptr, hWnd);
    ShowWindow(hWnd, SW_SHOWDEFAULT);
    UpdateWindow(hWnd);
    Run();
    m_Log.clear();
    m_Messages.clear();
    return hWnd;
}

void CFaceTest::Run()
{
    MSG msg;
    for (int i = 0; i < 1000 && PeekMessageA(&msg, nullptr, 0, 0, PM_REMOVE) && msg.message != WM_QUIT; ++i)
    {
        TranslateMessage(&msg);
        DispatchMessageA(&msg);
    }
}

std::string CFaceTest::TakeLog()
{
    std::string strLog;
    strLog.swap(m_Log);
    return strLog;
}
