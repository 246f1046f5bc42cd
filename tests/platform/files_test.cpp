#include "platform/path.h"

#include "support.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>

namespace
{
namespace fs = std::filesystem;

class PlatformFiles : public CFolderTest
{
protected:
    void Make(const std::string &strPath, const std::string &strText = "text")
    {
        fs::create_directories((m_Folder / strPath).parent_path());
        WriteFile(Path(strPath), strText);
    }

    std::string Read(const char *pszPath)
    {
        FILE *pFile = PlatformOpenFile(pszPath, "rb");
        if (!pFile)
            return "(none)";
        char szText[64] = "";
        const size_t ulRead = fread(szText, 1, sizeof(szText) - 1, pFile);
        fclose(pFile);
        return std::string(szText, ulRead);
    }
};

struct TPathCase
{
    const char *pszAsked;
    const char *pszFound; ///< null: what was asked, with the other separators
};

// In a folder with Data/Sub Folder/Picture.BMP, data2/x, Umlaut/ÄÖ.txt and both
// Twice/name and Twice/NAME.
const TPathCase s_Paths[] = {
    { "Data/Sub Folder/Picture.BMP", nullptr },
    { "data\\SUB FOLDER\\picture.bmp", "Data/Sub Folder/Picture.BMP" },
    { ".\\DATA\\sub folder\\..\\Sub folder\\PICTURE.bmp", "./Data/Sub Folder/../Sub Folder/Picture.BMP" },
    { "DATA2\\X", "data2/x" },
    { "data\\new.txt", "Data/new.txt" },
    { "data\\New Folder\\New.txt", "Data/New Folder/New.txt" },
    { "umlaut/\xC3\xA4\xC3\xB6.TXT", "Umlaut/\xC3\x84\xC3\x96.txt" },
    { "twice\\name", "Twice/name" },
    { "twice\\NAME", "Twice/NAME" },
    { "twice\\Name", "Twice/NAME" },
    { "data//picture", "Data//picture" },
    { "c:\\data\\x", "c:/data/x" },
    { "DATA\\", "Data/" },
};
} // namespace

TEST_F(PlatformFiles, PathsAreFoundWithoutRegardToCase)
{
    Make("Data/Sub Folder/Picture.BMP");
    Make("data2/x");
    Make("Umlaut/\xC3\x84\xC3\x96.txt");
    Make("Twice/name");
    Make("Twice/NAME");
    for (const TPathCase &c : s_Paths)
    {
        char szReal[PATH_MAX];
        ASSERT_TRUE(ResolvePath(c.pszAsked, szReal)) << c.pszAsked;
        EXPECT_STREQ(c.pszFound ? c.pszFound : c.pszAsked, szReal);
    }
    const std::string strAbsolute = m_Folder.string() + "/DATA/SUB FOLDER/PICTURE.BMP";
    EXPECT_EQ("text", Read(strAbsolute.c_str()));
}

TEST_F(PlatformFiles, BadPathsFailCleanly)
{
    char szReal[PATH_MAX];
    EXPECT_FALSE(ResolvePath(nullptr, szReal));
    EXPECT_FALSE(ResolvePath("", szReal));
    const std::string strLong(5000, 'a'), strMany = std::string(2000, '/') + std::string(3000, 'b');
    const std::string strDeep = []
    {
        std::string s;
        for (int i = 0; i < 2040; ++i)
            s += "A/";
        return s;
    }();
    EXPECT_FALSE(ResolvePath(strLong.c_str(), szReal));
    EXPECT_EQ(ENAMETOOLONG, errno);
    EXPECT_FALSE(ResolvePath(strMany.c_str(), szReal));
    EXPECT_TRUE(ResolvePath(strDeep.c_str(), szReal));
    // Found by letters of one byte, a name of two bytes a letter has to fit too.
    std::string strTwoBytes;
    for (int i = 0; i < 100; ++i)
        strTwoBytes += "\xC3\xA4";
    fs::create_directory(m_Folder / strTwoBytes);
    char szGuarded[2 * PATH_MAX];
    memset(szGuarded, 'g', sizeof(szGuarded));
    const size_t ulFits = PATH_MAX - 1 - strTwoBytes.size();
    EXPECT_TRUE(ResolvePath((std::string(100, '\xC4') + std::string(ulFits, '/')).c_str(), szGuarded));
    EXPECT_EQ(strTwoBytes + std::string(ulFits, '/'), szGuarded);
    EXPECT_FALSE(ResolvePath((std::string(100, '\xC4') + std::string(ulFits + 1, '/')).c_str(), szGuarded));
    EXPECT_EQ(ENAMETOOLONG, errno);
    EXPECT_EQ(std::string(PATH_MAX, 'g'), std::string(szGuarded + PATH_MAX, PATH_MAX));
    EXPECT_EQ(nullptr, PlatformOpenFile(strLong.c_str(), "rb"));
    EXPECT_EQ(nullptr, PlatformOpenFile(std::string(300, 'n').c_str(), "wb"));
    EXPECT_EQ(nullptr, PlatformOpenFile("", "rb"));
    EXPECT_EQ(nullptr, PlatformOpenFile(".", "rb")) << "a folder is no file";
    EXPECT_EQ(INVALID_FILE_ATTRIBUTES, GetFileAttributesA(strLong.c_str()));
    EXPECT_EQ((DWORD)ERROR_FILENAME_EXCED_RANGE, GetLastError());
}

