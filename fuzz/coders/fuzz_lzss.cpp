// Any bytes as a stream, in memory and as a file, and as a source to pack.
#include "fuzz/support.h"

#include "tarvix/lzss.h"
#include "tarvix/memory.h"

#include <fstream>
#include <iterator>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *pData, size_t ulSize)
{
    FuzzStart();
    static CFuzzFile s_Stream(".lzs"), s_Out(".out");
    static CLzss s_Lzss;
    const char *const pSource = (const char *)pData;

    // Counted first; then the part that fits a smaller block is the same.
    xulong ulAll = 0;
    s_Lzss.ExpandBuffer(pSource, nullptr, &ulAll, (xulong)ulSize);
    std::vector<char> whole(ulAll), part(ulAll / 2);
    xulong ulLen = ulAll;
    const bool bEnds = s_Lzss.ExpandBuffer(pSource, whole.data(), &ulLen, (xulong)ulSize);
    if (ulLen != ulAll)
        abort();
    ulLen = (xulong)part.size();
    s_Lzss.ExpandBuffer(pSource, part.data(), &ulLen, (xulong)ulSize);
    if (!std::equal(part.begin(), part.end(), whole.begin()))
        abort();

    const std::string strOut = s_Out.Write(nullptr, 0);
    // A block of no bytes can't be expanded into; a file can.
    const bool bFileEnds = s_Lzss.Expand(s_Stream.Write(pData, ulSize), strOut.c_str());
    if (bFileEnds != bEnds && (ulAll || bEnds))
        abort();
    std::ifstream file(strOut, std::ios::binary);
    if (std::vector<char>((std::istreambuf_iterator<char>(file)), {}) != whole)
        abort();

    if (!ulSize)
        return 0;
    ulLen = (xulong)ulSize;
    char *pPacked = s_Lzss.CompressBuffer(pSource, &ulLen);
    std::vector<char> back(ulSize);
    xulong ulBack = (xulong)ulSize;
    if (!pPacked || !s_Lzss.ExpandBuffer(pPacked, back.data(), &ulBack, ulLen) ||
        !std::equal(back.begin(), back.end(), pSource))
        abort();
    xFreeMem(pPacked, nullptr, 0);
    return 0;
}
