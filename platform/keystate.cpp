#include "platform/keystate.h"

#include <string.h>

namespace
{
const BYTE DOWN = 0x80, ON = 0x01;

BYTE s_aucKeys[256];
BYTE s_aucTyped[256]; ///< by each key's last press: its release types the same

void Move(BYTE *pucKey, bool bDown)
{
    if (bDown && !(*pucKey & DOWN))
        *pucKey = (BYTE)((*pucKey ^ ON) | DOWN);
    else if (!bDown)
        *pucKey &= (BYTE)~DOWN;
}
} // namespace

int BothSides(int lVirtualKey)
{
    switch (lVirtualKey)
    {
    case VK_LSHIFT:
    case VK_RSHIFT:
        return VK_SHIFT;
    case VK_LCONTROL:
    case VK_RCONTROL:
        return VK_CONTROL;
    case VK_LMENU:
    case VK_RMENU:
        return VK_MENU;
    default:
        return 0;
    }
}

void TakeKeyState(int lVirtualKey, bool bDown, unsigned char ucChar)
{
    lVirtualKey &= 0xFF;
    Move(&s_aucKeys[lVirtualKey], bDown);
    if (bDown)
        s_aucTyped[lVirtualKey] = ucChar;
    const int lBoth = BothSides(lVirtualKey);
    if (!lBoth)
        return;
    // The left key of a pair is followed by the right one.
    const int lLeft = lVirtualKey & ~1;
    Move(&s_aucKeys[lBoth], (s_aucKeys[lLeft] | s_aucKeys[lLeft + 1]) & DOWN);
}

void SetLockState(int lVirtualKey, bool bOn)
{
    BYTE &ucKey = s_aucKeys[lVirtualKey & 0xFF];
    ucKey = (BYTE)((ucKey & ~ON) | (bOn ? ON : 0));
}

void ReleaseKeyState()
{
    for (BYTE &ucKey : s_aucKeys)
        ucKey &= (BYTE)~DOWN;
}

void ResetKeyState()
{
    memset(s_aucKeys, 0, sizeof(s_aucKeys));
    memset(s_aucTyped, 0, sizeof(s_aucTyped));
}

SHORT GetKeyState(int lVirtualKey)
{
    const BYTE ucKey = s_aucKeys[lVirtualKey & 0xFF];
    return (SHORT)((ucKey & DOWN ? 0xFF80 : 0) | (ucKey & ON));
}

BOOL GetKeyboardState(BYTE *pucState)
{
    if (!pucState)
    {
        SetLastError(ERROR_INVALID_PARAMETER);
        return FALSE;
    }
    memcpy(pucState, s_aucKeys, sizeof(s_aucKeys));
    return TRUE;
}

int ToAscii(UINT ulVirtualKey, UINT ulScanCode, const BYTE *pucState, WORD *pusChar, UINT ulFlags)
{
    // The layout is the desktop's: it has told the character with the press,
    // and what the state makes of it is in there.
    if (ulVirtualKey > 0xFF || !pucState || !pusChar || !s_aucTyped[ulVirtualKey])
        return 0;
    *pusChar = s_aucTyped[ulVirtualKey];
    return 1;
}
