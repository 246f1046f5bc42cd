#include "kcbl/kcblsupport.h"

#include <random>

namespace
{
class CKCBLWrite : public CFolderTest
{
protected:
    CTestKCBL m_Kcbl;
};

#if defined(__SANITIZE_ADDRESS__)
const int s_nTrees = 1000;
#else
const int s_nTrees = 10000;
#endif

// Trees as programs make them: whatever a string may hold that the text form
// gives back. That leaves out strings with "=" but no other reason for quotes,
// those with a CR, and those that begin like comments or arrays.
class CTreeMaker
{
public:
    explicit CTreeMaker(unsigned uSeed) : m_Random(uSeed) {}

    void Make(CKCBL &kcbl)
    {
        kcbl.SetFloatPrecision((xlong)Upto(8) - 1);
        int nDepth = 0;
        for (unsigned u = 1 + Upto(12); u; --u)
        {
            const unsigned uKind = Upto(10);
            if (uKind < 2)
            {
                ASSERT_EQ(1, kcbl.NewChunk(KSTRING, Word().c_str(), KSTRING, String().c_str(), KEND));
                ++nDepth;
            }
            else if (uKind == 2 && nDepth)
            {
                ASSERT_EQ(1, kcbl.ExitChunk());
                --nDepth;
            }
            else if (uKind == 3)
                ASSERT_EQ(1, kcbl.NewItem(Upto(2) ? "; a comment, \"any\" { text" : "", KEND));
            else if (uKind == 4)
                ASSERT_EQ(
                    1, kcbl.NewItem("[", KSTRING, Word().c_str(), KSTRING, "ASCIIDATA", KSTRING, Raw().c_str(), KEND));
            else
                MakeItem(kcbl);
        }
        // Export leaves out the last line end, and so an empty line there.
        ASSERT_EQ(1, kcbl.NewItem("end", KEND));
    }

private:
    unsigned Upto(unsigned uEnd) { return m_Random() % uEnd; }

    std::string Word()
    {
        std::string str = "k";
        for (unsigned u = Upto(12); u; --u)
            str += "abcXYZ09_.-|+/[]\\"[Upto(17)];
        return str;
    }

    std::string String()
    {
        std::string str;
        const bool bAny = Upto(3) == 0;
        for (unsigned u = Upto(Upto(4) ? 10 : 80); u; --u)
            str += bAny ? (char)(1 + Upto(255)) : "ab c,{}\t\n\"\\;'Z[]"[Upto(17)];
        for (char &c : str)
            if (c == '\r' || c == '=' || !c)
                c = '_';
        if (!str.empty() && (str[0] == ';' || (unsigned char)str[0] >= 0xFD))
            str[0] = 'x';
        return str;
    }

    std::string Raw()
    {
        std::string str;
        for (unsigned u = 1 + Upto(4); u; --u)
            str += "x" + Word() + (Upto(2) ? " ] \"{; = \t\n" : "\r\n");
        return str;
    }

    void MakeItem(CKCBL &kcbl)
    {
        const std::string strKey = Word(), strA = String(), strB = String();
        int abValues[] = { (int)Upto(2), (int)Upto(2) };
        xlong alValues[] = { (xlong)m_Random(), (xlong)m_Random(), 0 };
        double adValues[] = { (double)(int)m_Random() / 1024, 1e9 };
        const xlong lCount = 1 + (xlong)Upto(2);
        switch (Upto(5))
        {
        case 0:
            ASSERT_EQ(1, kcbl.NewItem(strKey.c_str(), KSTRING, strA.c_str(), KLONG, alValues[0], KSTRING, strB.c_str(),
                                      KEND));
            break;
        case 1:
            ASSERT_EQ(1,
                      kcbl.NewItem(strKey.c_str(), KLONGARRAY, lCount, alValues, KBOOLARRAY, lCount, abValues, KEND));
            break;
        case 2:
            ASSERT_EQ(1, kcbl.NewItem(strKey.c_str(), KFLOAT, xFloatBits((float)adValues[0]), KDOUBLEARRAY, lCount,
                                      adValues, KSTRING, strB.c_str(), KEND));
            break;
        case 3:
            ASSERT_EQ(1, kcbl.NewItem(strKey.c_str(), KSTRING, strA.c_str(), KULONG, (xulong)alValues[1], KSTRING,
                                      "; note", KEND));
            break;
        default:
            ASSERT_EQ(1, kcbl.NewItem(strKey.c_str(), KEND));
        }
    }

    std::mt19937 m_Random;
};
} // namespace

