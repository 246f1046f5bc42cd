#include "tarvix/kcbl.h"

#include "core/chars.h"
#include "kcbl/kcblitem.h"
#include "tarvix/error.h"
#include "tarvix/strings.h"

#include <algorithm>
#include <stdint.h>
#include <stdio.h>
#include <string.h>

namespace
{
const char s_szFirst[] = "; I don't exist";

TKCBLKeyword *ItemAt(const CNode *pNode)
{
    return pNode ? (TKCBLKeyword *)pNode->pData : nullptr;
}

const xlong s_lFirstSize = sizeof(s_szFirst) + 1;

void FillFirst(TKCBLKeyword *pItem, char *pBody)
{
    pItem->pszKeyword = pBody;
    pItem->ppszStrings = (char **)(pItem + 1);
    pItem->lNumStrings = 0;
    pItem->lSize = s_lFirstSize;
    pItem->pChunk = nullptr;
    memcpy(pBody, s_szFirst, sizeof(s_szFirst));
    pBody[sizeof(s_szFirst)] = (char)KCBL_BODY_END;
}

// A chunk of the tree. The first item of its list, which lives as long as the
// chunk, is in the same block, with its node.
struct TTreeChunk : TKCBLChunk
{
    TTreeChunk()
    {
        FillFirst(&m_Item, m_szFirst);
        m_Node.pData = &m_Item;
        InsertLast(&m_Node, 1);
    }

    CNode m_Node;
    TKCBLKeyword m_Item;
    char m_szFirst[s_lFirstSize + 3];
};

// The first node whose item goes with the list. The last node is forgotten.
CNode *FirstOwnNode(TKCBLChunk *pChunk)
{
    pChunk->m_pLast = nullptr;
    return pChunk->pParent ? pChunk->m_pFirst->pNext : pChunk->m_pFirst;
}

// Frees the items of a chunk and empties it, and frees the chunks below it,
// without a call for each level. The parent's cursor keeps the way back, and
// m_pLast collects nodes of items that were not made here.
void FreeItems(TKCBLChunk *pTop)
{
    TKCBLChunk *pChunk = pTop;
    CNode *pNode = FirstOwnNode(pTop);
    for (;;)
    {
        while (pNode)
        {
            TKCBLKeyword *pItem = ItemAt(pNode);
            KCBLFetchAhead(pItem);
            if (pItem && pItem->pChunk)
            {
                pChunk->m_pCurr = pNode;
                pChunk = pItem->pChunk;
                pNode = FirstOwnNode(pChunk);
                continue;
            }
            CNode *pNext = pNode->pNext;
            if (!pItem || pNode != KCBLNodeOf(pItem))
            {
                pNode->pNext = pChunk->m_pLast;
                pChunk->m_pLast = pNode;
            }
            KCBLDeleteItem(pItem);
            pNode = pNext;
        }
        pChunk->m_pFirst = pChunk->m_pLast;
        pChunk->KillAll();
        if (pChunk == pTop)
            break;
        TKCBLChunk *pParent = pChunk->pParent;
        XDELETE((TTreeChunk *)pChunk);
        pChunk = pParent;
        ItemAt(pChunk->m_pCurr)->pChunk = nullptr;
        pNode = pChunk->m_pCurr;
    }
}

// With the white space before it, as scanf reads.
xlong ReadInteger(const char *psz, xulong *pulValue)
{
    while (*psz == ' ' || (*psz >= '\t' && *psz <= '\r'))
        ++psz;
    return ScanInteger(psz, pulValue);
}

xlong Convert(const char *psz, xulong *pulValue)
{
    return ReadInteger(psz, pulValue);
}

xlong Convert(const char *psz, xlong *plValue)
{
    xulong ulValue;
    if (!ReadInteger(psz, &ulValue))
        return 0;
    *plValue = (xlong)ulValue;
    return 1;
}

xlong Convert(const char *psz, float *pfValue)
{
    return sscanf(psz, "%f", pfValue) == 1;
}

xlong Convert(const char *psz, double *pdValue)
{
    return sscanf(psz, "%lf", pdValue) == 1;
}

// Not an overload: int and xlong can be one type.
xlong ConvertBool(const char *psz, int *pbValue)
{
    const bool bTrue = !xStricmp(psz, "TRUE") || !xStricmp(psz, "1") || !xStricmp(psz, "YES");
    if (!bTrue && xStricmp(psz, "FALSE") && xStricmp(psz, "0") && xStricmp(psz, "NO"))
        return 0;
    *pbValue = bTrue;
    return 1;
}

template <class T, class TConvert>
xlong GetValue(const char *psz, T *pValue, TConvert pfnConvert)
{
    return psz && pValue ? pfnConvert(psz, pValue) : 0;
}

bool IsMark(const char *pAt, int nMark)
{
    return (unsigned char)*pAt == nMark;
}

// The elements of an array up to the mark behind it. The body ends in a zero
// and a mark, so that a text that only looks like an array ends there too.
template <class T, class TConvert>
xlong GetArray(const char *psz, T *pValues, xlong lCount, TConvert pfnConvert)
{
    if (!psz || !IsMark(psz, KCBL_ARRAY_START))
        return 0;
    ++psz;
    for (xlong l = 0; l < lCount; ++l, psz += strlen(psz) + 1)
        if (!pValues || IsMark(psz, KCBL_ARRAY_END) || IsMark(psz, KCBL_BODY_END) || !pfnConvert(psz, pValues + l))
            return 0;
    return 1;
}

const auto s_Long = [](const char *psz, xlong *p) { return Convert(psz, p); };
const auto s_ULong = [](const char *psz, xulong *p) { return Convert(psz, p); };
const auto s_Float = [](const char *psz, float *p) { return Convert(psz, p); };
const auto s_Double = [](const char *psz, double *p) { return Convert(psz, p); };

void SetFormat(char *pszFormat, size_t ulSize, const char *pszPlain, const char *pszBuild, xlong lDigits)
{
    if (lDigits < 0)
        snprintf(pszFormat, ulSize, "%s", pszPlain);
    else
        snprintf(pszFormat, ulSize, pszBuild, (long)std::min<xlong>(lDigits, 10));
}

inline unsigned char Lower(char c)
{
    return c >= 'A' && c <= 'Z' ? (unsigned char)(c + 32) : (unsigned char)c;
}

// xStricmp in line: most items differ in their first letter.
inline bool IsSame(const char *pszA, const char *pszB)
{
    for (; Lower(*pszA) == Lower(*pszB); ++pszA, ++pszB)
        if (!*pszA)
            return true;
    return false;
}
} // namespace

