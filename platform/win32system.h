// Memory, files, clock and errors. Included by platform/win32.h.
#pragma once

enum : DWORD
{
    ERROR_SUCCESS = 0,
    NO_ERROR = 0,
    ERROR_INVALID_FUNCTION = 1,
    ERROR_FILE_NOT_FOUND = 2,
    ERROR_PATH_NOT_FOUND = 3,
    ERROR_TOO_MANY_OPEN_FILES = 4,
    ERROR_ACCESS_DENIED = 5,
    ERROR_INVALID_HANDLE = 6,
    ERROR_NOT_ENOUGH_MEMORY = 8,
    ERROR_BAD_FORMAT = 11,
    ERROR_NO_MORE_FILES = 18,
    ERROR_WRITE_PROTECT = 19,
    ERROR_NOT_READY = 21,
    ERROR_GEN_FAILURE = 31,
    ERROR_SHARING_VIOLATION = 32,
    ERROR_NOT_SUPPORTED = 50,
    ERROR_FILE_EXISTS = 80,
    ERROR_CANNOT_MAKE = 82,
    ERROR_INVALID_PARAMETER = 87,
    ERROR_BUFFER_OVERFLOW = 111,
    ERROR_DISK_FULL = 112,
    ERROR_INSUFFICIENT_BUFFER = 122,
    ERROR_INVALID_NAME = 123,
    ERROR_MOD_NOT_FOUND = 126,
    ERROR_PROC_NOT_FOUND = 127,
    ERROR_DIR_NOT_EMPTY = 145,
    ERROR_BUSY = 170,
    ERROR_ALREADY_EXISTS = 183,
    ERROR_BAD_EXE_FORMAT = 193,
    ERROR_FILENAME_EXCED_RANGE = 206,
    ERROR_DIRECTORY = 267,
    ERROR_MR_MID_NOT_FOUND = 317,
    ERROR_INVALID_ADDRESS = 487,
    ERROR_NO_UNICODE_TRANSLATION = 1113,
    ERROR_INVALID_WINDOW_HANDLE = 1400,
    ERROR_INVALID_HOOK_HANDLE = 1404,
    ERROR_CAN_NOT_COMPLETE = 1003,
    ERROR_CANNOT_FIND_WND_CLASS = 1407,
    ERROR_CLASS_ALREADY_EXISTS = 1410,
    ERROR_CLASS_DOES_NOT_EXIST = 1411,
    ERROR_CLASS_HAS_WINDOWS = 1412,
    ERROR_INVALID_INDEX = 1413,
    ERROR_CLIPBOARD_NOT_OPEN = 1418,
    ERROR_INVALID_HOOK_FILTER = 1426,
    ERROR_INVALID_FILTER_PROC = 1427,
    ERROR_COMMITMENT_LIMIT = 1455,
    ERROR_RESOURCE_NAME_NOT_FOUND = 1814,
    ERROR_NOT_ENOUGH_QUOTA = 1816,
};

struct FILETIME
{
    DWORD dwLowDateTime;
    DWORD dwHighDateTime;
};

struct WIN32_FIND_DATAA
{
    DWORD dwFileAttributes;
    FILETIME ftCreationTime;
    FILETIME ftLastAccessTime;
    FILETIME ftLastWriteTime;
    DWORD nFileSizeHigh;
    DWORD nFileSizeLow;
    DWORD dwReserved0;
    DWORD dwReserved1;
    CHAR cFileName[MAX_PATH];
    CHAR cAlternateFileName[14];
};

struct SECURITY_ATTRIBUTES
{
    DWORD nLength;
    LPVOID lpSecurityDescriptor;
    BOOL bInheritHandle;
};

struct MEMORY_BASIC_INFORMATION
{
    LPVOID BaseAddress;
    LPVOID AllocationBase;
    DWORD AllocationProtect;
    SIZE_T RegionSize;
    DWORD State;
    DWORD Protect;
    DWORD Type;
};

