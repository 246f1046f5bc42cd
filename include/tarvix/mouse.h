#pragma once

#include "tarvix/llist.h"
#include "tarvix/memory.h"
#include "tarvix/msgsys.h"
#include "tarvix/timer.h"
#include "tarvix/types.h"

class CBitmap;
class CSprite;
struct TPoint;

#ifdef _WIN32
struct HICON__;
typedef struct HICON__ *HCURSOR;
#else
struct HCURSOR__;
typedef struct HCURSOR__ *HCURSOR;
#endif

struct TCursor
{
    xulong ulId; ///< from 1 on
    CSprite *pSprite;
    short sHotX; ///< as given; the sprite's corner is the hot spot
    short sHotY;
};

struct TDeltaHandler
{
    xlong lId;
    xlong lReserved[2];
};

/// Bits of the button word. The bits of a press and of a release stay until
/// GetBtnState has read them.
enum
{
    XBTN_LEFT = 1, ///< down now
    XBTN_RIGHT = 2,
    XBTN_MIDDLE = 4,
    XBTN_DOWN_MASK = 7,
    XBTN_LEFT_PRESSED = 0x100,
    XBTN_RIGHT_PRESSED = 0x200,
    XBTN_MIDDLE_PRESSED = 0x400,
    XBTN_LEFT_RELEASED = 0x10000,
    XBTN_RIGHT_RELEASED = 0x20000,
    XBTN_MIDDLE_RELEASED = 0x40000
};

/// Shapes of the platform's pointer, as ids of SetCursor outside full-screen modes.
enum
{
    XCURSOR_ARROW = 1,
    XCURSOR_IBEAM = 2,
    XCURSOR_FINGER = 3
};

/// Pointer and buttons in pixels of the screen, and the cursors: sprites on top
/// of everything in full-screen modes, the platform's pointer otherwise.
class TARVIX_API CMouseBase
{
public:
    enum
    {
        DELTA_MODE = 1,
        FULL_SCREEN = 2
    };

    TARVIX_HEAP_CLASS

    CMouseBase();
    CMouseBase(const CMouseBase &) = delete;
    CMouseBase &operator=(const CMouseBase &) = delete;

    /// For the host to call when the screen's mode is set.
    /// @return 0 without a mouse
    virtual xlong Init() = 0;
    /// Chooses a cursor; in full-screen modes it is shown, without animation.
    /// @param lFrame  frame of the cursor; 0 leaves it as it is
    virtual void SetCursor(xulong ulId, xlong lFrame);
    virtual ~CMouseBase();

    /// Makes a cursor of a picture file, which is converted for the current screen.
    /// @param pFrames  places of the frames, or null, as for CSprite::Create; copied
    /// @param lWidth   pixels of a frame; below 1 for the picture's, as lHeight
    /// @param sHotX    kept in the record, as sHotY
    /// @return its id; 0 on failure
    xulong AllocCursor(const char *pszPath, const TPoint *pFrames, xlong lWidth, xlong lHeight, short sHotX,
                       short sHotY);
    /// The same with a bitmap in the screen's format. It stays the caller's and must outlive the cursor.
    xulong AllocCursor(CBitmap *pBitmap, const TPoint *pFrames, xlong lWidth, xlong lHeight, short sHotX, short sHotY);
    /// @return 0 when there is no such cursor
    xlong FreeCursor(xulong ulId);
    void FreeAllCursors();
    /// Lets the current cursor's animation run.
    /// @param ulId       cursor to choose first; 0 for the current one
    /// @param lBaseFlag  XSPRITE_... to set, or 0
    /// @param fDelay     screen frames between two steps, or 0 for no change
    void StartAnim(xulong ulId, xlong lBaseFlag, float fDelay);
    void StopAnim();
    /// Sets what is reported; the pointer itself stays.
    void SetPos(xlong lX, xlong lY);
    // Places for results may be null.
    /// @param pcButtons  gets the buttons that are down
    void GetState(xlong *plX, xlong *plY, signed char *pcButtons);
    /// Gets the button word and clears the bits of presses and releases.
    void GetBtnState(xlong *plButtons);
    /// Gets the movement since the last call.
    void GetDelta(xlong *plDX, xlong *plDY, signed char *pcButtons);
    /// Hands out an id. All readers share one movement.
    /// @return 0 when memory is exhausted
    xlong GetDeltaHandler(xlong *plId);
    /// Where the screen's picture begins, seen from the window's corner.
    void SetMouseAdd(xlong lX, xlong lY);
    /// @param pfnUpdate  called on every event with position and button word; null for none
    void SetUpdateCallback(void (*pfnUpdate)(xlong lX, xlong lY, xlong lButtons));
    /// Says whether the mode is a full-screen one.
    void IsFullScreen(xlong lOn);
    /// In delta mode the pointer is held at one place and movement alone counts.
    void NeedDelta(xlong lOn);
    /// Stored and not used.
    void SetSensitivity(float fSensitivity);
    float GetSensitivity();
    /// 1 if SetCursor was called since ClearSetCursorCalled.
    xlong SetCursorCalled();
    void ClearSetCursorCalled();
    /// Frees all cursors and ids.
    void Exit();
    /// Takes over what a mouse has done, and tells the callback: the way of
    /// every event, real or replayed.
    /// @param lX     new position, as lY
    /// @param lDX    movement for GetDelta, as lDY
    /// @param lDown  buttons that are down: XBTN_LEFT, XBTN_RIGHT, XBTN_MIDDLE
    void Feed(xlong lX, xlong lY, xlong lDX, xlong lDY, xlong lDown);

    CLList m_lstCursors;       ///< of TCursor, owned
    CLList m_lstDeltaHandlers; ///< of TDeltaHandler, owned
    TCursor *m_pCurrent;
    xulong m_ulButtons; ///< XBTN_...
    xulong m_ulPrevButtons;
    xlong m_lDeltaX;
    xlong m_lDeltaY;
    float m_fSensitivity;
    xulong m_ulFlags; ///< DELTA_MODE, FULL_SCREEN
    xlong m_lNextDeltaId;
    xlong m_lAddX;
    xlong m_lAddY;
    xlong m_bSetCursorCalled;
    xulong m_ulNextCursorId;
    void (*m_pfnUpdate)(xlong lX, xlong lY, xlong lButtons);
    xlong m_lX;
    xlong m_lY;
    xlong m_bRightDown;
    xlong m_bLeftDown;
    xlong m_bMiddleDown;

private:
    xulong AddCursor(CSprite *pSprite, CBitmap *pBitmap, const TPoint *pFrames, xlong lWidth, xlong lHeight,
                     short sHotX, short sHotY);
    void DeleteCursor(TCursor *pCursor);
};

/// The platform's mouse.
class TARVIX_API CMouse : public CMouseBase, public CWinMsg, public CMsgSys, public CTimer
{
public:
    TARVIX_HEAP_CLASS

    CMouse();
    CMouse(const CMouse &) = delete;
    CMouse &operator=(const CMouse &) = delete;
    ~CMouse() override;

    xlong Init() override;
    void SetCursor(xulong ulId, xlong lFrame) override;
    xparam WinMsgHandler(HWND hWnd, unsigned int uMsg, xuparam wParam, xparam lParam) override;
    /// Follows the pointer in full-screen modes.
    void TimerHandler(xulong ulInterval) override;
    /// Takes a finger out of the program's resources where the system has none.
    void SetFingerResourceId(xulong ulId);

    HCURSOR m_hArrow;
    HCURSOR m_hFinger;
    HCURSOR m_hIBeam;
};
