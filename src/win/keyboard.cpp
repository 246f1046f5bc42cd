#include "tarvix/keyboard.h"

#include "input/keyqueue.h"
#include "input/paste.h"
#include "input/replayhooks.h"
#include "tarvix/globals.h"
#include "tarvix/replay.h"
#include "win/win32.h"

#include <string.h>
#include <utility>

namespace
{
const unsigned short s_usPaste = 22; // the character of Ctrl+V
const int s_nVirtualKeys = 152;

struct TRange
{
    unsigned char ucFirst;
    unsigned char ucLast;
    unsigned short usKey; ///< of the first; the others follow
};

// Keys that are missing are not tracked, the Windows keys among them.
const TRange s_Ranges[] = {
    { VK_BACK, VK_TAB, XKEY_BSPACE },
    { VK_RETURN, VK_RETURN, XKEY_ENTER },
    { VK_SHIFT, VK_SHIFT, XKEY_SHIFT },
    { VK_CONTROL, VK_CONTROL, XKEY_CTRL },
    { VK_MENU, VK_MENU, XKEY_ALT },
    { VK_PAUSE, VK_PAUSE, XKEY_BREAK },
    { VK_CAPITAL, VK_CAPITAL, XKEY_CAPSLOCK },
    { 0x16, 0x16, 22 },
    { VK_ESCAPE, VK_ESCAPE, XKEY_ESC },
    { VK_SPACE, VK_SPACE, XKEY_SPACE },
    { VK_PRIOR, VK_NEXT, XKEY_PAGEUP },
    { VK_END, VK_END, XKEY_END },
    { VK_HOME, VK_HOME, XKEY_HOME },
    { VK_LEFT, VK_DOWN, XKEY_LEFT },
    { VK_SNAPSHOT, VK_SNAPSHOT, XKEY_PRINTSCR },
    { VK_INSERT, VK_DELETE, XKEY_INSERT },
    { '0', '9', XKEY_0 },
    { 'A', 'Z', XKEY_A },
    { VK_NUMPAD0, VK_NUMPAD9, XKEY_NP0 },
    { VK_MULTIPLY, VK_MULTIPLY, XKEY_NPMULTIPLY },
    { VK_ADD, VK_ADD, XKEY_NPADD },
    { VK_SUBTRACT, VK_SUBTRACT, XKEY_NPSUBTRACT },
    { VK_DECIMAL, VK_DECIMAL, XKEY_NPDECIMAL },
    { VK_DIVIDE, VK_DIVIDE, XKEY_NPDIVIDE },
    { VK_F1, VK_F24, XKEY_F1 },
};

unsigned short KeyOf(WPARAM wVirtualKey)
{
    if (wVirtualKey == VK_NUMLOCK)
        return XKEY_NUMLOCK;
    if (wVirtualKey == VK_SCROLL)
        return XKEY_SCROLL;
    for (const TRange &range : s_Ranges)
        if (wVirtualKey >= range.ucFirst && wVirtualKey <= range.ucLast)
            return (unsigned short)(range.usKey + (wVirtualKey - range.ucFirst));
    return 0;
}

struct TModifier
{
    unsigned short usGeneric;
    int nLeftVirtualKey;
    unsigned short usLeft;
    int nRightVirtualKey;
    unsigned short usRight;
    short sLeftFlag;
    short sRightFlag;
};

const TModifier s_Modifiers[] = {
    { XKEY_ALT, VK_LMENU, XKEY_LALT, VK_RMENU, XKEY_RALT, XKEYF_LALT, XKEYF_RALT },
    { XKEY_CTRL, VK_LCONTROL, XKEY_LCTRL, VK_RCONTROL, XKEY_RCTRL, XKEYF_LCTRL, XKEYF_RCTRL },
    { XKEY_SHIFT, VK_LSHIFT, XKEY_LSHIFT, VK_RSHIFT, XKEY_RSHIFT, XKEYF_LSHIFT, XKEYF_RSHIFT },
};

bool IsDown(int nVirtualKey)
{
    return GetKeyState(nVirtualKey) < 0;
}

void KeyUp(CKeyboardBase &keyboard, unsigned short usKey)
{
    keyboard.AddKeyToQueue(usKey, 0, 1);
    keyboard.SetKeyState(usKey, 0);
}

// Messages name a modifier without its side. The key's code becomes that of the
// side that moved, or 0 when all has been said here.
unsigned short TakeModifier(CKeyboardBase &keyboard, const TModifier &row, short sDown)
{
    const bool bLeft = IsDown(row.nLeftVirtualKey), bRight = IsDown(row.nRightVirtualKey);
    unsigned short usKey = row.usGeneric;
    if (sDown)
    {
        if (bLeft || bRight)
            usKey = bLeft ? row.usLeft : row.usRight;
    }
    else if (bLeft != bRight)
        usKey = bLeft ? row.usRight : row.usLeft;
    else
    {
        // Windows tells nothing of the first of two keys that are let go.
        KeyUp(keyboard, row.usLeft);
        KeyUp(keyboard, row.usRight);
        usKey = 0;
    }
    keyboard.SetKeyState(usKey, sDown);

    const xlong lLeft = keyboard.IsPressed(row.usLeft), lRight = keyboard.IsPressed(row.usRight);
    const xlong lGeneric = keyboard.IsPressed(row.usGeneric);
    if ((lLeft || lRight) && !lGeneric)
    {
        keyboard.AddKeyToQueue(row.usGeneric, 1, 1);
        keyboard.SetKeyState(row.usGeneric, 1);
    }
    else if (!lLeft && !lRight && lGeneric)
        KeyUp(keyboard, row.usGeneric);
    return usKey;
}

/// @return 1 when the key types a character, which is queued
bool TakeText(CKeyboardBase &keyboard, WPARAM wVirtualKey, LPARAM lData, short sDown)
{
    BYTE aucState[256];
    WORD usText = 0;
    if (!GetKeyboardState(aucState))
        return false;
    const int nChars = ToAscii((UINT)wVirtualKey, (UINT)(lData >> 16) & 0xff, aucState, &usText, 0);
    if (nChars != 1 && nChars != 2)
        return false;
    keyboard.AddKeyToQueue(nChars == 2 ? HIBYTE(usText) : LOBYTE(usText), sDown, 1);
    return true;
}

void TakeKey(CKeyboardBase &keyboard, WPARAM wVirtualKey, LPARAM lData)
{
    const short sDown = !(lData & 0x80000000);
    const bool bText = TakeText(keyboard, wVirtualKey, lData, sDown);
    unsigned short usKey = wVirtualKey < s_nVirtualKeys ? KeyOf(wVirtualKey) : 0;
    if (!usKey)
        return;
    for (const TModifier &row : s_Modifiers)
    {
        if (usKey == row.usGeneric)
        {
            usKey = TakeModifier(keyboard, row, sDown);
            break;
        }
    }
    if (!bText)
        keyboard.AddKeyToQueue(usKey, sDown, 1);
    keyboard.SetKeyState(usKey, sDown);
}

// Events that the user causes, and not the host, are what a recording keeps.
bool s_bUser = false;

void RecordKey(CReplay &replay, CKeyboardBase &keyboard, WPARAM wVirtualKey, LPARAM lData)
{
    unsigned char aucBefore[CKeyboardBase::CODES];
    memcpy(aucBefore, keyboard.m_abKeys, sizeof(aucBefore));
    s_bUser = true;
    TakeKey(keyboard, wVirtualKey, lData);
    s_bUser = false;
    for (unsigned short us = 0; us < CKeyboardBase::CODES; ++us)
        if (keyboard.m_abKeys[us] != aucBefore[us])
            replay.OnState(us, keyboard.m_abKeys[us]);
}

LRESULT CALLBACK KeyboardHook(int nCode, WPARAM wVirtualKey, LPARAM lData)
{
    if (!glb || !glb->m_pKeyboard)
        return 0;
    CKeyboardBase &keyboard = *glb->m_pKeyboard;
    CReplay *const pReplay = ActiveReplay();
    if (nCode >= 0 && nCode != HC_NOREMOVE)
    {
        if (!pReplay)
            TakeKey(keyboard, wVirtualKey, lData);
        else if (pReplay->IsRecording())
            RecordKey(*pReplay, keyboard, wVirtualKey, lData);
    }
    return CallNextHookEx(keyboard.m_hHook, nCode, wVirtualKey, lData);
}

short ModifierFlags(const CKeyboardBase &keyboard)
{
    const bool bReplayed = IsInputReplayed();
    const auto IsHeld = [&](int nVirtualKey, unsigned short usKey)
    { return bReplayed ? (keyboard.m_abKeys[usKey] & CKeyboardBase::IS_DOWN) != 0 : IsDown(nVirtualKey); };
    short sFlags = 0;
    for (const TModifier &row : s_Modifiers)
    {
        if (IsHeld(row.nLeftVirtualKey, row.usLeft))
            sFlags |= row.sLeftFlag;
        if (IsHeld(row.nRightVirtualKey, row.usRight))
            sFlags |= row.sRightFlag;
    }
    return sFlags;
}

// The key's release has the same character and pastes once more.
void Paste()
{
    if (!IsClipboardFormatAvailable(CF_TEXT) || !OpenClipboard(sglb->m_hWnd))
        return;
    const HANDLE hText = GetClipboardData(CF_TEXT);
    char *pszText = hText ? (char *)GlobalLock(hText) : nullptr;
    if (pszText)
    {
        if (s_bUser)
            if (CReplay *pReplay = ActiveReplay())
                pReplay->OnPaste(pszText);
        // What the host does about it is its own.
        const bool bUser = std::exchange(s_bUser, false);
        SendPaste(pszText);
        s_bUser = bUser;
        GlobalUnlock(hText);
    }
    CloseClipboard();
}
} // namespace

