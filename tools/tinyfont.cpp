#include "tinyfont.h"

#include "tarvix/globals.h"
#include "tarvix/screen.h"

#include <string.h>

#include <string>

namespace
{
const int s_nFirst = ' ', s_nLast = '~';
const xlong s_lScale = 2, s_lColumns = 5, s_lRows = 7;

// A digit of base 32 for each row, from the top; its highest bit is the left pixel.
const char *const s_pszGlyphs[s_nLast - s_nFirst + 1] = {
    "0000000", "4444404", "AA00000", "AAVAVAA", "4FKE5U4", "OP248J3", "8KK8LID", "4400000", // ' ' to '\''
    "2488842", "8422248", "04LEL40", "044V440", "0000448", "000V000", "00000CC", "01248G0", // ( to /
    "EHJLPHE", "4C4444E", "EH1248V", "V2421HE", "26AIV22", "VGU11HE", "68GUHHE", "V124888", // 0 to 7
    "EHHEHHE", "EHHF12C", "0CC0CC0", "0CC0C48", "248G842", "00V0V00", "8421248", "EH12404", // 8 to ?
    "EH1DLLE", "EHHVHHH", "UHHUHHU", "EHGGGHE", "SIHHHIS", "VGGUGGV", "VGGUGGG", "EHGNHHF", // @ to G
    "HHHVHHH", "E44444E", "72222IC", "HIKOKIH", "GGGGGGV", "HRLLHHH", "HHPLJHH", "EHHHHHE", // H to O
    "UHHUGGG", "EHHHLID", "UHHUKIH", "FGGE11U", "V444444", "HHHHHHE", "HHHHHA4", "HHHLLLA", // P to W
    "HHA4AHH", "HHHA444", "V1248GV", "E88888E", "0G84210", "E22222E", "4AH0000", "000000V", // X to _
    "8400000", "00E1FHF", "GGMPHHU", "00EGGHE", "11DJHHF", "00EHVGE", "698S888", "0FHHF1E", // ` to g
    "GGMPHHH", "40C444E", "20622IC", "GGIKOKI", "C44444E", "00QLLHH", "00MPHHH", "00EHHHE", // h to o
    "00UHUGG", "00DJF11", "00MPGGG", "00EGE1U", "88S8896", "00HHHJD", "00HHHA4", "00HHLLA", // p to w
    "00HA4AH", "00HHF1E", "00V248V", "2448442", "4444444", "8442448", "008L200",            // x to ~
};

int RowBits(char c)
{
    return c <= '9' ? c - '0' : c - 'A' + 10;
}
} // namespace

bool CTinyFont::Create()
{
    const xlong lCell = s_lColumns * s_lScale, lCount = s_nLast - s_nFirst + 1;
    m_Font.Free();
    // The first pixel stays empty: its colour is the transparent one.
    if (!m_Picture.CreateRGB(lCell * lCount, s_lRows * s_lScale, 24, 8, 8, 8, 0, 8, 16, 0))
        return false;
    TCharData cells[lCount + 1];
    for (xlong lGlyph = 0; lGlyph < lCount; ++lGlyph)
    {
        cells[lGlyph] = { (short)(lGlyph * lCell), 0, (short)lCell };
        for (xlong y = 0; y < s_lRows * s_lScale; ++y)
            for (xlong x = 0; x < lCell; ++x)
                if (RowBits(s_pszGlyphs[lGlyph][y / s_lScale]) & 16 >> x / s_lScale)
                    memset(m_Picture.m_pData + y * m_Picture.m_lPitch + (lGlyph * lCell + x) * 3, 255, 3);
    }
    cells[lCount].sWidth = -1;
    if (!glb->m_pScreen->MakeScreenFormat(&m_Picture, 1))
        return false;
    m_Font.SetFont(&m_Picture, cells, s_nFirst, s_lRows * s_lScale, WIDTH - lCell);
    return m_Font.SetBasic(' ', FONT_GLYPH, 0) != 0;
}

void CTinyFont::Draw(CBitmap *pTarget, const char *pszText, xlong lX, xlong lY)
{
    std::string strText = pszText;
    for (char &c : strText)
        if (c < s_nFirst || c > s_nLast)
            c = c == '\t' ? ' ' : '?';
    m_Font.Text(pTarget, strText.c_str(), (short)lX, (short)lY, -1, -1, nullptr, nullptr, FONT_SINGLELINE);
}
