#pragma once

#include "tarvix/llist.h"
#include "tarvix/memory.h"
#include "tarvix/types.h"

#include <stdarg.h>
#include <string.h>

/// Tags of the variable-argument calls of CKCBL. A tag list is one tag, its
/// arguments, the next tag and so on, ended by KEND. What stands behind each is
/// what NewItem, NewChunk and ReplaceItem take, and then what GetItem takes.
enum
{
    KEND = 0x10000000,         ///< ends the list
    KBOOL = 0x10000001,        ///< xlong; int *. "TRUE" for any non-zero, or "FALSE"
    KLONG = 0x10000002,        ///< xlong; xlong *
    KULONG = 0x10000003,       ///< xulong; xulong *
    KFLOAT = 0x10000004,       ///< xFloatBits(float), never the float itself; float *
    KDOUBLE = 0x10000005,      ///< double; double *
    KSTRING = 0x10000006,      ///< char *, not null; xlong lMaxLen, char * with room for lMaxLen + 1
    KBOOLARRAY = 0x10000007,   ///< xlong lCount, int *; the same
    KLONGARRAY = 0x10000008,   ///< xlong lCount, xlong *; the same
    KULONGARRAY = 0x10000009,  ///< xlong lCount, xulong *; the same
    KFLOATARRAY = 0x1000000A,  ///< xlong lCount, float *; the same
    KDOUBLEARRAY = 0x1000000B, ///< xlong lCount, double *; the same
    KARGS = 0x1000000C         ///< CreateNewItem alone: the first tag is the list's first argument
};

/// A float as KFLOAT takes it: one slot of 32 bits.
inline xulong xFloatBits(float fValue)
{
    xulong ulBits;
    memcpy(&ulBits, &fValue, sizeof(ulBits));
    return ulBits;
}

struct TKCBLChunk;

/// Marks in the body of an item, which show in GetString.
enum
{
    KCBL_ARRAY_START = 0xFD, ///< an array's first byte; each element with its zero follows
    KCBL_ARRAY_END = 0xFE,   ///< behind an array, unless the body ends there
    KCBL_BODY_END = 0xFF     ///< the body's last byte, behind a zero
};

/// One item. It is one block, so that freeing the block frees all of it: these
/// fields, the pointers to the strings, and the body with keyword and strings.
struct TKCBLKeyword
{
    char *pszKeyword;   ///< start of the body
    char **ppszStrings; ///< lNumStrings pointers into the body
    xlong lNumStrings;
    xlong lSize;        ///< bytes of the body, with its end mark
    TKCBLChunk *pChunk; ///< owned; null when the item is no chunk
};

/// One list of items. The first is a comment that nobody sees, so that a list
/// is never empty. The list does not own its items: CKCBL frees them.
struct TARVIX_API TKCBLChunk : public CLList
{
    TKCBLChunk();
    /// Frees the nodes.
    ~TKCBLChunk();

    TKCBLChunk *pParent; ///< null for the main chunk
};

/// What ReorderString reads and finds.
struct TReorderStrData
{
    const char *pszSource;       ///< the text, at the start of the item
    char *pDest;                 ///< where the body goes
    const char *pszKeywordStart; ///< out: first character that is no blank or tab
    xlong lDestSize;             ///< out: bytes of the body
    xlong lNumStrings;           ///< out
    xlong lSourceUsed;           ///< out: bytes of the text used; on a fault, where the fault is
};

/// A fault in a text.
struct TKCBLFault
{
    const char *pszText; ///< what is wrong; lives on
    xlong lOffset;       ///< bytes from the start of the text
    xlong lLine;         ///< from 1
    xlong lColumn;       ///< bytes, from 1
    xlong lHarmless;     ///< 1 for a chunk that the text never closes: Import accepts it
};

/// The arguments that CreateNewItem reads.
#ifdef _WIN32
typedef char *TKCBLArgs;
#else
struct TKCBLArgs
{
    va_list args;
};
#endif

/// A tree of keywords with their strings, and a cursor into it. All scripts and
/// resources are such trees; docs/kcbl.md tells how they look as text.
///
/// The cursor is a chunk and the current item in its list. Every chunk keeps its
/// own current item, so that leaving a chunk comes back to its item. There may
/// be no current item: behind the last one, and in an empty tree.
///
/// Every value is kept as text and converted on the way in and out. Results are
/// 1, or 0 for no, where nothing else is said; getters report no error.
/// A copy shares the tree with its source: only one of the two may free it.
class TARVIX_API CKCBL
{
public:
    TARVIX_HEAP_CLASS

