#include "tarvix/winctrl.h"

#include "core/invariant.h"
#include "core/msgsys.h"
#include "core/walk.h"
#include "gui/alive.h"
#include "gui/look.h"
#include "input/clicks.h"
#include "input/paste.h"
#include "screens/screenhooks.h"
#include "tarvix/bitmap.h"
#include "tarvix/error.h"
#include "tarvix/globals.h"
#include "tarvix/keyboard.h"
#include "tarvix/mouse.h"
#include "tarvix/screen.h"
#include "tarvix/window.h"

// Invariants
// 1. The list's order is the windows' order from front to back: hits are looked
//    for from its head, drawing begins at its end.
// 2. An entry's window lives: it takes its entries out when it dies.
// 3. After ToFront modal windows stand ahead of all others.
// 4. What calls a window walks with CListWalk; the list's cursor is the host's,
//    and whoever moves it in between puts it back.

namespace
{
const xlong s_lDrawPriority = 100;
const xlong s_lInputPriority = -104;

struct TGrey
{
    unsigned char ucRed, ucGreen, ucBlue;
    constexpr TGrey(unsigned char uc) : ucRed(uc), ucGreen(uc), ucBlue(uc) {}
    constexpr TGrey(unsigned char ucR, unsigned char ucG, unsigned char ucB) : ucRed(ucR), ucGreen(ucG), ucBlue(ucB) {}
};

// In the order of TCntrlColor.
const TGrey s_ColorSets[8][8] = {
    { 80, 250, 190, 32, 255, 125, 0, 1 },
    { 80, 32, 190, 250, 0, 125, 255, 1 },
    { 80, 255, 210, 52, 255, 155, 32, 1 },
    { 80, 80, 80, 80, 80, 80, 80, 80 },
    { 0, 205, 192, 0, 220, 70, 0, 1 },
    { 0, { 0, 0, 90 }, 205, 0, 190, 250, 0, 1 },
    { 32, { 0, 0, 128 }, 240, 0, 190, 250, 0, 1 },
    { { 0, 0, 160 }, 205, 140, 0, 220, 70, 0, 1 },
};

enum
{
    SET_BUTTON = 0,
    SET_FRAME = 4,
    SET_TITLE = 5,
    SET_TITLE_ACTIVE = 6,
    SET_PROGRESS = 7
};

void RemapDefaultsOfGlobals()
{
    if (glb->m_pWinCtrl)
        glb->m_pWinCtrl->RemapDefaults();
}

void PasteIntoWindows(char *pszText)
{
    if (glb->m_pWinCtrl)
        glb->m_pWinCtrl->SendMessageA(XGUIMSG_PASTE, 0, 0, 0, pszText);
}

bool IsHidden(const CWindowBase &window)
{
    return (window.m_lFlags & XWIN_HIDDEN) != 0;
}

CWindowBase *Current(CLList &windows)
{
    const TWinEntry *const pEntry = (TWinEntry *)windows.Get();
    return pEntry ? pEntry->pWindow : nullptr;
}

xlong CountOf(const CLList &windows, const CWindowBase &window)
{
    xlong lCount = 0;
    for (const TWinEntry *pEntry : Each<TWinEntry>(windows))
        lCount += pEntry->pWindow == &window;
    return lCount;
}

// The foremost window that can be seen, or null.
CWindowBase *Front(const CLList &windows)
{
    for (const TWinEntry *pEntry : Each<TWinEntry>(windows))
        if (!IsHidden(*pEntry->pWindow))
            return pEntry->pWindow;
    return nullptr;
}

bool IsOutside(const SVmode *pMode, xlong lX, xlong lY)
{
    return pMode && (lX < 0 || lY < 0 || lX >= pMode->lWidth || lY >= pMode->lHeight);
}

bool IsClick(signed char cButtons)
{
    return cButtons == 1 || cButtons == 2 || cButtons == 4;
}

void ShowCursorOf(const CControlBase *pCntrl, xulong ulDefault)
{
    glb->m_pMouse->SetCursor(pCntrl && pCntrl->m_pCursor ? *pCntrl->m_pCursor : ulDefault, 0);
}

// Moves the list to the node of a window.
bool FindNode(CLList &windows, xlong lID)
{
    for (windows.First(); windows.Exists(); windows.Next())
        if (Current(windows)->m_lID == lID)
            return true;
    return false;
}

bool FindNode(CLList &windows, const CWindowBase &window)
{
    for (windows.First(); windows.Exists(); windows.Next())
        if (Current(windows) == &window)
            return true;
    return false;
}

// The node at the cursor goes to the head or the end of the list.
void MoveNode(CLList &windows, bool bToHead)
{
    CNode *const pNode = windows.RemoveNode();
    if (bToHead)
        windows.InsertFirst(pNode, 1);
    else
        windows.InsertLast(pNode, 1);
}

// From the cursor back to the first window of its group; then how many windows
// the group has. The cursor ends on its first window.
xlong CountGroup(CLList &windows, CWindowBase *&pLast)
{
    while (windows.m_pCurr->pPrev && !(Current(windows)->m_lFlags & XWIN_ZORDERFIRST))
        windows.Prev();
    xlong lCount = 1;
    const TKeepCursor keep(windows);
    for (; !(Current(windows)->m_lFlags & XWIN_ZORDERLAST) && windows.m_pCurr->pNext; windows.Next())
        ++lCount;
    pLast = Current(windows);
    return lCount;
}

// Modal windows stand ahead of all others.
void OrderModal(CLList &windows)
{
    bool bSeenOther = false;
    for (windows.First(); windows.Exists();)
    {
        const bool bModal = (Current(windows)->m_lFlags & XWIN_MODAL) != 0;
        if (bModal && bSeenOther)
        {
            MoveNode(windows, true);
            bSeenOther = false;
            windows.First();
            continue;
        }
        bSeenOther = bSeenOther || !bModal;
        windows.Next();
    }
}
// Invariant 3.
bool IsModalFirst(const CLList &windows)
{
    bool bSeenOther = false;
    for (const TWinEntry *pEntry : Each<TWinEntry>(windows))
    {
        const bool bModal = (pEntry->pWindow->m_lFlags & XWIN_MODAL) != 0;
        if (bModal && bSeenOther)
            return false;
        bSeenOther |= !bModal;
    }
    return true;
}
} // namespace

