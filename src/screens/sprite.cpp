#include "tarvix/sprite.h"

#include "core/msgsys.h"
#include "tarvix/bitmap.h"
#include "tarvix/globals.h"
#include "tarvix/screen.h"

#include <algorithm>

namespace
{
// All sprites of a frame save before the first one draws.
const xlong s_lSavePriority = -100;
const xlong s_lDrawPriority = -101;
const xlong s_lTopPriority = -103;
const xlong s_lRestorePriority = 100;
} // namespace

CSprite::CSprite()
    : m_pBitmap(nullptr), m_apRestore(), m_alSaved(), m_alDrawn(), m_lFlags(0), m_lKey(0), m_pFrames(nullptr),
      m_lNumFrames(0), m_lCurFrame(0), m_lFrameW(0), m_lFrameH(0), m_lRestoreW(0), m_lRestoreH(0), m_lX(0), m_lY(0),
      m_lReserved(), m_lFrameDelay(0), m_lDelayCount(0), m_lAnimStatus(XSPRITE_STOPPED)
{
}

xlong CSprite::MsgHandler(xulong ulMsg, xlong lA, xlong lB)
{
    const xlong lPage = glb->m_pScreen ? glb->m_pScreen->m_lPage : 0;
    if (ulMsg == XFRAME_DRAW)
    {
        if (!(m_lFlags & XSPRITE_VISIBLE))
            m_alDrawn[lPage] = 0;
        else if (m_alSaved[lPage])
            Draw();
        else
            UpdateRestoreBuffer();
    }
    else if (ulMsg == XFRAME_END && m_alDrawn[lPage])
        Restore();
    return 1;
}

CSprite::~CSprite()
{
    Free();
}

xlong CSprite::Create(CBitmap *pBitmap, const TPoint *pFrames, xlong lWidth, xlong lHeight, xlong lX, xlong lY,
                      xlong lFlags, xlong lDelay, xlong lKey)
{
    Free();
    if (!pBitmap)
        return 0;
    m_lFrameW = m_lRestoreW = lWidth < 1 ? pBitmap->m_lWidth : lWidth;
    m_lFrameH = m_lRestoreH = lHeight < 1 ? pBitmap->m_lHeight : lHeight;
    m_pBitmap = pBitmap;
    m_lFlags = lFlags | XSPRITE_VISIBLE;
    m_lCurFrame = 0;
    m_lKey = lKey;
    m_lX = lX;
    m_lY = lY;
    m_lAnimStatus = XSPRITE_FORWARD;
    if (!CreateRestoreBuffers())
        return 0;
    if (lDelay > 0)
    {
        m_lFrameDelay = lDelay;
        m_lDelayCount = 0;
    }
    return CreateFrames(pFrames) &&
           MsgSysRegister(this, XFRAME_DRAW, m_lFlags & XSPRITE_ON_TOP ? s_lTopPriority : s_lDrawPriority) &&
           MsgSysRegister(this, XFRAME_DRAW, s_lSavePriority) && MsgSysRegister(this, XFRAME_END, s_lRestorePriority);
}

void CSprite::SetBaseFlag(xlong lFlags)
{
    m_lFlags |= lFlags;
}

void CSprite::ClearBaseFlag(xlong lFlags)
{
    m_lFlags &= ~lFlags;
}

xlong CSprite::CheckBaseFlag(xlong lMask)
{
    return (m_lFlags & lMask) != 0;
}

void CSprite::SetAnimationStatus(xlong lStatus)
{
    if (lStatus >= XSPRITE_STOPPED && lStatus <= XSPRITE_BACKWARD)
        m_lAnimStatus = lStatus;
}

void CSprite::SetPosition(xlong lX, xlong lY)
{
    m_lX = lX;
    m_lY = lY;
}

void CSprite::SetRelativePosition(xlong lDX, xlong lDY)
{
    m_lX += lDX;
    m_lY += lDY;
}

void CSprite::SetSize(xlong lWidth, xlong lHeight)
{
    m_lFrameW = lWidth;
    m_lFrameH = lHeight;
}

void CSprite::SetCurrentFrame(xlong lFrame)
{
    if (lFrame >= 0 && lFrame < m_lNumFrames)
        m_lCurFrame = lFrame;
}

void CSprite::SetFrameDelay(xlong lDelay)
{
    if (lDelay > 0)
        m_lFrameDelay = lDelay;
}

void CSprite::SetSpriteClipArea(CRect rcArea)
{
    m_lFlags |= XSPRITE_USE_CLIP;
    m_ClipRect = rcArea;
}

xlong CSprite::GetPositionX()
{
    return m_lX;
}

xlong CSprite::GetPositionY()
{
    return m_lY;
}

xlong CSprite::GetWidth()
{
    return m_lFrameW;
}

xlong CSprite::GetHeight()
{
    return m_lFrameH;
}

void CSprite::Draw()
{
    CScreenBase *const pScreen = glb->m_pScreen;
    if (pScreen && m_lCurFrame >= 0 && m_lCurFrame < m_lNumFrames)
    {
        const bool bClip = (m_lFlags & XSPRITE_USE_CLIP) && pScreen->PushClip();
        if (bClip)
            pScreen->SetClip(m_ClipRect.m_lLeft, m_ClipRect.m_lTop, m_ClipRect.m_lRight, m_ClipRect.m_lBottom);
        const TPoint frame = m_pFrames[m_lCurFrame];
        pScreen->DrawSpriteScreen(m_pBitmap, frame.lX, frame.lY, m_lX, m_lY, m_lFrameW, m_lFrameH, m_lKey, 0);
        if (bClip)
            pScreen->PopClip();
        m_aRestoreRect[pScreen->m_lPage].SetXYWH(m_lX, m_lY, m_lRestoreW, m_lRestoreH);
        m_alSaved[pScreen->m_lPage] = 0;
        m_alDrawn[pScreen->m_lPage] = 1;
    }
    if ((!m_lFrameDelay || !m_lDelayCount) && m_lAnimStatus != XSPRITE_STOPPED)
        Step();
    if (m_lDelayCount < 1)
        m_lDelayCount = m_lFrameDelay;
    else
        --m_lDelayCount;
}

