#include "tarvix/pictype.h"

#include "allocations.h"
#include "core/heap.h"
#include "slots.h"
#include "support.h"
#include "tarvix/bitmap.h"

#include <random>

namespace
{
void Put(std::string &str, unsigned long ulValue, int nBytes)
{
    for (; nBytes > 0; --nBytes, ulValue >>= 8)
        str += (char)ulValue;
}

// The fields of a file. Those that are not set are right for a plain 8-bit picture.
struct TBmp
{
    unsigned long ulType = 0x4d42, ulOffset = 0, ulInfoSize = 40, ulWidth = 1, ulHeight = 1, ulBits = 8;
    unsigned long ulCompression = 0, ulColours = 2;
    std::string strTable = std::string("\1\2\3\0\4\5\6\0", 8);
    std::string strRows;

    std::string Bytes() const
    {
        const unsigned long ulTable = ulBits == 8 ? (unsigned long)strTable.size() : 0;
        std::string str;
        Put(str, ulType, 2);
        Put(str, 0, 8);
        Put(str, ulOffset ? ulOffset : 54 + ulTable, 4);
        Put(str, ulInfoSize, 4);
        Put(str, ulWidth, 4);
        Put(str, ulHeight, 4);
        Put(str, 1, 2);
        Put(str, ulBits, 2);
        Put(str, ulCompression, 4);
        Put(str, 0, 12);
        Put(str, ulColours, 4);
        Put(str, 0, 4);
        return str + strTable.substr(0, ulTable) + strRows;
    }
};

class CBmpTest : public CFolderTest
{
protected:
    long LoadBytes(CBitmap &bitmap, const std::string &strBytes)
    {
        WriteFile(Path("x.bmp"), strBytes);
        return bitmap.Load("x.bmp", 0);
    }
    std::string Rows(const CBitmap &bitmap)
    {
        return std::string((const char *)bitmap.m_pData, (size_t)bitmap.m_lPitch * bitmap.m_lHeight);
    }
    // Reads where a copy would.
    void Touch(CBitmap &bitmap)
    {
        CBitmap target;
        ASSERT_EQ(1, target.CreateRGB(20, 20, 24, 8, 8, 8, 0, 8, 16, 0));
        target.Blt(&bitmap, 0, 0, 0, 0, -1, -1, 0, 0, 0);
    }
    std::string Scrambled(std::string str)
    {
        str += "XICRYPTEDFILE";
        for (char &c : str)
            c ^= 0x3c;
        return str;
    }

