// The stream of CLzss made and read in the plain way, for tests and benchmarks: a
// ring of bytes, a tree of indices, bits one by one.
#pragma once

#include <string.h>

#include <algorithm>
#include <string>

class CPlainLzss
{
public:
    std::string Compress(const std::string &strSource)
    {
        Clear();
        size_t ulRead = 0;
        int nAhead = 0;
        while (nAhead < 17 && ulRead < strSource.size())
            m_ucWindow[++nAhead] = (unsigned char)strSource[ulRead++];
        m_Tree[4096].nLarger = 1;
        m_Tree[1].nParent = 4096;
        int nCurrent = 1, nMatch = 0, nPos = 0;
        while (nAhead > 0)
        {
            nMatch = std::min(nMatch, nAhead);
            int nReplace = nMatch;
            if (nMatch >= 2)
            {
                Put(0, 1);
                Put(nPos, 12);
                Put(nMatch - 2, 4);
            }
            else
            {
                Put(1, 1);
                Put(m_ucWindow[nCurrent], 8);
                nReplace = 1;
            }
            for (; nReplace; --nReplace)
            {
                Delete((nCurrent + 17) & 4095);
                if (ulRead < strSource.size())
                    m_ucWindow[(nCurrent + 17) & 4095] = (unsigned char)strSource[ulRead++];
                else
                    --nAhead;
                nCurrent = (nCurrent + 1) & 4095;
                if (nAhead)
                    nMatch = Add(nCurrent, nPos);
            }
        }
        Put(0, 13);
        while (m_nBits)
            Put(0, 1);
        return m_strOut;
    }

    /// @return false when the stream has no end; strOut then holds what came before
    bool Expand(const std::string &strStream, std::string &strOut)
    {
        Clear();
        strOut.clear();
        const size_t ulBits = strStream.size() * 8;
        size_t ulBit = 0;
        const auto Get = [&](int nCount)
        {
            int nValue = 0;
            for (; nCount; --nCount, ++ulBit)
                nValue = nValue * 2 + (strStream[ulBit / 8] >> (7 - ulBit % 8) & 1);
            return nValue;
        };
        int nCurrent = 1;
        const auto Out = [&](unsigned char uc)
        {
            strOut += (char)uc;
            m_ucWindow[nCurrent] = uc;
            nCurrent = (nCurrent + 1) & 4095;
        };
        while (ulBit < ulBits)
        {
            const bool bLiteral = Get(1) != 0;
            if (ulBits - ulBit < (bLiteral ? 8u : 12u))
                break;
            if (bLiteral)
            {
                Out((unsigned char)Get(8));
                continue;
            }
            const int nPos = Get(12);
            if (!nPos)
                return true;
            if (ulBits - ulBit < 4)
                break;
            const int nLength = Get(4) + 2;
            for (int n = 0; n < nLength; ++n)
                Out(m_ucWindow[(nPos + n) & 4095]);
        }
        return false;
    }

private:
    struct TNode
    {
        int nParent, nSmaller, nLarger;
    };

    void Clear()
    {
        memset(m_ucWindow, 0, sizeof(m_ucWindow));
        memset(m_Tree, 0, sizeof(m_Tree));
        m_strOut.clear();
        m_nBits = m_nByte = 0;
    }

    void Put(int nValue, int nCount)
    {
        while (nCount--)
        {
            m_nByte = m_nByte * 2 + (nValue >> nCount & 1);
            if (++m_nBits < 8)
                continue;
            m_strOut += (char)m_nByte;
            m_nBits = m_nByte = 0;
        }
    }

    void Contract(int nOld, int nNew)
    {
        TNode &parent = m_Tree[m_Tree[nOld].nParent];
        m_Tree[nNew].nParent = m_Tree[nOld].nParent;
        (parent.nLarger == nOld ? parent.nLarger : parent.nSmaller) = nNew;
        m_Tree[nOld].nParent = 0;
    }

    void Replace(int nOld, int nNew)
    {
        TNode &parent = m_Tree[m_Tree[nOld].nParent];
        (parent.nSmaller == nOld ? parent.nSmaller : parent.nLarger) = nNew;
        m_Tree[nNew] = m_Tree[nOld];
        m_Tree[m_Tree[nNew].nSmaller].nParent = nNew;
        m_Tree[m_Tree[nNew].nLarger].nParent = nNew;
        m_Tree[nOld].nParent = 0;
    }

    void Delete(int nNode)
    {
        const TNode node = m_Tree[nNode];
        if (!node.nParent)
            return;
        if (!node.nLarger || !node.nSmaller)
            return Contract(nNode, node.nLarger ? node.nLarger : node.nSmaller);
        int nNext = node.nSmaller;
        while (m_Tree[nNext].nLarger)
            nNext = m_Tree[nNext].nLarger;
        Delete(nNext);
        Replace(nNode, nNext);
    }

    int Add(int nNode, int &nPos)
    {
        if (!nNode)
            return 0;
        int nBest = 0;
        for (int nTest = m_Tree[4096].nLarger;;)
        {
            int nLength = 0, nOrder = 0;
            for (; nLength < 17; ++nLength)
                if ((nOrder = m_ucWindow[(nNode + nLength) & 4095] - m_ucWindow[(nTest + nLength) & 4095]) != 0)
                    break;
            if (nLength >= nBest)
            {
                nBest = nLength;
                nPos = nTest;
                if (nLength == 17)
                {
                    Replace(nTest, nNode);
                    return nLength;
                }
            }
            int &nChild = nOrder > 0 ? m_Tree[nTest].nLarger : m_Tree[nTest].nSmaller;
            if (!nChild)
            {
                nChild = nNode;
                m_Tree[nNode] = { nTest, 0, 0 };
                return nBest;
            }
            nTest = nChild;
        }
    }

    unsigned char m_ucWindow[4096];
    TNode m_Tree[4097];
    std::string m_strOut;
    int m_nBits, m_nByte;
};
