#include "pictures/kernels.h"

#include "pictures/kernelrows.h"
#include "pictures/palettesearch.h"
#include "tarvix/file.h"
#include "tarvix/globals.h"

#include <algorithm>
#include <stddef.h>
#include <stdint.h>
#include <stdio.h>
#include <string.h>

namespace
{
enum
{
    CALLBACK_ROWS = 32,
    CUBE_SIZE = 32768
};

void LoadDataTurn()
{
    if (glb && glb->m_pfnLoadData)
        glb->m_pfnLoadData();
}

// The rows of both blocks after clipping.
struct TArea : TRows
{
    // @return whether anything is left
    bool Clip(const unsigned char *pFrom, xlong lFromPitch, xlong lSourceX, xlong lSourceY, xlong lCountX,
              xlong lCountY, const CRect *pSourceClip, xlong lSourceBytes, unsigned char *pTo, xlong lToPitch,
              xlong lTargetX, xlong lTargetY, const CRect *pTargetClip, xlong lTargetBytes)
    {
        if (!ClipAreas(&lSourceX, &lSourceY, &lCountX, &lCountY, pSourceClip, &lTargetX, &lTargetY, pTargetClip))
            return false;
        lWidth = lCountX;
        lHeight = lCountY;
        lSourcePitch = lFromPitch;
        lTargetPitch = lToPitch;
        pSource = pFrom + (ptrdiff_t)lSourceY * lFromPitch + (ptrdiff_t)lSourceX * lSourceBytes;
        pTarget = pTo + (ptrdiff_t)lTargetY * lToPitch + (ptrdiff_t)lTargetX * lTargetBytes;
        return true;
    }

