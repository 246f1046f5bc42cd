// Any bytes as a BMP file; what it reads is then drawn and converted.
#include "fuzz/support.h"

#include "tarvix/bitmap.h"
#include "tarvix/pictype.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *pData, size_t ulSize)
{
    FuzzStart();
    static CBMPPic s_Type;
    static CFuzzFile s_File(".bmp");
    CBitmap bitmap;
    const xlong lLoaded = bitmap.Load(s_File.Write(pData, ulSize), 0);
    // Large pictures would make the fuzzer slow, and are the same otherwise.
    if ((int64_t)bitmap.m_lPitch * bitmap.m_lHeight > 0x100000)
        return 0;
    CBitmap target;
    const xlong alBits[] = { 16, 24 };
    for (xlong lBits : alBits)
    {
        if (!target.CreateRGB(40, 30, lBits, 5, 6, 5, lBits == 16 ? 11 : 0, lBits == 16 ? 5 : 8, lBits == 16 ? 0 : 16,
                              0))
            abort();
        target.Blt(&bitmap, 0, 0, 0, 0, -1, -1, 0, 1, 0);
        target.Blt(&bitmap, 1, 1, -2, 3, 50, 50, 1, 0, 0);
    }
    if (lLoaded)
    {
        bitmap.ConvertRGB(-1, -1, 16, 5, 6, 5, 11, 5, 0, 0);
        bitmap.ConvertRGB(-1, -1, 24, 8, 8, 8, 16, 8, 0, 0);
    }
    return 0;
}
