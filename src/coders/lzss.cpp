#include "tarvix/lzss.h"

#include "tarvix/bitfile.h"
#include "tarvix/error.h"
#include "tarvix/memory.h"
#include "tarvix/start.h"
#include "tarvix/wholefile.h"

#include <algorithm>
#include <stddef.h>
#include <stdint.h>
#include <string.h>

namespace
{
const xlong s_lMask = CLzss::WINDOW_SIZE - 1;
const xlong s_lLookAhead = CLzss::LOOK_AHEAD;
const xlong s_lShortest = 2;
const xlong s_lPositionBits = 12;
const xlong s_lLengthBits = 4;
const xlong s_lLiteralBits = 9;
const xlong s_lMatchBits = 1 + s_lPositionBits + s_lLengthBits;
const xlong s_lEndBits = 1 + s_lPositionBits;
const size_t s_ulBlock = 32768;

typedef CLzss::TNode TNode;

uint64_t LoadBig(const unsigned char *p)
{
    uint64_t ull;
    memcpy(&ull, p, 8);
    return __builtin_bswap64(ull);
}

// What two strings of the window have in common, and which one is larger.
struct TAgreement
{
    xlong lLength;
    bool bLarger; ///< the new string
};

// Strings of the window itself, which is a ring.
struct TRing
{
    const unsigned char *pWindow;

    TAgreement Compare(short sNew, short sOld) const
    {
        xlong l = 0;
        int nOrder = 0;
        for (; l < s_lLookAhead; ++l)
        {
            nOrder = pWindow[(sNew + l) & s_lMask] - pWindow[(sOld + l) & s_lMask];
            if (nOrder)
                break;
        }
        return { l, nOrder > 0 };
    }
};

// The same strings in a row, as they came: compared by words. Behind the end of
// the source stands what the window holds there, from a round before.
struct TRow
{
    const unsigned char *pNew;

    TAgreement Compare(short sNew, short sOld) const
    {
        const unsigned char *const pOld = pNew - ((sNew - sOld) & s_lMask);
        const uint64_t ullNew = LoadBig(pNew), ullOld = LoadBig(pOld);
        if (__builtin_expect(ullNew != ullOld, 1))
            return { __builtin_clzll(ullNew ^ ullOld) / 8, ullNew > ullOld };
        const uint64_t ullNew2 = LoadBig(pNew + 8), ullOld2 = LoadBig(pOld + 8);
        if (ullNew2 != ullOld2)
            return { 8 + __builtin_clzll(ullNew2 ^ ullOld2) / 8, ullNew2 > ullOld2 };
        return { pNew[16] == pOld[16] ? s_lLookAhead : 16, pNew[16] > pOld[16] };
    }
};

// A link of 0 leads nowhere, yet what becomes node 0 gets a parent as well, and
// with it position 0 counts as a string to delete when the window comes round:
// its parent then loses the smaller side. Streams depend on that.

void Contract(TNode *pTree, short sOld, short sNew)
{
    const short sParent = pTree[sOld].sParent;
    pTree[sNew].sParent = sParent;
    TNode &parent = pTree[sParent];
    (parent.sLarger == sOld ? parent.sLarger : parent.sSmaller) = sNew;
    pTree[sOld].sParent = 0;
}

void Replace(TNode *pTree, short sOld, short sNew)
{
    TNode &parent = pTree[pTree[sOld].sParent];
    (parent.sSmaller == sOld ? parent.sSmaller : parent.sLarger) = sNew;
    pTree[sNew] = pTree[sOld];
    pTree[pTree[sNew].sSmaller].sParent = sNew;
    pTree[pTree[sNew].sLarger].sParent = sNew;
    pTree[sOld] = {};
}

short FindBefore(const TNode *pTree, short sNode)
{
    short sNext = pTree[sNode].sSmaller;
    // Counted, since nodes that were cut off might lead round in a circle.
    for (xlong l = 0; pTree[sNext].sLarger && l < CLzss::WINDOW_SIZE; ++l)
        sNext = pTree[sNext].sLarger;
    return sNext;
}

void Remove(TNode *pTree, short sNode)
{
    const TNode &node = pTree[sNode];
    if (!node.sParent)
        return;
    if (!node.sLarger)
        Contract(pTree, sNode, node.sSmaller);
    else if (!node.sSmaller)
        Contract(pTree, sNode, node.sLarger);
    else
    {
        const short sBefore = FindBefore(pTree, sNode);
        Remove(pTree, sBefore);
        Replace(pTree, sNode, sBefore);
    }
}

void SetOnlyNode(TNode *pTree, short sNode)
{
    pTree[CLzss::TREE_ROOT].sLarger = sNode;
    pTree[sNode] = { CLzss::TREE_ROOT, 0, 0 };
}

template <class TStrings>
short Add(TNode *pTree, short sNode, short *psMatchPos, const TStrings &strings)
{
    // Position 0 would read as the end of the stream.
    if (!sNode)
        return 0;
    xlong lBest = 0;
    short sMatch = *psMatchPos;
    short sTest = pTree[CLzss::TREE_ROOT].sLarger;
    if (!sTest)
    {
        SetOnlyNode(pTree, sNode);
        return 0;
    }
    for (;;)
    {
        const TAgreement agreement = strings.Compare(sNode, sTest);
        const bool bBetter = agreement.lLength >= lBest;
        lBest = bBetter ? agreement.lLength : lBest;
        sMatch = bBetter ? sTest : sMatch;
        if (__builtin_expect(agreement.lLength >= s_lLookAhead, 0))
        {
            Replace(pTree, sTest, sNode);
            break;
        }
        TNode &test = pTree[sTest];
        short *const pChild = agreement.bLarger ? &test.sLarger : &test.sSmaller;
        if (__builtin_expect(!*pChild, 0))
        {
            *pChild = sNode;
            pTree[sNode] = { sTest, 0, 0 };
            break;
        }
        sTest = *pChild;
    }
    *psMatchPos = sMatch;
    return (short)lBest;
}

struct TMemoryInput
{
    const unsigned char *pFrom;
    size_t ulLeft;

