#include "core/msgsys.h"

#include "support.h"
#include "tarvix/llist.h"

namespace
{
std::vector<int> s_Calls;

class CSink : public CMsgSys, public CWinMsg
{
public:
    explicit CSink(int nNumber) : m_nNumber(nNumber) {}

    xlong MsgHandler(xulong ulMsg, xlong lA, xlong lB) override
    {
        s_Calls.push_back(m_nNumber);
        if (m_Then)
            std::exchange(m_Then, nullptr)();
        return 0;
    }

    int m_nNumber;
    std::function<void()> m_Then; ///< once, in the first call
};

class CMsgSysTest : public testing::Test
{
protected:
    std::vector<int> Send(xulong ulMsg)
    {
        s_Calls.clear();
        const xlong lCalled = MsgSysSend(ulMsg, 0, 0);
        EXPECT_EQ(!s_Calls.empty(), lCalled != 0);
        return s_Calls;
    }

    CTestGlobals m_Globals;
};
} // namespace

TEST_F(CMsgSysTest, SinksAreCalledByFallingPriorityOldestFirst)
{
    EXPECT_EQ(0, MsgSysSend(2, 0, 0));
    CSink a(1), b(2), c(3), d(4);
    MsgSysRegister(&a, 2, 5);
    MsgSysRegister(&b, 2, -100);
    MsgSysRegister(&c, 2, 5);
    MsgSysRegister(&d, 2, 100);
    MsgSysRegister(&a, 2, 5);
    MsgSysRegister(&a, 2, -101);
    MsgSysRegister(&b, 3, 7);
    MsgSysSend(2, 0, 0);
    EXPECT_EQ((std::vector<int>{ 4, 1, 3, 2, 1 }), Send(2));
    EXPECT_EQ((std::vector<int>{ 2 }), Send(3));
    EXPECT_EQ(0, MsgSysSend(4, 0, 0));

    MsgSysUnregister(&a, 2, -1);
    EXPECT_EQ((std::vector<int>{ 4, 3, 2, 1 }), Send(2)) << "the first registration alone";
    MsgSysUnregister(&a, 2, 5);
    EXPECT_EQ((std::vector<int>{ 4, 3, 2, 1 }), Send(2)) << "no such priority";
    {
        CSink dying(9);
        MsgSysRegister(&dying, 2, 50);
        MsgSysRegister(&dying, 2, 51);
    }
    EXPECT_EQ((std::vector<int>{ 4, 3, 2, 1 }), Send(2));
}

TEST_F(CMsgSysTest, SinksMayChangeTheListAndSendOnTheWay)
{
    CSink a(1), b(2), late(7);
    auto pDying = std::make_unique<CSink>(3);
    CSink *const apInOrder[] = { &a, pDying.get(), &b };
    for (CSink *pSink : apInOrder)
        MsgSysRegister(pSink, 2, 5);
    a.m_Then = [&]
    {
        pDying.reset();
        MsgSysRegister(&late, 2, 0);
        MsgSysSend(2, 0, 0);
        MsgSysUnregister(&a, 2, 5);
    };
    EXPECT_EQ((std::vector<int>{ 1, 1, 2, 7, 2, 7 }), Send(2)) << "the inner round, then the rest of the outer one";
    EXPECT_EQ((std::vector<int>{ 2, 7 }), Send(2));
    auto pSelf = std::make_unique<CSink>(4);
    MsgSysRegister(pSelf.get(), 2, 3);
    pSelf->m_Then = [&] { pSelf.reset(); };
    EXPECT_EQ((std::vector<int>{ 2, 4, 7 }), Send(2));
    EXPECT_EQ((std::vector<int>{ 2, 7 }), Send(2));
}

TEST_F(CMsgSysTest, WindowSinksKeepTheOrderOfRegistration)
{
    CSink a(1), b(2);
    EXPECT_EQ(1, RegisterWinMsg(&a, 10));
    EXPECT_EQ(1, RegisterWinMsg(&b, 10));
    EXPECT_EQ(1, RegisterWinMsg(&a, 10));
    EXPECT_EQ(1, RegisterWinMsg(&a, 11));
    ASSERT_EQ(3, sglb->m_pWinMsgList->GetNumNodes());
    UnRegisterWinMsg(&a, 12);
    UnRegisterWinMsg(&a, 10);
    EXPECT_EQ(2, sglb->m_pWinMsgList->GetNumNodes());

    // After a removal the new first record is passed over: of three in a row
    // at the head the second stays.
    UnRegisterWinMsg(&b, 10);
    RegisterWinMsg(&a, 12);
    RegisterWinMsg(&a, 13);
    UnRegisterWinMsgAll(&a);
    ASSERT_EQ(1, sglb->m_pWinMsgList->GetNumNodes());
    sglb->m_pWinMsgList->First();
    EXPECT_EQ(12u, ((TWinMsgSink *)sglb->m_pWinMsgList->Get())->ulMsg);
    UnRegisterWinMsgAll(&a);
    // Behind another's record the walk begins anew and none is.
    RegisterWinMsg(&b, 10);
    for (const xulong ulMsg : { 12, 13, 14 })
        RegisterWinMsg(&a, ulMsg);
    UnRegisterWinMsgAll(&a);
    EXPECT_EQ(1, sglb->m_pWinMsgList->GetNumNodes());
    UnRegisterWinMsgAll(&b);
    {
        CSink dying(9);
        for (const xulong ulMsg : { 20, 21, 22, 23 })
            RegisterWinMsg(&dying, ulMsg);
    }
    EXPECT_EQ(0, sglb->m_pWinMsgList->GetNumNodes()) << "of a sink that dies nothing is passed over";
    xExit();
    EXPECT_EQ(nullptr, sglb->m_pWinMsgList);
}
