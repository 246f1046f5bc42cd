// What code that goes on after a callback has to ask first.
#pragma once

#include "tarvix/types.h"

class CControlBase;
class CWindowBase;

/// Watches a control or a window while foreign code runs: it may die there.
/// Stands on the stack.
///
///     const CAlive alive(control);
///     Tell(control, XGUIMSG_PRESSED);
///     if (!alive)
///         return 1;
class CAlive
{
public:
    explicit CAlive(const CControlBase &control);
    explicit CAlive(const CWindowBase &window);
    /// Of a control that may be missing: null is not alive.
    explicit CAlive(const CControlBase *pControl);
    ~CAlive() { s_pInnermost = m_pOuter; }
    CAlive(const CAlive &) = delete;
    CAlive &operator=(const CAlive &) = delete;

    explicit operator bool() const { return m_pObject != nullptr; }

    // What destructors call.

    static void OnDeath(const CControlBase &control);
    static void OnDeath(const CWindowBase &window);

private:
    explicit CAlive(const void *pObject);
    static void Forget(const void *pObject);

    const void *m_pObject;
    CAlive *m_pOuter;

    static CAlive *s_pInnermost;
};
