#include "tarvix/replay.h"

#include "gui/guisupport.h"
#include "tarvix/button.h"
#include "tarvix/host.h"
#include "tarvix/timer.h"

namespace
{
const char s_szHead[] = "tarvix-replay 1\nstep 20\nstart 5 6\n";

class CReplayTest : public CGuiTest
{
protected:
    xlong Play(const std::string &strText) { return m_Replay.PlayText(strText.data(), (xulong)strText.size(), "demo"); }

    CReplay m_Replay;
};

struct TDamage
{
    const char *pszName;
    std::string strText;
    int nLine;
    const char *pszFault;
};

std::string Events(const std::string &str)
{
    return s_szHead + str;
}
} // namespace

const char s_szNumber[] = "A number is missing or out of range.";
const TDamage s_Damages[] = {
    { "Empty", "", 1, "This is no recording." },
    { "Comments", "# a\n\n# b\n", 4, "This is no recording." },
    { "Other", "GIF89a\n", 1, "This is no recording." },
    { "Version", "tarvix-replay 2\n", 1, "The recording is of another version." },
    { "VersionAndMore", "tarvix-replay 1 1\n", 1, "The recording is of another version." },
    { "StepZero", "tarvix-replay 1\nstep 0\n", 2, "The step must be one number from 1 to 1000, given once." },
    { "StepTwice", Events("step 20\n"), 4, "The step must be one number from 1 to 1000, given once." },
    { "Start", "tarvix-replay 1\n\nstart 1\n", 3, "The start must be a place, given once." },
    { "Mode", Events("mode 640 480\n"), 4, "The mode must be width, height and depth, given once." },
    { "NoStep", "tarvix-replay 1\nstart 1 1\n1 end\n", 3, "Step and start must come before the first event." },
    { "NoEnd", Events("1 close\n"), 5, "The end is missing." },
    { "CutLine", Events("1 mouse 1 2 3"), 4, s_szNumber },
    { "BeyondEnd", Events("1 end\n\n# fine\n2 close\n"), 7, "Something follows the end." },
    { "FrameZero", Events("0 close\n"), 4, "A line must begin with its frame, from 1 on." },
    { "FrameHuge", Events("2147483647 close\n"), 4, "A line must begin with its frame, from 1 on." },
    { "FrameOverflow", Events("99999999999999999999 close\n"), 4, "A line must begin with its frame, from 1 on." },
    { "NoFrame", Events("close\n"), 4, "A line must begin with its frame, from 1 on." },
    { "Back", Events("5 close\n4 close\n"), 5, "Frames must not go back." },
    { "Unknown", Events("5 wheel 1\n"), 4, "There is no such event." },
    { "LongerWord", Events("5 closed\n"), 4, "There is no such event." },
    { "Zero", Events(std::string("5 close\0\n", 9)), 4, "There is no such event." },
    { "Buttons", Events("5 mouse 1 1 0 0 8\n"), 4, s_szNumber },
    { "KeyZero", Events("5 key 0 1\n"), 4, s_szNumber },
    { "KeyHuge", Events("5 key 65536 1\n"), 4, s_szNumber },
    { "State", Events("5 state 323 1\n"), 4, s_szNumber },
    { "StateBits", Events("5 state 65 4\n"), 4, s_szNumber },
    { "Active", Events("5 active 2\n"), 4, s_szNumber },
    { "NotANumber", Events("5 point 1 2x\n"), 4, s_szNumber },
    { "Minus", Events("5 point 1 -\n"), 4, s_szNumber },
    { "More", Events("5 point 1 2 3\n"), 4, "Something follows the event." },
    { "OpenText", Events("5 paste \"abc\n"), 4, "The text is damaged." },
    { "NoText", Events("5 paste\n"), 4, "The text is damaged." },
    { "Escape", Events("5 paste \"a\\q\"\n"), 4, "The text is damaged." },
    { "EscapedZero", Events("5 paste \"\\x00\"\n"), 4, "The text is damaged." },
    { "CutEscape", Events("5 paste \"\\x4"), 4, "The text is damaged." },
    { "AfterText", Events("5 paste \"a\"b\n"), 4, "Something follows the event." },
};

TEST(CReplayDamage, IsRefusedWithItsLine)
{
    CTestGlobals globals;
    for (const TDamage &c : s_Damages)
    {
        SCOPED_TRACE(c.pszName);
        CReplay replay;
        const size_t ulBefore = HeapState().ulLiveBlocks;
        EXPECT_EQ(0, replay.PlayText(c.strText.data(), (xulong)c.strText.size(), "demo"));
        EXPECT_EQ("CReplay: demo, line " + std::to_string(c.nLine) + ": " + c.pszFault, LastError());
        EXPECT_EQ(0, replay.IsPlaying());
        EXPECT_EQ(ulBefore, HeapState().ulLiveBlocks);
    }
}

