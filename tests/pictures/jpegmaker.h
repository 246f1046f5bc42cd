// Makes small baseline JPEG files of random coefficients, for tests and as
// seeds: every symbol, code length and sampling can be had.
#pragma once

#include <algorithm>
#include <random>
#include <string>
#include <vector>

class CJpegMaker
{
public:
    struct TComponent
    {
        int nId, nH, nV;
    };

    /// Codes for the given symbols, the first ones short, the last of 16 bits.
    struct TCodes
    {
        std::string strCounts, strSymbols;
        unsigned auCode[256] = {}, auLength[256] = {};

        explicit TCodes(const std::vector<int> &symbols)
        {
            unsigned uCode = 0;
            size_t ulNext = 0;
            for (unsigned uLength = 1; uLength <= 16; ++uLength, uCode <<= 1)
            {
                const size_t ulRest = symbols.size() - ulNext;
                size_t ulCount = uLength == 1 ? 0 : uLength < 12 ? 1 : uLength == 16 ? ulRest : 4;
                ulCount = ulCount < ulRest ? ulCount : ulRest;
                strCounts += (char)ulCount;
                for (; ulCount; --ulCount, ++uCode)
                {
                    const int nSymbol = symbols[ulNext++];
                    strSymbols += (char)nSymbol;
                    auCode[nSymbol] = uCode;
                    auLength[nSymbol] = uLength;
                }
            }
        }
    };

    int nWidth = 16, nHeight = 16;
    std::vector<TComponent> components = { { 1, 1, 1 } };
    std::vector<int> scan; ///< indices of components; empty for all
    int nRestart = 0;      ///< MCUs, 0 for no restarts
    int nMostSize = 5;     ///< bits of a coefficient
    int nQuant = 3;        ///< steps are up to this
    int nMostFilled = 20;  ///< coefficients of a block that are not 0
    unsigned uSeed = 1;

    // Places of the last file.
    size_t ulFrame = 0; ///< of the SOF marker
    size_t ulScan = 0;  ///< of the SOS marker
    size_t ulData = 0;  ///< of the first byte behind its segment

    std::string Make()
    {
        m_Random.seed(uSeed);
        std::string str("\xff\xd8\xff\xe0\0\x10JFIF\0\1\1\0\0\1\0\1\0\0", 20);
        std::string strQuant(1, nQuant > 255 ? '\x10' : '\0');
        for (int i = 0; i < 64; ++i)
        {
            const unsigned uStep = 1 + m_Random() % (unsigned)nQuant;
            if (nQuant > 255)
                strQuant += (char)(uStep >> 8);
            strQuant += (char)uStep;
        }
        str += Segment('\xdb', strQuant);
        std::vector<int> sizes, pairs;
        for (int i = 0; i <= 15; ++i)
            sizes.push_back(i);
        for (int nRun = 0; nRun < 16; ++nRun)
            for (int nSize = nRun == 0 || nRun == 15 ? 0 : 1; nSize <= 15; ++nSize)
                pairs.push_back(nRun << 4 | nSize);
        std::shuffle(sizes.begin(), sizes.end(), m_Random);
        std::shuffle(pairs.begin(), pairs.end(), m_Random);
        const TCodes dc(sizes), ac(pairs);
        str += Segment('\xc4', '\0' + dc.strCounts + dc.strSymbols + '\x10' + ac.strCounts + ac.strSymbols);
        if (nRestart)
            str += Segment('\xdd', Word(nRestart));
        ulFrame = str.size();
        std::string strFrame = '\x08' + Word(nHeight) + Word(nWidth) + (char)components.size();
        for (const TComponent &comp : components)
            strFrame += { (char)comp.nId, (char)(comp.nH << 4 | comp.nV), '\0' };
        str += Segment('\xc0', strFrame);
        ulScan = str.size();
        std::vector<int> used = scan;
        for (int i = 0; scan.empty() && i < (int)components.size(); ++i)
            used.push_back(i);
        std::string strScan(1, (char)used.size());
        for (int i : used)
            strScan += { (char)components[(size_t)i].nId, '\0' };
        str += Segment('\xda', strScan + std::string("\0\x3f\0", 3));
        ulData = str.size();
        return str + Data(used, dc, ac) + "\xff\xd9";
    }