    size_t Read(unsigned char *pTo, size_t ulMost)
    {
        const size_t ulCount = std::min(ulMost, ulLeft);
        memcpy(pTo, pFrom, ulCount);
        pFrom += ulCount;
        ulLeft -= ulCount;
        return ulCount;
    }
};

struct TFileInput
{
    CFile *pFile;
    uint64_t ullRead;

    size_t Read(unsigned char *pTo, size_t ulMost)
    {
        size_t ul = 0;
        while (ul < ulMost && pFile->ReadByte((signed char *)pTo + ul))
            ++ul;
        ullRead += ul;
        return ul;
    }
};

// The bytes around the current position, in a row: a window behind it, the
// look-ahead and more before it.
template <class TInput>
class CLookAhead
{
public:
    explicit CLookAhead(TInput &input) : m_Input(input), m_pBuffer(XNEW(unsigned char[s_ulSize])), m_bEnd(false)
    {
        if (!m_pBuffer)
            return;
        memset(m_pBuffer, 0, CLzss::WINDOW_SIZE);
        m_pCurrent = m_pEnd = m_pBuffer + CLzss::WINDOW_SIZE;
        Fill();
    }
    ~CLookAhead() { XDELETE_ARRAY(m_pBuffer); }
    CLookAhead(const CLookAhead &) = delete;

    bool HasMemory() const { return m_pBuffer != nullptr; }
    /// One byte on. @return false when none follows at the far end of the look-ahead
    bool Step()
    {
        if (m_pCurrent + s_lLookAhead >= m_pEnd && !m_bEnd)
            Fill();
        ++m_pCurrent;
        return m_pCurrent + s_lLookAhead <= m_pEnd;
    }
    const unsigned char *Current() const { return m_pCurrent; }
    xlong Length() const { return (xlong)std::min<ptrdiff_t>(m_pEnd - m_pCurrent, s_lLookAhead); }

private:
    static const size_t s_ulSize = CLzss::WINDOW_SIZE + s_ulBlock + 2 * CLzss::LOOK_AHEAD;

