// Decodes baseline JPEG files bit by bit and sample by sample, for comparison.
// Whole headers are needed; what follows may be damaged.
#pragma once

#include "pictures/jpegkernels.h"
#include "tarvix/globals.h"

#include <algorithm>
#include <string>
#include <vector>

class CJpegModel
{
public:
    int nWidth = 0, nHeight = 0;

    /// @return red, green and blue of every pixel
    std::string Decode(const std::string &strFile)
    {
        m_strFile = strFile;
        Headers();
        for (TComponent &comp : m_Components)
        {
            comp.nWide = Ceil(nWidth, 8 * m_nMaxH) * comp.nH * 8;
            comp.samples.assign((size_t)comp.nWide * (size_t)(Ceil(nHeight, 8 * m_nMaxV) * comp.nV * 8), 0);
        }
        const int nRows = std::min(nHeight, Scan() * 8 * m_nMaxV);
        std::string str((size_t)nWidth * (size_t)nHeight * 3, '\0');
        for (int y = 0; y < nRows; ++y)
            for (int x = 0; x < nWidth; ++x)
                Pixel(x, y, &str[((size_t)y * (size_t)nWidth + (size_t)x) * 3]);
        return str;
    }

private:
    struct TTable
    {
        std::string strCounts, strSymbols;
    };
    struct TComponent
    {
        int nId, nH, nV, nQuant, nDC = 0, nAC = 0, nPrediction = 0, nWide = 0;
        std::vector<unsigned char> samples;
    };

    static int Ceil(int nValue, int nBy) { return (nValue + nBy - 1) / nBy; }
    int Byte(size_t ulPos) const { return ulPos < m_strFile.size() ? (unsigned char)m_strFile[ulPos] : -1; }
    int Word(size_t ulPos) const { return Byte(ulPos) << 8 | Byte(ulPos + 1); }

    void Headers()
    {
        for (m_ulPos = 2;;)
        {
            const int nMarker = Byte(m_ulPos + 1);
            const size_t ulBegin = m_ulPos + 4, ulEnd = m_ulPos + 2 + (size_t)Word(m_ulPos + 2);
            for (size_t p = ulBegin; nMarker == 0xdb && p < ulEnd;)
            {
                const bool bWords = Byte(p) >> 4 != 0;
                xlong *pQuant = m_Quants[Byte(p) & 3];
                for (size_t i = 0; i < 64; ++i)
                    pQuant[glb->m_ausJpegOrder[i]] = bWords ? Word(p + 1 + 2 * i) : Byte(p + 1 + i);
                p += bWords ? 129 : 65;
            }
            for (size_t p = ulBegin; nMarker == 0xc4 && p < ulEnd;)
            {
                TTable &table = m_Tables[Byte(p) >> 4][Byte(p) & 3];
                table.strCounts = m_strFile.substr(p + 1, 16);
                size_t ulSum = 0;
                for (char c : table.strCounts)
                    ulSum += (unsigned char)c;
                table.strSymbols = m_strFile.substr(p + 17, ulSum);
                p += 17 + ulSum;
            }
            if (nMarker == 0xdd)
                m_nRestart = Word(ulBegin);
            if (nMarker == 0xc0)
            {
                nHeight = Word(ulBegin + 1);
                nWidth = Word(ulBegin + 3);
                for (int i = 0; i < Byte(ulBegin + 5); ++i)
                {
                    const size_t p = ulBegin + 6 + 3 * (size_t)i;
                    m_Components.push_back(
                        { Byte(p), Byte(p + 1) >> 4, Byte(p + 1) & 15, Byte(p + 2), 0, 0, 0, 0, {} });
                    m_nMaxH = std::max(m_nMaxH, m_Components.back().nH);
                    m_nMaxV = std::max(m_nMaxV, m_Components.back().nV);
                }
            }
            m_ulPos = ulEnd;
            if (nMarker != 0xda)
                continue;
            for (size_t p = ulBegin + 1; p < ulEnd - 3; p += 2)
                for (TComponent &comp : m_Components)
                    if (comp.nId == Byte(p))
                    {
                        comp.nDC = Byte(p + 1) >> 4;
                        comp.nAC = Byte(p + 1) & 15;
                        m_Scan.push_back(&comp);
                        break;
                    }
            return;
        }
    }

