#pragma once

#include "tarvix/memory.h"
#include "tarvix/msgsys.h"
#include "tarvix/rect.h"
#include "tarvix/types.h"

class CBitmap;

/// A place in a picture or on the screen, in pixels.
struct TPoint
{
    xlong lX;
    xlong lY;
};

/// Base flags of a sprite. The low six bits are one of the animation modes.
enum
{
    XSPRITE_LOOP = 1,
    XSPRITE_ONCE = 2,      ///< stops on the last frame
    XSPRITE_ONCE_BACK = 4, ///< stops on the first frame
    XSPRITE_PING_PONG = 8, ///< forward and back for ever
    XSPRITE_PING_PONG_ONCE = 16,
    XSPRITE_MODE_MASK = 63,
    XSPRITE_ON_TOP = 64,   ///< drawn after the screen's own handler; for Create alone
    XSPRITE_VISIBLE = 128, ///< set by Create
    XSPRITE_USE_CLIP = 256 ///< set by SetSpriteClipArea
};

/// What the animation does.
enum
{
    XSPRITE_STOPPED = 0,
    XSPRITE_FORWARD = 1,
    XSPRITE_BACKWARD = 2
};

/// An animated picture that floats above the host's picture. It draws itself
/// in the frame messages, puts back what it covered, and needs no call a frame.
/// A sprite is for the screen that was current at Create.
class TARVIX_API CSprite : public CMsgSys
{
public:
    enum
    {
        BUFFERS = 3 ///< one for each page of a screen
    };

    TARVIX_HEAP_CLASS

    CSprite();
    CSprite(const CSprite &) = delete;
    CSprite &operator=(const CSprite &) = delete;

    /// Saves, draws and restores, by the frame messages.
    xlong MsgHandler(xulong ulMsg, xlong lA, xlong lB) override;
    ~CSprite() override;

    /// Shows the sprite from the next frame on.
    /// @param pBitmap   holds the frames, in the screen's format; not owned
    /// @param pFrames   places of the frames, up to one with a -1; copied. Null
    ///                  for frames side by side from the left on
    /// @param lWidth    pixels of a frame; below 1 for the bitmap's, as lHeight
    /// @param lFlags    XSPRITE_...
    /// @param lDelay    screen frames that pass between two steps of the
    ///                  animation; below 1 for none
    /// @param lKey      1 leaves out pixels of the bitmap's key colour
    /// @return 1; 0 without a bitmap, a screen or memory
    xlong Create(CBitmap *pBitmap, const TPoint *pFrames, xlong lWidth, xlong lHeight, xlong lX, xlong lY, xlong lFlags,
                 xlong lDelay, xlong lKey);
    void SetBaseFlag(xlong lFlags);
    void ClearBaseFlag(xlong lFlags);
    /// 1 if any of the bits is set.
    xlong CheckBaseFlag(xlong lMask);
    /// @param lStatus  XSPRITE_STOPPED to XSPRITE_BACKWARD; others are ignored
    void SetAnimationStatus(xlong lStatus);
    void SetPosition(xlong lX, xlong lY);
    void SetRelativePosition(xlong lDX, xlong lDY);
    /// Not above the size of Create, which is that of the restore buffers.
    void SetSize(xlong lWidth, xlong lHeight);
    /// A frame that is not there is ignored.
    void SetCurrentFrame(xlong lFrame);
    /// @param lDelay  below 1 is ignored
    void SetFrameDelay(xlong lDelay);
    /// Draws in this part of the screen alone.
    void SetSpriteClipArea(CRect rcArea);
    xlong GetPositionX();
    xlong GetPositionY();
    xlong GetWidth();
    xlong GetHeight();

    CBitmap *m_pBitmap;            ///< the frames, not owned
    CBitmap *m_apRestore[BUFFERS]; ///< owned: what the sprite covers
    xlong m_alSaved[BUFFERS];      ///< saved and not yet drawn
    xlong m_alDrawn[BUFFERS];      ///< on the screen, to be restored
    xlong m_lFlags;
    xlong m_lKey;      ///< of Create
    TPoint *m_pFrames; ///< owned
    xlong m_lNumFrames;
    xlong m_lCurFrame;
    xlong m_lFrameW;
    xlong m_lFrameH;
    xlong m_lRestoreW; ///< of the restore buffers
    xlong m_lRestoreH;
    xlong m_lX;
    xlong m_lY;
    xlong m_lReserved[2];
    xlong m_lFrameDelay;
    xlong m_lDelayCount;           ///< screen frames until the next step
    xlong m_lAnimStatus;           ///< XSPRITE_STOPPED and so on
    CRect m_aRestoreRect[BUFFERS]; ///< where each buffer's pixels belong
    CRect m_ClipRect;

protected:
    /// Draws the current frame and goes one step on.
    void Draw();
    /// Saves what the frame is going to cover.
    void UpdateRestoreBuffer();
    /// Puts it back.
    void Restore();
    /// Takes the sprite off the messages and deletes what it owns.
    void Free();

private:
    xlong CreateRestoreBuffers();
    xlong CreateFrames(const TPoint *pFrames);
    void Step();
};
