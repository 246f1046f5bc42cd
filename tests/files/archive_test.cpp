#include "tarvix/archive.h"

#include "support.h"

#include <map>
#include <random>

namespace
{
std::string Number(size_t ulValue, int nBytes)
{
    std::string str;
    for (int n = 0; n < nBytes; ++n)
        str += (char)(ulValue >> 8 * n);
    return str;
}

std::string Stored(const std::string &strName, const std::string &strData)
{
    return Number(0xffffffff, 4) + Number(strData.size(), 4) + Number(strName.size(), 2) + strName + strData;
}

std::string Packed(const std::string &strName, const std::string &strData)
{
    CLzss lzss;
    xulong ulLen = (xulong)strData.size();
    char *pBlock = lzss.CompressBuffer(strData.data(), &ulLen);
    const std::string strStream(pBlock, ulLen);
    xFreeMemFunc(pBlock, nullptr, 0);
    return Number(ulLen, 4) + Number(strData.size(), 4) + Number(strName.size(), 2) + strName + strStream;
}

class CArchiveTest : public CFolderTest
{
protected:
    std::map<std::string, std::string> FilesBelow(const std::string &strFolder)
    {
        std::map<std::string, std::string> files;
        if (std::filesystem::exists(strFolder))
            for (const auto &entry : std::filesystem::recursive_directory_iterator(strFolder))
                if (entry.is_regular_file())
                    files[std::filesystem::relative(entry.path(), strFolder).generic_string()] =
                        ReadFile(entry.path().string());
        return files;
    }

