#include "platform/testing/testface.h"

#include "platform/clock.h"
#include "platform/gdi.h"
#include "platform/input.h"
#include "platform/keystate.h"
#include "platform/text.h"

#include <algorithm>
#include <ctype.h>
#include <stdlib.h>
#include <string.h>

namespace
{
enum
{
    MAX_PRESENTED = 256,
};

struct TFaceWindow
{
    uint32_t *pDrawn;
    uint32_t *pShown;
    int nWidth;
    int nHeight;
    EShowState eState;
    int nCalls;
    int nPresented; ///< all of them, also those that found no room below
    long long llPixels;
    RECT arcPresented[MAX_PRESENTED];
};

/// Something the user did that the program has not been told of yet.
struct TAction
{
    enum EKind
    {
        POINTER,
        LEAVE,
        BUTTON,
        KEY,
        CLOSE,
        STATE,
        PLACE,
        FOCUS,
        EXPOSE,
    } eKind;
    HWND hWnd;
    POINT pt;
    EMouseButton eButton;
    bool bOn;
    TKeyEvent key;
    EShowState eState;
    RECT rc;
};

CText s_Clipboard;

class CFace final : public CBackend
{
public:
    bool Start() override { return !m_bFail; }
    void GetDesktop(int *pnWidth, int *pnHeight, int *pnDepth) override;
    bool OpenWindow(HWND hWnd) override;
    void CloseWindow(HWND hWnd) override;
    void PlaceWindow(HWND) override {}
    void SetTitle(HWND) override {}
    void ShowWindow(HWND hWnd, EShowState eState) override;
    bool GetPlace(HWND, RECT *) override { return false; }
    void RaiseWindow(HWND) override {}
    bool LockPixels(HWND hWnd, TPixelView *pView) override;
    void Present(HWND hWnd, const RECT *prcAreas, int nCount) override;
    void Pump() override;
    void SetPointerShape(HCURSOR hCursor) override { m_hCursor = hCursor; }
    void GetPointer(POINT *pPoint) override { *pPoint = m_ptPointer; }
    void SetPointer(int nX, int nY) override;
    void CapturePointer(bool bOn) override {}
    bool HasClipboardText() override { return s_Clipboard.Length() != 0; }
    char *GetClipboardText() override { return m_bFailClipboard ? nullptr : strdup(s_Clipboard.Text()); }
    bool SetClipboardText(const char *pszUtf8) override { return !m_bFailClipboard && s_Clipboard.Set(pszUtf8); }
    int ShowMessageBox(HWND hOwner, LPCSTR pszText, LPCSTR pszCaption, UINT ulType) override;

    POINT Clamp(int nX, int nY) const;
    void MovePointer(int nX, int nY);
    void Add(const TAction &action);
    void Forget(HWND hWnd);
    void Deliver(const TAction &action);

