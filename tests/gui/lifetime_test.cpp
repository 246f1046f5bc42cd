// Objects that go in the callbacks that they cause.
#include "gui/guisupport.h"
#include "tarvix/button.h"
#include "tarvix/checkbox.h"
#include "tarvix/frame.h"
#include "tarvix/groupbox.h"
#include "tarvix/radiobutton.h"
#include "tarvix/static.h"
#include "tarvix/titlebar.h"

#include <memory>

namespace
{
enum EFate
{
    DELETE_SENDER,
    REMOVE_SENDER,
    DELETE_GROUP,
    DELETE_WINDOW,
    REMOVE_WINDOW,
    DESTROY_WINDOW,
    DELETE_ALL_IN_INNER_FRAME
};

struct TFateCase
{
    const char *pszName;
    EFate eFate;
};

const TFateCase s_Fates[] = {
    { "DeleteSender", DELETE_SENDER },           { "RemoveSender", REMOVE_SENDER }, { "DeleteGroup", DELETE_GROUP },
    { "DeleteWindow", DELETE_WINDOW },           { "RemoveWindow", REMOVE_WINDOW }, { "DestroyWindow", DESTROY_WINDOW },
    { "InnerFrame", DELETE_ALL_IN_INNER_FRAME },
};

// A window with one of each, where a fixed hand clicks, types and drags.
class CLifetimeTest : public CGuiTest, public testing::WithParamInterface<std::tuple<TFateCase, xlong, int>>
{
protected:
    enum
    {
        BUTTON,
        BOX,
        FIRST_RADIO,
        SECOND_RADIO,
        GROUP,
        CONTROLS
    };

    void Build()
    {
        m_pWindow = std::make_unique<CWindow>();
        m_pWindow->Create(1, m_szText, 100, 100, 300, 300, XWIN_TITLEBAR | XWIN_DRAG | XWIN_FRAME | XWIN_CLOSE);
        auto pButton = std::make_unique<CButton>();
        pButton->Create(BUTTON, m_szText, 10, 10, 50, 20, 'a', 0);
        auto pBox = std::make_unique<CCheckbox>();
        pBox->Create(BOX, m_szText, 10, 40, 50, 20, 16, 'b', 0);
        auto pGroup = std::make_unique<CGroupbox>();
        pGroup->Create(GROUP, m_szText, 10, 70, 200, 100, 0);
        CControlBase *const apShown[] = { pButton.get(), pBox.get(), pGroup.get() };
        for (CControlBase *pControl : apShown)
            m_pWindow->AddCntrl(pControl);
        for (const int n : { FIRST_RADIO, SECOND_RADIO })
        {
            auto pRadio = std::make_unique<CRadiobutton>();
            pRadio->Create(n, m_szText, 10, 10 + 30 * (n - FIRST_RADIO), 60, 20, 16, (short)('c' + n - FIRST_RADIO), 0);
            pGroup->Add(pRadio.get());
            m_apControls[n] = std::move(pRadio);
        }
        m_apControls[BUTTON] = std::move(pButton);
        m_apControls[BOX] = std::move(pBox);
        m_apControls[GROUP] = std::move(pGroup);
        glb->m_pWinCtrl->AddWindow(m_pWindow.get(), OnMessage, this);
        Frame();
    }

    static void OnMessage(xlong lMsg, xlong, xlong lCntrl, xparam, void *pUser)
    {
        ((CLifetimeTest *)pUser)->Answer(lMsg, lCntrl);
    }

