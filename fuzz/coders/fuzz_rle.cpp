// The width of a value, the room, then any bytes as packed values.
#include "fuzz/support.h"

#include "tarvix/rle.h"

#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *pData, size_t ulSize)
{
    FuzzStart();
    if (ulSize < 2)
        return 0;
    CRle rle;
    rle.Init(pData[0] % 20, pData[0] / 20);
    std::vector<unsigned char> room(pData[1] * 8);
    const xlong lSize = (xlong)ulSize - 2;
    const xlong lDone = rle.Unpack(pData + 2, room.data(), lSize, (xlong)room.size());
    if (lDone < 0 || (size_t)lDone > room.size())
        abort();
    std::vector<double> values(pData[1]);
    rle.UnpackDoubles(values.data(), (const char *)pData + 2, lSize, (xlong)values.size());
    return 0;
}
