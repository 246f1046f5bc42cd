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
    int lWidth;
    int lHeight;
    EShowState eState;
    int lCalls;
    int lPresented; ///< all of them, also those that found no room below
    long long llPixels;
    RECT arcPresented[MAX_PRESENTED];
};

/// Something the user did that the program has not been told of yet.
struct TAction
{
    enum EKind
    {
        POINTER,
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
    void GetDesktop(int *plWidth, int *plHeight, int *plDepth) override;
    bool OpenWindow(HWND hWnd) override;
    void CloseWindow(HWND hWnd) override;
    void PlaceWindow(HWND) override {}
    void SetTitle(HWND) override {}
    void ShowWindow(HWND hWnd, EShowState eState) override;
    bool GetPlace(HWND, RECT *) override { return false; }
    void RaiseWindow(HWND) override {}
    bool LockPixels(HWND hWnd, TPixelView *pView) override;
    void Present(HWND hWnd, const RECT *prcAreas, int lCount) override;
    void Pump() override;
    void SetPointerShape(HCURSOR hCursor) override { m_hCursor = hCursor; }
    void GetPointer(POINT *pPoint) override { *pPoint = m_ptPointer; }
    void SetPointer(int lX, int lY) override;
    bool HasClipboardText() override { return s_Clipboard.Length() != 0; }
    char *GetClipboardText() override { return m_bFailClipboard ? nullptr : strdup(s_Clipboard.Text()); }
    bool SetClipboardText(const char *pszUtf8) override { return !m_bFailClipboard && s_Clipboard.Set(pszUtf8); }
    int ShowMessageBox(HWND hOwner, LPCSTR pszText, LPCSTR pszCaption, UINT ulType) override;

    POINT Clamp(int lX, int lY) const;
    void MovePointer(int lX, int lY);
    void Add(const TAction &action);
    void Forget(HWND hWnd);
    void Deliver(const TAction &action);

