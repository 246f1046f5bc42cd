#include "gui/resources/resfields.h"

const TResItem *FindItemOf(CResData &res, const TResRows<TResItem> &rows, xlong lItem)
{
    for (const TResItem &item : rows)
        if (item.lItem == lItem)
            return res.FindItem(item.pszWord, nullptr, nullptr, nullptr) ? &item : nullptr;
    return nullptr;
}

xlong CResFields::Read(CResData &res, const TResRows<TResField> &fields, xlong lFirst)
{
    m_Fields = fields;
    m_lRead = 0;
    for (const TResField &field : fields)
    {
        TValue &value = m_Values[m_lRead];
        value = {};
        if (!ReadOne(res, field.lType, lFirst + m_lRead, value) &&
            !((field.lRules & XRES_OPTIONAL) && !res.GetString(lFirst + m_lRead)))
            return 0;
        ++m_lRead;
    }
    return 1;
}

bool CResFields::ReadOne(CResData &res, xlong lType, xlong lIndex, TValue &value)
{
    switch (lType)
    {
    case XRES_IS_NUMBER:
        return res.GetLong(lIndex, &value.lNumber) != 0;
    case XRES_IS_UNSIGNED:
    {
        xulong ulNumber = 0;
        const bool bRead = res.GetULong(lIndex, &ulNumber) != 0;
        value.lNumber = (xlong)ulNumber;
        return bRead;
    }
    case XRES_IS_FLAGS:
        return res.GetResFlags(lIndex, &value.lNumber) != 0;
    case XRES_IS_KEY:
    {
        short sKey = 0;
        const bool bRead = res.GetHotkey(lIndex, &sKey) != 0;
        value.lNumber = sKey;
        return bRead;
    }
    case XRES_IS_ID:
        return res.GetResId(res.GetString(lIndex), &value.lNumber) != 0;
    case XRES_IS_BITMAP:
        return (value.pBitmap = res.GetBitmap(lIndex)) != nullptr;
    case XRES_IS_FONT:
        return (value.pFont = res.GetFont(lIndex)) != nullptr;
    case XRES_IS_COLOR:
        return res.GetColor(lIndex, &m_Color, 0) != 0;
    case XRES_IS_COLORS:
        return (value.pColors = res.GetCntrlColor(lIndex)) != nullptr;
    default: // texts and names of files
        return (value.pszText = res.GetString(lIndex)) != nullptr;
    }
}

const CResFields::TValue *CResFields::Find(xlong lRole) const
{
    for (xlong l = 0; l < m_lRead; ++l)
        if (m_Fields.pRows[l].lRole == lRole)
            return m_Values + l;
    return nullptr;
}

char *CResFields::Text(xlong lRole) const
{
    const TValue *const pValue = Find(lRole);
    return pValue ? pValue->pszText : nullptr;
}

xlong CResFields::Number(xlong lRole) const
{
    const TValue *const pValue = Find(lRole);
    return pValue ? pValue->lNumber : 0;
}
