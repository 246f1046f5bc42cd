// Windows on the desktop, through SDL.
#include "platform/cursor.h"
#include "platform/errors.h"
#include "platform/input.h"
#include "platform/sdlkeys.h"
#include "platform/window.h"

#include <stdlib.h>
#include <string.h>

namespace
{
struct TSdlWindow
{
    SDL_Window *pWindow;
    SDL_Surface *pCanvas; ///< where the window's own surface has another format than ours
    bool bShown;
    Uint32 ulStyle; ///< as it was last brought to the desktop
    bool bNewFrame; ///< the desktop has yet to put its frame around the window, or take it off
    POINT ptOldFrame;
    POINT ptWanted; ///< where the client area was placed then
};

const char s_cCanvasMark = 0;
const DWORD s_ulFrameStyles = WS_CAPTION | WS_THICKFRAME;

const int s_nUnseenSide = 16384; // room for every picture, since no screen ends it

/// False for drivers that show nothing to anybody.
bool IsSeen(const char *pszDriver)
{
    return pszDriver && strcmp(pszDriver, "dummy") && strcmp(pszDriver, "offscreen") && strcmp(pszDriver, "evdev");
}

class CSdlBackend final : public CBackend
{
public:
    ~CSdlBackend();

    bool Start() override;
    void GetDesktop(int *pnWidth, int *pnHeight, int *pnDepth) override;
    bool OpenWindow(HWND hWnd) override;
    void CloseWindow(HWND hWnd) override;
    void PlaceWindow(HWND hWnd) override;
    void SetTitle(HWND hWnd) override;
    void ShowWindow(HWND hWnd, EShowState eState) override;
    bool GetPlace(HWND hWnd, RECT *prcClient) override;
    void RaiseWindow(HWND hWnd) override;
    bool LockPixels(HWND hWnd, TPixelView *pView) override;
    void Present(HWND hWnd, const RECT *prcAreas, int nCount) override;
    void Pump() override;
    void SetPointerShape(HCURSOR hCursor) override;
    void GetPointer(POINT *pPoint) override;
    void SetPointer(int nX, int nY) override;
    void CapturePointer(bool bOn) override { SDL_CaptureMouse(bOn ? SDL_TRUE : SDL_FALSE); }
    bool HasClipboardText() override { return SDL_HasClipboardText(); }
    char *GetClipboardText() override;
    bool SetClipboardText(const char *pszUtf8) override { return SDL_SetClipboardText(pszUtf8) == 0; }
    int ShowMessageBox(HWND hOwner, LPCSTR pszText, LPCSTR pszCaption, UINT ulType) override;

private:
    void HandleEvent(const SDL_Event &event);
    void HandleWindowEvent(const SDL_WindowEvent &event);

    bool m_bStarted = false;
    bool m_bHasCursors = false;
};

TSdlWindow *Native(HWND hWnd)
{
    return (TSdlWindow *)hWnd->pNative;
}

HWND WindowOfId(Uint32 ulId)
{
    for (HWND hWnd = FirstWindow(); hWnd; hWnd = hWnd->pNext)
        if (hWnd->pNative && SDL_GetWindowID(Native(hWnd)->pWindow) == ulId)
            return hWnd;
    return nullptr;
}

int AtLeastOne(int l)
{
    return l > 0 ? l : 1;
}

/// SDL wants UTF-8; bytes that aren't are taken as Latin-1.
char *ToUtf8(LPCSTR psz)
{
    int nWide = MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, psz, -1, nullptr, 0);
    return SDL_iconv_string("UTF-8", nWide ? "UTF-8" : "ISO-8859-1", psz, strlen(psz) + 1);
}

POINT FrameCorner(SDL_Window *pWindow)
{
    int nTop = 0, nLeft = 0, nBottom, nRight;
    if (SDL_GetWindowBordersSize(pWindow, &nTop, &nLeft, &nBottom, &nRight) != 0)
        return {};
    return { nLeft, nTop };
}

