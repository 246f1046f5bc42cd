// Any bytes as a resource script that is checked. What the checker lets pass, the
// library reads to the end.
#include "fuzz/gui/resources.h"
#include "tools/rescheck.h"

#include "tarvix/error.h"
#include "tarvix/resgrammar.h"

namespace
{
// The checker does not open files: whether those are good that a script names.
bool NamesGoodFiles(const std::string &strText)
{
    CKCBL kcbl;
    kcbl.Import(strText.c_str(), 0);
    for (const TResSection &section : xResGrammar().Sections)
    {
        kcbl.MainChunk();
        kcbl.FirstItem();
        const xlong lType = section.Items.lRows ? section.Items.pRows->Fields.pRows->lType : XRES_IS_TEXT;
        if ((lType != XRES_IS_PICTURE && lType != XRES_IS_FONTFILE) ||
            !kcbl.FindItem("{", section.pszWord, nullptr, nullptr) || !kcbl.EnterChunk())
            continue;
        for (; kcbl.ItemExists(); kcbl.NextItem(0))
        {
            const char *const psz = kcbl.GetString(0);
            const bool bGood = psz && (lType == XRES_IS_FONTFILE ? !strcmp(psz, "f.xbf")
                                                                 : !strcmp(psz, "p.bmp") || !strcmp(psz, "q.bmp"));
            if (!bGood && !kcbl.IsComment())
                return false;
        }
    }
    return true;
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *pData, size_t ulSize)
{
    FuzzStart();
    MakeResourceFiles();
    const std::string strText = "; script\n" + std::string((const char *)pData, ulSize);
    if (HasLargeNumber(strText) || strText.find('\0') != std::string::npos)
        return 0;
    bool bFaults = false;
    for (const TFault &fault : CheckScript(strText, "script.rc"))
    {
        bFaults = bFaults || !fault.bWarning;
        if (fault.fault.lOffset < 0 || (size_t)fault.fault.lOffset > strText.size())
            abort();
    }
    if (bFaults || !NamesGoodFiles(strText))
        return 0;
    glb->m_Error.Clear();
    CResData res;
    if (!res.Import(strText.c_str()) || glb->m_Error.GetErrCode())
    {
        fprintf(stderr, "let pass by the checker: %s\n", glb->m_Error.GetError(nullptr));
        abort();
    }
    return 0;
}
