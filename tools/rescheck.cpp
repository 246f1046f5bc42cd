#include "rescheck.h"

#include "scripttext.h"
#include "tool.h"

#include "tarvix/resgrammar.h"
#include "tarvix/strings.h"
#include "tarvix/systemfiles.h"

#include <stdio.h>

#include <algorithm>
#include <map>
#include <set>

namespace
{
xlong KeepFault(const TKCBLFault *pFault, void *pUser)
{
    ((std::vector<TFault> *)pUser)->push_back({ *pFault, pFault->pszText, pFault->lHarmless != 0 });
    return 1;
}

std::string Quoted(const std::string &str)
{
    if (!str.empty() && (unsigned char)str[0] == KCBL_ARRAY_START)
        return "\"{...}\"";
    return "\"" + str.substr(0, 60) + (str.size() > 60 ? "...\"" : "\"");
}

// What a string names, and where the names come from.
const struct
{
    xlong lType, lSection;
    const char *pszWhat;
} s_Named[] = { { XRES_IS_ID, XRES_DEFINES, "id" },
                { XRES_IS_BITMAP, XRES_BITMAPS, "bitmap" },
                { XRES_IS_FONT, XRES_FONTS, "font" },
                { XRES_IS_COLORS, XRES_COLORS, "colour" } };

using TNames = std::map<std::string, size_t>;  ///< in small letters, with the number of strings
using TFound = std::map<xlong, const TItem *>; ///< by XRES_ITEM_...
using TLists = std::vector<const TResRows<TResItem> *>;

xlong FlagOf(const char *pszWord)
{
    for (const TResData &flag : xResGrammar().Flags)
        if (!xStricmp(flag.pszName, pszWord))
            return flag.lValue;
    return 0;
}

const char *WordOf(xlong lType)
{
    for (const TResControl &control : xResGrammar().Controls)
        if (control.lType == lType)
            return control.pszWord;
    return "";
}

const TResItem *ItemOf(const TLists &lists, xlong lItem)
{
    for (const auto *pItems : lists)
        for (const TResItem &item : *pItems)
            if (item.lItem == lItem)
                return &item;
    return nullptr;
}

size_t IndexOf(const TResItem &item, xlong lRole)
{
    size_t ul = 0;
    while (item.Fields.pRows[ul].lRole != lRole)
        ++ul;
    return ul;
}

// Counts up while what is checked is passed over.
class CPassOver
{
public:
    CPassOver(int &nCount, bool bPassedOver) : m_nCount(nCount), m_bPassedOver(bPassedOver) { m_nCount += bPassedOver; }
    CPassOver(const CPassOver &) = delete;
    ~CPassOver() { m_nCount -= m_bPassedOver; }

private:
    int &m_nCount;
    const bool m_bPassedOver;
};

class CChecker
{
public:
    CChecker(const std::string &strText, const std::vector<std::string> &folders)
        : m_strText(strText), m_Folders(folders), m_Script(strText), m_Places(strText)
    {
    }

    std::vector<TFault> Run()
    {
        std::vector<const TItem *> windows;
        const std::map<const TResSection *, const TItem *> sections = Sections(windows);
        for (const TResBuiltInColor &color : m_Grammar.Colors)
            m_Names[XRES_COLORS][Lower(color.pszName)] = 1;
        for (xlong l = 0; l < m_Grammar.Sections.lRows; ++l)
            if (const auto found = sections.find(m_Grammar.Sections.pRows + l); found != sections.end())
                Section(l, *found->first, *found->second);
        std::set<std::string> names;
        for (const TItem *pWindow : windows)
        {
            const bool bFirst = names.insert(Lower(pWindow->String(1))).second;
            if (!bFirst)
                Warn(pWindow->ulOffset, "only the first window " + Quoted(pWindow->String(1)) + " is read");
            const CPassOver over(m_nPassedOver, !bFirst);
            Window(*pWindow);
        }
        std::stable_sort(m_Faults.begin(), m_Faults.end(),
                         [](const TFault &a, const TFault &b) { return a.fault.lOffset < b.fault.lOffset; });
        return m_Faults;
    }

private:
    /// What the library refuses.
    void Tell(size_t ulOffset, const std::string &strWhat)
    {
        m_Faults.push_back({ m_Places.At(ulOffset), strWhat, m_nPassedOver != 0 });
    }
    /// What the library passes over.
    void Warn(size_t ulOffset, const std::string &strWhat)
    {
        m_Faults.push_back({ m_Places.At(ulOffset), strWhat, true });
    }