TEST_F(CKCBLWrite, RandomTreesSurviveSaveAndLoad)
{
    for (int n = 0; n < s_nTrees; ++n)
    {
        CTestKCBL made, read;
        ASSERT_NO_FATAL_FAILURE(CTreeMaker((unsigned)n).Make(made)) << n;
        if (n % 3 == 0)
            made.SetMaxLineLength(20 + n % 60);
        const std::string strText = ExportText(made);
        if (n % 16 == 0)
        {
            ASSERT_EQ(1, made.Save("tree.txt"));
            ASSERT_EQ(strText + "\n", ReadFile("tree.txt"));
            ASSERT_EQ(1, read.Load("tree.txt")) << LastError() << "\n" << strText;
        }
        else
            ImportText(read, strText);
        ASSERT_EQ(Dump(made.m_MainChunk), Dump(read.m_MainChunk)) << n << "\n" << strText;
        if (n % 3)
            ASSERT_EQ(strText, ExportText(read)) << n;
    }
}

TEST_F(CKCBLWrite, WritesItsOwnForm)
{
    const struct
    {
        const char *pszText;
        const char *pszWritten;
    } cases[] = {
        { "a=1,2", "a = 1, 2" },
        { "a = \"\", \"b c\", d\\e, \"d\\\\ e\"", "a = \"\", \"b c\", d\\e, \"d\\\\ e\"" },
        { "a = \"x\\n\\t\\\"\x01\"", "a = \"x\\n\\t\\\"\x01\"" },
        { "a = {1,{2}} , {}, {\"b c\"}", "a = { 1, 2}, { \"\"}, { \"b c\"}" },
        { "a = {1} ; note", "a = { 1}\t\t; note" },
        { "a = {1} ; note\n\"more\", b", "a = { 1}, \t\t; notemore\n\tb" },
        { "a = b ; note", "a = b\t\t; note" },
        { "a ; note", "a; note" },
        { "{=n\n{\nb\n}\n\n}\n; c ", "{ = n\n    {\n        b\n    }\n    \n}\n; c " },
        { "{\n  [ = n, ASCIIDATA\n  x\n  ]\n}", "{\n    [ = n, ASCIIDATA\n  x\n]\n}" },
        { "[ = n, ASCIIDATA\nnever ends", "[ = n, ASCIIDATA\nnever ends\n]" },
        { "[ = n, ASCIIDATA\n]", "[ = n, ASCIIDATA\n]" },
        { "[", "[" },
        { "a = b=c", "a = b, c" },
        { "{ = open", "{ = open\n}" },
    };
    for (const auto &c : cases)
    {
        ImportText(m_Kcbl, c.pszText);
        EXPECT_EQ(c.pszWritten, ExportText(m_Kcbl)) << c.pszText;
    }
    // Both stay as they are: "=" needs no quotes, and a CR is no escape of the reader.
    m_Kcbl.Free();
    ASSERT_EQ(1, m_Kcbl.NewItem("k", KSTRING, "a=b", KSTRING, "c\rd", KSTRING, "; e", KSTRING, "f", KEND));
    EXPECT_EQ("k = a=b, \"c\\rd\", \t\t; e\n\tf", ExportText(m_Kcbl));
}

TEST_F(CKCBLWrite, FoldsLongStrings)
{
    std::string strLong;
    for (int n = 0; n < 50; ++n)
        strLong += (char)('a' + n % 26);
    ASSERT_EQ(1, m_Kcbl.NewItem("Key", KSTRING, strLong.c_str(), KSTRING, "xyz", KLONG, (xlong)1, KEND));
    const std::string strTree = Dump(m_Kcbl.m_MainChunk);
    m_Kcbl.SetMaxLineLength(20);
    const std::string strText = ExportText(m_Kcbl);
    EXPECT_EQ("Key = \"abcdefghijkl\"\n"
              "      \"mnopqrstuvwx\"\n"
              "      \"yzabcdefghij\"\n"
              "      \"klmnopqrstuv\"\n"
              "      \"wx\", \"xyz\", \"1\"",
              strText);
    ImportText(m_Kcbl, strText);
    EXPECT_EQ(strTree, Dump(m_Kcbl.m_MainChunk));

    // Too little for the column behind the keyword: as much as a character each.
    m_Kcbl.Free();
    m_Kcbl.SetMaxLineLength(-1);
    EXPECT_EQ(20, m_Kcbl.m_lMaxLineLength);
    m_Kcbl.SetMaxLineLength(1);
    ASSERT_EQ(1, m_Kcbl.NewItem("Key", KSTRING, "abc", KSTRING, "abcd", KEND));
    EXPECT_EQ("Key = abc, \"a\"\n      \"b\"\n      \"c\"\n      \"d\"", ExportText(m_Kcbl));
    m_Kcbl.SetMaxLineLength(0);
    EXPECT_EQ(1000000, m_Kcbl.m_lMaxLineLength);
}

