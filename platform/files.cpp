#include "platform/errors.h"
#include "platform/filetime.h"
#include "platform/path.h"

#include <errno.h>
#include <fcntl.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>
#include <unistd.h>

namespace
{
const unsigned s_ulFileMagic = 0x454C4946;

struct TFileHandle
{
    unsigned ulMagic;
    int nFile;
};

bool IsWritable(const struct stat &info)
{
    return info.st_mode & (S_IWUSR | S_IWGRP | S_IWOTH);
}

/// Missing folders on the way are another error than a missing file.
BOOL FailOnPath(const char *pszReal)
{
    if (errno == ENOENT && !ParentExists(pszReal))
        errno = ENOTDIR;
    return FailWithErrno();
}

BOOL FailOnName()
{
    SetLastError(errno == ENAMETOOLONG ? ERROR_FILENAME_EXCED_RANGE : ERROR_PATH_NOT_FOUND);
    return FALSE;
}

/// Copies a text into a buffer of the caller's, in the manner of the calls
/// that answer the length, or the room that they need.
DWORD GiveText(const char *pszText, DWORD ulSize, LPSTR pszBuffer)
{
    const DWORD ulLength = (DWORD)strlen(pszText);
    if (!pszBuffer || ulLength >= ulSize)
        return ulLength + 1;
    memcpy(pszBuffer, pszText, ulLength + 1);
    return ulLength;
}

void CopyPart(char *pszTarget, const char *pszStart, const char *pszEnd, size_t ulRoom)
{
    if (!pszTarget)
        return;
    const size_t ulLength = (size_t)(pszEnd - pszStart) < ulRoom - 1 ? (size_t)(pszEnd - pszStart) : ulRoom - 1;
    memcpy(pszTarget, pszStart, ulLength);
    pszTarget[ulLength] = 0;
}
} // namespace

DWORD AttributesOf(const struct stat &info, const char *pszName)
{
    DWORD ulAttributes = S_ISDIR(info.st_mode) ? FILE_ATTRIBUTE_DIRECTORY : FILE_ATTRIBUTE_ARCHIVE;
    if (!IsWritable(info))
        ulAttributes |= FILE_ATTRIBUTE_READONLY;
    if (pszName[0] == '.' && strcmp(pszName, ".") != 0 && strcmp(pszName, "..") != 0)
        ulAttributes |= FILE_ATTRIBUTE_HIDDEN;
    return ulAttributes;
}

FILETIME ToFileTime(const timespec &time)
{
    // Hundreds of nanoseconds since 1601.
    const LONGLONG ll = ((LONGLONG)time.tv_sec + 11644473600LL) * 10000000 + time.tv_nsec / 100;
    return { (DWORD)ll, (DWORD)((ULONGLONG)ll >> 32) };
}

DWORD GetCurrentDirectoryA(DWORD ulSize, LPSTR pszBuffer)
{
    char szPath[PATH_MAX];
    if (!getcwd(szPath, sizeof(szPath)))
    {
        FailWithErrno();
        return 0;
    }
    return GiveText(szPath, ulSize, pszBuffer);
}

BOOL SetCurrentDirectoryA(LPCSTR pszPath)
{
    char szReal[PATH_MAX];
    if (!ResolvePath(pszPath, szReal))
        return FailOnName();
    if (chdir(szReal) == 0)
        return TRUE;
    if (errno == ENOTDIR && ParentExists(szReal))
    {
        SetLastError(ERROR_DIRECTORY);
        return FALSE;
    }
    return FailOnPath(szReal);
}

BOOL CreateDirectoryA(LPCSTR pszPath, SECURITY_ATTRIBUTES *)
{
    char szReal[PATH_MAX];
    if (!ResolvePath(pszPath, szReal))
        return FailOnName();
    return mkdir(szReal, 0777) == 0 ? TRUE : FailOnPath(szReal);
}

DWORD GetFileAttributesA(LPCSTR pszPath)
{
    char szReal[PATH_MAX];
    struct stat info;
    if (!ResolvePath(pszPath, szReal))
    {
        FailOnName();
        return INVALID_FILE_ATTRIBUTES;
    }
    if (stat(szReal, &info) != 0)
    {
        FailOnPath(szReal);
        return INVALID_FILE_ATTRIBUTES;
    }
    const char *pszName = strrchr(szReal, '/');
    return AttributesOf(info, pszName ? pszName + 1 : szReal);
}

BOOL DeleteFileA(LPCSTR pszPath)
{
    char szReal[PATH_MAX];
    struct stat info;
    if (!ResolvePath(pszPath, szReal))
        return FailOnName();
    if (lstat(szReal, &info) != 0)
        return FailOnPath(szReal);
    if (S_ISDIR(info.st_mode) || (!S_ISLNK(info.st_mode) && !IsWritable(info)))
    {
        SetLastError(ERROR_ACCESS_DENIED);
        return FALSE;
    }
    return unlink(szReal) == 0 ? TRUE : FailOnPath(szReal);
}

