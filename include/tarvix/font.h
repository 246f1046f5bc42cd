#pragma once

#include "tarvix/llist.h"
#include "tarvix/memory.h"
#include "tarvix/palette.h"
#include "tarvix/types.h"

class CBitmap;
struct TTxtData;

/// What a character code means in a text. A code's value comes from the table
/// or, when that says 255, from the byte behind the code.
enum
{
    FONT_GLYPH = 0,
    FONT_END = 1,
    FONT_NEWLINE = 3, ///< to the left edge, and down by the value
    FONT_UP = 100,
    FONT_DOWN = 101,
    FONT_LEFT = 102,
    FONT_RIGHT = 103 ///< as a blank
};

/// Text flags.
enum
{
    FONT_SINGLELINE = 0x001, ///< the first line break, or word that does not fit, ends the text
    FONT_CENTERH = 0x002,    ///< each line in the box
    FONT_CENTERV = 0x004,    ///< the text in the box, for Text
    FONT_NOTRAILING = 0x400  ///< measured without blanks behind the last word of a line
};

/// Targets of Text beside a bitmap.
enum
{
    FONT_TARGET_SCREEN = 0,
    FONT_TARGET_GUI = -1,    ///< the screen, with nothing queued
    FONT_TARGET_MEASURE = -2 ///< nothing is drawn
};

/// Cell of a glyph. A width of -1 ends a table.
struct TCharData
{
    short sX;
    short sY;
    short sWidth;
};

/// What a walk over a text came to.
struct TTextInfo
{
    short sX; ///< pen at the end, as sY
    short sY;
    short sWidth; ///< used, as sHeight
    short sHeight;
    short sEnd;       ///< index in the text where the walk stopped
    short sLineStart; ///< of the line that was asked for
    short sLineEnd;   ///< where the next line starts, or the end of the text
};

/// Proportional font: one picture with all glyphs, and a table that says what
/// each code from 0 to 254 means. Sizes are pixels. One call at a time.
class TARVIX_API CFont
{
public:
    enum
    {
        CODES = 255
    };

    CFont();
    CFont(const CFont &) = delete;
    CFont &operator=(const CFont &) = delete;
    ~CFont();

    /// Not implemented. @return 0 with code 1
    xlong Create(short sWidth, short sHeight, short sSpacing, CPalette *pPalette);
    /// Reads an XBF file and converts its picture for the current screen.
    /// @param sFlags  not looked at
    /// @return 0 with a text; what was read stays until Free
    xlong Load(const char *pszFile, short sFlags);
    /// Writes an XBF file.
    /// @param sFlags  not looked at
    /// @return 0 without a picture, and for a file that can't be written
    xlong Save(const char *pszFile, short sFlags);
    /// Makes a font of a picture in the screen's format. A line break steps by
    /// sHeight + 2, a blank by 4.
    /// @param pBitmap  not owned
    /// @param pChars   cells of the codes from sFirst on
    /// @return 1
    xlong SetFont(CBitmap *pBitmap, const TCharData *pChars, short sFirst, short sHeight, short sSpacing);
    /// Sets what a code means. FONT_NEWLINE also sets the line height.
    /// @param ucType   FONT_...
    /// @param ucValue  of the code; 255 is refused with 0
    xlong SetBasic(unsigned char ucCode, unsigned char ucType, unsigned char ucValue);
    /// Sets what a code means whose value follows it in the text.
    xlong SetCtrlCode(unsigned char ucCode, unsigned char ucType);
    /// Prepares the font in a colour, for Text to choose.
    /// @return 1; 0 when it is there already, without a picture and without memory
    xlong CreateColor(TRGBA Color);
    /// Draws a text into a box, with line breaks at blanks.
    /// @param pTarget  a bitmap, or one of FONT_TARGET_...
    /// @param sWidth   -1 for the target's, in a single line
    /// @param sHeight  -1 for the target's
    /// @param pColor   one of CreateColor, others draw in the font's own; null for that
    /// @param pInfo    may be null
    /// @return -1 when all of the text was walked; 1 for an empty text;
    ///         otherwise the box height in the upper 16 bits and its width in the lower
    xulong Text(CBitmap *pTarget, const char *pszText, short sX, short sY, short sWidth, short sHeight,
                const TRGBA *pColor, TTextInfo *pInfo, xlong lFlags);
    /// The halves of GetTextSize.
    short GetTextWidth(const char *pszText, short sWidth, short sHeight, xlong lFlags);
    short GetTextHeight(const char *pszText, short sWidth, short sHeight, xlong lFlags);
    /// Measures a text as Text would draw it.
    /// @param sWidth  of the box, -1 for no limit, as sHeight
    /// @return height in the upper 16 bits, width in the lower
    xulong GetTextSize(const char *pszText, short sWidth, short sHeight, xlong lFlags);
    /// Finds a line of a text in a box.
    /// @param sLine  from 1 on
    /// @return 1 with the line's place in pInfo; 0, and both 0 there, when there is none
    short GetLineIndex(const char *pszText, short sWidth, short sHeight, short sLine, TTextInfo *pInfo, xlong lFlags);
    /// The picture that Text draws a colour with; its first pixel is what stays
    /// transparent. @return null for an empty font
    const CBitmap *PictureOf(const TRGBA *pColor);
    /// Deletes coloured versions and the pictures that are the font's own.
    /// @return 1
    xlong Free();

    /// A code: its cell in the picture and what it means.
    struct TChar
    {
        short sX;
        short sY;
        short sWidth;
        unsigned char ucType;
        unsigned char ucValue;
    };

    short m_sHeight;
    short m_sSpacing;         ///< between two glyphs
    short m_sLineHeight;      ///< step of a line break inside a box
    CBitmap *m_pFontBitmap;   ///< as loaded or given
    CBitmap *m_pScreenBitmap; ///< the same in the screen's format
    TChar m_Chars[CODES];
    CLList m_listBitmaps;  ///< empty
    CLList m_listColors;   ///< of coloured versions
    xulong m_ulFlags;      ///< bit 0: the pictures are the font's own
    CBitmap *m_pCurBitmap; ///< of the text being drawn

private:
    xlong ReadFile(class CXIFF &file, class CPicType *pType);
    xlong MakeScreenBitmap();
    void WriteText(TTxtData &data, xlong lFlags);
    bool PassControls(TTxtData &data, xlong lFlags);
    bool TakeControl(TTxtData &data, unsigned char ucType, xlong lValue, xlong lFlags);
    bool TakeWord(TTxtData &data, xlong lFlags);
    xlong MeasureWord(const TTxtData &data, xlong &lEnd) const;
    void NoteWidth(TTxtData &data, xlong lFlags);
    void DrawWord(const TTxtData &data, xlong lFirst, xlong lEnd, bool bClip);
    void StartLine(TTxtData &data, xlong lFlags);
    bool NextLine(TTxtData &data, xlong lStep, xlong lStart, xlong lFlags);
    bool CountLine(TTxtData &data);

    xlong m_lCurLeft; ///< of the table's coordinates in m_pCurBitmap
    xlong m_lCurTop;
};
