#include "gui/resources/grammarcases.h"

#include "tarvix/resgrammar.h"

#include <limits.h>

namespace
{
const TResGrammar &s_Grammar = xResGrammar();

using TStrings = std::vector<std::string>;

std::string Right(const TResField &field)
{
    switch (field.lType)
    {
    case XRES_IS_TEXT:
        return "\"a text\"";
    case XRES_IS_FLAGS:
        return "0";
    case XRES_IS_KEY:
        return "XKEY_F1";
    case XRES_IS_ID:
        return "B";
    case XRES_IS_BITMAP:
    case XRES_IS_FONT:
        return s_szGrammarLast;
    case XRES_IS_COLOR:
        return "red";
    case XRES_IS_COLORS:
        return "Eight";
    case XRES_IS_PICTURE:
        return "pic.bmp";
    case XRES_IS_FONTFILE:
        return "font.xbf";
    }
    return "2";
}

TStrings Wrong(const TResField &field)
{
    TStrings wrong = { "wrong" };
    switch (field.lType)
    {
    case XRES_IS_TEXT:
        return {};
    case XRES_IS_FLAGS:
        return { "CNTRL_WRONG", "XKEY_F1", "\"CNTRL_TILED|0\"" };
    case XRES_IS_KEY:
        return { "XKEY_WRONG", "CNTRL_TILED" };
    case XRES_IS_COLOR:
        return { "wrong", "\"1 2 3\"", "1 2 3 4" };
    case XRES_IS_COLORS:
        return { "wrong", "red", "\"1 2 3 4\"" };
    case XRES_IS_PICTURE:
        return { "missing.bmp", "font.xbf" };
    case XRES_IS_FONTFILE:
        return { "missing.xbf" };
    }
    if (field.lLeast || field.lMost)
        wrong.push_back(std::to_string((long long)field.lLeast - 1));
    if (field.lMost && field.lMost != INT_MAX)
        wrong.push_back(std::to_string((long long)field.lMost + 1));
    return wrong;
}

TStrings RightStrings(const TResItem &item)
{
    TStrings strings;
    for (const TResField &field : item.Fields)
        strings.push_back(Right(field));
    return strings;
}

std::string Item(const std::string &strWord, const TStrings &strings)
{
    std::string str = strWord;
    for (const std::string &strString : strings)
        str += (&strString == &strings[0] ? " = " : ", ") + strString;
    return str + "\n";
}

size_t IndexOf(const TResItem &item, xlong lRole)
{
    size_t ul = 0;
    while (item.Fields.pRows[ul].lRole != lRole)
        ++ul;
    return ul;
}

const TResItem &ItemOf(const TResRows<TResItem> &items, xlong lItem)
{
    const TResItem *pItem = items.begin();
    while (pItem->lItem != lItem)
        ++pItem;
    return *pItem;
}

std::string Chunk(const std::string &strHead, const std::string &strItems)
{
    return "{ = " + strHead + "\n" + strItems + "}\n";
}

class CCases
{
public:
    std::vector<TGrammarCase> Make()
    {
        m_Items.resize((size_t)s_Grammar.Sections.lRows);
        const TResRows<TResItem> &window = s_Grammar.Sections.pRows[XRES_WINDOW].Items;
        m_strWindow = Create(window);
        for (xlong l = 0; l < s_Grammar.Sections.lRows; ++l)
            Section(l, s_Grammar.Sections.pRows[l]);
        InItems("Window ", window, window, [&](const std::string &strItems) { m_strWindow = strItems; });
        m_strWindow = Create(window);
        for (const TResControl &control : s_Grammar.Controls)
            Control(control);
        Take("Window, with a word that is no control", false, Chunk("Wrong, B", ""));
        Take("Window, with a chunk without a word", true, "{\n}\n", true);
        Take("Window, with a word that is none", true, "Wrong = 1\n", true);
        return m_Cases;
    }

private:
    static std::string Create(const TResRows<TResItem> &items)
    {
        const TResItem &create = ItemOf(items, XRES_ITEM_CREATE);
        TStrings strings = RightStrings(create);
        if (&items == &s_Grammar.Sections.pRows[XRES_WINDOW].Items)
            strings[IndexOf(create, XRES_AS_FLAGS)] = "XWIN_TITLEBAR|XWIN_FRAME";
        return Item(create.pszWord, strings);
    }

