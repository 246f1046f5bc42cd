#include "tarvix/dibscreen.h"

#include "core/heap.h"
#include "screensupport.h"
#include "tarvix/llist.h"
#include "tarvix/pictype.h"

#include <array>

using CDibScreenTest = CScreenTest;

TEST_F(CDibScreenTest, ListsEighteenModes)
{
    static const xlong s_lModes[9][5] = {
        { 640, 480, 24, 13, 18 }, { 640, 480, 16, 14, 17 },  { 640, 480, 8, 15, 16 },
        { 800, 600, 8, 19, 20 },  { 800, 600, 16, 21, 22 },  { 800, 600, 24, 23, 24 },
        { 1024, 768, 8, 25, 26 }, { 1024, 768, 16, 27, 28 }, { 1024, 768, 24, 29, 30 },
    };
    CDibScreen &s = *Screen();
    ASSERT_EQ(18, s.m_Modes.GetNumNodes());
    s.ModeFirst();
    for (int n = 0; n < 18; ++n, s.ModeNext())
    {
        ASSERT_NE(0, s.ModeExists());
        const xlong *plWanted = s_lModes[n / 2];
        const SVmode &mode = *s.ModeGet();
        char szName[64];
        snprintf(szName, sizeof(szName), "Windows %ld*%ld %ldbit", (long)plWanted[0], (long)plWanted[1],
                 (long)plWanted[2]);
        SCOPED_TRACE(szName);
        EXPECT_STREQ(szName, mode.szName);
        EXPECT_EQ(plWanted[0], mode.lWidth);
        EXPECT_EQ(plWanted[1], mode.lHeight);
        EXPECT_EQ(plWanted[2], mode.lDepth);
        EXPECT_EQ(plWanted[3 + n % 2], mode.lId);
        EXPECT_EQ(n % 2 ? XMODE_DESKTOP : XMODE_WINDOW, mode.lKind);
        EXPECT_EQ(mode.lWidth * mode.lDepth / 8, mode.lRowBytes);
    }
    EXPECT_EQ(1, s.AddWindowVideoMode(320, 200, 16, -1));
    EXPECT_EQ(1, s.AddWindowVideoMode(320, 200, 16, -1));
    EXPECT_EQ(1, s.AddWindowVideoMode(320, 200, 24, 7));
    EXPECT_EQ(0, s.AddWindowVideoMode(320, 200, 32, -1));
    std::vector<xlong> ids;
    for (int n = 18; n < 24; ++n)
        ids.push_back(((SVmode *)s.m_Modes.Get((xulong)n))->lId);
    EXPECT_EQ((std::vector<xlong>{ 1024, 1025, 1026, 1027, 7, 8 }), ids);
    EXPECT_EQ(0, s.InitModeRez(641, 480, 16, -1));
    EXPECT_EQ(1, s.AddWindowVideoMode(20000, 200, 16, -1));
    EXPECT_EQ(0, s.InitModeRez(20000, 200, 16, -1));
    EXPECT_EQ("CDibScreen::InitMode: Desktop is too small.", LastError());
}

TEST_F(CDibScreenTest, EveryModeStartsInBothKinds)
{
    for (xlong lKind : { XMODE_WINDOW, XMODE_DESKTOP })
    {
        for (xlong lWidth : { 640, 800, 1024 })
        {
            for (xlong lDepth : { 8, 16, 24 })
            {
                SetMode(lWidth, lWidth * 3 / 4, lDepth, lKind);
                SCOPED_TRACE(Mode().szName);
                EXPECT_EQ(lDepth, Mode().lDepth);
                EXPECT_EQ(-lWidth * 3 / 4, Screen()->m_pDib->GetHeight());
                EXPECT_EQ(lWidth - 1, Screen()->m_rcClip.m_lRight);
                EXPECT_EQ(0, Screen()->IsFullScreen());
                EXPECT_EQ(lDepth == 8 ? 256 : lDepth == 16 ? 65536 : 0, Screen()->m_pDib->GetNumColorEntries());
#ifndef _WIN32
                xlong lX, lY, lW, lH;
                Screen()->GetScreenPos(&lX, &lY, &lW, &lH);
                EXPECT_EQ(lKind == XMODE_DESKTOP ? 1280 : lW, lW);
                EXPECT_EQ(lKind == XMODE_WINDOW ? 0 : (1280 - lWidth) / 2, Screen()->m_lOffsetX);
#endif
            }
        }
    }
}