    void Fill()
    {
        const size_t ulKeep = (size_t)(m_pEnd - m_pCurrent) + CLzss::WINDOW_SIZE;
        memmove(m_pBuffer, m_pCurrent - CLzss::WINDOW_SIZE, ulKeep);
        m_pCurrent = m_pBuffer + CLzss::WINDOW_SIZE;
        const size_t ulRead = m_Input.Read(m_pBuffer + ulKeep, s_ulBlock);
        m_pEnd = m_pBuffer + ulKeep + ulRead;
        m_bEnd = ulRead < s_ulBlock;
        if (m_bEnd)
            memcpy(m_pEnd, m_pEnd - CLzss::WINDOW_SIZE, CLzss::LOOK_AHEAD);
    }

    TInput &m_Input;
    unsigned char *m_pBuffer;
    unsigned char *m_pCurrent;
    unsigned char *m_pEnd;
    bool m_bEnd;
};

// The bits of a block whose length is known.
struct TBlockBits
{
    const unsigned char *pFrom, *pEnd;
    uint64_t ullBits; ///< the next one on top
    xlong lCount;

    bool Take(xlong lWanted, xulong &ulValue)
    {
        if (lCount < lWanted && !Fill(lWanted))
            return false;
        ulValue = (xulong)(ullBits >> (64 - lWanted));
        ullBits <<= lWanted;
        lCount -= lWanted;
        return true;
    }

    bool Fill(xlong lWanted)
    {
        if (pEnd - pFrom >= 8)
        {
            // Bits of a byte that does not fit whole are loaded again next time.
            ullBits |= LoadBig(pFrom) >> lCount;
            const xlong lBytes = (63 - lCount) / 8;
            pFrom += lBytes;
            lCount += lBytes * 8;
            return true;
        }
        for (; lCount <= 56 && pFrom != pEnd; lCount += 8)
        {
            // Such bits of the last full load are there already, and equal.
            ullBits |= (uint64_t)*pFrom++ << (56 - lCount);
        }
        return lCount >= lWanted;
    }
};

struct TFileBits
{
    CBitFile *pFile;

    bool Take(xlong lWanted, xulong &ulValue) { return pFile->TryReadBits(lWanted, &ulValue); }
};

// Where expanded bytes go: into a row of which the last window stays in reach.
struct TMemoryTarget
{
    unsigned char *pFirst, *pTo, *pEnd;
    xulong ulDone; ///< bytes, also those for which there was no room

    bool MakeRoom() { return false; }
    bool Finish() { return true; }
};

struct TFileTarget
{
    unsigned char *pFirst, *pTo, *pEnd;
    xulong ulDone;
    CFile *pFile;
    bool bGood;

    bool MakeRoom()
    {
        // The first window of the row is what was written before.
        const size_t ulNew = (size_t)(pTo - pFirst) - CLzss::WINDOW_SIZE;
        bGood = bGood && pFile->Write(pFirst + CLzss::WINDOW_SIZE, (xulong)ulNew);
        memmove(pFirst, pTo - CLzss::WINDOW_SIZE, CLzss::WINDOW_SIZE);
        pTo = pFirst + CLzss::WINDOW_SIZE;
        return true;
    }
    bool Finish() { return MakeRoom() && bGood; }
};

template <class TTarget>
void PutByte(TTarget &target, unsigned char uc)
{
    ++target.ulDone;
    if (target.pTo != target.pEnd || target.MakeRoom())
        *target.pTo++ = uc;
}

template <class TTarget>
void PutMatch(TTarget &target, xlong lPosition, xlong lLength)
{
    // The byte at the current position itself is a whole window old.
    const ptrdiff_t nBack = (((xlong)target.ulDone - lPosition) & s_lMask) + 1;
    if (target.pEnd - target.pTo >= s_lLookAhead && target.pTo - target.pFirst >= nBack)
    {
        unsigned char *const pTo = target.pTo;
        const unsigned char *const pFrom = pTo - nBack;
        if (nBack >= 16)
        {
            memcpy(pTo, pFrom, 16);
            pTo[16] = pFrom[16];
        }
        else if (nBack == 1)
            memset(pTo, *pFrom, CLzss::LOOK_AHEAD);
        else
            for (xlong l = 0; l < lLength; ++l)
                pTo[l] = pFrom[l];
        target.pTo += lLength;
        target.ulDone += (xulong)lLength;
        return;
    }
    for (; lLength; --lLength)
        PutByte(target, target.pTo - target.pFirst >= nBack ? target.pTo[-nBack] : (unsigned char)0);
}
} // namespace

