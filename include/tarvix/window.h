#pragma once

#include "tarvix/llist.h"
#include "tarvix/memory.h"
#include "tarvix/rect.h"
#include "tarvix/types.h"

class CControlBase;
class CFrame;
class CTitlebar;

/// Flags of a window. The names are words of resource scripts too.
enum
{
    XWIN_TITLEBAR = 0x00000001,
    XWIN_FRAME = 0x00000002, ///< a background of the window's size
    XWIN_CLOSE = 0x00000004, ///< the title bar has a close button
    XWIN_MODAL = 0x00000008, ///< ahead of all others, and takes all input
    XWIN_SIZE = 0x00000010,  ///< stored, as XWIN_POPUP and XWIN_AUTORESIZE
    XWIN_DRAG = 0x00000020,  ///< by its title bar
    XWIN_CENTER = 0x00000040,
    XWIN_POPUP = 0x00000080,
    XWIN_AUTORESIZE = 0x00000100,
    XWIN_BORDER = 0x00000200, ///< the frame has a bevel
    XWIN_ALPHA = 0x00000400,  ///< see-through
    XWIN_HIGHLIGHTIFINACTIVE = 0x00000800,
    XWIN_SYSTEMWINDOW = 0x00001000, ///< a drag moves the screen's own window
    XWIN_ZORDERFIRST = 0x00002000,  ///< first window of a group that stays together
    XWIN_ZORDERLAST = 0x00004000,
    XWIN_ZORDER = 0x00008000,
    XWIN_ALWAYSLAST = 0x00010000,
    XWIN_HIDDEN = 0x40000000,       ///< set by HideWindow, no word of scripts
    XWIN_DRAGGING = (int)0x80000000 ///< a drag is going on, no word of scripts
};

/// A window of the GUI: a rectangle of the screen with controls. It hands
/// messages on to them. It does not own its controls, and it is shown once
/// CWinCtrl::AddWindow has it.
class TARVIX_API CWindowBase
{
public:
    TARVIX_HEAP_CLASS

    CWindowBase();
    CWindowBase(const CWindowBase &) = delete;
    CWindowBase &operator=(const CWindowBase &) = delete;

    /// All controls to XGUI_RELEASED for 1, else to XGUI_DISABLED.
    virtual xlong Enable(xlong bEnable);
    /// Shows the window; all windows redraw.
    virtual xlong ShowWindow();
    /// The window stays in the manager's list.
    virtual xlong HideWindow();
    /// Draws what the controls' clip lists name.
    virtual xlong Draw(xlong lPage) = 0;
    /// Everything in the window needs redrawing.
    virtual xlong Validate() = 0;
    /// Offers a changed area of the screen to the controls.
    /// @return 0 when it does not touch the window
    virtual xlong Validate(CRect *pArea, xlong lIndex) = 0;
    virtual ~CWindowBase();
    /// Those of a CWindow; null here and without them.
    virtual CTitlebar *Titlebar();
    virtual CFrame *Frame();

    /// @param lID     unique in the manager
    /// @param lX      pixels of the screen, as lY; XWIN_CENTER replaces both
    /// @param lFlags  XWIN_...
    xlong Create(xlong lID, xlong lX, xlong lY, xlong lWidth, xlong lHeight, xlong lFlags);
    xlong SetPos(xlong lX, xlong lY);
    /// The controls stay as they are.
    xlong SetSize(xlong lWidth, xlong lHeight);
    xlong GetPos(xlong &lX, xlong &lY);
    xlong GetSize(xlong &lWidth, xlong &lHeight);
    xlong GetFlags();
    xlong GetID();
    xlong SetFlag(xlong lFlags);
    xlong RemoveFlag(xlong lFlags);
    xlong SetID(xlong lID);
    void ToFront();
    /// @param nStatic  non-zero: the controls get no messages
    void StaticWindowCntrls(int nStatic);
    /// @param pCntrl  gets the keyboard; null takes it from all
    xlong SetFocus(CControlBase *pCntrl);
    /// Appends a control, on top of the others. Its place is meant relative to
    /// the area below the title bar and inside the border.
    /// @param pCntrl  not owned; leaves the window when it dies
    /// @return 0 without memory
    xlong AddCntrl(CControlBase *pCntrl);
    xlong RemoveCntrl(CControlBase *pCntrl);
    xlong RemoveAllCntrl();
    xlong Destroy();
    /// Walk of the controls.
    xlong CntrlFirst();
    xlong CntrlNext();
    xlong CntrlExists();
    CControlBase *GetCntrl();
    xlong NumCntrls();
    /// Hands a message to the controls that it concerns, XGUIMSG_...
    /// @return 1 when it concerns the window
    xlong GuiMsgHandler(xlong lMsg, xlong lP1, xlong lP2, xparam lP3, void *pData);

    xlong m_lWidth;
    xlong m_lHeight;
    xlong m_lID;
    xlong m_lFlags;
    xlong m_lDragX; ///< where in the window the drag began
    xlong m_lDragY;
    xlong m_lReserved;
    xlong m_bStaticCntrls;
    CRect m_rArea; ///< of the screen, one pixel larger on each side
    xlong m_lX;
    xlong m_lY;
    xlong m_bActive;             ///< 1 for the window in front
    CControlBase *m_pFocus;      ///< has the keyboard, or null
    CControlBase *m_pMouseCntrl; ///< topmost under the pointer, or null
    CLList m_Cntrls;             ///< in drawing order; not owned

private:
    friend class CControlBase;
    static void LoseParent(CControlBase &control);
    void UpdateArea();
    xlong KeyMessage(xlong lP1, xlong lP2, xparam lP3, void *pData);
    void ShowFocus(CControlBase *pNew);
    void TabToNext(xlong lP1, xlong lP2, xparam lP3, void *pData);
    xlong MouseMessage(xlong lX, xlong lY, xparam lP3, void *pData);
    xlong DragTo(xlong lX, xlong lY);
    xlong ActivateMessage(xlong lP1, xparam lP3);
    xlong PasteMessage(const char *pszText);

    CControlBase *m_pFirstLinked;
};

/// A window with a title bar and a frame, as its flags say.
class TARVIX_API CWindow : public CWindowBase
{
public:
    CWindow();
    ~CWindow() override;

    xlong Draw(xlong lPage) override;
    xlong Validate() override;
    xlong Validate(CRect *pArea, xlong lIndex) override;
    CTitlebar *Titlebar() override;
    CFrame *Frame() override;

    /// @param pszTitle  kept, not copied
    /// @return 0 without memory
    xlong Create(xlong lID, char *pszTitle, xlong lX, xlong lY, xlong lWidth, xlong lHeight, xlong lFlags);
    /// Takes the controls out and deletes title bar and frame.
    xlong Destroy();

    CTitlebar *m_pTitlebar; ///< owned
    CFrame *m_pFrame;       ///< owned
};