/// A frame that comes or goes later than the window is placed pushes the client
/// area away by its size. Put right once, so that nothing is held against the
/// user's moves.
void UndoShift(TSdlWindow *pNative)
{
    if (!pNative->bNewFrame)
        return;
    const bool bFrame = !(SDL_GetWindowFlags(pNative->pWindow) & SDL_WINDOW_BORDERLESS);
    const POINT ptNew = FrameCorner(pNative->pWindow), &ptOld = pNative->ptOldFrame;
    const POINT ptShift = bFrame ? ptNew : POINT{ -ptOld.x, -ptOld.y };
    int nX, nY;
    SDL_GetWindowPosition(pNative->pWindow, &nX, &nY);
    if (!(ptShift.x | ptShift.y) || nX != pNative->ptWanted.x + ptShift.x || nY != pNative->ptWanted.y + ptShift.y)
        return;
    pNative->bNewFrame = false;
    SDL_SetWindowPosition(pNative->pWindow, pNative->ptWanted.x, pNative->ptWanted.y);
}

SDL_SystemCursor CursorShape(unsigned short usId)
{
    switch (usId)
    {
    case 32513:
        return SDL_SYSTEM_CURSOR_IBEAM;
    case 32514:
        return SDL_SYSTEM_CURSOR_WAIT;
    case 32515:
        return SDL_SYSTEM_CURSOR_CROSSHAIR;
    case 32642:
        return SDL_SYSTEM_CURSOR_SIZENWSE;
    case 32643:
        return SDL_SYSTEM_CURSOR_SIZENESW;
    case 32644:
        return SDL_SYSTEM_CURSOR_SIZEWE;
    case 32645:
        return SDL_SYSTEM_CURSOR_SIZENS;
    case 32646:
        return SDL_SYSTEM_CURSOR_SIZEALL;
    case 32648:
        return SDL_SYSTEM_CURSOR_NO;
    case 32649:
        return SDL_SYSTEM_CURSOR_HAND;
    case 32650:
        return SDL_SYSTEM_CURSOR_WAITARROW;
    default:
        return SDL_SYSTEM_CURSOR_ARROW;
    }
}

CSdlBackend::~CSdlBackend()
{
    if (!m_bStarted)
        return;
    // A host that ended without closing its windows still gets them closed.
    for (HWND hWnd = FirstWindow(); hWnd; hWnd = hWnd->pNext)
        if (hWnd->pNative)
            CloseWindow(hWnd);
    for (int i = 32512; m_bHasCursors && i <= 32650; ++i)
    {
        const HCURSOR hCursor = LoadCursorA(nullptr, MAKEINTRESOURCE(i));
        if (hCursor && hCursor->pNative)
            SDL_FreeCursor((SDL_Cursor *)hCursor->pNative);
    }
    SDL_QuitSubSystem(SDL_INIT_VIDEO);
}

bool CSdlBackend::Start()
{
    if (m_bStarted)
        return true;
    SDL_SetMainReady();
    // Signals, the screen saver and the compositor are none of a library's business.
    SDL_SetHint(SDL_HINT_NO_SIGNAL_HANDLERS, "1");
    SDL_SetHint(SDL_HINT_VIDEO_ALLOW_SCREENSAVER, "1");
    SDL_SetHint(SDL_HINT_VIDEO_X11_NET_WM_BYPASS_COMPOSITOR, "0");
    SDL_SetHint(SDL_HINT_QUIT_ON_LAST_WINDOW_CLOSE, "0");
    SDL_SetHint(SDL_HINT_MOUSE_FOCUS_CLICKTHROUGH, "1");
    if (SDL_InitSubSystem(SDL_INIT_VIDEO) != 0)
    {
        SetDisplayError(SDL_GetError());
        return false;
    }
    if (!SDL_getenv("SDL_VIDEODRIVER") && !IsSeen(SDL_GetCurrentVideoDriver()))
    {
        // It found no display and took a stand-in, which nobody has asked for.
        SDL_QuitSubSystem(SDL_INIT_VIDEO);
        SDL_VideoInit("x11");
        SetDisplayError(SDL_GetError());
        return false;
    }
    // Plain surfaces put only the changed areas on the display. Where they
    // exist they are better than a texture that goes there as a whole.
    const char *pszDriver = SDL_GetCurrentVideoDriver();
    if (pszDriver && (strcmp(pszDriver, "x11") == 0 || strcmp(pszDriver, "offscreen") == 0))
        SDL_SetHint(SDL_HINT_FRAMEBUFFER_ACCELERATION, "0");
    m_bStarted = true;
    return true;
}

