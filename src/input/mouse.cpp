#include "tarvix/mouse.h"

#include "input/clicks.h"
#include "input/replayhooks.h"
#include "tarvix/bitmap.h"
#include "tarvix/error.h"
#include "tarvix/globals.h"
#include "tarvix/replay.h"
#include "tarvix/screen.h"
#include "tarvix/sprite.h"

namespace
{
const xlong s_lFrameDelay = 20;

// The cursor of a picture file: nobody else knows of its bitmap.
class CFileSprite : public CSprite
{
public:
    explicit CFileSprite(CBitmap *pOwned) : m_pOwned(pOwned) {}
    ~CFileSprite() override { XDELETE(m_pOwned); }

private:
    CBitmap *m_pOwned;
};
} // namespace

CMouseBase::CMouseBase()
    : m_pCurrent(nullptr), m_ulButtons(0), m_ulPrevButtons(0), m_lDeltaX(0), m_lDeltaY(0), m_fSensitivity(1),
      m_ulFlags(0), m_lNextDeltaId(1), m_lAddX(0), m_lAddY(0), m_bSetCursorCalled(0), m_ulNextCursorId(1),
      m_pfnUpdate(nullptr), m_lX(320), m_lY(240), m_bRightDown(0), m_bLeftDown(0), m_bMiddleDown(0)
{
}

CMouseBase::~CMouseBase()
{
    ForgetClicks(this);
    Exit();
}

xulong CMouseBase::AllocCursor(const char *pszPath, const TPoint *pFrames, xlong lWidth, xlong lHeight, short sHotX,
                               short sHotY)
{
    if (!glb->m_pScreen)
        return 0;
    CBitmap *pBitmap = XNEW(CBitmap);
    if (!pBitmap)
        return 0;
    if (!pBitmap->Load(pszPath, 0))
    {
        XDELETE(pBitmap);
        return 0;
    }
    if (!glb->m_pScreen->MakeScreenFormat(pBitmap, 1))
    {
        xprintf(__FILE__, __LINE__, this, DBGL_ALL, "Failed to convert bitmap, Mouse pointer\n");
        XDELETE(pBitmap);
        return 0;
    }
    CSprite *pSprite = XNEW(CFileSprite(pBitmap));
    if (!pSprite)
    {
        XDELETE(pBitmap);
        return 0;
    }
    return AddCursor(pSprite, pBitmap, pFrames, lWidth, lHeight, sHotX, sHotY);
}

xulong CMouseBase::AllocCursor(CBitmap *pBitmap, const TPoint *pFrames, xlong lWidth, xlong lHeight, short sHotX,
                               short sHotY)
{
    CSprite *pSprite = XNEW(CSprite);
    return pSprite ? AddCursor(pSprite, pBitmap, pFrames, lWidth, lHeight, sHotX, sHotY) : 0;
}

xulong CMouseBase::AddCursor(CSprite *pSprite, CBitmap *pBitmap, const TPoint *pFrames, xlong lWidth, xlong lHeight,
                             short sHotX, short sHotY)
{
    TCursor *pCursor = XNEW(TCursor());
    if (!pCursor)
    {
        XDELETE(pSprite);
        return 0;
    }
    pCursor->ulId = m_ulNextCursorId++;
    pCursor->pSprite = pSprite;
    pCursor->sHotX = sHotX;
    pCursor->sHotY = sHotY;
    if (!pSprite->Create(pBitmap, pFrames, lWidth, lHeight, m_lX, m_lY, XSPRITE_ON_TOP, s_lFrameDelay, 1) ||
        !m_lstCursors.InsertLast(pCursor))
    {
        DeleteCursor(pCursor);
        return 0;
    }
    if (!m_pCurrent)
        m_pCurrent = pCursor;
    if (!(m_ulFlags & FULL_SCREEN))
        pSprite->ClearBaseFlag(XSPRITE_VISIBLE);
    return pCursor->ulId;
}

void CMouseBase::DeleteCursor(TCursor *pCursor)
{
    if (m_pCurrent == pCursor)
        m_pCurrent = nullptr;
    XDELETE(pCursor->pSprite);
    XDELETE(pCursor);
}

xlong CMouseBase::FreeCursor(xulong ulId)
{
    for (m_lstCursors.First(); m_lstCursors.Exists(); m_lstCursors.Next())
    {
        TCursor *pCursor = (TCursor *)m_lstCursors.Get();
        if (pCursor->ulId == ulId)
        {
            m_lstCursors.Delete();
            DeleteCursor(pCursor);
            return 1;
        }
    }
    return 0;
}

void CMouseBase::FreeAllCursors()
{
    for (m_lstCursors.First(); m_lstCursors.Exists(); m_lstCursors.Next())
        DeleteCursor((TCursor *)m_lstCursors.Get());
    m_lstCursors.KillAll();
}

void CMouseBase::SetCursor(xulong ulId, xlong lFrame)
{
    for (m_lstCursors.First(); m_lstCursors.Exists(); m_lstCursors.Next())
    {
        TCursor *pCursor = (TCursor *)m_lstCursors.Get();
        if (!(m_ulFlags & FULL_SCREEN) || pCursor->ulId != ulId)
        {
            pCursor->pSprite->ClearBaseFlag(XSPRITE_VISIBLE);
            continue;
        }
        pCursor->pSprite->SetBaseFlag(XSPRITE_VISIBLE);
        m_pCurrent = pCursor;
        if (lFrame)
            pCursor->pSprite->SetCurrentFrame(lFrame);
        pCursor->pSprite->SetAnimationStatus(XSPRITE_STOPPED);
    }
    m_bSetCursorCalled = 1;
}

