#include "tarvix/globals.h"

#include "core/debug.h"

#include <string.h>

HINSTANCE ThisInstance = nullptr;
SGlobals *glb = nullptr;
SSysGlobals *sglb = nullptr;

namespace
{
// Diagonal order of the coefficients of a block; the last 16 entries catch
// runs that lead past its end.
const unsigned char s_JpegOrder[80] = {
    0,  1,  8,  16, 9,  2,  3,  10, 17, 24, 32, 25, 18, 11, 4,  5,  12, 19, 26, 33, 40, 48, 41, 34, 27, 20, 13,
    6,  7,  14, 21, 28, 35, 42, 49, 56, 57, 50, 43, 36, 29, 22, 15, 23, 30, 37, 44, 51, 58, 59, 52, 45, 38, 31,
    39, 46, 53, 60, 61, 54, 47, 55, 62, 63, 63, 63, 63, 63, 63, 63, 63, 63, 63, 63, 63, 63, 63, 63, 63, 63,
};
} // namespace

SSysGlobals::SSysGlobals()
    : m_pJPGPic(nullptr), m_pBMPPic(nullptr), m_pDibScreen(nullptr), m_pDxScreen(nullptr), m_hWnd(nullptr),
      m_hDC(nullptr), m_atomClass(0), m_pWinMsgList(nullptr), m_lSocketsStarted(0), m_pMusic(nullptr)
{
}

SGlobals::SGlobals()
{
    // Everything but the error object, whose table pointer must stay, is data.
    memset((void *)this, 0, (size_t)((char *)&m_Error - (char *)this));
    char *pBehindError = (char *)&m_Error + sizeof(m_Error);
    memset(pBehindError, 0, (size_t)((char *)(this + 1) - pBehindError));
    m_Error.m_pszErrorTxt = nullptr;
    m_Error.Clear();

    strcpy(m_szApplicationName, "Noname");
    m_pfnDbgStdOut = DebugStdOut;
    m_pfnDbgLvlOut = DebugLevelOut;
    for (int i = 0; i < 80; ++i)
        m_ausJpegOrder[i] = s_JpegOrder[i];
}