// Bits that the host draws reach the frame buffer for one frame, and what lies
// behind them comes back.
TEST_F(CDibScreenTest, ScreenDrawingLastsOneFrame)
{
    for (xlong lDepth : { 8, 16, 24 })
    {
        SetMode(640, 480, lDepth);
        SCOPED_TRACE(Mode().szName);
        CDibScreen &s = *Screen();
        CBitmap picture, sprite;
        picture.CreateRGB(640, 480, 24, 8, 8, 8, 0, 8, 16, 0);
        for (int i = 0; i < 640 * 480 * 3; ++i)
            picture.m_pData[i] = (unsigned char)(i * 13 + i / 640);
        ASSERT_EQ(1, s.MakeScreenBitmap(&picture, 2));
        EXPECT_EQ(1, picture.m_bOnSurface);
        s.DrawBitmapPersistent(&picture, 0, 0, 0, 0, -1, -1, 0, 0);
        xHandler();
        const std::vector<unsigned char> before = Frame();
        EXPECT_EQ(0, memcmp(before.data(), picture.m_pData, 640 * (size_t)Mode().lBytesPerPixel));

        sprite.CreateRGB(16, 16, 24, 8, 8, 8, 0, 8, 16, 0);
        TRGBA red(255, 0, 0);
        sprite.Fill(&red);
        s.DrawBitmapScreen(&sprite, 0, 0, 100, 100, -1, -1, 0, 0);
        EXPECT_NE("", FirstDifference(before, Frame(), Mode()));
        xHandler();
        EXPECT_EQ("", FirstDifference(before, Frame(), Mode()));

        // A sprite saves and restores on its own.
        CBitmap saved;
        s.MakeScreenFormat(&sprite, 2);
        saved.CreateRGB(16, 16, 24, 8, 8, 8, 0, 8, 16, 0);
        if (lDepth == 8)
            saved.CreateIndex(16, 16, 8, &s.m_Palette, 0);
        else
            s.MakeScreenFormat(&saved, 2);
        s.UpdateSpriteRestore(50, 60, 16, 16, 0, 0, &saved);
        s.DrawSpriteScreen(&sprite, 0, 0, 50, 60, -1, -1, 0, 0);
        EXPECT_NE("", FirstDifference(before, Frame(), Mode()));
        s.RestoreSpriteScreen(&saved, 50, 60, 16, 16);
        s.RestoreSpriteScreen(nullptr, 50, 60, 16, 16);
        EXPECT_EQ("", FirstDifference(before, Frame(), Mode()));
    }
}

TEST_F(CDibScreenTest, AnIdleFrameAllocatesNothing)
{
    SetMode(640, 480, 16);
    for (int n = 0; n < 3; ++n)
        xHandler();
    HeapFailAt(1);
    for (int n = 0; n < 10; ++n)
        EXPECT_EQ(0, xHandler());
    EXPECT_FALSE(HeapFailed());
    HeapFailAt(0);
}

TEST_F(CDibScreenTest, LeavingAModeKeepsOneRegistration)
{
    SetMode(640, 480, 16);
    CDibScreen &s = *Screen();
    // Leaving the mode keeps the registration for WM_SIZE alone.
    s.ExitMode();
    s.GetVideoModes();
    int nLeft = 0;
    CLList &list = *sglb->m_pWinMsgList;
    for (list.First(); list.Exists(); list.Next())
        nLeft += ((TWinMsgSink *)list.Get())->pSink == &s;
    EXPECT_EQ(1, nLeft);
    EXPECT_EQ(1, s.FlipPage()) << "without a mode a frame draws nothing";
    EXPECT_EQ(1, s.ClearBuffer());
    glb->m_pScreen = nullptr;
}

