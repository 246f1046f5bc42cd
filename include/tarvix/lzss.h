#pragma once

#include "tarvix/types.h"

class CBitFile;
class CFile;

/// Storer-Szymanski compressor with a window of 4,096 bytes. A stream has no
/// header; its first bit is the highest of a byte and of a field:
///   literal  1, 8 bits
///   match    0, 12 bits window position, 4 bits length less 2
///   end      0, 12 zero bits, and zeros up to the next byte
/// The window starts with zeros and is filled from position 1 on. Which match
/// is taken is fixed too: the longest on the search path of the tree, and of
/// several the last one.
class TARVIX_API CLzss
{
public:
    enum
    {
        WINDOW_SIZE = 4096,
        LOOK_AHEAD = 17, ///< longest match
        TREE_ROOT = WINDOW_SIZE
    };

    CLzss();

    /// Progress of the runs that follow: bytes done, bytes in all, and 1 at the start.
    /// @param lPeriod  milliseconds between calls
    /// @return 1
    xlong SetCallback(void (*pFunc)(xlong lPos, xlong lTotal, xlong bStart), xlong lPeriod);

    /// @return 0 with a report when a file can't be opened, read or written
    xlong Compress(const char *pszSource, const char *pszDest);
    /// @return 0 also, without a report, when the stream has no end
    xlong Expand(const char *pszSource, const char *pszDest);
    /// From the position to the end.
    xlong CompressFile(CFile *pSource, CBitFile *pDest);
    xlong ExpandFile(CBitFile *pSource, CFile *pDest);

    /// @param pulLen  bytes of pSource; receives the compressed length
    /// @return a block of that size for xFreeMem; null for length 0 and without memory
    char *CompressBuffer(const char *pSource, xulong *pulLen);
    /// One pass.
    /// @param lDestSize  0 counts only; otherwise the size of the block that is made, and
    ///                   what goes beyond it is counted and dropped
    char *CompressBuf(const char *pSource, xulong *pulLen, xlong lDestSize);
    /// For trusted streams alone: a damaged one is read beyond its end.
    /// @param pulLen  bytes that pDest holds, 0 counts only; receives the expanded size
    /// @return 1; 0 when it did not fit, with the part that does in pDest. Room
    ///         behind a shorter result may be written to
    xlong ExpandBuffer(const char *pSource, char *pDest, xulong *pulLen);
    /// @param ulSourceLen  bytes of pSource
    /// @return 0 also when the stream has no end there; pulLen then receives what came before
    xlong ExpandBuffer(const char *pSource, char *pDest, xulong *pulLen, xulong ulSourceLen);

    // The search tree over the window's strings; a node is named by its window position.

    void ClearTree();
    /// Makes sRoot the only node.
    void InitTree(short sRoot);
    /// Links sNew into the place of sOld.
    void ContractNode(short sOld, short sNew);
    /// Gives sNew the parent and the children of sOld.
    void ReplaceNode(short sOld, short sNew);
    /// @return the node before sNode in order
    short FindNextNode(short sNode);
    /// Takes a node out; one that is not in the tree is ignored.
    void DeleteString(short sNode);
    /// Enters the string at sNode.
    /// @param psMatchPos  receives the position of the longest match
    /// @return its length
    short AddString(short sNode, short *psMatchPos);

    struct TNode
    {
        short sParent; ///< 0 when not in the tree
        short sSmaller;
        short sLarger;
    };

    unsigned char m_ucWindow[WINDOW_SIZE];
    TNode m_Tree[WINDOW_SIZE + 1];
    void (*m_pfnCallback)(xlong lPos, xlong lTotal, xlong bStart);
    xlong m_lCallbackPeriod; ///< milliseconds
    unsigned char m_ucBitBuffer;
    unsigned char m_ucBitCount;
    const unsigned char *m_pSource;
    unsigned char *m_pDest;
    xulong m_ulDestLen;  ///< bytes so far, also those that were not stored
    xulong m_ulDestSize; ///< bytes that m_pDest holds
    unsigned char m_bCountOnly;

private:
    void DoCallback(xlong lPos, xlong lTotal, xlong bStart);
    short ReadBit();
    short ReadBits(short sCount);
    void WriteBit(unsigned char ucBit);
    void WriteBits(xulong ulValue, unsigned char ucCount);
    void WriteByte(unsigned char ucValue);
    void FlushBitBuf();
    void FlushBits();

    template <class TInput, class TOutput>
    xlong CompressRun(TInput &input, xulong ulTotal, TOutput &output);
    template <class TBits, class TTarget>
    xlong ExpandRun(TBits &bits, TTarget &target, const xulong *pulTotal);
    void StartRun();
    void ReportAtPeriod(xulong ulPos, xulong ulTotal);

    xulong m_ulLastCallback;
};
