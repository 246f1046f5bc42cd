// Programs, modules, shell links and the little of COM they need. Included by
// platform/win32.h.
#pragma once

struct GUID
{
    DWORD Data1;
    WORD Data2;
    WORD Data3;
    BYTE Data4[8];
};

typedef GUID UUID;
typedef GUID IID;
typedef GUID CLSID;
typedef const GUID &REFGUID;
typedef const IID &REFIID;
typedef const CLSID &REFCLSID;
typedef wchar_t OLECHAR;
typedef OLECHAR *LPOLESTR;
typedef const OLECHAR *LPCOLESTR;
typedef unsigned char *RPC_CSTR;
typedef LONG RPC_STATUS;
typedef INT_PTR (*FARPROC)();

inline bool operator==(const GUID &a, const GUID &b)
{
    return __builtin_memcmp(&a, &b, sizeof(GUID)) == 0;
}

inline BOOL IsEqualGUID(const GUID &a, const GUID &b)
{
    return a == b;
}

#define IsEqualIID(a, b) IsEqualGUID(a, b)
#define SUCCEEDED(hr) ((HRESULT)(hr) >= 0)
#define FAILED(hr) ((HRESULT)(hr) < 0)
#define HRESULT_FROM_WIN32(x) ((HRESULT)(x) <= 0 ? (HRESULT)(x) : (HRESULT)(((x)&0xFFFF) | 0x80070000))

#define S_OK ((HRESULT)0)
#define S_FALSE ((HRESULT)1)
#define E_NOTIMPL ((HRESULT)0x80004001)
#define E_NOINTERFACE ((HRESULT)0x80004002)
#define E_POINTER ((HRESULT)0x80004003)
#define E_FAIL ((HRESULT)0x80004005)
#define E_ACCESSDENIED ((HRESULT)0x80070005)
#define E_OUTOFMEMORY ((HRESULT)0x8007000E)
#define E_INVALIDARG ((HRESULT)0x80070057)
#define STG_E_FILENOTFOUND ((HRESULT)0x80030002)
#define STG_E_PATHNOTFOUND ((HRESULT)0x80030003)
#define STG_E_ACCESSDENIED ((HRESULT)0x80030005)
#define STG_E_MEDIUMFULL ((HRESULT)0x80030070)
#define STG_E_INVALIDHEADER ((HRESULT)0x800300FB)
#define CLASS_E_NOAGGREGATION ((HRESULT)0x80040110)
#define REGDB_E_CLASSNOTREG ((HRESULT)0x80040154)
#define CO_E_NOTINITIALIZED ((HRESULT)0x800401F0)

enum
{
    SE_ERR_FNF = 2,
    SE_ERR_PNF = 3,
    SE_ERR_ACCESSDENIED = 5,
    SE_ERR_OOM = 8,
    SE_ERR_SHARE = 26,
    SE_ERR_ASSOCINCOMPLETE = 27,
    SE_ERR_DDETIMEOUT = 28,
    SE_ERR_DDEFAIL = 29,
    SE_ERR_DDEBUSY = 30,
    SE_ERR_NOASSOC = 31,
    SE_ERR_DLLNOTFOUND = 32,
};

enum
{
    CSIDL_DESKTOP = 0x00,
    CSIDL_PROGRAMS = 0x02,
    CSIDL_PERSONAL = 0x05,
    CSIDL_STARTUP = 0x07,
    CSIDL_STARTMENU = 0x0B,
    CSIDL_MYMUSIC = 0x0D,
    CSIDL_MYVIDEO = 0x0E,
    CSIDL_DESKTOPDIRECTORY = 0x10,
    CSIDL_APPDATA = 0x1A,
    CSIDL_LOCAL_APPDATA = 0x1C,
    CSIDL_MYPICTURES = 0x27,
    CSIDL_PROFILE = 0x28,
    CSIDL_FLAG_CREATE = 0x8000,
    SHGFP_TYPE_CURRENT = 0,
};

enum : DWORD
{
    CLSCTX_INPROC_SERVER = 1,
    STGM_READ = 0,
    STGM_READWRITE = 2,
    SLGP_RAWPATH = 4,
    SLR_NO_UI = 1,
};

enum : UINT
{
    CP_ACP = 0,
    CP_UTF8 = 65001,
    MB_ERR_INVALID_CHARS = 8,
};

enum : RPC_STATUS
{
    RPC_S_OK = 0,
    RPC_S_OUT_OF_MEMORY = 14,
};

enum
{
    SOCKET_ERROR = -1,
    WSAEFAULT = 10014,
    WSAVERNOTSUPPORTED = 10092,
    WSANOTINITIALISED = 10093,
};

struct WSADATA
{
    WORD wVersion;
    WORD wHighVersion;
    char szDescription[257];
    char szSystemStatus[129];
    WORD iMaxSockets;
    WORD iMaxUdpDg;
    char *lpVendorInfo;
};

class IUnknown
{
public:
    virtual HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void **ppObject) = 0;
    virtual ULONG STDMETHODCALLTYPE AddRef() = 0;
    virtual ULONG STDMETHODCALLTYPE Release() = 0;

