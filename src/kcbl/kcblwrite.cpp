// Tree to text.

#include "kcbl/kcblitem.h"
#include "tarvix/error.h"
#include "tarvix/file.h"
#include "tarvix/wholefile.h"

#include <algorithm>
#include <stdint.h>
#include <string.h>

namespace
{
const char s_szRawTag[] = "ASCIIDATA";
const xlong s_lIndent = 4;
const xlong s_lSaveStep = 200;
const xlong s_lSaveBuffer = 1024;

// What a string may have without going into quotes.
struct TBare
{
    constexpr TBare() : abBare()
    {
        for (int n = 0x21; n < 0x7f; ++n)
            abBare[n] = true;
        for (char c : { ',', '{', '}', '"', ';' })
            abBare[(unsigned char)c] = false;
    }

    bool abBare[256];
};

constexpr TBare s_Bare;

// What a backslash stands before in quotes, and what it is there; 0 for the rest.
struct TEscape
{
    constexpr TEscape() : acEscape()
    {
        acEscape['\t'] = 't';
        acEscape['\n'] = 'n';
        acEscape['\r'] = 'r';
        acEscape['"'] = '"';
        acEscape['\\'] = '\\';
    }

    char acEscape[256];
};

constexpr TEscape s_Escape;

// The text of one item, written or only measured.
class CLine
{
public:
    CLine(char *pTo, xlong lSize, xlong lMaxLength) : m_pTo(pTo), m_llSize(lSize), m_llMax(lMaxLength) {}

    // The position goes on when nothing more fits: the line is dropped then.
    void Put(const char *pText, size_t ulLen)
    {
        if (Fits(ulLen))
            memcpy(m_pTo + m_llAt, pText, ulLen);
        m_llAt += (int64_t)ulLen;
    }

    void Put(const char *psz) { Put(psz, strlen(psz)); }

    void Put(char c)
    {
        if (Fits(1))
            m_pTo[m_llAt] = c;
        ++m_llAt;
    }

    void PutBlanks(int64_t llCount)
    {
        const size_t ulCount = (size_t)std::clamp<int64_t>(llCount, 0, s_lKCBLMaxIndent);
        if (Fits(ulCount))
        {
            // Sixteen at a time while there is room for more than are needed.
            char *const pTo = m_pTo + m_llAt;
            size_t ul = 0;
            for (; ul < ulCount && m_llSize - m_llAt - (int64_t)ul >= 16; ul += 16)
                _mm_storeu_si128((__m128i *)(pTo + ul), _mm_set1_epi8(' '));
            for (; ul < ulCount; ++ul)
                pTo[ul] = ' ';
        }
        m_llAt += (int64_t)ulCount;
    }

    // Strings begin here, and go on here after a fold.
    void StartStrings()
    {
        m_llColumn = m_llAt;
        m_llMax = std::max(m_llMax, m_llColumn + 3);
    }

    // @return the string's end
    const char *PutString(const char *psz)
    {
        // Written on the way; quotes overwrite it.
        const char *pEnd = psz;
        if (m_pTo && !m_bFull)
        {
            char *pTo = m_pTo + m_llAt;
            const char *const pRoom = psz + (m_llSize - m_llAt);
            while (pEnd < pRoom && s_Bare.abBare[(unsigned char)*pEnd])
                *pTo++ = *pEnd++;
        }
        while (s_Bare.abBare[(unsigned char)*pEnd])
            ++pEnd;
        if (*pEnd || pEnd == psz || pEnd - psz > m_llMax - m_llAt)
        {
            pEnd += strlen(pEnd);
            PutQuoted(psz, pEnd);
            return pEnd;
        }
        if (m_pTo && m_llAt + (pEnd - psz) >= m_llSize)
            m_bFull = true;
        m_llAt += pEnd - psz;
        return pEnd;
    }

    xlong Length() const { return m_bFull || m_llAt > 0x7fffffff ? 0 : (xlong)m_llAt; }

private:
    bool Fits(size_t ulLen)
    {
        if (!m_pTo || m_bFull)
            return false;
        m_bFull = m_llAt + (int64_t)ulLen > m_llSize;
        return !m_bFull;
    }

    void PutQuoted(const char *p, const char *pEnd)
    {
        Put('"');
        while (p < pEnd)
        {
            // A run without escapes, as far as the next fold.
            const char *const pRun = p;
            int64_t llLeft = std::max<int64_t>(m_llMax - 1 - (m_llAt - m_llFold), 1);
            while (p < pEnd && llLeft > 0 && !s_Escape.acEscape[(unsigned char)*p])
            {
                ++p;
                --llLeft;
            }
            Put(pRun, (size_t)(p - pRun));
            if (p < pEnd && llLeft > 0)
            {
                const char acEscaped[] = { '\\', s_Escape.acEscape[(unsigned char)*p++] };
                Put(acEscaped, 2);
                llLeft -= 2;
            }
            if (llLeft <= 0 && p < pEnd)
            {
                Put("\"\n", 2);
                m_llFold = m_llAt;
                PutBlanks(m_llColumn);
                Put('"');
            }
        }
        Put('"');
    }

