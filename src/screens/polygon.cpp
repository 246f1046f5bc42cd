#include "pictures/kernels.h"
#include "screens/modeformat.h"
#include "screens/shade.h"
#include "tarvix/error.h"
#include "tarvix/screen.h"

#include <algorithm>
#include <stddef.h>
#include <string.h>

namespace
{
// One edge's values, advanced row by row in 32 bits.
struct TEdge
{
    xlong lX;
    xlong lU;
    xlong lV;
};

// A span of one row: byte range in the row, and the texture position at its start.
struct TSpan
{
    xlong lLeft;
    xlong lRight;
    xlong lU;
    xlong lV;
    xlong lUStep;
    xlong lVStep;
};

xlong Even(xlong lValue)
{
    return lValue / 2 * 2;
}

struct TTexture
{
    explicit TTexture(CBitmap *pBitmap)
        : pData(pBitmap ? pBitmap->m_pData : nullptr), lPitch(0), lBytes(0), lWidth(0), lHeight(0)
    {
        if (!pData)
            return;
        lPitch = pBitmap->m_lPitch;
        lBytes = pBitmap->m_lBytesPerPixel;
        lWidth = pBitmap->m_lWidth;
        lHeight = pBitmap->m_lHeight;
    }

    bool IsUsable(xlong lTargetBytes) const { return pData && lBytes >= lTargetBytes && lWidth > 0 && lHeight > 0; }

    bool HoldsRun(const TSpan &span, xlong lPixels) const
    {
        const long long llU = span.lU + (long long)span.lUStep * (lPixels - 1);
        const long long llV = span.lV + (long long)span.lVStep * (lPixels - 1);
        return Holds(span.lU, lWidth) && Holds(llU, lWidth) && Holds(span.lV, lHeight) && Holds(llV, lHeight);
    }

    static bool Holds(long long llFixed, xlong lSize) { return llFixed >= 0 && llFixed >> 16 < lSize; }

    const unsigned char *At(xlong lU, xlong lV) const
    {
        return pData + (ptrdiff_t)lPitch * (lV >> 16) + (ptrdiff_t)lBytes * (lU >> 16);
    }

    // A position just outside reads what lies there in the block, and one
    // outside the block the nearest texel.
    const unsigned char *AtOutside(xlong lU, xlong lV) const
    {
        const long long llOffset = (long long)lPitch * (lV >> 16) + (long long)lBytes * (lU >> 16);
        if (llOffset >= 0 && llOffset + lBytes <= (long long)lPitch * lHeight)
            return pData + llOffset;
        return At(std::clamp<xlong>(lU >> 16, 0, lWidth - 1) << 16, std::clamp<xlong>(lV >> 16, 0, lHeight - 1) << 16);
    }

    const unsigned char *pData;
    xlong lPitch;
    xlong lBytes;
    xlong lWidth;
    xlong lHeight;
};

// What modulates the texture. Behind the alpha buffer's end it stays as it is.
struct TAlphaRow
{
    const unsigned char *pData; ///< null without alpha
    size_t ulSize;
    long long llStart; ///< index of the row's first pixel
    xlong lPerEntry;   ///< bytes of the target for one alpha value