CWinCtrl::CWinCtrl()
    : m_lZOrderCount(0), m_pDefFrameColors(), m_pDefTitlebarColors(), m_pDefButtonColors(), m_pDefProgressColors(),
      m_pColorSets(), m_pDefFont(nullptr), m_pDefCaret(nullptr), m_pDefCheck(nullptr), m_pDefClose(), m_pDefDrop(),
      m_pDefArrowUp(), m_pDefArrowDown(), m_pDefaultButton(nullptr), m_pDefaultStatic(nullptr),
      m_pDefaultTitlebar(nullptr), m_pDefaultFrame(nullptr), m_ulCursorDefault(0), m_ulCursorText(0), m_ulCursorHand(0),
      m_lOptions(0), m_lLastX(0), m_lLastY(0), m_cLastButtons(0)
{
    SetPaletteHook(RemapDefaultsOfGlobals);
    SetPasteSink(PasteIntoWindows);
}

xlong CWinCtrl::MsgHandler(xulong ulMsg, xlong lA, xlong lB)
{
    if (ulMsg == XFRAME_DRAW)
    {
        if (glb->m_pScreen)
        {
            glb->m_pScreen->Validate();
            GfxHandler();
        }
    }
    else if (ulMsg == XFRAME_END)
        GuiMsgHandler();
    return 1;
}

CWinCtrl::~CWinCtrl()
{
    for (TCntrlColor *pColors : m_pColorSets)
        XDELETE(pColors);
    RemoveAll();
}

xlong CWinCtrl::Create()
{
    if (!MsgSysRegister(this, XFRAME_DRAW, s_lDrawPriority) || !MsgSysRegister(this, XFRAME_END, s_lInputPriority))
        return xError(XERR_MEMORY);
    for (int nSet = 0; nSet < 8; ++nSet)
    {
        if (!m_pColorSets[nSet])
            m_pColorSets[nSet] = XNEW(TCntrlColor);
        if (!m_pColorSets[nSet])
            return xError(XERR_MEMORY);
        TRGBA colors[8];
        for (int n = 0; n < 8; ++n)
        {
            const TGrey &value = s_ColorSets[nSet][n];
            MakeCol(value.ucRed, value.ucGreen, value.ucBlue, 0, colors[n]);
        }
        SetupColors(m_pColorSets[nSet], &colors[0], &colors[1], &colors[2], &colors[3], &colors[4], &colors[5],
                    &colors[6], &colors[7]);
    }
    TCntrlColor **const ppSets = m_pColorSets;
    StoreLook(m_pDefButtonColors, ppSets[SET_BUTTON], ppSets[SET_BUTTON + 1], ppSets[SET_BUTTON + 2],
              ppSets[SET_BUTTON + 3]);
    StoreLook(m_pDefFrameColors, ppSets[SET_FRAME], ppSets[SET_FRAME], ppSets[SET_FRAME], ppSets[SET_FRAME]);
    StoreLook(m_pDefTitlebarColors, ppSets[SET_TITLE], ppSets[SET_TITLE_ACTIVE], ppSets[SET_TITLE_ACTIVE],
              ppSets[SET_TITLE]);
    StoreLook(m_pDefProgressColors, ppSets[SET_PROGRESS], ppSets[SET_PROGRESS], ppSets[SET_PROGRESS],
              ppSets[SET_PROGRESS]);
    return 1;
}

