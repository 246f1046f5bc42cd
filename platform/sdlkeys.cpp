#include "platform/sdlkeys.h"
#include "platform/codepage.h"

#include <string.h>

namespace
{
struct TKeyRow
{
    SDL_Scancode eScan;
    unsigned char ucVirtualKey; ///< 0: by the layout, see below
    unsigned char ucScanCode;   ///< of a PC keyboard, set 1
    bool bExtended;
};

const TKeyRow s_KeyRows[] = {
    { SDL_SCANCODE_ESCAPE, VK_ESCAPE, 0x01, false },
    { SDL_SCANCODE_1, '1', 0x02, false },
    { SDL_SCANCODE_2, '2', 0x03, false },
    { SDL_SCANCODE_3, '3', 0x04, false },
    { SDL_SCANCODE_4, '4', 0x05, false },
    { SDL_SCANCODE_5, '5', 0x06, false },
    { SDL_SCANCODE_6, '6', 0x07, false },
    { SDL_SCANCODE_7, '7', 0x08, false },
    { SDL_SCANCODE_8, '8', 0x09, false },
    { SDL_SCANCODE_9, '9', 0x0A, false },
    { SDL_SCANCODE_0, '0', 0x0B, false },
    { SDL_SCANCODE_MINUS, VK_OEM_MINUS, 0x0C, false },
    { SDL_SCANCODE_EQUALS, VK_OEM_PLUS, 0x0D, false },
    { SDL_SCANCODE_BACKSPACE, VK_BACK, 0x0E, false },
    { SDL_SCANCODE_TAB, VK_TAB, 0x0F, false },
    { SDL_SCANCODE_Q, 'Q', 0x10, false },
    { SDL_SCANCODE_W, 'W', 0x11, false },
    { SDL_SCANCODE_E, 'E', 0x12, false },
    { SDL_SCANCODE_R, 'R', 0x13, false },
    { SDL_SCANCODE_T, 'T', 0x14, false },
    { SDL_SCANCODE_Y, 'Y', 0x15, false },
    { SDL_SCANCODE_U, 'U', 0x16, false },
    { SDL_SCANCODE_I, 'I', 0x17, false },
    { SDL_SCANCODE_O, 'O', 0x18, false },
    { SDL_SCANCODE_P, 'P', 0x19, false },
    { SDL_SCANCODE_LEFTBRACKET, VK_OEM_4, 0x1A, false },
    { SDL_SCANCODE_RIGHTBRACKET, VK_OEM_6, 0x1B, false },
    { SDL_SCANCODE_RETURN, VK_RETURN, 0x1C, false },
    { SDL_SCANCODE_LCTRL, VK_LCONTROL, 0x1D, false },
    { SDL_SCANCODE_A, 'A', 0x1E, false },
    { SDL_SCANCODE_S, 'S', 0x1F, false },
    { SDL_SCANCODE_D, 'D', 0x20, false },
    { SDL_SCANCODE_F, 'F', 0x21, false },
    { SDL_SCANCODE_G, 'G', 0x22, false },
    { SDL_SCANCODE_H, 'H', 0x23, false },
    { SDL_SCANCODE_J, 'J', 0x24, false },
    { SDL_SCANCODE_K, 'K', 0x25, false },
    { SDL_SCANCODE_L, 'L', 0x26, false },
    { SDL_SCANCODE_SEMICOLON, VK_OEM_1, 0x27, false },
    { SDL_SCANCODE_APOSTROPHE, VK_OEM_7, 0x28, false },
    { SDL_SCANCODE_GRAVE, VK_OEM_3, 0x29, false },
    { SDL_SCANCODE_LSHIFT, VK_LSHIFT, 0x2A, false },
    { SDL_SCANCODE_BACKSLASH, VK_OEM_5, 0x2B, false },
    { SDL_SCANCODE_NONUSHASH, VK_OEM_5, 0x2B, false },
    { SDL_SCANCODE_Z, 'Z', 0x2C, false },
    { SDL_SCANCODE_X, 'X', 0x2D, false },
    { SDL_SCANCODE_C, 'C', 0x2E, false },
    { SDL_SCANCODE_V, 'V', 0x2F, false },
    { SDL_SCANCODE_B, 'B', 0x30, false },
    { SDL_SCANCODE_N, 'N', 0x31, false },
    { SDL_SCANCODE_M, 'M', 0x32, false },
    { SDL_SCANCODE_COMMA, VK_OEM_COMMA, 0x33, false },
    { SDL_SCANCODE_PERIOD, VK_OEM_PERIOD, 0x34, false },
    { SDL_SCANCODE_SLASH, VK_OEM_2, 0x35, false },
    { SDL_SCANCODE_RSHIFT, VK_RSHIFT, 0x36, false },
    { SDL_SCANCODE_KP_MULTIPLY, VK_MULTIPLY, 0x37, false },
    { SDL_SCANCODE_LALT, VK_LMENU, 0x38, false },
    { SDL_SCANCODE_SPACE, VK_SPACE, 0x39, false },
    { SDL_SCANCODE_CAPSLOCK, VK_CAPITAL, 0x3A, false },
    { SDL_SCANCODE_NUMLOCKCLEAR, VK_NUMLOCK, 0x45, true },
    { SDL_SCANCODE_SCROLLLOCK, VK_SCROLL, 0x46, false },
    { SDL_SCANCODE_KP_7, VK_NUMPAD0 + 7, 0x47, false },
    { SDL_SCANCODE_KP_8, VK_NUMPAD0 + 8, 0x48, false },
    { SDL_SCANCODE_KP_9, VK_NUMPAD0 + 9, 0x49, false },
    { SDL_SCANCODE_KP_MINUS, VK_SUBTRACT, 0x4A, false },
    { SDL_SCANCODE_KP_4, VK_NUMPAD0 + 4, 0x4B, false },
    { SDL_SCANCODE_KP_5, VK_NUMPAD0 + 5, 0x4C, false },
    { SDL_SCANCODE_KP_6, VK_NUMPAD0 + 6, 0x4D, false },
    { SDL_SCANCODE_KP_PLUS, VK_ADD, 0x4E, false },
    { SDL_SCANCODE_KP_1, VK_NUMPAD0 + 1, 0x4F, false },
    { SDL_SCANCODE_KP_2, VK_NUMPAD0 + 2, 0x50, false },
    { SDL_SCANCODE_KP_3, VK_NUMPAD0 + 3, 0x51, false },
    { SDL_SCANCODE_KP_0, VK_NUMPAD0, 0x52, false },
    { SDL_SCANCODE_KP_PERIOD, VK_DECIMAL, 0x53, false },
    { SDL_SCANCODE_NONUSBACKSLASH, VK_OEM_102, 0x56, false },
    { SDL_SCANCODE_KP_ENTER, VK_RETURN, 0x1C, true },
    { SDL_SCANCODE_RCTRL, VK_RCONTROL, 0x1D, true },
    { SDL_SCANCODE_KP_DIVIDE, VK_DIVIDE, 0x35, true },
    { SDL_SCANCODE_PRINTSCREEN, VK_SNAPSHOT, 0x37, true },
    { SDL_SCANCODE_RALT, VK_RMENU, 0x38, true },
    { SDL_SCANCODE_PAUSE, VK_PAUSE, 0x45, false },
    { SDL_SCANCODE_HOME, VK_HOME, 0x47, true },
    { SDL_SCANCODE_UP, VK_UP, 0x48, true },
    { SDL_SCANCODE_PAGEUP, VK_PRIOR, 0x49, true },
    { SDL_SCANCODE_LEFT, VK_LEFT, 0x4B, true },
    { SDL_SCANCODE_RIGHT, VK_RIGHT, 0x4D, true },
    { SDL_SCANCODE_END, VK_END, 0x4F, true },
    { SDL_SCANCODE_DOWN, VK_DOWN, 0x50, true },
    { SDL_SCANCODE_PAGEDOWN, VK_NEXT, 0x51, true },
    { SDL_SCANCODE_INSERT, VK_INSERT, 0x52, true },
    { SDL_SCANCODE_DELETE, VK_DELETE, 0x53, true },
    { SDL_SCANCODE_LGUI, VK_LWIN, 0x5B, true },
    { SDL_SCANCODE_RGUI, VK_RWIN, 0x5C, true },
    { SDL_SCANCODE_APPLICATION, VK_APPS, 0x5D, true },
};

// F1 to F10 lie in one row of scan codes, the others don't.
const unsigned char s_aucFunctionScanCodes[] = {
    0x3B, 0x3C, 0x3D, 0x3E, 0x3F, 0x40, 0x41, 0x42, 0x43, 0x44, 0x57, 0x58,
    0x64, 0x65, 0x66, 0x67, 0x68, 0x69, 0x6A, 0x6B, 0x6C, 0x6D, 0x6E, 0x76
};

const TKeyRow *FindRow(SDL_Scancode eScan)
{
    for (const TKeyRow &row : s_KeyRows)
        if (row.eScan == eScan)
            return &row;
    return nullptr;
}

/// Letters, digits and signs are named by what the layout has on the key.
int LayoutKey(SDL_Keycode nSym, int nDefault)
{
    if (nSym >= 'a' && nSym <= 'z')
        return nSym - 'a' + 'A';
    if (nSym >= '0' && nSym <= '9')
        return nSym;
    switch (nSym)
    {
    case '+':
    case '=':
        return VK_OEM_PLUS;
    case '-':
        return VK_OEM_MINUS;
    case ',':
        return VK_OEM_COMMA;
    case '.':
        return VK_OEM_PERIOD;
    default:
        return nDefault;
    }
}

/// The numeric pad without Num Lock.
int PadKey(int nVirtualKey)
{
    static const unsigned char s_aucKeys[] = { VK_INSERT, VK_END,   VK_DOWN, VK_NEXT, VK_LEFT,
                                               VK_CLEAR,  VK_RIGHT, VK_HOME, VK_UP,   VK_PRIOR };
    if (nVirtualKey >= VK_NUMPAD0 && nVirtualKey <= VK_NUMPAD9)
        return s_aucKeys[nVirtualKey - VK_NUMPAD0];
    return nVirtualKey == VK_DECIMAL ? VK_DELETE : nVirtualKey;
}

/// SDL puts the text of a key right behind the key.
unsigned char TakeText()
{
    SDL_Event event;
    if (SDL_PeepEvents(&event, 1, SDL_PEEKEVENT, SDL_FIRSTEVENT, SDL_LASTEVENT) != 1 || event.type != SDL_TEXTINPUT)
        return 0;
    SDL_PeepEvents(&event, 1, SDL_GETEVENT, SDL_FIRSTEVENT, SDL_LASTEVENT);
    if (!event.text.text[0])
        return 0;
    uint32_t ulChar;
    bool bInvalid = false;
    DecodeUtf8((const unsigned char *)event.text.text, strlen(event.text.text), &ulChar, &bInvalid);
    return ToCodePage1252(ulChar);
}

bool IsControl(Uint16 usModifiers)
{
    return (usModifiers & KMOD_CTRL) && !(usModifiers & (KMOD_ALT | KMOD_MODE));
}

/// What Windows' layouts type where SDL gives no text, or none that counts.
unsigned char ControlChar(int nVirtualKey, Uint16 usModifiers)
{
    const bool bControl = IsControl(usModifiers);
    switch (nVirtualKey)
    {
    case VK_RETURN:
        return bControl ? 10 : 13;
    case VK_BACK:
        return bControl ? 127 : 8;
    case VK_TAB:
        return bControl ? 0 : 9;
    case VK_ESCAPE:
        return 27;
    }
    if (bControl && nVirtualKey == VK_SPACE)
        return 32;
    if (bControl && nVirtualKey >= VK_OEM_4 && nVirtualKey <= VK_OEM_6)
        return (unsigned char)(nVirtualKey - VK_OEM_4 + 27);
    if (bControl && nVirtualKey >= 'A' && nVirtualKey <= 'Z')
        return (unsigned char)(nVirtualKey - 'A' + 1);
    return 0;
}
bool TranslateKey(const SDL_KeyboardEvent &event, TKeyEvent *pKey)
{
    const SDL_Scancode eScan = event.keysym.scancode;
    *pKey = {};
    pKey->bDown = event.type == SDL_KEYDOWN;
    pKey->bRepeat = event.repeat != 0;
    const unsigned char ucText = pKey->bDown ? TakeText() : 0;
    if ((eScan >= SDL_SCANCODE_F1 && eScan <= SDL_SCANCODE_F12) ||
        (eScan >= SDL_SCANCODE_F13 && eScan <= SDL_SCANCODE_F24))
    {
        const int i = eScan <= SDL_SCANCODE_F12 ? eScan - SDL_SCANCODE_F1 : eScan - SDL_SCANCODE_F13 + 12;
        pKey->nVirtualKey = VK_F1 + i;
        pKey->nScanCode = s_aucFunctionScanCodes[i];
    }
    else if (const TKeyRow *pRow = FindRow(eScan))
    {
        pKey->nVirtualKey = pRow->ucVirtualKey;
        pKey->nScanCode = pRow->ucScanCode;
        pKey->bExtended = pRow->bExtended;
        const bool bPad = eScan >= SDL_SCANCODE_KP_DIVIDE && eScan <= SDL_SCANCODE_KP_PERIOD;
        if (bPad && !(event.keysym.mod & KMOD_NUM))
            pKey->nVirtualKey = PadKey(pKey->nVirtualKey);
        else if (!bPad && !(event.keysym.sym & SDLK_SCANCODE_MASK))
            pKey->nVirtualKey = LayoutKey(event.keysym.sym, pKey->nVirtualKey);
    }
    else
        return false;
    if (!IsControl(event.keysym.mod))
        pKey->ucChar = ucText;
    if (pKey->bDown && !pKey->ucChar)
        pKey->ucChar = ControlChar(pKey->nVirtualKey, event.keysym.mod);
    return true;
}

// Where the right Alt key chooses a third character of a key, Windows presses
// the left Control key with it. SDL doesn't tell such layouts from others, so
// the first such character does.
bool s_bAltGr = false;
bool s_bControlAdded = false;

bool IsThirdChar(const SDL_KeyboardEvent &event, unsigned char ucChar)
{
    const Uint16 usModifiers = event.keysym.mod;
    if (!ucChar || !(usModifiers & (KMOD_RALT | KMOD_MODE)) || (usModifiers & (KMOD_CTRL | KMOD_LALT | KMOD_SHIFT)))
        return false;
    const unsigned char ucPlain = ToCodePage1252((uint32_t)event.keysym.sym);
    return ucChar != ucPlain && !(ucPlain >= 'a' && ucPlain <= 'z' && ucChar == ucPlain - 'a' + 'A');
}

TKeyEvent AddedControl(bool bDown)
{
    s_bControlAdded = bDown;
    TKeyEvent key = {};
    key.nVirtualKey = VK_LCONTROL;
    key.nScanCode = 0x1D;
    key.bDown = bDown;
    return key;
}
} // namespace

