#include "tarvix/archive.h"

#include "core/chars.h"
#include "tarvix/error.h"
#include "tarvix/file.h"
#include "tarvix/strings.h"
#include "tarvix/systemdirs.h"
#include "tarvix/systemfiles.h"
#include "tarvix/wholefile.h"

#include <stdint.h>
#include <string.h>

namespace
{
const xulong s_ulStored = 0xffffffff;
const xulong s_ulHeader = 10;
const xulong s_ulMostExpansion = 8; // no token gives more than 17 bytes for its 17 bits
const xulong s_ulMostBytes = 0x7fffff00;
const xulong s_ulLongestName = 0xffff;
const uint64_t s_ulMostArchive = 0x7fffffff; // bytes
const xulong s_ulSmallestPacked = 2049;      // bytes: below, nothing is gained
const char *const s_pszPackedTypes[] = { "mp3", "jpg", "xrs" };

bool IsPackedType(const char *pszFile)
{
    char *pszExtension = String_FileNameExtension(pszFile);
    bool bFound = false;
    for (const char *pszType : s_pszPackedTypes)
        bFound = bFound || (pszExtension && !xStricmp(pszExtension, pszType));
    String_Free(pszExtension);
    return bFound;
}

// Directories of a path from the root, made from there.
xlong CreateDirs(const char *pszFile)
{
    if (IsSeparator(*pszFile))
    {
        char *pszOld = xGetWorkingDirectory();
        xSetWorkingDirectory("/");
        xCreateDirsForFile(pszFile);
        if (pszOld)
            xSetWorkingDirectory(pszOld);
        String_Free(pszOld);
    }
    return xCreateDirsForFile(pszFile);
}

xlong WriteWhole(const char *pszFile, const void *pData, xulong ulSize)
{
    CWholeFile whole;
    CFile file;
    if (!whole.Begin(pszFile) || !file.Open(whole.GetPath(), FILE_WRITE) || !file.Write(pData, ulSize) || !file.Flush())
        return 0;
    file.Close();
    return whole.Commit();
}

void Trace(const char *pszFormat, const char *psz = "")
{
    xprintf(__FILE__, __LINE__, nullptr, DBGL_ALL, pszFormat, psz);
}
} // namespace

CArchive::CArchive()
    : m_pFile(nullptr), m_ulSize(0), m_pfnCallback(nullptr), m_pSource(nullptr), m_pPacked(nullptr), m_bSafeNames(0)
{
}

CArchive::~CArchive()
{
    Close();
    FreeBuffers();
}

xlong CArchive::Open(const char *pszFile)
{
    if (m_pFile)
        return 0;
    m_pFile = XNEW(CFile);
    if (m_pFile && m_pFile->Open(pszFile, FILE_READWRITE | FILE_LITTLE_ENDIAN) && m_pFile->GetSize(&m_ulSize))
        return 1;
    Close();
    return 0;
}

xlong CArchive::OpenNew(const char *pszFile)
{
    if (m_pFile)
        return 0;
    m_pFile = XNEW(CFile);
    m_ulSize = 0;
    if (m_pFile && m_pFile->Open(pszFile, FILE_WRITE | FILE_LITTLE_ENDIAN))
        return 1;
    Close();
    return 0;
}

void CArchive::Close()
{
    if (m_pFile)
    {
        m_pFile->Close();
        XDELETE(m_pFile);
    }
    m_pFile = nullptr;
    m_ulSize = 0;
}

xlong CArchive::IsOpen()
{
    return m_pFile != nullptr;
}

xulong CArchive::GetSize()
{
    return m_ulSize;
}

