#include "support.h"

#include "tarvix/llist.h"
#include "tarvix/strings.h"

#include <algorithm>
#include <set>

namespace
{
class CSystemTest : public CFolderTest
{
protected:
    // The strings of a list, which is emptied.
    static std::set<std::string> Take(CLList &list)
    {
        std::set<std::string> strings;
        for (list.First(); list.Exists(); list.Next())
            strings.insert(TakeString((char *)list.Get()));
        list.KillAll();
        return strings;
    }
};
} // namespace

TEST_F(CSystemTest, FilesAreCopiedRenamedAndDeleted)
{
    std::string strData;
    for (int i = 0; i < 1500; ++i)
        strData += (char)(i * 31);
    EXPECT_EQ(0, xFileExists("a"));
    EXPECT_EQ(1, xWriteFile("a", strData.data(), (xulong)strData.size()));
    EXPECT_EQ(1, xFileExists("a"));
    xulong ulSize = 0;
    EXPECT_EQ(1, xFileSize("a", &ulSize));
    EXPECT_EQ(1500u, ulSize);
    EXPECT_EQ(1, xCopyFile("sub/dir/b", "a"));
    EXPECT_EQ(strData, ReadFile("sub/dir/b"));
    WriteFile("empty", "");
    EXPECT_EQ(1, xCopyFile("empty2", "empty"));
    EXPECT_EQ(0u, std::filesystem::file_size("empty2"));
    std::string strRead(1500, 0);
    EXPECT_EQ(1, xReadFile("a", strRead.data(), 1500));
    EXPECT_EQ(strData, strRead);
    EXPECT_EQ(0, xReadFile("a", strRead.data(), 1501) * 0 + xReadFile("empty", strRead.data(), 1));
    EXPECT_EQ("End of file reached", LastError());

    EXPECT_EQ(1, xFileRename("c", "a")) << "the new name comes first";
    EXPECT_EQ(0, xFileRename("d", "a"));
    EXPECT_EQ("File or path not found", LastError());
    EXPECT_EQ(1, xFileDelete("c"));
    EXPECT_EQ(0, xFileDelete("c"));
    EXPECT_EQ("Unable to delete file", LastError());
    EXPECT_EQ(0, xCopyFile("x", "missing"));
}

TEST_F(CSystemTest, WriteTimesAreIn100NanosecondsSince1601)
{
    WriteFile("a", "x");
    xulong ulLow = 0, ulHigh = 0;
    ASSERT_EQ(1, xFileGetLastWriteTime("a", ulLow, ulHigh));
    const unsigned long long ullTime = (unsigned long long)ulHigh << 32 | ulLow;
    const long long llSeconds = (long long)(ullTime / 10000000) - 11644473600LL;
    EXPECT_NEAR((double)time(nullptr), (double)llSeconds, 100);
    EXPECT_EQ(0, xFileGetLastWriteTime("missing", ulLow, ulHigh));
}

TEST_F(CSystemTest, DirectoriesAreMadeEnteredAndSaved)
{
    EXPECT_EQ(1, xCreateDirsForFile("one/two\\three/file.txt"));
    EXPECT_EQ(1, xCreateDirsForFile("one/two\\three/file.txt"));
    EXPECT_EQ(1, xCreateDirsForFile("./one/four/"));
    EXPECT_EQ(1, xCreateDirsForFile("plain"));
    EXPECT_TRUE(std::filesystem::is_directory("one/two/three"));
    EXPECT_TRUE(std::filesystem::is_directory("one/four"));
    EXPECT_FALSE(std::filesystem::exists("plain"));
    WriteFile("one/blocked", "");
    EXPECT_EQ(0, xCreateDirsForFile("one/blocked/x/file"));
    EXPECT_EQ(0u, LastError().find("Unable to create dir blocked. Errorcode: "));
    EXPECT_EQ(0, xCreateDirsForFile((std::string(5000, 'd') + "/f").c_str()));
    EXPECT_EQ("xCreateDirsForFile: Parsing error!", LastError());
    EXPECT_EQ(m_Folder, std::filesystem::current_path());

    EXPECT_EQ(1, xFolderExists("one"));
    EXPECT_EQ(0, xFolderExists("one/blocked"));
    EXPECT_EQ(0, xFolderExists("missing"));
    EXPECT_EQ(0, xFolderExists(nullptr));
    EXPECT_EQ("xFolderExists: No path.", LastError());
    EXPECT_EQ(1, xDoDirectoryExists("one/two"));
    EXPECT_EQ(0, xDoDirectoryExists("one/blocked"));
    EXPECT_EQ(1, xSys_SaveCurrDir());
    EXPECT_EQ(1, xSetWorkingDirectory("one"));
    EXPECT_EQ(m_Folder / "one", std::filesystem::path(TakeString(xGetWorkingDirectory())));
    EXPECT_EQ(0, xSetWorkingDirectory("missing"));
    EXPECT_EQ("xSetWorkingDirectory: Unable to set the directory", LastError());
    EXPECT_EQ(1, xSys_RestoreCurrDir());
    EXPECT_EQ(m_Folder, std::filesystem::current_path());
}

