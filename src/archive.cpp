#include "tarvix/archive.h"

#include "tarvix/error.h"
#include "tarvix/file.h"
#include "tarvix/strings.h"
#include "tarvix/system.h"

#include <stdint.h>
#include <string.h>

namespace
{
const xulong s_ulStored = 0xffffffff;
const xulong s_ulHeader = 10;
const xulong s_ulLongestName = 0xffff;
const xulong s_ulSmallestPacked = 2049; // bytes: below, nothing is gained
const char *const s_pszPackedTypes[] = { "mp3", "jpg", "xrs" };

bool IsSeparator(char c)
{
    return c == '/' || c == '\\';
}

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
    CFile file;
    return file.Open(pszFile, FILE_WRITE) && file.Write(pData, ulSize) && file.Flush();
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
    xulong ulArchive = 0, ulPos = 0;
    {
        CFile file;
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
            if (!ExtractRecord(file, ulArchive, pszDestDir))
                return 0;
            if (!file.GetPos(&ulPos, FILE_SEEK_START))
            {
                Trace("CArchive::ExtractArchive Could not get pos for file \n");
                return 0;
            }
        } while (ulPos != ulArchive);
    }
    if (bDelete)
        xFileDelete(pszArchive);
    return 1;
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

// One record from the position on. Its sizes are believed only as far as the
// archive can hold them.
xlong CArchive::ExtractRecord(CFile &file, xulong ulArchive, const char *pszDestDir)
{
    xlong lPacked = 0, lSize = 0;
    short sName = 0;
    if (!file.ReadLong(&lPacked) || !file.ReadLong(&lSize) || !file.ReadWord(&sName))
    {
        Trace("CArchive::ExtractArchive Could not read file\n");
        return 0;
    }
    const xulong ulName = (unsigned short)sName;
    const xulong ulData = (xulong)lPacked == s_ulStored ? (xulong)lSize : (xulong)lPacked;
    char *pszName = XNEW(char[ulName + 1]);
    if (!pszName || !file.Read(pszName, ulName))
    {
        XDELETE_ARRAY(pszName);
        return 0;
    }
    pszName[ulName] = 0;
    char *pszTarget = pszDestDir ? String_MergeDirectoryAndFile(pszDestDir, pszName) : nullptr;
    const char *const pszFile = pszDestDir ? pszTarget : pszName;
    xlong lResult = pszFile != nullptr;
    if (lResult && m_bSafeNames && !IsSafeName(pszName))
        lResult = xErrorTxt("CArchive::ExtractArchive: A name leads out of the directory.");
    if (lResult)
        lResult = ReadData(file, ulArchive, (xulong)lPacked, (xulong)lSize);
    if (lResult)
    {
        const xlong lRecord = (xlong)(ulName + ulData + s_ulHeader);
        if (m_pfnCallback)
            m_pfnCallback(lRecord, lRecord, 1);
        lResult = CreateDirs(pszFile);
        if (!lResult)
            Trace("CArchive::ExtractArchive xCreateDirsForFile %s\n", pszFile);
        lResult = lResult && WriteWhole(pszFile, m_pSource, (xulong)lSize);
    }
    FreeBuffers();
    String_Free(pszTarget);
    XDELETE_ARRAY(pszName);
    return lResult;
}

// The data of a record, unpacked, to m_pSource.
xlong CArchive::ReadData(CFile &file, xulong ulArchive, xulong ulPacked, xulong ulSize)
{
    const bool bStored = ulPacked == s_ulStored;
    const xulong ulData = bStored ? ulSize : ulPacked;
    xulong ulPos = 0;
    if (!file.GetPos(&ulPos, FILE_ABSOLUTE) || ulData > ulArchive - ulPos)
    {
        Trace("CArchive::ExtractArchive Could not read file\n");
        return 0;
    }
    // No token gives more than 17 bytes for its 17 bits.
    if (!bStored && ulSize > (uint64_t)ulPacked * 8)
        return 0;
    FreeBuffers();
    m_pSource = ulSize > 0x7fffff00 ? nullptr : XNEW(char[ulSize]);
    m_pPacked = bStored || ulData > 0x7fffff00 ? nullptr : XNEW(char[ulData]);
    if (!m_pSource || (!m_pPacked && !bStored))
    {
        xprintf(__FILE__, __LINE__, this, DBGL_ALL, "CArchive::ExtractArchive Could not create filebuffer of size %d\n",
                (int)ulSize);
        return 0;
    }
    if (!file.Read(bStored ? m_pSource : m_pPacked, ulData))
    {
        Trace("CArchive::ExtractArchive Could not read file\n");
        return 0;
    }
    xulong ulUnpacked = ulSize;
    return bStored || (m_Lzss.ExpandBuffer(m_pPacked, m_pSource, &ulUnpacked, ulData) && ulUnpacked == ulSize);
}

void CArchive::FreeBuffers()
{
    XDELETE_ARRAY(m_pSource);
    XDELETE_ARRAY(m_pPacked);
    m_pSource = nullptr;
    m_pPacked = nullptr;
}