TEST_F(CReplayTest, EventsComeInTheirFrames)
{
    CMouseBase &mouse = *glb->m_pMouse;
    CKeyboardBase &keyboard = *glb->m_pKeyboard;
    keyboard.AddKeyToQueue('z', 1, 0);
    keyboard.SetKeyState(XKEY_Z, 1);
    ASSERT_EQ(1, Play(Events("# a comment\r\n2 mouse 10 11 -3 4 1\r\n2 key 97 33\n\n2\tstate 65 3\n"
                             "3 mouse 12 13 1 1 0 # and here\n4 state 65 0\n6 close\n8 end")))
        << LastError();
    EXPECT_EQ(8, m_Replay.GetLastFrame());
    EXPECT_EQ(0, Play(Events("1 end"))) << "one at a time";
    EXPECT_EQ("CReplay: A replay or recording runs already.", LastError());
    EXPECT_EQ(0, keyboard.IsKeyWaiting());
    EXPECT_EQ(0, keyboard.GetPressed());
    EXPECT_EQ(5, mouse.m_lX);
    glb->m_pWinCtrl->RemoveAll(); // keys stay in the queue
    const xulong ulStart = xGetTime();
    xHandler();
    EXPECT_EQ(5, mouse.m_lX);
    EXPECT_EQ(ulStart + 20, xGetTime());
    xHandler();
    EXPECT_EQ(10, mouse.m_lX);
    EXPECT_EQ(0x101u, mouse.m_ulButtons);
    EXPECT_EQ(1, keyboard.GetPressed());
    xlong lDX, lDY;
    mouse.GetDelta(&lDX, &lDY, nullptr);
    EXPECT_EQ(-3, lDX);
    EXPECT_EQ(4, lDY);
    TQueueChar key;
    ASSERT_EQ(1, keyboard.GetNext(&key));
    EXPECT_EQ('a', key.usKey);
    EXPECT_EQ(33, key.lFlags);
    EXPECT_EQ(3, keyboard.IsPressed(XKEY_A));
    xHandler();
    EXPECT_EQ(0x10100u, mouse.m_ulButtons);
    xHandler();
    EXPECT_EQ(0, keyboard.GetPressed());
    xSleep(1000);
    EXPECT_EQ(ulStart + 4 * 20 + 1000, xGetTime()) << "sleeping costs the stepped clock alone";
    xHandler();
    EXPECT_EQ(0, xDoUserWantToQuit());
    xHandler();
    EXPECT_EQ(1, xDoUserWantToQuit());
    xHandler();
    EXPECT_EQ(1, m_Replay.IsPlaying());
    xHandler();
    EXPECT_EQ(0, m_Replay.IsPlaying());
    EXPECT_EQ(8, m_Replay.GetFrame());
    EXPECT_EQ(1, m_Replay.Stop());
}

TEST_F(CReplayTest, OtherModesAndMissingFilesAreRefused)
{
    EXPECT_EQ(0, Play(Events("mode 640 480 16\n1 end\n")));
    EXPECT_EQ("CReplay: demo, line 4: It was made at 640*480*16, and the screen is at 640*480*24.", LastError());
    EXPECT_EQ(1, Play(Events("mode 640 480 24\n1 end\n"))) << LastError();
    m_Replay.Stop();
    EXPECT_EQ(0, m_Replay.Play("absent.txt"));
    EXPECT_NE(std::string::npos, LastError().find("absent.txt"));
    EXPECT_EQ(0, m_Replay.Record("absent/file.txt"));
    EXPECT_EQ(0, m_Replay.IsRecording());
    EXPECT_EQ(0, m_Replay.Record("new.txt", 1001));
    EXPECT_EQ(0, m_Replay.Record("new.txt", -1));
    WriteFile("file.txt", Events("1 end\n"));
    FailEachAllocation(
        [this]
        {
            const bool bWorked = m_Replay.Play("file.txt") == 1;
            EXPECT_EQ(HeapFailed(), !bWorked);
            if (!bWorked)
                EXPECT_EQ(XERR_MEMORY, glb->m_Error.GetErrCode());
            m_Replay.Stop();
            return bWorked;
        });
    HeapFailAt(1);
    EXPECT_EQ(0, m_Replay.Record("new.txt"));
    HeapFailAt(0);
    EXPECT_EQ(XERR_MEMORY, glb->m_Error.GetErrCode());
}