    static std::string Word(int nValue) { return { (char)(nValue >> 8), (char)nValue }; }
    static std::string Segment(char cMarker, const std::string &strBytes)
    {
        return std::string("\xff") + cMarker + Word((int)strBytes.size() + 2) + strBytes;
    }

private:
    void Put(unsigned uValue, unsigned uLength)
    {
        while (uLength--)
        {
            m_uByte = m_uByte << 1 | (uValue >> uLength & 1);
            if (++m_nBits == 8)
                Flush();
        }
    }
    void Flush()
    {
        while (m_nBits && m_nBits < 8)
        {
            m_uByte = m_uByte << 1 | 1;
            ++m_nBits;
        }
        if (m_nBits)
            m_strData += (char)m_uByte;
        if (m_nBits && (m_uByte & 255) == 255)
            m_strData += '\0';
        m_nBits = 0;
    }
    void PutBlock(const TCodes &dc, const TCodes &ac)
    {
        const auto value = [&](int nSize) { return m_Random() & ((1u << nSize) - 1); };
        const int nFirst = (int)(m_Random() % (unsigned)(nMostSize + 1));
        Put(dc.auCode[nFirst], dc.auLength[nFirst]);
        Put(value(nFirst), (unsigned)nFirst);
        int nFilled = (int)(m_Random() % (unsigned)(nMostFilled + 1));
        int k = 1;
        while (nFilled-- && k < 64)
        {
            int nRun = (int)(m_Random() % 9 * (m_Random() % 3));
            if (k + nRun > 63)
                nRun = 63 - k;
            k += nRun + 1;
            for (; nRun > 15; nRun -= 16)
                Put(ac.auCode[0xf0], ac.auLength[0xf0]);
            const int nSize = 1 + (int)(m_Random() % (unsigned)nMostSize);
            Put(ac.auCode[nRun << 4 | nSize], ac.auLength[nRun << 4 | nSize]);
            Put(value(nSize), (unsigned)nSize);
        }
        if (k < 64)
            Put(ac.auCode[0], ac.auLength[0]);
    }
    std::string Data(const std::vector<int> &used, const TCodes &dc, const TCodes &ac)
    {
        m_strData.clear();
        m_nBits = 0;
        int nMaxH = 1, nMaxV = 1, nBlocks = 0;
        for (const TComponent &comp : components)
        {
            nMaxH = std::max(nMaxH, comp.nH);
            nMaxV = std::max(nMaxV, comp.nV);
        }
        const auto ceil = [](int nValue, int nBy) { return (nValue + nBy - 1) / nBy; };
        int nMCUs = ceil(nWidth, 8 * nMaxH) * ceil(nHeight, 8 * nMaxV);
        for (int i : used)
            nBlocks += components[(size_t)i].nH * components[(size_t)i].nV;
        if (used.size() == 1)
        {
            const TComponent &comp = components[(size_t)used[0]];
            nMCUs = ceil(nWidth * comp.nH, 8 * nMaxH) * ceil(nHeight * comp.nV, 8 * nMaxV);
            nBlocks = 1;
        }
        for (int i = 0; i < nMCUs; ++i)
        {
            if (nRestart && i && i % nRestart == 0)
            {
                Flush();
                m_strData += { '\xff', (char)(0xd0 + (i / nRestart - 1) % 8) };
            }
            for (int j = 0; j < nBlocks; ++j)
                PutBlock(dc, ac);
        }
        Flush();
        return m_strData;
    }

    std::mt19937 m_Random;
    std::string m_strData;
    unsigned m_uByte = 0;
    int m_nBits = 0;
};
