// Checks, formats and reads KCBL scripts.

#include "options.h"
#include "rescheck.h"
#include "tool.h"
#include "wordtables.h"

#include "tarvix/error.h"
#include "tarvix/kcbl.h"

#include <stdlib.h>
#include <string.h>

#include <algorithm>
#include <optional>

#ifdef _WIN32
#include <fcntl.h>
#include <io.h>
#endif

namespace
{
const char s_szUsage[] = R"(kcbl check [OPTIONS] FILE...     lists every fault with its line
    --files DIR                  also looks for the files of resource scripts there
    --strict                     takes warnings for faults
kcbl fmt [OPTIONS] FILE...       writes files anew in the library's own form
    --check                      only names the files that would change
    --width N                    folds quoted strings at N columns
kcbl get FILE PATH               prints strings of one item, one a line
kcbl json FILE                   prints the tree as JSON
kcbl words [FILE]                prints the words of resource scripts as Markdown,
                                 or writes them anew between their marks in a file

The file - is the standard input, which fmt writes to the standard output.
check knows the words of resource scripts, which begin with "; script", and finds
names and files that are not there. Files are looked for from the working
directory and from the script's own. A warning is what programs pass over.
PATH is the item's keyword behind the names of its chunks: Name/Name/Keyword. A
name may give more strings of the chunk's head: Window,main/Create. Keyword[2]
prints string 2, counted from 0, and Keyword[2][1] element 1 of an array there.
fmt keeps comments; those that would get lost move to a line of their own.
Exit status: 0; 1 for a file that can't be read or written, has a fault or would
change, and for an item that is not there; 2 for a wrong command line.
)";

bool ReadInput(const std::string &strPath, std::string &strText)
{
    if (strPath != "-")
        return ReadWhole(strPath, strText);
    char szBuffer[65536];
    strText.clear();
    for (size_t ul; (ul = fread(szBuffer, 1, sizeof(szBuffer), stdin)) != 0;)
        strText.append(szBuffer, ul);
    return !ferror(stdin);
}

int Check(const CTool &tool, const std::vector<std::string> &files, const std::vector<std::string> &folders,
          bool bStrict)
{
    size_t ulFaults = 0, ulBadFiles = 0;
    for (const std::string &strFile : files)
    {
        std::string strText;
        if (!ReadInput(strFile, strText))
            return tool.Fail(strFile, "the file can't be read");
        const std::vector<TFault> faults = CheckScript(strText, strFile, folders);
        for (const TFault &fault : faults)
            PrintFault(strText, strFile, fault);
        const size_t ulHere = bStrict ? faults.size() : CountFaults(faults);
        ulFaults += ulHere;
        ulBadFiles += ulHere != 0;
    }
    if (!ulFaults)
        return EXIT_GOOD;
    return tool.Fail("", std::to_string(ulFaults) + (ulFaults == 1 ? " fault in " : " faults in ") +
                             std::to_string(ulBadFiles) + " of " + std::to_string(files.size()) +
                             (files.size() == 1 ? " file" : " files"));
}

// Bytes that stand for "=" and ";" inside quotes while a file is formatted: the
// writer leaves "=" without quotes, and takes a leading ";" for a comment.
struct TStandIns
{
    char cEqual = 0;
    char cComment = 0;

    bool Choose(const std::string &strText)
    {
        for (int n = 1; n < 0x20 && !cComment; ++n)
            if (n != '\t' && n != '\n' && n != '\r' && strText.find((char)n) == std::string::npos)
                (cEqual ? cComment : cEqual) = (char)n;
        return cComment != 0;
    }

    char Hide(char c) const { return c == '=' ? cEqual : c == ';' ? cComment : c; }

    void Restore(std::string &str) const
    {
        std::replace(str.begin(), str.end(), cEqual, '=');
        std::replace(str.begin(), str.end(), cComment, ';');
    }
};

// The text as the library reads and writes it without a loss: a comment behind
// a comma, which the reader drops, stands on a line of its own before the item,
// and one behind the end of a chunk on one behind it.
class CPrepared
{
public:
    CPrepared(const std::string &strText, const TStandIns &standIns) : m_strIn(strText), m_StandIns(standIns) {}

