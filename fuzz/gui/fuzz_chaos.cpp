// Any bytes as what a host and its user do to windows and controls, in callbacks
// and in frames inside frames too.
#include "fuzz/gui/screen.h"
#include "fuzz/support.h"
#include "tests/gui/chaos.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *pData, size_t ulSize)
{
    FuzzStart();
    StartScreen();
    size_t ul = 0;
    {
        CChaos chaos([&]() -> unsigned char { return ul < ulSize ? pData[ul++] : 0; }, [] { FaceAdvanceClock(20); });
        while (ul < ulSize)
            chaos.Step();
    }
    {
        // The mode that a life ends in is held by the library's heap, which is not searched for pointers.
        const __lsan::ScopedDisabler keep;
        CChaos::ChangeMode(0);
    }
    xUpdateObjTimers();
    if (glb->m_pWinCtrl->m_Windows.GetNumNodes() || glb->m_pActiveTimers->GetNumNodes())
        abort();
    return 0;
}