// In a folder of any case; but a name that differs in case alone is another's.
TEST_F(PlatformFiles, WritingMakesTheFileThatIsNamed)
{
    Make("Folder/Text.txt", "old");
    FILE *pFile = PlatformOpenFile("FOLDER\\TEXT.TXT", "wb");
    ASSERT_NE(nullptr, pFile);
    fputs("new", pFile);
    fclose(pFile);
    EXPECT_EQ("old", Read("Folder/Text.txt"));
    EXPECT_EQ("new", Read("Folder/TEXT.TXT"));
    EXPECT_EQ(2, std::distance(fs::directory_iterator("Folder"), fs::directory_iterator()));
    pFile = PlatformOpenFile("folder\\Other.txt", "wb");
    ASSERT_NE(nullptr, pFile);
    fclose(pFile);
    EXPECT_TRUE(fs::exists("Folder/Other.txt"));
}

TEST_F(PlatformFiles, RemoveAndRename)
{
    Make("a.txt");
    Make("b.txt");
    EXPECT_EQ(-1, PlatformRenameFile("A.TXT", "B.TXT"));
    EXPECT_EQ(EEXIST, errno);
    EXPECT_EQ(0, PlatformRenameFile("A.TXT", "A.txt")) << "only the case changes";
    EXPECT_TRUE(fs::exists("A.txt"));
    EXPECT_EQ(0, PlatformRenameFile("a.TXT", "c.txt"));
    EXPECT_EQ(-1, PlatformRenameFile("missing", "d.txt"));
    EXPECT_EQ(ENOENT, errno);
    EXPECT_EQ(0, _chmod("C.txt", _S_IREAD));
    EXPECT_EQ(FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_ARCHIVE, GetFileAttributesA("c.TXT"));
    EXPECT_EQ(-1, PlatformRemoveFile("c.txt"));
    EXPECT_EQ(EACCES, errno);
    EXPECT_FALSE(DeleteFileA("c.txt"));
    EXPECT_EQ((DWORD)ERROR_ACCESS_DENIED, GetLastError());
    EXPECT_EQ(0, _chmod("C.txt", _S_IREAD | _S_IWRITE));
    EXPECT_EQ(0, PlatformRemoveFile("C.TXT"));
    EXPECT_TRUE(DeleteFileA("B.txt"));
    EXPECT_FALSE(DeleteFileA("B.txt"));
    EXPECT_EQ((DWORD)ERROR_FILE_NOT_FOUND, GetLastError());
    EXPECT_FALSE(DeleteFileA("nowhere\\B.txt"));
    EXPECT_EQ((DWORD)ERROR_PATH_NOT_FOUND, GetLastError());
    EXPECT_EQ(-1, _chmod("missing", _S_IWRITE));
}