    char *m_pTo; ///< null measures
    int64_t m_llSize;
    int64_t m_llMax;
    int64_t m_llAt = 0;
    int64_t m_llColumn = 0;
    int64_t m_llFold = 0; ///< where the last fold's line begins
    bool m_bFull = false;
};

bool IsMark(const char *pAt, int nMark)
{
    return (unsigned char)*pAt == nMark;
}

// Goes over the strings of an item as they stand in its body: a comment behind
// an array has no pointer of its own.
class CStrings
{
public:
    CStrings(const TKCBLKeyword *pItem, xlong lCount) : m_pItem(pItem), m_lCount(lCount)
    {
        if (lCount)
            Set(pItem->ppszStrings[0]);
    }

    bool Exists() const { return m_pAt != nullptr; }
    const char *Get() const { return m_pAt; }
    bool IsComment() const { return *m_pAt == ';'; }
    bool IsArray() const { return IsMark(m_pAt, KCBL_ARRAY_START); }
    // Where the next string with a pointer begins, or the body ends.
    const char *End() const
    {
        return m_lNext < m_pItem->lNumStrings ? m_pItem->ppszStrings[m_lNext]
                                              : m_pItem->pszKeyword + m_pItem->lSize - 1;
    }

    void Next()
    {
        const char *const pEnd = End();
        if (IsArray())
        {
            const char *p = m_pAt + 1;
            while (p < pEnd && !IsMark(p, KCBL_ARRAY_END))
                p += strlen(p) + 1;
            if (p + 1 < pEnd && p[1] == ';')
            {
                m_pAt = p + 1;
                return;
            }
        }
        if (m_lNext < m_lCount)
            Set(m_pItem->ppszStrings[m_lNext]);
        else
            m_pAt = nullptr;
    }

private:
    void Set(const char *pAt)
    {
        m_pAt = pAt;
        ++m_lNext;
    }

    const TKCBLKeyword *m_pItem;
    xlong m_lCount; ///< strings to go over
    const char *m_pAt = nullptr;
    xlong m_lNext = 0;
};

void PutArray(CLine &line, const CStrings &strings)
{
    line.Put("{ ", 2);
    const char *p = strings.Get() + 1;
    for (bool bFirst = true; p < strings.End() && !IsMark(p, KCBL_ARRAY_END); bFirst = false)
    {
        if (!bFirst)
            line.Put(", ", 2);
        p = line.PutString(p) + 1;
    }
    line.Put('}');
}

void PutStrings(CLine &line, const TKCBLKeyword *pItem, xlong lCount)
{
    CStrings strings(pItem, lCount);
    if (!strings.Exists())
        return;
    if (!strings.IsComment())
        line.Put(" = ", 3);
    line.StartStrings();
    for (;;)
    {
        if (strings.IsComment())
            line.Put(strings.Get());
        else if (strings.IsArray())
            PutArray(line, strings);
        else
            line.PutString(strings.Get());
        const bool bComment = strings.IsComment();
        strings.Next();
        if (!strings.Exists())
            return;
        if (bComment)
            line.Put("\n\t", 2);
        else if (strings.IsComment())
        {
            CStrings behind = strings;
            behind.Next();
            line.Put(behind.Exists() ? ", \t\t" : "\t\t");
        }
        else
            line.Put(", ", 2);
    }
}

// The text behind a rawdata head, and the line that ends it.
void PutRaw(CLine &line, const char *pszText, xlong lIndent)
{
    const size_t ulLen = strlen(pszText);
    line.Put('\n');
    line.Put(pszText, ulLen);
    // The end is only seen at the start of a line.
    if (ulLen && pszText[ulLen - 1] != '\n' && pszText[ulLen - 1] != '\r')
        line.Put('\n');
    line.PutBlanks(lIndent - s_lIndent);
    line.Put(']');
}

// @return false with a report
bool PutItem(CLine &line, const TKCBLKeyword *pItem, xlong lIndent)
{
    KCBLFetchAhead(pItem);
    xlong lCount = pItem->lNumStrings;
    const bool bRaw = *pItem->pszKeyword == '[' && lCount;
    if (bRaw)
    {
        --lCount;
        if (!lCount || strncmp(pItem->ppszStrings[lCount - 1], s_szRawTag, sizeof(s_szRawTag) - 1) != 0)
        {
            xErrorTxt("Malformed rawdata string");
            return false;
        }
    }
    line.PutBlanks(lIndent);
    line.Put(pItem->pszKeyword);
    PutStrings(line, pItem, lCount);
    if (bRaw)
        PutRaw(line, pItem->ppszStrings[lCount], lIndent);
    line.Put('\n');
    return true;
}

// Keeps the cursor of the current list and of those around it.
class CKeptCursor
{
public:
    explicit CKeptCursor(CKCBL &kcbl) : m_Kcbl(kcbl), m_pChunk(kcbl.m_pCurChunk)
    {
        for (TKCBLChunk *pChunk = m_pChunk; pChunk && pChunk->Push(); pChunk = pChunk->pParent)
            ++m_lKept;
    }
    CKeptCursor(const CKeptCursor &) = delete;

