// Any bytes as a palette file.
#include "fuzz/support.h"

#include "tarvix/palette.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *pData, size_t ulSize)
{
    FuzzStart();
    static CFuzzFile s_File(".pal");
    CPalette palette, clone;
    palette.Load(s_File.Write(pData, ulSize));
    const TRGBA colour(ulSize ? pData[0] : 0, 100, 200);
    if (!clone.Clone(&palette) || clone.FindMatch(&colour) != palette.FindMatch(&colour) ||
        clone.FindSecondBest(&colour) == clone.FindMatch(&colour))
        abort();
    return 0;
}
