#pragma once

#include "tarvix/types.h"

class CFile;

/// Whether a picture file is scrambled. The mark's test also takes most of the
/// ends that pictures have for a mark; but a scrambled file never begins as a
/// plain one does.
/// @param usStart  how plain files begin, as a little-endian word
/// @param usMask   its bits that count
/// @return true with the file at its start
bool IsScrambled(CFile *pFile, unsigned short usStart, unsigned short usMask);