xlong CWinCtrl::AddWindow(CWindowBase *pWindow, TGuiCallback pfnCallback, void *pUser)
{
    TWinEntry *const pEntry = XNEW(TWinEntry);
    if (!pEntry)
        return xError(XERR_MEMORY);
    *pEntry = { pWindow, pfnCallback, pUser };
    short sInserted;
    {
        const TKeepCursor keep(m_Windows);
        if (pWindow->m_lFlags & XWIN_ZORDER)
        {
            m_lZOrderCount = pWindow->m_lFlags & XWIN_ZORDERFIRST ? 0 : m_lZOrderCount + 1;
            m_Windows.Get((xulong)m_lZOrderCount);
        }
        else
            for (m_Windows.First(); m_Windows.Exists() && (Current(m_Windows)->m_lFlags & XWIN_MODAL);)
                m_Windows.Next();
        sInserted = m_Windows.Exists() ? m_Windows.InsertBefore(pEntry) : m_Windows.InsertLast(pEntry);
    }
    if (!sInserted)
    {
        XDELETE(pEntry);
        return xError(XERR_MEMORY);
    }
    DeactivateAll();
    if (!(pWindow->m_lFlags & XWIN_ZORDER))
        pWindow->ToFront();
    return 1;
}

xlong CWinCtrl::RemoveWindow(xlong lID)
{
    return FindNode(m_Windows, lID) ? RemoveCurrent() : 0;
}

xlong CWinCtrl::TakeWindow(CWindowBase *pWindow)
{
    // One that was added twice stands there twice; the last one to go brings
    // another window to the front.
    xlong lResult = 0;
    while (FindNode(m_Windows, *pWindow))
    {
        TWinEntry *const pEntry = (TWinEntry *)m_Windows.Get();
        if (CountOf(m_Windows, *pWindow) == 1)
            return RemoveCurrent();
        lResult = m_Windows.Delete();
        XDELETE(pEntry);
    }
    return lResult;
}

xlong CWinCtrl::RemoveAll()
{
    for (TWinEntry *pEntry : Each<TWinEntry>(m_Windows))
        XDELETE(pEntry);
    m_Windows.KillAll();
    return 1;
}

CWindowBase *CWinCtrl::GetWindow()
{
    return Current(m_Windows);
}

xlong CWinCtrl::SendMessageA(xlong lMsg, xlong lP1, xlong lP2, xparam lP3, void *pData)
{
    const TKeepCursor keep(m_Windows);
    if (lMsg == XGUIMSG_PASTE)
        for (TWinEntry *pEntry : Each<TWinEntry>(m_Windows))
            if (pEntry->pWindow->m_bActive)
            {
                pEntry->pWindow->GuiMsgHandler(lMsg, lP1, lP2, lP3, pData);
                return 1;
            }
    if (lMsg == XGUIMSG_TOFRONT)
        ToFront(lP1);
    if (lP3 && lMsg != XGUIMSG_KEY)
    {
        if (!FindNode(m_Windows, lP1))
            return 0;
        Current(m_Windows)->GuiMsgHandler(lMsg, lP1, lP2, lP3, pData);
        return 1;
    }
    for (TWinEntry *pEntry : Each<TWinEntry>(m_Windows))
        if (pEntry->pWindow->m_lID == lP1 && pEntry->pfnCallback)
        {
            pEntry->pfnCallback(lMsg, lP1, lP2, lP3, pData ? pData : pEntry->pUser);
            return 1;
        }
    return 0;
}

xlong CWinCtrl::Validate()
{
    for (TWinEntry *pEntry : EachBack<TWinEntry>(m_Windows))
        pEntry->pWindow->Validate();
    return 1;
}

