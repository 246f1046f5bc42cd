#pragma once

#include "tarvix/types.h"

/// Frame messages, sent with both parameters 0.
enum
{
    XFRAME_DRAW = 2, ///< start of FlipPage: what lies over the host's picture is drawn
    XFRAME_END = 3   ///< start of ClearBuffer: clean up, handle events
};

/// Sink of frame messages. Sinks are called by falling priority, the older one
/// first among equals. Handlers may register, unregister and die.
class TARVIX_API CMsgSys
{
public:
    virtual xlong MsgHandler(xulong ulMsg, xlong lA, xlong lB);
    /// Removes every registration of the sink.
    virtual ~CMsgSys();
};

/// Sink of window messages, in order of registration. Every sink of a message
/// gets it; the first answer that is not 0 becomes the result.
class TARVIX_API CWinMsg
{
public:
    virtual xparam WinMsgHandler(HWND hWnd, unsigned int uMsg, xuparam wParam, xparam lParam);
    virtual ~CWinMsg();
};

struct TMsgSink
{
    CMsgSys *pSink;
    xulong ulMsg;
    xlong lPriority;
};

struct TWinMsgSink
{
    CWinMsg *pSink;
    xulong ulMsg;
};

/// @return 1, also if the pair exists; 0 when memory is exhausted
TARVIX_API xlong RegisterWinMsg(CWinMsg *pSink, xulong ulMsg);
/// Removes the first matching registration.
TARVIX_API void UnRegisterWinMsg(CWinMsg *pSink, xulong ulMsg);
/// Removes the sink's registrations, except that after each removal the first
/// of the list is passed over.
TARVIX_API void UnRegisterWinMsgAll(CWinMsg *pSink);
