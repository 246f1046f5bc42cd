#include "tarvix/systemshell.h"

#include "tarvix/error.h"
#include "tarvix/file.h"
#include "tarvix/globals.h"
#include "tarvix/memory.h"
#include "tarvix/strings.h"
#include "tarvix/systemdirs.h"
#include "tarvix/systemfiles.h"
#include "win/win32.h"

#include <algorithm>
#include <stdio.h>
#include <string.h>

namespace
{
const INT_PTR s_nLastShellError = 32; // results above it are success

const char *ShellErrorText(INT_PTR nResult)
{
    switch (nResult)
    {
    case 0:
    case SE_ERR_OOM:
        return "The operating system is out of memory or resources.";
    case SE_ERR_FNF:
        return "The specified file was not found.";
    case SE_ERR_PNF:
        return "The specified path was not found.";
    case SE_ERR_ACCESSDENIED:
        return "The operating system denied access to the specified file.";
    case ERROR_BAD_FORMAT:
        return "The .exe file is invalid (non-Win32\xAE .exe or error in .exe image).";
    case SE_ERR_SHARE:
        return "A sharing violation occurred.";
    case SE_ERR_ASSOCINCOMPLETE:
        return "The file name association is incomplete or invalid.";
    case SE_ERR_DDETIMEOUT:
        return "The DDE transaction could not be completed because the request timed out.";
    case SE_ERR_DDEFAIL:
        return "The DDE transaction failed.";
    case SE_ERR_DDEBUSY:
        return "The DDE transaction could not be completed because other DDE transactions were being processed.";
    case SE_ERR_NOASSOC:
        return "There is no application associated with the given file name extension.";
    case SE_ERR_DLLNOTFOUND:
        return "The specified dynamic-link library was not found.";
    }
    return "Unknown error.";
}

INT_PTR ShellOpen(const char *pszFile, const char *pszArgs, int nShow)
{
    return (INT_PTR)ShellExecuteA(nullptr, "open", pszFile, pszArgs, nullptr, nShow);
}

HWND FindByTitleOrClass(const char *pszName)
{
    HWND hWnd = FindWindowA(nullptr, pszName);
    return hWnd ? hWnd : FindWindowA(pszName, nullptr);
}

// Makes an empty page to ask who opens pages. True with the browser's path.
bool FindBrowser(char *pszBrowser)
{
    char szFolder[MAX_PATH + 1], szTemp[MAX_PATH], szPage[MAX_PATH + 4];
    const DWORD ulLen = GetTempPathA(sizeof(szFolder), szFolder);
    if (!ulLen || ulLen >= sizeof(szFolder) || !GetTempFileNameA(szFolder, "QUIL", 0, szTemp))
        return false;
    strcpy(szPage, szTemp);
    if (char *pszDot = strrchr(szPage, '.'))
        *pszDot = '_';
    strcat(szPage, ".htm");
    bool bFound = false;
    CFile file;
    if (file.Open(szPage, FILE_WRITE))
    {
        file.Print("<HTML>\n<\\HTML>");
        file.Close();
        bFound = (INT_PTR)FindExecutableA(szPage, nullptr, pszBrowser) > s_nLastShellError;
        PlatformRemoveFile(szPage);
    }
    PlatformRemoveFile(szTemp);
    return bFound;
}

// @param pszArgument  the page as a browser's only argument
xlong OpenPage(const char *pszUrl, const char *pszArgument)
{
    char szBrowser[MAX_PATH] = "";
    if (FindBrowser(szBrowser) && ShellOpen(szBrowser, pszArgument, SW_SHOW) > s_nLastShellError)
        return 1;
    return ShellOpen(pszUrl, nullptr, SW_SHOWDEFAULT) > s_nLastShellError;
}

int StartMenu(char *pszPath)
{
    typedef HRESULT(WINAPI * TGetFolderPath)(HWND, int, HANDLE, DWORD, LPSTR);
    const int nStartMenu = 11;
    HMODULE hFolders = LoadLibraryA("shfolder.dll");
    if (!hFolders)
        return 0;
    const TGetFolderPath pfnGetFolderPath = (TGetFolderPath)(void *)GetProcAddress(hFolders, "SHGetFolderPathA");
    const int nResult = pfnGetFolderPath && SUCCEEDED(pfnGetFolderPath(nullptr, nStartMenu, nullptr, 0, pszPath));
    FreeLibrary(hFolders);
    return nResult;
}

// The link's shell object with both of its faces, as long as it lives.
struct TShellLink
{
    TShellLink() : pLink(nullptr), pFile(nullptr), bStarted(SUCCEEDED(CoInitialize(nullptr))) {}

    ~TShellLink()
    {
        if (pFile)
            pFile->Release();
        if (pLink)
            pLink->Release();
        if (bStarted)
            CoUninitialize();
    }

    IShellLinkA *pLink;
    IPersistFile *pFile;
    bool bStarted;
};

xlong ShortCutError(const char *pszWhat, const char *pszLink, HRESULT hResult)
{
    char szReason[32];
    snprintf(szReason, sizeof(szReason), "0x%08lx", (unsigned long)(xulong)hResult);
    return glb->m_Error.SetErrorf("Can't do %s in class IPersistFile On Shortcut %s Error(%s)", pszWhat, pszLink,
                                  szReason);
}

bool PointsTo(IShellLinkA *pLink, const char *pszTarget, const char *pszText)
{
    char szTarget[MAX_PATH] = "", szText[MAX_PATH] = "";
    return SUCCEEDED(pLink->GetPath(szTarget, sizeof(szTarget), nullptr, SLGP_RAWPATH)) &&
           !xStricmp(szTarget, pszTarget) &&
           (!pszText || (SUCCEEDED(pLink->GetDescription(szText, sizeof(szText))) && !strcmp(szText, pszText)));
}
} // namespace

