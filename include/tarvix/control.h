#pragma once

#include "tarvix/llist.h"
#include "tarvix/memory.h"
#include "tarvix/palette.h"
#include "tarvix/rect.h"
#include "tarvix/timer.h"
#include "tarvix/types.h"

class CBitmap;
class CFont;
class CWindowBase;

/// Bits of a control's flag word. The names are words of resource scripts too.
enum
{
    CNTRL_EXTRUDED = 0x00000001,      ///< bevel; the content lies inside it
    CNTRL_TRANSPARENT = 0x00000002,   ///< no background fill
    CNTRL_HASBITMAP = 0x00000004,     ///< the bitmaps of the states are drawn
    CNTRL_TILED = 0x00000008,         ///< the bitmap is repeated
    CNTRL_ANIMNORMAL = 0x00000010,    ///< an animation runs in XGUI_RELEASED
    CNTRL_ANIMPRESSED = 0x00000020,   ///< in XGUI_PRESSED
    CNTRL_ANIMHIGHLIGHT = 0x00000040, ///< in XGUI_HIGHLIGHT
    CNTRL_ALPHA = 0x00000080,         ///< darkens what lies behind by the control's alpha
    CNTRL_BMTRANS = 0x00000100,       ///< bitmaps leave out their key colour
    CNTRL_CHECKED = 0x00000200,       ///< stored; no control reads it
    CNTRL_HSLIDER = 0x00000400,
    CNTRL_CENTERH = 0x00000800, ///< text of buttons, check boxes and radio buttons
    CNTRL_CENTERV = 0x00001000,
    CNTRL_MULTILINE = 0x00002000, ///< the enter key belongs to the control
    CNTRL_READONLY = 0x00004000,
    CNTRL_TABSTOP = 0x00008000,      ///< can have the keyboard focus
    CNTRL_BUTTONBORDER = 0x00010000, ///< a line of one pixel around the control
    CNTRL_EDITVSLIDER = 0x00020000,
    CNTRL_EDITHSLIDER = 0x00040000,
    CNTRL_CLOSEBUTTON = 0x00080000, ///< of title bars; no word of scripts, nor is the next
    CNTRL_FRAME = 0x00100000,       ///< set on every CFrame
    CNTRL_PASSWORD = 0x00200000,
    CNTRL_NOWORDWRAP = 0x00400000,
    CNTRL_BTNTRANSCLICK = 0x00800000,  ///< a bitmap's transparent pixels can be clicked
    CNTRL_INITIALCAPITAL = 0x01000000, ///< FormatText: the first of these three that is set counts
    CNTRL_UPPERCASE = 0x02000000,
    CNTRL_LOWERCASE = 0x04000000,
    CNTRL_NUMERIC = 0x08000000
};

/// States of a control.
enum
{
    XGUI_PRESSED = 1,
    XGUI_RELEASED = 2,
    XGUI_HIGHLIGHT = 3, ///< the pointer is over it
    XGUI_DISABLED = 4,  ///< ignores input
    XGUI_HIDDEN = 5,
    XGUI_CHECKED = 6,   ///< of check boxes and radio buttons
    XGUI_UNCHECKED = 7, ///< in the place of XGUI_RELEASED there
    XGUI_NO_STATE = 21  ///< in m_lSavedState: none is saved
};

/// Messages of controls, windows and the window manager, and of the host's callback.
enum
{
    XGUIMSG_KEY = 0,          ///< P3: the TQueueChar
    XGUIMSG_PRESSED = 1,      ///< P1 window, P2 control, P3 messaging system; so are the others without a note
    XGUIMSG_RELEASED = 2,     ///< released inside: the click
    XGUIMSG_HIGHLIGHT = 3,    ///< the pointer came over a button
    XGUIMSG_CHECKED = 6,      ///< now checked
    XGUIMSG_UNCHECKED = 7,    ///< now unchecked
    XGUIMSG_MOUSE = 8,        ///< P1 x, P2 y, P3 buttons: 1 left, 2 right, 4 middle
    XGUIMSG_DRAGBEGIN = 9,    ///< P1 x, P2 y in the window
    XGUIMSG_DRAGEND = 10,     ///< of a window's drag
    XGUIMSG_ACTIVATE = 11,    ///< P1 window, P3 1 active or 0
    XGUIMSG_RADIOSELECT = 13, ///< P2 the radio button that all others yield to
    XGUIMSG_VALUE = 14,       ///< a slider's value changed
    XGUIMSG_SELECT = 15,      ///< a selection changed
    XGUIMSG_FOCUS = 16,       ///< P3 1 gets the keyboard, 0 loses it
    XGUIMSG_TOFRONT = 17,     ///< P1 window
    XGUIMSG_ENABLE = 18,      ///< P1 window, P3 1 enables
    XGUIMSG_UNHIGHLIGHT = 19, ///< the pointer left a button
    XGUIMSG_CHANGED = 20,     ///< a text was edited
    XGUIMSG_PASTE = 22,       ///< data: the clipboard's text
    XGUIMSG_MOUSEENTER = 23,
    XGUIMSG_MOUSELEAVE = 24
};

