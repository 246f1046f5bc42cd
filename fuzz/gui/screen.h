// A small screen in memory with the window manager on it.
#pragma once

#include "platform/testing/testface.h"
#include "tarvix/dibscreen.h"
#include "tarvix/globals.h"
#include "tarvix/start.h"
#include "tarvix/winctrl.h"

#include <sanitizer/lsan_interface.h>
#include <stdlib.h>

/// Once, behind FuzzStart.
inline void StartScreen()
{
    if (glb->m_pScreen)
        return;
    // A link that is clicked finds no browser.
    setenv("PATH", "/none", 1);
    // What is made here stays, held by the library's own heap, which is not searched for pointers.
    const __lsan::ScopedDisabler keep;
    const TFaceDesktop desktop = { 800, 600, 32 };
    if (!FaceStart(&desktop) || !xInit(0, nullptr))
        abort();
    CDibScreen *const pScreen = sglb->m_pDibScreen;
    if (!pScreen->AddWindowVideoMode(120, 90, 24, -1) || !pScreen->InitModeRez(120, 90, 24, XMODE_WINDOW) ||
        !pScreen->SetScreenWindowProperties(3, -1, -1) || !pScreen->SetPersistentMode(1))
        abort();
    glb->m_pScreen = pScreen;
    if (!glb->m_pWinCtrl->Create())
        abort();
}
