#pragma once

#include "platform/win32.h"

/// @param ppObject  receives the interface, with one reference
HRESULT CreateShellLink(REFIID iid, void **ppObject);
