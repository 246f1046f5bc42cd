#include "platform/face.h"

CFaceTest *CFaceTest::s_pTest = nullptr;

namespace
{
const char *NameOf(UINT ulMsg)
{
    switch (ulMsg)
    {
    case WM_NCCREATE:
        return "NCCREATE";
    case WM_CREATE:
        return "CREATE";
    case WM_SHOWWINDOW:
        return "SHOWWINDOW";
    case WM_QUERYNEWPALETTE:
        return "QUERYNEWPALETTE";
    case WM_PALETTECHANGED:
        return "PALETTECHANGED";
    case WM_ACTIVATEAPP:
        return "ACTIVATEAPP";
    case WM_ACTIVATE:
        return "ACTIVATE";
    case WM_SETFOCUS:
        return "SETFOCUS";
    case WM_KILLFOCUS:
        return "KILLFOCUS";
    case WM_WINDOWPOSCHANGED:
        return "POSCHANGED";
    case WM_MOVE:
        return "MOVE";
    case WM_SIZE:
        return "SIZE";
    case WM_PAINT:
        return "PAINT";
    case WM_ERASEBKGND:
        return "ERASEBKGND";
    case WM_CLOSE:
        return "CLOSE";
    case WM_DESTROY:
        return "DESTROY";
    case WM_NCDESTROY:
        return "NCDESTROY";
    case WM_SYSCOMMAND:
        return "SYSCOMMAND";
    case WM_SETCURSOR:
        return "SETCURSOR";
    case WM_MOUSEMOVE:
        return "MOUSEMOVE";
    case WM_LBUTTONDOWN:
        return "LBUTTONDOWN";
    case WM_LBUTTONUP:
        return "LBUTTONUP";
    case WM_RBUTTONDOWN:
        return "RBUTTONDOWN";
    case WM_RBUTTONUP:
        return "RBUTTONUP";
    case WM_KEYDOWN:
        return "KEYDOWN";
    case WM_KEYUP:
        return "KEYUP";
    case WM_SYSKEYDOWN:
        return "SYSKEYDOWN";
    case WM_SYSKEYUP:
        return "SYSKEYUP";
    case WM_CHAR:
        return "CHAR";
    case WM_STYLECHANGED:
        return "STYLECHANGED";
    default:
        return nullptr;
    }
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
