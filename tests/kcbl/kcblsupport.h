// What the tests of CKCBL share.
#pragma once

#include "support.h"

#include "tarvix/kcbl.h"

/// With the protected operations open.
class CTestKCBL : public CKCBL
{
public:
    using CKCBL::AddLine;
    using CKCBL::GetLine;
    using CKCBL::Init;
    using CKCBL::ReallocBuffer;
    using CKCBL::ReorderString;
};

/// All items of a list and below, bodies and string offsets, one a line.
inline std::string Dump(const TKCBLChunk &chunk, const std::string &strIndent = "")
{
    std::string strDump;
    for (const CNode *pNode = chunk.m_pFirst ? chunk.m_pFirst->pNext : nullptr; pNode; pNode = pNode->pNext)
    {
        const TKCBLKeyword *pItem = (const TKCBLKeyword *)pNode->pData;
        strDump += strIndent + "<" + std::string(pItem->pszKeyword, (size_t)pItem->lSize) + ">";
        for (xlong l = 0; l < pItem->lNumStrings; ++l)
            strDump += " " + std::to_string(pItem->ppszStrings[l] - pItem->pszKeyword);
        strDump += "\n";
        if (pItem->pChunk)
            strDump += Dump(*pItem->pChunk, strIndent + "    ");
    }
    return strDump;
}

inline std::string ExportText(CKCBL &kcbl)
{
    xlong lSize = 0, lLen = 0;
    EXPECT_EQ(1, kcbl.ExportSize(&lSize));
    std::vector<char> buffer((size_t)std::max<xlong>(lSize, 1));
    EXPECT_EQ(1, kcbl.Export(buffer.data(), lSize, &lLen, 0));
    EXPECT_EQ(lSize, lLen);
    EXPECT_EQ((size_t)lLen - 1, strlen(buffer.data()));
    return buffer.data();
}

inline void ImportText(CKCBL &kcbl, const std::string &strText)
{
    ASSERT_EQ(1, kcbl.Import(strText.c_str(), 0)) << LastError() << "\n" << strText;
}
