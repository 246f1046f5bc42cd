#include "tarvix/wholefile.h"

#include "support.h"
#include "tarvix/archive.h"
#include "tarvix/bitmap.h"
#include "tarvix/file.h"
#include "tarvix/kcbl.h"
#include "tarvix/systemfiles.h"

#ifndef _WIN32
#include <signal.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>
#endif

namespace
{
class CWholeFileTest : public CFolderTest
{
protected:
    static xlong Write(const char *pszPath, const std::string &strText, bool bCommit = true)
    {
        CWholeFile whole;
        CFile file;
        if (!whole.Begin(pszPath) || !file.Open(whole.GetPath(), FILE_WRITE) ||
            !file.Write(strText.data(), (xulong)strText.size()) || !file.Flush())
            return 0;
        file.Close();
        return bCommit ? whole.Commit() : 1;
    }

    static std::set<std::string> Names()
    {
        std::set<std::string> names;
        for (const auto &entry : std::filesystem::directory_iterator("."))
            names.insert(entry.path().filename().string());
        return names;
    }
};
} // namespace

TEST_F(CWholeFileTest, TheOldFileStaysUntilTheNewOneIsThere)
{
    ASSERT_EQ(1, Write("a.txt", "old")) << LastError();
    EXPECT_EQ("old", ReadFile("a.txt"));
    EXPECT_EQ(1, Write("a.txt", "half of the new", false));
    EXPECT_EQ("old", ReadFile("a.txt"));
    // Names that are taken are another's.
    WriteFile("a.txt.part", "mine");
    WriteFile("a.txt.part1", "mine too");
    ASSERT_EQ(1, Write("a.txt", "new"));
    EXPECT_EQ("new", ReadFile("a.txt"));
    EXPECT_EQ("mine", ReadFile("a.txt.part"));
    EXPECT_EQ((std::set<std::string>{ "a.txt", "a.txt.part", "a.txt.part1" }), Names());
    CWholeFile whole;
    for (const char *psz : { "", "none/a.txt", "." })
    {
        EXPECT_EQ(0, whole.Begin(psz)) << psz;
        EXPECT_NE("", LastError());
        EXPECT_EQ(nullptr, whole.GetPath());
    }
    EXPECT_EQ(0, whole.Begin(nullptr));
    EXPECT_EQ(0, whole.Commit());
}

#ifndef _WIN32
TEST_F(CWholeFileTest, LinksModesAndDevicesStayWhatTheyAre)
{
    ASSERT_EQ(1, mkdir("real", 0755) + 1);
    WriteFile("real/file", "old");
    chmod("real/file", 0600);
    ASSERT_EQ(0, symlink("real/file", "link"));
    ASSERT_EQ(0, symlink("link", "link2"));
    ASSERT_EQ(0, symlink("real/none", "dangling"));
    ASSERT_EQ(0, symlink("ring", "ring"));
    ASSERT_EQ(1, Write("link2", "new"));
    EXPECT_TRUE(std::filesystem::is_symlink("link2"));
    EXPECT_TRUE(std::filesystem::is_symlink("link"));
    EXPECT_EQ("new", ReadFile("real/file"));
    struct stat info;
    ASSERT_EQ(0, stat("real/file", &info));
    EXPECT_EQ(0600u, info.st_mode & 0777u);
    ASSERT_EQ(1, Write("dangling", "made"));
    EXPECT_EQ("made", ReadFile("real/none"));
    EXPECT_EQ(0, Write("ring", "x"));
    EXPECT_EQ(0, Write("/dev/full", "x")) << "the device tells that it is full";
    EXPECT_EQ(1, Write("/dev/null", "x"));
    EXPECT_TRUE(std::filesystem::is_character_file("/dev/null"));
    // A name in another case is another file.
    WriteFile("README", "big");
    ASSERT_EQ(1, Write("readme", "small"));
    EXPECT_EQ("big", ReadFile("README"));
    EXPECT_EQ(1, Write("REAL\\readme", "in the folder")) << "folders are found in any case";
    EXPECT_EQ("in the folder", ReadFile("real/readme"));
}

TEST_F(CWholeFileTest, AFileCopiedToItselfStays)
{
    WriteFile("a.txt", "all of it");
    ASSERT_EQ(0, symlink("a.txt", "b.txt"));
    ASSERT_EQ(0, link("a.txt", "c.txt"));
    for (const char *pszTo : { "a.txt", "./a.txt", "b.txt", "c.txt", "none/d.txt" })
        EXPECT_EQ(1, xCopyFile(pszTo, "a.txt")) << pszTo;
    for (const char *psz : { "a.txt", "b.txt", "c.txt", "none/d.txt" })
        EXPECT_EQ("all of it", ReadFile(psz)) << psz;
}

// Sparse files of sizes that 31 and 32 bits can't say.
TEST_F(CWholeFileTest, LargeFilesAreRefused)
{
    for (const off_t lSize : { (off_t)1 << 31, ((off_t)1 << 32) + 100 })
    {
        WriteFile("large", "");
        ASSERT_EQ(0, truncate("large", lSize));
        xulong ulSize = 77;
        EXPECT_EQ(0, xFileSize("large", &ulSize));
        EXPECT_EQ(77u, ulSize);
        EXPECT_EQ(0, xCopyFile("copy", "large"));
        CArchive archive;
        ASSERT_EQ(1, archive.OpenNew("archive"));
        EXPECT_EQ(0, archive.AddFile("large", nullptr));
        WriteFile("small", "x");
        EXPECT_EQ(1, archive.AddFile("small", nullptr)) << "nothing of the large one was written";
        archive.Close();
        EXPECT_EQ(1, archive.ExtractArchive("archive", "out", 0)) << LastError();
    }
    EXPECT_FALSE(std::filesystem::exists("copy"));
}

// Where no byte fits any more: what was there stays, and nothing else is left.
TEST_F(CWholeFileTest, WritersKeepTheOldFileWhenTheDiskIsFull)
{
    CBitmap bitmap;
    ASSERT_EQ(1, bitmap.CreateRGB(200, 200, 24, 8, 8, 8, 0, 8, 16, 0));
    CKCBL tree;
    ASSERT_EQ(1, tree.Import(("A = \"" + std::string(100000, 'x') + "\"\n").c_str(), 0));
    WriteFile("out", "old");
    WriteFile("out.bmp", "old");
    // The process may not write files of more than this.
    rlimit before = {};
    getrlimit(RLIMIT_FSIZE, &before);
    rlimit small = { 4096, before.rlim_max };
    signal(SIGXFSZ, SIG_IGN);
    setrlimit(RLIMIT_FSIZE, &small);
    EXPECT_EQ(0, bitmap.Save("out.bmp", nullptr, nullptr, nullptr, 0));
    EXPECT_EQ(0, tree.Save("out"));
    EXPECT_EQ(0, Write("out", std::string(100000, 'x')));
    setrlimit(RLIMIT_FSIZE, &before);
    EXPECT_EQ("old", ReadFile("out"));
    EXPECT_EQ("old", ReadFile("out.bmp"));
    EXPECT_EQ((std::set<std::string>{ "out", "out.bmp" }), Names());
}
#endif