    CKCBL();
    CKCBL(const CKCBL &) = default;
    CKCBL &operator=(const CKCBL &) = default;

    /// Reads a text file into the tree.
    /// @return as Import; 0 also with the report of the file or of the memory
    virtual xlong Load(const char *pszPath);
    /// Frees the tree.
    virtual ~CKCBL();

    /// Frees all items and chunks. Strings that were handed out are gone.
    void Free();
    /// Writes the tree as text. The cursor stays, except after a failure.
    xlong Save(const char *pszPath);
    /// Replaces the tree by that of a text. The cursor goes to the first item.
    /// @param pszText  ends in a zero; not kept
    /// @param lLen     not looked at
    /// @return 1; 0 with a text at the first fault: the items before it stay
    xlong Import(const char *pszText, xlong lLen);
    /// Import that tells of all faults where they are, and goes on behind the
    /// line of each as long as it is let.
    /// @param pfnFault  gets each fault, in the order of the text except for
    ///                  chunks that are never closed, which come at the end;
    ///                  returns 1 to go on, 0 to stop
    /// @return 1 when there was no fault but harmless ones
    xlong ImportFaults(const char *pszText, xlong (*pfnFault)(const TKCBLFault *pFault, void *pUser), void *pUser);
    /// Writes the tree as text with a zero behind it, and no line end before
    /// that. The cursor stays, except after a failure.
    /// @param lBufferLen  bytes of the buffer, as ExportSize gives them
    /// @param plLen       receives the size with the zero, -1 after a failure; may be null
    /// @param bSizeOnly   1: measures only, pBuffer is not used
    /// @return 1; 0 when the buffer is too small or an item can't be written
    xlong Export(char *pBuffer, xlong lBufferLen, xlong *plLen, xlong bSizeOnly);
    xlong ExportSize(xlong *plLen);
    /// Where the writer folds quoted strings.
    /// @param lLen  columns; 0 for 1,000,000; a negative value is ignored
    void SetMaxLineLength(xlong lLen);
    /// Digits behind the point of floats and doubles in items made from now on.
    /// @param lDigits  10 at most; below 0 for the runtime's own 6
    void SetFloatPrecision(xlong lDigits);
    void SetDoublePrecision(xlong lDigits);
    /// @param lMode  non-zero: FindItem goes round the list; the constructor's is 1
    void RestartMode(xlong lMode);

    /// To the root list, whose current item stays.
    void MainChunk();
    /// Into the chunk of the current item, to its first item.
    /// @return 0 if the current item has no chunk
    xlong EnterChunk();
    /// Back to the chunk's item. @return 0 at the root
    xlong ExitChunk();
    /// @return 1 if there is an item
    xlong FirstItem();
    /// @param bDescend  0: the next item of the list, and no current item behind
    ///                  the last. Otherwise the walk through the whole tree: into
    ///                  a chunk, where an empty one gives 1 without a current item;
    ///                  at the end of a list behind the chunk's item, and then
    ///                  the result is 0 whatever stands there, so that callers see
    ///                  each level close and ask ItemExists
    xlong NextItem(xlong bDescend);
    xlong ItemExists();
    /// @return 0 no current item, 1 a plain item, 2 a chunk
    xlong ItemType();
    /// @return 1 for comments and for empty lines
    xlong IsComment();
    /// @return in the tree; null without a current item
    char *GetKeyword();
    TKCBLKeyword *GetCurKeyword();