    // Whether a table of all 256 colours pays for itself.
    bool IsLarge() const { return (int64_t)lWidth * lHeight > 256; }
};

// Calls the function for all rows, 32 at a time, and the callback before each
// of these lots. The area moves along, since a copy of it costs as much as a
// small sprite's row.
template <class TFunction>
void ForRows(TRows &area, TFunction function)
{
    for (xlong lLeft = area.lHeight; lLeft > 0; lLeft -= CALLBACK_ROWS)
    {
        LoadDataTurn();
        area.lHeight = std::min(lLeft, (xlong)CALLBACK_ROWS);
        function(area);
        area.pSource += CALLBACK_ROWS * area.lSourcePitch;
        area.pTarget += CALLBACK_ROWS * area.lTargetPitch;
    }
}

// The same for a function of one row.
template <class TFunction>
void ForEachRow(TRows &area, TFunction function)
{
    ForRows(area,
            [&](const TRows &rows)
            {
                for (xlong i = 0; i < rows.lHeight; ++i)
                    function(rows.pSource + i * rows.lSourcePitch, rows.pTarget + i * rows.lTargetPitch);
            });
}

void SetKey(TRowCall &call, const unsigned char *pBlock, xlong lBytes)
{
    memcpy(call.aucKey, pBlock, (size_t)lBytes);
}

TRowFunction PickRows(TRowKind kind, bool bTransparent, bool bFast, const TRowCall &call)
{
    const TRowFunction pfnFast = bFast ? FastRow(kind, bTransparent, call) : nullptr;
    return pfnFast ? pfnFast : PlainRow(kind, bTransparent);
}

void RunRows(TRows &area, TRowKind kind, xlong lTransparent, bool bFast, const TRowCall &call)
{
    const TRowFunction pfnRows = PickRows(kind, lTransparent == 1, bFast, call);
    ForRows(area, [pfnRows, &call](const TRows &rows) { pfnRows(rows, call); });
}

// Rows of one format. Blocks without padding are copied many rows at a time.
void CopyRows(TRows &area, xlong lBytes)
{
    const size_t ulBytes = (size_t)area.lWidth * (size_t)lBytes;
    if (area.lSourcePitch == (ptrdiff_t)ulBytes && area.lTargetPitch == (ptrdiff_t)ulBytes)
    {
        ForRows(area, [=](const TRows &rows) { memcpy(rows.pTarget, rows.pSource, ulBytes * (size_t)rows.lHeight); });
        return;
    }
    // A call for each of a sprite's rows would cost more than the row.
    const bool bShort = ulBytes >= 16 && ulBytes <= 256;
    area.lWidth = (xlong)ulBytes;
    RunRows(area, ROW_BYTES, 0, bShort, TRowCall());
}

void RunSame(TArea &area, TRowKind kind, xlong lBytes, xlong lTransparent, const unsigned char *pBlock)
{
    if (lTransparent != 1)
    {
        CopyRows(area, lBytes);
        return;
    }
    TRowCall call;
    SetKey(call, pBlock, lBytes);
    RunRows(area, kind, 1, true, call);
}

// The move of a channel from one 16-bit format to another: the bits that
// survive widening to a byte and narrowing again.
TMove MoveOf(const TChannel16 &from, const TChannel16 &to)
{
    const xlong lNet = (xlong)(to.ucBits + to.ucShift) - (xlong)(from.ucBits + from.ucShift);
    const xlong lFirst = (xlong)(from.ucShift + (from.ucBits > to.ucBits ? from.ucBits - to.ucBits : 0));
    const xlong lEnd = std::min((xlong)(from.ucShift + from.ucBits), 16 - std::max(lNet, (xlong)0));
    TMove move;
    move.usMask = (unsigned short)(lFirst < lEnd ? (1u << lEnd) - (1u << lFirst) : 0);
    move.ucLeft = (unsigned char)std::max(lNet, (xlong)0);
    move.ucRight = (unsigned char)std::max(-lNet, (xlong)0);
    return move;
}

// Whether the whole 32,768 bytes could be read.
bool ReadCube(CFile &file, unsigned char *pCube)
{
    for (xlong i = 0; i < CUBE_SIZE; ++i)
        if (!file.ReadByte((signed char *)&pCube[i]))
            return false;
    return true;
}

bool WriteCube(CFile &file, const unsigned char *pCube)
{
    for (xlong i = 0; i < CUBE_SIZE; ++i)
        if (!file.WriteByte((signed char)pCube[i]))
            return false;
    return true;
}

void ComputeCube(const CPalette &palette, unsigned char *pCube)
{
    CPaletteSearch search(palette);
    for (xulong i = 0; i < CUBE_SIZE; ++i)
        pCube[i] = search.Find((i >> 10) * 8, (i >> 5 & 31) * 8, (i & 31) * 8);
}

// Fills the cube from the file that belongs to the palette, or makes both.
bool FillCube(const CPalette &palette, unsigned char *pCube)
{
    const char *pszPalette = palette.m_pszName ? palette.m_pszName : "";
    const size_t ulSize = strlen(pszPalette) + 5;
    char *pszName = XNEW(char[ulSize]);
    if (!pszName)
        return false;
    snprintf(pszName, ulSize, "%s.tab", pszPalette);
    CFile file;
    bool bOk = true;
    if (*pszPalette && file.Open(pszName, FILE_READ))
        bOk = ReadCube(file, pCube);
    else
    {
        ComputeCube(palette, pCube);
        if (file.Open(pszName, FILE_WRITE))
            bOk = WriteCube(file, pCube);
    }
    file.Close();
    XDELETE_ARRAY(pszName);
    return bOk;
}

// The cube in the globals, made for the first palette that is used.
const unsigned char *ColourCube(const CPalette &palette)
{
    if (!glb->m_pColourIndexMap)
    {
        unsigned char *pCube = XNEW(unsigned char[CUBE_SIZE]);
        if (!pCube)
            return nullptr;
        if (!FillCube(palette, pCube))
        {
            XDELETE_ARRAY(pCube);
            return nullptr;
        }
        glb->m_pColourIndexMap = pCube;
    }
    return glb->m_pColourIndexMap;
}

// One axis of the clipping.
struct TSpan
{
    bool ClipTo(int64_t llFirst, int64_t llLast, int64_t &llFrom, int64_t &llTo) const
    {
        // llFrom is limited to the span, and llTo goes along.
        if (llFrom + llCount - 1 < llFirst || llFrom > llLast)
            return false;
        if (llFrom < llFirst)
        {
            llTo += llFirst - llFrom;
            llFrom = llFirst;
        }
        return true;
    }

