#pragma once

#include "tarvix/types.h"

/// Base64 with the alphabet of RFC 4648 and "=" as the filler. Results are new
/// blocks that the caller frees by xFreeMem.
class TARVIX_API CBase64
{
public:
    /// @param pDest      receives the text, ended by a zero byte
    /// @param ulDestLen  receives its length
    /// @param bCRLF      ends lines of 76 characters, and the text, with CR LF; a text that
    ///                   ends in "=" ends in "!!" instead
    /// @return 1; 0 when there is no memory
    static int Encode(const unsigned char *pSource, xulong ulLen, unsigned char *&pDest, xulong &ulDestLen, int bCRLF);
    /// CR, LF, blanks and tabs are skipped, and a "=" ends the text.
    /// @param pDest      receives the bytes; null for an empty source and when there is no memory
    /// @param ulDestLen  receives the size of the block less the padding; the bytes of a text that
    ///                   ends short of that are followed by zeros
    /// @return 0; 1 when another character was met, and pDest is null then
    static int Decode(const unsigned char *pSource, xulong ulLen, unsigned char *&pDest, xulong &ulDestLen);

private:
    static void Encode24Bits(const unsigned char *pSource, unsigned char *pDest);
    static void EncodeLastBits(const unsigned char *pSource, xulong ulLen, unsigned char *pDest);
    static int IsBase64(unsigned char ucChar);
};

/// Lines of classic uuencode, without head and tail: up to 45 bytes each.
/// @param pDest  62 bytes for each line begun
/// @return length of the text; no zero byte follows
TARVIX_API xulong UUEncode(const char *pSource, char *pDest, xulong ulLen);
/// Reads lines up to an empty one, or up to ulLen.
/// @param pDest  63 bytes for each line
/// @return bytes written
TARVIX_API xulong UUDecode(const char *pSource, char *pDest, xulong ulLen);
/// @param ulDestLen  bytes that pDest holds
/// @return bytes of the whole result; those that do not fit are not stored
TARVIX_API xulong UUDecode(const char *pSource, char *pDest, xulong ulLen, xulong ulDestLen);
