// Any bytes as a packed resource file. A first byte that is even puts the
// right length into the header, so that the data is reached.
#include "fuzz/gui/resources.h"

#include "tarvix/lzss.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *pData, size_t ulSize)
{
    FuzzStart();
    MakeResourceFiles();
    static CFuzzFile s_File(".rc");
    if (ulSize < 13)
        return 0;
    std::string strFile((const char *)pData + 1, ulSize - 1);
    if (!(*pData & 1))
        for (int n = 0; n < 4; ++n)
            strFile[(size_t)n + 4] = (char)((strFile.size() - 12) >> 8 * n);
    CLzss lzss;
    xulong ulText = 0;
    lzss.ExpandBuffer(strFile.data() + 12, nullptr, &ulText, (xulong)strFile.size() - 12);
    std::string strText(ulText, ' ');
    lzss.ExpandBuffer(strFile.data() + 12, strText.data(), &ulText, (xulong)strFile.size() - 12);
    if (HasLargeNumber(strText))
        return 0;
    CResData res;
    res.Load(s_File.Write((const uint8_t *)strFile.data(), strFile.size()));
    ReadResources(res);
    return 0;
}