    bool Clip(xlong lSourceFirst, xlong lSourceLast, xlong lTargetFirst, xlong lTargetLast)
    {
        // Most areas lie inside both.
        if (llCount > 0 && llSource >= lSourceFirst && llSource + llCount - 1 <= lSourceLast &&
            llTarget >= lTargetFirst && llTarget + llCount - 1 <= lTargetLast)
            return true;
        const int64_t llSourceEnd = llSource + llCount - 1;
        if (!ClipTo(lSourceFirst, lSourceLast, llSource, llTarget))
            return false;
        llCount = std::min(llSourceEnd, (int64_t)lSourceLast) - llSource + 1;
        const int64_t llTargetEnd = llTarget + llCount - 1;
        if (!ClipTo(lTargetFirst, lTargetLast, llTarget, llSource))
            return false;
        llCount = std::min(llTargetEnd, (int64_t)lTargetLast) - llTarget + 1;
        return llCount > 0;
    }

    int64_t llSource;
    int64_t llTarget;
    int64_t llCount;
};
} // namespace

xlong ClipAreas(xlong *plSourceX, xlong *plSourceY, xlong *plWidth, xlong *plHeight, const CRect *pSourceClip,
                xlong *plTargetX, xlong *plTargetY, const CRect *pTargetClip)
{
    TSpan x = { *plSourceX, *plTargetX, *plWidth }, y = { *plSourceY, *plTargetY, *plHeight };
    if (!x.Clip(pSourceClip->m_lLeft, pSourceClip->m_lRight, pTargetClip->m_lLeft, pTargetClip->m_lRight) ||
        !y.Clip(pSourceClip->m_lTop, pSourceClip->m_lBottom, pTargetClip->m_lTop, pTargetClip->m_lBottom))
        return 0;
    *plSourceX = (xlong)x.llSource;
    *plTargetX = (xlong)x.llTarget;
    *plWidth = (xlong)x.llCount;
    *plSourceY = (xlong)y.llSource;
    *plTargetY = (xlong)y.llTarget;
    *plHeight = (xlong)y.llCount;
    return 1;
}

xlong Convert8To8(const unsigned char *pSource, xlong lSourcePitch, xlong lSourceX, xlong lSourceY, xlong lWidth,
                  xlong lHeight, const CRect *pSourceClip, xlong lTransparent, unsigned char *pTarget,
                  xlong lTargetPitch, xlong lTargetX, xlong lTargetY, const CRect *pTargetClip)
{
    TArea area;
    if (!area.Clip(pSource, lSourcePitch, lSourceX, lSourceY, lWidth, lHeight, pSourceClip, 1, pTarget, lTargetPitch,
                   lTargetX, lTargetY, pTargetClip, 1))
        return 0;
    RunSame(area, ROW_SAME8, 1, lTransparent, pSource);
    return 1;
}

