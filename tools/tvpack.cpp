// Makes, lists and unpacks archives.

#include "options.h"
#include "tool.h"

#include "tarvix/archive.h"
#include "tarvix/wholefile.h"

#include <string.h>

#include <algorithm>
#include <filesystem>
#include <map>

#ifdef _WIN32
#include <io.h>
#define isatty _isatty
#else
#include <unistd.h>
#endif

namespace
{
namespace fs = std::filesystem;

const char s_szUsage[] = R"(tvpack create ARCHIVE FILES...      packs files, and folders with all below them
tvpack list ARCHIVE                 shows what is in an archive
tvpack extract ARCHIVE [--to DIR]   unpacks it below DIR, or below the working directory

  -C DIR      (create) names the files as they are seen from DIR
  --dry-run   says what would be done and does nothing
  --quiet     no progress bar

Names that would lead out of the directory are refused. An archive that turns
out to be damaged ends with an error; what was unpacked before stays.
Exit status: 0; 1 for files that can't be read, written or unpacked; 2 for a
wrong command line.
)";

struct TOptions
{
    std::string strCommand, strArchive, strTo, strFrom;
    std::vector<std::string> files;
    bool bDryRun = false, bQuiet = false;
};

struct TEntry
{
    std::string strName;
    xulong ulSize, ulData;
    bool bStored;
};

// On a terminal: a bar over all files.
struct TProgress
{
    bool bShown = false;
    uint64_t ullTotal = 0, ullDone = 0, ullInFile = 0;
    std::string strName;
    int nPercent = -1;

    void Show()
    {
        const int nNow = ullTotal ? (int)(std::min(ullDone + ullInFile, ullTotal) * 100 / ullTotal) : 100;
        if (!bShown || nNow == nPercent)
            return;
        nPercent = nNow;
        fprintf(stderr, "\r[%-40s] %3d%% %-32.32s", std::string((size_t)nNow * 2 / 5, '#').c_str(), nNow,
                strName.c_str());
    }

    void Clear()
    {
        if (bShown)
            fprintf(stderr, "\r%80s\r", "");
    }
};

TProgress s_Progress;

void ShowPacking(xlong lPos, xlong, xlong bStart)
{
    // Each file is gone through twice: counted, then packed.
    if (bStart)
        s_Progress.ullInFile = std::max<uint64_t>(s_Progress.ullInFile, 1) - 1;
    s_Progress.ullInFile = std::max(s_Progress.ullInFile, (uint64_t)(xulong)lPos / 2);
    s_Progress.Show();
}

void ShowUnpacking(xlong lPos, xlong, xlong)
{
    s_Progress.ullDone += (xulong)lPos;
    s_Progress.Show();
}

// Files of the command line, and those of folders by name, so that an archive
// does not depend on the order that the system lists them in.
bool Gather(const TOptions &options, std::vector<std::string> &names, std::string &strBad)
{
    for (const std::string &strFile : options.files)
    {
        const fs::path path = options.strFrom.empty() ? fs::path(strFile) : fs::path(options.strFrom) / strFile;
        std::error_code error;
        if (!fs::is_directory(path, error))
        {
            strBad = strFile;
            if (!fs::is_regular_file(path, error))
                return false;
            names.push_back(strFile);
            continue;
        }
        std::vector<std::string> below;
        for (fs::recursive_directory_iterator it(path, error), end; !error && it != end; it.increment(error))
            if (it->is_regular_file())
                below.push_back(
                    (fs::path(strFile) / it->path().lexically_relative(path)).lexically_normal().generic_string());
        strBad = strFile;
        if (error)
            return false;
        std::sort(below.begin(), below.end());
        names.insert(names.end(), below.begin(), below.end());
    }
    return true;
}

// Two names of which one file would be made: in the same case everywhere on
// Windows, elsewhere where folders differ in case, which are found in any.
// @return empty, or what is wrong
std::string FindClash(const std::vector<std::string> &names)
{
    std::map<std::string, std::string> seen;
    for (const std::string &strName : names)
    {
        const auto [it, bNew] = seen.emplace(Lower(strName), strName);
        if (bNew || it->second == strName)
            continue;
#ifndef _WIN32
        if (fs::path(strName).parent_path() == fs::path(it->second).parent_path())
            continue;
#endif
        return "the names \"" + it->second + "\" and \"" + strName + "\" differ in case alone";
    }
    return "";
}

int Create(const CTool &tool, const TOptions &options)
{
    std::vector<std::string> names;
    std::string strBad;
    if (!Gather(options, names, strBad))
        return tool.Fail(strBad, "there is no such file or folder");
    if (names.empty())
        return tool.Fail(options.strArchive, "there is nothing to pack");
    if (const std::string strClash = FindClash(names); !strClash.empty())
        return tool.Fail(options.strArchive, strClash);
    const auto Source = [&](const std::string &strName)
    { return options.strFrom.empty() ? strName : (fs::path(options.strFrom) / strName).string(); };
    for (const std::string &strName : names)
    {
        if (!CArchive::IsSafeName(strName.c_str()))
            return tool.Fail(strName, "the name leads out of a directory; see -C");
        std::error_code error;
        s_Progress.ullTotal += fs::file_size(Source(strName), error);
        if (options.bDryRun)
            printf("%s\n", strName.c_str());
    }
    if (options.bDryRun)
        return EXIT_GOOD;

    CWholeFile whole;
    CArchive archive;
    if (!whole.Begin(options.strArchive.c_str()) || !archive.OpenNew(whole.GetPath()))
        return tool.Fail(options.strArchive, "the archive can't be written");
    if (s_Progress.bShown)
        archive.SetCallback(ShowPacking, 100);
    for (const std::string &strName : names)
    {
        std::error_code error;
        s_Progress.strName = strName;
        s_Progress.ullInFile = 0;
        s_Progress.Show();
        if (!archive.AddFile(Source(strName).c_str(), strName.c_str()))
        {
            archive.Close();
            s_Progress.Clear();
            return tool.FailWithReport(strName, "the file can't be packed");
        }
        s_Progress.ullDone += fs::file_size(Source(strName), error);
    }
    archive.Close();
    s_Progress.Clear();
    return whole.Commit() ? EXIT_GOOD : tool.Fail(options.strArchive, "the archive can't be written");
}

