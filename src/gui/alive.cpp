#include "gui/alive.h"

#include "tarvix/control.h"
#include "tarvix/window.h"

// Watches stand on the stack, each inside the one before.
CAlive *CAlive::s_pInnermost = nullptr;

CAlive::CAlive(const void *pObject) : m_pObject(pObject), m_pOuter(s_pInnermost)
{
    s_pInnermost = this;
}

CAlive::CAlive(const CControlBase &control) : CAlive((const void *)&control) {}

CAlive::CAlive(const CWindowBase &window) : CAlive((const void *)&window) {}

CAlive::CAlive(const CControlBase *pControl) : CAlive((const void *)pControl) {}

void CAlive::OnDeath(const CControlBase &control)
{
    Forget(&control);
}

void CAlive::OnDeath(const CWindowBase &window)
{
    Forget(&window);
}

void CAlive::Forget(const void *pObject)
{
    for (CAlive *pAlive = s_pInnermost; pAlive; pAlive = pAlive->m_pOuter)
        if (pAlive->m_pObject == pObject)
            pAlive->m_pObject = nullptr;
}
