#include "scripttext.h"

#include "tool.h"

#include <string.h>

#include <algorithm>

namespace
{
// Where the keyword and the strings begin.
std::vector<size_t> FieldPlaces(const std::string &strText, size_t ulStart, size_t ulEnd)
{
    std::vector<size_t> places;
    bool bWanted = true;
    int nDepth = 0;
    for (size_t ul = ulStart; ul < ulEnd; ++ul)
    {
        const char c = strText[ul];
        if (c == ' ' || c == '\t' || c == '\r' || c == '\n')
            continue;
        if (c == ';' && bWanted && !places.empty())
        {
            // Behind a comma: dropped.
            ul = std::min(strText.find_first_of("\r\n", ul), ulEnd);
            continue;
        }
        if (bWanted || c == ';')
            places.push_back(ul);
        bWanted = false;
        if (c == ';')
            ul = std::min(strText.find_first_of("\r\n", ul), ulEnd);
        else if (c == '"')
        {
            for (++ul; ul < ulEnd && strText[ul] != '"'; ++ul)
                ul += strText[ul] == '\\';
        }
        else if (c == '{' && places.size() > 1)
            ++nDepth;
        else if (c == '}' && nDepth)
            --nDepth;
        else if ((c == ',' || c == '=') && !nDepth)
            bWanted = true;
    }
    if (places.empty())
        places.push_back(ulStart);
    return places;
}

TItem MakeItem(const TKCBLKeyword *pItem, const std::string &strText, size_t ulStart, size_t ulEnd)
{
    TItem item;
    item.strWritten = pItem->pszKeyword;
    item.strKeyword = Lower(item.strWritten);
    item.bChunk = pItem->pChunk != nullptr;
    const std::vector<size_t> places = FieldPlaces(strText, ulStart, ulEnd);
    item.ulOffset = places[0];
    for (xlong l = 0; l < pItem->lNumStrings; ++l)
        item.strings.push_back(
            { pItem->ppszStrings[l], (size_t)l + 1 < places.size() ? places[(size_t)l + 1] : places[0] });
    while (!item.strings.empty() && item.strings.back().strText[0] == ';')
    {
        item.strings.pop_back();
        item.bComment = true;
    }
    return item;
}
} // namespace

TKCBLFault CPlaces::At(size_t ulOffset)
{
    if (ulOffset < m_ulAt)
    {
        m_ulAt = m_ulLine = 0;
        m_lLine = 1;
    }
    for (; m_ulAt < ulOffset; ++m_ulAt)
        if (m_strText[m_ulAt] == '\n' || (m_strText[m_ulAt] == '\r' && m_strText[m_ulAt + 1] != '\n'))
        {
            m_ulLine = m_ulAt + 1;
            ++m_lLine;
        }
    return { "", (xlong)ulOffset, m_lLine, (xlong)(ulOffset - m_ulLine) + 1, 0 };
}

bool TItem::IsComment() const
{
    return strKeyword.empty() || strchr("; \t", strKeyword[0]);
}

std::string TItem::Name() const
{
    return Lower(String(0));
}

CScript::CScript(const std::string &strText) : m_Items(1)
{
    Init();
    std::vector<size_t> path = { 0 };
    for (size_t ul = 0; ul < strText.size();)
    {
        const size_t ulStart = ul;
        const TKCBLChunk *const pBefore = m_pCurChunk;
        const xlong lCount = m_pCurChunk->m_lNumNodes;
        const xlong lUsed = AddLine(strText.c_str() + ul);
        if (lUsed < 0)
            return;
        if (m_pCurChunk == pBefore->pParent)
            path.pop_back();
        else if (m_pCurChunk != pBefore || m_pCurChunk->m_lNumNodes != lCount)
        {
            const TKCBLKeyword *const pItem = (const TKCBLKeyword *)pBefore->m_pLast->pData;
            m_Items[path.back()].items.push_back(m_Items.size());
            if (m_pCurChunk != pBefore)
                path.push_back(m_Items.size());
            m_Items.push_back(MakeItem(pItem, strText, ul, ul + (size_t)lUsed));
        }
        ul += (size_t)lUsed;
        ul += ul < strText.size() && strText[ul] == '\r';
        ul += ul < strText.size() && strText[ul] == '\n';
        if (ul == ulStart)
            return;
    }
}
