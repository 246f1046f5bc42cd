#include "tarvix/keyboard.h"

#include "core/heap.h"
#include "input/keynames.h"
#include "screensupport.h"
#include "slots.h"
#include "tarvix/winctrl.h"
#include "tarvix/window.h"

#include <map>
#include <set>

namespace
{
typedef std::vector<std::pair<int, int>> TEvents; // key and flags

TEvents TakeEvents(CKeyboardBase &keyboard)
{
    TEvents events;
    TQueueChar key;
    while (keyboard.GetNext(&key))
        events.push_back({ key.usKey, key.lFlags });
    return events;
}

// The tables alone, without a window.
class CKeyboardTest : public testing::Test
{
protected:
    CTestGlobals m_Globals;
    CKeyboard m_Keyboard;
};
} // namespace

TEST_F(CKeyboardTest, QueueKeeps127)
{
    for (int nRound = 0; nRound < 3; ++nRound) // the indexes wrap at another place each time
    {
        for (int i = 0; i < 140; ++i)
            m_Keyboard.AddKeyToQueue((unsigned short)(1000 + i), 1, 0);
        EXPECT_NE(0, m_Keyboard.IsKeyWaiting());
        EXPECT_EQ(0, m_Keyboard.GetNext(nullptr));
        const TEvents events = TakeEvents(m_Keyboard);
        ASSERT_EQ(127u, events.size());
        for (int i = 0; i < 127; ++i)
            EXPECT_EQ(1000 + i, events[i].first);
        EXPECT_EQ(0, m_Keyboard.IsKeyWaiting());
    }
    m_Keyboard.AddKeyToQueue(0, 1, 0);
    EXPECT_EQ(0, m_Keyboard.IsKeyWaiting());
    m_Keyboard.AddKeyToQueue('x', (short)0x8001, 0);
    EXPECT_EQ((TEvents{ { 'x', 0x8001 } }), TakeEvents(m_Keyboard)) << "16 bits of flags";
}

TEST_F(CKeyboardTest, StatesTellOfPressesBetweenTwoPolls)
{
    m_Keyboard.SetKeyState(XKEY_A, 1);
    m_Keyboard.SetKeyState(XKEY_A, 1);
    m_Keyboard.SetKeyState(XKEY_F24, 1);
    EXPECT_EQ(2, m_Keyboard.GetPressed());
    EXPECT_EQ(3, m_Keyboard.IsPressed(XKEY_A));
    EXPECT_EQ(1, m_Keyboard.IsPressed(XKEY_A));
    m_Keyboard.SetKeyState(XKEY_A, 0);
    m_Keyboard.SetKeyState(XKEY_A, 0);
    EXPECT_EQ(0, m_Keyboard.IsPressed(XKEY_A));
    m_Keyboard.SetKeyState(XKEY_A, 1);
    m_Keyboard.SetKeyState(XKEY_A, 0);
    EXPECT_EQ(2, m_Keyboard.IsPressed(XKEY_A));
    EXPECT_EQ(0, m_Keyboard.IsPressed(XKEY_A));
    EXPECT_EQ(1, m_Keyboard.GetPressed());
    // What is no key changes nothing.
    for (const unsigned short usKey : { 0, 323, 324, 0xffff })
    {
        m_Keyboard.SetKeyState(usKey, 1);
        EXPECT_EQ(0, m_Keyboard.IsPressed(usKey));
    }
    EXPECT_EQ(1, m_Keyboard.GetPressed());
}

TEST_F(CKeyboardTest, ClearsOneOrBoth)
{
    const auto Fill = [this]
    {
        m_Keyboard.AddKeyToQueue('a', 1, 0);
        m_Keyboard.SetKeyState(XKEY_A, 1);
    };
    Fill();
    m_Keyboard.Clear(1);
    EXPECT_EQ(0, m_Keyboard.IsKeyWaiting());
    EXPECT_EQ(1, m_Keyboard.GetPressed());
    EXPECT_EQ(3, m_Keyboard.IsPressed(XKEY_A));
    Fill();
    m_Keyboard.Clear(2);
    EXPECT_EQ(0, m_Keyboard.GetPressed());
    EXPECT_EQ(0, m_Keyboard.IsPressed(XKEY_A));
    EXPECT_EQ((TEvents{ { 'a', 1 } }), TakeEvents(m_Keyboard));
    Fill();
    m_Keyboard.Clear(3);
    EXPECT_EQ(0, m_Keyboard.IsKeyWaiting() + m_Keyboard.GetPressed());
}