void CSdlBackend::GetDesktop(int *pnWidth, int *pnHeight, int *pnDepth)
{
    SDL_DisplayMode mode = {};
    if (!m_bStarted || SDL_GetDesktopDisplayMode(0, &mode) != 0)
    {
        *pnWidth = *pnHeight = 0;
        *pnDepth = 32;
        return;
    }
    *pnWidth = mode.w;
    *pnHeight = mode.h;
    if (!IsSeen(SDL_GetCurrentVideoDriver()))
        *pnWidth = *pnHeight = s_nUnseenSide;
    // 24 bits of colour live in 32-bit pixels. Fewer than 16 are not simulated:
    // SDL converts to whatever the display has.
    *pnDepth = SDL_BYTESPERPIXEL(mode.format) == 2 ? 16 : 32;
}

bool CSdlBackend::OpenWindow(HWND hWnd)
{
    TSdlWindow *pNative = (TSdlWindow *)calloc(1, sizeof(TSdlWindow));
    if (!pNative)
        return false;
    Uint32 ulFlags = SDL_WINDOW_HIDDEN;
    pNative->ulStyle = hWnd->ulStyle & s_ulFrameStyles;
    if ((hWnd->ulStyle & WS_CAPTION) != WS_CAPTION)
        ulFlags |= SDL_WINDOW_BORDERLESS;
    if (hWnd->ulStyle & WS_THICKFRAME)
        ulFlags |= SDL_WINDOW_RESIZABLE;
    const RECT &rc = hWnd->rcClient;
    char *pszTitle = ToUtf8(hWnd->pszTitle);
    pNative->pWindow = SDL_CreateWindow(pszTitle ? pszTitle : "", rc.left, rc.top, AtLeastOne(WidthOf(rc)),
                                        AtLeastOne(HeightOf(rc)), ulFlags);
    SDL_free(pszTitle);
    if (!pNative->pWindow)
    {
        free(pNative);
        return false;
    }
    hWnd->pNative = pNative;
    return true;
}

void CSdlBackend::CloseWindow(HWND hWnd)
{
    TSdlWindow *pNative = Native(hWnd);
    hWnd->pNative = nullptr;
    SDL_FreeSurface(pNative->pCanvas);
    SDL_DestroyWindow(pNative->pWindow);
    free(pNative);
}

void CSdlBackend::PlaceWindow(HWND hWnd)
{
    TSdlWindow *pNative = Native(hWnd);
    const RECT &rc = hWnd->rcClient;
    if (pNative->ulStyle != (hWnd->ulStyle & s_ulFrameStyles))
    {
        pNative->ulStyle = hWnd->ulStyle & s_ulFrameStyles;
        pNative->ptOldFrame = FrameCorner(pNative->pWindow);
        SDL_SetWindowBordered(pNative->pWindow, (SDL_bool)((hWnd->ulStyle & WS_CAPTION) == WS_CAPTION));
        SDL_SetWindowResizable(pNative->pWindow, (SDL_bool)((hWnd->ulStyle & WS_THICKFRAME) != 0));
        pNative->bNewFrame = true;
    }
    pNative->ptWanted = { rc.left, rc.top };
    SDL_SetWindowAlwaysOnTop(pNative->pWindow, (SDL_bool)hWnd->bTopmost);
    int nX, nY, nWidth, nHeight;
    SDL_GetWindowSize(pNative->pWindow, &nWidth, &nHeight);
    if (nWidth != AtLeastOne(WidthOf(rc)) || nHeight != AtLeastOne(HeightOf(rc)))
        SDL_SetWindowSize(pNative->pWindow, AtLeastOne(WidthOf(rc)), AtLeastOne(HeightOf(rc)));
    SDL_GetWindowPosition(pNative->pWindow, &nX, &nY);
    if (nX != rc.left || nY != rc.top)
        SDL_SetWindowPosition(pNative->pWindow, rc.left, rc.top);
}

void CSdlBackend::SetTitle(HWND hWnd)
{
    char *pszTitle = ToUtf8(hWnd->pszTitle);
    if (pszTitle)
        SDL_SetWindowTitle(Native(hWnd)->pWindow, pszTitle);
    SDL_free(pszTitle);
}

