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
    int lErrno; ///< of a failed start, 0 when the program has ended
    int lExit;
};

bool IsProgram(const char *pszPath)
{
    struct stat info;
    return stat(pszPath, &info) == 0 && S_ISREG(info.st_mode) && access(pszPath, X_OK) == 0;
}

/// Runs between fork and exec: only calls that are safe there.
[[noreturn]] void RunChild(char *const *ppszArguments, const char *pszFolder, int lReport)
{
    TReport report = {};
    signal(SIGPIPE, SIG_DFL);
    if (pszFolder && chdir(pszFolder) != 0)
    {
        report.lErrno = errno == ENOENT ? ENOTDIR : errno;
        if (write(lReport, &report, sizeof(report)) < 0)
            _exit(126);
        _exit(127);
    }
    execv(ppszArguments[0], ppszArguments);
    report.lErrno = errno;
    if (write(lReport, &report, sizeof(report)) < 0)
        _exit(126);
    _exit(127);
}

/// Stands between us and the program, so that nobody has to wait for its end.
[[noreturn]] void RunKeeper(char *const *ppszArguments, const char *pszFolder, int lReport, bool bStay)
{
    setsid();
    // Our connection to the display must end with us, not with the program.
    if (lReport != 3)
        dup3(lReport, 3, O_CLOEXEC);
    lReport = 3;
    close_range(4, ~0u, 0);
    int alStart[2];
    TReport report = {};
    if (pipe2(alStart, O_CLOEXEC) != 0)
        report.lErrno = errno;
    else
    {
        const pid_t lChild = fork();
        if (lChild == 0)
            RunChild(ppszArguments, pszFolder, alStart[1]);
        report.lErrno = lChild < 0 ? errno : 0;
        close(alStart[1]);
        TReport start = {};
        // The pipe closes without a word when exec succeeds.
        if (lChild > 0 && read(alStart[0], &start, sizeof(start)) == (ssize_t)sizeof(start))
            report = start;
        // Says "running" first and the exit code later.
        TReport running = { report.lErrno, -1 };
        signal(SIGPIPE, SIG_IGN);
        if (write(lReport, &running, sizeof(running)) < 0)
            _exit(1);
        int lStatus = 0;
        while (bStay && lChild > 0 && waitpid(lChild, &lStatus, 0) == -1 && errno == EINTR)
        {
        }
        report.lExit = WIFEXITED(lStatus) ? WEXITSTATUS(lStatus) : 128;
    }
    if (write(lReport, &report, sizeof(report)) < 0)
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

int StartProgram(char *const *ppszArguments, const char *pszFolder, int lWait, int *plExit)
{
    int alReport[2];
    if (plExit)
        *plExit = -1;
    if (pipe2(alReport, O_CLOEXEC) != 0)
        return errno;
    const pid_t lKeeper = fork();
    if (lKeeper == 0)
    {
        // Once more, so that the keeper isn't our child and leaves no zombie.
        const pid_t lInner = fork();
        if (lInner == 0)
            RunKeeper(ppszArguments, pszFolder, alReport[1], lWait > 0);
        _exit(lInner < 0);
    }
    const int lForkErrno = errno;
    close(alReport[1]);
    if (lKeeper < 0)
    {
        close(alReport[0]);
        return lForkErrno;
    }
    int lStatus;
    while (waitpid(lKeeper, &lStatus, 0) == -1 && errno == EINTR)
    {
    }
    TReport report = {};
    ssize_t lRead;
    do
        lRead = read(alReport[0], &report, sizeof(report));
    while (lRead < 0 && errno == EINTR);
    if (lRead != (ssize_t)sizeof(report))
        report.lErrno = EAGAIN;
    pollfd poller = { alReport[0], POLLIN, 0 };
    if (!report.lErrno && lWait > 0 && poll(&poller, 1, lWait) == 1)
    {
        TReport end = {};
        if (read(alReport[0], &end, sizeof(end)) == (ssize_t)sizeof(end) && plExit)
            *plExit = end.lExit;
    }
    close(alReport[0]);
    return report.lErrno;
}

bool FindOnPath(const char *pszName, char *pszFound)
{
    const char *pszPath = getenv("PATH");
    if (!pszPath || !pszName[0] || strchr(pszName, '/'))
        return false;
    while (true)
    {
        const char *pszEnd = strchrnul(pszPath, ':');
        const int lFolder = (int)(pszEnd - pszPath);
        const int lLength = snprintf(pszFound, PATH_MAX, "%.*s/%s", lFolder, pszPath, pszName);
        // An empty entry would be the working folder: nothing is started from there unasked.
        if (lFolder && lLength < PATH_MAX && IsProgram(pszFound))
            return true;
        if (!*pszEnd)
            return false;
        pszPath = pszEnd + 1;
    }
}