void CMouseBase::StartAnim(xulong ulId, xlong lBaseFlag, float fDelay)
{
    if (ulId)
        SetCursor(ulId, 0);
    if (!m_pCurrent)
        return;
    CSprite *pSprite = m_pCurrent->pSprite;
    if (fDelay != 0)
        pSprite->SetFrameDelay(fDelay >= 2147483648.0f ? 0x7fffffff : fDelay > 0 ? (xlong)fDelay : 0);
    if (lBaseFlag)
        pSprite->SetBaseFlag(lBaseFlag);
    pSprite->SetAnimationStatus(XSPRITE_FORWARD);
}

void CMouseBase::StopAnim()
{
    if (m_pCurrent)
        m_pCurrent->pSprite->SetAnimationStatus(XSPRITE_STOPPED);
}

void CMouseBase::SetPos(xlong lX, xlong lY)
{
    m_lX = lX;
    m_lY = lY;
    m_lDeltaX = m_lDeltaY = 0;
}

void CMouseBase::GetState(xlong *plX, xlong *plY, signed char *pcButtons)
{
    if (plX)
        *plX = m_lX;
    if (plY)
        *plY = m_lY;
    if (pcButtons)
        *pcButtons = (signed char)m_ulButtons;
}

void CMouseBase::GetBtnState(xlong *plButtons)
{
    if (plButtons)
        *plButtons = (xlong)m_ulButtons;
    m_ulButtons &= ~(xulong)(XBTN_DOWN_MASK << 8 | XBTN_DOWN_MASK << 16);
}

void CMouseBase::GetDelta(xlong *plDX, xlong *plDY, signed char *pcButtons)
{
    if (plDX)
        *plDX = m_lDeltaX;
    if (plDY)
        *plDY = m_lDeltaY;
    if (pcButtons)
        *pcButtons = (signed char)m_ulButtons;
    m_lDeltaX = m_lDeltaY = 0;
}

xlong CMouseBase::GetDeltaHandler(xlong *plId)
{
    TDeltaHandler *pHandler = XNEW(TDeltaHandler());
    if (!pHandler)
        return 0;
    pHandler->lId = m_lNextDeltaId;
    if (!m_lstDeltaHandlers.InsertLast(pHandler))
    {
        XDELETE(pHandler);
        return 0;
    }
    ++m_lNextDeltaId;
    if (plId)
        *plId = pHandler->lId;
    return 1;
}

void CMouseBase::SetMouseAdd(xlong lX, xlong lY)
{
    m_lAddX = lX;
    m_lAddY = lY;
}

void CMouseBase::SetUpdateCallback(void (*pfnUpdate)(xlong lX, xlong lY, xlong lButtons))
{
    m_pfnUpdate = pfnUpdate;
}

void CMouseBase::IsFullScreen(xlong lOn)
{
    m_ulFlags = lOn ? m_ulFlags | FULL_SCREEN : m_ulFlags & ~(xulong)FULL_SCREEN;
}

void CMouseBase::NeedDelta(xlong lOn)
{
    m_ulFlags = lOn ? m_ulFlags | DELTA_MODE : m_ulFlags & ~(xulong)DELTA_MODE;
}

void CMouseBase::SetSensitivity(float fSensitivity)
{
    m_fSensitivity = fSensitivity;
}

float CMouseBase::GetSensitivity()
{
    return m_fSensitivity;
}

xlong CMouseBase::SetCursorCalled()
{
    return m_bSetCursorCalled;
}

void CMouseBase::ClearSetCursorCalled()
{
    m_bSetCursorCalled = 0;
}

void CMouseBase::Exit()
{
    FreeAllCursors();
    m_lstDeltaHandlers.KillAllData();
}

void CMouseBase::Feed(xlong lX, xlong lY, xlong lDX, xlong lDY, xlong lDown)
{
    m_lX = lX;
    m_lY = lY;
    m_lDeltaX += lDX;
    m_lDeltaY += lDY;
    const xulong ulDown = (xulong)lDown & XBTN_DOWN_MASK, ulWasDown = m_ulPrevButtons & XBTN_DOWN_MASK;
    if (ulDown != ulWasDown)
        QueueClick(this, { lX, lY, (signed char)ulDown });
    m_bLeftDown = (ulDown & XBTN_LEFT) != 0;
    m_bRightDown = (ulDown & XBTN_RIGHT) != 0;
    m_bMiddleDown = (ulDown & XBTN_MIDDLE) != 0;
    m_ulButtons &= ~(xulong)XBTN_DOWN_MASK;
    m_ulButtons |= ulDown | (ulDown & ~ulWasDown) << 8 | (ulWasDown & ~ulDown) << 16;
    m_ulPrevButtons = m_ulButtons;
    if (CReplay *pReplay = ActiveReplay())
        pReplay->OnMouse(lX, lY, lDX, lDY, (xlong)ulDown);
    if (m_pfnUpdate)
        m_pfnUpdate(m_lX, m_lY, (xlong)m_ulButtons);
}
