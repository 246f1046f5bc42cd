#include "rescheck.h"

#include "tool.h"

#include "tarvix/resdata.h"
#include "tarvix/strings.h"
#include "tarvix/systemfiles.h"

#include <stdio.h>
#include <string.h>

#include <algorithm>
#include <map>
#include <set>

namespace
{
const int s_nDeepest = 50; // controls in each other

// Line and column of an offset, counted on from one call to the next.
class CPlaces
{
public:
    explicit CPlaces(const std::string &strText) : m_strText(strText) {}

    TKCBLFault At(size_t ulOffset)
    {
        if (ulOffset < m_ulAt)
        {
            m_ulAt = m_ulLine = 0;
            m_lLine = 1;
        }
        for (; m_ulAt < ulOffset; ++m_ulAt)
            if (m_strText[m_ulAt] == '\n' || (m_strText[m_ulAt] == '\r' && m_strText[m_ulAt + 1] != '\n'))
            {
                m_ulLine = m_ulAt + 1;
                ++m_lLine;
            }
        return { "", (xlong)ulOffset, m_lLine, (xlong)(ulOffset - m_ulLine) + 1, 0 };
    }

private:
    const std::string &m_strText;
    size_t m_ulAt = 0, m_ulLine = 0;
    xlong m_lLine = 1;
};

xlong KeepFault(const TKCBLFault *pFault, void *pUser)
{
    ((std::vector<TFault> *)pUser)->push_back({ *pFault, pFault->pszText });
    return 1;
}

std::string Quoted(const std::string &str)
{
    return "\"" + str.substr(0, 60) + (str.size() > 60 ? "...\"" : "\"");
}

struct TField
{
    std::string strText;
    size_t ulOffset;
};

struct TItem
{
    std::string strKeyword; ///< in small letters
    std::string strWritten;
    size_t ulOffset = 0;
    std::vector<TField> strings; ///< without a comment at the end
    std::vector<size_t> items;   ///< of a chunk, by index
    bool bChunk = false;

    bool IsComment() const { return strKeyword.empty() || strchr("; \t", strKeyword[0]); }
    std::string String(size_t ul) const { return ul < strings.size() ? strings[ul].strText : ""; }
    /// What a chunk is.
    std::string Name() const { return Lower(String(0)); }
};

/// The items of a text with their places, as the library reads them.
class CScript : public CKCBL
{
public:
    explicit CScript(const std::string &strText) : m_Items(1)
    {
        Init();
        std::vector<size_t> path = { 0 };
        for (size_t ul = 0; ul < strText.size();)
        {
            const size_t ulStart = ul;
            const TKCBLChunk *const pBefore = m_pCurChunk;
            const xlong lCount = m_pCurChunk->m_lNumNodes;
            const xlong lUsed = AddLine(strText.c_str() + ul);
            if (lUsed < 0)
                return;
            if (m_pCurChunk == pBefore->pParent)
                path.pop_back();
            else if (m_pCurChunk != pBefore || m_pCurChunk->m_lNumNodes != lCount)
            {
                const TKCBLKeyword *const pItem = (const TKCBLKeyword *)pBefore->m_pLast->pData;
                m_Items[path.back()].items.push_back(m_Items.size());
                if (m_pCurChunk != pBefore)
                    path.push_back(m_Items.size());
                m_Items.push_back(MakeItem(pItem, strText, ul, ul + (size_t)lUsed));
            }
            ul += (size_t)lUsed;
            ul += ul < strText.size() && strText[ul] == '\r';
            ul += ul < strText.size() && strText[ul] == '\n';
            if (ul == ulStart)
                return;
        }
    }

    const TItem &Root() const { return m_Items[0]; }
    const TItem &operator[](size_t ul) const { return m_Items[ul]; }

private:
    static TItem MakeItem(const TKCBLKeyword *pItem, const std::string &strText, size_t ulStart, size_t ulEnd)
    {
        TItem item;
        item.strWritten = pItem->pszKeyword;
        item.strKeyword = Lower(item.strWritten);
        item.bChunk = pItem->pChunk != nullptr;
        const std::vector<size_t> places = FieldPlaces(strText, ulStart, ulEnd);
        item.ulOffset = places[0];
        for (xlong l = 0; l < pItem->lNumStrings; ++l)
            item.strings.push_back(
                { pItem->ppszStrings[l], (size_t)l + 1 < places.size() ? places[(size_t)l + 1] : places[0] });
        while (!item.strings.empty() && item.strings.back().strText[0] == ';')
            item.strings.pop_back();
        return item;
    }