xlong CArchive::AddFile(const char *pszFile, const char *pszStoreAs)
{
    const char *const pszName = pszStoreAs ? pszStoreAs : pszFile;
    const size_t ulName = strlen(pszName);
    CFile file;
    xulong ulSize = 0;
    if (!m_pFile || ulName > s_ulLongestName || !file.Open(pszFile, FILE_READ) || !file.GetSize(&ulSize))
        return 0;
    FreeBuffers();
    m_pSource = XNEW(char[ulSize]);
    if (!m_pSource || !file.Read(m_pSource, ulSize))
    {
        FreeBuffers();
        return 0;
    }
    const char *pData = m_pSource;
    xulong ulData = ulSize, ulPacked = s_ulStored;
    if (ulSize >= s_ulSmallestPacked && !IsPackedType(pszFile))
    {
        m_pPacked = m_Lzss.CompressBuffer(m_pSource, &ulData);
        pData = m_pPacked;
        ulPacked = ulData;
    }
    // Before anything of it is written: lengths and places in the file have 31 bits.
    if (pData && (uint64_t)m_ulSize + s_ulHeader + ulName + ulData > s_ulMostArchive)
    {
        FreeBuffers();
        return xErrorTxt("CArchive::AddFile: The archive would grow beyond 2 GB.");
    }
    const xlong lResult = pData && m_pFile->WriteLong((xlong)ulPacked) && m_pFile->WriteLong((xlong)ulSize) &&
                          m_pFile->WriteWord((short)ulName) && m_pFile->Write(pszName, (xulong)ulName) &&
                          m_pFile->Write(pData, ulData) && m_pFile->Flush();
    FreeBuffers();
    if (lResult)
        m_ulSize += s_ulHeader + (xulong)ulName + ulData;
    return lResult;
}

xlong CArchive::ExtractArchive(const char *pszArchive, const char *pszDestDir, int bDelete)
{
    const auto Extract = [](CArchive &archive, CFile &file, const TArchiveEntry &entry, void *pUser)
    { return archive.ExtractEntry(file, entry, (const char *)pUser); };
    if (!WalkRecords(pszArchive, Extract, (void *)pszDestDir))
        return 0;
    if (bDelete)
        xFileDelete(pszArchive);
    return 1;
}

xlong CArchive::ListArchive(const char *pszArchive, xlong (*pfnEntry)(const TArchiveEntry *, void *), void *pUser)
{
    struct TList
    {
        xlong (*pfnEntry)(const TArchiveEntry *, void *);
        void *pUser;
    } list = { pfnEntry, pUser };
    const auto List = [](CArchive &, CFile &file, const TArchiveEntry &entry, void *pWork) -> xlong
    {
        const TList &work = *(const TList *)pWork;
        return work.pfnEntry(&entry, work.pUser) && file.Seek((xlong)entry.ulData, FILE_SEEK_CUR);
    };
    return WalkRecords(pszArchive, List, &list);
}

xlong CArchive::SetCallback(void (*pFunc)(xlong, xlong, xlong), xlong lPeriod)
{
    m_pfnCallback = pFunc;
    return m_Lzss.SetCallback(pFunc, lPeriod);
}

void CArchive::SetSafeNames(int bSafe)
{
    m_bSafeNames = bSafe;
}

xlong CArchive::IsSafeName(const char *pszName)
{
    if (!*pszName || IsSeparator(*pszName) || strchr(pszName, ':'))
        return 0;
    for (const char *pszPart = pszName; *pszPart;)
    {
        const char *pszEnd = pszPart;
        while (*pszEnd && !IsSeparator(*pszEnd))
            ++pszEnd;
        // Windows drops blanks and dots at the end of a name: ".. " is "..".
        size_t ulLen = (size_t)(pszEnd - pszPart), ulDots = 0;
        for (size_t ul = 0; ul < ulLen; ++ul)
            ulDots += pszPart[ul] == '.' || pszPart[ul] == ' ';
        if (ulLen > 1 && ulDots == ulLen)
            return 0;
        pszPart = *pszEnd ? pszEnd + 1 : pszEnd;
    }
    return 1;
}

