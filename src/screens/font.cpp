#include "tarvix/font.h"

#include "pictures/bitmapblock.h"
#include "screens/screenbitmap.h"
#include "tarvix/bitmap.h"
#include "tarvix/error.h"
#include "tarvix/globals.h"
#include "tarvix/pictype.h"
#include "tarvix/screen.h"
#include "tarvix/wholefile.h"
#include "tarvix/xiff.h"

#include <algorithm>
#include <string.h>

/// The state of one walk over a text.
struct TTxtData
{
    xparam lTarget;
    const unsigned char *pszText;
    xlong lLeft, lTop;
    xlong lX, lY;          ///< the pen
    xlong lWidth, lHeight; ///< of the box, -1 for no limit
    xlong lMaxLines;       ///< 0 for all
    xlong lLines;
    xlong lLineStart, lLineEnd;
    xlong lPos;        ///< index in the text
    xlong lEnd;        ///< index that the walk tells as its end
    xlong lLineWidth;  ///< of the present line
    xlong lWordsWidth; ///< the same at the end of its last word
    xlong lMostWidth;
    bool bAll;            ///< the text's end was reached
    xlong lBrokenAt = -1; ///< index of the word that the last break is before
};

namespace
{
const xlong s_lVersion = 1;
const xulong s_ulOwnsPictures = 1;
const unsigned char s_ucFromText = 255;
const xlong s_lLineFlags = FONT_SINGLELINE | FONT_NOTRAILING;

// One coloured version of a font's picture, cut to the cells.
struct TFontColor
{
    xlong lLeft, lTop;
    CBitmap *pBitmap;
    TRGBA Color;
};

bool IsColor(const TRGBA &a, const TRGBA &b)
{
    return a.ucRed == b.ucRed && a.ucGreen == b.ucGreen && a.ucBlue == b.ucBlue;
}

TFontColor *FindColor(CLList &list, const TRGBA &Color)
{
    for (list.First(); list.Exists(); list.Next())
        if (IsColor(((TFontColor *)list.Get())->Color, Color))
            return (TFontColor *)list.Get();
    return nullptr;
}

const SVmode *ActiveMode()
{
    return glb->m_pScreen ? glb->m_pScreen->GetActiveMode() : nullptr;
}

xlong ToScreen(CBitmap *pBitmap)
{
    CScreenBase *const pScreen = glb->m_pScreen;
    const SVmode *const pMode = ActiveMode();
    if (!pMode)
        return 1;
    if (pMode->lDepth == 8)
        return pBitmap->ConvertIndex(-1, -1, 8, pScreen->GetPalette(), 0);
    return BringToScreen(pBitmap);
}
} // namespace

CFont::CFont()
    : m_sHeight(0), m_sSpacing(0), m_sLineHeight(0), m_pFontBitmap(nullptr), m_pScreenBitmap(nullptr), m_Chars(),
      m_ulFlags(0), m_pCurBitmap(nullptr), m_lCurLeft(0), m_lCurTop(0)
{
}

CFont::~CFont()
{
    Free();
}

xlong CFont::Create(short sWidth, short sHeight, short sSpacing, CPalette *pPalette)
{
    return xError(XERR_NOT_IMPLEMENTED);
}

xlong CFont::Load(const char *pszFile, short sFlags)
{
    Free();
    CPicType *const pType = glb->m_pPicTypeList->GetType("x.bmp");
    CXIFF file;
    return pType && file.Open(pszFile, FILE_READ) && ReadFile(file, pType) && MakeScreenBitmap();
}