    // Where the keyword and the strings begin.
    static std::vector<size_t> FieldPlaces(const std::string &strText, size_t ulStart, size_t ulEnd)
    {
        std::vector<size_t> places;
        bool bWanted = true;
        int nDepth = 0;
        for (size_t ul = ulStart; ul < ulEnd; ++ul)
        {
            const char c = strText[ul];
            if (c == ' ' || c == '\t' || c == '\r' || c == '\n')
                continue;
            if (c == ';' && bWanted && !places.empty())
            {
                // Behind a comma: dropped.
                ul = std::min(strText.find_first_of("\r\n", ul), ulEnd);
                continue;
            }
            if (bWanted || c == ';')
                places.push_back(ul);
            bWanted = false;
            if (c == ';')
                ul = std::min(strText.find_first_of("\r\n", ul), ulEnd);
            else if (c == '"')
            {
                for (++ul; ul < ulEnd && strText[ul] != '"'; ++ul)
                    ul += strText[ul] == '\\';
            }
            else if (c == '{' && places.size() > 1)
                ++nDepth;
            else if (c == '}' && nDepth)
                --nDepth;
            else if ((c == ',' || c == '=') && !nDepth)
                bWanted = true;
        }
        if (places.empty())
            places.push_back(ulStart);
        return places;
    }

    std::vector<TItem> m_Items;
};

// What the strings of an item are, one letter each:
//   t text  n number  i id  f flags  k key  b bitmap  F font  a animation
//   A animation or None  c colour  r ramp of eight shades  p picture file
//   x font file  . not read  ? those behind it may be missing
struct TWord
{
    const char *pszWord;
    const char *pszStrings;
    bool bRepeats = false;
};

const TWord s_Defaults[] = { { "Font", "F" },         { "Caret", "b" },       { "Check", "b" },
                             { "Close", "bbbb" },     { "Drop", "bbbb" },     { "ArrowUp", "bbbb" },
                             { "ArrowDown", "bbbb" }, { "Titlebar", "rrrr" }, { "Frame", "rrrr" },
                             { "Button", "rrrr" },    { "Static", "rrrr" } };

const TWord s_Window[] = {
    { "Create", "tnnnnf" },    { "TitlebarFlags", "f" }, { "TitlebarBitmap", "bbbb" },       { "FrameFlags", "f" },
    { "FrameBitmap", "bbbb" }, { "Colors", "rrrr" },     { "CreateStatic", "itnnnnf", true }
};

const TWord s_Common[] = { { "Bitmap", "bbbb" },
                           { "AnimBitmap", "aff", true },
                           { "AnimLine", "ftnnAnnt?tttt", true },
                           { "TextBufferSize", "n" },
                           { "Font", "F" },
                           { "TextColor", "c" },
                           { "Colors", "rrrr" },
                           { "Alpha", "n" } };

const TWord s_CreateStatic = { "CreateStatic", "itnnnnf", true };
const TWord s_Flags = { "Flags", "f" };
const TWord s_Text = { "Text", "t" };
const TWord s_Row = { "Text", "t", true };
const TWord s_Delay = { "Delay", "n" };

/// What a control takes beside "Create" and the common items.
enum
{
    TAKES_NO_COMMON = 1,
    TAKES_CAPTION = 2,
    TAKES_SLIDER_PARTS = 4,
    TAKES_TEXT = 8, ///< and a delay
    TAKES_ROWS = 16,
    TAKES_CONTROLS = 32,
    TAKES_RADIOS = 64
};

const struct TControl
{
    const char *pszWord;
    const char *pszCreate;
    int nTakes;
} s_Controls[] = {
    { "Static", "tnnnnf", 0 },
    { "Button", "tnnnnkf", 0 },
    { "Progress", "nnnnf", 0 },
    { "Timeout", "nnnnnnnf", 0 },
    { "Slider", "nnnnnnnnf", TAKES_SLIDER_PARTS },
    { "Radio", "tnnnnnkf", TAKES_CAPTION },
    { "Combobox", "nnnnnkf?f", TAKES_ROWS | TAKES_CONTROLS },
    { "Checkbox", "tnnnnnkf", TAKES_CAPTION },
    { "Groupbox", "tnnnnf", TAKES_NO_COMMON | TAKES_RADIOS },
    { "Edit", "tnnnnnf?f", 0 },
    { "MultiEdit", "tnnnnnf?f", 0 },
    { "Scrolltext", "tnnnnnf", TAKES_TEXT },
    { "Listbox", "nnnnn.f", TAKES_ROWS | TAKES_CONTROLS },
    { "URL", "ttnnnnkf", 0 },
};

const char s_szBuiltInColors[][6] = { "black", "white", "grey", "red", "green", "blue" };
const char s_szBuiltInIds[][13] = { "ids_none", "idb_none", "idp_none", "idg_none", "idl_none", "xcntrl_close" };

using TNames = std::map<std::string, size_t>; ///< in small letters, with a count

class CChecker
{
public:
    CChecker(const std::string &strText, const std::vector<std::string> &folders)
        : m_strText(strText), m_Folders(folders), m_Script(strText), m_Places(strText)
    {
    }

