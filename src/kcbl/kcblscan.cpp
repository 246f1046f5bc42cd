#include "kcbl/kcblscan.h"

#include "core/chars.h"
#include "kcbl/kcblitem.h"

#include <stddef.h>
#include <stdint.h>
#include <string.h>

namespace
{
const char s_szBinary[] = "Binary/corrupt data detected while trying to add it to a kbcl list";
const char s_szQuotes[] = "Missing terminating \" in string";
const char s_szArray[] = "Trying to end array without starting one";
const char s_szRawHead[] = "Malformed rawdata string";
const char s_szRawBinary[] = "Binary data detected in a rawdata ascii chunk";

enum
{
    CHAR_PLAIN,
    CHAR_SPACE,
    CHAR_LINE_END,
    CHAR_ZERO,
    CHAR_BINARY,
    CHAR_SEPARATOR,
    CHAR_OPEN,
    CHAR_CLOSE,
    CHAR_COMMENT,
    CHAR_QUOTE
};

struct TClasses
{
    constexpr TClasses() : aucClass()
    {
        for (int n = 0; n < 256; ++n)
            aucClass[n] = n < 0x20 || n >= 0x7f ? CHAR_BINARY : CHAR_PLAIN;
        aucClass[0] = CHAR_ZERO;
        aucClass[' '] = aucClass['\t'] = CHAR_SPACE;
        aucClass['\r'] = aucClass['\n'] = CHAR_LINE_END;
        aucClass[','] = aucClass['='] = CHAR_SEPARATOR;
        aucClass['{'] = CHAR_OPEN;
        aucClass['}'] = CHAR_CLOSE;
        aucClass[';'] = CHAR_COMMENT;
        aucClass['"'] = CHAR_QUOTE;
    }

    unsigned char aucClass[256];
};

constexpr TClasses s_Classes;

inline int ClassOf(char c)
{
    return s_Classes.aucClass[(unsigned char)c];
}

inline bool IsLineEnd(char c)
{
    return c == '\r' || c == '\n';
}

// What may be written between two looks at the room left.
const ptrdiff_t s_nReserve = 128;
const ptrdiff_t s_nVector = 16;
const ptrdiff_t s_nWindow = 64;

// Bits of the characters in sixteen that are not plain.
inline unsigned SpecialBits(const char *p)
{
    const __m128i x = _mm_loadu_si128((const __m128i *)p);
    // Bytes from 0x80 are negative, and so below a blank.
    __m128i xBits = _mm_or_si128(_mm_cmpgt_epi8(_mm_set1_epi8(0x21), x), _mm_cmpeq_epi8(x, _mm_set1_epi8(0x7f)));
    for (char c : { ',', '=', '"', ';', '{', '}' })
        xBits = _mm_or_si128(xBits, _mm_cmpeq_epi8(x, _mm_set1_epi8(c)));
    return (unsigned)_mm_movemask_epi8(xBits);
}

// The same for a window. Nothing behind the text's zero is looked at, and the
// zero is special itself.
inline uint64_t WindowBits(const char *p, const char *pEnd)
{
    uint64_t ullBits = 0;
    if (pEnd - p >= s_nWindow)
    {
        for (int n = 0; n < s_nWindow; n += s_nVector)
            ullBits |= (uint64_t)SpecialBits(p + n) << n;
        return ullBits;
    }
    for (int n = 0; n < s_nWindow; ++n)
    {
        ullBits |= (uint64_t)(ClassOf(p[n]) != CHAR_PLAIN) << n;
        if (!p[n])
            break;
    }
    return ullBits;
}

// Bits of the characters that end a copy, in sixteen.
struct TQuoted
{
    static bool Stops(char c) { return c == '"' || c == '\\' || IsLineEnd(c) || !c; }

    static unsigned Stops(__m128i x)
    {
        __m128i xStop = _mm_cmpeq_epi8(x, _mm_setzero_si128());
        for (char c : { '"', '\\', '\r', '\n' })
            xStop = _mm_or_si128(xStop, _mm_cmpeq_epi8(x, _mm_set1_epi8(c)));
        return (unsigned)_mm_movemask_epi8(xStop);
    }
};

struct TComment
{
    static bool Stops(char c) { return IsLineEnd(c) || !c; }

