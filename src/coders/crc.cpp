#include "tarvix/crc.h"

#include "tarvix/file.h"
#include "tarvix/globals.h"

namespace
{
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
