// A script as text: where its items and their strings stand.
#pragma once

#include "tarvix/kcbl.h"

#include <stddef.h>

#include <string>
#include <vector>

/// Line and column of an offset, counted on from one call to the next.
class CPlaces
{
public:
    /// @param strText  outlives this
    explicit CPlaces(const std::string &strText) : m_strText(strText) {}

    TKCBLFault At(size_t ulOffset);

private:
    const std::string &m_strText;
    size_t m_ulAt = 0, m_ulLine = 0;
    xlong m_lLine = 1;
};

struct TField
{
    std::string strText;
    size_t ulOffset;
};

struct TItem
{
    bool IsComment() const;
    std::string String(size_t ul) const { return ul < strings.size() ? strings[ul].strText : ""; }
    /// What a chunk is, in small letters.
    std::string Name() const;

    std::string strKeyword; ///< in small letters
    std::string strWritten;
    size_t ulOffset = 0;
    std::vector<TField> strings; ///< without a comment at the end
    std::vector<size_t> items;   ///< of a chunk, by index
    bool bComment = false;       ///< there was one, which the library keeps as a string
    bool bChunk = false;
};

/// The items of a text with their places, as the library reads them.
class CScript : public CKCBL
{
public:
    explicit CScript(const std::string &strText);

    const TItem &Root() const { return m_Items[0]; }
    const TItem &operator[](size_t ul) const { return m_Items[ul]; }

private:
    std::vector<TItem> m_Items;
};
