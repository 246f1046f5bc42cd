// A host that does anything at any time: windows and controls of all classes
// come, change and die as a stream of bytes says, in callbacks and inside
// frames inside frames too. Nothing is expected of it but that it goes on.
#pragma once

#include "core/msgsys.h"
#include "tarvix/button.h"
#include "tarvix/checkbox.h"
#include "tarvix/dialog.h"
#include "tarvix/frame.h"
#include "tarvix/globals.h"
#include "tarvix/groupbox.h"
#include "tarvix/keyboard.h"
#include "tarvix/mouse.h"
#include "tarvix/radiobutton.h"
#include "tarvix/resdata.h"
#include "tarvix/screen.h"
#include "tarvix/static.h"
#include "tarvix/timer.h"
#include "tarvix/titlebar.h"
#include "tarvix/url.h"
#include "tarvix/winctrl.h"
#include "tarvix/window.h"

#include <functional>
#include <memory>

inline const char g_szChaosScript[] =
    "; script\n"
    "Defines { IDW_A = 50 IDC_A = 60 IDC_B = 61 IDG_A = 62 IDC_C = 63 IDC_D = 64 }\n"
    "Window = IDW_A {\n"
    "  Create = \"\", 40, 30, 200, 150, XWIN_TITLEBAR|XWIN_FRAME|XWIN_CLOSE|XWIN_DRAG\n"
    "  Button = IDC_A { Create = \"a\", 5, 5, 60, 20, XKEY_a, 0 }\n"
    "  Checkbox = IDC_B { Create = \"b\", 5, 30, 60, 20, 16, XKEY_b, 0 }\n"
    "  Groupbox = IDG_A { Create = \"g\", 80, 5, 100, 90, 0\n"
    "    Radio = IDC_C { Create = \"c\", 5, 5, 60, 20, 16, XKEY_c, 0 }\n"
    "    Radio = IDC_D { Create = \"d\", 5, 30, 60, 20, 16, XKEY_a, 0 } }\n"
    "}\n";

class CChaos
{
public:
    enum
    {
        WINDOWS = 5,
        CONTROLS = 24,
        DEEPEST = 3 ///< frames in each other
    };

    /// @param next  the bytes, endless
    /// @param tick  lets a frame's time pass
    CChaos(std::function<unsigned char()> next, std::function<void()> tick) : m_Next(next), m_Tick(tick)
    {
        m_Resources.Import(g_szChaosScript);
    }

    ~CChaos()
    {
        m_bQuiet = true;
        m_pSink.reset();
        for (int n = 0; n < WINDOWS + CONTROLS; ++n)
            Delete(n);
        m_pDialog.reset();
    }

    /// What the user does, and a frame.
    void Step()
    {
        const unsigned char ucKind = m_Next();
        CMouseBase &mouse = *glb->m_pMouse;
        // Several at a time, also beside the screen.
        for (int n = ucKind & 3; n; --n)
        {
            if (m_Next() % 3 == 0)
            {
                m_lX = m_Next() * 3 / 2 - 20;
                m_lY = m_Next() - 5;
            }
            mouse.Feed(m_lX, m_lY, 0, 0, m_Next() % 2);
        }
        if (ucKind % 16 == 5)
        {
            static const unsigned short s_Keys[] = { 'a', 'b', 'c', XKEY_TAB, XKEY_ENTER, XKEY_ESC };
            glb->m_pKeyboard->AddKeyToQueue(s_Keys[m_Next() % 6], ucKind & 0x20 ? 1 : 0, 0);
        }
        if (ucKind % 3 == 0)
            Act();
        Frame();
    }