void CSprite::UpdateRestoreBuffer()
{
    CScreenBase *const pScreen = glb->m_pScreen;
    const xlong lPage = pScreen ? pScreen->m_lPage : 0;
    if (pScreen && m_apRestore[lPage])
        pScreen->UpdateSpriteRestore(m_lX, m_lY, m_lFrameW, m_lFrameH, m_lKey, 0, m_apRestore[lPage]);
    m_alSaved[lPage] = 1;
}

void CSprite::Restore()
{
    CScreenBase *const pScreen = glb->m_pScreen;
    if (!pScreen || !m_pFrames)
        return;
    const CRect &rcSaved = m_aRestoreRect[pScreen->m_lPage];
    pScreen->RestoreSpriteScreen(m_apRestore[pScreen->m_lPage], rcSaved.m_lLeft, rcSaved.m_lTop, m_lRestoreW,
                                 m_lRestoreH);
}

void CSprite::Free()
{
    if (!glb)
        return;
    MsgSysUnregister(this, XFRAME_DRAW, m_lFlags & XSPRITE_ON_TOP ? s_lTopPriority : s_lDrawPriority);
    MsgSysUnregister(this, XFRAME_DRAW, s_lSavePriority);
    MsgSysUnregister(this, XFRAME_END, s_lRestorePriority);
    XDELETE_ARRAY(m_pFrames);
    m_pFrames = nullptr;
    m_lNumFrames = 0;
    for (CBitmap *&pRestore : m_apRestore)
    {
        XDELETE(pRestore);
        pRestore = nullptr;
    }
}

xlong CSprite::CreateRestoreBuffers()
{
    CScreenBase *const pScreen = glb->m_pScreen;
    const SVmode *const pMode = pScreen ? pScreen->GetActiveMode() : nullptr;
    if (!pMode)
        return 0;
    for (CBitmap *&pRestore : m_apRestore)
    {
        pRestore = XNEW(CBitmap);
        if (!pRestore)
            return 0;
        const xlong lCreated = pMode->lDepth == 8
                                   ? pRestore->CreateIndex(m_lRestoreW, m_lRestoreH, 8, pScreen->GetPalette(), 0)
                                   : pRestore->CreateRGB(m_lRestoreW, m_lRestoreH, 24, 8, 8, 8, 16, 8, 0, 0) &&
                                         pScreen->MakeScreenFormat(pRestore, 1);
        if (!lCreated)
            return 0;
    }
    return 1;
}

xlong CSprite::CreateFrames(const TPoint *pFrames)
{
    xlong lCount = 0;
    if (!pFrames)
        lCount = m_pBitmap->m_lWidth / m_lFrameW;
    else
        while (pFrames[lCount].lX != -1 && pFrames[lCount].lY != -1)
            ++lCount;
    m_pFrames = XNEW(TPoint[(size_t)lCount]);
    if (!m_pFrames)
        return 0;
    for (xlong l = 0; l < lCount; ++l)
        m_pFrames[l] = pFrames ? pFrames[l] : TPoint{ l * m_lFrameW, 0 };
    m_lNumFrames = lCount;
    return 1;
}

// One step of the animation, by its mode.
void CSprite::Step()
{
    const xlong lLast = m_lNumFrames - 1;
    const xlong lMode = m_lFlags & XSPRITE_MODE_MASK;
    const bool bAtEnd = m_lCurFrame >= lLast;
    switch (lMode)
    {
    case XSPRITE_LOOP:
        m_lCurFrame = bAtEnd ? 0 : m_lCurFrame + 1;
        break;
    case XSPRITE_ONCE:
        if (bAtEnd)
            m_lAnimStatus = XSPRITE_STOPPED;
        else
            ++m_lCurFrame;
        break;
    case XSPRITE_ONCE_BACK:
        if (!bAtEnd)
            ++m_lCurFrame;
        else if (m_lCurFrame == lLast)
        {
            m_lCurFrame = 0;
            m_lAnimStatus = XSPRITE_STOPPED;
        }
        break;
    case XSPRITE_PING_PONG:
    case XSPRITE_PING_PONG_ONCE:
        if (m_lAnimStatus == XSPRITE_FORWARD)
        {
            if (bAtEnd)
                m_lAnimStatus = XSPRITE_BACKWARD;
            m_lCurFrame += bAtEnd ? -1 : 1;
        }
        else if (m_lCurFrame >= 1)
            --m_lCurFrame;
        else if (lMode == XSPRITE_PING_PONG_ONCE)
            m_lAnimStatus = XSPRITE_STOPPED;
        else
        {
            ++m_lCurFrame;
            m_lAnimStatus = XSPRITE_FORWARD;
        }
        // A single frame has nowhere to go.
        m_lCurFrame = std::clamp<xlong>(m_lCurFrame, 0, std::max<xlong>(lLast, 0));
        break;
    }
}
