#include "platform/keystate.h"

#include <string.h>

namespace
{
const BYTE s_ucDown = 0x80, s_ucOn = 0x01;

BYTE s_aucKeys[256];
BYTE s_aucTyped[256]; ///< by each key's last press: its release types the same

void Move(BYTE *pucKey, bool bDown)
{
    if (bDown && !(*pucKey & s_ucDown))
        *pucKey = (BYTE)((*pucKey ^ s_ucOn) | s_ucDown);
    else if (!bDown)
        *pucKey &= (BYTE)~s_ucDown;
}
} // namespace

int BothSides(int nVirtualKey)
{
    switch (nVirtualKey)
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

void TakeKeyState(int nVirtualKey, bool bDown, unsigned char ucChar)
{
    nVirtualKey &= 0xFF;
    Move(&s_aucKeys[nVirtualKey], bDown);
    if (bDown)
        s_aucTyped[nVirtualKey] = ucChar;
    const int nBoth = BothSides(nVirtualKey);
    if (!nBoth)
        return;
    // The left key of a pair is followed by the right one.
    const int nLeft = nVirtualKey & ~1;
    Move(&s_aucKeys[nBoth], (s_aucKeys[nLeft] | s_aucKeys[nLeft + 1]) & s_ucDown);
}

void SetLockState(int nVirtualKey, bool bOn)
{
    BYTE &ucKey = s_aucKeys[nVirtualKey & 0xFF];
    ucKey = (BYTE)((ucKey & ~s_ucOn) | (bOn ? s_ucOn : 0));
}

void ReleaseKeyState()
{
    for (BYTE &ucKey : s_aucKeys)
        ucKey &= (BYTE)~s_ucDown;
}

void ResetKeyState()
{
    memset(s_aucKeys, 0, sizeof(s_aucKeys));
    memset(s_aucTyped, 0, sizeof(s_aucTyped));
}

SHORT GetKeyState(int nVirtualKey)
{
    const BYTE ucKey = s_aucKeys[nVirtualKey & 0xFF];
    return (SHORT)((ucKey & s_ucDown ? 0xFF80 : 0) | (ucKey & s_ucOn));
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