    /// The first of each, and all windows.
    std::map<const TResSection *, const TItem *> Sections(std::vector<const TItem *> &windows)
    {
        std::map<const TResSection *, const TItem *> sections;
        for (size_t ul : m_Script.Root().items)
        {
            const TItem &item = m_Script[ul];
            const auto section =
                std::find_if(m_Grammar.Sections.begin(), m_Grammar.Sections.end(),
                             [&](const TResSection &row) { return Lower(row.pszWord) == item.Name(); });
            if (item.IsComment())
                continue;
            if (!item.bChunk)
                Warn(item.ulOffset, Quoted(item.strWritten) + " stands outside of all sections");
            else if (section == m_Grammar.Sections.end())
                Warn(item.strings.empty() ? item.ulOffset : item.strings[0].ulOffset,
                     "unknown section " + Quoted(item.String(0)));
            else if (section->lRules & XRES_EACH)
                windows.push_back(&item);
            else if (!sections.insert({ section, &item }).second)
                Warn(item.ulOffset, "only the first section " + Quoted(item.String(0)) + " is read");
        }
        return sections;
    }

    void Section(xlong lSection, const TResSection &section, const TItem &chunk)
    {
        if (section.lRules & XRES_FREE)
            return;
        if (section.Items.pRows->pszWord)
        {
            Items(chunk, "the " + Lower(section.pszWord), { &section.Items });
            return;
        }
        if (lSection == XRES_DEFINES)
            for (const TResData &name : m_Grammar.Names)
                m_Names[lSection][Lower(name.pszName)] = 1;
        for (size_t ul : chunk.items)
        {
            const TItem &item = m_Script[ul];
            if (item.IsComment())
                continue;
            if (!item.bChunk || !section.pChunk)
            {
                Named(lSection, section, item, *section.Items.pRows);
                continue;
            }
            Strings(item, *section.pChunk);
            for (size_t ulPart : item.items)
                if (!m_Script[ulPart].IsComment())
                    Named(lSection, section, m_Script[ulPart], *section.pInChunk);
        }
    }

    // An item that the script gives a name.
    void Named(xlong lSection, const TResSection &section, const TItem &item, const TResItem &row)
    {
        Strings(item, row);
        if (!(section.lRules & XRES_NAMES))
            return;
        if (item.strWritten.size() >= RES_NAME_SIZE)
            Tell(item.ulOffset, "a name has at most " + std::to_string(RES_NAME_SIZE - 1) + " characters");
        else if (!m_Names[lSection].insert({ item.strKeyword, item.strings.size() }).second)
            Warn(item.ulOffset, Quoted(item.strWritten) + " is there already, and the first one counts");
    }

    void Strings(const TItem &item, const TResItem &row)
    {
        size_t ulLeast = 0;
        for (const TResField &field : row.Fields)
            ulLeast += !(field.lRules & (XRES_OPTIONAL | XRES_MANY));
        if (item.strings.size() + 1 == ulLeast && item.bComment && row.Fields.pRows[ulLeast - 1].lType == XRES_IS_TEXT)
            Warn(item.ulOffset, "the comment is read as a string of " + Quoted(item.strWritten));
        else if (item.strings.size() < ulLeast)
            Tell(item.ulOffset, Quoted(item.strWritten) + " takes " + std::to_string(ulLeast) + " strings and has " +
                                    std::to_string(item.strings.size()));
        size_t ul = 0;
        for (const TResField &field : row.Fields)
        {
            if (field.lRules & XRES_MANY)
                NoComment(item);
            do
            {
                if (ul < item.strings.size())
                    String(item.strings[ul], field);
                ++ul;
            } while ((field.lRules & XRES_MANY) && ul < item.strings.size());
        }
        Size(item, row);
    }

