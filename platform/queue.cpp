// The message queue: what was posted comes first, then the end, then what the
// user did, then painting.
#include "platform/hook.h"
#include "platform/input.h"
#include "platform/keystate.h"
#include "platform/window.h"

#include <stdlib.h>
#include <string.h>

namespace
{
struct TQueued
{
    MSG msg;
    int nVirtualKey; ///< of one side where there are two; 0 for what is no key
    unsigned char ucChar;
};

const size_t s_ulMaxQueued = 10000; // Windows' own limit

class CMsgQueue
{
public:
    ~CMsgQueue() { free(m_pItems); }

    bool Add(const TQueued &item)
    {
        if (m_ulCount == s_ulMaxQueued)
            return false;
        if (m_ulCount == m_ulRoom)
        {
            const size_t ulRoom = m_ulRoom ? 2 * m_ulRoom : 64;
            TQueued *pItems = (TQueued *)realloc(m_pItems, ulRoom * sizeof(TQueued));
            if (!pItems)
                return false;
            m_pItems = pItems;
            m_ulRoom = ulRoom;
        }
        m_pItems[m_ulCount++] = item;
        return true;
    }

    void Remove(size_t i)
    {
        --m_ulCount;
        memmove(m_pItems + i, m_pItems + i + 1, (m_ulCount - i) * sizeof(TQueued));
    }

    void RemoveWindow(HWND hWnd)
    {
        for (size_t i = m_ulCount; i-- > 0;)
            if (m_pItems[i].msg.hwnd == hWnd)
                Remove(i);
    }

    size_t Count() const { return m_ulCount; }
    TQueued &operator[](size_t i) { return m_pItems[i]; }
    void Clear() { m_ulCount = 0; }

private:
    TQueued *m_pItems = nullptr;
    size_t m_ulCount = 0;
    size_t m_ulRoom = 0;
};

CMsgQueue s_Posted;
CMsgQueue s_Input;
bool s_bQuit = false;
int s_nExitCode = 0;
TQueued s_LastKey = {}; // the key message handed out last, for TranslateMessage

bool IsMouse(UINT ulMsg)
{
    return ulMsg >= WM_MOUSEFIRST && ulMsg <= WM_MOUSELAST;
}

bool IsKey(UINT ulMsg)
{
    return ulMsg == WM_KEYDOWN || ulMsg == WM_KEYUP || ulMsg == WM_SYSKEYDOWN || ulMsg == WM_SYSKEYUP;
}

bool IsKeyDown(UINT ulMsg)
{
    return ulMsg == WM_KEYDOWN || ulMsg == WM_SYSKEYDOWN;
}

void TakeButtons(const MSG &msg)
{
    switch (msg.message)
    {
    case WM_LBUTTONDOWN:
    case WM_LBUTTONUP:
        TakeKeyState(VK_LBUTTON, msg.message == WM_LBUTTONDOWN, 0);
        break;
    case WM_RBUTTONDOWN:
    case WM_RBUTTONUP:
        TakeKeyState(VK_RBUTTON, msg.message == WM_RBUTTONDOWN, 0);
        break;
    case WM_MBUTTONDOWN:
    case WM_MBUTTONUP:
        TakeKeyState(VK_MBUTTON, msg.message == WM_MBUTTONDOWN, 0);
        break;
    }
}

MSG MakeMsg(HWND hWnd, UINT ulMsg, WPARAM wParam, LPARAM lParam)
{
    MSG msg = { hWnd, ulMsg, wParam, lParam, timeGetTime(), {} };
    if (FirstWindow())
        GetCursorPos(&msg.pt);
    return msg;
}

struct TFilter
{
    HWND hWnd;
    UINT ulFirst;
    UINT ulLast;

    bool Takes(const MSG &msg) const
    {
        if (hWnd == (HWND)(intptr_t)-1 ? msg.hwnd != nullptr : hWnd && msg.hwnd != hWnd)
            return false;
        return (ulFirst == 0 && ulLast == 0) || (msg.message >= ulFirst && msg.message <= ulLast);
    }
};

bool TakeFrom(CMsgQueue &queue, const TFilter &filter, bool bRemove, TQueued *pItem)
{
    for (size_t i = 0; i < queue.Count(); ++i)
    {
        if (!filter.Takes(queue[i].msg))
            continue;
        *pItem = queue[i];
        if (bRemove)
            queue.Remove(i);
        return true;
    }
    return false;
}

bool FindPaint(const TFilter &filter, TQueued *pItem)
{
    for (HWND hWnd = FirstWindow(); hWnd; hWnd = hWnd->pNext)
    {
        if (!(hWnd->ulStyle & WS_VISIBLE) || (hWnd->ulStyle & WS_MINIMIZE) || IsEmpty(hWnd->rcInvalid))
            continue;
        MSG msg = MakeMsg(hWnd, WM_PAINT, 0, 0);
        if (!filter.Takes(msg))
            continue;
        *pItem = { msg, 0, 0 };
        return true;
    }
    return false;
}
/// Takes the next input that no hook wants for itself.
bool TakeInput(const TFilter &filter, bool bRemove, TQueued *pItem)
{
    while (TakeFrom(s_Input, filter, bRemove, pItem))
    {
        const MSG msg = pItem->msg;
        if (!IsKey(msg.message))
        {
            if (bRemove)
                TakeButtons(msg);
            return true;
        }
        if (bRemove)
        {
            TakeKeyState(pItem->nVirtualKey, IsKeyDown(msg.message), pItem->ucChar);
            s_LastKey = *pItem;
        }
        if (CallKeyboardHooks(bRemove ? HC_ACTION : HC_NOREMOVE, msg.wParam, msg.lParam))
            return true;
        // A hook has swallowed it, and may have ended or emptied anything meanwhile.
        if (!bRemove)
            TakeFrom(s_Input, filter, true, pItem);
    }
    return false;
}
} // namespace