    // The script with what is tried in its place.
    void Take(const std::string &strName, bool bAccepted, const std::string &strInWindow = "", bool bWarning = false)
    {
        std::string strScript = "; script\n";
        for (xlong l = 0; l < s_Grammar.Sections.lRows; ++l)
        {
            const TResSection &section = s_Grammar.Sections.pRows[l];
            std::string strItems, strHead = section.pszWord;
            if (l == XRES_DEFINES)
                strItems = "WIN = 1\nA = 11\nB = 12\n";
            else if (l == XRES_COLORS)
                strItems = "Eight = red, red, red, red, red, red, red, red\n";
            strItems += m_Items[(size_t)l];
            if (l == XRES_WINDOW)
            {
                strHead += ", WIN";
                strItems = m_strWindow + strInWindow;
            }
            else if (l == XRES_DEFAULTS)
                strItems += Item("Caret", { s_szGrammarLast });
            else if (l != XRES_DATA)
                strItems += Item(s_szGrammarLast, RightStrings(*section.Items.pRows));
            strScript += Chunk(strHead, strItems);
        }
        m_Cases.push_back({ strName, strScript + m_strBehind, bAccepted, bWarning || m_bWarning });
    }

    /// Tries the strings of an item.
    /// @param take  gets each item as text, and what has to become of it
    template <class TTake>
    void Strings(const std::string &strName, const std::string &strWord, const TResItem &item, TTake take)
    {
        const TStrings right = RightStrings(item);
        const TResField &last = item.Fields.pRows[item.Fields.lRows - 1];
        const auto With = [&](size_t ul, const std::string &str)
        {
            TStrings strings = right;
            strings[ul] = str;
            return Item(strWord, strings);
        };
        TStrings strings = right;
        take(strName + " as it should be", Item(strWord, right), true);
        strings.push_back(last.lRules & XRES_MANY ? Right(last) : "\"one more\"");
        take(strName + " with one string more", Item(strWord, strings), true);
        strings.resize(right.size() - 1);
        take(strName + " with one string less", Item(strWord, strings),
             (last.lRules & (XRES_OPTIONAL | XRES_MANY)) != 0);
        if (!strings.empty())
        {
            // The reader keeps a comment as a string.
            std::string strNote = Item(strWord, strings);
            strNote.insert(strNote.size() - 1, " ; a note");
            m_bWarning = last.lType == XRES_IS_TEXT;
            take(strName + " with a comment for the last string", strNote, m_bWarning);
            m_bWarning = false;
        }
        const std::string strRight = Item(strWord, right);
        if (last.lRules & XRES_MANY)
            take(strName + " with a comment behind it", strRight.substr(0, strRight.size() - 1) + " ; a note\n", false);
        for (size_t ul = 0; ul < right.size(); ++ul)
            for (const std::string &strWrong : Wrong(item.Fields.pRows[ul]))
                take(strName + " with " + strWrong + " for " + item.Fields.pRows[ul].pszName, With(ul, strWrong),
                     false);
        for (size_t ul = 0; ul < right.size(); ++ul)
            for (const xlong lBound : { item.Fields.pRows[ul].lLeast, item.Fields.pRows[ul].lMost })
                if (item.Fields.pRows[ul].lMost && lBound != INT_MAX)
                    take(strName + " with " + std::to_string(lBound) + " for " + item.Fields.pRows[ul].pszName,
                         With(ul, std::to_string(lBound)), true);
        if (!(item.lRules & (XRES_AREA | XRES_FRAMES)))
            return;
        for (const xlong lRole : { XRES_AS_WIDTH, XRES_AS_HEIGHT })
        {
            const size_t ul = IndexOf(item, lRole);
            const std::string strOf = std::string(" for ") + item.Fields.pRows[ul].pszName;
            for (const char *psz : { "0", "-2", "33554433" })
                take(strName + " with " + psz + strOf, With(ul, psz), false);
            take(strName + " with -1" + strOf, With(ul, "-1"), (item.lRules & XRES_AREA) != 0);
        }
    }

