// The words of a window chunk that make controls.
#include "gui/resources/guictrl.h"
#include "gui/resources/resfields.h"
#include "tarvix/button.h"
#include "tarvix/checkbox.h"
#include "tarvix/error.h"
#include "tarvix/globals.h"
#include "tarvix/groupbox.h"
#include "tarvix/radiobutton.h"
#include "tarvix/resdata.h"
#include "tarvix/static.h"
#include "tarvix/strings.h"
#include "tarvix/url.h"

namespace
{
const xlong s_lCaptionFlags = 0xFFFF; // that the "Flags" of a caption replace

// What the "Create" items have in common.
struct TCreateData
{
    char *pszText, *pszAddress;
    xlong lX, lY, lWidth, lHeight;
    xlong lBox, lSpeed;
    short sHotkey;
    xlong lFlags;
};

const char *NameOf(CResData *pRes, const TGuiCtrl *pGuiCtrl)
{
    const char *const pszName = pRes->GetResName(pGuiCtrl->lID);
    return pszName ? pszName : "";
}

const TResControl *GrammarOf(xlong lType)
{
    for (const TResControl &control : xResGrammar().Controls)
        if (control.lType == lType)
            return &control;
    return nullptr;
}

xlong ReadData(CResData *pRes, const TGuiCtrl *pGuiCtrl, const TResItem &item, TCreateData &data)
{
    CResFields fields;
    if (!fields.Read(*pRes, item.Fields))
        return glb->m_Error.SetErrorf("Unable to get the create data for \"%s\"", NameOf(pRes, pGuiCtrl));
    data = { fields.Text(XRES_AS_TEXT),   fields.Text(XRES_AS_ADDRESS), fields.Number(XRES_AS_X),
             fields.Number(XRES_AS_Y),    fields.Number(XRES_AS_WIDTH), fields.Number(XRES_AS_HEIGHT),
             fields.Number(XRES_AS_BOX),  fields.Number(XRES_AS_SPEED), (short)fields.Number(XRES_AS_KEY),
             fields.Number(XRES_AS_FLAGS) };
    return 1;
}

// @param pszWord  for the control in the report of a missing item
xlong ReadCreate(CResData *pRes, const TGuiCtrl *pGuiCtrl, const char *pszWord, TCreateData &data)
{
    const TResItem *const pItem = FindItemOf(*pRes, GrammarOf(pGuiCtrl->lType)->Items, XRES_ITEM_CREATE);
    return pItem ? ReadData(pRes, pGuiCtrl, *pItem, data)
                 : glb->m_Error.SetErrorf("\"Create\" keyword missing for %s cntrl", pszWord);
}

void MakeStatic(const TGuiCtrl *pGuiCtrl, const TCreateData &data)
{
    CStatic *const pStatic = (CStatic *)pGuiCtrl->pCtrl;
    pStatic->Create(data.pszText, data.lX, data.lY, data.lWidth, data.lHeight, (xulong)data.lFlags);
    pStatic->SetID(pGuiCtrl->lID);
}

// Takes an item that all controls have.
xlong Apply(xlong lItem, CControlBase *pCtrl, const CResFields &fields)
{
    switch (lItem)
    {
    case XRES_ITEM_BITMAP:
        return pCtrl->SetBitmap(fields.BitmapAt(0), fields.BitmapAt(1), fields.BitmapAt(2), fields.BitmapAt(3));
    case XRES_ITEM_TEXTBUFFERSIZE:
        return pCtrl->AllocBuffer(fields.NumberAt(0)) != nullptr;
    case XRES_ITEM_FONT:
        pCtrl->SetFont(fields.FontAt(0), nullptr);
        return 1;
    case XRES_ITEM_TEXTCOLOR:
        pCtrl->SetTextColor(fields.Color());
        return 1;
    case XRES_ITEM_COLORS:
        pCtrl->SetColors(fields.ColorsAt(0), fields.ColorsAt(1), fields.ColorsAt(2), fields.ColorsAt(3));
        return 1;
    case XRES_ITEM_ALPHA:
        pCtrl->SetAlpha(fields.NumberAt(0));
        pCtrl->SetFlag(CNTRL_ALPHA);
        return 1;
    }
    return 0;
}

// @param lRead  the string that can't be read
xlong RefuseCommon(xlong lItem, xlong lRead, const char *pszName, const char *pszTypeWord)
{
    static const struct
    {
        xlong lItem;
        const char *pszFault;
    } s_Faults[] = { { XRES_ITEM_BITMAP, "Unable to get the Bitmap's in the \"%s\" %s ctrl" },
                     { XRES_ITEM_TEXTBUFFERSIZE, "Unable to get the buffer size in the \"%s\" %s ctrl" },
                     { XRES_ITEM_FONT, "Unable to get the font in the \"%s\" %s ctrl" },
                     { XRES_ITEM_TEXTCOLOR, "Unable to get the text color in the \"%s\" %s ctrl" },
                     { XRES_ITEM_ALPHA, "Unable to get the alpha value for \"%s\" %s ctrl" } };
    for (const auto &fault : s_Faults)
        if (fault.lItem == lItem)
            return glb->m_Error.SetErrorf(fault.pszFault, pszName, pszTypeWord);
    return glb->m_Error.SetErrorf("Unable to get color nr %ld in the \"%s\" %s ctrl", (long)lRead, pszName,
                                  pszTypeWord);
}

typedef CControlBase *(*TMakeControl)();

template <class T>
CControlBase *Make()
{
    return XNEW(T);
}
} // namespace

