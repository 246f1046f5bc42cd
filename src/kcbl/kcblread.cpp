// Text to tree.

#include "kcbl/kcblitem.h"
#include "kcbl/kcblscan.h"
#include "tarvix/error.h"
#include "tarvix/file.h"

#include <string.h>

namespace
{
const char s_szRootClosed[] = "Trying to end chunk without starting one";
const char s_szNeverClosed[] = "Chunk without an end";

const char *LineEnd(const char *p)
{
    while (*p && *p != '\r' && *p != '\n')
        ++p;
    return p;
}

const char *StepOverLineEnd(const char *p)
{
    if (*p == '\r')
        ++p;
    return *p == '\n' ? p + 1 : p;
}

// Tells of faults with their places, and remembers where chunks were opened.
class CFaults
{
public:
    CFaults(const char *pszText, xlong (*pfnFault)(const TKCBLFault *, void *), void *pUser)
        : m_pszText(pszText), m_pfnFault(pfnFault), m_pUser(pUser), m_pLine(pszText), m_pAt(pszText)
    {
    }
    CFaults(const CFaults &) = delete;
    ~CFaults() { XDELETE_ARRAY(m_pOpen); }

    xlong Tell(const char *pAt, const char *pszFault, xlong lHarmless)
    {
        if (!lHarmless)
            m_lResult = 0;
        if (pAt < m_pAt)
        {
            m_pAt = m_pLine = m_pszText;
            m_lLine = 1;
        }
        for (; m_pAt < pAt; ++m_pAt)
            if (*m_pAt == '\n' || (*m_pAt == '\r' && m_pAt[1] != '\n'))
            {
                m_pLine = m_pAt + 1;
                ++m_lLine;
            }
        const TKCBLFault fault = { pszFault, (xlong)(pAt - m_pszText), m_lLine, (xlong)(pAt - m_pLine) + 1, lHarmless };
        return m_pfnFault(&fault, m_pUser);
    }

    bool Open(const char *pAt)
    {
        const size_t ulUsed = (size_t)m_lDepth * sizeof(xlong);
        if (ulUsed + sizeof(xlong) > (size_t)m_lOpenSize &&
            !KCBLGrow(m_pOpen, m_lOpenSize, m_lOpenSize * 2LL + 1024, ulUsed, 0))
            return false;
        ((xlong *)m_pOpen)[m_lDepth++] = (xlong)(pAt - m_pszText);
        return true;
    }

    void Close() { --m_lDepth; }

    void TellOpen()
    {
        for (xlong l = 0; l < m_lDepth; ++l)
            if (!Tell(m_pszText + ((const xlong *)m_pOpen)[l], s_szNeverClosed, 1))
                return;
    }