TEST_F(CSystemTest, FolderContentByPatternAndKind)
{
    for (const char *pszName : { "a.txt", "B.TXT", "c.bmp", "noextension" })
        WriteFile(pszName, "");
    std::filesystem::create_directory("folder.txt");
    CLList list;
    xAddFolderContent(&list, ".", "*.txt", 1, 0, 0);
    EXPECT_EQ((std::set<std::string>{ "a.txt", "B.TXT" }), Take(list));
    xAddFolderContent(&list, "./", "*.txt", 0, 1, 1);
    EXPECT_EQ((std::set<std::string>{ "./folder.txt" }), Take(list));
    xAddFolderContent(&list, ".", "?.*", 1, 1, 0);
    const std::set<std::string> found = Take(list);
    EXPECT_EQ(1u, found.count("a.txt"));
    EXPECT_EQ(0u, found.count("noextension") + found.count("folder.txt"));
    xAddFolderContent(&list, "missing", "*", 1, 1, 0);
    EXPECT_EQ(0u, Take(list).size());
    xAddFolderContent(&list, ".", "a.txt", 1, 0, 1);
    EXPECT_EQ((std::set<std::string>{ ".\\a.txt" }), Take(list));
}

TEST_F(CSystemTest, ShellCallsReport)
{
    EXPECT_EQ(0, xExecuteFile("no-such-program.exe", "x"));
    EXPECT_EQ("Unable to execute file (no-such-program.exe x) The specified file was not found.", LastError());
    EXPECT_EQ(0, xFindWindow("A title that no window has"));
    EXPECT_EQ(0, xSetForegroundWindow("A title that no window has"));
    char szPath[1024] = "";
    EXPECT_EQ(1, xGetStartMenuForUser(szPath));
    EXPECT_NE("", std::string(szPath));
    char szOther[1024] = "";
    EXPECT_EQ(1, xGetStartMenuForAllUsers(szOther));
    EXPECT_STREQ(szPath, szOther);

    char szGuid[129] = "", szSecond[129] = "";
    EXPECT_EQ(1, xCreateGuid(szGuid));
    EXPECT_EQ(1, xCreateGuid(szSecond));
    EXPECT_EQ(36u, strlen(szGuid));
    EXPECT_EQ(4, std::count(szGuid, szGuid + 36, '-'));
    EXPECT_STRNE(szGuid, szSecond);
}

TEST_F(CSystemTest, ShortCutsAreMadeAndUpdated)
{
#ifdef _WIN32
    const char *pszLink = "link.lnk";
#else
    const char *pszLink = "link.desktop";
#endif
    const std::string strLink = Path(pszLink);
    WriteFile("target", "");
    WriteFile("other", "");
    EXPECT_EQ(SHORTCUT_FAILED,
              xCreteOrUpdate_ShortCut(strLink.c_str(), Path("target").c_str(), "Text", SHORTCUT_UPDATE));
    const eShortReturnFlags eFirst =
        xCreteOrUpdate_ShortCut(strLink.c_str(), Path("target").c_str(), "Text", SHORTCUT_CREATE);
    ASSERT_EQ(SHORTCUT_CREATED, eFirst) << LastError();
    EXPECT_TRUE(std::filesystem::exists(strLink));
    EXPECT_EQ(SHORTCUT_UNCHANGED,
              xCreteOrUpdate_ShortCut(strLink.c_str(), Path("target").c_str(), "Text", SHORTCUT_UPDATE));
    EXPECT_EQ(SHORTCUT_UPDATED,
              xCreteOrUpdate_ShortCut(strLink.c_str(), Path("other").c_str(), "Text", SHORTCUT_UPDATE));
    WriteFile(strLink, "no link at all");
    EXPECT_EQ(SHORTCUT_FAILED,
              xCreteOrUpdate_ShortCut(strLink.c_str(), Path("target").c_str(), "Text", SHORTCUT_UPDATE));
    EXPECT_EQ(0u, LastError().find("Can't do Load in class IPersistFile On Shortcut "));
}
