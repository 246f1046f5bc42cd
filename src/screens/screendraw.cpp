#include "pictures/kernels.h"
#include "screens/modeformat.h"
#include "screens/shade.h"
#include "tarvix/screen.h"

#include <algorithm>
#include <stddef.h>
#include <string.h>

namespace
{
// A colour as the bytes of one pixel of the mode.
struct TPixel
{
    unsigned char ucBytes[4];
};

TPixel MakePixel(CScreenBase &screen, TRGBA &color)
{
    const TPixelFormat format = FormatOf(*screen.m_pMode);
    TPixel pixel = {};
    switch (screen.m_pMode->lDepth)
    {
    case 8:
        pixel.ucBytes[0] = (unsigned char)screen.m_Palette.FindMatch(&color);
        break;
    case 16:
    {
        StoreWord(pixel.ucBytes, TFormat16(format).Pack(color));
        break;
    }
    case 24:
        FillBytes24(format, color, pixel.ucBytes);
        break;
    }
    return pixel;
}

template <int BYTES>
struct TLinePlotter
{
    unsigned char *pBuffer;
    xlong lPitch, lWidth, lHeight;
    TPixel pixel;

    void Plot(unsigned char *pAt) const { memcpy(pAt, pixel.ucBytes, BYTES); }
    unsigned char *At(xlong lX, xlong lY) const { return pBuffer + (ptrdiff_t)lY * lPitch + (ptrdiff_t)lX * BYTES; }
    bool Holds(xlong lX, xlong lY) const { return lX >= 0 && lX < lWidth && lY >= 0 && lY < lHeight; }

    // lLong steps of lLongStep bytes; now and then one of lShortStep bytes too.
    void Walk(unsigned char *pAt, xlong lLong, xlong lShort, ptrdiff_t lLongStep, ptrdiff_t lShortStep) const
    {
        xlong lError = 2 * lShort - lLong;
        Plot(pAt);
        for (xlong l = lLong; l > 0; --l)
        {
            pAt += lLongStep;
            if (lError >= 0)
            {
                pAt += lShortStep;
                lError += 2 * (lShort - lLong);
            }
            else
                lError += 2 * lShort;
            Plot(pAt);
        }
    }

    // A line given against its long axis is mirrored, which can lead out of
    // the picture.
    void WalkChecked(xlong lX, xlong lY, xlong lLong, xlong lShort, xlong lLongX, xlong lLongY, xlong lShortX,
                     xlong lShortY) const
    {
        xlong lError = 2 * lShort - lLong;
        for (xlong l = lLong; l >= 0; --l)
        {
            if (Holds(lX, lY))
                Plot(At(lX, lY));
            lX += lLongX;
            lY += lLongY;
            if (lError >= 0)
            {
                lX += lShortX;
                lY += lShortY;
                lError += 2 * (lShort - lLong);
            }
            else
                lError += 2 * lShort;
        }
    }

