#include "tarvix/dialog.h"

#include "gui/resources/guictrl.h"
#include "gui/resources/resfields.h"
#include "tarvix/control.h"
#include "tarvix/error.h"
#include "tarvix/frame.h"
#include "tarvix/globals.h"
#include "tarvix/resdata.h"
#include "tarvix/titlebar.h"

namespace
{
enum
{
    DIALOG_HIDDEN = 1 // of Create
};

const TResSection &WindowGrammar()
{
    return xResGrammar().Sections.pRows[XRES_WINDOW];
}

// Flags of a part of the window, with bitmaps when they ask for them. The texts
// are those of the title bar for the frame's bitmaps too.
// @param pPart  null where a script asks for what its window lacks
// @return 1 also without flags in the script, and bThere tells which
xlong ReadPart(CResData *pRes, CControlBase *pPart, xlong lFlagsItem, xlong lBitmapItem, const char *pszFault,
               bool &bThere)
{
    const TResItem *const pFlags = FindItemOf(*pRes, WindowGrammar().Items, lFlagsItem);
    bThere = pFlags != nullptr;
    if (!pFlags)
        return 1;
    CResFields fields;
    if (!pPart || !fields.Read(*pRes, pFlags->Fields))
        return xErrorTxt(pszFault);
    pPart->SetFlag(fields.NumberAt(0));
    if (!(fields.NumberAt(0) & CNTRL_HASBITMAP))
        return 1;
    const TResItem *const pBitmap = FindItemOf(*pRes, WindowGrammar().Items, lBitmapItem);
    if (!pBitmap)
        return xErrorTxt("Unable to find the titlebar bitmap keyword");
    return fields.Read(*pRes, pBitmap->Fields) &&
                   pPart->SetBitmap(fields.BitmapAt(0), fields.BitmapAt(1), fields.BitmapAt(2), fields.BitmapAt(3))
               ? 1
               : xErrorTxt("Unable to get all the titlebar bitmaps");
}
} // namespace

void FreeGuiCtrl(TGuiCtrl *pGuiCtrl)
{
    if (!pGuiCtrl)
        return;
    XDELETE(pGuiCtrl->pCtrl);
    XDELETE(pGuiCtrl);
}

CDialog::CDialog() = default;

CDialog::~CDialog()
{
    CDialog::Destroy();
}

xlong CDialog::Create(CResData *pRes, xlong lID, TGuiCallback pfnCallback, xlong lFlags, void *pUser)
{
    const char *const pszName = pRes->GetResName(lID);
    if (!pszName)
        return xErrorTxt("Unknown id");
    pRes->RestartMode(1);
    pRes->MainChunk();
    pRes->FirstItem();
    if (!pRes->FindItem("{", WindowGrammar().pszWord, pszName, nullptr))
        return xErrorTxt("Unable to find specified window in the resource data");
    if (!pRes->EnterChunk() || !FindItemOf(*pRes, WindowGrammar().Items, XRES_ITEM_CREATE))
        return xErrorTxt("\"Create\" keyword missing for window");
    {
        const CResData::TNoChange noChange(*pRes);
        if (!BuildWindow(pRes, lID))
        {
            CWindow::Destroy();
            return 0;
        }
    }
    if (!glb->m_pWinCtrl || !glb->m_pWinCtrl->AddWindow(this, pfnCallback, pUser))
    {
        CWindow::Destroy();
        return 0;
    }
    if (lFlags & DIALOG_HIDDEN)
        HideWindow();
    else
        ShowWindow();
    return 1;
}