int TranslateSdlKey(const SDL_KeyboardEvent &event, TKeyEvent *pKeys)
{
    TKeyEvent key;
    if (!TranslateKey(event, &key))
        return 0;
    int nKeys = 0;
    if (key.nVirtualKey == VK_RMENU)
    {
        if (key.bDown ? s_bAltGr && !s_bControlAdded && !(event.keysym.mod & KMOD_LCTRL) : s_bControlAdded)
            pKeys[nKeys++] = AddedControl(key.bDown);
    }
    else if (key.bDown && !s_bControlAdded && IsThirdChar(event, key.ucChar))
    {
        s_bAltGr = true;
        pKeys[nKeys++] = AddedControl(true);
    }
    pKeys[nKeys++] = key;
    return nKeys;
}

void TypeSdlText(HWND hWnd, const char *pszUtf8)
{
    for (size_t ulLeft = strlen(pszUtf8); ulLeft;)
    {
        uint32_t ulChar;
        bool bInvalid = false;
        const size_t ulLength = DecodeUtf8((const unsigned char *)pszUtf8, ulLeft, &ulChar, &bInvalid);
        if (const unsigned char ucChar = ToCodePage1252(ulChar))
            InputText(hWnd, ucChar);
        pszUtf8 += ulLength;
        ulLeft -= ulLength;
    }
}

void ForgetSdlLayout()
{
    s_bAltGr = false;
}
