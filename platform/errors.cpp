#include "platform/errors.h"

#include <errno.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

namespace
{
DWORD s_ulLastError = ERROR_SUCCESS;
char s_szDisplay[200] = "There is no display.";

struct TErrorText
{
    DWORD ulError;
    const char *pszText;
};

const TErrorText s_ErrorTexts[] = {
    { ERROR_SUCCESS, "No error occurred." },
    { ERROR_INVALID_FUNCTION, "This function does not exist." },
    { ERROR_FILE_NOT_FOUND, "The file was not found." },
    { ERROR_PATH_NOT_FOUND, "The folder of this path was not found." },
    { ERROR_TOO_MANY_OPEN_FILES, "Too many files are open." },
    { ERROR_ACCESS_DENIED, "Access was denied." },
    { ERROR_INVALID_HANDLE, "The handle means nothing to this call." },
    { ERROR_NOT_ENOUGH_MEMORY, "There is not enough memory." },
    { ERROR_BAD_FORMAT, "The program file is damaged or not for this system." },
    { ERROR_NO_MORE_FILES, "There are no further files." },
    { ERROR_WRITE_PROTECT, "The medium is protected against writing." },
    { ERROR_NOT_READY, "The device is not ready." },
    { ERROR_GEN_FAILURE, "A device does not work." },
    { ERROR_SHARING_VIOLATION, "Another program is using the file." },
    { ERROR_NOT_SUPPORTED, "This is not supported here." },
    { ERROR_FILE_EXISTS, "The file exists already." },
    { ERROR_CANNOT_MAKE, "The file or folder can't be created." },
    { ERROR_INVALID_PARAMETER, "A parameter is wrong." },
    { ERROR_DISK_FULL, "The disk is full." },
    { ERROR_INSUFFICIENT_BUFFER, "The buffer is too small for the answer." },
    { ERROR_INVALID_NAME, "The name of the file or folder is wrong." },
    { ERROR_MOD_NOT_FOUND, "The module was not found." },
    { ERROR_PROC_NOT_FOUND, "The module has no such function." },
    { ERROR_DIR_NOT_EMPTY, "The folder is not empty." },
    { ERROR_BUSY, "What was asked for is in use." },
    { ERROR_ALREADY_EXISTS, "It exists already." },
    { ERROR_BAD_EXE_FORMAT, "The file is no program of this system." },
    { ERROR_FILENAME_EXCED_RANGE, "The file name is too long." },
    { ERROR_DIRECTORY, "The name is not that of a folder." },
    { ERROR_INVALID_ADDRESS, "The address can't be used." },
    { ERROR_INVALID_WINDOW_HANDLE, "There is no such window." },
    { ERROR_INVALID_HOOK_HANDLE, "There is no such hook." },
    { ERROR_CAN_NOT_COMPLETE, s_szDisplay },
    { ERROR_CANNOT_FIND_WND_CLASS, "The window class was not found." },
    { ERROR_CLASS_ALREADY_EXISTS, "The window class exists already." },
    { ERROR_CLASS_DOES_NOT_EXIST, "The window class does not exist." },
    { ERROR_CLASS_HAS_WINDOWS, "Windows of this class are still open." },
    { ERROR_INVALID_INDEX, "The index is wrong." },
    { ERROR_CLIPBOARD_NOT_OPEN, "The clipboard has not been opened." },
    { ERROR_INVALID_HOOK_FILTER, "There are no hooks of this kind." },
    { ERROR_INVALID_FILTER_PROC, "The hook has no procedure." },
    { ERROR_COMMITMENT_LIMIT, "The system has no more memory to promise." },
    { ERROR_RESOURCE_NAME_NOT_FOUND, "The resource was not found." },
    { (DWORD)E_NOTIMPL, "This is not available." },
    { (DWORD)E_NOINTERFACE, "The object has no such interface." },
    { (DWORD)E_POINTER, "A pointer is missing." },
    { (DWORD)E_FAIL, "It failed for no known reason." },
    { (DWORD)E_ACCESSDENIED, "Access was denied." },
    { (DWORD)E_OUTOFMEMORY, "There is not enough memory." },
    { (DWORD)E_INVALIDARG, "A parameter is wrong." },
    { (DWORD)STG_E_FILENOTFOUND, "The link was not found." },
    { (DWORD)STG_E_PATHNOTFOUND, "The folder of the link was not found." },
    { (DWORD)STG_E_ACCESSDENIED, "Access to the link was denied." },
    { (DWORD)STG_E_MEDIUMFULL, "There is no room left for the link." },
    { (DWORD)STG_E_INVALIDHEADER, "The file is no link." },
    { (DWORD)CLASS_E_NOAGGREGATION, "The object can't be part of another." },
    { (DWORD)REGDB_E_CLASSNOTREG, "The class is not registered." },
    { (DWORD)CO_E_NOTINITIALIZED, "CoInitialize was not called." },
};
} // namespace

