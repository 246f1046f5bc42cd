// COM without its servers: what it takes to make shell links and identifiers.
#include "platform/codepage.h"
#include "platform/shelllink.h"

#include <errno.h>
#include <stdlib.h>
#include <string.h>
#include <sys/random.h>
#include <unistd.h>

namespace
{
int s_nInitialized = 0;
int s_nSockets = 0;
} // namespace

HRESULT CoInitialize(LPVOID)
{
    return s_nInitialized++ ? S_FALSE : S_OK;
}

void CoUninitialize()
{
    if (s_nInitialized)
        --s_nInitialized;
}

HRESULT CoCreateInstance(REFCLSID clsid, IUnknown *pOuter, DWORD ulContext, REFIID iid, LPVOID *ppObject)
{
    if (!ppObject)
        return E_POINTER;
    *ppObject = nullptr;
    if (!s_nInitialized)
        return CO_E_NOTINITIALIZED;
    if (pOuter)
        return CLASS_E_NOAGGREGATION;
    if (!(clsid == CLSID_ShellLink) || !(ulContext & CLSCTX_INPROC_SERVER))
        return REGDB_E_CLASSNOTREG;
    return CreateShellLink(iid, ppObject);
}

HRESULT CoCreateGuid(GUID *pGuid)
{
    if (!pGuid)
        return E_POINTER;
    BYTE aucRandom[sizeof(GUID)];
    if (getrandom(aucRandom, sizeof(aucRandom), 0) != (ssize_t)sizeof(aucRandom))
        return E_FAIL;
    memcpy(pGuid, aucRandom, sizeof(GUID));
    // Version 4: all else is random.
    pGuid->Data3 = (WORD)((pGuid->Data3 & 0x0FFF) | 0x4000);
    pGuid->Data4[0] = (BYTE)((pGuid->Data4[0] & 0x3F) | 0x80);
    return S_OK;
}

RPC_STATUS UuidToStringA(const UUID *pUuid, RPC_CSTR *ppszText)
{
    char *psz = (char *)malloc(37);
    if (!psz)
        return RPC_S_OUT_OF_MEMORY;
    const UUID zero = {};
    const UUID &u = pUuid ? *pUuid : zero;
    snprintf(psz, 37, "%08x-%04x-%04x-%02x%02x-%02x%02x%02x%02x%02x%02x", u.Data1, u.Data2, u.Data3, u.Data4[0],
             u.Data4[1], u.Data4[2], u.Data4[3], u.Data4[4], u.Data4[5], u.Data4[6], u.Data4[7]);
    *ppszText = (RPC_CSTR)psz;
    return RPC_S_OK;
}

RPC_STATUS RpcStringFreeA(RPC_CSTR *ppszText)
{
    if (ppszText)
    {
        free(*ppszText);
        *ppszText = nullptr;
    }
    return RPC_S_OK;
}

int MultiByteToWideChar(UINT ulCodePage, DWORD ulFlags, LPCSTR pszText, int nLength, LPWSTR pszWide, int nWideSize)
{
    if (!pszText || !nLength || nWideSize < 0 || (nWideSize && !pszWide) ||
        (ulCodePage != CP_ACP && ulCodePage != CP_UTF8))
    {
        SetLastError(ERROR_INVALID_PARAMETER);
        return 0;
    }
    const size_t ulLength = nLength < 0 ? strlen(pszText) + 1 : (size_t)nLength;
    int nCount = 0;
    bool bInvalid = false;
    for (size_t i = 0; i < ulLength; ++nCount)
    {
        uint32_t ulChar;
        i += DecodeUtf8((const unsigned char *)pszText + i, ulLength - i, &ulChar, &bInvalid);
        if (nWideSize && nCount == nWideSize)
        {
            SetLastError(ERROR_INSUFFICIENT_BUFFER);
            return 0;
        }
        if (nWideSize)
            pszWide[nCount] = (WCHAR)ulChar;
    }
    if (bInvalid && (ulFlags & MB_ERR_INVALID_CHARS))
    {
        SetLastError(ERROR_NO_UNICODE_TRANSLATION);
        return 0;
    }
    return nCount;
}

DWORD GetCurrentProcessId()
{
    return (DWORD)getpid();
}

DWORD GetCurrentThreadId()
{
    return (DWORD)gettid();
}

int WSAStartup(WORD usVersion, WSADATA *pData)
{
    if (!pData)
        return WSAEFAULT;
    if (LOBYTE(usVersion) < 1)
        return WSAVERNOTSUPPORTED;
    memset(pData, 0, sizeof(*pData));
    pData->wHighVersion = MAKEWORD(2, 2);
    pData->wVersion = LOBYTE(usVersion) > 2 ? pData->wHighVersion : usVersion;
    strcpy(pData->szDescription, "Sockets of the system");
    strcpy(pData->szSystemStatus, "Running");
    ++s_nSockets;
    return 0;
}

int WSACleanup()
{
    if (!s_nSockets)
    {
        SetLastError(WSANOTINITIALISED);
        return SOCKET_ERROR;
    }
    --s_nSockets;
    return 0;
}
