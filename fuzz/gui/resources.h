// What the fuzzers of resource files share.
#pragma once

#include "fuzz/support.h"

#include "tarvix/bitmap.h"
#include "tarvix/font.h"
#include "tarvix/pictype.h"
#include "tarvix/resdata.h"

#include <string.h>

/// The files that scripts can name, in the working directory.
inline void MakeResourceFiles()
{
    static CBMPPic *s_pType = nullptr;
    if (s_pType)
        return;
    s_pType = new CBMPPic;
    CBitmap picture, letters;
    const TCharData chars[] = { { 1, 0, 3 }, { 4, 0, 3 }, { 0, 0, -1 } };
    CPalette palette;
    CFont font;
    if (!picture.CreateRGB(8, 6, 24, 8, 8, 8, 0, 8, 16, 0) || !letters.CreateIndex(8, 6, 8, &palette, 0) ||
        !picture.Save("p.bmp", nullptr, nullptr, nullptr, 0) || !letters.Save("q.bmp", nullptr, nullptr, nullptr, 0) ||
        !font.SetFont(&letters, chars, 'A', 5, 1) || !font.Save("f.xbf", 0))
        abort();
}

/// Whether a text asks for more than 99 of anything: large pictures are slow,
/// and are the same otherwise.
inline bool HasLargeNumber(const std::string &strText)
{
    size_t ulDigits = 0;
    for (char c : strText)
    {
        ulDigits = c >= '0' && c <= '9' ? ulDigits + 1 : 0;
        if (ulDigits > 2)
            return true;
    }
    return false;
}

/// Everything that the getters give of a tree.
inline void ReadResources(CResData &res)
{
    int nItems = 0;
    for (res.MainChunk(), res.FirstItem(); res.m_pCurChunk->pParent || res.ItemExists();)
    {
        for (xlong l = -1; res.ItemExists() && ++nItems < 100 && l <= res.GetNumStrings(); ++l)
        {
            xlong lValue = 0;
            short sKey = 0;
            TRGBA Color;
            res.GetResFlags(l, &lValue);
            res.GetHotkey(l, &sKey);
            res.GetColor(l, &Color, 1);
            res.GetCntrlColor(l);
            res.GetBitmap(l);
            res.GetFont(l);
            res.GetAnim(l);
            if (const char *psz = res.GetString(l))
            {
                res.GetResString(psz, nullptr);
                if (res.GetResId(psz, &lValue) && !res.GetResName(lValue))
                    abort();
            }
        }
        res.NextItem(1);
    }
    res.EnterDataChunk();
    res.GetResValue(1);
    res.GetResString((xlong)1);
    res.Free();
}