    void Draw(xlong lX1, xlong lY1, xlong lX2, xlong lY2) const
    {
        const xlong lDX = std::abs(lX1 - lX2);
        const xlong lDY = std::abs(lY1 - lY2);
        const bool bRows = lDY > lDX;
        const bool bSecond = bRows ? lY2 < lY1 : lX2 < lX1;
        const xlong lX = bSecond ? lX2 : lX1;
        const xlong lY = bSecond ? lY2 : lY1;
        // Always from point 1 towards point 2, wherever the walk starts.
        const xlong lShortStep = bRows ? (lX1 <= lX2 ? 1 : -1) : (lY1 <= lY2 ? 1 : -1);
        if (bSecond)
        {
            if (bRows)
                WalkChecked(lX, lY, lDY, lDX, 0, 1, lShortStep, 0);
            else
                WalkChecked(lX, lY, lDX, lDY, 1, 0, 0, lShortStep);
        }
        else if (bRows)
            Walk(At(lX, lY), lDY, lDX, lPitch, (ptrdiff_t)lShortStep * BYTES);
        else
            Walk(At(lX, lY), lDX, lDY, BYTES, (ptrdiff_t)lShortStep * lPitch);
    }
};

template <int BYTES>
void DrawPixels(CScreenBase &screen, unsigned char *pBuffer, const TPixel &pixel, xlong lX1, xlong lY1, xlong lX2,
                xlong lY2)
{
    const SVmode &mode = *screen.m_pMode;
    const TLinePlotter<BYTES> plotter = { pBuffer, mode.lRowBytes, mode.lWidth, mode.lHeight, pixel };
    plotter.Draw(lX1, lY1, lX2, lY2);
}

// Through the cube for each pixel, as a host may have put other values there.
// A word that has no place of its own gets the cube's first entry.
void Darken16(unsigned char *pRow, xlong lPixels, xlong lSteps)
{
    // What the stores below can't change, for all that the compiler knows.
    const unsigned short *const *const ppPlaces = glb->m_ShadePointers;
    const unsigned short *const pCube = glb->m_pShadeCube;
    const xlong lBack = glb->m_ShadeStepAll[lSteps];
    for (; lPixels > 0; --lPixels, pRow += 2)
    {
        unsigned short us;
        memcpy(&us, pRow, 2);
        const ptrdiff_t lPlace = ppPlaces[us] - pCube;
        us = pCube[lPlace >= lBack ? lPlace - lBack : 0];
        memcpy(pRow, &us, 2);
    }
}

struct TPlainClamp
{
    constexpr TPlainClamp() : ucValues()
    {
        for (int i = 257; i < 512; ++i)
            ucValues[i] = (unsigned char)(i - 256);
    }

    unsigned char ucValues[512];
};

constexpr TPlainClamp s_PlainClamp;

// The clamp table's values from place ucStart on are a subtraction, unless a
// host has put others there.
bool IsSubtraction(unsigned char ucStart)
{
    return memcmp(glb->m_ClampTable + ucStart, s_PlainClamp.ucValues + ucStart, 256) == 0;
}

// @param bPlain  IsSubtraction
void Darken24(unsigned char *pRow, size_t ulBytes, unsigned char ucStart, bool bPlain)
{
    if (!ucStart && bPlain)
    {
        memset(pRow, 0, ulBytes);
        return;
    }
    const __m128i xLess = _mm_set1_epi8((char)(256 - ucStart));
    for (; bPlain && ulBytes >= 16; ulBytes -= 16, pRow += 16)
        _mm_storeu_si128((__m128i *)pRow, _mm_subs_epu8(_mm_loadu_si128((const __m128i *)pRow), xLess));
    for (; ulBytes; --ulBytes, ++pRow)
        *pRow = glb->m_ClampTable[ucStart + *pRow];
}

// What the clip leaves of an area, in the locked frame buffer.
class TFrameArea
{
public:
    TFrameArea(CScreenBase &screen, xlong lX, xlong lY, xlong lNewWidth, xlong lNewHeight)
        : pRow(nullptr), lWidth(lNewWidth), lHeight(lNewHeight), m_Screen(screen)
    {
        CRect rc;
        rc.SetXYWH(lX, lY, lWidth, lHeight);
        xlong lTargetX = lX, lTargetY = lY;
        if (lWidth < 1 || lHeight < 1 ||
            !ClipAreas(&lX, &lY, &lWidth, &lHeight, &rc, &lTargetX, &lTargetY, &screen.m_rcClip))
            return;
        pRow = screen.LockScreenBuffer();
        if (pRow)
            pRow +=
                (ptrdiff_t)lTargetY * screen.m_pMode->lRowBytes + (ptrdiff_t)lTargetX * screen.m_pMode->lBytesPerPixel;
    }

    ~TFrameArea()
    {
        if (pRow)
            m_Screen.ReleaseScreenBuffer();
    }