TEST_F(CDibScreenTest, PalettesOfEightBits)
{
    SetMode(640, 480, 8);
    CDibScreen &s = *Screen();
    EXPECT_EQ(255, s.m_Palette.m_ucLast);
    CPalette palette;
    for (int i = 0; i < 256; ++i)
        palette.m_Colors[i].Set((unsigned char)(255 - i), (unsigned char)(i / 2), 9);
    palette.m_ucFirst = palette.m_ucLast = 3;
    s.SetPalette(&palette);
    s.SetSystemPalette();
    EXPECT_EQ(0, s.m_Palette.m_ucFirst);
    EXPECT_EQ(255, s.m_Palette.m_ucLast);
    EXPECT_EQ(250, s.m_Palette.m_Colors[5].ucRed);
    ASSERT_TRUE(s.m_pDibPal);
#ifndef _WIN32
    // What the window shows has the palette's colours.
    memset(s.LockScreenBuffer(), 5, 640 * 480);
    s.AddClearAreaPersistent(0, 0, 639, 479);
    s.m_bPersistentMode = 0;
    s.FlipPage();
    UpdateWindow(sglb->m_hWnd);
    int nWidth, nHeight;
    const uint32_t *pShown = FaceShownPixels(sglb->m_hWnd, &nWidth, &nHeight);
    ASSERT_TRUE(pShown);
    EXPECT_EQ(0xFFFA0209u, pShown[100 * nWidth + 100]);
#endif
    SetMode(640, 480, 16);
    palette.m_Colors[5].Set(1, 1, 1);
    s.SetPalette(&palette);
    EXPECT_NE(1, s.m_Palette.m_Colors[5].ucRed) << "acts at 8 bits alone";
}

#ifndef _WIN32
namespace
{
// Pixels presented since the last call, and in how many rectangles.
long long TakePresented(int *pnRects = nullptr)
{
    RECT rects[256];
    long long llPixels = 0;
    const int nRects = FaceTakePresented(sglb->m_hWnd, rects, 256, &llPixels);
    if (pnRects)
        *pnRects = nRects;
    return llPixels;
}

uint32_t ShownAt(xlong lX, xlong lY)
{
    int nWidth = 0, nHeight = 0;
    const uint32_t *pPixels = FaceShownPixels(sglb->m_hWnd, &nWidth, &nHeight);
    return pPixels && lX < nWidth && lY < nHeight ? pPixels[lY * nWidth + lX] : 0;
}
} // namespace

TEST_F(CDibScreenTest, OnlyChangedAreasReachTheWindow)
{
    SetMode(640, 480, 24);
    CDibScreen &s = *Screen();
    int nWidth = 0, nHeight = 0;
    ASSERT_TRUE(FaceShownPixels(sglb->m_hWnd, &nWidth, &nHeight));
    EXPECT_EQ(640, nWidth);
    EXPECT_EQ(480, nHeight);
    xHandler();
    TakePresented();
    xHandler();
    EXPECT_EQ(0, TakePresented()) << "nothing changed";
    s.FillRect(10, 20, 32, 32, TRGBA(1, 2, 3));
    s.AddClearArea(10, 20, 41, 51);
    xHandler();
    EXPECT_EQ(32 * 32, TakePresented());
    EXPECT_EQ(0xFF010203u, ShownAt(41, 51));
    EXPECT_NE(0xFF010203u, ShownAt(42, 51));
    xHandler();
    EXPECT_EQ(32 * 32, TakePresented()) << "the restored area is shown too";
    EXPECT_NE(0xFF010203u, ShownAt(41, 51));
    xHandler();
    EXPECT_EQ(0, TakePresented()) << "and that was all";

    EXPECT_EQ(1, s.SetFlipScreen(0));
    s.FillRect(0, 0, 640, 480, TRGBA(9, 9, 9));
    s.AddClearArea(0, 0, 639, 479);
    xHandler();
    EXPECT_EQ(0, TakePresented()) << "presenting is off";
    s.FillRect(0, 0, 640, 480, TRGBA(7, 7, 7));
    EXPECT_EQ(1, s.SetFlipScreen(1));
    xHandler();
    EXPECT_EQ(0xFF070707u, ShownAt(639, 479)) << "all of it, once it is on again";
}

