#include "tarvix/screen.h"

#include "pictures/kernels.h"
#include "screens/screenhooks.h"
#include "tarvix/error.h"
#include "tarvix/globals.h"

namespace
{
bool IsMode(const SVmode *pMode, xlong lWidth, xlong lHeight, xlong lDepth)
{
    return pMode->lWidth == lWidth && pMode->lHeight == lHeight && pMode->lDepth == lDepth;
}

// One of the buffers that SetPersistent and its kin make and delete.
xlong SetBuffer(CBitmap *&pBuffer, xlong &bMode, xlong lOn, const SVmode *pMode, xlong bIndexed, xlong lDepth,
                CPalette *pPalette)
{
    if (lOn != 1)
    {
        if (pBuffer)
        {
            pBuffer->Free();
            XDELETE(pBuffer);
            pBuffer = nullptr;
        }
        bMode = 0;
        return 1;
    }
    if (pBuffer)
        return 1;
    if (!pMode)
        return 0;
    CBitmap *pNew = XNEW(CBitmap);
    if (!pNew)
        return xError(XERR_MEMORY);
    const xlong lResult =
        bIndexed ? pNew->CreateIndex(pMode->lWidth, pMode->lHeight, lDepth, pPalette, 0)
                 : pNew->CreateRGB(pMode->lWidth, pMode->lHeight, lDepth, pMode->lRedBits, pMode->lGreenBits,
                                   pMode->lBlueBits, pMode->lRedShift, pMode->lGreenShift, pMode->lBlueShift, 0);
    if (!lResult)
    {
        XDELETE(pNew);
        return xError(XERR_MEMORY);
    }
    pBuffer = pNew;
    return 1;
}

bool (*s_pfnMayActivate)(xlong) = nullptr;
void (*s_pfnPaletteSet)() = nullptr;

bool MayActivate(xlong bActive)
{
    return !s_pfnMayActivate || s_pfnMayActivate(bActive);
}
} // namespace

void SetActivateHook(bool (*pfnMayActivate)(xlong bActive))
{
    s_pfnMayActivate = pfnMayActivate;
}

void SetPaletteHook(void (*pfnPaletteSet)())
{
    s_pfnPaletteSet = pfnPaletteSet;
}

CScreenBase::CScreenBase()
    : m_pPersistent(nullptr), m_lPage(0), m_bActive(0), m_bGreyPending(0), m_bFlipScreen(1), m_pMode(nullptr),
      m_lNumPages(0), m_bPersistentMode(0), m_pBackground(nullptr), m_bBackgroundMode(0), m_lPolygonFilter(0),
      m_lPolygonMode(0), m_pTexture(nullptr), m_lTextureCoords(), m_pAlpha(nullptr), m_bAlphaMode(0), m_lClearCount(),
      m_lPersistentCount(), m_lValidateCount(), m_lClipDepth(0), m_Polygon(), m_lFirstRow(0), m_lLastRow(0), m_lLeftX(),
      m_lRightX(), m_lLeftU(), m_lRightU(), m_lLeftV(), m_lRightV(), m_lClearFirst(), m_lPersistentFirst(),
      m_lValidateFirst()
{
    for (int i = 0; i < 256; ++i)
    {
        m_DefaultPalette.m_Colors[i].Set((unsigned char)i, (unsigned char)i, (unsigned char)i, 255);
        m_SysColors[i].Set(0, 0, 0, 0);
    }
    m_DefaultPalette.m_ucFirst = 0;
    m_DefaultPalette.m_ucLast = 0;
    m_Palette.Clone(&m_DefaultPalette);
    if (glb && glb->m_pScreenList)
        glb->m_pScreenList->Register(this);
}

CScreenBase::~CScreenBase()
{
    if (glb && glb->m_pScreenList)
        glb->m_pScreenList->Unregister(this);
    if (glb && glb->m_pScreen == this)
        glb->m_pScreen = nullptr;
    if (m_pMode)
        XDELETE(m_pMode);
    CleanUp();
}