xlong CDialog::BuildWindow(CResData *pRes, xlong lID)
{
    const TResItem *const pItem = xFindResItem(WindowGrammar().Items, pRes->GetKeyword());
    CResFields fields;
    if (!pItem || !fields.Read(*pRes, pItem->Fields))
        return xErrorTxt("Unable to get the windows create data");
    if (!CWindow::Create(lID, fields.Text(XRES_AS_TEXT), fields.Number(XRES_AS_X), fields.Number(XRES_AS_Y),
                         fields.Number(XRES_AS_WIDTH), fields.Number(XRES_AS_HEIGHT), fields.Number(XRES_AS_FLAGS)) ||
        !GetTitlebar(pRes) || !GetFrame(pRes))
        return 0;
    for (pRes->FirstItem(); pRes->ItemExists(); pRes->NextItem(0))
    {
        if (pRes->IsComment())
            continue;
        TGuiCtrl *pGuiCtrl = nullptr;
        if (GetCntrl(pRes, pGuiCtrl, nullptr))
        {
            FreeGuiCtrl(pGuiCtrl);
            return 0;
        }
        if (!pGuiCtrl)
            continue;
        if (!m_GuiCtrls.InsertLast(pGuiCtrl))
        {
            FreeGuiCtrl(pGuiCtrl);
            return xError(XERR_MEMORY);
        }
        if (pGuiCtrl->pCtrl && !AddCntrl(pGuiCtrl->pCtrl))
            return 0;
    }
    return 1;
}

xlong CDialog::Destroy()
{
    if (!glb)
        return 0;
    if (glb->m_pWinCtrl)
        glb->m_pWinCtrl->TakeWindow(this);
    CWindow::Destroy();
    while (m_GuiCtrls.First())
    {
        FreeGuiCtrl((TGuiCtrl *)m_GuiCtrls.Get());
        m_GuiCtrls.Delete();
    }
    return 1;
}

CControlBase *CDialog::GetCtrl(xlong lID)
{
    TGuiCtrl *const pGuiCtrl = GetGuiCtrl(lID);
    return pGuiCtrl && pGuiCtrl->lID == lID ? pGuiCtrl->pCtrl : nullptr;
}

TGuiCtrl *CDialog::GetGuiCtrl(xlong lID)
{
    if (lID == -1)
        return m_GuiCtrls.Exists() ? (TGuiCtrl *)m_GuiCtrls.Get() : nullptr;
    for (m_GuiCtrls.First(); m_GuiCtrls.Exists(); m_GuiCtrls.Next())
        if (((TGuiCtrl *)m_GuiCtrls.Get())->lID == lID)
            return (TGuiCtrl *)m_GuiCtrls.Get();
    return nullptr;
}

xlong CDialog::First()
{
    return m_GuiCtrls.First();
}

xlong CDialog::Next()
{
    return m_GuiCtrls.Next();
}

xlong CDialog::Exists()
{
    return m_GuiCtrls.Exists();
}

xlong CDialog::SetText(xlong lID, char *pszText)
{
    CControlBase *const pCtrl = GetCtrl(lID);
    return pCtrl ? pCtrl->SetText(pszText) : 0;
}

char *CDialog::GetTextBuffer(xlong lID, xlong bValidate)
{
    CControlBase *const pCtrl = GetCtrl(lID);
    return pCtrl ? pCtrl->GetTextBuffer(bValidate) : nullptr;
}

xlong CDialog::GetTextBufferSize(xlong lID)
{
    CControlBase *const pCtrl = GetCtrl(lID);
    return pCtrl ? pCtrl->GetTextBufferSize() : 0;
}

xlong CDialog::GetTitlebar(CResData *pRes)
{
    bool bThere;
    return ReadPart(pRes, m_pTitlebar, XRES_ITEM_TITLEBARFLAGS, XRES_ITEM_TITLEBARBITMAP,
                    "Unable to get the titlebar flags", bThere);
}

xlong CDialog::GetFrame(CResData *pRes)
{
    bool bThere;
    if (!ReadPart(pRes, m_pFrame, XRES_ITEM_FRAMEFLAGS, XRES_ITEM_FRAMEBITMAP, "Unable to get the frame flags", bThere))
        return 0;
    const TResItem *const pColors = bThere ? FindItemOf(*pRes, WindowGrammar().Items, XRES_ITEM_COLORS) : nullptr;
    if (!pColors)
        return 1;
    CResFields fields;
    if (!fields.Read(*pRes, pColors->Fields))
        return glb->m_Error.SetErrorf("Unable to get color nr %ld in the frame", (long)fields.m_lRead);
    return m_pFrame->SetColors(fields.ColorsAt(0), fields.ColorsAt(1), fields.ColorsAt(2), fields.ColorsAt(3));
}