    std::string Make()
    {
        while (m_ulAt < m_strIn.size())
            Item();
        return m_strOut;
    }

private:
    char Peek() const { return m_ulAt < m_strIn.size() ? m_strIn[m_ulAt] : '\0'; }

    void Copy(size_t ulEnd)
    {
        m_strOut.append(m_strIn, m_ulAt, ulEnd - m_ulAt);
        m_ulAt = ulEnd;
    }

    size_t LineEnd() const { return std::min(m_strIn.find_first_of("\r\n", m_ulAt), m_strIn.size()); }

    void Quotes()
    {
        m_strOut += m_strIn[m_ulAt++];
        for (bool bEscape = false; m_ulAt < m_strIn.size();)
        {
            const char c = m_strIn[m_ulAt++];
            m_strOut += m_StandIns.Hide(c);
            if (c == '"' && !bEscape)
                return;
            bEscape = c == '\\' && !bEscape;
        }
    }

    void Item()
    {
        const size_t ulItem = m_strOut.size();
        std::string strMoved, strBehind;
        const size_t ulStart = std::min(m_strIn.find_first_not_of(" \t", m_ulAt), m_strIn.size());
        const size_t ulIndent = ulStart - m_ulAt;
        const bool bEnd = ulStart < m_strIn.size() && (m_strIn[ulStart] == '}' || m_strIn[ulStart] == ']');
        bool bStrings = false, bOver = false;
        char cLast = 0;
        while (!bOver && m_ulAt < m_strIn.size())
        {
            const char c = Peek();
            switch (c)
            {
            case '"':
                Quotes();
                cLast = c;
                continue;
            case ';':
                if (bEnd)
                {
                    strBehind += m_strIn.substr(m_ulAt, LineEnd() - m_ulAt) + "\n";
                    m_ulAt = LineEnd();
                    continue;
                }
                if (cLast == ',')
                {
                    strMoved += m_strIn.substr(m_ulAt, LineEnd() - m_ulAt) + "\n";
                    m_ulAt = LineEnd();
                    continue;
                }
                cLast = c;
                Copy(LineEnd());
                continue;
            case '\r':
            case '\n':
                if (m_ulNext < m_ulAt)
                    m_ulNext = std::min(m_strIn.find_first_not_of(" \t\r\n", m_ulAt), m_strIn.size());
                bOver = cLast != ',' && (m_ulNext == m_strIn.size() || m_strIn[m_ulNext] != '"');
                m_strOut += m_strIn[m_ulAt++];
                if (c == '\r' && Peek() == '\n')
                    m_strOut += m_strIn[m_ulAt++];
                continue;
            case ',':
            case '=':
                bStrings = true;
            }
            if (c != ' ' && c != '\t')
                cLast = c;
            m_strOut += c;
            ++m_ulAt;
        }
        m_strOut.insert(ulItem, strMoved);
        if (!strBehind.empty() && m_strOut.back() != '\n' && m_strOut.back() != '\r')
            m_strOut += '\n';
        m_strOut += strBehind;
        if (bStrings && ulStart < m_strIn.size() && m_strIn[ulStart] == '[')
            Raw(ulIndent);
    }

    void Raw(size_t ulIndent)
    {
        while (m_ulAt < m_strIn.size())
        {
            size_t ul = m_ulAt;
            while (ul < m_ulAt + ulIndent && ul < m_strIn.size() && (m_strIn[ul] == ' ' || m_strIn[ul] == '\t'))
                ++ul;
            if (ul < m_strIn.size() && m_strIn[ul] == ']')
                return;
            Copy(std::min(LineEnd() + 1, m_strIn.size()));
        }
    }

    const std::string &m_strIn;
    const TStandIns &m_StandIns;
    std::string m_strOut;
    size_t m_ulAt = 0;
    size_t m_ulNext = 0; ///< next character that is no white space
};

// The items of a tree, each as its body; chunks end in an empty one.
std::vector<std::string> ListBodies(CKCBL &kcbl)
{
    std::vector<std::string> bodies;
    kcbl.MainChunk();
    kcbl.FirstItem();
    while (kcbl.ItemExists() || kcbl.m_pCurChunk->pParent)
    {
        if (const TKCBLKeyword *pItem = kcbl.GetCurKeyword())
            bodies.push_back(std::string(pItem->pszKeyword, (size_t)pItem->lSize));
        else
            bodies.push_back("");
        kcbl.NextItem(1);
    }
    return bodies;
}

