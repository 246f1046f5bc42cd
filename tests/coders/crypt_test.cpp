#include "support.h"

#include "tarvix/file.h"

namespace
{
std::string Scrambled(std::string str)
{
    for (char &c : str)
        c = (char)(c ^ 0x3C);
    return str;
}

// The same code bit by bit: no table, no shared step.
xulong PlainCrc(const std::string &str, xulong ulPoly)
{
    xulong ulCrc = 0xffffffff;
    for (unsigned char uc : str)
    {
        for (int nBit = 7; nBit >= 0; --nBit)
        {
            const bool bOut = (ulCrc >> 31 & 1) != (xulong)(uc >> nBit & 1);
            ulCrc <<= 1;
            if (bOut)
                ulCrc ^= ulPoly;
        }
    }
    return ~ulCrc;
}

using CCryptTest = CFolderTest;
} // namespace

TEST_F(CCryptTest, TheMarkOrWhatSortsBehindItCounts)
{
    const struct
    {
        std::string strTail;
        xlong lCrypt;
    } cases[] = { { "XICRYPTEDFILE", 1 }, { "XICRYPTEDFILF", 1 }, { "XICRYPTEDFILD", 0 }, { "ZZZZZZZZZZZZZ", 1 } };
    for (const auto &c : cases)
    {
        SCOPED_TRACE(c.strTail);
        const std::string strData = "abc" + Scrambled(c.strTail);
        EXPECT_EQ(c.lCrypt, xIsCrypt(strData.data(), (xulong)strData.size()));
        WriteFile("f", strData);
        CFile file;
        xulong ulPos = 99;
        ASSERT_EQ(1, file.Open("f", FILE_READ));
        EXPECT_EQ(c.lCrypt, xIsFileCrypt(&file));
        file.GetPos(&ulPos, 0);
        EXPECT_EQ(0u, ulPos);
    }
    EXPECT_EQ(0, xIsCrypt("short", 5));
    EXPECT_EQ(0, xIsCrypt(nullptr, 100));
    WriteFile("short", "x");
    CFile file;
    ASSERT_EQ(1, file.Open("short", FILE_READ));
    EXPECT_EQ(0, xIsFileCrypt(&file));
    std::string strText = "text";
    xDecrypt(strText.data(), 4);
    EXPECT_EQ(Scrambled("text"), strText);
}

TEST_F(CCryptTest, FileCrcIsTheKnownOne)
{
    xulong ulCrc = 7;
    WriteFile("check", "123456789");
    EXPECT_EQ(1, xCalcFileCrc("check", &ulCrc, 0x04C11DB7));
    EXPECT_EQ(0xFC891918u, ulCrc) << "the published check value of this form";
    EXPECT_EQ("", LastError());
    for (xulong ulPoly : { 0x04C11DB7u, 0xEDB88320u, 0x1u, 0u })
    {
        std::string strData;
        for (int i = 0; i < 700; ++i)
            strData += (char)(i * 7 + i / 256);
        WriteFile("data", strData);
        EXPECT_EQ(1, xCalcFileCrc("data", &ulCrc, ulPoly));
        EXPECT_EQ(PlainCrc(strData, ulPoly), ulCrc) << ulPoly;
    }
    WriteFile("empty", "");
    EXPECT_EQ(1, xCalcFileCrc("empty", &ulCrc, 1));
    EXPECT_EQ(0u, ulCrc);
    EXPECT_EQ(0, xCalcFileCrc("missing", &ulCrc, 1));
}

TEST_F(CCryptTest, BufferCrcBuildsItsTableOnlyForTheStoredPolynomial)
{
    const std::string strData = "123456789\x80\xff";
    const signed char *pData = (const signed char *)strData.data();
    xulong ulCrc = 7;
    EXPECT_EQ(1, xCalcCrc(pData, 0, &ulCrc, 5));
    EXPECT_EQ(0u, ulCrc);
    xCalcCrc(pData, 9, &ulCrc, 0x04C11DB7);
    EXPECT_EQ(0xffu, ulCrc & 0xffu) << "an empty table shifts the start value out";
    glb->m_CrcBuffer.ulPoly = 0x04C11DB7;
    xCalcCrc(pData, (xulong)strData.size(), &ulCrc, 0x04C11DB7);
    EXPECT_EQ(PlainCrc(strData, 0x04C11DB7), ulCrc);
}