DWORD GetTempPathA(DWORD ulSize, LPSTR pszBuffer)
{
    char szPath[PATH_MAX];
    const char *pszTemp = getenv("TMPDIR");
    if (!pszTemp || !pszTemp[0] || strlen(pszTemp) >= sizeof(szPath) - 1)
        pszTemp = "/tmp";
    strcpy(szPath, pszTemp);
    if (szPath[strlen(szPath) - 1] != '/')
        strcat(szPath, "/");
    return GiveText(szPath, ulSize, pszBuffer);
}

UINT GetTempFileNameA(LPCSTR pszPath, LPCSTR pszPrefix, UINT ulUnique, LPSTR pszName)
{
    if (!pszPath || !pszPrefix || !pszName)
    {
        SetLastError(ERROR_INVALID_PARAMETER);
        return 0;
    }
    const size_t ulLength = strlen(pszPath);
    // Room for a separator, three letters, four digits and the ending.
    if (ulLength > MAX_PATH - 14)
    {
        SetLastError(ERROR_BUFFER_OVERFLOW);
        return 0;
    }
    const bool bSeparator = ulLength && (pszPath[ulLength - 1] == '/' || pszPath[ulLength - 1] == '\\');
    UINT ulNumber = ulUnique & 0xFFFF;
    if (!ulNumber)
        ulNumber = ((UINT)getpid() * 0x9E37u + GetTickCount()) & 0xFFFF;
    for (int i = 0; i < 0x10000; ++i, ulNumber = (ulNumber + 1) & 0xFFFF)
    {
        if (!ulNumber)
            continue;
        snprintf(pszName, MAX_PATH, "%s%s%.3s%x.tmp", pszPath, bSeparator || !ulLength ? "" : "/", pszPrefix, ulNumber);
        if (ulUnique)
            return ulNumber;
        char szReal[PATH_MAX];
        if (!ResolvePath(pszName, szReal))
            break;
        const int nFile = open(szReal, O_CREAT | O_EXCL | O_WRONLY | O_CLOEXEC, 0600);
        if (nFile >= 0)
        {
            close(nFile);
            return ulNumber;
        }
        if (errno != EEXIST)
        {
            // The folder is at fault then.
            SetLastError(errno == ENOENT || errno == ENOTDIR ? (DWORD)ERROR_DIRECTORY : ErrorOf(errno));
            return 0;
        }
    }
    SetLastError(ERROR_FILE_EXISTS);
    return 0;
}

HANDLE CreateFileA(LPCSTR pszPath, DWORD ulAccess, DWORD, SECURITY_ATTRIBUTES *, DWORD ulDisposition, DWORD ulFlags,
                   HANDLE)
{
    char szReal[PATH_MAX];
    if ((ulAccess & ~(DWORD)GENERIC_READ) || ulDisposition != OPEN_EXISTING)
    {
        SetLastError(ERROR_INVALID_PARAMETER);
        return INVALID_HANDLE_VALUE;
    }
    if (!ResolvePath(pszPath, szReal))
    {
        FailOnName();
        return INVALID_HANDLE_VALUE;
    }
    const int nFile = open(szReal, (ulAccess ? O_RDONLY : O_PATH) | O_CLOEXEC | O_NONBLOCK);
    struct stat info;
    if (nFile < 0 || fstat(nFile, &info) != 0)
    {
        FailOnPath(szReal);
        if (nFile >= 0)
            close(nFile);
        return INVALID_HANDLE_VALUE;
    }
    TFileHandle *pHandle = nullptr;
    if (S_ISDIR(info.st_mode) && !(ulFlags & FILE_FLAG_BACKUP_SEMANTICS))
        SetLastError(ERROR_ACCESS_DENIED);
    else if (!(pHandle = (TFileHandle *)malloc(sizeof(TFileHandle))))
        SetLastError(ERROR_NOT_ENOUGH_MEMORY);
    if (!pHandle)
    {
        close(nFile);
        return INVALID_HANDLE_VALUE;
    }
    *pHandle = { s_ulFileMagic, nFile };
    return pHandle;
}

BOOL GetFileTime(HANDLE hFile, FILETIME *pCreated, FILETIME *pAccessed, FILETIME *pWritten)
{
    const TFileHandle *pHandle = (const TFileHandle *)hFile;
    struct statx info;
    if (!hFile || hFile == INVALID_HANDLE_VALUE || pHandle->ulMagic != s_ulFileMagic)
    {
        SetLastError(ERROR_INVALID_HANDLE);
        return FALSE;
    }
    if (statx(pHandle->nFile, "", AT_EMPTY_PATH, STATX_BASIC_STATS | STATX_BTIME, &info) != 0)
        return FailWithErrno();
    const statx_timestamp &created = info.stx_mask & STATX_BTIME ? info.stx_btime : info.stx_mtime;
    if (pCreated)
        *pCreated = ToFileTime({ (time_t)created.tv_sec, (long)created.tv_nsec });
    if (pAccessed)
        *pAccessed = ToFileTime({ (time_t)info.stx_atime.tv_sec, (long)info.stx_atime.tv_nsec });
    if (pWritten)
        *pWritten = ToFileTime({ (time_t)info.stx_mtime.tv_sec, (long)info.stx_mtime.tv_nsec });
    return TRUE;
}

