// The variable-argument calls of CKCBL: items made from tag lists and read by them.

#include "kcbl/kcblitem.h"
#include "tarvix/error.h"
#include "tarvix/globals.h"

#include <algorithm>
#include <stdarg.h>
#include <stdint.h>
#include <stdio.h>
#include <string.h>
#include <type_traits>

namespace
{
const xlong s_lBufferStep = 1024;
const xlong s_lMaxCount = 65535;
const size_t s_ulMaxKeptKeyword = 90;
const size_t s_ulNumberText = 512; // a double has 309 digits before its point and 10 behind

#ifdef _WIN32
static_assert(std::is_same_v<va_list, TKCBLArgs>);
va_list &List(TKCBLArgs &args)
{
    return args;
}
#else
va_list &List(TKCBLArgs &args)
{
    return args.args;
}
#endif

// Closes a list on the way out.
class CArgs
{
public:
    CArgs() = default;
    explicit CArgs(TKCBLArgs &other) { va_copy(List(m_Args), List(other)); }
    CArgs(const CArgs &) = delete;
    ~CArgs() { va_end(List(m_Args)); }

    template <class T>
    T Next()
    {
        return va_arg(List(m_Args), T);
    }

    TKCBLArgs m_Args;
};

const char *BoolText(int nValue)
{
    return nValue ? "TRUE" : "FALSE";
}

bool IsArrayTag(xulong ulTag)
{
    return ulTag >= KBOOLARRAY && ulTag <= KDOUBLEARRAY;
}

// The body of an item in the making.
class CBody
{
public:
    CBody() = default;
    CBody(const CBody &) = delete;
    ~CBody() { XDELETE_ARRAY(m_pText); }

    void Add(const char *pText, size_t ulLen)
    {
        const int64_t llNeeded = m_lLen + (int64_t)ulLen;
        if ((llNeeded > m_lSize || !m_pText) && !m_bFailed)
            m_bFailed = !KCBLGrow(m_pText, m_lSize, llNeeded, (size_t)m_lLen, m_lSize * 2LL + s_lBufferStep);
        if (m_bFailed)
            return;
        memcpy(m_pText + m_lLen, pText, ulLen);
        m_lLen += (xlong)ulLen;
    }

    void Add(const char *psz) { Add(psz, strlen(psz)); }

    void AddByte(int nByte)
    {
        const char c = (char)nByte;
        Add(&c, 1);
    }

    template <class T>
    void AddNumber(const char *pszFormat, T value)
    {
        char szText[s_ulNumberText];
        snprintf(szText, sizeof(szText), pszFormat, value);
        Add(szText);
    }

    // Behind an array no zero stands: its mark ends the string.
    void StartString()
    {
        if (!m_bArrayEnds)
            AddByte(0);
        m_bArrayEnds = false;
    }

    void EndArray()
    {
        AddByte(KCBL_ARRAY_END);
        m_bArrayEnds = true;
    }

    void End()
    {
        // The last array goes without its mark and the zero before that.
        if (m_bArrayEnds)
            m_lLen -= 2;
        AddByte(0);
        AddByte(KCBL_BODY_END);
    }