xlong CWinCtrl::Validate(CRect *pArea, xlong lIndex)
{
    for (TWinEntry *pEntry : EachBack<TWinEntry>(m_Windows))
        if (!IsHidden(*pEntry->pWindow))
            pEntry->pWindow->Validate(pArea, lIndex);
    return 1;
}

void CWinCtrl::PrintWinList()
{
    xprintf(nullptr, 0, nullptr, 0, "\nWindowList\n");
    for (const TWinEntry *pEntry : Each<TWinEntry>(m_Windows))
        xprintf(nullptr, 0, nullptr, 0, "win %ld: %lx\n", (long)pEntry->pWindow->m_lID,
                (long)pEntry->pWindow->m_lFlags);
    xprintf(nullptr, 0, nullptr, 0, "--------------\n\n");
}

xlong CWinCtrl::SetDefaultFrame(TCntrlColor *pReleased, TCntrlColor *pPressed, TCntrlColor *pHighlight,
                                TCntrlColor *pDisabled)
{
    return StoreLook(m_pDefFrameColors, pReleased, pPressed, pHighlight, pDisabled);
}

xlong CWinCtrl::SetDefaultTitlebar(TCntrlColor *pReleased, TCntrlColor *pPressed, TCntrlColor *pHighlight,
                                   TCntrlColor *pDisabled)
{
    return StoreLook(m_pDefTitlebarColors, pReleased, pPressed, pHighlight, pDisabled);
}

xlong CWinCtrl::SetDefaultButton(TCntrlColor *pReleased, TCntrlColor *pPressed, TCntrlColor *pHighlight,
                                 TCntrlColor *pDisabled)
{
    return StoreLook(m_pDefButtonColors, pReleased, pPressed, pHighlight, pDisabled);
}

xlong CWinCtrl::SetDefaultFont(CFont *pFont)
{
    m_pDefFont = pFont;
    return 1;
}

xlong CWinCtrl::SetDefaultCaret(CBitmap *pBitmap)
{
    m_pDefCaret = pBitmap;
    return 1;
}

xlong CWinCtrl::SetDefaultCheck(CBitmap *pBitmap)
{
    m_pDefCheck = pBitmap;
    return 1;
}

xlong CWinCtrl::SetDefaultClose(CBitmap *pReleased, CBitmap *pPressed, CBitmap *pHighlight, CBitmap *pDisabled)
{
    return StoreLook(m_pDefClose, pReleased, pPressed, pHighlight, pDisabled);
}

xlong CWinCtrl::SetDefaultDrop(CBitmap *pReleased, CBitmap *pPressed, CBitmap *pHighlight, CBitmap *pDisabled)
{
    return StoreLook(m_pDefDrop, pReleased, pPressed, pHighlight, pDisabled);
}

xlong CWinCtrl::SetDefaultArrowUp(CBitmap *pReleased, CBitmap *pPressed, CBitmap *pHighlight, CBitmap *pDisabled)
{
    return StoreLook(m_pDefArrowUp, pReleased, pPressed, pHighlight, pDisabled);
}

xlong CWinCtrl::SetDefaultArrowDown(CBitmap *pReleased, CBitmap *pPressed, CBitmap *pHighlight, CBitmap *pDisabled)
{
    return StoreLook(m_pDefArrowDown, pReleased, pPressed, pHighlight, pDisabled);
}

xlong CWinCtrl::SetCursors(xulong ulDefault, xulong ulText, xulong ulHand)
{
    m_ulCursorDefault = ulDefault;
    m_ulCursorText = ulText;
    m_ulCursorHand = ulHand;
    return 1;
}

void CWinCtrl::SetOptions(xlong lOptions)
{
    m_lOptions = lOptions & XGUIOPT_ALL;
}

xlong CWinCtrl::GetOptions() const
{
    return m_lOptions;
}

xlong CWinCtrl::SetupColors(TCntrlColor *pColor, TRGBA *pColor1, TRGBA *pColor2, TRGBA *pColor3, TRGBA *pColor4,
                            TRGBA *pColor5, TRGBA *pColor6, TRGBA *pColor7, TRGBA *pColor8)
{
    *pColor = { *pColor1, *pColor2, *pColor3, *pColor4, *pColor5, *pColor6, *pColor7, *pColor8 };
    return 1;
}

TRGBA *CWinCtrl::MakeCol(unsigned char ucRed, unsigned char ucGreen, unsigned char ucBlue, unsigned char ucAlpha,
                         TRGBA &Color)
{
    Color.Set(ucRed, ucGreen, ucBlue, ucAlpha);
    return &Color;
}

