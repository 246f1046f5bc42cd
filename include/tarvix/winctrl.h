#pragma once

#include "tarvix/control.h"
#include "tarvix/llist.h"
#include "tarvix/memory.h"
#include "tarvix/msgsys.h"
#include "tarvix/types.h"

class CBitmap;
class CFont;
class CWindowBase;

/// The host's callback of a window: message, window id, control id, third
/// parameter, and the pointer given to AddWindow or what a message carries. It
/// runs inside xHandler.
typedef void (*TGuiCallback)(xlong lMsg, xlong lWindowID, xlong lCntrlID, xparam lP3, void *pUser);

/// Node of the window list.
struct TWinEntry
{
    CWindowBase *pWindow; ///< not owned
    TGuiCallback pfnCallback;
    void *pUser;
};

/// What people expect today beyond the plain behaviour, for SetOptions.
enum
{
    /// A pointer that leaves the screen ends highlights, and a press that is
    /// released there ends without a click; the first move counts.
    XGUIOPT_POINTER = 1,
    /// A key that the focused control has no use for, which it tells by the
    /// answer 0, goes on to the hot keys of the others.
    XGUIOPT_KEYS = 2,
    /// A button with the focus shows it and is pressed by Space; Tab passes over
    /// hidden and disabled controls.
    XGUIOPT_FOCUS = 4,
    /// Hot keys that are letters answer to both cases.
    XGUIOPT_CASE = 8,
    XGUIOPT_ALL = 15
};

/// The window manager: keeps the order of the windows, gives them mouse and
/// keyboard once a frame, draws them, delivers messages, and holds the default
/// look of controls. Results are 1 where nothing else is said.
class TARVIX_API CWinCtrl : public CMsgSys
{
public:
    TARVIX_HEAP_CLASS

    CWinCtrl();
    CWinCtrl(const CWinCtrl &) = delete;
    CWinCtrl &operator=(const CWinCtrl &) = delete;

    /// Draws on XFRAME_DRAW, takes input on XFRAME_END.
    xlong MsgHandler(xulong ulMsg, xlong lA, xlong lB) override;
    ~CWinCtrl() override;

    /// Starts to listen to the frame and makes the default colours. Once, after xInit.
    /// @return 0 without memory
    xlong Create();
    /// Puts a window in front, behind modal ones.
    /// @param pWindow      not owned; leaves the list when it dies
    /// @param pfnCallback  may be null
    /// @return 0 without memory
    xlong AddWindow(CWindowBase *pWindow, TGuiCallback pfnCallback, void *pUser);
    /// Takes out the first window of that id.
    /// @return 0 when there is none
    xlong RemoveWindow(xlong lID);
    /// Takes out that very window, whatever ids there are.
    xlong TakeWindow(CWindowBase *pWindow);
    xlong RemoveAll();
    /// @return the window at the list's cursor, or null
    CWindowBase *GetWindow();
    /// Delivers a message.
    /// @param lP3  not 0: the control of window lP1 that gets it, unless the message is XGUIMSG_KEY
    /// @return 0 when nobody took it
    xlong SendMessageA(xlong lMsg, xlong lP1, xlong lP2, xparam lP3, void *pData);
    /// All windows redraw.
    xlong Validate();
    /// Offers a changed area of the screen to all windows that can be seen.
    xlong Validate(CRect *pArea, xlong lIndex);
    /// Writes the order of the windows to the debug output.
    void PrintWinList();
    /// Defaults of the controls that are created from now on, in the order
    /// released, pressed, highlight, disabled. None is owned.
    xlong SetDefaultFrame(TCntrlColor *pReleased, TCntrlColor *pPressed, TCntrlColor *pHighlight,
                          TCntrlColor *pDisabled);
    xlong SetDefaultTitlebar(TCntrlColor *pReleased, TCntrlColor *pPressed, TCntrlColor *pHighlight,
                             TCntrlColor *pDisabled);
    xlong SetDefaultButton(TCntrlColor *pReleased, TCntrlColor *pPressed, TCntrlColor *pHighlight,
                           TCntrlColor *pDisabled);
    xlong SetDefaultFont(CFont *pFont);
    xlong SetDefaultCaret(CBitmap *pBitmap);
    xlong SetDefaultCheck(CBitmap *pBitmap);
    xlong SetDefaultClose(CBitmap *pReleased, CBitmap *pPressed, CBitmap *pHighlight, CBitmap *pDisabled);
    xlong SetDefaultDrop(CBitmap *pReleased, CBitmap *pPressed, CBitmap *pHighlight, CBitmap *pDisabled);
    xlong SetDefaultArrowUp(CBitmap *pReleased, CBitmap *pPressed, CBitmap *pHighlight, CBitmap *pDisabled);
    xlong SetDefaultArrowDown(CBitmap *pReleased, CBitmap *pPressed, CBitmap *pHighlight, CBitmap *pDisabled);
    /// The cursors that controls show, ids of CMouseBase; 0 leaves the choice to the mouse.
    xlong SetCursors(xulong ulDefault, xulong ulText, xulong ulHand);
    /// @param lOptions  XGUIOPT_...; none is set at first, CTarvixHost sets all
    void SetOptions(xlong lOptions);
    xlong GetOptions() const;
    /// Fills the record with eight colours in its order.
    xlong SetupColors(TCntrlColor *pColor, TRGBA *pColor1, TRGBA *pColor2, TRGBA *pColor3, TRGBA *pColor4,
                      TRGBA *pColor5, TRGBA *pColor6, TRGBA *pColor7, TRGBA *pColor8);
    TRGBA *MakeCol(unsigned char ucRed, unsigned char ucGreen, unsigned char ucBlue, unsigned char ucAlpha,
                   TRGBA &Color);
    /// Converts the default bitmaps to the screen's format, after a change of mode.
    void RemapDefaults();

    xlong m_lZOrderCount;
    CLList m_Windows; ///< of TWinEntry; the first is in front
    TCntrlColor *m_pDefFrameColors[4];
    TCntrlColor *m_pDefTitlebarColors[4];
    TCntrlColor *m_pDefButtonColors[4];
    TCntrlColor *m_pDefProgressColors[4];
    TCntrlColor *m_pColorSets[8]; ///< owned
    CFont *m_pDefFont;
    CBitmap *m_pDefCaret;
    CBitmap *m_pDefCheck;
    CBitmap *m_pDefClose[4];
    CBitmap *m_pDefDrop[4];
    CBitmap *m_pDefArrowUp[4];
    CBitmap *m_pDefArrowDown[4];
    CControlBase *m_pDefaultButton; ///< templates, set by SetDefault of a control
    CControlBase *m_pDefaultStatic;
    CControlBase *m_pDefaultTitlebar;
    CControlBase *m_pDefaultFrame;
    xulong m_ulCursorDefault;
    xulong m_ulCursorText;
    xulong m_ulCursorHand;

private:
    void GfxHandler();
    xlong GuiMsgHandler();
    void MouseStep();
    void PointAt(xlong lX, xlong lY, signed char cButtons);
    xlong KeyStep();
    bool OfferMouse(xlong lX, xlong lY, signed char cButtons);
    xlong ToFront(xlong lID);
    xlong RemoveCurrent();
    void Activate(xlong lActiveID);
    void DeactivateAll();
    friend class CWindowBase;
    void OnHidden(CWindowBase &window);
    void OnShown(CWindowBase &window);

    xlong m_lOptions;
    xlong m_lLastX, m_lLastY; ///< what the windows were told last
    signed char m_cLastButtons;
};