xlong CFont::Save(const char *pszFile, short sFlags)
{
    CPicType *const pType = glb->m_pPicTypeList->GetType("x.bmp");
    CWholeFile whole;
    CXIFF file;
    if (!pType || !m_pFontBitmap || !whole.Begin(pszFile) || !file.Open(whole.GetPath(), FILE_WRITE) ||
        !file.AddChunk("XBF", 0) || !file.AddChunk("HEADER", 0) || !file.WriteByte(s_lVersion) ||
        !file.WriteWord(m_sHeight) || !file.WriteWord(m_sSpacing) || !file.WriteWord(m_sLineHeight) ||
        !file.EndChunk() || !file.AddChunk("LETTER DATA", 0))
        return 0;
    for (const TChar &c : m_Chars)
        if (!file.WriteWord(c.sX) || !file.WriteWord(c.sY) || !file.WriteWord(c.sWidth) ||
            !file.WriteByte((signed char)c.ucType) || !file.WriteByte((signed char)c.ucValue))
            return 0;
    if (!file.EndChunk() || !file.AddChunk("FONT BITMAP", 0))
        return 0;
    if (!pType->Save(&file, m_pFontBitmap, nullptr, nullptr, 0))
        return xErrorTxt(pType->GetError());
    if (!file.EndChunk() || !file.EndChunk() || !file.Flush())
        return 0;
    file.Close();
    return whole.Commit();
}

xlong CFont::SetFont(CBitmap *pBitmap, const TCharData *pChars, short sFirst, short sHeight, short sSpacing)
{
    Free();
    m_sHeight = sHeight;
    m_sSpacing = sSpacing;
    m_pFontBitmap = pBitmap;
    m_pScreenBitmap = pBitmap;
    for (xlong lCode = std::max<xlong>(sFirst, 0); lCode < CODES && pChars->sWidth != -1; ++lCode, ++pChars)
        m_Chars[lCode] = { pChars->sX, pChars->sY, pChars->sWidth, FONT_GLYPH, 0 };
    SetBasic(10, FONT_NEWLINE, (unsigned char)(sHeight + 2));
    SetBasic(32, FONT_RIGHT, 4);
    SetBasic(0, FONT_END, 0);
    return 1;
}

xlong CFont::SetBasic(unsigned char ucCode, unsigned char ucType, unsigned char ucValue)
{
    if (ucValue == s_ucFromText || ucCode >= CODES)
        return 0;
    m_Chars[ucCode].ucType = ucType;
    m_Chars[ucCode].ucValue = ucValue;
    if (ucType == FONT_NEWLINE)
        m_sLineHeight = ucValue;
    return 1;
}

xlong CFont::SetCtrlCode(unsigned char ucCode, unsigned char ucType)
{
    if (ucCode >= CODES)
        return 0;
    m_Chars[ucCode].ucType = ucType;
    m_Chars[ucCode].ucValue = s_ucFromText;
    return 1;
}

xlong CFont::CreateColor(TRGBA Color)
{
    if (!m_pFontBitmap || FindColor(m_listColors, Color))
        return 0;
    // All cells, as far as there are pixels.
    xlong lLeft = m_pFontBitmap->m_lWidth, lTop = m_pFontBitmap->m_lHeight, lRight = 0, lBottom = 0;
    for (const TChar &c : m_Chars)
    {
        lLeft = std::min<xlong>(lLeft, c.sX);
        lTop = std::min<xlong>(lTop, c.sY);
        lRight = std::max<xlong>(lRight, c.sX + c.sWidth);
        lBottom = std::max<xlong>(lBottom, c.sY + m_sHeight);
    }
    lLeft = std::max<xlong>(lLeft, 0);
    lTop = std::max<xlong>(lTop, 0);
    lRight = std::min(lRight, m_pFontBitmap->m_lWidth);
    lBottom = std::min(lBottom, m_pFontBitmap->m_lHeight);

    TFontColor *pNew = lLeft < lRight && lTop < lBottom ? XNEW(TFontColor()) : nullptr;
    if (!pNew)
        return 0;
    pNew->lLeft = lLeft;
    pNew->lTop = lTop;
    pNew->Color = Color;
    pNew->pBitmap = XNEW(CBitmap);
    xlong lResult = pNew->pBitmap && pNew->pBitmap->CreateRGB(lRight - lLeft, lBottom - lTop, 24, 8, 8, 8, 16, 8, 0, 0);
    if (!lResult)
        xErrorTxt("Couldn't allocate bitmap for new font!\n");
    else
    {
        for (xlong y = lTop; y < lBottom; ++y)
            for (xlong x = lLeft; x < lRight; ++x)
            {
                TRGBA Pixel;
                m_pFontBitmap->GetPixel(x, y, &Pixel);
                const unsigned u = Pixel.ucBlue;
                Pixel.ucRed = (unsigned char)(Color.ucRed * u / 255);
                Pixel.ucGreen = (unsigned char)(Color.ucGreen * u / 255);
                Pixel.ucBlue = (unsigned char)(Color.ucBlue * u / 255);
                pNew->pBitmap->PutPixel(x - lLeft, y - lTop, &Pixel);
            }
        lResult = ToScreen(pNew->pBitmap) && m_listColors.InsertLast(pNew);
    }
    if (!lResult)
    {
        XDELETE(pNew->pBitmap);
        XDELETE(pNew);
    }
    return lResult;
}