    static unsigned Stops(__m128i x)
    {
        __m128i xStop = _mm_cmpeq_epi8(x, _mm_setzero_si128());
        for (char c : { '\r', '\n' })
            xStop = _mm_or_si128(xStop, _mm_cmpeq_epi8(x, _mm_set1_epi8(c)));
        return (unsigned)_mm_movemask_epi8(xStop);
    }
};
} // namespace

struct CKCBLScan::TState
{
    const char *p;
    const char *pEnd; ///< many characters are looked at once where there are so many before it
    char *pOut;
    char *pLimit; ///< the reserve begins here
    xlong lDepth; ///< of arrays
    char cLast;   ///< last significant character; 0 for a plain one

    // Copies up to a character that stops, or for as long as the reserve lets.
    template <class TKind>
    void Copy()
    {
        for (ptrdiff_t n = 0; n < s_nWindow; n += s_nVector)
        {
            if (pEnd - p < s_nVector)
            {
                for (; n < s_nWindow && !TKind::Stops(*p); ++n)
                    *pOut++ = *p++;
                return;
            }
            const __m128i x = _mm_loadu_si128((const __m128i *)p);
            const unsigned uStops = TKind::Stops(x);
            _mm_storeu_si128((__m128i *)pOut, x);
            if (uStops)
            {
                const unsigned u = (unsigned)__builtin_ctz(uStops);
                p += u;
                pOut += u;
                return;
            }
            p += s_nVector;
            pOut += s_nVector;
        }
    }
};

CKCBLScan::~CKCBLScan()
{
    XDELETE_ARRAY(m_pBody);
    XDELETE_ARRAY(m_pStarts);
}

bool CKCBLScan::Fail(const char *pAt, const char *pszText)
{
    m_pFault = pAt;
    m_pszFault = pszText;
    return false;
}

__attribute__((noinline)) bool CKCBLScan::Grow(TState &state)
{
    const size_t ulKeep = (size_t)(state.pOut - m_pBody);
    if (!KCBLGrow(m_pBody, m_lBodySize, m_lBodySize * 2LL + 1024, ulKeep, 0))
        return Fail(state.p, nullptr);
    state.pOut = m_pBody + ulKeep;
    state.pLimit = m_pBody + m_lBodySize - s_nReserve;
    return true;
}

inline bool CKCBLScan::StartString(TState &state)
{
    const int64_t llNeeded = (m_lNumStrings + 1LL) * (int64_t)sizeof(xlong);
    if (llNeeded > m_lStartsSize)
    {
        const size_t ulKeep = (size_t)m_lNumStrings * sizeof(xlong);
        if (!KCBLGrow(m_pStarts, m_lStartsSize, llNeeded * 2, ulKeep, 256))
            return Fail(state.p, nullptr);
    }
    ((xlong *)m_pStarts)[m_lNumStrings++] = (xlong)(state.pOut - m_pBody);
    return true;
}

// Something stands behind the "}" of an array: that was copied for the moment.
inline void CKCBLScan::CloseArray(TState &state)
{
    --state.pOut;
    if (--state.lDepth)
        return;
    *state.pOut++ = 0;
    *state.pOut++ = (char)KCBL_ARRAY_END;
}

inline bool CKCBLScan::Separate(TState &state, char c)
{
    bool bClosed = false;
    if (state.cLast == '}')
    {
        if (state.lDepth < 1)
            return Fail(state.p, s_szArray);
        CloseArray(state);
        bClosed = !state.lDepth;
        if (bClosed && !StartString(state))
            return false;
    }
    state.cLast = c;
    ++state.p;
    if (c == '}')
    {
        *state.pOut++ = c;
        return true;
    }
    if (bClosed)
        return true;
    *state.pOut++ = 0;
    return state.lDepth || StartString(state);
}

// From the ";" to the end of the line.
bool CKCBLScan::Comment(TState &state)
{
    if (state.cLast == ',')
    {
        while (!TComment::Stops(*state.p))
            ++state.p;
        return true;
    }
    if (m_lNumStrings)
    {
        bool bString = true;
        if (state.cLast == '}' && state.lDepth > 0)
        {
            CloseArray(state);
            bString = state.lDepth > 0;
        }
        if (bString)
        {
            *state.pOut++ = 0;
            if (!StartString(state))
                return false;
        }
    }
    state.cLast = ';';
    do
    {
        if (state.pOut > state.pLimit && !Grow(state))
            return false;
        state.Copy<TComment>();
    } while (!TComment::Stops(*state.p));
    return true;
}