    void Section(xlong lSection, const TResSection &section)
    {
        const std::string strName = section.pszWord;
        std::string &strItems = m_Items[(size_t)lSection];
        const auto InSection = [&](const std::string &strCase, const std::string &strTried, bool bAccepted)
        {
            strItems = strTried;
            Take(strCase, bAccepted);
            strItems.clear();
        };
        m_strBehind = Chunk(strName + "Wrong", "");
        Take(strName + ", and a section that is none", true, "", true);
        m_strBehind = Chunk(strName + (section.lRules & XRES_EACH ? ", WIN" : ""), "");
        Take(strName + " twice", true, "", true);
        m_strBehind.clear();
        if (lSection == XRES_WINDOW || (section.lRules & XRES_FREE))
            return;
        for (const TResItem &item : section.Items)
            Strings(strName + ": " + (item.pszWord ? item.pszWord : "a name"), item.pszWord ? item.pszWord : "Tried",
                    item, InSection);
        if (section.Items.pRows->pszWord)
        {
            strItems = "Wrong = 1\n";
            Take(strName + ": a word that is none", true, "", true);
            strItems.clear();
            return;
        }
        const std::string strLong(RES_NAME_SIZE, 'n');
        const TStrings right = RightStrings(*section.Items.pRows);
        InSection(strName + ": a name of 31", Item(strLong.substr(1), right), true);
        InSection(strName + ": a name of 32", Item(strLong, right), !(section.lRules & XRES_NAMES));
        if (section.lRules & XRES_NAMES)
        {
            strItems = Item(s_szGrammarLast, right);
            Take(strName + ": a name twice", true, "", true);
            strItems.clear();
        }
        if (!section.pChunk)
            return;
        const std::string strInside = Item("Inside", RightStrings(*section.pInChunk));
        Strings(strName + ": a chunk", "{", *section.pChunk,
                [&](const std::string &strCase, const std::string &strTried, bool bAccepted)
                { InSection(strCase, strTried + strInside + "}\n", bAccepted); });
        Strings(strName + ": a name in a chunk", "Tried", *section.pInChunk,
                [&](const std::string &strCase, const std::string &strTried, bool bAccepted)
                { InSection(strCase, Chunk(Right(*section.pChunk->Fields.pRows), strTried + strInside), bAccepted); });
    }

    /// Tries the items of a chunk, each with what it needs beside it.
    /// @param all  of the chunk, where conditions look
    /// @param put  puts the items into the chunk
    template <class TPut>
    void InItems(const std::string &strName, const TResRows<TResItem> &items, const TResRows<TResItem> &all, TPut put)
    {
        const bool bCreate = all.pRows->lItem == XRES_ITEM_CREATE;
        const std::string strCreate = bCreate ? Create(all) : "";
        for (const TResItem &item : items)
        {
            const TResCondition &condition = item.Condition;
            const std::string strItem = strName + item.pszWord, strRight = Item(item.pszWord, RightStrings(item));
            std::string strBeside = item.lItem == XRES_ITEM_CREATE ? "" : strCreate;
            if (condition.lElse && condition.lItem != XRES_ITEM_CREATE)
                strBeside +=
                    Item(ItemOf(all, condition.lItem).pszWord, { condition.pszFlag ? condition.pszFlag : "0" });
            Strings(strItem, item.pszWord, item,
                    [&](const std::string &strCase, const std::string &strTried, bool bAccepted)
                    {
                        put(strBeside + strTried);
                        Take(strCase, bAccepted);
                    });
            if (item.lRules & XRES_NEEDED)
            {
                put("");
                Take(strItem + " missing", false);
            }
            if (!(item.lRules & XRES_EACH))
            {
                // A needed one is looked for first, so that the first is found; of others it can be either.
                put(strBeside + strRight + (item.lRules & XRES_NEEDED ? Item(item.pszWord, {}) : strRight));
                Take(strItem + " twice", true, "", true);
            }
            if (!condition.lElse)
                continue;
            // The same without what it needs.
            std::string strWithout = strCreate;
            if (condition.lItem == XRES_ITEM_CREATE)
                strWithout = Item(ItemOf(all, XRES_ITEM_CREATE).pszWord, RightStrings(ItemOf(all, XRES_ITEM_CREATE)));
            put(strWithout + Item(item.pszWord, RightStrings(item)));
            Take(strItem + " without what it needs", condition.lElse != XRES_ELSE_FAULT, "",
                 condition.lElse != XRES_ELSE_FAULT);
            put(strWithout + Item(item.pszWord, {}));
            Take(strItem + " empty, without what it needs", condition.lElse != XRES_ELSE_FAULT, "",
                 condition.lElse != XRES_ELSE_FAULT);
            if (condition.lElse == XRES_ELSE_NONE)
            {
                put(strBeside);
                Take(strItem + " missing where it is needed", false);
            }
        }
    }