TEST_F(CDibScreenTest, TheWindowIsPaintedMinimisedAndClosed)
{
    SetMode(640, 480, 16);
    CDibScreen &s = *Screen();
    HWND hWnd = sglb->m_hWnd;
    xHandler();
    TakePresented();
    FaceExpose(hWnd);
    xHandler();
    EXPECT_LE(640 * 480, TakePresented()) << "WM_PAINT sends the whole picture";
    FaceMinimize(hWnd);
    xHandler();
    EXPECT_EQ(0, s.GetActive());
    s.m_lPersistentCount[0] = 0;
    FaceRestore(hWnd);
    xHandler();
    EXPECT_EQ(1, s.GetActive());
    EXPECT_EQ(0, xDoUserWantToQuit());
    FaceClose(hWnd);
    EXPECT_EQ(0, xHandler());
    EXPECT_EQ(1, xDoUserWantToQuit());
    EXPECT_TRUE(IsWindow(hWnd)) << "closing raises the flag alone";
    PostQuitMessage(7);
    EXPECT_EQ(7, xHandler());
    EXPECT_EQ(nullptr, sglb->m_hDC);
}

TEST_F(CDibScreenTest, ALargerWindowCentresThePicture)
{
    SetMode(640, 480, 16);
    CDibScreen &s = *Screen();
    FaceResize(sglb->m_hWnd, 840, 500);
    xHandler();
    EXPECT_EQ(100, s.m_lOffsetX);
    EXPECT_EQ(10, s.m_lOffsetY);
    FaceResize(sglb->m_hWnd, 300, 200);
    xHandler();
    EXPECT_EQ(0, s.m_lOffsetX);
    s.SetScreenPos(30, 40);
    xlong lX, lY, lWidth, lHeight;
    s.GetScreenPos(&lX, &lY, &lWidth, &lHeight);
    EXPECT_EQ(30, lX);
    EXPECT_EQ(40, lY);
    s.SetScreenSize(500, 400);
    s.GetScreenPos(nullptr, nullptr, &lWidth, &lHeight);
    EXPECT_EQ(500, lWidth);
    EXPECT_EQ(400, lHeight);
}

// With the n-th allocation failing, for every n until all goes well: nothing
// crashes, a failure is told, and nothing is left behind.
TEST(StartTest, EveryAllocationOfAStartMayFail)
{
    const TFaceDesktop desktop = { 1280, 1024, 32 };
    const std::filesystem::path file = std::filesystem::temp_directory_path() / "tarvix-start-test.bmp";
    std::string strBmp("BM", 2);
    strBmp += std::string(8, 0) + std::string("\x36\0\0\0\x28\0\0\0\2\0\0\0\2\0\0\0\1\0\x18\0", 20) +
              std::string(24, 0) + std::string(16, 'x');
    WriteFile(file.string(), strBmp);
    ASSERT_TRUE(FaceStart(&desktop));
    int nRuns = 0;
    FailEachAllocation(
        [&]
        {
            ++nRuns;
            glb = new SGlobals;
            sglb = new SSysGlobals;
            bool bWorked = xCreateGlobals() && xInit(0, nullptr);
            CDibScreen *const pScreen = bWorked ? sglb->m_pDibScreen : nullptr;
            bWorked = pScreen && pScreen->InitModeRez(640, 480, 24, XMODE_WINDOW) &&
                      pScreen->SetScreenWindowProperties(3, -1, -1) && pScreen->SetPersistentMode(1);
            if (bWorked)
            {
                glb->m_pScreen = pScreen;
                CBitmap picture;
                bWorked = picture.Load(file.string().c_str(), 0) && pScreen->MakeScreenBitmap(&picture, 2);
                if (bWorked)
                    pScreen->DrawBitmapPersistent(&picture, 0, 0, 0, 0, -1, -1, 0, 0);
                xHandler();
                pScreen->ExitMode();
                bWorked = pScreen->GetVideoModes() && pScreen->InitModeRez(800, 600, 16, XMODE_WINDOW) && bWorked;
            }
            if (!bWorked)
                EXPECT_NE(0, glb->m_Error.GetErrCode());
            glb->m_pScreen = nullptr;
            xExit();
            xFreeGlobals();
            delete std::exchange(sglb, nullptr);
            delete std::exchange(glb, nullptr);
            EXPECT_STREQ(nullptr, HeapState().pszFault);
            return bWorked;
        });
    EXPECT_GT(nRuns, 30);
    FaceStop();
    std::filesystem::remove(file);
}
#endif
