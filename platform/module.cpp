// Modules found at run time.
#include "platform/folders.h"
#include "platform/path.h"

#include <dlfcn.h>
#include <errno.h>
#include <stdlib.h>
#include <string.h>
#include <strings.h>
#include <sys/stat.h>
#include <unistd.h>

struct HINSTANCE__
{
    HMODULE pNext;
    void *pLibrary; ///< null for the built-in one
    int nReferences;
};

namespace
{
HMODULE s_pModules = nullptr;

/// The name without its folder and without ".dll", in lower case.
void BaseName(LPCSTR pszName, char *pszBase, size_t ulSize)
{
    for (const char *p = pszName; *p; ++p)
        if (*p == '/' || *p == '\\')
            pszName = p + 1;
    size_t i = 0;
    for (; pszName[i] && i + 1 < ulSize; ++i)
        pszBase[i] = (char)(pszName[i] >= 'A' && pszName[i] <= 'Z' ? pszName[i] + 0x20 : pszName[i]);
    pszBase[i] = 0;
    if (i > 4 && strcmp(pszBase + i - 4, ".dll") == 0)
        pszBase[i - 4] = 0;
}

void *OpenPath(const char *pszPath)
{
    char szReal[PATH_MAX];
    struct stat info;
    if (!ResolvePath(pszPath, szReal) || stat(szReal, &info) != 0 || !S_ISREG(info.st_mode))
        return nullptr;
    // Without a separator the loader would look elsewhere.
    if (!strchr(szReal, '/') && strlen(szReal) + 3 <= PATH_MAX)
    {
        memmove(szReal + 2, szReal, strlen(szReal) + 1);
        memcpy(szReal, "./", 2);
    }
    return dlopen(szReal, RTLD_NOW | RTLD_LOCAL);
}

/// Tries the forms of a name in one folder.
void *OpenIn(const char *pszFolder, size_t ulFolder, LPCSTR pszName, const char *pszBase)
{
    const char *const apszForms[] = { "%.*s%s", "%.*s%s.so", "%.*slib%s.so" };
    for (int i = 0; i < 3; ++i)
    {
        char szPath[PATH_MAX];
        const int nLength =
            snprintf(szPath, sizeof(szPath), apszForms[i], (int)ulFolder, pszFolder, i == 0 ? pszName : pszBase);
        if (nLength < (int)sizeof(szPath))
            if (void *p = OpenPath(szPath))
                return p;
    }
    return nullptr;
}

size_t FolderLength(const char *pszPath)
{
    const char *psz = strrchr(pszPath, '/');
    return psz ? (size_t)(psz - pszPath) + 1 : 0;
}

void *OpenBare(LPCSTR pszName)
{
    char szBase[NAME_MAX + 1], szPath[PATH_MAX];
    BaseName(pszName, szBase, sizeof(szBase));
    const ssize_t nLength = readlink("/proc/self/exe", szPath, sizeof(szPath) - 1);
    if (nLength > 0)
    {
        szPath[nLength] = 0;
        if (void *p = OpenIn(szPath, FolderLength(szPath), pszName, szBase))
            return p;
    }
    Dl_info info;
    if (dladdr((const void *)&OpenBare, &info) && info.dli_fname && strchr(info.dli_fname, '/'))
        if (void *p = OpenIn(info.dli_fname, FolderLength(info.dli_fname), pszName, szBase))
            return p;
    // What the loader itself knows.
    const char *const apszForms[] = { "%s", "%s.so", "lib%s.so" };
    for (int i = 0; i < 3; ++i)
    {
        if (snprintf(szPath, sizeof(szPath), apszForms[i], i == 0 ? pszName : szBase) < (int)sizeof(szPath))
            if (void *p = dlopen(szPath, RTLD_NOW | RTLD_LOCAL))
                return p;
    }
    return nullptr;
}

bool IsModule(HMODULE hModule)
{
    for (HMODULE h = s_pModules; h; h = h->pNext)
        if (h == hModule)
            return true;
    return false;
}
} // namespace

HMODULE LoadLibraryA(LPCSTR pszName)
{
    if (!pszName || !pszName[0])
    {
        SetLastError(ERROR_INVALID_PARAMETER);
        return nullptr;
    }
    char szBase[NAME_MAX + 1];
    BaseName(pszName, szBase, sizeof(szBase));
    const bool bBare = !strchr(pszName, '/') && !strchr(pszName, '\\');
    const bool bBuiltIn = bBare && strcmp(szBase, "shfolder") == 0;
    void *pLibrary = nullptr;
    if (!bBuiltIn)
    {
        pLibrary = bBare ? OpenBare(pszName) : OpenPath(pszName);
        if (!pLibrary && !bBare)
        {
            // "folder\name.dll" may be there as name.so.
            const size_t ulName = strlen(pszName);
            size_t ulFolder = ulName;
            while (pszName[ulFolder - 1] != '/' && pszName[ulFolder - 1] != '\\')
                --ulFolder;
            pLibrary = OpenIn(pszName, ulFolder, pszName + ulFolder, szBase);
        }
        if (!pLibrary)
        {
            SetLastError(ERROR_MOD_NOT_FOUND);
            return nullptr;
        }
    }
    for (HMODULE h = s_pModules; h; h = h->pNext)
    {
        if (h->pLibrary == pLibrary)
        {
            // The loader has counted it, too.
            ++h->nReferences;
            return h;
        }
    }
    const HMODULE hModule = (HMODULE)calloc(1, sizeof(HINSTANCE__));
    if (!hModule)
    {
        if (pLibrary)
            dlclose(pLibrary);
        SetLastError(ERROR_NOT_ENOUGH_MEMORY);
        return nullptr;
    }
    *hModule = { s_pModules, pLibrary, 1 };
    s_pModules = hModule;
    return hModule;
}

FARPROC GetProcAddress(HMODULE hModule, LPCSTR pszName)
{
    if (!IsModule(hModule))
    {
        SetLastError(ERROR_INVALID_HANDLE);
        return nullptr;
    }
    void *p = nullptr;
    // Shared objects know no ordinals.
    if ((ULONG_PTR)pszName >= 0x10000)
    {
        if (hModule->pLibrary)
            p = dlsym(hModule->pLibrary, pszName);
        else if (strcmp(pszName, "SHGetFolderPathA") == 0)
            p = (void *)&GetFolderPath;
    }
    if (!p)
        SetLastError(ERROR_PROC_NOT_FOUND);
    return (FARPROC)p;
}

BOOL FreeLibrary(HMODULE hModule)
{
    if (!IsModule(hModule))
    {
        SetLastError(ERROR_INVALID_HANDLE);
        return FALSE;
    }
    if (hModule->pLibrary)
        dlclose(hModule->pLibrary);
    if (--hModule->nReferences)
        return TRUE;
    HMODULE *phLink = &s_pModules;
    while (*phLink != hModule)
        phLink = &(*phLink)->pNext;
    *phLink = hModule->pNext;
    free(hModule);
    return TRUE;
}
