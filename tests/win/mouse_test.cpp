#include "tarvix/mouse.h"

#include "screensupport.h"
#include "slots.h"
#include "tarvix/bitmap.h"
#include "tarvix/sprite.h"
#include "tarvix/winctrl.h"

#ifdef _WIN32
#include <windows.h>
#endif

namespace
{
struct TUpdate
{
    xlong lX, lY, lButtons;
};
std::vector<TUpdate> s_Updates;

void KeepUpdate(xlong lX, xlong lY, xlong lButtons)
{
    s_Updates.push_back({ lX, lY, lButtons });
}

class CMouseTest : public CScreenTest
{
protected:
    CMouseTest()
    {
        SetMode(640, 480, 24);
        // The first move of the process counts for nothing.
        Mouse().WinMsgHandler(sglb->m_hWnd, WM_MOUSEMOVE, 0, 0);
        s_Updates.clear();
    }

    static CMouse &Mouse() { return *(CMouse *)glb->m_pMouse; }

    static xulong Buttons()
    {
        xlong lButtons = -1;
        Mouse().GetBtnState(&lButtons);
        return (xulong)lButtons;
    }

    static std::pair<xlong, xlong> Place()
    {
        xlong lX, lY;
        Mouse().GetState(&lX, &lY, nullptr);
        return { lX, lY };
    }

    void MakePicture(CBitmap &bitmap)
    {
        ASSERT_EQ(1, bitmap.CreateRGB(32, 8, 24, 8, 8, 8, 16, 8, 0, 0));
        const TRGBA color(200, 100, 50);
        bitmap.Fill(&color);
    }
};

typedef std::pair<xlong, xlong> TPlace;
} // namespace

TEST_F(CMouseTest, ButtonWordTellsEdges)
{
    struct TStep
    {
        const char *pszName;
        unsigned int uMsg;
        xuparam wParam;
        xulong ulWord; // before it is read
        bool bRead;
    };
    static const TStep s_Steps[] = {
        { "left down", WM_LBUTTONDOWN, MK_LBUTTON, 0x101, true },
        { "moved", WM_MOUSEMOVE, MK_LBUTTON, 0x001, false },
        { "right down", WM_RBUTTONDOWN, MK_LBUTTON | MK_RBUTTON, 0x203, false },
        { "left up", WM_LBUTTONUP, MK_RBUTTON, 0x10202, false },
        { "left down with Shift", WM_LBUTTONDOWN, MK_LBUTTON | MK_RBUTTON | MK_SHIFT, 0x10303, true },
        { "left up again", WM_LBUTTONUP, MK_RBUTTON, 0x10002, false },
        { "right up", WM_RBUTTONUP, 0, 0x30000, true },
        // The middle button sends no message of its own that is listened to.
        { "middle down", WM_MBUTTONDOWN, MK_MBUTTON, 0, false },
        { "moved with middle", WM_MOUSEMOVE, MK_MBUTTON, 0x404, false },
        { "moved without", WM_MOUSEMOVE, 0, 0x40400, true },
        { "cursor", WM_SETCURSOR, MK_LBUTTON, 0, false },
        { "activity", WM_ACTIVATEAPP, MK_LBUTTON, 0, true },
    };
    Mouse().SetUpdateCallback(KeepUpdate);
    for (const TStep &step : s_Steps)
    {
        SCOPED_TRACE(step.pszName);
        EXPECT_EQ(0, Mouse().WinMsgHandler(sglb->m_hWnd, step.uMsg, step.wParam, 0));
        EXPECT_EQ(step.ulWord, Mouse().m_ulButtons);
        signed char cDown = -1;
        Mouse().GetState(nullptr, nullptr, &cDown);
        EXPECT_EQ((signed char)(step.ulWord & 7), cDown);
        EXPECT_EQ((step.ulWord & 1) != 0, Mouse().m_bLeftDown);
        EXPECT_EQ((step.ulWord & 2) != 0, Mouse().m_bRightDown);
        EXPECT_EQ((step.ulWord & 4) != 0, Mouse().m_bMiddleDown);
        if (step.bRead)
        {
            EXPECT_EQ(step.ulWord, Buttons());
            EXPECT_EQ(step.ulWord & 7, Buttons()) << "edges are told once";
        }
    }
    ASSERT_EQ(9u, s_Updates.size()) << "once an event";
    EXPECT_EQ(0x10202, s_Updates[3].lButtons);
    Mouse().GetBtnState(nullptr);
    Mouse().GetState(nullptr, nullptr, nullptr);
    Mouse().GetDelta(nullptr, nullptr, nullptr);
}

