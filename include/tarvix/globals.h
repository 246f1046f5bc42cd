#pragma once

#include "tarvix/error.h"
#include "tarvix/start.h"
#include "tarvix/types.h"

class CAvlBinaryTree;
class CBMPPic;
class CButton;
class CDibScreen;
class CDxScreen;
class CJPGPic;
class CKeyboardBase;
class CLList;
class CMemory;
class CMilesMusic;
class CMouseBase;
class CObjPool;
class CPicTypeList;
class CScreenBase;
class CScreenBaseList;
class CStatic;
class CWinCtrl;
class CWindow;

/// Table of one CRC polynomial.
struct TCrcTable
{
    xulong ulEntries[256];
    xulong ulPoly; ///< 0 means not built
};

/// The platform record. The host makes and owns it; the library fills it.
struct TARVIX_API SSysGlobals
{
    SSysGlobals();
    SSysGlobals(const SSysGlobals &) = default;
    SSysGlobals &operator=(const SSysGlobals &) = default;

    CJPGPic *m_pJPGPic;
    CBMPPic *m_pBMPPic;
    CDibScreen *m_pDibScreen; ///< null when it is not available
    CDxScreen *m_pDxScreen;   ///< null when it is not available
    HWND m_hWnd;              ///< the one top-level window
    HDC m_hDC;                ///< of that window
    unsigned short m_atomClass;
    CLList *m_pWinMsgList;   ///< of TWinMsgSink, made on first use
    xlong m_lSocketsStarted; ///< set by a host that started sockets: xExit then cleans up
    CMilesMusic *m_pMusic;   ///< its Ticker runs every frame
};

/// The portable record: every shared table and object of the library. The host
/// makes and owns it and may read any member; it is large (over 1 MB), so it
/// belongs on the heap.
struct TARVIX_API SGlobals
{
    SGlobals();
    SGlobals(const SGlobals &) = default;
    SGlobals &operator=(const SGlobals &) = default;

    char m_szApplicationName[160];
    void (*m_pfnDbgStdOut)(const char *);
    void (*m_pfnDbgLvlOut)(const char *);
    xlong m_lStdDebug;
    xlong m_lDebugLevel; ///< mask of DBGL_...
    CKeyboardBase *m_pKeyboard;
    CMouseBase *m_pMouse;
    unsigned short m_ausJpegOrder[80]; ///< zig-zag order and 16 guard entries of 63
    void *m_pJpegRangeBlock;
    void *m_pJpegRange;
    xlong m_lJpegUsers;
    CError m_Error;
    char m_szErrorBuffer[2048];
    CMemory *m_pMemory;
    CPicTypeList *m_pPicTypeList;
    CScreenBaseList *m_pScreenList;
    CWinCtrl *m_pWinCtrl;
    CLList *m_pMsgSinkList; ///< of TMsgSink, made on first use
    CLList *m_pSpareList;
    void *m_pReserved1;
    unsigned char *m_pColourIndexMap; ///< 32,768 bytes: palette index of each 15-bit colour
    unsigned short *m_pusSquares;     ///< entry i is i * i
    CScreenBase *m_pScreen;           ///< the current screen; only the host writes it
    unsigned short m_ausPixelMap[256];
    xlong m_lReserved2[5];
    CLList *m_pSpareList2;
    CWindow *m_pMsgBoxWindow;
    CStatic *m_pMsgBoxText;
    CButton *m_pMsgBoxButton;
    xlong m_lMsgBoxResult;
    xlong m_lMinimumFrameTime; ///< milliseconds
    xlong m_lUpdateTime;       ///< milliseconds
    float m_fUpdateRemainder;  ///< milliseconds
    xlong m_lUpdateCount;      ///< update steps that the last frame earned
    xlong m_lReserved3[2];
    xulong m_ulLastFrameTime; ///< milliseconds
    unsigned char m_ucReserved4[128];
    unsigned char m_ucReserved5[32];
    CLList *m_pActiveTimers;  ///< of TTimerEntry
    CLList *m_pPendingTimers; ///< of TTimerPending

    // Format of the 16-bit screen and the shade tables, see alpha.h.
    unsigned short m_uRedShift;
    unsigned short m_uRedLoss;
    unsigned short m_uGreenShift;
    unsigned short m_uGreenLoss;
    unsigned short m_uBlueShift;
    unsigned short m_uBlueLoss;
    unsigned short *m_pIndexToScreen;       ///< 32,768 words
    unsigned short *m_pShadeCube;           ///< 96 * 96 * 96 words
    unsigned short *m_ShadePointers[65536]; ///< into m_pShadeCube
    unsigned short m_BrightCube[64 * 64 * 64];
    unsigned short *m_BrightPointers[65536]; ///< into m_BrightCube
    unsigned short m_ShadowTable[65536];
    xlong m_ShadeStepRed[32];
    xlong m_ShadeStepGreen[32];
    xlong m_ShadeStepBlue[32];
    xlong m_ShadeStepAll[32];
    unsigned short m_bShadeDone;
    unsigned char m_ClampTable[768];

    TCrcTable m_CrcFile;   ///< of xCalcFileCrc
    TCrcTable m_CrcBuffer; ///< of xCalcCrc
    unsigned char m_ucReserved6[6];
    xlong m_lReserved7[2];
    unsigned char m_bEndian; ///< 0 unknown, 1 big-endian, 2 little-endian
    unsigned char m_bUserWantToQuit;
    unsigned char m_bNoValidate;
    unsigned char m_ulUIDState[5];
    void (*m_pfnLoadData)();
    unsigned char globalVars[4096];
    xlong m_lDebugScreen;
    xlong m_lXHandlerWaitMode;
    xlong m_lReserved8[6];
    const char *m_pszNewFile; ///< place of the new or delete that is under way
    xlong m_lNewLine;
    xlong m_bXHandlerMaxWaitSet;
    xlong m_lXHandlerMaxWait; ///< milliseconds
    CLList *m_pObjPoolList;   ///< pools that the pump serves
    CObjPool *m_pListNodePool;
    xlong m_lReserved9;
    CObjPool *m_pAvlNodePool;
    xlong m_lReserved10;
    void (*m_pfnWaitTimeOrSockets)(xulong ulTime);
};
