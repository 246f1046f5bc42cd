// The sections of a resource file, but for pictures.

#include "tarvix/resdata.h"

#include "gui/resources/resrecord.h"
#include "tarvix/screen.h"
#include "tarvix/winctrl.h"

#include <stddef.h>
#include <string.h>

namespace
{
const char s_szNameTooBig[] = "Define name to big : \"%s\"";

struct TBuiltInDefine
{
    const char *pszName;
    xlong lId;
};
const TBuiltInDefine s_Defines[] = { { "IDS_NONE", 0 }, { "IDB_NONE", 0 }, { "IDP_NONE", 0 },
                                     { "IDG_NONE", 0 }, { "IDL_NONE", 0 }, { "XCNTRL_CLOSE", XCNTRL_CLOSE } };

struct TBuiltInColor
{
    const char *pszName;
    unsigned char ucRed, ucGreen, ucBlue;
};
// Pure black is the key of many pictures.
const TBuiltInColor s_Colors[] = { { "black", 1, 1, 1 }, { "white", 255, 255, 255 }, { "grey", 128, 128, 128 },
                                   { "red", 255, 0, 0 }, { "green", 0, 255, 0 },     { "blue", 0, 0, 255 } };

// A record of bytes, for KillAllData. @return null with XERR_MEMORY
template <class TRecord>
TRecord *NewFitted(size_t ulSize)
{
    TRecord *const pRecord = (TRecord *)XNEW(char[ulSize]);
    if (!pRecord)
        xError(XERR_MEMORY);
    return pRecord;
}

xlong GiveFitted(CLList &list, void *pRecord)
{
    if (list.InsertLast(pRecord))
        return 1;
    XDELETE_ARRAY((char *)pRecord);
    return xError(XERR_MEMORY);
}

// @return null with XERR_MEMORY; the shades are not set yet
TResColor *NewColor(const char *pszName, xlong lNumColors)
{
    TResColor *const pColor = NewFitted<TResColor>(sizeof(TResColor) + (size_t)lNumColors * sizeof(TRGBA));
    if (!pColor)
        return nullptr;
    TakeName(pColor->szName, pszName);
    pColor->pColors = pColor->Colors;
    pColor->lNumColors = lNumColors;
    return pColor;
}

bool IsDigit(char c)
{
    return c >= '0' && c <= '9';
}

void SkipSeparators(const char *&psz)
{
    while (*psz == ' ' || *psz == ',')
        ++psz;
}

// As scanf's %ld does, of which a colour takes the low byte.
bool ScanByte(const char *&psz, unsigned char *pucValue)
{
    SkipSeparators(psz);
    const bool bMinus = *psz == '-';
    if (*psz == '-' || *psz == '+')
        ++psz;
    if (!IsDigit(*psz))
        return false;
    xulong ulValue = 0;
    for (; IsDigit(*psz); ++psz)
        ulValue = ulValue * 10 + (xulong)(*psz - '0');
    *pucValue = (unsigned char)(bMinus ? 0 - ulValue : ulValue);
    return true;
}
} // namespace

xlong CResData::SetupResources()
{
    RestartMode(0);
    // What fails keeps its report; the others are tried all the same.
    SetupDefines();
    SetupStrings();
    SetupValues();
    SetupPalette();
    LoadFonts();
    LoadBitmaps();
    LoadAnimations();
    SetupColors();
    SetupDefaults();
    RestartMode(1);
    for (const char *pszName : { "Defines", "Strings", "Values", "Palette", "Bitmaps", "Animations", "Colors" })
    {
        MainChunk();
        if (FindItem("{", pszName, nullptr, nullptr))
            KillItem();
    }
    return 1;
}

// To the first item of a section's first chunk. @return false without one
bool CResData::EnterSection(const char *pszName)
{
    MainChunk();
    return FirstItem() && FindItem("{", pszName, nullptr, nullptr) && EnterChunk();
}

xlong CResData::AddDefine(const char *pszName, xlong lId)
{
    CNewRecord<TResDefine> define(XNEW(TResDefine));
    if (!define)
        return xError(XERR_MEMORY);
    define->lId = lId;
    define->pNext = nullptr;
    TakeName(define->szName, pszName);
    TResDefine *const pDefine = define.Get();
    if (!define.GiveTo(m_listDefines))
        return 0;
    TChain &chain = ChainOf(pszName);
    (chain.pFirst ? chain.pLast->pNext : chain.pFirst) = pDefine;
    chain.pLast = pDefine;
    return 1;
}

