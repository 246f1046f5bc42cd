// The words of a window chunk that make controls.
#include "gui/resources/guictrl.h"
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
    char *pszText;
    xlong lX, lY, lWidth, lHeight;
    xlong lNumber; // pixels per frame, or the width of a box
    short sHotkey;
    xlong lFlags;
};

const char *NameOf(CResData *pRes, const TGuiCtrl *pGuiCtrl)
{
    const char *const pszName = pRes->GetResName(pGuiCtrl->lID);
    return pszName ? pszName : "";
}

bool GetPlace(CResData *pRes, xlong lIndex, TCreateData &data)
{
    return pRes->GetLong(lIndex, &data.lX) && pRes->GetLong(lIndex + 1, &data.lY) &&
           pRes->GetLong(lIndex + 2, &data.lWidth) && pRes->GetLong(lIndex + 3, &data.lHeight);
}

// Of a radio button or a check box.
bool GetBoxData(CResData *pRes, TCreateData &data)
{
    data.pszText = pRes->GetString(0);
    return data.pszText && GetPlace(pRes, 1, data) && pRes->GetLong(5, &data.lNumber) &&
           pRes->GetHotkey(6, &data.sHotkey) && pRes->GetResFlags(7, &data.lFlags);
}

xlong NoData(CResData *pRes, const TGuiCtrl *pGuiCtrl)
{
    return glb->m_Error.SetErrorf("Unable to get the create data for \"%s\"", NameOf(pRes, pGuiCtrl));
}

xlong FindCreate(CResData *pRes, const char *pszMissing)
{
    return pRes->FindItem("Create", nullptr, nullptr, nullptr) ? 1 : xErrorTxt(pszMissing);
}

bool FindOptional(CResData *pRes, const char *pszKeyword)
{
    return pRes->FindItem(pszKeyword, nullptr, nullptr, nullptr) != 0;
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
    if (!FindCreate(pRes, "\"Create\" keyword missing for static cntrl"))
        return 0;
    TCreateData data = {};
    data.pszText = pRes->GetString(0);
    if (!data.pszText || !GetPlace(pRes, 1, data) || !pRes->GetResFlags(5, &data.lFlags))
        return NoData(pRes, pGuiCtrl);
    CStatic *const pStatic = (CStatic *)pGuiCtrl->pCtrl;
    pStatic->Create(data.pszText, data.lX, data.lY, data.lWidth, data.lHeight, (xulong)data.lFlags);
    pStatic->SetID(pGuiCtrl->lID);
    return GetCommon(pRes, pGuiCtrl, "static");
}

xlong CDialog::GetScrolltext(CResData *pRes, TGuiCtrl *pGuiCtrl)
{
    if (!FindCreate(pRes, "\"Create\" keyword missing for scrolltext cntrl"))
        return 0;
    TCreateData data = {};
    data.pszText = pRes->GetString(0);
    if (!data.pszText || !GetPlace(pRes, 1, data) || !pRes->GetLong(5, &data.lNumber) ||
        !pRes->GetResFlags(6, &data.lFlags))
        return NoData(pRes, pGuiCtrl);
    CScrollText *const pScroll = (CScrollText *)pGuiCtrl->pCtrl;
    if (!pScroll->Create(data.pszText, data.lX, data.lY, data.lWidth, data.lHeight, data.lNumber, data.lFlags))
        return 0;
    pScroll->SetID(pGuiCtrl->lID);
    if (FindOptional(pRes, "Text"))
        pScroll->SetText(pRes->GetString(0));
    if (FindOptional(pRes, "Delay"))
    {
        xulong ulDelay = 0;
        if (!pRes->GetULong(0, &ulDelay))
            return NoData(pRes, pGuiCtrl);
        pScroll->Start(ulDelay);
    }
    return GetCommon(pRes, pGuiCtrl, "scrolltext");
}

xlong CDialog::GetCreateStatic(CResData *pRes, TGuiCtrl *pGuiCtrl)
{
    TCreateData data = {};
    data.pszText = pRes->GetString(1);
    if (!data.pszText || !GetPlace(pRes, 2, data) || !pRes->GetResFlags(6, &data.lFlags))
        return NoData(pRes, pGuiCtrl);
    CStatic *const pStatic = (CStatic *)pGuiCtrl->pCtrl;
    pStatic->Create(data.pszText, data.lX, data.lY, data.lWidth, data.lHeight, (xulong)data.lFlags);
    pStatic->SetID(pGuiCtrl->lID);
    return 1;
}

xlong CDialog::GetButton(CResData *pRes, TGuiCtrl *pGuiCtrl)
{
    if (!FindCreate(pRes, "\"Create\" keyword missing for button cntrl"))
        return 0;
    TCreateData data = {};
    data.pszText = pRes->GetString(0);
    if (!data.pszText || !GetPlace(pRes, 1, data) || !pRes->GetHotkey(5, &data.sHotkey) ||
        !pRes->GetResFlags(6, &data.lFlags))
        return NoData(pRes, pGuiCtrl);
    CButton *const pButton = (CButton *)pGuiCtrl->pCtrl;
    pButton->Create(pGuiCtrl->lID, data.pszText, data.lX, data.lY, data.lWidth, data.lHeight, data.sHotkey,
                    data.lFlags);
    return GetCommon(pRes, pGuiCtrl, "button");
}