TEST_F(CKeyboardTest, LayoutIsTheOneThatHostsKnow)
{
    const CKeyboard &k = m_Keyboard;
    const int nPointer = (int)sizeof(void *);
    EXPECT_EQ(nPointer, OffsetOf(k, k.m_hHook));
    EXPECT_EQ(2 * nPointer, OffsetOf(k, k.m_sNumPressed));
    EXPECT_EQ(2 * nPointer + 2, OffsetOf(k, k.m_abKeys));
    EXPECT_EQ(2 * nPointer + 326, OffsetOf(k, k.m_sQueueRead));
    EXPECT_EQ(2 * nPointer + 328, OffsetOf(k, k.m_sQueueWrite));
    EXPECT_EQ(2 * nPointer + 332, OffsetOf(k, k.m_aQueue));
    EXPECT_EQ(8u, sizeof(TQueueChar));
    // The destructor takes two slots here and one with the host's compiler.
    EXPECT_EQ(2, SlotOf(&CKeyboardBase::Clear));
    EXPECT_EQ(3, SlotOf(&CKeyboardBase::IsKeyWaiting));
    EXPECT_EQ(4, SlotOf(&CKeyboardBase::GetNext));
    EXPECT_EQ(5, SlotOf(&CKeyboardBase::IsPressed));
    EXPECT_EQ(6, SlotOf(&CKeyboardBase::GetPressed));
    EXPECT_EQ(7, SlotOf(&CKeyboardBase::AddKeyToQueue));
    EXPECT_EQ(8, SlotOf(&CKeyboardBase::SetKeyState));
}

TEST(CKeyNames, NameEveryCodeOnce)
{
    std::map<std::string, int> names;
    const TKeyName *pNames = KeyNames();
    EXPECT_STREQ("NULL", pNames[0].pszName);
    EXPECT_STREQ("XKEY_NONE", pNames[1].pszName);
    EXPECT_STREQ("XKEY_BSPACE", pNames[2].pszName);
    for (; pNames->pszName; ++pNames)
        EXPECT_TRUE(names.insert({ pNames->pszName, pNames->usKey }).second) << pNames->pszName;
    EXPECT_EQ(2 + 45 + 10 + 26 + 10 + 24, (int)names.size());
    const std::pair<const char *, int> wanted[] = {
        { "NULL", 0 },          { "XKEY_NONE", 0 },       { "XKEY_ENTER", 13 },     { "XKEY_TILDE", 115 },
        { "XKEY_DECIMAL", 44 }, { "XKEY_0", 48 },         { "XKEY_9", 57 },         { "XKEY_A", 65 },
        { "XKEY_Z", 90 },       { "XKEY_INSERT", 256 },   { "XKEY_PAGEDOWN", 261 }, { "XKEY_DOWN", 265 },
        { "XKEY_SHIFT", 266 },  { "XKEY_RSHIFT", 268 },   { "XKEY_RCTRL", 271 },    { "XKEY_RALT", 274 },
        { "XKEY_RWIN", 277 },   { "XKEY_NUMLOCK", 278 },  { "XKEY_NPDIVIDE", 279 }, { "XKEY_NPDECIMAL", 284 },
        { "XKEY_NP0", 285 },    { "XKEY_NP9", 294 },      { "XKEY_PRINTSCR", 295 }, { "XKEY_SCROLL", 296 },
        { "XKEY_BREAK", 297 },  { "XKEY_CAPSLOCK", 298 }, { "XKEY_F1", 299 },       { "XKEY_F12", 310 },
        { "XKEY_F24", 322 },
    };
    for (const auto &[pszName, nKey] : wanted)
        EXPECT_EQ(nKey, names.count(pszName) ? names[pszName] : -1) << pszName;
}

