#include "tarvix/base64.h"

#include "core/heap.h"
#include "core/simd.h"
#include "support.h"
#include "tarvix/memory.h"

#include <random>

namespace
{
const char s_szAlphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

// By whole bit strings, with none of the coder's tables.
std::string EncodeModel(const std::string &strBytes)
{
    std::string strBits, strText;
    for (unsigned char uc : strBytes)
        for (int n = 7; n >= 0; --n)
            strBits += (char)('0' + (uc >> n & 1));
    while (strBits.size() % 6)
        strBits += '0';
    for (size_t ul = 0; ul < strBits.size(); ul += 6)
        strText += s_szAlphabet[std::stoi(strBits.substr(ul, 6), nullptr, 2)];
    while (strText.size() % 4)
        strText += '=';
    return strText;
}

std::string Encode(const std::string &strBytes, int bCRLF)
{
    unsigned char *pDest = nullptr;
    xulong ulLen = 0;
    EXPECT_EQ(1, CBase64::Encode((const unsigned char *)strBytes.data(), (xulong)strBytes.size(), pDest, ulLen, bCRLF));
    EXPECT_EQ(ulLen, strlen((const char *)pDest));
    const std::string str((const char *)pDest, ulLen);
    xFreeMemFunc(pDest, nullptr, 0);
    return str;
}

// @return the bytes, or "bad" and the result
std::string Decode(const std::string &strText)
{
    unsigned char *pDest = nullptr;
    xulong ulLen = 0;
    const int nResult = CBase64::Decode((const unsigned char *)strText.data(), (xulong)strText.size(), pDest, ulLen);
    std::string str = "bad";
    if (!nResult && pDest)
        str.assign((const char *)pDest, ulLen);
    EXPECT_EQ(nResult == 1 || strText.empty(), !pDest);
    xFreeMemFunc(pDest, nullptr, 0);
    return str;
}

std::string Random(std::mt19937 &random, size_t ulSize)
{
    std::string str;
    while (str.size() < ulSize)
        str += (char)random();
    return str;
}

class CBase64Test : public testing::TestWithParam<xlong>
{
protected:
    CBase64Test() : m_lOld(s_lSimdLimit) { s_lSimdLimit = GetParam(); }
    ~CBase64Test() override { s_lSimdLimit = m_lOld; }