xlong Convert8To16(const unsigned char *pSource, xlong lSourcePitch, xlong lSourceX, xlong lSourceY, xlong lWidth,
                   xlong lHeight, const CPalette *pPalette, const CRect *pSourceClip, xlong lTransparent,
                   unsigned char *pTarget, xlong lTargetPitch, xlong lTargetX, xlong lTargetY,
                   const TPixelFormat &fmtTarget, const CRect *pTargetClip)
{
    TArea area;
    if (!pPalette || !area.Clip(pSource, lSourcePitch, lSourceX, lSourceY, lWidth, lHeight, pSourceClip, 1, pTarget,
                                lTargetPitch, lTargetX, lTargetY, pTargetClip, 2))
        return 0;
    TRowCall call = { .target16 = TFormat16(fmtTarget), .pColours = pPalette->m_Colors };
    SetKey(call, pSource, 1);
    const bool bMap = glb && area.IsLarge();
    if (bMap)
    {
        TRows colours = {
            (const unsigned char *)pPalette->m_Colors, 0, (unsigned char *)glb->m_ausPixelMap, 0, 256, 1
        };
        PickRows(ROW_COLOURS, false, true, call)(colours, call);
        call.pusMap = glb->m_ausPixelMap;
    }
    RunRows(area, bMap ? ROW_8TO16_MAP : ROW_8TO16, lTransparent, true, call);
    return 1;
}

xlong Convert8To24(const unsigned char *pSource, xlong lSourcePitch, xlong lSourceX, xlong lSourceY, xlong lWidth,
                   xlong lHeight, const CPalette *pPalette, const CRect *pSourceClip, xlong lTransparent,
                   unsigned char *pTarget, xlong lTargetPitch, xlong lTargetX, xlong lTargetY,
                   const TPixelFormat &fmtTarget, const CRect *pTargetClip)
{
    TArea area;
    if (!pPalette || !area.Clip(pSource, lSourcePitch, lSourceX, lSourceY, lWidth, lHeight, pSourceClip, 1, pTarget,
                                lTargetPitch, lTargetX, lTargetY, pTargetClip, 3))
        return 0;
    TRowCall call = { .target24 = TFormat24(fmtTarget), .pColours = pPalette->m_Colors };
    SetKey(call, pSource, 1);
    RunRows(area, ROW_8TO24, lTransparent, call.target24.IsComplete(), call);
    return 1;
}

xlong Convert16To16(const unsigned char *pSource, xlong lSourcePitch, xlong lSourceX, xlong lSourceY, xlong lWidth,
                    xlong lHeight, const TPixelFormat &fmtSource, const CRect *pSourceClip, xlong lTransparent,
                    unsigned char *pTarget, xlong lTargetPitch, xlong lTargetX, xlong lTargetY,
                    const TPixelFormat &fmtTarget, const CRect *pTargetClip)
{
    TArea area;
    if (!area.Clip(pSource, lSourcePitch, lSourceX, lSourceY, lWidth, lHeight, pSourceClip, 2, pTarget, lTargetPitch,
                   lTargetX, lTargetY, pTargetClip, 2))
        return 0;
    if (fmtSource == fmtTarget)
    {
        RunSame(area, ROW_SAME16, 2, lTransparent, pSource);
        return 1;
    }
    const TFormat16 from(fmtSource), to(fmtTarget);
    TRowCall call;
    call.aMoves[0] = MoveOf(from.red, to.red);
    call.aMoves[1] = MoveOf(from.green, to.green);
    call.aMoves[2] = MoveOf(from.blue, to.blue);
    SetKey(call, pSource, 2);
    RunRows(area, ROW_16TO16, lTransparent, true, call);
    return 1;
}

xlong Convert16To24(const unsigned char *pSource, xlong lSourcePitch, xlong lSourceX, xlong lSourceY, xlong lWidth,
                    xlong lHeight, const TPixelFormat &fmtSource, const CRect *pSourceClip, xlong lTransparent,
                    unsigned char *pTarget, xlong lTargetPitch, xlong lTargetX, xlong lTargetY,
                    const TPixelFormat &fmtTarget, const CRect *pTargetClip)
{
    TArea area;
    if (!area.Clip(pSource, lSourcePitch, lSourceX, lSourceY, lWidth, lHeight, pSourceClip, 2, pTarget, lTargetPitch,
                   lTargetX, lTargetY, pTargetClip, 3))
        return 0;
    TRowCall call = { .source16 = TFormat16(fmtSource), .target24 = TFormat24(fmtTarget) };
    SetKey(call, pSource, 2);
    RunRows(area, ROW_16TO24, lTransparent, call.target24.IsComplete(), call);
    return 1;
}