bool PostInput(HWND hWnd, UINT ulMsg, WPARAM wParam, LPARAM lParam, const TKeyEvent *pKey)
{
    const TQueued item = { MakeMsg(hWnd, ulMsg, wParam, lParam), pKey ? pKey->nVirtualKey : 0,
                           pKey ? pKey->ucChar : (unsigned char)0 };
    // The pointer's way is of no interest, only where it has got to.
    if (ulMsg == WM_MOUSEMOVE && s_Input.Count())
    {
        TQueued &last = s_Input[s_Input.Count() - 1];
        if (last.msg.message == WM_MOUSEMOVE && last.msg.hwnd == hWnd)
        {
            last = item;
            return true;
        }
    }
    return s_Input.Add(item);
}

void ForgetMessages(HWND hWnd)
{
    s_Posted.RemoveWindow(hWnd);
    s_Input.RemoveWindow(hWnd);
}

void ResetQueue()
{
    s_Posted.Clear();
    s_Input.Clear();
    s_bQuit = false;
    s_LastKey = {};
}

BOOL PeekMessageA(MSG *pMsg, HWND hWnd, UINT ulFirst, UINT ulLast, UINT ulRemove)
{
    if (!pMsg)
    {
        SetLastError(ERROR_INVALID_PARAMETER);
        return FALSE;
    }
    if (hWnd && hWnd != (HWND)(intptr_t)-1 && !CheckWindow(hWnd))
        return FALSE;
    if (FirstWindow())
    {
        PresentAll();
        Backend()->Pump();
    }

    const TFilter filter = { hWnd, ulFirst, ulLast };
    const bool bRemove = ulRemove & PM_REMOVE;
    TQueued item = {};
    if (TakeFrom(s_Posted, filter, bRemove, &item))
    {
        *pMsg = item.msg;
        return TRUE;
    }
    if (s_bQuit)
    {
        if (bRemove)
            s_bQuit = false;
        *pMsg = MakeMsg(nullptr, WM_QUIT, (WPARAM)s_nExitCode, 0);
        return TRUE;
    }
    if (TakeInput(filter, bRemove, &item))
    {
        *pMsg = item.msg;
        if (bRemove && IsMouse(item.msg.message))
            SendMessageA(item.msg.hwnd, WM_SETCURSOR, (WPARAM)item.msg.hwnd, MAKELPARAM(HTCLIENT, item.msg.message));
        return TRUE;
    }
    if (FindPaint(filter, &item))
    {
        *pMsg = item.msg;
        return TRUE;
    }
    return FALSE;
}

BOOL TranslateMessage(const MSG *pMsg)
{
    if (!pMsg || !IsKey(pMsg->message))
        return FALSE;
    const MSG &last = s_LastKey.msg;
    if (IsKeyDown(pMsg->message) && s_LastKey.ucChar && last.hwnd == pMsg->hwnd && last.message == pMsg->message &&
        last.wParam == pMsg->wParam && last.lParam == pMsg->lParam)
    {
        PostMessageA(pMsg->hwnd, pMsg->message == WM_KEYDOWN ? WM_CHAR : WM_SYSCHAR, s_LastKey.ucChar, pMsg->lParam);
        s_LastKey.ucChar = 0;
    }
    return TRUE;
}

LRESULT DispatchMessageA(const MSG *pMsg)
{
    if (!pMsg || !pMsg->hwnd || !IsWindow(pMsg->hwnd))
        return 0;
    return pMsg->hwnd->pClass->wc.lpfnWndProc(pMsg->hwnd, pMsg->message, pMsg->wParam, pMsg->lParam);
}

BOOL PostMessageA(HWND hWnd, UINT ulMsg, WPARAM wParam, LPARAM lParam)
{
    if (hWnd == HWND_BROADCAST)
    {
        for (HWND hEach = FirstWindow(); hEach; hEach = hEach->pNext)
            if (!PostMessageA(hEach, ulMsg, wParam, lParam))
                return FALSE;
        return TRUE;
    }
    if (hWnd && !CheckWindow(hWnd))
        return FALSE;
    if (!s_Posted.Add({ MakeMsg(hWnd, ulMsg, wParam, lParam), 0, 0 }))
    {
        SetLastError(ERROR_NOT_ENOUGH_QUOTA);
        return FALSE;
    }
    return TRUE;
}

LRESULT SendMessageA(HWND hWnd, UINT ulMsg, WPARAM wParam, LPARAM lParam)
{
    if (hWnd == HWND_BROADCAST)
    {
        // By position, since a handler may end windows.
        for (int i = 0;; ++i)
        {
            HWND hEach = FirstWindow();
            for (int l = 0; hEach && l < i; ++l)
                hEach = hEach->pNext;
            if (!hEach)
                return 1;
            SendMessageA(hEach, ulMsg, wParam, lParam);
        }
    }
    if (!CheckWindow(hWnd))
        return 0;
    return hWnd->pClass->wc.lpfnWndProc(hWnd, ulMsg, wParam, lParam);
}

void PostQuitMessage(int nExitCode)
{
    s_bQuit = true;
    s_nExitCode = nExitCode;
}
