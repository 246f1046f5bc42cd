#include "core/msgsys.h"
#include "core/nodepool.h"
#include "core/walk.h"
#include "input/replayhooks.h"
#include "tarvix/button.h"
#include "tarvix/dibscreen.h"
#include "tarvix/globals.h"
#include "tarvix/jpeg.h"
#include "tarvix/keyboard.h"
#include "tarvix/llist.h"
#include "tarvix/memory.h"
#include "tarvix/memorytrack.h"
#include "tarvix/mouse.h"
#include "tarvix/objpool.h"
#include "tarvix/pictype.h"
#include "tarvix/replay.h"
#include "tarvix/screen.h"
#include "tarvix/static.h"
#include "tarvix/strings.h"
#include "tarvix/systemfiles.h"
#include "tarvix/timer.h"
#include "tarvix/winctrl.h"
#include "tarvix/window.h"
#include "win/win32.h"

#include <string.h>

#include <algorithm>
#include <stdint.h>

// Invariants
// 1. xCreateGlobals and xInit make objects in the order of the record; what a
//    failed one has made stays for xFreeGlobals and xExit, which take null.
// 2. xExit goes before xFreeGlobals: screens and input leave lists that are
//    still there. CMemory is last, since it tells what was not released.
// 3. glb and sglb are the host's: after the host has freed them nothing here
//    reads them, and the window procedure passes messages on.
// 4. A frame has one order of steps, whichever screen there is: timers, drawing,
//    messages, wait, input, restoring, pools. Frames may nest in any of them
//    but the wait.

namespace
{
const xulong s_ulLongestFrame = 250; // milliseconds

LRESULT CALLBACK WindowProc(HWND hWnd, UINT uMsg, WPARAM wParam, LPARAM lParam)
{
    if (!sglb)
        return DefWindowProcA(hWnd, uMsg, wParam, lParam);
    if (!sglb->m_pWinMsgList)
        sglb->m_pWinMsgList = XNEW(CLList);
    bool bHandled = false;
    LRESULT lResult = 0;
    if (uMsg == WM_CLOSE)
    {
        if (CReplay *pReplay = ActiveReplay())
            pReplay->OnClose();
        xSetUserWantToQuit(1);
        bHandled = true;
    }
    if (uMsg == WM_ACTIVATEAPP && !wParam)
        if (CReplay *pReplay = ActiveReplay())
            pReplay->OnFocusLost();
    CLList *pList = sglb->m_pWinMsgList;
    if (pList)
        for (CListWalk walk(*pList); const TWinMsgSink *pSink = walk.Next<TWinMsgSink>();)
        {
            if (pSink->ulMsg != uMsg)
                continue;
            bHandled = true;
            const LRESULT lAnswer = pSink->pSink->WinMsgHandler(hWnd, uMsg, wParam, lParam);
            if (!lResult)
                lResult = lAnswer;
        }
    return bHandled ? lResult : DefWindowProcA(hWnd, uMsg, wParam, lParam);
}

bool RegisterWindowClass()
{
    WNDCLASSA wc = {};
    wc.style = CS_HREDRAW | CS_VREDRAW | CS_OWNDC;
    wc.lpfnWndProc = WindowProc;
    wc.hInstance = ThisInstance;
    wc.hbrBackground = (HBRUSH)GetStockObject(BLACK_BRUSH);
    wc.lpszClassName = glb->m_szApplicationName;
    sglb->m_atomClass = RegisterClassA(&wc);
    return sglb->m_atomClass != 0;
}

bool CreateScreenWindow()
{
    sglb->m_hWnd = CreateWindowExA(0, glb->m_szApplicationName, glb->m_szApplicationName, WS_POPUP, 0, 0, 1, 1, nullptr,
                                   nullptr, ThisInstance, nullptr);
    if (!sglb->m_hWnd)
        return false;
    ShowWindow(sglb->m_hWnd, SW_SHOWDEFAULT);
    UpdateWindow(sglb->m_hWnd);
    sglb->m_hDC = GetDC(sglb->m_hWnd);
    return sglb->m_hDC != nullptr;
}

// Says what the system says, which is the one who knows.
xlong ReportSystemError()
{
    char szText[256];
    if (!FormatMessageA(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr, GetLastError(), 0, szText,
                        sizeof(szText), nullptr))
        return 0;
    szText[strcspn(szText, "\r\n")] = 0;
    return glb->m_Error.SetErrorf("%s", szText);
}

// A screen that can't run leaves the list and its place in the globals.
template <class TScreen>
void OfferScreen(TScreen *&pScreen)
{
    if (!pScreen)
        return;
    if (pScreen->ScreenAvailable())
        pScreen->GetVideoModes();
    else
    {
        glb->m_pScreenList->Unregister(pScreen);
        XDELETE(pScreen);
        pScreen = nullptr;
    }
}

template <class TObject>
void DeleteAndClear(TObject *&pObject)
{
    if (pObject)
        XDELETE(pObject);
    pObject = nullptr;
}

void WaitForFrame(xlong lElapsed)
{
    xlong lWait = glb->m_lMinimumFrameTime - lElapsed;
    if (!glb->m_lMinimumFrameTime || lWait <= 1)
        return;
    if (glb->m_bXHandlerMaxWaitSet == 1 && glb->m_lXHandlerMaxWait < lWait)
        lWait = glb->m_lXHandlerMaxWait;
    if (glb->m_lXHandlerWaitMode && glb->m_pfnWaitTimeOrSockets)
        glb->m_pfnWaitTimeOrSockets((xulong)lWait);
    else
        xSleep((xulong)lWait);
}

void CountUpdates(xlong lElapsed)
{
    // Without an update time no steps are earned.
    if (!glb->m_lUpdateTime)
    {
        glb->m_lUpdateCount = 0;
        return;
    }
    const double dTotal = (double)lElapsed + glb->m_fUpdateRemainder;
    glb->m_lUpdateCount = (xlong)(dTotal / glb->m_lUpdateTime);
    glb->m_fUpdateRemainder = (float)(dTotal - (double)glb->m_lUpdateCount * glb->m_lUpdateTime);
}

// Empties the queue. True when the quit message was in it.
bool TakeMessages(MSG &msg)
{
    while (PeekMessageA(&msg, nullptr, 0, 0, PM_REMOVE))
    {
        if (msg.message == WM_QUIT)
            return true;
        TranslateMessage(&msg);
        DispatchMessageA(&msg);
    }
    return false;
}

void RunPools()
{
    if (!glb->m_pObjPoolList)
        glb->m_pObjPoolList = XNEW(CLList);
    if (!glb->m_pObjPoolList)
        return;
    for (CListWalk walk(*glb->m_pObjPoolList); CObjPool *pPool = walk.Next<CObjPool>();)
        pPool->Handler();
}
} // namespace