    char *m_pText = nullptr;
    xlong m_lLen = 0;
    xlong m_lSize = 0;
    bool m_bArrayEnds = false;
    bool m_bFailed = false;
};

// A float without zeros at its end, wherever its point is.
void AddFloat(CBody &body, const char *pszFormat, float fValue)
{
    if (fValue == 0)
    {
        body.Add("0");
        return;
    }
    char szText[s_ulNumberText];
    snprintf(szText, sizeof(szText), pszFormat, fValue);
    size_t ulLen = strlen(szText);
    while (ulLen && szText[ulLen - 1] == '0')
        --ulLen;
    if (ulLen && szText[ulLen - 1] == '.')
        --ulLen;
    body.Add(szText, ulLen);
}

template <class T, class TAdd>
void AddArray(CBody &body, CArgs &args, TAdd add)
{
    const xlong lCount = args.Next<xlong>();
    const T *pValues = args.Next<T *>();
    body.AddByte(KCBL_ARRAY_START);
    for (xlong l = 0; l < lCount; ++l)
    {
        add(pValues[l]);
        body.AddByte(0);
    }
    body.EndArray();
}

// Takes the arguments of one tag and adds its string.
void AddTag(CBody &body, xulong ulTag, CArgs &args, const CKCBL &kcbl)
{
    switch (ulTag)
    {
    case KBOOL:
        body.Add(BoolText(args.Next<xlong>() != 0));
        break;
    case KLONG:
        body.AddNumber("%ld", (long)args.Next<xlong>());
        break;
    case KULONG:
        body.AddNumber("%lu", (unsigned long)args.Next<xulong>());
        break;
    case KFLOAT:
    {
        const xulong ulBits = args.Next<xulong>();
        float fValue;
        memcpy(&fValue, &ulBits, sizeof(fValue));
        AddFloat(body, kcbl.m_szFloatFormat, fValue);
        break;
    }
    case KDOUBLE:
        body.AddNumber(kcbl.m_szDoubleFormat, args.Next<double>());
        break;
    case KSTRING:
        body.Add(args.Next<char *>());
        break;
    case KBOOLARRAY:
        AddArray<int>(body, args, [&](int n) { body.Add(BoolText(n)); });
        break;
    case KLONGARRAY:
        AddArray<xlong>(body, args, [&](xlong l) { body.AddNumber("%ld", (long)l); });
        break;
    case KULONGARRAY:
        AddArray<xulong>(body, args, [&](xulong ul) { body.AddNumber("%lu", (unsigned long)ul); });
        break;
    case KFLOATARRAY:
        AddArray<float>(body, args, [&](float f) { body.AddNumber(kcbl.m_szFloatFormat, f); });
        break;
    case KDOUBLEARRAY:
        AddArray<double>(body, args, [&](double d) { body.AddNumber(kcbl.m_szDoubleFormat, d); });
        break;
    }
}

bool IsStoredTag(xulong ulTag)
{
    return ulTag >= KBOOL && ulTag <= KDOUBLEARRAY;
}

xlong ReportUnknownTag(const char *pszKeyword)
{
    if (!glb)
        return 0;
    return glb->m_Error.SetErrorf("Unknown data type (Missing KEND?) in keyword \"%s\"",
                                  pszKeyword ? pszKeyword : "(null)");
}

// Counts the strings of a tag list. @return -1 with a report
xlong CountStrings(const char *pszKeyword, xulong ulTag, CArgs &args)
{
    xlong lCount = 0;
    for (; ulTag != KEND; ulTag = args.Next<xulong>(), ++lCount)
    {
        if (!IsStoredTag(ulTag))
        {
            ReportUnknownTag(pszKeyword);
            return -1;
        }
        if (ulTag == KDOUBLE)
            args.Next<double>();
        else if (ulTag == KSTRING)
        {
            if (args.Next<char *>())
                continue;
            if (glb)
                glb->m_Error.SetErrorf("Tried to add NULL string in keyword \"%s\"", pszKeyword);
            return -1;
        }
        else
        {
            args.Next<xlong>();
            if (IsArrayTag(ulTag))
                args.Next<void *>();
        }
    }
    return lCount;
}

xlong CopyString(const char *psz, char *pszTo, xlong lMaxLen)
{
    if (!psz || !pszTo || strlen(psz) > (size_t)std::max<xlong>(lMaxLen, 0))
        return 0;
    strcpy(pszTo, psz);
    return 1;
}

// Reads string lIndex as the tag says. @return 0 when it does not convert
xlong ReadTag(CKCBL &kcbl, xlong lIndex, xulong ulTag, CArgs &args)
{
    switch (ulTag)
    {
    case KBOOL:
        return kcbl.GetBool(lIndex, args.Next<int *>());
    case KLONG:
        return kcbl.GetLong(lIndex, args.Next<xlong *>());
    case KULONG:
        return kcbl.GetULong(lIndex, args.Next<xulong *>());
    case KFLOAT:
        return kcbl.GetFloat(lIndex, args.Next<float *>());
    case KDOUBLE:
        return kcbl.GetDouble(lIndex, args.Next<double *>());
    }
    const xlong lCount = args.Next<xlong>();
    if (lCount > s_lMaxCount)
        return 0;
    switch (ulTag)
    {
    case KSTRING:
        return CopyString(kcbl.GetString(lIndex), args.Next<char *>(), lCount);
    case KBOOLARRAY:
        return kcbl.GetBoolArray(lIndex, args.Next<int *>(), lCount);
    case KLONGARRAY:
        return kcbl.GetLongArray(lIndex, args.Next<xlong *>(), lCount);
    case KULONGARRAY:
        return kcbl.GetULongArray(lIndex, args.Next<xulong *>(), lCount);
    case KFLOATARRAY:
        return kcbl.GetFloatArray(lIndex, args.Next<float *>(), lCount);
    default:
        return kcbl.GetDoubleArray(lIndex, args.Next<double *>(), lCount);
    }
}

// @return null when memory is exhausted
TKCBLKeyword *MakeItem(const char *pszKeyword, xlong lNumStrings, xulong ulTag, CArgs &args, const CKCBL &kcbl)
{
    xlong *plStarts = XNEW(xlong[(size_t)lNumStrings + 1]);
    if (!plStarts)
        return nullptr;
    CBody body;
    body.Add(pszKeyword);
    for (xlong l = 0; l < lNumStrings; ++l)
    {
        body.StartString();
        plStarts[l] = body.m_lLen;
        AddTag(body, ulTag, args, kcbl);
        ulTag = args.Next<xulong>();
    }
    body.End();
    TKCBLKeyword *pItem = body.m_bFailed ? nullptr : KCBLNewItem(body.m_lLen, lNumStrings);
    if (pItem)
    {
        memcpy(pItem->pszKeyword, body.m_pText, (size_t)body.m_lLen);
        for (xlong l = 0; l < lNumStrings; ++l)
            pItem->ppszStrings[l] = pItem->pszKeyword + plStarts[l];
    }
    XDELETE_ARRAY(plStarts);
    return pItem;
}
} // namespace

