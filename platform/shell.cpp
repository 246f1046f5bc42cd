#include "platform/errors.h"
#include "platform/path.h"
#include "platform/process.h"

#include <ctype.h>
#include <errno.h>
#include <stdlib.h>
#include <string.h>
#include <strings.h>
#include <sys/stat.h>
#include <unistd.h>

namespace
{
// An opener that finds nothing to open with ends soon; a good one may stay.
const int s_nOpenerWait = 1000;

HINSTANCE Answer(int lResult)
{
    return (HINSTANCE)(intptr_t)lResult;
}

const int s_nStarted = 42; // anything above 32

int ShellError(int nErrno)
{
    switch (nErrno)
    {
    case 0:
        return s_nStarted;
    case ENOENT:
        return SE_ERR_FNF;
    case ENOTDIR:
    case ENAMETOOLONG:
        return SE_ERR_PNF;
    case EACCES:
    case EPERM:
        return SE_ERR_ACCESSDENIED;
    case ENOEXEC:
        return ERROR_BAD_FORMAT;
    case ETXTBSY:
        return SE_ERR_SHARE;
    case ENOMEM:
        return SE_ERR_OOM;
    default:
        return 0; // out of resources
    }
}

/// Letters and a colon, and more than one letter: that would be a drive.
bool IsUrl(const char *psz)
{
    size_t i = 0;
    while (isalnum((unsigned char)psz[i]) || (i && strchr("+-.", psz[i]) && psz[i]))
        ++i;
    return i > 1 && psz[i] == ':' && isalpha((unsigned char)psz[0]);
}

/// Hands a document, folder or address to the desktop.
int OpenDocument(const char *pszWhat, const char *pszFolder)
{
    char szOpener[PATH_MAX];
    if (!FindOnPath("xdg-open", szOpener))
        return SE_ERR_NOASSOC;
    char *apszArguments[] = { szOpener, (char *)pszWhat, nullptr };
    int nExit;
    const int nErrno = StartProgram(apszArguments, pszFolder, s_nOpenerWait, &nExit);
    if (nErrno)
        return ShellError(nErrno);
    if (nExit == 2)
        return SE_ERR_FNF;
    return nExit > 0 ? (int)SE_ERR_NOASSOC : s_nStarted;
}

int StartWith(const char *pszProgram, const char *pszArguments, const char *pszFolder)
{
    char **ppszArguments = SplitArguments(pszArguments ? pszArguments : "", pszProgram);
    if (!ppszArguments)
        return SE_ERR_OOM;
    // The desktop's opener knows no paths of the other kind.
    char szFile[PATH_MAX];
    struct stat info;
    const char *const pszName = strrchr(pszProgram, '/');
    if (ppszArguments[1] && !ppszArguments[2] && strchr(ppszArguments[1], '\\') &&
        strcmp(pszName ? pszName + 1 : pszProgram, "xdg-open") == 0 && ResolvePath(ppszArguments[1], szFile) &&
        stat(szFile, &info) == 0)
        ppszArguments[1] = szFile;
    const int nErrno = StartProgram(ppszArguments, pszFolder, 0, nullptr);
    free(ppszArguments);
    return ShellError(nErrno);
}

/// The file that is meant: as a path, in the given folder, or a program on PATH.
/// @return 0, or what ShellExecuteA answers when there is none
int LocateFile(const char *pszFile, const char *pszFolder, char *pszFound)
{
    struct stat info;
    const bool bBare = !strchr(pszFile, '/') && !strchr(pszFile, '\\');
    const bool bAbsolute = pszFile[0] == '/' || pszFile[0] == '\\';
    if (pszFolder && pszFolder[0] && !bAbsolute)
    {
        CText path;
        path.Add(pszFolder).Add("/").Add(pszFile);
        if (path.Failed())
            return SE_ERR_OOM;
        if (ResolvePath(path.Text(), pszFound) && stat(pszFound, &info) == 0)
            return 0;
    }
    if (!ResolvePath(pszFile, pszFound))
        return errno == ENAMETOOLONG ? SE_ERR_PNF : SE_ERR_FNF;
    if (stat(pszFound, &info) == 0)
    {
        // A bare name would be looked for on PATH when it is started.
        if (bBare && strlen(pszFound) + 2 < PATH_MAX)
        {
            memmove(pszFound + 2, pszFound, strlen(pszFound) + 1);
            memcpy(pszFound, "./", 2);
        }
        return 0;
    }
    if (errno == EACCES)
        return SE_ERR_ACCESSDENIED;
    const bool bParent = ParentExists(pszFound);
    if (bBare && FindOnPath(pszFile, pszFound))
        return 0;
    return bParent ? SE_ERR_FNF : SE_ERR_PNF;
}

/// Makes a path good for another working folder.
bool MakeAbsolute(char *pszPath)
{
    char szReal[PATH_MAX];
    if (!realpath(pszPath, szReal))
        return false;
    strcpy(pszPath, szReal);
    return true;
}

bool IsExecutable(const char *pszPath)
{
    struct stat info;
    const char *pszDot = strrchr(pszPath, '.');
    // Link files carry the flag too, and are for the desktop to open.
    if (pszDot && strcasecmp(pszDot, ".desktop") == 0)
        return false;
    return stat(pszPath, &info) == 0 && S_ISREG(info.st_mode) && access(pszPath, X_OK) == 0;
}
} // namespace

HINSTANCE ShellExecuteA(HWND, LPCSTR pszVerb, LPCSTR pszFile, LPCSTR pszArguments, LPCSTR pszDirectory, int)
{
    char szFile[PATH_MAX], szFolder[PATH_MAX];
    struct stat info;
    if (pszVerb && pszVerb[0] && strcasecmp(pszVerb, "open") != 0 && strcasecmp(pszVerb, "explore") != 0)
        return Answer(SE_ERR_NOASSOC);
    if (!pszFile || !pszFile[0])
        return Answer(SE_ERR_FNF);
    const char *pszStartIn = nullptr;
    if (pszDirectory && pszDirectory[0])
    {
        if (!ResolvePath(pszDirectory, szFolder) || stat(szFolder, &info) != 0 || !S_ISDIR(info.st_mode))
            return Answer(SE_ERR_PNF);
        pszStartIn = szFolder;
    }
    const int nMissing = LocateFile(pszFile, pszStartIn, szFile);
    if (nMissing)
        return Answer(IsUrl(pszFile) ? OpenDocument(pszFile, pszStartIn) : nMissing);
    if (!MakeAbsolute(szFile))
        return Answer(ShellError(errno));
    if (IsExecutable(szFile))
        return Answer(StartWith(szFile, pszArguments, pszStartIn));
    return Answer(OpenDocument(szFile, pszStartIn));
}

HINSTANCE FindExecutableA(LPCSTR pszFile, LPCSTR pszDirectory, LPSTR pszResult)
{
    char szFile[PATH_MAX];
    if (!pszFile || !pszFile[0] || !pszResult)
        return Answer(SE_ERR_FNF);
    pszResult[0] = 0;
    const int nMissing = LocateFile(pszFile, pszDirectory, szFile);
    if (nMissing)
        return Answer(nMissing);
    if (!MakeAbsolute(szFile))
        return Answer(ShellError(errno));
    if (!IsExecutable(szFile) && !FindOnPath("xdg-open", szFile))
        return Answer(SE_ERR_NOASSOC);
    if (strlen(szFile) >= MAX_PATH)
        return Answer(SE_ERR_PNF);
    strcpy(pszResult, szFile);
    return Answer(s_nStarted);
}
