// The sections of a resource file, but for pictures.

#include "tarvix/resdata.h"

#include "core/chars.h"
#include "gui/resources/resfields.h"
#include "gui/resources/resrecord.h"
#include "tarvix/screen.h"
#include "tarvix/winctrl.h"

#include <stddef.h>
#include <string.h>

namespace
{
const char s_szNameTooBig[] = "Define name to big : \"%s\"";

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

void SkipSeparators(const char *&psz)
{
    while (*psz == ' ' || *psz == ',')
        ++psz;
}

// A number of which a colour takes the low byte.
bool ScanByte(const char *&psz, unsigned char *pucValue)
{
    SkipSeparators(psz);
    xulong ulValue;
    if (!ScanInteger(psz, &ulValue))
        return false;
    *pucValue = (unsigned char)ulValue;
    return true;
}

// A report with its text, to be put back later.
struct TReport
{
    void Take()
    {
        const CErrorBase &error = glb->m_Error;
        lCode = error.m_lErrCode;
        lSysCode = error.m_lSysErrCode;
        pszText = error.m_pszErrorTxt;
        pszFile = error.m_pszFile;
        lLine = error.m_lLine;
        memcpy(szBuffer, glb->m_szErrorBuffer, sizeof(szBuffer));
    }
    void Give() const
    {
        CErrorBase &error = glb->m_Error;
        error.m_lErrCode = lCode;
        error.m_lSysErrCode = lSysCode;
        error.m_pszErrorTxt = pszText;
        error.m_pszFile = pszFile;
        error.m_lLine = lLine;
        memcpy(glb->m_szErrorBuffer, szBuffer, sizeof(szBuffer));
    }

    xlong lCode, lSysCode, lLine;
    const char *pszText, *pszFile;
    char szBuffer[sizeof(SGlobals::m_szErrorBuffer)];
};
} // namespace

xlong CResData::SetupResources()
{
    static xlong (CResData::*const s_Setups[])() = {
        &CResData::SetupDefines,   &CResData::SetupStrings, &CResData::SetupValues,
        &CResData::SetupPalette,   &CResData::LoadFonts,    &CResData::LoadBitmaps,
        &CResData::LoadAnimations, &CResData::SetupColors,  &CResData::SetupDefaults,
    };
    RestartMode(0);
    // What fails keeps its report; the others are tried all the same. The first
    // report is the cause, and those of later sections mostly its consequences.
    TReport report;
    report.Take();
    glb->m_Error.Clear();
    bool bFailed = false;
    for (const auto pfnSetup : s_Setups)
    {
        (this->*pfnSetup)();
        if (bFailed || !glb->m_Error.GetErrCode())
            continue;
        report.Take();
        bFailed = true;
    }
    report.Give();
    RestartMode(1);
    for (const TResSection &section : xResGrammar().Sections)
    {
        MainChunk();
        if ((section.lRules & XRES_USED_UP) && FindItem("{", section.pszWord, nullptr, nullptr))
            KillItem();
    }
    return 1;
}

// To the first item of a section's first chunk. @return null without one
const TResSection *CResData::EnterSection(xlong lSection)
{
    const TResSection &section = xResGrammar().Sections.pRows[lSection];
    MainChunk();
    return FirstItem() && FindItem("{", section.pszWord, nullptr, nullptr) && EnterChunk() ? &section : nullptr;
}

xlong CResData::AddDefine(const char *pszName, xlong lId)
{
    CNewRecord<TResDefine> define(XNEW(TResDefine));
    if (!define)
        return xError(XERR_MEMORY);
    define->lId = lId;
    TakeName(define->szName, pszName);
    TResDefine *const pDefine = define.Get();
    if (!define.GiveTo(m_listDefines))
        return 0;
    Chain(pDefine);
    return 1;
}

xlong CResData::SetupDefines()
{
    const TResSection *const pSection = EnterSection(XRES_DEFINES);
    for (const TResData &name : xResGrammar().Names)
        if (pSection && !AddDefine(name.pszName, name.lValue))
            return 0;
    return EachEntry(*this, pSection, s_szNameTooBig, "Unable to get define id for \"%s\"",
                     [&](const char *pszName, const CResFields &fields)
                     { return AddDefine(pszName, fields.NumberAt(0)); });
}

xlong CResData::SetupStrings()
{
    return EachEntry(*this, EnterSection(XRES_STRINGS), s_szNameTooBig, "Unable to get id/string for \"%s\"",
                     [&](const char *pszName, const CResFields &fields)
                     {
                         const size_t ulText = strlen(fields.TextAt(1)) + 1;
                         TResString *const pString = NewFitted<TResString>(offsetof(TResString, szText) + ulText);
                         if (!pString)
                             return (xlong)0;
                         pString->lId = fields.NumberAt(0);
                         TakeName(pString->szName, pszName);
                         memcpy((char *)pString + offsetof(TResString, szText), fields.TextAt(1), ulText);
                         return GiveFitted(m_listStrings, pString);
                     });
}

