// Makes XBF fonts of TrueType, OpenType and BDF fonts.

#include "options.h"
#include "tool.h"

#include "tarvix/bitmap.h"
#include "tarvix/font.h"
#include "tarvix/palette.h"
#include "tarvix/pictype.h"

#include <ft2build.h>
#include FT_FREETYPE_H
#include FT_BITMAP_H

#include <stdlib.h>
#include <string.h>

#include <algorithm>
#include <map>

namespace
{
const char s_szUsage[] = R"(xbfmake FONT OUT.xbf --size N   makes an XBF font of a TrueType, OpenType or BDF font

  --size N         height of the letters' em square in pixels, 4 to 200; of a
                   font of fixed sizes one that it has
  --range LIST     codes of page 1252, as 32-126,160-254, which is the default
  --spacing N      pixels that are added behind each character, -8 to 32;
                   without it 0, and 1 with an outline
  --line N         pixels from line to line, 1 to 254; without it the height of
                   the cells and 2
  --grey           smooth edges in shades of grey: for dark grounds, and for
                   outlined letters
  --outline        a dark line around the letters
  --shadow         a dark edge at their right and lower sides
  --preview FILE   also writes a BMP picture of a text in the new font
  --text TEXT      the text of that picture, UTF-8

Codes for which the font has no glyph are passed over. A blank steps on by its
own width, a tab by four of them.

Exit status: 0; 1 for a file that can't be read, made or written; 2 for a wrong
command line.
)";

const unsigned char s_ucInk = 255;
const unsigned char s_ucDark = 24;  // still none of the key at 16 bits and in a darker colour
const unsigned char s_ucSolid = 64; // from here on an edge counts as letter
const unsigned char s_ucNoEffect = 2;
const int s_nPictureWidth = 256;

const int s_nNoSpacing = -100; // asked for: outlined letters stand one pixel further apart then

struct TOptions
{
    std::string strFont, strOut, strPreview;
    std::string strText =
        "The quick brown fox jumps over\nthe lazy dog. 0123456789\n"
        "(AVATAR) {if} [jig] \"Wool\" 100%\n\u00c4pfel, \u00fc\u00df, \u00e9t\u00e9, \u00c5ngstr\u00f6m";
    int nSize = 0;
    int nSpacing = s_nNoSpacing;
    bool bGrey = false, bOutline = false, bShadow = false;
    int nLine = 0; // of the cells
    std::vector<int> codes;
};

/// A glyph as drawn, placed in a cell that is as wide as its step.
struct TGlyph
{
    int nStep = 0; ///< from this pen position to the next one
    int nLeft = 0; ///< of the pixels, from the pen
    int nTop = 0;  ///< of the pixels, above the base line
    int nWidth = 0, nHeight = 0;
    std::vector<unsigned char> pixels;

    unsigned char At(int nX, int nY) const
    {
        return nX < 0 || nY < 0 || nX >= nWidth || nY >= nHeight ? 0 : pixels[(size_t)(nY * nWidth + nX)];
    }
};

using TGlyphs = std::map<int, TGlyph>;

// What code page 1252 has where Latin-1 has control codes; 0 where it has nothing.
unsigned long ToUnicode(int nCode)
{
    static const unsigned short s_usMiddle[32] = { 0x20ac, 0,      0x201a, 0x0192, 0x201e, 0x2026, 0x2020, 0x2021,
                                                   0x02c6, 0x2030, 0x0160, 0x2039, 0x0152, 0,      0x017d, 0,
                                                   0,      0x2018, 0x2019, 0x201c, 0x201d, 0x2022, 0x2013, 0x2014,
                                                   0x02dc, 0x2122, 0x0161, 0x203a, 0x0153, 0,      0x017e, 0x0178 };
    return nCode >= 0x80 && nCode < 0xa0 ? s_usMiddle[nCode - 0x80] : (unsigned long)nCode;
}

