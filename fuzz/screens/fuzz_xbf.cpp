// Any bytes as a font file; what it reads is then measured, coloured and drawn.
#include "fuzz/support.h"

#include "tarvix/bitmap.h"
#include "tarvix/font.h"
#include "tarvix/pictype.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *pData, size_t ulSize)
{
    FuzzStart();
    static CBMPPic s_Type;
    static CFuzzFile s_File(".xbf");
    static const char s_szText[] = "Two words\nand \x01\x02 codes\tAAA \x80\xfe\xff.";
    CFont font;
    const xlong lLoaded = font.Load(s_File.Write(pData, ulSize), 0);
    // Large pictures would make the fuzzer slow, and are the same otherwise.
    if (font.m_pFontBitmap && (int64_t)font.m_pFontBitmap->m_lPitch * font.m_pFontBitmap->m_lHeight > 0x100000)
        return 0;
    if (!lLoaded)
        return 0;
    const TRGBA Color(255, 128, 0);
    font.CreateColor(Color);
    CBitmap target;
    if (!target.CreateRGB(60, 40, 24, 8, 8, 8, 16, 8, 0, 0))
        abort();
    for (xlong lFlags : { 0, (int)FONT_SINGLELINE, FONT_CENTERH | FONT_CENTERV, (int)FONT_NOTRAILING })
        for (short sWidth : { -1, 20 })
        {
            TTextInfo info;
            font.GetTextSize(s_szText, sWidth, 30, lFlags);
            font.GetLineIndex(s_szText, sWidth, 30, 2, &info, lFlags);
            font.Text(&target, s_szText, 3, -4, sWidth, 30, lFlags ? &Color : nullptr, &info, lFlags);
        }
    return 0;
}