// @return false with what stands in the way
bool Format(const std::string &strIn, xlong lWidth, std::string &strOut, std::string &strWhy)
{
    CKCBL kcbl;
    const std::vector<TFault> faults = FindFaults(kcbl, strIn);
    for (const TFault &fault : faults)
        if (!fault.fault.lHarmless)
        {
            strWhy =
                std::to_string(fault.fault.lLine) + ":" + std::to_string(fault.fault.lColumn) + ": " + fault.strText;
            return false;
        }
    TStandIns standIns;
    if (!standIns.Choose(strIn))
    {
        strWhy = "it has every control character in it";
        return false;
    }
    strOut.clear();
    if (strIn.empty())
        return true;
    const std::string strPrepared = CPrepared(strIn, standIns).Make();
    CKCBL prepared;
    prepared.SetMaxLineLength(lWidth);
    xlong lSize = 0;
    if (!prepared.Import(strPrepared.c_str(), 0) || !prepared.ExportSize(&lSize))
    {
        strWhy = glb->m_Error.GetError(nullptr);
        return false;
    }
    strOut.resize((size_t)lSize);
    prepared.Export(strOut.data(), lSize, nullptr, 0);
    strOut.back() = '\n';
    standIns.Restore(strOut);

    std::vector<std::string> wanted = ListBodies(prepared);
    CKCBL written;
    written.Import(strOut.c_str(), 0);
    const std::vector<std::string> got = ListBodies(written);
    for (size_t ul = 0; ul < wanted.size(); ++ul)
    {
        standIns.Restore(wanted[ul]);
        if (ul < got.size() && wanted[ul] == got[ul])
            continue;
        strWhy = "the item \"" + std::string(wanted[ul].c_str()) + "\" can't be written so that it reads back the same";
        return false;
    }
    return true;
}

int FormatFiles(const CTool &tool, const std::vector<std::string> &files, bool bCheck, xlong lWidth)
{
    size_t ulChanges = 0;
    for (const std::string &strFile : files)
    {
        std::string strIn, strOut, strWhy;
        if (!ReadInput(strFile, strIn))
            return tool.Fail(strFile, "the file can't be read");
        if (!Format(strIn, lWidth, strOut, strWhy))
            return tool.Fail(strFile, strWhy);
        ulChanges += strIn != strOut;
        if (bCheck && strIn != strOut)
            printf("%s\n", strFile.c_str());
        else if (!bCheck && strFile == "-")
            fwrite(strOut.data(), 1, strOut.size(), stdout);
        else if (!bCheck && strIn != strOut && !WriteWhole(strFile, strOut))
            return tool.Fail(strFile, "the file can't be written");
    }
    if (!bCheck || !ulChanges)
        return EXIT_GOOD;
    return tool.Fail("", std::to_string(ulChanges) + (ulChanges == 1 ? " file" : " files") + " would change");
}

// A string as plain text: an array as its elements.
std::vector<std::string> Elements(const char *psz, std::string *pstrComment = nullptr)
{
    if ((unsigned char)*psz != KCBL_ARRAY_START)
        return { psz };
    std::vector<std::string> elements;
    for (++psz; (unsigned char)*psz != KCBL_ARRAY_END && (unsigned char)*psz != KCBL_BODY_END; psz += strlen(psz) + 1)
        elements.push_back(psz);
    if (pstrComment && (unsigned char)*psz == KCBL_ARRAY_END && psz[1] == ';')
        *pstrComment = psz + 1;
    return elements;
}

// Takes "[12]" from the end. @return false when what stands there is no index
bool TakeIndex(std::string &strPath, std::optional<xlong> &index)
{
    if (strPath.empty() || strPath.back() != ']')
        return true;
    const size_t ulOpen = strPath.rfind('[');
    if (ulOpen == std::string::npos || ulOpen + 2 >= strPath.size() || strPath.size() - ulOpen > 11)
        return false;
    const std::string strDigits = strPath.substr(ulOpen + 1, strPath.size() - ulOpen - 2);
    if (strDigits.find_first_not_of("0123456789") != std::string::npos)
        return false;
    index = (xlong)strtoul(strDigits.c_str(), nullptr, 10);
    strPath.resize(ulOpen);
    return true;
}