    static void ChangeMode(unsigned char ucSize)
    {
        CScreenBase *const pScreen = glb->m_pScreen;
        pScreen->ExitMode();
        pScreen->GetVideoModes();
        if (!pScreen->InitModeRez(ucSize % 2 ? 800 : 640, ucSize % 2 ? 600 : 480, 24, XMODE_WINDOW) ||
            !pScreen->SetPersistentMode(1))
            abort();
    }

private:
    struct TTicker : public CTimer
    {
        void TimerHandler(xulong) override { pChaos->Maybe(); }
        CChaos *pChaos;
    };

    // Of the frame, where no other frame begins and the mode stays.
    struct TSink : public CMsgSys, public CWinMsg
    {
        explicit TSink(CChaos *p) : pChaos(p)
        {
            MsgSysRegister(this, XFRAME_DRAW, 150);
            MsgSysRegister(this, XFRAME_DRAW, 50);
            MsgSysRegister(this, XFRAME_END, 0);
            RegisterWinMsg(this, s_uPaint);
        }
        xlong MsgHandler(xulong, xlong, xlong) override
        {
            pChaos->ActInFrame();
            return 0;
        }
        xparam WinMsgHandler(HWND, unsigned int, xuparam, xparam) override
        {
            pChaos->ActInFrame();
            return 0;
        }
        static const xulong s_uPaint = 15; // WM_PAINT
        CChaos *pChaos;
    };

    void ActInFrame()
    {
        ++m_nInside;
        if (m_Next() % 4 == 0)
            Act();
        if (m_Next() % 16 == 5) // a new one comes behind and is called too
            m_pSink = std::make_unique<TSink>(this);
        --m_nInside;
    }

    void Frame()
    {
        ++m_nDepth;
        m_Tick();
        xHandler();
        --m_nDepth;
    }

    static void OnMessage(xlong, xlong lWindow, xlong lCntrl, xparam, void *pUser)
    {
        if (pUser)
            ((CChaos *)pUser)->Answer(lWindow, lCntrl);
    }

    // Often it is the sender that goes.
    void Answer(xlong lWindow, xlong lCntrl)
    {
        const unsigned char ucKind = m_Next();
        if (m_bQuiet || ucKind % 4)
            return Maybe();
        for (int n = 0; n < WINDOWS + CONTROLS; ++n)
        {
            CWindow *const pWindow = n < WINDOWS ? m_apWindows[n].get() : nullptr;
            CControlBase *const pControl = n < WINDOWS ? nullptr : m_apControls[n - WINDOWS].get();
            if ((ucKind & 4 && pWindow && pWindow->GetID() == lWindow) ||
                (!(ucKind & 4) && pControl && pControl->GetID() == lCntrl))
                return Delete(n);
        }
        if (lWindow == 50)
            std::unique_ptr<CDialog>(std::move(m_pDialog));
    }

    // Half of all callbacks do nothing.
    void Maybe()
    {
        if (!m_bQuiet && m_Next() % 2)
            Act();
    }

    CWindow *Window() { return m_apWindows[m_Next() % WINDOWS].get(); }
    CControlBase *Control() { return m_apControls[m_Next() % CONTROLS].get(); }
    xlong Near() { return (xlong)(m_Next() % 160) - 20; }

    void Delete(int nObject)
    {
        // The pointer is gone before the destructor runs.
        if (nObject < WINDOWS)
            std::unique_ptr<CWindow>(std::move(m_apWindows[nObject]));
        else
            std::unique_ptr<CControlBase>(std::move(m_apControls[nObject - WINDOWS]));
    }