    void Answer(xlong lMsg, xlong lCntrl)
    {
        // The n-th of them: the first ones come from the same control.
        if (m_bDone || lMsg != std::get<1>(GetParam()) || m_nSeen++ < std::get<2>(GetParam()))
            return;
        m_bDone = true;
        std::unique_ptr<CControlBase> *const ppSender =
            lMsg < XGUIMSG_DRAGBEGIN - 1 || lMsg > XGUIMSG_DRAGEND ? &m_apControls[lCntrl % CONTROLS] : nullptr;
        switch (std::get<0>(GetParam()).eFate)
        {
        case DELETE_SENDER:
            if (ppSender)
                ppSender->reset();
            break;
        case REMOVE_SENDER:
            if (CRadiobutton *pRadio = ppSender ? dynamic_cast<CRadiobutton *>(ppSender->get()) : nullptr)
                ((CGroupbox &)*m_apControls[GROUP]).Remove(pRadio);
            else if (ppSender)
                m_pWindow->RemoveCntrl(ppSender->get());
            break;
        case DELETE_GROUP:
            m_apControls[GROUP].reset();
            break;
        case DELETE_WINDOW:
            m_pWindow.reset();
            break;
        case REMOVE_WINDOW:
            glb->m_pWinCtrl->RemoveWindow(1);
            break;
        case DESTROY_WINDOW:
            m_pWindow->Destroy();
            break;
        case DELETE_ALL_IN_INNER_FRAME:
            Frame();
            m_pWindow.reset();
            for (auto &pControl : m_apControls)
                pControl.reset();
            Frame();
        }
    }

    void Use()
    {
        for (const auto &[x, y] : { std::pair(120, 135), { 120, 165 }, { 135, 205 }, { 135, 235 }, { 135, 205 } })
        {
            Point(x, y);
            Click(x, y);
            Point(500, 450);
        }
        Point(120, 135, 0);
        Point(120, 135, 1);
        Point(500, 450, 1);
        Point(500, 450, 0);
        for (const unsigned short us : { 'a', 'b', 'c', 'd', 'c' })
        {
            Key(us);
            Key(us, false);
        }
        Point(150, 105, 0);
        Point(150, 105, 1);
        Point(170, 125, 1);
        Point(170, 125, 0);
        Point(393, 109, 0);
        Click(393, 109);
    }

    std::unique_ptr<CWindow> m_pWindow;
    std::unique_ptr<CControlBase> m_apControls[CONTROLS];
    bool m_bDone = false;
    int m_nSeen = 0;
    char m_szText[4] = "xy";
};
} // namespace

TEST_P(CLifetimeTest, TheRestGoesOn)
{
    Build();
    Use();
    EXPECT_TRUE(m_bDone || std::get<2>(GetParam())) << "the message never came";
    for (auto &pControl : m_apControls)
        pControl.reset();
    Frame();
    EXPECT_TRUE(!m_pWindow || !m_pWindow->m_pMouseCntrl) << "it would come back through the window";
    m_pWindow.reset();
    EXPECT_EQ(0, glb->m_pWinCtrl->m_Windows.GetNumNodes());
}

INSTANTIATE_TEST_SUITE_P(Messages, CLifetimeTest,
                         testing::Combine(testing::ValuesIn(s_Fates),
                                          testing::Values<xlong>(1, 2, 3, 6, 7, 10, 19, 23, 24),
                                          testing::Values(0, 1, 2, 4)),
                         [](const auto &info)
                         {
                             return std::get<0>(info.param).pszName + std::to_string(std::get<1>(info.param)) + "_" +
                                    std::to_string(std::get<2>(info.param));
                         });

namespace
{
// Makes one public object; in any order of three, each may point to the others.
typedef std::function<std::shared_ptr<void>(CWindow &window, CGroupbox &group)> TMake;

const struct
{
    const char *pszName;
    TMake Make;
} s_Makers[] = {
    { "radio",
      [](CWindow &, CGroupbox &group)
      {
          auto p = std::make_shared<CRadiobutton>();
          p->Create(5, nullptr, 0, 0, 40, 20, 16, 0, 0);
          group.Add(p.get());
          return p;
      } },
    { "button",
      [](CWindow &window, CGroupbox &)
      {
          auto p = std::make_shared<CButton>();
          p->Create(6, nullptr, 0, 0, 40, 20, 0, 0);
          window.AddCntrl(p.get());
          return p;
      } },
    { "frame",
      [](CWindow &window, CGroupbox &)
      {
          auto p = std::make_shared<CFrame>();
          p->Create(nullptr, 40, 20, &window);
          return p;
      } },
    { "title bar",
      [](CWindow &window, CGroupbox &)
      {
          auto p = std::make_shared<CTitlebar>();
          p->Create(nullptr, 40, 20, &window, CNTRL_CLOSEBUTTON);
          return p;
      } },
    { "ticker",
      [](CWindow &window, CGroupbox &)
      {
          static char s_szText[] = "text";
          auto p = std::make_shared<CScrollText>();
          p->Create(s_szText, 0, 0, 40, 20, 1, 0);
          window.AddCntrl(p.get());
          p->Start(20);
          return p;
      } },
};
} // namespace

