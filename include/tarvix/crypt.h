#pragma once

#include "tarvix/types.h"

class CFile;

// Scrambled files: no secret, only nothing that an editor shows.

/// Scrambles or unscrambles in place: each byte is combined with 0x3C.
TARVIX_API void xDecrypt(void *pData, xulong ulSize);
/// Tests the end of a buffer for the mark of a scrambled file.
TARVIX_API xlong xIsCrypt(const void *pData, xulong ulSize);
/// Tests an open file and leaves it at its start.
TARVIX_API xlong xIsFileCrypt(CFile *pFile);
