// Splits one item of a KCBL text into its packed body.
#pragma once

#include "tarvix/kcbl.h"

#include <stdint.h>

/// What a scan works with. One serves for all items of a text, and keeps its
/// buffers from one to the next.
class CKCBLScan
{
public:
    CKCBLScan() = default;
    CKCBLScan(const CKCBLScan &) = delete;
    ~CKCBLScan();

    /// Scans the item that begins at the text.
    /// @return true, or false with m_pszFault, which is null when memory is exhausted
    bool Scan(const char *pszText);
    /// Puts the scanned body and the pointers to its strings into an item of that size.
    void Fill(TKCBLKeyword *pItem, char *pDest) const;

    const char *m_pEnd = nullptr; ///< the text's zero where it is known: the scan is faster then

    const char *m_pKeyword = nullptr; ///< first character that is no blank or tab
    const char *m_pUsed = nullptr;    ///< end of the item
    const char *m_pFault = nullptr;   ///< where the fault is
    const char *m_pszFault = nullptr;
    char *m_pBody = nullptr;
    xlong m_lBody = 0;
    xlong m_lNumStrings = 0;

private:
    struct TState;

    bool Fail(const char *pAt, const char *pszText);
    bool Grow(TState &state);
    bool StartString(TState &state);
    void CloseArray(TState &state);
    bool Separate(TState &state, char c);
    void Fields(TState &state);
    bool Comment(TState &state);
    bool Quotes(TState &state);
    bool Raw(TState &state, size_t ulIndent);
    const char *SkipSpace(const char *pFrom);

    xlong m_lBodySize = 0;
    char *m_pStarts = nullptr; ///< offsets of the strings in the body
    xlong m_lStartsSize = 0;
    // White space behind a line end that was walked over already: blank lines
    // would be walked over again for each of them.
    const char *m_pSpaceFrom = nullptr;
    const char *m_pSpaceTo = nullptr;
    const char *m_pIndent = nullptr; ///< start of the line that m_pSpaceTo is on, when that is the next one
    // Bits of the 64 characters from m_pWindow on: 1 for those that are not plain.
    const char *m_pWindow = nullptr;
    uint64_t m_ullSpecial = 0;
};
