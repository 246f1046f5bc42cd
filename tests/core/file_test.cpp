#include "tarvix/file.h"

#include "support.h"

#include <cmath>

using CFileTest = CFolderTest;

static std::string Bytes(size_t ulCount)
{
    std::string str;
    for (size_t i = 0; i < ulCount; ++i)
        str += (char)(unsigned char)i;
    return str;
}

TEST_F(CFileTest, BoundsBindPositionsNotTransfers)
{
    WriteFile("data", Bytes(200));
    CFile file;
    xulong ulSize = 0, ulPos = 0;
    signed char c = 0;
    ASSERT_EQ(1, file.Open("data", FILE_READ));
    file.SetFileBounds(100, 20);
    EXPECT_EQ(1, file.GetSize(&ulSize));
    EXPECT_EQ(20u, ulSize);
    EXPECT_EQ(1, file.Seek(5, FILE_SEEK_START));
    EXPECT_EQ(1, file.ReadByte(&c));
    EXPECT_EQ(105, c);
    EXPECT_EQ(1, file.GetPos(&ulPos, 0));
    EXPECT_EQ(6u, ulPos);
    EXPECT_EQ(1, file.GetPos(&ulPos, FILE_ABSOLUTE));
    EXPECT_EQ(106u, ulPos);
    EXPECT_EQ(1, file.Seek(-1, FILE_SEEK_END));
    unsigned char ucBuffer[4];
    EXPECT_EQ(1, file.Read(ucBuffer, 4)) << "a read may run past the bounds";
    EXPECT_EQ(119, ucBuffer[0]);
    EXPECT_EQ(122, ucBuffer[3]);
    EXPECT_EQ(1, file.Seek(3, FILE_SEEK_START | FILE_ABSOLUTE));
    EXPECT_EQ(1, file.Seek(2, FILE_SEEK_CUR));
    EXPECT_EQ(1, file.ReadByte(&c));
    EXPECT_EQ(5, c);
    file.SetFileBounds(150, 0);
    EXPECT_EQ(1, file.GetSize(&ulSize));
    EXPECT_EQ(50u, ulSize) << "without a length to the end of the file";
    EXPECT_EQ(1, file.Seek(0, FILE_SEEK_END));
    EXPECT_EQ(1, file.GetPos(&ulPos, FILE_ABSOLUTE));
    EXPECT_EQ(200u, ulPos);
    EXPECT_EQ(0, file.Seek(-500, FILE_SEEK_START));
    EXPECT_EQ("Seek error", LastError());
}

TEST_F(CFileTest, TypedTransfersFollowTheByteOrder)
{
    for (int lOrder : { 0, (int)FILE_LITTLE_ENDIAN, (int)FILE_BIG_ENDIAN })
    {
        SCOPED_TRACE(lOrder == FILE_BIG_ENDIAN ? "big" : lOrder ? "little" : "no order told");
        CFile file;
        ASSERT_EQ(1, file.Open("typed", FILE_WRITE | lOrder));
        EXPECT_EQ(1, file.WriteWord(0x0102));
        EXPECT_EQ(1, file.WriteLong(0x01020304));
        EXPECT_EQ(1, file.WriteFloat(1.0f));
        EXPECT_EQ(1, file.WriteDouble(1.0));
        file.Close();
        file.Close();
        const bool bBig = lOrder == FILE_BIG_ENDIAN;
        const std::string strBytes = ReadFile("typed");
        ASSERT_EQ(18u, strBytes.size());
        EXPECT_EQ(bBig ? std::string("\1\2\1\2\3\4", 6) : std::string("\2\1\4\3\2\1", 6), strBytes.substr(0, 6));
        EXPECT_EQ(bBig ? 0x3f : 0, (unsigned char)strBytes[6]);
        EXPECT_EQ(bBig ? 0x3f : 0, (unsigned char)strBytes[10]);

        short s = 0;
        xlong l = 0;
        float f = 0;
        double d = 0;
        ASSERT_EQ(1, file.Open("typed", FILE_READ | lOrder));
        EXPECT_TRUE(file.ReadWord(&s) && file.ReadLong(&l) && file.ReadFloat(&f) && file.ReadDouble(&d));
        EXPECT_EQ(0x0102, s);
        EXPECT_EQ(0x01020304, l);
        EXPECT_EQ(1.0f, f);
        EXPECT_EQ(1.0, d);
        EXPECT_EQ(0, file.ReadWord(&s));
        EXPECT_EQ("End of file reached", LastError());
    }
}

