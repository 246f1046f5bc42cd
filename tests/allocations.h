// A call under every failed allocation.
#pragma once

#include "core/heap.h"

#include <gtest/gtest.h>

/// Makes the first allocation of a call fail, then the second, until the call
/// gets through: it may not say that it succeeded before, and leaves nothing behind.
/// @param call      given what arms the failure, which it calls when all is
///                  prepared; returns whether it succeeded
/// @param ulPooled  blocks that may stay, of lists' nodes
template <class TCall>
void FailEachAllocation(TCall call, size_t ulPooled = 0)
{
    for (xlong lFail = 1;; ++lFail)
    {
        ASSERT_LT(lFail, 200) << "the call never gets through";
        const size_t ulBlocks = HeapState().ulLiveBlocks;
        const bool bOk = call([lFail] { HeapFailAt(lFail); });
        const bool bDone = !HeapFailed();
        HeapFailAt(0);
        EXPECT_TRUE(bOk || !bDone) << lFail;
        EXPECT_GE(ulBlocks + ulPooled, HeapState().ulLiveBlocks) << lFail;
        if (bDone)
            return;
    }
}
