// How resource data keeps and finds its records.
#pragma once

#include "gui/resources/resanim.h"
#include "gui/resources/resfields.h"
#include "tarvix/error.h"
#include "tarvix/globals.h"
#include "tarvix/resdata.h"
#include "tarvix/strings.h"

#include <stdio.h>
#include <string.h>

/// The first record for which the test holds, or null. The list's cursor stays.
template <class TRecord, class TTest>
TRecord *FindRecord(const CLList &list, TTest test)
{
    for (const CNode *pNode = list.m_pFirst; pNode; pNode = pNode->pNext)
        if (test((const TRecord *)pNode->pData))
            return (TRecord *)pNode->pData;
    return nullptr;
}

/// Without regard to case; null for no name.
template <class TRecord>
TRecord *FindName(const CLList &list, const char *pszName)
{
    if (!pszName)
        return nullptr;
    return FindRecord<TRecord>(list, [=](const TRecord *p) { return !xStricmp(p->szName, pszName); });
}

/// Whether an object is a member of one of the records.
template <class TRecord, class TPart>
bool OwnsPart(const CLList &list, const TPart *pPart, TPart TRecord::*pMember)
{
    return pPart && FindRecord<TRecord>(list, [=](const TRecord *p) { return &(p->*pMember) == pPart; });
}

inline const char *TextOf(const char *psz)
{
    return psz ? psz : "";
}

/// For reports: the system's buffer takes the text.
template <class... TArguments>
xlong Refuse(const char *pszFormat, TArguments... arguments)
{
    return glb->m_Error.SetErrorf(pszFormat, arguments...);
}

/// Copies a name that is known to fit.
template <size_t SIZE>
void TakeName(char (&szName)[SIZE], const char *pszName)
{
    snprintf(szName, SIZE, "%s", pszName);
}

/// Walks the items of the current chunk, without comments, until one fails.
/// @param pszTooBig  refuses names of RES_NAME_SIZE and more; null lets them pass
/// @param use        gets the name; returns 1, or 0 with a report
template <class TUse>
xlong EachItem(CResData &res, const char *pszTooBig, TUse use)
{
    for (; res.ItemExists(); res.NextItem(0))
    {
        if (res.IsComment())
            continue;
        const char *const pszName = res.GetKeyword();
        if (pszTooBig && strlen(pszName) >= RES_NAME_SIZE)
            return Refuse(pszTooBig, pszName);
        if (!use(pszName))
            return 0;
    }
    return 1;
}

/// EachItem for a section whose items are all alike.
/// @param pSection  null, when it is not there, gives 1
/// @param pszBad    refuses items whose strings can't be read
/// @param use       gets name and strings
template <class TUse>
xlong EachEntry(CResData &res, const TResSection *pSection, const char *pszTooBig, const char *pszBad, TUse use)
{
    if (!pSection)
        return 1;
    return EachItem(res, pszTooBig,
                    [&](const char *pszName)
                    {
                        CResFields fields;
                        return fields.Read(res, pSection->Items.pRows->Fields) ? use(pszName, fields)
                                                                               : Refuse(pszBad, pszName);
                    });
}

/// A record that is deleted at the end unless a list has taken it.
template <class TRecord>
class CNewRecord
{
public:
    explicit CNewRecord(TRecord *p) : m_p(p) {}
    CNewRecord(const CNewRecord &) = delete;
    CNewRecord &operator=(const CNewRecord &) = delete;
    ~CNewRecord() { XDELETE(m_p); }

    TRecord *operator->() const { return m_p; }
    TRecord *Get() const { return m_p; }
    explicit operator bool() const { return m_p != nullptr; }

    /// @return 1; 0 with XERR_MEMORY
    xlong GiveTo(CLList &list)
    {
        if (!list.InsertLast(m_p))
            return xError(XERR_MEMORY);
        m_p = nullptr;
        return 1;
    }

private:
    TRecord *m_p;
};
