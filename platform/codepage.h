// Text of the desktop, UTF-8, and of programs, Windows' western code page 1252.
#pragma once

#include "tarvix/types.h"

#include <stddef.h>
#include <stdint.h>

/// 0 for a character that the page lacks.
TARVIX_INTERNAL unsigned char ToCodePage1252(uint32_t ulChar);
TARVIX_INTERNAL uint32_t FromCodePage1252(unsigned char ucChar);

/// One character of UTF-8. A byte that belongs to none gives the lone surrogate
/// 0xDC00 + byte and, if asked for, a complaint.
/// @param ulLeft  bytes that are there, at least 1
/// @return how many of them the character has
TARVIX_INTERNAL size_t DecodeUtf8(const unsigned char *p, size_t ulLeft, uint32_t *pulChar, bool *pbInvalid);
/// @param pszChar  receives up to 4 bytes and no final zero
/// @return how many
TARVIX_INTERNAL size_t EncodeUtf8(uint32_t ulChar, char *pszChar);