enum : DWORD
{
    FILE_ATTRIBUTE_READONLY = 0x0001,
    FILE_ATTRIBUTE_HIDDEN = 0x0002,
    FILE_ATTRIBUTE_SYSTEM = 0x0004,
    FILE_ATTRIBUTE_DIRECTORY = 0x0010,
    FILE_ATTRIBUTE_ARCHIVE = 0x0020,
    FILE_ATTRIBUTE_NORMAL = 0x0080,
    FILE_ATTRIBUTE_TEMPORARY = 0x0100,
    FILE_FLAG_BACKUP_SEMANTICS = 0x02000000,
};

#define INVALID_FILE_ATTRIBUTES ((DWORD)0xFFFFFFFF)

enum : DWORD
{
    GENERIC_READ = 0x80000000,
    GENERIC_WRITE = 0x40000000,
    FILE_SHARE_READ = 1,
    FILE_SHARE_WRITE = 2,
    OPEN_EXISTING = 3,
};

enum : UINT
{
    DRIVE_UNKNOWN = 0,
    DRIVE_NO_ROOT_DIR = 1,
    DRIVE_REMOVABLE = 2,
    DRIVE_FIXED = 3,
    DRIVE_REMOTE = 4,
    DRIVE_CDROM = 5,
    DRIVE_RAMDISK = 6,
};

enum : DWORD
{
    FILE_CASE_SENSITIVE_SEARCH = 1,
    FILE_CASE_PRESERVED_NAMES = 2,
};

enum : DWORD
{
    MEM_COMMIT = 0x1000,
    MEM_RESERVE = 0x2000,
    MEM_DECOMMIT = 0x4000,
    MEM_RELEASE = 0x8000,
    MEM_FREE = 0x10000,
    MEM_PRIVATE = 0x20000,
    MEM_MAPPED = 0x40000,
    PAGE_NOACCESS = 0x01,
    PAGE_READONLY = 0x02,
    PAGE_READWRITE = 0x04,
    PAGE_EXECUTE_READ = 0x20,
    PAGE_EXECUTE_READWRITE = 0x40,
};

enum : UINT
{
    LMEM_FIXED = 0,
    LMEM_ZEROINIT = 0x40,
    LPTR = 0x40,
    GMEM_FIXED = 0,
    GMEM_MOVEABLE = 2,
    GMEM_ZEROINIT = 0x40,
    GPTR = 0x40,
    GHND = 0x42,
};

enum
{
    _MAX_PATH = 260,
    _MAX_DRIVE = 3,
    _MAX_DIR = 256,
    _MAX_FNAME = 256,
    _MAX_EXT = 256,
    _S_IREAD = 0x100,
    _S_IWRITE = 0x80,
};

enum : DWORD
{
    FORMAT_MESSAGE_ALLOCATE_BUFFER = 0x0100,
    FORMAT_MESSAGE_IGNORE_INSERTS = 0x0200,
    FORMAT_MESSAGE_FROM_SYSTEM = 0x1000,
};

TARVIX_INTERNAL DWORD GetLastError();
TARVIX_INTERNAL void SetLastError(DWORD ulError);
/// System texts only; FORMAT_MESSAGE_FROM_SYSTEM must be set. Ends in CR LF.
TARVIX_INTERNAL DWORD FormatMessageA(DWORD ulFlags, LPCVOID pSource, DWORD ulMessage, DWORD ulLanguage, LPSTR pszBuffer,
                                     DWORD ulSize, void *pArguments);

// Memory. Pages are those of the system, reservations begin at multiples of 64 KB.
TARVIX_INTERNAL LPVOID VirtualAlloc(LPVOID pAddress, SIZE_T ulSize, DWORD ulType, DWORD ulProtect);
TARVIX_INTERNAL BOOL VirtualFree(LPVOID pAddress, SIZE_T ulSize, DWORD ulType);
TARVIX_INTERNAL SIZE_T VirtualQuery(LPCVOID pAddress, MEMORY_BASIC_INFORMATION *pInfo, SIZE_T ulLength);
TARVIX_INTERNAL HLOCAL LocalAlloc(UINT ulFlags, SIZE_T ulSize);
TARVIX_INTERNAL HLOCAL LocalFree(HLOCAL hMemory);
TARVIX_INTERNAL HGLOBAL GlobalAlloc(UINT ulFlags, SIZE_T ulSize);
TARVIX_INTERNAL HGLOBAL GlobalFree(HGLOBAL hMemory);
TARVIX_INTERNAL LPVOID GlobalLock(HGLOBAL hMemory);
TARVIX_INTERNAL BOOL GlobalUnlock(HGLOBAL hMemory);