TEST_F(CMouseTest, KeepsWhatItIsTold)
{
    CMouse &m = Mouse();
    m.m_lDeltaX = 3;
    m.m_lDeltaY = -4;
    m.m_ulButtons = 0x10102;
    xlong lDX, lDY;
    signed char cButtons;
    m.GetDelta(&lDX, &lDY, &cButtons);
    EXPECT_EQ((TPlace{ 3, -4 }), TPlace(lDX, lDY));
    EXPECT_EQ(2, cButtons);
    m.GetDelta(&lDX, &lDY, nullptr);
    EXPECT_EQ((TPlace{ 0, 0 }), TPlace(lDX, lDY));
    m.m_lDeltaX = 3;
    m.SetPos(11, 12);
    EXPECT_EQ((TPlace{ 11, 12 }), Place());
    EXPECT_EQ(0, m.m_lDeltaX);
    EXPECT_EQ(1.0f, m.GetSensitivity());
    m.SetSensitivity(2.5f);
    EXPECT_EQ(2.5f, m.GetSensitivity());
    xlong lId = 0;
    EXPECT_EQ(1, m.GetDeltaHandler(&lId));
    EXPECT_EQ(1, lId);
    HeapFailAt(1);
    EXPECT_EQ(0, m.GetDeltaHandler(&lId));
    HeapFailAt(0);
    EXPECT_EQ(1, m.GetDeltaHandler(&lId));
    EXPECT_EQ(2, lId);
    EXPECT_EQ(1, m.GetDeltaHandler(nullptr));
    m.NeedDelta(5);
    m.IsFullScreen(1);
    EXPECT_EQ(3u, m.m_ulFlags);
    m.NeedDelta(0);
    EXPECT_EQ(2u, m.m_ulFlags);
    m.IsFullScreen(0);
    m.ClearSetCursorCalled();
    EXPECT_EQ(0, m.SetCursorCalled());
    m.SetCursor(77, 0);
    EXPECT_EQ(1, m.SetCursorCalled());
    const HCURSOR hFinger = m.m_hFinger;
    m.SetFingerResourceId(1);
    EXPECT_EQ(hFinger, m.m_hFinger) << "the system's own stays";
    m.m_hFinger = m.m_hArrow;
    m.SetFingerResourceId(1);
    EXPECT_EQ(m.m_hArrow, m.m_hFinger) << "the test has no such resource";
    m.m_hFinger = hFinger;
}

TEST_F(CMouseTest, LayoutIsTheOneThatHostsKnow)
{
    const CMouse &m = Mouse();
    const std::vector<std::pair<int, int>> rest = {
        { OffsetOf(m, m.m_ulPrevButtons), 4 },
        { OffsetOf(m, m.m_lDeltaX), 8 },
        { OffsetOf(m, m.m_lDeltaY), 12 },
        { OffsetOf(m, m.m_fSensitivity), 16 },
        { OffsetOf(m, m.m_ulFlags), 20 },
        { OffsetOf(m, m.m_lNextDeltaId), 24 },
        { OffsetOf(m, m.m_lAddX), 28 },
        { OffsetOf(m, m.m_lAddY), 32 },
        { OffsetOf(m, m.m_bSetCursorCalled), 36 },
        { OffsetOf(m, m.m_ulNextCursorId), 40 },
    };
    EXPECT_EQ((int)sizeof(void *), OffsetOf(m, m.m_lstCursors));
    EXPECT_EQ((int)(sizeof(void *) + sizeof(CLList)), OffsetOf(m, m.m_lstDeltaHandlers));
    EXPECT_EQ((int)(sizeof(void *) + 2 * sizeof(CLList)), OffsetOf(m, m.m_pCurrent));
    const int nButtons = OffsetOf(m, m.m_ulButtons);
    EXPECT_EQ(OffsetOf(m, m.m_pCurrent) + (int)sizeof(void *), nButtons);
    for (const auto &[nOffset, nWanted] : rest)
        EXPECT_EQ(nButtons + nWanted, nOffset);
    EXPECT_EQ(OffsetOf(m, m.m_pfnUpdate) + (int)sizeof(void *), OffsetOf(m, m.m_lX));
    EXPECT_EQ(OffsetOf(m, m.m_lY) + 4, OffsetOf(m, m.m_bRightDown));
    EXPECT_EQ(OffsetOf(m, m.m_bRightDown) + 8, OffsetOf(m, m.m_bMiddleDown));
    EXPECT_EQ(0, SlotOf(&CMouseBase::Init));
    EXPECT_EQ(1, SlotOf(&CMouseBase::SetCursor));
    EXPECT_EQ(0, (int)((const char *)static_cast<const CMouseBase *>(&m) - (const char *)&m));
    EXPECT_LT((const char *)static_cast<const CWinMsg *>(&m), (const char *)static_cast<const CMsgSys *>(&m));
    EXPECT_LT((const char *)static_cast<const CMsgSys *>(&m), (const char *)static_cast<const CTimer *>(&m));
}