    CBMPPic m_Type;
};

std::string Hex(const char *psz)
{
    std::string str;
    for (; *psz; psz += psz[2] ? 3 : 2)
        str += (char)std::stoi(std::string(psz, 2), nullptr, 16);
    return str;
}

TEST_F(CBmpTest, ReadsPlainRowsBottomUp)
{
    TBmp bmp;
    bmp.ulWidth = 3;
    bmp.ulHeight = 2;
    bmp.strRows = "abc.def.";
    CBitmap bitmap;
    ASSERT_EQ(1, LoadBytes(bitmap, bmp.Bytes()));
    EXPECT_EQ("defabc", Rows(bitmap));
    EXPECT_EQ(0, bitmap.m_bRGB);
    EXPECT_EQ(3, bitmap.m_lPitch);
    EXPECT_EQ(2, bitmap.m_rcClip.m_lRight);
    EXPECT_EQ(TRGBA(3, 2, 1, 255), bitmap.m_pPalette->m_Colors[0]);
    EXPECT_EQ(TRGBA(6, 5, 4, 255), bitmap.m_pPalette->m_Colors[1]);
    EXPECT_EQ(2, bitmap.m_pPalette->m_Colors[2].ucGreen) << "the ramp of a new palette";
    bitmap.Free();

    bmp.ulBits = 24;
    bmp.ulWidth = bmp.ulHeight = 1;
    bmp.strRows = "abc";
    ASSERT_EQ(1, LoadBytes(bitmap, bmp.Bytes())) << "the padding of the last row is passed over, not read";
    EXPECT_EQ("abc", Rows(bitmap));
    EXPECT_EQ(1, bitmap.m_bRGB);
    EXPECT_EQ(24, bitmap.m_lDepth);
    EXPECT_EQ(16, bitmap.m_lBlueShift);

    // Words under the members of 24 bits.
    bmp.ulBits = 16;
    bmp.ulWidth = 2;
    bmp.strRows = "abcd";
    ASSERT_EQ(1, LoadBytes(bitmap, bmp.Bytes()));
    EXPECT_EQ("abcd", Rows(bitmap));
    EXPECT_EQ(8, bitmap.m_lRedBits);
    Touch(bitmap);
    EXPECT_EQ(1, bitmap.ConvertRGB(-1, -1, 24, 8, 8, 8, 0, 8, 16, 0));
}

TEST_F(CBmpTest, ScrambledFilesReadAlike)
{
    for (const char *pszRows : { "61 62 63 00 64 65 66 00", "03 61 00 00 00 03 64 65 66 00 00 01" })
    {
        TBmp bmp;
        bmp.ulWidth = 3;
        bmp.ulHeight = 2;
        bmp.strRows = Hex(pszRows);
        bmp.ulCompression = bmp.strRows[0] == 3;
        CBitmap plain, scrambled;
        ASSERT_EQ(1, LoadBytes(plain, bmp.Bytes()));
        ASSERT_EQ(1, LoadBytes(scrambled, Scrambled(bmp.Bytes())));
        EXPECT_EQ(Rows(plain), Rows(scrambled));
        EXPECT_EQ(plain.m_pPalette->m_Colors[1], scrambled.m_pPalette->m_Colors[1]);
    }
}

struct TRunCase
{
    const char *pszRuns;
    const char *pszPicture; // top row first, 4 by 3; null: an error
};

TEST_F(CBmpTest, Runs)
{
    const TRunCase aCases[] = {
        { "04 61 00 00 04 62 00 00 04 63 00 01", "ccccbbbbaaaa" },
        { "00 04 61 62 63 64 00 00 02 65 00 00 01 66 00 01", "f...ee..abcd" },
        { "00 03 61 62 63 78 01 64 00 01", "........abcd" },
        { "02 61 00 02 01 01 01 62 00 01", ".......baa.." },
        { "00 02 03 02 01 61 00 01", "...a........" },
        { "00 01", "............" },
        { "04 61 00 00 04 62 00 00 04 63 00 00 00 01", "ccccbbbbaaaa" },
        { "00 00 00 00 00 00 00 00 00 00 00 01", "............" },
        { "00 02 ff ff 00 02 ff ff 00 01", "............" },
        // Without an end, or cut off in a run.
        { "04 61 00 00 04 62 00 00 04 63 00 00", nullptr },
        { "04", nullptr },
        { "00 04 61 62 63", nullptr },
        { "00 03 61 62 63", nullptr },
        { "00 02 01", nullptr },
        { "", nullptr },
        // Out of the row, the picture, and both.
        { "05 61 00 01", nullptr },
        { "03 61 02 62 00 01", nullptr },
        { "00 05 61 62 63 64 65 00 00 01", nullptr },
        { "ff 61 00 01", nullptr },
        { "00 02 04 00 01 61 00 01", nullptr },
        { "00 02 00 03 01 61 00 01", nullptr },
        { "00 00 00 00 00 00 01 61 00 01", nullptr },
        { "00 02 ff ff 04 61 00 01", nullptr },
    };
    for (const TRunCase &c : aCases)
    {
        TBmp bmp;
        bmp.ulWidth = 4;
        bmp.ulHeight = 3;
        bmp.ulCompression = 1;
        bmp.strRows = Hex(c.pszRuns);
        CBitmap bitmap;
        ASSERT_EQ(c.pszPicture != nullptr, LoadBytes(bitmap, bmp.Bytes()) == 1) << c.pszRuns;
        if (!c.pszPicture)
        {
            EXPECT_EQ("Error reading file", LastError()) << c.pszRuns;
            continue;
        }
        std::string strPicture = Rows(bitmap);
        std::replace(strPicture.begin(), strPicture.end(), '\0', '.');
        EXPECT_EQ(c.pszPicture, strPicture) << c.pszRuns;
    }
    // Rows of 3 that are padded to 4, and one that is padded to 5.
    TBmp bmp;
    bmp.ulWidth = 3;
    bmp.ulHeight = 2;
    bmp.ulCompression = 1;
    bmp.strRows = Hex("03 61 01 00 00 00 00 04 62 63 64 7a 00 01");
    CBitmap padded;
    ASSERT_EQ(1, LoadBytes(padded, bmp.Bytes()));
    EXPECT_EQ("bcdaaa", Rows(padded));
    bmp.strRows = Hex("03 61 01 00 01 00 00 01");
    EXPECT_EQ(0, LoadBytes(padded, bmp.Bytes()));
    delete padded.m_pPalette;
    padded.m_pPalette = nullptr;

    // At other depths the runs are of bytes.
    bmp.ulWidth = bmp.ulHeight = 1;
    bmp.ulBits = 24;
    bmp.ulCompression = 1;
    bmp.strRows = Hex("02 61 01 62 00 01");
    CBitmap bitmap;
    ASSERT_EQ(1, LoadBytes(bitmap, bmp.Bytes()));
    EXPECT_EQ("aab", Rows(bitmap));
}

struct THostileCase
{
    const char *pszName;
    unsigned long TBmp::*pField;
    unsigned long ulValue;
    const char *pszError; // null: reads
};

TEST_F(CBmpTest, HostileHeaders)
{
    const THostileCase aCases[] = {
        { "type", &TBmp::ulType, 0x4d43, "BMP - Not a (windows) bitmap file" },
        { "core header", &TBmp::ulInfoSize, 12, "BMP - Unsupported bitmap file format. (BITMAPCOREHEADER)" },
        { "long header", &TBmp::ulInfoSize, 124, "BMP - Unsupported bitmap file format." },
        { "4 bits", &TBmp::ulBits, 4, "BMP - Unsupported number of colors (<256)" },
        { "bit fields", &TBmp::ulCompression, 3, "BMP - There is no support for compressed bitmaps which aren't 8bit" },
        { "too many colours", &TBmp::ulColours, 257, "BMP - Failed to read colortable" },
        { "many colours", &TBmp::ulColours, 0xffffffff, "BMP - Failed to read colortable" },
        { "colours that wrap", &TBmp::ulColours, 0x40000001, "BMP - Failed to read colortable" },
        { "offset behind the end", &TBmp::ulOffset, 5000, "Error reading file" },
        { "negative offset", &TBmp::ulOffset, 0x80000000, "Error reading file" },
        { "top down", &TBmp::ulHeight, 0xffffffff, "Out of memory" },
        { "negative width", &TBmp::ulWidth, 0xfffffffc, "Out of memory" },
        { "most negative", &TBmp::ulWidth, 0x80000000, "Out of memory" },
        { "width of 2 GB", &TBmp::ulWidth, 0x7fffffff, "Out of memory" },
        { "height of 1 GB", &TBmp::ulHeight, 0x40000000, "Error reading file" },
        { "width of 16 MB", &TBmp::ulWidth, 0x1000000, "Error reading file" },
        { "no width", &TBmp::ulWidth, 0, nullptr },
        { "no height", &TBmp::ulHeight, 0, nullptr },
        { "9 bits", &TBmp::ulBits, 9, nullptr },
        { "2072 bits", &TBmp::ulBits, 0x818, "Error reading file" },
        { "65535 bits", &TBmp::ulBits, 65535, "Error reading file" },
    };
    for (const THostileCase &c : aCases)
        for (unsigned long ulCompression : { 0, 1 })
        {
            TBmp bmp;
            bmp.ulCompression = ulCompression;
            bmp.strRows = ulCompression ? Hex("01 61 00") : "abcd";
            bmp.*c.pField = c.ulValue;
            const size_t ulHeld = HeapState().ulHeldBytes;
            CBitmap bitmap;
            const long lResult = LoadBytes(bitmap, bmp.Bytes());
            Touch(bitmap);
            EXPECT_LT(HeapState().ulHeldBytes, ulHeld + 0x8000000) << c.pszName << ": a header alone took memory";
            if (ulCompression)
                EXPECT_EQ(0, lResult) << c.pszName;
            else if (!c.pszError)
                EXPECT_EQ(1, lResult) << c.pszName << LastError();
            else
                EXPECT_EQ(c.pszError, lResult ? "" : LastError()) << c.pszName;
        }
}

TEST_F(CBmpTest, CutOffAtEveryByte)
{
    TBmp aBmp[3];
    aBmp[0].ulWidth = aBmp[1].ulWidth = aBmp[2].ulWidth = 5;
    aBmp[0].ulHeight = aBmp[1].ulHeight = aBmp[2].ulHeight = 3;
    aBmp[0].strRows = std::string(24, 'r');
    aBmp[1].ulBits = 24;
    aBmp[1].strRows = std::string(48, 'r');
    aBmp[2].ulCompression = 1;
    aBmp[2].strRows = Hex("05 61 00 00 00 05 61 62 63 64 65 00 00 00 02 62 00 01");
    const size_t aulPadding[] = { 3, 1, 0 }; // of the last row, which may be missing
    for (int i = 0; i < 3; ++i)
        for (bool bScrambled : { false, true })
        {
            const std::string strWhole = aBmp[i].Bytes();
            CBitmap bitmap;
            for (size_t ulSize = 0; ulSize <= strWhole.size(); ++ulSize)
            {
                const std::string strCut = strWhole.substr(0, ulSize);
                const long lResult = LoadBytes(bitmap, bScrambled ? Scrambled(strCut) : strCut);
                // A mark behind the cut can stand in for what is missing.
                if (!bScrambled)
                    ASSERT_EQ(ulSize >= strWhole.size() - aulPadding[i], lResult == 1) << i << ", " << ulSize;
                if (!lResult && !bScrambled)
                    ASSERT_EQ(ulSize < 54                          ? "BMP - Failed to read file header"
                              : ulSize < 62 && aBmp[i].ulBits == 8 ? "BMP - Failed to read colortable"
                                                                   : "Error reading file",
                              LastError())
                        << i << ", " << ulSize;
                Touch(bitmap);
                delete bitmap.m_pPalette; // the next picture would not
                bitmap.m_pPalette = nullptr;
            }
        }
}

TEST_F(CBmpTest, FailedAllocations)
{
    TBmp bmp;
    bmp.strRows = "abcd";
    WriteFile(Path("x.bmp"), bmp.Bytes());
    FailEachAllocation(
        [](auto arm)
        {
            CBitmap bitmap;
            arm();
            const bool bOk = bitmap.Load("x.bmp", 0) == 1;
            EXPECT_TRUE(bOk || LastError() == "Out of memory"); // a palette does without its name
            return bOk;
        });
}

TEST_F(CBmpTest, WritesWhatItHolds)
{
    CBitmap bitmap;
    CPalette palette;
    palette.m_Colors[2].Set(1, 2, 3, 4);
    ASSERT_EQ(1, bitmap.CreateIndex(3, 2, 8, &palette, 0));
    memcpy(bitmap.m_pData, "abc.def.", 8);
    ASSERT_EQ(1, bitmap.Save("a.bmp", nullptr, nullptr, nullptr, 0));
    std::string strFile = ReadFile(Path("a.bmp"));
    ASSERT_EQ(54u + 1024 + 8, strFile.size());
    EXPECT_EQ("def.abc.", strFile.substr(54 + 1024));
    EXPECT_EQ(Hex("42 4d 3e 04 00 00 00 00 00 00 36 04 00 00 28 00 00 00 03 00 00 00 02 00 00 00 01 00 08 00"),
              strFile.substr(0, 30));
    EXPECT_EQ(std::string(24, 0), strFile.substr(30, 24));
    EXPECT_EQ(Hex("03 02 01 00"), strFile.substr(54 + 8, 4));

    // Blue first: as it is, padding or not.
    ASSERT_EQ(1, bitmap.CreateRGB(1, 2, 24, 8, 8, 8, 0, 8, 16, 0));
    memcpy(bitmap.m_pData, "abc.def.", 8);
    ASSERT_EQ(1, bitmap.Save("a.bmp", nullptr, nullptr, nullptr, 2));
    EXPECT_EQ("def.abc.", ReadFile(Path("a.bmp")).substr(54));
    bitmap.m_lPitch = 3;
    ASSERT_EQ(1, bitmap.Save("a.bmp", nullptr, nullptr, nullptr, 0));
    EXPECT_EQ("c.dabc", "c.d" + ReadFile(Path("a.bmp")).substr(57));

    // Red first: exchanged up to the pixel that crosses the pitch, which is
    // zero behind the block.
    ASSERT_EQ(1, bitmap.CreateRGB(1, 2, 24, 8, 8, 8, 16, 8, 0, 0));
    memcpy(bitmap.m_pData, "abc.def.", 8);
    ASSERT_EQ(1, bitmap.Save("a.bmp", nullptr, nullptr, nullptr, 0));
    EXPECT_EQ(std::string("fed\0\0.", 6) + "cbaed.", ReadFile(Path("a.bmp")).substr(54));
    ASSERT_EQ(1, bitmap.Save("a.bmp", nullptr, nullptr, nullptr, 2));
    EXPECT_EQ(std::string("cbaed.fed\0\0.", 12), ReadFile(Path("a.bmp")).substr(54));

    CRect rcArea;
    EXPECT_EQ(0, bitmap.Save("b.bmp", nullptr, nullptr, &rcArea, 0));
    EXPECT_EQ("BMP - Feature isnt implemented yet", LastError());
    EXPECT_EQ("", ReadFile(Path("b.bmp")));
    ASSERT_EQ(1, bitmap.CreateIndex(3, 2, 8, nullptr, 0));
    EXPECT_EQ(0, bitmap.Save("b.bmp", nullptr, nullptr, nullptr, 0));
    bitmap.Free();
    EXPECT_EQ(0, bitmap.Save("b.bmp", nullptr, nullptr, nullptr, 0));
    std::filesystem::create_directory("folder.bmp");
    EXPECT_EQ(0, bitmap.Save("folder.bmp", nullptr, nullptr, nullptr, 0));
    EXPECT_EQ("BMP - Unable to open file", LastError());
}

TEST_F(CBmpTest, TypesAreFoundByExtension)
{
    CPicTypeList &list = *glb->m_pPicTypeList;
    const xlong lBefore = list.NumTypes();
    EXPECT_EQ(&m_Type, list.GetType("a.b/c.BmP"));
    EXPECT_EQ(nullptr, list.GetType("bmp"));
    EXPECT_EQ(nullptr, list.GetType("a.bmp.txt"));
    EXPECT_EQ(nullptr, list.GetType("a."));
    const char *pszExtension = nullptr, *pszDescription = nullptr;
    list.First();
    ASSERT_TRUE(list.Exists());
    EXPECT_EQ(&m_Type, list.GetDesc(&pszExtension, &pszDescription));
    EXPECT_STREQ("bmp", pszExtension);
    EXPECT_STREQ("Windows Bitmap", pszDescription);
    EXPECT_EQ(1, m_Type.GetDesc(nullptr, nullptr));
    {
        CBMPPic second;
        EXPECT_EQ(lBefore + 1, list.NumTypes());
        EXPECT_STREQ("BMP - No error", second.GetError());
        EXPECT_EQ(7, second.SetError("text", 7));
        EXPECT_STREQ("text", second.GetError());
    }
    EXPECT_EQ(lBefore, list.NumTypes()) << "a deleted type must leave the list";
    list.UnregisterAll();
    EXPECT_EQ(0, list.NumTypes());
}

TEST_F(CBmpTest, OperationsLieWhereHostsLookForThem)
{
    typedef xlong (CPicType::*TLoad)(CFile *, CBitmapBase *, void *);
    typedef xlong (CPicType::*TLoadName)(const char *, CBitmapBase *, void *);
    typedef xlong (CPicType::*TSave)(CFile *, CBitmapBase *, void *, CRect *, xlong);
    typedef xlong (CPicType::*TSaveName)(const char *, CBitmapBase *, void *, CRect *, xlong);
    ExpectSlots(0, (TLoad)&CPicType::Load, (TLoadName)&CPicType::Load, (TSave)&CPicType::Save,
                (TSaveName)&CPicType::Save, &CPicType::IsType, &CPicType::GetDesc, &CPicType::SetError,
                &CPicType::GetError);
    EXPECT_EQ((int)sizeof(void *), OffsetOf(m_Type, m_Type.m_pszError));
}

#ifndef _WIN32
// Another program's reading and writing of the same pictures.
class CMagick : public CBmpTest
{
protected:
    bool Convert(const std::string &strArguments)
    {
        return std::system(("convert " + strArguments + " 2>/dev/null").c_str()) == 0;
    }
    void SetUp() override
    {
        if (!Convert("-version >/dev/null"))
            GTEST_SKIP() << "ImageMagick is not installed";
    }
    // Red, green and blue of every pixel, as we read the file and as the other does.
    std::string OurPixels(CBitmap &bitmap)
    {
        std::string str;
        for (xlong y = 0; y < bitmap.m_lHeight; ++y)
            for (xlong x = 0; x < bitmap.m_lWidth; ++x)
            {
                TRGBA colour;
                bitmap.GetPixel(x, y, &colour);
                str += { (char)colour.ucRed, (char)colour.ucGreen, (char)colour.ucBlue };
            }
        return str;
    }
};

TEST_F(CMagick, ReadsTheirFiles)
{
    const char *const apszKinds[] = { "-type truecolor", "-colors 200 -type palette", "-colors 7 -type palette",
                                      "-colors 16 -type palette -compress RLE",
                                      "-colors 200 -type palette -compress RLE" };
    const int anWidths[] = { 1, 2, 3, 4, 5, 31, 131, 300 };
    int nRuns = 0;
    for (const char *pszKind : apszKinds)
    {
        // The pixels as they go into the file; it does not read all of its own files right.
        std::string strCommand = "-seed 5";
        for (int nWidth : anWidths)
        {
            const std::string strWidth = std::to_string(nWidth);
            strCommand += " -size " + strWidth + "x" + std::to_string(nWidth / 2 + 3) +
                          " plasma: -posterize 5 -depth 8 " + pszKind + " -write rgb:" + strWidth +
                          ".rgb -write BMP3:" + strWidth + ".bmp +delete";
        }
        ASSERT_TRUE(Convert(strCommand + " xc:black null:"));
        for (int nWidth : anWidths)
        {
            const std::string strName = std::to_string(nWidth);
            // Few colours can make it write fewer bits.
            const std::string strFile = ReadFile(Path(strName + ".bmp"));
            ASSERT_GT(strFile.size(), 54u);
            if (strFile[28] < 8)
                continue;
            nRuns += strFile[30] == 1;
            CBitmap bitmap;
            ASSERT_EQ(1, bitmap.Load((strName + ".bmp").c_str(), 0)) << pszKind << ", " << nWidth << LastError();
            ASSERT_EQ(ReadFile(Path(strName + ".rgb")), OurPixels(bitmap)) << pszKind << ", " << nWidth;
        }
    }
    EXPECT_GT(nRuns, 3) << "no compressed files were made";
}

TEST_F(CMagick, ReadTheirWayWhatWeWrite)
{
    std::mt19937 random(3);
    std::vector<std::string> pixels;
    std::string strCommand = "-depth 8";
    for (int nKind = 0; nKind < 3; ++nKind)
        for (xlong lWidth : { 1, 4, 5, 7, 32, 61 })
        {
            if (nKind == 2 && lWidth % 4)
                continue; // red first, rows of such widths are written with more than their padding
            CBitmap bitmap;
            CPalette palette;
            for (TRGBA &colour : palette.m_Colors)
                colour = TRGBA((unsigned char)random(), (unsigned char)random(), (unsigned char)random());
            if (nKind == 0)
                ASSERT_EQ(1, bitmap.CreateIndex(lWidth, 9, 8, &palette, 0));
            else
                ASSERT_EQ(1, bitmap.CreateRGB(lWidth, 9, 24, 8, 8, 8, nKind == 1 ? 0 : 16, 8, nKind == 1 ? 16 : 0, 0));
            for (xlong i = 0; i < bitmap.m_lPitch * 9; ++i)
                bitmap.m_pData[i] = (unsigned char)random();
            const std::string strName = std::to_string(pixels.size());
            ASSERT_EQ(1, bitmap.Save((strName + ".bmp").c_str(), nullptr, nullptr, nullptr, 0));
            pixels.push_back(OurPixels(bitmap));
            strCommand += " " + strName + ".bmp -write rgb:" + strName + ".rgb +delete";
        }
    ASSERT_TRUE(Convert(strCommand + " xc:black null:"));
    for (size_t i = 0; i < pixels.size(); ++i)
        EXPECT_EQ(pixels[i], ReadFile(Path(std::to_string(i) + ".rgb"))) << i;
}
#endif
} // namespace