    unsigned At(xlong lByte) const
    {
        const long long llIndex = llStart + lByte / lPerEntry;
        return llIndex >= 0 && (size_t)llIndex < ulSize ? pData[llIndex] : 255;
    }
};

template <int BYTES, bool ALPHA>
void WriteTexel(unsigned char *pTarget, const unsigned char *pTexel, unsigned uAlpha)
{
    if (!ALPHA)
        memcpy(pTarget, pTexel, BYTES);
    else if (BYTES == 2)
    {
        unsigned short us;
        memcpy(&us, pTexel, 2);
        us = ShadeDown(us, (xlong)(31 - uAlpha / 8));
        memcpy(pTarget, &us, 2);
    }
    else
    {
        for (int i = 0; i < BYTES; ++i)
            pTarget[i] = glb->m_ClampTable[pTexel[i] + uAlpha];
    }
}

template <int BYTES, bool ALPHA>
void DrawSpan(unsigned char *pRow, const TSpan &span, const TTexture &texture, const TAlphaRow &alpha)
{
    const xlong lPixels = (span.lRight - span.lLeft) / BYTES + 1;
    unsigned char *pTarget = pRow + span.lLeft;
    xulong ulU = (xulong)span.lU;
    xulong ulV = (xulong)span.lV;
    xlong lByte = span.lLeft;
    if (texture.HoldsRun(span, lPixels))
    {
        for (xlong l = lPixels; l; --l, pTarget += BYTES, lByte += BYTES, ulU += span.lUStep, ulV += span.lVStep)
            WriteTexel<BYTES, ALPHA>(pTarget, texture.At((xlong)ulU, (xlong)ulV), ALPHA ? alpha.At(lByte) : 0);
        return;
    }
    for (xlong l = lPixels; l; --l, pTarget += BYTES, lByte += BYTES, ulU += span.lUStep, ulV += span.lVStep)
        WriteTexel<BYTES, ALPHA>(pTarget, texture.AtOutside((xlong)ulU, (xlong)ulV), ALPHA ? alpha.At(lByte) : 0);
}

typedef void (*TDrawSpan)(unsigned char *, const TSpan &, const TTexture &, const TAlphaRow &);

TDrawSpan FindDrawSpan(xlong lBytesPerPixel, bool bAlpha)
{
    switch (lBytesPerPixel)
    {
    case 1:
        return DrawSpan<1, false>;
    case 2:
        return bAlpha ? DrawSpan<2, true> : DrawSpan<2, false>;
    case 3:
        return bAlpha ? DrawSpan<3, true> : DrawSpan<3, false>;
    }
    return nullptr;
}

// Doubles a part of the target into a block of lWidth by lHeight pixels, both
// even; what lies outside the target is left alone.
template <int BYTES>
void FillDoubled(unsigned char *pBlock, xlong lWidth, xlong lHeight, const unsigned char *pTarget, xlong lPitch,
                 xlong lTargetHeight, xlong lX, xlong lY)
{
    const xlong lFirst = std::max<xlong>(-lX, 0);
    const xlong lEnd = std::min(lWidth / 2, lPitch / BYTES - lX);
    for (xlong y = 0; y < lHeight; y += 2)
    {
        const xlong lSourceY = lY + y / 2;
        if (lSourceY < 0 || lSourceY >= lTargetHeight)
            continue;
        const unsigned char *pFrom = pTarget + (ptrdiff_t)lSourceY * lPitch + (ptrdiff_t)(lX + lFirst) * BYTES;
        unsigned char *pRow = pBlock + (size_t)y * lWidth * BYTES;
        unsigned char *pTo = pRow + (size_t)lFirst * 2 * BYTES;
        for (xlong x = lFirst; x < lEnd; ++x, pFrom += BYTES, pTo += 2 * BYTES)
        {
            memcpy(pTo, pFrom, BYTES);
            memcpy(pTo + BYTES, pFrom, BYTES);
        }
        memcpy(pRow + (size_t)lWidth * BYTES, pRow, (size_t)lWidth * BYTES);
    }
}

// A textured polygon on its way into a block. Filtered, it is drawn at twice
// the size into a block of its own; until that is made, places are half pixels
// from the polygon's corner on.
struct TRaster
{
    TRaster(CScreenBase &theScreen, unsigned char *pBlock, xlong lBlockPitch, xlong lBlockHeight, xlong lPixelBytes)
        : screen(theScreen), pTarget(pBlock), lPitch(lBlockPitch), lHeight(lBlockHeight), lBytes(lPixelBytes),
          texture(theScreen.m_pTexture), bAlpha(theScreen.m_bAlphaMode && theScreen.m_pAlpha &&
                                                theScreen.m_pAlpha->m_pData && theScreen.m_pMode->lDepth != 8),
          bFilter(theScreen.m_lPolygonFilter && lPixelBytes != 1 && theScreen.m_pMode->lDepth != 8),
          pfnDrawSpan(FindDrawSpan(lPixelBytes, bAlpha)), lOffsetX(0), lOffsetY(0), lShift(0), pActive(pBlock),
          lActivePitch(lBlockPitch), pDoubled(nullptr), lDoubledRows(0)
    {
    }

