#include "kcbl/kcblsupport.h"

#include <random>

namespace
{
class CKCBLRead : public CFolderTest
{
protected:
    CTestKCBL m_Kcbl;
};

const char s_szExample[] = "; script\n"
                           "Title = \"Hi, you\", 3   ; note\n"
                           "Sizes = { 1, 2}, YES\n"
                           "{ = Panel, main\n"
                           "    Width = 640\n"
                           "}\n"
                           "[ = Notes, ASCIIDATA\n"
                           "some text\n"
                           "]\n";

// One character at a time, as the language is defined: the model of the scan.
struct TModelItem
{
    std::string strFault;
    std::string strBody;
    std::vector<size_t> starts;
    size_t ulUsed = 0;
};

TModelItem ModelScan(const std::string &strText)
{
    TModelItem item;
    const char *const pText = strText.c_str();
    size_t at = strspn(pText, " \t"), ulIndent = at;
    std::string &out = item.strBody;
    bool bQuotes = false, bComment = false, bDrop = false, bLineEnd = false, bEscape = false, bOver = false;
    int nDepth = 0;
    char cLast = 0;
    const auto fail = [&](const char *psz)
    {
        item.strFault = psz;
        return item;
    };
    const auto closeArray = [&]
    {
        out.pop_back();
        if (--nDepth == 0)
            out += std::string("\0\xFE", 2);
    };
    for (; !bOver && at < strText.size(); ++at)
    {
        const char c = pText[at];
        const unsigned char uc = (unsigned char)c;
        const bool bSpace = c == ' ' || c == '\t' || c == '\r' || c == '\n';
        if (!bQuotes && !bComment && !bSpace && (uc < 0x20 || uc >= 0x7F))
            return fail("Binary/corrupt data detected while trying to add it to a kbcl list");
        if ((c == '\r' || c == '\n') && !bLineEnd)
        {
            bLineEnd = true;
            item.ulUsed = at;
        }
        if (bQuotes && bLineEnd)
            return fail("Missing terminating \" in string");
        if (!bQuotes && bSpace && (!bComment || bLineEnd))
            continue;
        if (bLineEnd)
        {
            if (c != '"' && cLast != ',')
            {
                bOver = true;
                break;
            }
            bLineEnd = bComment = bDrop = false;
            if (uc < 0x20 || uc >= 0x7F)
                return fail("Binary/corrupt data detected while trying to add it to a kbcl list");
        }
        if (bComment)
        {
            if (!bDrop)
                out += c;
            continue;
        }
        if (bQuotes)
        {
            if (bEscape)
            {
                out.back() = c == 'n' ? '\n' : c == 't' ? '\t' : c;
                bEscape = false;
            }
            else if (c == '"')
                bQuotes = false;
            else
            {
                out += c;
                bEscape = c == '\\';
            }
            continue;
        }
        const bool bBehindArray = cLast == '}';
        switch (c)
        {
        case '"':
            bQuotes = true;
            break;
        case ',':
        case '=':
        case '}':
        {
            bool bNewString = c != '}' && nDepth < 1;
            if (bBehindArray)
            {
                if (nDepth < 1)
                    return fail("Trying to end array without starting one");
                closeArray();
                if (!nDepth)
                    item.starts.push_back(out.size());
            }
            if (c == '}')
                out += c;
            else if (!bBehindArray || nDepth)
                out += '\0';
            if (bNewString)
                item.starts.push_back(out.size());
            break;
        }
        case '{':
            if (item.starts.empty())
                out += c;
            else if (nDepth++ == 0)
                out += '\xFD';
            break;
        case ';':
            bComment = true;
            if (cLast == ',')
            {
                bDrop = true;
                continue;
            }
            if (!item.starts.empty())
            {
                const bool bArray = bBehindArray && nDepth > 0;
                if (bArray)
                    closeArray();
                if (!bArray || nDepth)
                {
                    out += '\0';
                    item.starts.push_back(out.size());
                }
            }
            out += c;
            break;
        default:
            out += c;
        }
        cLast = c;
    }
    if (!bLineEnd)
        item.ulUsed = strText.size();
    if (nDepth > 0 && cLast == '}')
        out.pop_back();
    if (out[0] == '[' && !item.starts.empty())
    {
        if (out.compare(item.starts.back(), 9, "ASCIIDATA"))
            return fail("Malformed rawdata string");
        out += '\0';
        item.starts.push_back(out.size());
        at = item.ulUsed;
        if (pText[at] == '\r' && pText[at + 1] == '\n')
            ++at;
        if (at < strText.size())
            ++at;
        const auto isEnd = [&]
        {
            size_t ul = at;
            while (ul < at + ulIndent && (pText[ul] == ' ' || pText[ul] == '\t'))
                ++ul;
            return pText[ul] == ']';
        };
        for (bool bStart = true; at < strText.size() && !(bStart && isEnd()); ++at)
        {
            const unsigned char uc = (unsigned char)pText[at];
            bStart = uc == '\r' || uc == '\n';
            if (!bStart && uc != '\t' && (uc < 0x20 || uc >= 0x7F))
                return fail("Binary data detected in a rawdata ascii chunk");
            out += pText[at];
        }
        item.ulUsed = at;
    }
    out += std::string("\0\xFF", 2);
    return item;
}
} // namespace

