// Any bytes as a recording: it is refused with a line, or played.
#include "fuzz/support.h"

#include "input/replayhooks.h"
#include "tarvix/keyboard.h"
#include "tarvix/mouse.h"
#include "tarvix/replay.h"

#include <string.h>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *pData, size_t ulSize)
{
    FuzzStart();
    if (!glb->m_pMouse)
    {
        glb->m_pMouse = XNEW(CMouse);
        glb->m_pKeyboard = XNEW(CKeyboard);
    }
    const std::string strText((const char *)pData, ulSize);
    CReplay replay;
    glb->m_Error.Clear();
    if (!replay.PlayText(strText.data(), (xulong)ulSize, "input"))
    {
        if (!strstr(glb->m_Error.GetError(nullptr), "CReplay: input, line "))
            abort();
        return 0;
    }
    for (int nFrame = 0; nFrame < 500 && replay.IsPlaying(); ++nFrame)
    {
        ReplayBeginFrame();
        ReplayTakeInput();
        TQueueChar key;
        while (glb->m_pKeyboard->GetNext(&key))
            if (!key.usKey)
                abort();
        ReplayEndFrame();
    }
    xlong lDown = 0;
    for (const unsigned char ucState : glb->m_pKeyboard->m_abKeys)
        lDown += ucState & CKeyboardBase::IS_DOWN;
    if (lDown != glb->m_pKeyboard->GetPressed())
        abort();
    replay.Stop();
    return 0;
}
