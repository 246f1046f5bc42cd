#pragma once

#include "tarvix/msgsys.h"

/// @return 1, also if the registration exists; 0 when memory is exhausted
TARVIX_INTERNAL xlong MsgSysRegister(CMsgSys *pSink, xulong ulMsg, xlong lPriority);
/// @return 1 if a sink was called, else 0
TARVIX_INTERNAL xlong MsgSysSend(xulong ulMsg, xlong lA, xlong lB);
/// Removes the first match.
/// @param lPriority  -1 matches any
TARVIX_INTERNAL void MsgSysUnregister(CMsgSys *pSink, xulong ulMsg, xlong lPriority);