xlong Convert24To24(const unsigned char *pSource, xlong lSourcePitch, xlong lSourceX, xlong lSourceY, xlong lWidth,
                    xlong lHeight, const TPixelFormat &fmtSource, const CRect *pSourceClip, xlong lTransparent,
                    unsigned char *pTarget, xlong lTargetPitch, xlong lTargetX, xlong lTargetY,
                    const TPixelFormat &fmtTarget, const CRect *pTargetClip)
{
    TArea area;
    if (!area.Clip(pSource, lSourcePitch, lSourceX, lSourceY, lWidth, lHeight, pSourceClip, 3, pTarget, lTargetPitch,
                   lTargetX, lTargetY, pTargetClip, 3))
        return 0;
    if (fmtSource == fmtTarget)
    {
        RunSame(area, ROW_SAME24, 3, lTransparent, pSource);
        return 1;
    }
    TRowCall call = { .source24 = TFormat24(fmtSource), .target24 = TFormat24(fmtTarget) };
    SetKey(call, pSource, 3);
    RunRows(area, ROW_24TO24, lTransparent, call.target24.IsComplete(), call);
    return 1;
}

xlong Convert24To16(const unsigned char *pSource, xlong lSourcePitch, xlong lSourceX, xlong lSourceY, xlong lWidth,
                    xlong lHeight, const TPixelFormat &fmtSource, const CRect *pSourceClip, xlong lTransparent,
                    xlong lDither, unsigned char *pTarget, xlong lTargetPitch, xlong lTargetX, xlong lTargetY,
                    const TPixelFormat &fmtTarget, const CRect *pTargetClip)
{
    TArea area;
    if (!area.Clip(pSource, lSourcePitch, lSourceX, lSourceY, lWidth, lHeight, pSourceClip, 3, pTarget, lTargetPitch,
                   lTargetX, lTargetY, pTargetClip, 2))
        return 0;
    TRowCall call = { .target16 = TFormat16(fmtTarget), .source24 = TFormat24(fmtSource) };
    SetKey(call, pSource, 3);
    RunRows(area, lDither && lTransparent != 1 ? ROW_DITHER : ROW_24TO16, lTransparent, true, call);
    return 1;
}

xlong Convert24To8(const unsigned char *pSource, xlong lSourcePitch, xlong lSourceX, xlong lSourceY, xlong lWidth,
                   xlong lHeight, const TPixelFormat &fmtSource, const CRect *pSourceClip, xlong lTransparent,
                   unsigned char *pTarget, xlong lTargetPitch, xlong lTargetX, xlong lTargetY, const CPalette *pPalette,
                   const CRect *pTargetClip)
{
    TArea area;
    if (!pPalette || !area.Clip(pSource, lSourcePitch, lSourceX, lSourceY, lWidth, lHeight, pSourceClip, 3, pTarget,
                                lTargetPitch, lTargetX, lTargetY, pTargetClip, 1))
        return 0;
    CPaletteSearch search(*pPalette);
    const TFormat24 from(fmtSource);
    // No index equals 256.
    const xlong lKey =
        lTransparent == 1 ? search.Find(pSource[from.ucRed], pSource[from.ucGreen], pSource[from.ucBlue]) : 256;
    ForEachRow(area,
               [&, lKey](const unsigned char *pFrom, unsigned char *pTo)
               {
                   for (xlong x = 0; x < area.lWidth; ++x, pFrom += 3)
                   {
                       const unsigned char ucIndex =
                           search.Find(pFrom[from.ucRed], pFrom[from.ucGreen], pFrom[from.ucBlue]);
                       if (ucIndex != lKey)
                           pTo[x] = ucIndex;
                   }
               });
    return 1;
}