// Texts and the tree they are: items as "keyword|string|string", chunks in braces.
TEST_F(CKCBLRead, ReadsEveryForm)
{
    const struct
    {
        const char *pszText;
        const char *pszTree;
    } cases[] = {
        { "", "|" },
        { "a\n\n \n", "a||" },
        { "a\n\nb", "a||b" },
        { "Long Name = 4 5,\tx", "LongName:45:x" },
        { "Key, a = b", "Key:a:b" },
        { "Key =", "Key:" },
        { "Key = a,\n  b", "Key:a:b" },
        { "Key = a, ; dropped, too\n\n b ; kept", "Key:a:b:; kept" },
        { "Key ; note = 1", "Key; note = 1" },
        { "{ ; note\nx", "{; note|x" },
        { "Key = ; note", "Key::; note" },
        { "Key = \"a\\\"\\\\\\n\\t\\r\\q = ;\"x", "Key:a\"\\\n\trq = ;x" },
        { "Key = \"ab\"\n   \"cd\"\nz", "Key:abcd|z" },
        { "\"a = b\" = 1", "a = b:1" },
        { "Key = \"cut off", "Key:cut off" },
        { "; a\r\nb\rc\n\rd", "; a|b|c||d" },
        { "Key = {1, 2}, x", "Key:[1,2]:x" },
        { "Key = {{1, 2}, {3}}", "Key:[1,2,3]" },
        { "Key = {\"}\", 2} ; n\nb", "Key:[},2]; n|b" },
        { "Key = {}", "Key:[]" },
        { "Key = {1, 2};\nb", "Key:[1,2];|b" },
        { "Key = {{1}; n\nb", "Key:[1,; n]:; n|b" },
        { "Key = {1}}", "Key:[1]:}" },
        { "Key = 1}", "Key:1}" },
        { "Key = {1, ; one\n 2}", "Key:[1,2]" },
        { "{ = a\nb\n} rest { of it\nc", "{:a(b)|c" },
        { "{\n{\n}\n}\n]\nx", "{({())|x" },
        { "{ = a\nb", "{:a(b)" },
        { "  [ = n, ASCIIDATA2\n one\n  ] \nz", "[:n:ASCIIDATA2: one\n|z" },
        { "[ = n, ASCIIDATA\n  ]\n]\nz", "[:n:ASCIIDATA:  ]\n|z" },
        { "[ = n, ASCIIDATA\n]\nz", "[:n:ASCIIDATA:|z" },
        { "[ = n, ASCIIDATA\r\na\r\nb", "[:n:ASCIIDATA:a\r\nb" },
        { "[ = ASCIIDATA\n\"x\"\ny\n]", "[:ASCIIDATAx:y\n" },
        { "[", "[" },
    };
    for (const auto &c : cases)
    {
        ImportText(m_Kcbl, c.pszText);
        std::string strTree;
        const auto list = [&](const auto &self, const TKCBLChunk &chunk) -> void
        {
            for (CNode *pNode = chunk.m_pFirst->pNext; pNode; pNode = pNode->pNext)
            {
                const TKCBLKeyword *pItem = (TKCBLKeyword *)pNode->pData;
                strTree += pItem->pszKeyword;
                for (xlong l = 0; l < pItem->lNumStrings; ++l)
                {
                    const char *psz = pItem->ppszStrings[l];
                    strTree += ":";
                    if (*psz != '\xFD')
                    {
                        strTree += psz;
                        continue;
                    }
                    strTree += "[";
                    const char *pAt = psz + 1;
                    for (; *pAt != '\xFE' && *pAt != '\xFF'; pAt += strlen(pAt) + 1)
                        strTree += std::string(pAt == psz + 1 ? "" : ",") + pAt;
                    strTree += "]";
                    if (l + 1 == pItem->lNumStrings && pAt[0] == '\xFE')
                        strTree += pAt + 1; // a comment without a pointer
                }
                if (pItem->pChunk)
                {
                    strTree += "(";
                    self(self, *pItem->pChunk);
                    strTree += ")";
                }
                if (pNode->pNext)
                    strTree += "|";
            }
        };
        list(list, m_Kcbl.m_MainChunk);
        EXPECT_EQ(std::string(c.pszTree) == "|" ? "" : c.pszTree, strTree) << c.pszText;
    }
    ImportText(m_Kcbl, "");
    EXPECT_EQ(1, m_Kcbl.IsComment()) << "an empty text is one empty item";
}