    void Restore()
    {
        m_Kcbl.m_pCurChunk = m_pChunk;
        for (TKCBLChunk *pChunk = m_pChunk; m_lKept; --m_lKept, pChunk = pChunk->pParent)
            pChunk->Pop();
    }

    ~CKeptCursor()
    {
        for (TKCBLChunk *pChunk = m_pChunk; m_lKept; --m_lKept, pChunk = pChunk->pParent)
            --pChunk->m_lStackDepth;
    }

private:
    CKCBL &m_Kcbl;
    TKCBLChunk *m_pChunk;
    xlong m_lKept = 0;
};
} // namespace

xlong CKCBL::GetLine(char *pBuffer, xlong lBufferLen, xlong *plIndent, xlong bSizeOnly, xlong bPeek)
{
    CLine line(bSizeOnly ? nullptr : pBuffer, lBufferLen, m_lMaxLineLength);
    const TKCBLKeyword *pItem = GetCurKeyword();
    if (!pItem)
    {
        if (!m_pCurChunk->pParent)
            return -1;
        *plIndent -= s_lIndent;
        line.PutBlanks(*plIndent);
        line.Put("}\n", 2);
        if (!bPeek)
        {
            ExitChunk();
            NextItem(0);
        }
        return line.Length();
    }
    if (!PutItem(line, pItem, *plIndent))
        return 0;
    if (pItem->pChunk)
        *plIndent += s_lIndent;
    if (!bPeek && !EnterChunk())
        NextItem(0);
    return line.Length();
}

xlong CKCBL::Export(char *pBuffer, xlong lBufferLen, xlong *plLen, xlong bSizeOnly)
{
    xlong lIgnored;
    if (!plLen)
        plLen = &lIgnored;
    *plLen = 0;
    if (!lBufferLen || !m_bInitialized)
    {
        if (!bSizeOnly)
            *pBuffer = 0;
        *plLen = 1;
        return 1;
    }
    CKeptCursor kept(*this);
    MainChunk();
    FirstItem();
    xlong lIndent = 0;
    int64_t llLen = 0;
    for (;;)
    {
        // The room left, so that a short buffer is never written past.
        char *pLine = bSizeOnly ? nullptr : pBuffer + llLen;
        const xlong lLine = GetLine(pLine, bSizeOnly ? -1 : (xlong)(lBufferLen - llLen), &lIndent, bSizeOnly, 0);
        if (lLine < 0)
            break;
        llLen += lLine;
        if (!lLine || llLen > 0x7fffffff)
        {
            *plLen = -1;
            return 0;
        }
    }
    // Its zero takes the place of the last line end; without an item there is neither.
    llLen = std::max<int64_t>(llLen, 1);
    if (!bSizeOnly)
        pBuffer[llLen - 1] = 0;
    *plLen = (xlong)llLen;
    kept.Restore();
    return 1;
}

xlong CKCBL::ExportSize(xlong *plLen)
{
    return Export(nullptr, -1, plLen, 1);
}

xlong CKCBL::Save(const char *pszPath)
{
    CWholeFile whole;
    CFile file;
    if (!whole.Begin(pszPath) || !file.Open(whole.GetPath(), FILE_WRITE))
        return 0;
    void *pBuffer = nullptr;
    xlong lSize = 0;
    if (!ReallocBuffer(&pBuffer, &lSize, s_lSaveBuffer, 0, 0))
    {
        file.Close();
        return 0;
    }
    CKeptCursor kept(*this);
    MainChunk();
    FirstItem();
    xlong lResult = 0;
    for (xlong lIndent = 0, lPeekIndent;;)
    {
        lPeekIndent = lIndent;
        const xlong lLine = GetLine(nullptr, -1, &lPeekIndent, 1, 1);
        if (lLine < 0)
        {
            lResult = 1;
            break;
        }
        if (!lLine || lLine > 0x7fffffff - s_lSaveStep ||
            !ReallocBuffer(&pBuffer, &lSize, lLine, 0, lLine + s_lSaveStep) ||
            !GetLine((char *)pBuffer, lSize, &lIndent, 0, 0) || !file.Write(pBuffer, (xulong)lLine))
            break;
    }
    XDELETE_ARRAY((char *)pBuffer);
    // What is still buffered may not fit on the disk.
    lResult = lResult && file.Flush();
    file.Close();
    lResult = lResult && whole.Commit();
    if (lResult)
        kept.Restore();
    return lResult;
}