xulong CFont::Text(CBitmap *pTarget, const char *pszText, short sX, short sY, short sWidth, short sHeight,
                   const TRGBA *pColor, TTextInfo *pInfo, xlong lFlags)
{
    m_pCurBitmap = m_pScreenBitmap;
    m_lCurLeft = m_lCurTop = 0;
    if (!pszText || !*pszText)
        return 1;
    if ((lFlags & FONT_CENTERV) && sHeight != -1)
    {
        const xlong lSpare = sHeight - GetTextHeight(pszText, sWidth, sHeight, lFlags);
        const short sDown = (short)(std::max<xlong>(lSpare, 0) / 2);
        sHeight = (short)(sHeight - sDown);
        sY = (short)(sY + sDown);
    }
    const xparam lTarget = (xparam)pTarget;
    const bool bBitmap = lTarget != FONT_TARGET_SCREEN && lTarget != FONT_TARGET_GUI && lTarget != FONT_TARGET_MEASURE;
    const SVmode *const pMode = bBitmap ? nullptr : ActiveMode();
    const bool bSized = bBitmap || pMode;
    if (sWidth == -1)
    {
        if (bSized)
            sWidth = (short)(bBitmap ? pTarget->m_lWidth : pMode->lWidth);
        lFlags |= FONT_SINGLELINE;
    }
    if (sHeight == -1 && bSized)
        sHeight = (short)(bBitmap ? pTarget->m_lHeight : pMode->lHeight);
    if (pInfo)
        *pInfo = {};
    const TFontColor *const pVersion = pColor ? FindColor(m_listColors, *pColor) : nullptr;
    if (pVersion)
    {
        m_pCurBitmap = pVersion->pBitmap;
        m_lCurLeft = pVersion->lLeft;
        m_lCurTop = pVersion->lTop;
    }
    TTxtData data = { .lTarget = lTarget,
                      .pszText = (const unsigned char *)pszText,
                      .lLeft = sX,
                      .lTop = sY,
                      .lX = sX,
                      .lY = sY,
                      .lWidth = sWidth,
                      .lHeight = sHeight };
    WriteText(data, lFlags);
    if (pInfo)
        *pInfo = { (short)data.lX,         (short)data.lY,
                   (short)data.lMostWidth, (short)(data.lY - data.lTop + m_sHeight),
                   (short)data.lEnd,       (short)data.lLineStart,
                   (short)data.lLineEnd };
    return data.bAll ? (xulong)-1 : (xulong)(unsigned short)sHeight << 16 | (unsigned short)sWidth;
}

short CFont::GetTextWidth(const char *pszText, short sWidth, short sHeight, xlong lFlags)
{
    return (short)GetTextSize(pszText, sWidth, sHeight, lFlags);
}

short CFont::GetTextHeight(const char *pszText, short sWidth, short sHeight, xlong lFlags)
{
    return (short)(GetTextSize(pszText, sWidth, sHeight, lFlags) >> 16);
}

xulong CFont::GetTextSize(const char *pszText, short sWidth, short sHeight, xlong lFlags)
{
    TTxtData data = {
        .lTarget = FONT_TARGET_MEASURE, .pszText = (const unsigned char *)pszText, .lWidth = sWidth, .lHeight = sHeight
    };
    WriteText(data, lFlags);
    return (xulong)(unsigned short)(data.lY + m_sHeight) << 16 | (unsigned short)data.lMostWidth;
}