    TFaceDesktop m_Desktop = {};
    bool m_bFail = false;
    HWND m_hUnder = nullptr; ///< what the pointer moved over last
    POINT m_ptPointer = {};
    HCURSOR m_hCursor = nullptr;
    TAction *m_pActions = nullptr;
    size_t m_ulActions = 0;
    size_t m_ulRoom = 0;
    int m_alAnswers[32] = {};
    int m_lAnswers = 0;
    char m_szBox[1024] = "";
    bool m_bFailClipboard = false;
};

CFace s_Face;

TFaceWindow *Native(HWND hWnd)
{
    return (TFaceWindow *)hWnd->pNative;
}

void FreePixels(TFaceWindow *pNative)
{
    free(pNative->pDrawn);
    free(pNative->pShown);
    pNative->pDrawn = pNative->pShown = nullptr;
    pNative->nWidth = pNative->nHeight = 0;
}

void CFace::GetDesktop(int *pnWidth, int *pnHeight, int *pnDepth)
{
    *pnWidth = m_Desktop.nWidth;
    *pnHeight = m_Desktop.nHeight;
    *pnDepth = m_Desktop.nDepth;
}

bool CFace::OpenWindow(HWND hWnd)
{
    hWnd->pNative = calloc(1, sizeof(TFaceWindow));
    return hWnd->pNative != nullptr;
}

void CFace::CloseWindow(HWND hWnd)
{
    Forget(hWnd);
    FreePixels(Native(hWnd));
    free(hWnd->pNative);
    hWnd->pNative = nullptr;
}

void CFace::ShowWindow(HWND hWnd, EShowState eState)
{
    Native(hWnd)->eState = eState;
    // What is off the desktop is forgotten by it.
    if (eState == SHOW_HIDDEN || eState == SHOW_MINIMIZED)
        FreePixels(Native(hWnd));
}

bool CFace::LockPixels(HWND hWnd, TPixelView *pView)
{
    TFaceWindow *pNative = Native(hWnd);
    const int nWidth = WidthOf(hWnd->rcClient), nHeight = HeightOf(hWnd->rcClient);
    pView->bLost = pNative->nWidth != nWidth || pNative->nHeight != nHeight;
    if (pView->bLost)
    {
        FreePixels(pNative);
        const size_t ulSize = (size_t)nWidth * nHeight;
        pNative->pDrawn = (uint32_t *)calloc(ulSize ? ulSize : 1, 4);
        pNative->pShown = (uint32_t *)calloc(ulSize ? ulSize : 1, 4);
        if (!pNative->pDrawn || !pNative->pShown)
        {
            FreePixels(pNative);
            return false;
        }
        pNative->nWidth = nWidth;
        pNative->nHeight = nHeight;
    }
    pView->pPixels = pNative->pDrawn;
    pView->nPitch = pView->nWidth = nWidth;
    pView->nHeight = nHeight;
    return true;
}

void CFace::Present(HWND hWnd, const RECT *prcAreas, int nCount)
{
    TFaceWindow *pNative = Native(hWnd);
    ++pNative->nCalls;
    for (int i = 0; i < nCount; ++i)
    {
        RECT rc = prcAreas[i];
        if (!IntersectWith(&rc, { 0, 0, pNative->nWidth, pNative->nHeight }))
            continue;
        for (int y = rc.top; y < rc.bottom; ++y)
            memcpy(pNative->pShown + (size_t)y * pNative->nWidth + rc.left,
                   pNative->pDrawn + (size_t)y * pNative->nWidth + rc.left, (size_t)WidthOf(rc) * 4);
        if (pNative->nPresented < MAX_PRESENTED)
            pNative->arcPresented[pNative->nPresented] = rc;
        ++pNative->nPresented;
        pNative->llPixels += (long long)WidthOf(rc) * HeightOf(rc);
    }
}

void CFace::Add(const TAction &action)
{
    if (m_ulActions == m_ulRoom)
    {
        const size_t ulRoom = m_ulRoom ? 2 * m_ulRoom : 64;
        TAction *pActions = (TAction *)realloc(m_pActions, ulRoom * sizeof(TAction));
        if (!pActions)
            abort();
        m_pActions = pActions;
        m_ulRoom = ulRoom;
    }
    m_pActions[m_ulActions++] = action;
}

void CFace::Forget(HWND hWnd)
{
    if (m_hUnder == hWnd)
        m_hUnder = nullptr;
    size_t ulKept = 0;
    for (size_t i = 0; i < m_ulActions; ++i)
        if (m_pActions[i].hWnd != hWnd)
            m_pActions[ulKept++] = m_pActions[i];
    m_ulActions = ulKept;
}

void CFace::Deliver(const TAction &action)
{
    switch (action.eKind)
    {
    case TAction::POINTER:
        InputPointer(action.hWnd, action.pt.x, action.pt.y);
        break;
    case TAction::LEAVE:
        InputLeave(action.hWnd);
        break;
    case TAction::BUTTON:
        if (action.bOn)
            Activate(action.hWnd, WA_CLICKACTIVE);
        if (IsWindow(action.hWnd))
            InputButton(action.hWnd, action.eButton, action.bOn, action.pt.x, action.pt.y);
        break;
    case TAction::KEY:
        if (GetFocus())
            InputKey(GetFocus(), &action.key);
        break;
    case TAction::CLOSE:
        InputClose(action.hWnd);
        break;
    case TAction::STATE:
        InputState(action.hWnd, action.eState);
        break;
    case TAction::PLACE:
        InputPlace(action.hWnd, &action.rc);
        break;
    case TAction::FOCUS:
        InputFocus(action.hWnd, action.bOn);
        break;
    case TAction::EXPOSE:
        InputExpose(action.hWnd);
        break;
    }
}

void CFace::Pump()
{
    while (m_ulActions)
    {
        const TAction action = m_pActions[0];
        --m_ulActions;
        memmove(m_pActions, m_pActions + 1, m_ulActions * sizeof(TAction));
        Deliver(action);
    }
}

HWND WindowAt(POINT pt)
{
    if (GetCapture())
        return GetCapture();
    for (HWND hWnd = FirstWindow(); hWnd; hWnd = hWnd->pNext)
    {
        const RECT &rc = hWnd->rcClient;
        if ((hWnd->ulStyle & WS_VISIBLE) && !(hWnd->ulStyle & WS_MINIMIZE) && pt.x >= rc.left && pt.x < rc.right &&
            pt.y >= rc.top && pt.y < rc.bottom)
            return hWnd;
    }
    return nullptr;
}

POINT CFace::Clamp(int nX, int nY) const
{
    return { std::clamp(nX, 0, m_Desktop.nWidth - 1), std::clamp(nY, 0, m_Desktop.nHeight - 1) };
}

void CFace::SetPointer(int nX, int nY)
{
    // One that stays where it is sends nothing. Held at a place beyond the
    // desktop it would never come to rest.
    const POINT pt = Clamp(nX, nY);
    if (pt.x != m_ptPointer.x || pt.y != m_ptPointer.y)
        MovePointer(nX, nY);
}

void CFace::MovePointer(int nX, int nY)
{
    m_ptPointer = Clamp(nX, nY);
    TAction action = {};
    action.eKind = TAction::POINTER;
    action.hWnd = WindowAt(m_ptPointer);
    if (m_hUnder && m_hUnder != action.hWnd)
    {
        TAction leave = {};
        leave.eKind = TAction::LEAVE;
        leave.hWnd = m_hUnder;
        Add(leave);
    }
    m_hUnder = action.hWnd;
    if (!action.hWnd)
        return;
    action.pt = m_ptPointer;
    ScreenToClient(action.hWnd, &action.pt);
    Add(action);
}

int CFace::ShowMessageBox(HWND, LPCSTR pszText, LPCSTR, UINT)
{
    snprintf(m_szBox, sizeof(m_szBox), "%s", pszText);
    if (!m_lAnswers)
        return 0;
    const int nAnswer = m_alAnswers[0];
    --m_lAnswers;
    memmove(m_alAnswers, m_alAnswers + 1, m_lAnswers * sizeof(int));
    return nAnswer;
}

void AddWindowAction(TAction::EKind eKind, HWND hWnd, bool bOn)
{
    TAction action = {};
    action.eKind = eKind;
    action.hWnd = hWnd;
    action.bOn = bOn;
    s_Face.Add(action);
}

void AddState(HWND hWnd, EShowState eState)
{
    TAction action = {};
    action.eKind = TAction::STATE;
    action.hWnd = hWnd;
    action.eState = eState;
    s_Face.Add(action);
}

void AddPlace(HWND hWnd, const RECT &rc)
{
    TAction action = {};
    action.eKind = TAction::PLACE;
    action.hWnd = hWnd;
    action.rc = rc;
    s_Face.Add(action);
}

/// Scan codes of a PC keyboard for the keys that tests press most.
int ScanCodeOf(int nVirtualKey, bool *pbExtended)
{
    static const char s_szRows[] = "\x1B"
                                   "1234567890\xBD\xBB\x08\x09QWERTYUIOP\xDB\xDD\x0D\xA2"
                                   "ASDFGHJKL\xBA\xDE\xC0\xA0\xDCZXCVBNM\xBC\xBE\xBF\xA1\x6A\xA4 \x14"
                                   "pqrstuvwxy\x90\x91ghimdefkabc`n";
    static const struct
    {
        int nVirtualKey;
        int nScanCode;
    } s_Extended[] = { { VK_RCONTROL, 0x1D }, { VK_RMENU, 0x38 }, { VK_HOME, 0x47 },   { VK_UP, 0x48 },
                       { VK_PRIOR, 0x49 },    { VK_LEFT, 0x4B },  { VK_RIGHT, 0x4D },  { VK_END, 0x4F },
                       { VK_DOWN, 0x50 },     { VK_NEXT, 0x51 },  { VK_INSERT, 0x52 }, { VK_DELETE, 0x53 } };
    *pbExtended = false;
    for (const auto &key : s_Extended)
    {
        if (key.nVirtualKey == nVirtualKey)
        {
            *pbExtended = true;
            return key.nScanCode;
        }
    }
    // F keys and the pad share their codes with lower-case letters of the table.
    const void *p = memchr(s_szRows, nVirtualKey, sizeof(s_szRows) - 1);
    return p ? (int)((const char *)p - s_szRows) + 1 : 0;
}

void AddKey(int nVirtualKey, bool bDown, bool bRepeat, unsigned char ucChar)
{
    TAction action = {};
    action.eKind = TAction::KEY;
    bool bExtended;
    const int nScanCode = ScanCodeOf(nVirtualKey, &bExtended);
    action.key = { nVirtualKey, nScanCode, bExtended, bDown, bRepeat, ucChar };
    s_Face.Add(action);
}
} // namespace