    void NewWindow()
    {
        std::unique_ptr<CWindow> &pSlot = m_apWindows[m_Next() % WINDOWS];
        if (pSlot)
            return;
        pSlot = std::make_unique<CWindow>();
        static const xlong s_Flags[] = { XWIN_TITLEBAR | XWIN_DRAG | XWIN_CLOSE | XWIN_FRAME,
                                         XWIN_FRAME | XWIN_ALPHA,
                                         XWIN_MODAL | XWIN_FRAME | XWIN_BORDER | XWIN_TITLEBAR,
                                         XWIN_ALWAYSLAST,
                                         XWIN_ZORDERFIRST | XWIN_ZORDER | XWIN_ZORDERLAST | XWIN_TITLEBAR,
                                         XWIN_HIGHLIGHTIFINACTIVE | XWIN_DRAG | XWIN_TITLEBAR };
        CWindow *const pWindow = pSlot.get();
        pWindow->Create(1 + (xlong)(m_Next() % 6), m_szText, Near(), Near(), 120 + Near(), 100 + Near(),
                        s_Flags[m_Next() % 6]);
        glb->m_pWinCtrl->AddWindow(pWindow, OnMessage, this);
    }

    void NewControl()
    {
        std::unique_ptr<CControlBase> &pSlot = m_apControls[m_Next() % CONTROLS];
        if (pSlot)
            return;
        const xlong lID = 10 + (xlong)(m_Next() % 30), lX = Near() / 2, lY = Near() / 2, lWidth = 30 + m_Next() % 80,
                    lHeight = 20 + m_Next() % 40;
        const short sKey = (short)('a' + m_Next() % 3);
        static const xlong s_Flags[] = { 0, CNTRL_TABSTOP, CNTRL_TRANSPARENT, CNTRL_ALPHA, CNTRL_EXTRUDED };
        const xlong lFlags = s_Flags[m_Next() % 5];
        CWindow *const pWindow = Window();
        switch (m_Next() % 11)
        {
        case 9:
        case 10: // radio buttons are what hangs together most
        case 3:
        case 4:
        {
            auto p = std::make_unique<CRadiobutton>();
            p->Create(lID, m_szText, lX, lY, lWidth, lHeight, m_Next() % 2 ? 12 : 0, sKey, lFlags);
            pSlot = std::move(p);
            for (const auto &pOther : m_apControls)
                if (CGroupbox *pGroup = dynamic_cast<CGroupbox *>(pOther.get()))
                {
                    pGroup->Add((CRadiobutton *)pSlot.get());
                    return;
                }
            break;
        }
        case 0:
        case 1:
        {
            auto p = std::make_unique<CButton>();
            p->Create(lID, m_szText, lX, lY, lWidth, lHeight, sKey, lFlags);
            pSlot = std::move(p);
            break;
        }
        case 2:
        {
            auto p = std::make_unique<CCheckbox>();
            p->Create(lID, m_szText, lX, lY, lWidth, lHeight, m_Next() % 2 ? 12 : 0, sKey, lFlags);
            pSlot = std::move(p);
            break;
        }
        case 5:
        {
            auto p = std::make_unique<CGroupbox>();
            p->Create(lID, m_szText, lX, lY, lWidth, lHeight + 40, lFlags);
            pSlot = std::move(p);
            break;
        }
        case 6:
        {
            auto p = std::make_unique<CStatic>();
            p->Create(m_szText, lX, lY, lWidth, lHeight, (xulong)lFlags);
            pSlot = std::move(p);
            break;
        }
        case 7:
        {
            auto p = std::make_unique<CScrollText>();
            p->Create(m_szText, lX, lY, m_Next() % 3 ? lWidth : m_Next() % 3, m_Next() % 3 ? lHeight : m_Next() % 3, 2,
                      lFlags);
            p->Start(20);
            pSlot = std::move(p);
            break;
        }
        default:
        {
            auto p = std::make_unique<CFrame>();
            if (pWindow)
                p->Create(m_szText, lWidth, lHeight, pWindow);
            pSlot = std::move(p);
        }
        }
        if (pWindow && lID % 8)
            pWindow->AddCntrl(pSlot.get());
    }

    void Act()
    {
        if (m_nActs >= 6)
            return;
        ++m_nActs;
        ActOnce();
        --m_nActs;
    }