xlong CScreenBase::InitModeRez(xlong lWidth, xlong lHeight, xlong lDepth, xlong lKind)
{
    for (m_Modes.First(); m_Modes.Exists(); m_Modes.Next())
    {
        const SVmode *pMode = (SVmode *)m_Modes.Get();
        if (!IsMode(pMode, lWidth, lHeight, lDepth) || (lKind != -1 && pMode->lKind != lKind))
            continue;
        const xlong lResult = InitMode();
        if (lResult)
            SetPalette(&m_DefaultPalette);
        return lResult;
    }
    return 0;
}

xlong CScreenBase::InitModeMode(SVmode *pMode)
{
    for (m_Modes.First(); m_Modes.Exists(); m_Modes.Next())
        if (IsMode((SVmode *)m_Modes.Get(), pMode->lWidth, pMode->lHeight, pMode->lDepth))
            return InitMode();
    return 0;
}

SVmode *CScreenBase::GetActiveMode()
{
    return m_pMode;
}

xlong CScreenBase::ModeFirst()
{
    return m_Modes.First();
}

xlong CScreenBase::ModeExists()
{
    return m_Modes.Exists();
}

xlong CScreenBase::ModeNext()
{
    return m_Modes.Next();
}

SVmode *CScreenBase::ModeGet()
{
    return (SVmode *)m_Modes.Get();
}

void CScreenBase::Activate()
{
    if (!MayActivate(1))
        return;
    m_bActive = 1;
    xprintf(nullptr, 0, nullptr, 0, "Application activated\n");
    if (!m_pMode)
        return;
    if (m_bPersistentMode)
        AddClearAreaPersistent(0, 0, m_pMode->lWidth - 1, m_pMode->lHeight - 1);
    else
        AddClearArea(0, 0, m_pMode->lWidth - 1, m_pMode->lHeight - 1);
}

void CScreenBase::DeActivate()
{
    if (!MayActivate(0))
        return;
    m_bActive = 0;
    xprintf(nullptr, 0, nullptr, 0, "Application deactivated\n");
}

xlong CScreenBase::GetActive()
{
    return m_bActive;
}

xlong CScreenBase::IsFullScreen()
{
    return m_pMode && m_pMode->lKind == XMODE_FULL_SCREEN;
}

xlong CScreenBase::MakeScreenFormat(CBitmap *pBitmap, xlong lFlags)
{
    if (!m_pMode)
        return 0;
    if (m_pMode->lDepth == 8)
        return pBitmap->ConvertIndex(-1, -1, 8, &m_Palette, lFlags);
    return pBitmap->ConvertRGB(-1, -1, m_pMode->lDepth, m_pMode->lRedBits, m_pMode->lGreenBits, m_pMode->lBlueBits,
                               m_pMode->lRedShift, m_pMode->lGreenShift, m_pMode->lBlueShift, lFlags);
}

void CScreenBase::DrawBitmapPersistent(CBitmap *pBitmap, xlong lSourceX, xlong lSourceY, xlong lX, xlong lY,
                                       xlong lWidth, xlong lHeight, xlong lTransparent, xlong lFlags)
{
    if (m_bPersistentMode != 1 || !m_pPersistent)
        return;
    lWidth = SizeOrDefault(lWidth, pBitmap->m_lWidth);
    lHeight = SizeOrDefault(lHeight, pBitmap->m_lHeight);
    if (!ClipAreas(&lSourceX, &lSourceY, &lWidth, &lHeight, &pBitmap->m_rcClip, &lX, &lY, &m_rcClip))
        return;
    m_pPersistent->Blt(pBitmap, lSourceX, lSourceY, lX, lY, lWidth, lHeight, lTransparent, 1, lFlags);
    const CScreenBase *pActive = glb->m_pScreen ? glb->m_pScreen : this;
    if (pActive->m_pMode && pActive->m_pMode->lDepth == 8 && m_pPersistent->m_pPalette)
        m_pPersistent->m_pPalette->Clone(pBitmap->m_pPalette);
    AddClearAreaPersistent(lX, lY, lX + lWidth - 1, lY + lHeight - 1);
}

