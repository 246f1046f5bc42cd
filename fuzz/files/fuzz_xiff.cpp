// Any bytes as a chunk file, walked as the first of them say.
#include "fuzz/support.h"

#include "tarvix/xiff.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *pData, size_t ulSize)
{
    FuzzStart();
    static CFuzzFile s_File(".xif");
    CXIFF file;
    if (ulSize < 16)
        return 0;
    file.Open(s_File.Write(pData + 16, ulSize - 16), FILE_READ | (*pData & 1 ? FILE_BIG_ENDIAN : FILE_LITTLE_ENDIAN));
    for (size_t ul = 0; ul < 16; ++ul)
    {
        static const char *const s_pszNames[] = { "A", "", "XIFF", "Inner" };
        xlong lLen = 0;
        signed char cByte = 0;
        switch (pData[ul] >> 1 & 7)
        {
        case 0:
        case 1:
            file.EnterChunk();
            break;
        case 2:
            file.ExitChunk();
            break;
        case 3:
            file.NextChunk();
            break;
        case 4:
            file.FirstChunk();
            break;
        case 5:
            file.ReadByte(&cByte);
            break;
        default:
            if (file.FindChunk(s_pszNames[pData[ul] >> 4 & 3], &lLen, pData[ul] >> 6) && lLen > 0 && lLen < 100)
                file.Seek(lLen, FILE_SEEK_CUR);
        }
        if (file.m_lDepth < 0 || file.m_lDepth > XIFF_MAX_DEPTH)
            abort();
    }
    return 0;
}