/// Ids of the library's own controls.
enum
{
    XCNTRL_TITLEBAR = 1001,
    XCNTRL_CLOSE = 1002, ///< message 2 with this id: the user wants to close the window
    XCNTRL_FRAME = 1003,
    XCNTRL_STATIC = 1004 ///< of every CStatic until SetID
};

/// Play modes of animations.
enum
{
    ANIM_ONCE = 1,
    ANIM_LOOP = 2,
    ANIM_PINGPONG = 4,
    ANIM_BACKWARD = 16 ///< from the last frame on; no word of scripts
};

/// Colours of a control. The alpha bytes play no part.
struct TCntrlColor
{
    TRGBA crBorder; ///< line of CNTRL_BUTTONBORDER
    TRGBA crLight;  ///< top and left of the bevel
    TRGBA crFace;   ///< background
    TRGBA crDark;   ///< right and bottom of the bevel
    TRGBA crCornerTopLeft;
    TRGBA crCornerMiddle; ///< top right and bottom left
    TRGBA crCornerBottomRight;
    TRGBA crExtra;
};

/// Frames of an animation. CResData makes and owns it; controls point at it,
/// and all that show it share its place in the list.
struct TCntrlAnim : CLList
{
    CBitmap *pSheet = nullptr; ///< null: a node is a CBitmap; otherwise it is a CRect of this picture
    xlong lReserved = 0;
    xulong ulDelay = 20; ///< milliseconds a frame
};

/// Play modes and ping-pong directions (1 backward), in the order released,
/// pressed, highlight.
struct TPMode
{
    xlong lMode[3];
    xlong lDirection[3];
};

/// What a line of animation goes on with.
struct TAnimNext
{
    char *pszName; ///< of a line, or "End"
    xlong lWaitTrue;
    xlong lWaitFalse;
    xlong lForceTrue;
    xlong lForceFalse;
    xlong lSetTrue;
    xlong lSetFalse;
};

/// One line of animation: wait, delay, play once, delay, choose the next. The
/// variables are ids of global ones, 0 for none.
struct TAnimLine
{
    xlong lStep;
    xulong ulStart; ///< milliseconds
    xulong ulDelay; ///< milliseconds
    char *pszName;
    xlong lWaitTrue;
    xlong lWaitFalse;
    xlong lSetTrue;
    xlong lSetFalse;
    xulong ulDelayMin; ///< before the animation
    xulong ulDelayMax;
    xlong lReserved1;
    TCntrlAnim *pAnim; ///< may be null
    xlong lReserved2;
    xulong ulAfterMin; ///< after it
    xulong ulAfterMax;
    CLList NextList; ///< of TAnimNext
};

/// Places in the arrays of a look.
enum
{
    XLOOK_RELEASED,
    XLOOK_PRESSED,
    XLOOK_HIGHLIGHT,
    XLOOK_DISABLED,
    XLOOK_STATES
};

/// How a control looks. Nothing in it is owned but the lists of lines.
struct TCntrlLook
{
    CBitmap *m_pBitmap[XLOOK_STATES]; ///< of an animated state the current frame
    TCntrlColor *m_pColors[XLOOK_STATES];
    TCntrlAnim *m_pAnim[XLOOK_STATES];
    TAnimLine *m_pAnimLine[XLOOK_STATES]; ///< the current ones
    CLList *m_pAnimLines[XLOOK_STATES];   ///< of TAnimLine
    TPMode m_PMode;
    xlong m_lBitmapX; ///< of the bitmap in the control
    xlong m_lBitmapY;
    xlong m_lBevel; ///< pixels
    xlong m_lAlpha; ///< percent of full brightness that what lies behind loses
    TRGBA m_TextColor;
    CFont *m_pFont;
    CRect *m_pSheetRect; ///< current frame of an animation with a sheet
    CBitmap *m_pSheet;
    CRect m_rBkgClip; ///< part of the bitmap that is drawn; empty for all of it
};

