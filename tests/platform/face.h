// A desktop in memory for the tests of windows and drawing.
#pragma once

#include "platform/testing/testface.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

class CFaceTest : public testing::Test
{
protected:
    CFaceTest() { EXPECT_TRUE(FaceStart(&m_Desktop)); }

    ~CFaceTest() override
    {
        FaceStop();
        UnregisterClassA("FaceTest", nullptr);
        s_pTest = nullptr;
    }

    /// A hidden window whose messages are kept in m_Log.
    HWND Open(DWORD ulStyle, int nX, int nY, int nWidth, int nHeight, UINT ulClassStyle = CS_OWNDC);
    /// Open, ShowWindow, UpdateWindow, and an empty log.
    HWND OpenShown(DWORD ulStyle, int nX, int nY, int nWidth, int nHeight, UINT ulClassStyle = CS_OWNDC);
    /// Hands out what is queued.
    void Run();
    /// Names of the messages that arrived since the last call, the dull ones left out.
    std::string TakeLog();

    virtual LRESULT Handle(HWND hWnd, UINT ulMsg, WPARAM wParam, LPARAM lParam)
    {
        return DefWindowProcA(hWnd, ulMsg, wParam, lParam);
    }

    static LRESULT CALLBACK Proc(HWND hWnd, UINT ulMsg, WPARAM wParam, LPARAM lParam);

    TFaceDesktop m_Desktop = { 800, 600, 32 };
    std::vector<MSG> m_Messages; ///< all that arrived
    std::string m_Log;
    static CFaceTest *s_pTest;
};

inline std::string Text(const RECT &rc)
{
    return std::to_string(rc.left) + "," + std::to_string(rc.top) + "," + std::to_string(rc.right) + "," +
           std::to_string(rc.bottom);
}

inline uint32_t ShownPixel(HWND hWnd, int nX, int nY)
{
    int nWidth, nHeight;
    const uint32_t *pPixels = FaceShownPixels(hWnd, &nWidth, &nHeight);
    return pPixels && nX < nWidth && nY < nHeight ? pPixels[nY * nWidth + nX] & 0xFFFFFF : 0xDEAD0000;
}