BOOL CloseHandle(HANDLE hObject)
{
    TFileHandle *pHandle = (TFileHandle *)hObject;
    if (!hObject || hObject == INVALID_HANDLE_VALUE || pHandle->ulMagic != s_ulFileMagic)
    {
        SetLastError(ERROR_INVALID_HANDLE);
        return FALSE;
    }
    close(pHandle->nFile);
    pHandle->ulMagic = 0;
    free(pHandle);
    return TRUE;
}

void _splitpath(const char *pszPath, char *pszDrive, char *pszDir, char *pszName, char *pszExt)
{
    const char *pszEnd = pszPath + strlen(pszPath);
    const char *pszDirStart = pszPath;
    if (pszPath[0] && pszPath[1] == ':')
        pszDirStart += 2;
    const char *pszNameStart = pszEnd;
    while (pszNameStart > pszDirStart && pszNameStart[-1] != '/' && pszNameStart[-1] != '\\')
        --pszNameStart;
    const char *pszExtStart = pszEnd;
    for (const char *p = pszEnd; p > pszNameStart; --p)
    {
        if (p[-1] == '.')
        {
            pszExtStart = p - 1;
            break;
        }
    }
    CopyPart(pszDrive, pszPath, pszDirStart, _MAX_DRIVE);
    CopyPart(pszDir, pszDirStart, pszNameStart, _MAX_DIR);
    CopyPart(pszName, pszNameStart, pszExtStart, _MAX_FNAME);
    CopyPart(pszExt, pszExtStart, pszEnd, _MAX_EXT);
}

int _chmod(const char *pszPath, int nMode)
{
    char szReal[PATH_MAX];
    struct stat info;
    if (!ResolvePath(pszPath, szReal) || stat(szReal, &info) != 0)
        return -1;
    // Only writing can be forbidden on Windows.
    const mode_t ulMode = info.st_mode & 07777;
    return chmod(szReal, nMode & _S_IWRITE ? ulMode | S_IWUSR : ulMode & ~(mode_t)(S_IWUSR | S_IWGRP | S_IWOTH));
}

FILE *PlatformOpenFile(const char *pszPath, const char *pszMode)
{
    char szReal[PATH_MAX];
    struct stat info;
    if (!(pszMode[0] == 'w' ? ResolveNewPath(pszPath, szReal) : ResolvePath(pszPath, szReal)))
        return nullptr;
    FILE *pFile = fopen(szReal, pszMode);
    // A folder opens for reading here, and then can't be read.
    if (pFile && fstat(fileno(pFile), &info) == 0 && S_ISDIR(info.st_mode))
    {
        fclose(pFile);
        pFile = nullptr;
        errno = EACCES;
    }
    return pFile;
}

int PlatformRemoveFile(const char *pszPath)
{
    char szReal[PATH_MAX];
    struct stat info;
    if (!ResolvePath(pszPath, szReal) || lstat(szReal, &info) != 0)
        return -1;
    // As on Windows, a folder isn't a file and a protected file stays.
    if (S_ISDIR(info.st_mode) || (!S_ISLNK(info.st_mode) && !IsWritable(info)))
    {
        errno = EACCES;
        return -1;
    }
    return unlink(szReal);
}

int PlatformRenameFile(const char *pszOldPath, const char *pszNewPath)
{
    char szOld[PATH_MAX], szNew[PATH_MAX];
    struct stat oldInfo, newInfo;
    if (!ResolvePath(pszOldPath, szOld) || !ResolvePath(pszNewPath, szNew) || lstat(szOld, &oldInfo) != 0)
        return -1;
    if (lstat(szNew, &newInfo) == 0)
    {
        if (oldInfo.st_dev != newInfo.st_dev || oldInfo.st_ino != newInfo.st_ino)
        {
            errno = EEXIST;
            return -1;
        }
        // The same file under another case: the caller's spelling is the new name.
        const char *pszName = pszNewPath + strlen(pszNewPath);
        while (pszName > pszNewPath && pszName[-1] != '/' && pszName[-1] != '\\')
            --pszName;
        const size_t ulFolder = strlen(szNew) - strlen(strrchr(szNew, '/') ? strrchr(szNew, '/') + 1 : szNew);
        if (ulFolder + strlen(pszName) < PATH_MAX)
            strcpy(szNew + ulFolder, pszName);
    }
    return rename(szOld, szNew);
}
