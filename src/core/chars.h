// Kinds of characters, and the integers that texts are read for.
#pragma once

#include "tarvix/types.h"

inline bool IsBlank(char c)
{
    return c == ' ' || c == '\t';
}

inline bool IsDigit(char c)
{
    return c >= '0' && c <= '9';
}

/// Of folders in a path, on either system.
inline bool IsSeparator(char c)
{
    return c == '/' || c == '\\';
}

/// Reads a sign and digits, as scanf's %ld and %lu do without their white space:
/// one loop does for both, since both wrap on 32 bits.
/// @param psz  goes behind the number
/// @return false, with the value as it was, when no digit is there
inline bool ScanInteger(const char *&psz, xulong *pulValue)
{
    const bool bMinus = *psz == '-';
    if (*psz == '-' || *psz == '+')
        ++psz;
    if (!IsDigit(*psz))
        return false;
    xulong ulValue = 0;
    for (; IsDigit(*psz); ++psz)
        ulValue = ulValue * 10 + (xulong)(*psz - '0');
    *pulValue = bMinus ? 0 - ulValue : ulValue;
    return true;
}
