#include "tarvix/xiff.h"

#include "support.h"

namespace
{
using CXiffTest = CFolderTest;

std::string Chunk(const std::string &strName, const std::string &strData, xlong lLen = -1)
{
    const xlong lLength = lLen == -1 ? (xlong)strData.size() : lLen;
    std::string str = strName + '\0';
    str.append((const char *)&lLength, 4);
    return str + strData;
}

TEST_F(CXiffTest, WritesNamedChunksWithTrueLengths)
{
    CXIFF file;
    ASSERT_EQ(1, file.Open("empty", FILE_WRITE));
    file.Close();
    EXPECT_EQ(Chunk("XIFF", ""), ReadFile("empty"));

    ASSERT_EQ(1, file.Open("tree", FILE_WRITE | FILE_LITTLE_ENDIAN));
    EXPECT_EQ(1, file.m_lDepth);
    ASSERT_EQ(1, file.AddChunk("Outer", 0));
    ASSERT_EQ(1, file.AddChunk("", 0));
    file.Write("abc", 3);
    ASSERT_EQ(1, file.EndChunk());
    file.Write("tail", 4);
    ASSERT_EQ(1, file.EndChunk());
    ASSERT_EQ(1, file.AddChunk("Fixed", 5));
    file.Write("12345", 5);
    // Two chunks are open: closing ends both.
    file.Close();
    EXPECT_EQ(Chunk("XIFF", Chunk("Outer", Chunk("", "abc") + "tail") + Chunk("Fixed", "12345")), ReadFile("tree"));
    EXPECT_EQ(1, file.EndChunk());
}

TEST_F(CXiffTest, ReadsWhatItFindsAndWalksOnPastTheLevel)
{
    const std::string strBytes =
        Chunk("XIFF", Chunk("A", Chunk("Inner", "one")) + Chunk("B", "two") + Chunk("A", "three!"));
    WriteFile("f", strBytes);
    CXIFF file;
    ASSERT_EQ(1, file.Open("f", FILE_READ));
    xlong lLen = 0;
    ASSERT_EQ(1, file.FindChunk("B", &lLen, 0));
    EXPECT_EQ(3, lLen);
    ASSERT_EQ(1, file.EnterChunk());
    char szData[8] = {};
    EXPECT_EQ(1, file.Read(szData, 3));
    EXPECT_STREQ("two", szData);
    xulong ulSize = 0;
    EXPECT_EQ(1, file.GetSize(&ulSize));
    EXPECT_EQ(3u, ulSize);

    // Leaving goes to the first chunk of the parent, not to the one behind.
    ASSERT_EQ(1, file.ExitChunk());
    ASSERT_EQ(1, file.FindChunk("A", &lLen, 1));
    EXPECT_EQ((xlong)Chunk("Inner", "one").size(), lLen);
    ASSERT_EQ(1, file.FindChunk("A", &lLen, 1));
    EXPECT_NE(6, lLen) << "a second search finds the same chunk again";
    ASSERT_EQ(1, file.NextChunk());
    ASSERT_EQ(1, file.FindChunk("A", &lLen, 1));
    EXPECT_EQ(6, lLen);

    // From inside the first A the search runs on into its parent's chunks.
    ASSERT_EQ(1, file.FirstChunk());
    ASSERT_EQ(1, file.EnterChunk());
    ASSERT_EQ(1, file.FindChunk("B", &lLen, 0));
    EXPECT_EQ(3, lLen);
    glb->m_Error.Clear();
    EXPECT_EQ(0, file.FindChunk("b", &lLen, 0));
    EXPECT_EQ("", LastError());

    ASSERT_EQ(1, file.ExitChunk());
    ASSERT_EQ(1, file.ExitChunk());
    xulong ulPos = 1;
    EXPECT_EQ(1, file.GetPos(&ulPos, FILE_ABSOLUTE));
    EXPECT_EQ(0u, ulPos);
    EXPECT_EQ(0, file.ExitChunk());
}

TEST_F(CXiffTest, SixteenLevelsAreTheLimit)
{
    const char *const pszDeep = "You are at the max depth for this XIFF file";
    CXIFF file;
    ASSERT_EQ(1, file.Open("deep", FILE_WRITE));
    for (int n = 1; n < XIFF_MAX_DEPTH; ++n)
        ASSERT_EQ(1, file.AddChunk("L", 0));
    EXPECT_EQ(0, file.AddChunk("L", 0));
    EXPECT_EQ(pszDeep, LastError());
    file.Write("x", 1);
    file.Close();
    std::string strModel = "x";
    for (int n = 1; n < XIFF_MAX_DEPTH; ++n)
        strModel = Chunk("L", strModel);
    EXPECT_EQ(Chunk("XIFF", strModel), ReadFile("deep"));

    // One level more than can be entered.
    WriteFile("deeper", Chunk("XIFF", Chunk("L", strModel)));
    ASSERT_EQ(1, file.Open("deeper", FILE_READ));
    for (int n = 1; n < XIFF_MAX_DEPTH; ++n)
        ASSERT_EQ(1, file.EnterChunk());
    EXPECT_EQ(0, file.EnterChunk());
    EXPECT_EQ(pszDeep, LastError());
}

TEST_F(CXiffTest, RefusesWhatIsNoTreeAndEndsOnDamagedLengths)
{
    const struct
    {
        const char *pszName;
        std::string strBytes;
        bool bOpens;
    } cases[] = {
        { "Empty", "", false },
        { "OtherRoot", Chunk("FORM", "data"), false },
        { "CutInTheName", "XIF", false },
        { "CutInTheLength", std::string("XIFF\0\1\0", 7), false },
        { "RootAlone", Chunk("XIFF", ""), true },
        { "LengthPastTheEnd", Chunk("XIFF", Chunk("A", "x", 1000)), true },
        { "LengthThatLeadsBack", Chunk("XIFF", Chunk("A", "", -6)), true },
        { "HugeLength", Chunk("XIFF", Chunk("A", "", 0x7fffffff)), true },
        { "RootLeadsBack", Chunk("FORM", "", -9), false },
    };
    for (const auto &c : cases)
    {
        SCOPED_TRACE(c.pszName);
        WriteFile("f", c.strBytes);
        CXIFF file;
        EXPECT_EQ(c.bOpens, file.Open("f", FILE_READ));
        if (c.bOpens)
            EXPECT_EQ(0, file.FindChunk("B", nullptr, 0));
        else
            EXPECT_EQ("\"f\" isnt a XIFF file", LastError());
        file.Close();
        EXPECT_EQ(nullptr, file.m_pChunkStack);
    }
}

TEST_F(CXiffTest, KeepsTheByteOrderOfItsFlags)
{
    CXIFF file;
    ASSERT_EQ(1, file.Open("big", FILE_WRITE | FILE_BIG_ENDIAN));
    file.WriteLong(0x01020304);
    file.Close();
    EXPECT_EQ(std::string("XIFF\0\0\0\0\4\1\2\3\4", 13), ReadFile("big"));
    ASSERT_EQ(1, file.Open("big", FILE_READ | FILE_BIG_ENDIAN));
    xlong lValue = 0;
    EXPECT_EQ(1, file.ReadLong(&lValue));
    EXPECT_EQ(0x01020304, lValue);
    file.Close();
    // An empty file that is appended to gets its root, another one nothing.
    ASSERT_EQ(1, file.Open("new", FILE_APPEND));
    EXPECT_EQ(1, file.m_lDepth);
    file.Close();
    ASSERT_EQ(1, file.Open("big", FILE_APPEND));
    EXPECT_EQ(0, file.m_lDepth);
}
} // namespace
