// The pictures of a resource file: palette, fonts, bitmaps and animations.

#include "tarvix/resdata.h"

#include "gui/resources/resfields.h"
#include "gui/resources/resrecord.h"
#include "screens/screenbitmap.h"
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
};

// @param lFirst  the string of its x
bool ReadArea(CResData &res, xlong lFirst, TArea &area)
{
    CResFields fields;
    const TResItem &item = *xResGrammar().Sections.pRows[XRES_BITMAPS].pInChunk;
    if (!fields.Read(res, item.Fields, lFirst))
        return false;
    area = { fields.Number(XRES_AS_X), fields.Number(XRES_AS_Y), fields.Number(XRES_AS_WIDTH),
             fields.Number(XRES_AS_HEIGHT) };
    return xIsResSize(item.lRules, area.lWidth, area.lHeight, 1) != 0;
}

// Copies an area, of which nothing but what lies in the source becomes visible.
xlong CutOut(TBitmapRes *pRes, CBitmap *pSource, const TArea &area)
{
    const xlong lWidth = area.IsWhole() ? pSource->m_lWidth : area.lWidth;
    const xlong lHeight = area.IsWhole() ? pSource->m_lHeight : area.lHeight;
    if (!CreateForScreen(&pRes->Bitmap, lWidth, lHeight))
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
    if (!pszFile)
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
    if (!EnterSection(XRES_PALETTE))
        return 1;
    return EachItem(*this, nullptr,
                    [&](const char *pszItem)
                    {
                        const char *const pszFile = GetString(0);
                        if (!pszFile)
                            return Refuse("Unable to get string for \"%s\"", pszItem);
                        CBitmap bitmap;
                        if (!bitmap.Load(pszFile, 0))
                            return (xlong)0;
                        if (!bitmap.m_pPalette || !glb->m_pScreen)
                            return (xlong)1;
                        char *const pszName = NewPaletteName(pszFile);
                        if (!pszName)
                            return xErrorTxt("CResData::SetupPalette: Allocation of memory for palette name failed.");
                        XDELETE_ARRAY(bitmap.m_pPalette->m_pszName);
                        bitmap.m_pPalette->m_pszName = pszName;
                        glb->m_pScreen->SetPalette(bitmap.m_pPalette);
                        return (xlong)1;
                    });
}

xlong CResData::LoadFonts()
{
    if (!EnterSection(XRES_FONTS))
        return 1;
    return EachItem(*this, s_szBitmapTooBig,
                    [&](const char *pszName)
                    {
                        const char *const pszFile = GetString(0);
                        if (!pszFile)
                            return xErrorTxt(s_szBadFile);
                        CNewRecord<TResFont> font(XNEW(TResFont));
                        if (!font)
                            return xError(XERR_MEMORY);
                        TakeName(font->szName, pszName);
                        return font->Font.Load(pszFile, 0) ? font.GiveTo(m_listFonts) : 0;
                    });
}

xlong CResData::LoadBitmaps()
{
    if (!EnterSection(XRES_BITMAPS))
        return 1;
    CLastPicture last(this);
    return EachItem(*this, s_szBitmapTooBig,
                    [&](const char *pszName)
                    {
                        if (ItemType() == 2)
                            return LoadBitmapChunk();
                        CNewRecord<TBitmapRes> bitmap(NewBitmap(pszName, GetString(0)));
                        return bitmap && LoadBitmapA(bitmap.Get(), bitmap->szName, bitmap->szFile)
                                   ? bitmap.GiveTo(m_listBitmaps)
                                   : 0;
                    });
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
    return EachItem(*this, s_szBitmapTooBig,
                    [&](const char *pszName)
                    {
                        CNewRecord<TBitmapRes> bitmap(NewBitmap(pszName, pszFile));
                        return bitmap && Copybitmap(bitmap.Get(), &source) ? bitmap.GiveTo(m_listBitmaps) : 0;
                    }) &&
           ExitChunk();
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
    const TResSection *const pSection = EnterSection(XRES_ANIMATIONS);
    if (!pSection)
        return 1;
    return EachItem(*this, s_szBitmapTooBig,
                    [&](const char *pszName)
                    {
                        CResFields fields;
                        const bool bRead = fields.Read(*this, pSection->Items.pRows->Fields) != 0;
                        if (!bRead && !fields.m_lRead)
                            return xErrorTxt(s_szBadFile);
                        if (!bRead)
                            return Refuse("Failed to read in the frame delay,x,y,w,h,col,row,transFlag data fields for "
                                          "animation \"%s\"",
                                          pszName);
                        CBitmap sheet;
                        if (!sheet.Load(fields.TextAt(0), 0))
                            return xErrorTxt("Failed to load temporary bitmap for anim\n");
                        if (glb->m_pScreen && !glb->m_pScreen->MakeScreenFormat(&sheet, 1))
                            return xErrorTxt("Failed to make screen bitmap for anim\n");
                        CNewRecord<TResAnim> anim(XNEW(TResAnim));
                        if (!anim)
                            return xError(XERR_MEMORY);
                        TakeName(anim->szName, pszName);
                        anim->pAnim = MakeCntrlAnim(&sheet, fields.Number(XRES_AS_WIDTH), fields.Number(XRES_AS_HEIGHT),
                                                    fields.Number(XRES_AS_FRAMES), fields.Number(XRES_AS_PER_ROW), 0, 1,
                                                    fields.Number(XRES_AS_TRANSPARENT));
                        if (!anim->pAnim)
                            return Refuse("Failed to create the \"%s\" animation", pszName);
                        anim->pAnim->ulDelay = (xulong)fields.Number(XRES_AS_DELAY);
                        TCntrlAnim *const pAnim = anim->pAnim;
                        if (anim.GiveTo(m_listAnims))
                            return (xlong)1;
                        FreeCntrlAnim(pAnim);
                        return (xlong)0;
                    });
}