bool CKCBLScan::Quotes(TState &state)
{
    const char *const pOpen = state.p++;
    state.cLast = '"';
    for (;;)
    {
        if (state.pOut > state.pLimit && !Grow(state))
            return false;
        state.Copy<TQuoted>();
        const char c = *state.p;
        if (c == '"')
            break;
        if (c == '\\')
        {
            const char cEscaped = state.p[1];
            if (!cEscaped || IsLineEnd(cEscaped))
            {
                *state.pOut++ = c;
                ++state.p;
                continue;
            }
            *state.pOut++ = cEscaped == 'n' ? '\n' : cEscaped == 't' ? '\t' : cEscaped;
            state.p += 2;
        }
        else if (!c)
            return true;
        else if (IsLineEnd(c))
            return Fail(pOpen, s_szQuotes);
    }
    ++state.p;
    return true;
}

// From a line end to the next character that is no white space.
const char *CKCBLScan::SkipSpace(const char *pFrom)
{
    if (pFrom >= m_pSpaceFrom && pFrom < m_pSpaceTo)
        return m_pSpaceTo;
    const char *p = pFrom;
    if (*p == '\r')
        ++p;
    if (*p == '\n')
        ++p;
    m_pIndent = p;
    while (IsBlank(*p))
        ++p;
    if (IsLineEnd(*p))
        m_pIndent = nullptr;
    while (IsBlank(*p) || IsLineEnd(*p))
        ++p;
    m_pSpaceFrom = pFrom;
    m_pSpaceTo = p;
    return p;
}

// The lines behind a rawdata head are one more string, up to a line with "]".
bool CKCBLScan::Raw(TState &state, size_t ulIndent)
{
    const char *pField = m_pBody + ((const xlong *)m_pStarts)[m_lNumStrings - 1];
    const size_t ulTag = strlen("ASCIIDATA");
    if ((size_t)(state.pOut - pField) < ulTag || memcmp(pField, "ASCIIDATA", ulTag) != 0)
        return Fail(m_pKeyword, s_szRawHead);
    *state.pOut++ = 0;
    if (!StartString(state))
        return false;
    state.p = m_pUsed;
    if (state.p[0] == '\r' && state.p[1] == '\n')
        ++state.p;
    if (IsLineEnd(*state.p))
        ++state.p;
    for (bool bLineStart = true;;)
    {
        if (bLineStart)
        {
            const char *p = state.p;
            for (size_t ul = ulIndent; ul && IsBlank(*p); --ul)
                ++p;
            if (*p == ']')
                break;
        }
        const char c = *state.p;
        const int nClass = ClassOf(c);
        if (nClass == CHAR_ZERO)
            break;
        if (nClass == CHAR_BINARY)
            return Fail(state.p, s_szRawBinary);
        if (state.pOut > state.pLimit && !Grow(state))
            return false;
        *state.pOut++ = c;
        ++state.p;
        bLineStart = nClass == CHAR_LINE_END;
    }
    m_pUsed = state.p;
    return true;
}

// The usual way through a line: plain fields and their separators, blanks, and
// quotes without escapes. All of it is in local variables, since members would
// go through memory for each field. Stops where something else comes up, and
// where room runs out.
inline void CKCBLScan::Fields(TState &state)
{
    const char *p = state.p;
    char *pOut = state.pOut;
    char cLast = state.cLast;
    const char *pWindow = m_pWindow;
    uint64_t ullWindow = m_ullSpecial;
    xlong lNumStrings = m_lNumStrings;
    xlong *const plStarts = (xlong *)m_pStarts;
    const xlong lMaxStrings = m_lStartsSize / (xlong)sizeof(xlong);
    const char *const pEnd = state.pEnd;
    char *const pBody = m_pBody, *const pLimit = state.pLimit;
    while (pOut <= pLimit)
    {
        size_t ulAt = (size_t)(p - pWindow);
        if (ulAt >= (size_t)s_nWindow)
        {
            pWindow = p;
            ullWindow = WindowBits(p, pEnd);
            ulAt = 0;
        }
        const uint64_t ullSpecial = ullWindow >> ulAt;
        const size_t ulLen = ullSpecial ? (size_t)__builtin_ctzll(ullSpecial) : (size_t)s_nWindow - ulAt;
        if (ulLen)
        {
            if (ulLen <= (size_t)s_nVector && pEnd - p >= s_nVector)
                _mm_storeu_si128((__m128i *)pOut, _mm_loadu_si128((const __m128i *)p));
            else
                memcpy(pOut, p, ulLen);
            p += ulLen;
            pOut += ulLen;
            cLast = 0;
        }
        if (!ullSpecial)
            continue;
        const char c = *p;
        if (c == ',' || c == '=')
        {
            if (state.lDepth || cLast == '}' || lNumStrings >= lMaxStrings)
                break;
            *pOut++ = 0;
            plStarts[lNumStrings++] = (xlong)(pOut - pBody);
            cLast = c;
            ++p;
            p += *p == ' ';
        }
        else if (c == ' ')
            ++p;
        else if (c == '"')
        {
            const char *pQuoted = p + 1;
            char *pTo = pOut;
            unsigned uStops = 0;
            for (int n = 0; n < 4 && !uStops && pEnd - pQuoted >= s_nVector; ++n)
            {
                const __m128i x = _mm_loadu_si128((const __m128i *)pQuoted);
                uStops = TQuoted::Stops(x);
                _mm_storeu_si128((__m128i *)pTo, x);
                const int nLen = uStops ? __builtin_ctz(uStops) : (int)s_nVector;
                pQuoted += nLen;
                pTo += nLen;
            }
            if (!uStops || *pQuoted != '"')
                break;
            p = pQuoted + 1;
            pOut = pTo;
            cLast = c;
        }
        else
            break;
    }
    state.p = p;
    state.pOut = pOut;
    state.cLast = cLast;
    m_pWindow = pWindow;
    m_ullSpecial = ullWindow;
    m_lNumStrings = lNumStrings;
}