    CTestGlobals m_Globals;
    xlong m_lOld;
};

TEST_P(CBase64Test, EveryLengthBothWays)
{
    std::mt19937 random(64);
    for (size_t ulSize = 1; ulSize < 400; ++ulSize)
    {
        SCOPED_TRACE(ulSize);
        const std::string strBytes = Random(random, ulSize), strText = EncodeModel(strBytes);
        ASSERT_EQ(strText, Encode(strBytes, 0));
        // The size is that of the block, less the padding.
        std::string strBack = Decode(strText);
        ASSERT_EQ((strText.size() / 4 + 1) * 3 - (3 - ulSize % 3) % 3, strBack.size());
        ASSERT_EQ(strBytes, strBack.substr(0, ulSize));

        std::string strLines;
        for (size_t ul = 0; ul < strText.size(); ul += 76)
            strLines += strText.substr(ul, 76) + "\r\n";
        // A text with a filler ends in two marks in the place of its last line's end.
        if (ulSize % 3)
            strLines.replace(strLines.size() - 2, 2, "!!");
        ASSERT_EQ(strLines, Encode(strBytes, 1));
        if (!(ulSize % 3))
            ASSERT_EQ(strBytes, Decode(strLines).substr(0, ulSize));
    }
    EXPECT_EQ("TQ==", Encode("M", 0));
    EXPECT_EQ("\r\n", Encode("", 1));
    EXPECT_EQ("", Encode("", 0));
}

TEST_P(CBase64Test, OtherCharactersSpoilTheText)
{
    std::mt19937 random(65);
    const std::string strBytes = Random(random, 300), strText = EncodeModel(strBytes);
    for (int nChar = 0; nChar < 256; ++nChar)
        for (const size_t ulAt : { (size_t)0, (size_t)31, (size_t)200, strText.size() })
        {
            SCOPED_TRACE(std::to_string(nChar) + " at " + std::to_string(ulAt));
            std::string strOther = strText;
            strOther.insert(ulAt, 1, (char)nChar);
            const bool bSpace = nChar == '\r' || nChar == '\n' || nChar == ' ' || nChar == '\t';
            if (bSpace)
                ASSERT_EQ(strBytes, Decode(strOther).substr(0, 300));
            else if (nChar == '=')
                ASSERT_EQ(strBytes.substr(0, ulAt / 4 * 3), Decode(strOther).substr(0, ulAt / 4 * 3));
            else if (nChar && strchr(s_szAlphabet, nChar))
                ASSERT_NE("bad", Decode(strOther));
            else
                ASSERT_EQ("bad", Decode(strOther));
        }
    EXPECT_EQ("bad", Decode("TWFu#"));
    EXPECT_EQ("bad", Decode("")); // no block for nothing
    EXPECT_EQ(std::string("M\0\0\0", 4), Decode("TQ=="));
    EXPECT_EQ(std::string("\0\0\0\0\0\0", 6), Decode("TWFu").substr(3) + std::string(3, '\0'));
}

INSTANTIATE_TEST_SUITE_P(Simd, CBase64Test, testing::Values(SIMD_BASE, SIMD_ALL),
                         [](const auto &info) { return info.param == SIMD_BASE ? "Base" : "All"; });

std::string UuModel(const std::string &strBytes)
{
    std::string strText;
    for (size_t ul = 0; ul < strBytes.size(); ul += 45)
    {
        std::string strLine = strBytes.substr(ul, 45);
        strText += (char)(' ' + strLine.size());
        strLine.resize((strLine.size() + 2) / 3 * 3);
        for (char c : EncodeModel(strLine))
            strText += (char)(' ' + (strchr(s_szAlphabet, c) - s_szAlphabet));
        strText += '\n';
    }
    return strText;
}

TEST(UuTest, EveryLengthBothWays)
{
    std::mt19937 random(66);
    for (size_t ulSize = 0; ulSize < 200; ++ulSize)
    {
        SCOPED_TRACE(ulSize);
        const std::string strBytes = Random(random, ulSize), strModel = UuModel(strBytes);
        std::string strText((ulSize + 44) / 45 * 62 + 1, '#');
        ASSERT_EQ(strModel.size(), UUEncode(strBytes.data(), strText.data(), (xulong)ulSize));
        ASSERT_EQ(strModel, strText.substr(0, strModel.size()));
        for (const char *pszEnd : { "\n", "\r\n", "\r" })
        {
            std::string strLines;
            for (char c : strModel)
                strLines += c == '\n' ? pszEnd : std::string(1, c);
            std::string strBack(ulSize + 1, '#');
            ASSERT_EQ(ulSize, UUDecode(strLines.data(), strBack.data(), (xulong)strLines.size()));
            ASSERT_EQ(strBytes + '#', strBack);
        }
    }
    EXPECT_EQ('M', UuModel(std::string(45, 'x'))[0]);
}

#ifndef _WIN32
// What other programs make of our texts, and we of theirs.
using CCoderPeerTest = CFolderTest;

TEST_F(CCoderPeerTest, OtherProgramsAgree)
{
    std::mt19937 random(67);
    for (const size_t ulSize : { 1, 2, 3, 44, 45, 46, 57, 1000, 4500 })
    {
        SCOPED_TRACE(ulSize);
        const std::string strBytes = Random(random, ulSize);
        WriteFile("bytes", strBytes);
        ASSERT_EQ(0, std::system("base64 -w 0 bytes > text && base64 -w 76 bytes > lines"));
        EXPECT_EQ(ReadFile("text"), Encode(strBytes, 0));
        EXPECT_EQ(strBytes, Decode(ReadFile("lines")).substr(0, ulSize));
        WriteFile("text", Encode(strBytes, 0));
        ASSERT_EQ(0, std::system("base64 -d text > back"));
        EXPECT_EQ(strBytes, ReadFile("back"));

        std::string strLines((ulSize + 44) / 45 * 62, ' ');
        strLines.resize(UUEncode(strBytes.data(), strLines.data(), (xulong)ulSize));
        WriteFile("lines", "begin 644 back\n" + strLines + " \nend\n");
        ASSERT_EQ(0, std::system("uudecode -o back lines && uuencode bytes name > theirs"));
        EXPECT_EQ(strBytes, ReadFile("back"));
        std::string strTheirs = ReadFile("theirs"), strBack(ulSize + 100, ' ');
        strTheirs.erase(0, strTheirs.find('\n') + 1);
        strBack.resize(UUDecode(strTheirs.data(), strBack.data(), (xulong)strTheirs.size()));
        EXPECT_EQ(strBytes, strBack);
    }
}
#endif

TEST(UuTest, PromisesBeyondTheTextAreBlanks)
{
    char szBack[64];
    memset(szBack, '#', sizeof(szBack));
    // 63 bytes from one character, of which ten fit.
    EXPECT_EQ(63u, UUDecode("_", szBack, 1, 10));
    EXPECT_EQ(std::string(10, '\0') + "#", std::string(szBack, 11));
    EXPECT_EQ(0u, UUDecode("`\n#AAA", szBack, 6)); // a line of no bytes ends it
    EXPECT_EQ(0u, UUDecode("\n#AAA", szBack, 5));
}
} // namespace