xlong xExecuteFile(const char *pszFile, const char *pszArgs)
{
    const INT_PTR nResult = ShellOpen(pszFile, pszArgs, SW_SHOWDEFAULT);
    if (nResult > s_nLastShellError)
        return 1;
    return glb->m_Error.SetErrorf("Unable to execute file (%s %s) %s", pszFile ? pszFile : "", pszArgs ? pszArgs : "",
                                  ShellErrorText(nResult));
}

xlong xPipeExec(const char *pszFile, const char *pszArgs)
{
    return xExecuteFile(pszFile, pszArgs);
}

xlong xShowURL(const char *pszUrl)
{
    if (!pszUrl)
        return 0;
    if (pszUrl[0] != '.' || pszUrl[1] != '\\')
        return OpenPage(pszUrl, pszUrl);
    char *pszDir = xGetWorkingDirectory();
    if (!pszDir)
        return xErrorTxt("xShowURL: Failed to get current work dir.");
    const size_t ulSize = strlen(pszDir) + strlen(pszUrl) + 3;
    char *pszFull = ulSize < 0x3fffff00 ? (char *)String_Alloc((xulong)(2 * ulSize)) : nullptr;
    xlong lResult = 0;
    if (pszFull)
    {
        snprintf(pszFull, ulSize, "%s\\%s", pszDir, pszUrl + 2);
        char *const pszArgument = pszFull + ulSize;
        snprintf(pszArgument, ulSize, "\"%s\\%s\"", pszDir, pszUrl + 2); // folders may have blanks
        lResult = OpenPage(pszFull, pszArgument);
        String_Free(pszFull);
    }
    String_Free(pszDir);
    return lResult;
}

xulong xGetProcessId()
{
    return GetCurrentProcessId();
}

int xFindWindow(const char *pszName)
{
    return FindByTitleOrClass(pszName) != nullptr;
}

int xSetForegroundWindow(const char *pszName)
{
    HWND hWnd = FindByTitleOrClass(pszName);
    return hWnd && SetForegroundWindow(hWnd);
}

int xGetStartMenuForUser(char *pszPath)
{
    return StartMenu(pszPath);
}

int xGetStartMenuForAllUsers(char *pszPath)
{
    return StartMenu(pszPath);
}

eShortReturnFlags xCreteOrUpdate_ShortCut(const char *pszLink, const char *pszTarget, const char *pszText,
                                          eShortCutFlags eFlags)
{
    TShellLink shell;
    if (FAILED(
            CoCreateInstance(CLSID_ShellLink, nullptr, CLSCTX_INPROC_SERVER, IID_IShellLinkA, (void **)&shell.pLink)))
    {
        xErrorTxt("FixupOurShortCut Can't create object ShellLink");
        return SHORTCUT_FAILED;
    }
    if (FAILED(shell.pLink->QueryInterface(IID_IPersistFile, (void **)&shell.pFile)))
    {
        xErrorTxt("FixupOurShortCut Can't QueryInterface");
        return SHORTCUT_FAILED;
    }
    wchar_t wszLink[MAX_PATH];
    if (!MultiByteToWideChar(CP_ACP, 0, pszLink, -1, wszLink, MAX_PATH))
    {
        ShortCutError("Load", pszLink, HRESULT_FROM_WIN32(ERROR_FILENAME_EXCED_RANGE));
        return SHORTCUT_FAILED;
    }

    const bool bExists = xFileExists(pszLink);
    if (!(eFlags & (bExists ? SHORTCUT_UPDATE : SHORTCUT_CREATE)))
        return SHORTCUT_FAILED;
    if (bExists)
    {
        const HRESULT hLoaded = shell.pFile->Load(wszLink, STGM_READWRITE);
        if (FAILED(hLoaded))
        {
            ShortCutError("Load", pszLink, hLoaded);
            return SHORTCUT_FAILED;
        }
        if (PointsTo(shell.pLink, pszTarget, pszText))
            return SHORTCUT_UNCHANGED;
    }
    shell.pLink->SetPath(pszTarget);
    if (pszText)
        shell.pLink->SetDescription(pszText);
    const HRESULT hSaved = shell.pFile->Save(wszLink, TRUE);
    if (FAILED(hSaved))
    {
        ShortCutError("Save", pszLink, hSaved);
        return SHORTCUT_FAILED;
    }
    return bExists ? SHORTCUT_UPDATED : SHORTCUT_CREATED;
}

char *xGetMachineIP()
{
    static char s_szAddress[20];
    char szHost[256];
    *s_szAddress = 0;
    if (gethostname(szHost, sizeof(szHost)))
        return s_szAddress;
    szHost[sizeof(szHost) - 1] = 0;
    const hostent *pHost = gethostbyname(szHost);
    if (!pHost || pHost->h_length != 4 || !pHost->h_addr_list[0])
        return s_szAddress;
    const unsigned char *pAddress = (const unsigned char *)pHost->h_addr_list[0];
    snprintf(s_szAddress, sizeof(s_szAddress), "%d.%d.%d.%d", pAddress[0], pAddress[1], pAddress[2], pAddress[3]);
    return s_szAddress;
}

int xCreateGuid(char *pszGuid)
{
    const size_t ulMax = 128;
    GUID guid;
    RPC_CSTR pszText = nullptr;
    if (!pszGuid || FAILED(CoCreateGuid(&guid)) || UuidToStringA(&guid, &pszText) != RPC_S_OK)
        return 0;
    const size_t ulLen = std::min(strlen((const char *)pszText), ulMax);
    memcpy(pszGuid, pszText, ulLen);
    pszGuid[ulLen] = 0;
    RpcStringFreeA(&pszText);
    return 1;
}
