#include "gui/chaos.h"

#include "core/heap.h"
#include "gui/guisupport.h"

namespace
{
class CChaosTest : public CGuiTest
{
protected:
    static void Tick()
    {
#ifndef _WIN32
        FaceAdvanceClock(20);
#endif
    }
};
} // namespace

// For ASan, the invariants and the heap's own checks: what a stream of bytes
// makes a host do leaves nothing that dangles, and nothing behind.
TEST_F(CChaosTest, AHostMayDoAnythingAnywhere)
{
#ifdef _WIN32
    const unsigned uSeeds = 40; // with real windows and real time
#else
    const unsigned uSeeds = 400;
#endif
    for (unsigned uSeed = 1; uSeed <= uSeeds; ++uSeed)
    {
        SCOPED_TRACE(uSeed);
        std::mt19937 random(uSeed);
        {
            CChaos chaos([&random] { return (unsigned char)(random() >> 8); }, Tick);
            for (int nStep = 0; nStep < 500; ++nStep)
                chaos.Step();
        }
        ASSERT_EQ(0, glb->m_pWinCtrl->m_Windows.GetNumNodes());
        xUpdateObjTimers();
        ASSERT_EQ(0, glb->m_pActiveTimers->GetNumNodes());
        ASSERT_EQ(nullptr, HeapState().pszFault);
    }
}