TEST_F(PlatformFiles, Folders)
{
    EXPECT_TRUE(CreateDirectoryA("One", nullptr));
    EXPECT_FALSE(CreateDirectoryA("ONE", nullptr));
    EXPECT_EQ((DWORD)ERROR_ALREADY_EXISTS, GetLastError());
    EXPECT_FALSE(CreateDirectoryA("two\\three", nullptr));
    EXPECT_EQ((DWORD)ERROR_PATH_NOT_FOUND, GetLastError());
    EXPECT_TRUE(CreateDirectoryA("one\\Two", nullptr));
    EXPECT_EQ((DWORD)FILE_ATTRIBUTE_DIRECTORY, GetFileAttributesA("ONE\\TWO"));
    EXPECT_TRUE(SetCurrentDirectoryA("one\\two"));
    char szFolder[PATH_MAX];
    const std::string strExpected = fs::canonical(m_Folder).string() + "/One/Two";
    EXPECT_EQ(strExpected.size(), GetCurrentDirectoryA(sizeof(szFolder), szFolder));
    EXPECT_EQ(strExpected, szFolder);
    EXPECT_EQ(strExpected.size() + 1, GetCurrentDirectoryA((DWORD)strExpected.size(), szFolder)) << "too small";
    EXPECT_EQ(strExpected.size() + 1, GetCurrentDirectoryA(0, nullptr));
    EXPECT_FALSE(SetCurrentDirectoryA("missing"));
    EXPECT_EQ((DWORD)ERROR_FILE_NOT_FOUND, GetLastError());
    Make("One/file");
    EXPECT_FALSE(SetCurrentDirectoryA("..\\file"));
    EXPECT_EQ((DWORD)ERROR_DIRECTORY, GetLastError());
}

TEST_F(PlatformFiles, TimesOfAFile)
{
    Make("old.txt");
    const timespec times[2] = { { 86400, 0 }, { 1000000000, 700 } };
    ASSERT_EQ(0, utimensat(AT_FDCWD, "old.txt", times, 0));
    for (DWORD ulAccess : { (DWORD)GENERIC_READ, 0u })
    {
        const HANDLE hFile = CreateFileA("OLD.TXT", ulAccess, FILE_SHARE_READ, nullptr, OPEN_EXISTING, 0, nullptr);
        ASSERT_NE(INVALID_HANDLE_VALUE, hFile);
        FILETIME written, accessed;
        ASSERT_TRUE(GetFileTime(hFile, nullptr, &accessed, &written));
        // 2001-09-09 01:46:40 UTC, in units of 100 ns since 1601.
        EXPECT_EQ(126444736000000007ULL, (ULONGLONG)written.dwHighDateTime << 32 | written.dwLowDateTime);
        EXPECT_EQ(116445600000000000ULL, (ULONGLONG)accessed.dwHighDateTime << 32 | accessed.dwLowDateTime);
        EXPECT_TRUE(CloseHandle(hFile));
    }
    EXPECT_EQ(INVALID_HANDLE_VALUE, CreateFileA("none", GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr));
    EXPECT_EQ((DWORD)ERROR_FILE_NOT_FOUND, GetLastError());
    EXPECT_EQ(INVALID_HANDLE_VALUE, CreateFileA("old.txt", GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, 0, nullptr));
    EXPECT_EQ(INVALID_HANDLE_VALUE, CreateFileA(".", GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr));
    EXPECT_FALSE(CloseHandle(INVALID_HANDLE_VALUE));
    EXPECT_FALSE(GetFileTime(nullptr, nullptr, nullptr, nullptr));
}

TEST_F(PlatformFiles, TemporaryNamesAreTakenAtOnce)
{
    char szA[MAX_PATH], szB[MAX_PATH];
    const UINT ulA = GetTempFileNameA(m_Folder.c_str(), "QUIL", 0, szA);
    const UINT ulB = GetTempFileNameA(m_Folder.c_str(), "QUIL", 0, szB);
    ASSERT_NE(0u, ulA);
    ASSERT_NE(0u, ulB);
    EXPECT_STRNE(szA, szB);
    EXPECT_TRUE(fs::exists(szA));
    EXPECT_EQ(0u, fs::path(szA).filename().string().find("QUI")) << "three letters count";
    EXPECT_EQ(".tmp", fs::path(szA).extension());
    EXPECT_EQ(0x12u, GetTempFileNameA("x\\", "ab", 0x12, szA));
    EXPECT_STREQ("x\\ab12.tmp", szA) << "a given number makes no file";
    EXPECT_EQ(0u, GetTempFileNameA("missing", "a", 0, szA));
    EXPECT_EQ(0u, GetTempFileNameA(std::string(260, 'a').c_str(), "a", 0, szA));
    char szTemp[PATH_MAX];
    const DWORD ulLength = GetTempPathA(sizeof(szTemp), szTemp);
    ASSERT_EQ(strlen(szTemp), ulLength);
    EXPECT_EQ('/', szTemp[ulLength - 1]);
    EXPECT_EQ(ulLength + 1, GetTempPathA(2, szTemp));
}