bool KCBLAttachChunk(TKCBLKeyword *pItem, TKCBLChunk *pParent)
{
    if (!KCBLIsChunk(pItem))
        return true;
    TKCBLChunk *pChunk = XNEW(TTreeChunk);
    if (!pChunk)
        return false;
    pChunk->pParent = pParent;
    pItem->pChunk = pChunk;
    return true;
}

TKCBLKeyword *KCBLDetach(TKCBLChunk *pList)
{
    const CNode *pNode = pList->m_pCurr;
    if (!pNode || pNode == pList->m_pFirst)
        return nullptr;
    TKCBLKeyword *pItem = ItemAt(pNode);
    CNode *pBefore = pNode->pPrev;
    if (pNode == KCBLNodeOf(pItem))
        pList->RemoveNode();
    else
        pList->Delete();
    pList->m_pCurr = pBefore;
    --pList->m_lCurrNodeNr;
    return pItem;
}

void KCBLDeleteTree(TKCBLKeyword *pItem)
{
    if (pItem->pChunk)
    {
        FreeItems(pItem->pChunk);
        XDELETE((TTreeChunk *)pItem->pChunk);
    }
    KCBLDeleteItem(pItem);
}

bool KCBLGrow(char *&pBuf, xlong &lSize, int64_t llNeeded, size_t ulKeep, int64_t llNewSize)
{
    const int64_t llSize = std::max(llNeeded, llNewSize);
    char *pNew = llSize > 0x7fffff00 ? nullptr : XNEW(char[(size_t)llSize]);
    if (!pNew)
        return false;
    if (ulKeep)
        memcpy(pNew, pBuf, ulKeep);
    XDELETE_ARRAY(pBuf);
    pBuf = pNew;
    lSize = (xlong)llSize;
    return true;
}

TKCBLChunk::TKCBLChunk() : pParent(nullptr) {}

TKCBLChunk::~TKCBLChunk() {}

CKCBL::CKCBL() : m_pCurChunk(&m_MainChunk), m_bInitialized(0)
{
    RestartMode(1);
    SetMaxLineLength(0);
    SetFloatPrecision(-1);
    SetDoublePrecision(-1);
}

CKCBL::~CKCBL()
{
    Free();
}

