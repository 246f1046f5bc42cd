// Check boxes, radio buttons and the box that holds these.
#include "tarvix/checkbox.h"

#include "gui/guisupport.h"
#include "tarvix/groupbox.h"
#include "tarvix/radiobutton.h"
#include "tarvix/static.h"

namespace
{
class CCheckTest : public CGuiTest
{
protected:
    CCheckTest() { m_Window.Create(1, nullptr, 100, 100, 300, 200, 0); }

    char m_szText[4] = "abc"; // 18 wide, 8 high
    CWindow m_Window;
};

TEST_F(CCheckTest, ToggleAtThePressAndOnce)
{
    CCheckbox box;
    ASSERT_EQ(1, box.Create(7, m_szText, 10, 10, 100, 20, 12, 'k', CNTRL_EXTRUDED));
    m_Window.AddCntrl(&box);
    Show(m_Window);
    EXPECT_EQ(XGUI_UNCHECKED, box.GetState());
    Point(115, 115);
    EXPECT_EQ("23", TakeMessages(":1:7"));
    Point(115, 115, 1);
    EXPECT_EQ("6", TakeMessages(":1:7"));
    EXPECT_EQ(XGUI_CHECKED, box.GetState());
    Point(116, 115, 1);
    Point(115, 115, 1);
    Point(115, 115, 0);
    EXPECT_EQ("", TakeMessages(":1:7"));
    Point(115, 115, 1);
    EXPECT_EQ("7", TakeMessages(":1:7"));
    // Held and carried away and back: still the same press.
    Point(300, 250, 1);
    Point(115, 115, 1);
    EXPECT_EQ("24 23", TakeMessages(":1:7"));
    Point(300, 250, 0);
    TakeLog();

    m_Window.m_bActive = 1;
    Key('k');
    Frame();
    Key('k', false);
    EXPECT_EQ("6 2", TakeMessages(":1:7"));
    EXPECT_EQ(XGUI_CHECKED, box.GetState());
    box.SetState(XGUI_DISABLED);
    Click(115, 115);
    Key('k');
    EXPECT_EQ("23", TakeMessages(":1:7")) << "it is seen to be there, no more";
    box.SetState(XGUI_RELEASED);
    EXPECT_EQ(XGUI_CHECKED, box.GetState()) << "enabling brings the mark back";
    box.SetFlag(CNTRL_READONLY);
    Click(115, 115);
    Key('k');
    EXPECT_EQ("", TakeMessages(":1:7"));
}

TEST_F(CCheckTest, AnswerTheMouseUpToTheEndOfTheirText)
{
    const struct
    {
        const char *pszName;
        xlong lBoxWidth, lWidth, lHeight; ///< the last two of the mouse area
    } cases[] = {
        { "NoCaption", 0, 100, 20 },
        { "Box", 12, 12 + 18, 12 },
        { "LowBox", 4, 4 + 18, 8 },
        { "WideBox", 90, 90 + 18, 90 },
    };
    for (const auto &c : cases)
    {
        CCheckbox box;
        ASSERT_EQ(1, box.Create(7, m_szText, 10, 10, 100, 20, c.lBoxWidth, 0, 0));
        box.SetPos(30, 40);
        CRect rcArea;
        box.GetMouseArea(&rcArea);
        EXPECT_EQ(30, rcArea.m_lLeft) << c.pszName;
        EXPECT_EQ(40, rcArea.m_lTop) << c.pszName;
        EXPECT_EQ(c.lHeight - 1, rcArea.Height()) << c.pszName;
        if (c.lBoxWidth < 90) // the text of the last one wraps
            EXPECT_EQ(c.lWidth - 1, rcArea.Width()) << c.pszName;
        EXPECT_EQ(c.lBoxWidth != 0, box.m_pCaption != nullptr) << c.pszName;
        if (box.m_pCaption)
            EXPECT_EQ(30 + c.lBoxWidth, box.m_pCaption->m_lX) << c.pszName;
        EXPECT_EQ(c.lBoxWidth ? CNTRL_HASBITMAP | CNTRL_BMTRANS : 0, box.GetFlags()) << c.pszName;
    }
}

class CGroupTest : public CCheckTest
{
protected:
    CGroupTest()
    {
        m_Group.Create(20, m_szText, 10, 10, 120, 100, CNTRL_EXTRUDED);
        for (xlong l = 0; l < 3; ++l)
        {
            m_Radios[l].Create(21 + l, m_szText, 5, 10 + 20 * l, 100, 12, 12, (short)('a' + l), CNTRL_EXTRUDED);
            EXPECT_EQ(1, m_Group.Add(&m_Radios[l]));
        }
        m_Window.AddCntrl(&m_Group);
        Show(m_Window);
    }

