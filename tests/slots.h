// Places that hosts compiled against: slots of virtual operations and offsets
// of members.
#pragma once

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

template <class TObject, class TMember>
int OffsetOf(const TObject &object, const TMember &member)
{
    return (int)((const char *)&member - (const char *)&object);
}
