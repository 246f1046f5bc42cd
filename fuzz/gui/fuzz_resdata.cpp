// Any bytes as the text of a resource file.
#include "fuzz/gui/resources.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *pData, size_t ulSize)
{
    FuzzStart();
    MakeResourceFiles();
    const std::string strText((const char *)pData, ulSize);
    if (HasLargeNumber(strText))
        return 0;
    CResData res;
    res.Import(strText.c_str());
    ReadResources(res);
    return 0;
}