#ifndef _WIN32
namespace
{
// Keys that a user presses, through the message queue.
class CKeyboardFaceTest : public CScreenTest
{
protected:
    CKeyboardFaceTest()
    {
        SetMode(640, 480, 16);
        Keyboard().Clear(3);
    }

    static CKeyboardBase &Keyboard() { return *glb->m_pKeyboard; }

    static TEvents Press(int nVirtualKey, bool bDown, unsigned char ucChar = 0)
    {
        FaceKey(nVirtualKey, bDown, ucChar);
        xHandler();
        return TakeEvents(Keyboard());
    }
};
} // namespace

TEST_F(CKeyboardFaceTest, TextIsQueuedAsItsCharacterAndStatesAsKeys)
{
    EXPECT_EQ((TEvents{ { 'a', 1 } }), Press('A', true, 'a'));
    EXPECT_EQ(3, Keyboard().IsPressed(XKEY_A));
    FaceRepeatKey('A', 'a');
    FaceRepeatKey('A', 'a');
    xHandler();
    EXPECT_EQ((TEvents{ { 'a', 1 }, { 'a', 1 } }), TakeEvents(Keyboard()));
    EXPECT_EQ(1, Keyboard().IsPressed(XKEY_A)) << "repeats are no presses";
    EXPECT_EQ((TEvents{ { 'a', 0 } }), Press('A', false));
    EXPECT_EQ(0, Keyboard().IsPressed(XKEY_A));
    EXPECT_EQ((TEvents{ { 0xe4, 1 } }), Press(VK_OEM_7, true, 0xe4)) << "a letter beyond ASCII";
    EXPECT_EQ((TEvents{ { 0xe4, 0 } }), Press(VK_OEM_7, false));
    EXPECT_EQ(0, Keyboard().GetPressed()) << "keys above 151 have no state";
    FaceTypeInputMethod(0x80);
    xHandler();
    EXPECT_EQ((TEvents{ { 0x80, 1 }, { 0x80, 0 } }), TakeEvents(Keyboard()));
}

TEST_F(CKeyboardFaceTest, EveryTrackedKey)
{
    struct TRow
    {
        int nFirst, nLast, nKey;
    };
    static const TRow s_Rows[] = {
        { 8, 9, 8 },         { 13, 13, 13 },      { 0x13, 0x13, 297 }, { 0x14, 0x14, 298 },  { 0x16, 0x16, 22 },
        { 27, 27, 27 },      { 32, 32, 32 },      { 0x21, 0x22, 260 }, { 0x23, 0x23, 259 },  { 0x24, 0x24, 258 },
        { 0x25, 0x28, 262 }, { 0x2c, 0x2c, 295 }, { 0x2d, 0x2e, 256 }, { 0x30, 0x39, 0x30 }, { 0x41, 0x5a, 0x41 },
        { 0x60, 0x69, 285 }, { 0x6a, 0x6a, 280 }, { 0x6b, 0x6b, 282 }, { 0x6d, 0x6d, 281 },  { 0x6e, 0x6e, 284 },
        { 0x6f, 0x6f, 279 }, { 0x70, 0x87, 299 }, { 0x90, 0x90, 278 }, { 0x91, 0x91, 296 },
    };
    for (int nVirtualKey = 1; nVirtualKey < 255; ++nVirtualKey)
    {
        if ((nVirtualKey >= VK_SHIFT && nVirtualKey <= VK_MENU) ||
            (nVirtualKey >= VK_LSHIFT && nVirtualKey <= VK_RMENU))
            continue;
        int nKey = 0;
        for (const TRow &row : s_Rows)
            if (nVirtualKey >= row.nFirst && nVirtualKey <= row.nLast)
                nKey = row.nKey + nVirtualKey - row.nFirst;
        const TEvents down = nKey ? TEvents{ { nKey, 1 } } : TEvents{}, up = nKey ? TEvents{ { nKey, 0 } } : TEvents{};
        EXPECT_EQ(down, Press(nVirtualKey, true)) << nVirtualKey;
        EXPECT_EQ(nKey ? 3 : 0, Keyboard().IsPressed((unsigned short)nKey)) << nVirtualKey;
        EXPECT_EQ(nKey ? 1 : 0, Keyboard().GetPressed()) << nVirtualKey;
        EXPECT_EQ(up, Press(nVirtualKey, false)) << nVirtualKey;
    }
}

