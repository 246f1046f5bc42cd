#pragma once

#include "platform/win32.h"

enum
{
    CURSOR_COUNT = 13,
};

struct HCURSOR__
{
    unsigned short usId; ///< of IDC_ARROW and so on
    void *pNative;       ///< the backend's, made when it is first shown
};