    unsigned char *pRow; // the first one; null when there is nothing to draw
    xlong lWidth;
    xlong lHeight;

private:
    CScreenBase &m_Screen;
};

// What a row needs to know to become grey.
struct TGrey
{
    TFormat16 format;
    unsigned char ucBlack; // index
};

typedef void (*TGreyRow)(unsigned char *pTo, const unsigned char *pFrom, xlong lWidth, xlong lRow, const TGrey &grey);

// Every second pixel, like a chess board.
void GreyRow8(unsigned char *pTo, const unsigned char *pFrom, xlong lWidth, xlong lRow, const TGrey &grey)
{
    for (xlong x = 0; x < lWidth; ++x)
        pTo[x] = (x + lRow) & 1 ? grey.ucBlack : pFrom[x];
}

void GreyRow16(unsigned char *pTo, const unsigned char *pFrom, xlong lWidth, xlong, const TGrey &grey)
{
    for (xlong x = 0; x < lWidth; ++x)
    {
        TRGBA color;
        grey.format.Unpack(LoadWord(pFrom + 2 * x), color);
        const unsigned uGrey = (color.ucRed / 8 + color.ucGreen / 8 + color.ucBlue / 8) / 6u * 8;
        StoreWord(pTo + 2 * x, grey.format.Pack(uGrey, uGrey, uGrey));
    }
}

void GreyRow24(unsigned char *pTo, const unsigned char *pFrom, xlong lWidth, xlong, const TGrey &)
{
    for (xlong x = 0; x < lWidth; ++x, pFrom += 3, pTo += 3)
        memset(pTo, (pFrom[0] + pFrom[1] + pFrom[2]) / 6, 3);
}

TGreyRow FindGreyRow(xlong lDepth)
{
    return lDepth == 8 ? GreyRow8 : lDepth == 16 ? GreyRow16 : lDepth == 24 ? GreyRow24 : nullptr;
}

bool IsClampTableBuilt()
{
    return glb->m_ClampTable[511] == 255;
}
} // namespace

void CScreenBase::FillRect(xlong lX, xlong lY, xlong lWidth, xlong lHeight, TRGBA color)
{
    const TFrameArea area(*this, lX, lY, lWidth, lHeight);
    if (!area.pRow)
        return;
    const TPixel pixel = MakePixel(*this, color);
    const xulong ulColor = (xulong)(pixel.ucBytes[0] << 16 | pixel.ucBytes[1] << 8 | pixel.ucBytes[2]);
    const xlong lColumns = area.lWidth; // not to be read again after each row
    unsigned char *pRow = area.pRow;
    for (xlong lRows = area.lHeight; lRows; --lRows, pRow += m_pMode->lRowBytes)
    {
        switch (m_pMode->lDepth)
        {
        case 8:
            memset(pRow, pixel.ucBytes[0], (size_t)lColumns);
            break;
        case 16:
            xMemset16(pRow, LoadWord(pixel.ucBytes), (xulong)lColumns);
            break;
        case 24:
            xMemset24(pRow, ulColor, (xulong)lColumns);
            break;
        }
    }
}

void CScreenBase::FillRectAlpha(xlong lX, xlong lY, xlong lWidth, xlong lHeight, xlong lPercent)
{
    const TFrameArea area(*this, lX, lY, lWidth, lHeight);
    const xlong lDepth = area.pRow ? m_pMode->lDepth : 0;
    if (lDepth != 24 && (lDepth != 16 || !glb->m_pShadeCube))
        return;
    const xlong lSteps = std::clamp<xlong>(lPercent * 31 / 100, 0, 31);
    // Of the negative amount the low byte counts: 0 percent points at the
    // table's zeros.
    const unsigned char ucStart = IsClampTableBuilt() ? (unsigned char)-(lPercent * 255 / 100) : 0;
    const bool bPlain = lDepth == 24 && IsSubtraction(ucStart);
    const xlong lColumns = area.lWidth;
    unsigned char *pRow = area.pRow;
    for (xlong lRows = area.lHeight; lRows; --lRows, pRow += m_pMode->lRowBytes)
    {
        if (lDepth == 16)
            Darken16(pRow, lColumns, lSteps);
        else
            Darken24(pRow, (size_t)lColumns * 3, ucStart, bPlain);
    }
}

