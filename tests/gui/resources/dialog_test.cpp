#include "tarvix/dialog.h"

#include "core/heap.h"
#include "gui/guisupport.h"
#include "tarvix/button.h"
#include "tarvix/checkbox.h"
#include "tarvix/frame.h"
#include "tarvix/groupbox.h"
#include "tarvix/radiobutton.h"
#include "tarvix/resdata.h"
#include "tarvix/static.h"
#include "tarvix/titlebar.h"
#include "tarvix/url.h"

namespace
{
const char s_szHead[] = "; script\n"
                        "{ = Defines\nWIN = 1\nA = 11\nB = 12\nC = 13\nD = 14\n}\n"
                        "{ = Bitmaps\nPic = pic.bmp, 0, 0, -1, -1\n}\n"
                        "{ = Fonts\nSmall = small.xbf\n}\n"
                        "{ = Colors\nSet = black, white, red, green, blue, grey, white, black\n}\n";

class CDialogTest : public CGuiTest
{
protected:
    CDialogTest()
    {
        CBitmap picture;
        EXPECT_EQ(1, picture.CreateRGB(8, 8, 24, 8, 8, 8, 0, 8, 16, 0));
        EXPECT_EQ(1, picture.Save("pic.bmp", nullptr, nullptr, nullptr, 0)) << LastError();
        CFont font;
        const TCharData chars[] = { { 1, 0, 3 }, { 4, 0, 3 }, { 0, 0, -1 } };
        font.SetFont(&picture, chars, 'A', 5, 1);
        EXPECT_EQ(1, font.Save("small.xbf", 0)) << LastError();
    }

    /// A resource with one window of these items.
    void Load(const std::string &strItems,
              const std::string &strCreate = "\"Title\", 10, 20, 300, 200, XWIN_TITLEBAR|XWIN_FRAME")
    {
        m_pRes = std::make_unique<CResData>();
        glb->m_Error.Clear();
        ASSERT_EQ(1, m_pRes->Import(
                         (s_szHead + ("{ = Window, WIN\nCreate = " + strCreate + "\n") + strItems + "}\n").c_str()));
        ASSERT_EQ("", LastError());
    }