    bool IsReady() const
    {
        return pTarget && pfnDrawSpan && texture.IsUsable(lBytes) && (!bAlpha || IsShadeReady(lBytes * 8));
    }

    // @return whether there is a row to draw
    bool MakeSpans()
    {
        xlong lMinX, lMinY, lMaxX, lMaxY;
        const xlong lAny = bFilter ? screen.MakeFilterDrawList(lOffsetX, lOffsetY, lMinX, lMinY, lMaxX, lMaxY)
                                   : screen.MakeDrawList(lMinX, lMinY, lMaxX, lMaxY);
        rcExtent.Set(lMinX, lMinY, lMaxX, lMaxY);
        return lAny != 0;
    }

    void TellBounds(CRect &rcBounds) const
    {
        rcBounds = rcExtent;
        if (bFilter)
            rcBounds.Set((lOffsetX + rcExtent.m_lLeft) / 2, (lOffsetY + rcExtent.m_lTop) / 2,
                         (lOffsetX + rcExtent.m_lRight) / 2, (lOffsetY + rcExtent.m_lBottom) / 2);
    }

    // What is left of the extent, and the rows and columns to draw.
    // @return false for nothing
    bool Clip(const CRect &rcWanted)
    {
        // Never outside the block, whatever clip the caller has.
        CRect rcBlock;
        rcClip = rcWanted;
        rcBlock.Set(0, 0, lPitch / lBytes - 1, lHeight - 1);
        if (lPitch < lBytes || lHeight < 1 || !rcClip.Intersect(&rcClip, &rcBlock))
            return false;
        if (bFilter)
            MoveToDoubled();
        xlong lX = rcExtent.m_lLeft, lY = rcExtent.m_lTop;
        xlong lWidth = rcExtent.m_lRight - lX + 1, lRows = rcExtent.m_lBottom - lY + 1;
        xlong lUnusedX = lX, lUnusedY = lY;
        if (!ClipAreas(&lX, &lY, &lWidth, &lRows, &rcExtent, &lUnusedX, &lUnusedY, &rcClip))
            return false;
        rcArea.SetXYWH(lX, lY, lWidth, lRows);
        lFirst = std::max(screen.m_lFirstRow, rcClip.m_lTop);
        lLast = std::min(screen.m_lLastRow, rcClip.m_lBottom);
        lLimit = rcClip.m_lRight;
        return true;
    }

    // The clip in half pixels; and the spans, so that they begin where the
    // block of twice the size is going to begin.
    void MoveToDoubled()
    {
        rcClip.Set(rcClip.m_lLeft * 2 - lOffsetX, rcClip.m_lTop * 2 - lOffsetY, rcClip.m_lRight * 2 - lOffsetX,
                   rcClip.m_lBottom * 2 - lOffsetY);
        lShift = Even(std::max<xlong>(rcClip.m_lLeft - rcExtent.m_lLeft, 0) + 1);
        for (xlong lRow = screen.m_lFirstRow; lRow <= screen.m_lLastRow; ++lRow)
        {
            screen.m_lLeftX[lRow] -= lShift;
            screen.m_lRightX[lRow] -= lShift;
        }
    }