    // Where each string counts, a comment behind them would be taken for one more.
    void NoComment(const TItem &item)
    {
        const size_t ulLineEnd = std::min(m_strText.find_first_of("\r\n", item.ulOffset), m_strText.size());
        size_t ulQuotes = 0;
        for (size_t ulAt = item.strings.empty() ? item.ulOffset : item.strings.back().ulOffset; ulAt < ulLineEnd;
             ++ulAt)
        {
            ulQuotes += m_strText[ulAt] == '"';
            if (m_strText[ulAt] == ';' && ulQuotes % 2 == 0)
                return Tell(ulAt, "a comment behind the shades of a colour is read as a shade");
        }
    }

    void Size(const TItem &item, const TResItem &row)
    {
        xlong lFrames = 1;
        if (!(row.lRules & (XRES_AREA | XRES_FRAMES)))
            return;
        const size_t ulWidth = IndexOf(row, XRES_AS_WIDTH), ulHeight = IndexOf(row, XRES_AS_HEIGHT);
        if (ulHeight >= item.strings.size())
            return;
        if (row.lRules & XRES_FRAMES)
            lFrames = std::clamp<xlong>(Number(item.String(IndexOf(row, XRES_AS_FRAMES))), 1, RES_MAX_FRAMES);
        if (!xIsResSize(row.lRules, Number(item.String(ulWidth)), Number(item.String(ulHeight)), lFrames))
            Tell(item.strings[ulWidth].ulOffset, "this is no size of a picture");
    }

    void Known(const TField &field, xlong lSection, const char *pszWhat)
    {
        if (!m_Names[lSection].count(Lower(field.strText)))
            Tell(field.ulOffset, std::string("unknown ") + pszWhat + " " + Quoted(field.strText));
    }

    void String(const TField &field, const TResField &row)
    {
        for (const auto &named : s_Named)
            if (named.lType == row.lType)
                Known(field, named.lSection, named.pszWhat);
        xlong lValue;
        xulong ulValue;
        switch (row.lType)
        {
        case XRES_IS_NUMBER:
            if (!Ask(field.strText) || !m_Words.GetLong(0, &lValue))
                Tell(field.ulOffset, Quoted(field.strText) + " is no number");
            else if ((row.lLeast || row.lMost) && (lValue < row.lLeast || lValue > row.lMost))
            {
                const std::string strRange = std::to_string(row.lLeast) + " to " + std::to_string(row.lMost);
                Tell(field.ulOffset, row.lRole == XRES_AS_FRAMES
                                         ? "an animation has " + strRange + " frames"
                                         : Quoted(field.strText) + " lies outside of " + strRange);
            }
            break;
        case XRES_IS_UNSIGNED:
            if (!Ask(field.strText) || !m_Words.GetULong(0, &ulValue))
                Tell(field.ulOffset, Quoted(field.strText) + " is no number");
            break;
        case XRES_IS_FLAGS:
        case XRES_IS_KEY:
            Words(field, row.lType == XRES_IS_KEY);
            break;
        case XRES_IS_COLOR:
            Color(field);
            break;
        case XRES_IS_COLORS:
            if (const auto found = m_Names[XRES_COLORS].find(Lower(field.strText));
                found != m_Names[XRES_COLORS].end() && found->second < 8)
                Tell(field.ulOffset, "a control needs a colour of eight shades; " + Quoted(field.strText) + " has " +
                                         std::to_string(found->second));
            break;
        case XRES_IS_PICTURE:
            if (const std::string str = Lower(field.strText);
                str.size() < 4 || (str.compare(str.size() - 4, 4, ".bmp") && str.compare(str.size() - 4, 4, ".jpg")))
                Tell(field.ulOffset, Quoted(field.strText) + " is no name of a picture: they are bmp and jpg files");
            [[fallthrough]];
        case XRES_IS_FONTFILE:
            File(field);
        }
    }

    /// Makes a text the string that m_Words reads.
    bool Ask(const std::string &strText)
    {
        m_Words.Free();
        return m_Words.NewItem("Word", KSTRING, strText.c_str(), KEND) != 0;
    }

    xlong Number(const std::string &strText)
    {
        xlong lValue = 0;
        return Ask(strText) && m_Words.GetLong(0, &lValue) ? lValue : 0;
    }

