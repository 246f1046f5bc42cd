#include "tarvix/strings.h"

#include "core/heap.h"
#include "support.h"

#include <random>

TEST(StringsTest, ComparisonsAreOfUnsignedBytesAndIgnoreAsciiCase)
{
    EXPECT_EQ(1, xStrcmp("\x80", "a"));
    EXPECT_EQ(-1, xStrcmp("a", "b"));
    EXPECT_EQ(0, xStrcmp("", ""));
    EXPECT_EQ(0, xStricmp("Window", "wINDOW"));
    EXPECT_GT(0, xStricmp("a", "aa"));
    EXPECT_NE(0, xStricmp("\xC4", "\xE4")) << "ASCII letters alone";
    EXPECT_EQ(0, xStrnicmp("WINdow", "winner", 3));
    EXPECT_NE(0, xStrnicmp("WINdow", "winner", 4));
    EXPECT_EQ(0, xStrnicmp("a", "b", 0));
    EXPECT_EQ(0, xStrncmp("abc", "abd", 2));
    char szText[] = "MiXed 1\xC4";
    EXPECT_STREQ("MIXED 1\xC4", xStrUpperCase(szText));
    EXPECT_STREQ("mixed 1\xC4", xStrLowerCase(szText));
}

TEST(StringsTest, SetsOfCharacters)
{
    EXPECT_EQ(3u, xStrCntSet("banana", "an") - 2);
    EXPECT_EQ(0u, xStrCntSet(nullptr, "a"));
    char szText[] = "banana";
    EXPECT_STREQ("bnn", xStrRemoveSet(szText, "a"));

    char szQuoted[] = "a\"b\"";
    char szOut[32] = "untouched";
    EXPECT_EQ(szQuoted, xStuffSet(szQuoted, szOut, 8, "\"")) << "4 characters and twice 2 matches and 1 need 9";
    EXPECT_STREQ("untouched", szOut);
    EXPECT_EQ(szOut, xStuffSet(szQuoted, szOut, 9, "\""));
    EXPECT_STREQ("a\"\"b\"\"", szOut);
    EXPECT_EQ(szQuoted, xStuffSet(szQuoted, szOut, 32, "x"));
    EXPECT_EQ(szQuoted, xStuffSet(szQuoted, nullptr, 32, "\""));

    char szLine[64] = "Loop=";
    xStrcatVariableTRUEFALSE(szLine, "a:", 1);
    xStrcatVariableTRUEFALSE(szLine, " b:", 0);
    xStrcatVariableTRUEFALSE(szLine, " c:", -7);
    xStrcatVariableSTRING(szLine, " d:", "text");
    EXPECT_STREQ("Loop=a:TRUE b:FALSE c:-7 d:text", szLine);
}

struct TPathCase
{
    const char *pszPath;
    const char *pszParent0, *pszParent1, *pszPathPart, *pszFirst, *pszName, *pszExtension, *pszNoExtension;
};

const TPathCase s_Paths[] = {
    { "a/b/c", "a/b", "a", "a/b", "c", "c", "", "a/b/c" },
    { "a/b/c/", "a/b", "a/b", "a/b/c", "(null)", "(null)", "", "(null)" },
    { "a\\b\\c", "a\\b", "a", "a\\b", "c", "c", "", "a\\b/c" },
    { "a/b.c.d", "a", "a", "a", "b", "b.c.d", "d", "a/b" },
    { "name", "n", "(null)", "", "name", "name", "", "name" },
    { "x", "(null)", "(null)", "", "x", "x", "", "x" },
    { "/x", "", "(null)", "", "x", "x", "", "x" },
    { "file.", "f", "(null)", "", "file", "file.", "(null)", "file" },
    { "a.b/c", "a.b", "a", "a.b", "c", "c", "", "a.b/c" },
    { "a/c.txt  ", "a", "a", "a", "c", "c.txt", "txt ", "a/c" },
    { ".hidden", ".", "(null)", "", "(null)", ".hidden", "hidden", "(null)" },
    { "", "(null)", "(null)", "", "(null)", "(null)", "", "(null)" },
};

TEST(PathsTest, GiveTheirPieces)
{
    CTestGlobals globals;
    for (const TPathCase &c : s_Paths)
    {
        SCOPED_TRACE(c.pszPath);
        EXPECT_EQ(c.pszParent0, TakeString(String_ParentDir(c.pszPath, 0)));
        EXPECT_EQ(c.pszParent1, TakeString(String_ParentDir(c.pszPath, 1)));
        EXPECT_EQ(c.pszPathPart, TakeString(String_FileNamePath(c.pszPath)));
        EXPECT_EQ(c.pszFirst, TakeString(String_FileNameFirstName(c.pszPath)));
        EXPECT_EQ(c.pszName, TakeString(String_FileName(c.pszPath)));
        EXPECT_EQ(c.pszExtension, TakeString(String_FileNameExtension(c.pszPath)));
        EXPECT_EQ(c.pszNoExtension, TakeString(String_FullNameWithoutExtension(c.pszPath)));
    }
}

TEST(PathsTest, JoiningPutsASlashWhereNoneStands)
{
    CTestGlobals globals;
    EXPECT_EQ("a/b", TakeString(String_SubDir("a", "b")));
    EXPECT_EQ("a/b", TakeString(String_SubDir("a/", "/b")));
    EXPECT_EQ("a\\b", TakeString(String_SubDir("a\\", " b")));
    EXPECT_EQ("/b", TakeString(String_SubDir("", "/b")));
    EXPECT_EQ("f", TakeString(String_MergeDirectoryAndFile("", "f")));
    EXPECT_EQ("a/f", TakeString(String_MergeDirectoryAndFile("a", "f")));
    EXPECT_EQ("a\\f", TakeString(String_MergeDirectoryAndFile("a\\", "f")));
    EXPECT_EQ("a/ f", TakeString(String_MergeDirectoryAndFile("a/ ", "f")));
    // Every length, since the block is as long as the text.
    for (size_t ul = 0; ul < 40; ++ul)
        EXPECT_EQ(std::string(ul, 'd') + (ul ? "/" : "") + "x",
                  TakeString(String_SubDir(std::string(ul, 'd').c_str(), "x")));
}

TEST(PathsTest, FailingAllocationReportsByName)
{
    CTestGlobals globals;
    const struct
    {
        char *(*pfnMake)();
        const char *pszError;
    } cases[] = {
        { [] { return String_ParentDir("a/b", 0); }, "String_ParentDir:Unable to allocate memory for new string" },
        { [] { return String_SubDir("a", "b"); }, "String_SubDir: Unable to allocate memory for new string" },
        { [] { return String_FileNameFirstName("a/b"); },
          "String_FileNameFirstName: Unable to allocate memory for the new string" },
        { [] { return String_FileName("a/b"); }, "String_FileName: Unable to allocate memory for the new string" },
        { [] { return String_FileNameExtension("a.b"); },
          "String_FileNameExtension: Unable to allocate memory for the new string" },
        { [] { return String_MergeDirectoryAndFile("a", "b"); },
          "String_FileNameExtension: Unable to allocate memory for the new string" },
    };
    for (const auto &c : cases)
    {
        HeapFailAt(1);
        EXPECT_EQ("(null)", TakeString(c.pfnMake())) << c.pszError;
        EXPECT_EQ(c.pszError, LastError());
    }
    HeapFailAt(0);
}