xlong CDialog::GetStatic(CResData *pRes, TGuiCtrl *pGuiCtrl)
{
    TCreateData data;
    if (!ReadCreate(pRes, pGuiCtrl, "static", data))
        return 0;
    MakeStatic(pGuiCtrl, data);
    return GetCommon(pRes, pGuiCtrl, "static");
}

xlong CDialog::GetScrolltext(CResData *pRes, TGuiCtrl *pGuiCtrl)
{
    TCreateData data;
    CScrollText *const pScroll = (CScrollText *)pGuiCtrl->pCtrl;
    if (!ReadCreate(pRes, pGuiCtrl, "scrolltext", data) ||
        !pScroll->Create(data.pszText, data.lX, data.lY, data.lWidth, data.lHeight, data.lSpeed, data.lFlags))
        return 0;
    pScroll->SetID(pGuiCtrl->lID);
    const TResRows<TResItem> &items = GrammarOf(pGuiCtrl->lType)->Items;
    CResFields fields;
    if (const TResItem *pItem = FindItemOf(*pRes, items, XRES_ITEM_TEXT); pItem && fields.Read(*pRes, pItem->Fields))
        pScroll->SetText(fields.TextAt(0));
    if (const TResItem *pItem = FindItemOf(*pRes, items, XRES_ITEM_DELAY))
    {
        if (!fields.Read(*pRes, pItem->Fields))
            return glb->m_Error.SetErrorf("Unable to get the create data for \"%s\"", NameOf(pRes, pGuiCtrl));
        pScroll->Start((xulong)fields.NumberAt(0));
    }
    return GetCommon(pRes, pGuiCtrl, "scrolltext");
}

xlong CDialog::GetCreateStatic(CResData *pRes, TGuiCtrl *pGuiCtrl)
{
    TCreateData data;
    const TResItem *const pItem = xFindResItem(xResGrammar().Sections.pRows[XRES_WINDOW].Items, pRes->GetKeyword());
    if (!pItem || !ReadData(pRes, pGuiCtrl, *pItem, data))
        return 0;
    MakeStatic(pGuiCtrl, data);
    return 1;
}

xlong CDialog::GetButton(CResData *pRes, TGuiCtrl *pGuiCtrl)
{
    TCreateData data;
    return ReadCreate(pRes, pGuiCtrl, "button", data) &&
           ((CButton *)pGuiCtrl->pCtrl)
               ->Create(pGuiCtrl->lID, data.pszText, data.lX, data.lY, data.lWidth, data.lHeight, data.sHotkey,
                        data.lFlags) &&
           GetCommon(pRes, pGuiCtrl, "button");
}

xlong CDialog::GetGroupbox(CResData *pRes, TGuiCtrl *pGuiCtrl)
{
    TCreateData data;
    return ReadCreate(pRes, pGuiCtrl, "groupbox", data) &&
           ((CGroupbox *)pGuiCtrl->pCtrl)
               ->Create(pGuiCtrl->lID, data.pszText, data.lX, data.lY, data.lWidth, data.lHeight, data.lFlags) &&
           GetChildren(pRes, pGuiCtrl);
}

