// Windows, messages, cursors and input. Included by platform/win32.h.
#pragma once

typedef LRESULT(CALLBACK *WNDPROC)(HWND, UINT, WPARAM, LPARAM);
typedef LRESULT(CALLBACK *HOOKPROC)(int, WPARAM, LPARAM);
typedef struct HHOOK__ *HHOOK;

struct WNDCLASSA
{
    UINT style;
    WNDPROC lpfnWndProc;
    int cbClsExtra;
    int cbWndExtra;
    HINSTANCE hInstance;
    HICON hIcon;
    HCURSOR hCursor;
    HBRUSH hbrBackground;
    LPCSTR lpszMenuName;
    LPCSTR lpszClassName;
};

struct CREATESTRUCTA
{
    LPVOID lpCreateParams;
    HINSTANCE hInstance;
    HMENU hMenu;
    HWND hwndParent;
    int cy;
    int cx;
    int y;
    int x;
    LONG style;
    LPCSTR lpszName;
    LPCSTR lpszClass;
    DWORD dwExStyle;
};

struct MSG
{
    HWND hwnd;
    UINT message;
    WPARAM wParam;
    LPARAM lParam;
    DWORD time;
    POINT pt;
};

struct WINDOWPOS
{
    HWND hwnd;
    HWND hwndInsertAfter;
    int x;
    int y;
    int cx;
    int cy;
    UINT flags;
};

struct STYLESTRUCT
{
    DWORD styleOld;
    DWORD styleNew;
};

struct PAINTSTRUCT
{
    HDC hdc;
    BOOL fErase;
    RECT rcPaint;
    BOOL fRestore;
    BOOL fIncUpdate;
    BYTE rgbReserved[32];
};

struct TRACKMOUSEEVENT
{
    DWORD cbSize;
    DWORD dwFlags; // TME_
    HWND hwndTrack;
    DWORD dwHoverTime;
};

typedef MSG *LPMSG;
typedef PAINTSTRUCT *LPPAINTSTRUCT;

enum : UINT
{
    CS_VREDRAW = 0x0001,
    CS_HREDRAW = 0x0002,
    CS_DBLCLKS = 0x0008,
    CS_OWNDC = 0x0020,
};

enum : DWORD
{
    WS_OVERLAPPED = 0,
    WS_TABSTOP = 0x00010000,
    WS_MAXIMIZEBOX = 0x00010000,
    WS_MINIMIZEBOX = 0x00020000,
    WS_THICKFRAME = 0x00040000,
    WS_SYSMENU = 0x00080000,
    WS_DLGFRAME = 0x00400000,
    WS_BORDER = 0x00800000,
    WS_CAPTION = WS_BORDER | WS_DLGFRAME,
    WS_MAXIMIZE = 0x01000000,
    WS_CLIPCHILDREN = 0x02000000,
    WS_CLIPSIBLINGS = 0x04000000,
    WS_DISABLED = 0x08000000,
    WS_VISIBLE = 0x10000000,
    WS_MINIMIZE = 0x20000000,
    WS_CHILD = 0x40000000,
    WS_POPUP = 0x80000000,
    WS_OVERLAPPEDWINDOW = WS_CAPTION | WS_SYSMENU | WS_THICKFRAME | WS_MINIMIZEBOX | WS_MAXIMIZEBOX,
};

#define CW_USEDEFAULT ((int)0x80000000)

enum
{
    GWL_EXSTYLE = -20,
    GWL_STYLE = -16,
};

enum
{
    SW_HIDE = 0,
    SW_SHOWNORMAL = 1,
    SW_NORMAL = 1,
    SW_SHOWMINIMIZED = 2,
    SW_SHOWMAXIMIZED = 3,
    SW_MAXIMIZE = 3,
    SW_SHOWNOACTIVATE = 4,
    SW_SHOW = 5,
    SW_MINIMIZE = 6,
    SW_SHOWMINNOACTIVE = 7,
    SW_SHOWNA = 8,
    SW_RESTORE = 9,
    SW_SHOWDEFAULT = 10,
    SW_FORCEMINIMIZE = 11,
};

