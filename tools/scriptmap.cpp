#include "scriptmap.h"

#include "packed.h"
#include "tool.h"

#include "tarvix/control.h"
#include "tarvix/dialog.h"
#include "tarvix/resgrammar.h"

#include <algorithm>

namespace
{
const int s_nDeepest = 50;

std::string Text(const char *psz)
{
    return psz ? psz : "";
}

template <class TUse>
void EachItem(CKCBL &kcbl, TUse use)
{
    for (kcbl.FirstItem(); kcbl.ItemExists(); kcbl.NextItem(0))
        if (!kcbl.IsComment())
            use(kcbl.ItemType() == 2);
}

const char *OwnName(xlong lID)
{
    switch (lID)
    {
    case 0:
        return "-";
    case XCNTRL_TITLEBAR:
        return "XCNTRL_TITLEBAR";
    case XCNTRL_CLOSE:
        return "XCNTRL_CLOSE";
    case XCNTRL_FRAME:
        return "XCNTRL_FRAME";
    case XCNTRL_STATIC:
        return "XCNTRL_STATIC";
    }
    return nullptr;
}
} // namespace

CScriptMap::CScriptMap(const std::string &strText)
{
    CKCBL kcbl;
    if (!kcbl.Import(strText.c_str(), 0))
        return;
    // Windows may stand before the section with their ids.
    for (xlong l = 0; l < xResGrammar().Sections.lRows; ++l)
    {
        kcbl.MainChunk();
        EachItem(kcbl,
                 [&](bool bChunk)
                 {
                     if (bChunk && !xStricmp(Text(kcbl.GetString(0)).c_str(), xResGrammar().Sections.pRows[l].pszWord))
                         Section(kcbl, l);
                 });
    }
}

void CScriptMap::Section(CKCBL &kcbl, xlong lSection)
{
    const std::string strName = Text(kcbl.GetString(1));
    if (!kcbl.EnterChunk())
        return;
    const TResRows<TResItem> &items = xResGrammar().Sections.pRows[lSection].Items;
    const xlong lType = items.lRows ? items.pRows->Fields.pRows->lType : XRES_IS_TEXT;
    if (lSection == XRES_DEFINES)
        EachItem(kcbl,
                 [&](bool)
                 {
                     xlong lID = 0;
                     if (kcbl.GetLong(0, &lID))
                         m_Ids.insert({ Lower(Text(kcbl.GetKeyword())), lID });
                 });
    else if (lSection == XRES_WINDOW)
    {
        m_Windows.push_back({ strName, "", IdOf(strName), {} });
        Controls(kcbl, m_Windows.back(), 0);
    }
    else if (lType == XRES_IS_PICTURE || lType == XRES_IS_FONTFILE)
        Files(kcbl, m_Loaded[lSection]);
    kcbl.ExitChunk();
}

void CScriptMap::Files(CKCBL &kcbl, xlong &lCount)
{
    EachItem(kcbl,
             [&](bool bChunk)
             {
                 const std::string strFile = Text(kcbl.GetString(0));
                 if (!strFile.empty() && std::find(m_Files.begin(), m_Files.end(), strFile) == m_Files.end())
                     m_Files.push_back(strFile);
                 if (bChunk && kcbl.EnterChunk())
                 {
                     EachItem(kcbl, [&](bool) { ++lCount; });
                     kcbl.ExitChunk();
                 }
                 else
                     ++lCount;
             });
}

void CScriptMap::Controls(CKCBL &kcbl, TScriptWindow &window, int nDepth)
{
    const TResRows<TResItem> &items = xResGrammar().Sections.pRows[XRES_WINDOW].Items;
    const TResControl *pControl = xResGrammar().Controls.begin(); // of the short form
    while (pControl->lType != XDLG_STATIC)
        ++pControl;
    EachItem(kcbl,
             [&](bool bChunk)
             {
                 const std::string strWord = Text(kcbl.GetString(0)), strName = Text(kcbl.GetString(1));
                 const TResItem *const pItem = xFindResItem(items, kcbl.GetKeyword());
                 if (!nDepth && pItem && pItem->lItem == XRES_ITEM_CREATE && window.strTitle.empty())
                     window.strTitle = strWord;
                 else if (pItem && (pItem->lRules & XRES_MAKES))
                     window.controls.push_back({ pControl->pszWord, strWord, IdOf(strWord), nDepth });
                 // The parts of a control, as its caption, have no name.
                 else if (bChunk && !strName.empty() && nDepth < s_nDeepest)
                 {
                     window.controls.push_back({ strWord, strName, IdOf(strName), nDepth });
                     if (kcbl.EnterChunk())
                     {
                         Controls(kcbl, window, nDepth + 1);
                         kcbl.ExitChunk();
                     }
                 }
             });
}

xlong CScriptMap::IdOf(const std::string &strName) const
{
    const auto found = m_Ids.find(Lower(strName));
    return found == m_Ids.end() ? 0 : found->second;
}

const TScriptWindow *CScriptMap::FindWindow(const std::string &strName) const
{
    for (const TScriptWindow &window : m_Windows)
        if (Lower(window.strName) == Lower(strName))
            return &window;
    return nullptr;
}

const TScriptWindow *CScriptMap::FindWindow(xlong lID) const
{
    for (const TScriptWindow &window : m_Windows)
        if (window.lID == lID)
            return &window;
    return nullptr;
}

std::string CScriptMap::WindowName(xlong lID) const
{
    const TScriptWindow *const pWindow = FindWindow(lID);
    return pWindow ? pWindow->strName : std::to_string(lID);
}

std::string CScriptMap::ControlName(xlong lWindowID, xlong lID) const
{
    if (const TScriptWindow *const pWindow = FindWindow(lWindowID))
        for (const TScriptControl &control : pWindow->controls)
            if (control.lID == lID)
                return control.strName;
    const char *const pszOwn = OwnName(lID);
    return pszOwn ? pszOwn : std::to_string(lID);
}

TScript ReadScript(const std::string &strFile)
{
    TScript script;
    if (!ReadWhole(strFile, script.strText))
    {
        script.strWhy = "the file can't be read";
        return script;
    }
    const bool bPacked = IsPacked(script.strText);
    if (bPacked)
    {
        const std::string strPacked = script.strText;
        script.strText.clear();
        if (const char *pszWhy = Unpack(strPacked, script.strText))
        {
            script.strWhy = pszWhy;
            return script;
        }
        // The zero behind the text may be packed with it.
        while (!script.strText.empty() && !script.strText.back())
            script.strText.pop_back();
    }
    else if (!IsResourceScript(script.strText))
    {
        script.strWhy = "this is no resource script: its first line does not begin with \"; script\"";
        return script;
    }
    CKCBL kcbl;
    script.faults = FindFaults(kcbl, script.strText);
    script.bLanguage = std::all_of(script.faults.begin(), script.faults.end(),
                                   [](const TFault &fault) { return fault.fault.lHarmless != 0; });
    if (script.bLanguage)
        for (const TFault &fault : CheckResource(script.strText, { "" }))
            script.faults.push_back(fault);
    return script;
}
