#pragma once

#include "tarvix/bitmap.h"
#include "tarvix/resdata.h"
#include "tarvix/types.h"

/// What a string of an item is.
enum
{
    XRES_IS_TEXT,     ///< any
    XRES_IS_NUMBER,   ///< xlong
    XRES_IS_UNSIGNED, ///< xulong
    XRES_IS_FLAGS,    ///< words of TResGrammar::Flags
    XRES_IS_KEY,      ///< words of TResGrammar::Keys
    XRES_IS_ID,       ///< a name of "Defines"
    XRES_IS_BITMAP,   ///< a name of "Bitmaps"
    XRES_IS_FONT,     ///< a name of "Fonts"
    XRES_IS_COLOR,    ///< a colour's name, or red, green, blue and alpha
    XRES_IS_COLORS,   ///< the name of a colour of eight shades
    XRES_IS_PICTURE,  ///< the name of a picture file
    XRES_IS_FONTFILE  ///< the name of an XBF file
};

/// What a string is for, where it is the same in many items.
enum
{
    XRES_AS_OTHER,
    XRES_AS_TEXT,
    XRES_AS_ADDRESS,
    XRES_AS_X,
    XRES_AS_Y,
    XRES_AS_WIDTH,
    XRES_AS_HEIGHT,
    XRES_AS_BOX,   ///< width of the box beside a caption
    XRES_AS_SPEED, ///< pixels a frame
    XRES_AS_KEY,
    XRES_AS_FLAGS,
    XRES_AS_DELAY,
    XRES_AS_FRAMES,
    XRES_AS_PER_ROW,
    XRES_AS_TRANSPARENT
};

/// Rules of strings, items and sections.
enum
{
    XRES_OPTIONAL = 0x1, ///< a string that may be missing, with those behind it
    XRES_MANY = 0x2,     ///< any number of such strings, none too
    XRES_NEEDED = 0x4,   ///< an item that has to be there
    XRES_EACH = 0x8,     ///< each such item or section counts, not only the first
    XRES_MAKES = 0x10,   ///< the item is the short form of a "Static", named by its string 0
    XRES_AREA = 0x20,    ///< width and height are those of a picture, or one of them is -1 for the whole
    XRES_FRAMES = 0x40,  ///< width, height and number of frames are those of an animation
    XRES_NAMES = 0x80,   ///< the section's names are looked up: RES_NAME_SIZE bounds them, the first of two is found
    XRES_FREE = 0x100,   ///< the section holds what it likes
    XRES_USED_UP = 0x200 ///< the section leaves the tree when it has been read
};

/// The items that have a word of their own.
enum
{
    XRES_ITEM_NAMED, ///< has none: the script gives it a name
    XRES_ITEM_CREATE,
    XRES_ITEM_TITLEBARFLAGS,
    XRES_ITEM_TITLEBARBITMAP,
    XRES_ITEM_FRAMEFLAGS,
    XRES_ITEM_FRAMEBITMAP,
    XRES_ITEM_COLORS,
    XRES_ITEM_CREATESTATIC,
    XRES_ITEM_BITMAP,
    XRES_ITEM_TEXTBUFFERSIZE,
    XRES_ITEM_FONT,
    XRES_ITEM_TEXTCOLOR,
    XRES_ITEM_ALPHA,
    XRES_ITEM_FLAGS,
    XRES_ITEM_TEXT,
    XRES_ITEM_DELAY,
    XRES_ITEM_CARET,
    XRES_ITEM_CHECK,
    XRES_ITEM_CLOSE,
    XRES_ITEM_DROP,
    XRES_ITEM_ARROWUP,
    XRES_ITEM_ARROWDOWN,
    XRES_ITEM_TITLEBAR,
    XRES_ITEM_FRAME,
    XRES_ITEM_BUTTON,
    XRES_ITEM_STATIC
};

/// Rows of TResGrammar::Sections, which is the order in which they are read.
enum
{
    XRES_DEFINES,
    XRES_STRINGS,
    XRES_VALUES,
    XRES_PALETTE,
    XRES_FONTS,
    XRES_BITMAPS,
    XRES_ANIMATIONS,
    XRES_COLORS,
    XRES_DEFAULTS,
    XRES_WINDOW,
    XRES_DATA
};