    void Control(const TResControl &control)
    {
        const std::string strName = control.pszWord, strBefore = m_strWindow, strCreate = Create(control.Items);
        const auto Put = [&](const std::string &strItems)
        { m_strWindow = strBefore + Chunk(strName + ", B", strItems); };
        InItems(strName + " ", control.Items, control.Items, Put);
        const auto PutCommon = [&](const std::string &strItems) { Put(strCreate + strItems); };
        if (control.lCommon)
            InItems(strName + " ", s_Grammar.Common, s_Grammar.Common, PutCommon);
        m_strWindow = strBefore;
        if (!control.lCommon)
            for (const TResItem &item : s_Grammar.Common)
                Take(strName + ", which takes no " + item.pszWord, true,
                     Chunk(strName + ", B", strCreate + Item(item.pszWord, {})), true);
        Take(strName + ", whose name is unknown", false, Chunk(strName + ", Wrong", strCreate));
        Take(strName + " without a name", false, Chunk(strName, strCreate));
        Take(strName + " with a string behind its name", true, Chunk(strName + ", B, \"one more\"", strCreate));
        Take(strName + " with a word that is none", true, Chunk(strName + ", B", strCreate + "Wrong = 1\n"), true);
        const std::string strWrong = Chunk("Wrong, A", "");
        Take(strName + " with a chunk that is none", control.lChildren == -1,
             Chunk(strName + ", B", strCreate + strWrong), control.lChildren == -1);
        for (const TResControl &child : s_Grammar.Controls)
            Take(strName + " with a " + child.pszWord + " in it",
                 control.lChildren == -1 || control.lChildren == child.lType,
                 Chunk(strName + ", B", strCreate + Chunk(std::string(child.pszWord) + ", A", Create(child.Items))),
                 control.lChildren == -1);
        for (const TResItem &item : s_Grammar.Sections.pRows[XRES_WINDOW].Items)
            if (item.lRules & XRES_MAKES)
                Take(strName + " with a " + item.pszWord, control.lChildren == -1,
                     Chunk(strName + ", B", strCreate + Item(item.pszWord, RightStrings(item))),
                     control.lChildren == -1);
        for (const TResPart &part : control.Parts)
        {
            const auto PutPart = [&](const std::string &strItems)
            { m_strWindow = strBefore + Chunk(strName + ", B", strCreate + Chunk(part.pszWord, strItems)); };
            InItems(strName + " " + part.pszWord + " ", part.Items, part.Items, PutPart);
            InItems(strName + " " + part.pszWord + " ", s_Grammar.Common, s_Grammar.Common, PutPart);
            m_strWindow = strBefore;
            const TResItem &other = ItemOf(control.Items, part.Condition.lItem);
            TStrings strings = RightStrings(other);
            strings[IndexOf(other, part.Condition.lRole)] = "0";
            const std::string strBad = Item(part.Items.pRows->pszWord, {});
            Take(strName + " with a " + part.pszWord + " that is not read", true,
                 Chunk(strName + ", B", Item(other.pszWord, strings) + Chunk(part.pszWord, strBad)), true);
            Take(strName + " with a second " + part.pszWord, true,
                 Chunk(strName + ", B", strCreate + Chunk(part.pszWord, "") + Chunk(part.pszWord, "")), true);
        }
    }

    std::vector<TGrammarCase> m_Cases;
    std::vector<std::string> m_Items; ///< what is tried, by section
    std::string m_strWindow, m_strBehind;
    bool m_bWarning = false; ///< of the cases that are made now
};
} // namespace

std::vector<TGrammarCase> MakeGrammarCases()
{
    return CCases().Make();
}