struct TBadText
{
    const char *pszText;
    const char *pszFault;
    int nLine;
    int nColumn;
    int nItems; ///< left in the tree
};

TEST_F(CKCBLRead, ReportsEveryFaultWithItsTextAndPlace)
{
    const char *const pszBinary = "Binary/corrupt data detected while trying to add it to a kbcl list";
    const char *const pszQuotes = "Missing terminating \" in string";
    const char *const pszArray = "Trying to end array without starting one";
    const char *const pszRawHead = "Malformed rawdata string";
    const char *const pszRawBinary = "Binary data detected in a rawdata ascii chunk";
    const char *const pszRoot = "Trying to end chunk without starting one";
    const TBadText cases[] = {
        { "a\nb = \x01\n", pszBinary, 2, 5, 1 },
        { "a\nb = \x7F", pszBinary, 2, 5, 1 },
        { "\xEF\xBB\xBF"
          "b",
          pszBinary, 1, 1, 0 },
        { "a\n\n  \xC3\xA4", pszBinary, 3, 3, 0 }, // seen while the item before was read
        { "; \xC3\xA4\n\xC3\xA4", pszBinary, 2, 1, 1 },
        { "a\n  b = x, \"ab\nc", pszQuotes, 2, 10, 1 },
        { "a = \"b\\\nc", pszQuotes, 1, 5, 0 },
        { "a = \"b\"\n\"c\r\nd", pszQuotes, 2, 1, 0 },
        { "a = 1}, 2", pszArray, 1, 7, 0 },
        { "a = {1}}, 2", pszArray, 1, 9, 0 },
        { "a = {1}}}", pszArray, 1, 9, 0 },
        { "{\n}}\n", pszArray, 2, 2, 1 },
        { "a\r\n[ = n\nx\n]", pszRawHead, 2, 1, 1 },
        { "[ = n, ASCIIDAT\n]", pszRawHead, 1, 1, 0 },
        { "[ = n, ASCIIDATA ; note\n]", pszRawHead, 1, 1, 0 },
        { "[ = n, ASCIIDATA\nab\nx\x80\n]", pszRawBinary, 3, 2, 0 },
        { "a\n}\nb", pszRoot, 2, 1, 1 },
        { "{\n}\n  }", pszRoot, 3, 3, 1 },
    };
    for (const TBadText &c : cases)
    {
        SCOPED_TRACE(c.pszText);
        glb->m_Error.Clear();
        EXPECT_EQ(0, m_Kcbl.Import(c.pszText, 0));
        EXPECT_EQ(c.pszFault, LastError());
        EXPECT_EQ(c.nItems + 1, m_Kcbl.m_MainChunk.GetNumNodes());

        TKCBLFault fault = {};
        const auto keep = [](const TKCBLFault *pFault, void *pUser) -> xlong
        {
            *(TKCBLFault *)pUser = *pFault;
            return 0;
        };
        EXPECT_EQ(0, m_Kcbl.ImportFaults(c.pszText, keep, &fault));
        EXPECT_STREQ(c.pszFault, fault.pszText);
        EXPECT_EQ(c.nLine, fault.lLine);
        EXPECT_EQ(c.nColumn, fault.lColumn);
    }
}

