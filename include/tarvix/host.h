#pragma once

#include "tarvix/alpha.h"
#include "tarvix/bitmap.h"
#include "tarvix/error.h"
#include "tarvix/globals.h"
#include "tarvix/mouse.h"
#include "tarvix/replay.h"
#include "tarvix/screen.h"
#include "tarvix/start.h"
#include "tarvix/winctrl.h"

#include <stdio.h>
#include <string.h>

#ifdef _WIN32
extern "C" __declspec(dllimport) HINSTANCE __stdcall GetModuleHandleA(const char *pszName);
#endif

/// Start-up and shut-down of a host, made ready: the constructor stores the
/// three variables and runs the steps in their order, SetMode chooses a mode,
/// and the destructor undoes everything. One at a time, on one thread.
///
///     CTarvixHost host("Minimal");
///     if (!host.SetMode(640, 480, 16))
///         return host.Fail();
///     while (host.Frame())
///         host.Screen()->FillRect(...);
class CTarvixHost
{
public:
    /// @param pszName     window title, below 160 characters
    /// @param pszOptions  debug option file, or null
    explicit CTarvixHost(const char *pszName, const char *pszOptions = nullptr) : m_bReady(false), m_bGui(false)
    {
#ifdef _WIN32
        ThisInstance = GetModuleHandleA(nullptr);
#endif
        glb = new SGlobals;
        sglb = new SSysGlobals;
        if (!xCreateGlobals())
            return;
        if (pszOptions)
            xGetDebugOptions(pszOptions, nullptr);
        SetApplicationName(pszName);
        SetUpdateTime(10);
        SetMinimumFrameTime(16); // milliseconds; 0 makes frames as fast as they come
        m_bReady = xInit(0, nullptr) != 0;
    }

    CTarvixHost(const CTarvixHost &) = delete;
    CTarvixHost &operator=(const CTarvixHost &) = delete;

    ~CTarvixHost()
    {
        m_Replay.Stop();
        if (glb->m_pScreen)
            glb->m_pScreen->ExitMode();
        glb->m_pScreen = nullptr;
        xExit();
        DeleteShade();
        xFreeGlobals();
        delete sglb;
        delete glb;
        sglb = nullptr;
        glb = nullptr;
    }

    /// 1 after a complete start.
    bool IsReady() const
    {
        return m_bReady;
    }

    /// Starts a mode on the first screen that has it, with the persistent
    /// buffer in use and the shade tables of its depth; then the mouse and the
    /// window manager.
    /// At 8 bits the picture begins with greys from 0 to 255; see SetPalette.
    /// @param lWidth   1 to 32767, as lHeight; the desktop has to have the room
    /// @param lDepth   8, 16 or 24
    /// @param lKind    XMODE_..., or -1 for any
    /// @return false with the error stored
    bool SetMode(xlong lWidth, xlong lHeight, xlong lDepth, xlong lKind = XMODE_WINDOW)
    {
        if (!m_bReady)
            return false;
        if (glb->m_pScreen)
        {
            glb->m_pScreen->ExitMode();
            glb->m_pScreen->GetVideoModes();
            glb->m_pScreen = nullptr;
        }
        glb->m_Error.Clear();
        CScreenBaseList *pScreens = glb->m_pScreenList;
        for (pScreens->First(); pScreens->Exists(); pScreens->Next())
        {
            CScreenBase *pScreen = pScreens->Get();
            if (lKind == XMODE_WINDOW)
                OfferMode(*pScreen, lWidth, lHeight, lDepth);
            if (pScreen->InitModeRez(lWidth, lHeight, lDepth, lKind) &&
                pScreen->SetScreenWindowProperties(XWINDOW_CAPTION | XWINDOW_THICK_FRAME, -1, -1))
            {
                glb->m_pScreen = pScreen;
                pScreen->SetSystemPalette();
                return MakeTables() && pScreen->SetPersistentMode(1) && StartGui();
            }
        }
        if (!glb->m_Error.GetErrCode())
            xErrorTxt("There is no such mode.");
        return false;
    }

    /// The colours of an 8-bit picture, on the screen at once: what indexes that
    /// stand there show changes with them.
    /// @param palette  cloned
    void SetPalette(CPalette &palette) const
    {
        glb->m_pScreen->SetPalette(&palette);
        glb->m_pScreen->SetSystemPalette();
    }

    CScreenBase *Screen() const
    {
        return glb->m_pScreen;
    }

    /// Runs one frame. @return false when the user wants to quit
    bool Frame() const
    {
        return xHandler() == 0 && !xDoUserWantToQuit();
    }

    /// Lets a recording take the user's place, from the next frame on and until
    /// IsPlaying is false. Behind SetMode and before windows are made; see replay.h.
    /// @param bRealTime  false runs as fast as the frames come
    /// @return false with the error stored
    bool Play(const char *pszFile, bool bRealTime = false)
    {
        return m_Replay.Play(pszFile, bRealTime) != 0;
    }