/// Base of all controls: a rectangle of one window with a state, a look and a
/// list of its pieces that need redrawing. Coordinates are relative to the
/// window; sizes are pixels. Results are 1 where nothing else is said.
class TARVIX_API CControlBase : public CTimer
{
public:
    enum
    {
        MAX_CLIPS = 100
    };

    TARVIX_HEAP_CLASS

    CControlBase();
    CControlBase(const CControlBase &) = delete;
    CControlBase &operator=(const CControlBase &) = delete;

    /// Steps the animations whose delay in milliseconds this is.
    void TimerHandler(xulong ulInterval) override;
    ~CControlBase() override;
    /// Stores the id.
    virtual xlong Create(xlong lID);
    /// Removes the timers and frees an owned text. The id becomes 0.
    virtual xlong Destroy();
    /// Takes the look of another control and adds its flags.
    /// @param pFrom  null does nothing
    virtual void Copy(CControlBase *pFrom);
    /// Lets go of a hot key that is held.
    virtual void LoseHotKey();
    /// @param pFont   not owned
    /// @param pColor  for SetTextColor, or null
    virtual xlong SetFont(CFont *pFont, const TRGBA *pColor);
    /// Prepares the font in that colour.
    virtual xlong SetTextColor(TRGBA Color);
    /// Bitmaps in the screen's format, not owned; each may be null.
    virtual xlong SetBitmap(CBitmap *pReleased, CBitmap *pPressed, CBitmap *pHighlight, CBitmap *pDisabled);
    /// Not owned.
    virtual xlong SetColors(TCntrlColor *pReleased, TCntrlColor *pPressed, TCntrlColor *pHighlight,
                            TCntrlColor *pDisabled);
    virtual xlong SetBevelSize(xlong lPixels);
    /// Makes the control the manager's template of its class: the next ones
    /// are created with its look. It must outlive them.
    virtual xlong SetDefault();
    virtual xlong SetID(xlong lID);
    virtual xlong GetID();
    virtual xlong GetPos(xlong &lX, xlong &lY);
    virtual xlong SetPos(xlong lX, xlong lY);
    virtual xlong GetSize(xlong &lWidth, xlong &lHeight);
    virtual xlong SetSize(xlong lWidth, xlong lHeight);
    /// @param sKey  XKEY_... or a character; 0 for none
    virtual xlong SetHotkey(short sKey);
    virtual short GetHotkey();
    /// Adds bits.
    virtual xlong SetFlag(xlong lFlags);
    virtual xlong GetFlags();
    /// @param ppWindow  may be null
    /// @return 0 when plWindowID is null
    virtual xlong GetParent(xlong *plWindowID, CWindowBase **ppWindow);
    virtual xlong SetParent(xlong lWindowID, CWindowBase *pWindow);
    /// Clears bits.
    virtual xlong RemoveFlag(xlong lFlags);
    /// Takes a message, XGUIMSG_...
    /// @return 0 when it does not concern the control; of a mouse message 1
    ///         when it belongs here, 2 when besides no control below may see it
    virtual xlong GuiMsgHandler(xlong lMsg, xlong lP1, xlong lP2, xparam lP3, void *pData);
    /// Draws on the screen within its clip. Called by the window.
    /// @param lX  position of the window on the screen, as lY
    virtual xlong Draw(xlong lX, xlong lY, xlong lPage);
    /// Takes over the state that is wanted, if it is another.
    virtual xlong Invalidate();
    /// Reports that the control needs redrawing.
    virtual xlong Validate();
    /// Notes the part of a screen area that the control has to redraw.
    /// @return 0 when they do not touch
    virtual xlong Validate(CRect *pArea, xlong lIndex);
    /// @param lState  XGUI_...; XGUI_RELEASED brings back what XGUI_DISABLED saved
    /// @return 0 when it is the present one
    virtual xlong SetState(xlong lState);
    virtual xlong GetState();
    /// @param lAlpha  percent of full brightness that what lies behind loses
    virtual xlong SetAlpha(xlong lAlpha);
    /// Sends this control's messages to another control of the window.
    virtual xlong SetCntrlMessagingSystem(xlong lOwnerID);
    virtual void ClearClipListIndex();
    /// Draws a bitmap over the control, inside the bevel.
    /// @param pBitmap  null: the current frame of the sheet
    /// @param lX       corner of the control on the screen, as lY
    virtual xlong DrawBitmap(CBitmap *pBitmap, xlong lX, xlong lY);
    /// Gives a state an animation; its timer runs from now on.
    /// @param lType  XGUI_PRESSED to XGUI_DISABLED; others are ignored
    /// @param lMode  ANIM_...
    virtual xlong SetAnimBitmap(TCntrlAnim *pAnim, xlong lType, xlong lMode);
    /// Adds a line of animation to a state. Texts are kept, not copied.
    /// Delays are milliseconds; between the bounds they are drawn by lot.
    /// @param lType    XGUI_PRESSED to XGUI_DISABLED
    /// @param pszNext  of the five each may be null
    /// @return 0 with a text
    virtual xlong SetAnimLine(xlong lType, char *pszName, xulong ulDelayMin, xulong ulDelayMax, TCntrlAnim *pAnim,
                              xulong ulAfterMin, xulong ulAfterMax, char *pszNext1, char *pszNext2, char *pszNext3,
                              char *pszNext4, char *pszNext5);
    virtual xlong SetAnimLine_InsertNewAnimLine(CLList *pList, char *pszName);
    /// Changes the delay of running animations.
    /// @param lState  XGUI_RELEASED: of the released, pressed and highlight
    ///                ones; XGUI_PRESSED: of the latter two; XGUI_HIGHLIGHT: of the last
    /// @return 0 when a state is marked as animated and has no animation
    virtual xlong SetFrameRate(xlong lState, xlong lDelay);
    virtual xlong GetTextBufferSize();
    /// @param bValidate  1: the caller is about to write to it
    virtual char *GetTextBuffer(xlong bValidate);
    /// Gives the control an empty text of its own.
    /// @param lSize  bytes
    /// @return null, and no text, for a size below 1 and without memory
    virtual char *AllocBuffer(xlong lSize);
    /// @param pszText  kept, not copied; may be null
    virtual xlong SetText(char *pszText);
    /// Applies the flags for upper and lower case, in place.
    virtual xlong FormatText();
    /// @return 0 here; in groups and lists what is selected
    virtual xlong GetSelected();
    virtual xlong SetSelected(xlong lID);
    /// Where the control answers the mouse.
    virtual xlong GetMouseArea(CRect *pArea);
    /// One tick of a state's lines.
    virtual void AnimLineHandler(CBitmap *&pBitmap, TCntrlAnim *&pAnim, TAnimLine *&pLine, CLList *pLines, TPMode &Mode,
                                 xlong lAnimFlag);
    virtual void AnimLineHandlerAll();