CLzss::CLzss()
    : m_ucWindow(), m_Tree(), m_pfnCallback(nullptr), m_lCallbackPeriod(0), m_ucBitBuffer(0), m_ucBitCount(0),
      m_pSource(nullptr), m_pDest(nullptr), m_ulDestLen(0), m_ulDestSize(0), m_bCountOnly(0), m_ulLastCallback(0)
{
}

xlong CLzss::SetCallback(void (*pFunc)(xlong, xlong, xlong), xlong lPeriod)
{
    m_pfnCallback = pFunc;
    m_lCallbackPeriod = lPeriod;
    return 1;
}

xlong CLzss::Compress(const char *pszSource, const char *pszDest)
{
    CWholeFile whole;
    CFile source;
    CBitFile dest;
    if (!source.Open(pszSource, FILE_READ) || !whole.BeginWithDirs(pszDest) ||
        !dest.Open(whole.GetPath(), FILE_WRITE) || !CompressFile(&source, &dest))
        return 0;
    dest.Close();
    return whole.Commit();
}

xlong CLzss::Expand(const char *pszSource, const char *pszDest)
{
    // What stands before the damage of a stream is kept.
    CBitFile source;
    CFile dest;
    return source.Open(pszSource, FILE_READ) && dest.Open(pszDest, FILE_WRITE) && ExpandFile(&source, &dest);
}

xlong CLzss::CompressFile(CFile *pSource, CBitFile *pDest)
{
    xulong ulSize = 0, ulPos = 0;
    if (!pSource->GetSize(&ulSize) || !pSource->GetPos(&ulPos, FILE_ABSOLUTE))
        return 0;
    TFileInput input = { pSource, 0 };
    // What could not be read would be missing without a word.
    return CompressRun(input, ulSize, *pDest) && input.ullRead + ulPos >= ulSize && pDest->Flush();
}

xlong CLzss::ExpandFile(CBitFile *pSource, CFile *pDest)
{
    xulong ulSize = 0;
    const size_t ulRow = WINDOW_SIZE + s_ulBlock;
    unsigned char *const pRow = XNEW(unsigned char[ulRow]);
    if (!pRow)
        return xError(XERR_MEMORY);
    memset(pRow, 0, WINDOW_SIZE);
    TFileBits bits = { pSource };
    TFileTarget target = { pRow, pRow + WINDOW_SIZE, pRow + ulRow, 0, pDest, true };
    const xlong lResult = pSource->GetSize(&ulSize) && ExpandRun(bits, target, &ulSize) && pDest->Flush();
    XDELETE_ARRAY(pRow);
    return lResult;
}

char *CLzss::CompressBuffer(const char *pSource, xulong *pulLen)
{
    const xulong ulSource = *pulLen;
    xulong ulLen = ulSource;
    const uint64_t ullMost = (uint64_t)ulSource * s_lLiteralBits / 8 + 3;
    // One pass into room enough. Two where there is less, or where progress is
    // watched, which takes two.
    char *const pRoom =
        ulSource && !m_pfnCallback && ullMost <= 0x7fffff00 ? CompressBuf(pSource, &ulLen, (xlong)ullMost) : nullptr;
    if (pRoom)
    {
        char *const pExact = XNEW(char[ulLen]);
        if (pExact)
            memcpy(pExact, pRoom, ulLen);
        XDELETE_ARRAY(pRoom);
        *pulLen = ulLen;
        return pExact;
    }
    ulLen = ulSource;
    CompressBuf(pSource, &ulLen, 0);
    return ulSource ? CompressBuf(pSource, pulLen, (xlong)ulLen) : nullptr;
}