// UTF-8 to page 1252; a question mark stands for what that lacks.
std::string ToCodes(const std::string &strText)
{
    std::string strCodes;
    for (size_t i = 0; i < strText.size();)
    {
        unsigned char ucLead = (unsigned char)strText[i++];
        unsigned long ulChar = ucLead;
        const int nMore = ucLead >= 0xf0 ? 3 : ucLead >= 0xe0 ? 2 : ucLead >= 0xc0 ? 1 : 0;
        if (nMore)
            ulChar = ucLead & (0x3fu >> nMore);
        for (int n = 0; n < nMore && i < strText.size(); ++n)
            ulChar = ulChar << 6 | ((unsigned char)strText[i++] & 0x3f);
        int nCode = 1;
        while (nCode < CFont::CODES && ToUnicode(nCode) != ulChar)
            ++nCode;
        strCodes += nCode < CFont::CODES ? (char)nCode : '?';
    }
    return strCodes;
}

bool ParseRange(const char *psz, std::vector<int> &codes)
{
    bool wanted[CFont::CODES] = {};
    for (const char *pszNext = psz;; ++pszNext)
    {
        char *pszEnd = nullptr;
        const long lFirst = strtol(pszNext, &pszEnd, 10);
        long lLast = lFirst;
        if (pszEnd == pszNext)
            return false;
        if (*pszEnd == '-')
        {
            pszNext = pszEnd + 1;
            lLast = strtol(pszNext, &pszEnd, 10);
        }
        if (lFirst < 32 || lFirst > lLast || lLast >= CFont::CODES)
            return false;
        for (long l = lFirst; l <= lLast; ++l)
            wanted[l] = true;
        pszNext = pszEnd;
        if (*pszNext != ',')
        {
            for (int n = 0; n < CFont::CODES; ++n)
                if (wanted[n])
                    codes.push_back(n);
            return !*pszNext;
        }
    }
}

/// A font file, opened at a size.
class CFace
{
public:
    CFace() { FT_Init_FreeType(&m_Library); }
    CFace(const CFace &) = delete;
    CFace &operator=(const CFace &) = delete;
    ~CFace()
    {
        FT_Done_Face(m_Face);
        FT_Done_FreeType(m_Library);
    }

    /// @return what is wrong, or nothing
    std::string Open(const std::string &strFile, int nSize)
    {
        if (FT_New_Face(m_Library, strFile.c_str(), 0, &m_Face))
        {
            m_Face = nullptr;
            return "the file is missing, damaged or no font";
        }
        if (FT_IS_SCALABLE(m_Face))
            return FT_Set_Pixel_Sizes(m_Face, 0, (unsigned)nSize) ? "the font can't be had in that size" : "";
        std::string strSizes;
        for (int n = 0; n < m_Face->num_fixed_sizes; ++n)
        {
            const FT_Bitmap_Size &size = m_Face->available_sizes[n];
            if (size.height == nSize || (size.y_ppem + 32) >> 6 == nSize)
                return FT_Select_Size(m_Face, n) ? "the font can't be had in that size" : "";
            strSizes += " " + std::to_string((size.y_ppem + 32) >> 6);
        }
        return "the font has only these sizes:" + strSizes;
    }

    /// @return false if the font has no such character
    bool Draw(int nCode, bool bGrey, TGlyph &glyph)
    {
        const unsigned long ulChar = ToUnicode(nCode);
        const FT_UInt uIndex = ulChar ? FT_Get_Char_Index(m_Face, ulChar) : 0;
        if (!uIndex ||
            FT_Load_Glyph(m_Face, uIndex, FT_LOAD_RENDER | (bGrey ? FT_LOAD_TARGET_NORMAL : FT_LOAD_TARGET_MONO)))
            return false;
        const FT_GlyphSlot slot = m_Face->glyph;
        // A BDF font may have one, two, four or eight bits a pixel.
        FT_Bitmap bytes;
        FT_Bitmap_Init(&bytes);
        if (FT_Bitmap_Convert(m_Library, &slot->bitmap, &bytes, 1))
            return false;
        glyph.nStep = std::max(0, (int)(slot->advance.x + 32) >> 6);
        glyph.nLeft = slot->bitmap_left;
        glyph.nTop = slot->bitmap_top;
        glyph.nWidth = (int)bytes.width;
        glyph.nHeight = (int)bytes.rows;
        const int nMost = std::max(1, bytes.num_grays - 1);
        for (int y = 0; y < glyph.nHeight; ++y)
            for (int x = 0; x < glyph.nWidth; ++x)
                glyph.pixels.push_back((unsigned char)(bytes.buffer[y * bytes.pitch + x] * s_ucInk / nMost));
        FT_Bitmap_Done(m_Library, &bytes);
        return true;
    }

private:
    FT_Library m_Library = nullptr;
    FT_Face m_Face = nullptr;
};

