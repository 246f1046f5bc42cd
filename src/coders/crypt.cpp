#include "tarvix/crypt.h"

#include "tarvix/file.h"
#include "tarvix/memory.h"

#include <string.h>

namespace
{
const unsigned char s_ucKey = 0x3C;
const char s_szMark[] = "XICRYPTEDFILE";
const xulong s_ulMark = sizeof(s_szMark) - 1;
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