xlong Convert16To8(const unsigned char *pSource, xlong lSourcePitch, xlong lSourceX, xlong lSourceY, xlong lWidth,
                   xlong lHeight, const CRect *pSourceClip, xlong lTransparent, unsigned char *pTarget,
                   xlong lTargetPitch, xlong lTargetX, xlong lTargetY, const CPalette *pPalette,
                   const CRect *pTargetClip)
{
    TArea area;
    if (!pPalette || !area.Clip(pSource, lSourcePitch, lSourceX, lSourceY, lWidth, lHeight, pSourceClip, 2, pTarget,
                                lTargetPitch, lTargetX, lTargetY, pTargetClip, 1))
        return 0;
    const unsigned char *pCube = ColourCube(*pPalette);
    if (!pCube)
        return 0;
    if (lTransparent != 1)
    {
        ForEachRow(area,
                   [&](const unsigned char *pFrom, unsigned char *pTo)
                   {
                       for (xlong x = 0; x < area.lWidth; ++x)
                           pTo[x] = pCube[LoadWord(pFrom + 2 * (size_t)x) & (CUBE_SIZE - 1)];
                   });
        return 1;
    }
    // The step of four pixels leaves the row, and must not leave the block.
    const unsigned char *pEnd =
        pSource + (ptrdiff_t)pSourceClip->m_lBottom * lSourcePitch + ((ptrdiff_t)pSourceClip->m_lRight + 1) * 2;
    ForEachRow(area,
               [&](const unsigned char *pFrom, unsigned char *pTo)
               {
                   for (xlong x = 0; x < area.lWidth && pEnd - pFrom >= 2; ++x, pFrom += 4 * 2)
                   {
                       const unsigned char ucIndex = pCube[LoadWord(pFrom) & (CUBE_SIZE - 1)];
                       if (ucIndex)
                           pTo[x] = ucIndex;
                   }
               });
    return 1;
}

xlong KeepKeyNone()
{
    LoadDataTurn();
    return 1;
}

xlong KeepKey16(const unsigned char *pSource, xlong lSourcePitch, xlong lSourceX, xlong lSourceY, xlong lWidth,
                xlong lHeight, const TPixelFormat &fmtSource, const CRect *pSourceClip, unsigned char *pTarget,
                xlong lTargetPitch, xlong lTargetX, xlong lTargetY, const TPixelFormat &fmtTarget,
                const CRect *pTargetClip)
{
    TArea area;
    if (!area.Clip(pSource, lSourcePitch, lSourceX, lSourceY, lWidth, lHeight, pSourceClip, 3, pTarget, lTargetPitch,
                   lTargetX, lTargetY, pTargetClip, 2))
        return 0;
    const TFormat16 to(fmtTarget);
    TRGBA key;
    TFormat24(fmtSource).Get(pSource, key);
    TRowCall call;
    SetKey(call, pSource, 3);
    call.usKeyWord = to.Pack(key);
    const xulong ulBlue = (xulong)key.ucBlue >> (8 - to.blue.ucBits);
    call.usOtherWord = (unsigned short)(to.red.Pack(key.ucRed) | to.green.Pack(key.ucGreen) |
                                        (ulBlue < 4 ? ulBlue + 1 : ulBlue - 1) << to.blue.ucShift);
    RunRows(area, ROW_KEEP16, 0, true, call);
    return 1;
}

