#include "input/replaytext.h"

#include "core/chars.h"
#include "tarvix/keyboard.h"
#include "tarvix/mouse.h"

#include <string.h>

namespace
{
const TReplayRange s_Any = { -0x7fffffff, 0x7fffffff };

int HexDigit(char c)
{
    return c >= '0' && c <= '9'   ? c - '0'
           : c >= 'a' && c <= 'f' ? c - 'a' + 10
           : c >= 'A' && c <= 'F' ? c - 'A' + 10
                                  : -1;
}
} // namespace

const TReplayWord s_ReplayWords[REPLAY_KINDS] = {
    { "mouse", 5, { s_Any, s_Any, s_Any, s_Any, { 0, XBTN_DOWN_MASK } } },
    { "point", 2, { s_Any, s_Any } },
    { "key", 2, { { 1, 0xffff }, { 0, 0xffff } } },
    { "state", 2, { { 1, CKeyboardBase::CODES - 1 }, { 0, CKeyboardBase::IS_DOWN | CKeyboardBase::WAS_PRESSED } } },
    { "paste", 0, {} },
    { "active", 1, { { 0, 1 } } },
    { "close", 0, {} },
    { "end", 0, {} },
};

void CReplayLine::SkipBlanks()
{
    while (IsBlank(*m_psz))
        ++m_psz;
}

bool CReplayLine::IsEmpty()
{
    SkipBlanks();
    return !*m_psz || *m_psz == '#';
}

bool CReplayLine::TakeWord(const char *pszWord)
{
    SkipBlanks();
    const size_t ulLength = strlen(pszWord);
    if (strncmp(m_psz, pszWord, ulLength) != 0 || (m_psz[ulLength] && !IsBlank(m_psz[ulLength])))
        return false;
    m_psz += ulLength;
    return true;
}

bool CReplayLine::TakeNumber(const TReplayRange &range, xlong *plValue)
{
    SkipBlanks();
    const char *psz = m_psz;
    const bool bNegative = *psz == '-';
    psz += bNegative;
    if (!IsDigit(*psz))
        return false;
    long long llValue = 0;
    for (; IsDigit(*psz); ++psz)
    {
        llValue = llValue * 10 + (*psz - '0');
        if (llValue > 0x7fffffff)
            return false;
    }
    if (bNegative)
        llValue = -llValue;
    if ((*psz && !IsBlank(*psz)) || llValue < range.lLeast || llValue > range.lMost)
        return false;
    m_psz += psz - m_psz;
    *plValue = (xlong)llValue;
    return true;
}

const char *CReplayLine::TakeText()
{
    SkipBlanks();
    if (*m_psz != '"')
        return nullptr;
    const char *const pszText = m_psz + 1;
    char *pszTo = m_psz + 1;
    const char *psz = m_psz + 1;
    for (; *psz != '"'; ++psz)
    {
        char c = *psz;
        if ((unsigned char)c < ' ')
            return nullptr;
        if (c == '\\')
        {
            c = *++psz;
            if (c == 'n')
                c = '\n';
            else if (c == 'r')
                c = '\r';
            else if (c == 't')
                c = '\t';
            else if (c == 'x')
            {
                const int nHigh = HexDigit(psz[1]), nLow = nHigh < 0 ? -1 : HexDigit(psz[2]);
                if (nLow < 0 || !(nHigh | nLow))
                    return nullptr;
                c = (char)(nHigh << 4 | nLow);
                psz += 2;
            }
            else if (c != '\\' && c != '"')
                return nullptr;
        }
        *pszTo++ = c;
    }
    m_psz += psz + 1 - m_psz;
    *pszTo = 0;
    return pszText;
}

xulong QuoteReplayChar(unsigned char ucChar, char *pszQuoted)
{
    static const char s_szFrom[] = "\n\r\t\\\"", s_szTo[] = "nrt\\\"";
    if (const void *p = memchr(s_szFrom, ucChar, sizeof(s_szFrom) - 1))
    {
        pszQuoted[0] = '\\';
        pszQuoted[1] = s_szTo[(const char *)p - s_szFrom];
        return 2;
    }
    if (ucChar >= ' ' && ucChar < 127)
    {
        pszQuoted[0] = (char)ucChar;
        return 1;
    }
    static const char s_szDigits[] = "0123456789abcdef";
    pszQuoted[0] = '\\';
    pszQuoted[1] = 'x';
    pszQuoted[2] = s_szDigits[ucChar >> 4];
    pszQuoted[3] = s_szDigits[ucChar & 15];
    return 4;
}
