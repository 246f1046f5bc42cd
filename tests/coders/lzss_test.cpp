#include "tarvix/lzss.h"

#include "coders/plainlzss.h"
#include "support.h"
#include "tarvix/bitfile.h"

#include <random>

namespace
{
std::string TakeBlock(char *pBlock, xulong ulLen)
{
    std::string str(pBlock ? pBlock : "", pBlock ? ulLen : 0);
    xFreeMemFunc(pBlock, nullptr, 0);
    return str;
}

std::string Packed(CLzss &lzss, const std::string &strSource)
{
    xulong ulLen = (xulong)strSource.size();
    char *pBlock = lzss.CompressBuffer(strSource.data(), &ulLen);
    return TakeBlock(pBlock, ulLen);
}

struct TSource
{
    const char *pszName;
    std::string strBytes;
};

std::vector<TSource> Sources()
{
    std::mt19937 random(5);
    std::vector<TSource> sources = {
        { "OneByte", "x" },
        { "Sixteen", "0123456789abcdef" },
        { "Seventeen", "0123456789abcdefg" },
        { "RepeatsInTheFirstBytes", "aabaabaabaab" },
        { "Zeros", std::string(40, '\0') }, // as the window itself
        { "LongRun", std::string(5000, 'r') },
        { "ExactWindow", std::string() },
        { "Text", std::string() },
        { "TwoSymbols", std::string() },
        { "Random", std::string() },
        { "Sparse", std::string() },
        { "Rounds", std::string() },
    };
    const auto Fill = [&](const char *pszName, size_t ulSize, auto pfnByte)
    {
        for (TSource &source : sources)
            if (!strcmp(source.pszName, pszName))
                for (size_t ul = 0; ul < ulSize; ++ul)
                    source.strBytes += (char)pfnByte(ul);
    };
    static const char *const s_pszWords[] = { "Window", "Button", " = ", "{\r\n", "}\r\n", "\t", "100, ", "\"OK\"" };
    std::string strText;
    while (strText.size() < 40000)
        strText += s_pszWords[random() % 8];
    Fill("ExactWindow", 4096, [&](size_t) { return random() % 7; });
    Fill("Text", strText.size(), [&](size_t ul) { return strText[ul]; });
    Fill("TwoSymbols", 30000, [&](size_t) { return random() % 2; });
    Fill("Random", 70000, [&](size_t) { return random(); });
    Fill("Sparse", 50000, [&](size_t) { return random() % 40 ? 0 : random(); });
    Fill("Rounds", 90000, [&](size_t ul) { return ul % 4096 < 2000 ? ul % 251 : random() % 3; });
    return sources;
}

class CLzssTest : public CFolderTest
{
protected:
    CLzss m_Lzss;
};

TEST_F(CLzssTest, ChoosesAsThePlainTreeDoesInEveryForm)
{
    CPlainLzss model;
    for (const TSource &source : Sources())
    {
        SCOPED_TRACE(source.pszName);
        const std::string strModel = model.Compress(source.strBytes);
        const std::string strStream = Packed(m_Lzss, source.strBytes);
        ASSERT_TRUE(strModel == strStream) << strModel.size() << " and " << strStream.size() << " bytes";
        std::string strBack;
        ASSERT_TRUE(model.Expand(strStream, strBack));
        ASSERT_TRUE(source.strBytes == strBack);

        WriteFile("source", source.strBytes);
        ASSERT_EQ(1, m_Lzss.Compress("source", "sub/stream"));
        EXPECT_TRUE(strStream == ReadFile("sub/stream"));
        ASSERT_EQ(1, m_Lzss.Expand("sub/stream", "back"));
        EXPECT_TRUE(source.strBytes == ReadFile("back"));

        for (int nWithLength = 0; nWithLength < 2; ++nWithLength)
        {
            const auto Expand = [&](char *pDest, xulong *pulLen)
            {
                return nWithLength ? m_Lzss.ExpandBuffer(strStream.data(), pDest, pulLen, (xulong)strStream.size())
                                   : m_Lzss.ExpandBuffer(strStream.data(), pDest, pulLen);
            };
            xulong ulLen = 0;
            EXPECT_EQ(0, Expand(nullptr, &ulLen));
            ASSERT_EQ(source.strBytes.size(), ulLen);
            // Guard bytes behind a block that fits, and behind one that is short.
            for (const size_t ulRoom : { source.strBytes.size(), source.strBytes.size() / 2 + 1 })
            {
                std::string strRoom(ulRoom + 40, '#');
                ulLen = (xulong)ulRoom;
                EXPECT_EQ(ulRoom >= source.strBytes.size(), Expand(strRoom.data(), &ulLen));
                EXPECT_EQ(source.strBytes.size(), ulLen);
                EXPECT_TRUE(source.strBytes.substr(0, ulRoom) + std::string(40, '#') == strRoom);
            }
        }
    }
}

TEST_F(CLzssTest, StreamsEndAsTheyShould)
{
    xulong ulLen = 0;
    EXPECT_EQ(nullptr, m_Lzss.CompressBuffer("", &ulLen));
    // A literal, 294 matches of 17, the one byte that is left, the end.
    EXPECT_EQ((9u + 294 * 17 + 9 + 13 + 7) / 8, Packed(m_Lzss, std::string(5000, 'r')).size());
    // Three literals and the end fill five bytes exactly.
    EXPECT_EQ(5u, Packed(m_Lzss, "abc").size());
    // One pass: counted only, and into a block that is too small.
    ulLen = 3;
    EXPECT_EQ(nullptr, m_Lzss.CompressBuf("abc", &ulLen, 0));
    EXPECT_EQ(5u, ulLen);
    ulLen = 3;
    char *pBlock = m_Lzss.CompressBuf("abc", &ulLen, 2);
    EXPECT_EQ(5u, ulLen);
    EXPECT_EQ(Packed(m_Lzss, "abc").substr(0, 2), TakeBlock(pBlock, 2));
    EXPECT_EQ(0, m_Lzss.Compress("missing", "to"));
    EXPECT_EQ(0, m_Lzss.Expand("missing", "to"));
}

TEST_F(CLzssTest, DamagedStreamsEndAsInTheModel)
{
    std::mt19937 random(8);
    const std::string strGood = Packed(m_Lzss, Sources()[7].strBytes.substr(0, 3000));
    CPlainLzss model;
    for (int nCase = 0; nCase < 400; ++nCase)
    {
        SCOPED_TRACE(nCase);
        std::string strBad = strGood.substr(0, nCase < 200 ? random() % strGood.size() : strGood.size());
        for (size_t ul = 0; ul < strBad.size() && nCase % 2; ul += 1 + random() % 200)
            strBad[ul] = (char)random();
        std::string strModel;
        const bool bEnds = model.Expand(strBad, strModel);
        const std::unique_ptr<char[]> pExact(new char[strBad.size()]);
        std::copy(strBad.begin(), strBad.end(), pExact.get());
        // Room to spare may be used for work, what is behind it not.
        std::string strRoom(strModel.size() + 2, '#');
        xulong ulLen = (xulong)strModel.size() + 1;
        EXPECT_EQ(bEnds, m_Lzss.ExpandBuffer(pExact.get(), strRoom.data(), &ulLen, (xulong)strBad.size()));
        EXPECT_EQ(strModel.size(), ulLen);
        EXPECT_TRUE(strModel == strRoom.substr(0, strModel.size()));
        EXPECT_EQ('#', strRoom.back());
        WriteFile("bad", strBad);
        EXPECT_EQ(bEnds, m_Lzss.Expand("bad", "out"));
        EXPECT_TRUE(strModel == ReadFile("out"));
    }
}

std::vector<std::vector<xlong>> s_Reports;

void Report(xlong lPos, xlong lTotal, xlong bStart)
{
    s_Reports.push_back({ lPos, lTotal, bStart });
}

TEST_F(CLzssTest, ReportsItsProgress)
{
    s_Reports.clear();
    EXPECT_EQ(1, m_Lzss.SetCallback(Report, 1000000));
    const std::string strStream = Packed(m_Lzss, std::string(3000, 'a'));
    const std::vector<std::vector<xlong>> pass = { { 0, 3000, 1 }, { 3000, 3000, 0 } };
    ASSERT_EQ(4u, s_Reports.size()) << "one pass counts, one stores";
    EXPECT_EQ(pass, (std::vector<std::vector<xlong>>{ s_Reports[0], s_Reports[1] }));
    s_Reports.clear();
    WriteFile("stream", strStream);
    EXPECT_EQ(1, m_Lzss.Expand("stream", "back"));
    const xlong lSize = (xlong)strStream.size();
    EXPECT_EQ((std::vector<std::vector<xlong>>{ { 0, lSize, 1 }, { lSize, lSize, 0 } }), s_Reports);
}

TEST_F(CLzssTest, TheTreeCanBeDrivenByHand)
{
    memcpy(m_Lzss.m_ucWindow + 1, "banana", 6);
    m_Lzss.ClearTree();
    m_Lzss.InitTree(1);
    short sPos = 0;
    EXPECT_EQ(0, m_Lzss.AddString(2, &sPos));
    EXPECT_EQ(1, sPos);
    EXPECT_EQ(0, m_Lzss.AddString(3, &sPos));
    EXPECT_EQ(3, m_Lzss.AddString(4, &sPos)); // "ana" and zeros beside "anana"
    EXPECT_EQ(2, sPos);
    EXPECT_EQ(0, m_Lzss.AddString(0, &sPos));
    // In order: 4 "ana", 2 "anana", 1 "banana", 3 "nana".
    EXPECT_EQ(2, m_Lzss.FindNextNode(1));
    m_Lzss.DeleteString(1);
    EXPECT_EQ(2, m_Lzss.m_Tree[CLzss::TREE_ROOT].sLarger);
    EXPECT_EQ(4, m_Lzss.m_Tree[2].sSmaller);
    EXPECT_EQ(3, m_Lzss.m_Tree[2].sLarger);
    EXPECT_EQ(0, m_Lzss.m_Tree[1].sParent);
    m_Lzss.ReplaceNode(2, 9);
    EXPECT_EQ(9, m_Lzss.m_Tree[3].sParent);
    EXPECT_EQ(9, m_Lzss.m_Tree[CLzss::TREE_ROOT].sLarger);
}

TEST_F(CLzssTest, RunsOutOfMemoryWithoutLoss)
{
    const std::string strSource(20000, 'm');
    WriteFile("source", strSource);
    m_Lzss.Compress("source", "stream");
    FailEachAllocation(
        [&]
        {
            xulong ulLen = (xulong)strSource.size();
            char *const pBlock = m_Lzss.CompressBuffer(strSource.data(), &ulLen);
            const xlong lFile = m_Lzss.Compress("source", "stream2"), lBack = m_Lzss.Expand("stream", "back");
            const bool bAll = pBlock && lFile && lBack;
            xFreeMemFunc(pBlock, nullptr, 0);
            return bAll;
        });
}
} // namespace