TEST_F(PlatformFiles, FindListsInOrder)
{
    for (const char *psz : { "b.TXT", "A.txt", "c.bmp", "noext", ".hidden", "-x" })
        Make(psz, "1234567");
    Make("Folder/x");
    const struct
    {
        const char *pszPattern;
        std::vector<std::string> names;
    } cases[] = {
        { "*", { ".", "..", "-x", ".hidden", "A.txt", "b.TXT", "c.bmp", "Folder", "noext" } },
        { "*.*", { ".", "..", "-x", ".hidden", "A.txt", "b.TXT", "c.bmp", "Folder", "noext" } },
        { ".\\*.TXT", { "A.txt", "b.TXT" } },
        { "FOLDER\\*", { ".", "..", "x" } },
        { "folder\\X", { "x" } },
    };
    for (const auto &c : cases)
    {
        WIN32_FIND_DATAA data;
        std::vector<std::string> names;
        const HANDLE hFind = FindFirstFileA(c.pszPattern, &data);
        ASSERT_NE(INVALID_HANDLE_VALUE, hFind) << c.pszPattern;
        do
        {
            names.push_back(data.cFileName);
            const bool bFolder = names.back() == "Folder" || names.back() == "." || names.back() == "..";
            EXPECT_EQ(bFolder, (data.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0) << data.cFileName;
            EXPECT_EQ(names.back() == ".hidden", (data.dwFileAttributes & FILE_ATTRIBUTE_HIDDEN) != 0);
            if (names.back() == "A.txt")
                EXPECT_EQ(7u, data.nFileSizeLow);
        } while (FindNextFileA(hFind, &data));
        EXPECT_EQ((DWORD)ERROR_NO_MORE_FILES, GetLastError());
        EXPECT_EQ(c.names, names) << c.pszPattern;
        EXPECT_TRUE(FindClose(hFind));
    }
    WIN32_FIND_DATAA data;
    const std::pair<const char *, DWORD> failures[] = { { "*.xyz", ERROR_FILE_NOT_FOUND },
                                                        { "nofolder\\*", ERROR_PATH_NOT_FOUND },
                                                        { "Folder\\", ERROR_FILE_NOT_FOUND },
                                                        { "", ERROR_PATH_NOT_FOUND } };
    for (const auto &[pszPattern, ulError] : failures)
    {
        EXPECT_EQ(INVALID_HANDLE_VALUE, FindFirstFileA(pszPattern, &data));
        EXPECT_EQ(ulError, GetLastError()) << pszPattern;
    }
    EXPECT_FALSE(FindClose(INVALID_HANDLE_VALUE));
}

TEST(PlatformNames, LettersOfSeveralAlphabetsFold)
{
    const struct
    {
        const char *pszUpper, *pszLower;
        bool bSame;
    } cases[] = {
        { "ABC", "abc", true },        { "\u00C0\u00DE", "\u00E0\u00FE", true },
        { "\u0141", "\u0142", true },  { "\u0147", "\u0148", true },
        { "\u0136", "\u0137", true },  { "\u0176", "\u0177", true },
        { "\u0178", "\u00FF", true },  { "\u017D", "\u017E", true },
        { "\u03A9", "\u03C9", true },  { "\u042F\u0401", "\u044F\u0451", true },
        { "\u00D7", "\u00F7", false }, { "\u0142", "\u0143", false },
        { "\u00C4", "A", false },      { "a", "ab", false },
    };
    for (const auto &c : cases)
        EXPECT_EQ(c.bSame, CompareNames(c.pszUpper, c.pszLower) == 0) << c.pszUpper << " " << c.pszLower;
    EXPECT_LT(CompareNames("a", "B"), 0);
    EXPECT_GT(CompareNames("\xFF", "a"), 0) << "bytes that are no UTF-8 count by themselves";
}

TEST(PlatformPattern, DosRules)
{
    const struct
    {
        const char *pszPattern, *pszName;
        bool bMatch;
    } cases[] = {
        { "*", "a.b", true },
        { "*.*", "noext", true },
        { "*.txt", "A.TXT", true },
        { "*.txt", "a.txt.x", false },
        { "*.txt", "a.b.txt", true },
        { "*.t", "a.txt", false },
        { "?", "a", true },
        { "?", "ab", false },
        { "???", "ab", true },
        { "????.txt", "ab.txt", true },
        { "a?c", "abc", true },
        { "a?c", "ac", false },
        { "*.", "noext", true },
        { "*.", "a.b", false },
        { "a.", "a", true },
        { "name.*", "name", true },
        { "name.*", "name.x", true },
        { "*a*b*c*", "xxaxxbxxcxx", true },
        { "*a*b*c*", "xxaxxcxxbxx", false },
        { "", "a", false },
        { "abc", "ab", false },
        { "\xC3\x84*", "\xC3\xA4pfel", true },
        { "x?y", "x\xC3\xA4y", true },
        { "a*a*a*a*a*a*a*a*a*a*a*a*b", "aaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaa", false },
    };
    for (const auto &c : cases)
        EXPECT_EQ(c.bMatch, MatchesPattern(c.pszPattern, c.pszName)) << c.pszPattern << " " << c.pszName;
    EXPECT_FALSE(MatchesPattern(std::string(2000, '?').c_str(), "a")) << "longer than any name";
}

TEST(PlatformPathParts, AreSplitAtTheLastDotAndSeparator)
{
    const struct
    {
        const char *pszPath, *pszDrive, *pszDir, *pszName, *pszExt;
    } cases[] = {
        { "c:\\a\\b.c\\d.e.f", "c:", "\\a\\b.c\\", "d.e", ".f" },
        { "/x/y", "", "/x/", "y", "" },
        { "name", "", "", "name", "" },
        { ".hidden", "", "", "", ".hidden" },
        { "a/b\\", "", "a/b\\", "", "" },
        { "", "", "", "", "" },
    };
    for (const auto &c : cases)
    {
        SCOPED_TRACE(c.pszPath);
        char szDrive[_MAX_DRIVE], szDir[_MAX_DIR], szName[_MAX_FNAME], szExt[_MAX_EXT];
        _splitpath(c.pszPath, szDrive, szDir, szName, szExt);
        EXPECT_STREQ(c.pszDrive, szDrive);
        EXPECT_STREQ(c.pszDir, szDir);
        EXPECT_STREQ(c.pszName, szName);
        EXPECT_STREQ(c.pszExt, szExt);
        _splitpath(c.pszPath, nullptr, nullptr, nullptr, nullptr);
    }
    char szName[_MAX_FNAME];
    _splitpath(std::string(1000, 'q').c_str(), nullptr, nullptr, szName, nullptr);
    EXPECT_EQ(std::string(255, 'q'), szName);
}

TEST(PlatformDrives, RootsAreMountPoints)
{
    EXPECT_EQ((UINT)DRIVE_NO_ROOT_DIR, GetDriveTypeA("C:\\"));
    EXPECT_EQ((UINT)DRIVE_NO_ROOT_DIR, GetDriveTypeA("/no/such/place"));
    EXPECT_GE(GetDriveTypeA("/"), (UINT)DRIVE_REMOVABLE);
    EXPECT_EQ(GetDriveTypeA("/"), GetDriveTypeA(nullptr));
    char szLabel[256] = "x", szSystem[64] = "";
    DWORD ulLongest = 0;
    EXPECT_TRUE(
        GetVolumeInformationA("/", szLabel, sizeof(szLabel), nullptr, &ulLongest, nullptr, szSystem, sizeof(szSystem)));
    EXPECT_GE(ulLongest, 100u);
    EXPECT_NE("", std::string(szSystem));
    EXPECT_FALSE(GetVolumeInformationA("/", nullptr, 0, nullptr, nullptr, nullptr, szSystem, 1));
    EXPECT_FALSE(GetVolumeInformationA("C:\\", szLabel, sizeof(szLabel), nullptr, nullptr, nullptr, nullptr, 0));
    EXPECT_EQ((DWORD)ERROR_PATH_NOT_FOUND, GetLastError());
}