void CKCBL::Free()
{
    FreeItems(&m_MainChunk);
    m_pCurChunk = &m_MainChunk;
    m_bInitialized = 0;
}

void CKCBL::SetMaxLineLength(xlong lLen)
{
    if (lLen >= 0)
        m_lMaxLineLength = lLen ? lLen : 1000000;
}

void CKCBL::SetFloatPrecision(xlong lDigits)
{
    SetFormat(m_szFloatFormat, sizeof(m_szFloatFormat), "%f", "%%.%ldf", lDigits);
}

void CKCBL::SetDoublePrecision(xlong lDigits)
{
    SetFormat(m_szDoubleFormat, sizeof(m_szDoubleFormat), "%lf", "%%.%ldlf", lDigits);
}

void CKCBL::RestartMode(xlong lMode)
{
    m_lRestartMode = lMode;
}

void CKCBL::MainChunk()
{
    m_pCurChunk = &m_MainChunk;
}

xlong CKCBL::EnterChunk()
{
    TKCBLKeyword *pItem = GetCurKeyword();
    if (!pItem || !pItem->pChunk)
        return 0;
    m_pCurChunk = pItem->pChunk;
    FirstItem();
    return 1;
}

xlong CKCBL::ExitChunk()
{
    if (!m_pCurChunk->pParent)
        return 0;
    m_pCurChunk = m_pCurChunk->pParent;
    return 1;
}

xlong CKCBL::FirstItem()
{
    m_pCurChunk->First();
    return NextItem(0);
}

xlong CKCBL::NextItem(xlong bDescend)
{
    if (bDescend && ItemType() == 2)
        return EnterChunk();
    m_pCurChunk->Next();
    if (!bDescend || m_pCurChunk->Exists())
        return ItemExists();
    if (ExitChunk())
        NextItem(0);
    return 0;
}

xlong CKCBL::ItemExists()
{
    return m_pCurChunk->m_pCurr != nullptr;
}

xlong CKCBL::ItemType()
{
    const TKCBLKeyword *pItem = GetCurKeyword();
    return !pItem ? 0 : pItem->pChunk ? 2 : 1;
}

xlong CKCBL::IsComment()
{
    const TKCBLKeyword *pItem = GetCurKeyword();
    return pItem && strchr("; \t", *pItem->pszKeyword); // finds the zero too
}

char *CKCBL::GetKeyword()
{
    TKCBLKeyword *pItem = GetCurKeyword();
    return pItem ? pItem->pszKeyword : nullptr;
}

TKCBLKeyword *CKCBL::GetCurKeyword()
{
    return ItemAt(m_pCurChunk->m_pCurr);
}

char *CKCBL::GetString(xlong lIndex)
{
    TKCBLKeyword *pItem = GetCurKeyword();
    return pItem && lIndex >= 0 && lIndex < pItem->lNumStrings ? pItem->ppszStrings[lIndex] : nullptr;
}

xlong CKCBL::GetNumStrings()
{
    const TKCBLKeyword *pItem = GetCurKeyword();
    return pItem ? pItem->lNumStrings : 0;
}

xlong CKCBL::GetDataType(xlong lIndex)
{
    if (!ItemExists())
        return 0;
    const char *psz = GetString(lIndex);
    return psz && *psz == ';' ? 1 : psz && IsMark(psz, KCBL_ARRAY_START) ? 3 : 2;
}

xlong CKCBL::GetLong(xlong lIndex, xlong *plValue)
{
    return GetValue(GetString(lIndex), plValue, s_Long);
}

xlong CKCBL::GetULong(xlong lIndex, xulong *pulValue)
{
    return GetValue(GetString(lIndex), pulValue, s_ULong);
}

xlong CKCBL::GetFloat(xlong lIndex, float *pfValue)
{
    return GetValue(GetString(lIndex), pfValue, s_Float);
}

xlong CKCBL::GetDouble(xlong lIndex, double *pdValue)
{
    return GetValue(GetString(lIndex), pdValue, s_Double);
}

xlong CKCBL::GetBool(xlong lIndex, int *pbValue)
{
    return GetValue(GetString(lIndex), pbValue, ConvertBool);
}

xlong CKCBL::GetLongArray(xlong lIndex, xlong *plValues, xlong lCount)
{
    return GetArray(GetString(lIndex), plValues, lCount, s_Long);
}