    /// @return in the tree; null out of range and without a current item
    char *GetString(xlong lIndex);
    xlong GetNumStrings();
    /// @return 0 no current item, 1 a comment, 3 an array, otherwise 2, out of range too
    xlong GetDataType(xlong lIndex);
    // Numbers as scanf reads them: leading white space is passed over and so is
    // what stands behind the number. 0 leaves the target alone.
    xlong GetLong(xlong lIndex, xlong *plValue);
    xlong GetULong(xlong lIndex, xulong *pulValue);
    xlong GetFloat(xlong lIndex, float *pfValue);
    xlong GetDouble(xlong lIndex, double *pdValue);
    /// TRUE, YES or 1, and FALSE, NO or 0, without regard to case.
    xlong GetBool(xlong lIndex, int *pbValue);
    // The first lCount elements; 0 when the string is no array, and when there
    // are fewer, with those stored. A count below 1 gives 1.
    xlong GetLongArray(xlong lIndex, xlong *plValues, xlong lCount);
    xlong GetULongArray(xlong lIndex, xulong *pulValues, xlong lCount);
    xlong GetFloatArray(xlong lIndex, float *pfValues, xlong lCount);
    xlong GetDoubleArray(xlong lIndex, double *pdValues, xlong lCount);
    xlong GetBoolArray(xlong lIndex, int *pbValues, xlong lCount);
    xlong GetNumArrayItems(xlong lIndex, xlong *plCount);
    /// Finds the keyword and reads its strings by a tag list, from string 0 on.
    /// @param pszKeyword  null reads the current item
    /// @return 0 if there is no such item, a string is missing or does not
    ///         convert, or is longer than its lMaxLen; what was read before it
    ///         stays. 0 with a text for an unknown tag. Lengths and counts over
    ///         65,535 give 0: one was forgotten
    xlong GetItem(const char *pszKeyword, ...);
    /// Searches the current list, from the current item on, for a keyword with
    /// the given first strings, all without regard to case. Calling it again
    /// finds the same item.
    /// @param pszStr0  null is left out, and the next one takes its place
    /// @return 1 with the cursor on the item. With RestartMode(0) the search ends
    ///         behind the last item; otherwise behind the item it began with
    xlong FindItem(const char *pszKeyword, const char *pszStr0, const char *pszStr1, const char *pszStr2);
    /// The cursor stops on the chunk's item. @return as FindItem
    xlong FindSubChunk(const char *pszStr0, const char *pszStr1, const char *pszStr2);
    xlong FindRawdata(const char *pszStr0, const char *pszStr1, const char *pszStr2);
    /// Does nothing: the text of a rawdata item is its last string.
    /// @return 1
    xlong GetRawdata(void *&pData, const char *pszStr0, const char *pszStr1, const char *pszStr2);

    /// Makes an item behind the current one, or behind the last without one,
    /// and goes to it. The first item makes the tree.
    /// @return 1; 0 with a text for a null string or an unknown tag, or with
    ///         XERR_MEMORY: nothing is added then
    xlong NewItem(const char *pszKeyword, ...);
    /// The same with the keyword "{". The cursor is then in the new chunk, and
    /// the next item made is its first.
    xlong NewChunk(xulong ulFirstTag, ...);
    /// Puts a new item in the place of the first one with that keyword.
    /// @param pszKeyword  null replaces the current item, whose keyword may
    ///                    have 90 characters
    /// @return 1; 0 if there is none. When the new item can't be made the old
    ///         one is gone all the same
    xlong ReplaceItem(const char *pszKeyword, ...);
    /// Frees the current item and all below it. The cursor goes to the item
    /// before, so that NextItem(0) finds the one that followed.
    xlong KillItem();

    TKCBLChunk *m_pCurChunk; ///< the list that the cursor is in
    TKCBLChunk m_MainChunk;
    xlong m_bInitialized; ///< 1 with a tree
    char m_szFloatFormat[15];
    char m_szDoubleFormat[15];
    xlong m_lMaxLineLength;
    xlong m_lRestartMode;

protected:
    /// Starts an empty tree. @return 1; 0 with XERR_MEMORY
    xlong Init();
    /// Adds the first item of a list. @return 1; 0 with XERR_MEMORY
    xlong InsertIDontExist();
    /// What NewItem, NewChunk and ReplaceItem do.
    /// @param ulFirstTag  a tag, or KARGS
    xlong CreateNewItem(const char *pszKeyword, TKCBLArgs &pArgs, xulong ulFirstTag);
    /// Adds the item that begins at the text at the end of the current list.
    /// @return bytes of the text used, not counting its line end; -1 with a report
    xlong AddLine(const char *pszText);
    /// Splits the item at pData->pszSource into keyword and strings.
    /// @param pItem  null measures. Otherwise the body goes to pData->pDest and
    ///               the pointers behind pItem, which has room for them
    xlong ReorderString(TKCBLKeyword *pItem, TReorderStrData *pData);
    /// Writes the item at the cursor, or the "}" of its chunk, and goes on.
    /// @param plIndent   column, changed by 4 into and out of a chunk
    /// @param bSizeOnly  1: measures, without regard to lBufferLen
    /// @param bPeek      1: the cursor stays
    /// @return bytes with the line end; 0 when they don't fit or with a text; -1 at the end of the tree
    xlong GetLine(char *pBuffer, xlong lBufferLen, xlong *plIndent, xlong bSizeOnly, xlong bPeek);
    /// Makes a buffer hold lNeeded bytes.
    /// @param bCopy     1 keeps its contents
    /// @param lNewSize  size of a new buffer; 0 for lNeeded
    /// @return 2 when it did already, 1 with a new buffer, 0 with XERR_MEMORY and the old one
    xlong ReallocBuffer(void **ppBuf, xlong *plSize, xlong lNeeded, xlong bCopy, xlong lNewSize);
};