short CFont::GetLineIndex(const char *pszText, short sWidth, short sHeight, short sLine, TTextInfo *pInfo, xlong lFlags)
{
    TTxtData data = { .lTarget = FONT_TARGET_MEASURE,
                      .pszText = (const unsigned char *)pszText,
                      .lWidth = sWidth,
                      .lHeight = sHeight,
                      .lMaxLines = sLine };
    WriteText(data, lFlags);
    const bool bFound = sLine > 0 && data.lLines >= sLine - 1;
    *pInfo = { (short)data.lX,
               (short)data.lY,
               (short)data.lMostWidth,
               (short)(data.lY + m_sHeight),
               (short)data.lEnd,
               (short)(bFound ? data.lLineStart : 0),
               (short)(bFound ? data.lLineEnd : 0) };
    return bFound;
}

const CBitmap *CFont::PictureOf(const TRGBA *pColor)
{
    const TFontColor *const pVersion = pColor ? FindColor(m_listColors, *pColor) : nullptr;
    return pVersion ? pVersion->pBitmap : m_pScreenBitmap;
}

xlong CFont::Free()
{
    for (m_listColors.First(); m_listColors.Exists(); m_listColors.Next())
    {
        TFontColor *pVersion = (TFontColor *)m_listColors.Get();
        XDELETE(pVersion->pBitmap);
        XDELETE(pVersion);
    }
    m_listColors.KillAll();
    if (m_ulFlags & s_ulOwnsPictures)
    {
        XDELETE(m_pFontBitmap);
        XDELETE(m_pScreenBitmap);
    }
    m_pFontBitmap = m_pScreenBitmap = m_pCurBitmap = nullptr;
    m_ulFlags = 0;
    memset(m_Chars, 0, sizeof(m_Chars));
    m_sHeight = m_sSpacing = m_sLineHeight = 0;
    return 1;
}

xlong CFont::ReadFile(CXIFF &file, CPicType *pType)
{
    if (!file.FindChunk("XBF", nullptr, 0) || !file.EnterChunk())
        return xErrorTxt("Not a XBF file");
    signed char cVersion = 0;
    if (!file.FindChunk("HEADER", nullptr, 0) || !file.EnterChunk() || !file.ReadByte(&cVersion))
        return xErrorTxt("Header chunk missing in XBF file");
    if (cVersion != s_lVersion)
        return xErrorTxt("Unsupported XBF version");
    if (!file.ReadWord(&m_sHeight) || !file.ReadWord(&m_sSpacing) || !file.ReadWord(&m_sLineHeight) ||
        !file.ExitChunk())
        return 0;
    if (!file.FindChunk("LETTER DATA", nullptr, 0) || !file.EnterChunk())
        return xErrorTxt("Letter data chunk missing in XBF file");
    for (TChar &c : m_Chars)
        if (!file.ReadWord(&c.sX) || !file.ReadWord(&c.sY) || !file.ReadWord(&c.sWidth) ||
            !file.ReadByte((signed char *)&c.ucType) || !file.ReadByte((signed char *)&c.ucValue))
            return 0;
    if (!file.ExitChunk())
        return 0;
    if (!file.FindChunk("FONT BITMAP", nullptr, 0) || !file.EnterChunk())
        return xErrorTxt("Bitmap chunk missing in XBF file");
    m_ulFlags |= s_ulOwnsPictures;
    m_pFontBitmap = XNEW(CBitmap);
    if (!m_pFontBitmap)
        return xError(XERR_MEMORY);
    if (!pType->Load(&file, m_pFontBitmap, nullptr))
        return xErrorTxt(pType->GetError());
    ClipToAll(*m_pFontBitmap);
    return 1;
}