// Clock, in milliseconds. Both clocks are the same and wrap at 32 bits.
TARVIX_INTERNAL DWORD timeGetTime();
TARVIX_INTERNAL DWORD GetTickCount();
TARVIX_INTERNAL void Sleep(DWORD ulMilliseconds);
#define INFINITE 0xFFFFFFFF

// Files. Both separators part a path. A component that is missing as it is
// written is looked for without regard to case. There are no drive letters.
TARVIX_INTERNAL DWORD GetCurrentDirectoryA(DWORD ulSize, LPSTR pszBuffer);
TARVIX_INTERNAL BOOL SetCurrentDirectoryA(LPCSTR pszPath);
TARVIX_INTERNAL BOOL CreateDirectoryA(LPCSTR pszPath, SECURITY_ATTRIBUTES *pSecurity);
TARVIX_INTERNAL DWORD GetFileAttributesA(LPCSTR pszPath);
TARVIX_INTERNAL BOOL DeleteFileA(LPCSTR pszPath);
TARVIX_INTERNAL HANDLE FindFirstFileA(LPCSTR pszPattern, WIN32_FIND_DATAA *pData);
TARVIX_INTERNAL BOOL FindNextFileA(HANDLE hFind, WIN32_FIND_DATAA *pData);
TARVIX_INTERNAL BOOL FindClose(HANDLE hFind);
TARVIX_INTERNAL UINT GetDriveTypeA(LPCSTR pszRoot);
TARVIX_INTERNAL BOOL GetVolumeInformationA(LPCSTR pszRoot, LPSTR pszName, DWORD ulNameSize, DWORD *pulSerial,
                                           DWORD *pulMaxComponent, DWORD *pulFlags, LPSTR pszSystem,
                                           DWORD ulSystemSize);
TARVIX_INTERNAL DWORD GetTempPathA(DWORD ulSize, LPSTR pszBuffer);
TARVIX_INTERNAL UINT GetTempFileNameA(LPCSTR pszPath, LPCSTR pszPrefix, UINT ulUnique, LPSTR pszName);
/// Opens what exists, to read it or (with access 0) to ask for its times.
TARVIX_INTERNAL HANDLE CreateFileA(LPCSTR pszPath, DWORD ulAccess, DWORD ulShare, SECURITY_ATTRIBUTES *pSecurity,
                                   DWORD ulDisposition, DWORD ulFlags, HANDLE hTemplate);
TARVIX_INTERNAL BOOL GetFileTime(HANDLE hFile, FILETIME *pCreated, FILETIME *pAccessed, FILETIME *pWritten);
TARVIX_INTERNAL BOOL CloseHandle(HANDLE hObject);
TARVIX_INTERNAL void _splitpath(const char *pszPath, char *pszDrive, char *pszDir, char *pszName, char *pszExt);
TARVIX_INTERNAL int _chmod(const char *pszPath, int nMode);

/// fopen, remove and rename with the rules above; the cause of a failure is in
/// errno, as with the runtime's own.
TARVIX_INTERNAL FILE *PlatformOpenFile(const char *pszPath, const char *pszMode);
// What CWholeFile needs, see core/openfile.h.
TARVIX_INTERNAL bool PlatformWholeTarget(const char *pszPath, char *pszTarget, size_t ulSize, bool *pbDirect);
TARVIX_INTERNAL int PlatformMakePart(const char *pszPart, const char *pszTarget);
TARVIX_INTERNAL bool PlatformReplaceFile(const char *pszPart, const char *pszTarget);
TARVIX_INTERNAL void PlatformRemovePart(const char *pszPart);
TARVIX_INTERNAL int PlatformRemoveFile(const char *pszPath);
TARVIX_INTERNAL int PlatformRenameFile(const char *pszOldPath, const char *pszNewPath);