    // Flags and keys, each with the place of the word.
    void Words(const TField &field, bool bKey)
    {
        if (field.strText[0] == '0')
            return;
        size_t ulPlace = field.ulOffset;
        for (size_t ulAt = 0; (ulAt = field.strText.find_first_not_of(" \t|", ulAt)) != std::string::npos;)
        {
            const size_t ulEnd = std::min(field.strText.find_first_of(" \t|", ulAt), field.strText.size());
            const std::string strWord = field.strText.substr(ulAt, ulEnd - ulAt);
            xlong lFlags = 0;
            short sKey = 0;
            ulAt = ulEnd;
            // Those that begin with 0 end the reading only at the very start.
            const bool bGood = strWord[0] != '0' && Ask(strWord) &&
                               (bKey ? m_Words.GetHotkey(0, &sKey) : m_Words.GetResFlags(0, &lFlags));
            const size_t ulFound = m_strText.find(strWord, ulPlace);
            ulPlace = ulFound == std::string::npos ? ulPlace : ulFound;
            if (!bGood)
                Tell(ulPlace, (bKey ? "unknown key " : "unknown flag ") + Quoted(strWord));
        }
    }

    void Color(const TField &field)
    {
        const size_t ulStart = field.strText.find_first_not_of(" ,");
        if (ulStart == std::string::npos)
            return Tell(field.ulOffset, "a colour is missing");
        const char c = field.strText[ulStart];
        TRGBA Color;
        if (c < '0' || c > '9')
            Known({ field.strText.substr(ulStart), field.ulOffset }, XRES_COLORS, "colour");
        else if (!Ask(field.strText) || !m_Words.GetColor(0, &Color, 0))
            Tell(field.ulOffset, "a colour is four numbers in one pair of quotes, as \"255 128 0 0\"");
    }

    void File(const TField &field)
    {
        for (const std::string &strFolder : m_Folders)
            if (xFileExists((strFolder.empty() ? field.strText : strFolder + "/" + field.strText).c_str()))
                return;
        Tell(field.ulOffset, "the file " + Quoted(field.strText) + " is missing");
    }

    // Whether the string of another item lets this one be read.
    bool Holds(const TResCondition &condition, const TFound &found, const TLists &lists)
    {
        const auto other = found.find(condition.lItem);
        if (other == found.end() || condition.lRole == XRES_AS_OTHER)
            return other != found.end();
        const std::string strText = other->second->String(IndexOf(*ItemOf(lists, condition.lItem), condition.lRole));
        if (!condition.pszFlag)
            return Number(strText) != 0;
        xlong lFlags = 0;
        return Ask(strText) && m_Words.GetResFlags(0, &lFlags) && (lFlags & FlagOf(condition.pszFlag));
    }

    // Plain items against lists of words. @return those that are read
    TFound Items(const TItem &chunk, const std::string &strWhere, const TLists &lists)
    {
        TFound found;
        std::vector<std::pair<const TItem *, const TResItem *>> items;
        for (size_t ul : chunk.items)
        {
            const TItem &item = m_Script[ul];
            const TResItem *pRow = nullptr;
            for (const auto *pList : lists)
                pRow = pRow ? pRow : xFindResItem(*pList, item.strKeyword.c_str());
            if (item.IsComment() || item.bChunk)
                continue;
            if (!pRow)
                Warn(item.ulOffset, "unknown word " + Quoted(item.strWritten) + " in " + strWhere);
            else if (found.insert({ pRow->lItem, &item }).second || (pRow->lRules & XRES_EACH))
                items.push_back({ &item, pRow });
            else if (pRow->lRules & XRES_NEEDED)
            {
                const CPassOver over(m_nPassedOver, true);
                Strings(item, *pRow);
                Warn(item.ulOffset, "only the first " + Quoted(item.strWritten) + " is read");
            }
            else
            {
                // Which one depends on what was looked for before.
                items.push_back({ &item, pRow });
                Warn(item.ulOffset, "only one " + Quoted(item.strWritten) + " is read");
            }
        }
        for (const auto &[pItem, pRow] : items)
        {
            const CPassOver over(m_nPassedOver, IsPassedOver(*pItem, *pRow, found, lists));
            Strings(*pItem, *pRow);
        }
        for (const auto *pList : lists)
            for (const TResItem &row : *pList)
                if (!found.count(row.lItem))
                    Missing(chunk, strWhere, row, found, lists);
        return found;
    }

