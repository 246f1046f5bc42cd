// Which window is active and which control has the keyboard, after clicks.
#include "gui/guisupport.h"
#include "tarvix/button.h"
#include "tarvix/titlebar.h"

namespace
{
class CFocusTest : public CGuiTest
{
protected:
    CFocusTest()
    {
        m_Below.Create(1, m_szTitle, 20, 20, 200, 150, XWIN_TITLEBAR | XWIN_FRAME);
        m_Button.Create(10, m_szTitle, 20, 20, 80, 30, 0, CNTRL_TABSTOP);
        m_Below.AddCntrl(&m_Button);
        Show(m_Below);
    }

    static void OpenAnother(xlong lMsg, xlong, xlong, xparam, void *pUser)
    {
        CFocusTest &test = *(CFocusTest *)pUser;
        if (lMsg != XGUIMSG_PRESSED || test.m_Above.m_lID)
            return;
        test.m_Above.Create(2, test.m_szTitle, 300, 200, 200, 150, XWIN_TITLEBAR | XWIN_FRAME);
        glb->m_pWinCtrl->AddWindow(&test.m_Above, nullptr, nullptr);
    }

    char m_szTitle[4] = "xy";
    CWindow m_Below, m_Above;
    CButton m_Button;
};
} // namespace

TEST_F(CFocusTest, AClickInFrontLeavesTheKeyboardWhereItIs)
{
    m_Below.SetFocus(&m_Button);
    Click(60, 70);
    EXPECT_EQ(&m_Button, m_Below.m_pFocus);
    Click(600, 400);
    EXPECT_EQ(nullptr, m_Below.m_pFocus) << "beside all windows";
    EXPECT_EQ(0, m_Below.m_bActive);
}

TEST_F(CFocusTest, APressThatOpensAWindowLeavesOneActive)
{
    glb->m_pWinCtrl->RemoveWindow(1);
    glb->m_pWinCtrl->AddWindow(&m_Below, OpenAnother, this);
    Frame();
    Click(60, 70);
    ASSERT_EQ(2, m_Above.m_lID) << "the press never came";
    Frame();
    EXPECT_EQ(0, m_Below.m_bActive);
    EXPECT_EQ(1, m_Above.m_bActive);
    EXPECT_EQ(XGUI_RELEASED, m_Below.m_pTitlebar->GetState());
    EXPECT_EQ(XGUI_HIGHLIGHT, m_Above.m_pTitlebar->GetState());
}
