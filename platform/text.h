// A text that grows, for the shell calls. Allocation failures are remembered
// and end in Text() being null.
#pragma once

#include <stdlib.h>
#include <string.h>

class CText
{
public:
    CText() = default;
    CText(const CText &) = delete;
    CText &operator=(const CText &) = delete;
    ~CText() { free(m_psz); }

    CText &Add(const char *psz, size_t ulLength)
    {
        if (m_bFailed)
            return *this;
        char *pszNew = (char *)realloc(m_psz, m_ulLength + ulLength + 1);
        if (!pszNew)
        {
            m_bFailed = true;
            return *this;
        }
        m_psz = pszNew;
        memcpy(m_psz + m_ulLength, psz, ulLength);
        m_ulLength += ulLength;
        m_psz[m_ulLength] = 0;
        return *this;
    }

    CText &Add(const char *psz) { return Add(psz, strlen(psz)); }
    CText &Add(char c) { return Add(&c, 1); }

    bool Set(const char *psz)
    {
        Clear();
        Add(psz);
        return !m_bFailed;
    }

    void Clear()
    {
        free(m_psz);
        m_psz = nullptr;
        m_ulLength = 0;
        m_bFailed = false;
    }

    bool Failed() const { return m_bFailed; }
    size_t Length() const { return m_ulLength; }
    /// "" when nothing was added, null when memory ran out.
    const char *Text() const { return m_bFailed ? nullptr : m_psz ? m_psz : ""; }

private:
    char *m_psz = nullptr;
    size_t m_ulLength = 0;
    bool m_bFailed = false;
};