    bool IsPassedOver(const TItem &item, const TResItem &row, const TFound &found, const TLists &lists)
    {
        const TResCondition &condition = row.Condition;
        if (!condition.lElse || Holds(condition, found, lists))
            return false;
        const std::string strFlag = condition.pszFlag ? std::string(condition.pszFlag) + " in " : "";
        const std::string strOther = Quoted(ItemOf(lists, condition.lItem)->pszWord);
        if (condition.lElse != XRES_ELSE_FAULT)
            Warn(item.ulOffset, "this is read only with " + strFlag + strOther);
        else if (found.count(condition.lItem))
            Tell(item.ulOffset, "this needs " + strFlag + strOther);
        return condition.lElse != XRES_ELSE_FAULT;
    }

    void Missing(const TItem &chunk, const std::string &strWhere, const TResItem &row, const TFound &found,
                 const TLists &lists)
    {
        const TResCondition &condition = row.Condition;
        if (row.lRules & XRES_NEEDED)
            Tell(chunk.ulOffset, strWhere + " needs " + Quoted(row.pszWord));
        else if (condition.lElse == XRES_ELSE_NONE && Holds(condition, found, lists))
            Tell(found.at(condition.lItem)->ulOffset, std::string(condition.pszFlag) + " needs " + Quoted(row.pszWord));
    }

    void Name(const TItem &chunk)
    {
        if (chunk.strings.size() < 2)
            Tell(chunk.ulOffset, "the name is missing behind " + Quoted(chunk.String(0)));
        else
            Known(chunk.strings[1], XRES_DEFINES, "id");
    }

    void Window(const TItem &window)
    {
        Name(window);
        Items(window, "a window", { &m_Grammar.Sections.pRows[XRES_WINDOW].Items });
        for (size_t ul : window.items)
            if (m_Script[ul].bChunk)
                Control(m_Script[ul], nullptr);
    }

    void Control(const TItem &chunk, const TResControl *pParent)
    {
        if (chunk.strings.empty())
            return Warn(chunk.ulOffset, "a chunk without a word has no effect");
        const TResControl *const pControl = xFindResControl(chunk.String(0).c_str());
        if (pParent && (!pControl || pControl->lType != pParent->lChildren))
            return OnlyChildren(chunk, *pParent);
        if (!pControl)
            return Tell(chunk.strings[0].ulOffset, "unknown control " + Quoted(chunk.String(0)));
        Name(chunk);
        const std::string strWhere = std::string("a ") + pControl->pszWord;
        const TResRows<TResItem> &windowItems = m_Grammar.Sections.pRows[XRES_WINDOW].Items;
        TLists lists = { &pControl->Items };
        if (pControl->lCommon)
            lists.push_back(&m_Grammar.Common);
        const TFound found = Items(chunk, strWhere, lists);
        std::set<std::string> parts;
        for (size_t ul : chunk.items)
        {
            const TItem &part = m_Script[ul];
            if (part.bChunk && pControl->lChildren != -1)
                Control(part, pControl);
            else if (part.bChunk)
                Part(part, *pControl, found, lists, parts.insert(part.Name()).second);
            else if (const TResItem *pShort = xFindResItem(windowItems, part.strKeyword.c_str());
                     pControl->lChildren != -1 && pShort && (pShort->lRules & XRES_MAKES))
                OnlyChildren(part, *pControl);
        }
    }

    void OnlyChildren(const TItem &item, const TResControl &parent)
    {
        Tell(item.ulOffset, std::string("a ") + parent.pszWord + " takes only " + WordOf(parent.lChildren));
    }