xlong CKCBL::GetULongArray(xlong lIndex, xulong *pulValues, xlong lCount)
{
    return GetArray(GetString(lIndex), pulValues, lCount, s_ULong);
}

xlong CKCBL::GetFloatArray(xlong lIndex, float *pfValues, xlong lCount)
{
    return GetArray(GetString(lIndex), pfValues, lCount, s_Float);
}

xlong CKCBL::GetDoubleArray(xlong lIndex, double *pdValues, xlong lCount)
{
    return GetArray(GetString(lIndex), pdValues, lCount, s_Double);
}

xlong CKCBL::GetBoolArray(xlong lIndex, int *pbValues, xlong lCount)
{
    return GetArray(GetString(lIndex), pbValues, lCount, ConvertBool);
}

xlong CKCBL::GetNumArrayItems(xlong lIndex, xlong *plCount)
{
    const char *psz = GetString(lIndex);
    if (!psz || !plCount || !IsMark(psz, KCBL_ARRAY_START))
        return 0;
    *plCount = 0;
    for (++psz; !IsMark(psz, KCBL_ARRAY_END) && !IsMark(psz, KCBL_BODY_END); psz += strlen(psz) + 1)
        ++*plCount;
    return 1;
}

xlong CKCBL::FindItem(const char *pszKeyword, const char *pszStr0, const char *pszStr1, const char *pszStr2)
{
    if (!ItemExists() && !m_lRestartMode)
        return 0;
    const char *apszFilters[3];
    xlong lNumFilters = 0;
    for (const char *psz : { pszStr0, pszStr1, pszStr2 })
        if (psz)
            apszFilters[lNumFilters++] = psz;

    TKCBLChunk *pList = m_pCurChunk;
    if ((!pList->m_pCurr || pList->m_pCurr == pList->m_pFirst) && !FirstItem())
        return 0;
    const CNode *pStart = pList->m_pCurr;
    bool bWrapped = false;
    for (;;)
    {
        const CNode *pNode = pList->m_pCurr;
        const TKCBLKeyword *pItem = ItemAt(pNode);
        if (IsSame(pItem->pszKeyword, pszKeyword))
        {
            xlong l = 0;
            while (l < lNumFilters && l < pItem->lNumStrings && IsSame(pItem->ppszStrings[l], apszFilters[l]))
                ++l;
            if (l == lNumFilters)
                return 1;
        }
        const bool bMore = pList->Next() != 0;
        if (bWrapped && pNode == pStart)
            return 0;
        if (bMore)
            continue;
        if (!m_lRestartMode || bWrapped)
            return 0;
        bWrapped = true;
        FirstItem();
    }
}

xlong CKCBL::FindSubChunk(const char *pszStr0, const char *pszStr1, const char *pszStr2)
{
    return FindItem("{", pszStr0, pszStr1, pszStr2);
}

xlong CKCBL::FindRawdata(const char *pszStr0, const char *pszStr1, const char *pszStr2)
{
    return FindItem("[", pszStr0, pszStr1, pszStr2);
}

xlong CKCBL::GetRawdata(void *&pData, const char *pszStr0, const char *pszStr1, const char *pszStr2)
{
    return 1;
}

xlong CKCBL::KillItem()
{
    TKCBLKeyword *pItem = KCBLDetach(m_pCurChunk);
    if (!pItem)
        return 0;
    KCBLDeleteTree(pItem);
    return 1;
}

xlong CKCBL::Init()
{
    Free();
    m_bInitialized = InsertIDontExist();
    return m_bInitialized;
}

xlong CKCBL::InsertIDontExist()
{
    TKCBLKeyword *pItem = KCBLNewItem(s_lFirstSize, 0);
    if (!pItem)
        return xError(XERR_MEMORY);
    FillFirst(pItem, pItem->pszKeyword);
    return m_pCurChunk->InsertLast(KCBLNodeOf(pItem), 1);
}

xlong CKCBL::ReallocBuffer(void **ppBuf, xlong *plSize, xlong lNeeded, xlong bCopy, xlong lNewSize)
{
    if (*ppBuf && *plSize >= lNeeded)
        return 2;
    char *pBuf = (char *)*ppBuf;
    const size_t ulKeep = bCopy == 1 && pBuf ? (size_t)std::max<xlong>(*plSize, 0) : 0;
    if (!KCBLGrow(pBuf, *plSize, lNeeded, ulKeep, lNewSize))
        return xError(XERR_MEMORY);
    *ppBuf = pBuf;
    return 1;
}
