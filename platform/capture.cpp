#include "platform/input.h"
#include "platform/window.h"

namespace
{
HWND s_hCapture = nullptr; // gets all messages of the pointer
HWND s_hTracked = nullptr; // waits to hear that the pointer leaves it
} // namespace

HWND SetCapture(HWND hWnd)
{
    const HWND hOld = s_hCapture;
    if (hWnd && !CheckWindow(hWnd))
        return nullptr;
    s_hCapture = hWnd;
    if ((hOld != nullptr) != (hWnd != nullptr))
        Backend()->CapturePointer(hWnd != nullptr);
    return hOld;
}

BOOL ReleaseCapture()
{
    SetCapture(nullptr);
    return TRUE;
}

HWND GetCapture()
{
    return s_hCapture;
}

BOOL TrackMouseEvent(TRACKMOUSEEVENT *pTrack)
{
    // Leaving a window is all that there is.
    if (!pTrack || pTrack->cbSize != sizeof(TRACKMOUSEEVENT) || (pTrack->dwFlags & ~TME_CANCEL) != TME_LEAVE)
    {
        SetLastError(ERROR_INVALID_PARAMETER);
        return FALSE;
    }
    if (!CheckWindow(pTrack->hwndTrack))
        return FALSE;
    if (!(pTrack->dwFlags & TME_CANCEL))
        s_hTracked = pTrack->hwndTrack;
    else if (s_hTracked == pTrack->hwndTrack)
        s_hTracked = nullptr;
    return TRUE;
}

void InputLeave(HWND hWnd)
{
    if (s_hTracked != hWnd)
        return;
    s_hTracked = nullptr;
    PostInput(hWnd, WM_MOUSELEAVE, 0, 0, nullptr);
}

void ForgetPointer(HWND hWnd)
{
    if (!hWnd || s_hCapture == hWnd)
        SetCapture(nullptr);
    if (!hWnd || s_hTracked == hWnd)
        s_hTracked = nullptr;
}