    char m_szText[4] = "new";
    std::unique_ptr<CResData> m_pRes;
};

// Items in an order that nobody would write: the search goes round.
TEST_F(CDialogTest, BuildsEachControlWithItsItems)
{
    Load("CreateStatic = D, \"short\", 1, 2, 30, 10, CNTRL_TRANSPARENT\n"
         "{ = Static, A\nAlpha = 40\nColors = Set, Set, Set, Set\nTextColor = red\nFont = Small\nTextBufferSize = 16\n"
         "Bitmap = Pic, Pic, Pic, Pic\nCreate = \"text\", 5, 6, 70, 20, CNTRL_EXTRUDED\n}\n"
         "; a comment\n"
         "Unknown = 1, 2\n"
         "FrameFlags = CNTRL_HASBITMAP|CNTRL_TILED\nColors = Set, Set, Set, Set\nFrameBitmap = Pic, Pic, Pic, Pic\n"
         "TitlebarBitmap = Pic, Pic, Pic, Pic\nTitlebarFlags = CNTRL_HASBITMAP\n"
         "{ = Button, B\nCreate = \"push\", 5, 40, 70, 20, XKEY_F1, CNTRL_CENTERH|CNTRL_CENTERV\n}\n"
         "{ = URL, C\nCreate = \"link\", \"http://localhost/\", 5, 60, 70, 20, XKEY_NONE, 0\n}\n");
    CDialog dialog;
    ASSERT_EQ(1, dialog.Create(m_pRes.get(), 1, Log, 0, this)) << LastError();
    EXPECT_EQ(4, dialog.m_GuiCtrls.GetNumNodes());
    EXPECT_EQ(4, dialog.NumCntrls());
    EXPECT_EQ(CNTRL_FRAME | CNTRL_HASBITMAP | CNTRL_TILED, dialog.m_pFrame->GetFlags());
    EXPECT_TRUE(dialog.m_pTitlebar->GetFlags() & CNTRL_HASBITMAP);
    EXPECT_EQ(TRGBA(255, 0, 0), dialog.m_pFrame->m_Look.m_pColors[XLOOK_RELEASED]->crFace);

    CControlBase &label = *dialog.GetCtrl(11);
    EXPECT_EQ(CNTRL_EXTRUDED | CNTRL_HASBITMAP | CNTRL_ALPHA, label.GetFlags());
    EXPECT_EQ(40, label.m_Look.m_lAlpha);
    EXPECT_EQ(TRGBA(255, 0, 0), label.m_Look.m_TextColor);
    EXPECT_EQ(5, label.m_Look.m_pFont->m_sHeight);
    EXPECT_EQ(m_pRes->GetBm("Pic"), label.m_Look.m_pBitmap[XLOOK_DISABLED]);
    EXPECT_STREQ("", label.m_pszText) << "the buffer takes the place of the text";
    EXPECT_EQ(16, dialog.GetTextBufferSize(11));
    strcpy(dialog.GetTextBuffer(11, 1), "now");
    EXPECT_EQ(6 + 16, label.m_lY);

    EXPECT_EQ(XDLG_BUTTON, dialog.GetGuiCtrl(12)->lType);
    EXPECT_EQ(XKEY_F1, dialog.GetCtrl(12)->GetHotkey());
    EXPECT_STREQ("push", dialog.GetCtrl(12)->m_pszText);
    EXPECT_EQ(1, dialog.SetText(12, m_szText));
    EXPECT_EQ(m_szText, dialog.GetTextBuffer(12, 0));
    EXPECT_STREQ("http://localhost/", ((CURL *)dialog.GetCtrl(13))->m_pszURL);
    EXPECT_EQ(30, dialog.GetCtrl(14)->m_lWidth);
    EXPECT_EQ(14, dialog.GetCtrl(14)->GetID());

    EXPECT_EQ(nullptr, dialog.GetCtrl(99));
    EXPECT_EQ(0, dialog.SetText(99, m_szText));
    EXPECT_EQ(0, dialog.GetTextBufferSize(99));
    EXPECT_EQ(nullptr, dialog.GetTextBuffer(99, 1));
    EXPECT_NE(0, dialog.First());
    EXPECT_EQ(14, dialog.GetGuiCtrl(-1)->lID);
    EXPECT_EQ(nullptr, dialog.GetCtrl(-1));
    dialog.Next();
    EXPECT_EQ(11, dialog.GetGuiCtrl(-1)->lID);

    Frame();
    TakeLog();
    Click(10 + 5 + 5, 20 + 16 + 1 + 45);
    EXPECT_EQ("3:1:12 1:1:12 2:1:12", TakeLog());
}

TEST_F(CDialogTest, GroupsAndChecksHaveTheirParts)
{
    Load("{ = Groupbox, A\nCreate = \"g\", 10, 10, 200, 100, 0\nBitmap = Nothing\n"
         "{ = Radio, B\nCreate = \"one\", 5, 5, 100, 12, 12, NULL, CNTRL_EXTRUDED\n}\n"
         "{ = Radio, C\nCreate = \"two\", 5, 25, 100, 12, 12, XKEY_A, 0\n"
         "{ = Caption\nFlags = CNTRL_TRANSPARENT\nTextColor = green\nFont = Small\n}\n}\n"
         "}\n"
         "{ = Checkbox, D\nCreate = \"check\", 10, 120, 100, 12, 0, 0, CNTRL_EXTRUDED\n"
         "{ = Caption\nFlags = NoSuchFlag\n}\n}\n");
    CDialog dialog;
    ASSERT_EQ(1, dialog.Create(m_pRes.get(), 1, Log, 1, this)) << LastError();
    EXPECT_TRUE(dialog.GetFlags() & XWIN_HIDDEN);
    EXPECT_EQ(4, dialog.m_GuiCtrls.GetNumNodes()) << "those in the box can be reached too";
    EXPECT_EQ(2, dialog.NumCntrls());
    CControlBase &group = *dialog.GetCtrl(11);
    EXPECT_EQ(12, group.GetSelected());
    EXPECT_EQ(15, dialog.GetCtrl(12)->m_lX);
    EXPECT_EQ(10 + 5 + 16, dialog.GetCtrl(12)->m_lY);
    EXPECT_EQ(&dialog, dialog.GetCtrl(13)->m_pWindow);
    const CStatic &caption = *((CRadiobutton *)dialog.GetCtrl(13))->m_pCaption;
    EXPECT_EQ(CNTRL_TRANSPARENT, caption.m_lFlags);
    EXPECT_EQ(TRGBA(0, 255, 0), caption.m_Look.m_TextColor);
    EXPECT_EQ(nullptr, ((CCheckbox *)dialog.GetCtrl(14))->m_pCaption);
    EXPECT_EQ(1, group.SetSelected(13));
}

TEST_F(CDialogTest, FailsWithItsTextAndLeavesNoWindow)
{
    const struct
    {
        const char *pszItems, *pszError, *pszCreate;
    } cases[] = {
        { "", "Unable to get the windows create data", "\"T\", 1, 2, 3" },
        { "", "Unable to get the windows create data", "\"T\", 1, 2, 3, x, 0" },
        { "", "Unable to get the windows create data", "\"T\", 1, 2, 3, 4, XWIN_NO" },
        { "TitlebarFlags = X\n", "Unable to get the titlebar flags", nullptr },
        { "TitlebarFlags = 0\n", "Unable to get the titlebar flags", "\"T\", 1, 2, 3, 4, 0" },
        { "TitlebarFlags = CNTRL_HASBITMAP\n", "Unable to find the titlebar bitmap keyword", nullptr },
        { "TitlebarFlags = CNTRL_HASBITMAP\nTitlebarBitmap = Pic, Pic, Pic\n", "Unable to get all the titlebar bitmaps",
          nullptr },
        { "FrameFlags = X\n", "Unable to get the frame flags", nullptr },
        { "FrameFlags = 0\n", "Unable to get the frame flags", "\"T\", 1, 2, 3, 4, 0" },
        { "FrameFlags = CNTRL_HASBITMAP\nFrameBitmap = Pic, Pic, No, Pic\n", "Unable to get all the titlebar bitmaps",
          nullptr },
        { "FrameFlags = 0\nColors = Set, Set, No, Set\n", "Unable to get color nr 2 in the frame", nullptr },
        { "CreateStatic = NoId, \"t\", 1, 2, 3, 4, 0\n", "Missing control id for : NoId", nullptr },
        { "CreateStatic = A, \"t\", 1, 2, 3, 4\n", "Unable to get the create data for \"A\"", nullptr },
        { "{ = Button, NoId\n}\n", "Missing control id for : Button, NoId", nullptr },
        { "{ = Button\n}\n", "Missing control id for : Button, ", nullptr },
        { "{ = Wheel, A\n}\n", "Unknown window control type (Wheel)", nullptr },
        { "{ = Static, A\n}\n", "\"Create\" keyword missing for static cntrl", nullptr },
        { "{ = Scrolltext, A\n}\n", "\"Create\" keyword missing for scrolltext cntrl", nullptr },
        { "{ = Radio, A\n}\n", "\"Create\" keyword missing for button cntrl", nullptr },
        { "{ = Checkbox, A\n}\n", "\"Create\" keyword missing for checkbox cntrl", nullptr },
        { "{ = Groupbox, A\n}\n", "\"Create\" keyword missing for groupbox cntrl", nullptr },
        { "{ = URL, A\nCreate = \"t\", 1, 2, 3, 4, 0, 0\n}\n", "Unable to get the create data for \"A\"", nullptr },
        { "{ = Button, A\nCreate = \"t\", 1, 2, 3, 4, XKEY_NO, 0\n}\n", "Unable to get the create data for \"A\"",
          nullptr },
        { "{ = Groupbox, A\nCreate = \"t\", 1, 2, 3, 4, 0\n{ = Button, B\nCreate = \"t\", 1, 2, 3, 4, 0, 0\n}\n}\n",
          "Unable to add a Button to a groupbox", nullptr },
        { "{ = Groupbox, A\nCreate = \"t\", 1, 2, 3, 4, 0\n{ = Groupbox, B\n}\n}\n",
          "Unable to add a Groupbox to a groupbox", nullptr },
        { "{ = Radio, A\nCreate = \"t\", 1, 2, 30, 4, 5, 0, 0\n{ = Caption\nFlags = X\n}\n}\n",
          "Unable to get the flags for \"A\" textfield", nullptr },
        { "{ = Button, A\nCreate = \"t\", 1, 2, 3, 4, 0, 0\nBitmap = Pic, Pic, No, Pic\n}\n",
          "Unable to get the Bitmap's in the \"A\" button ctrl", nullptr },
        { "{ = Checkbox, A\nCreate = \"t\", 1, 2, 3, 4, 5, 0, 0\nTextBufferSize = 0\n}\n",
          "Unable to get the buffer size in the \"A\" checkbox ctrl", nullptr },
        { "{ = Radio, A\nCreate = \"t\", 1, 2, 30, 4, 5, 0, 0\nFont = No\n}\n",
          "Unable to get the font in the \"A\" radio button ctrl", nullptr },
        { "{ = URL, A\nCreate = \"t\", \"u\", 1, 2, 3, 4, 0, 0\nTextColor = No\n}\n",
          "Unable to get the text color in the \"A\" URL ctrl", nullptr },
        { "{ = Static, A\nCreate = \"t\", 1, 2, 3, 4, 0\nColors = Set, white, Set, Set\n}\n",
          "Unable to get color nr 1 in the \"A\" static ctrl", nullptr },
        { "{ = Scrolltext, A\nCreate = \"t\", 1, 2, 3, 4, 1, 0\nAlpha = x\n}\n",
          "Unable to get the alpha value for \"A\" scrolltext ctrl", nullptr },
        { "{ = Button, B\nCreate = \"t\", 1, 2, 3, 4, 0, 0\n}\n{ = Wheel, A\n}\n",
          "Unknown window control type (Wheel)", nullptr },
    };
    for (const auto &c : cases)
    {
        Load(c.pszItems, c.pszCreate ? c.pszCreate : "\"T\", 1, 2, 30, 40, XWIN_TITLEBAR|XWIN_FRAME");
        CDialog dialog;
        EXPECT_EQ(0, dialog.Create(m_pRes.get(), 1, Log, 0, this)) << c.pszItems;
        EXPECT_EQ(c.pszError, LastError()) << c.pszItems;
        EXPECT_EQ(0, glb->m_pWinCtrl->m_Windows.GetNumNodes());
        EXPECT_EQ(0, dialog.NumCntrls());
        EXPECT_EQ(1, dialog.Destroy());
        EXPECT_EQ(0, dialog.m_GuiCtrls.GetNumNodes());
    }
    CDialog dialog;
    EXPECT_EQ(0, dialog.Create(m_pRes.get(), 77, Log, 0, this));
    EXPECT_EQ("Unknown id", LastError());
    EXPECT_EQ(0, dialog.Create(m_pRes.get(), 11, Log, 0, this));
    EXPECT_EQ("Unable to find specified window in the resource data", LastError());
    m_pRes = std::make_unique<CResData>();
    EXPECT_EQ(1, m_pRes->Import("{ = Defines\nWIN = 1\n}\n{ = Window, WIN\nA = 1\n}\n"));
    EXPECT_EQ(0, dialog.Create(m_pRes.get(), 1, Log, 0, this));
    EXPECT_EQ("\"Create\" keyword missing for window", LastError());
}

TEST_F(CDialogTest, TitlebarAndFrameItemsCountWithTheirFlagsOnly)
{
    Load("TitlebarBitmap = No, No, No, No\nColors = No, No, No, No\nFrameBitmap = No\n");
    CDialog dialog;
    EXPECT_EQ(1, dialog.Create(m_pRes.get(), 1, Log, 0, this)) << LastError();
}

TEST_F(CDialogTest, DestroysItsOwnWindowOnly)
{
    Load("");
    CWindow other;
    other.Create(1, nullptr, 0, 0, 10, 10, 0);
    CDialog dialog;
    ASSERT_EQ(1, dialog.Create(m_pRes.get(), 1, Log, 0, this));
    glb->m_pWinCtrl->AddWindow(&other, nullptr, nullptr); // of the same id, and in front
    EXPECT_EQ(1, dialog.Destroy());
    EXPECT_EQ(1, glb->m_pWinCtrl->m_Windows.GetNumNodes());
    EXPECT_EQ(1, dialog.Destroy());
    EXPECT_EQ(1, glb->m_pWinCtrl->m_Windows.GetNumNodes());
    ASSERT_EQ(1, dialog.Create(m_pRes.get(), 1, Log, 0, this)) << "and again";
}

TEST_F(CDialogTest, EndlessNestingFailsSoon)
{
    std::string strItems = "{ = Groupbox, A\nCreate = \"t\", 1, 2, 3, 4, 0\n";
    for (int n = 0; n < 20000; ++n)
        strItems += "{ = Groupbox, B\nCreate = \"t\", 1, 2, 3, 4, 0\n";
    for (int n = 0; n <= 20000; ++n)
        strItems += "}\n";
    Load(strItems);
    CDialog dialog;
    EXPECT_EQ(0, dialog.Create(m_pRes.get(), 1, Log, 0, this));
    EXPECT_EQ("Unable to add a Groupbox to a groupbox", LastError());
}

// Loading, building, a frame and a click, with each allocation failing once.
TEST_F(CDialogTest, RunsOutOfMemoryWithoutLoss)
{
    const std::string strScript =
        s_szHead +
        std::string("{ = Window, WIN\nCreate = \"T\", 10, 20, 300, 200, XWIN_TITLEBAR|XWIN_FRAME|XWIN_CLOSE\n"
                    "{ = Button, A\nCreate = \"push\", 5, 5, 70, 20, XKEY_F1, CNTRL_EXTRUDED\n"
                    "TextColor = red\n}\n"
                    "{ = Groupbox, B\nCreate = \"g\", 10, 40, 200, 100, 0\n"
                    "{ = Radio, C\nCreate = \"one\", 5, 5, 100, 12, 12, NULL, 0\n}\n}\n"
                    "{ = Scrolltext, D\nCreate = \"tick\", 5, 150, 70, 20, 1, 0\nDelay = 50\n}\n}\n");
    WriteFile("script.txt", strScript);
    // Nodes and timers stay with their pools after the first time, which is not counted.
    size_t ulBlocks = 0;
    bool bDone = false;
    xlong lCount = 0;
    for (; !bDone; ++lCount)
    {
        {
            CResData res;
            CDialog dialog;
            glb->m_Error.Clear();
            HeapFailAt(lCount);
            xlong lResult = res.Load("script.txt");
            lResult = lResult && dialog.Create(&res, 1, Log, 0, this);
            for (int n = 0; n < 3; ++n)
                Point(30, 50, n == 1);
            bDone = lCount && !HeapFailed();
            HeapFailAt(0);
            EXPECT_TRUE(!bDone || lResult) << LastError();
            EXPECT_TRUE(lResult || !LastError().empty()) << lCount;
            EXPECT_EQ(lResult, glb->m_pWinCtrl->m_Windows.GetNumNodes()) << lCount;
        }
        EXPECT_EQ(nullptr, HeapState().pszFault);
        if (!lCount)
            ulBlocks = HeapState().ulLiveBlocks;
        else
            EXPECT_LE(HeapState().ulLiveBlocks, ulBlocks) << lCount;
    }
    EXPECT_GT(lCount, 40);
}
} // namespace