    xlong m_lResult = 1;

private:
    const char *m_pszText;
    xlong (*m_pfnFault)(const TKCBLFault *, void *);
    void *m_pUser;
    const char *m_pLine;
    const char *m_pAt; ///< lines are counted up to here
    xlong m_lLine = 1;
    char *m_pOpen = nullptr;
    xlong m_lOpenSize = 0;
    xlong m_lDepth = 0;
};

// Makes the item of a scan. @return null when memory is exhausted
TKCBLKeyword *MakeItem(const CKCBLScan &scan, TKCBLChunk *pList)
{
    TKCBLKeyword *pItem = KCBLNewItem(scan.m_lBody, scan.m_lNumStrings);
    if (!pItem)
        return nullptr;
    scan.Fill(pItem, pItem->pszKeyword);
    if (!KCBLAttachChunk(pItem, pList))
    {
        KCBLDeleteItem(pItem);
        return nullptr;
    }
    pList->InsertLast(KCBLNodeOf(pItem), 1);
    return pItem;
}

// @return false with the scan's fault, whose text is null when memory is exhausted
bool AddItem(CKCBL &kcbl, CKCBLScan &scan, const char *pszText)
{
    if (!scan.Scan(pszText))
        return false;
    TKCBLChunk *pList = kcbl.m_pCurChunk;
    if (*scan.m_pKeyword == '}')
    {
        if (pList->pParent)
        {
            kcbl.m_pCurChunk = pList->pParent;
            return true;
        }
        scan.m_pFault = scan.m_pKeyword;
        scan.m_pszFault = s_szRootClosed;
        return false;
    }
    if (*scan.m_pKeyword == ']')
        return true;
    const TKCBLKeyword *pItem = MakeItem(scan, pList);
    if (!pItem)
        return false;
    if (pItem->pChunk)
        kcbl.m_pCurChunk = pItem->pChunk;
    return true;
}

xlong Report(const CKCBLScan &scan)
{
    return scan.m_pszFault ? xErrorTxt(scan.m_pszFault) : xError(XERR_MEMORY);
}

// Adds the items of a text to a new tree. Without somebody to tell, the first
// fault ends it.
xlong AddText(CKCBL &kcbl, const char *pszText, CFaults *pFaults)
{
    CKCBLScan scan;
    scan.m_pEnd = pszText + strlen(pszText);
    const char *p = pszText;
    do
    {
        TKCBLChunk *pBefore = kcbl.m_pCurChunk;
        const bool bAdded = AddItem(kcbl, scan, p);
        const char *pKeyword = scan.m_pKeyword;
        p = scan.m_pUsed;
        if (!bAdded)
        {
            Report(scan);
            if (!scan.m_pszFault || !pFaults || !pFaults->Tell(scan.m_pFault, scan.m_pszFault, 0))
                return 0;
            p = LineEnd(scan.m_pFault);
            // A head with a fault opens its chunk all the same, or its end would be a fault too.
            CKCBLScan head;
            if (*pKeyword == '{' && !AddItem(kcbl, head, "{"))
                return Report(head);
        }
        if (pFaults && kcbl.m_pCurChunk != pBefore)
        {
            if (kcbl.m_pCurChunk == pBefore->pParent)
                pFaults->Close();
            else if (!pFaults->Open(pKeyword))
                return xError(XERR_MEMORY);
        }
        p = StepOverLineEnd(p);
    } while (*p);
    if (pFaults)
        pFaults->TellOpen();
    kcbl.MainChunk();
    kcbl.FirstItem();
    return pFaults ? pFaults->m_lResult : 1;
}
} // namespace

xlong CKCBL::Load(const char *pszPath)
{
    CFile file;
    xulong ulSize = 0;
    if (!file.Open(pszPath, FILE_READ))
        return 0;
    if (!file.GetSize(&ulSize))
        return 0;
    char *pszText = ulSize < 0x7fffff00 ? XNEW(char[ulSize + 1]) : nullptr;
    if (!pszText)
        return xError(XERR_MEMORY);
    xlong lResult = file.Read(pszText, ulSize);
    file.Close();
    pszText[ulSize] = 0;
    if (lResult)
        lResult = Import(pszText, (xlong)ulSize);
    XDELETE_ARRAY(pszText);
    return lResult;
}

xlong CKCBL::Import(const char *pszText, xlong lLen)
{
    return Init() ? AddText(*this, pszText, nullptr) : 0;
}

xlong CKCBL::ImportFaults(const char *pszText, xlong (*pfnFault)(const TKCBLFault *pFault, void *pUser), void *pUser)
{
    if (!Init())
        return 0;
    CFaults faults(pszText, pfnFault, pUser);
    return AddText(*this, pszText, &faults);
}

xlong CKCBL::AddLine(const char *pszText)
{
    CKCBLScan scan;
    if (AddItem(*this, scan, pszText))
        return (xlong)(scan.m_pUsed - pszText);
    Report(scan);
    return -1;
}

xlong CKCBL::ReorderString(TKCBLKeyword *pItem, TReorderStrData *pData)
{
    CKCBLScan scan;
    const bool bScanned = scan.Scan(pData->pszSource);
    pData->pszKeywordStart = scan.m_pKeyword;
    pData->lSourceUsed = (xlong)((bScanned ? scan.m_pUsed : scan.m_pFault) - pData->pszSource);
    if (!bScanned)
        return Report(scan);
    pData->lDestSize = scan.m_lBody;
    pData->lNumStrings = scan.m_lNumStrings;
    if (!pItem)
        return 1;
    pItem->pszKeyword = pData->pDest;
    pItem->ppszStrings = (char **)(pItem + 1);
    pItem->lNumStrings = scan.m_lNumStrings;
    pItem->lSize = scan.m_lBody;
    scan.Fill(pItem, pData->pDest);
    return 1;
}
