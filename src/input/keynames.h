#pragma once

#include "tarvix/types.h"

struct TKeyName
{
    const char *pszName;
    unsigned short usKey;
};

/// Names of the key codes for resource scripts, ended by one without a name.
TARVIX_INTERNAL const TKeyName *KeyNames();