TEST_F(CMouseTest, CursorsAreSpritesInFullScreen)
{
    CMouse &m = Mouse();
    CBitmap picture;
    MakePicture(picture);
    const xulong ulHidden = m.AllocCursor(&picture, nullptr, 8, 8, 3, 4);
    ASSERT_EQ(1u, ulHidden);
    EXPECT_EQ(0, m.m_pCurrent->pSprite->CheckBaseFlag(XSPRITE_VISIBLE)) << "a window has the platform's pointer";
    EXPECT_NE(0, m.m_pCurrent->pSprite->CheckBaseFlag(XSPRITE_ON_TOP));
    EXPECT_EQ(3, m.m_pCurrent->sHotX);
    EXPECT_EQ(4, m.m_pCurrent->sHotY);
    EXPECT_EQ(4, m.m_pCurrent->pSprite->m_lNumFrames);
    EXPECT_EQ(20, m.m_pCurrent->pSprite->m_lFrameDelay);
    m.IsFullScreen(1);
    const xulong ulOne = m.AllocCursor(&picture, nullptr, 8, 8, 0, 0),
                 ulTwo = m.AllocCursor(&picture, nullptr, 8, 8, 0, 0);
    EXPECT_EQ(ulHidden, m.m_pCurrent->ulId) << "the first stays the current one";
    m.SetCursor(ulTwo, 2);
    CSprite *pTwo = m.m_pCurrent->pSprite;
    EXPECT_EQ(ulTwo, m.m_pCurrent->ulId);
    EXPECT_EQ(2, pTwo->m_lCurFrame);
    EXPECT_EQ(XSPRITE_STOPPED, pTwo->m_lAnimStatus);
    const auto Visible = [&m]
    {
        std::vector<xulong> ids;
        for (m.m_lstCursors.First(); m.m_lstCursors.Exists(); m.m_lstCursors.Next())
            if (((TCursor *)m.m_lstCursors.Get())->pSprite->CheckBaseFlag(XSPRITE_VISIBLE))
                ids.push_back(((TCursor *)m.m_lstCursors.Get())->ulId);
        return ids;
    };
    EXPECT_EQ(std::vector<xulong>{ ulTwo }, Visible());
    m.StartAnim(0, XSPRITE_LOOP, 7.9f);
    EXPECT_EQ(7, pTwo->m_lFrameDelay);
    EXPECT_EQ(XSPRITE_FORWARD, pTwo->m_lAnimStatus);
    EXPECT_NE(0, pTwo->CheckBaseFlag(XSPRITE_LOOP));
    for (const float fDelay : { 0.0f, 0.5f, -3.0f, -1e30f })
        m.StartAnim(0, 0, fDelay);
    EXPECT_EQ(7, pTwo->m_lFrameDelay) << "delays below 1 are none";
    m.StopAnim();
    EXPECT_EQ(XSPRITE_STOPPED, pTwo->m_lAnimStatus);
    m.SetCursor(99, 0);
    EXPECT_TRUE(Visible().empty());
    EXPECT_EQ(1, m.FreeCursor(ulTwo));
    EXPECT_EQ(0, m.FreeCursor(ulTwo));
    EXPECT_EQ(nullptr, m.m_pCurrent);
    m.StartAnim(0, 1, 1);
    m.StopAnim();
    m.SetCursor(ulOne, 0);
    m.IsFullScreen(0);
    m.SetCursor(ulOne, 0);
    EXPECT_TRUE(Visible().empty());
    m.Exit();
    EXPECT_EQ(0, m.m_lstCursors.GetNumNodes());
    EXPECT_EQ(0u, m.AllocCursor((CBitmap *)nullptr, nullptr, 8, 8, 0, 0));
    m.StartAnim(0, 0, 0);
}