    std::string States()
    {
        std::string str;
        for (CRadiobutton &radio : m_Radios)
            str += std::to_string(radio.GetState());
        return str;
    }

    CRadiobutton m_Radios[3]; // they go after their group, which lets them go
    CGroupbox m_Group;
};

TEST_F(CGroupTest, KeepsOneSelected)
{
    EXPECT_EQ("677", States());
    EXPECT_EQ(21, m_Group.GetSelected());
    EXPECT_EQ(15, m_Radios[2].m_lX) << "places are relative to the box";
    EXPECT_EQ(60, m_Radios[2].m_lY);

    Point(120, 145);
    Point(120, 145, 1); // the second
    EXPECT_EQ("767", States());
    EXPECT_EQ("7:1:21 7:1:23 6:1:22", TakeLog());
    Point(120, 145, 1);
    Point(120, 145, 0);
    Point(120, 145, 1);
    EXPECT_EQ("", TakeLog()) << "the selected one is clicked again";
    Point(120, 145, 0);

    m_Window.m_bActive = 1;
    Key('c');
    Key('c', false);
    Frame();
    EXPECT_EQ("776", States());
    EXPECT_EQ("7:1:21 7:1:22 6:1:23", TakeLog());

    EXPECT_EQ(1, m_Group.SetSelected(21));
    EXPECT_EQ("677", States());
    EXPECT_EQ(0, m_Group.SetSelected(99));
    EXPECT_EQ("777", States());
    EXPECT_EQ(-1, m_Group.GetSelected());
    m_Radios[1].SetFlag(CNTRL_READONLY);
    Click(120, 145);
    EXPECT_EQ("767", States()) << "radio buttons don't know the flag";
}

TEST_F(CGroupTest, TakesTheCursorOfTheButtonUnderThePointer)
{
    CWinCtrl &manager = *glb->m_pWinCtrl;
    m_Radios[1].m_pCursor = &manager.m_ulCursorText;
    Point(120, 145); // arms it
    Frame();
    EXPECT_EQ(&manager.m_ulCursorText, m_Group.m_pCursor);
    Point(200, 200);
    EXPECT_EQ(&manager.m_ulCursorDefault, m_Group.m_pCursor);
}

TEST_F(CGroupTest, MovesAndFreesItsButtons)
{
    m_Group.SetPos(20, 5);
    EXPECT_EQ(25, m_Radios[0].m_lX);
    EXPECT_EQ(15, m_Radios[0].m_lY);
    EXPECT_EQ(25 + 12, m_Radios[0].m_pCaption->m_lX);
    {
        CRadiobutton extra;
        extra.Create(30, m_szText, 5, 70, 100, 12, 12, 0, 0);
        m_Group.Add(&extra);
        EXPECT_EQ(4, m_Group.m_Radios.GetNumNodes());
    }
    EXPECT_EQ(3, m_Group.m_Radios.GetNumNodes()) << "a radio button leaves when it dies";
    m_Group.SetState(XGUI_DISABLED);
    Click(130, 120);
    EXPECT_EQ("", TakeLog());
}

TEST_F(CGroupTest, DrawsTheMarkOfTheSelectedOne)
{
    CBitmap mark;
    ASSERT_EQ(1, mark.CreateRGB(10, 10, 24, 8, 8, 8, 16, 8, 0, 0));
    const TRGBA Red(255, 0, 0);
    for (xlong l = 1; l < 10; ++l)
        mark.PutPixel(l, 5, &Red);
    for (CRadiobutton &radio : m_Radios)
        radio.m_pCheck = &mark;
    m_Window.Validate();
    Frame();
    for (xlong l = 0; l < 3; ++l)
        EXPECT_EQ(l == 0 ? 255 : 190, Shown(120, 126 + 20 * l).ucRed) << l;
    m_Group.SetSelected(23);
    Frame();
    EXPECT_EQ(190, Shown(120, 126).ucGreen);
    EXPECT_EQ(0, Shown(120, 166).ucGreen);
}
} // namespace
