#pragma once

#include "tarvix/bitmap.h"
#include "tarvix/types.h"

#include <algorithm>
#include <string.h>

// Packing of colours, for all that writes pixels. Bits and shifts can come
// from a file or a host, so every combination is defined: a channel of more
// than 8 bits counts as 8, and one at a negative position or past the word is
// not there.

/// The six numbers of a direct-colour format.
struct TPixelFormat
{
    xlong lRedBits;
    xlong lGreenBits;
    xlong lBlueBits;
    xlong lRedShift;
    xlong lGreenShift;
    xlong lBlueShift;

    bool operator==(const TPixelFormat &other) const = default;
};

inline TPixelFormat FormatOf(const CBitmapBase &bitmap)
{
    return { bitmap.m_lRedBits,  bitmap.m_lGreenBits,  bitmap.m_lBlueBits,
             bitmap.m_lRedShift, bitmap.m_lGreenShift, bitmap.m_lBlueShift };
}

inline void SetFormat(CBitmapBase &bitmap, const TPixelFormat &fmt)
{
    bitmap.m_lRedBits = fmt.lRedBits;
    bitmap.m_lGreenBits = fmt.lGreenBits;
    bitmap.m_lBlueBits = fmt.lBlueBits;
    bitmap.m_lRedShift = fmt.lRedShift;
    bitmap.m_lGreenShift = fmt.lGreenShift;
    bitmap.m_lBlueShift = fmt.lBlueShift;
}

/// A 16-bit channel with bits from 0 to 8 and shift from 0 to 15.
struct TChannel16
{
    TChannel16() = default;
    TChannel16(xlong lBits, xlong lShift)
    {
        const bool bThere = lBits > 0 && lShift >= 0 && lShift < 16;
        ucBits = (unsigned char)(bThere ? std::min(lBits, (xlong)8) : 0);
        ucShift = (unsigned char)(bThere ? lShift : 0);
    }

    /// Byte to field, in place.
    xulong Pack(xulong ulByte) const { return ulByte >> (8 - ucBits) << ucShift & 0xffff; }
    /// Word to byte; the low bits are 0.
    xulong Unpack(xulong ulWord) const { return (ulWord >> ucShift & 0xff) << (8 - ucBits) & 0xff; }

    unsigned char ucBits;
    unsigned char ucShift;
};

struct TFormat16
{
    TFormat16() = default;
    explicit TFormat16(const TPixelFormat &fmt)
        : red(fmt.lRedBits, fmt.lRedShift), green(fmt.lGreenBits, fmt.lGreenShift), blue(fmt.lBlueBits, fmt.lBlueShift)
    {
    }

    unsigned short Pack(xulong ulRed, xulong ulGreen, xulong ulBlue) const
    {
        return (unsigned short)(red.Pack(ulRed) | green.Pack(ulGreen) | blue.Pack(ulBlue));
    }
    unsigned short Pack(const TRGBA &colour) const { return Pack(colour.ucRed, colour.ucGreen, colour.ucBlue); }
    void Unpack(xulong ulWord, TRGBA &colour) const
    {
        colour.ucRed = (unsigned char)red.Unpack(ulWord);
        colour.ucGreen = (unsigned char)green.Unpack(ulWord);
        colour.ucBlue = (unsigned char)blue.Unpack(ulWord);
    }

    TChannel16 red;
    TChannel16 green;
    TChannel16 blue;
};

/// Byte of a 24-bit pixel that a shift stands for. Shifts other than 0, 8 and 16 give the first byte.
inline xlong BytePos24(xlong lShift)
{
    return lShift == 0 ? 2 : lShift == 8 ? 1 : 0;
}

/// Byte of a pixel of lBytes bytes at which a channel lies, counted from the far end.
inline xlong BytePos(xlong lShift, xlong lBytes)
{
    return lShift >= 0 && lShift < 8 * lBytes ? lBytes - 1 - lShift / 8 : 0;
}

/// The byte positions of a 24-bit format.
struct TFormat24
{
    TFormat24() = default;
    explicit TFormat24(const TPixelFormat &fmt)
        : ucRed((unsigned char)BytePos24(fmt.lRedShift)), ucGreen((unsigned char)BytePos24(fmt.lGreenShift)),
          ucBlue((unsigned char)BytePos24(fmt.lBlueShift))
    {
    }

    /// Each channel has a byte of its own.
    bool IsComplete() const { return ucRed != ucGreen && ucRed != ucBlue && ucGreen != ucBlue; }
    /// Channels that share a byte: the last of red, green, blue wins.
    void Put(unsigned char *pPixel, xulong ulRed, xulong ulGreen, xulong ulBlue) const
    {
        pPixel[ucRed] = (unsigned char)ulRed;
        pPixel[ucGreen] = (unsigned char)ulGreen;
        pPixel[ucBlue] = (unsigned char)ulBlue;
    }
    void Put(unsigned char *pPixel, const TRGBA &colour) const
    {
        Put(pPixel, colour.ucRed, colour.ucGreen, colour.ucBlue);
    }
    void Get(const unsigned char *pPixel, TRGBA &colour) const
    {
        colour.ucRed = pPixel[ucRed];
        colour.ucGreen = pPixel[ucGreen];
        colour.ucBlue = pPixel[ucBlue];
    }

    unsigned char ucRed;
    unsigned char ucGreen;
    unsigned char ucBlue;
};

/// The three bytes that CBitmap::Fill and the screens' FillRect store for a
/// colour at 24 bits. Exact for blue first and red first alone.
inline void FillBytes24(const TPixelFormat &fmt, const TRGBA &colour, unsigned char aucBytes[3])
{
    const xlong alShifts[3] = { fmt.lRedShift, fmt.lGreenShift, fmt.lBlueShift };
    for (xlong i = 0; i < 3; ++i)
        aucBytes[i] = alShifts[i] == 16 ? colour.ucRed : alShifts[i] == 8 ? colour.ucGreen : colour.ucBlue;
}

// Rows begin at any address.
inline unsigned short LoadWord(const void *pFrom)
{
    unsigned short usValue;
    memcpy(&usValue, pFrom, sizeof usValue);
    return usValue;
}
inline void StoreWord(void *pTo, unsigned short usValue)
{
    memcpy(pTo, &usValue, sizeof usValue);
}
