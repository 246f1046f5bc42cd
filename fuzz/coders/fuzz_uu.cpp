// Any bytes as lines and, coded, as bytes that come back.
#include "fuzz/support.h"

#include "tarvix/base64.h"

#include <string.h>

#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *pData, size_t ulSize)
{
    FuzzStart();
    const char *const pSource = (const char *)pData;
    const xulong ulNeeded = UUDecode(pSource, nullptr, (xulong)ulSize, 0);
    std::vector<char> bytes(ulNeeded), text((ulSize + 44) / 45 * 62), back(ulSize);
    if (UUDecode(pSource, bytes.data(), (xulong)ulSize) != ulNeeded)
        abort();
    const xulong ulText = UUEncode(pSource, text.data(), (xulong)ulSize);
    if (ulText > text.size() || UUDecode(text.data(), back.data(), ulText) != ulSize ||
        (ulSize && memcmp(back.data(), pData, ulSize)))
        abort();
    return 0;
}
