// The inside of windows, shared by the files about them.
#pragma once

#include "platform/backend.h"

struct TKeyEvent;

struct TWindowClass
{
    TWindowClass *pNext;
    ATOM usAtom;
    int nWindows; ///< windows that live now
    WNDCLASSA wc; ///< its name points to szName, the menu name is dropped
    char szName[257];
};

enum
{
    MAX_DIRTY_RECTS = 48,
};

struct HWND__
{
    HWND pNext; ///< the one below; the list begins with the topmost
    TWindowClass *pClass;
    DWORD ulStyle;
    DWORD ulExStyle;
    char *pszTitle;
    RECT rcWindow; ///< on the desktop, with the frame; while minimised the place to return to
    RECT rcClient; ///< on the desktop, likewise
    RECT rcNormal; ///< window rectangle to return to from maximised
    bool bTopmost;
    bool bSizeSent;         ///< false until the first ShowWindow has told the size
    bool bRestoreMaximized; ///< was maximised when it was minimised
    bool bDestroying;
    bool bErase;    ///< the invalid area is to be erased
    RECT rcInvalid; ///< client pixels, empty when valid
    HDC hOwnDC;     ///< of a CS_OWNDC class
    HDC hFirstDC;   ///< all others that are out
    int nDirty;
    RECT arcDirty[MAX_DIRTY_RECTS]; ///< drawn since the last present
    void *pNative;                  ///< the backend's
};

// What WM_WINDOWPOSCHANGED says beyond the flags of SetWindowPos: these decide
// whether WM_SIZE and WM_MOVE follow.
enum : UINT
{
    SWP_NOCLIENTSIZE = 0x0800,
    SWP_NOCLIENTMOVE = 0x1000,
    SWP_STATECHANGED = 0x8000,
};

inline bool IsEmpty(const RECT &rc)
{
    return rc.left >= rc.right || rc.top >= rc.bottom;
}

inline int WidthOf(const RECT &rc)
{
    return rc.right - rc.left;
}

inline int HeightOf(const RECT &rc)
{
    return rc.bottom - rc.top;
}

/// @return false when nothing is left
inline bool IntersectWith(RECT *prc, const RECT &rcOther)
{
    prc->left = prc->left > rcOther.left ? prc->left : rcOther.left;
    prc->top = prc->top > rcOther.top ? prc->top : rcOther.top;
    prc->right = prc->right < rcOther.right ? prc->right : rcOther.right;
    prc->bottom = prc->bottom < rcOther.bottom ? prc->bottom : rcOther.bottom;
    return !IsEmpty(*prc);
}

// wndclass.cpp
TWindowClass *FindClass(LPCSTR pszNameOrAtom, HINSTANCE hInstance);
bool SameName(const char *pszA, const char *pszB);

// window.cpp
HWND FirstWindow();
/// Null, with the error set, for what is no window.
HWND CheckWindow(HWND hWnd);
void GetFrame(DWORD ulStyle, RECT *prcFrame);
/// Takes over a place that the desktop gave to the client area.
void AcceptPlace(HWND hWnd, const RECT &rcClient);
void ToTop(HWND hWnd);

// activate.cpp
HWND ActiveWindow();
void Activate(HWND hWnd, int nHow);
/// Another program has become active.
void Deactivate(bool bMinimized);
/// The window goes away: forget it.
void ForgetActive(HWND hWnd);
/// The window neither holds the pointer nor waits for it; null for all.
void ForgetPointer(HWND hWnd);

// queue.cpp
/// @param pKey  of a key message
bool PostInput(HWND hWnd, UINT ulMsg, WPARAM wParam, LPARAM lParam, const TKeyEvent *pKey);
void ForgetMessages(HWND hWnd);
void ResetQueue();

// paint.cpp
/// Room to draw in a window, null pixels when it shows nothing now.
TPixelView LockWindow(HWND hWnd);
void AddDirty(HWND hWnd, const RECT &rcArea);
void PresentWindow(HWND hWnd);
void PresentAll();
void FreeDCs(HWND hWnd);
bool OpenOwnDC(HWND hWnd);

// cursor.cpp
void ResetCursor();

// clipboard.cpp
void ResetClipboard();
