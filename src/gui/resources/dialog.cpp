#include "tarvix/dialog.h"

#include "gui/resources/guictrl.h"
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
    if (!pRes->FindItem("{", "Window", pszName, nullptr))
        return xErrorTxt("Unable to find specified window in the resource data");
    if (!pRes->EnterChunk() || !pRes->FindItem("Create", nullptr, nullptr, nullptr))
        return xErrorTxt("\"Create\" keyword missing for window");
    if (!BuildWindow(pRes, lID))
    {
        CWindow::Destroy();
        return 0;
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
    char *const pszTitle = pRes->GetString(0);
    xlong lX = 0, lY = 0, lWidth = 0, lHeight = 0, lFlags = 0;
    if (!pszTitle || !pRes->GetLong(1, &lX) || !pRes->GetLong(2, &lY) || !pRes->GetLong(3, &lWidth) ||
        !pRes->GetLong(4, &lHeight) || !pRes->GetResFlags(5, &lFlags))
        return xErrorTxt("Unable to get the windows create data");
    if (!CWindow::Create(lID, pszTitle, lX, lY, lWidth, lHeight, lFlags) || !GetTitlebar(pRes) || !GetFrame(pRes))
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
    if (!pRes->FindItem("TitlebarFlags", nullptr, nullptr, nullptr))
        return 1;
    xlong lFlags = 0;
    // A script can ask for flags of a title bar that its window lacks.
    if (!m_pTitlebar || !pRes->GetResFlags(0, &lFlags))
        return xErrorTxt("Unable to get the titlebar flags");
    m_pTitlebar->SetFlag(lFlags);
    if (!(lFlags & CNTRL_HASBITMAP))
        return 1;
    if (!pRes->FindItem("TitlebarBitmap", nullptr, nullptr, nullptr))
        return xErrorTxt("Unable to find the titlebar bitmap keyword");
    return SetBitmaps(pRes, m_pTitlebar) ? 1 : xErrorTxt("Unable to get all the titlebar bitmaps");
}

xlong CDialog::GetFrame(CResData *pRes)
{
    if (!pRes->FindItem("FrameFlags", nullptr, nullptr, nullptr))
        return 1;
    xlong lFlags = 0;
    if (!m_pFrame || !pRes->GetResFlags(0, &lFlags))
        return xErrorTxt("Unable to get the frame flags");
    m_pFrame->SetFlag(lFlags);
    if (lFlags & CNTRL_HASBITMAP)
    {
        // The texts of the title bar are meant.
        if (!pRes->FindItem("FrameBitmap", nullptr, nullptr, nullptr))
            return xErrorTxt("Unable to find the titlebar bitmap keyword");
        if (!SetBitmaps(pRes, m_pFrame))
            return xErrorTxt("Unable to get all the titlebar bitmaps");
    }
    if (!pRes->FindItem("Colors", nullptr, nullptr, nullptr))
        return 1;
    TCntrlColor *pColors[4];
    for (xlong l = 0; l < 4; ++l)
    {
        pColors[l] = pRes->GetCntrlColor(l);
        if (!pColors[l])
            return glb->m_Error.SetErrorf("Unable to get color nr %ld in the frame", (long)l);
    }
    return m_pFrame->SetColors(pColors[0], pColors[1], pColors[2], pColors[3]);
}
