#include "tarvix/jpeg.h"

#include "allocations.h"
#include "core/heap.h"
#include "core/simd.h"
#include "pictures/jpegkernels.h"
#include "pictures/jpegmaker.h"
#include "pictures/jpegmodel.h"
#include "slots.h"
#include "support.h"
#include "tarvix/bitmap.h"

#include <random>

namespace
{
const std::vector<CJpegMaker::TComponent> s_Grey = { { 1, 1, 1 } };

std::vector<CJpegMaker::TComponent> Colour(int nH, int nV)
{
    return { { 1, nH, nV }, { 2, 1, 1 }, { 3, 1, 1 } };
}

class CJpegTest : public CFolderTest
{
protected:
    ~CJpegTest() override { s_lSimdLimit = SIMD_ALL; }

    xlong LoadBytes(const std::string &strBytes)
    {
        WriteFile(Path("x.jpg"), strBytes);
        return m_Type.Load("x.jpg", &m_Bitmap, nullptr);
    }
    // Red, green and blue of every pixel.
    std::string Pixels() const
    {
        std::string str;
        str.reserve((size_t)m_Bitmap.m_lWidth * (size_t)m_Bitmap.m_lHeight * 3);
        for (xlong y = 0; y < m_Bitmap.m_lHeight; ++y)
        {
            const unsigned char *p = m_Bitmap.m_pData + (size_t)y * (size_t)m_Bitmap.m_lPitch;
            for (xlong x = 0; x < m_Bitmap.m_lWidth; ++x, p += 3)
                str += { (char)p[2], (char)p[1], (char)p[0] };
        }
        return str;
    }
    // As the model, on every set of instructions.
    testing::AssertionResult ReadsAsModel(const std::string &strBytes)
    {
        CJpegModel model;
        const std::string strPixels = model.Decode(strBytes);
        for (s_lSimdLimit = SIMD_BASE; s_lSimdLimit <= SIMD_AVX2; ++s_lSimdLimit)
        {
            if (LoadBytes(strBytes) != 1)
                return testing::AssertionFailure() << "not read: " << LastError();
            if (m_Bitmap.m_lWidth != model.nWidth || m_Bitmap.m_lHeight != model.nHeight)
                return testing::AssertionFailure() << "size " << m_Bitmap.m_lWidth << "x" << m_Bitmap.m_lHeight;
            const std::string strOurs = Pixels();
            for (size_t i = 0; i < strPixels.size(); ++i)
                if (strOurs[i] != strPixels[i])
                    return testing::AssertionFailure()
                           << "set " << s_lSimdLimit << ", pixel " << i / 3 % (size_t)model.nWidth << ", "
                           << i / 3 / (size_t)model.nWidth << ", channel " << i % 3 << ": "
                           << (int)(unsigned char)strOurs[i] << " for " << (int)(unsigned char)strPixels[i];
        }
        s_lSimdLimit = SIMD_ALL;
        return testing::AssertionSuccess();
    }

