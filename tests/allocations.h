// A call under every failed allocation.
#pragma once

#include "core/heap.h"

#include <gtest/gtest.h>

#include <string>
#include <type_traits>

/// Makes the first allocation of a call fail, then the second, until the call
/// gets through: it may not say that it failed when nothing did, and leaves nothing behind.
/// @param call      returns whether it succeeded; it may take what arms the
///                  failure, and calls that when all is prepared
/// @param ulPooled  blocks that may stay, of lists' nodes
template <class TCall>
void FailEachAllocation(TCall call, size_t ulPooled = 0)
{
    for (xlong lFail = 1;; ++lFail)
    {
        SCOPED_TRACE("allocation " + std::to_string(lFail));
        ASSERT_LT(lFail, 500) << "the call never gets through";
        const size_t ulBlocks = HeapState().ulLiveBlocks;
        bool bOk;
        if constexpr (std::is_invocable_v<TCall>)
        {
            HeapFailAt(lFail);
            bOk = call();
        }
        else
            bOk = call([lFail] { HeapFailAt(lFail); });
        const bool bDone = !HeapFailed();
        HeapFailAt(0);
        EXPECT_TRUE(bOk || !bDone);
        ASSERT_GE(ulBlocks + ulPooled, HeapState().ulLiveBlocks);
        if (bDone)
            return;
    }
}
