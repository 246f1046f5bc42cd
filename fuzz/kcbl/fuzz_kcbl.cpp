// Any bytes as a KCBL text: what it reads is walked, read as every type,
// written, and read again.
#include "fuzz/support.h"

#include "tarvix/kcbl.h"

#include <vector>

namespace
{
xlong CountFault(const TKCBLFault *pFault, void *pUser)
{
    if (pFault->lOffset < 0 || pFault->lLine < 1 || pFault->lColumn < 1)
        abort();
    ++*(int *)pUser;
    return 1;
}

void ReadItem(CKCBL &kcbl)
{
    kcbl.IsComment();
    for (xlong l = -1; l <= std::min<xlong>(kcbl.GetNumStrings(), 20); ++l)
    {
        xlong alValues[3];
        double adValues[3];
        int abValues[3];
        kcbl.GetDataType(l);
        kcbl.GetLong(l, alValues);
        kcbl.GetDouble(l, adValues);
        kcbl.GetBool(l, abValues);
        kcbl.GetLongArray(l, alValues, 3);
        kcbl.GetDoubleArray(l, adValues, 3);
        kcbl.GetBoolArray(l, abValues, 3);
        kcbl.GetNumArrayItems(l, alValues);
    }
}

void Walk(CKCBL &kcbl)
{
    int nItems = 0;
    for (kcbl.MainChunk(), kcbl.FirstItem(); kcbl.m_pCurChunk->pParent || kcbl.ItemExists();)
    {
        if (kcbl.ItemExists() && ++nItems < 200)
            ReadItem(kcbl);
        kcbl.NextItem(1);
    }
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *pData, size_t ulSize)
{
    FuzzStart();
    const std::string strText((const char *)pData, ulSize);
    CKCBL kcbl;
    int nFaults = 0;
    const xlong lChecked = kcbl.ImportFaults(strText.c_str(), CountFault, &nFaults);
    if (lChecked != kcbl.Import(strText.c_str(), 0))
        abort();
    // The last byte says where long lines are folded.
    kcbl.SetMaxLineLength(ulSize ? pData[ulSize - 1] : 0);
    Walk(kcbl);
    xlong lSize = 0, lLen = 0;
    if (kcbl.ExportSize(&lSize))
    {
        std::vector<char> buffer((size_t)lSize);
        if (!kcbl.Export(buffer.data(), lSize, &lLen, 0) || lLen != lSize || buffer[(size_t)lSize - 1])
            abort();
        CKCBL again;
        if (again.Import(buffer.data(), 0))
            Walk(again);
    }
    kcbl.MainChunk();
    kcbl.RestartMode(ulSize & 1);
    if (kcbl.FindItem("{", nullptr, nullptr, nullptr) && kcbl.EnterChunk())
    {
        kcbl.FindItem("a", "b", nullptr, nullptr);
        kcbl.NewItem("new", KSTRING, strText.c_str(), KEND);
        kcbl.ExitChunk();
        kcbl.KillItem();
        kcbl.ExportSize(&lSize);
    }
    return 0;
}
