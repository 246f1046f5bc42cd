// File calls that fail when a test says so.
#pragma once

#include "tarvix/types.h"

#ifdef TARVIX_TESTING
/// Makes one call fail that opens, reads, writes, flushes, replaces a file or
/// makes a directory: the lCount-th from now on, 1 for the next, 0 for none.
TARVIX_INTERNAL void FileFailAt(xlong lCount);
/// Whether it has come to that.
TARVIX_INTERNAL bool FileFailed();
/// For the calls themselves: true when this one is to fail.
bool FailsFileCall();
#else
inline bool FailsFileCall()
{
    return false;
}
#endif