    void Part(const TItem &chunk, const TResControl &control, const TFound &found, const TLists &lists, bool bFirst)
    {
        for (const TResPart &part : control.Parts)
        {
            if (Lower(part.pszWord) != chunk.Name())
                continue;
            const std::string strWhere = "a " + Lower(part.pszWord);
            const TResCondition &condition = part.Condition;
            const bool bRead = Holds(condition, found, lists);
            if (!bRead && found.count(condition.lItem))
            {
                const TResItem &other = *ItemOf(lists, condition.lItem);
                const size_t ulString = IndexOf(other, condition.lRole);
                Warn(chunk.ulOffset, strWhere + " needs a " + other.Fields.pRows[ulString].pszName + ", string " +
                                         std::to_string(ulString) + " of " + Quoted(other.pszWord));
            }
            const CPassOver over(m_nPassedOver, !bRead);
            Items(chunk, strWhere, { &part.Items, &m_Grammar.Common });
            if (!bFirst)
                Warn(chunk.ulOffset, "only one " + Quoted(chunk.String(0)) + " is read");
            return;
        }
        Warn(chunk.ulOffset, "unknown chunk " + Quoted(chunk.String(0)) + " in a " + control.pszWord);
    }

    const TResGrammar &m_Grammar = xResGrammar();
    const std::string &m_strText;
    const std::vector<std::string> &m_Folders;
    const CScript m_Script;
    CPlaces m_Places;
    CResData m_Words;                ///< reads numbers, flags, keys and colours
    std::map<xlong, TNames> m_Names; ///< by section
    int m_nPassedOver = 0;           ///< the library does not look at what is being checked
    std::vector<TFault> m_Faults;
};
} // namespace

std::vector<TFault> FindFaults(CKCBL &kcbl, const std::string &strText)
{
    std::vector<TFault> faults;
    kcbl.ImportFaults(strText.c_str(), KeepFault, &faults);
    const size_t ulZero = strText.find('\0');
    if (ulZero != std::string::npos)
        faults.push_back({ CPlaces(strText).At(ulZero), "A zero byte ends the text here" });
    return faults;
}

bool IsResourceScript(const std::string &strText)
{
    return strText.size() > 8 && !xStrnicmp(strText.c_str(), "; script", 8);
}

std::vector<TFault> CheckResource(const std::string &strText, const std::vector<std::string> &folders)
{
    return CChecker(strText, folders).Run();
}

std::vector<TFault> CheckScript(const std::string &strText, const std::string &strFile,
                                const std::vector<std::string> &folders)
{
    CKCBL kcbl;
    std::vector<TFault> faults = FindFaults(kcbl, strText);
    if (!IsResourceScript(strText) ||
        std::any_of(faults.begin(), faults.end(), [](const TFault &fault) { return !fault.fault.lHarmless; }))
        return faults;
    std::vector<std::string> all = folders;
    all.push_back("");
    const size_t ulSlash = strFile.find_last_of("/\\");
    if (ulSlash != std::string::npos)
        all.push_back(strFile.substr(0, ulSlash));
    for (const TFault &fault : CheckResource(strText, all))
        faults.push_back(fault);
    return faults;
}

std::string PlaceOf(const std::string &strFile, const TFault &fault)
{
    return strFile + ":" + std::to_string(fault.fault.lLine) + ":" + std::to_string(fault.fault.lColumn);
}

std::string TextOf(const TFault &fault)
{
    return (fault.bWarning ? "warning: " : "") + fault.strText;
}

size_t CountFaults(const std::vector<TFault> &faults)
{
    return (size_t)std::count_if(faults.begin(), faults.end(), [](const TFault &fault) { return !fault.bWarning; });
}

void PrintFault(const std::string &strText, const std::string &strFile, const TFault &fault)
{
    printf("%s: %s\n", PlaceOf(strFile, fault).c_str(), TextOf(fault).c_str());
    const size_t ulStart = (size_t)(fault.fault.lOffset - fault.fault.lColumn + 1);
    const size_t ulEnd = std::min(strText.find_first_of("\r\n", ulStart), strText.size());
    std::string strLine = strText.substr(ulStart, std::min<size_t>(ulEnd - ulStart, 1000));
    std::string strMark = strLine.substr(0, (size_t)fault.fault.lColumn - 1);
    for (char &c : strLine)
        if ((unsigned char)c < 0x20 && c != '\t')
            c = '?';
    for (char &c : strMark)
        c = c == '\t' ? '\t' : ' ';
    printf("    %s\n    %s^\n", strLine.c_str(), strMark.c_str());
}
