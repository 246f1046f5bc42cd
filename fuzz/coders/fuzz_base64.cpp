// Any bytes as a text and, coded, as bytes that come back.
#include "fuzz/support.h"

#include "tarvix/base64.h"
#include "tarvix/memory.h"

#include <string.h>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *pData, size_t ulSize)
{
    FuzzStart();
    unsigned char *pBytes = nullptr, *pText = nullptr, *pBack = nullptr;
    xulong ulBytes = 0, ulText = 0, ulBack = 0;
    const int nResult = CBase64::Decode(pData, (xulong)ulSize, pBytes, ulBytes);
    if (nResult == 1 ? pBytes != nullptr : ulBytes > (ulSize / 4 + 1) * 3)
        abort();
    xFreeMemFunc(pBytes, nullptr, 0);
    if (!CBase64::Encode(pData, (xulong)ulSize, pText, ulText, ulSize % 2 && ulSize % 3 == 0) ||
        CBase64::Decode(pText, ulText, pBack, ulBack) || (ulSize && memcmp(pBack, pData, ulSize)))
        abort();
    xFreeMemFunc(pText, nullptr, 0);
    xFreeMemFunc(pBack, nullptr, 0);
    return 0;
}