xlong CResData::SetupValues()
{
    return EachEntry(*this, EnterSection(XRES_VALUES), s_szNameTooBig, "Unable to get id/value for \"%s\"",
                     [&](const char *pszName, const CResFields &fields)
                     {
                         CNewRecord<TResValue> value(XNEW(TResValue));
                         if (!value)
                             return xError(XERR_MEMORY);
                         value->lId = fields.NumberAt(0);
                         value->lValue = fields.NumberAt(1);
                         TakeName(value->szName, pszName);
                         return value.GiveTo(m_listValues);
                     });
}

xlong CResData::SetupColors()
{
    for (const TResBuiltInColor &color : xResGrammar().Colors)
    {
        TResColor *const pColor = NewColor(color.pszName, 1);
        if (!pColor)
            return 0;
        *pColor->pColors = color.Color;
        if (!GiveFitted(m_listColors, pColor))
            return 0;
    }
    const TResSection *const pSection = EnterSection(XRES_COLORS);
    if (!pSection)
        return 1;
    return EachItem(*this, "Color define name to big : \"%s\"",
                    [&](const char *pszName)
                    {
                        const xlong lCount = GetNumStrings(); // a comment behind them counts too, and is no colour
                        TResColor *const pColor = NewColor(pszName, lCount);
                        if (!pColor)
                            return (xlong)0;
                        CResFields fields;
                        for (xlong l = 0; l < lCount; ++l)
                        {
                            if (!fields.Read(*this, pSection->Items.pRows->Fields, l))
                            {
                                XDELETE_ARRAY((char *)pColor);
                                return (xlong)0;
                            }
                            pColor->pColors[l] = fields.Color();
                        }
                        return GiveFitted(m_listColors, pColor);
                    });
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

xlong CResData::SetupDefaults()
{
    typedef CWinCtrl W;
    // Buttons and statics have no defaults of their own here: they set the frame's.
    static const struct
    {
        xlong lItem;
        const char *pszFault; ///< null: none
        xlong (W::*pfnBitmap)(CBitmap *);
        xlong (W::*pfnBitmaps)(CBitmap *, CBitmap *, CBitmap *, CBitmap *);
        xlong (W::*pfnColors)(TCntrlColor *, TCntrlColor *, TCntrlColor *, TCntrlColor *);
    } s_Defaults[] = {
        { XRES_ITEM_FONT, "Unable to get the default font", nullptr, nullptr, nullptr },
        { XRES_ITEM_CARET, "Unable to get the default caret bitmap", &W::SetDefaultCaret, nullptr, nullptr },
        { XRES_ITEM_CHECK, "Unable to get the default check bitmap", &W::SetDefaultCheck, nullptr, nullptr },
        { XRES_ITEM_CLOSE, "Unable to get the default close bitmaps", nullptr, &W::SetDefaultClose, nullptr },
        { XRES_ITEM_DROP, "Unable to get the default drop bitmaps", nullptr, &W::SetDefaultDrop, nullptr },
        { XRES_ITEM_ARROWUP, "Unable to get the default arrow up bitmaps", nullptr, &W::SetDefaultArrowUp, nullptr },
        { XRES_ITEM_ARROWDOWN, "Unable to get the default arrow down bitmaps", nullptr, &W::SetDefaultArrowDown,
          nullptr },
        { XRES_ITEM_TITLEBAR, nullptr, nullptr, nullptr, &W::SetDefaultTitlebar },
        { XRES_ITEM_FRAME, nullptr, nullptr, nullptr, &W::SetDefaultFrame },
        { XRES_ITEM_BUTTON, nullptr, nullptr, nullptr, &W::SetDefaultFrame },
        { XRES_ITEM_STATIC, nullptr, nullptr, nullptr, &W::SetDefaultFrame },
    };
    const TResSection *const pSection = EnterSection(XRES_DEFAULTS);
    if (!pSection)
        return 1;
    CWinCtrl *const pManager = glb->m_pWinCtrl;
    return EachItem(*this, nullptr,
                    [&](const char *pszKeyword)
                    {
                        const TResItem *const pItem = xFindResItem(pSection->Items, pszKeyword);
                        CResFields f;
                        for (const auto &row : s_Defaults)
                        {
                            if (!pItem || row.lItem != pItem->lItem)
                                continue;
                            if (!f.Read(*this, pItem->Fields))
                                return row.pszFault ? xErrorTxt(row.pszFault) : 0;
                            if (row.pfnBitmap)
                                (pManager->*row.pfnBitmap)(f.BitmapAt(0));
                            else if (row.pfnBitmaps)
                                (pManager->*row.pfnBitmaps)(f.BitmapAt(0), f.BitmapAt(1), f.BitmapAt(2), f.BitmapAt(3));
                            else if (row.pfnColors)
                                (pManager->*row.pfnColors)(f.ColorsAt(0), f.ColorsAt(1), f.ColorsAt(2), f.ColorsAt(3));
                            else
                                pManager->SetDefaultFont(f.FontAt(0));
                        }
                        return (xlong)1;
                    });
}