TEST_F(CKCBLWrite, ExportKeepsItsBoundsAndTheCursor)
{
    char szBuffer[64] = "x";
    xlong lLen = 0;
    EXPECT_EQ(1, m_Kcbl.Export(szBuffer, 64, &lLen, 0));
    EXPECT_EQ(1, lLen);
    EXPECT_STREQ("", szBuffer);
    EXPECT_EQ(1, m_Kcbl.Save("none.txt"));
    EXPECT_EQ("", ReadFile("none.txt"));
    ASSERT_EQ(1, m_Kcbl.Init());
    EXPECT_EQ("", ExportText(m_Kcbl)) << "a tree without an item";

    ImportText(m_Kcbl, "{ = a\n    b = 1\n    c = \"d e\"\n}\nf");
    m_Kcbl.EnterChunk();
    m_Kcbl.NextItem(0);
    const std::string strText = ExportText(m_Kcbl);
    EXPECT_EQ(1, m_Kcbl.Save("tree.txt"));
    EXPECT_STREQ("c", m_Kcbl.GetKeyword());
    EXPECT_EQ(1, m_Kcbl.ExitChunk());
    EXPECT_STREQ("a", m_Kcbl.GetString(0));
    EXPECT_EQ(0, m_Kcbl.m_MainChunk.m_lStackDepth);
    EXPECT_EQ(1, m_Kcbl.Export(szBuffer, 64, nullptr, 0));
    for (xlong lSize = 1; lSize <= (xlong)strText.size(); ++lSize)
    {
        memset(szBuffer, '#', sizeof(szBuffer));
        m_Kcbl.MainChunk();
        ASSERT_EQ(0, m_Kcbl.Export(szBuffer, lSize, &lLen, 0)) << lSize;
        ASSERT_EQ(-1, lLen);
        ASSERT_EQ(std::string(64 - (size_t)lSize, '#'), std::string(szBuffer + lSize, 64 - (size_t)lSize));
        EXPECT_EQ(0, m_Kcbl.m_MainChunk.m_lStackDepth);
    }
    EXPECT_EQ(1, m_Kcbl.Export(szBuffer, (xlong)strText.size() + 1, &lLen, 0));
    EXPECT_EQ(1, m_Kcbl.Export(nullptr, 0, &lLen, 1));
    EXPECT_EQ(1, lLen);
}

TEST_F(CKCBLWrite, RefusesRawdataWithoutItsMark)
{
    ASSERT_EQ(1, m_Kcbl.NewItem("a", KEND));
    ASSERT_EQ(1, m_Kcbl.NewItem("[", KSTRING, "name", KSTRING, "text\n", KEND));
    xlong lLen = 0;
    EXPECT_EQ(0, m_Kcbl.ExportSize(&lLen));
    EXPECT_EQ(-1, lLen);
    EXPECT_EQ("Malformed rawdata string", LastError());
    glb->m_Error.Clear();
    EXPECT_EQ(0, m_Kcbl.Save("tree.txt"));
    EXPECT_EQ("Malformed rawdata string", LastError());
    ASSERT_EQ(1, m_Kcbl.ReplaceItem("[", KSTRING, "only one", KEND));
    EXPECT_EQ(0, m_Kcbl.ExportSize(nullptr));
    EXPECT_EQ(0, m_Kcbl.Save("missing/tree.txt"));
    EXPECT_EQ("Unable to open file \"missing/tree.txt\" with write access", LastError());
}

TEST_F(CKCBLWrite, LinesAreMeasuredAndPeekedAt)
{
    ImportText(m_Kcbl, "{ = a\nb\n}");
    xlong lIndent = 0;
    char szLine[32];
    const struct
    {
        const char *pszLine;
        xlong lIndent;
    } lines[] = { { "{ = a\n", 4 }, { "    b\n", 4 }, { "}\n", 0 } };
    for (const auto &l : lines)
    {
        SCOPED_TRACE(l.pszLine);
        xlong lPeek = lIndent;
        const xlong lLen = (xlong)strlen(l.pszLine);
        EXPECT_EQ(lLen, m_Kcbl.GetLine(nullptr, 0, &lPeek, 1, 1));
        EXPECT_EQ(l.lIndent, lPeek);
        lPeek = lIndent;
        EXPECT_EQ(0, m_Kcbl.GetLine(szLine, lLen - 1, &lPeek, 0, 1));
        ASSERT_EQ(lLen, m_Kcbl.GetLine(szLine, lLen, &lIndent, 0, 0));
        EXPECT_EQ(l.pszLine, std::string(szLine, (size_t)lLen));
        EXPECT_EQ(l.lIndent, lIndent);
    }
    EXPECT_EQ(-1, m_Kcbl.GetLine(szLine, 32, &lIndent, 0, 0));
}