#ifdef __linux__
TEST_F(CReplayTest, FullDiskIsTold)
{
    ASSERT_EQ(1, m_Replay.Record("/dev/full"));
    xHandler();
    EXPECT_EQ(0, m_Replay.Stop());
    EXPECT_EQ("CReplay: The recording could not be written.", LastError());
}
#endif

namespace
{
class CTickCounter : public CTimer
{
public:
    void TimerHandler(xulong ulInterval) override { ++m_nTicks; }

    int m_nTicks = 0;
};

// Two windows with buttons, and a timer.
struct TDesk
{
    char szTitle[8] = "ab", szText[8] = "aa";
    CButton aButtons[4];
    CWindow aWindows[2];
    CTickCounter ticks;
};

// What a session shows: all messages, and each frame's picture as one number.
class CSessionTest : public CReplayTest
{
protected:
    struct TResult
    {
        std::string strMessages;
        xulong ulPictures = 2166136261u;
        int nTicks = 0;
    };

    ~CSessionTest() override { Clear(); }

    void Build()
    {
        s_pTest = this;
        m_Result = TResult();
        m_pDesk = std::make_unique<TDesk>();
        for (int n = 0; n < 2; ++n)
        {
            CWindow &window = m_pDesk->aWindows[n];
            ASSERT_EQ(1, window.Create(n + 1, m_pDesk->szTitle, 40 + 150 * n, 30 + 60 * n, 200, 160,
                                       XWIN_TITLEBAR | XWIN_FRAME | XWIN_CLOSE | XWIN_DRAG));
            for (int nButton = 0; nButton < 2; ++nButton)
            {
                CButton &button = m_pDesk->aButtons[2 * n + nButton];
                const short sHotkey = (short)('a' + nButton);
                ASSERT_EQ(1, button.Create(10 + nButton, m_pDesk->szText, 20, 20 + 50 * nButton, 80, 30, sHotkey, 0));
                ASSERT_EQ(1, window.AddCntrl(&button));
            }
            ASSERT_EQ(1, glb->m_pWinCtrl->AddWindow(&window, Log, this));
        }
        m_strLog.clear();
        m_pDesk->ticks.AddTimer(70);
    }

    void Clear()
    {
        glb->m_pWinCtrl->RemoveAll();
        m_pDesk.reset();
    }

    void Look()
    {
        const std::string strLog = TakeLog();
        m_Result.strMessages += strLog.empty() ? "" : std::to_string(m_Replay.GetFrame()) + ">" + strLog + " ";
        for (const unsigned char uc : CScreenTest::Frame())
            m_Result.ulPictures = (m_Result.ulPictures ^ uc) * 16777619u;
        m_Result.nTicks = m_pDesk->ticks.m_nTicks;
    }

    std::unique_ptr<TDesk> m_pDesk;
    TResult m_Result;
};

// Presses in both windows, a drag by a title bar, hot keys.
const char s_szSession[] = "tarvix-replay 1\nstep 20\nstart 300 300\nmode 640 480 24\n"
                           "2 mouse 90 90 0 0 0\n3 mouse 90 90 0 0 1\n5 mouse 90 90 0 0 0\n"
                           "8 mouse 230 100 0 0 0\n9 mouse 230 100 0 0 1\n11 mouse 260 140 0 0 1\n"
                           "13 mouse 290 180 0 0 1\n14 mouse 290 180 0 0 0\n20 key 97 1\n20 state 65 3\n"
                           "22 key 97 0\n22 state 65 2\n25 mouse 60 40 0 0 1\n27 mouse 60 40 0 0 0\n"
                           "30 key 98 1\n31 key 98 0\n40 close\n41 end\n";
} // namespace

// The numbers hold for every system and build. Where controls come to look
// different, the new one is taken over once all systems agree on it.
TEST_F(CSessionTest, LooksTheSameEverywhere)
{
    for (int nRound = 0; nRound < 2; ++nRound)
    {
        ASSERT_EQ(1, Play(s_szSession)) << LastError();
        Build();
        while (m_Replay.IsPlaying())
        {
            xHandler();
            Look();
        }
        EXPECT_EQ("2>3:1:10 19:1:10 3>1:1:10 4>1:1:10 5>2:1:10 8>19:1:10 14>10:2:0 20>1:1:10 22>2:1:10 27>10:1:0 "
                  "28>10:1:0 29>10:1:0 30>10:1:0 1:1:11 31>10:1:0 2:1:11 32>10:1:0 33>10:1:0 34>10:1:0 "
                  "35>10:1:0 36>10:1:0 37>10:1:0 38>10:1:0 39>10:1:0 40>10:1:0 41>10:1:0 ",
                  m_Result.strMessages);
        EXPECT_EQ(3230179149u, m_Result.ulPictures);
        EXPECT_EQ(41 * 20 / 70, m_Result.nTicks);
        EXPECT_EQ(1, xDoUserWantToQuit());
        Clear();
        xHandler();
        xHandler();
    }
}