    std::vector<TFault> Run()
    {
        Sections();
        for (const char *psz : s_szBuiltInColors)
            m_Colors[psz] = 1;
        Names("defines", "n", m_Ids);
        if (m_Sections.count("defines"))
            for (const char *psz : s_szBuiltInIds)
                m_Ids[psz] = 1;
        TNames unused;
        Names("strings", "nt", unused);
        unused.clear();
        Names("values", "nn", unused);
        unused.clear();
        Names("palette", "p", unused);
        Names("fonts", "x", m_Fonts);
        Bitmaps();
        Animations();
        Colors();
        if (const TItem *pSection = Section("defaults"))
            Items(*pSection, "the defaults", { { s_Defaults, std::end(s_Defaults) } });
        for (const TItem *pWindow : m_Windows)
            Window(*pWindow);
        std::stable_sort(m_Faults.begin(), m_Faults.end(),
                         [](const TFault &a, const TFault &b) { return a.fault.lOffset < b.fault.lOffset; });
        return m_Faults;
    }

private:
    struct TWords
    {
        const TWord *pFirst, *pEnd;
    };
    using TWordLists = std::vector<TWords>;

    void Tell(size_t ulOffset, const std::string &strWhat) { m_Faults.push_back({ m_Places.At(ulOffset), strWhat }); }

    const TItem *Section(const std::string &strName) const
    {
        const auto found = m_Sections.find(strName);
        return found == m_Sections.end() ? nullptr : found->second;
    }

    void Sections()
    {
        static const std::set<std::string> s_Known = { "defines",  "strings", "values",     "palette",
                                                       "fonts",    "bitmaps", "animations", "colors",
                                                       "defaults", "window",  "data" };
        for (size_t ul : m_Script.Root().items)
        {
            const TItem &item = m_Script[ul];
            if (item.IsComment())
                continue;
            const std::string strName = item.Name();
            if (!item.bChunk)
                Tell(item.ulOffset, Quoted(item.strWritten) + " stands outside of all sections");
            else if (!s_Known.count(strName))
                Tell(item.strings.empty() ? item.ulOffset : item.strings[0].ulOffset,
                     "unknown section " + Quoted(item.String(0)));
            else if (strName == "window")
                m_Windows.push_back(&item);
            else if (!m_Sections.insert({ strName, &item }).second)
                Tell(item.ulOffset, "only the first section " + Quoted(item.String(0)) + " is read");
        }
    }

    /// Puts a name into a list. @return false for one that the library refuses
    void Add(TNames &names, const TItem &item, size_t ulCount = 1)
    {
        if (item.strWritten.size() >= RES_NAME_SIZE)
            Tell(item.ulOffset, "a name has at most 31 characters");
        else if (!names.insert({ item.strKeyword, ulCount }).second)
            Tell(item.ulOffset, Quoted(item.strWritten) + " is there already, and the first one counts");
    }

    void Names(const char *pszSection, const char *pszStrings, TNames &names)
    {
        const TItem *const pSection = Section(pszSection);
        for (size_t ul : pSection ? pSection->items : std::vector<size_t>())
            if (const TItem &item = m_Script[ul]; !item.IsComment())
            {
                Add(names, item);
                Strings(item, pszStrings);
            }
    }

    void Size(const TItem &item, size_t ulWidth, bool bWhole)
    {
        if (ulWidth + 1 >= item.strings.size())
            return;
        const long lWidth = atol(item.String(ulWidth).c_str()), lHeight = atol(item.String(ulWidth + 1).c_str());
        if (bWhole && (lWidth == -1 || lHeight == -1))
            return;
        if (lWidth < 1 || lHeight < 1 || (long long)lWidth * lHeight > RES_MAX_PIXELS)
            Tell(item.strings[ulWidth].ulOffset, "this is no size of a picture");
    }