bool FaceStart(const TFaceDesktop *pDesktop)
{
    if (FirstWindow())
        return false;
    s_Face.m_Desktop = *pDesktop;
    s_Face.m_ptPointer = { pDesktop->nWidth / 2, pDesktop->nHeight / 2 };
    s_Face.m_hCursor = LoadCursorA(nullptr, IDC_ARROW);
    SetBackend(&s_Face);
    UseTestClock(true, 1000);
    return true;
}

void FaceStop()
{
    while (FirstWindow())
        DestroyWindow(FirstWindow());
    ResetQueue();
    ResetInput();
    ResetKeyState();
    ResetCursor();
    ResetClipboard();
    ResetSystemPalette();
    free(s_Face.m_pActions);
    s_Clipboard.Clear();
    s_Face = CFace();
    SetBackend(nullptr);
    UseTestClock(false, 0);
}

void FaceSetDesktop(const TFaceDesktop *pDesktop)
{
    s_Face.m_Desktop = *pDesktop;
}

void FaceFailWindows(bool bFail)
{
    s_Face.m_bFail = bFail;
}

void FaceSetClock(DWORD ulTime)
{
    UseTestClock(true, ulTime);
}

void FaceAdvanceClock(DWORD ulMilliseconds)
{
    UseTestClock(true, timeGetTime() + ulMilliseconds);
}