xlong CDialog::GetGroupbox(CResData *pRes, TGuiCtrl *pGuiCtrl)
{
    if (!FindCreate(pRes, "\"Create\" keyword missing for groupbox cntrl"))
        return 0;
    TCreateData data = {};
    data.pszText = pRes->GetString(0);
    if (!data.pszText || !GetPlace(pRes, 1, data) || !pRes->GetResFlags(5, &data.lFlags))
        return NoData(pRes, pGuiCtrl);
    CGroupbox *const pGroup = (CGroupbox *)pGuiCtrl->pCtrl;
    pGroup->Create(pGuiCtrl->lID, data.pszText, data.lX, data.lY, data.lWidth, data.lHeight, data.lFlags);
    return GetChildren(pRes, pGuiCtrl);
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
    if (!FindCreate(pRes, "\"Create\" keyword missing for button cntrl"))
        return 0;
    TCreateData data = {};
    if (!GetBoxData(pRes, data))
        return NoData(pRes, pGuiCtrl);
    CRadiobutton *const pRadio = (CRadiobutton *)pGuiCtrl->pCtrl;
    return pRadio->Create(pGuiCtrl->lID, data.pszText, data.lX, data.lY, data.lWidth, data.lHeight, data.lNumber,
                          data.sHotkey, data.lFlags) &&
           GetCommon(pRes, pGuiCtrl, "radio button") && GetCaption(pRes, pGuiCtrl, pRadio->m_pCaption, "radio button");
}

xlong CDialog::GetCheckbox(CResData *pRes, TGuiCtrl *pGuiCtrl)
{
    if (!FindCreate(pRes, "\"Create\" keyword missing for checkbox cntrl"))
        return 0;
    TCreateData data = {};
    if (!GetBoxData(pRes, data))
        return NoData(pRes, pGuiCtrl);
    CCheckbox *const pBox = (CCheckbox *)pGuiCtrl->pCtrl;
    return pBox->Create(pGuiCtrl->lID, data.pszText, data.lX, data.lY, data.lWidth, data.lHeight, data.lNumber,
                        data.sHotkey, data.lFlags) &&
           GetCommon(pRes, pGuiCtrl, "checkbox") && GetCaption(pRes, pGuiCtrl, pBox->m_pCaption, "checkbox");
}

