#include "input/keynames.h"

#include "tarvix/keyboard.h"

#define KEY(name)                                                                                                      \
    {                                                                                                                  \
        "XKEY_" #name, XKEY_##name                                                                                     \
    }

const TKeyName *KeyNames()
{
    static const TKeyName s_Names[] = {
        { "NULL", 0 },  KEY(NONE),     KEY(BSPACE),   KEY(TAB),        KEY(ENTER),      KEY(ESC),       KEY(SPACE),
        KEY(MULTIPLY),  KEY(ADD),      KEY(DECIMAL),  KEY(SUBTRACT),   KEY(DOT),        KEY(DIVIDE),    KEY(TILDE),
        KEY(INSERT),    KEY(DELETE),   KEY(HOME),     KEY(END),        KEY(PAGEUP),     KEY(PAGEDOWN),  KEY(LEFT),
        KEY(UP),        KEY(RIGHT),    KEY(DOWN),     KEY(SHIFT),      KEY(LSHIFT),     KEY(RSHIFT),    KEY(CTRL),
        KEY(LCTRL),     KEY(RCTRL),    KEY(ALT),      KEY(LALT),       KEY(RALT),       KEY(WIN),       KEY(LWIN),
        KEY(RWIN),      KEY(NUMLOCK),  KEY(NPDIVIDE), KEY(NPMULTIPLY), KEY(NPSUBTRACT), KEY(NPADD),     KEY(NPENTER),
        KEY(NPDECIMAL), KEY(PRINTSCR), KEY(SCROLL),   KEY(BREAK),      KEY(CAPSLOCK),   KEY(0),         KEY(1),
        KEY(2),         KEY(3),        KEY(4),        KEY(5),          KEY(6),          KEY(7),         KEY(8),
        KEY(9),         KEY(A),        KEY(B),        KEY(C),          KEY(D),          KEY(E),         KEY(F),
        KEY(G),         KEY(H),        KEY(I),        KEY(J),          KEY(K),          KEY(L),         KEY(M),
        KEY(N),         KEY(O),        KEY(P),        KEY(Q),          KEY(R),          KEY(S),         KEY(T),
        KEY(U),         KEY(V),        KEY(W),        KEY(X),          KEY(Y),          KEY(Z),         KEY(NP0),
        KEY(NP1),       KEY(NP2),      KEY(NP3),      KEY(NP4),        KEY(NP5),        KEY(NP6),       KEY(NP7),
        KEY(NP8),       KEY(NP9),      KEY(F1),       KEY(F2),         KEY(F3),         KEY(F4),        KEY(F5),
        KEY(F6),        KEY(F7),       KEY(F8),       KEY(F9),         KEY(F10),        KEY(F11),       KEY(F12),
        KEY(F13),       KEY(F14),      KEY(F15),      KEY(F16),        KEY(F17),        KEY(F18),       KEY(F19),
        KEY(F20),       KEY(F21),      KEY(F22),      KEY(F23),        KEY(F24),        { nullptr, 0 },
    };
    return s_Names;
}