xlong CFont::MakeScreenBitmap()
{
    m_pScreenBitmap = XNEW(CBitmap);
    if (!m_pScreenBitmap)
        return xError(XERR_MEMORY);
    if (!CreateForScreen(m_pScreenBitmap, m_pFontBitmap->m_lWidth, m_pFontBitmap->m_lHeight))
        return xError(XERR_MEMORY);
    ClipToAll(*m_pScreenBitmap);
    m_pScreenBitmap->Blt(m_pFontBitmap, 0, 0, 0, 0, -1, -1, 0, 0, 0);
    if (ActiveMode() && !glb->m_pScreen->MakeScreenFormat(m_pScreenBitmap, 1))
        return xError(XERR_MEMORY);
    ClipToAll(*m_pScreenBitmap);
    return 1;
}

void CFont::WriteText(TTxtData &data, xlong lFlags)
{
    StartLine(data, lFlags);
    while (PassControls(data, lFlags) && TakeWord(data, lFlags))
    {
    }
    // A walk that a line count has ended stands where the next line starts.
    if (!data.lMaxLines || data.lLines < data.lMaxLines)
    {
        data.lEnd = data.lPos;
        data.lLineEnd = data.lPos;
    }
}

// Takes all that is no glyph. A value from the text is not looked for behind its end.
// @return false when the walk ends here
bool CFont::PassControls(TTxtData &data, xlong lFlags)
{
    bool bGoOn = true;
    for (; bGoOn; ++data.lPos)
    {
        const unsigned char ucCode = data.pszText[data.lPos];
        const TChar control = ucCode < CODES ? m_Chars[ucCode] : TChar{ 0, 0, 0, s_ucFromText, 0 };
        if (!ucCode || control.ucType == FONT_END)
        {
            data.bAll = true;
            bGoOn = false;
            break;
        }
        if (control.ucType == FONT_GLYPH)
            break;
        xlong lValue = control.ucValue;
        if (lValue == s_ucFromText && data.pszText[data.lPos + 1])
            lValue = data.pszText[++data.lPos];
        bGoOn = TakeControl(data, control.ucType, lValue, lFlags);
    }
    NoteWidth(data, lFlags);
    return bGoOn;
}

bool CFont::TakeControl(TTxtData &data, unsigned char ucType, xlong lValue, xlong lFlags)
{
    switch (ucType)
    {
    case FONT_NEWLINE:
        NoteWidth(data, lFlags);
        return NextLine(data, lValue, data.lPos + 1, lFlags);
    case FONT_UP:
        data.lY -= lValue;
        break;
    case FONT_DOWN:
        data.lY += lValue;
        break;
    case FONT_LEFT:
        data.lX -= lValue;
        data.lLineWidth -= lValue;
        break;
    case FONT_RIGHT:
        data.lX += lValue;
        data.lLineWidth += lValue;
        break;
    }
    return true;
}

// The word at the walk's place, or a line break before it.
// @return false when the walk ends here
bool CFont::TakeWord(TTxtData &data, xlong lFlags)
{
    const bool bSingle = (lFlags & FONT_SINGLELINE) != 0;
    xlong lEnd;
    const xlong lWord = MeasureWord(data, lEnd);
    const bool bBeyond = data.lWidth != -1 && data.lX + lWord > data.lLeft + data.lWidth;
    if (bBeyond && bSingle && (lFlags & FONT_NOTRAILING))
        return false;
    if (bBeyond && !bSingle && data.lX != data.lLeft && data.lPos != data.lBrokenAt)
    {
        // Once for each word: one that is too wide for any line stays where it is.
        data.lBrokenAt = data.lPos;
        return NextLine(data, m_sLineHeight, data.lPos, lFlags);
    }
    if (data.lTarget != FONT_TARGET_MEASURE)
        DrawWord(data, data.lPos, lEnd, bBeyond);
    data.lX += lWord;
    data.lLineWidth += lWord;
    data.lWordsWidth = data.lLineWidth;
    if (bBeyond && bSingle)
        data.lLineWidth = data.lWordsWidth = std::min(data.lLineWidth, data.lWidth);
    data.lMostWidth = std::max(data.lMostWidth, data.lLineWidth);
    data.lPos = lEnd;
    return !bBeyond || !bSingle;
}

