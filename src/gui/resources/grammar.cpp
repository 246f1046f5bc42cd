// The words of resource scripts: these tables are what loader and builder read by.
#include "tarvix/resgrammar.h"

#include "input/keynames.h"
#include "tarvix/control.h"
#include "tarvix/dialog.h"
#include "tarvix/strings.h"
#include "tarvix/window.h"

#include <limits.h>
#include <stdint.h>

namespace
{
enum
{
    MAX_KEYS = 128
};

template <class T, size_t COUNT>
constexpr TResRows<T> Rows(const T (&rows)[COUNT])
{
    return { rows, (xlong)COUNT };
}

// clang-format off
#define NAME { "name", XRES_IS_ID }
#define TEXT { "text", XRES_IS_TEXT, XRES_AS_TEXT }
#define PLACE { "x", XRES_IS_NUMBER, XRES_AS_X }, { "y", XRES_IS_NUMBER, XRES_AS_Y }, \
              { "width", XRES_IS_NUMBER, XRES_AS_WIDTH }, { "height", XRES_IS_NUMBER, XRES_AS_HEIGHT }
#define KEY { "key", XRES_IS_KEY, XRES_AS_KEY }
#define FLAGS { "flags", XRES_IS_FLAGS, XRES_AS_FLAGS }
#define FOUR(type) { "released", type }, { "pressed", type }, { "highlighted", type }, { "disabled", type }

const TResField s_Define[] = { { "id", XRES_IS_NUMBER } },
                s_String[] = { { "id", XRES_IS_NUMBER }, TEXT },
                s_Value[] = { { "id", XRES_IS_NUMBER }, { "value", XRES_IS_NUMBER } },
                s_Picture[] = { { "picture", XRES_IS_PICTURE } },
                s_FontFile[] = { { "file", XRES_IS_FONTFILE } },
                s_Area[] = { PLACE },
                s_PictureArea[] = { { "picture", XRES_IS_PICTURE }, PLACE },
                s_Animation[] = { { "picture", XRES_IS_PICTURE }, { "delay", XRES_IS_NUMBER, XRES_AS_DELAY }, PLACE,
                                  { "frames", XRES_IS_NUMBER, XRES_AS_FRAMES, 0, 1, RES_MAX_FRAMES },
                                  { "per row", XRES_IS_NUMBER, XRES_AS_PER_ROW, 0, 0, INT_MAX },
                                  { "transparent", XRES_IS_NUMBER, XRES_AS_TRANSPARENT } },
                s_Shades[] = { { "colour", XRES_IS_COLOR, XRES_AS_OTHER, XRES_MANY } },
                s_Font[] = { { "font", XRES_IS_FONT } },
                s_Bitmap[] = { { "bitmap", XRES_IS_BITMAP } },
                s_Bitmaps[] = { FOUR(XRES_IS_BITMAP) },
                s_ColorSets[] = { FOUR(XRES_IS_COLORS) },
                s_Color[] = { { "colour", XRES_IS_COLOR } },
                s_Flags[] = { FLAGS },
                s_Size[] = { { "bytes", XRES_IS_NUMBER, XRES_AS_OTHER, 0, 1, INT_MAX } },
                s_Alpha[] = { { "alpha", XRES_IS_NUMBER } },
                s_Text[] = { { "text", XRES_IS_TEXT, XRES_AS_TEXT, XRES_OPTIONAL } },
                s_Delay[] = { { "milliseconds", XRES_IS_UNSIGNED, XRES_AS_DELAY } },
                s_Plain[] = { TEXT, PLACE, FLAGS }, // a window, a static, a group
                s_Short[] = { NAME, TEXT, PLACE, FLAGS },
                s_Button[] = { TEXT, PLACE, KEY, FLAGS },
                s_Box[] = { TEXT, PLACE, { "width of the box", XRES_IS_NUMBER, XRES_AS_BOX }, KEY, FLAGS },
                s_Scroll[] = { TEXT, PLACE, { "pixels a frame", XRES_IS_NUMBER, XRES_AS_SPEED }, FLAGS },
                s_Link[] = { TEXT, { "address", XRES_IS_TEXT, XRES_AS_ADDRESS }, PLACE, KEY, FLAGS };

#define CREATE(fields) { "Create", XRES_ITEM_CREATE, Rows(fields), XRES_NEEDED, {} }

const TResItem s_DefineItem[] = { { nullptr, XRES_ITEM_NAMED, Rows(s_Define), XRES_EACH, {} } },
               s_StringItem[] = { { nullptr, XRES_ITEM_NAMED, Rows(s_String), XRES_EACH, {} } },
               s_ValueItem[] = { { nullptr, XRES_ITEM_NAMED, Rows(s_Value), XRES_EACH, {} } },
               s_PictureItem[] = { { nullptr, XRES_ITEM_NAMED, Rows(s_Picture), XRES_EACH, {} } },
               s_FontItem[] = { { nullptr, XRES_ITEM_NAMED, Rows(s_FontFile), XRES_EACH, {} } },
               s_BitmapItem[] = { { nullptr, XRES_ITEM_NAMED, Rows(s_PictureArea), XRES_EACH | XRES_AREA, {} } },
               s_AreaItem[] = { { nullptr, XRES_ITEM_NAMED, Rows(s_Area), XRES_EACH | XRES_AREA, {} } },
               s_AnimationItem[] = { { nullptr, XRES_ITEM_NAMED, Rows(s_Animation), XRES_EACH | XRES_FRAMES, {} } },
               s_ColorItem[] = { { nullptr, XRES_ITEM_NAMED, Rows(s_Shades), XRES_EACH, {} } };

const TResItem s_Defaults[] = {
    { "Font", XRES_ITEM_FONT, Rows(s_Font), XRES_EACH, {} },
    { "Caret", XRES_ITEM_CARET, Rows(s_Bitmap), XRES_EACH, {} },
    { "Check", XRES_ITEM_CHECK, Rows(s_Bitmap), XRES_EACH, {} },
    { "Close", XRES_ITEM_CLOSE, Rows(s_Bitmaps), XRES_EACH, {} },
    { "Drop", XRES_ITEM_DROP, Rows(s_Bitmaps), XRES_EACH, {} },
    { "ArrowUp", XRES_ITEM_ARROWUP, Rows(s_Bitmaps), XRES_EACH, {} },
    { "ArrowDown", XRES_ITEM_ARROWDOWN, Rows(s_Bitmaps), XRES_EACH, {} },
    { "Titlebar", XRES_ITEM_TITLEBAR, Rows(s_ColorSets), XRES_EACH, {} },
    { "Frame", XRES_ITEM_FRAME, Rows(s_ColorSets), XRES_EACH, {} },
    { "Button", XRES_ITEM_BUTTON, Rows(s_ColorSets), XRES_EACH, {} },
    { "Static", XRES_ITEM_STATIC, Rows(s_ColorSets), XRES_EACH, {} },
};

const TResItem s_Window[] = {
    CREATE(s_Plain),
    { "TitlebarFlags", XRES_ITEM_TITLEBARFLAGS, Rows(s_Flags), 0,
      { XRES_ELSE_FAULT, XRES_ITEM_CREATE, XRES_AS_FLAGS, "XWIN_TITLEBAR" } },
    { "TitlebarBitmap", XRES_ITEM_TITLEBARBITMAP, Rows(s_Bitmaps), 0,
      { XRES_ELSE_NONE, XRES_ITEM_TITLEBARFLAGS, XRES_AS_FLAGS, "CNTRL_HASBITMAP" } },
    { "FrameFlags", XRES_ITEM_FRAMEFLAGS, Rows(s_Flags), 0,
      { XRES_ELSE_FAULT, XRES_ITEM_CREATE, XRES_AS_FLAGS, "XWIN_FRAME" } },
    { "FrameBitmap", XRES_ITEM_FRAMEBITMAP, Rows(s_Bitmaps), 0,
      { XRES_ELSE_NONE, XRES_ITEM_FRAMEFLAGS, XRES_AS_FLAGS, "CNTRL_HASBITMAP" } },
    { "Colors", XRES_ITEM_COLORS, Rows(s_ColorSets), 0,
      { XRES_ELSE_SKIP, XRES_ITEM_FRAMEFLAGS, XRES_AS_OTHER, nullptr } },
    { "CreateStatic", XRES_ITEM_CREATESTATIC, Rows(s_Short), XRES_EACH | XRES_MAKES, {} },
};

const TResSection s_Sections[] = {
    { "Defines", Rows(s_DefineItem), XRES_NAMES | XRES_USED_UP, nullptr, nullptr },
    { "Strings", Rows(s_StringItem), XRES_NAMES | XRES_USED_UP, nullptr, nullptr },
    { "Values", Rows(s_ValueItem), XRES_NAMES | XRES_USED_UP, nullptr, nullptr },
    { "Palette", Rows(s_PictureItem), XRES_USED_UP, nullptr, nullptr },
    { "Fonts", Rows(s_FontItem), XRES_NAMES, nullptr, nullptr },
    { "Bitmaps", Rows(s_BitmapItem), XRES_NAMES | XRES_USED_UP, s_PictureItem, s_AreaItem },
    { "Animations", Rows(s_AnimationItem), XRES_NAMES | XRES_USED_UP, nullptr, nullptr },
    { "Colors", Rows(s_ColorItem), XRES_NAMES | XRES_USED_UP, nullptr, nullptr },
    { "Defaults", Rows(s_Defaults), 0, nullptr, nullptr },
    { "Window", Rows(s_Window), XRES_EACH, nullptr, nullptr },
    { "Data", {}, XRES_FREE, nullptr, nullptr },
};

const TResItem s_Common[] = {
    { "Bitmap", XRES_ITEM_BITMAP, Rows(s_Bitmaps), 0, {} },
    { "TextBufferSize", XRES_ITEM_TEXTBUFFERSIZE, Rows(s_Size), 0, {} },
    { "Font", XRES_ITEM_FONT, Rows(s_Font), 0, {} },
    { "TextColor", XRES_ITEM_TEXTCOLOR, Rows(s_Color), 0, {} },
    { "Colors", XRES_ITEM_COLORS, Rows(s_ColorSets), 0, {} },
    { "Alpha", XRES_ITEM_ALPHA, Rows(s_Alpha), 0, {} },
};

const TResItem s_PlainItems[] = { CREATE(s_Plain) },
               s_ButtonItems[] = { CREATE(s_Button) },
               s_BoxItems[] = { CREATE(s_Box) },
               s_ScrollItems[] = { CREATE(s_Scroll),
                                   { "Text", XRES_ITEM_TEXT, Rows(s_Text), 0, {} },
                                   { "Delay", XRES_ITEM_DELAY, Rows(s_Delay), 0, {} } },
               s_LinkItems[] = { CREATE(s_Link) },
               s_CaptionItems[] = { { "Flags", XRES_ITEM_FLAGS, Rows(s_Flags), 0, {} } };

const TResPart s_BoxParts[] = { { "Caption", Rows(s_CaptionItems),
                                  { XRES_ELSE_SKIP, XRES_ITEM_CREATE, XRES_AS_BOX, nullptr } } };

const TResControl s_Controls[] = {
    { "Static", XDLG_STATIC, Rows(s_PlainItems), {}, 1, -1 },
    { "Button", XDLG_BUTTON, Rows(s_ButtonItems), {}, 1, -1 },
    { "Radio", XDLG_RADIOBUTTON, Rows(s_BoxItems), Rows(s_BoxParts), 1, -1 },
    { "Checkbox", XDLG_CHECKBOX, Rows(s_BoxItems), Rows(s_BoxParts), 1, -1 },
    { "Groupbox", XDLG_GROUPBOX, Rows(s_PlainItems), {}, 0, XDLG_RADIOBUTTON },
    { "Scrolltext", XDLG_SCROLLTEXT, Rows(s_ScrollItems), {}, 1, -1 },
    { "URL", XDLG_URL, Rows(s_LinkItems), {}, 1, -1 },
};

#define ROW(name) { #name, name }

const TResData s_FlagWords[] = {
    ROW(XWIN_TITLEBAR), ROW(XWIN_FRAME), ROW(XWIN_CLOSE), ROW(XWIN_MODAL), ROW(XWIN_SIZE), ROW(XWIN_DRAG),
    ROW(XWIN_CENTER), ROW(XWIN_POPUP), ROW(XWIN_AUTORESIZE), ROW(XWIN_BORDER), ROW(XWIN_ALPHA),
    ROW(XWIN_HIGHLIGHTIFINACTIVE), ROW(XWIN_SYSTEMWINDOW), ROW(XWIN_ZORDERFIRST), ROW(XWIN_ZORDERLAST),
    ROW(XWIN_ZORDER), ROW(XWIN_ALWAYSLAST),
    ROW(CNTRL_EXTRUDED), ROW(CNTRL_TRANSPARENT), ROW(CNTRL_HASBITMAP), ROW(CNTRL_TILED), ROW(CNTRL_ANIMNORMAL),
    ROW(CNTRL_ANIMPRESSED), ROW(CNTRL_ANIMHIGHLIGHT), ROW(CNTRL_ALPHA), ROW(CNTRL_BMTRANS), ROW(CNTRL_CHECKED),
    ROW(CNTRL_HSLIDER), ROW(CNTRL_CENTERH), ROW(CNTRL_CENTERV), ROW(CNTRL_MULTILINE), ROW(CNTRL_READONLY),
    ROW(CNTRL_TABSTOP), ROW(CNTRL_BUTTONBORDER), ROW(CNTRL_EDITVSLIDER), ROW(CNTRL_EDITHSLIDER),
    ROW(CNTRL_PASSWORD), ROW(CNTRL_NOWORDWRAP), ROW(CNTRL_BTNTRANSCLICK), ROW(CNTRL_INITIALCAPITAL),
    ROW(CNTRL_UPPERCASE), ROW(CNTRL_LOWERCASE), ROW(CNTRL_NUMERIC),
    ROW(XGUI_RELEASED), ROW(XGUI_PRESSED), ROW(XGUI_HIGHLIGHT), ROW(XGUI_DISABLED), ROW(XGUI_HIDDEN),
    ROW(ANIM_LOOP), ROW(ANIM_PINGPONG), ROW(ANIM_ONCE),
    { nullptr, 0 }
};

const TResData s_Names[] = {
    { "IDS_NONE", 0 }, { "IDB_NONE", 0 }, { "IDP_NONE", 0 }, { "IDG_NONE", 0 }, { "IDL_NONE", 0 },
    ROW(XCNTRL_CLOSE)
};

// Pure black is the key of many pictures.
const TResBuiltInColor s_Colors[] = {
    { "black", TRGBA(1, 1, 1) }, { "white", TRGBA(255, 255, 255) }, { "grey", TRGBA(128, 128, 128) },
    { "red", TRGBA(255, 0, 0) }, { "green", TRGBA(0, 255, 0) }, { "blue", TRGBA(0, 0, 255) }
};
// clang-format on

// The names of the key codes, and a row without one.
TResRows<TResData> KeyWords()
{
    static TResData s_Rows[MAX_KEYS];
    xlong lCount = 0;
    for (const TKeyName *pKey = KeyNames(); pKey->pszName && lCount + 1 < MAX_KEYS; ++pKey)
        s_Rows[lCount++] = { pKey->pszName, pKey->usKey };
    return { s_Rows, lCount };
}

template <class TRow>
const TRow *FindWord(const TResRows<TRow> &rows, const char *pszWord)
{
    for (const TRow &row : rows)
        if (row.pszWord && pszWord && !xStricmp(row.pszWord, pszWord))
            return &row;
    return nullptr;
}
} // namespace

const TResGrammar &xResGrammar()
{
    static const TResGrammar s_Grammar = { Rows(s_Sections), Rows(s_Controls),
                                           Rows(s_Common),   { s_FlagWords, Rows(s_FlagWords).lRows - 1 },
                                           KeyWords(),       Rows(s_Names),
                                           Rows(s_Colors) };
    return s_Grammar;
}

const TResControl *xFindResControl(const char *pszWord)
{
    return FindWord(xResGrammar().Controls, pszWord);
}

const TResItem *xFindResItem(const TResRows<TResItem> &rows, const char *pszWord)
{
    return FindWord(rows, pszWord);
}

xlong xIsResSize(xlong lRules, xlong lWidth, xlong lHeight, xlong lFrames)
{
    if ((lRules & XRES_AREA) && (lWidth == -1 || lHeight == -1))
        return 1;
    return lFrames >= 1 && lFrames <= RES_MAX_FRAMES && lWidth > 0 && lHeight > 0 &&
           (int64_t)lWidth * lHeight <= RES_MAX_PIXELS / lFrames;
}
