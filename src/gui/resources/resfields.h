// Reading items of resource scripts as the grammar tells what their strings are.
#pragma once

#include "tarvix/resgrammar.h"

class CBitmap;
class CFont;

/// Finds the first item of this kind in the current chunk. @return null when it has none
const TResItem *FindItemOf(CResData &res, const TResRows<TResItem> &rows, xlong lItem);

/// The strings of an item, each read as what it is.
class CResFields
{
public:
    /// Reads strings of the current item, in their order.
    /// @param lFirst  the string that the first field stands for
    /// @return 1; 0 at the first one that fails, with what its getter reports. m_lRead is its index then
    xlong Read(CResData &res, const TResRows<TResField> &fields, xlong lFirst = 0);

    // By what the string is for: null and 0 where the item has none of that.
    char *Text(xlong lRole) const;
    xlong Number(xlong lRole) const;
    // By index, as the types are.
    xlong NumberAt(xlong lIndex) const { return m_Values[lIndex].lNumber; }
    char *TextAt(xlong lIndex) const { return m_Values[lIndex].pszText; }
    CBitmap *BitmapAt(xlong lIndex) const { return m_Values[lIndex].pBitmap; }
    CFont *FontAt(xlong lIndex) const { return m_Values[lIndex].pFont; }
    TCntrlColor *ColorsAt(xlong lIndex) const { return m_Values[lIndex].pColors; }
    const TRGBA &Color() const { return m_Color; }

    xlong m_lRead = 0;

private:
    enum
    {
        MAX_FIELDS = 12
    };
    union TValue
    {
        xlong lNumber;
        char *pszText;
        CBitmap *pBitmap;
        CFont *pFont;
        TCntrlColor *pColors;
    };

    bool ReadOne(CResData &res, xlong lType, xlong lIndex, TValue &value);
    const TValue *Find(xlong lRole) const;

    TResRows<TResField> m_Fields = {};
    TValue m_Values[MAX_FIELDS] = {};
    TRGBA m_Color;
};