// From record to record, with the position at the data of each, which the work
// moves past. Sizes are believed only as far as the archive can hold them.
xlong CArchive::WalkRecords(const char *pszArchive, TRecordWork pfnWork, void *pUser)
{
    CFile file;
    xulong ulArchive = 0, ulPos = 0;
    if (!file.Open(pszArchive, FILE_READ | FILE_LITTLE_ENDIAN))
    {
        Trace("CArchive::ExtractArchive Could not Open%s\n", pszArchive);
        return 0;
    }
    if (!file.GetSize(&ulArchive))
    {
        Trace("CArchive::ExtractArchive Could not GetSize\n");
        return 0;
    }
    do
    {
        xlong lPacked = 0, lSize = 0;
        short sName = 0;
        if (!file.ReadLong(&lPacked) || !file.ReadLong(&lSize) || !file.ReadWord(&sName))
        {
            Trace("CArchive::ExtractArchive Could not read file\n");
            return 0;
        }
        const xulong ulName = (unsigned short)sName;
        const bool bStored = (xulong)lPacked == s_ulStored;
        char *pszName = XNEW(char[ulName + 1]);
        if (!pszName)
            return xError(XERR_MEMORY);
        pszName[ulName] = 0;
        const TArchiveEntry entry = { pszName, (xulong)lSize, (xulong)(bStored ? lSize : lPacked), bStored };
        xlong lResult = file.Read(pszName, ulName) && file.GetPos(&ulPos, FILE_SEEK_START);
        if (lResult && (entry.ulData > ulArchive - ulPos ||
                        (!bStored && entry.ulSize > (uint64_t)entry.ulData * s_ulMostExpansion)))
        {
            Trace("CArchive::ExtractArchive Could not read file\n");
            lResult = 0;
        }
        lResult = lResult && pfnWork(*this, file, entry, pUser);
        XDELETE_ARRAY(pszName);
        if (!lResult)
            return 0;
        if (!file.GetPos(&ulPos, FILE_SEEK_START))
        {
            Trace("CArchive::ExtractArchive Could not get pos for file \n");
            return 0;
        }
    } while (ulPos != ulArchive);
    return 1;
}

xlong CArchive::ExtractEntry(CFile &file, const TArchiveEntry &entry, const char *pszDestDir)
{
    if (m_bSafeNames && !IsSafeName(entry.pszName))
        return xErrorTxt("CArchive::ExtractArchive: A name leads out of the directory.");
    char *pszMerged = pszDestDir ? String_MergeDirectoryAndFile(pszDestDir, entry.pszName) : nullptr;
    const char *const pszTarget = pszDestDir ? pszMerged : entry.pszName;
    xlong lResult = pszTarget && ReadData(file, entry);
    if (lResult)
    {
        const xlong lRecord = (xlong)(strlen(entry.pszName) + entry.ulData + s_ulHeader);
        if (m_pfnCallback)
            m_pfnCallback(lRecord, lRecord, 1);
        lResult = CreateDirs(pszTarget);
        if (!lResult)
            Trace("CArchive::ExtractArchive xCreateDirsForFile %s\n", pszTarget);
        lResult = lResult && WriteWhole(pszTarget, m_pSource, entry.ulSize);
    }
    FreeBuffers();
    String_Free(pszMerged);
    return lResult;
}

// The file's bytes, unpacked, to m_pSource.
xlong CArchive::ReadData(CFile &file, const TArchiveEntry &entry)
{
    FreeBuffers();
    m_pSource = entry.ulSize > s_ulMostBytes ? nullptr : XNEW(char[entry.ulSize]);
    m_pPacked = entry.lStored || entry.ulData > s_ulMostBytes ? nullptr : XNEW(char[entry.ulData]);
    if (!m_pSource || (!m_pPacked && !entry.lStored))
    {
        xprintf(__FILE__, __LINE__, this, DBGL_ALL, "CArchive::ExtractArchive Could not create filebuffer of size %d\n",
                (int)entry.ulSize);
        return xError(XERR_MEMORY);
    }
    if (!file.Read(entry.lStored ? m_pSource : m_pPacked, entry.ulData))
    {
        Trace("CArchive::ExtractArchive Could not read file\n");
        return 0;
    }
    xulong ulUnpacked = entry.ulSize;
    return entry.lStored ||
           (m_Lzss.ExpandBuffer(m_pPacked, m_pSource, &ulUnpacked, entry.ulData) && ulUnpacked == entry.ulSize);
}

void CArchive::FreeBuffers()
{
    XDELETE_ARRAY(m_pSource);
    XDELETE_ARRAY(m_pPacked);
    m_pSource = nullptr;
    m_pPacked = nullptr;
}