DWORD GetLastError()
{
    return s_ulLastError;
}

void SetLastError(DWORD ulError)
{
    s_ulLastError = ulError;
}

void SetDisplayError(const char *pszReason)
{
    snprintf(s_szDisplay, sizeof(s_szDisplay),
             "There is no display: %s. With SDL_VIDEODRIVER=dummy the program runs without one.", pszReason);
    SetLastError(ERROR_CAN_NOT_COMPLETE);
}

DWORD ErrorOf(int nErrno)
{
    switch (nErrno)
    {
    case 0:
        return ERROR_SUCCESS;
    case ENOENT:
        return ERROR_FILE_NOT_FOUND;
    case ENOTDIR:
    case ELOOP:
        return ERROR_PATH_NOT_FOUND;
    case EMFILE:
    case ENFILE:
        return ERROR_TOO_MANY_OPEN_FILES;
    case EACCES:
    case EPERM:
    case EISDIR:
        return ERROR_ACCESS_DENIED;
    case EBADF:
        return ERROR_INVALID_HANDLE;
    case ENOMEM:
        return ERROR_NOT_ENOUGH_MEMORY;
    case EROFS:
        return ERROR_WRITE_PROTECT;
    case ENOSPC:
    case EDQUOT:
        return ERROR_DISK_FULL;
    case EEXIST:
        return ERROR_ALREADY_EXISTS;
    case EINVAL:
        return ERROR_INVALID_PARAMETER;
    case ENAMETOOLONG:
        return ERROR_FILENAME_EXCED_RANGE;
    case ENOTEMPTY:
        return ERROR_DIR_NOT_EMPTY;
    case EBUSY:
    case ETXTBSY:
        return ERROR_SHARING_VIOLATION;
    case ENOEXEC:
        return ERROR_BAD_EXE_FORMAT;
    default:
        return ERROR_GEN_FAILURE;
    }
}

BOOL FailWithErrno()
{
    SetLastError(ErrorOf(errno));
    return FALSE;
}

DWORD FormatMessageA(DWORD ulFlags, LPCVOID, DWORD ulMessage, DWORD, LPSTR pszBuffer, DWORD ulSize, void *)
{
    const DWORD ulKnown = FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_IGNORE_INSERTS | FORMAT_MESSAGE_FROM_SYSTEM;
    if (!pszBuffer || !(ulFlags & FORMAT_MESSAGE_FROM_SYSTEM) || (ulFlags & ~ulKnown & ~0xFFu))
    {
        SetLastError(ERROR_INVALID_PARAMETER);
        return 0;
    }
    const char *pszText = nullptr;
    for (const TErrorText &text : s_ErrorTexts)
        if (text.ulError == ulMessage || (ulMessage >> 16 == 0x8007 && text.ulError == (ulMessage & 0xFFFF)))
            pszText = text.pszText;
    if (!pszText)
    {
        SetLastError(ERROR_MR_MID_NOT_FOUND);
        return 0;
    }
    const DWORD ulLength = (DWORD)strlen(pszText) + 2;
    if (ulFlags & FORMAT_MESSAGE_ALLOCATE_BUFFER)
    {
        const DWORD ulRoom = ulSize > ulLength + 1 ? ulSize : ulLength + 1;
        char *pszNew = (char *)LocalAlloc(LMEM_FIXED, ulRoom);
        if (!pszNew)
            return 0;
        memcpy(pszBuffer, &pszNew, sizeof(pszNew)); // the caller's buffer is a pointer then
        pszBuffer = pszNew;
    }
    else if (ulSize < ulLength + 1)
    {
        SetLastError(ERROR_INSUFFICIENT_BUFFER);
        return 0;
    }
    memcpy(pszBuffer, pszText, ulLength - 2);
    memcpy(pszBuffer + ulLength - 2, "\r\n", 3);
    return ulLength;
}