TEST_F(CMouseTest, CursorFilesFailCleanlyWhenMemoryEnds)
{
    CMouse &m = Mouse();
    CBitmap picture;
    MakePicture(picture);
    ASSERT_EQ(1, picture.Save("cursor.bmp", nullptr, nullptr, nullptr, 0)) << LastError();
    m.FreeCursor(m.AllocCursor("cursor.bmp", nullptr, 8, 8, 0, 0)); // pools grow once
    int nRuns = 0;
    FailEachAllocation(
        [&]
        {
            ++nRuns;
            const xulong ulId = m.AllocCursor("cursor.bmp", nullptr, 8, 8, 0, 0);
            return ulId && m.FreeCursor(ulId); // the picture goes with its cursor
        });
    EXPECT_GT(nRuns, 5);
    EXPECT_EQ(0u, m.AllocCursor("absent.bmp", nullptr, 8, 8, 0, 0));
    glb->m_pScreen = nullptr;
    EXPECT_EQ(0u, m.AllocCursor("cursor.bmp", nullptr, 8, 8, 0, 0));
    glb->m_pScreen = Screen();
}

#ifndef _WIN32
TEST_F(CMouseTest, PlacesArePixelsOfThePicture)
{
    // Frames are 4 wide, captions 19 high; see the platform's metrics.
    const xlong lFrame = GetSystemMetrics(SM_CXFRAME),
                lTitle = GetSystemMetrics(SM_CYFRAME) + GetSystemMetrics(SM_CYCAPTION);
    for (const xulong ulFlags : { 1, 2, 3 })
    {
        ASSERT_EQ(1, Screen()->SetScreenWindowProperties(ulFlags, -1, -1));
        EXPECT_EQ((TPlace{ lFrame, lTitle }), TPlace(Mouse().m_lAddX, Mouse().m_lAddY)) << "style " << ulFlags;
    }
    for (const TPlace &place : { TPlace{ 0, 0 }, TPlace{ 639, 479 }, TPlace{ 17, 401 } })
    {
        FaceMovePointerIn(sglb->m_hWnd, place.first, place.second);
        xHandler();
        EXPECT_EQ(place, Place());
    }
    // A window that is larger than the picture has it in its centre.
    FaceResize(sglb->m_hWnd, 740, 500);
    xHandler();
    FaceMovePointerIn(sglb->m_hWnd, 50 + 7, 10 + 8);
    xHandler();
    EXPECT_EQ((TPlace{ 7, 8 }), Place());
    FaceMovePointerIn(sglb->m_hWnd, 0, 0);
    xHandler();
    EXPECT_EQ((TPlace{ -50, -10 }), Place());
}

TEST_F(CMouseTest, IsHeardBeyondTheWindowWhileAButtonIsHeld)
{
    const HWND hWnd = sglb->m_hWnd;
    for (const xlong lOptions : { (xlong)0, (xlong)XGUIOPT_POINTER })
    {
        glb->m_pWinCtrl->SetOptions(lOptions);
        FaceMovePointerIn(hWnd, 100, 110);
        FaceButton(VK_LBUTTON, true);
        xHandler();
        EXPECT_EQ(hWnd, GetCapture());
        FaceMovePointer(1270, 1000);
        FaceButton(VK_LBUTTON, false);
        xHandler();
        EXPECT_EQ(nullptr, GetCapture());
        EXPECT_EQ((xulong)XBTN_LEFT_PRESSED | XBTN_LEFT_RELEASED, Buttons());
        EXPECT_LT(480, Place().second) << "let go outside";

        // Without a button the place stays where it was last inside, or leaves too.
        FaceMovePointerIn(hWnd, 100, 110);
        xHandler();
        EXPECT_EQ((TPlace{ 100, 110 }), Place());
        FaceMovePointer(1270, 1000);
        xHandler();
        EXPECT_EQ(lOptions != 0, Place() != (TPlace{ 100, 110 }));
        FaceMovePointerIn(hWnd, 300, 310);
        xHandler();
        EXPECT_EQ((TPlace{ 300, 310 }), Place());
    }
}