namespace
{
// The rules for modifiers told once more, the slow way: states by code, events
// by a list, nothing shared with the library.
class CHookModel
{
public:
    TEvents m_Events;
    std::map<int, int> m_States; // bit 0 down, bit 1 pressed since it was read
    std::set<int> m_Held;

    void Key(int nVirtualKey, bool bDown, int nChar)
    {
        if (bDown)
            m_Held.insert(nVirtualKey);
        else
            m_Held.erase(nVirtualKey);
        if (nChar)
            Queue(nChar, bDown);
        int nKey = nVirtualKey;
        if (nVirtualKey >= VK_LSHIFT && nVirtualKey <= VK_RMENU)
        {
            // Shift, Control and Alt from A0 on in pairs, their codes from 266 on in threes.
            const int nPair = (nVirtualKey - 0xa0) / 2, nGeneric = 266 + 3 * nPair;
            const bool bLeft = m_Held.count(0xa0 + 2 * nPair), bRight = m_Held.count(0xa1 + 2 * nPair);
            nKey = nGeneric;
            if (bDown)
                nKey = bLeft ? nGeneric + 1 : bRight ? nGeneric + 2 : nGeneric;
            else if (bLeft && !bRight)
                nKey = nGeneric + 2;
            else if (bRight && !bLeft)
                nKey = nGeneric + 1;
            else
            {
                for (int nSide : { nGeneric + 1, nGeneric + 2 })
                {
                    Queue(nSide, false);
                    Set(nSide, false);
                }
                nKey = 0;
            }
            Set(nKey, bDown);
            const bool bSide = Poll(nGeneric + 1) + Poll(nGeneric + 2) > 0, bGeneric = Poll(nGeneric) > 0;
            if (bSide != bGeneric)
            {
                Queue(nGeneric, bSide);
                Set(nGeneric, bSide);
            }
        }
        if (!nChar)
            Queue(nKey, bDown);
        Set(nKey, bDown);
    }

    int Poll(int nKey)
    {
        const int nState = m_States[nKey];
        m_States[nKey] = nState & 1;
        return nState;
    }

    int Pressed()
    {
        int nPressed = 0;
        for (const auto &state : m_States)
            nPressed += state.second & 1;
        return nPressed;
    }

private:
    void Queue(int nKey, bool bDown)
    {
        if (!nKey)
            return;
        int nFlags = bDown;
        const std::pair<int, int> flags[] = { { VK_LSHIFT, 32 },  { VK_RSHIFT, 64 }, { VK_LCONTROL, 2 },
                                              { VK_RCONTROL, 4 }, { VK_LMENU, 8 },   { VK_RMENU, 16 } };
        for (const auto &[nVirtualKey, nFlag] : flags)
            nFlags += m_Held.count(nVirtualKey) ? nFlag : 0;
        m_Events.push_back({ nKey, nFlags });
    }

    void Set(int nKey, bool bDown)
    {
        if (nKey && bDown && !(m_States[nKey] & 1))
            m_States[nKey] = 3;
        if (nKey && !bDown)
            m_States[nKey] &= 2;
    }
};
} // namespace