xlong xCreateGlobals()
{
    glb->m_pMemory = XNEW(CMemory);
    glb->m_pPicTypeList = XNEW(CPicTypeList);
    glb->m_pScreenList = XNEW(CScreenBaseList);
    glb->m_pWinCtrl = XNEW(CWinCtrl);
    glb->m_pusSquares = (unsigned short *)XNEW(char[514]);
    glb->m_pMsgBoxWindow = XNEW(CWindow);
    glb->m_pMsgBoxText = XNEW(CStatic);
    glb->m_pMsgBoxButton = XNEW(CButton);
    if (!glb->m_pMemory || !glb->m_pPicTypeList || !glb->m_pScreenList || !glb->m_pWinCtrl || !glb->m_pusSquares)
        return glb->m_Error.SetError(XERR_MEMORY, 0, 0, nullptr, 0);
    for (unsigned u = 0; u < 256; ++u)
        glb->m_pusSquares[u] = (unsigned short)(u * u);
    glb->m_pusSquares[256] = 0;
    return 1;
}

void xFreeGlobals()
{
    if (!glb)
        return;
    DeleteAndClear(glb->m_pMsgBoxWindow);
    DeleteAndClear(glb->m_pMsgBoxText);
    DeleteAndClear(glb->m_pMsgBoxButton);
    XDELETE_ARRAY((char *)glb->m_pusSquares);
    glb->m_pusSquares = nullptr;
    DeleteAndClear(glb->m_pScreenList);
    DeleteAndClear(glb->m_pPicTypeList);
    DeleteAndClear(glb->m_pWinCtrl);
    if (glb->m_pSpareList)
        glb->m_pSpareList->KillAllData();
    DeleteAndClear(glb->m_pSpareList);
    // Their records were marked or removed by the timers' destructors.
    if (glb->m_pActiveTimers)
        glb->m_pActiveTimers->KillAllData();
    DeleteAndClear(glb->m_pActiveTimers);
    if (glb->m_pPendingTimers)
        glb->m_pPendingTimers->KillAllData();
    DeleteAndClear(glb->m_pPendingTimers);
    if (glb->m_pMsgSinkList)
        glb->m_pMsgSinkList->KillAllData();
    DeleteAndClear(glb->m_pMsgSinkList);
    DeleteAndClear(glb->m_pSpareList2);
    // Last, since it tells what was not released. Its destructor is not virtual.
    if (glb->m_pMemory)
    {
        glb->m_pMemory->CMemory::~CMemory();
        CMemory::operator delete(glb->m_pMemory);
        glb->m_pMemory = nullptr;
    }
    FreeNodePool(glb->m_pAvlNodePool);
    FreeNodePool(glb->m_pListNodePool);
}