    CArchive m_Archive;
};

TEST_F(CArchiveTest, RecordsAreAsTheyShouldBe)
{
    const std::string strText(2048, 't');
    const struct
    {
        const char *pszFile, *pszStoreAs;
        std::string strData;
        bool bPacked;
    } files[] = {
        { "small.txt", nullptr, strText, false },
        { "packed.txt", "dir/sub/packed.txt", strText + 't', true },
        { "song.MP3", nullptr, strText + strText, false },
        { "photo.jpg", nullptr, strText + strText, false },
        { "data.xrs", nullptr, strText + strText, false },
        { "none", nullptr, strText + strText, true },
        { "empty.dat", nullptr, "", false },
    };
    EXPECT_EQ(0, m_Archive.AddFile("small.txt", nullptr));
    ASSERT_EQ(1, m_Archive.OpenNew("a.arc"));
    EXPECT_EQ(0, m_Archive.OpenNew("b.arc"));
    EXPECT_EQ(0, m_Archive.Open("a.arc"));
    std::string strModel;
    std::map<std::string, std::string> model;
    for (const auto &file : files)
    {
        WriteFile(file.pszFile, file.strData);
        EXPECT_EQ(1, m_Archive.AddFile(file.pszFile, file.pszStoreAs));
        const char *pszName = file.pszStoreAs ? file.pszStoreAs : file.pszFile;
        strModel += file.bPacked ? Packed(pszName, file.strData) : Stored(pszName, file.strData);
        model[pszName] = file.strData;
        EXPECT_EQ(strModel.size(), m_Archive.GetSize());
    }
    EXPECT_EQ(0, m_Archive.AddFile("missing", nullptr));
    m_Archive.Close();
    EXPECT_EQ(0, m_Archive.IsOpen());
    EXPECT_TRUE(strModel == ReadFile("a.arc"));

    EXPECT_EQ(1, m_Archive.ExtractArchive("a.arc", "out", 0));
    EXPECT_TRUE(model == FilesBelow("out"));
    EXPECT_EQ(1, m_Archive.ExtractArchive("a.arc", Path("whole/path/").c_str(), 1));
    EXPECT_TRUE(model == FilesBelow("whole/path"));
    EXPECT_FALSE(std::filesystem::exists("a.arc"));

    // Records over those that are there.
    WriteFile("again.arc", strModel);
    ASSERT_EQ(1, m_Archive.Open("again.arc"));
    EXPECT_EQ(strModel.size(), m_Archive.GetSize());
    EXPECT_EQ(1, m_Archive.AddFile("empty.dat", "e"));
    m_Archive.Close();
    EXPECT_EQ(Stored("e", ""), ReadFile("again.arc").substr(0, 11));
}

TEST_F(CArchiveTest, DamageEndsTheRunAndWhatCameBeforeStays)
{
    const std::string strGood = Stored("one", "first") + Packed("two", std::string(4000, '2'));
    const size_t ulFirst = Stored("one", "first").size();
    for (size_t ul = 0; ul < strGood.size(); ++ul)
    {
        SCOPED_TRACE(ul);
        std::filesystem::remove_all("out");
        WriteFile("cut.arc", strGood.substr(0, ul));
        EXPECT_EQ(ul == ulFirst, m_Archive.ExtractArchive("cut.arc", "out", ul != ulFirst));
        EXPECT_EQ(ul >= ulFirst ? 1u : 0u, FilesBelow("out").size());
        EXPECT_TRUE(std::filesystem::exists("cut.arc"));
    }
    const struct
    {
        const char *pszName;
        size_t ulAt;
        std::string strBytes;
    } cases[] = {
        { "UnpackedSizeTooSmall", 4, Number(3999, 4) },       { "UnpackedSizeTooLarge", 4, Number(4001, 4) },
        { "UnpackedSizeHuge", 4, Number(0xfffffff0, 4) },     { "PackedSizeHuge", 0, Number(0xfffffff0, 4) },
        { "StreamWithoutEnd", 13, std::string(600, '\x80') },
    };
    for (const auto &c : cases)
    {
        SCOPED_TRACE(c.pszName);
        std::string strBad = strGood;
        strBad.replace(ulFirst + c.ulAt, std::min(c.strBytes.size(), strBad.size() - ulFirst - c.ulAt), c.strBytes, 0,
                       std::min(c.strBytes.size(), strBad.size() - ulFirst - c.ulAt));
        std::filesystem::remove_all("out");
        WriteFile("bad.arc", strBad);
        EXPECT_EQ(0, m_Archive.ExtractArchive("bad.arc", "out", 1));
        EXPECT_EQ((std::map<std::string, std::string>{ { "one", "first" } }), FilesBelow("out"));
    }
}

TEST_F(CArchiveTest, ListsWhatThereIs)
{
    const std::string strPacked = Packed("dir/two", std::string(4000, '2'));
    WriteFile("a.arc", Stored("one", "first") + strPacked);
    std::string strList;
    const auto Note = [](const TArchiveEntry *pEntry, void *pUser)
    {
        *(std::string *)pUser += std::string(pEntry->pszName) + " " + std::to_string(pEntry->ulSize) + " " +
                                 std::to_string(pEntry->ulData) + (pEntry->lStored ? " stored\n" : " packed\n");
        return (xlong)(((std::string *)pUser)->size() < 100);
    };
    EXPECT_EQ(1, m_Archive.ListArchive("a.arc", Note, &strList));
    EXPECT_EQ("one 5 5 stored\ndir/two 4000 " + std::to_string(strPacked.size() - 17) + " packed\n", strList);
    strList.assign(100, ' ');
    EXPECT_EQ(0, m_Archive.ListArchive("a.arc", Note, &strList)) << "ended by the function";
    WriteFile("cut.arc", (Stored("one", "first") + strPacked).substr(0, 40));
    EXPECT_EQ(0, m_Archive.ListArchive("cut.arc", Note, &strList));
}

TEST_F(CArchiveTest, NamesThatLeadOutAreRefusedWhereTheHostWantsIt)
{
    const struct
    {
        const char *pszName;
        bool bSafe;
    } names[] = {
        { "file", true },       { "dir/file", true },  { "dir\\file", true },    { "..file/a..b", true },
        { "dir/./file", true }, { "", false },         { "/etc/file", false },   { "\\file", false },
        { "..", false },        { "../file", false },  { "dir/../../f", false }, { "dir\\..\\..\\f", false },
        { "C:file", false },    { "C:\\file", false }, { "file:stream", false }, { "dir/.. /f", false },
        { "dir/...", false },
    };
    for (const auto &name : names)
        EXPECT_EQ(name.bSafe, CArchive::IsSafeName(name.pszName)) << name.pszName;

    std::filesystem::create_directories("in/side");
    WriteFile("a.arc", Stored("ok", "1") + Stored("../out", "2"));
    m_Archive.SetSafeNames(1);
    EXPECT_EQ(0, m_Archive.ExtractArchive("a.arc", "in/side", 0));
    EXPECT_EQ("CArchive::ExtractArchive: A name leads out of the directory.", LastError());
    EXPECT_EQ((std::map<std::string, std::string>{ { "side/ok", "1" } }), FilesBelow("in"));
    m_Archive.SetSafeNames(0);
    EXPECT_EQ(1, m_Archive.ExtractArchive("a.arc", "in/side", 0));
    EXPECT_EQ((std::map<std::string, std::string>{ { "out", "2" }, { "side/ok", "1" } }), FilesBelow("in"));
}

std::vector<xlong> s_Sizes;

void NoteSize(xlong lPos, xlong lTotal, xlong bStart)
{
    EXPECT_EQ(lPos, lTotal);
    EXPECT_EQ(1, bStart);
    s_Sizes.push_back(lPos);
}

TEST_F(CArchiveTest, ReportsEachRecord)
{
    s_Sizes.clear();
    const std::string strOne = Stored("one", "first"), strTwo = Packed("two", std::string(4000, '2'));
    WriteFile("a.arc", strOne + strTwo);
    EXPECT_EQ(1, m_Archive.SetCallback(NoteSize, 0));
    EXPECT_EQ(1, m_Archive.ExtractArchive("a.arc", "out", 0));
    EXPECT_EQ((std::vector<xlong>{ (xlong)strOne.size(), (xlong)strTwo.size() }), s_Sizes);
}

TEST_F(CArchiveTest, RunsOutOfMemoryWithoutLoss)
{
    WriteFile("big", std::string(5000, 'b'));
    WriteFile("in.arc", Packed("big", std::string(5000, 'b')));
    FailEachAllocation(
        [&]
        {
            const bool bAdded = m_Archive.OpenNew("out.arc") && m_Archive.AddFile("big", nullptr);
            m_Archive.Close();
            return m_Archive.ExtractArchive("in.arc", "out", 0) && bAdded;
        });
}
} // namespace