xlong KeepKey8(const unsigned char *pSource, xlong lSourcePitch, xlong lSourceX, xlong lSourceY, xlong lWidth,
               xlong lHeight, const TPixelFormat &fmtSource, const CRect *pSourceClip, unsigned char *pTarget,
               xlong lTargetPitch, xlong lTargetX, xlong lTargetY, const CPalette *pPalette, const CRect *pTargetClip)
{
    TArea area;
    if (!pPalette || !area.Clip(pSource, lSourcePitch, lSourceX, lSourceY, lWidth, lHeight, pSourceClip, 3, pTarget,
                                lTargetPitch, lTargetX, lTargetY, pTargetClip, 1))
        return 0;
    TRGBA key;
    TFormat24(fmtSource).Get(pSource, key);
    const unsigned char ucKey = (unsigned char)pPalette->FindMatch(&key);
    const unsigned char ucOther = (unsigned char)pPalette->FindSecondBest(&key);
    ForEachRow(area,
               [&](const unsigned char *pFrom, unsigned char *pTo)
               {
                   for (xlong x = 0; x < area.lWidth; ++x, pFrom += 3)
                   {
                       const bool bKey = pFrom[0] == pSource[0] && pFrom[1] == pSource[1] && pFrom[2] == pSource[2];
                       pTo[x] = bKey ? ucKey : pTo[x] == ucKey ? ucOther : pTo[x];
                   }
               });
    return 1;
}

void CopyArea(const TPixelBlock &target, const CBitmapBase &source, xlong lSourceX, xlong lSourceY, xlong lTargetX,
              xlong lTargetY, xlong lWidth, xlong lHeight, xlong lTransparent, xlong lDither)
{
    // A depth can be any number that a file holds.
    if (!target.pData || !source.m_pData || ((target.lDepth | source.m_lDepth) & ~0xff))
        return;
    const CRect *pSourceClip = &source.m_rcClip;
    const unsigned char *pFrom = source.m_pData;
    const xlong lFromPitch = source.m_lPitch;
    switch (target.lDepth << 8 | source.m_lDepth)
    {
    case 8 << 8 | 8:
        Convert8To8(pFrom, lFromPitch, lSourceX, lSourceY, lWidth, lHeight, pSourceClip, lTransparent, target.pData,
                    target.lPitch, lTargetX, lTargetY, target.pClip);
        break;
    case 16 << 8 | 8:
        Convert8To16(pFrom, lFromPitch, lSourceX, lSourceY, lWidth, lHeight, source.m_pPalette, pSourceClip,
                     lTransparent, target.pData, target.lPitch, lTargetX, lTargetY, target.format, target.pClip);
        break;
    case 24 << 8 | 8:
        Convert8To24(pFrom, lFromPitch, lSourceX, lSourceY, lWidth, lHeight, source.m_pPalette, pSourceClip,
                     lTransparent, target.pData, target.lPitch, lTargetX, lTargetY, target.format, target.pClip);
        break;
    case 16 << 8 | 16:
        Convert16To16(pFrom, lFromPitch, lSourceX, lSourceY, lWidth, lHeight, FormatOf(source), pSourceClip,
                      lTransparent, target.pData, target.lPitch, lTargetX, lTargetY, target.format, target.pClip);
        break;
    case 24 << 8 | 16:
        Convert16To24(pFrom, lFromPitch, lSourceX, lSourceY, lWidth, lHeight, FormatOf(source), pSourceClip,
                      lTransparent, target.pData, target.lPitch, lTargetX, lTargetY, target.format, target.pClip);
        break;
    case 16 << 8 | 24:
        Convert24To16(pFrom, lFromPitch, lSourceX, lSourceY, lWidth, lHeight, FormatOf(source), pSourceClip,
                      lTransparent, lDither, target.pData, target.lPitch, lTargetX, lTargetY, target.format,
                      target.pClip);
        break;
    case 24 << 8 | 24:
        Convert24To24(pFrom, lFromPitch, lSourceX, lSourceY, lWidth, lHeight, FormatOf(source), pSourceClip,
                      lTransparent, target.pData, target.lPitch, lTargetX, lTargetY, target.format, target.pClip);
        break;
    }
}