bool CKCBLScan::Scan(const char *pszText)
{
    m_lNumStrings = 0;
    m_pszFault = nullptr;
    m_pKeyword = pszText == m_pIndent ? m_pSpaceTo : pszText;
    while (IsBlank(*m_pKeyword))
        ++m_pKeyword;
    TState state = { m_pKeyword, m_pEnd ? m_pEnd : m_pKeyword, m_pBody, nullptr, 0, 0 };
    if (m_pBody)
        state.pLimit = m_pBody + m_lBodySize - s_nReserve;
    else if (!Grow(state))
        return false;

    for (bool bEnd = false; !bEnd;)
    {
        if (state.pOut > state.pLimit && !Grow(state))
            return false;
        Fields(state);
        const char c = *state.p;
        switch (ClassOf(c))
        {
        case CHAR_PLAIN: // there was no room left
            break;
        case CHAR_SPACE:
            do
                ++state.p;
            while (IsBlank(*state.p));
            break;
        case CHAR_SEPARATOR:
        case CHAR_CLOSE:
            if (!Separate(state, c))
                return false;
            break;
        case CHAR_OPEN:
            if (!m_lNumStrings)
                *state.pOut++ = c;
            else if (++state.lDepth == 1)
                *state.pOut++ = (char)KCBL_ARRAY_START;
            state.cLast = c;
            ++state.p;
            break;
        case CHAR_QUOTE:
            if (!Quotes(state))
                return false;
            break;
        case CHAR_COMMENT:
            if (!Comment(state))
                return false;
            break;
        case CHAR_BINARY:
            return Fail(state.p, s_szBinary);
        case CHAR_ZERO:
            m_pUsed = state.p;
            bEnd = true;
            break;
        case CHAR_LINE_END:
        {
            m_pUsed = state.p;
            const char *pNext = SkipSpace(state.p);
            // A comment hides what the next line begins with.
            if (ClassOf(*pNext) == CHAR_BINARY && state.cLast != ';')
                return Fail(pNext, s_szBinary);
            bEnd = !*pNext || (*pNext != '"' && state.cLast != ',');
            state.p = pNext;
            break;
        }
        }
    }
    if (state.lDepth > 0 && state.cLast == '}')
        --state.pOut;
    if (*m_pBody == '[' && m_lNumStrings && !Raw(state, (size_t)(m_pKeyword - pszText)))
        return false;
    *state.pOut++ = 0;
    *state.pOut++ = (char)KCBL_BODY_END;
    m_lBody = (xlong)(state.pOut - m_pBody);
    return true;
}

void CKCBLScan::Fill(TKCBLKeyword *pItem, char *pDest) const
{
    memcpy(pDest, m_pBody, (size_t)m_lBody);
    const xlong *plStarts = (const xlong *)m_pStarts;
    for (xlong l = 0; l < m_lNumStrings; ++l)
        pItem->ppszStrings[l] = pDest + plStarts[l];
}