    void ActOnce()
    {
        CWinCtrl &manager = *glb->m_pWinCtrl;
        CWindow *const pWindow = Window();
        CControlBase *const pControl = Control();
        switch (m_Next() % 30)
        {
        case 0:
        case 1:
        case 2:
            NewWindow();
            break;
        case 3:
        case 4:
        case 5:
        case 6:
            NewControl();
            break;
        case 7:
            Delete(m_Next() % WINDOWS);
            break;
        case 8:
        case 9:
            Delete(WINDOWS + m_Next() % CONTROLS);
            break;
        case 10:
            if (pControl && pControl->m_pWindow)
                pControl->m_pWindow->RemoveCntrl(pControl);
            break;
        case 11:
            if (pWindow)
                m_Next() % 2 ? manager.RemoveWindow(pWindow->GetID()) : manager.TakeWindow(pWindow);
            break;
        case 12:
            if (pWindow)
                m_Next() % 2 ? pWindow->HideWindow() : pWindow->ShowWindow();
            break;
        case 13:
            if (pWindow)
                m_Next() % 2 ? pWindow->SetPos(Near(), Near()) : pWindow->SetSize(40 + Near(), 40 + Near());
            break;
        case 14:
            if (pControl)
                m_Next() % 2 ? pControl->SetPos(Near(), Near()) : pControl->SetSize(20 + Near(), 20 + Near());
            break;
        case 15:
            if (pWindow)
                pWindow->ToFront();
            break;
        case 16:
            if (pControl)
                pControl->SetState(1 + m_Next() % 7);
            break;
        case 17:
            if (pWindow)
                pWindow->Enable(m_Next() % 2);
            break;
        case 18:
            if (pWindow)
                pWindow->SetFocus(pControl && pControl->m_pWindow == pWindow ? pControl : nullptr);
            break;
        case 19:
        case 20:
            if (m_nDepth < DEEPEST && !m_nInside)
                Frame();
            break;
        case 21:
            if (m_Next() % 8 == 0)
                manager.RemoveAll();
            break;
        case 22:
            if (pWindow)
                pWindow->Destroy();
            break;
        case 23: // once more, or again
            if (pWindow)
                manager.AddWindow(pWindow, OnMessage, this);
            break;
        case 24:
            if (CRadiobutton *pRadio = dynamic_cast<CRadiobutton *>(pControl))
                if (pRadio->m_pGroup)
                    pRadio->m_pGroup->Remove(pRadio);
            break;
        case 25:
            if (m_pDialog)
                std::unique_ptr<CDialog>(std::move(m_pDialog));
            else
            {
                m_pDialog = std::make_unique<CDialog>();
                m_pDialog->Create(&m_Resources, 50, OnMessage, 0, this);
            }
            break;
        case 26:
            m_Ticker.pChaos = this;
            m_Next() % 2 ? (void)m_Ticker.AddTimer(20 + m_Next() % 3) : m_Ticker.RemoveAllTimers();
            break;
        case 28:
            manager.SetOptions(m_Next());
            break;
        case 29:
            if (m_Next() % 16 == 0 && !m_nInside)
                ChangeMode(m_Next());
            break;
        case 27:
            if (CGroupbox *pGroup = dynamic_cast<CGroupbox *>(pControl))
                pGroup->SetSelected(10 + m_Next() % 30);
            break;
        }
    }

    std::function<unsigned char()> m_Next;
    std::function<void()> m_Tick;
    CResData m_Resources;
    std::unique_ptr<CWindow> m_apWindows[WINDOWS];
    std::unique_ptr<CControlBase> m_apControls[CONTROLS];
    std::unique_ptr<CDialog> m_pDialog;
    TTicker m_Ticker;
    int m_nDepth = 0, m_nActs = 0, m_nInside = 0;
    bool m_bQuiet = false;
    std::unique_ptr<TSink> m_pSink = std::make_unique<TSink>(this);
    xlong m_lX = 0, m_lY = 0;
    char m_szText[16] = "Chaos text";
};
