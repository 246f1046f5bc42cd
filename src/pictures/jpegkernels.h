#pragma once

#include "tarvix/types.h"

#include <stddef.h>

// What the JPEG reader does to samples. Each step is there once in plain form,
// which takes everything, and once in wide form with the same results.

enum
{
    JPEG_LARGE = 64,    ///< in place of the last coefficient: a product may need more than 16 bits
    JPEG_ROW_SLACK = 64 ///< bytes that the wide conversions may read behind a row
};

/// Places of coefficients in a block. Pairs of rows lie interleaved, as the
/// wide transforms multiply them: rows 0 and 4, 2 and 6, 1 and 3, 5 and 7. The
/// columns of each are 0, 2, 1, 5, 4, 6, 3, 7.
inline xlong JpegPlace(xlong lNatural)
{
    const unsigned char aucPair[8] = { 0, 4, 2, 5, 1, 6, 3, 7 };
    const unsigned char aucColumn[8] = { 0, 2, 1, 6, 4, 3, 5, 7 };
    const xlong lPair = aucPair[lNatural / 8];
    return lPair / 2 * 16 + aucColumn[lNatural % 8] * 2 + lPair % 2;
}

/// What the transform needs to know about a component.
struct TJpegQuant
{
    const xlong *m_pQuant; ///< in natural order
    short m_sPlaced[64];   ///< the same by places, for coefficients within the limits
    xlong m_lLimitDC;      ///< largest coefficient, either sign, whose product has 16 bits
    xlong m_lLimitAC;      ///< the same for all others
};

/// Fills pQuant for a table, which it goes on pointing at.
TARVIX_INTERNAL void JpegSetQuant(TJpegQuant *pQuant, const xlong *pTable);

/// Dequantises and transforms a block.
/// @param pOutput  8 rows of 8 samples
/// @param pLimit   the shared range limit table
TARVIX_INTERNAL void JpegIdctPlain(const short *pCoefs, const TJpegQuant &quant, unsigned char *pOutput,
                                   ptrdiff_t lPitch, const unsigned char *pLimit);
/// For coefficients within the limits.
/// @param lLast  place in the file's order of the last one that is not 0
TARVIX_INTERNAL void JpegIdctWide(const short *pCoefs, const TJpegQuant &quant, xlong lLast, unsigned char *pOutput,
                                  ptrdiff_t lPitch);

/// The chroma tables of the plain conversion.
struct TJpegColours
{
    const xlong *m_pCrToRed;
    const xlong *m_pCbToBlue;
    const xlong *m_pCrToGreen;
    const xlong *m_pCbToGreen;
    const unsigned char *m_pLimit;
};

/// A row of luma and chroma to pixels of 3 bytes, blue first.
TARVIX_INTERNAL void JpegColourPlain(const unsigned char *const *ppRows, const TJpegColours &colours,
                                     unsigned char *pOutput, xlong lWidth);
/// @param bHalf  one sample of chroma for two pixels
/// @return how many pixels were made, the others are left to the plain one
TARVIX_INTERNAL xlong JpegColourWide(const unsigned char *const *ppRows, bool bHalf, unsigned char *pOutput,
                                     xlong lWidth);
/// A row of one component to three equal bytes a pixel.
TARVIX_INTERNAL void JpegGrey(const unsigned char *pRow, unsigned char *pOutput, xlong lWidth);
/// Each sample lTimes times.
TARVIX_INTERNAL void JpegWiden(const unsigned char *pRow, unsigned char *pOutput, xlong lSamples, xlong lTimes);
