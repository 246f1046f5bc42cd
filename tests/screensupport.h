// A running library with a screen for one test: on the platform layer's test
// face where there is one, elsewhere with a real window.
#pragma once

#include "support.h"
#include "tarvix/alpha.h"
#include "tarvix/dibscreen.h"

#ifndef _WIN32
#include "platform/testing/testface.h"
#endif

#include <random>

class CScreenTest : public CFolderTest
{
protected:
    explicit CScreenTest(int nWidth = 1280, int nHeight = 1024)
    {
#ifndef _WIN32
        const TFaceDesktop desktop = { nWidth, nHeight, 32 };
        EXPECT_TRUE(FaceStart(&desktop));
#else
        std::filesystem::copy_file(m_Old / "msvcrt.dll", "msvcrt.dll"); // the start looks for it here
#endif
        EXPECT_EQ(1, xInit(0, nullptr)) << LastError();
        SetUpdateTime(10);
    }

    ~CScreenTest() override
    {
        if (Screen())
            Screen()->ExitMode();
        glb->m_pScreen = nullptr;
        xExit();
        DeleteShade();
#ifndef _WIN32
        FaceStop();
#endif
    }

    /// Starts a mode with persistent buffer and shade tables.
    void SetMode(xlong lWidth, xlong lHeight, xlong lDepth, xlong lKind = XMODE_WINDOW)
    {
        if (glb->m_pScreen)
        {
            Screen()->ExitMode();
            Screen()->GetVideoModes();
        }
        ASSERT_EQ(1, Screen()->InitModeRez(lWidth, lHeight, lDepth, lKind)) << LastError();
        ASSERT_EQ(1, Screen()->SetScreenWindowProperties(3, -1, -1)) << LastError();
        glb->m_pScreen = Screen();
        ASSERT_EQ(1, Screen()->SetPersistentMode(1));
        if (lDepth == 16)
        {
            Set16Bit(10, 3, 5, 3, 0, 3);
            if (!glb->m_pShadeCube)
                glb->m_bShadeDone = 0;
            ASSERT_EQ(1, PreCalcShade());
        }
        if (lDepth == 24)
            PreCalcShade24();
        xHandler();
        xHandler();
    }

    static CDibScreen *Screen()
    {
        return sglb->m_pDibScreen;
    }
    static const SVmode &Mode()
    {
        return *Screen()->GetActiveMode();
    }

    /// The frame buffer's bytes.
    static std::vector<unsigned char> Frame()
    {
        const unsigned char *pBits = Screen()->LockScreenBuffer();
        return std::vector<unsigned char>(pBits, pBits + (size_t)Mode().lRowBytes * Mode().lHeight);
    }

    /// Fills the frame buffer, and the returned copy, with a fixed pattern.
    static std::vector<unsigned char> FillFrame(unsigned uSeed)
    {
        std::mt19937 random(uSeed);
        std::vector<unsigned char> bytes((size_t)Mode().lRowBytes * Mode().lHeight);
        for (size_t i = 0; i < bytes.size(); ++i)
            bytes[i] = (unsigned char)random();
        if (Mode().lDepth == 16) // 15-bit colours
            for (size_t i = 1; i < bytes.size(); i += 2)
                bytes[i] &= 0x7f;
        memcpy(Screen()->LockScreenBuffer(), bytes.data(), bytes.size());
        return bytes;
    }
};

/// Where two frame buffers differ first, for a readable failure.
inline std::string FirstDifference(const std::vector<unsigned char> &a, const std::vector<unsigned char> &b,
                                   const SVmode &mode)
{
    if (a.size() != b.size())
        return "sizes";
    for (size_t i = 0; i < a.size(); ++i)
        if (a[i] != b[i])
            return "at " + std::to_string(i % mode.lRowBytes / mode.lBytesPerPixel) + ", " +
                   std::to_string(i / mode.lRowBytes) + ": " + std::to_string(a[i]) + " wanted, " +
                   std::to_string(b[i]) + " found";
    return "";
}
