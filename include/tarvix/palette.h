#pragma once

#include "tarvix/memory.h"
#include "tarvix/types.h"

/// A colour: four bytes in this order.
struct TARVIX_API TRGBA
{
    /// Leaves the bytes unset.
    TRGBA() {}
    TRGBA(unsigned char ucR, unsigned char ucG, unsigned char ucB, unsigned char ucA = 0)
        : ucRed(ucR), ucGreen(ucG), ucBlue(ucB), ucAlpha(ucA)
    {
    }
    TRGBA(const TRGBA &) = default;
    TRGBA &operator=(const TRGBA &) = default;

    void Set(unsigned char ucR, unsigned char ucG, unsigned char ucB, unsigned char ucA = 0)
    {
        ucRed = ucR;
        ucGreen = ucG;
        ucBlue = ucB;
        ucAlpha = ucA;
    }
    /// Alpha counts too.
    xlong operator==(const TRGBA &other) const
    {
        return ucRed == other.ucRed && ucGreen == other.ucGreen && ucBlue == other.ucBlue && ucAlpha == other.ucAlpha;
    }
    xlong operator!=(const TRGBA &other) const { return !(*this == other); }

    unsigned char ucRed;
    unsigned char ucGreen;
    unsigned char ucBlue;
    unsigned char ucAlpha;
};

/// 256 colours with a name, and the search for the nearest one. A copy would
/// share the name and free it twice: duplicate with Clone.
class TARVIX_API CPalette
{
public:
    TARVIX_HEAP_CLASS

    /// A ramp of greys named ".pal"; the alpha bytes stay unset.
    CPalette();
    CPalette(const CPalette &) = default;
    CPalette &operator=(const CPalette &) = default;
    virtual ~CPalette();

    /// Copies range, colours and name.
    /// @return 1; 0 for a null source, or with a text when the name's memory can't be had
    xlong Clone(const CPalette *pSource);
    /// Reads 256 colours from offset 24 of a RIFF palette. The palette takes
    /// the file's name.
    /// @return 1; 0 with a text; 0 for a file that ends early, with the
    ///         entries before its end and the name changed
    xlong Load(const char *pszFileName);
    /// Sets all entries.
    /// @param ppColours  256 pointers; the colours are copied with alpha
    /// @return 1
    xlong SetPalette(TRGBA **ppColours);
    /// Sets red, green and blue of an entry; its alpha is kept.
    /// @param lIndex  0 to 255; another is ignored
    /// @return 1
    xlong SetIndex(const TRGBA *pColour, xlong lIndex);
    /// Reads red, green and blue of an entry; alpha of pColour is left alone.
    /// @param lIndex  0 to 255; another gives black and the result 0
    xlong GetIndex(TRGBA *pColour, xlong lIndex) const;
    /// The nearest of the entries m_ucFirst up to, but without, m_ucLast: the
    /// least sum of squared differences of red, green and blue, and the lowest
    /// index among equals. The globals must exist.
    /// @return an index; m_ucFirst when the range is empty
    xlong FindMatch(const TRGBA *pColour) const;
    /// The nearest entry beside the one that FindMatch gives, m_ucLast included.
    xlong FindSecondBest(const TRGBA *pColour) const;

    unsigned char m_ucFirst; ///< of the range that searches look at; 0 after construction
    unsigned char m_ucLast;  ///< its end; 255 after construction
    TRGBA m_Colors[256];
    char *m_pszName; ///< owned, null only when memory ran out in the constructor
};

static_assert(sizeof(TRGBA) == 4 && alignof(TRGBA) == 1, "the colours lie right behind the two bytes");
