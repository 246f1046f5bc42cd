#include "gui/look.h"
#include "screens/screenbitmap.h"
#include "tarvix/bitmap.h"
#include "tarvix/error.h"
#include "tarvix/font.h"
#include "tarvix/globals.h"
#include "tarvix/static.h"
#include "tarvix/strings.h"
#include "tarvix/winctrl.h"
#include "tarvix/window.h"

#include <algorithm>
#include <string.h>

namespace
{
const xlong s_lPauseTicks = 25; // of one step of the codes 1 to 6
const xlong s_lSpareWidth = 16; // of the strip

enum
{
    CODE_LAST_PAUSE = 6,
    CODE_STOP = 7
};

xlong WidestChar(const CFont &font)
{
    xlong lWidest = 0;
    for (const CFont::TChar &entry : font.m_Chars)
        if (entry.ucType == FONT_GLYPH)
            lWidest = std::max<xlong>(lWidest, entry.sWidth);
    return lWidest;
}

// What stands behind the text in the strip: on a palette screen the index that
// the font's own background has.
unsigned char EmptyValue(CFont *pFont, const TRGBA &Color)
{
    const SVmode *const pMode = glb->m_pScreen ? glb->m_pScreen->GetActiveMode() : nullptr;
    if (!pFont || !pMode || pMode->lDepth != 8)
        return 0;
    const CBitmap *const pPicture = pFont->PictureOf(&Color);
    return pPicture && pPicture->m_pData && pPicture->m_lDepth == 8 ? pPicture->m_pData[0] : 0;
}
} // namespace

CScrollText::CScrollText()
    : m_ulDelay(0), m_pszBuffer(nullptr), m_lPixelOffset(0), m_lCharIndex(0), m_lLength(0), m_lPixPerFrame(0),
      m_lPauseTicks(0), m_lPadding(0), m_pBitmap(nullptr), m_bScrolling(0)
{
}

CScrollText::~CScrollText()
{
    XDELETE_ARRAY(m_pszBuffer);
    XDELETE(m_pBitmap);
}

void CScrollText::TimerHandler(xulong ulInterval)
{
    if (ulInterval != m_ulDelay || !m_pszBuffer || m_lLength < 1)
        return;
    if (m_lPauseTicks > 0)
    {
        --m_lPauseTicks;
        Validate();
        return;
    }
    const unsigned char ucCode = (unsigned char)m_pszBuffer[m_lCharIndex];
    if (ucCode == CODE_STOP)
        Stop();
    else if (ucCode >= 1 && ucCode <= CODE_LAST_PAUSE)
    {
        m_lPauseTicks = ucCode * s_lPauseTicks;
        m_lCharIndex = (m_lCharIndex + 1) % m_lLength;
    }
    else
    {
        m_lPixelOffset += m_lPixPerFrame;
        const xlong lWidth = CharWidth(ucCode);
        if (m_lPixelOffset >= lWidth)
        {
            m_lCharIndex = (m_lCharIndex + 1) % m_lLength;
            m_lPixelOffset -= lWidth;
            FillStrip();
        }
    }
    Validate();
}

xlong CScrollText::SetDefault()
{
    return CStatic::SetDefault();
}

xlong CScrollText::GuiMsgHandler(xlong lMsg, xlong lP1, xlong lP2, xparam lP3, void *pData)
{
    return CStatic::GuiMsgHandler(lMsg, lP1, lP2, lP3, pData);
}

xlong CScrollText::Draw(xlong lX, xlong lY, xlong lPage)
{
    if (!CanDraw(*this, lPage))
        return 0;
    if (m_lState == XGUI_HIDDEN)
        return 1;
    if (m_pBitmap && m_pBitmap->m_pData)
        glb->m_pScreen->DrawBitmapScreenGui(m_pBitmap, m_lPixelOffset, 0, lX + m_lX, lY + m_lY, m_lWidth, m_lHeight, 1,
                                            0);
    return CControlBase::Draw(lX, lY, lPage);
}