void CScreenBase::DrawBitmapPersistentScale(CBitmap *pBitmap, CRect *pSource, CRect *pTarget, xlong lFlags)
{
    if (!m_pPersistent)
        return;
    m_pPersistent->BltScale(pBitmap, pSource, pTarget, lFlags);
    AddClearAreaPersistent(pTarget->m_lLeft, pTarget->m_lTop, pTarget->m_lRight, pTarget->m_lBottom);
}

xlong CScreenBase::SetPersistent(xlong lOn)
{
    return SetBuffer(m_pPersistent, m_bPersistentMode, lOn, m_pMode, m_pMode && m_pMode->lIndexed,
                     m_pMode ? m_pMode->lDepth : 0, &m_Palette);
}

xlong CScreenBase::SetPersistentMode(xlong lMode)
{
    m_bPersistentMode = lMode;
    if (lMode == 1 && !m_pPersistent && !SetPersistent(1))
        m_bPersistentMode = 0;
    return m_bPersistentMode == lMode;
}

xlong CScreenBase::SetBackground(xlong lOn)
{
    return SetBuffer(m_pBackground, m_bBackgroundMode, lOn, m_pMode, m_pMode && m_pMode->lIndexed,
                     m_pMode ? m_pMode->lDepth : 0, &m_Palette);
}

xlong CScreenBase::SetBackgroundMode(xlong lMode)
{
    m_bBackgroundMode = lMode;
    if (lMode == 1 && !m_pBackground && !SetBackground(1))
        m_bBackgroundMode = 0;
    return m_bBackgroundMode == lMode;
}

void CScreenBase::SetPersistentToBackground()
{
    if (m_bPersistentMode != 1 || m_bBackgroundMode != 1 || !m_pPersistent || !m_pBackground || !m_pMode)
        return;
    m_pBackground->Blt(m_pPersistent, 0, 0, 0, 0, m_pMode->lWidth - 1, m_pMode->lHeight - 1, 0, 0, 0);
}

xlong CScreenBase::CachePersistentBitmap()
{
    return m_pPersistent ? MakeScreenBitmap(m_pPersistent, 1) : 0;
}

xlong CScreenBase::SetAlphaBuffer(xlong lOn)
{
    return SetBuffer(m_pAlpha, m_bAlphaMode, lOn, m_pMode, 1, 8, &m_Palette);
}

xlong CScreenBase::SetAlphaBufferMode(xlong lMode)
{
    m_bAlphaMode = lMode;
    if (lMode == 1 && !m_pAlpha && !SetAlphaBuffer(1))
        m_bAlphaMode = 0;
    return m_bAlphaMode == lMode;
}

void CScreenBase::DrawBitmapAlpha(CBitmap *pBitmap, xlong lSourceX, xlong lSourceY, xlong lX, xlong lY, xlong lWidth,
                                  xlong lHeight, xlong lTransparent, xlong lFlags)
{
    if (m_bAlphaMode != 1 || !m_pAlpha)
        return;
    if (lWidth == -1)
        lWidth = pBitmap->m_lWidth;
    if (lHeight == -1)
        lHeight = pBitmap->m_lHeight;
    if (pBitmap->ConvertIndex(-1, -1, 8, &m_DefaultPalette, 1))
        m_pAlpha->Blt(pBitmap, lSourceX, lSourceY, lX, lY, lWidth, lHeight, lTransparent, 0, lFlags);
}

void CScreenBase::ClearAlpha(signed char cValue, xlong lLeft, xlong lTop, xlong lRight, xlong lBottom) {}

