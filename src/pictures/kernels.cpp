#include "pictures/kernels.h"

#include "core/invariant.h"
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

[[maybe_unused]] bool Holds(const CRect &rc, int64_t llX, int64_t llY, int64_t llWidth, int64_t llHeight)
{
    return llWidth > 0 && llHeight > 0 && llX >= rc.m_lLeft && llY >= rc.m_lTop && llX + llWidth - 1 <= rc.m_lRight &&
           llY + llHeight - 1 <= rc.m_lBottom;
}

// Both axes. Inline, since a sprite's row costs no more than a call.
__attribute__((always_inline)) inline bool ClipSpans(TSpan &x, TSpan &y, const CRect &rcSource, const CRect &rcTarget)
{
    if (!x.Clip(rcSource.m_lLeft, rcSource.m_lRight, rcTarget.m_lLeft, rcTarget.m_lRight) ||
        !y.Clip(rcSource.m_lTop, rcSource.m_lBottom, rcTarget.m_lTop, rcTarget.m_lBottom))
        return false;
    TARVIX_INVARIANT(Holds(rcSource, x.llSource, y.llSource, x.llCount, y.llCount));
    TARVIX_INVARIANT(Holds(rcTarget, x.llTarget, y.llTarget, x.llCount, y.llCount));
    return true;
}

// The rows of both blocks after clipping.
struct TArea : TRows
{
    // @return whether anything is left
    template <int FROM, int TO>
    bool Clip(const TPixelBlock &source, const TPixelBlock &target, const TCopy &copy)
    {
        TSpan x = { copy.lSourceX, copy.lTargetX, copy.lWidth }, y = { copy.lSourceY, copy.lTargetY, copy.lHeight };
        if (!ClipSpans(x, y, *source.pClip, *target.pClip))
            return false;
        lWidth = (xlong)x.llCount;
        lHeight = (xlong)y.llCount;
        lSourcePitch = source.lPitch;
        lTargetPitch = target.lPitch;
        TARVIX_INVARIANT(source.lDepth == FROM * 8 && target.lDepth == TO * 8);
        pSource = At<FROM>(source, x.llSource, y.llSource);
        pTarget = At<TO>(target, x.llTarget, y.llTarget);
        return true;
    }