    TFaceDesktop m_Desktop = {};
    bool m_bFail = false;
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
    pNative->lWidth = pNative->lHeight = 0;
}

void CFace::GetDesktop(int *plWidth, int *plHeight, int *plDepth)
{
    *plWidth = m_Desktop.lWidth;
    *plHeight = m_Desktop.lHeight;
    *plDepth = m_Desktop.lDepth;
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
    const int lWidth = WidthOf(hWnd->rcClient), lHeight = HeightOf(hWnd->rcClient);
    pView->bLost = pNative->lWidth != lWidth || pNative->lHeight != lHeight;
    if (pView->bLost)
    {
        FreePixels(pNative);
        const size_t ulSize = (size_t)lWidth * lHeight;
        pNative->pDrawn = (uint32_t *)calloc(ulSize ? ulSize : 1, 4);
        pNative->pShown = (uint32_t *)calloc(ulSize ? ulSize : 1, 4);
        if (!pNative->pDrawn || !pNative->pShown)
        {
            FreePixels(pNative);
            return false;
        }
        pNative->lWidth = lWidth;
        pNative->lHeight = lHeight;
    }
    pView->pPixels = pNative->pDrawn;
    pView->lPitch = pView->lWidth = lWidth;
    pView->lHeight = lHeight;
    return true;
}

void CFace::Present(HWND hWnd, const RECT *prcAreas, int lCount)
{
    TFaceWindow *pNative = Native(hWnd);
    ++pNative->lCalls;
    for (int i = 0; i < lCount; ++i)
    {
        RECT rc = prcAreas[i];
        if (!IntersectWith(&rc, { 0, 0, pNative->lWidth, pNative->lHeight }))
            continue;
        for (int y = rc.top; y < rc.bottom; ++y)
            memcpy(pNative->pShown + (size_t)y * pNative->lWidth + rc.left,
                   pNative->pDrawn + (size_t)y * pNative->lWidth + rc.left, (size_t)WidthOf(rc) * 4);
        if (pNative->lPresented < MAX_PRESENTED)
            pNative->arcPresented[pNative->lPresented] = rc;
        ++pNative->lPresented;
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
    for (HWND hWnd = FirstWindow(); hWnd; hWnd = hWnd->pNext)
    {
        const RECT &rc = hWnd->rcClient;
        if ((hWnd->ulStyle & WS_VISIBLE) && !(hWnd->ulStyle & WS_MINIMIZE) && pt.x >= rc.left && pt.x < rc.right &&
            pt.y >= rc.top && pt.y < rc.bottom)
            return hWnd;
    }
    return nullptr;
}

POINT CFace::Clamp(int lX, int lY) const
{
    return { std::clamp(lX, 0, m_Desktop.lWidth - 1), std::clamp(lY, 0, m_Desktop.lHeight - 1) };
}

void CFace::SetPointer(int lX, int lY)
{
    // One that stays where it is sends nothing. Held at a place beyond the
    // desktop it would never come to rest.
    const POINT pt = Clamp(lX, lY);
    if (pt.x != m_ptPointer.x || pt.y != m_ptPointer.y)
        MovePointer(lX, lY);
}

void CFace::MovePointer(int lX, int lY)
{
    m_ptPointer = Clamp(lX, lY);
    TAction action = {};
    action.eKind = TAction::POINTER;
    action.hWnd = WindowAt(m_ptPointer);
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
    const int lAnswer = m_alAnswers[0];
    --m_lAnswers;
    memmove(m_alAnswers, m_alAnswers + 1, m_lAnswers * sizeof(int));
    return lAnswer;
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
int ScanCodeOf(int lVirtualKey, bool *pbExtended)
{
    static const char s_szRows[] = "\x1B"
                                   "1234567890\xBD\xBB\x08\x09QWERTYUIOP\xDB\xDD\x0D\xA2"
                                   "ASDFGHJKL\xBA\xDE\xC0\xA0\xDCZXCVBNM\xBC\xBE\xBF\xA1\x6A\xA4 \x14"
                                   "pqrstuvwxy\x90\x91ghimdefkabc`n";
    static const struct
    {
        int lVirtualKey;
        int lScanCode;
    } s_Extended[] = { { VK_RCONTROL, 0x1D }, { VK_RMENU, 0x38 }, { VK_HOME, 0x47 },   { VK_UP, 0x48 },
                       { VK_PRIOR, 0x49 },    { VK_LEFT, 0x4B },  { VK_RIGHT, 0x4D },  { VK_END, 0x4F },
                       { VK_DOWN, 0x50 },     { VK_NEXT, 0x51 },  { VK_INSERT, 0x52 }, { VK_DELETE, 0x53 } };
    *pbExtended = false;
    for (const auto &key : s_Extended)
    {
        if (key.lVirtualKey == lVirtualKey)
        {
            *pbExtended = true;
            return key.lScanCode;
        }
    }
    // F keys and the pad share their codes with lower-case letters of the table.
    const void *p = memchr(s_szRows, lVirtualKey, sizeof(s_szRows) - 1);
    return p ? (int)((const char *)p - s_szRows) + 1 : 0;
}

void AddKey(int lVirtualKey, bool bDown, bool bRepeat, unsigned char ucChar)
{
    TAction action = {};
    action.eKind = TAction::KEY;
    bool bExtended;
    const int lScanCode = ScanCodeOf(lVirtualKey, &bExtended);
    action.key = { lVirtualKey, lScanCode, bExtended, bDown, bRepeat, ucChar };
    s_Face.Add(action);
}
} // namespace

bool FaceStart(const TFaceDesktop *pDesktop)
{
    if (FirstWindow())
        return false;
    s_Face.m_Desktop = *pDesktop;
    s_Face.m_ptPointer = { pDesktop->lWidth / 2, pDesktop->lHeight / 2 };
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

void FaceMovePointer(int lX, int lY)
{
    s_Face.MovePointer(lX, lY);
}

void FaceMovePointerIn(HWND hWnd, int lX, int lY)
{
    POINT pt = { lX, lY };
    if (ClientToScreen(hWnd, &pt))
        s_Face.MovePointer(pt.x, pt.y);
}

void FaceButton(int lButton, bool bDown)
{
    TAction action = {};
    action.eKind = TAction::BUTTON;
    action.hWnd = WindowAt(s_Face.m_ptPointer);
    if (!action.hWnd)
        return;
    action.pt = s_Face.m_ptPointer;
    ScreenToClient(action.hWnd, &action.pt);
    action.eButton = lButton == VK_LBUTTON ? BUTTON_LEFT : lButton == VK_RBUTTON ? BUTTON_RIGHT : BUTTON_MIDDLE;
    action.bOn = bDown;
    s_Face.Add(action);
    if (bDown)
        ToTop(action.hWnd);
}

void FaceClick(HWND hWnd, int lX, int lY)
{
    FaceMovePointerIn(hWnd, lX, lY);
    FaceButton(VK_LBUTTON, true);
    FaceButton(VK_LBUTTON, false);
}

void FaceKey(int lVirtualKey, bool bDown, unsigned char ucChar)
{
    AddKey(lVirtualKey, bDown, false, ucChar);
}

void FaceRepeatKey(int lVirtualKey, unsigned char ucChar)
{
    AddKey(lVirtualKey, true, true, ucChar);
}

void FaceType(const char *pszText)
{
    for (; *pszText; ++pszText)
    {
        const int lKey = toupper((unsigned char)*pszText);
        const bool bShift = isupper((unsigned char)*pszText);
        if (bShift)
            AddKey(VK_LSHIFT, true, false, 0);
        AddKey(lKey, true, false, (unsigned char)*pszText);
        AddKey(lKey, false, false, 0);
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

void FaceResize(HWND hWnd, int lWidth, int lHeight)
{
    const RECT &rc = hWnd->rcClient;
    AddPlace(hWnd, { rc.left, rc.top, rc.left + lWidth, rc.top + lHeight });
}

void FaceMove(HWND hWnd, int lX, int lY)
{
    const RECT &rc = hWnd->rcClient;
    AddPlace(hWnd, { lX, lY, lX + WidthOf(rc), lY + HeightOf(rc) });
}

void FaceActivate(HWND hWnd, bool bActive)
{
    AddWindowAction(TAction::FOCUS, hWnd, bActive);
}

void FaceExpose(HWND hWnd)
{
    AddWindowAction(TAction::EXPOSE, hWnd, true);
}

const uint32_t *FaceShownPixels(HWND hWnd, int *plWidth, int *plHeight)
{
    const TFaceWindow *pNative = Native(hWnd);
    if (plWidth)
        *plWidth = pNative->lWidth;
    if (plHeight)
        *plHeight = pNative->lHeight;
    return pNative->pShown;
}

int FaceTakePresented(HWND hWnd, RECT *prcAreas, int lMax, long long *pllPixels)
{
    TFaceWindow *pNative = Native(hWnd);
    const int lCount = pNative->lPresented;
    for (int i = 0; i < lCount && i < lMax && i < MAX_PRESENTED; ++i)
        prcAreas[i] = pNative->arcPresented[i];
    if (pllPixels)
        *pllPixels = pNative->llPixels;
    pNative->lPresented = 0;
    pNative->llPixels = 0;
    return lCount;
}

int FaceTakePresentCalls(HWND hWnd)
{
    const int lCalls = Native(hWnd)->lCalls;
    Native(hWnd)->lCalls = 0;
    return lCalls;
}

HCURSOR FaceCursor()
{
    return s_Face.m_hCursor;
}

const char *FaceTitle(HWND hWnd)
{
    return hWnd->pszTitle;
}

void FaceAnswerMessageBox(int lButton)
{
    if (s_Face.m_lAnswers < (int)(sizeof(s_Face.m_alAnswers) / sizeof(s_Face.m_alAnswers[0])))
        s_Face.m_alAnswers[s_Face.m_lAnswers++] = lButton;
}

const char *FaceMessageBoxText()
{
    return s_Face.m_szBox;
}