void CScreenBase::SetClip(xlong lLeft, xlong lTop, xlong lRight, xlong lBottom)
{
    if (m_pMode)
        m_rcClip.Set(0, 0, m_pMode->lWidth - 1, m_pMode->lHeight - 1);
    SetSubClip(lLeft, lTop, lRight, lBottom);
}

void CScreenBase::SetSubClip(xlong lLeft, xlong lTop, xlong lRight, xlong lBottom)
{
    CRect rc;
    rc.Set(lLeft, lTop, lRight, lBottom);
    if (!m_rcClip.Intersect(&m_rcClip, &rc))
        m_rcClip.SetEmpty();
}

xlong CScreenBase::PushClip()
{
    if ((xulong)m_lClipDepth > MAX_CLIPS - 1)
        return 0;
    m_ClipStack[m_lClipDepth++] = m_rcClip;
    return 1;
}

xlong CScreenBase::PopClip()
{
    if (m_lClipDepth <= 0 || m_lClipDepth > MAX_CLIPS)
        return 0;
    m_rcClip = m_ClipStack[--m_lClipDepth];
    return 1;
}

void CScreenBase::SetPalette(CPalette *pPalette)
{
    if (!m_pMode || m_pMode->lDepth != 8)
        return;
    m_Palette.Clone(pPalette);
    XDELETE_ARRAY(glb->m_pColourIndexMap);
    glb->m_pColourIndexMap = nullptr;
    if (s_pfnPaletteSet)
        s_pfnPaletteSet();
}

CPalette *CScreenBase::GetPalette()
{
    return &m_Palette;
}

void CScreenBase::GetScreenPos(xlong *plX, xlong *plY, xlong *plWidth, xlong *plHeight)
{
    if (plX)
        *plX = 0;
    if (plY)
        *plY = 0;
    if (plWidth)
        *plWidth = m_pMode ? m_pMode->lWidth : 0;
    if (plHeight)
        *plHeight = m_pMode ? m_pMode->lHeight : 0;
}

void CScreenBase::SetScreenPos(xlong lX, xlong lY) {}

void CScreenBase::SetScreenSize(xlong lWidth, xlong lHeight) {}

void CScreenBase::SetSystemPalette() {}

xlong CScreenBase::SetScreenToPersistentGrey()
{
    m_bGreyPending = 1;
    return 1;
}

void CScreenBase::CleanUp()
{
    m_pMode = nullptr;
    SetPersistent(0);
    SetBackground(0);
    SetAlphaBuffer(0);
    m_lPage = 0;
    for (int i = 0; i < PAGES; ++i)
        m_lClearCount[i] = 0;
    m_lClipDepth = 0;
    for (m_Modes.First(); m_Modes.Exists(); m_Modes.Next())
    {
        SVmode *pMode = (SVmode *)m_Modes.Get();
        XDELETE(pMode);
    }
    m_Modes.KillAll();
}

CScreenBaseList::CScreenBaseList() {}

CScreenBaseList::~CScreenBaseList()
{
    UnregisterAll();
}

xlong CScreenBaseList::Register(CScreenBase *pScreen)
{
    return m_List.InsertLast(pScreen);
}

xlong CScreenBaseList::Unregister(CScreenBase *pScreen)
{
    return m_List.DeleteItem(pScreen);
}

xlong CScreenBaseList::UnregisterAll()
{
    m_List.KillAll();
    return 1;
}

xlong CScreenBaseList::First()
{
    return m_List.First();
}

xlong CScreenBaseList::Next()
{
    return m_List.Next();
}

xlong CScreenBaseList::Exists()
{
    return m_List.Exists();
}

xlong CScreenBaseList::NumTypes()
{
    return m_List.GetNumNodes();
}

CScreenBase *CScreenBaseList::Get()
{
    return (CScreenBase *)m_List.Get();
}