    // The block of twice the size, with what the target holds there. From here
    // on the area counts pixels.
    bool MakeDoubled()
    {
        const xlong lDoubledWidth = Even(rcArea.m_lRight) - Even(rcArea.m_lLeft) + 2;
        lDoubledRows = Even(rcArea.m_lBottom) - Even(rcArea.m_lTop) + 2;
        const size_t ulBytes = (size_t)lDoubledWidth * lDoubledRows * lBytes;
        pDoubled = ulBytes < 0x3fffffff ? XNEW(unsigned char[ulBytes]) : nullptr;
        if (!pDoubled)
            return false;
        rcArea.SetXYWH((rcArea.m_lLeft + lOffsetX) / 2, (rcArea.m_lTop + lOffsetY) / 2, lDoubledWidth / 2,
                       lDoubledRows / 2);
        memset(pDoubled, 0, ulBytes);
        (lBytes == 2 ? FillDoubled<2> : FillDoubled<3>)(pDoubled, lDoubledWidth, lDoubledRows, pTarget, lPitch, lHeight,
                                                        rcArea.m_lLeft, rcArea.m_lTop);
        pActive = pDoubled;
        lActivePitch = lDoubledWidth * lBytes;
        lFirst = (lFirst + 1) & ~1;
        lLast = std::min(lLast, lFirst + lDoubledRows - 1);
        lLimit = std::min(rcClip.m_lRight - lShift, lDoubledWidth - 1);
        return true;
    }

    void DrawRow(xlong lRow) const
    {
        TSpan span;
        if (MakeSpan(lRow, span))
            pfnDrawSpan(pActive + (ptrdiff_t)(bFilter ? lRow - lFirst : lRow) * lActivePitch, span, texture,
                        AlphaOf(lRow));
    }

    // A row's span in bytes, cut to the clip. @return whether any of it is left
    bool MakeSpan(xlong lRow, TSpan &span) const
    {
        span.lLeft = screen.m_lLeftX[lRow] *= lBytes;
        span.lRight = screen.m_lRightX[lRow] *= lBytes;
        span.lU = screen.m_lLeftU[lRow];
        span.lV = screen.m_lLeftV[lRow];
        if (!bFilter && IsBeside(span))
            return false;
        xlong lSpan = span.lRight - span.lLeft;
        if (lSpan < 1)
            lSpan = 2 * lBytes;
        const xlong lSteps = lSpan / lBytes;
        span.lUStep = (screen.m_lRightU[lRow] - span.lU) / lSteps;
        span.lVStep = (screen.m_lRightV[lRow] - span.lV) / lSteps;

        const xlong lStart = bFilter ? 0 : rcClip.m_lLeft * lBytes;
        if (span.lLeft < lStart)
        {
            const xlong lCut = (lStart - span.lLeft) / lBytes;
            span.lU += lCut * span.lUStep;
            span.lV += lCut * span.lVStep;
            span.lLeft = lStart;
        }
        if (bFilter && IsBeside(span))
            return false;
        span.lRight = std::min(span.lRight, lLimit * lBytes);
        return span.lLeft <= span.lRight;
    }

    bool IsBeside(const TSpan &span) const { return span.lRight < 0 || span.lLeft > lActivePitch; }

    // Rows are counted with the target's bytes here, not with the alpha buffer's.
    TAlphaRow AlphaOf(xlong lRow) const
    {
        if (!bAlpha)
            return { nullptr, 0, 0, 1 };
        const CBitmap &alpha = *screen.m_pAlpha;
        const size_t ulSize = (size_t)alpha.m_lPitch * alpha.m_lHeight;
        if (!bFilter)
            return { alpha.m_pData, ulSize, (long long)lRow * lPitch, lBytes };
        return { alpha.m_pData, ulSize, (long long)((lRow - lFirst) / 2 + rcArea.m_lTop) * lPitch + rcArea.m_lLeft,
                 2 * lBytes };
    }

    CScreenBase &screen;
    unsigned char *pTarget;
    xlong lPitch;
    xlong lHeight;
    xlong lBytes; // of a pixel
    TTexture texture;
    bool bAlpha;
    bool bFilter;
    TDrawSpan pfnDrawSpan;

