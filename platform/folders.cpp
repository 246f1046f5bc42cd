#include "platform/folders.h"
#include "platform/text.h"

#include <limits.h>
#include <pwd.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>
#include <unistd.h>

namespace
{
const char *HomeFolder()
{
    const char *pszHome = getenv("HOME");
    if (pszHome && pszHome[0])
        return pszHome;
    const passwd *pUser = getpwuid(getuid());
    return pUser && pUser->pw_dir ? pUser->pw_dir : "/";
}

/// A base folder by its variable; relative values are to be ignored.
void BaseFolder(CText &path, const char *pszVariable, const char *pszDefault)
{
    const char *psz = getenv(pszVariable);
    if (psz && psz[0] == '/')
        path.Add(psz);
    else
        path.Add(HomeFolder()).Add("/").Add(pszDefault);
}

/// A folder that the user may have moved: lines of user-dirs.dirs look like
/// XDG_MUSIC_DIR="$HOME/Music".
void UserFolder(CText &path, const char *pszName, const char *pszDefault)
{
    CText config, line;
    BaseFolder(config, "XDG_CONFIG_HOME", ".config");
    config.Add("/user-dirs.dirs");
    FILE *pFile = config.Failed() ? nullptr : fopen(config.Text(), "re");
    char szLine[PATH_MAX + 64];
    const size_t ulName = strlen(pszName);
    bool bFound = false;
    while (pFile && fgets(szLine, sizeof(szLine), pFile))
    {
        const char *p = szLine + strspn(szLine, " \t");
        if (strncmp(p, pszName, ulName) != 0 || p[ulName] != '=' || p[ulName + 1] != '"')
            continue;
        p += ulName + 2;
        path.Clear();
        if (strncmp(p, "$HOME", 5) == 0)
        {
            path.Add(HomeFolder());
            p += 5;
        }
        for (; *p && *p != '"' && *p != '\n'; ++p)
        {
            if (*p == '\\' && p[1])
                ++p;
            path.Add(*p);
        }
        bFound = true;
    }
    if (pFile)
        fclose(pFile);
    if (!bFound)
        path.Add(HomeFolder()).Add("/").Add(pszDefault);
}

bool MakeFolders(char *pszPath)
{
    for (char *p = pszPath + 1; *p; ++p)
    {
        if (*p != '/')
            continue;
        *p = 0;
        mkdir(pszPath, 0700);
        *p = '/';
    }
    mkdir(pszPath, 0700);
    struct stat info;
    return stat(pszPath, &info) == 0 && S_ISDIR(info.st_mode);
}
} // namespace

HRESULT GetFolderPath(HWND, int nFolder, HANDLE, DWORD ulFlags, LPSTR pszPath)
{
    if (!pszPath || ulFlags > 1)
        return E_INVALIDARG;
    pszPath[0] = 0;
    CText path;
    switch (nFolder & 0xFF)
    {
    case CSIDL_DESKTOP:
    case CSIDL_DESKTOPDIRECTORY:
        UserFolder(path, "XDG_DESKTOP_DIR", "Desktop");
        break;
    case CSIDL_PERSONAL:
        UserFolder(path, "XDG_DOCUMENTS_DIR", "Documents");
        break;
    case CSIDL_MYMUSIC:
        UserFolder(path, "XDG_MUSIC_DIR", "Music");
        break;
    case CSIDL_MYVIDEO:
        UserFolder(path, "XDG_VIDEOS_DIR", "Videos");
        break;
    case CSIDL_MYPICTURES:
        UserFolder(path, "XDG_PICTURES_DIR", "Pictures");
        break;
    case CSIDL_PROGRAMS:
    case CSIDL_STARTMENU:
        BaseFolder(path, "XDG_DATA_HOME", ".local/share");
        path.Add("/applications");
        break;
    case CSIDL_STARTUP:
        BaseFolder(path, "XDG_CONFIG_HOME", ".config");
        path.Add("/autostart");
        break;
    case CSIDL_APPDATA:
        BaseFolder(path, "XDG_CONFIG_HOME", ".config");
        break;
    case CSIDL_LOCAL_APPDATA:
        BaseFolder(path, "XDG_DATA_HOME", ".local/share");
        break;
    case CSIDL_PROFILE:
        path.Add(HomeFolder());
        break;
    default:
        return E_INVALIDARG;
    }
    if (path.Failed())
        return E_OUTOFMEMORY;
    if (path.Length() >= MAX_PATH)
        return E_FAIL;
    strcpy(pszPath, path.Text());
    struct stat info;
    if (stat(pszPath, &info) == 0 && S_ISDIR(info.st_mode))
        return S_OK;
    if (!(nFolder & CSIDL_FLAG_CREATE))
        return S_FALSE;
    return MakeFolders(pszPath) ? S_OK : E_ACCESSDENIED;
}