xlong CDialog::GetCaption(CResData *pRes, TGuiCtrl *pGuiCtrl, CControlBase *pCaption, const char *pszTypeWord)
{
    if (!pCaption || !pRes->FindSubChunk("Caption", nullptr, nullptr) || !pRes->EnterChunk())
        return 1;
    xlong lResult = 1;
    if (FindOptional(pRes, "Flags"))
    {
        xlong lFlags = 0;
        if (pRes->GetResFlags(0, &lFlags))
        {
            pCaption->RemoveFlag(s_lCaptionFlags);
            pCaption->SetFlag(lFlags);
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
    if (!FindCreate(pRes, "\"Create\" keyword missing for button cntrl"))
        return 0;
    TCreateData data = {};
    data.pszText = pRes->GetString(0);
    const char *const pszURL = pRes->GetString(1);
    if (!data.pszText || !pszURL || !GetPlace(pRes, 2, data) || !pRes->GetHotkey(6, &data.sHotkey) ||
        !pRes->GetResFlags(7, &data.lFlags))
        return NoData(pRes, pGuiCtrl);
    CURL *const pLink = (CURL *)pGuiCtrl->pCtrl;
    return pLink->Create(pGuiCtrl->lID, data.pszText, pszURL, data.lX, data.lY, data.lWidth, data.lHeight, data.sHotkey,
                         data.lFlags) &&
           GetCommon(pRes, pGuiCtrl, "URL");
}

xlong CDialog::GetCommon(CResData *pRes, TGuiCtrl *pGuiCtrl, const char *pszTypeWord)
{
    CControlBase *const pCtrl = pGuiCtrl->pCtrl;
    CErrorBase &error = glb->m_Error;
    if (FindOptional(pRes, "Bitmap"))
    {
        pCtrl->SetFlag(CNTRL_HASBITMAP);
        if (!SetBitmaps(pRes, pCtrl))
            return error.SetErrorf("Unable to get the Bitmap's in the \"%s\" %s ctrl", NameOf(pRes, pGuiCtrl),
                                   pszTypeWord);
    }
    if (FindOptional(pRes, "TextBufferSize"))
    {
        xlong lSize = 0;
        if (!pRes->GetLong(0, &lSize) || !pCtrl->AllocBuffer(lSize))
            return error.SetErrorf("Unable to get the buffer size in the \"%s\" %s ctrl", NameOf(pRes, pGuiCtrl),
                                   pszTypeWord);
    }
    if (FindOptional(pRes, "Font"))
    {
        CFont *const pFont = pRes->GetFont((xlong)0);
        if (!pFont)
            return error.SetErrorf("Unable to get the font in the \"%s\" %s ctrl", NameOf(pRes, pGuiCtrl), pszTypeWord);
        pCtrl->SetFont(pFont, nullptr);
    }
    if (FindOptional(pRes, "TextColor"))
    {
        TRGBA Color(0, 0, 0);
        if (!pRes->GetColor(0, &Color, 0))
            return error.SetErrorf("Unable to get the text color in the \"%s\" %s ctrl", NameOf(pRes, pGuiCtrl),
                                   pszTypeWord);
        pCtrl->SetTextColor(Color);
    }
    if (FindOptional(pRes, "Colors"))
    {
        TCntrlColor *pColors[4];
        for (xlong l = 0; l < 4; ++l)
        {
            pColors[l] = pRes->GetCntrlColor(l);
            if (!pColors[l])
                return error.SetErrorf("Unable to get color nr %ld in the \"%s\" %s ctrl", (long)l,
                                       NameOf(pRes, pGuiCtrl), pszTypeWord);
        }
        pCtrl->SetColors(pColors[0], pColors[1], pColors[2], pColors[3]);
    }
    if (FindOptional(pRes, "Alpha"))
    {
        xlong lAlpha = 0;
        if (!pRes->GetLong(0, &lAlpha))
            return error.SetErrorf("Unable to get the alpha value for \"%s\" %s ctrl", NameOf(pRes, pGuiCtrl),
                                   pszTypeWord);
        pCtrl->SetAlpha(lAlpha);
        pCtrl->SetFlag(CNTRL_ALPHA);
    }
    return 1;
}

xlong CDialog::SetBitmaps(CResData *pRes, CControlBase *pCtrl)
{
    CBitmap *pReleased = nullptr, *pPressed = nullptr, *pHighlight = nullptr, *pDisabled = nullptr;
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
    static const struct
    {
        const char *pszWord;
        xlong lType;
        TMakeControl pfnMake;
        xlong (CDialog::*pfnBuild)(CResData *pRes, TGuiCtrl *pGuiCtrl);
    } s_Words[] = {
        { "Static", XDLG_STATIC, Make<CStatic>, &CDialog::GetStatic },
        { "Button", XDLG_BUTTON, Make<CButton>, &CDialog::GetButton },
        { "Radio", XDLG_RADIOBUTTON, Make<CRadiobutton>, &CDialog::GetRadiobtn },
        { "Checkbox", XDLG_CHECKBOX, Make<CCheckbox>, &CDialog::GetCheckbox },
        { "Groupbox", XDLG_GROUPBOX, Make<CGroupbox>, &CDialog::GetGroupbox },
        { "Scrolltext", XDLG_SCROLLTEXT, Make<CScrollText>, &CDialog::GetScrolltext },
        { "URL", XDLG_URL, Make<CURL>, &CDialog::GetURL },
    };
    pOut = nullptr;
    const char *const pszKeyword = pRes->GetKeyword();
    const char *const pszWord = pRes->GetString(0);
    if (!pszKeyword)
        return 0;
    const bool bShort = xStricmp(pszKeyword, "CreateStatic") == 0;
    if (!bShort && (xStrcmp(pszKeyword, "{") != 0 || !pszWord))
        return 0;
    const char *const pszName = bShort ? pszWord : pRes->GetString(1);
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
    const bool bInGroup = pParent && pParent->lType == XDLG_GROUPBOX;
    if (bShort)
    {
        pOut->pCtrl = Make<CStatic>();
        if (!pOut->pCtrl)
            xError(XERR_MEMORY);
        if (!pOut->pCtrl || !GetCreateStatic(pRes, pOut))
            return 1;
        if (bInGroup)
            glb->m_Error.SetErrorf("Unable to add a %s to a groupbox", pszKeyword);
        return bInGroup;
    }
    if (!pRes->EnterChunk())
        return 0;
    xlong lFailed = 1;
    bool bKnown = false;
    for (const auto &word : s_Words)
    {
        if (xStricmp(pszWord, word.pszWord) != 0)
            continue;
        bKnown = true;
        pOut->lType = word.lType;
        // A box in a box fails in any case, before scripts can nest them without end.
        const bool bNested = bInGroup && word.lType == XDLG_GROUPBOX;
        pOut->pCtrl = bNested ? nullptr : word.pfnMake();
        if (!pOut->pCtrl && !bNested)
            xError(XERR_MEMORY);
        else if (bNested || (this->*word.pfnBuild)(pRes, pOut))
        {
            lFailed = bInGroup && word.lType != XDLG_RADIOBUTTON;
            if (lFailed)
                glb->m_Error.SetErrorf("Unable to add a %s to a groupbox", pszWord);
        }
        break;
    }
    if (!bKnown)
        glb->m_Error.SetErrorf("Unknown window control type (%s)", pszWord);
    pRes->ExitChunk();
    return lFailed;
}