xlong CDialog::GetChildren(CResData *pRes, TGuiCtrl *pGuiCtrl)
{
    CGroupbox *const pGroup = (CGroupbox *)pGuiCtrl->pCtrl;
    for (pRes->FirstItem(); pRes->ItemExists(); pRes->NextItem(0))
    {
        if (pRes->IsComment())
            continue;
        TGuiCtrl *pChild = nullptr;
        if (GetCntrl(pRes, pChild, pGuiCtrl))
        {
            FreeGuiCtrl(pChild);
            return 0;
        }
        if (!pChild)
            continue;
        if (!m_GuiCtrls.InsertLast(pChild))
        {
            FreeGuiCtrl(pChild);
            return xError(XERR_MEMORY);
        }
        if (!pGroup->Add((CRadiobutton *)pChild->pCtrl))
            return 0;
    }
    return 1;
}

xlong CDialog::GetRadiobtn(CResData *pRes, TGuiCtrl *pGuiCtrl)
{
    TCreateData data;
    CRadiobutton *const pRadio = (CRadiobutton *)pGuiCtrl->pCtrl;
    return ReadCreate(pRes, pGuiCtrl, "button", data) &&
           pRadio->Create(pGuiCtrl->lID, data.pszText, data.lX, data.lY, data.lWidth, data.lHeight, data.lBox,
                          data.sHotkey, data.lFlags) &&
           GetCommon(pRes, pGuiCtrl, "radio button") && GetCaption(pRes, pGuiCtrl, pRadio->m_pCaption, "radio button");
}

xlong CDialog::GetCheckbox(CResData *pRes, TGuiCtrl *pGuiCtrl)
{
    TCreateData data;
    CCheckbox *const pBox = (CCheckbox *)pGuiCtrl->pCtrl;
    return ReadCreate(pRes, pGuiCtrl, "checkbox", data) &&
           pBox->Create(pGuiCtrl->lID, data.pszText, data.lX, data.lY, data.lWidth, data.lHeight, data.lBox,
                        data.sHotkey, data.lFlags) &&
           GetCommon(pRes, pGuiCtrl, "checkbox") && GetCaption(pRes, pGuiCtrl, pBox->m_pCaption, "checkbox");
}

xlong CDialog::GetCaption(CResData *pRes, TGuiCtrl *pGuiCtrl, CControlBase *pCaption, const char *pszTypeWord)
{
    const TResPart &part = *GrammarOf(pGuiCtrl->lType)->Parts.begin();
    if (!pCaption || !pRes->FindSubChunk(part.pszWord, nullptr, nullptr) || !pRes->EnterChunk())
        return 1;
    xlong lResult = 1;
    if (const TResItem *pItem = FindItemOf(*pRes, part.Items, XRES_ITEM_FLAGS))
    {
        CResFields fields;
        if (fields.Read(*pRes, pItem->Fields))
        {
            pCaption->RemoveFlag(s_lCaptionFlags);
            pCaption->SetFlag(fields.NumberAt(0));
        }
        else
            lResult = glb->m_Error.SetErrorf("Unable to get the flags for \"%s\" textfield", NameOf(pRes, pGuiCtrl));
    }
    TGuiCtrl caption = { XDLG_STATIC, pGuiCtrl->lID, pCaption };
    lResult = lResult && GetCommon(pRes, &caption, pszTypeWord);
    pRes->ExitChunk();
    return lResult;
}

xlong CDialog::GetURL(CResData *pRes, TGuiCtrl *pGuiCtrl)
{
    TCreateData data;
    return ReadCreate(pRes, pGuiCtrl, "button", data) &&
           ((CURL *)pGuiCtrl->pCtrl)
               ->Create(pGuiCtrl->lID, data.pszText, data.pszAddress, data.lX, data.lY, data.lWidth, data.lHeight,
                        data.sHotkey, data.lFlags) &&
           GetCommon(pRes, pGuiCtrl, "URL");
}

xlong CDialog::GetCommon(CResData *pRes, TGuiCtrl *pGuiCtrl, const char *pszTypeWord)
{
    CResFields fields;
    for (const TResItem &item : xResGrammar().Common)
    {
        if (!pRes->FindItem(item.pszWord, nullptr, nullptr, nullptr))
            continue;
        if (item.lItem == XRES_ITEM_BITMAP)
            pGuiCtrl->pCtrl->SetFlag(CNTRL_HASBITMAP);
        if (!fields.Read(*pRes, item.Fields) || !Apply(item.lItem, pGuiCtrl->pCtrl, fields))
            return RefuseCommon(item.lItem, fields.m_lRead, NameOf(pRes, pGuiCtrl), pszTypeWord);
    }
    return 1;
}

