#include "platform/process.h"
#include "platform/win32.h"

#include "support.h"
#include "tarvix/systemshell.h"

#include <cstdlib>
#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

namespace
{
namespace fs = std::filesystem;

/// A folder with programs that report their arguments and working folder, and
/// a PATH that has nothing but the system's basic tools and, if wanted, xdg-open.
class PlatformShell : public CFolderTest
{
protected:
    PlatformShell() : m_strOldPath(getenv("PATH") ? getenv("PATH") : "")
    {
        fs::create_directory("bin");
        fs::create_directory("Work");
        EXPECT_EQ(0, mkfifo("report", 0600));
        m_nReport = open("report", O_RDWR | O_NONBLOCK | O_CLOEXEC);
        setenv("PATH", Path("bin").c_str(), 1);
    }

    ~PlatformShell() override
    {
        close(m_nReport);
        setenv("PATH", m_strOldPath.c_str(), 1);
    }

    /// A script that writes its working folder and arguments, a line each, to the report.
    void MakeReporter(const std::string &strPath, int nExit = 0)
    {
        MakeProgram(strPath, "#!/bin/sh\n{ pwd; for a in \"$0\" \"$@\"; do echo \"$a\"; done; echo end; } > " +
                                 Path("report") + "\nexit " + std::to_string(nExit) + "\n");
    }

    static void MakeProgram(const std::string &strPath, const std::string &strText)
    {
        WriteFile(strPath, strText);
        fs::permissions(strPath, fs::perms::owner_all);
    }

    /// What the program wrote; waits for it.
    std::vector<std::string> Report()
    {
        std::string strText;
        while (strText.find("end\n") == std::string::npos)
        {
            pollfd poller = { m_nReport, POLLIN, 0 };
            if (poll(&poller, 1, 20000) != 1)
                return { "no report" };
            char sz[256];
            const ssize_t n = read(m_nReport, sz, sizeof(sz));
            if (n > 0)
                strText.append(sz, (size_t)n);
        }
        std::vector<std::string> lines;
        for (size_t i = 0, nEnd; (nEnd = strText.find('\n', i)) != std::string::npos; i = nEnd + 1)
            lines.push_back(strText.substr(i, nEnd - i));
        lines.pop_back();
        return lines;
    }

    int Execute(const char *pszFile, const char *pszArguments = nullptr, const char *pszFolder = nullptr)
    {
        return (int)(intptr_t)ShellExecuteA(nullptr, "open", pszFile, pszArguments, pszFolder, SW_SHOW);
    }

    std::string m_strOldPath;
    int m_nReport;
};

typedef std::vector<std::string> TLines;
} // namespace

TEST_F(PlatformShell, ProgramsGetTheirArgumentsAndFolder)
{
    MakeReporter("Tool.exe");
    const std::string strTool = Path("Tool.exe");
    ASSERT_GT(Execute(".\\TOOL.EXE", "one \"two three\" $HOME 'x' \"a\\\"b\" c\\d", "work"), 32);
    EXPECT_EQ((TLines{ Path("Work"), strTool, "one", "two three", "$HOME", "'x'", "a\"b", "c\\d" }), Report());
    ASSERT_GT(Execute("Tool.exe"), 32) << "the working folder comes first";
    EXPECT_EQ((TLines{ m_Folder.string(), strTool }), Report());
    MakeReporter("bin/found-on-path");
    ASSERT_GT(Execute("found-on-path", "x"), 32);
    EXPECT_EQ((TLines{ m_Folder.string(), Path("bin/found-on-path"), "x" }), Report());
}