// Puts a dark edge where the letter lies at one of the given offsets.
void AddEdge(TGlyph &glyph, const std::vector<std::pair<int, int>> &offsets)
{
    if (glyph.pixels.empty())
        return;
    TGlyph wide = glyph;
    wide.nLeft -= 1;
    wide.nTop += 1;
    wide.nWidth += 2;
    wide.nHeight += 2;
    wide.pixels.clear();
    for (int y = -1; y <= glyph.nHeight; ++y)
        for (int x = -1; x <= glyph.nWidth; ++x)
        {
            unsigned char uc = glyph.At(x, y);
            for (const auto &[nX, nY] : offsets)
                if (glyph.At(x - nX, y - nY) >= s_ucSolid || (uc < s_ucDark && glyph.At(x - nX, y - nY) == s_ucDark))
                    uc = std::max(uc, s_ucDark);
            wide.pixels.push_back(uc);
        }
    glyph = wide;
}

// Rows and columns without a pixel go, and single glyphs that stick out of
// their step move into it if there is room.
void Trim(TGlyph &glyph)
{
    int nLeft = glyph.nWidth, nTop = glyph.nHeight, nRight = 0, nBottom = 0;
    for (int y = 0; y < glyph.nHeight; ++y)
        for (int x = 0; x < glyph.nWidth; ++x)
            if (glyph.At(x, y))
            {
                nLeft = std::min(nLeft, x);
                nTop = std::min(nTop, y);
                nRight = std::max(nRight, x + 1);
                nBottom = std::max(nBottom, y + 1);
            }
    TGlyph cut;
    cut.nStep = glyph.nStep;
    cut.nLeft = glyph.nLeft + nLeft;
    cut.nTop = glyph.nTop - nTop;
    cut.nWidth = std::max(0, nRight - nLeft);
    cut.nHeight = std::max(0, nBottom - nTop);
    for (int y = nTop; y < nBottom; ++y)
        for (int x = nLeft; x < nRight; ++x)
            cut.pixels.push_back(glyph.At(x, y));
    if (cut.nWidth <= cut.nStep)
        cut.nLeft = std::clamp(cut.nLeft, 0, cut.nStep - cut.nWidth);
    glyph = cut;
}

/// The new font with its picture.
struct TFont
{
    CBitmap picture; // outlives the font, which points to it
    CFont font;
};

