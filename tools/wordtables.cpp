#include "wordtables.h"

#include "tool.h"

#include "tarvix/resgrammar.h"

#include <stdio.h>

#include <algorithm>
#include <utility>
#include <vector>

namespace
{
const char s_szEnd[] = "<!-- end of words -->\n";

std::string Code(const std::string &str)
{
    return "`" + str + "`";
}

std::string Hex(xlong lValue)
{
    char sz[16];
    snprintf(sz, sizeof(sz), "0x%lx", (unsigned long)lValue);
    return sz;
}

std::string Join(const std::vector<std::string> &parts, const char *pszBetween)
{
    std::string str;
    for (const std::string &strPart : parts)
        str += (str.empty() ? "" : pszBetween) + strPart;
    return str;
}

// "bitmaps: released, pressed" for strings of one type; otherwise their names.
std::string Strings(const TResRows<TResField> &fields)
{
    std::vector<std::string> names;
    for (const TResField &field : fields)
    {
        names.push_back(field.pszName);
        if (field.lLeast || field.lMost)
            names.back() += field.lMost == RES_MAX_FRAMES
                                ? " (" + std::to_string(field.lLeast) + " to " + std::to_string(field.lMost) + ")"
                                : " (" + std::to_string(field.lLeast) + " or more)";
        if (field.lRules & XRES_OPTIONAL)
            names.back() += " (may be missing)";
        if (field.lRules & XRES_MANY)
            names.back() += ", ...";
    }
    const std::string strNames = Join(names, ", ");
    if (fields.lRows > 1 && fields.pRows[1].lType == XRES_IS_BITMAP)
        return "bitmaps: " + strNames;
    if (fields.lRows > 1 && fields.pRows[1].lType == XRES_IS_COLORS)
        return "colours of eight shades: " + strNames;
    return strNames;
}

std::string WordOf(const TResRows<TResItem> &items, xlong lItem)
{
    for (const TResItem &item : items)
        if (item.lItem == lItem)
            return Code(item.pszWord);
    return "";
}

std::string Condition(const TResCondition &condition, const TResRows<TResItem> &items)
{
    if (condition.lElse == XRES_UNCONDITIONAL)
        return "";
    std::string strOther = WordOf(items, condition.lItem);
    if (condition.lRole != XRES_AS_OTHER)
        strOther = (condition.pszFlag ? Code(condition.pszFlag) : "a width of the box") + " in " + strOther;
    switch (condition.lElse)
    {
    case XRES_ELSE_FAULT:
        return "needs " + strOther;
    case XRES_ELSE_SKIP:
        return "read only with " + strOther;
    }
    return "needed, and read, only with " + strOther;
}

std::string Rules(const TResItem &item, const TResRows<TResItem> &items)
{
    if (item.lRules & XRES_NEEDED)
        return "needed";
    return item.lRules & XRES_MAKES ? "any number" : Condition(item.Condition, items);
}

std::string ItemTable(const TResRows<TResItem> &items)
{
    std::string str = "| Item | Strings | |\n|---|---|---|\n";
    for (const TResItem &item : items)
        str += "| " + Code(item.pszWord) + " | " + Strings(item.Fields) + " | " + Rules(item, items) + " |\n";
    return str;
}

// Of the heading that a section has on the page.
std::string Anchor(const std::string &strSection)
{
    return "#" + Lower(strSection);
}

std::string Sections()
{
    std::string str = "| Section | Items |\n|---|---|\n";
    for (const TResSection &section : xResGrammar().Sections)
    {
        std::string strItems = "any";
        if (!(section.lRules & XRES_FREE))
            strItems = section.Items.pRows->pszWord ? "[words of its own](" + Anchor(section.pszWord) + ")"
                                                    : Code("NAME = " + Strings(section.Items.pRows->Fields));
        if (section.pChunk)
            strItems += ", or a chunk " + Code("{ = " + Strings(section.pChunk->Fields)) + " with " +
                        Code("NAME = " + Strings(section.pInChunk->Fields));
        str += "| " + Code(section.pszWord) + " | " + strItems + " |\n";
    }
    return str;
}

std::string Names()
{
    std::vector<std::string> names;
    for (const TResData &name : xResGrammar().Names)
        names.push_back(Code(name.pszName) + " = " + std::to_string(name.lValue));
    return "With a section `Defines` there are also " + Join(names, ", ") + ".\n";
}

// Words with their values, three in a row, one below the other.
std::string Values(const std::vector<TResData> &words, std::string (*pfnText)(xlong))
{
    std::string str = "| Word | Value | Word | Value | Word | Value |\n|---|---|---|---|---|---|\n";
    const size_t ulRows = (words.size() + 2) / 3;
    for (size_t ulRow = 0; ulRow < ulRows; ++ulRow)
    {
        for (size_t ul = ulRow; ul < 3 * ulRows; ul += ulRows)
            str +=
                ul < words.size() ? "| " + Code(words[ul].pszName) + " | " + pfnText(words[ul].lValue) + " " : "| | ";
        str += "|\n";
    }
    return str;
}

std::string Flags()
{
    const TResRows<TResData> &flags = xResGrammar().Flags;
    return Values({ flags.begin(), flags.end() }, Hex);
}

std::string Keys()
{
    std::vector<TResData> keys(xResGrammar().Keys.begin(), xResGrammar().Keys.end());
    std::stable_sort(keys.begin(), keys.end(),
                     [](const TResData &a, const TResData &b) { return a.lValue < b.lValue; });
    return Values(keys, [](xlong lValue) { return std::to_string(lValue); });
}

std::string Colors()
{
    std::string str = "| Colour | Red, green, blue |\n|---|---|\n";
    for (const TResBuiltInColor &color : xResGrammar().Colors)
        str += "| " + Code(color.pszName) + " | " + std::to_string(color.Color.ucRed) + ", " +
               std::to_string(color.Color.ucGreen) + ", " + std::to_string(color.Color.ucBlue) + " |\n";
    return str;
}

std::string Controls()
{
    std::string str = "| Word | Strings of `Create` | Takes beside it |\n|---|---|---|\n";
    for (const TResControl &control : xResGrammar().Controls)
    {
        std::vector<std::string> takes;
        for (const TResItem &item : control.Items)
            if (item.lItem != XRES_ITEM_CREATE)
                takes.push_back(Code(std::string(item.pszWord) + " = " + Strings(item.Fields)));
        for (const TResPart &part : control.Parts)
        {
            std::vector<std::string> items;
            for (const TResItem &item : part.Items)
                items.push_back(Code(std::string(item.pszWord) + " = " + Strings(item.Fields)));
            takes.push_back("a chunk " + Code(part.pszWord) + " with " + Join(items, ", ") + " and the items of all, " +
                            Condition(part.Condition, control.Items));
        }
        for (const TResControl &child : xResGrammar().Controls)
            if (child.lType == control.lChildren)
                takes.push_back("chunks " + Code(child.pszWord) + " and no other control");
        takes.push_back(control.lCommon ? "the items of all" : "no items of all");
        str += "| " + Code(control.pszWord) + " | " + Strings(control.Items.pRows->Fields) + " | " + Join(takes, "; ") +
               " |\n";
    }
    return str;
}

std::vector<std::pair<std::string, std::string>> Tables()
{
    const TResGrammar &grammar = xResGrammar();
    return { { "sections", Sections() },
             { "names", Names() },
             { "flags", Flags() },
             { "keys", Keys() },
             { "colours", Colors() },
             { "defaults", ItemTable(grammar.Sections.pRows[XRES_DEFAULTS].Items) },
             { "window", ItemTable(grammar.Sections.pRows[XRES_WINDOW].Items) },
             { "controls", Controls() },
             { "items of all", ItemTable(grammar.Common) } };
}

std::string StartOf(const std::string &strName)
{
    return "<!-- words: " + strName + " -->\n";
}
} // namespace

std::string WordTables()
{
    std::string str;
    for (const auto &[strName, strTable] : Tables())
        str += StartOf(strName) + strTable + s_szEnd;
    return str;
}

std::string ReplaceWordTables(std::string &strText)
{
    for (const auto &[strName, strTable] : Tables())
    {
        const std::string strStart = StartOf(strName);
        const size_t ulStart = strText.find(strStart);
        if (ulStart == std::string::npos)
            return "there is no line " + strStart.substr(0, strStart.size() - 1);
        const size_t ulTable = ulStart + strStart.size(), ulEnd = strText.find(s_szEnd, ulTable);
        if (ulEnd == std::string::npos || ulEnd > strText.find("<!-- words: ", ulTable))
            return "no end follows " + strStart.substr(0, strStart.size() - 1);
        strText.replace(ulTable, ulEnd - ulTable, strTable);
    }
    return "";
}