    /// The same with the text of a recording.
    /// @param pszName  for error texts
    bool PlayText(const char *pszText, const char *pszName, bool bRealTime = false)
    {
        return m_Replay.PlayText(pszText, (xulong)strlen(pszText), pszName, bRealTime) != 0;
    }

    /// Starts to keep what the user does, under the same conditions as Play.
    bool Record(const char *pszFile)
    {
        return m_Replay.Record(pszFile) != 0;
    }

    bool IsPlaying() const
    {
        return m_Replay.IsPlaying() != 0;
    }

    /// Ends either; the destructor does it too, but can't tell of a recording
    /// that is not complete.
    /// @return false with the error stored
    bool StopReplay()
    {
        return m_Replay.Stop() != 0;
    }

    /// Writes the picture with all that stands on it at a frame's end to a file,
    /// of the kind that its name says: with its palette, or at 24 bits. It
    /// flips the page for that, so it belongs between two frames.
    /// @return false with the error stored, or without a mode
    bool SaveShot(const char *pszFile) const
    {
        CScreenBase *const pScreen = glb->m_pScreen;
        if (!pScreen || !pScreen->GetActiveMode())
            return false;
        pScreen->FlipPage();
        const SVmode &mode = *pScreen->GetActiveMode();
        CBitmap shot;
        if (!(mode.lIndexed ? shot.CreateIndex(mode.lWidth, mode.lHeight, 8, pScreen->GetPalette(), 0)
                            : shot.CreateRGB(mode.lWidth, mode.lHeight, mode.lDepth, mode.lRedBits, mode.lGreenBits,
                                             mode.lBlueBits, mode.lRedShift, mode.lGreenShift, mode.lBlueShift, 0)))
            return xError(XERR_MEMORY) != 0;
        const unsigned char *const pBits = pScreen->LockScreenBuffer();
        if (!pBits)
            return false;
        const xlong lBytes = mode.lWidth * mode.lDepth / 8;
        for (xlong y = 0; y < mode.lHeight; ++y)
            memcpy(shot.m_pData + (size_t)y * shot.m_lPitch, pBits + (size_t)y * mode.lRowBytes, (size_t)lBytes);
        pScreen->ReleaseScreenBuffer();
        if (!mode.lIndexed && !shot.ConvertRGB(-1, -1, 24, 8, 8, 8, 0, 8, 16, XBMP_NO_KEY_PASS))
            return false;
        return shot.Save(pszFile, nullptr, nullptr, nullptr, 0) != 0;
    }

    /// The last error's text; never null.
    const char *Error() const
    {
        const char *pszText = glb->m_Error.GetErrCode() ? glb->m_Error.GetError(nullptr) : nullptr;
        return pszText ? pszText : "The library could not start.";
    }

    /// Writes the last error to standard error. @return 1, for main to return
    int Fail() const
    {
        fprintf(stderr, "%s: %s\n", GetApplicationName(), Error());
        return 1;
    }

private:
    // A machine without a mouse has windows all the same.
    bool StartGui()
    {
        if (glb->m_pMouse)
            glb->m_pMouse->Init();
        if (!m_bGui && glb->m_pWinCtrl && glb->m_pWinCtrl->Create())
        {
            m_bGui = true;
            glb->m_pWinCtrl->SetOptions(XGUIOPT_ALL);
        }
        return m_bGui;
    }

    // Beside the usual sizes a window may have any.
    static void OfferMode(CScreenBase &screen, xlong lWidth, xlong lHeight, xlong lDepth)
    {
        for (const CNode *pNode = screen.m_Modes.m_pFirst; pNode; pNode = pNode->pNext)
        {
            const SVmode &mode = *(const SVmode *)pNode->pData;
            if (mode.lWidth == lWidth && mode.lHeight == lHeight && mode.lDepth == lDepth && mode.lKind == XMODE_WINDOW)
                return;
        }
        screen.AddWindowVideoMode(lWidth, lHeight, lDepth, -1);
    }

    bool MakeTables() const
    {
        const SVmode &mode = *glb->m_pScreen->GetActiveMode();
        if (mode.lDepth == 24)
            PreCalcShade24();
        if (mode.lDepth != 16)
            return true;
        return Set16Bit((unsigned short)mode.lRedShift, (unsigned short)(8 - mode.lRedBits),
                        (unsigned short)mode.lGreenShift, (unsigned short)(8 - mode.lGreenBits),
                        (unsigned short)mode.lBlueShift, (unsigned short)(8 - mode.lBlueBits)) &&
               MakeShadeCube();
    }

    // DeleteShade leaves the mark of a built cube, which would keep the next one away.
    bool MakeShadeCube() const
    {
        if (!glb->m_pShadeCube)
            glb->m_bShadeDone = 0;
        return PreCalcShade() != 0;
    }

    bool m_bReady;
    bool m_bGui; ///< the window manager listens to the frame
    CReplay m_Replay;
};
