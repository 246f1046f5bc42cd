#include "tarvix/keyboard.h"

#include "input/keyqueue.h"
#include "input/paste.h"

#include <string.h>

namespace
{
void (*s_pfnPaste)(char *) = nullptr;
} // namespace

void SetPasteSink(void (*pfnPaste)(char *pszText))
{
    s_pfnPaste = pfnPaste;
}

void SendPaste(char *pszText)
{
    if (s_pfnPaste)
        s_pfnPaste(pszText);
}

bool QueueKey(CKeyboardBase &keyboard, unsigned short usKey, xlong lFlags)
{
    const short sNext = (short)((keyboard.m_sQueueWrite + 1) % CKeyboardBase::QUEUE_SLOTS);
    if (sNext == keyboard.m_sQueueRead)
        return false;
    keyboard.m_aQueue[keyboard.m_sQueueWrite] = { usKey, lFlags };
    keyboard.m_sQueueWrite = sNext;
    return true;
}

void StoreKeyState(CKeyboardBase &keyboard, unsigned short usKey, xlong lState)
{
    unsigned char &ucState = keyboard.m_abKeys[usKey];
    keyboard.m_sNumPressed += (short)((lState & CKeyboardBase::IS_DOWN) - (ucState & CKeyboardBase::IS_DOWN));
    ucState = (unsigned char)lState;
}

CKeyboardBase::CKeyboardBase() : m_hHook(nullptr), m_abKeys(), m_aQueue()
{
    CKeyboardBase::Clear(CLEAR_QUEUE | CLEAR_STATES);
}

CKeyboardBase::~CKeyboardBase() {}

void CKeyboardBase::Clear(unsigned short usWhat)
{
    if (usWhat & CLEAR_QUEUE)
        m_sQueueRead = m_sQueueWrite = 0;
    if (usWhat & CLEAR_STATES)
    {
        m_sNumPressed = 0;
        memset(m_abKeys, 0, CODES);
    }
}

xlong CKeyboardBase::IsKeyWaiting()
{
    return m_sQueueRead != m_sQueueWrite;
}

xlong CKeyboardBase::GetNext(TQueueChar *pKey)
{
    if (!pKey || m_sQueueRead == m_sQueueWrite)
        return 0;
    *pKey = m_aQueue[m_sQueueRead];
    m_sQueueRead = (short)((m_sQueueRead + 1) % QUEUE_SLOTS);
    return 1;
}

xlong CKeyboardBase::IsPressed(unsigned short usKey)
{
    if (usKey >= CODES)
        return 0;
    const xlong lState = m_abKeys[usKey] & (IS_DOWN | WAS_PRESSED);
    m_abKeys[usKey] &= (unsigned char)~WAS_PRESSED;
    return lState;
}

xlong CKeyboardBase::GetPressed()
{
    return m_sNumPressed;
}
