#pragma once

#include "tarvix/types.h"

/// 32-bit CRC, top bit first, from all ones, inverted at the end. Bytes are
/// signed, and the table is built only when the stored polynomial equals
/// ulPoly already: for a defined CRC use xCalcFileCrc.
TARVIX_API xlong xCalcCrc(const signed char *pData, xulong ulSize, xulong *pulCrc, xulong ulPoly);
/// The same over a file's unsigned bytes with a table that is always built. The last error is cleared.
TARVIX_API xlong xCalcFileCrc(const char *pszPath, xulong *pulCrc, xulong ulPoly);
