#pragma once

#include "tarvix/memory.h"
#include "tarvix/types.h"

class CFile;
struct TReplayEvent;

/// Keeps what the user does in a text file, or does it again from one; see
/// docs/replay.md. One at a time. From start to end the library's clock stands
/// apart from the real one: it begins at the same time in each session and
/// moves by a fixed step a frame, so that timers, animations and pictures of a
/// replay are those of its recording on every machine.
class TARVIX_API CReplay
{
public:
    enum
    {
        DEFAULT_STEP = 20,
        MAX_STEP = 1000
    };

    TARVIX_HEAP_CLASS

    CReplay();
    CReplay(const CReplay &) = delete;
    CReplay &operator=(const CReplay &) = delete;
    /// Stops.
    ~CReplay();

    /// Starts to do what a recording says, frame by frame, and keeps the real
    /// mouse and keyboard away. To be called after xInit and the screen's mode;
    /// it empties the key queue and lets go of all keys and buttons. It ends by
    /// itself behind the last frame.
    /// @param bRealTime  0 runs the frames as fast as they come, 1 at the pace of the recording
    /// @return 0 with a text that names file and line when the file is damaged
    ///         or was made in another mode of the screen; nothing has begun then
    xlong Play(const char *pszFile, xlong bRealTime = 0);
    /// The same with the text in memory.
    /// @param pText    copied
    /// @param pszName  for error texts
    xlong PlayText(const char *pText, xulong ulSize, const char *pszName, xlong bRealTime = 0);
    /// Starts a recording, under the same conditions as Play.
    /// @param lStep  milliseconds of a frame, 1 to MAX_STEP; 0 for the minimum
    ///               frame time, or DEFAULT_STEP where none is set
    /// @return 0 with a report when the file can't be made
    xlong Record(const char *pszFile, xlong lStep = 0);
    /// Ends either, and the real clock and input are back.
    /// @return 1, also when neither runs; 0 with a report when the recording
    ///         could not be written as a whole
    xlong Stop();

    xlong IsPlaying() const;
    xlong IsRecording() const;
    /// The frame that runs or has run last, from 1 on.
    xlong GetFrame() const;
    /// The last one of the recording that was read.
    xlong GetLastFrame() const;

    // What the pump and the input layers call.
    void BeginFrame();
    void TakeInput();
    void EndFrame();
    void OnMouse(xlong lX, xlong lY, xlong lDX, xlong lDY, xlong lDown);
    void OnPoint(xlong *plX, xlong *plY);
    void OnKey(unsigned short usKey, xlong lFlags);
    void OnState(unsigned short usKey, unsigned char ucState);
    void OnPaste(const char *pszText);
    /// @return false for what the screen is to leave undone
    bool OnActive(xlong bActive);
    void OnClose();
    void OnFocusLost();
    void OnSleep(xulong ulTime);
    xulong GetTime() const;

private:
    enum EMode
    {
        OFF,
        PLAY,
        RECORD
    };

    xlong Parse(const char *pszName);
    bool CheckMode(const char *pszName, xlong lLine);
    xlong Begin(EMode eMode);
    void RestampTimers();
    void Apply(const TReplayEvent &event);
    void ActivateScreen(xlong bActive);
    void Pace();
    void Line(const char *pszKind, xlong lCount, const xlong *plValues);
    void Write(const char *pText, xulong ulSize);
    void FreeEvents();

    EMode m_eMode;
    bool m_bRealTime;
    bool m_bPumped; ///< the frame has taken its input: what comes now belongs to the next one
    bool m_bWriteFailed;
    bool m_bUnflushed;
    xlong m_lStep; ///< milliseconds
    xlong m_lFrame;
    xlong m_lLastFrame;
    xlong m_lStamp;      ///< frame of the last line that was written
    xulong m_ulTime;     ///< of the stepped clock
    xulong m_ulPaceReal; ///< real time that belongs to m_ulPaceTime
    xulong m_ulPaceTime;
    xlong m_lX; ///< where the pointer was at the start
    xlong m_lY;
    bool m_bApplying;    ///< an event of the replay is being done
    xlong m_lRealActive; ///< what became of the window meanwhile, -1 for nothing
    xlong m_lPointX;     ///< what full-screen modes follow
    xlong m_lPointY;
    xlong m_alMode[3];       ///< width, height and depth; 0 when the recording names none
    char *m_pText;           ///< owned; texts of events lie in it
    TReplayEvent *m_pEvents; ///< owned
    xlong m_lEvents;
    xlong m_lNext;
    CFile *m_pFile; ///< owned while recording
};
