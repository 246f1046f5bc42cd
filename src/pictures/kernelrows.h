#pragma once

#include "pictures/pixelformat.h"
#include "tarvix/types.h"

#include <stddef.h>

/// Where the bits of a channel go: (value & mask) << left >> right. One of the shifts is 0.
struct TMove
{
    unsigned short usMask;
    unsigned char ucLeft;
    unsigned char ucRight;
};

/// What a row function needs to know about a call. Only what its kind uses is set.
struct TRowCall
{
    TFormat16 source16;
    TFormat16 target16;
    TFormat24 source24;
    TFormat24 target24;
    TMove aMoves[3];              ///< red, green, blue, from 16 bits to 16
    const TRGBA *pColours;        ///< of an indexed source
    const unsigned short *pusMap; ///< index to word
    unsigned char aucKey[4];      ///< bytes of the key pixel in the source's format
    unsigned short usKeyWord;     ///< of the key pass: what the key became
    unsigned short usOtherWord;   ///< of the key pass: what others get that became the same
};

/// Rows of pixels in both blocks.
struct TRows
{
    const unsigned char *pSource;
    ptrdiff_t lSourcePitch;
    unsigned char *pTarget;
    ptrdiff_t lTargetPitch;
    xlong lWidth;
    xlong lHeight;
};

/// Copies rows. Called for some rows at a time, so that what it prepares counts little.
typedef void (*TRowFunction)(const TRows &area, const TRowCall &call);

/// Pairs of formats that have row functions of their own.
enum TRowKind
{
    ROW_BYTES, ///< the width counts bytes; never transparent
    ROW_SAME8, ///< transparent alone, as the other two
    ROW_SAME16,
    ROW_SAME24,
    ROW_8TO16,
    ROW_8TO16_MAP,
    ROW_COLOURS, ///< colours to words, never transparent
    ROW_8TO24,
    ROW_16TO16,
    ROW_16TO24,
    ROW_24TO24,
    ROW_24TO16,
    ROW_DITHER, ///< never transparent
    ROW_KEEP16, ///< key pass, never transparent
    ROW_KINDS
};

/// Row function that goes pixel by pixel, for every format.
TRowFunction PlainRow(TRowKind kind, bool bTransparent);
/// Row function for this processor, for a call whose 24-bit target is complete;
/// null where there is none.
TRowFunction FastRow(TRowKind kind, bool bTransparent, const TRowCall &call);
