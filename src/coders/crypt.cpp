#include "tarvix/file.h"
#include "tarvix/globals.h"
#include "tarvix/memory.h"
#include "tarvix/system.h"

namespace
{
const unsigned char s_ucKey = 0x3C;
const char s_szMark[] = "XICRYPTEDFILE";
const xulong s_ulMark = sizeof(s_szMark) - 1;

void BuildTable(TCrcTable &table, xulong ulPoly)
{
    for (xulong i = 0; i < 256; ++i)
    {
        xulong ulEntry = i << 24;
        for (int nBit = 0; nBit < 8; ++nBit)
            ulEntry = ulEntry & 0x80000000 ? ulEntry << 1 ^ ulPoly : ulEntry << 1;
        table.ulEntries[i] = ulEntry;
    }
    table.ulPoly = ulPoly;
}
} // namespace

void xDecrypt(void *pData, xulong ulSize)
{
    for (unsigned char *p = (unsigned char *)pData; ulSize; --ulSize)
        *p++ ^= s_ucKey;
}

xlong xIsCrypt(const void *pData, xulong ulSize)
{
    if (!pData || ulSize < s_ulMark)
        return 0;
    char szTail[s_ulMark];
    memcpy(szTail, (const char *)pData + ulSize - s_ulMark, s_ulMark);
    xDecrypt(szTail, s_ulMark);
    // What sorts behind the mark counts too.
    return xMemcmp(s_szMark, szTail, s_ulMark) <= 0;
}

xlong xIsFileCrypt(CFile *pFile)
{
    char szTail[s_ulMark];
    if (!pFile->Seek(-(xlong)s_ulMark, FILE_SEEK_END) || !pFile->Read(szTail, s_ulMark) ||
        !pFile->Seek(0, FILE_SEEK_START))
        return 0;
    return xIsCrypt(szTail, s_ulMark);
}

xlong xCalcCrc(const signed char *pData, xulong ulSize, xulong *pulCrc, xulong ulPoly)
{
    TCrcTable &table = glb->m_CrcBuffer;
    if (table.ulPoly == ulPoly)
        BuildTable(table, ulPoly);
    xulong ulCrc = ulSize ? 0xffffffff : 0;
    for (xulong i = 0; i < ulSize; ++i)
    {
        // The index takes a signed byte, whose upper bits fall away with the
        // CRC's own.
        const xulong ulIndex = (ulCrc >> 24 ^ (xulong)(xlong)pData[i]) & 0xff;
        ulCrc = ulCrc << 8 ^ table.ulEntries[ulIndex];
    }
    *pulCrc = ulSize ? ~ulCrc : 0;
    return 1;
}

xlong xCalcFileCrc(const char *pszPath, xulong *pulCrc, xulong ulPoly)
{
    TCrcTable &table = glb->m_CrcFile;
    CFile file;
    if (!file.Open(pszPath, FILE_READ))
        return 0;
    if (table.ulPoly != ulPoly || !ulPoly)
        BuildTable(table, ulPoly);
    xulong ulCrc = 0xffffffff;
    signed char cByte;
    while (file.ReadByte(&cByte))
        ulCrc = ulCrc << 8 ^ table.ulEntries[ulCrc >> 24 ^ (unsigned char)cByte];
    *pulCrc = ~ulCrc;
    glb->m_Error.Clear();
    return 1;
}