    xlong lOffsetX; // the polygon's corner in half pixels, filtered alone
    xlong lOffsetY;
    CRect rcExtent; // of the polygon
    CRect rcClip;
    xlong lShift; // columns that the spans were moved by
    CRect rcArea; // what is left of the extent
    xlong lFirst; // rows
    xlong lLast;
    xlong lLimit;           // last column
    unsigned char *pActive; // what the spans are drawn into
    xlong lActivePitch;
    unsigned char *pDoubled;
    xlong lDoubledRows;
};

// Averages of four pixels, two by two.
void ShrinkRow16(unsigned char *pTo, const unsigned char *pUpper, const unsigned char *pLower, int nPixels,
                 const TFormat16 &format)
{
    for (int n = 0; n < nPixels; ++n)
    {
        unsigned uRed = 0, uGreen = 0, uBlue = 0;
        for (const unsigned char *pFrom : { pUpper + 4 * n, pUpper + 4 * n + 2, pLower + 4 * n, pLower + 4 * n + 2 })
        {
            const unsigned uIndex = ScreenIndex(LoadWord(pFrom));
            uRed += uIndex >> 10;
            uGreen += uIndex >> 5 & 31;
            uBlue += uIndex & 31;
        }
        StoreWord(pTo + 2 * n, format.Pack(uRed * 8 >> 2, uGreen * 8 >> 2, uBlue * 8 >> 2));
    }
}

void ShrinkRow24(unsigned char *pTo, const unsigned char *pUpper, const unsigned char *pLower, int nPixels)
{
    for (int n = 0; n < nPixels; ++n, pTo += 3, pUpper += 6, pLower += 6)
        for (int i = 0; i < 3; ++i)
            pTo[i] = (unsigned char)((pUpper[i] + pUpper[i + 3] + pLower[i] + pLower[i + 3]) >> 2);
}

// Darkens one row of a shadow; left and right are bytes.
void ShadowRow8(unsigned char *pRow, xlong lLeft, xlong lRight, unsigned char ucBlack)
{
    xlong x = lLeft;
    // The first of each two bytes.
    const __m128i xBlack = _mm_set1_epi16(ucBlack), xKeep = _mm_set1_epi16((short)0xff00);
    for (; x + 16 <= lRight; x += 16)
    {
        __m128i *pAt = (__m128i *)(pRow + x);
        _mm_storeu_si128(pAt, _mm_or_si128(_mm_and_si128(_mm_loadu_si128(pAt), xKeep), xBlack));
    }
    for (; x < lRight; x += 2)
        pRow[x] = ucBlack;
}

void ShadowRow16(unsigned char *pRow, xlong lLeft, xlong lRight)
{
    for (xlong x = lLeft; x <= lRight; x += 2)
    {
        unsigned short us;
        memcpy(&us, pRow + x, 2);
        us = glb->m_pIndexToScreen[ShadeDown(ScreenIndex(us), 7) & 0x7fff];
        memcpy(pRow + x, &us, 2);
    }
}

void ShadowRow24(unsigned char *pRow, xlong lLeft, xlong lRight)
{
    const unsigned char *pDarker = glb->m_ClampTable + 200;
    const xlong lEnd = lLeft + ((lRight - lLeft) / 3 + 1) * 3;
    for (xlong x = lLeft; x < lEnd; ++x)
        pRow[x] = pDarker[pRow[x]];
}
} // namespace

void CScreenBase::SetTextureCoords(xlong lU0, xlong lV0, xlong lU1, xlong lV1, xlong lU2, xlong lV2, xlong lU3,
                                   xlong lV3)
{
    const xlong lCoords[8] = { lU0, lV0, lU1, lV1, lU2, lV2, lU3, lV3 };
    memcpy(m_lTextureCoords, lCoords, sizeof(lCoords));
}

void CScreenBase::SetPolygon(xlong lX0, xlong lY0, float fZ0, xlong lX1, xlong lY1, float fZ1, xlong lX2, xlong lY2,
                             float fZ2, xlong lX3, xlong lY3, float fZ3)
{
    m_Polygon[0] = { lX0, lY0, fZ0 };
    m_Polygon[1] = { lX1, lY1, fZ1 };
    m_Polygon[2] = { lX2, lY2, fZ2 };
    m_Polygon[3] = { lX3, lY3, fZ3 };
}

void CScreenBase::SetPolygonMode(xlong lMode, xlong lFilter)
{
    m_lPolygonMode = lMode;
    m_lPolygonFilter = lFilter;
}

