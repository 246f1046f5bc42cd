#include "tarvix/bitfile.h"

#include <algorithm>

CBitFile::CBitFile() : m_ucBitBuffer(0), m_ucBitCount(0) {}

CBitFile::~CBitFile()
{
    Close();
}

short CBitFile::ReadBit()
{
    if (!m_ucBitCount)
    {
        signed char c;
        if (ReadByte(&c))
            m_ucBitBuffer = (unsigned char)c;
        m_ucBitCount = 8;
    }
    --m_ucBitCount;
    return m_ucBitBuffer >> m_ucBitCount & 1;
}

short CBitFile::ReadBits(short sCount)
{
    xulong ulValue = 0;
    for (; sCount > 0; --sCount)
        ulValue = ulValue << 1 | (xulong)ReadBit();
    return (short)ulValue;
}

xlong CBitFile::TryReadBits(xlong lCount, xulong *pulValue)
{
    xulong ulValue = 0;
    while (lCount > 0)
    {
        if (!m_ucBitCount)
        {
            signed char c;
            if (!ReadByte(&c))
                return 0;
            m_ucBitBuffer = (unsigned char)c;
            m_ucBitCount = 8;
        }
        const xlong lTake = std::min<xlong>(lCount, m_ucBitCount);
        m_ucBitCount = (unsigned char)(m_ucBitCount - lTake);
        lCount -= lTake;
        ulValue = ulValue << lTake | (m_ucBitBuffer >> m_ucBitCount & ((1u << lTake) - 1));
    }
    *pulValue = ulValue;
    return 1;
}

void CBitFile::WriteBit(unsigned char ucBit)
{
    m_ucBitBuffer = (unsigned char)(m_ucBitBuffer << 1 | (ucBit & 1));
    if (++m_ucBitCount < 8)
        return;
    WriteByte((signed char)m_ucBitBuffer);
    FlushBitbuf();
}

void CBitFile::WriteBits(xulong ulValue, unsigned char ucCount)
{
    while (ucCount)
    {
        --ucCount;
        WriteBit(ucCount < 32 ? ulValue >> ucCount & 1 : 0);
    }
}

void CBitFile::FlushBits()
{
    if (m_ucBitCount)
        WriteByte((signed char)(m_ucBitBuffer << (8 - m_ucBitCount)));
    FlushBitbuf();
}

void CBitFile::FlushBitbuf()
{
    m_ucBitBuffer = 0;
    m_ucBitCount = 0;
}

CBitStream::CBitStream() : m_ucBuffer(0), m_ucCount(0), m_pData(nullptr), m_lPos(0) {}

void CBitStream::InitStream(unsigned char *pData)
{
    m_pData = pData;
    FlushBitbuf();
}

xulong CBitStream::ReadBits(xlong lCount)
{
    xulong ulValue = 0;
    while (lCount > 0)
    {
        if (!m_ucCount)
        {
            m_ucBuffer = m_pData[m_lPos++];
            m_ucCount = 8;
        }
        const xlong lTake = std::min<xlong>(lCount, m_ucCount);
        m_ucCount = (unsigned char)(m_ucCount - lTake);
        lCount -= lTake;
        ulValue = ulValue << lTake | (m_ucBuffer >> m_ucCount & ((1u << lTake) - 1));
    }
    return ulValue;
}

void CBitStream::WriteBits(xulong ulValue, xlong lCount)
{
    while (lCount > 0)
    {
        const xlong lTake = std::min<xlong>(lCount, 8 - m_ucCount);
        lCount -= lTake;
        const xulong ulPart = lCount < 32 ? ulValue >> lCount & ((1u << lTake) - 1) : 0;
        m_ucBuffer = (unsigned char)(m_ucBuffer << lTake | ulPart);
        m_ucCount = (unsigned char)(m_ucCount + lTake);
        if (m_ucCount < 8)
            return;
        m_pData[m_lPos++] = m_ucBuffer;
        m_ucBuffer = 0;
        m_ucCount = 0;
    }
}

void CBitStream::FlushBits()
{
    if (m_ucCount)
        m_pData[m_lPos] = (unsigned char)(m_ucBuffer << (8 - m_ucCount));
}

void CBitStream::FlushBitbuf()
{
    m_ucBuffer = 0;
    m_ucCount = 0;
    m_lPos = 0;
}

xlong CBitStream::GetLen()
{
    return m_lPos;
}