std::vector<std::string> Split(const std::string &str, char cSeparator)
{
    std::vector<std::string> parts(1);
    for (char c : str)
    {
        if (c == cSeparator)
            parts.emplace_back();
        else
            parts.back() += c;
    }
    return parts;
}

// Moves the cursor to the item of a path. @return the part that is not there; empty when all is
std::string GoTo(CKCBL &kcbl, const std::string &strPath)
{
    const std::vector<std::string> parts = Split(strPath, '/');
    for (size_t ul = 0; ul + 1 < parts.size(); ++ul)
    {
        std::vector<std::string> names = Split(parts[ul], ',');
        names.resize(std::max<size_t>(names.size(), 3));
        const char *apsz[3];
        for (size_t ulName = 0; ulName < 3; ++ulName)
            apsz[ulName] = names[ulName].empty() ? nullptr : names[ulName].c_str();
        if (!kcbl.FindSubChunk(apsz[0], apsz[1], apsz[2]) || !kcbl.EnterChunk())
            return parts[ul];
    }
    return kcbl.FindItem(parts.back().c_str(), nullptr, nullptr, nullptr) ? "" : parts.back();
}

bool ReadTree(const CTool &tool, const std::string &strFile, CKCBL &kcbl)
{
    std::string strText;
    if (!ReadInput(strFile, strText))
    {
        tool.Fail(strFile, "the file can't be read");
        return false;
    }
    for (const TFault &fault : FindFaults(kcbl, strText))
        if (!fault.fault.lHarmless)
        {
            tool.Fail(PlaceOf(strFile, fault), fault.strText);
            return false;
        }
    return true;
}

int Get(const CTool &tool, const std::string &strFile, const std::string &strArgument)
{
    std::string strPath = strArgument;
    std::optional<xlong> element, index;
    if (!TakeIndex(strPath, element) || !TakeIndex(strPath, index))
        return tool.Usage(strArgument + ": this is no path");
    if (!index)
        std::swap(index, element);
    CKCBL kcbl;
    if (!ReadTree(tool, strFile, kcbl))
        return EXIT_BAD;
    const std::string strMissing = GoTo(kcbl, strPath);
    if (!strMissing.empty())
        return tool.Fail(strFile, "there is no " + strMissing);
    std::vector<std::string> lines;
    for (xlong l = index.value_or(0); l < (index ? *index + 1 : kcbl.GetNumStrings()); ++l)
        if (const char *psz = kcbl.GetString(l))
            for (const std::string &str : Elements(psz))
                lines.push_back(str);
    if (element)
        lines = (size_t)*element < lines.size() ? std::vector<std::string>{ lines[(size_t)*element] }
                                                : std::vector<std::string>();
    if (lines.empty() && index)
        return tool.Fail(strFile, "there is no " + strArgument);
    for (const std::string &str : lines)
        printf("%s\n", str.c_str());
    return EXIT_GOOD;
}

// Bytes from 0x80 are taken for Latin-1.
std::string JsonString(const std::string &str)
{
    std::string strJson = "\"";
    for (char c : str)
    {
        const unsigned char uc = (unsigned char)c;
        char szEscape[8];
        if (c == '"' || c == '\\')
            strJson += { '\\', c };
        else if (uc < 0x20)
        {
            snprintf(szEscape, sizeof(szEscape), "\\u%04x", uc);
            strJson += szEscape;
        }
        else if (uc < 0x80)
            strJson += c;
        else
            strJson += { (char)(0xC0 | uc >> 6), (char)(0x80 | (uc & 0x3F)) };
    }
    return strJson + "\"";
}

std::string JsonList(const std::vector<std::string> &elements)
{
    std::string strJson = "[";
    for (const std::string &str : elements)
        strJson += (strJson.size() == 1 ? "" : ", ") + JsonString(str);
    return strJson + "]";
}

