#pragma once

#include "tarvix/types.h"

/// Appends the text to DbgStd.txt and writes it to standard error; nothing at
/// all if the file can't be opened.
TARVIX_INTERNAL void DebugStdOut(const char *pszText);
/// The same for DbgLevel.txt.
TARVIX_INTERNAL void DebugLevelOut(const char *pszText);
