#include "tarvix/wholefile.h"

#include "core/openfile.h"
#include "tarvix/error.h"
#include "tarvix/globals.h"
#include "tarvix/systemdirs.h"

#include <stdio.h>
#include <string.h>

namespace
{
const int s_nMostNames = 100;

xlong Refuse(const char *pszWhat, const char *pszPath)
{
    return glb->m_Error.SetErrorf(pszWhat, pszPath);
}
} // namespace

CWholeFile::CWholeFile() : m_pszTarget(nullptr), m_pszPart(nullptr) {}

CWholeFile::~CWholeFile()
{
    Abandon();
}

xlong CWholeFile::Begin(const char *pszPath)
{
    Abandon();
    m_pszTarget = XNEW(char[WHOLE_PATH_SIZE]);
    m_pszPart = XNEW(char[WHOLE_PATH_SIZE]);
    if (!m_pszTarget || !m_pszPart)
    {
        Abandon();
        return xError(XERR_MEMORY);
    }
    bool bDirect = false;
    bool bMade = FindWholeTarget(pszPath, m_pszTarget, &bDirect);
    if (bMade && bDirect)
    {
        XDELETE_ARRAY(m_pszPart);
        m_pszPart = nullptr;
        return 1;
    }
    // A name that is taken is another's: what it holds must not be lost.
    const size_t ulLength = bMade ? strlen(m_pszTarget) : 0;
    bMade = bMade && ulLength + 16 < WHOLE_PATH_SIZE;
    for (int nName = 0; bMade; ++nName)
    {
        snprintf(m_pszPart, WHOLE_PATH_SIZE, nName ? "%s.part%d" : "%s.part", m_pszTarget, nName);
        const int nMade = MakeWholePart(m_pszPart, m_pszTarget);
        if (nMade > 0)
            return 1;
        bMade = !nMade && nName < s_nMostNames;
    }
    XDELETE_ARRAY(m_pszPart);
    m_pszPart = nullptr;
    Abandon();
    return Refuse("Unable to open file \"%s\" with write access", pszPath ? pszPath : "");
}

xlong CWholeFile::BeginWithDirs(const char *pszPath)
{
    return Begin(pszPath) || (xCreateDirsForFile(pszPath) && Begin(pszPath));
}

const char *CWholeFile::GetPath() const
{
    return m_pszPart ? m_pszPart : m_pszTarget;
}

xlong CWholeFile::Commit()
{
    if (!m_pszTarget)
        return 0;
    xlong lResult = 1;
    if (m_pszPart)
    {
        if (ReplaceWhole(m_pszPart, m_pszTarget))
        {
            XDELETE_ARRAY(m_pszPart);
            m_pszPart = nullptr;
        }
        else
            lResult = Refuse("Unable to replace \"%s\"", m_pszTarget);
    }
    Abandon();
    return lResult;
}

void CWholeFile::Abandon()
{
    if (m_pszPart)
        RemoveWholePart(m_pszPart);
    XDELETE_ARRAY(m_pszPart);
    XDELETE_ARRAY(m_pszTarget);
    m_pszPart = m_pszTarget = nullptr;
}
