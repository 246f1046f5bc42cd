// Any bytes as a resource text: its dialogs are built, drawn and clicked.
#include "fuzz/gui/resources.h"
#include "fuzz/gui/screen.h"
#include "tarvix/dialog.h"
#include "tarvix/keyboard.h"
#include "tarvix/mouse.h"

#include <memory>
#include <vector>

namespace
{
void Frame(xlong lX, xlong lY, xulong ulButtons)
{
    glb->m_pMouse->m_lX = lX;
    glb->m_pMouse->m_lY = lY;
    glb->m_pMouse->m_ulButtons = ulButtons;
    glb->m_pScreen->FlipPage();
    glb->m_pScreen->ClearBuffer();
}

// Hides what is closed, as hosts do.
void OnMessage(xlong lMsg, xlong, xlong lCntrl, xparam, void *pUser)
{
    if (lMsg == XGUIMSG_RELEASED && lCntrl == XCNTRL_CLOSE)
        ((CDialog *)pUser)->HideWindow();
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *pData, size_t ulSize)
{
    FuzzStart();
    MakeResourceFiles();
    StartScreen();
    const std::string strText((const char *)pData, ulSize);
    if (HasLargeNumber(strText))
        return 0;
    CResData res;
    if (!res.Import(strText.c_str()))
        return 0;
    std::vector<std::unique_ptr<CDialog>> dialogs;
    for (const CNode *pNode = res.m_listDefines.m_pFirst; pNode && dialogs.size() < 12; pNode = pNode->pNext)
    {
        dialogs.push_back(std::make_unique<CDialog>());
        glb->m_Error.Clear();
        const xlong lWindows = glb->m_pWinCtrl->m_Windows.GetNumNodes();
        if (!dialogs.back()->Create(&res, ((TResDefine *)pNode->pData)->lId, OnMessage, 0, dialogs.back().get()) &&
            (!glb->m_Error.GetErrCode() || glb->m_pWinCtrl->m_Windows.GetNumNodes() != lWindows))
            abort();
    }
    for (xlong l = 0; l < 24; ++l)
    {
        Frame(l * 37 % 120, l * 29 % 90, l % 3 == 1);
        xUpdateObjTimers();
        FaceAdvanceClock(30);
        if (l % 4 == 0)
            glb->m_pKeyboard->AddKeyToQueue((unsigned short)(l % 8 ? XKEY_TAB : XKEY_ENTER), 1, 0);
    }
    dialogs.clear();
    if (glb->m_pWinCtrl->m_Windows.GetNumNodes())
        abort();
    return 0;
}