void FaceMovePointer(int nX, int nY)
{
    s_Face.MovePointer(nX, nY);
}

void FaceMovePointerIn(HWND hWnd, int nX, int nY)
{
    POINT pt = { nX, nY };
    if (ClientToScreen(hWnd, &pt))
        s_Face.MovePointer(pt.x, pt.y);
}

void FaceButton(int nButton, bool bDown)
{
    TAction action = {};
    action.eKind = TAction::BUTTON;
    action.hWnd = WindowAt(s_Face.m_ptPointer);
    if (!action.hWnd)
        return;
    action.pt = s_Face.m_ptPointer;
    ScreenToClient(action.hWnd, &action.pt);
    action.eButton = nButton == VK_LBUTTON ? BUTTON_LEFT : nButton == VK_RBUTTON ? BUTTON_RIGHT : BUTTON_MIDDLE;
    action.bOn = bDown;
    s_Face.Add(action);
    if (bDown)
        ToTop(action.hWnd);
}

void FaceClick(HWND hWnd, int nX, int nY)
{
    FaceMovePointerIn(hWnd, nX, nY);
    FaceButton(VK_LBUTTON, true);
    FaceButton(VK_LBUTTON, false);
}

void FaceKey(int nVirtualKey, bool bDown, unsigned char ucChar)
{
    AddKey(nVirtualKey, bDown, false, ucChar);
}