char *CLzss::CompressBuf(const char *pSource, xulong *pulLen, xlong lDestSize)
{
    unsigned char *const pDest = lDestSize > 0 ? XNEW(unsigned char[lDestSize]) : nullptr;
    if (lDestSize && !pDest)
        return nullptr;
    m_pDest = pDest;
    m_ulDestSize = pDest ? (xulong)lDestSize : 0;
    m_bCountOnly = !pDest;
    TMemoryInput input = { (const unsigned char *)pSource, *pulLen };
    const xlong lResult = CompressRun(input, *pulLen, *this);
    *pulLen = m_ulDestLen;
    m_pDest = nullptr;
    if (lResult)
        return (char *)pDest;
    XDELETE_ARRAY(pDest);
    return nullptr;
}

xlong CLzss::ExpandBuffer(const char *pSource, char *pDest, xulong *pulLen)
{
    struct TOpenBits
    {
        CLzss *pLzss;

        bool Take(xlong lWanted, xulong &ulValue)
        {
            ulValue = (xulong)pLzss->ReadBits((short)lWanted);
            return true;
        }
    } bits = { this };
    m_pSource = (const unsigned char *)pSource;
    const xulong ulSize = *pulLen;
    TMemoryTarget target = { (unsigned char *)pDest, (unsigned char *)pDest, (unsigned char *)pDest + ulSize, 0 };
    ExpandRun(bits, target, nullptr);
    m_pSource = nullptr;
    *pulLen = target.ulDone;
    return target.ulDone <= ulSize && ulSize;
}

xlong CLzss::ExpandBuffer(const char *pSource, char *pDest, xulong *pulLen, xulong ulSourceLen)
{
    const unsigned char *const pFrom = (const unsigned char *)pSource;
    TBlockBits bits = { pFrom, pFrom + ulSourceLen, 0, 0 };
    const xulong ulSize = *pulLen;
    TMemoryTarget target = { (unsigned char *)pDest, (unsigned char *)pDest, (unsigned char *)pDest + ulSize, 0 };
    const xlong lResult = ExpandRun(bits, target, nullptr);
    *pulLen = target.ulDone;
    return lResult && target.ulDone <= ulSize && ulSize;
}

void CLzss::ClearTree()
{
    memset(m_Tree, 0, sizeof(m_Tree));
}

void CLzss::InitTree(short sRoot)
{
    SetOnlyNode(m_Tree, sRoot);
}

void CLzss::ContractNode(short sOld, short sNew)
{
    Contract(m_Tree, sOld, sNew);
}

void CLzss::ReplaceNode(short sOld, short sNew)
{
    Replace(m_Tree, sOld, sNew);
}

short CLzss::FindNextNode(short sNode)
{
    return FindBefore(m_Tree, sNode);
}

void CLzss::DeleteString(short sNode)
{
    Remove(m_Tree, sNode);
}

short CLzss::AddString(short sNode, short *psMatchPos)
{
    return Add(m_Tree, sNode, psMatchPos, TRing{ m_ucWindow });
}

void CLzss::DoCallback(xlong lPos, xlong lTotal, xlong bStart)
{
    if (!m_pfnCallback)
        return;
    m_ulLastCallback = xGetTime();
    m_pfnCallback(lPos, lTotal, bStart);
}

short CLzss::ReadBit()
{
    if (!m_ucBitCount)
    {
        m_ucBitBuffer = *m_pSource++;
        m_ucBitCount = 8;
    }
    --m_ucBitCount;
    return m_ucBitBuffer >> m_ucBitCount & 1;
}

short CLzss::ReadBits(short sCount)
{
    xulong ulValue = 0;
    for (; sCount > 0; --sCount)
        ulValue = ulValue << 1 | (xulong)ReadBit();
    return (short)ulValue;
}

void CLzss::WriteBit(unsigned char ucBit)
{
    WriteBits(ucBit, 1);
}

void CLzss::WriteBits(xulong ulValue, unsigned char ucCount)
{
    while (ucCount)
    {
        const int nTake = std::min<int>(ucCount, 8 - m_ucBitCount);
        ucCount = (unsigned char)(ucCount - nTake);
        m_ucBitBuffer = (unsigned char)(m_ucBitBuffer << nTake | (ulValue >> ucCount & ((1u << nTake) - 1)));
        m_ucBitCount = (unsigned char)(m_ucBitCount + nTake);
        if (m_ucBitCount == 8)
        {
            WriteByte(m_ucBitBuffer);
            FlushBitBuf();
        }
    }
}