xlong CResData::SetupDefines()
{
    if (!EnterSection("Defines"))
        return 1;
    for (const TBuiltInDefine &define : s_Defines)
        if (!AddDefine(define.pszName, define.lId))
            return 0;
    for (; ItemExists(); NextItem(0))
    {
        if (IsComment())
            continue;
        xlong lId;
        if (strlen(GetKeyword()) >= RES_NAME_SIZE)
            return Refuse(s_szNameTooBig, GetKeyword());
        if (!GetLong(0, &lId))
            return Refuse("Unable to get define id for \"%s\"", GetKeyword());
        if (!AddDefine(GetKeyword(), lId))
            return 0;
    }
    return 1;
}

xlong CResData::SetupStrings()
{
    if (!EnterSection("Strings"))
        return 1;
    for (; ItemExists(); NextItem(0))
    {
        if (IsComment())
            continue;
        xlong lId;
        if (strlen(GetKeyword()) >= RES_NAME_SIZE)
            return Refuse(s_szNameTooBig, GetKeyword());
        const char *const pszText = GetString(1);
        if (!GetLong(0, &lId) || !pszText)
            return Refuse("Unable to get id/string for \"%s\"", GetKeyword());
        const size_t ulText = strlen(pszText) + 1;
        TResString *const pString = NewFitted<TResString>(offsetof(TResString, szText) + ulText);
        if (!pString)
            return 0;
        pString->lId = lId;
        TakeName(pString->szName, GetKeyword());
        memcpy((char *)pString + offsetof(TResString, szText), pszText, ulText);
        if (!GiveFitted(m_listStrings, pString))
            return 0;
    }
    return 1;
}

xlong CResData::SetupValues()
{
    if (!EnterSection("Values"))
        return 1;
    for (; ItemExists(); NextItem(0))
    {
        if (IsComment())
            continue;
        if (strlen(GetKeyword()) >= RES_NAME_SIZE)
            return Refuse(s_szNameTooBig, GetKeyword());
        CNewRecord<TResValue> value(XNEW(TResValue));
        if (!value)
            return xError(XERR_MEMORY);
        if (!GetLong(0, &value->lId) || !GetLong(1, &value->lValue))
            return Refuse("Unable to get id/value for \"%s\"", GetKeyword());
        TakeName(value->szName, GetKeyword());
        if (!value.GiveTo(m_listValues))
            return 0;
    }
    return 1;
}

xlong CResData::SetupColors()
{
    for (const TBuiltInColor &color : s_Colors)
    {
        TResColor *const pColor = NewColor(color.pszName, 1);
        if (!pColor)
            return 0;
        pColor->pColors->Set(color.ucRed, color.ucGreen, color.ucBlue);
        if (!GiveFitted(m_listColors, pColor))
            return 0;
    }
    if (!EnterSection("Colors"))
        return 1;
    for (; ItemExists(); NextItem(0))
    {
        if (IsComment())
            continue;
        if (strlen(GetKeyword()) >= RES_NAME_SIZE)
            return Refuse("Color define name to big : \"%s\"", GetKeyword());
        const xlong lCount = GetNumStrings(); // a comment behind them counts too, and is no colour
        TResColor *const pColor = NewColor(GetKeyword(), lCount);
        if (!pColor)
            return 0;
        for (xlong l = 0; l < lCount; ++l)
            if (!GetColor(l, pColor->pColors + l, 0))
            {
                XDELETE_ARRAY((char *)pColor);
                return 0;
            }
        if (!GiveFitted(m_listColors, pColor))
            return 0;
    }
    return 1;
}

xlong CResData::GetColor(xlong lIndex, TRGBA *pColor, xlong lShade)
{
    const char *psz = GetString(lIndex);
    if (!psz)
        return 0;
    SkipSeparators(psz);
    if (!*psz)
        return 0;
    if (!IsDigit(*psz))
        return GetCol(psz, pColor, lShade);
    TRGBA Color;
    if (!ScanByte(psz, &Color.ucRed) || !ScanByte(psz, &Color.ucGreen) || !ScanByte(psz, &Color.ucBlue) ||
        !ScanByte(psz, &Color.ucAlpha))
        return xErrorTxt("Unable to get the default arrow down bitmaps");
    *pColor = Color;
    return 1;
}

xlong CResData::GetCol(const char *pszName, TRGBA *pColor, xlong lShade)
{
    const TResColor *const pRamp = FindName<TResColor>(m_listColors, pszName);
    if (!pRamp || lShade < 0 || lShade >= pRamp->lNumColors)
        return Refuse("Unable to find the specified color (\"%s\")", TextOf(pszName));
    *pColor = pRamp->pColors[lShade];
    return 1;
}

