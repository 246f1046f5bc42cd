// Packed resource files: "PRES", the length of the data, four zero bytes, the data.
#pragma once

#include "tarvix/lzss.h"

#include <string>

inline const size_t PRES_HEADER = 12;

inline bool IsPacked(const std::string &strFile)
{
    return strFile.size() > PRES_HEADER && !strFile.compare(0, 4, "PRES");
}

/// @return what is wrong, or null
inline const char *Unpack(const std::string &strFile, std::string &strPlain)
{
    if (!IsPacked(strFile))
        return "this is no packed resource file";
    xulong ulLen = 0;
    for (int nByte = 3; nByte >= 0; --nByte)
        ulLen = ulLen << 8 | (unsigned char)strFile[(size_t)nByte + 4];
    if (ulLen != strFile.size() - PRES_HEADER)
        return "the length in the header is not that of the data";
    const char *const pData = strFile.data() + PRES_HEADER;
    CLzss lzss;
    xulong ulSize = 0;
    lzss.ExpandBuffer(pData, nullptr, &ulSize, ulLen);
    strPlain.resize(ulSize);
    if (!ulSize || !lzss.ExpandBuffer(pData, strPlain.data(), &ulSize, ulLen))
        return "the packed data is damaged";
    return nullptr;
}
