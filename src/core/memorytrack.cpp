#include "tarvix/memorytrack.h"

#include "core/blocktag.h"
#include "tarvix/error.h"
#include "tarvix/file.h"
#include "tarvix/globals.h"

#include <inttypes.h>
#include <stdint.h>
#include <string.h>

namespace
{
const size_t s_ulEntrySize = 144;
const size_t s_ulBlockSlack = 130;
const size_t s_ulGuard = 2;
const xulong s_ulPage = 4096;
const char s_szNoFile[] = "<File info missing>";

// Blocks as the page layer below would count them, no less than a page each.
xulong PageBytes(xulong ulSize)
{
    return ulSize < s_ulPage ? s_ulPage : ulSize / s_ulPage * s_ulPage;
}
} // namespace

CMemory::CMemory() : m_ulBytesAlloc(0) {}

CMemory::~CMemory()
{
    PrintLeakList();
    FreeAll();
}

void *CMemory::Alloc(xulong ulSize, const char *pszFile, xlong lLine)
{
    if (glb && glb->m_pszNewFile)
    {
        pszFile = glb->m_pszNewFile;
        lLine = glb->m_lNewLine;
    }
    const size_t ulName = pszFile ? strlen(pszFile) + 1 : 0;
    const uint64_t ullTotal = (uint64_t)ulSize + ulName + s_ulBlockSlack + s_ulTagHeader;
    TMemEntry *const pEntry = (TMemEntry *)xSysAllocMem(s_ulEntrySize);
    void *const pBlock = ullTotal > 0x7fffff00 ? nullptr : xSysAllocMem((xlong)ullTotal);
    if (pEntry && pBlock)
    {
        *pEntry = {};
        char *const pMem = SetTag(pBlock, s_szTrackedTag);
        char *const pGuard = pMem + ulSize;
        pGuard[0] = 0;
        pGuard[1] = (char)0xff;
        pEntry->pMem = pMem;
        pEntry->ulSize = ulSize;
        pEntry->lLine = lLine;
        if (pszFile)
            pEntry->pszFile = (char *)memcpy(pGuard + s_ulGuard, pszFile, ulName);
        if (m_List.InsertLast(pEntry))
        {
            m_ulBytesAlloc += ulSize + (xulong)s_ulGuard;
            return pMem;
        }
    }
    xSysFreeMem(pBlock);
    xSysFreeMem(pEntry);
    xError(XERR_MEMORY);
    return nullptr;
}

xlong CMemory::Free(void *pMem, const char *pszFile, xlong lLine)
{
    CError *const pError = glb ? &glb->m_Error : nullptr;
    if (!pMem || !m_ulBytesAlloc)
        return 1;
    TMemEntry *pEntry = nullptr;
    for (m_List.First(); m_List.Exists(); m_List.Next())
    {
        pEntry = (TMemEntry *)m_List.Get();
        if (pEntry->pMem == pMem)
            break;
    }
    if (!m_List.Exists())
    {
        if (!pszFile)
            return pError->SetErrorf("Memory entry not found");
        return pError->SetErrorf("Memory entry not found in file \"%s\" at line %ld", pszFile, (long)lLine);
    }
    xlong lResult = 1;
    const unsigned char *const pGuard = (const unsigned char *)pMem + pEntry->ulSize;
    if (pGuard[0] || pGuard[1] != 0xff)
        lResult = xError(XERR_OVERFLOW_BYTES);
    if (!HasTag(pMem, s_szTrackedTag))
        return pError->SetErrorf("Memory entry header is incorrect (not XCAL)");
    xSysFreeMem(TakeTag(pMem));
    m_ulBytesAlloc -= pEntry->ulSize + (xulong)s_ulGuard;
    xSysFreeMem(pEntry);
    m_List.Delete();
    return lResult;
}

xlong CMemory::GetAvail(xulong *pulAvail)
{
    return xError(XERR_NOT_IMPLEMENTED);
}

xlong CMemory::FreeAll()
{
    while (m_List.First())
    {
        const xlong lLeft = m_List.GetNumNodes();
        Free(((TMemEntry *)m_List.Get())->pMem, nullptr, 0);
        if (m_List.GetNumNodes() < lLeft)
            continue;
        // A damaged header: the block is given up, its record is not.
        m_List.First();
        xSysFreeMem(m_List.Get());
        m_List.Delete();
    }
    return 1;
}

xulong CMemory::GetBytesAlloc()
{
    return m_ulBytesAlloc;
}

xlong CMemory::PrintMemList(const char *pszPath)
{
    static const char s_szRule[] = "+------+----------+----------+----------+----------->\n";
    CFile file;
    if (!file.Open(pszPath, FILE_WRITE) || !file.Print(s_szRule) ||
        !file.Print("| Nr.  | Adress   | Size     | Line nr  | Allocated in file\n") || !file.Print(s_szRule))
        return 0;
    xulong ulPages = 0;
    for (m_List.First(); m_List.Exists(); m_List.Next())
    {
        const TMemEntry *pEntry = (const TMemEntry *)m_List.Get();
        if (!file.Print("| %4d | %8" PRIxPTR " | %8ld | %8ld | %s\n", (int)m_List.GetCurrNodeNr(),
                        (uintptr_t)pEntry->pMem, (long)(xlong)pEntry->ulSize, (long)pEntry->lLine,
                        pEntry->pszFile ? pEntry->pszFile : s_szNoFile))
            return 0;
        ulPages += PageBytes(pEntry->ulSize);
    }
    if (!file.Print(s_szRule) ||
        !file.Print("| %4d |        0 | %8ld |          |\n", (int)m_List.GetNumNodes(), (long)(xlong)m_ulBytesAlloc) ||
        !file.Print("|   -  |        0 | %8ld |          |\n", (long)(xlong)ulPages) ||
        !file.Print("+------+----------+----------+----------+\n"))
        return 0;
    return file.Flush();
}

void CMemory::PrintLeakList()
{
    static const char s_szRule[] = "+-----+----------+----------+----------+----------->\n";
    static const char s_szEnd[] = "+-----+----------+----------+----------+\n";
    if (!m_List.First())
        return;
    const auto Trace = [this](const char *pszFormat, auto... values)
    { xprintf(__FILE__, __LINE__, this, DBGL_MEMORY, pszFormat, values...); };
    Trace("\n------------ Memory leaked ------------\n\n");
    Trace(s_szRule);
    Trace("| Nr. | Adress   | Size     | Line nr  | Allocated in file\n");
    Trace(s_szRule);
    xulong ulPages = 0;
    for (m_List.First(); m_List.Exists(); m_List.Next())
    {
        const TMemEntry *pEntry = (const TMemEntry *)m_List.Get();
        Trace("| %3d | %8" PRIxPTR " | %8ld | %8ld | %s\n", (int)m_List.GetCurrNodeNr(), (uintptr_t)pEntry->pMem,
              (long)(xlong)pEntry->ulSize, (long)pEntry->lLine, pEntry->pszFile ? pEntry->pszFile : s_szNoFile);
        ulPages += PageBytes(pEntry->ulSize);
    }
    Trace(s_szRule);
    Trace("| %3d |        0 | %8ld |          |\n", (int)m_List.GetNumNodes(), (long)(xlong)m_ulBytesAlloc);
    Trace(s_szEnd);
    Trace(s_szRule);
    Trace("| XXX |        0 | %8ld |          |\n", (long)(xlong)ulPages);
    Trace(s_szEnd);
}
