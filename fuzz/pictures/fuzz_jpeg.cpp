// Any bytes as a JPEG file.
#include "fuzz/support.h"

#include "tarvix/bitmap.h"
#include "tarvix/jpeg.h"

namespace
{
// Large pictures would make the fuzzer slow, and are the same otherwise.
bool IsLarge(CJPGPic &type, const char *pszPath)
{
    CFile file;
    if (!file.Open(pszPath, FILE_READ))
        abort();
    type.m_pFile = &file;
    type.m_bCrypt = 0;
    unsigned short usStart;
    const bool bRead = type.ReadWord(&usStart) && type.InitJpeg() && type.ReadJFIFHeader() &&
                       type.ReadMarkers() == 0xc0 && type.ReadFrameHeader() && type.ReadMarkers() == 0xda;
    const bool bLarge = bRead && type.m_uWidth * type.m_uHeight > 0x100000;
    type.Free();
    return bLarge;
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *pData, size_t ulSize)
{
    FuzzStart();
    static CJPGPic s_Type;
    static CFuzzFile s_File(".jpg");
    const char *pszPath = s_File.Write(pData, ulSize);
    if (IsLarge(s_Type, pszPath))
        return 0;
    CBitmap bitmap;
    if (bitmap.Load(pszPath, 0))
        bitmap.ConvertRGB(-1, -1, 16, 5, 6, 5, 11, 5, 0, 0);
    return 0;
}
