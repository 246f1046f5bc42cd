// Drives. There are no letters, so the roots are the places where file systems
// are mounted.
#include "platform/errors.h"
#include "platform/path.h"

#include <dirent.h>
#include <errno.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>
#include <sys/statfs.h>
#include <sys/sysmacros.h>
#include <unistd.h>

namespace
{
struct TMount
{
    dev_t ulDevice;
    char szSystem[64];
};

/// Undoes the octal escapes of the kernel's table.
void Unescape(char *psz)
{
    char *pszOut = psz;
    for (; *psz; ++psz)
    {
        unsigned ulCode;
        if (*psz == '\\' && sscanf(psz + 1, "%3o", &ulCode) == 1)
        {
            *pszOut++ = (char)ulCode;
            psz += 3;
        }
        else
            *pszOut++ = *psz;
    }
    *pszOut = 0;
}

/// @return false when nothing is mounted at that very folder
bool FindMount(LPCSTR pszRoot, char *pszReal, TMount *pMount)
{
    char szFull[PATH_MAX];
    if (!ResolvePath(pszRoot ? pszRoot : "/", pszReal) || !realpath(pszReal, szFull))
        return false;
    // The root is always there, also in a changed root that the table leaves out.
    bool bFound = strcmp(szFull, "/") == 0;
    if (bFound)
    {
        struct stat info;
        pMount->ulDevice = stat("/", &info) == 0 ? info.st_dev : 0;
        strcpy(pMount->szSystem, "rootfs");
    }
    FILE *pFile = fopen("/proc/self/mountinfo", "re");
    if (!pFile)
        return bFound;
    static char s_szLine[2 * PATH_MAX];
    while (fgets(s_szLine, sizeof(s_szLine), pFile))
    {
        unsigned ulMajor, ulMinor;
        int nPath = 0, nPathEnd = 0;
        if (sscanf(s_szLine, "%*d %*d %u:%u %*s %n%*s%n", &ulMajor, &ulMinor, &nPath, &nPathEnd) != 2 || !nPathEnd)
            continue;
        const char *pszSystem = strstr(s_szLine + nPathEnd, " - ");
        s_szLine[nPathEnd] = 0;
        Unescape(s_szLine + nPath);
        // The last line for a folder is what can be seen there.
        if (strcmp(s_szLine + nPath, szFull) == 0 && pszSystem && sscanf(pszSystem + 3, "%63s", pMount->szSystem) == 1)
        {
            pMount->ulDevice = makedev(ulMajor, ulMinor);
            bFound = true;
        }
    }
    fclose(pFile);
    return bFound;
}

bool IsOneOf(const char *psz, const char *const *ppszNames)
{
    for (; *ppszNames; ++ppszNames)
        if (strcmp(psz, *ppszNames) == 0)
            return true;
    return false;
}

bool IsRemovable(dev_t ulDevice)
{
    // A partition's flag is that of the disk it belongs to.
    static const char *const s_apszPlaces[] = { "", "../" };
    for (const char *pszPlace : s_apszPlaces)
    {
        char szPath[96];
        snprintf(szPath, sizeof(szPath), "/sys/dev/block/%u:%u/%sremovable", major(ulDevice), minor(ulDevice),
                 pszPlace);
        if (FILE *pFile = fopen(szPath, "re"))
        {
            const int nFlag = fgetc(pFile);
            fclose(pFile);
            return nFlag == '1';
        }
    }
    return false;
}

/// Names of devices escape what a file name can't hold as \x20.
void FindLabel(dev_t ulDevice, char *pszLabel, size_t ulSize)
{
    pszLabel[0] = 0;
    const char *const pszFolder = "/dev/disk/by-label";
    DIR *pDir = opendir(pszFolder);
    if (!pDir)
        return;
    while (const dirent *pEntry = readdir(pDir))
    {
        struct stat info;
        if (fstatat(dirfd(pDir), pEntry->d_name, &info, 0) != 0 || !S_ISBLK(info.st_mode) || info.st_rdev != ulDevice)
            continue;
        size_t ulOut = 0;
        for (const char *p = pEntry->d_name; *p && ulOut + 1 < ulSize; ++p)
        {
            unsigned ulCode;
            if (p[0] == '\\' && p[1] == 'x' && sscanf(p + 2, "%2x", &ulCode) == 1 && p[2] && p[3])
            {
                pszLabel[ulOut++] = (char)ulCode;
                p += 3;
            }
            else
                pszLabel[ulOut++] = *p;
        }
        pszLabel[ulOut] = 0;
        break;
    }
    closedir(pDir);
}

bool GiveName(const char *pszText, LPSTR pszBuffer, DWORD ulSize)
{
    if (!pszBuffer)
        return true;
    if (strlen(pszText) >= ulSize)
    {
        SetLastError(ERROR_INSUFFICIENT_BUFFER);
        return false;
    }
    strcpy(pszBuffer, pszText);
    return true;
}
} // namespace

UINT GetDriveTypeA(LPCSTR pszRoot)
{
    static const char *const s_apszRemote[] = { "nfs",        "nfs4",       "cifs",       "smb3", "9p",
                                                "fuse.sshfs", "fuse.davfs", "fuse.gvfsd", "ceph", nullptr };
    static const char *const s_apszDisc[] = { "iso9660", "udf", nullptr };
    static const char *const s_apszMemory[] = { "tmpfs", "ramfs", nullptr };
    char szReal[PATH_MAX];
    TMount mount;
    if (!FindMount(pszRoot, szReal, &mount))
        return DRIVE_NO_ROOT_DIR;
    if (IsOneOf(mount.szSystem, s_apszRemote))
        return DRIVE_REMOTE;
    if (IsOneOf(mount.szSystem, s_apszDisc))
        return DRIVE_CDROM;
    if (IsOneOf(mount.szSystem, s_apszMemory))
        return DRIVE_RAMDISK;
    return IsRemovable(mount.ulDevice) ? DRIVE_REMOVABLE : DRIVE_FIXED;
}

BOOL GetVolumeInformationA(LPCSTR pszRoot, LPSTR pszName, DWORD ulNameSize, DWORD *pulSerial, DWORD *pulMaxComponent,
                           DWORD *pulFlags, LPSTR pszSystem, DWORD ulSystemSize)
{
    char szReal[PATH_MAX], szLabel[256];
    TMount mount;
    struct statfs info;
    if (!FindMount(pszRoot, szReal, &mount))
    {
        SetLastError(ERROR_PATH_NOT_FOUND);
        return FALSE;
    }
    if (statfs(szReal, &info) != 0)
        return FailWithErrno();
    FindLabel(mount.ulDevice, szLabel, sizeof(szLabel));
    if (!GiveName(szLabel, pszName, ulNameSize) || !GiveName(mount.szSystem, pszSystem, ulSystemSize))
        return FALSE;
    if (pulSerial)
        memcpy(pulSerial, &info.f_fsid, sizeof(*pulSerial));
    if (pulMaxComponent)
        *pulMaxComponent = (DWORD)info.f_namelen;
    if (pulFlags)
        *pulFlags = FILE_CASE_SENSITIVE_SEARCH | FILE_CASE_PRESERVED_NAMES;
    return TRUE;
}