xlong CScreenBase::CompOutCode(xlong lX, xlong lY)
{
    xlong lCode = lY > m_rcClip.m_lBottom ? 1 : lY < m_rcClip.m_lTop ? 2 : 0;
    lCode |= lX > m_rcClip.m_lRight ? 4 : lX < m_rcClip.m_lLeft ? 8 : 0;
    return lCode;
}

xlong CScreenBase::ClipLine(xlong &lX1, xlong &lY1, xlong &lX2, xlong &lY2)
{
    xlong lCode1 = CompOutCode(lX1, lY1);
    xlong lCode2 = CompOutCode(lX2, lY2);
    // Each cut brings a point onto an edge; a line past a corner is cut back
    // and forth until both points share a side.
    for (int nCuts = 0; lCode1 | lCode2; ++nCuts)
    {
        if ((lCode1 & lCode2) || nCuts == 8)
            return 0;
        const xlong lCode = lCode1 ? lCode1 : lCode2;
        const long long llDX = (long long)lX2 - lX1;
        const long long llDY = (long long)lY2 - lY1;
        xlong lX, lY;
        if (lCode & 3)
        {
            lY = lCode & 1 ? m_rcClip.m_lBottom : m_rcClip.m_lTop;
            lX = (xlong)(lX1 + llDX * ((long long)lY - lY1) / llDY);
        }
        else
        {
            lX = lCode & 4 ? m_rcClip.m_lRight : m_rcClip.m_lLeft;
            lY = (xlong)(lY1 + llDY * ((long long)lX - lX1) / llDX);
        }
        if (lCode1)
        {
            lX1 = lX;
            lY1 = lY;
            lCode1 = CompOutCode(lX, lY);
        }
        else
        {
            lX2 = lX;
            lY2 = lY;
            lCode2 = CompOutCode(lX, lY);
        }
    }
    return 1;
}

void CScreenBase::DrawLine(xlong lX1, xlong lY1, xlong lX2, xlong lY2, TRGBA color)
{
    if (!ClipLine(lX1, lY1, lX2, lY2))
        return;
    const TPixel pixel = MakePixel(*this, color);
    unsigned char *pBuffer = LockScreenBuffer();
    if (!pBuffer)
        return;
    switch (m_pMode->lDepth)
    {
    case 8:
        DrawPixels<1>(*this, pBuffer, pixel, lX1, lY1, lX2, lY2);
        break;
    case 16:
        DrawPixels<2>(*this, pBuffer, pixel, lX1, lY1, lX2, lY2);
        break;
    case 24:
        DrawPixels<3>(*this, pBuffer, pixel, lX1, lY1, lX2, lY2);
        break;
    }
    ReleaseScreenBuffer();
}

void CScreenBase::ScreenToPersistentGray()
{
    CScreenBase *pActive = glb->m_pScreen ? glb->m_pScreen : this;
    CBitmap *pTarget = pActive->m_pPersistent;
    unsigned char *pBuffer = LockScreenBuffer();
    if (!pBuffer)
        return;
    if (!pTarget || !pTarget->m_pData || pTarget->m_lDepth != m_pMode->lDepth)
    {
        ReleaseScreenBuffer();
        return;
    }
    AddClearArea(0, 0, m_pMode->lWidth, m_pMode->lHeight);

    TRGBA black(0, 0, 0);
    const TGrey grey = { TFormat16(FormatOf(*m_pMode)),
                         (unsigned char)(m_pMode->lDepth == 8 ? m_Palette.FindMatch(&black) : 0) };
    const TGreyRow pfnGreyRow = FindGreyRow(m_pMode->lDepth);
    const xlong lWidth = std::min(m_pMode->lWidth, pTarget->m_lWidth);
    const xlong lHeight = std::min(m_pMode->lHeight, pTarget->m_lHeight);
    for (xlong y = 0; pfnGreyRow && y < lHeight; ++y)
        pfnGreyRow(pTarget->m_pData + (ptrdiff_t)y * pTarget->m_lPitch, pBuffer + (ptrdiff_t)y * m_pMode->lRowBytes,
                   lWidth, y, grey);
    ReleaseScreenBuffer();
    pTarget->m_bChanged = 1;
}