// Each length of the plain part puts the escapes at another place of the pieces
// that are written.
TEST_F(CReplayTest, LongPastesAreRecordedWhole)
{
    for (size_t ulPlain = 0; ulPlain < 8; ++ulPlain)
    {
        ASSERT_EQ(1, m_Replay.Record("session.txt"));
        const std::string strPlain(ulPlain, 'a');
        m_Replay.OnPaste((strPlain + std::string(200, '\x81')).c_str());
        ASSERT_EQ(1, m_Replay.Stop());
        std::string strWanted = " paste \"" + strPlain;
        for (int n = 0; n < 200; ++n)
            strWanted += "\\x81";
        EXPECT_NE(std::string::npos, ReadFile("session.txt").find(strWanted + "\"\n")) << ulPlain;
    }
}

#ifndef _WIN32
// Time that a timer had saved up before belongs to the clock before.
TEST_F(CReplayTest, TimersBeginAnewWithTheSession)
{
    CTickCounter timer;
    timer.AddTimer(70);
    xHandler();
    FaceAdvanceClock(60);
    xHandler();
    ASSERT_EQ(1, Play(Events("3 end"))) << LastError();
    while (m_Replay.IsPlaying())
        xHandler();
    EXPECT_EQ(0, timer.m_nTicks) << "three frames of 20 ms";
    FaceAdvanceClock(69);
    xHandler();
    EXPECT_EQ(0, timer.m_nTicks) << "nor does the session's time count behind it";
}

TEST_F(CSessionTest, ReplayShowsWhatTheRecordingShowed)
{
    static const int s_Keys[] = { 'A', 'B', VK_LSHIFT, VK_RSHIFT, VK_LCONTROL, VK_TAB, VK_F1, 'V' };
    static const char s_szChars[] = "ab\0\0\0\t\0\x16";
    std::mt19937 random(5);
    FaceSetClipboard("clip \"\xC3\xA4\\\n");
    for (int nSession = 0; nSession < 6; ++nSession)
    {
        SCOPED_TRACE(nSession);
        glb->m_pMouse->NeedDelta(nSession == 3);
        ASSERT_EQ(1, m_Replay.Record("session.txt", 10)) << LastError();
        Build();
        for (int nFrame = 0; nFrame < 120; ++nFrame)
        {
            for (int nAction = nFrame % 50 == 49 ? 0 : (int)(random() % 4); nAction; --nAction)
            {
                // Drawn one by one: arguments are evaluated in no order.
                const unsigned uKey = random() % 8, uKind = random() % 4, uX = random() % 400, uY = random() % 300;
                if (uKind < 2)
                    FaceMovePointerIn(sglb->m_hWnd, (int)uX, (int)uY);
                else if (uKind < 3)
                    FaceButton(uX % 4 ? VK_LBUTTON : VK_RBUTTON, uY % 2);
                else
                    FaceKey(s_Keys[uKey], uY % 2, (unsigned char)s_szChars[uKey]);
            }
            if (nFrame % 50 == 48)
            {
                FaceKey('A', true, 'a');
                FaceMovePointerIn(sglb->m_hWnd, 100, 100);
                FaceButton(VK_LBUTTON, true);
            }
            if (nFrame % 50 == 49)
            {
                FaceActivate(sglb->m_hWnd, false);
                FaceActivate(sglb->m_hWnd, true);
            }
            if (nFrame == 110)
                FaceClose(sglb->m_hWnd);
            xHandler();
            Look();
            if (nFrame % 50 == 49)
                EXPECT_EQ(0, glb->m_pKeyboard->GetPressed()) << "let go with the focus";
        }
        ASSERT_EQ(1, m_Replay.Stop()) << LastError();
        const TResult live = m_Result;
        const CMouseBase &mouse = *glb->m_pMouse;
        const std::vector<xlong> place = { mouse.m_lX, mouse.m_lY, mouse.m_lDeltaX, mouse.m_lDeltaY,
                                           (xlong)mouse.m_ulButtons };
        const CKeyboardBase &keyboard = *glb->m_pKeyboard;
        const std::vector<unsigned char> states(keyboard.m_abKeys, keyboard.m_abKeys + 324);
        EXPECT_EQ(1, xDoUserWantToQuit());
        EXPECT_NE(std::string::npos, ReadFile("session.txt").find("paste \"clip \\\"\\xe4\\\\\\r\\n\"\n"));
        Clear();
        xHandler();
        xHandler();

        xSetUserWantToQuit(0);
        ASSERT_EQ(1, m_Replay.Play("session.txt")) << LastError();
        Build();
        while (m_Replay.IsPlaying())
        {
            // The user is not listened to.
            FaceMovePointerIn(sglb->m_hWnd, (int)(random() % 400), (int)(random() % 300));
            FaceKey('B', random() % 2, 'b');
            xHandler();
            Look();
        }
        EXPECT_EQ(live.strMessages, m_Result.strMessages);
        EXPECT_EQ(live.ulPictures, m_Result.ulPictures);
        EXPECT_EQ(live.nTicks, m_Result.nTicks);
        EXPECT_GT(live.strMessages.size(), 50u);
        EXPECT_EQ(place, (std::vector<xlong>{ mouse.m_lX, mouse.m_lY, mouse.m_lDeltaX, mouse.m_lDeltaY,
                                              (xlong)mouse.m_ulButtons }));
        EXPECT_EQ(states, std::vector<unsigned char>(keyboard.m_abKeys, keyboard.m_abKeys + 324));
        EXPECT_EQ(1, xDoUserWantToQuit());
        xSetUserWantToQuit(0);
        Clear();
        xHandler();
        xHandler();
    }
}

