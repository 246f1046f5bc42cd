#include "platform/process.h"

#include <errno.h>
#include <fcntl.h>
#include <limits.h>
#include <poll.h>
#include <signal.h>
#include <stdio.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace
{
struct TReport
{
    int nErrno; ///< of a failed start, 0 when the program has ended
    int nExit;
};

bool IsProgram(const char *pszPath)
{
    struct stat info;
    return stat(pszPath, &info) == 0 && S_ISREG(info.st_mode) && access(pszPath, X_OK) == 0;
}

/// Runs between fork and exec: only calls that are safe there.
[[noreturn]] void RunChild(char *const *ppszArguments, const char *pszFolder, int nReport)
{
    TReport report = {};
    signal(SIGPIPE, SIG_DFL);
    if (pszFolder && chdir(pszFolder) != 0)
    {
        report.nErrno = errno == ENOENT ? ENOTDIR : errno;
        if (write(nReport, &report, sizeof(report)) < 0)
            _exit(126);
        _exit(127);
    }
    execv(ppszArguments[0], ppszArguments);
    report.nErrno = errno;
    if (write(nReport, &report, sizeof(report)) < 0)
        _exit(126);
    _exit(127);
}

/// Stands between us and the program, so that nobody has to wait for its end.
[[noreturn]] void RunKeeper(char *const *ppszArguments, const char *pszFolder, int nReport, bool bStay)
{
    setsid();
    // Our connection to the display must end with us, not with the program.
    if (nReport != 3)
        dup3(nReport, 3, O_CLOEXEC);
    nReport = 3;
    close_range(4, ~0u, 0);
    int alStart[2];
    TReport report = {};
    if (pipe2(alStart, O_CLOEXEC) != 0)
        report.nErrno = errno;
    else
    {
        const pid_t nChild = fork();
        if (nChild == 0)
            RunChild(ppszArguments, pszFolder, alStart[1]);
        report.nErrno = nChild < 0 ? errno : 0;
        close(alStart[1]);
        TReport start = {};
        // The pipe closes without a word when exec succeeds.
        if (nChild > 0 && read(alStart[0], &start, sizeof(start)) == (ssize_t)sizeof(start))
            report = start;
        // Says "running" first and the exit code later.
        TReport running = { report.nErrno, -1 };
        signal(SIGPIPE, SIG_IGN);
        if (write(nReport, &running, sizeof(running)) < 0)
            _exit(1);
        int nStatus = 0;
        while (bStay && nChild > 0 && waitpid(nChild, &nStatus, 0) == -1 && errno == EINTR)
        {
        }
        report.nExit = WIFEXITED(nStatus) ? WEXITSTATUS(nStatus) : 128;
    }
    if (write(nReport, &report, sizeof(report)) < 0)
        _exit(1);
    _exit(0);
}
} // namespace

char **SplitArguments(const char *pszLine, const char *pszFirst)
{
    const size_t ulLine = strlen(pszLine), ulFirst = pszFirst ? strlen(pszFirst) + 1 : 0;
    // Every second character can begin an argument at most.
    const size_t ulSlots = ulLine / 2 + 4;
    char **ppszArguments = (char **)malloc(ulSlots * sizeof(char *) + ulFirst + ulLine + 2);
    if (!ppszArguments)
        return nullptr;
    char *pszOut = (char *)(ppszArguments + ulSlots);
    size_t ulCount = 0;
    if (pszFirst)
    {
        memcpy(pszOut, pszFirst, ulFirst);
        ppszArguments[ulCount++] = pszOut;
        pszOut += ulFirst;
    }
    for (const char *p = pszLine;;)
    {
        while (*p == ' ' || *p == '\t')
            ++p;
        if (!*p)
            break;
        ppszArguments[ulCount++] = pszOut;
        bool bQuoted = false;
        while (*p && (bQuoted || (*p != ' ' && *p != '\t')))
        {
            size_t ulSlashes = 0;
            while (p[ulSlashes] == '\\')
                ++ulSlashes;
            p += ulSlashes;
            if (*p != '"')
            {
                for (; ulSlashes; --ulSlashes)
                    *pszOut++ = '\\';
                if (*p && (bQuoted || (*p != ' ' && *p != '\t')))
                    *pszOut++ = *p++;
                continue;
            }
            for (size_t i = 0; i < ulSlashes / 2; ++i)
                *pszOut++ = '\\';
            if (ulSlashes % 2)
                *pszOut++ = '"';
            else if (bQuoted && p[1] == '"')
            {
                *pszOut++ = '"';
                ++p;
            }
            else
                bQuoted = !bQuoted;
            ++p;
        }
        *pszOut++ = 0;
    }
    ppszArguments[ulCount] = nullptr;
    return ppszArguments;
}

int StartProgram(char *const *ppszArguments, const char *pszFolder, int nWait, int *pnExit)
{
    int alReport[2];
    if (pnExit)
        *pnExit = -1;
    if (pipe2(alReport, O_CLOEXEC) != 0)
        return errno;
    const pid_t nKeeper = fork();
    if (nKeeper == 0)
    {
        // Once more, so that the keeper isn't our child and leaves no zombie.
        const pid_t nInner = fork();
        if (nInner == 0)
            RunKeeper(ppszArguments, pszFolder, alReport[1], nWait > 0);
        _exit(nInner < 0);
    }
    const int nForkErrno = errno;
    close(alReport[1]);
    if (nKeeper < 0)
    {
        close(alReport[0]);
        return nForkErrno;
    }
    int nStatus;
    while (waitpid(nKeeper, &nStatus, 0) == -1 && errno == EINTR)
    {
    }
    TReport report = {};
    ssize_t nRead;
    do
        nRead = read(alReport[0], &report, sizeof(report));
    while (nRead < 0 && errno == EINTR);
    if (nRead != (ssize_t)sizeof(report))
        report.nErrno = EAGAIN;
    pollfd poller = { alReport[0], POLLIN, 0 };
    if (!report.nErrno && nWait > 0 && poll(&poller, 1, nWait) == 1)
    {
        TReport end = {};
        if (read(alReport[0], &end, sizeof(end)) == (ssize_t)sizeof(end) && pnExit)
            *pnExit = end.nExit;
    }
    close(alReport[0]);
    return report.nErrno;
}

bool FindOnPath(const char *pszName, char *pszFound)
{
    const char *pszPath = getenv("PATH");
    if (!pszPath || !pszName[0] || strchr(pszName, '/'))
        return false;
    while (true)
    {
        const char *pszEnd = strchrnul(pszPath, ':');
        const int nFolder = (int)(pszEnd - pszPath);
        const int nLength = snprintf(pszFound, PATH_MAX, "%.*s/%s", nFolder, pszPath, pszName);
        // An empty entry would be the working folder: nothing is started from there unasked.
        if (nFolder && nLength < PATH_MAX && IsProgram(pszFound))
            return true;
        if (!*pszEnd)
            return false;
        pszPath = pszEnd + 1;
    }
}