protected:
    ~IUnknown() = default;
};

/// Documents and programs a link points to. Texts longer than a getter's
/// buffer are cut.
class IShellLinkA : public IUnknown
{
public:
    virtual HRESULT STDMETHODCALLTYPE GetPath(LPSTR pszPath, int nSize, WIN32_FIND_DATAA *pData, DWORD ulFlags) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetDescription(LPSTR pszText, int nSize) = 0;
    virtual HRESULT STDMETHODCALLTYPE SetDescription(LPCSTR pszText) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetWorkingDirectory(LPSTR pszPath, int nSize) = 0;
    virtual HRESULT STDMETHODCALLTYPE SetWorkingDirectory(LPCSTR pszPath) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetArguments(LPSTR pszText, int nSize) = 0;
    virtual HRESULT STDMETHODCALLTYPE SetArguments(LPCSTR pszText) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetShowCmd(int *pnShow) = 0;
    virtual HRESULT STDMETHODCALLTYPE SetShowCmd(int nShow) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetIconLocation(LPSTR pszPath, int nSize, int *pnIcon) = 0;
    virtual HRESULT STDMETHODCALLTYPE SetIconLocation(LPCSTR pszPath, int nIcon) = 0;
    virtual HRESULT STDMETHODCALLTYPE Resolve(HWND hWnd, DWORD ulFlags) = 0;
    virtual HRESULT STDMETHODCALLTYPE SetPath(LPCSTR pszPath) = 0;

protected:
    ~IShellLinkA() = default;
};

/// Links are kept as .desktop files; a name that ends in .lnk gets that ending.
class IPersistFile : public IUnknown
{
public:
    virtual HRESULT STDMETHODCALLTYPE GetClassID(CLSID *pClass) = 0;
    virtual HRESULT STDMETHODCALLTYPE IsDirty() = 0;
    virtual HRESULT STDMETHODCALLTYPE Load(LPCOLESTR pszPath, DWORD ulMode) = 0;
    virtual HRESULT STDMETHODCALLTYPE Save(LPCOLESTR pszPath, BOOL bRemember) = 0;
    virtual HRESULT STDMETHODCALLTYPE SaveCompleted(LPCOLESTR pszPath) = 0;

protected:
    ~IPersistFile() = default;
};

inline constexpr GUID IID_IUnknown = { 0x00000000, 0, 0, { 0xC0, 0, 0, 0, 0, 0, 0, 0x46 } };
inline constexpr GUID IID_IPersistFile = { 0x0000010B, 0, 0, { 0xC0, 0, 0, 0, 0, 0, 0, 0x46 } };
inline constexpr GUID IID_IShellLinkA = { 0x000214EE, 0, 0, { 0xC0, 0, 0, 0, 0, 0, 0, 0x46 } };
inline constexpr GUID CLSID_ShellLink = { 0x00021401, 0, 0, { 0xC0, 0, 0, 0, 0, 0, 0, 0x46 } };

TARVIX_INTERNAL HINSTANCE ShellExecuteA(HWND hWnd, LPCSTR pszVerb, LPCSTR pszFile, LPCSTR pszArguments,
                                        LPCSTR pszDirectory, int nShow);
/// What opens a document is the desktop's own opener, xdg-open.
TARVIX_INTERNAL HINSTANCE FindExecutableA(LPCSTR pszFile, LPCSTR pszDirectory, LPSTR pszResult);
TARVIX_INTERNAL DWORD GetCurrentProcessId();
TARVIX_INTERNAL DWORD GetCurrentThreadId();

/// A bare name is looked for beside the program, beside this library and where
/// the system's loader looks, as it is and as "name.so" and "libname.so".
/// "shfolder.dll" is built in.
TARVIX_INTERNAL HMODULE LoadLibraryA(LPCSTR pszName);
TARVIX_INTERNAL FARPROC GetProcAddress(HMODULE hModule, LPCSTR pszName);
TARVIX_INTERNAL BOOL FreeLibrary(HMODULE hModule);

TARVIX_INTERNAL HRESULT CoInitialize(LPVOID pReserved);
TARVIX_INTERNAL void CoUninitialize();
TARVIX_INTERNAL HRESULT CoCreateInstance(REFCLSID clsid, IUnknown *pOuter, DWORD ulContext, REFIID iid,
                                         LPVOID *ppObject);
TARVIX_INTERNAL HRESULT CoCreateGuid(GUID *pGuid);
TARVIX_INTERNAL RPC_STATUS UuidToStringA(const UUID *pUuid, RPC_CSTR *ppszText);
TARVIX_INTERNAL RPC_STATUS RpcStringFreeA(RPC_CSTR *ppszText);

/// Texts of the system are UTF-8 here, also with CP_ACP. A byte that isn't
/// becomes a lone surrogate, so that a file name survives both ways.
TARVIX_INTERNAL int MultiByteToWideChar(UINT ulCodePage, DWORD ulFlags, LPCSTR pszText, int nLength, LPWSTR pszWide,
                                        int nWideSize);

TARVIX_INTERNAL int WSAStartup(WORD usVersion, WSADATA *pData);
TARVIX_INTERNAL int WSACleanup();