TEST_F(CKCBLRead, GoesOnBehindFaultsWhenLet)
{
    std::string strSeen;
    const auto list = [](const TKCBLFault *pFault, void *pUser) -> xlong
    {
        *(std::string *)pUser +=
            std::to_string(pFault->lLine) + ":" + std::to_string(pFault->lColumn) + (pFault->lHarmless ? "? " : " ");
        return 1;
    };
    EXPECT_EQ(0,
              m_Kcbl.ImportFaults("{ = A, \"x\n  a = 1}, 2\r\n  b = 1\n}\nc\n}\n{ = B\n{ = C\nd = \"", list, &strSeen));
    EXPECT_EQ("1:8 2:9 6:1 7:1? 8:1? ", strSeen);
    EXPECT_EQ(1, m_Kcbl.FindItem("c", nullptr, nullptr, nullptr)) << "the chunk with a fault in its head was closed";
    strSeen.clear();
    EXPECT_EQ(1, m_Kcbl.ImportFaults("{ = A\na", list, &strSeen));
    EXPECT_EQ("1:1? ", strSeen);
}

TEST_F(CKCBLRead, AgreesWithTheModelOnRandomTexts)
{
    std::mt19937 random(34);
    const char *const apszPieces[] = { "a",    "Key",  " = ",       ", ",        "{",         "}",
                                       ";",    "\"",   "\n",        "\r\n",      "\\",        "\t",
                                       "  ",   "[",    "]",         "\"x y\"",   "ASCIIDATA", "a longer word than that",
                                       "\x7F", "\xFE", " = {1, 2}", "\n{ = n\n", "\n}\n",     "\n[ = q, ASCIIDATA\n",
                                       "\n]\n" };
    int nGood = 0;
    for (int n = 0; n < 60000; ++n)
    {
        std::string strText;
        for (unsigned u = 1 + random() % 24; u; --u)
            strText += apszPieces[random() % (random() % 4 ? std::size(apszPieces) - 7 : std::size(apszPieces))];
        const TModelItem model = ModelScan(strText);
        TReorderStrData data = {};
        data.pszSource = strText.c_str();
        glb->m_Error.Clear();
        const xlong lResult = m_Kcbl.ReorderString(nullptr, &data);
        ASSERT_EQ(model.strFault, LastError()) << strText;
        ASSERT_EQ(model.strFault.empty(), lResult == 1) << strText;
        if (!lResult)
            continue;
        ++nGood;
        ASSERT_EQ((xlong)model.strBody.size(), data.lDestSize) << strText;
        ASSERT_EQ((xlong)model.starts.size(), data.lNumStrings) << strText;
        ASSERT_EQ((xlong)model.ulUsed, data.lSourceUsed) << strText;

        std::vector<char> block(sizeof(TKCBLKeyword) + model.starts.size() * sizeof(char *) + model.strBody.size());
        TKCBLKeyword *pItem = (TKCBLKeyword *)block.data();
        data.pDest = block.data() + block.size() - model.strBody.size();
        ASSERT_EQ(1, m_Kcbl.ReorderString(pItem, &data));
        ASSERT_EQ(model.strBody, std::string(pItem->pszKeyword, (size_t)pItem->lSize)) << strText;
        for (size_t ul = 0; ul < model.starts.size(); ++ul)
            ASSERT_EQ((ptrdiff_t)model.starts[ul], pItem->ppszStrings[ul] - pItem->pszKeyword) << strText;

        // The same by the way that looks at sixteen characters at once.
        if (strText[strspn(strText.c_str(), " \t")] == '}' || strText[strspn(strText.c_str(), " \t")] == ']')
            continue;
        m_Kcbl.Import(strText.c_str(), 0);
        ASSERT_LT(1, m_Kcbl.m_MainChunk.GetNumNodes()) << strText;
        pItem = (TKCBLKeyword *)m_Kcbl.m_MainChunk.m_pFirst->pNext->pData;
        ASSERT_EQ(model.strBody, std::string(pItem->pszKeyword, (size_t)pItem->lSize)) << strText;
    }
    EXPECT_LT(10000, nGood);
}