/// Lays the cells out in rows. They overlap in a text where letters stick out
/// of their steps: the spacing is less than 0 then.
/// @return what is wrong, or nothing
std::string MakeFont(const TGlyphs &glyphs, const TOptions &options, TFont &made)
{
    int nTop = 1, nBottom = 0, nBefore = 0, nBehind = 0, nWidest = 1;
    for (const auto &[nCode, glyph] : glyphs)
    {
        nWidest = std::max(nWidest, glyph.nStep);
        if (glyph.pixels.empty())
            continue;
        nTop = std::max(nTop, glyph.nTop);
        nBottom = std::min(nBottom, glyph.nTop - glyph.nHeight);
        nBefore = std::max(nBefore, -glyph.nLeft);
        nBehind = std::max(nBehind, glyph.nLeft + glyph.nWidth - glyph.nStep);
    }
    const int nHeight = nTop - nBottom;
    const int nSlack = nBefore + nBehind;
    const int nWidth = std::max(s_nPictureWidth, 1 + nWidest + nSlack);

    // The first pixel is the key and stays empty: the first cell begins behind it.
    struct TPlace
    {
        int nX, nY;
    };
    std::map<int, TPlace> places;
    int nX = 1, nY = 0;
    for (const auto &[nCode, glyph] : glyphs)
    {
        const int nCell = glyph.nStep + nSlack;
        if (nX + nCell > nWidth)
        {
            nX = 0;
            nY += nHeight;
        }
        places[nCode] = { nX, nY };
        nX += nCell;
    }
    const int nRows = nY + nHeight;
    if (nRows > 0x7fff || nHeight > 252)
        return "the letters are too large for one picture";

    const CPalette greys;
    if (!made.picture.CreateIndex(nWidth, nRows, 8, &greys, 0))
        return "there is not enough memory";
    const TCharData none = { 0, 0, -1 };
    made.font.SetFont(&made.picture, &none, 0, (short)nHeight, (short)(options.nSpacing - nSlack));
    for (int n = 1; n < CFont::CODES; ++n)
        made.font.m_Chars[n].ucType = s_ucNoEffect;
    for (const auto &[nCode, glyph] : glyphs)
    {
        const auto [nLeft, nRow] = places[nCode];
        made.font.m_Chars[nCode] = { (short)nLeft, (short)nRow, (short)(glyph.nStep + nSlack), FONT_GLYPH, 0 };
        for (int y = 0; y < glyph.nHeight; ++y)
            for (int x = 0; x < glyph.nWidth; ++x)
                made.picture.m_pData[(nRow + nTop - glyph.nTop + y) * made.picture.m_lPitch + nLeft + nBefore +
                                     glyph.nLeft + x] = glyph.At(x, y);
    }
    const auto space = glyphs.find(' ');
    const int nBlank =
        std::clamp((space == glyphs.end() ? nHeight / 4 : space->second.nStep) + options.nSpacing, 1, 254);
    made.font.m_Chars[' '] = {};
    made.font.SetBasic(' ', FONT_RIGHT, (unsigned char)nBlank);
    made.font.SetBasic('\t', FONT_RIGHT, (unsigned char)std::min(254, 4 * nBlank));
    made.font.SetBasic('\n', FONT_NEWLINE, (unsigned char)(options.nLine ? options.nLine : nHeight + 2));
    made.font.SetBasic(0, FONT_END, 0);
    return "";
}

/// The text as the font draws it, on a dark ground and coloured on two others.
int WritePreview(const CTool &tool, const TOptions &options)
{
    const struct
    {
        TRGBA Ground, Text;
        bool bColor;
    } panels[] = { { TRGBA(24, 40, 88), TRGBA(255, 255, 255), false },
                   { TRGBA(120, 120, 112), TRGBA(255, 224, 96), true },
                   { TRGBA(224, 220, 208), TRGBA(48, 32, 24), true } };
    const int nMargin = 8;
    CFont font;
    glb->m_Error.Clear();
    if (!font.Load(options.strOut.c_str(), 0))
        return tool.FailWithReport(options.strOut, "the new font can't be read back");
    const std::string strText = ToCodes(options.strText);
    const int nWidth = font.GetTextWidth(strText.c_str(), -1, -1, 0) + 2 * nMargin;
    const int nHeight = font.GetTextHeight(strText.c_str(), -1, -1, 0) + 2 * nMargin;
    CBitmap picture;
    if (nWidth > 0x7fff || nHeight > 0x2000 || !picture.CreateRGB(nWidth, 3 * nHeight, 24, 8, 8, 8, 0, 8, 16, 0))
        return tool.Fail(options.strPreview, "the text is too long for a picture");
    picture.m_rcClip.Set(0, 0, nWidth - 1, 3 * nHeight - 1);
    int nTop = 0;
    for (const auto &panel : panels)
    {
        for (int y = nTop; y < nTop + nHeight; ++y)
            for (int x = 0; x < nWidth; ++x)
                picture.PutPixel(x, y, &panel.Ground);
        if (panel.bColor)
            font.CreateColor(panel.Text);
        font.Text(&picture, strText.c_str(), nMargin, (short)(nTop + nMargin), (short)(nWidth - nMargin),
                  (short)(nHeight - nMargin), panel.bColor ? &panel.Text : nullptr, nullptr, 0);
        nTop += nHeight;
    }
    glb->m_Error.Clear();
    if (picture.Save(options.strPreview.c_str(), glb->m_pPicTypeList->GetType("x.bmp"), nullptr, nullptr, 0))
        return EXIT_GOOD;
    remove(options.strPreview.c_str());
    return tool.FailWithReport(options.strPreview, "the file can't be written");
}