void CSdlBackend::ShowWindow(HWND hWnd, EShowState eState)
{
    TSdlWindow *pNative = Native(hWnd);
    if (eState == SHOW_HIDDEN)
    {
        SDL_HideWindow(pNative->pWindow);
        pNative->bShown = false;
        return;
    }
    if (!pNative->bShown)
    {
        SDL_ShowWindow(pNative->pWindow);
        pNative->bShown = true;
    }
    const Uint32 ulFlags = SDL_GetWindowFlags(pNative->pWindow);
    if (eState == SHOW_MINIMIZED && !(ulFlags & SDL_WINDOW_MINIMIZED))
        SDL_MinimizeWindow(pNative->pWindow);
    else if (eState == SHOW_MAXIMIZED && !(ulFlags & SDL_WINDOW_MAXIMIZED))
        SDL_MaximizeWindow(pNative->pWindow);
    else if (eState == SHOW_NORMAL && (ulFlags & (SDL_WINDOW_MINIMIZED | SDL_WINDOW_MAXIMIZED)))
        SDL_RestoreWindow(pNative->pWindow);
}

bool CSdlBackend::GetPlace(HWND hWnd, RECT *prcClient)
{
    int nX, nY, nWidth, nHeight;
    SDL_GetWindowPosition(Native(hWnd)->pWindow, &nX, &nY);
    SDL_GetWindowSize(Native(hWnd)->pWindow, &nWidth, &nHeight);
    *prcClient = { nX, nY, nX + nWidth, nY + nHeight };
    return true;
}

void CSdlBackend::RaiseWindow(HWND hWnd)
{
    SDL_RaiseWindow(Native(hWnd)->pWindow);
}

bool CSdlBackend::LockPixels(HWND hWnd, TPixelView *pView)
{
    TSdlWindow *pNative = Native(hWnd);
    // A surface lives until the window changes its size; a new one carries no mark.
    SDL_Surface *pSurface = SDL_GetWindowSurface(pNative->pWindow);
    if (!pSurface)
        return false;
    const bool bNew = pSurface->userdata != &s_cCanvasMark;
    pSurface->userdata = (void *)&s_cCanvasMark;
    const Uint32 ulFormat = pSurface->format->format;
    if (ulFormat != SDL_PIXELFORMAT_RGB888 && ulFormat != SDL_PIXELFORMAT_ARGB8888)
    {
        if (bNew)
        {
            SDL_FreeSurface(pNative->pCanvas);
            pNative->pCanvas = SDL_CreateRGBSurfaceWithFormat(0, pSurface->w, pSurface->h, 32, SDL_PIXELFORMAT_RGB888);
        }
        pSurface = pNative->pCanvas;
        if (!pSurface)
            return false;
    }
    pView->pPixels = (uint32_t *)pSurface->pixels;
    pView->nPitch = pSurface->pitch / 4;
    pView->nWidth = pSurface->w;
    pView->nHeight = pSurface->h;
    pView->bLost = bNew;
    return true;
}

void CSdlBackend::Present(HWND hWnd, const RECT *prcAreas, int nCount)
{
    TSdlWindow *pNative = Native(hWnd);
    SDL_Surface *pSurface = SDL_GetWindowSurface(pNative->pWindow);
    if (!pSurface || pSurface->userdata != &s_cCanvasMark)
        return; // what was drawn went with the old surface
    SDL_Rect arcAreas[MAX_DIRTY_RECTS];
    int nAreas = 0;
    for (int i = 0; i < nCount && i < MAX_DIRTY_RECTS; ++i)
    {
        RECT rc = prcAreas[i];
        if (!IntersectWith(&rc, { 0, 0, pSurface->w, pSurface->h }))
            continue;
        SDL_Rect &rcArea = arcAreas[nAreas++];
        rcArea = { rc.left, rc.top, WidthOf(rc), HeightOf(rc) };
        if (pNative->pCanvas)
        {
            SDL_Rect rcTarget = rcArea;
            SDL_BlitSurface(pNative->pCanvas, &rcArea, pSurface, &rcTarget);
        }
    }
    if (nAreas)
        SDL_UpdateWindowSurfaceRects(pNative->pWindow, arcAreas, nAreas);
}

void CSdlBackend::Pump()
{
    SDL_PumpEvents();
    SDL_Event event;
    while (SDL_PeepEvents(&event, 1, SDL_GETEVENT, SDL_FIRSTEVENT, SDL_LASTEVENT) == 1)
        HandleEvent(event);
}

