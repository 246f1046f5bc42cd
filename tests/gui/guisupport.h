// A running GUI for one test: the manager, a font of blocks, and a log of what
// the host's callback hears. The mouse and the keys are the test's.
#pragma once

#include "screensupport.h"
#include "tarvix/bitmap.h"
#include "tarvix/font.h"
#include "tarvix/keyboard.h"
#include "tarvix/mouse.h"
#include "tarvix/winctrl.h"
#include "tarvix/window.h"

class CGuiTest : public CScreenTest
{
protected:
    explicit CGuiTest(xlong lDepth = 24)
    {
        SetMode(640, 480, lDepth);
        EXPECT_EQ(1, glb->m_pWinCtrl->Create()) << LastError();
        MakeFont();
        glb->m_pWinCtrl->SetDefaultFont(&m_Font);
        Mouse(600, 470, 0);
        glb->m_pKeyboard->Clear(3);
    }

    ~CGuiTest() override { glb->m_pWinCtrl->RemoveAll(); }

    /// Puts a window on the screen, with its messages in the log.
    void Show(CWindowBase &window)
    {
        ASSERT_EQ(1, glb->m_pWinCtrl->AddWindow(&window, Log, this));
        Frame();
        m_strLog.clear();
    }

    /// Where the pointer is and what it holds down, from the next frame on.
    static void Mouse(xlong lX, xlong lY, xlong lButtons)
    {
        glb->m_pMouse->m_lX = lX;
        glb->m_pMouse->m_lY = lY;
        glb->m_pMouse->m_ulButtons = (xulong)lButtons;
    }

    /// One frame, without the platform's queue.
    static void Frame()
    {
        Screen()->FlipPage();
        Screen()->ClearBuffer();
    }

    /// Moves the pointer, and a frame.
    static void Point(xlong lX, xlong lY, xlong lButtons = 0)
    {
        Mouse(lX, lY, lButtons);
        Frame();
    }

    /// Comes, presses, lets go.
    static void Click(xlong lX, xlong lY)
    {
        Point(lX, lY, 0);
        Point(lX, lY, 1);
        Point(lX, lY, 0);
    }

    /// A key goes down or up, and a frame.
    static void Key(unsigned short usKey, bool bDown = true)
    {
        CKeyboardBase &keyboard = *glb->m_pKeyboard;
        keyboard.m_aQueue[keyboard.m_sQueueWrite] = { usKey, bDown ? XKEYF_DOWN : 0 };
        keyboard.m_sQueueWrite = (short)((keyboard.m_sQueueWrite + 1) % 128);
        Frame();
    }

    /// "message:window:control " for each message since the last call.
    std::string TakeLog()
    {
        std::string str;
        str.swap(m_strLog);
        if (!str.empty())
            str.pop_back();
        return str;
    }

    /// The message numbers alone, all of which must come from one sender, ":window:control".
    std::string TakeMessages(const std::string &strSender)
    {
        std::string str = TakeLog();
        for (size_t n; (n = str.find(strSender)) != std::string::npos;)
            str.erase(n, strSender.size());
        EXPECT_EQ(std::string::npos, str.find(':')) << str;
        return str;
    }

    static TRGBA Shown(xlong lX, xlong lY)
    {
        const unsigned char *p =
            Screen()->LockScreenBuffer() + (size_t)lY * Mode().lRowBytes + (size_t)lX * Mode().lBytesPerPixel;
        return TRGBA(p[2], p[1], p[0]);
    }

    static void Log(xlong lMsg, xlong lWindow, xlong lCntrl, xparam lP3, void *pUser)
    {
        CGuiTest *const pTest = lMsg == XGUIMSG_KEY ? s_pTest : (CGuiTest *)pUser;
        pTest->m_strLog += std::to_string(lMsg) + ":" + std::to_string(lWindow) + ":" + std::to_string(lCntrl) + " ";
    }

    void MakeFont()
    {
        // Printable codes are 5 by 8 blocks with a gap of 1; the key is the first pixel.
        m_Picture.CreateRGB(8, 9, 24, 8, 8, 8, 16, 8, 0, 0);
        m_Picture.m_rcClip.Set(0, 0, 7, 8);
        const TRGBA White(255, 255, 255);
        for (xlong y = 1; y < 9; ++y)
            for (xlong x = 1; x < 6; ++x)
                m_Picture.PutPixel(x, y, &White);
        Screen()->MakeScreenFormat(&m_Picture, 1);
        TCharData cells[95];
        for (TCharData &cell : cells)
            cell = { 1, 1, 5 };
        cells[94].sWidth = -1;
        m_Font.SetFont(&m_Picture, cells, 33, 8, 1);
    }

    static inline CGuiTest *s_pTest = nullptr;
    std::string m_strLog;
    CBitmap m_Picture;
    CFont m_Font;
};
