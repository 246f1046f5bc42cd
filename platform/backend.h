// What stands behind the windows: SDL, or plain memory in tests. The Win32 side
// keeps all state that Win32 knows of; a backend shows it and reports what the
// user does.
#pragma once

#include "platform/win32.h"

enum EShowState
{
    SHOW_HIDDEN,
    SHOW_NORMAL,
    SHOW_MINIMIZED,
    SHOW_MAXIMIZED,
};

/// The pixels of a window's client area: 32 bits, blue in the low byte.
struct TPixelView
{
    uint32_t *pPixels;
    int nPitch; ///< in pixels
    int nWidth;
    int nHeight;
    bool bLost; ///< the area is new: what was shown before is gone
};

class CBackend
{
public:
    /// @return false when there is nothing to show windows on; may be called again
    virtual bool Start() = 0;
    /// @param pnDepth  bits of a pixel: 8, 16 or 32
    virtual void GetDesktop(int *pnWidth, int *pnHeight, int *pnDepth) = 0;

    virtual bool OpenWindow(HWND hWnd) = 0;
    virtual void CloseWindow(HWND hWnd) = 0;
    /// Brings title, style and client rectangle of the window to the desktop.
    virtual void PlaceWindow(HWND hWnd) = 0;
    virtual void SetTitle(HWND hWnd) = 0;
    virtual void ShowWindow(HWND hWnd, EShowState eState) = 0;
    /// Where the desktop has put the client area after a change of state.
    /// @return false when the backend has no say in it
    virtual bool GetPlace(HWND hWnd, RECT *prcClient) = 0;
    virtual void RaiseWindow(HWND hWnd) = 0;

    virtual bool LockPixels(HWND hWnd, TPixelView *pView) = 0;
    virtual void Present(HWND hWnd, const RECT *prcAreas, int nCount) = 0;

    /// Reports what has happened since the last call, through platform/input.h.
    virtual void Pump() = 0;

    /// @param hCursor  null hides the pointer
    virtual void SetPointerShape(HCURSOR hCursor) = 0;
    virtual void GetPointer(POINT *pPoint) = 0;
    virtual void SetPointer(int nX, int nY) = 0;
    /// The window that was pressed hears of the pointer beyond its edges too.
    virtual void CapturePointer(bool bOn) = 0;

    virtual bool HasClipboardText() = 0;
    /// @return UTF-8, to be freed; null when there is none
    virtual char *GetClipboardText() = 0;
    virtual bool SetClipboardText(const char *pszUtf8) = 0;

    /// @return the id of the button that was pressed, 0 when nothing could be shown
    virtual int ShowMessageBox(HWND hOwner, LPCSTR pszText, LPCSTR pszCaption, UINT ulType) = 0;

protected:
    ~CBackend() = default;
};

CBackend *Backend();
CBackend *SdlBackend();

#ifdef TARVIX_TESTING
/// Tests put their own in place of SDL; null goes back to SDL.
void SetBackend(CBackend *pBackend);
#endif