TEST_F(CMouseTest, FixedCentreIsPassedOverAndHoldsThePointer)
{
    RECT rc;
    GetWindowRect(sglb->m_hWnd, &rc);
    FaceMovePointer(rc.left + 100, rc.top + 100);
    xHandler();
    const TPlace before = Place();
    FaceMovePointer(rc.left + 320, rc.top + 240);
    xHandler();
    EXPECT_EQ(before, Place());

    CMouse &m = Mouse();
    m.NeedDelta(1);
    m.SetPos(0, 0);
    xlong lDX, lDY;
    for (const TPlace &by : { TPlace{ 5, -7 }, TPlace{ -20, 30 }, TPlace{ 1, 0 } })
    {
        FaceMovePointer(rc.left + 320 + by.first, rc.top + 240 + by.second);
        xHandler();
        xHandler(); // the move back to the centre
        POINT pt;
        GetCursorPos(&pt);
        EXPECT_EQ((TPlace{ rc.left + 320, rc.top + 240 }), TPlace(pt.x, pt.y));
        m.GetDelta(&lDX, &lDY, nullptr);
        EXPECT_EQ(by, TPlace(lDX, lDY));
    }
    EXPECT_EQ((TPlace{ 5 - 20 + 1, -7 + 30 }), Place());
    // With the centre beyond the desktop the pointer comes to rest all the same.
    FaceMove(sglb->m_hWnd, 1100, 900);
    FaceMovePointer(1200, 1000);
    xHandler();
    m.WinMsgHandler(sglb->m_hWnd, WM_ACTIVATEAPP, 1, 0);
    POINT pt;
    GetCursorPos(&pt);
    EXPECT_EQ((TPlace{ 320, 240 }), TPlace(pt.x, pt.y));
}

TEST_F(CMouseTest, ShapesOfThePlatform)
{
    CMouse &m = Mouse();
    for (const auto &[ulId, pszShape] : { std::pair<xulong, LPCSTR>{ 2, IDC_IBEAM },
                                          { 3, IDC_HAND },
                                          { 1, IDC_ARROW },
                                          { 3, IDC_HAND },
                                          { 0, IDC_ARROW },
                                          { 9, IDC_ARROW } })
    {
        m.SetCursor(ulId, 0);
        EXPECT_EQ(LoadCursorA(nullptr, pszShape), FaceCursor()) << ulId;
    }
    m.IsFullScreen(1);
    m.SetCursor(2, 0);
    EXPECT_EQ(LoadCursorA(nullptr, IDC_ARROW), FaceCursor()) << "sprites are the cursors now";
}

TEST_F(CMouseTest, StartsByTheModesKind)
{
    CMouse &m = Mouse();
    EXPECT_EQ(1, m.Init());
    EXPECT_EQ(0u, m.m_ulFlags);
    EXPECT_NE(nullptr, FaceCursor());
    EXPECT_EQ(0, ShowCursor(FALSE)) << "one more to hide it";
    SetMode(640, 480, 24, XMODE_DESKTOP);
    CBitmap picture;
    MakePicture(picture);
    EXPECT_EQ(1, m.Init());
    EXPECT_EQ(2u, m.m_ulFlags);
    EXPECT_EQ(nullptr, FaceCursor());
    ASSERT_EQ(1u, m.AllocCursor(&picture, nullptr, 8, 8, 0, 0));
    m.SetUpdateCallback(KeepUpdate);
    FaceMovePointer(123, 45);
    FaceAdvanceClock(19);
    xHandler();
    s_Updates.clear();
    FaceAdvanceClock(41);
    xHandler();
    xHandler();
    EXPECT_GE(s_Updates.size(), 2u) << "each 20 milliseconds";
    EXPECT_EQ(123, s_Updates.back().lX);
    EXPECT_EQ((TPlace{ 123, 45 }), Place());
    EXPECT_EQ((TPlace{ 123, 45 }), TPlace(m.m_pCurrent->pSprite->m_lX, m.m_pCurrent->pSprite->m_lY));
    glb->m_pScreen = nullptr;
    EXPECT_EQ(1, m.Init());
    glb->m_pScreen = Screen();
}

namespace
{
bool FirstMoveAlone()
{
    CTestGlobals globals;
    const TFaceDesktop desktop = { 640, 480, 32 };
    FaceStart(&desktop);
    xInit(0, nullptr);
    CMouse &m = *(CMouse *)glb->m_pMouse;
    SetCursorPos(7, 9);
    m.WinMsgHandler(sglb->m_hWnd, WM_MOUSEMOVE, MK_LBUTTON, 0);
    const bool bSkipped = m.m_lX == 320 && m.m_lY == 240 && !m.m_ulButtons;
    m.WinMsgHandler(sglb->m_hWnd, WM_MOUSEMOVE, 0, 0);
    return bSkipped && m.m_lX == 7 && m.m_lY == 9;
}
} // namespace

// In a process of its own, where nothing has moved yet.
TEST(CMouseDeathTest, FirstMoveOfTheProcessIsSkipped)
{
    testing::FLAGS_gtest_death_test_style = "threadsafe";
    EXPECT_EXIT(_exit(FirstMoveAlone() ? 0 : 1), testing::ExitedWithCode(0), "");
}
#endif