void FaceRepeatKey(int nVirtualKey, unsigned char ucChar)
{
    AddKey(nVirtualKey, true, true, ucChar);
}

void FaceType(const char *pszText)
{
    for (; *pszText; ++pszText)
    {
        const int nKey = toupper((unsigned char)*pszText);
        const bool bShift = isupper((unsigned char)*pszText);
        if (bShift)
            AddKey(VK_LSHIFT, true, false, 0);
        AddKey(nKey, true, false, (unsigned char)*pszText);
        AddKey(nKey, false, false, 0);
        if (bShift)
            AddKey(VK_LSHIFT, false, false, 0);
    }
}

void FaceTypeInputMethod(unsigned char ucChar)
{
    AddKey(VK_PACKET, true, false, ucChar);
    AddKey(VK_PACKET, false, false, 0);
}

void FaceSetClipboard(const char *pszUtf8)
{
    if (!s_Clipboard.Set(pszUtf8))
        abort();
}

const char *FaceClipboard()
{
    return s_Clipboard.Text();
}

void FaceFailClipboard(bool bFail)
{
    s_Face.m_bFailClipboard = bFail;
}

void FaceClose(HWND hWnd)
{
    AddWindowAction(TAction::CLOSE, hWnd, true);
}

void FaceMinimize(HWND hWnd)
{
    AddState(hWnd, SHOW_MINIMIZED);
}

void FaceMaximize(HWND hWnd)
{
    AddState(hWnd, SHOW_MAXIMIZED);
}

void FaceRestore(HWND hWnd)
{
    AddState(hWnd, SHOW_NORMAL);
}

void FaceResize(HWND hWnd, int nWidth, int nHeight)
{
    const RECT &rc = hWnd->rcClient;
    AddPlace(hWnd, { rc.left, rc.top, rc.left + nWidth, rc.top + nHeight });
}

void FaceMove(HWND hWnd, int nX, int nY)
{
    const RECT &rc = hWnd->rcClient;
    AddPlace(hWnd, { nX, nY, nX + WidthOf(rc), nY + HeightOf(rc) });
}

void FaceActivate(HWND hWnd, bool bActive)
{
    AddWindowAction(TAction::FOCUS, hWnd, bActive);
}

void FaceExpose(HWND hWnd)
{
    AddWindowAction(TAction::EXPOSE, hWnd, true);
}

const uint32_t *FaceShownPixels(HWND hWnd, int *pnWidth, int *pnHeight)
{
    const TFaceWindow *pNative = Native(hWnd);
    if (pnWidth)
        *pnWidth = pNative->nWidth;
    if (pnHeight)
        *pnHeight = pNative->nHeight;
    return pNative->pShown;
}

int FaceTakePresented(HWND hWnd, RECT *prcAreas, int nMax, long long *pllPixels)
{
    TFaceWindow *pNative = Native(hWnd);
    const int nCount = pNative->nPresented;
    for (int i = 0; i < nCount && i < nMax && i < MAX_PRESENTED; ++i)
        prcAreas[i] = pNative->arcPresented[i];
    if (pllPixels)
        *pllPixels = pNative->llPixels;
    pNative->nPresented = 0;
    pNative->llPixels = 0;
    return nCount;
}

int FaceTakePresentCalls(HWND hWnd)
{
    const int nCalls = Native(hWnd)->nCalls;
    Native(hWnd)->nCalls = 0;
    return nCalls;
}

HCURSOR FaceCursor()
{
    return s_Face.m_hCursor;
}

const char *FaceTitle(HWND hWnd)
{
    return hWnd->pszTitle;
}

void FaceAnswerMessageBox(int nButton)
{
    if (s_Face.m_lAnswers < (int)(sizeof(s_Face.m_alAnswers) / sizeof(s_Face.m_alAnswers[0])))
        s_Face.m_alAnswers[s_Face.m_lAnswers++] = nButton;
}

const char *FaceMessageBoxText()
{
    return s_Face.m_szBox;
}