xlong NoteEntry(const TArchiveEntry *pEntry, void *pUser)
{
    ((std::vector<TEntry> *)pUser)
        ->push_back({ pEntry->pszName, pEntry->ulSize, pEntry->ulData, pEntry->lStored != 0 });
    return 1;
}

int List(const CTool &tool, const TOptions &options)
{
    std::vector<TEntry> entries;
    const bool bWhole = CArchive().ListArchive(options.strArchive.c_str(), NoteEntry, &entries) != 0;
    uint64_t ullSize = 0, ullData = 0;
    for (const TEntry &entry : entries)
    {
        printf("%10lu %10lu %s %s\n", (unsigned long)entry.ulSize, (unsigned long)entry.ulData,
               entry.bStored ? "stored" : "packed", entry.strName.c_str());
        ullSize += entry.ulSize;
        ullData += entry.ulData;
    }
    printf("%10llu %10llu %lu files\n", (unsigned long long)ullSize, (unsigned long long)ullData,
           (unsigned long)entries.size());
    return bWhole ? EXIT_GOOD : tool.FailWithReport(options.strArchive, "the archive is damaged");
}

int Extract(const CTool &tool, const TOptions &options)
{
    std::vector<TEntry> entries;
    const bool bWhole = CArchive().ListArchive(options.strArchive.c_str(), NoteEntry, &entries) != 0;
    if (entries.empty())
        return tool.FailWithReport(options.strArchive, "the archive is damaged");
    for (const TEntry &entry : entries)
    {
        if (!CArchive::IsSafeName(entry.strName.c_str()))
            return tool.Fail(options.strArchive, "the name \"" + entry.strName + "\" leads out of the directory");
        s_Progress.ullTotal += entry.ulData + entry.strName.size() + 10;
        if (options.bDryRun)
            printf("%s\n", entry.strName.c_str());
    }
    std::vector<std::string> names;
    for (const TEntry &entry : entries)
        names.push_back(entry.strName);
    if (const std::string strClash = FindClash(names); !strClash.empty())
        return tool.Fail(options.strArchive, strClash);
    if (options.bDryRun)
        return bWhole ? EXIT_GOOD : tool.Fail(options.strArchive, "the archive is damaged behind these");
    CArchive archive;
    archive.SetSafeNames(1);
    if (s_Progress.bShown)
        archive.SetCallback(ShowUnpacking, 100);
    glb->m_Error.Clear();
    const char *pszTo = options.strTo.empty() ? nullptr : options.strTo.c_str();
    const bool bGood = archive.ExtractArchive(options.strArchive.c_str(), pszTo, 0) != 0;
    s_Progress.Clear();
    return bGood ? EXIT_GOOD : tool.FailWithReport(options.strArchive, "the archive is damaged");
}

// @return what is wrong, or an empty string
std::string ReadOptions(const std::vector<std::string> &args, TOptions &options)
{
    COptions known;
    known.Switch("--dry-run", options.bDryRun);
    known.Switch("--quiet", options.bQuiet);
    known.Text("--to", "a folder", options.strTo);
    known.Text("-C", "a folder", options.strFrom);
    std::vector<std::string> words;
    const std::string strWrong = known.Read(args, words);
    if (!strWrong.empty())
        return strWrong;
    if (words.empty() || (words[0] != "create" && words[0] != "list" && words[0] != "extract"))
        return "this takes create, list or extract";
    options.strCommand = words[0];
    if (words.size() < 2)
        return options.strCommand + " takes an archive";
    options.strArchive = words[1];
    options.files.assign(words.begin() + 2, words.end());
    if (options.strCommand == "create" && options.files.empty())
        return "create takes the files to pack";
    if (options.strCommand != "create" && !options.files.empty())
        return options.strCommand + " takes one archive";
    return "";
}
} // namespace

int main(int argc, char **argv)
{
    const std::vector<std::string> args(argv + 1, argv + argc);
    if (IsHelp(args, s_szUsage))
        return EXIT_GOOD;
    CTool tool("tvpack");
    if (!tool.IsReady())
        return tool.Fail("", "the library can't start");
    TOptions options;
    const std::string strWrong = ReadOptions(args, options);
    if (!strWrong.empty())
        return tool.Usage(strWrong);
    s_Progress.bShown = !options.bQuiet && isatty(2);
    if (options.strCommand == "create")
        return Create(tool, options);
    return options.strCommand == "list" ? List(tool, options) : Extract(tool, options);
}