void CWinCtrl::RemapDefaults()
{
    if (!glb->m_pScreen)
        return;
    const auto Remap = [](CBitmap *pBitmap)
    {
        if (pBitmap)
            glb->m_pScreen->MakeScreenFormat(pBitmap, 1);
    };
    Remap(m_pDefCaret);
    Remap(m_pDefCheck);
    for (CBitmap *const *ppBitmaps : { m_pDefClose, m_pDefDrop, m_pDefArrowUp, m_pDefArrowDown })
        for (int n = 0; n < XLOOK_STATES; ++n)
            Remap(ppBitmaps[n]);
}

void CWinCtrl::GfxHandler()
{
    const xlong lPage = glb->m_pScreen->m_lPage;
    for (CListWalk walk(m_Windows, true); TWinEntry *pEntry = walk.Next<TWinEntry>();)
        if (!IsHidden(*pEntry->pWindow))
            pEntry->pWindow->Draw(lPage);
}

xlong CWinCtrl::GuiMsgHandler()
{
    if (!m_Windows.First())
    {
        // A window that opens later is not the one that they were meant for.
        ForgetClicks(glb->m_pMouse);
        return 0;
    }
    if (glb->m_pMouse)
        MouseStep();
    if (!glb->m_pKeyboard)
        return 0;
    return KeyStep();
}

void CWinCtrl::MouseStep()
{
    TClick now = {};
    if (!TakeClick(glb->m_pMouse, now))
        glb->m_pMouse->GetState(&now.lX, &now.lY, &now.cButtons);
    // A press at a place that no frame has seen: the pointer came there first.
    else if (!m_cLastButtons && (now.lX != m_lLastX || now.lY != m_lLastY))
        PointAt(now.lX, now.lY, 0);
    PointAt(now.lX, now.lY, now.cButtons);
}

void CWinCtrl::PointAt(xlong lX, xlong lY, signed char cButtons)
{
    const SVmode *const pMode = glb->m_pScreen ? glb->m_pScreen->GetActiveMode() : nullptr;
    const bool bOutside = IsOutside(pMode, lX, lY);
    // Once behind a place inside or a press: what it lit or pressed has to end.
    const bool bFollow = (m_lOptions & XGUIOPT_POINTER) && (m_cLastButtons || !IsOutside(pMode, m_lLastX, m_lLastY));
    m_lLastX = lX;
    m_lLastY = lY;
    m_cLastButtons = cButtons;
    CWindowBase *const pFront = Front(m_Windows);
    if (bOutside)
        glb->m_pMouse->SetCursor(m_ulCursorDefault, 0);
    if (bOutside && !bFollow)
        return;
    if (pFront && (pFront->m_lFlags & XWIN_MODAL))
    {
        const CAlive alive(*pFront);
        pFront->GuiMsgHandler(XGUIMSG_MOUSE, lX, lY, cButtons, nullptr);
        // A callback may have taken it out.
        const bool bStillThere = alive && Front(m_Windows) == pFront;
        ShowCursorOf(bStillThere ? pFront->m_pMouseCntrl : nullptr, m_ulCursorDefault);
        return;
    }
    const bool bTaken = OfferMouse(lX, lY, cButtons);
    if (!glb->m_pMouse->SetCursorCalled())
        glb->m_pMouse->SetCursor(m_ulCursorDefault, 0);
    glb->m_pMouse->ClearSetCursorCalled();
    if (!bTaken && IsClick(cButtons) && !bOutside)
        DeactivateAll();
}

// From the front to the back; true when a window took a click.
bool CWinCtrl::OfferMouse(xlong lX, xlong lY, signed char cButtons)
{
    xlong lIndex = -1;
    for (CListWalk walk(m_Windows); TWinEntry *pEntry = walk.Next<TWinEntry>();)
    {
        ++lIndex;
        CWindowBase *const pWindow = pEntry->pWindow;
        const CAlive alive(*pWindow);
        if (IsHidden(*pWindow) || pWindow->GuiMsgHandler(XGUIMSG_MOUSE, lX, lY, cButtons, nullptr) != 1)
            continue;
        // Its callback may have taken the window out.
        if (!alive || !CountOf(m_Windows, *pWindow))
            return IsClick(cButtons);
        if (pWindow->m_pMouseCntrl && !glb->m_pMouse->SetCursorCalled())
            ShowCursorOf(pWindow->m_pMouseCntrl, m_ulCursorDefault);
        if (!IsClick(cButtons))
            continue;
        if (lIndex > 0)
            ToFront(pWindow->m_lID);
        else
        {
            // The press may have opened another window in front of it.
            const TWinEntry *const pFront = (TWinEntry *)m_Windows.m_pFirst->pData;
            pWindow->GuiMsgHandler(XGUIMSG_ACTIVATE, pFront->pWindow->m_lID, 0, 1, nullptr);
        }
        return true;
    }
    return false;
}