xlong CDialog::SetBitmaps(CResData *pRes, CControlBase *pCtrl)
{
    CBitmap *pReleased, *pPressed, *pHighlight, *pDisabled;
    return GetBitmaps(pRes, pReleased, pPressed, pHighlight, pDisabled) &&
           pCtrl->SetBitmap(pReleased, pPressed, pHighlight, pDisabled);
}

xlong CDialog::GetBitmaps(CResData *pRes, CBitmap *&pReleased, CBitmap *&pPressed, CBitmap *&pHighlight,
                          CBitmap *&pDisabled)
{
    pReleased = pRes->GetBitmap(0);
    pPressed = pRes->GetBitmap(1);
    pHighlight = pRes->GetBitmap(2);
    pDisabled = pRes->GetBitmap(3);
    return pReleased && pPressed && pHighlight && pDisabled;
}

xlong CDialog::GetCntrl(CResData *pRes, TGuiCtrl *&pOut, TGuiCtrl *pParent)
{
    struct TBuilder
    {
        xlong lType;
        TMakeControl pfnMake;
        xlong (CDialog::*pfnBuild)(CResData *pRes, TGuiCtrl *pGuiCtrl);
    };
    static const TBuilder s_Builders[] = {
        { XDLG_STATIC, Make<CStatic>, &CDialog::GetStatic },
        { XDLG_BUTTON, Make<CButton>, &CDialog::GetButton },
        { XDLG_RADIOBUTTON, Make<CRadiobutton>, &CDialog::GetRadiobtn },
        { XDLG_CHECKBOX, Make<CCheckbox>, &CDialog::GetCheckbox },
        { XDLG_GROUPBOX, Make<CGroupbox>, &CDialog::GetGroupbox },
        { XDLG_SCROLLTEXT, Make<CScrollText>, &CDialog::GetScrolltext },
        { XDLG_URL, Make<CURL>, &CDialog::GetURL },
    };
    pOut = nullptr;
    const char *const pszKeyword = pRes->GetKeyword();
    const char *const pszString = pRes->GetString(0);
    if (!pszKeyword)
        return 0;
    const bool bChunk = xStrcmp(pszKeyword, "{") == 0;
    const TResItem *const pShort =
        bChunk ? nullptr : xFindResItem(xResGrammar().Sections.pRows[XRES_WINDOW].Items, pszKeyword);
    const bool bShort = pShort && (pShort->lRules & XRES_MAKES);
    if (!bShort && (!bChunk || !pszString))
        return 0;
    const char *const pszWord = bShort ? pszKeyword : pszString;
    const char *const pszName = bShort ? pszString : pRes->GetString(1);
    xlong lID = 0;
    if (!pszName || !pRes->GetResId(pszName, &lID))
    {
        if (bShort)
            glb->m_Error.SetErrorf("Missing control id for : %s", pszName ? pszName : "");
        else
            glb->m_Error.SetErrorf("Missing control id for : %s, %s", pszWord, pszName ? pszName : "");
        return 1;
    }
    pOut = XNEW(TGuiCtrl);
    if (!pOut)
    {
        xError(XERR_MEMORY);
        return 1;
    }
    *pOut = { XDLG_STATIC, lID, nullptr };
    if (!bShort && !pRes->EnterChunk())
        return 0;
    const TResControl *const pControl = bShort ? GrammarOf(XDLG_STATIC) : xFindResControl(pszWord);
    const TBuilder *pBuilder = nullptr;
    for (const TBuilder &builder : s_Builders)
        if (pControl && builder.lType == pControl->lType)
            pBuilder = &builder;
    const xlong lChildren = pParent ? GrammarOf(pParent->lType)->lChildren : -1;
    xlong lFailed = 1;
    if (!pBuilder)
        glb->m_Error.SetErrorf("Unknown window control type (%s)", pszWord);
    else
    {
        pOut->lType = pBuilder->lType;
        // A box in a box fails in any case, before scripts can nest them without end.
        const bool bNested = lChildren != -1 && pOut->lType == XDLG_GROUPBOX;
        pOut->pCtrl = bNested ? nullptr : pBuilder->pfnMake();
        const auto pfnBuild = bShort ? &CDialog::GetCreateStatic : pBuilder->pfnBuild;
        if (!pOut->pCtrl && !bNested)
            xError(XERR_MEMORY);
        else if (bNested || (this->*pfnBuild)(pRes, pOut))
        {
            lFailed = lChildren != -1 && pOut->lType != lChildren;
            if (lFailed)
                glb->m_Error.SetErrorf("Unable to add a %s to a groupbox", pszWord);
        }
    }
    if (!bShort)
        pRes->ExitChunk();
    return lFailed;
}