    int Bit()
    {
        if (!m_nBits)
        {
            m_nByte = 0;
            int nByte = m_bMarker ? -1 : Byte(m_ulPos);
            if (nByte == 0xff)
            {
                size_t ulNext = m_ulPos + 1;
                while (Byte(ulNext) == 0xff)
                    ++ulNext;
                if (Byte(ulNext))
                    nByte = -1;
                else
                    m_ulPos = ulNext;
            }
            m_bMarker = nByte < 0;
            if (!m_bMarker)
            {
                m_nByte = nByte;
                ++m_ulPos;
            }
            m_nBits = 8;
        }
        return m_nByte >> --m_nBits & 1;
    }
    int Value(int nSize)
    {
        int nValue = 0;
        for (int i = 0; i < nSize; ++i)
            nValue = nValue << 1 | Bit();
        return nSize && nValue < 1 << (nSize - 1) ? nValue - (1 << nSize) + 1 : nValue;
    }
    int Symbol(const TTable &table)
    {
        int nCode = 0, nFirst = 0, nIndex = 0;
        for (size_t i = 0; i < 16; ++i)
        {
            nCode = nCode << 1 | Bit();
            const int nCount = (unsigned char)table.strCounts[i];
            if (nCode - nFirst < nCount)
                return (unsigned char)table.strSymbols[(size_t)(nIndex + nCode - nFirst)];
            nIndex += nCount;
            nFirst = (nFirst + nCount) << 1;
        }
        Bit();
        return 0;
    }
    bool Restart()
    {
        m_nBits = 0;
        m_bMarker = false;
        for (TComponent &comp : m_Components)
            comp.nPrediction = 0;
        for (;; ++m_ulPos)
        {
            if (Byte(m_ulPos) < 0)
                return false;
            const int nNext = Byte(m_ulPos + 1);
            if (Byte(m_ulPos) != 0xff || nNext == 0xff)
                continue;
            if (nNext == 0xd9)
                return false;
            if (nNext >= 0xd0 && nNext <= 0xd7)
                break;
        }
        m_ulPos += 2;
        return true;
    }
    void Block(TComponent &comp, int nX, int nY)
    {
        short asBlock[64] = {};
        comp.nPrediction += Value(Symbol(m_Tables[0][comp.nDC]));
        asBlock[JpegPlace(0)] = (short)comp.nPrediction;
        for (int k = 1; k < 64; ++k)
        {
            const int nSymbol = Symbol(m_Tables[1][comp.nAC]);
            if (!(nSymbol & 15) && nSymbol != 0xf0)
                break;
            k += nSymbol >> 4;
            if (nSymbol & 15)
                asBlock[JpegPlace(glb->m_ausJpegOrder[k])] = (short)Value(nSymbol & 15);
        }
        const size_t ulPlace = (size_t)nY * 8 * (size_t)comp.nWide + (size_t)nX * 8;
        if (nX * 8 >= comp.nWide || ulPlace + 7 * (size_t)comp.nWide + 8 > comp.samples.size())
            return;
        TJpegQuant quant;
        JpegSetQuant(&quant, m_Quants[comp.nQuant]);
        JpegIdctPlain(asBlock, quant, &comp.samples[ulPlace], comp.nWide, m_Limit.Centre());
    }
    // How many rows of MCUs could be read.
    int Scan()
    {
        const bool bAlone = m_Scan.size() == 1;
        TComponent &first = *m_Scan[0];
        const int nColumns = Ceil(bAlone ? nWidth * first.nH : nWidth, 8 * m_nMaxH);
        const int nRows = Ceil(bAlone ? nHeight * first.nV : nHeight, 8 * m_nMaxV);
        int nToGo = m_nRestart;
        for (int y = 0; y < nRows; ++y)
            for (int x = 0; x < nColumns; ++x)
            {
                if (m_nRestart && !nToGo)
                {
                    if (!Restart())
                        return bAlone ? y / first.nV : y;
                    nToGo = m_nRestart;
                }
                --nToGo;
                for (TComponent *pComp : m_Scan)
                    for (int i = 0; i < (bAlone ? 1 : pComp->nH * pComp->nV); ++i)
                        Block(*pComp, bAlone ? x : x * pComp->nH + i % pComp->nH,
                              bAlone ? y : y * pComp->nV + i / pComp->nH);
            }
        return nHeight;
    }
    void Pixel(int x, int y, char *pTo)
    {
        int anSample[3] = { 0, 128, 128 };
        for (size_t i = 0; i < std::min<size_t>(3, m_Components.size()); ++i)
        {
            const TComponent &comp = m_Components[i];
            anSample[i] =
                comp.samples[(size_t)(y * comp.nV / m_nMaxV) * (size_t)comp.nWide + (size_t)(x * comp.nH / m_nMaxH)];
        }
        const int nCb = anSample[1] - 128, nCr = anSample[2] - 128;
        const int anAdd[3] = { (91881 * nCr + 32768) >> 16, (-22554 * nCb - 46802 * nCr + 32768) >> 16,
                               (116130 * nCb + 32768) >> 16 };
        for (int i = 0; i < 3; ++i)
            pTo[i] = (char)std::clamp(anSample[0] + anAdd[i], 0, 255);
    }

public:
    /// The table that clamps samples, see SGlobals::m_pJpegRange.
    struct TLimit
    {
        unsigned char aucTable[1408];

        TLimit()
        {
            for (int i = 0; i < 1408; ++i)
            {
                // From 384 on, modulo 1024: what follows from 128 on, and what comes before.
                const int n = i - 256;
                aucTable[i] = (unsigned char)(n < 640 ? std::clamp(n, 0, 255) : std::max(n - 1024, 0));
            }
        }
        const unsigned char *Centre() const { return aucTable + 256; }
    };

private:
    std::string m_strFile;
    size_t m_ulPos = 0;
    int m_nByte = 0, m_nBits = 0, m_nRestart = 0, m_nMaxH = 1, m_nMaxV = 1;
    bool m_bMarker = false;
    xlong m_Quants[4][64] = {};
    TTable m_Tables[2][4];
    std::vector<TComponent> m_Components;
    std::vector<TComponent *> m_Scan;
    TLimit m_Limit;
};