TEST_F(CKeyboardFaceTest, ModifiersAsInThePlainModel)
{
    std::mt19937 random(20);
    CHookModel model;
    for (int i = 0; i < 4000; ++i)
    {
        static const int s_Keys[] = { VK_LSHIFT, VK_RSHIFT, VK_LCONTROL, VK_RCONTROL, VK_LMENU, VK_RMENU, 'A', 'B' };
        const int nVirtualKey = s_Keys[random() % 8];
        const bool bText = nVirtualKey == 'A';
        const bool bDown = random() % 3 ? !model.m_Held.count(nVirtualKey) : random() % 2;
        if (bText && !bDown && !model.m_Held.count('A') && !model.m_States.count('A'))
            continue; // has typed nothing yet
        FaceKey(nVirtualKey, bDown, bText && bDown ? 'a' : 0);
        xHandler();
        model.Key(nVirtualKey, bDown, bText ? 'a' : 0);
        ASSERT_EQ(model.m_Events, TakeEvents(Keyboard())) << "event " << i;
        ASSERT_EQ(model.Pressed(), Keyboard().GetPressed()) << "event " << i;
        if (random() % 4 == 0)
            for (const int nKey : { 65, 66, 266, 267, 268, 269, 270, 271, 272, 273, 274 })
                ASSERT_EQ(model.Poll(nKey), Keyboard().IsPressed((unsigned short)nKey)) << nKey << " at event " << i;
        model.m_Events.clear();
    }
}

namespace
{
std::vector<std::string> s_Pasted;

void KeepPaste(xlong lMsg, xlong lWindowID, xlong lCntrlID, xparam lP3, void *pUser)
{
    if (lMsg == XGUIMSG_PASTE)
        s_Pasted.push_back(std::to_string(lCntrlID + lP3) + " " + (const char *)pUser);
}
} // namespace

TEST_F(CKeyboardFaceTest, Character22PastesTheClipboard)
{
    CWindow window;
    ASSERT_EQ(1, window.CWindowBase::Create(0, 0, 0, 100, 100, 0));
    ASSERT_EQ(1, glb->m_pWinCtrl->AddWindow(&window, KeepPaste, nullptr));
    window.m_bActive = 0; // so that the callback hears of it
    s_Pasted.clear();
    Press('V', true, 22);
    EXPECT_TRUE(s_Pasted.empty()) << "there is nothing to paste";
    Press('V', false);
    FaceSetClipboard("B\xC3\xA4r\n");
    Press('V', true, 22);
    EXPECT_EQ(std::vector<std::string>{ "0 B\xE4r\r\n" }, s_Pasted);
    Press('V', false);
    EXPECT_EQ(2u, s_Pasted.size()) << "the release has the character too";
    EXPECT_TRUE(OpenClipboard(nullptr)) << "it was closed";
    CloseClipboard();
    FaceFailClipboard(true);
    Press('V', true, 22);
    EXPECT_EQ(2u, s_Pasted.size());
    FaceFailClipboard(false);
    for (int i = 0; i < 130; ++i)
        Keyboard().AddKeyToQueue(22, 1, 0);
    EXPECT_EQ(2u + 127, s_Pasted.size()) << "what the queue drops is not pasted";
    glb->m_pWinCtrl->RemoveWindow(0);
}

TEST_F(CKeyboardFaceTest, LooksBeforeTakingAndWithoutAKeyboard)
{
    FaceKey('A', true, 'a');
    MSG msg;
    ASSERT_TRUE(PeekMessageA(&msg, nullptr, WM_KEYFIRST, WM_KEYLAST, PM_NOREMOVE));
    EXPECT_TRUE(TakeEvents(Keyboard()).empty()) << "a look is no key";
    xHandler();
    EXPECT_EQ((TEvents{ { 'a', 1 } }), TakeEvents(Keyboard()));
    CKeyboardBase *pKeyboard = glb->m_pKeyboard;
    glb->m_pKeyboard = nullptr;
    FaceKey('A', false, 0);
    xHandler();
    glb->m_pKeyboard = pKeyboard;
    EXPECT_TRUE(TakeEvents(Keyboard()).empty());
}

TEST_F(CKeyboardFaceTest, EndsWithItsHookAndSinks)
{
    XDELETE(glb->m_pKeyboard);
    glb->m_pKeyboard = XNEW(CKeyboard);
    EXPECT_EQ((TEvents{ { 'a', 1 } }), Press('A', true, 'a')) << "one hook, one event";
    CKeyboardBase *pOld = glb->m_pKeyboard;
    CKeyboard *pSecond = XNEW(CKeyboard);
    XDELETE(pOld);
    glb->m_pKeyboard = pSecond;
    EXPECT_EQ((TEvents{ { 'a', 0 } }), Press('A', false));
}
#endif