    CJPGPic m_Type;
    CBitmap m_Bitmap;
};

TEST_F(CJpegTest, ReadsEverySampling)
{
    const std::vector<CJpegMaker::TComponent> aSamplings[] = {
        s_Grey,
        { { 7, 2, 2 } },
        { { 7, 3, 4 } },
        Colour(1, 1),
        Colour(2, 1),
        Colour(2, 2),
        Colour(1, 2),
        Colour(4, 1),
        Colour(1, 4),
        Colour(4, 2),
        Colour(3, 2),
        { { 1, 2, 2 }, { 2, 2, 1 }, { 3, 1, 2 } },
        { { 1, 1, 1 }, { 2, 2, 2 }, { 3, 1, 2 } },
        { { 1, 2, 2 }, { 2, 1, 1 }, { 3, 1, 1 }, { 4, 1, 3 - 2 } },
    };
    const struct
    {
        int nWidth, nHeight;
    } aSizes[] = { { 1, 1 }, { 8, 8 }, { 17, 33 }, { 33, 15 }, { 65, 5 }, { 131, 40 }, { 200, 1 }, { 1, 70 } };
    unsigned uSeed = 0;
    for (const auto &components : aSamplings)
        for (const auto &size : aSizes)
        {
            CJpegMaker maker;
            maker.components = components;
            maker.nWidth = size.nWidth;
            maker.nHeight = size.nHeight;
            maker.uSeed = ++uSeed;
            maker.nRestart = uSeed % 3 ? 0 : 1 + (int)(uSeed % 5);
            EXPECT_TRUE(ReadsAsModel(maker.Make())) << "seed " << uSeed << ", " << size.nWidth << "x" << size.nHeight;
        }
}

// Sizes and steps up to where the fast ways have to leave blocks to the plain one.
TEST_F(CJpegTest, ReadsCoefficientsOfAnySize)
{
    for (int nSize : { 1, 3, 7, 11, 15 })
        for (int nQuant : { 1, 16, 255, 65535 })
            for (int nFilled : { 0, 2, 63 })
            {
                CJpegMaker maker;
                maker.components = Colour(2, 1);
                maker.nWidth = maker.nHeight = 40;
                maker.nMostSize = nSize;
                maker.nQuant = nQuant;
                maker.nMostFilled = nFilled;
                EXPECT_TRUE(ReadsAsModel(maker.Make())) << nSize << ", " << nQuant << ", " << nFilled;
            }
}

// Scans longer than what is held of one, with and without restarts inside.
TEST_F(CJpegTest, ReadsLongScans)
{
    for (int nRestart : { 0, 7, 1000 })
    {
        CJpegMaker maker;
        maker.components = Colour(2, 2);
        maker.nWidth = 900;
        maker.nHeight = 500;
        maker.nRestart = nRestart;
        maker.nMostFilled = 40;
        const std::string strFile = maker.Make();
        ASSERT_GT(strFile.size(), 200000u);
        EXPECT_TRUE(ReadsAsModel(strFile)) << nRestart;
    }
}

TEST_F(CJpegTest, ReadsTheFirstScanAlone)
{
    CJpegMaker maker;
    maker.components = Colour(2, 2);
    maker.nWidth = maker.nHeight = 37;
    for (const std::vector<int> &scan : std::vector<std::vector<int>>{ { 0 }, { 2 }, { 1, 2 }, { 2, 0 } })
    {
        maker.scan = scan;
        maker.nRestart = (int)scan.size() * 2;
        EXPECT_TRUE(ReadsAsModel(maker.Make())) << scan[0];
    }
}

TEST_F(CJpegTest, DamagedDataShowsInThePicture)
{
    std::mt19937 random(4);
    for (int nRestart : { 0, 2 })
    {
        CJpegMaker maker;
        maker.components = Colour(2, 2);
        maker.nWidth = 50;
        maker.nHeight = 40;
        maker.nRestart = nRestart;
        const std::string strWhole = maker.Make();
        for (size_t ulSize = maker.ulData; ulSize < strWhole.size(); ulSize += 1 + ulSize % 7)
            ASSERT_TRUE(ReadsAsModel(strWhole.substr(0, ulSize))) << "cut at " << ulSize;
        for (int i = 0; i < 300; ++i)
        {
            std::string strBad = strWhole;
            for (int nFlips = 1 + i % 3; nFlips; --nFlips)
            {
                const size_t ulPos = maker.ulData + random() % (strBad.size() - maker.ulData);
                strBad[ulPos] = (char)(i % 4 ? random() : 0xff);
            }
            ASSERT_TRUE(ReadsAsModel(strBad)) << "damage " << i;
        }
    }
}

TEST_F(CJpegTest, DamagedHeadersDoNoHarm)
{
    CJpegMaker maker;
    maker.components = Colour(2, 2);
    maker.nRestart = 1;
    const std::string strWhole = maker.Make();
    for (size_t ulSize = 0; ulSize < maker.ulData; ++ulSize)
        ASSERT_EQ(0, LoadBytes(strWhole.substr(0, ulSize))) << ulSize;
    std::mt19937 random(9);
    int nRead = 0;
    for (size_t ulPos = 0; ulPos < maker.ulData; ++ulPos)
        for (int nValue : { 0, 1, 0xff, (int)(random() % 256) })
        {
            std::string strBad = strWhole;
            strBad[ulPos] = (char)nValue;
            nRead += LoadBytes(strBad) == 1;
        }
    EXPECT_GT(nRead, 50) << "most of these bytes only change the picture";
}

TEST_F(CJpegTest, HeadersThatAreRefused)
{
    CJpegMaker maker;
    maker.components = Colour(2, 1);
    const std::string strGood = maker.Make();
    const size_t ulFrame = maker.ulFrame, ulScan = maker.ulScan;
    const std::string strTables = strGood.substr(20, ulFrame - 20);
    const size_t ulCodes = strGood.find("\xff\xc4"), ulLastCount = ulCodes + 4 + 33 + 16;
    // With one symbol more the last table would begin to eat what stands behind it.
    std::string strOneMore = strGood.substr(ulLastCount, ulFrame - ulLastCount);
    ++strOneMore[0];
    strOneMore += CJpegMaker::Segment('\xfe', "comment");
    const struct
    {
        const char *pszName;
        size_t ulPos, ulCut;
        std::string strNew;
        xlong lResult;
    } aCases[] = {
        { "as it is", 0, 0, "", 1 },
        { "no start", 1, 1, "\xd7", 0 },
        { "only the second byte of the start counts", 0, 1, "x", 1 },
        { "Exif first", 3, 1, "\xe1", 0 },
        { "another even marker with JFIF", 3, 1, "\xe2", 1 },
        { "no JFIF", 6, 1, "X", 0 },
        { "JFIF 2", 11, 1, "\2", 0 },
        { "JFIF 1.9", 12, 1, "\x09", 1 },
        { "arithmetic coding", ulFrame + 1, 1, "\xc9", 0 },
        { "12 bits", ulFrame + 4, 1, "\x0c", 0 },
        { "65500 wide", ulFrame + 7, 2, "\xff\xdc", 1 },
        { "65501 wide", ulFrame + 7, 2, "\xff\xdd", 0 },
        { "65501 high", ulFrame + 5, 2, "\xff\xdd", 0 },
        { "65500 by 65500", ulFrame + 5, 4, "\xff\xdc\xff\xdc", 0 },
        { "20000 by 20000", ulFrame + 5, 4, "\x4e\x20\x4e\x20", 0 },
        { "no width", ulFrame + 7, 2, std::string(2, '\0'), 1 },
        { "no height", ulFrame + 5, 2, std::string(2, '\0'), 1 },
        { "no components", ulFrame + 9, 1, std::string(1, '\0'), 0 },
        { "two components", ulFrame + 9, 1, "\2", 0 },
        { "eleven components", ulFrame + 9, 1, "\x0b", 0 },
        { "factor 0", ulFrame + 11, 1, "\1", 0 },
        { "factor 5", ulFrame + 11, 1, "\x51", 0 },
        { "factors 3 and 2", ulFrame + 11, 4, "\x31\0\2\x21", 0 },
        { "11 blocks in an MCU", ulFrame + 11, 7, std::string("\x33\0\2\x11\0\3\x11", 7), 0 },
        { "10 blocks in an MCU", ulFrame + 11, 7, std::string("\x24\0\2\x11\0\3\x11", 7), 1 },
        { "quantisation table 4", ulFrame + 12, 1, "\4", 0 },
        { "no quantisation table 2", ulFrame + 12, 1, "\2", 0 },
        { "end before the frame", ulFrame, 0, "\xff\xd9", 0 },
        { "scan before the frame", ulFrame, 0, strGood.substr(ulScan, maker.ulData - ulScan), 0 },
        { "frame twice", ulScan, 0, strGood.substr(ulFrame, ulScan - ulFrame), 0 },
        { "tables behind the frame", ulScan, 0, strTables, 1 },
        { "scan of the wrong length", ulScan + 3, 1, "\x0d", 0 },
        { "scan of none", ulScan + 4, 1, std::string(1, '\0'), 0 },
        { "scan of a stranger", ulScan + 5, 1, "\x09", 0 },
        { "no DC table 1", ulScan + 6, 1, "\x10", 0 },
        { "AC table 15", ulScan + 6, 1, "\x0f", 0 },
        { "restart interval of the wrong length", 20, 0, "\xff\xdd" + std::string("\0\5\0\1\0", 5), 0 },
        { "fill bytes and bytes before a marker", 20, 0, "abc\xff\xff\xff", 1 },
        { "a comment", 20, 0, CJpegMaker::Segment('\xfe', "comment"), 1 },
        { "a comment to behind the end", 20, 0, "\xff\xfe\x70\x01", 0 },
        { "a comment of length 0", 20, 0, std::string("\xff\xfe\0\0", 4), 1 },
        { "Huffman table 4", ulCodes + 4, 1, "\4", 0 },
        { "Huffman table 20h", ulCodes + 4, 1, "\x20", 0 },
        { "more codes than there can be", ulCodes + 5, 1, "\3", 0 },
        { "more symbols than the segment", ulCodes + 20, 1, "\xff", 0 },
        { "one symbol more than the segment", ulLastCount, ulFrame - ulLastCount, strOneMore, 0 },
        { "DC symbol 16", ulCodes + 21, 1, "\x10", 0 },
        { "quantisation table of the number 4", 24, 1, "\4", 0 },
    };
    for (const auto &c : aCases)
    {
        const size_t ulHeld = HeapState().ulHeldBytes;
        std::string strFile = strGood;
        strFile.replace(c.ulPos, c.ulCut, c.strNew);
        const xlong lResult = LoadBytes(strFile);
        EXPECT_EQ(c.lResult, lResult) << c.pszName;
        EXPECT_LT(HeapState().ulHeldBytes, ulHeld + 0x8000000) << c.pszName << ": a header alone took memory";
    }
}

TEST_F(CJpegTest, OtherKindsOfJpegAreNamed)
{
    const std::string strText = "Unhandle jpeg format. We only support baseline jpegs!";
    CJpegMaker maker;
    std::string strFile = maker.Make();
    for (int nMarker = 0xc1; nMarker <= 0xcf; ++nMarker)
    {
        strFile[maker.ulFrame + 1] = (char)nMarker;
        glb->m_Error.Clear();
        EXPECT_EQ(0, LoadBytes(strFile));
        EXPECT_EQ(nMarker == 0xc4 || nMarker == 0xc8 ? "" : strText, glb->m_Error.GetErrCode() == -1 ? LastError() : "")
            << nMarker;
    }
    strFile[maker.ulFrame + 1] = '\xc2';
    WriteFile(Path("x.jpg"), strFile);
    CBitmap bitmap;
    EXPECT_EQ(0, bitmap.Load("x.jpg", 0));
    EXPECT_EQ(strText, LastError());
}

TEST_F(CJpegTest, HeightFromItsOwnMarker)
{
    CJpegMaker maker;
    const std::string strLines("\xff\xdc\0\4\0\x0b", 6);
    std::string strFile = maker.Make();
    strFile.replace(maker.ulFrame + 5, 2, 2, '\0');
    for (size_t ulPos : { maker.ulFrame, maker.ulScan })
    {
        std::string strWith = strFile;
        strWith.insert(ulPos, strLines);
        ASSERT_EQ(1, LoadBytes(strWith));
        EXPECT_EQ(11, m_Bitmap.m_lHeight);
    }
    ASSERT_EQ(1, LoadBytes(strFile.insert(strFile.size() - 2, strLines)));
    EXPECT_EQ(0, m_Bitmap.m_lHeight) << "behind the scan it comes too late, and the last picture's is not kept";
}

TEST_F(CJpegTest, ScrambledAndPlainFilesReadAlike)
{
    CJpegMaker maker;
    maker.components = Colour(1, 1);
    maker.nWidth = 300;
    maker.nHeight = 200;
    const std::string strFile = maker.Make();
    ASSERT_EQ(1, LoadBytes(strFile));
    const std::string strPixels = Pixels();
    // What lies behind the end can sort behind the mark or before it.
    for (char c : { '\0', '\xff' })
    {
        ASSERT_EQ(1, LoadBytes(strFile + std::string(20, c)));
        EXPECT_EQ(strPixels, Pixels());
        EXPECT_EQ(0, m_Type.m_bCrypt);
    }
    std::string strScrambled = strFile + "XICRYPTEDFILE";
    for (char &c : strScrambled)
        c ^= 0x3c;
    ASSERT_EQ(1, LoadBytes(strScrambled));
    EXPECT_EQ(1, m_Type.m_bCrypt);
    EXPECT_EQ(strPixels, Pixels());
}

TEST_F(CJpegTest, FailedAllocations)
{
    CJpegMaker maker;
    maker.components = { { 1, 2, 2 }, { 2, 1, 2 }, { 3, 2, 1 } };
    WriteFile(Path("x.jpg"), maker.Make());
    const xlong lUsers = glb->m_lJpegUsers;
    FailEachAllocation(
        [&](auto arm)
        {
            CBitmap bitmap;
            arm();
            const bool bOk = m_Type.Load("x.jpg", &bitmap, nullptr) == 1;
            EXPECT_EQ(HeapFailed(), !bOk);
            EXPECT_EQ(lUsers, glb->m_lJpegUsers);
            return bOk;
        });
    EXPECT_EQ(nullptr, glb->m_pJpegRangeBlock);
}

TEST_F(CJpegTest, BitmapFileAndCallbacks)
{
    static int s_nCalls;
    s_nCalls = 0;
    SetLoadDataCallback([] { ++s_nCalls; });
    CJpegMaker maker;
    maker.nWidth = 5;
    maker.nHeight = 100;
    const std::string strFile = maker.Make();
    WriteFile(Path("x.jpg"), strFile);
    ASSERT_EQ(1, m_Bitmap.Load("x.jpg", 0));
    EXPECT_EQ(1 + 3, s_nCalls) << "at the start and behind rows 32, 64 and 96";
    SetLoadDataCallback(nullptr);
    EXPECT_EQ(24, m_Bitmap.m_lDepth);
    EXPECT_EQ(16, m_Bitmap.m_lPitch);
    EXPECT_EQ(16, m_Bitmap.m_lBlueShift);
    EXPECT_EQ(0, m_Bitmap.m_lRedShift);
    EXPECT_EQ(m_Bitmap.m_pData[0], m_Bitmap.m_pData[2]);
    EXPECT_EQ(1, m_Bitmap.m_bChanged);

    // A reader can go on behind the picture.
    WriteFile(Path("y.jpg"), strFile + "what follows");
    CFile file;
    ASSERT_EQ(1, file.Open("y.jpg", FILE_READ));
    ASSERT_EQ(1, m_Type.Load(&file, &m_Bitmap, nullptr));
    xulong ulPos = 0;
    ASSERT_EQ(1, file.GetPos(&ulPos, 0));
    EXPECT_EQ(strFile.size(), ulPos);
}

TEST_F(CJpegTest, KnowsItsName)
{
    EXPECT_EQ(1, m_Type.IsType("a", "JpG"));
    EXPECT_EQ(0, m_Type.IsType("a.jpg", "jpeg"));
    EXPECT_EQ(0, m_Type.IsType("a.jpg", nullptr));
    EXPECT_EQ(&m_Type, glb->m_pPicTypeList->GetType("b/a.jpg"));
    const char *pszExtension = nullptr, *pszDescription = nullptr;
    EXPECT_EQ(1, m_Type.GetDesc(&pszExtension, &pszDescription));
    EXPECT_STREQ("jpg", pszExtension);
    EXPECT_STREQ("JPEG", pszDescription);
    EXPECT_EQ(1, m_Type.GetDesc(nullptr, nullptr));
    EXPECT_EQ(0, m_Bitmap.Save("x.jpg", nullptr, nullptr, nullptr, 0));
    EXPECT_EQ("JPG - Save function not yet implemented", LastError());
    EXPECT_EQ(0, m_Type.Load("missing.jpg", &m_Bitmap, nullptr));
    EXPECT_EQ("JPG - Unable to open \"missing.jpg\"", LastError());
    EXPECT_EQ((int)(2 * sizeof(void *)), OffsetOf(m_Type, m_Type.m_bCrypt));
}

TEST_F(CJpegTest, StagesTellAboutAFile)
{
    CJpegMaker maker;
    maker.components = Colour(2, 2);
    maker.nWidth = 321;
    maker.nHeight = 123;
    maker.nRestart = 5;
    WriteFile(Path("x.jpg"), maker.Make());
    CFile file;
    ASSERT_EQ(1, file.Open("x.jpg", FILE_READ));
    m_Type.m_pFile = &file;
    unsigned short usStart = 0;
    ASSERT_EQ(1, m_Type.ReadWord(&usStart));
    EXPECT_EQ(0xffd8, usStart);
    ASSERT_EQ(1, m_Type.InitJpeg());
    ASSERT_EQ(1, m_Type.ReadJFIFHeader());
    ASSERT_EQ(0xc0, m_Type.ReadMarkers());
    ASSERT_EQ(1, m_Type.ReadFrameHeader());
    EXPECT_EQ(321, m_Type.m_uWidth);
    EXPECT_EQ(123, m_Type.m_uHeight);
    ASSERT_EQ(0xda, m_Type.ReadMarkers());
    EXPECT_EQ(5, m_Type.m_uRestartInterval);
    ASSERT_EQ(1, m_Type.InitialSetup());
    EXPECT_EQ(41, m_Type.m_pComps[0].m_lWidthInBlocks);
    EXPECT_EQ(8, m_Type.m_pComps[2].m_lHeightInBlocks);
    ASSERT_EQ(1, m_Type.PerScanSetup());
    EXPECT_EQ(21, m_Type.m_lMCUsPerRow);
    EXPECT_EQ(1, m_Type.m_pComps[0].m_lLastColWidth);
    const unsigned char *pLimit = (const unsigned char *)glb->m_pJpegRange;
    const CJpegModel::TLimit limit;
    EXPECT_EQ(0, memcmp(limit.aucTable, pLimit - 256, sizeof limit.aucTable));
    m_Type.Free();
    EXPECT_EQ(nullptr, glb->m_pJpegRange);
}

TEST(JpegKernels, WideTransformsEqualThePlainOne)
{
    std::mt19937 random(2);
    const CJpegModel::TLimit limit;
    xlong alTable[64];
    for (int nRun = 0; nRun < 4000; ++nRun)
    {
        for (xlong &lStep : alTable)
            lStep = 1 + (xlong)(random() % (nRun % 2 ? 255 : 3));
        TJpegQuant quant;
        JpegSetQuant(&quant, alTable);
        short asCoefs[64] = {};
        const int nFilled = nRun % 5 ? nRun % 65 : 0;
        const xlong lMost = nRun % 3 ? quant.m_lLimitAC : 40;
        for (int i = 0; i < nFilled; ++i)
            asCoefs[random() % 64] = (short)((xlong)(random() % (unsigned)(2 * lMost + 1)) - lMost);
        asCoefs[0] = (short)((xlong)(random() % (unsigned)(2 * quant.m_lLimitDC + 1)) - quant.m_lLimitDC);
        unsigned char aucPlain[8][9], aucWide[8][9];
        memset(aucPlain, 7, sizeof aucPlain);
        JpegIdctPlain(asCoefs, quant, aucPlain[0], 9, limit.Centre());
        for (s_lSimdLimit = SIMD_BASE; s_lSimdLimit <= SIMD_AVX2; ++s_lSimdLimit)
        {
            memset(aucWide, 7, sizeof aucWide);
            JpegIdctWide(asCoefs, quant, nFilled ? 63 : 0, aucWide[0], 9);
            ASSERT_EQ(0, memcmp(aucPlain, aucWide, sizeof aucWide)) << nRun << ", set " << s_lSimdLimit;
        }
        s_lSimdLimit = SIMD_ALL;
    }
}

// The plain transform beside the sum that defines it.
TEST(JpegKernels, TheTransformIsTheCosineTransform)
{
    std::mt19937 random(3);
    const CJpegModel::TLimit limit;
    xlong alTable[64];
    for (xlong &lStep : alTable)
        lStep = 1 + (xlong)(random() % 9);
    TJpegQuant quant;
    JpegSetQuant(&quant, alTable);
    for (int nRun = 0; nRun < 200; ++nRun)
    {
        short asCoefs[64];
        double adValues[64];
        for (xlong i = 0; i < 64; ++i)
        {
            asCoefs[JpegPlace(i)] = (short)((int)(random() % 21) - 10);
            adValues[i] = asCoefs[JpegPlace(i)] * alTable[i];
        }
        unsigned char aucOut[64];
        JpegIdctPlain(asCoefs, quant, aucOut, 8, limit.Centre());
        for (int y = 0; y < 8; ++y)
            for (int x = 0; x < 8; ++x)
            {
                double dSum = 128;
                for (int v = 0; v < 8; ++v)
                    for (int u = 0; u < 8; ++u)
                        dSum += adValues[v * 8 + u] * (u ? 0.5 : 0.35355339) * (v ? 0.5 : 0.35355339) *
                                cos((2 * x + 1) * u * 0.19634954) * cos((2 * y + 1) * v * 0.19634954);
                ASSERT_NEAR(std::clamp(dSum, 0.0, 255.0), aucOut[y * 8 + x], 0.6);
            }
    }
}

TEST_F(CJpegTest, ConvertsEveryColour)
{
    m_Type.InitJpeg();
    m_Type.BuildYCCtoRGBTable();
    const TJpegColours colours = { m_Type.m_pCrToRed, m_Type.m_pCbToBlue, m_Type.m_pCrToGreen, m_Type.m_pCbToGreen,
                                   (const unsigned char *)glb->m_pJpegRange };
    std::vector<unsigned char> luma(256 + 64), cb(256 + 64), cr(256 + 64), plain(3 * 256 + 8), wide(3 * 256 + 8);
    std::mt19937 random(5);
    for (s_lSimdLimit = SIMD_BASE; s_lSimdLimit <= SIMD_AVX2; ++s_lSimdLimit)
        for (int nCb = 0; nCb < 256; ++nCb)
            for (int nWidth : { 256, nCb })
            {
                for (size_t i = 0; i < 256; ++i)
                {
                    luma[i] = (unsigned char)random();
                    cb[i] = (unsigned char)nCb;
                    cr[i] = (unsigned char)i;
                }
                std::fill(plain.begin(), plain.end(), 3);
                std::fill(wide.begin(), wide.end(), 3);
                const unsigned char *apRows[] = { luma.data(), cb.data(), cr.data() };
                JpegColourPlain(apRows, colours, plain.data(), nWidth);
                m_Type.ConvertYCCtoRGB(apRows, wide.data(), nWidth);
                ASSERT_EQ(plain, wide) << nCb << ", width " << nWidth << ", set " << s_lSimdLimit;
                m_Type.ConvertYtoRGB(apRows, wide.data(), nWidth);
                for (int x = 0; x < nWidth * 3; ++x)
                    ASSERT_EQ(luma[(size_t)x / 3], wide[(size_t)x]);
                ASSERT_EQ(3, wide[(size_t)nWidth * 3]);
            }
}

#ifndef _WIN32
// Another program's files, and what it makes of them.
class CDjpeg : public CJpegTest
{
protected:
    bool Run(const std::string &strCommand) { return std::system(("(" + strCommand + ") 2>/dev/null").c_str()) == 0; }
    void SetUp() override
    {
        if (!Run("cjpeg -version && djpeg -version"))
            GTEST_SKIP() << "libjpeg-turbo-progs is not installed";
    }
    // Smooth shapes, edges and some noise.
    void WritePicture(int nWidth, int nHeight)
    {
        std::mt19937 random((unsigned)nWidth);
        std::string str = "P6\n" + std::to_string(nWidth) + " " + std::to_string(nHeight) + "\n255\n";
        for (int y = 0; y < nHeight; ++y)
            for (int x = 0; x < nWidth; ++x)
            {
                const bool bInside = (x - nWidth / 2) * (x - nWidth / 2) + (y - nHeight / 2) * (y - nHeight / 2) < 900;
                const int nNoise = (int)(random() % 24);
                str += { (char)(bInside ? 250 - nNoise : x * 200 / nWidth + nNoise), (char)(y * 220 / nHeight + nNoise),
                         (char)(bInside ? nNoise : 255 - x % 256) };
            }
        WriteFile(Path("in.ppm"), str);
    }
    testing::AssertionResult ReadsAsTheirs(const std::string &strArguments)
    {
        if (!Run("cjpeg -baseline " + strArguments +
                 " in.ppm > x.jpg && djpeg -dct int -nosmooth -rgb -ppm x.jpg > out.ppm"))
            return testing::AssertionFailure() << "they fail";
        std::string strTheirs = ReadFile(Path("out.ppm"));
        for (s_lSimdLimit = SIMD_BASE; s_lSimdLimit <= SIMD_AVX2; ++s_lSimdLimit)
        {
            if (m_Bitmap.Load("x.jpg", 0) != 1)
                return testing::AssertionFailure() << LastError();
            const std::string strOurs = "P6\n" + std::to_string(m_Bitmap.m_lWidth) + " " +
                                        std::to_string(m_Bitmap.m_lHeight) + "\n255\n" + Pixels();
            if (strOurs != strTheirs)
                return testing::AssertionFailure() << "the pixels differ";
        }
        return ReadsAsModel(ReadFile(Path("x.jpg")));
    }
};

TEST_F(CDjpeg, SamplingsAndSizes)
{
    for (int nWidth : { 1, 2, 7, 8, 9, 16, 17, 33, 100, 163 })
    {
        WritePicture(nWidth, 1 + nWidth * 2 / 3);
        for (const char *psz : { "-grayscale", "-sample 1x1", "-sample 2x1", "-sample 2x2", "-sample 1x2",
                                 "-sample 4x1", "-sample 1x4", "-sample 4x2", "-sample 3x1", "-sample 2x2 -restart 1B",
                                 "-sample 2x1 -restart 1", "-optimize -sample 2x2,2x1,1x2", "-grayscale -sample 2x2" })
            EXPECT_TRUE(ReadsAsTheirs(psz)) << nWidth << " " << psz;
    }
}

TEST_F(CDjpeg, Qualities)
{
    WritePicture(120, 90);
    for (int nQuality = 1; nQuality <= 100; nQuality += nQuality < 96 ? 7 : 1)
        for (const char *psz : { "", " -optimize", " -optimize -dct float -sample 1x1" })
            EXPECT_TRUE(ReadsAsTheirs("-quality " + std::to_string(nQuality) + psz)) << nQuality << psz;
    ASSERT_TRUE(Run("cjpeg -progressive in.ppm > x.jpg"));
    EXPECT_EQ(0, m_Bitmap.Load("x.jpg", 0));
    EXPECT_EQ("Unhandle jpeg format. We only support baseline jpegs!", LastError());
    // The next failure has a text of its own.
    WriteFile("cut.jpg", "\xff\xd8");
    EXPECT_EQ(0, m_Bitmap.Load("cut.jpg", 0));
    EXPECT_EQ("JPG - Damaged or cut off", LastError());
}
#endif
} // namespace