enum : UINT
{
    SWP_NOSIZE = 0x0001,
    SWP_NOMOVE = 0x0002,
    SWP_NOZORDER = 0x0004,
    SWP_NOREDRAW = 0x0008,
    SWP_NOACTIVATE = 0x0010,
    SWP_FRAMECHANGED = 0x0020,
    SWP_SHOWWINDOW = 0x0040,
    SWP_HIDEWINDOW = 0x0080,
    SWP_NOCOPYBITS = 0x0100,
    SWP_NOOWNERZORDER = 0x0200,
    SWP_NOSENDCHANGING = 0x0400,
};

#define HWND_TOP ((HWND)(intptr_t)0)
#define HWND_BOTTOM ((HWND)(intptr_t)1)
#define HWND_TOPMOST ((HWND)(intptr_t)-1)
#define HWND_NOTOPMOST ((HWND)(intptr_t)-2)
#define HWND_BROADCAST ((HWND)(intptr_t)0xFFFF)

enum
{
    SM_CXSCREEN = 0,
    SM_CYSCREEN = 1,
    SM_CYCAPTION = 4,
    SM_CXFIXEDFRAME = 7,
    SM_CXDLGFRAME = 7,
    SM_CYFIXEDFRAME = 8,
    SM_CYDLGFRAME = 8,
    SM_MOUSEPRESENT = 19,
    SM_CXSIZEFRAME = 32,
    SM_CXFRAME = 32,
    SM_CYSIZEFRAME = 33,
    SM_CYFRAME = 33,
};

enum : UINT
{
    WM_NULL = 0x0000,
    WM_CREATE = 0x0001,
    WM_DESTROY = 0x0002,
    WM_MOVE = 0x0003,
    WM_SIZE = 0x0005,
    WM_ACTIVATE = 0x0006,
    WM_SETFOCUS = 0x0007,
    WM_KILLFOCUS = 0x0008,
    WM_SETTEXT = 0x000C,
    WM_PAINT = 0x000F,
    WM_CLOSE = 0x0010,
    WM_QUIT = 0x0012,
    WM_ERASEBKGND = 0x0014,
    WM_SHOWWINDOW = 0x0018,
    WM_ACTIVATEAPP = 0x001C,
    WM_SETCURSOR = 0x0020,
    WM_WINDOWPOSCHANGING = 0x0046,
    WM_WINDOWPOSCHANGED = 0x0047,
    WM_STYLECHANGING = 0x007C,
    WM_STYLECHANGED = 0x007D,
    WM_NCCREATE = 0x0081,
    WM_NCDESTROY = 0x0082,
    WM_NCACTIVATE = 0x0086,
    WM_KEYFIRST = 0x0100,
    WM_KEYDOWN = 0x0100,
    WM_KEYUP = 0x0101,
    WM_CHAR = 0x0102,
    WM_DEADCHAR = 0x0103,
    WM_SYSKEYDOWN = 0x0104,
    WM_SYSKEYUP = 0x0105,
    WM_SYSCHAR = 0x0106,
    WM_KEYLAST = 0x0109,
    WM_SYSCOMMAND = 0x0112,
    WM_MOUSEFIRST = 0x0200,
    WM_MOUSEMOVE = 0x0200,
    WM_LBUTTONDOWN = 0x0201,
    WM_LBUTTONUP = 0x0202,
    WM_LBUTTONDBLCLK = 0x0203,
    WM_RBUTTONDOWN = 0x0204,
    WM_RBUTTONUP = 0x0205,
    WM_RBUTTONDBLCLK = 0x0206,
    WM_MBUTTONDOWN = 0x0207,
    WM_MBUTTONUP = 0x0208,
    WM_MBUTTONDBLCLK = 0x0209,
    WM_MOUSELAST = 0x020E,
    WM_MOUSELEAVE = 0x02A3,
    WM_QUERYNEWPALETTE = 0x030F,
    WM_PALETTEISCHANGING = 0x0310,
    WM_PALETTECHANGED = 0x0311,
    WM_USER = 0x0400,
};

enum
{
    SIZE_RESTORED = 0,
    SIZE_MINIMIZED = 1,
    SIZE_MAXIMIZED = 2,
};

enum
{
    WA_INACTIVE = 0,
    WA_ACTIVE = 1,
    WA_CLICKACTIVE = 2,
};