xlong CScreenBase::MakeDrawList(xlong &lMinX, xlong &lMinY, xlong &lMaxX, xlong &lMaxY)
{
    for (TVertex &vertex : m_Polygon)
    {
        vertex.lX >>= 1;
        vertex.lY >>= 1;
    }
    return CalcDrawList(lMinX, lMinY, lMaxX, lMaxY);
}

xlong CScreenBase::MakeFilterDrawList(xlong &lOffsetX, xlong &lOffsetY, xlong &lMinX, xlong &lMinY, xlong &lMaxX,
                                      xlong &lMaxY)
{
    lOffsetX = m_Polygon[0].lX;
    lOffsetY = m_Polygon[0].lY;
    for (const TVertex &vertex : m_Polygon)
    {
        lOffsetX = std::min(lOffsetX, vertex.lX);
        lOffsetY = std::min(lOffsetY, vertex.lY);
    }
    for (TVertex &vertex : m_Polygon)
    {
        vertex.lX -= lOffsetX;
        vertex.lY -= lOffsetY;
    }
    return CalcDrawList(lMinX, lMinY, lMaxX, lMaxY);
}

xlong CScreenBase::CalcDrawList(xlong &lMinX, xlong &lMinY, xlong &lMaxX, xlong &lMaxY)
{
    lMinX = lMinY = 2000000000;
    lMaxX = lMaxY = -2000000000;
    int nTop = 0;
    int nBottom = 0;
    for (int i = 0; i < 4; ++i)
    {
        const TVertex &vertex = m_Polygon[i];
        if (vertex.lY < lMinY)
        {
            lMinY = vertex.lY;
            nTop = i;
        }
        if (vertex.lY > lMaxY)
        {
            lMaxY = vertex.lY;
            nBottom = i;
        }
        lMinX = std::min(lMinX, vertex.lX);
        lMaxX = std::max(lMaxX, vertex.lX);
    }
    m_lFirstRow = lMinY;
    m_lLastRow = lMaxY;

    const struct
    {
        int nDirection;
        xlong *plX, *plU, *plV;
    } sides[2] = { { 3, m_lLeftX, m_lLeftU, m_lLeftV }, { 1, m_lRightX, m_lRightU, m_lRightV } };
    for (const auto &side : sides)
    {
        for (int nFrom = nTop; nFrom != nBottom;)
        {
            const int nTo = (nFrom + side.nDirection) & 3;
            const TVertex &a = m_Polygon[nFrom];
            const TVertex &b = m_Polygon[nTo];
            const xlong lUA = m_lTextureCoords[2 * nFrom];
            const xlong lVA = m_lTextureCoords[2 * nFrom + 1];
            TEdge edge = { (xlong)((xulong)a.lX << 16), lUA, lVA };
            TEdge step = { 0, 0, 0 };
            const xlong lRows = b.lY - a.lY;
            nFrom = nTo;
            // An edge that runs upwards fills no row.
            if (lRows < 0 || b.lY < a.lY)
                continue;
            if (lRows)
            {
                step.lX = (xlong)((xulong)(b.lX - a.lX) << 16) / lRows;
                step.lU = (m_lTextureCoords[2 * nTo] - lUA) / lRows;
                step.lV = (m_lTextureCoords[2 * nTo + 1] - lVA) / lRows;
            }
            // Rows above the table are stepped over at once.
            const xlong lFirst = std::max<xlong>(a.lY, 0);
            const xlong lLast = std::min<xlong>(b.lY, MAX_ROWS - 1);
            const xulong ulSkip = (xulong)lFirst - (xulong)a.lY;
            edge.lX += (xlong)(ulSkip * (xulong)step.lX);
            edge.lU += (xlong)(ulSkip * (xulong)step.lU);
            edge.lV += (xlong)(ulSkip * (xulong)step.lV);
            for (xlong lRow = lFirst; lRow <= lLast; ++lRow)
            {
                side.plX[lRow] = edge.lX >> 16;
                side.plU[lRow] = edge.lU;
                side.plV[lRow] = edge.lV;
                edge.lX += step.lX;
                edge.lU += step.lU;
                edge.lV += step.lV;
            }
        }
    }
    // Without a distinct bottom no edge was walked: all vertices share a row.
    if (nTop == nBottom && m_lFirstRow >= 0 && m_lFirstRow < MAX_ROWS)
    {
        m_lLeftX[m_lFirstRow] = m_lRightX[m_lFirstRow] = (xlong)((xulong)m_Polygon[nTop].lX << 16) >> 16;
        m_lLeftU[m_lFirstRow] = m_lRightU[m_lFirstRow] = m_lTextureCoords[2 * nTop];
        m_lLeftV[m_lFirstRow] = m_lRightV[m_lFirstRow] = m_lTextureCoords[2 * nTop + 1];
    }
    m_lFirstRow = std::max<xlong>(m_lFirstRow, 0);
    m_lLastRow = std::min<xlong>(m_lLastRow, MAX_ROWS - 1);
    return m_lFirstRow < MAX_ROWS && m_lLastRow >= 0 && m_lFirstRow <= m_lLastRow;
}