    /// Limits what is drawn of the bitmap; trimmed to the control's size.
    void SetBkgClip(CRect *pClip);
    CRect GetBkgClip();

    char *m_pszText; ///< not owned unless m_bOwnBuffer
    xlong m_bMouseOver;
    xlong m_lID;
    xlong m_lWindowID;
    CWindowBase *m_pWindow;
    xlong m_lX;
    xlong m_lY;
    xlong m_lWidth;
    xlong m_lHeight;
    short m_sHotkey;
    xlong m_lFlags;
    CRect m_rMouseArea;
    xlong m_lPressMode; ///< 0 idle, 1 armed: the pointer came with the button up, 2 held by the hot key
    xlong m_bHighlightIfInactive;
    xlong m_bOwnBuffer;
    xlong m_lBufferSize;
    xlong m_lSavedState; ///< returned to when enabled
    xlong m_bDirty;
    TCntrlLook m_Look;
    xlong m_bVisibleFlag;
    xlong m_lMsgSystem; ///< control that gets the messages, 0 for the host
    xlong m_lState;
    xlong m_lNextState;
    xlong m_lPageDone[3];
    xulong *m_pCursor; ///< a cursor of CWinCtrl
    /// The pieces to draw in this frame: the first m_lClipCount are objects, the
    /// others memory that no one has touched, in thousands of controls.
    union
    {
        CRect m_rClip[MAX_CLIPS];
    };
    xlong m_lClipCount;

private:
    friend class CWindowBase;
    void LinkTo(CWindowBase *pWindow);

    // All controls of one window, those that its list doesn't hold too: it
    // takes itself out of them when it dies.
    CWindowBase *m_pLinked;
    CControlBase *m_pNextLinked;
    CControlBase *m_pPrevLinked;

protected:
    /// The names that SetAnimLine looks up. Variables have no names here: 0.
    char *SetAnimLine_GetObj_Name(char *pszName);
    xlong SetAnimLine_GetObj_WaitForVariableSet(char *pszName);
    xlong SetAnimLine_GetObj_WaitForVariableZero(char *pszName);
    xlong SetAnimLine_GetObj_VariableSetTrue(char *pszName);
    xlong SetAnimLine_GetObj_VariableSetFalse(char *pszName);
};