void CSdlBackend::HandleEvent(const SDL_Event &event)
{
    HWND hWnd;
    switch (event.type)
    {
    case SDL_WINDOWEVENT:
        HandleWindowEvent(event.window);
        break;
    case SDL_MOUSEMOTION:
        hWnd = WindowOfId(event.motion.windowID);
        if (hWnd)
            InputPointer(hWnd, event.motion.x, event.motion.y);
        break;
    case SDL_MOUSEBUTTONDOWN:
    case SDL_MOUSEBUTTONUP:
        hWnd = WindowOfId(event.button.windowID);
        if (hWnd && event.button.button >= SDL_BUTTON_LEFT && event.button.button <= SDL_BUTTON_RIGHT)
            InputButton(hWnd,
                        event.button.button == SDL_BUTTON_LEFT    ? BUTTON_LEFT
                        : event.button.button == SDL_BUTTON_RIGHT ? BUTTON_RIGHT
                                                                  : BUTTON_MIDDLE,
                        event.type == SDL_MOUSEBUTTONDOWN, event.button.x, event.button.y);
        break;
    case SDL_KEYDOWN:
    case SDL_KEYUP:
        hWnd = WindowOfId(event.key.windowID);
        if (hWnd)
        {
            TKeyEvent aKeys[MAX_SDL_KEYS];
            const int nKeys = TranslateSdlKey(event.key, aKeys);
            for (int i = 0; i < nKeys; ++i)
                InputKey(hWnd, &aKeys[i]);
        }
        break;
    case SDL_TEXTINPUT:
        hWnd = WindowOfId(event.text.windowID);
        if (hWnd)
            TypeSdlText(hWnd, event.text.text);
        break;
    case SDL_KEYMAPCHANGED:
        ForgetSdlLayout();
        break;
    case SDL_DROPFILE:
    case SDL_DROPTEXT:
        SDL_free(event.drop.file);
        break;
    }
}

void CSdlBackend::HandleWindowEvent(const SDL_WindowEvent &event)
{
    const HWND hWnd = WindowOfId(event.windowID);
    if (!hWnd)
        return;
    // Several events of one kind can be on their way when the window has long
    // changed again, so what counts is how it is now.
    const Uint32 ulFlags = SDL_GetWindowFlags(Native(hWnd)->pWindow);
    RECT rc;
    switch (event.event)
    {
    case SDL_WINDOWEVENT_EXPOSED:
        InputExpose(hWnd);
        break;
    case SDL_WINDOWEVENT_MOVED:
        UndoShift(Native(hWnd));
        [[fallthrough]];
    case SDL_WINDOWEVENT_SIZE_CHANGED:
        if (!(ulFlags & SDL_WINDOW_MINIMIZED) && GetPlace(hWnd, &rc))
            InputPlace(hWnd, &rc);
        break;
    case SDL_WINDOWEVENT_MINIMIZED:
    case SDL_WINDOWEVENT_MAXIMIZED:
    case SDL_WINDOWEVENT_RESTORED:
        InputState(hWnd, ulFlags & SDL_WINDOW_MINIMIZED   ? SHOW_MINIMIZED
                         : ulFlags & SDL_WINDOW_MAXIMIZED ? SHOW_MAXIMIZED
                                                          : SHOW_NORMAL);
        break;
    case SDL_WINDOWEVENT_FOCUS_GAINED:
    case SDL_WINDOWEVENT_FOCUS_LOST:
        if (ulFlags & SDL_WINDOW_INPUT_FOCUS)
        {
            const SDL_Keymod eMod = SDL_GetModState();
            InputLocks(eMod & KMOD_CAPS, eMod & KMOD_NUM, eMod & KMOD_SCROLL);
        }
        InputFocus(hWnd, ulFlags & SDL_WINDOW_INPUT_FOCUS);
        break;
    case SDL_WINDOWEVENT_LEAVE:
        InputLeave(hWnd);
        break;
    case SDL_WINDOWEVENT_CLOSE:
        InputClose(hWnd);
        break;
    }
}

void CSdlBackend::SetPointerShape(HCURSOR hCursor)
{
    if (!hCursor)
    {
        SDL_ShowCursor(SDL_DISABLE);
        return;
    }
    if (!hCursor->pNative)
    {
        hCursor->pNative = SDL_CreateSystemCursor(CursorShape(hCursor->usId));
        m_bHasCursors = true;
    }
    if (hCursor->pNative)
        SDL_SetCursor((SDL_Cursor *)hCursor->pNative);
    SDL_ShowCursor(SDL_ENABLE);
}