xlong CScreenBase::DrawPolygonSoftware(unsigned char *pTarget, CRect *pClip, xlong lPitch, xlong lHeight,
                                       xlong lBytesPerPixel, CRect *&pArea, CRect *&pBounds)
{
    TRaster raster(*this, pTarget, lPitch, lHeight, lBytesPerPixel);
    if (!raster.IsReady() || !raster.MakeSpans())
        return 0;
    if (pBounds)
        raster.TellBounds(*pBounds);
    if (!raster.Clip(*pClip))
    {
        pArea->SetEmpty();
        return 1;
    }
    if (raster.bFilter && !raster.MakeDoubled())
        return xError(XERR_MEMORY);
    *pArea = raster.rcArea;
    for (xlong lRow = raster.lFirst; lRow <= raster.lLast; ++lRow)
        raster.DrawRow(lRow);
    if (raster.bFilter)
    {
        CopyFiltered(raster.rcArea.m_lLeft, raster.rcArea.m_lTop, pTarget, lPitch, lHeight, raster.pDoubled,
                     raster.lActivePitch, raster.lDoubledRows);
        XDELETE_ARRAY(raster.pDoubled);
    }
    return 1;
}

void CScreenBase::CopyFiltered(int nX, int nY, unsigned char *pTarget, int nPitch, int nHeight, unsigned char *pSource,
                               int nSourcePitch, int nSourceRows)
{
    const xlong lBytes = m_pMode->lBytesPerPixel;
    const xlong lDepth = m_pMode->lDepth;
    if (lDepth != 16 && lDepth != 24)
        return;
    const int nColumns = nSourcePitch / lBytes / 2;
    // Above the block the row counts for nothing.
    unsigned char *pStart = pTarget + (ptrdiff_t)std::max(nY, 0) * nPitch + (ptrdiff_t)nX * lBytes;
    const TFormat16 format(FormatOf(*m_pMode));
    for (int nRow = 0; nRow < nSourceRows / 2; ++nRow)
    {
        unsigned char *pTo = pStart + (ptrdiff_t)nRow * nPitch;
        const unsigned char *pUpper = pSource + (ptrdiff_t)nRow * 2 * nSourcePitch;
        if (lDepth == 24)
            ShrinkRow24(pTo, pUpper, pUpper + nSourcePitch, nColumns);
        else
            ShrinkRow16(pTo, pUpper, pUpper + nSourcePitch, nColumns, format);
    }
}