TEST_F(CFileTest, ModesAndTheirFailures)
{
    const struct
    {
        const char *pszPath;
        xlong lFlags;
        const char *pszAccess;
    } cases[] = {
        { "missing", FILE_READ, "read" },
        { "missing", FILE_READWRITE, "read and write" },
        { "no/folder", FILE_WRITE, "write" },
        { "no/folder", FILE_APPEND, "append" },
        { "missing", FILE_READ | FILE_MAKE_DIRS, "read" },
        { "", FILE_READ, "read" },
    };
    for (const auto &c : cases)
    {
        CFile file;
        EXPECT_EQ(0, file.Open(c.pszPath, c.lFlags)) << c.pszPath << ", " << c.pszAccess;
        EXPECT_EQ(std::string("Unable to open file \"") + c.pszPath + "\" with " + c.pszAccess + " access",
                  LastError());
    }
    EXPECT_FALSE(std::filesystem::exists("no"));
    const std::string strLong(5000, 'n');
    EXPECT_EQ(0, CFile().Open(strLong.c_str(), FILE_READ));

    CFile file;
    EXPECT_EQ(1, file.Open("new/deep\\er/file", FILE_WRITE | FILE_MAKE_DIRS));
    file.Close();
    EXPECT_TRUE(std::filesystem::exists("new/deep/er/file"));
    EXPECT_EQ(1, file.Open((m_Folder / "abs/olute/file").string().c_str(), FILE_WRITE | FILE_MAKE_DIRS));
    file.Write("abc", 3);
    file.Close();
    EXPECT_EQ("abc", ReadFile("abs/olute/file"));
    EXPECT_EQ(m_Folder, std::filesystem::current_path());
    EXPECT_EQ(1, file.Open("NEW\\Deep/ER\\FILE", FILE_READ)) << "names differ in case alone";
}

TEST_F(CFileTest, LinesBytesAndPrint)
{
    CFile file;
    ASSERT_EQ(1, file.Open("text", FILE_WRITE));
    EXPECT_EQ(1, file.Print("%s %d\n", "line", 1));
    EXPECT_EQ(1, file.Print("%s", std::string(10000, 'x').c_str()));
    EXPECT_EQ(1, file.Print("%s", std::string(10001, 'y').c_str()));
    file.Close();
    EXPECT_EQ("line 1\n" + std::string(10000, 'x') + "**** STRING TO LONG ****\n", ReadFile("text"));

    WriteFile("text", "one\r\ntwo");
    char szLine[16];
    signed char c;
    ASSERT_EQ(1, file.Open("text", FILE_READ));
    EXPECT_EQ(5, file.ReadString(szLine, 16));
    EXPECT_STREQ("one\r\n", szLine);
    EXPECT_EQ(3, file.ReadString(szLine, 16));
    glb->m_Error.Clear();
    EXPECT_EQ(0, file.ReadString(szLine, 16));
    EXPECT_EQ(0, file.ReadByte(&c));
    EXPECT_EQ("", LastError()) << "the end is no error here";
    EXPECT_EQ(0, file.Write("x", 1) && file.Flush());
    EXPECT_EQ("Write error", LastError());
    file.Close();
    EXPECT_EQ(0, file.ReadByte(&c));
    EXPECT_EQ("Read error", LastError());
    xulong ul;
    EXPECT_EQ(0, file.GetPos(&ul, 0));
    EXPECT_EQ("Unable to get the position in the file", LastError());
}

#ifndef _WIN32
TEST_F(CFileTest, AFullDiskIsReported)
{
    EXPECT_EQ(0, xWriteFile("/dev/full", "x", 1));
    EXPECT_EQ("Write error", LastError());
    WriteFile("data", Bytes(5000));
    EXPECT_EQ(0, xCopyFile("/dev/full", "data"));
    EXPECT_EQ("Write error", LastError());
}
#endif