CKeyboard::CKeyboard()
{
    // Without a sink these two would go to DefWindowProcA.
    RegisterWinMsg(this, WM_KEYDOWN);
    RegisterWinMsg(this, WM_KEYUP);
    m_hHook = SetWindowsHookExA(WH_KEYBOARD, KeyboardHook, nullptr, GetCurrentThreadId());
}

CKeyboard::~CKeyboard()
{
    UnhookWindowsHookEx(m_hHook);
}

void CKeyboard::AddKeyToQueue(unsigned short usKey, short sDown, short sWithModifiers)
{
    if (!usKey)
        return;
    short sFlags = sDown;
    if (sWithModifiers == 1)
        sFlags |= ModifierFlags(*this);
    const xlong lFlags = (unsigned short)sFlags;
    if (!QueueKey(*this, usKey, lFlags))
        return;
    if (s_bUser)
        if (CReplay *pReplay = ActiveReplay())
            pReplay->OnKey(usKey, lFlags);
    if (usKey == s_usPaste)
        Paste();
}

void CKeyboard::SetKeyState(unsigned short usKey, short sDown)
{
    if (!usKey || usKey >= CODES)
        return;
    const unsigned char ucState = m_abKeys[usKey];
    if (sDown && !(ucState & IS_DOWN))
        StoreKeyState(*this, usKey, ucState | IS_DOWN | WAS_PRESSED);
    else if (!sDown && ucState & IS_DOWN)
        StoreKeyState(*this, usKey, ucState & ~IS_DOWN);
}
