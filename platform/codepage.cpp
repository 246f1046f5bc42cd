#include "platform/codepage.h"

namespace
{
const unsigned short s_ausHighChars[32] = {
    0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0x008D, 0x017D, 0x008F, 0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178,
};
} // namespace

unsigned char ToCodePage1252(uint32_t ulChar)
{
    if (ulChar < 0x80 || (ulChar >= 0xA0 && ulChar <= 0xFF))
        return (unsigned char)ulChar;
    for (int i = 0; i < 32; ++i)
        if (s_ausHighChars[i] == ulChar)
            return (unsigned char)(0x80 + i);
    return 0;
}

uint32_t FromCodePage1252(unsigned char ucChar)
{
    return ucChar >= 0x80 && ucChar < 0xA0 ? s_ausHighChars[ucChar - 0x80] : ucChar;
}

size_t DecodeUtf8(const unsigned char *p, size_t ulLeft, uint32_t *pulChar, bool *pbInvalid)
{
    static const uint32_t s_aulFirst[5] = { 0, 0, 0x80, 0x800, 0x10000 };
    const size_t ulLength = p[0] < 0x80 ? 1 : p[0] < 0xC0 ? 0 : p[0] < 0xE0 ? 2 : p[0] < 0xF0 ? 3 : p[0] < 0xF8 ? 4 : 0;
    if (ulLength == 1)
    {
        *pulChar = p[0];
        return 1;
    }
    bool bValid = ulLength != 0 && ulLength <= ulLeft;
    uint32_t ul = bValid ? p[0] & (0x7Fu >> ulLength) : 0;
    for (size_t i = 1; bValid && i < ulLength; ++i)
    {
        bValid = (p[i] & 0xC0) == 0x80;
        ul = ul << 6 | (p[i] & 0x3F);
    }
    if (bValid && ul >= s_aulFirst[ulLength] && ul <= 0x10FFFF && (ul < 0xD800 || ul > 0xDFFF))
    {
        *pulChar = ul;
        return ulLength;
    }
    *pulChar = 0xDC00u + p[0];
    *pbInvalid = true;
    return 1;
}

size_t EncodeUtf8(uint32_t ulChar, char *pszChar)
{
    if (ulChar < 0x80)
    {
        pszChar[0] = (char)ulChar;
        return 1;
    }
    if (ulChar < 0x800)
    {
        pszChar[0] = (char)(0xC0 | ulChar >> 6);
        pszChar[1] = (char)(0x80 | (ulChar & 0x3F));
        return 2;
    }
    size_t ulLength = 0;
    if (ulChar < 0x10000)
        pszChar[ulLength++] = (char)(0xE0 | ulChar >> 12);
    else
    {
        pszChar[ulLength++] = (char)(0xF0 | ulChar >> 18);
        pszChar[ulLength++] = (char)(0x80 | (ulChar >> 12 & 0x3F));
    }
    pszChar[ulLength++] = (char)(0x80 | (ulChar >> 6 & 0x3F));
    pszChar[ulLength++] = (char)(0x80 | (ulChar & 0x3F));
    return ulLength;
}
