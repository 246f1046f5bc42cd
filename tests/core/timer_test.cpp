#include "tarvix/timer.h"

#include "support.h"
#include "tarvix/llist.h"

#ifndef _WIN32
#include "platform/testing/testface.h"
#endif

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
        {
            xUpdateObjTimers();
            m_lEntries = glb->m_pActiveTimers->GetNumNodes();
        }
    }

    int m_nNumber;
    CTimer *m_pRemove = nullptr;
    CTimer *m_pDelete = nullptr;
    CTimer *m_pAdd = nullptr;
    int m_nInnerFrames = 0;
    xlong m_lEntries = 0; ///< behind an inner frame
};

class CTimerTest : public testing::Test
{
protected:
    CTimerTest()
    {
#ifndef _WIN32
        FaceSetClock(1000);
#endif
    }

#ifndef _WIN32
    ~CTimerTest() override
    {
        FaceStop();
    }
#endif

    size_t Update(xulong ulPassed)
    {
        s_Ticks.clear();
#ifndef _WIN32
        FaceAdvanceClock(ulPassed);
#else
        // The clock can't be set there: the timers are told that they were looked at earlier.
        for (CNode *pNode = glb->m_pActiveTimers->m_pFirst; pNode; pNode = pNode->pNext)
            if (xulong &ulLast = ((TTimerEntry *)pNode->pData)->ulLastTime)
                ulLast -= ulPassed;
#endif
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
    EXPECT_EQ(0u, Update(50000)) << "the first update only notes the time";
    EXPECT_EQ(2, glb->m_pActiveTimers->GetNumNodes());
    const TTick quick = { 1, 10000 }, slow = { 1, 25000 };
    EXPECT_EQ(4u, Update(35000));
    EXPECT_EQ((std::vector<TTick>{ quick, quick, quick, slow }), s_Ticks);
    Update(4000); // left are 9000 and 14000
    EXPECT_EQ(std::vector<TTick>{}, s_Ticks);
    Update(1000);
    EXPECT_EQ(std::vector<TTick>{ quick }, s_Ticks);
    Update(10000);
    EXPECT_EQ((std::vector<TTick>{ quick, slow }), s_Ticks);
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
    Update(100500);
    EXPECT_EQ((std::vector<TTick>{ { 2, 100000 }, { 3, 100000 }, { 3, 100000 } }), s_Ticks) << "3 has its time still";
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

// What an outer handler removed stays too, through a frame in a frame.
TEST_F(CTimerTest, FramesInFramesKeepTheEntriesOfAllHandlers)
{
    CTickTimer outer(1), inner(2);
    outer.AddTimer(100000);
    inner.AddTimer(100000);
    xUpdateObjTimers();
    outer.m_pRemove = &outer;
    outer.m_nInnerFrames = inner.m_nInnerFrames = 1;
    EXPECT_EQ(2u, Update(100500));
    EXPECT_EQ(2, inner.m_lEntries) << "two handlers run";
    EXPECT_EQ(2, outer.m_lEntries) << "one is back";
    EXPECT_EQ(1, glb->m_pActiveTimers->GetNumNodes());
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