enum
{
    SC_SIZE = 0xF000,
    SC_MOVE = 0xF010,
    SC_MINIMIZE = 0xF020,
    SC_MAXIMIZE = 0xF030,
    SC_CLOSE = 0xF060,
    SC_KEYMENU = 0xF100,
    SC_RESTORE = 0xF120,
};

enum
{
    HTCLIENT = 1,
};

enum
{
    MK_LBUTTON = 0x0001,
    MK_RBUTTON = 0x0002,
    MK_SHIFT = 0x0004,
    MK_CONTROL = 0x0008,
    MK_MBUTTON = 0x0010,
};

enum : DWORD
{
    TME_LEAVE = 0x00000002,
    TME_CANCEL = 0x80000000,
};

enum
{
    WH_KEYBOARD = 2,
    HC_ACTION = 0,
    HC_NOREMOVE = 3,
};

enum : UINT
{
    CF_TEXT = 1,
};

enum : UINT
{
    PM_NOREMOVE = 0,
    PM_REMOVE = 1,
    PM_NOYIELD = 2,
};

/// Virtual key codes. Letters and digits have the code of their character.
enum
{
    VK_LBUTTON = 0x01,
    VK_RBUTTON = 0x02,
    VK_CANCEL = 0x03,
    VK_MBUTTON = 0x04,
    VK_BACK = 0x08,
    VK_TAB = 0x09,
    VK_CLEAR = 0x0C,
    VK_RETURN = 0x0D,
    VK_SHIFT = 0x10,
    VK_CONTROL = 0x11,
    VK_MENU = 0x12,
    VK_PAUSE = 0x13,
    VK_CAPITAL = 0x14,
    VK_ESCAPE = 0x1B,
    VK_SPACE = 0x20,
    VK_PRIOR = 0x21,
    VK_NEXT = 0x22,
    VK_END = 0x23,
    VK_HOME = 0x24,
    VK_LEFT = 0x25,
    VK_UP = 0x26,
    VK_RIGHT = 0x27,
    VK_DOWN = 0x28,
    VK_SELECT = 0x29,
    VK_PRINT = 0x2A,
    VK_EXECUTE = 0x2B,
    VK_SNAPSHOT = 0x2C,
    VK_INSERT = 0x2D,
    VK_DELETE = 0x2E,
    VK_HELP = 0x2F,
    VK_LWIN = 0x5B,
    VK_RWIN = 0x5C,
    VK_APPS = 0x5D,
    VK_NUMPAD0 = 0x60,
    VK_NUMPAD1 = 0x61,
    VK_NUMPAD9 = 0x69,
    VK_MULTIPLY = 0x6A,
    VK_ADD = 0x6B,
    VK_SEPARATOR = 0x6C,
    VK_SUBTRACT = 0x6D,
    VK_DECIMAL = 0x6E,
    VK_DIVIDE = 0x6F,
    VK_F1 = 0x70,
    VK_F4 = 0x73,
    VK_F10 = 0x79,
    VK_F12 = 0x7B,
    VK_F13 = 0x7C,
    VK_F24 = 0x87,
    VK_NUMLOCK = 0x90,
    VK_SCROLL = 0x91,
    VK_LSHIFT = 0xA0,
    VK_RSHIFT = 0xA1,
    VK_LCONTROL = 0xA2,
    VK_RCONTROL = 0xA3,
    VK_LMENU = 0xA4,
    VK_RMENU = 0xA5,
    VK_OEM_1 = 0xBA,
    VK_OEM_PLUS = 0xBB,
    VK_OEM_COMMA = 0xBC,
    VK_OEM_MINUS = 0xBD,
    VK_OEM_PERIOD = 0xBE,
    VK_OEM_2 = 0xBF,
    VK_OEM_3 = 0xC0,
    VK_OEM_4 = 0xDB,
    VK_OEM_5 = 0xDC,
    VK_OEM_6 = 0xDD,
    VK_OEM_7 = 0xDE,
    VK_OEM_102 = 0xE2,
    VK_PACKET = 0xE7,
};

