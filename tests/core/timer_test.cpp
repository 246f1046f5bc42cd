#include "tarvix/timer.h"

#include "support.h"
#include "tarvix/llist.h"

namespace
{
// Keeps what happened to all timers, in order.
struct TTick
{
    int nTimer;
    xulong ulInterval;

    bool operator==(const TTick &) const = default;
};

std::vector<TTick> s_Ticks;

class CTickTimer : public CTimer
{
public:
    explicit CTickTimer(int nNumber) : m_nNumber(nNumber) {}

    void TimerHandler(xulong ulInterval) override
    {
        s_Ticks.push_back({ m_nNumber, ulInterval });
        if (m_pRemove)
            m_pRemove->RemoveAllTimers();
        if (m_pDelete)
        {
            delete m_pDelete;
            m_pDelete = nullptr;
        }
        if (m_pAdd)
            m_pAdd->AddTimer(50);
        if (m_nInnerFrames-- > 0)
            xUpdateObjTimers();
    }

    int m_nNumber;
    CTimer *m_pRemove = nullptr;
    CTimer *m_pDelete = nullptr;
    CTimer *m_pAdd = nullptr;
    int m_nInnerFrames = 0;
};

// Takes time back for all active timers, as if it had passed.
void LetPass(xulong ulTime)
{
    CLList &list = *glb->m_pActiveTimers;
    for (list.First(); list.Exists(); list.Next())
    {
        TTimerEntry *pEntry = (TTimerEntry *)list.Get();
        pEntry->ulLastTime = xGetTime() - ulTime;
        pEntry->fRemainder = 0;
    }
}

class CTimerTest : public testing::Test
{
protected:
    CTimerTest() { s_Ticks.clear(); }

    size_t Update(xulong ulPassed)
    {
        s_Ticks.clear();
        LetPass(ulPassed);
        xUpdateObjTimers();
        return s_Ticks.size();
    }

    CTestGlobals m_Globals;
};
} // namespace

TEST_F(CTimerTest, TicksArriveInABurstWithTheRemainderKept)
{
    CTickTimer timer(1);
    EXPECT_EQ(1, timer.AddTimer(10000));
    EXPECT_EQ(1, timer.AddTimer(10000));
    EXPECT_EQ(1, timer.AddTimer(25000));
    EXPECT_EQ(2, glb->m_pPendingTimers->GetNumNodes());
    xUpdateObjTimers();
    EXPECT_EQ(2, glb->m_pActiveTimers->GetNumNodes());
    EXPECT_EQ(0u, s_Ticks.size()) << "the first update only notes the time";
    EXPECT_EQ(4u, Update(35000));
    EXPECT_EQ((TTick{ 1, 10000 }), s_Ticks[2]);
    EXPECT_EQ((TTick{ 1, 25000 }), s_Ticks[3]);
    glb->m_pActiveTimers->First();
    // A little of the clock may have passed in between.
    EXPECT_NEAR(5000, ((TTimerEntry *)glb->m_pActiveTimers->Get())->fRemainder, 2000);
}

TEST_F(CTimerTest, HandlersMayRemoveDeleteAndAdd)
{
    CTickTimer self(1), first(2), other(3), added(4);
    self.AddTimer(100000);
    xUpdateObjTimers();
    self.m_pRemove = &self;
    EXPECT_EQ(1u, Update(350000)) << "the rest of its burst is stopped";
    EXPECT_EQ(0, glb->m_pActiveTimers->GetNumNodes());

    first.AddTimer(100000);
    CTickTimer *pDying = new CTickTimer(9);
    pDying->AddTimer(100000);
    xUpdateObjTimers();
    first.m_pDelete = pDying;
    EXPECT_EQ(1u, Update(100500));
    EXPECT_EQ(2, s_Ticks[0].nTimer);

    // An add walks the active list to its end, and the pass ends there.
    other.AddTimer(100000);
    xUpdateObjTimers();
    first.m_pAdd = &added;
    EXPECT_EQ(1u, Update(100500));
    EXPECT_EQ(3, glb->m_pActiveTimers->GetNumNodes());
    first.m_pAdd = nullptr;
    EXPECT_EQ(2u, Update(100500) - (size_t)std::count(s_Ticks.begin(), s_Ticks.end(), TTick{ 4, 50 }));
}

// The inner frame sweeps what was removed, but not the entry whose handler
// runs it: that is looked at again when the handler is back.
TEST_F(CTimerTest, HandlersMayRunFramesAndRemoveThemselves)
{
    CTickTimer self(1), other(2);
    self.AddTimer(100000);
    other.AddTimer(100000);
    xUpdateObjTimers();
    self.m_pRemove = &self;
    self.m_nInnerFrames = 2;
    EXPECT_EQ(4u, Update(350000)) << "one of its own, and the other's burst in the inner frame";
    EXPECT_EQ(1, glb->m_pActiveTimers->GetNumNodes());
    self.RemoveAllTimers();

    self.m_pRemove = nullptr;
    self.m_pDelete = new CTickTimer(3);
    self.m_pDelete->AddTimer(100000);
    self.AddTimer(100000);
    xUpdateObjTimers();
    self.m_nInnerFrames = 1;
    Update(100000);
    EXPECT_EQ(2, glb->m_pActiveTimers->GetNumNodes());
}

TEST_F(CTimerTest, RemovingReachesBothLists)
{
    CTickTimer timer(1);
    xRemoveTimer(&timer, 5);
    xRemoveTimerAll(&timer);
    timer.AddTimer(100000);
    timer.AddTimer(200000);
    xUpdateObjTimers();
    timer.AddTimer(300000);
    timer.RemoveTimer(200000);
    timer.RemoveTimer(300000);
    EXPECT_EQ(0, glb->m_pPendingTimers->GetNumNodes());
    EXPECT_EQ(1u, Update(250000) / 2);
    EXPECT_EQ(1, timer.AddTimer(200000)) << "a marked record is not the pair any more";
    timer.RemoveAllTimers();
    EXPECT_EQ(0u, Update(1000000));
    EXPECT_EQ(0, glb->m_pActiveTimers->GetNumNodes());
}

TEST_F(CTimerTest, AnIntervalOfZeroNeverTicks)
{
    CTickTimer timer(1);
    timer.AddTimer(0);
    xUpdateObjTimers();
    EXPECT_EQ(0u, Update(1000));
}