// The run of glyphs at the walk's place: its width, and the index behind it.
xlong CFont::MeasureWord(const TTxtData &data, xlong &lEnd) const
{
    xlong lWidth = 0;
    for (lEnd = data.lPos; data.pszText[lEnd] && data.pszText[lEnd] < CODES; ++lEnd)
    {
        const TChar &c = m_Chars[data.pszText[lEnd]];
        if (c.ucType != FONT_GLYPH)
            break;
        lWidth += c.sWidth + m_sSpacing;
    }
    return lWidth;
}

void CFont::NoteWidth(TTxtData &data, xlong lFlags)
{
    data.lMostWidth = std::max(data.lMostWidth, lFlags & FONT_NOTRAILING ? data.lWordsWidth : data.lLineWidth);
}

// The glyphs of a word, at the pen. What lies outside the box is cut off.
void CFont::DrawWord(const TTxtData &data, xlong lFirst, xlong lEnd, bool bClip)
{
    if (!m_pCurBitmap || (data.lHeight != -1 && data.lY >= data.lTop + data.lHeight))
        return;
    xlong lHeight = m_sHeight;
    if (data.lHeight != -1)
        lHeight = std::min(lHeight, data.lTop + data.lHeight - data.lY);
    const xlong lRight = data.lLeft + data.lWidth;
    xlong lX = data.lX;
    for (xlong l = lFirst; l < lEnd; ++l)
    {
        const TChar &c = m_Chars[data.pszText[l]];
        const xlong lWidth = bClip ? std::min<xlong>(c.sWidth, lRight - lX) : c.sWidth;
        if (bClip && lWidth <= 0 && c.sWidth > 0)
            break;
        const xlong lFromX = c.sX - m_lCurLeft, lFromY = c.sY - m_lCurTop;
        if (lWidth <= 0)
            ;
        else if (data.lTarget == FONT_TARGET_SCREEN)
            glb->m_pScreen->DrawBitmapScreen(m_pCurBitmap, lFromX, lFromY, lX, data.lY, lWidth, lHeight, 1, 0);
        else if (data.lTarget == FONT_TARGET_GUI)
            glb->m_pScreen->DrawBitmapScreenGui(m_pCurBitmap, lFromX, lFromY, lX, data.lY, lWidth, lHeight, 1, 0);
        else
            ((CBitmap *)data.lTarget)->Blt(m_pCurBitmap, lFromX, lFromY, lX, data.lY, lWidth, lHeight, 1, 0, 0);
        lX += c.sWidth + m_sSpacing;
    }
}

// To the left edge or, centred, to where the words that fit begin.
void CFont::StartLine(TTxtData &data, xlong lFlags)
{
    data.lX = data.lLeft;
    data.lLineWidth = 0;
    data.lWordsWidth = 0;
    if (!(lFlags & FONT_CENTERH) || data.lWidth == -1)
        return;
    const char *const pszLine = (const char *)data.pszText + data.lEnd;
    const xlong lWidth = GetTextWidth(pszLine, (short)data.lWidth, (short)data.lHeight, s_lLineFlags);
    if (lWidth)
        data.lX += (data.lWidth - lWidth) / 2;
}

// Down by lStep, to a line that starts at lStart.
// @return false when the walk ends here
bool CFont::NextLine(TTxtData &data, xlong lStep, xlong lStart, xlong lFlags)
{
    data.lY += lStep;
    data.lEnd = lStart;
    const bool bGoOn = !(lFlags & FONT_SINGLELINE) && !CountLine(data);
    StartLine(data, lFlags);
    return bGoOn;
}

// One line more, which starts at lEnd. @return true when it is the last one wanted
bool CFont::CountLine(TTxtData &data)
{
    ++data.lLines;
    if (data.lLines == data.lMaxLines - 1)
        data.lLineStart = data.lEnd;
    if (data.lLines != data.lMaxLines)
        return false;
    data.lLineEnd = data.lEnd;
    return true;
}