void CLzss::WriteByte(unsigned char ucValue)
{
    if (!m_bCountOnly && m_ulDestLen < m_ulDestSize)
        m_pDest[m_ulDestLen] = ucValue;
    ++m_ulDestLen;
}

void CLzss::FlushBitBuf()
{
    m_ucBitBuffer = 0;
    m_ucBitCount = 0;
}

void CLzss::FlushBits()
{
    if (m_ucBitCount)
        WriteByte((unsigned char)(m_ucBitBuffer << (8 - m_ucBitCount)));
    FlushBitBuf();
}

template <class TInput, class TOutput>
xlong CLzss::CompressRun(TInput &input, xulong ulTotal, TOutput &output)
{
    StartRun();
    DoCallback(0, (xlong)ulTotal, 1);
    CLookAhead<TInput> ahead(input);
    if (!ahead.HasMemory())
        return xError(XERR_MEMORY);
    InitTree(1);
    short sCurrent = 1, sLength = 0, sMatch = 0;
    xlong lAhead = ahead.Length();
    xulong ulRead = (xulong)lAhead;
    while (lAhead > 0)
    {
        xlong lReplace = std::min<xlong>(sLength, lAhead);
        if (lReplace >= s_lShortest)
            output.WriteBits((xulong)(sMatch << s_lLengthBits | (lReplace - s_lShortest)), s_lMatchBits);
        else
        {
            output.WriteBits(0x100u | *ahead.Current(), s_lLiteralBits);
            lReplace = 1;
        }
        for (; lReplace; --lReplace)
        {
            Remove(m_Tree, (short)((sCurrent + s_lLookAhead) & s_lMask));
            if (ahead.Step())
                ++ulRead;
            else
                --lAhead;
            sCurrent = (short)((sCurrent + 1) & s_lMask);
            if (lAhead)
                sLength = Add(m_Tree, sCurrent, &sMatch, TRow{ ahead.Current() });
        }
        ReportAtPeriod(ulRead, ulTotal);
    }
    DoCallback((xlong)ulTotal, (xlong)ulTotal, 0);
    output.WriteBits(0, s_lEndBits);
    output.FlushBits();
    return 1;
}

template <class TBits, class TTarget>
xlong CLzss::ExpandRun(TBits &bits, TTarget &target, const xulong *pulTotal)
{
    StartRun();
    if (pulTotal)
        DoCallback(0, (xlong)*pulTotal, 1);
    uint64_t ullBits = 0;
    xulong ulLiteral = 0, ulValue = 0;
    for (;;)
    {
        if (!bits.Take(1, ulLiteral))
            break;
        if (ulLiteral)
        {
            if (!bits.Take(8, ulValue))
                break;
            PutByte(target, (unsigned char)ulValue);
            ullBits += s_lLiteralBits;
        }
        else
        {
            if (!bits.Take(s_lPositionBits, ulValue))
                break;
            if (!ulValue)
            {
                if (pulTotal)
                    DoCallback((xlong)*pulTotal, (xlong)*pulTotal, 0);
                return target.Finish();
            }
            const xlong lPosition = (xlong)ulValue;
            if (!bits.Take(s_lLengthBits, ulValue))
                break;
            PutMatch(target, lPosition, (xlong)ulValue + s_lShortest);
            ullBits += s_lMatchBits;
        }
        if (pulTotal)
            ReportAtPeriod((xulong)(ullBits / 8), *pulTotal);
    }
    target.Finish();
    return 0;
}

void CLzss::StartRun()
{
    ClearTree();
    memset(m_ucWindow, 0, sizeof(m_ucWindow));
    FlushBitBuf();
    m_ulDestLen = 0;
}

void CLzss::ReportAtPeriod(xulong ulPos, xulong ulTotal)
{
    if (m_pfnCallback && xTimeDiff(m_ulLastCallback, xGetTime()) > (xulong)m_lCallbackPeriod)
        DoCallback((xlong)ulPos, (xlong)ulTotal, 0);
}
