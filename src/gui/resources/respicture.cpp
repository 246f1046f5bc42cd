// The pictures of a resource file: palette, fonts, bitmaps and animations.

#include "tarvix/resdata.h"

#include "gui/resources/resrecord.h"
#include "tarvix/screen.h"

#include <stdint.h>
#include <string.h>

namespace
{
const char s_szBitmapTooBig[] = "Bitmap define name to big : \"%s\"";
const char s_szBadFile[] = "fname is invalid";

// The picture file that was read last. Scripts cut many bitmaps in a row from
// one file, which is read once for all of them.
class CLastPicture
{
public:
    explicit CLastPicture(const CResData *pOwner) : m_pOwner(pOwner), m_pBefore(s_pTop) { s_pTop = this; }
    CLastPicture(const CLastPicture &) = delete;
    ~CLastPicture()
    {
        s_pTop = m_pBefore;
        XDELETE(m_pBitmap);
    }

    // @return of the section that this object reads, or null
    static CLastPicture *Of(const CResData *pOwner) { return s_pTop && s_pTop->m_pOwner == pOwner ? s_pTop : nullptr; }

    // @return null with a report
    CBitmap *Load(const char *pszFile)
    {
        if (m_pBitmap && !xStrcmp(m_szFile, pszFile))
            return m_pBitmap;
        XDELETE(m_pBitmap);
        m_pBitmap = XNEW(CBitmap);
        if (!m_pBitmap)
        {
            xError(XERR_MEMORY);
            return nullptr;
        }
        TakeName(m_szFile, pszFile);
        if (m_pBitmap->Load(pszFile, 0))
            return m_pBitmap;
        XDELETE(m_pBitmap);
        m_pBitmap = nullptr;
        return nullptr;
    }

private:
    static CLastPicture *s_pTop; ///< the loading callback may load another file in between

    const CResData *const m_pOwner;
    CLastPicture *const m_pBefore;
    CBitmap *m_pBitmap = nullptr;
    char m_szFile[RES_FILE_SIZE];
};

CLastPicture *CLastPicture::s_pTop = nullptr;

// The name of a path without its extension: what a palette is called.
// @return null when memory is exhausted
char *NewPaletteName(const char *pszFile)
{
    const char *const pszSlash = xStrrchr(pszFile, '/');
    const char *const pszName = pszSlash ? pszSlash + 1 : pszFile;
    const size_t ulName = strcspn(pszName, ".");
    char *const pszNew = XNEW(char[ulName + 1]);
    if (pszNew)
    {
        memcpy(pszNew, pszName, ulName);
        pszNew[ulName] = 0;
    }
    return pszNew;
}

struct TArea
{
    xlong lX, lY, lWidth, lHeight;

    bool IsWhole() const { return lWidth == -1 || lHeight == -1; }
    bool IsGood() const
    {
        return IsWhole() || (lWidth > 0 && lHeight > 0 && (int64_t)lWidth * lHeight <= RES_MAX_PIXELS);
    }
};

bool ReadArea(CResData &res, xlong lIndex, TArea &area)
{
    return res.GetLong(lIndex, &area.lX) && res.GetLong(lIndex + 1, &area.lY) &&
           res.GetLong(lIndex + 2, &area.lWidth) && res.GetLong(lIndex + 3, &area.lHeight) && area.IsGood();
}

// Copies an area, of which nothing but what lies in the source becomes visible.
xlong CutOut(TBitmapRes *pRes, CBitmap *pSource, const TArea &area)
{
    const xlong lWidth = area.IsWhole() ? pSource->m_lWidth : area.lWidth;
    const xlong lHeight = area.IsWhole() ? pSource->m_lHeight : area.lHeight;
    if (!pRes->Bitmap.CreateRGB(lWidth, lHeight, 24, 8, 8, 8, 16, 8, 0, 1))
        return xError(XERR_MEMORY);
    pRes->Bitmap.Blt(pSource, area.IsWhole() ? 0 : area.lX, area.IsWhole() ? 0 : area.lY, 0, 0, lWidth, lHeight, 0, 0,
                     0);
    return 1;
}

void ToScreen(CBitmap *pBitmap)
{
    if (glb->m_pScreen && !glb->m_pScreen->MakeScreenBitmap(pBitmap, 1))
        xErrorTxt("Can't convert bitmap to screen mode");
}

// @return null with a report
TBitmapRes *NewBitmap(const char *pszName, const char *pszFile)
{
    if (strlen(pszName) >= RES_NAME_SIZE)
        Refuse(s_szBitmapTooBig, pszName);
    else if (!pszFile)
        xErrorTxt(s_szBadFile);
    else if (strlen(pszFile) >= RES_FILE_SIZE)
        Refuse("Bitmap filename to big : \"%s\"", pszFile);
    else if (TBitmapRes *const pRes = XNEW(TBitmapRes))
    {
        TakeName(pRes->szName, pszName);
        TakeName(pRes->szFile, pszFile);
        return pRes;
    }
    else
        xError(XERR_MEMORY);
    return nullptr;
}
} // namespace

xlong CResData::SetupPalette()
{
    if (!EnterSection("Palette"))
        return 1;
    for (; ItemExists(); NextItem(0))
    {
        if (IsComment())
            continue;
        const char *const pszFile = GetString(0);
        if (!pszFile)
            return Refuse("Unable to get string for \"%s\"", GetKeyword());
        CBitmap bitmap;
        if (!bitmap.Load(pszFile, 0))
            return 0;
        if (!bitmap.m_pPalette || !glb->m_pScreen)
            continue;
        char *const pszName = NewPaletteName(pszFile);
        if (!pszName)
            return xErrorTxt("CResData::SetupPalette: Allocation of memory for palette name failed.");
        XDELETE_ARRAY(bitmap.m_pPalette->m_pszName);
        bitmap.m_pPalette->m_pszName = pszName;
        glb->m_pScreen->SetPalette(bitmap.m_pPalette);
    }
    return 1;
}