    void Bitmaps()
    {
        const TItem *const pSection = Section("bitmaps");
        for (size_t ul : pSection ? pSection->items : std::vector<size_t>())
        {
            const TItem &item = m_Script[ul];
            if (item.IsComment())
                continue;
            if (!item.bChunk)
            {
                Add(m_Bitmaps, item);
                Strings(item, "pnnnn");
                Size(item, 3, true);
                continue;
            }
            Strings(item, "p");
            for (size_t ulPart : item.items)
                if (const TItem &part = m_Script[ulPart]; !part.IsComment())
                {
                    Add(m_Bitmaps, part);
                    Strings(part, "nnnn");
                    Size(part, 2, true);
                }
        }
    }

    void Animations()
    {
        const TItem *const pSection = Section("animations");
        for (size_t ul : pSection ? pSection->items : std::vector<size_t>())
        {
            const TItem &item = m_Script[ul];
            if (item.IsComment())
                continue;
            Add(m_Anims, item);
            Strings(item, "pnnnnnnnn");
            Size(item, 4, false);
            if (item.strings.size() < 7)
                continue;
            const long lFrames = atol(item.String(6).c_str());
            if (lFrames < 1 || lFrames > RES_MAX_FRAMES)
                Tell(item.strings[6].ulOffset, "an animation has 1 to 65536 frames");
        }
    }

    void Colors()
    {
        const TItem *const pSection = Section("colors");
        for (size_t ul : pSection ? pSection->items : std::vector<size_t>())
        {
            const TItem &item = m_Script[ul];
            if (item.IsComment())
                continue;
            // A comment behind the shades would be taken for one more.
            const size_t ulLineEnd = std::min(m_strText.find_first_of("\r\n", item.ulOffset), m_strText.size());
            for (size_t ulAt = item.strings.empty() ? ulLineEnd : item.strings.back().ulOffset, ulQuotes = 0;
                 ulAt < ulLineEnd; ++ulAt)
            {
                ulQuotes += m_strText[ulAt] == '"';
                if (m_strText[ulAt] != ';' || ulQuotes % 2)
                    continue;
                Tell(ulAt, "a comment behind the shades of a colour is read as a shade");
                break;
            }
            for (const TField &field : item.strings)
                String(field, 'c');
            Add(m_Colors, item, item.strings.size());
        }
    }

    void Strings(const TItem &item, const char *pszStrings)
    {
        size_t ulLeast = 0;
        while (pszStrings[ulLeast] && pszStrings[ulLeast] != '?')
            ++ulLeast;
        if (item.strings.size() < ulLeast)
            Tell(item.ulOffset, Quoted(item.strWritten) + " takes " + std::to_string(ulLeast) + " strings and has " +
                                    std::to_string(item.strings.size()));
        size_t ul = 0;
        for (const char *psz = pszStrings; *psz && ul < item.strings.size(); ++psz)
            if (*psz != '?')
                String(item.strings[ul++], *psz);
    }

    void Known(const TField &field, const TNames &names, const char *pszWhat)
    {
        if (!names.count(Lower(field.strText)))
            Tell(field.ulOffset, std::string("unknown ") + pszWhat + " " + Quoted(field.strText));
    }

    void String(const TField &field, char cKind)
    {
        switch (cKind)
        {
        case 'n':
            if (xlong lValue; !Ask(field.strText) || !m_Words.GetLong(0, &lValue))
                Tell(field.ulOffset, Quoted(field.strText) + " is no number");
            break;
        case 'i':
            Known(field, m_Ids, "id");
            break;
        case 'f':
        case 'k':
            Words(field, cKind == 'k');
            break;
        case 'b':
            Known(field, m_Bitmaps, "bitmap");
            break;
        case 'F':
            Known(field, m_Fonts, "font");
            break;
        case 'A':
            if (Lower(field.strText) == "none")
                break;
            [[fallthrough]];
        case 'a':
            Known(field, m_Anims, "animation");
            break;
        case 'c':
            Color(field);
            break;
        case 'r':
            Known(field, m_Colors, "colour");
            if (const auto found = m_Colors.find(Lower(field.strText)); found != m_Colors.end() && found->second < 8)
                Tell(field.ulOffset, "a control needs a colour of eight shades; " + Quoted(field.strText) + " has " +
                                         std::to_string(found->second));
            break;
        case 'p':
            if (const std::string str = Lower(field.strText);
                str.size() < 4 || (str.compare(str.size() - 4, 4, ".bmp") && str.compare(str.size() - 4, 4, ".jpg")))
                Tell(field.ulOffset, Quoted(field.strText) + " is no name of a picture: they are bmp and jpg files");
            [[fallthrough]];
        case 'x':
            File(field);
        }
    }

