// Places that hosts compiled against: slots of virtual operations and offsets
// of members.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>

/// Slot of a virtual operation in its class's table; a virtual destructor takes two.
template <class TOperation>
int SlotOf(TOperation operation)
{
    intptr_t nOffset;
    memcpy(&nOffset, &operation, sizeof nOffset);
    return (int)((nOffset - 1) / (intptr_t)sizeof(void *));
}

/// Operations that follow each other from a slot on.
template <class... TOperations>
void ExpectSlots(int nSlot, TOperations... operations)
{
    const int anFound[] = { SlotOf(operations)... };
    for (int n : anFound)
        EXPECT_EQ(nSlot++, n);
}

template <class TObject, class TMember>
int OffsetOf(const TObject &object, const TMember &member)
{
    return (int)((const char *)&member - (const char *)&object);
}