TCntrlColor *CResData::GetCntrlColor(xlong lIndex)
{
    const char *const pszName = GetString(lIndex);
    if (!pszName)
        return nullptr;
    if (TResCntrlColor *const pFound = FindName<TResCntrlColor>(m_listCntrlColors, pszName))
        return &pFound->Color;
    TRGBA Shades[8];
    for (xlong l = 0; l < 8; ++l)
        if (!GetCol(pszName, Shades + l, l))
            return nullptr;
    CNewRecord<TResCntrlColor> color(XNEW(TResCntrlColor));
    if (!color)
    {
        xError(XERR_MEMORY);
        return nullptr;
    }
    TakeName(color->szName, pszName);
    glb->m_pWinCtrl->SetupColors(&color->Color, Shades, Shades + 1, Shades + 2, Shades + 3, Shades + 4, Shades + 5,
                                 Shades + 6, Shades + 7);
    TCntrlColor *const pColor = &color->Color;
    return color.GiveTo(m_listCntrlColors) ? pColor : nullptr;
}

xlong CResData::GetFourBitmaps(CBitmap **ppBitmaps)
{
    for (xlong l = 0; l < 4; ++l)
        if (!(ppBitmaps[l] = GetBitmap(l)))
            return 0;
    return 1;
}

xlong CResData::GetFourColors(TCntrlColor **ppColors)
{
    for (xlong l = 0; l < 4; ++l)
        if (!(ppColors[l] = GetCntrlColor(l)))
            return 0;
    return 1;
}

xlong CResData::SetupDefaults()
{
    static const struct
    {
        const char *pszKeyword;
        xlong (CWinCtrl::*pfnSet)(CBitmap *);
        const char *pszFault;
    } s_Single[] = { { "Caret", &CWinCtrl::SetDefaultCaret, "Unable to get the default caret bitmap" },
                     { "Check", &CWinCtrl::SetDefaultCheck, "Unable to get the default check bitmap" } };
    static const struct
    {
        const char *pszKeyword;
        xlong (CWinCtrl::*pfnSet)(CBitmap *, CBitmap *, CBitmap *, CBitmap *);
        const char *pszFault;
    } s_Four[] = { { "Close", &CWinCtrl::SetDefaultClose, "Unable to get the default close bitmaps" },
                   { "Drop", &CWinCtrl::SetDefaultDrop, "Unable to get the default drop bitmaps" },
                   { "ArrowUp", &CWinCtrl::SetDefaultArrowUp, "Unable to get the default arrow up bitmaps" },
                   { "ArrowDown", &CWinCtrl::SetDefaultArrowDown, "Unable to get the default arrow down bitmaps" } };
    // Buttons and statics have no defaults of their own here: they set the frame's.
    static const struct
    {
        const char *pszKeyword;
        xlong (CWinCtrl::*pfnSet)(TCntrlColor *, TCntrlColor *, TCntrlColor *, TCntrlColor *);
    } s_Colors[] = { { "Titlebar", &CWinCtrl::SetDefaultTitlebar },
                     { "Frame", &CWinCtrl::SetDefaultFrame },
                     { "Button", &CWinCtrl::SetDefaultFrame },
                     { "Static", &CWinCtrl::SetDefaultFrame } };
    if (!EnterSection("Defaults"))
        return 1;
    CWinCtrl *const pManager = glb->m_pWinCtrl;
    for (; ItemExists(); NextItem(0))
    {
        const char *const pszKeyword = GetKeyword();
        if (!pszKeyword)
            return xErrorTxt("GetKeyword returned error.");
        if (IsComment())
            continue;
        if (!xStricmp(pszKeyword, "Font"))
        {
            CFont *const pFont = GetFont((xlong)0);
            if (!pFont)
                return xErrorTxt("Unable to get the default font");
            pManager->SetDefaultFont(pFont);
        }
        for (const auto &single : s_Single)
            if (!xStricmp(pszKeyword, single.pszKeyword))
            {
                CBitmap *const pBitmap = GetBitmap(0);
                if (!pBitmap)
                    return xErrorTxt(single.pszFault);
                (pManager->*single.pfnSet)(pBitmap);
            }
        for (const auto &four : s_Four)
            if (!xStricmp(pszKeyword, four.pszKeyword))
            {
                CBitmap *apBitmaps[4];
                if (!GetFourBitmaps(apBitmaps))
                    return xErrorTxt(four.pszFault);
                (pManager->*four.pfnSet)(apBitmaps[0], apBitmaps[1], apBitmaps[2], apBitmaps[3]);
            }
        for (const auto &colors : s_Colors)
            if (!xStricmp(pszKeyword, colors.pszKeyword))
            {
                TCntrlColor *apColors[4];
                if (!GetFourColors(apColors))
                    return 0;
                (pManager->*colors.pfnSet)(apColors[0], apColors[1], apColors[2], apColors[3]);
            }
    }
    return 1;
}