TEST_F(CReplayTest, FullScreenModesFollowTheRecordedPointer)
{
    SetMode(640, 480, 24, XMODE_DESKTOP);
    ASSERT_EQ(1, glb->m_pMouse->Init());
    const auto Session = [](bool bLive)
    {
        std::vector<std::pair<xlong, xlong>> way;
        for (int n = 0; n < 12; ++n)
        {
            FaceMovePointer(bLive ? 100 + n / 2 * 13 : 700, bLive ? 200 - n : 3);
            xHandler();
            way.push_back({ glb->m_pMouse->m_lX, glb->m_pMouse->m_lY });
        }
        return way;
    };
    xHandler();
    ASSERT_EQ(1, m_Replay.Record("session.txt", 15));
    const auto way = Session(true);
    ASSERT_EQ(1, m_Replay.Stop());
    ASSERT_EQ(1, m_Replay.Play("session.txt")) << LastError();
    EXPECT_EQ(way, Session(false));
}

TEST_F(CReplayTest, RecordingKeepsTheRealPace)
{
    ASSERT_EQ(1, m_Replay.Record("session.txt", 25));
    const DWORD ulStart = timeGetTime();
    for (int n = 0; n < 4; ++n)
        xHandler();
    EXPECT_EQ(ulStart + 100, timeGetTime()) << "the face's clock moves with Sleep";
    FaceAdvanceClock(500); // a slow frame
    xHandler();
    xHandler();
    EXPECT_EQ(ulStart + 625, timeGetTime()) << "what was lost is not made up for";
    ASSERT_EQ(1, m_Replay.Stop());
    ASSERT_EQ(1, m_Replay.Play("session.txt"));
    const DWORD ulPlayed = timeGetTime();
    while (m_Replay.IsPlaying())
        xHandler();
    EXPECT_EQ(ulPlayed, timeGetTime());
    ASSERT_EQ(1, m_Replay.Play("session.txt", 1));
    while (m_Replay.IsPlaying())
        xHandler();
    EXPECT_EQ(ulPlayed + 6 * 25, timeGetTime());
}

TEST(CTarvixHostReplay, RecordsAndPlays)
{
    const TFaceDesktop desktop = { 1024, 768, 32 };
    ASSERT_TRUE(FaceStart(&desktop));
    const std::string strFile = (std::filesystem::temp_directory_path() / "tarvix-host-session.txt").string();
    for (const bool bPlay : { false, true })
    {
        CTarvixHost host("Host");
        ASSERT_TRUE(host.SetMode(640, 480, 16)) << host.Error();
        ASSERT_TRUE(bPlay ? host.Play(strFile.c_str()) : host.Record(strFile.c_str())) << host.Error();
        EXPECT_EQ(bPlay, host.IsPlaying());
        int nFrames = 0;
        while (host.Frame() && nFrames < 50)
            if (++nFrames == 7 && !bPlay)
                FaceClose(sglb->m_hWnd);
        EXPECT_EQ(7, nFrames);
        EXPECT_EQ(1, xDoUserWantToQuit());
        if (!bPlay)
            EXPECT_TRUE(host.StopReplay()) << host.Error();
    }
    std::filesystem::remove(strFile);
    FaceStop();
}
#endif