void CSdlBackend::GetPointer(POINT *pPoint)
{
    // SDL's answer for the whole desktop can be out of date, or missing: over a
    // window the place is worked out from the window's.
    SDL_Window *pFocus = SDL_GetMouseFocus();
    const HWND hWnd = pFocus ? WindowOfId(SDL_GetWindowID(pFocus)) : nullptr;
    int nX, nY;
    if (hWnd)
    {
        SDL_GetMouseState(&nX, &nY);
        *pPoint = { nX + hWnd->rcClient.left, nY + hWnd->rcClient.top };
        return;
    }
    SDL_GetGlobalMouseState(&nX, &nY);
    *pPoint = { nX, nY };
}

void CSdlBackend::SetPointer(int nX, int nY)
{
    SDL_Window *pFocus = SDL_GetMouseFocus();
    const HWND hWnd = pFocus ? WindowOfId(SDL_GetWindowID(pFocus)) : nullptr;
    if (hWnd)
        SDL_WarpMouseInWindow(pFocus, nX - hWnd->rcClient.left, nY - hWnd->rcClient.top);
    else
        SDL_WarpMouseGlobal(nX, nY);
    // A caller may ask at once where the pointer is.
    SDL_PumpEvents();
}

char *CSdlBackend::GetClipboardText()
{
    char *pszText = SDL_GetClipboardText();
    char *pszCopy = pszText && *pszText ? strdup(pszText) : nullptr;
    SDL_free(pszText);
    return pszCopy;
}

int CSdlBackend::ShowMessageBox(HWND hOwner, LPCSTR pszText, LPCSTR pszCaption, UINT ulType)
{
    struct TButtons
    {
        int nCount;
        int alIds[3];
        const char *apszNames[3];
    };
    static const TButtons s_Buttons[] = {
        { 1, { IDOK }, { "OK" } },
        { 2, { IDOK, IDCANCEL }, { "OK", "Cancel" } },
        { 3, { IDABORT, IDRETRY, IDIGNORE }, { "Abort", "Retry", "Ignore" } },
        { 3, { IDYES, IDNO, IDCANCEL }, { "Yes", "No", "Cancel" } },
        { 2, { IDYES, IDNO }, { "Yes", "No" } },
        { 2, { IDRETRY, IDCANCEL }, { "Retry", "Cancel" } },
    };
    if (!Start())
        return 0;
    const TButtons &buttons = s_Buttons[ulType & MB_TYPEMASK];
    int nDefault = (ulType & MB_DEFMASK) / MB_DEFBUTTON2;
    if (nDefault >= buttons.nCount)
        nDefault = 0;
    SDL_MessageBoxButtonData aButtons[3] = {};
    for (int i = 0; i < buttons.nCount; ++i)
    {
        aButtons[i].buttonid = buttons.alIds[i];
        aButtons[i].text = buttons.apszNames[i];
        if (i == nDefault)
            aButtons[i].flags |= SDL_MESSAGEBOX_BUTTON_RETURNKEY_DEFAULT;
        if (buttons.alIds[i] == IDCANCEL || buttons.nCount == 1)
            aButtons[i].flags |= SDL_MESSAGEBOX_BUTTON_ESCAPEKEY_DEFAULT;
    }
    char *pszUtf8Text = ToUtf8(pszText), *pszUtf8Caption = ToUtf8(pszCaption);
    SDL_MessageBoxData data = {};
    data.flags = (ulType & MB_ICONMASK) == MB_ICONERROR     ? SDL_MESSAGEBOX_ERROR
                 : (ulType & MB_ICONMASK) == MB_ICONWARNING ? SDL_MESSAGEBOX_WARNING
                                                            : SDL_MESSAGEBOX_INFORMATION;
    data.window = hOwner ? Native(hOwner)->pWindow : nullptr;
    data.title = pszUtf8Caption ? pszUtf8Caption : "";
    data.message = pszUtf8Text ? pszUtf8Text : "";
    data.numbuttons = buttons.nCount;
    data.buttons = aButtons;
    int nPressed = 0;
    const int lResult = SDL_ShowMessageBox(&data, &nPressed);
    SDL_free(pszUtf8Text);
    SDL_free(pszUtf8Caption);
    if (lResult != 0)
        return 0;
    // Closing the box by its frame presses no button.
    if (nPressed <= 0)
        return buttons.nCount == 1 ? IDOK : IDCANCEL;
    return nPressed;
}
} // namespace

CBackend *SdlBackend()
{
    static CSdlBackend s_Backend;
    return &s_Backend;
}