xlong CScreenBase::DrawShadowPolygonSoftware(unsigned char *pTarget, CRect *&pArea)
{
    xlong lMinX, lMinY, lMaxX, lMaxY;
    if (!pTarget || !MakeDrawList(lMinX, lMinY, lMaxX, lMaxY))
        return 0;
    const xlong lPitch = m_pMode->lRowBytes;
    const xlong lBytes = m_pMode->lBytesPerPixel;
    const xlong lDepth = m_pMode->lDepth;
    if (lDepth == 16 && (!glb->m_pShadeCube || !glb->m_pIndexToScreen))
        return 0;
    unsigned char ucBlack = 0;
    if (lDepth == 8)
    {
        TRGBA black(0, 0, 0);
        ucBlack = (unsigned char)m_Palette.FindMatch(&black);
    }
    const xlong lLast = std::min(m_lLastRow, m_pMode->lHeight - 1);
    for (xlong lRow = m_lFirstRow; lRow <= lLast; ++lRow)
    {
        xlong lLeft = m_lLeftX[lRow] * lBytes;
        xlong lRight = m_lRightX[lRow] * lBytes;
        if (lRight < 0 || lLeft > lPitch || lRight - lLeft < 1)
            continue;
        lLeft = std::max<xlong>(lLeft, 0);
        // The last pixel of the row that is there whole.
        if (lRight >= lPitch)
            lRight = lPitch - 1;
        if (lDepth != 8)
            lRight = std::min(lRight, lPitch - lBytes);
        if (lLeft > lRight)
            continue;
        unsigned char *pRow = pTarget + (ptrdiff_t)lRow * lPitch;
        if (lDepth == 8)
            ShadowRow8(pRow, lLeft + (lRow & 1), lRight, ucBlack);
        else if (lDepth == 16)
            ShadowRow16(pRow, lLeft, lRight);
        else if (lDepth == 24)
            ShadowRow24(pRow, lLeft, lRight);
    }
    if (pArea)
        pArea->Set(lMinX, lMinY, lMaxX, lMaxY);
    return 1;
}

xlong CScreenBase::DrawPolygonPersistent(CRect *&pBounds)
{
    if (!m_pPersistent)
        return 0;
    CRect rc;
    CRect *pArea = &rc;
    if (!DrawPolygonSoftware(m_pPersistent->m_pData, &m_rcClip, m_pPersistent->m_lPitch, m_pPersistent->m_lHeight,
                             m_pPersistent->m_lBytesPerPixel, pArea, pBounds))
        return 0;
    rc.Normalize();
    m_pPersistent->m_bChanged = 1;
    AddClearAreaPersistent(rc.m_lLeft, rc.m_lTop, rc.m_lRight + 2, rc.m_lBottom + 2);
    if (pBounds)
        pBounds->Normalize();
    return 1;
}

xlong CScreenBase::DrawPolygonBitmap(CBitmap *pBitmap, CRect *&pBounds)
{
    CRect rc;
    CRect *pArea = &rc;
    if (!DrawPolygonSoftware(pBitmap->m_pData, &pBitmap->m_rcClip, pBitmap->m_lPitch, pBitmap->m_lHeight,
                             pBitmap->m_lBytesPerPixel, pArea, pBounds))
        return 0;
    pBitmap->m_bChanged = 1;
    if (pBounds)
        pBounds->Normalize();
    return 1;
}

xlong CScreenBase::DrawShadowPolygonPersistent(CRect *&pArea)
{
    if (!m_pPersistent || m_pPersistent->m_lPitch != m_pMode->lRowBytes)
        return 0;
    CRect rc;
    CRect *pDrawn = &rc;
    if (!DrawShadowPolygonSoftware(m_pPersistent->m_pData, pDrawn))
        return 0;
    m_pPersistent->m_bChanged = 1;
    AddClearAreaPersistent(rc.m_lLeft, rc.m_lTop, rc.m_lRight + 2, rc.m_lBottom + 2);
    if (pArea)
        pArea->Copy(&rc);
    return 1;
}

xlong CScreenBase::DrawShadowPolygonBitmap(CBitmap *pBitmap, CRect *&pArea)
{
    // The routine takes pitch and height from the mode.
    if (pBitmap->m_lPitch != m_pMode->lRowBytes || pBitmap->m_lHeight < m_pMode->lHeight)
        return 0;
    CRect rc;
    CRect *pDrawn = &rc;
    if (!DrawShadowPolygonSoftware(pBitmap->m_pData, pDrawn))
        return 0;
    pBitmap->m_bChanged = 1;
    if (pArea)
        pArea->Copy(&rc);
    return 1;
}
