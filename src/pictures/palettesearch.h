#pragma once

#include "tarvix/palette.h"
#include "tarvix/types.h"

// The search for the nearest palette entry, by squared distance, the lowest
// index first among equals. lFirst must be below lLast, both within 0 to 255.

/// Among lFirst to lLast - 1.
TARVIX_INTERNAL xlong FindNearest(const TRGBA *pColours, xlong lFirst, xlong lLast, const TRGBA &colour);
/// Among lFirst to lLast, without what FindNearest gives.
TARVIX_INTERNAL xlong FindSecondNearest(const TRGBA *pColours, xlong lFirst, xlong lLast, const TRGBA &colour);

/// FindMatch for many colours with one palette, which must not change meanwhile.
class TARVIX_INTERNAL CPaletteSearch
{
public:
    explicit CPaletteSearch(const CPalette &palette);

    /// As CPalette::FindMatch.
    unsigned char Find(xulong ulRed, xulong ulGreen, xulong ulBlue)
    {
        const xulong ulColour = ulRed << 16 | ulGreen << 8 | ulBlue;
        // Neighbouring pixels are often alike, and pictures have few colours.
        xulong &ulSlot = m_aulCache[(ulColour * 2654435761u) >> (32 - CACHE_BITS)];
        if (ulSlot >> 8 != ulColour || ulColour == NO_COLOUR)
            ulSlot = ulColour << 8 | Search(ulRed, ulGreen, ulBlue);
        return (unsigned char)ulSlot;
    }

private:
    enum
    {
        CACHE_BITS = 9,
        NO_COLOUR = 0xffffff // what an empty slot seems to hold
    };

    xulong Search(xulong ulRed, xulong ulGreen, xulong ulBlue) const;

    xlong m_lFirst;
    xlong m_lGroups; // of 8 entries, the last one filled up with entries that never win; 0 for an empty range
    bool m_bWide;    // the processor has 256-bit integers
    xulong m_aulCache[1 << CACHE_BITS];
    // Laid out for Search: red and green, blue and 0, each times 4, and 256
    // times the sum of squares plus the index.
    alignas(16) short m_asRedGreen[256 * 2];
    alignas(16) short m_asBlue[256 * 2];
    alignas(16) int m_anSquares[256];
};