TEST_F(CKCBLRead, LongTextsAndDeepNestingAreLinear)
{
    // Quadratic work on any of these would not end.
    const size_t ulMany = 100000;
    std::string strDeep;
    for (size_t ul = 0; ul < ulMany; ++ul)
        strDeep += "{\n";
    const std::string texts[] = { strDeep, std::string(1000000, '\n'), "a = " + std::string(1000000, ','),
                                  "a = " + std::string(1000000, '{') + std::string(1000000, '}'),
                                  std::string(2000000, ' ') + "a = \"" + std::string(2000000, '\\') + "\"" };
    for (const std::string &strText : texts)
    {
        ImportText(m_Kcbl, strText);
        xlong lSize = 0;
        EXPECT_EQ(1, m_Kcbl.ExportSize(&lSize));
        EXPECT_LT(0, lSize);
    }
    ImportText(m_Kcbl, strDeep);
    EXPECT_EQ(1, m_Kcbl.KillItem());
    EXPECT_EQ(0, m_Kcbl.FirstItem());
    ImportText(m_Kcbl, strDeep);
    m_Kcbl.Free();
    EXPECT_EQ(0, m_Kcbl.m_MainChunk.GetNumNodes());
}

TEST_F(CKCBLRead, ExhaustionLeavesNothingBehind)
{
    WriteFile("example.txt", s_szExample);
    ASSERT_EQ(1, m_Kcbl.Load("example.txt")); // the pool of list nodes is made
    m_Kcbl.Free();
    FailEachAllocation(
        []
        {
            CKCBL kcbl;
            glb->m_Error.Clear();
            const bool bWorked = kcbl.Load("example.txt") == 1;
            EXPECT_EQ(HeapFailed(), !bWorked);
            EXPECT_EQ(bWorked ? XERR_NONE : XERR_MEMORY, glb->m_Error.GetErrCode());
            // What was built so far can be walked and freed.
            for (kcbl.MainChunk(), kcbl.FirstItem(); kcbl.ItemExists(); kcbl.NextItem(0))
                EXPECT_NE(nullptr, kcbl.GetKeyword());
            return bWorked;
        });
}

TEST_F(CKCBLRead, LoadReportsWhatTheFileLacks)
{
    EXPECT_EQ(0, m_Kcbl.Load("missing.txt"));
    EXPECT_EQ("Unable to open file \"missing.txt\" with read access", LastError());
    WriteFile("empty.txt", "");
    EXPECT_EQ(1, m_Kcbl.Load("empty.txt"));
    WriteFile("zero.txt", std::string("a\nb\0c", 5));
    EXPECT_EQ(1, m_Kcbl.Load("zero.txt"));
    EXPECT_EQ(3, m_Kcbl.m_MainChunk.GetNumNodes());
}