/// What becomes of an item whose condition does not hold.
enum
{
    XRES_UNCONDITIONAL,
    XRES_ELSE_FAULT, ///< nothing is built
    XRES_ELSE_SKIP,  ///< it is passed over
    XRES_ELSE_NONE   ///< it is passed over; and it has to be there where the condition holds
};

/// Rows of a table, for loops over them.
template <class T>
struct TResRows
{
    const T *begin() const { return pRows; }
    const T *end() const { return pRows + lRows; }

    const T *pRows;
    xlong lRows;
};

/// One string of an item.
struct TResField
{
    const char *pszName; ///< for people
    xlong lType;         ///< XRES_IS_...
    xlong lRole;         ///< XRES_AS_...
    xlong lRules;
    xlong lLeast, lMost; ///< of a number; both 0: any
};

/// That another item of the same chunk is there, and what it says.
struct TResCondition
{
    xlong lElse;         ///< XRES_UNCONDITIONAL, or what happens otherwise
    xlong lItem;         ///< XRES_ITEM_...
    xlong lRole;         ///< of its string; XRES_AS_OTHER: the item alone is enough
    const char *pszFlag; ///< that the string has; null: the string is a number that is not 0
};

/// A keyword with its strings. Strings behind those named are passed over.
struct TResItem
{
    const char *pszWord; ///< null for XRES_ITEM_NAMED
    xlong lItem;         ///< XRES_ITEM_...
    TResRows<TResField> Fields;
    xlong lRules;
    TResCondition Condition;
};

/// A chunk inside a control, without a name, which takes the common items too.
struct TResPart
{
    const char *pszWord;
    TResRows<TResItem> Items;
    TResCondition Condition; ///< on an item of the control
};

/// A word that makes a control: a chunk with this word and a name of "Defines".
struct TResControl
{
    const char *pszWord;
    xlong lType; ///< XDLG_...
    TResRows<TResItem> Items;
    TResRows<TResPart> Parts;
    xlong lCommon;   ///< 1: takes TResGrammar::Common
    xlong lChildren; ///< XDLG_... of the controls that it takes, or -1 when it looks at none
};

/// A chunk of the script's top level.
struct TResSection
{
    const char *pszWord;
    TResRows<TResItem> Items; ///< one without a word where the script chooses the names
    xlong lRules;
    const TResItem *pChunk;   ///< a chunk in the place of an item, or null; its strings stand behind the "{"
    const TResItem *pInChunk; ///< the items in it
};

struct TResBuiltInColor
{
    const char *pszName;
    TRGBA Color; ///< its only shade
};

/// What a resource script can say. CResData and CDialog read by these tables,
/// and programs that check or write scripts can do so too.
/// Words are compared without regard to case. Words that are in none of the
/// tables are passed over, except for those that stand for a control.
struct TResGrammar
{
    TResRows<TResSection> Sections; ///< by XRES_DEFINES and so on
    TResRows<TResControl> Controls;
    TResRows<TResItem> Common; ///< of controls and their parts, in the order in which they are read
    TResRows<TResData> Flags;  ///< a row without a name follows, as in Keys
    TResRows<TResData> Keys;
    TResRows<TResData> Names;          ///< that "Defines" brings along
    TResRows<TResBuiltInColor> Colors; ///< that are always there
};

TARVIX_API const TResGrammar &xResGrammar();
/// @return null when there is none of that word
TARVIX_API const TResControl *xFindResControl(const char *pszWord);
/// By its word. @return null when there is none
TARVIX_API const TResItem *xFindResItem(const TResRows<TResItem> &rows, const char *pszWord);
/// Whether pictures of this size can be made.
/// @param lRules   with XRES_AREA, -1 in either size is good too
/// @param lFrames  of that size; 1 for a bitmap
TARVIX_API xlong xIsResSize(xlong lRules, xlong lWidth, xlong lHeight, xlong lFrames);
