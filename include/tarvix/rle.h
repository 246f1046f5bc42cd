#pragma once

#include "tarvix/types.h"

/// Run-length coder for values of a chosen width in bits. A single is a 0 and
/// the value; a run of 2 to 16 equal values is a 1, the number less one in 4
/// bits, and the value. The first bit is the highest of a byte and of a field.
class TARVIX_API CRle
{
public:
    CRle();

    /// Sets the width of a value to the sum; as a fixed-point number it has so many bits each.
    /// A sum of 32 or more reports a text and is kept all the same.
    void Init(xlong lIntBits, xlong lFracBits);
    /// @param pSource  lCount values without gaps
    /// @param pDest    room for lCount values of one bit more than the width, or
    ///                 of 4 bits where that is more: short values in pairs grow most
    /// @return bytes written
    xlong Pack(const unsigned char *pSource, unsigned char *pDest, xlong lCount);
    /// Ends with the token that takes up the last byte: tokens that follow in it are not read.
    /// @param lSize  packed bytes; a token that is cut off there is left out
    /// @return bytes written
    xlong Unpack(const unsigned char *pSource, unsigned char *pDest, xlong lSize);
    /// @param lDestSize  bytes that pDest holds
    /// @return bytes written; 0 when they do not fit
    xlong Unpack(const unsigned char *pSource, unsigned char *pDest, xlong lSize, xlong lDestSize);
    /// Packs numbers, cut to the fixed-point width.
    /// @return bytes written; 0 without memory
    xlong PackDoubles(const double *pSource, char *pDest, xlong lCount);
    /// Numbers come back as unsigned ones. Without fraction bits nothing is stored.
    /// @param lSize  packed bytes
    /// @return 1 when lCount numbers came out, otherwise 0
    xlong UnpackDoubles(double *pDest, const char *pSource, xlong lSize, xlong lCount);

    xlong m_lFracBits;
    xlong m_lIntBits;
    xlong m_lTotalBits;

private:
    xlong FieldBytes(xlong lCount);
};