    /// Makes a text the string that m_Words reads.
    bool Ask(const std::string &strText)
    {
        m_Words.Free();
        return m_Words.NewItem("Word", KSTRING, strText.c_str(), KEND) != 0;
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
            Known({ field.strText.substr(ulStart), field.ulOffset }, m_Colors, "colour");
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

    // Plain items against lists of words. @return those found, by word
    std::map<std::string, const TItem *> Items(const TItem &chunk, const std::string &strWhere, const TWordLists &lists)
    {
        std::map<std::string, const TItem *> found;
        for (size_t ul : chunk.items)
        {
            const TItem &item = m_Script[ul];
            if (item.IsComment() || item.bChunk)
                continue;
            const TWord *pWord = nullptr;
            for (const TWords &list : lists)
                for (const TWord *p = list.pFirst; p != list.pEnd; ++p)
                    if (!pWord && Lower(p->pszWord) == item.strKeyword)
                        pWord = p;
            if (!pWord)
            {
                Tell(item.ulOffset, "unknown word " + Quoted(item.strWritten) + " in " + strWhere);
                continue;
            }
            Strings(item, pWord->pszStrings);
            if (!found.insert({ item.strKeyword, &item }).second && !pWord->bRepeats)
                Tell(item.ulOffset, "only the first " + Quoted(item.strWritten) + " is read");
        }
        return found;
    }

    void Name(const TItem &chunk)
    {
        if (chunk.strings.size() < 2)
            Tell(chunk.ulOffset, "the name is missing behind " + Quoted(chunk.String(0)));
        else
            Known(chunk.strings[1], m_Ids, "id");
    }

    bool HasFlag(const TItem *pItem, size_t ulString, xlong lFlag)
    {
        xlong lFlags = 0;
        return pItem && Ask(pItem->String(ulString)) && m_Words.GetResFlags(0, &lFlags) && (lFlags & lFlag);
    }

    void Window(const TItem &window)
    {
        Name(window);
        auto found = Items(window, "a window", { { s_Window, std::end(s_Window) } });
        const auto Find = [&](const char *psz) { return found.count(psz) ? found[psz] : nullptr; };
        const TItem *const pCreate = Find("create");
        if (!pCreate)
            Tell(window.ulOffset, "a window needs \"Create\"");
        const struct
        {
            const char *pszFlags, *pszNeeded, *pszDepends, *pszWritten;
            xlong lFlag;
        } parts[] = { { "titlebarflags", "XWIN_TITLEBAR", "titlebarbitmap", "TitlebarFlags", 1 },
                      { "frameflags", "XWIN_FRAME", "framebitmap", "FrameFlags", 2 } };
        for (const auto &part : parts)
        {
            const TItem *const pFlags = Find(part.pszFlags), *const pBitmap = Find(part.pszDepends);
            if (pFlags && pCreate && !HasFlag(pCreate, 5, part.lFlag))
                Tell(pFlags->ulOffset, std::string("this needs ") + part.pszNeeded + " in \"Create\"");
            if (pBitmap && !HasFlag(pFlags, 0, CNTRL_HASBITMAP))
                Tell(pBitmap->ulOffset,
                     std::string("this is read only with CNTRL_HASBITMAP in \"") + part.pszWritten + "\"");
            if (pFlags && !pBitmap && HasFlag(pFlags, 0, CNTRL_HASBITMAP))
                Tell(pFlags->ulOffset, "CNTRL_HASBITMAP needs the bitmaps");
        }
        if (Find("colors") && !Find("frameflags"))
            Tell(Find("colors")->ulOffset, "this is read only with \"FrameFlags\"");
        for (size_t ul : window.items)
            if (m_Script[ul].bChunk)
                Control(m_Script[ul], 0);
    }

    void Control(const TItem &chunk, int nDepth)
    {
        const auto control = std::find_if(std::begin(s_Controls), std::end(s_Controls),
                                          [&](const TControl &c) { return Lower(c.pszWord) == chunk.Name(); });
        if (chunk.strings.empty())
            return Tell(chunk.ulOffset, "a chunk without a word has no effect");
        if (control == std::end(s_Controls))
            return Tell(chunk.strings[0].ulOffset, "unknown control " + Quoted(chunk.String(0)));
        if (nDepth == s_nDeepest)
            return Tell(chunk.ulOffset, "the controls lie too deep in each other");
        Name(chunk);
        const std::string strWhere = std::string("a ") + control->pszWord;
        const TWord create = { "Create", control->pszCreate };
        TWordLists lists = { { &create, &create + 1 } };
        if (!(control->nTakes & TAKES_NO_COMMON))
            lists.push_back({ s_Common, std::end(s_Common) });
        if (control->nTakes & TAKES_TEXT)
        {
            lists.push_back({ &s_Text, &s_Text + 1 });
            lists.push_back({ &s_Delay, &s_Delay + 1 });
        }
        if (control->nTakes & TAKES_ROWS)
            lists.push_back({ &s_Row, &s_Row + 1 });
        if (control->nTakes & TAKES_CONTROLS)
            lists.push_back({ &s_CreateStatic, &s_CreateStatic + 1 });
        const auto found = Items(chunk, strWhere, lists);
        const auto createItem = found.find("create");
        if (createItem == found.end())
            Tell(chunk.ulOffset, strWhere + " needs \"Create\"");
        AnimLines(chunk);
        for (size_t ul : chunk.items)
        {
            const TItem &part = m_Script[ul];
            if (!part.bChunk)
                continue;
            const std::string strName = part.Name();
            if ((control->nTakes & TAKES_CAPTION) && strName == "caption")
            {
                if (createItem != found.end() && atol(createItem->second->String(5).c_str()) == 0)
                    Tell(part.ulOffset, "a caption needs a width of the box, string 5 of \"Create\"");
                Part(part, "a caption");
            }
            else if ((control->nTakes & TAKES_SLIDER_PARTS) &&
                     (strName == "up" || strName == "down" || strName == "drag"))
                Part(part, "a part of a slider");
            else if ((control->nTakes & TAKES_RADIOS) && strName != "radio")
                Tell(part.ulOffset, "a Groupbox takes only Radio");
            else if (control->nTakes & (TAKES_CONTROLS | TAKES_RADIOS))
                Control(part, nDepth + 1);
            else
                Tell(part.ulOffset, "unknown chunk " + Quoted(part.String(0)) + " in " + strWhere);
        }
    }

    void Part(const TItem &chunk, const char *pszWhere)
    {
        Items(chunk, pszWhere, { { s_Common, std::end(s_Common) }, { &s_Flags, &s_Flags + 1 } });
        AnimLines(chunk);
    }

    // The successors of animation lines are lines of the same state.
    void AnimLines(const TItem &chunk)
    {
        std::set<std::string> lines;
        const auto LinesOf = [&](auto use)
        {
            for (size_t ul : chunk.items)
                if (m_Script[ul].strKeyword == "animline")
                    use(m_Script[ul], Lower(m_Script[ul].String(0)) + " ");
        };
        LinesOf([&](const TItem &item, const std::string &strState)
                { lines.insert(strState + Lower(item.String(1))); });
        LinesOf(
            [&](const TItem &item, const std::string &strState)
            {
                for (size_t ul = 7; ul < std::min<size_t>(item.strings.size(), 12); ++ul)
                    if (const std::string strNext = Lower(item.String(ul));
                        strNext != "end" && !lines.count(strState + strNext))
                        Tell(item.strings[ul].ulOffset, "unknown line " + Quoted(item.String(ul)));
            });
    }

    const std::string &m_strText;
    const std::vector<std::string> &m_Folders;
    const CScript m_Script;
    CPlaces m_Places;
    CResData m_Words; ///< knows the flags and keys
    std::map<std::string, const TItem *> m_Sections;
    std::vector<const TItem *> m_Windows;
    TNames m_Ids, m_Fonts, m_Bitmaps, m_Anims, m_Colors; ///< m_Colors: with their shades
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

void PrintFault(const std::string &strText, const std::string &strFile, const TFault &fault)
{
    printf("%s: %s\n", PlaceOf(strFile, fault).c_str(), fault.strText.c_str());
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
