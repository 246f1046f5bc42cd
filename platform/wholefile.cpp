#include "platform/path.h"
#include "platform/win32.h"

#include <errno.h>
#include <fcntl.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>
#include <unistd.h>

namespace
{
// Where a chain of links ends, also when nothing is there yet.
bool FollowLinks(char *pszPath)
{
    for (int nLinks = 0; nLinks < 40; ++nLinks)
    {
        char szTo[PATH_MAX], szNext[2 * PATH_MAX];
        const ssize_t lLength = readlink(pszPath, szTo, sizeof(szTo) - 1);
        if (lLength < 0)
            return errno == EINVAL || errno == ENOENT;
        szTo[lLength] = 0;
        const char *const pszSlash = strrchr(pszPath, '/');
        const int nFolder = *szTo != '/' && pszSlash ? (int)(pszSlash - pszPath) + 1 : 0;
        snprintf(szNext, sizeof(szNext), "%.*s%s", nFolder, pszPath, szTo);
        if (strlen(szNext) >= PATH_MAX)
            return false;
        strcpy(pszPath, szNext);
    }
    return false; // a ring
}

void SyncFolder(const char *pszPath)
{
    char szFolder[PATH_MAX];
    strcpy(szFolder, pszPath);
    char *const pszSlash = strrchr(szFolder, '/');
    if (pszSlash)
        pszSlash[pszSlash == szFolder] = 0;
    const int nFolder = open(pszSlash ? szFolder : ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (nFolder < 0)
        return;
    fsync(nFolder);
    close(nFolder);
}
} // namespace

bool PlatformWholeTarget(const char *pszPath, char *pszTarget, size_t ulSize, bool *pbDirect)
{
    char szReal[PATH_MAX];
    struct stat info;
    if (!ResolveNewPath(pszPath, szReal) || !FollowLinks(szReal) || strlen(szReal) >= ulSize)
        return false;
    strcpy(pszTarget, szReal);
    const bool bThere = stat(szReal, &info) == 0;
    *pbDirect = bThere && !S_ISREG(info.st_mode);
    return !bThere || (!S_ISDIR(info.st_mode) && access(szReal, W_OK) == 0);
}

int PlatformMakePart(const char *pszPart, const char *pszTarget)
{
    struct stat info;
    const bool bThere = stat(pszTarget, &info) == 0;
    const int nFile = open(pszPart, O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, bThere ? S_IRUSR | S_IWUSR : 0666);
    if (nFile < 0)
        return errno == EEXIST ? 0 : -1;
    // The owner too, where that is allowed; the mode after it, which it resets.
    if (bThere && (fchown(nFile, info.st_uid, info.st_gid) == 0 || errno == EPERM))
        fchmod(nFile, info.st_mode & 07777);
    close(nFile);
    return 1;
}

bool PlatformReplaceFile(const char *pszPart, const char *pszTarget)
{
    const int nFile = open(pszPart, O_WRONLY | O_CLOEXEC);
    if (nFile < 0)
        return false;
    const bool bWritten = fsync(nFile) == 0;
    if (close(nFile) != 0 || !bWritten || rename(pszPart, pszTarget) != 0)
        return false;
    SyncFolder(pszTarget);
    return true;
}

void PlatformRemovePart(const char *pszPart)
{
    unlink(pszPart);
}
