#pragma once

#include "tarvix/memory.h"
#include "tarvix/msgsys.h"
#include "tarvix/types.h"

struct HHOOK__;
typedef struct HHOOK__ *HHOOK;

/// Key codes. Keys with a character of their own have its ASCII code.
enum
{
    XKEY_NONE = 0,
    XKEY_BSPACE = 8,
    XKEY_TAB = 9,
    XKEY_ENTER = 13,
    XKEY_ESC = 27,
    XKEY_SPACE = 32,
    XKEY_MULTIPLY = 42,
    XKEY_ADD = 43,
    XKEY_DECIMAL = 44,
    XKEY_SUBTRACT = 45,
    XKEY_DOT = 46,
    XKEY_DIVIDE = 47,
    XKEY_0 = 48,
    XKEY_1,
    XKEY_2,
    XKEY_3,
    XKEY_4,
    XKEY_5,
    XKEY_6,
    XKEY_7,
    XKEY_8,
    XKEY_9,
    XKEY_A = 65,
    XKEY_B,
    XKEY_C,
    XKEY_D,
    XKEY_E,
    XKEY_F,
    XKEY_G,
    XKEY_H,
    XKEY_I,
    XKEY_J,
    XKEY_K,
    XKEY_L,
    XKEY_M,
    XKEY_N,
    XKEY_O,
    XKEY_P,
    XKEY_Q,
    XKEY_R,
    XKEY_S,
    XKEY_T,
    XKEY_U,
    XKEY_V,
    XKEY_W,
    XKEY_X,
    XKEY_Y,
    XKEY_Z,
    XKEY_TILDE = 115, ///< the code that resource scripts have always had for it
    XKEY_INSERT = 256,
    XKEY_DELETE,
    XKEY_HOME,
    XKEY_END,
    XKEY_PAGEUP,
    XKEY_PAGEDOWN,
    XKEY_LEFT,
    XKEY_UP,
    XKEY_RIGHT,
    XKEY_DOWN,
    XKEY_SHIFT, ///< either side
    XKEY_LSHIFT,
    XKEY_RSHIFT,
    XKEY_CTRL, ///< either side
    XKEY_LCTRL,
    XKEY_RCTRL,
    XKEY_ALT, ///< either side
    XKEY_LALT,
    XKEY_RALT,
    XKEY_WIN,
    XKEY_LWIN,
    XKEY_RWIN,
    XKEY_NUMLOCK,
    XKEY_NPDIVIDE,
    XKEY_NPMULTIPLY,
    XKEY_NPSUBTRACT,
    XKEY_NPADD,
    XKEY_NPENTER,
    XKEY_NPDECIMAL,
    XKEY_NP0,
    XKEY_NP1,
    XKEY_NP2,
    XKEY_NP3,
    XKEY_NP4,
    XKEY_NP5,
    XKEY_NP6,
    XKEY_NP7,
    XKEY_NP8,
    XKEY_NP9,
    XKEY_PRINTSCR,
    XKEY_SCROLL,
    XKEY_BREAK,
    XKEY_CAPSLOCK,
    XKEY_F1,
    XKEY_F2,
    XKEY_F3,
    XKEY_F4,
    XKEY_F5,
    XKEY_F6,
    XKEY_F7,
    XKEY_F8,
    XKEY_F9,
    XKEY_F10,
    XKEY_F11,
    XKEY_F12,
    XKEY_F13,
    XKEY_F14,
    XKEY_F15,
    XKEY_F16,
    XKEY_F17,
    XKEY_F18,
    XKEY_F19,
    XKEY_F20,
    XKEY_F21,
    XKEY_F22,
    XKEY_F23,
    XKEY_F24
};

static_assert(XKEY_9 == 57 && XKEY_Z == 90 && XKEY_NPDECIMAL == 284 && XKEY_F24 == 322,
              "codes are part of the scripts");

/// Flags of a key event.
enum
{
    XKEYF_DOWN = 1, ///< clear: the key went up
    XKEYF_LCTRL = 2,
    XKEYF_RCTRL = 4,
    XKEYF_LALT = 8,
    XKEYF_RALT = 16,
    XKEYF_LSHIFT = 32,
    XKEYF_RSHIFT = 64
};

/// One key event.
struct TQueueChar
{
    unsigned short usKey; ///< the character where the key types one, otherwise XKEY_...
    xlong lFlags;         ///< XKEYF_...
};

/// Two views of the keyboard: a queue of events, with characters and with codes
/// for keys that type none, and a table of which keys are down, by code alone.
class TARVIX_API CKeyboardBase
{
public:
    enum
    {
        CODES = 323,       ///< 0 to XKEY_F24
        QUEUE_SLOTS = 128, ///< of which one stays free
        CLEAR_QUEUE = 1,
        CLEAR_STATES = 2,
        IS_DOWN = 1,
        WAS_PRESSED = 2
    };

    TARVIX_HEAP_CLASS

    CKeyboardBase();
    virtual ~CKeyboardBase();

    /// @param usWhat  CLEAR_QUEUE, CLEAR_STATES or both
    virtual void Clear(unsigned short usWhat);
    virtual xlong IsKeyWaiting();
    /// Takes the oldest event.
    /// @return 0 with the queue empty or without a place for the event
    virtual xlong GetNext(TQueueChar *pKey);
    /// IS_DOWN while the key is down, and WAS_PRESSED once for all presses since the last call.
    /// @param usKey  XKEY_...; 0 for what is none
    virtual xlong IsPressed(unsigned short usKey);
    /// How many keys are down, counting both a side and its generic key.
    virtual xlong GetPressed();
    /// Adds an event. Key 22, which Ctrl and V type, also pastes the clipboard's text.
    /// @param usKey            character or XKEY_...; 0 is ignored
    /// @param sDown            1 or 0
    /// @param sWithModifiers   1 adds the flags of the modifier keys
    virtual void AddKeyToQueue(unsigned short usKey, short sDown, short sWithModifiers) = 0;
    /// @param usKey  XKEY_...; 0 and what is none are ignored
    virtual void SetKeyState(unsigned short usKey, short sDown) = 0;

    HHOOK m_hHook;
    short m_sNumPressed;
    unsigned char m_abKeys[CODES + 1]; ///< IS_DOWN and WAS_PRESSED by code
    short m_sQueueRead;                ///< next slot to read
    short m_sQueueWrite;               ///< next slot to write
    TQueueChar m_aQueue[QUEUE_SLOTS];
};

/// The platform's keyboard. It listens from its construction on, whichever
/// window procedure is active; one at a time.
class TARVIX_API CKeyboard : public CKeyboardBase, public CWinMsg
{
public:
    TARVIX_HEAP_CLASS

    CKeyboard();
    CKeyboard(const CKeyboard &) = delete;
    CKeyboard &operator=(const CKeyboard &) = delete;
    ~CKeyboard() override;

    /// An event is dropped while 127 wait.
    void AddKeyToQueue(unsigned short usKey, short sDown, short sWithModifiers) override;
    void SetKeyState(unsigned short usKey, short sDown) override;
};
