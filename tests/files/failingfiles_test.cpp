// Every file call of whole operations fails once.
#include "core/filefault.h"
#include "core/heap.h"
#include "gui/resources/resdatasupport.h"
#include "tarvix/archive.h"
#include "tarvix/font.h"
#include "tarvix/kcbl.h"
#include "tarvix/lzss.h"
#include "tarvix/palette.h"
#include "tarvix/replay.h"
#include "tarvix/systemfiles.h"

namespace
{
class CFailingFilesTest : public CResDataTest
{
};

std::string Read(const char *pszFile)
{
    return std::filesystem::exists(pszFile) ? ReadFile(pszFile) : "";
}
} // namespace

TEST_F(CFailingFilesTest, LeaveTheOldFileATextAndNothingElse)
{
    SetMode(640, 480, 24);
    CBitmap picture;
    ASSERT_EQ(1, picture.Load("pic.bmp", 0));
    CKCBL tree;
    ASSERT_EQ(1, tree.Import("A = 1, 2\n{ = B\nC = \"text\"\n}\n", 0));
    CFont font;
    ASSERT_EQ(1, font.Load("font.xbf", 0));
    const std::string strLong(5000, 'x');
    WriteFile("long.txt", strLong + "y");
    WriteFile("script.rc", "; script\n{ = Defines\nA = 1\n}\n");
    CLzss lzss;
    ASSERT_EQ(1, lzss.Compress("long.txt", "long.lz"));
    const auto Pack = [](const char *pszArchive)
    {
        CArchive archive;
        const xlong lResult =
            archive.OpenNew(pszArchive) && archive.AddFile("long.txt", nullptr) && archive.AddFile("pic.bmp", nullptr);
        archive.Close();
        return lResult;
    };
    ASSERT_EQ(1, Pack("ready.pak"));
    const struct
    {
        const char *pszName;
        std::function<xlong()> run;
        const char *pszTarget; ///< holds "old" or the whole new file afterwards; null where it may be cut
    } cases[] = {
        { "SaveBmp", [&] { return picture.Save("out.bmp", nullptr, nullptr, nullptr, 0); }, "out.bmp" },
        { "SaveBmpInFolders", [&] { return picture.Save("new/er/out.bmp", nullptr, nullptr, nullptr, 0); },
          "new/er/out.bmp" },
        { "SaveTree", [&] { return tree.Save("out.kcbl"); }, "out.kcbl" },
        { "SaveFont", [&] { return font.Save("out.xbf", 0); }, "out.xbf" },
        { "Copy", [] { return xCopyFile("out.txt", "long.txt"); }, "out.txt" },
        { "Extract", [] { return CArchive().ExtractArchive("ready.pak", "to", 0); }, "to/long.txt" },
        { "Pack", [&] { return Pack("out.pak"); }, nullptr },
        { "Compress", [&] { return lzss.Compress("long.txt", "out.lz"); }, nullptr },
        { "Expand", [&] { return lzss.Expand("long.lz", "expanded.txt"); }, nullptr },
        { "Write", [&] { return xWriteFile("written.txt", strLong.data(), (xulong)strLong.size()); }, "written.txt" },
        { "LoadBmp", [] { return CBitmap().Load("pic.bmp", 0); }, nullptr },
        { "LoadTree", [] { return CKCBL().Load("script.rc"); }, nullptr },
        { "LoadFont", [] { return CFont().Load("font.xbf", 0); }, nullptr },
        { "LoadScript", [] { return CResData().Load("script.rc"); }, nullptr },
        { "Record",
          []
          {
              CReplay replay;
              return replay.Record("session.txt", 10) && replay.Stop();
          },
          nullptr },
    };
    for (const auto &c : cases)
    {
        std::string strWhole;
        for (xlong lFail = 0; lFail < 30000; ++lFail)
        {
            SCOPED_TRACE(std::string(c.pszName) + ", file call " + std::to_string(lFail));
            std::filesystem::remove_all("new");
            if (c.pszTarget && std::filesystem::path(c.pszTarget).parent_path() != "new/er")
            {
                std::filesystem::create_directories("to");
                WriteFile(c.pszTarget, "old");
            }
            const size_t ulBlocks = HeapState().ulLiveBlocks;
            glb->m_Error.Clear();
            FileFailAt(lFail);
            const xlong lResult = c.run();
            const bool bFailed = FileFailed();
            FileFailAt(0);
            if (lFail) // before, the lists' nodes may be pooled
                ASSERT_EQ(ulBlocks, HeapState().ulLiveBlocks);
            if (!lFail)
            {
                ASSERT_NE(0, lResult) << LastError();
                strWhole = c.pszTarget ? Read(c.pszTarget) : "";
                continue;
            }
            if (!lResult)
                ASSERT_NE("", LastError());
            if (c.pszTarget)
            {
                const std::string strNow = Read(c.pszTarget);
                ASSERT_TRUE(strNow == strWhole || (!lResult && (strNow == "old" || strNow.empty())))
                    << strNow.size() << " bytes";
                ASSERT_FALSE(std::filesystem::exists(std::string(c.pszTarget) + ".part"));
            }
            if (!bFailed)
            {
                ASSERT_NE(0, lResult);
                ASSERT_LT(1, lFail);
                break;
            }
            // Long runs of single bytes: the first and every hundredth of the rest.
            if (lFail > 300)
                lFail += 99;
        }
    }
}