xlong CResData::LoadFonts()
{
    if (!EnterSection("Fonts"))
        return 1;
    for (; ItemExists(); NextItem(0))
    {
        if (IsComment())
            continue;
        if (strlen(GetKeyword()) >= RES_NAME_SIZE)
            return Refuse(s_szBitmapTooBig, GetKeyword());
        const char *const pszFile = GetString(0);
        if (!pszFile)
            return xErrorTxt(s_szBadFile);
        CNewRecord<TResFont> font(XNEW(TResFont));
        if (!font)
            return xError(XERR_MEMORY);
        TakeName(font->szName, GetKeyword());
        if (!font->Font.Load(pszFile, 0) || !font.GiveTo(m_listFonts))
            return 0;
    }
    return 1;
}

xlong CResData::LoadBitmaps()
{
    if (!EnterSection("Bitmaps"))
        return 1;
    CLastPicture last(this);
    for (; ItemExists(); NextItem(0))
    {
        if (IsComment())
            continue;
        if (ItemType() == 2)
        {
            if (!LoadBitmapChunk())
                return 0;
            continue;
        }
        CNewRecord<TBitmapRes> bitmap(NewBitmap(GetKeyword(), GetString(0)));
        if (!bitmap || !LoadBitmapA(bitmap.Get(), bitmap->szName, bitmap->szFile) || !bitmap.GiveTo(m_listBitmaps))
            return 0;
    }
    return 1;
}

// The pictures of one file.
xlong CResData::LoadBitmapChunk()
{
    const char *const pszFile = GetString(0);
    if (!pszFile)
        return xErrorTxt(s_szBadFile);
    CBitmap source;
    if (!source.Load(pszFile, 0))
        return xErrorTxt("Couldn't load bitmap");
    EnterChunk();
    for (; ItemExists(); NextItem(0))
    {
        if (IsComment())
            continue;
        CNewRecord<TBitmapRes> bitmap(NewBitmap(GetKeyword(), pszFile));
        if (!bitmap || !Copybitmap(bitmap.Get(), &source) || !bitmap.GiveTo(m_listBitmaps))
            return 0;
    }
    return ExitChunk();
}

xlong CResData::Copybitmap(TBitmapRes *pRes, CBitmap *pSource)
{
    TArea area;
    if (!ReadArea(*this, 0, area))
        return xErrorTxt("Failed to read in the x,y,w,h data fields for bitmap");
    if (!CutOut(pRes, pSource, area))
        return 0;
    ToScreen(&pRes->Bitmap);
    return 1;
}

xlong CResData::LoadBitmapA(TBitmapRes *pRes, const char *pszName, const char *pszFile)
{
    TArea area;
    if (!ReadArea(*this, 1, area))
        return Refuse("Failed to read in the x,y,w,h data fields for bitmap \"%s\"", TextOf(pszName));
    if (area.IsWhole())
    {
        if (!pRes->Bitmap.Load(pszFile, 0))
            return 0;
    }
    else
    {
        CLastPicture *const pLast = CLastPicture::Of(this);
        CLastPicture own(this);
        CBitmap *const pSource = (pLast ? pLast : &own)->Load(pszFile);
        if (!pSource || !CutOut(pRes, pSource, area))
            return 0;
    }
    ToScreen(&pRes->Bitmap);
    return 1;
}

xlong CResData::LoadAnimations()
{
    if (!EnterSection("Animations"))
        return 1;
    for (; ItemExists(); NextItem(0))
    {
        if (IsComment())
            continue;
        const char *const pszName = GetKeyword();
        if (!pszName)
            return xErrorTxt("defName is invalid");
        if (strlen(pszName) >= RES_NAME_SIZE)
            return Refuse(s_szBitmapTooBig, pszName);
        const char *const pszFile = GetString(0);
        if (!pszFile)
            return xErrorTxt(s_szBadFile);
        // delay, x, y, width, height, frames, frames of a row, transparent
        xlong alFields[8];
        for (xlong l = 0; l < 8; ++l)
            if (!GetLong(l + 1, alFields + l))
                return Refuse("Failed to read in the frame delay,x,y,w,h,col,row,transFlag data fields for "
                              "animation \"%s\"",
                              pszName);
        CBitmap sheet;
        if (!sheet.Load(pszFile, 0))
            return xErrorTxt("Failed to load temporary bitmap for anim\n");
        if (glb->m_pScreen && !glb->m_pScreen->MakeScreenFormat(&sheet, 1))
            return xErrorTxt("Failed to make screen bitmap for anim\n");
        CNewRecord<TResAnim> anim(XNEW(TResAnim));
        if (!anim)
            return xError(XERR_MEMORY);
        TakeName(anim->szName, pszName);
        anim->pAnim = MakeCntrlAnim(&sheet, alFields[3], alFields[4], alFields[5], alFields[6], 0, 1, alFields[7]);
        if (!anim->pAnim)
            return Refuse("Failed to create the \"%s\" animation", pszName);
        anim->pAnim->ulDelay = (xulong)alFields[0];
        TCntrlAnim *const pAnim = anim->pAnim;
        if (!anim.GiveTo(m_listAnims))
        {
            FreeCntrlAnim(pAnim);
            return 0;
        }
    }
    return 1;
}