/// @return what is wrong, or nothing
std::string ParseArguments(const std::vector<std::string> &args, TOptions &options)
{
    COptions known;
    known.Number("--size", 4, 200, options.nSize);
    known.Number("--spacing", -8, 32, options.nSpacing);
    known.Number("--line", 1, 254, options.nLine);
    known.Switch("--grey", options.bGrey);
    known.Switch("--outline", options.bOutline);
    known.Switch("--shadow", options.bShadow);
    known.Text("--preview", "the name of a BMP file", options.strPreview);
    known.Text("--text", "a text", options.strText);
    known.Value("--range", "codes from 32 to 254, as 32-126,160-254",
                [&options](const std::string &str) { return ParseRange(str.c_str(), options.codes); });
    std::vector<std::string> files;
    const std::string strWhy = known.Read(args, files);
    if (!strWhy.empty())
        return strWhy;
    if (files.size() != 2 || !options.nSize)
        return "this takes a font, the name of the new file and --size";
    options.strFont = files[0];
    options.strOut = files[1];
    if (options.codes.empty())
        ParseRange("32-126,160-254", options.codes);
    if (options.nSpacing == s_nNoSpacing)
        options.nSpacing = options.bOutline ? 1 : 0;
    return "";
}
} // namespace

int main(int argc, char **argv)
{
    const std::vector<std::string> args(argv + 1, argv + argc);
    if (IsHelp(args, s_szUsage))
        return EXIT_GOOD;
    CTool tool("xbfmake");
    CBMPPic bmp; // adds itself to the picture types
    TOptions options;
    std::string strWhy = ParseArguments(args, options);
    if (!strWhy.empty())
        return tool.Usage(strWhy);

    CFace face;
    strWhy = face.Open(options.strFont, options.nSize);
    if (!strWhy.empty())
        return tool.Fail(options.strFont, strWhy);
    TGlyphs glyphs;
    for (int nCode : options.codes)
    {
        TGlyph glyph;
        if (!face.Draw(nCode, options.bGrey, glyph))
            continue;
        if (options.bOutline)
            AddEdge(glyph, { { -1, -1 }, { 0, -1 }, { 1, -1 }, { -1, 0 }, { 1, 0 }, { -1, 1 }, { 0, 1 }, { 1, 1 } });
        if (options.bShadow)
            AddEdge(glyph, { { 1, 1 } });
        Trim(glyph);
        glyphs[nCode] = glyph;
    }
    if (glyphs.empty())
        return tool.Fail(options.strFont, "the font has none of the characters");

    TFont made;
    strWhy = MakeFont(glyphs, options, made);
    if (!strWhy.empty())
        return tool.Fail(options.strFont, strWhy);
    glb->m_Error.Clear();
    if (!made.font.Save(options.strOut.c_str(), 0))
        return tool.FailWithReport(options.strOut, "the file can't be written");
    printf("%s: %d characters, cells of %d pixels in height\n", options.strOut.c_str(), (int)glyphs.size(),
           made.font.m_sHeight);
    return options.strPreview.empty() ? EXIT_GOOD : WritePreview(tool, options);
}