xlong CKCBL::GetItem(const char *pszKeyword, ...)
{
    if (pszKeyword && !FindItem(pszKeyword, nullptr, nullptr, nullptr))
        return 0;
    CArgs args;
    va_start(List(args.m_Args), pszKeyword);
    const xlong lNumStrings = GetNumStrings();
    for (xlong l = 0;; ++l)
    {
        const xulong ulTag = args.Next<xulong>();
        if (ulTag == KEND)
            return 1;
        if (!IsStoredTag(ulTag))
            return ReportUnknownTag(pszKeyword);
        if (l >= lNumStrings || !ReadTag(*this, l, ulTag, args))
            return 0;
    }
}

xlong CKCBL::NewItem(const char *pszKeyword, ...)
{
    CArgs args;
    va_start(List(args.m_Args), pszKeyword);
    return CreateNewItem(pszKeyword, args.m_Args, KARGS);
}

xlong CKCBL::NewChunk(xulong ulFirstTag, ...)
{
    CArgs args;
    va_start(List(args.m_Args), ulFirstTag);
    return CreateNewItem("{", args.m_Args, ulFirstTag);
}

xlong CKCBL::ReplaceItem(const char *pszKeyword, ...)
{
    char szKept[s_ulMaxKeptKeyword + 1];
    const char *pszNew = pszKeyword;
    if (pszKeyword)
    {
        if (!FindItem(pszKeyword, nullptr, nullptr, nullptr))
            return 0;
    }
    else
    {
        const char *pszOld = GetKeyword();
        if (!pszOld || strlen(pszOld) > s_ulMaxKeptKeyword)
            return 0;
        pszNew = strcpy(szKept, pszOld);
    }
    // The arguments may be strings of the old item, which therefore lives on until they are read.
    TKCBLKeyword *pOld = KCBLDetach(m_pCurChunk);
    if (!pOld)
        return 0;
    CArgs args;
    va_start(List(args.m_Args), pszKeyword);
    const xlong lResult = CreateNewItem(pszNew, args.m_Args, KARGS);
    KCBLDeleteTree(pOld);
    return lResult;
}

xlong CKCBL::CreateNewItem(const char *pszKeyword, TKCBLArgs &pArgs, xulong ulFirstTag)
{
    if (!m_bInitialized && !Init())
        return 0;
    CArgs args(pArgs);
    const xulong ulTag = ulFirstTag == KARGS ? args.Next<xulong>() : ulFirstTag;
    CArgs count(args.m_Args);
    const xlong lNumStrings = CountStrings(pszKeyword, ulTag, count);
    if (lNumStrings < 0)
        return 0;
    TKCBLKeyword *pItem = MakeItem(pszKeyword, lNumStrings, ulTag, args, *this);
    if (!pItem)
        return xError(XERR_MEMORY);
    TKCBLChunk *pList = m_pCurChunk;
    if (!KCBLAttachChunk(pItem, pList))
    {
        KCBLDeleteItem(pItem);
        return xError(XERR_MEMORY);
    }
    if (!pList->Exists())
        pList->Last();
    pList->InsertAfter(KCBLNodeOf(pItem), 1);
    // The cursor of a new chunk stands on its hidden first item.
    if (pItem->pChunk)
        m_pCurChunk = pItem->pChunk;
    return 1;
}