    template <int BYTES>
    static unsigned char *At(const TPixelBlock &block, int64_t llX, int64_t llY)
    {
        return block.pData + (ptrdiff_t)llY * block.lPitch + (ptrdiff_t)llX * BYTES;
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
    TARVIX_INVARIANT(area.lWidth > 0 && area.lHeight > 0);
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

void SetKey(TRowCall &call, const TPixelBlock &source, xlong lBytes)
{
    memcpy(call.aucKey, source.pData, (size_t)lBytes);
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
    TRowCall call; // of which this kind uses nothing
    call.pusMap = nullptr;
    RunRows(area, ROW_BYTES, 0, bShort, call);
}

void RunSame(TArea &area, TRowKind kind, xlong lBytes, xlong lTransparent, const TPixelBlock &source)
{
    if (lTransparent != 1)
    {
        CopyRows(area, lBytes);
        return;
    }
    TRowCall call;
    SetKey(call, source, lBytes);
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
} // namespace

xlong ClipAreas(xlong *plSourceX, xlong *plSourceY, xlong *plWidth, xlong *plHeight, const CRect *pSourceClip,
                xlong *plTargetX, xlong *plTargetY, const CRect *pTargetClip)
{
    TSpan x = { *plSourceX, *plTargetX, *plWidth }, y = { *plSourceY, *plTargetY, *plHeight };
    if (!ClipSpans(x, y, *pSourceClip, *pTargetClip))
        return 0;
    *plSourceX = (xlong)x.llSource;
    *plTargetX = (xlong)x.llTarget;
    *plWidth = (xlong)x.llCount;
    *plSourceY = (xlong)y.llSource;
    *plTargetY = (xlong)y.llTarget;
    *plHeight = (xlong)y.llCount;
    return 1;
}

xlong Convert8To8(const TPixelBlock &source, const TPixelBlock &target, const TCopy &copy)
{
    TArea area;
    if (!area.Clip<1, 1>(source, target, copy))
        return 0;
    RunSame(area, ROW_SAME8, 1, copy.lTransparent, source);
    return 1;
}

xlong Convert8To16(const TPixelBlock &source, const TPixelBlock &target, const TCopy &copy)
{
    TArea area;
    if (!source.pPalette || !area.Clip<1, 2>(source, target, copy))
        return 0;
    TRowCall call = { .target16 = TFormat16(target.format), .pColours = source.pPalette->m_Colors };
    SetKey(call, source, 1);
    const bool bMap = glb && area.IsLarge();
    if (bMap)
    {
        TRows colours = { (const unsigned char *)call.pColours, 0, (unsigned char *)glb->m_ausPixelMap, 0, 256, 1 };
        PickRows(ROW_COLOURS, false, true, call)(colours, call);
        call.pusMap = glb->m_ausPixelMap;
    }
    RunRows(area, bMap ? ROW_8TO16_MAP : ROW_8TO16, copy.lTransparent, true, call);
    return 1;
}

xlong Convert8To24(const TPixelBlock &source, const TPixelBlock &target, const TCopy &copy)
{
    TArea area;
    if (!source.pPalette || !area.Clip<1, 3>(source, target, copy))
        return 0;
    TRowCall call = { .target24 = TFormat24(target.format), .pColours = source.pPalette->m_Colors };
    SetKey(call, source, 1);
    RunRows(area, ROW_8TO24, copy.lTransparent, call.target24.IsComplete(), call);
    return 1;
}

xlong Convert16To16(const TPixelBlock &source, const TPixelBlock &target, const TCopy &copy)
{
    TArea area;
    if (!area.Clip<2, 2>(source, target, copy))
        return 0;
    if (source.format == target.format)
    {
        RunSame(area, ROW_SAME16, 2, copy.lTransparent, source);
        return 1;
    }
    const TFormat16 from(source.format), to(target.format);
    TRowCall call;
    call.aMoves[0] = MoveOf(from.red, to.red);
    call.aMoves[1] = MoveOf(from.green, to.green);
    call.aMoves[2] = MoveOf(from.blue, to.blue);
    SetKey(call, source, 2);
    RunRows(area, ROW_16TO16, copy.lTransparent, true, call);
    return 1;
}

xlong Convert16To24(const TPixelBlock &source, const TPixelBlock &target, const TCopy &copy)
{
    TArea area;
    if (!area.Clip<2, 3>(source, target, copy))
        return 0;
    TRowCall call = { .source16 = TFormat16(source.format), .target24 = TFormat24(target.format) };
    SetKey(call, source, 2);
    RunRows(area, ROW_16TO24, copy.lTransparent, call.target24.IsComplete(), call);
    return 1;
}

xlong Convert24To24(const TPixelBlock &source, const TPixelBlock &target, const TCopy &copy)
{
    TArea area;
    if (!area.Clip<3, 3>(source, target, copy))
        return 0;
    if (source.format == target.format)
    {
        RunSame(area, ROW_SAME24, 3, copy.lTransparent, source);
        return 1;
    }
    TRowCall call = { .source24 = TFormat24(source.format), .target24 = TFormat24(target.format) };
    SetKey(call, source, 3);
    RunRows(area, ROW_24TO24, copy.lTransparent, call.target24.IsComplete(), call);
    return 1;
}

xlong Convert24To16(const TPixelBlock &source, const TPixelBlock &target, const TCopy &copy)
{
    TArea area;
    if (!area.Clip<3, 2>(source, target, copy))
        return 0;
    TRowCall call = { .target16 = TFormat16(target.format), .source24 = TFormat24(source.format) };
    SetKey(call, source, 3);
    RunRows(area, copy.lDither && copy.lTransparent != 1 ? ROW_DITHER : ROW_24TO16, copy.lTransparent, true, call);
    return 1;
}

xlong Convert24To8(const TPixelBlock &source, const TPixelBlock &target, const TCopy &copy)
{
    TArea area;
    if (!target.pPalette || !area.Clip<3, 1>(source, target, copy))
        return 0;
    CPaletteSearch search(*target.pPalette);
    const TFormat24 from(source.format);
    const auto Find = [&](const unsigned char *p)
    { return search.Find(p[from.ucRed], p[from.ucGreen], p[from.ucBlue]); };
    // No index equals 256.
    const xlong lKey = copy.lTransparent == 1 ? Find(source.pData) : 256;
    ForEachRow(area,
               [&, lKey](const unsigned char *pFrom, unsigned char *pTo)
               {
                   for (xlong x = 0; x < area.lWidth; ++x, pFrom += 3)
                   {
                       const unsigned char ucIndex = Find(pFrom);
                       if (ucIndex != lKey)
                           pTo[x] = ucIndex;
                   }
               });
    return 1;
}

xlong Convert16To8(const TPixelBlock &source, const TPixelBlock &target, const TCopy &copy)
{
    TArea area;
    if (!target.pPalette || !area.Clip<2, 1>(source, target, copy))
        return 0;
    const unsigned char *pCube = ColourCube(*target.pPalette);
    if (!pCube)
        return 0;
    if (copy.lTransparent != 1)
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
    const xlong lLastRow = source.lPitch < 0 ? source.pClip->m_lTop : source.pClip->m_lBottom;
    const unsigned char *pEnd = TArea::At<2>(source, source.pClip->m_lRight + 1, lLastRow);
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

xlong KeepKeyNone(const TPixelBlock &source, const TPixelBlock &target, const TCopy &copy)
{
    LoadDataTurn();
    return 1;
}

xlong KeepKey16(const TPixelBlock &source, const TPixelBlock &target, const TCopy &copy)
{
    TArea area;
    if (!area.Clip<3, 2>(source, target, copy))
        return 0;
    const TFormat16 to(target.format);
    TRGBA key;
    TFormat24(source.format).Get(source.pData, key);
    TRowCall call;
    SetKey(call, source, 3);
    call.usKeyWord = to.Pack(key);
    const xulong ulBlue = (xulong)key.ucBlue >> (8 - to.blue.ucBits);
    call.usOtherWord = (unsigned short)(to.red.Pack(key.ucRed) | to.green.Pack(key.ucGreen) |
                                        (ulBlue < 4 ? ulBlue + 1 : ulBlue - 1) << to.blue.ucShift);
    RunRows(area, ROW_KEEP16, 0, true, call);
    return 1;
}

xlong KeepKey8(const TPixelBlock &source, const TPixelBlock &target, const TCopy &copy)
{
    TArea area;
    if (!target.pPalette || !area.Clip<3, 1>(source, target, copy))
        return 0;
    TRGBA key;
    TFormat24(source.format).Get(source.pData, key);
    const unsigned char *pKey = source.pData;
    const unsigned char ucKey = (unsigned char)target.pPalette->FindMatch(&key);
    const unsigned char ucOther = (unsigned char)target.pPalette->FindSecondBest(&key);
    ForEachRow(area,
               [&](const unsigned char *pFrom, unsigned char *pTo)
               {
                   for (xlong x = 0; x < area.lWidth; ++x, pFrom += 3)
                   {
                       const bool bKey = pFrom[0] == pKey[0] && pFrom[1] == pKey[1] && pFrom[2] == pKey[2];
                       pTo[x] = bKey ? ucKey : pTo[x] == ucKey ? ucOther : pTo[x];
                   }
               });
    return 1;
}

namespace
{
// By the bytes of a pixel, from and to.
const TKernelPair s_aPairs[4][4] = {
    {},
    { {},
      { Convert8To8, KeepKeyNone, true },
      { Convert8To16, KeepKeyNone, true },
      { Convert8To24, KeepKeyNone, true } },
    { {},
      { Convert16To8, KeepKeyNone, false },
      { Convert16To16, KeepKeyNone, true },
      { Convert16To24, KeepKeyNone, true } },
    { {}, { Convert24To8, KeepKey8, false }, { Convert24To16, KeepKey16, true }, { Convert24To24, KeepKeyNone, true } },
};

// A depth can be any number that a file holds.
inline const TKernelPair &PairOf(xlong lFrom, xlong lTo)
{
    return (lFrom | lTo) & ~24 ? s_aPairs[0][0] : s_aPairs[(xulong)lFrom >> 3][(xulong)lTo >> 3];
}
} // namespace

const TKernelPair *FindKernels(xlong lFrom, xlong lTo)
{
    const TKernelPair &pair = PairOf(lFrom, lTo);
    return pair.pfnConvert ? &pair : nullptr;
}

void CopyArea(const TPixelBlock &source, const TPixelBlock &target, const TCopy &copy)
{
    const TKernelPair &pair = PairOf(source.lDepth, target.lDepth);
    if (pair.bCopies && source.pData && target.pData)
        pair.pfnConvert(source, target, copy);
}
