#include "tarvix/bitfile.h"

#include "support.h"
#include "tarvix/rle.h"

#include <cmath>
#include <random>

namespace
{
typedef std::vector<bool> TBits;

void Append(TBits &bits, xulong ulValue, int nCount)
{
    while (nCount--)
        bits.push_back(nCount < 32 && (ulValue >> nCount & 1));
}

std::string Bytes(const TBits &bits)
{
    std::string str((bits.size() + 7) / 8, '\0');
    for (size_t ul = 0; ul < bits.size(); ++ul)
        str[ul / 8] = (char)(str[ul / 8] | bits[ul] << (7 - ul % 8));
    return str;
}

using CBitTest = CFolderTest;

TEST_F(CBitTest, FileAndStreamAgreeOnTheOrderOfBits)
{
    std::mt19937 random(21);
    TBits model;
    CBitFile file;
    ASSERT_EQ(1, file.Open("bits", FILE_WRITE));
    std::string strBlock(4000, '\0');
    CBitStream stream;
    stream.InitStream((unsigned char *)strBlock.data());
    std::vector<std::pair<xulong, int>> fields;
    for (int n = 0; n < 1000; ++n)
    {
        const int nCount = n % 34;
        const xulong ulValue = (xulong)random();
        fields.push_back({ nCount < 32 ? ulValue & ((1u << nCount) - 1) : ulValue, nCount });
        Append(model, fields.back().first, nCount);
        file.WriteBits(ulValue, (unsigned char)nCount);
        stream.WriteBits(ulValue, nCount);
    }
    const std::string strModel = Bytes(model);
    file.FlushBits();
    file.Close();
    stream.FlushBits();
    EXPECT_EQ((xlong)(model.size() / 8), stream.GetLen());
    EXPECT_TRUE(strModel == ReadFile("bits"));
    EXPECT_TRUE(strModel == strBlock.substr(0, strModel.size()));

    ASSERT_EQ(1, file.Open("bits", FILE_READ));
    stream.FlushBitbuf();
    for (const auto &[ulValue, nCount] : fields)
    {
        ASSERT_EQ(ulValue, stream.ReadBits(nCount));
        if (nCount <= 15)
            ASSERT_EQ((short)ulValue, file.ReadBits((short)nCount));
        else
        {
            xulong ulRead = 0;
            ASSERT_EQ(1, file.TryReadBits(nCount, &ulRead));
            ASSERT_EQ(ulValue, ulRead);
        }
    }
    file.FlushBitbuf();
    xulong ulRead = 0;
    EXPECT_EQ(0, file.TryReadBits(1, &ulRead));
    EXPECT_EQ(0, file.ReadBits(-1));
}

TEST_F(CBitTest, FlushFillsUpWithZeros)
{
    CBitFile file;
    ASSERT_EQ(1, file.Open("bits", FILE_WRITE));
    file.WriteBits(5, 3);
    file.FlushBits();
    file.FlushBits();
    file.WriteBit(1);
    file.Close(); // not flushed: lost
    EXPECT_EQ("\xa0", ReadFile("bits"));
    // Behind the end the last byte comes again.
    ASSERT_EQ(1, file.Open("bits", FILE_READ));
    file.FlushBitbuf();
    EXPECT_EQ(0xa0, file.ReadBits(8));
    EXPECT_EQ(1, file.ReadBit());
    EXPECT_EQ(0, file.ReadBit());

    unsigned char ucBlock[2] = { 0xff, 0xff };
    CBitStream stream;
    stream.InitStream(ucBlock);
    stream.WriteBits(5, 3);
    stream.FlushBits();
    EXPECT_EQ(0xa0, ucBlock[0]);
    EXPECT_EQ(0, stream.GetLen());
    stream.WriteBits(1, 5); // completes the byte
    stream.FlushBits();
    EXPECT_EQ(0xa1, ucBlock[0]);
    EXPECT_EQ(0xff, ucBlock[1]) << "there was no part of a byte";
    EXPECT_EQ(1, stream.GetLen());
}

// Runs as a list, then bits: the coder in two steps.
std::string PackModel(const std::vector<xulong> &values, int nBits)
{
    TBits bits;
    for (size_t ul = 0; ul < values.size();)
    {
        size_t ulEnd = ul;
        while (ulEnd < values.size() && ulEnd - ul < 16 && values[ulEnd] == values[ul])
            ++ulEnd;
        if (ulEnd - ul > 1)
            Append(bits, (xulong)(16 + ulEnd - ul - 1), 5);
        else
            Append(bits, 0, 1);
        Append(bits, values[ul], nBits);
        ul = ulEnd;
    }
    return Bytes(bits);
}

TEST_F(CBitTest, RunsOfEveryLengthAndWidth)
{
    std::mt19937 random(4);
    for (const int nBits : { 1, 3, 8, 9, 17, 31 })
    {
        SCOPED_TRACE(nBits);
        std::vector<xulong> values;
        for (size_t ulRun = 1; ulRun <= 40; ++ulRun)
            values.insert(values.end(), ulRun, (xulong)random() & ((1u << nBits) - 1));
        TBits plain;
        for (xulong ul : values)
            Append(plain, ul, nBits);
        std::string strPlain = Bytes(plain);
        const std::string strModel = PackModel(values, nBits);
        CRle rle;
        rle.Init(nBits, 0);
        std::string strPacked(strModel.size() + 8, '#');
        const xlong lSize =
            rle.Pack((const unsigned char *)strPlain.data(), (unsigned char *)strPacked.data(), (xlong)values.size());
        ASSERT_EQ((xlong)strModel.size(), lSize);
        ASSERT_TRUE(strModel + "########" == strPacked);

        // Ends with the token that fetches the last byte, whatever follows in it.
        std::string strBack(strPlain.size() + 8, '#');
        const xlong lBack = rle.Unpack((const unsigned char *)strModel.data(), (unsigned char *)strBack.data(), lSize);
        ASSERT_LE(lBack, (xlong)strPlain.size());
        ASSERT_GE(lBack, (xlong)strPlain.size() - (15 * nBits + 7) / 8 - 1);
        EXPECT_TRUE(strPlain.compare(0, (size_t)lBack - 1, strBack, 0, (size_t)lBack - 1) == 0);
    }
    CRle rle;
    rle.Init(20, 12);
    EXPECT_EQ("RLE Bit count can't exceed 32!", LastError());
    EXPECT_EQ(32, rle.m_lTotalBits);
}

TEST_F(CBitTest, SeventeenEqualValuesAreARunAndASingle)
{
    const std::string strPlain(17, 'A');
    unsigned char ucPacked[8] = {};
    CRle rle;
    rle.Init(8, 0);
    // 11111 01000001 0 01000001: 22 bits.
    ASSERT_EQ(3, rle.Pack((const unsigned char *)strPlain.data(), ucPacked, 17));
    EXPECT_EQ(0xfa, ucPacked[0]);
    EXPECT_EQ(0x09, ucPacked[1]);
    EXPECT_EQ(0x04, ucPacked[2]);
    unsigned char ucBack[17] = {};
    EXPECT_EQ(17, rle.Unpack(ucPacked, ucBack, 3));
    EXPECT_EQ(0, memcmp(ucBack, strPlain.data(), 17));
    // A block that is too small, and one byte that is missing.
    EXPECT_EQ(0, rle.Unpack(ucPacked, ucBack, 3, 16));
    EXPECT_EQ(16, rle.Unpack(ucPacked, ucBack, 2, 16));
    EXPECT_EQ(0, rle.Unpack(ucPacked, ucBack, 0));
}

TEST_F(CBitTest, UnpackNeverReadsOrWritesOutside)
{
    std::mt19937 random(77);
    for (int n = 0; n < 3000; ++n)
    {
        const size_t ulSize = random() % 12, ulRoom = random() % 24;
        const std::unique_ptr<unsigned char[]> pFrom(new unsigned char[ulSize]), pTo(new unsigned char[ulRoom]);
        for (size_t ul = 0; ul < ulSize; ++ul)
            pFrom[ul] = (unsigned char)random();
        CRle rle;
        rle.m_lTotalBits = (xlong)(random() % 40);
        EXPECT_LE(rle.Unpack(pFrom.get(), pTo.get(), (xlong)ulSize, (xlong)ulRoom), (xlong)ulRoom);
    }
}

TEST_F(CBitTest, DoublesComeBackInFixedPoint)
{
    CRle rle;
    rle.Init(8, 8);
    const double dValues[] = { 1.5, 1.5, 1.5, 0.00390625, 200.99, 7, 0.001, -1 };
    char cPacked[64] = {};
    const xlong lSize = rle.PackDoubles(dValues, cPacked, 8);
    EXPECT_EQ(PackModel({ 384, 384, 384, 1, 51453, 1792, 0, 0xff00 }, 16), std::string(cPacked, (size_t)lSize));
    double dBack[8] = {};
    EXPECT_EQ(1, rle.UnpackDoubles(dBack, cPacked, lSize, 8));
    EXPECT_EQ(1.5, dBack[2]);
    EXPECT_EQ(51453 / 256.0, dBack[4]);
    EXPECT_EQ(255.0, dBack[7]) << "unsigned";
    EXPECT_EQ(0, rle.UnpackDoubles(dBack, cPacked, lSize, 9));
    EXPECT_EQ(0, rle.UnpackDoubles(dBack, cPacked, lSize, -1));

    rle.Init(8, 0);
    EXPECT_LT(0, rle.PackDoubles(dValues, cPacked, 1));
    dBack[0] = 99;
    EXPECT_EQ(1, rle.UnpackDoubles(dBack, cPacked, 2, 1));
    EXPECT_EQ(99, dBack[0]) << "nothing is stored without a fraction";
    const double dWild[] = { NAN, INFINITY, -1e300 };
    EXPECT_LT(0, rle.PackDoubles(dWild, cPacked, 3));
}
} // namespace