xlong CScrollText::SetText(char *pszText)
{
    m_lPixelOffset = m_lCharIndex = m_lPauseTicks = 0;
    m_lLength = m_lPadding = 0;
    XDELETE_ARRAY(m_pszBuffer);
    m_pszBuffer = nullptr;
    const xlong lWidest = m_Look.m_pFont ? WidestChar(*m_Look.m_pFont) : 0;
    if (lWidest < 1)
        return 0;
    const xlong lTextLength = pszText ? xStrlen(pszText) : 0;
    m_lPadding = std::max<xlong>(0, m_lWidth) / lWidest + 1;
    m_pszBuffer = XNEW(char[(size_t)lTextLength + m_lPadding + 1]);
    if (!m_pszBuffer)
        return xError(XERR_MEMORY);
    if (lTextLength)
        xMemcpy(m_pszBuffer, pszText, (xulong)lTextLength);
    xMemset(m_pszBuffer + lTextLength, ' ', (xulong)m_lPadding);
    m_lLength = lTextLength + m_lPadding;
    m_pszBuffer[m_lLength] = 0;
    return 1;
}

xlong CScrollText::Create(char *pszText, xlong lX, xlong lY, xlong lWidth, xlong lHeight, xlong lPixPerFrame,
                          xlong lFlags)
{
    // The text is drawn into the strip, so the control has none of its own.
    CStatic::Create(nullptr, lX, lY, lWidth, lHeight, (xulong)lFlags);
    SetPixPerFrame(lPixPerFrame);
    const bool bNoMemory = !SetText(pszText) && m_lLength == 0 && m_Look.m_pFont && WidestChar(*m_Look.m_pFont) > 0;
    XDELETE(m_pBitmap);
    m_pBitmap = XNEW(CBitmap);
    if (bNoMemory || !m_pBitmap || !CreateForScreen(m_pBitmap, lWidth + s_lSpareWidth, lHeight))
        return xError(XERR_MEMORY);
    if (glb->m_pScreen)
        glb->m_pScreen->MakeScreenFormat(m_pBitmap, 1);
    return 1;
}

xlong CScrollText::SetPixPerFrame(xlong lPixPerFrame)
{
    m_lPixPerFrame = lPixPerFrame;
    return 1;
}

xlong CScrollText::Start(xulong ulDelay)
{
    m_ulDelay = ulDelay;
    m_bScrolling = 1;
    return AddTimer(ulDelay);
}

xlong CScrollText::Stop()
{
    if (m_pBitmap && m_pBitmap->m_pData)
        xMemset(m_pBitmap->m_pData, EmptyValue(m_Look.m_pFont, m_Look.m_TextColor),
                (xulong)m_pBitmap->m_lPitch * (xulong)m_pBitmap->m_lHeight);
    RemoveAllTimers();
    if (IsSeen(*this))
    {
        const TPlace place = PlaceOf(*this, m_pWindow ? m_pWindow->m_lX : 0, m_pWindow ? m_pWindow->m_lY : 0);
        glb->m_pScreen->AddClearAreaGui(place.lX, place.lY, place.lX + place.lWidth - 1, place.lY + place.lHeight - 1);
    }
    XDELETE_ARRAY(m_pszBuffer);
    m_pszBuffer = nullptr;
    m_lLength = 0;
    m_bScrolling = 0;
    return 1;
}

xlong CScrollText::IsScrolling()
{
    return m_bScrolling;
}

void CScrollText::FillStrip()
{
    if (!m_pBitmap || !m_pBitmap->m_pData || !m_Look.m_pFont)
        return;
    CBitmap &strip = *m_pBitmap;
    if (strip.m_lWidth < 1 || strip.m_lHeight < 1)
        return;
    strip.LockBitmapData();
    xMemset(strip.m_pData, EmptyValue(m_Look.m_pFont, m_Look.m_TextColor),
            (xulong)strip.m_lPitch * (xulong)strip.m_lHeight);
    unsigned char key[4];
    memcpy(key, strip.m_pData, (size_t)strip.m_lBytesPerPixel);
    m_Look.m_pFont->Text(&strip, m_pszBuffer + m_lCharIndex, 0, 0, (short)strip.m_lWidth, (short)strip.m_lHeight,
                         &m_Look.m_TextColor, nullptr, FONT_SINGLELINE);
    // The key colour stays in the corner, or a glyph that begins there would be
    // what the screen leaves out.
    memcpy(strip.m_pData, key, (size_t)strip.m_lBytesPerPixel);
    strip.ReleaseBitmapData();
}

xlong CScrollText::CharWidth(unsigned char ucCode)
{
    if (!m_Look.m_pFont || ucCode >= CFont::CODES)
        return 1;
    const CFont &font = *m_Look.m_pFont;
    const CFont::TChar &entry = font.m_Chars[ucCode];
    const xlong lWidth = entry.ucType == FONT_RIGHT ? entry.ucValue : entry.sWidth + font.m_sSpacing;
    return std::max<xlong>(lWidth, 1);
}