xlong xInit(int nArgs, char **const ppszArgs)
{
    sglb->m_pJPGPic = XNEW(CJPGPic);
    sglb->m_pBMPPic = XNEW(CBMPPic);
    sglb->m_pDibScreen = XNEW(CDibScreen);
    glb->m_pMouse = XNEW(CMouse);
    glb->m_pKeyboard = XNEW(CKeyboard);
    if (!sglb->m_pJPGPic || !sglb->m_pBMPPic || !sglb->m_pDibScreen || !glb->m_pMouse || !glb->m_pKeyboard)
        return glb->m_Error.SetError(XERR_MEMORY, 0, 0, nullptr, 0);
    if (!RegisterWindowClass())
        return xErrorTxt("RegisterClass failed");
    if (!CreateScreenWindow())
        return ReportSystemError();
    OfferScreen(sglb->m_pDibScreen);
#ifdef _WIN32
    // The relative name is meant: the program's own folder has to hold a copy.
    if (!xFileExists("msvcrt.dll"))
    {
        MessageBoxA(nullptr, "Missing 'msvcrt.dll'.", "No C runtime", MB_OK);
        return 0;
    }
#endif
    return 1;
}

void xExit()
{
    if (!glb || !sglb)
        return;
    if (sglb->m_lSocketsStarted)
    {
        WSACleanup();
        sglb->m_lSocketsStarted = 0;
    }
    if (sglb->m_hWnd)
    {
        DestroyWindow(sglb->m_hWnd);
        sglb->m_hWnd = nullptr;
        sglb->m_hDC = nullptr;
    }
    if (sglb->m_atomClass)
    {
        UnregisterClassA((LPCSTR)(uintptr_t)sglb->m_atomClass, ThisInstance);
        sglb->m_atomClass = 0;
    }
    DeleteAndClear(sglb->m_pJPGPic);
    DeleteAndClear(sglb->m_pBMPPic);
    DeleteAndClear(sglb->m_pDibScreen);
    DeleteAndClear(glb->m_pMouse);
    DeleteAndClear(glb->m_pKeyboard);
    XDELETE_ARRAY(glb->m_pColourIndexMap);
    glb->m_pColourIndexMap = nullptr;
    DeleteAndClear(glb->m_pObjPoolList);
    if (sglb->m_pWinMsgList)
        sglb->m_pWinMsgList->KillAllData();
    DeleteAndClear(sglb->m_pWinMsgList);
}

xlong xHandler()
{
    ReplayBeginFrame();
    xUpdateObjTimers();
    if (glb->m_pScreen)
        glb->m_pScreen->FlipPage();

    MSG msg;
    if (TakeMessages(msg))
    {
        if (sglb->m_hDC)
        {
            ReleaseDC(sglb->m_hWnd, sglb->m_hDC);
            sglb->m_hDC = nullptr;
        }
        return (xlong)msg.wParam;
    }
    ReplayTakeInput();

    const xulong ulNow = xGetTime();
    // Compared as signed values, so that a clock that went back counts nothing.
    const xlong lLast =
        std::min(std::max((xlong)glb->m_ulLastFrameTime, (xlong)(ulNow - s_ulLongestFrame)), (xlong)ulNow);
    const xlong lElapsed = (xlong)(ulNow - (xulong)lLast);
    WaitForFrame(lElapsed);
    glb->m_ulLastFrameTime = xGetTime();
    CountUpdates(lElapsed);

    if (glb->m_pScreen)
        glb->m_pScreen->ClearBuffer();
    glb->m_lXHandlerMaxWait = 0;
    glb->m_bXHandlerMaxWaitSet = 0;
    RunPools();
    ReplayEndFrame();
    return 0;
}

void xSetWindowTitle(const char *pszTitle)
{
    if (sglb && sglb->m_hWnd)
        SetWindowTextA(sglb->m_hWnd, pszTitle);
}

void ShowScreenWindow()
{
    if (!glb || !sglb)
        return;
    if (sglb->m_hDC && sglb->m_hWnd)
    {
        ReleaseDC(sglb->m_hWnd, sglb->m_hDC);
        sglb->m_hDC = nullptr;
        DestroyWindow(sglb->m_hWnd);
    }
    if (CreateScreenWindow())
    {
        SetCursor(LoadCursorA(nullptr, IDC_ARROW));
        UpdateWindow(sglb->m_hWnd);
    }
}

xulong RealTime()
{
    return timeGetTime();
}

void RealSleep(xulong ulTime)
{
    Sleep(ulTime);
}

xulong xGetTime()
{
    const CReplay *pReplay = ActiveReplay();
    return pReplay ? pReplay->GetTime() : RealTime();
}

void xSleep(xulong ulTime)
{
    if (CReplay *pReplay = ActiveReplay())
        pReplay->OnSleep(ulTime);
    else
        RealSleep(ulTime);
}
