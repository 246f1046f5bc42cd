#include "tarvix/systemfiles.h"

#include "core/openfile.h"
#include "tarvix/error.h"
#include "tarvix/file.h"
#include "tarvix/globals.h"
#include "tarvix/systemdirs.h"
#include "tarvix/wholefile.h"
#include "win/win32.h"

#include <algorithm>
#include <errno.h>
#include <stdio.h>

namespace
{
const xulong s_ulCopyBlock = 512;

// Writes went through a buffer: a full disk shows when it is emptied.
xlong CloseWritten(CFile &file, xlong lResult)
{
    const xlong lFlushed = file.Flush();
    file.Close();
    return lResult && lFlushed;
}
} // namespace

xlong xFileExists(const char *pszPath)
{
    FILE *pFile = OpenStream(pszPath, "rb");
    if (pFile)
        fclose(pFile);
    return pFile != nullptr;
}

xlong xFileDelete(const char *pszPath)
{
    if (!PlatformRemoveFile(pszPath))
        return 1;
    return xError(errno == EACCES ? XERR_READ_ONLY : XERR_DELETE);
}

xlong xFileRename(const char *pszNewName, const char *pszOldName)
{
    if (!PlatformRenameFile(pszOldName, pszNewName))
        return 1;
    return xError(errno == ENOENT ? XERR_NOT_FOUND : XERR_RENAME);
}

xlong xFileSize(const char *pszPath, xulong *pulSize)
{
    CFile file;
    return file.Open(pszPath, FILE_READ) && file.GetSize(pulSize);
}

xlong xCopyFile(const char *pszTo, const char *pszFrom)
{
    // Beside the target: it may be the source itself, under this or another name.
    CWholeFile whole;
    CFile from, to;
    xulong ulLeft = 0;
    if (!from.Open(pszFrom, FILE_READ) || !from.GetSize(&ulLeft))
        return 0;
    if (!whole.BeginWithDirs(pszTo) || !to.Open(whole.GetPath(), FILE_WRITE))
        return 0;
    char buffer[s_ulCopyBlock];
    xlong lResult = 1;
    while (ulLeft && lResult)
    {
        const xulong ulPart = std::min(ulLeft, s_ulCopyBlock);
        lResult = from.Read(buffer, ulPart) && to.Write(buffer, ulPart);
        ulLeft -= ulPart;
    }
    from.Close();
    return CloseWritten(to, lResult) && whole.Commit();
}

xlong xReadFile(const char *pszPath, void *pBuf, xulong ulLen)
{
    CFile file;
    return file.Open(pszPath, FILE_READ) && file.Read(pBuf, ulLen);
}

xlong xWriteFile(const char *pszPath, const void *pBuf, xulong ulLen)
{
    CWholeFile whole;
    CFile file;
    return whole.Begin(pszPath) && file.Open(whole.GetPath(), FILE_WRITE) &&
           CloseWritten(file, file.Write(pBuf, ulLen)) && whole.Commit();
}

xlong xFileGetLastWriteTime(const char *pszPath, xulong &ulLow, xulong &ulHigh)
{
    HANDLE hFile =
        CreateFileA(pszPath, GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_EXISTING, 0, nullptr);
    if (hFile == INVALID_HANDLE_VALUE)
        return 0;
    FILETIME written;
    const BOOL bKnown = GetFileTime(hFile, nullptr, nullptr, &written);
    CloseHandle(hFile);
    if (!bKnown)
        return 0;
    ulLow = written.dwLowDateTime;
    ulHigh = written.dwHighDateTime;
    return 1;
}

void xRemoveReadOnly(const char *pszPath)
{
    if (xFileExists(pszPath))
        _chmod(pszPath, 384);
}