class CPlainMembersTest : public CGuiTest
{
};

// Whatever it was added to, and how often, nothing holds it when it has died.
TEST_F(CPlainMembersTest, LeaveAllThatTheyWereAddedTo)
{
    CWindow first, second;
    CGroupbox group, other;
    first.Create(1, nullptr, 10, 10, 100, 100, 0);
    second.Create(2, nullptr, 120, 10, 100, 100, 0);
    group.Create(3, nullptr, 0, 0, 50, 50, 0);
    other.Create(4, nullptr, 0, 60, 50, 50, 0);
    first.AddCntrl(&group);
    second.AddCntrl(&other);
    const struct
    {
        const char *pszName;
        std::function<void(CRadiobutton &)> Add;
    } cases[] = {
        { "two windows", [&](auto &radio) { first.AddCntrl(&radio), second.AddCntrl(&radio); } },
        { "one twice", [&](auto &radio) { first.AddCntrl(&radio), first.AddCntrl(&radio); } },
        { "a group twice", [&](auto &radio) { group.Add(&radio), group.Add(&radio); } },
        { "two groups", [&](auto &radio) { group.Add(&radio), other.Add(&radio); } },
        { "a group and a window", [&](auto &radio) { group.Add(&radio), second.AddCntrl(&radio); } },
        { "a window and a group", [&](auto &radio) { second.AddCntrl(&radio), group.Add(&radio); } },
    };
    for (const auto &c : cases)
    {
        {
            CRadiobutton radio;
            radio.Create(5, nullptr, 0, 0, 40, 20, 16, 0, 0);
            c.Add(radio);
        }
        EXPECT_EQ(1, first.NumCntrls()) << c.pszName;
        EXPECT_EQ(1, second.NumCntrls()) << c.pszName;
        EXPECT_EQ(0, group.m_Radios.GetNumNodes() + other.m_Radios.GetNumNodes()) << c.pszName;
    }
}

TEST_F(CPlainMembersTest, DieInAnyOrder)
{
    for (const auto &maker : s_Makers)
    {
        int anOrder[] = { 0, 1, 2 };
        do
        {
            SCOPED_TRACE(std::string(maker.pszName) + " " + std::to_string(anOrder[0]) + std::to_string(anOrder[1]));
            auto pWindow = std::make_shared<CWindow>();
            auto pGroup = std::make_shared<CGroupbox>();
            pWindow->Create(1, nullptr, 10, 10, 100, 100, XWIN_FRAME);
            pGroup->Create(2, nullptr, 0, 0, 50, 50, 0);
            pWindow->AddCntrl(pGroup.get());
            glb->m_pWinCtrl->AddWindow(pWindow.get(), nullptr, nullptr);
            std::shared_ptr<void> apObjects[] = { maker.Make(*pWindow, *pGroup), pWindow, pGroup };
            Frame();
            pWindow.reset();
            pGroup.reset();
            for (const int n : anOrder)
            {
                apObjects[n].reset();
                Frame();
                xUpdateObjTimers();
            }
            EXPECT_EQ(0, glb->m_pWinCtrl->m_Windows.GetNumNodes());
        } while (std::next_permutation(anOrder, anOrder + 3));
    }
}