TEST_F(PlatformShell, DocumentsAndAddressesGoToTheOpener)
{
    WriteFile("Read me.txt", "text");
    EXPECT_EQ(SE_ERR_NOASSOC, Execute("Read me.txt")) << "there is no opener";
    MakeReporter("bin/xdg-open");
    const std::string strOpener = Path("bin/xdg-open");
    ASSERT_GT(Execute("read ME.txt"), 32);
    EXPECT_EQ((TLines{ m_Folder.string(), strOpener, Path("Read me.txt") }), Report());
    ASSERT_GT(Execute("https://example.org/?a=1&b=\"2\""), 32);
    EXPECT_EQ((TLines{ m_Folder.string(), strOpener, "https://example.org/?a=1&b=\"2\"" }), Report());
    ASSERT_GT(Execute("Work"), 32);
    EXPECT_EQ(Path("Work"), Report().back());
    MakeReporter("bin/xdg-open", 3);
    EXPECT_EQ(SE_ERR_NOASSOC, Execute("Read me.txt")) << "the opener found no program";
    Report();

    char szResult[MAX_PATH];
    EXPECT_GT((intptr_t)FindExecutableA("READ ME.TXT", nullptr, szResult), 32);
    EXPECT_EQ(strOpener, szResult);
    EXPECT_EQ(SE_ERR_FNF, (intptr_t)FindExecutableA("missing.txt", nullptr, szResult));
    EXPECT_STREQ("", szResult);
}

TEST_F(PlatformShell, PagesBesideTheProgramAreOpened)
{
    CTestGlobals globals;
    MakeReporter("bin/xdg-open");
    fs::create_directory("Work/with blanks");
    WriteFile("Work/with blanks/page.htm", "<HTML>");
    const fs::path old = fs::current_path();
    fs::current_path("Work/with blanks");
    EXPECT_EQ(1, xShowURL(".\\page.htm"));
    fs::current_path(old);
    const TLines lines = Report();
    ASSERT_EQ(3u, lines.size());
    EXPECT_TRUE(fs::equivalent("Work/with blanks/page.htm", lines[2])) << lines[2];
}

TEST_F(PlatformShell, FailuresHaveTheirNumbers)
{
    MakeProgram("broken", std::string("\x7F") + "ELF and nothing more");
    MakeProgram("no-interpreter", "#!/no/such/interpreter\n");
    const struct
    {
        const char *pszFile, *pszFolder;
        int nResult;
    } cases[] = {
        { "missing.exe", nullptr, SE_ERR_FNF },
        { "nofolder\\missing.exe", nullptr, SE_ERR_PNF },
        { "", nullptr, SE_ERR_FNF },
        { nullptr, nullptr, SE_ERR_FNF },
        { "broken", nullptr, ERROR_BAD_FORMAT },
        { "no-interpreter", nullptr, SE_ERR_FNF },
        { "broken", "no-such-folder", SE_ERR_PNF },
    };
    for (const auto &c : cases)
        EXPECT_EQ(c.nResult, Execute(c.pszFile, nullptr, c.pszFolder)) << (c.pszFile ? c.pszFile : "(null)");
    EXPECT_EQ(SE_ERR_NOASSOC, (intptr_t)ShellExecuteA(nullptr, "print", "broken", nullptr, nullptr, SW_SHOW));
}

TEST(PlatformArguments, AreSplitAsOnWindows)
{
    const struct
    {
        const char *pszLine;
        TLines arguments;
    } cases[] = {
        { "", {} },
        { "  a  b\tc ", { "a", "b", "c" } },
        { "\"a b\" c", { "a b", "c" } },
        { "\"\"", { "" } },
        { "a\"b c\"d", { "ab cd" } },
        { "a\\\\\\\"b", { "a\\\"b" } },
        { "\"a\\\\\" b", { "a\\", "b" } },
        { "a\\\\b c\\", { "a\\\\b", "c\\" } },
        { "a\\ b", { "a\\", "b" } },
        { "\"never closed", { "never closed" } },
        { "\"say \"\"hi\"\"\"", { "say \"hi\"" } },
    };
    for (const auto &c : cases)
    {
        char **ppsz = SplitArguments(c.pszLine, nullptr);
        ASSERT_NE(nullptr, ppsz);
        TLines found;
        for (char **p = ppsz; *p; ++p)
            found.push_back(*p);
        EXPECT_EQ(c.arguments, found) << c.pszLine;
        free(ppsz);
    }
}
