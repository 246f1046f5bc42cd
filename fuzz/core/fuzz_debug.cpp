// Any bytes as a file of debug options.
#include "fuzz/support.h"

#include "tarvix/error.h"

namespace
{
size_t s_ulChars;

void TakeOption(char *pszKey, char *pszValue)
{
    for (const char *psz : { pszKey, pszValue })
        while (psz && *psz++)
            ++s_ulChars;
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *pData, size_t ulSize)
{
    FuzzStart();
    static CFuzzFile s_File(".txt");
    xGetDebugOptions(s_File.Write(pData, ulSize), TakeOption);
    return 0;
}