xlong CWinCtrl::KeyStep()
{
    TQueueChar key;
    if (!glb->m_pKeyboard->GetNext(&key) || !m_Windows.First())
        return 0;
    CWindowBase *const pFront = Front(m_Windows);
    if (!pFront)
        return 1;
    const CAlive alive(*pFront);
    if (pFront->m_bActive)
        pFront->GuiMsgHandler(XGUIMSG_KEY, 0, 0, (xparam)&key, nullptr);
    // Without a focus in front, the windows that listen all the time hear it too.
    if (!alive || Front(m_Windows) != pFront || pFront->m_pFocus)
        return 1;
    for (CListWalk walk(m_Windows); TWinEntry *pEntry = walk.Next<TWinEntry>();)
        if (pEntry->pWindow != pFront && !IsHidden(*pEntry->pWindow) &&
            (pEntry->pWindow->m_lFlags & XWIN_HIGHLIGHTIFINACTIVE))
            pEntry->pWindow->GuiMsgHandler(XGUIMSG_KEY, 0, 0, (xparam)&key, nullptr);
    return 1;
}

xlong CWinCtrl::ToFront(xlong lID)
{
    if (!FindNode(m_Windows, lID))
        return 0;
    CWindowBase *pWindow = Current(m_Windows);
    if (!(pWindow->m_lFlags & XWIN_ALWAYSLAST))
    {
        const xlong lBlock = pWindow->m_lFlags & XWIN_ZORDER ? CountGroup(m_Windows, pWindow) : 1;
        m_Windows.MoveFirst(lBlock);
        pWindow->Validate();
    }
    for (m_Windows.First(); m_Windows.Exists(); m_Windows.Next())
        if (Current(m_Windows)->m_lFlags & XWIN_ALWAYSLAST)
        {
            MoveNode(m_Windows, false);
            break;
        }
    OrderModal(m_Windows);
    TARVIX_INVARIANT(IsModalFirst(m_Windows));
    Activate(lID);
    return 1;
}

xlong CWinCtrl::RemoveCurrent()
{
    TWinEntry *const pEntry = (TWinEntry *)m_Windows.Get();
    const CRect &rcArea = pEntry->pWindow->m_rArea;
    if (glb->m_pScreen && !IsHidden(*pEntry->pWindow))
        glb->m_pScreen->AddClearAreaGui(rcArea.m_lLeft, rcArea.m_lTop, rcArea.m_lRight, rcArea.m_lBottom);
    const short sResult = m_Windows.Delete();
    XDELETE(pEntry);
    for (TWinEntry *pEach : Each<TWinEntry>(m_Windows))
        if (!(pEach->pWindow->m_lFlags & (XWIN_ZORDER | XWIN_ZORDERFIRST)) && !IsHidden(*pEach->pWindow))
        {
            ToFront(pEach->pWindow->m_lID);
            break;
        }
    return sResult;
}

// Tells all windows which one is active now.
void CWinCtrl::Activate(xlong lActiveID)
{
    for (CListWalk walk(m_Windows); TWinEntry *pEntry = walk.Next<TWinEntry>();)
        pEntry->pWindow->GuiMsgHandler(XGUIMSG_ACTIVATE, lActiveID, 0, 1, nullptr);
}

void CWinCtrl::DeactivateAll()
{
    for (CListWalk walk(m_Windows); TWinEntry *pEntry = walk.Next<TWinEntry>();)
        pEntry->pWindow->GuiMsgHandler(XGUIMSG_ACTIVATE, pEntry->pWindow->m_lID, 0, 0, nullptr);
}

// The keyboard goes to the next window that can be seen.
void CWinCtrl::OnHidden(CWindowBase &window)
{
    const CWindowBase *const pFront = Front(m_Windows);
    if (window.m_bActive && pFront && CountOf(m_Windows, window))
        Activate(pFront->m_lID);
}

// A modal window keeps its place in front while it is hidden.
void CWinCtrl::OnShown(CWindowBase &window)
{
    if ((window.m_lFlags & XWIN_MODAL) && Front(m_Windows) == &window)
        Activate(window.m_lID);
}