#define IDC_ARROW MAKEINTRESOURCE(32512)
#define IDC_IBEAM MAKEINTRESOURCE(32513)
#define IDC_WAIT MAKEINTRESOURCE(32514)
#define IDC_CROSS MAKEINTRESOURCE(32515)
#define IDC_UPARROW MAKEINTRESOURCE(32516)
#define IDC_SIZENWSE MAKEINTRESOURCE(32642)
#define IDC_SIZENESW MAKEINTRESOURCE(32643)
#define IDC_SIZEWE MAKEINTRESOURCE(32644)
#define IDC_SIZENS MAKEINTRESOURCE(32645)
#define IDC_SIZEALL MAKEINTRESOURCE(32646)
#define IDC_NO MAKEINTRESOURCE(32648)
#define IDC_HAND MAKEINTRESOURCE(32649)
#define IDC_APPSTARTING MAKEINTRESOURCE(32650)

enum : UINT
{
    MB_OK = 0,
    MB_OKCANCEL = 1,
    MB_ABORTRETRYIGNORE = 2,
    MB_YESNOCANCEL = 3,
    MB_YESNO = 4,
    MB_RETRYCANCEL = 5,
    MB_TYPEMASK = 0x0F,
    MB_ICONERROR = 0x10,
    MB_ICONQUESTION = 0x20,
    MB_ICONWARNING = 0x30,
    MB_ICONINFORMATION = 0x40,
    MB_ICONMASK = 0xF0,
    MB_DEFBUTTON2 = 0x100,
    MB_DEFBUTTON3 = 0x200,
    MB_DEFMASK = 0xF00,
};

enum
{
    IDOK = 1,
    IDCANCEL = 2,
    IDABORT = 3,
    IDRETRY = 4,
    IDIGNORE = 5,
    IDYES = 6,
    IDNO = 7,
};

// Classes and windows. One process has a few top-level windows and no children.
TARVIX_INTERNAL ATOM RegisterClassA(const WNDCLASSA *pClass);
TARVIX_INTERNAL BOOL UnregisterClassA(LPCSTR pszClass, HINSTANCE hInstance);
TARVIX_INTERNAL HWND CreateWindowExA(DWORD ulExStyle, LPCSTR pszClass, LPCSTR pszTitle, DWORD ulStyle, int nX, int nY,
                                     int nWidth, int nHeight, HWND hParent, HMENU hMenu, HINSTANCE hInstance,
                                     LPVOID pParam);
TARVIX_INTERNAL BOOL DestroyWindow(HWND hWnd);
TARVIX_INTERNAL BOOL IsWindow(HWND hWnd);
TARVIX_INTERNAL BOOL IsWindowVisible(HWND hWnd);
TARVIX_INTERNAL BOOL IsIconic(HWND hWnd);
TARVIX_INTERNAL BOOL IsZoomed(HWND hWnd);
TARVIX_INTERNAL BOOL ShowWindow(HWND hWnd, int nShow);
TARVIX_INTERNAL BOOL SetWindowPos(HWND hWnd, HWND hInsertAfter, int nX, int nY, int nWidth, int nHeight, UINT ulFlags);
TARVIX_INTERNAL BOOL GetClientRect(HWND hWnd, RECT *prcClient);
TARVIX_INTERNAL BOOL GetWindowRect(HWND hWnd, RECT *prcWindow);
TARVIX_INTERNAL BOOL ClientToScreen(HWND hWnd, POINT *pPoint);
TARVIX_INTERNAL BOOL ScreenToClient(HWND hWnd, POINT *pPoint);
TARVIX_INTERNAL LONG GetWindowLongA(HWND hWnd, int nIndex);
TARVIX_INTERNAL LONG SetWindowLongA(HWND hWnd, int nIndex, LONG lValue);
TARVIX_INTERNAL BOOL SetWindowTextA(HWND hWnd, LPCSTR pszTitle);
TARVIX_INTERNAL HWND FindWindowA(LPCSTR pszClass, LPCSTR pszTitle);
TARVIX_INTERNAL BOOL SetForegroundWindow(HWND hWnd);
TARVIX_INTERNAL HWND SetFocus(HWND hWnd);
TARVIX_INTERNAL HWND GetFocus();
TARVIX_INTERNAL int GetSystemMetrics(int nIndex);
TARVIX_INTERNAL int MessageBoxA(HWND hOwner, LPCSTR pszText, LPCSTR pszCaption, UINT ulType);