// An item without its end, which comes behind the items of its chunk.
std::string JsonItem(CKCBL &kcbl)
{
    std::string strJson = "{\"keyword\": " + JsonString(kcbl.GetKeyword()), strComment;
    std::string strStrings;
    for (xlong l = 0; l < kcbl.GetNumStrings(); ++l)
    {
        const char *psz = kcbl.GetString(l);
        if (kcbl.GetDataType(l) == 1 && l + 1 == kcbl.GetNumStrings())
            strComment = psz;
        else
            strStrings += (strStrings.empty() ? "" : ", ") +
                          (kcbl.GetDataType(l) == 3 ? JsonList(Elements(psz, &strComment)) : JsonString(psz));
    }
    if (kcbl.GetNumStrings())
        strJson += ", \"strings\": [" + strStrings + "]";
    if (!strComment.empty())
        strJson += ", \"comment\": " + JsonString(strComment);
    return strJson;
}

int Json(const CTool &tool, const std::string &strFile)
{
    CKCBL kcbl;
    if (!ReadTree(tool, strFile, kcbl))
        return EXIT_BAD;
    kcbl.MainChunk();
    kcbl.FirstItem();
    fputs("[", stdout);
    for (bool bFirst = true; kcbl.ItemExists() || kcbl.m_pCurChunk->pParent;)
    {
        if (!kcbl.ItemExists())
        {
            fputs("]}", stdout);
            bFirst = false;
            kcbl.NextItem(1);
            continue;
        }
        printf("%s\n%s", bFirst ? "" : ",", JsonItem(kcbl).c_str());
        bFirst = kcbl.ItemType() == 2;
        fputs(bFirst ? ", \"items\": [" : "}", stdout);
        if (bFirst)
            kcbl.EnterChunk();
        else
            kcbl.NextItem(0);
    }
    fputs("\n]\n", stdout);
    return EXIT_GOOD;
}

int Words(const CTool &tool, const std::string &strFile)
{
    if (strFile.empty())
    {
        fputs(WordTables().c_str(), stdout);
        return EXIT_GOOD;
    }
    std::string strText;
    if (!ReadWhole(strFile, strText))
        return tool.Fail(strFile, "the file can't be read");
    const std::string strBefore = strText, strWhy = ReplaceWordTables(strText);
    if (!strWhy.empty())
        return tool.Fail(strFile, strWhy);
    if (strText != strBefore && !WriteWhole(strFile, strText))
        return tool.Fail(strFile, "the file can't be written");
    return EXIT_GOOD;
}
} // namespace

int main(int argc, char **argv)
{
#ifdef _WIN32
    _setmode(_fileno(stdin), _O_BINARY);
    _setmode(_fileno(stdout), _O_BINARY);
#endif
    const std::vector<std::string> args(argv + 1, argv + argc);
    if (IsHelp(args, s_szUsage))
        return EXIT_GOOD;
    CTool tool("kcbl");
    if (!tool.IsReady())
        return tool.FailWithReport("", "the library could not be started");
    bool bCheck = false, bStrict = false;
    xlong lWidth = 0;
    std::vector<std::string> words, folders;
    COptions options;
    const std::string strCommand = args.empty() ? "" : args[0];
    if (strCommand == "fmt")
    {
        options.Switch("--check", bCheck);
        options.Number("--width", 1, 10000, lWidth);
    }
    if (strCommand == "check")
    {
        options.Texts("--files", "a folder", folders);
        options.Switch("--strict", bStrict);
    }
    if (const std::string strWhy = options.Read(args, words); !strWhy.empty())
        return tool.Usage(strWhy);
    const std::vector<std::string> files(words.begin() + !words.empty(), words.end());
    if (strCommand == "check" && !files.empty())
        return Check(tool, files, folders, bStrict);
    if (strCommand == "fmt" && !files.empty())
        return FormatFiles(tool, files, bCheck, lWidth);
    if (strCommand == "get" && files.size() == 2)
        return Get(tool, files[0], files[1]);
    if (strCommand == "json" && files.size() == 1)
        return Json(tool, files[0]);
    if (strCommand == "words" && files.size() < 2)
        return Words(tool, files.empty() ? "" : files[0]);
    return tool.Usage("this takes check, fmt, get, json or words, and files");
}