// Painting.
TARVIX_INTERNAL HDC GetDC(HWND hWnd);
TARVIX_INTERNAL int ReleaseDC(HWND hWnd, HDC hDC);
TARVIX_INTERNAL HDC BeginPaint(HWND hWnd, PAINTSTRUCT *pPaint);
TARVIX_INTERNAL BOOL EndPaint(HWND hWnd, const PAINTSTRUCT *pPaint);
TARVIX_INTERNAL BOOL UpdateWindow(HWND hWnd);
TARVIX_INTERNAL BOOL InvalidateRect(HWND hWnd, const RECT *prcArea, BOOL bErase);
TARVIX_INTERNAL BOOL ValidateRect(HWND hWnd, const RECT *prcArea);

// Messages.
TARVIX_INTERNAL BOOL PeekMessageA(MSG *pMsg, HWND hWnd, UINT ulFirst, UINT ulLast, UINT ulRemove);
TARVIX_INTERNAL BOOL TranslateMessage(const MSG *pMsg);
TARVIX_INTERNAL LRESULT DispatchMessageA(const MSG *pMsg);
TARVIX_INTERNAL BOOL PostMessageA(HWND hWnd, UINT ulMsg, WPARAM wParam, LPARAM lParam);
TARVIX_INTERNAL LRESULT SendMessageA(HWND hWnd, UINT ulMsg, WPARAM wParam, LPARAM lParam);
TARVIX_INTERNAL LRESULT DefWindowProcA(HWND hWnd, UINT ulMsg, WPARAM wParam, LPARAM lParam);
TARVIX_INTERNAL void PostQuitMessage(int nExitCode);

// The pointer.
TARVIX_INTERNAL HCURSOR LoadCursorA(HINSTANCE hInstance, LPCSTR pszName);
TARVIX_INTERNAL HCURSOR SetCursor(HCURSOR hCursor);
TARVIX_INTERNAL int ShowCursor(BOOL bShow);
TARVIX_INTERNAL BOOL GetCursorPos(POINT *pPoint);
TARVIX_INTERNAL BOOL SetCursorPos(int nX, int nY);
/// @return the window that had it before, or null
TARVIX_INTERNAL HWND SetCapture(HWND hWnd);
TARVIX_INTERNAL BOOL ReleaseCapture();
TARVIX_INTERNAL HWND GetCapture();
/// TME_LEAVE alone, with TME_CANCEL.
TARVIX_INTERNAL BOOL TrackMouseEvent(TRACKMOUSEEVENT *pTrack);

// The keyboard. States are those of the messages that were taken so far.
/// Hooks are WH_KEYBOARD alone, of the calling thread.
TARVIX_INTERNAL HHOOK SetWindowsHookExA(int nKind, HOOKPROC pfnProc, HINSTANCE hInstance, DWORD ulThread);
TARVIX_INTERNAL BOOL UnhookWindowsHookEx(HHOOK hHook);
TARVIX_INTERNAL LRESULT CallNextHookEx(HHOOK hHook, int nCode, WPARAM wParam, LPARAM lParam);
TARVIX_INTERNAL SHORT GetKeyState(int nVirtualKey);
/// @param pucState  256 bytes
TARVIX_INTERNAL BOOL GetKeyboardState(BYTE *pucState);
/// Knows what each key typed when it was pressed last, in code page 1252.
TARVIX_INTERNAL int ToAscii(UINT ulVirtualKey, UINT ulScanCode, const BYTE *pucState, WORD *pusChar, UINT ulFlags);

// The clipboard, with CF_TEXT alone. A handle of GetClipboardData is good until
// the next call that gets, sets or empties.
TARVIX_INTERNAL BOOL IsClipboardFormatAvailable(UINT ulFormat);
TARVIX_INTERNAL BOOL OpenClipboard(HWND hWnd);
TARVIX_INTERNAL BOOL CloseClipboard();
TARVIX_INTERNAL BOOL EmptyClipboard();
TARVIX_INTERNAL HANDLE GetClipboardData(UINT ulFormat);
TARVIX_INTERNAL HANDLE SetClipboardData(UINT ulFormat, HANDLE hMemory);
