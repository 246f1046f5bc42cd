#include "tarvix/rle.h"

#include "tarvix/bitfile.h"
#include "tarvix/error.h"
#include "tarvix/memory.h"

#include <algorithm>
#include <math.h>
#include <stdint.h>

namespace
{
const xlong s_lLongestRun = 16;

void WriteRun(CBitStream &to, xulong ulValue, xlong lCopies, xlong lBits)
{
    if (lCopies > 1)
        to.WriteBits((xulong)(s_lLongestRun | (lCopies - 1)), 5);
    else
        to.WriteBits(0, 1);
    to.WriteBits(ulValue, lBits);
}

// As the low half of a 64-bit conversion, which out of range gives 0 there.
xulong ToFixed(double d)
{
    return d > -9.2e18 && d < 9.2e18 ? (xulong)(int64_t)d : 0;
}
} // namespace

CRle::CRle() : m_lFracBits(0), m_lIntBits(0), m_lTotalBits(0) {}

void CRle::Init(xlong lIntBits, xlong lFracBits)
{
    m_lIntBits = lIntBits;
    m_lFracBits = lFracBits;
    m_lTotalBits = lIntBits + lFracBits;
    if (m_lTotalBits >= 32)
        xErrorTxt("RLE Bit count can't exceed 32!");
}

xlong CRle::Pack(const unsigned char *pSource, unsigned char *pDest, xlong lCount)
{
    CBitStream from, to;
    from.InitStream((unsigned char *)pSource);
    to.InitStream(pDest);
    xulong ulValue = 0;
    xlong lCopies = 0;
    for (; lCount > 0; --lCount)
    {
        const xulong ulNext = from.ReadBits(m_lTotalBits);
        if (lCopies && (ulNext != ulValue || lCopies == s_lLongestRun))
        {
            WriteRun(to, ulValue, lCopies, m_lTotalBits);
            lCopies = 0;
        }
        ulValue = ulNext;
        ++lCopies;
    }
    if (lCopies)
        WriteRun(to, ulValue, lCopies, m_lTotalBits);
    to.FlushBits();
    return to.GetLen() + (to.m_ucCount != 0);
}

xlong CRle::Unpack(const unsigned char *pSource, unsigned char *pDest, xlong lSize)
{
    return Unpack(pSource, pDest, lSize, 0x7fffffff);
}

xlong CRle::Unpack(const unsigned char *pSource, unsigned char *pDest, xlong lSize, xlong lDestSize)
{
    CBitStream from, to;
    from.InitStream((unsigned char *)pSource);
    to.InitStream(pDest);
    const int64_t llBits = std::max<xlong>(m_lTotalBits, 0);
    const auto Has = [&](int64_t llCount) { return (int64_t)(lSize - from.GetLen()) * 8 + from.m_ucCount >= llCount; };
    while (from.GetLen() < lSize)
    {
        xlong lCopies = 1;
        if (from.ReadBits(1))
        {
            if (!Has(4))
                break;
            lCopies = (xlong)from.ReadBits(4) + 1;
        }
        if (!Has(llBits))
            break;
        const xulong ulValue = from.ReadBits(m_lTotalBits);
        if ((int64_t)to.GetLen() * 8 + to.m_ucCount + lCopies * llBits > (int64_t)lDestSize * 8)
            return 0;
        for (; lCopies; --lCopies)
            to.WriteBits(ulValue, m_lTotalBits);
    }
    to.FlushBits();
    return to.GetLen() + (to.m_ucCount != 0);
}

xlong CRle::PackDoubles(const double *pSource, char *pDest, xlong lCount)
{
    const xlong lBytes = FieldBytes(lCount);
    unsigned char *const pFields = lBytes ? XNEW(unsigned char[lBytes]) : nullptr;
    if (!pFields)
        return 0;
    CBitStream to;
    to.InitStream(pFields);
    for (xlong l = 0; l < lCount; ++l)
        to.WriteBits(ToFixed(ldexp(pSource[l], m_lFracBits)), m_lTotalBits);
    to.FlushBits();
    const xlong lResult = Pack(pFields, (unsigned char *)pDest, lCount);
    XDELETE_ARRAY(pFields);
    return lResult;
}

xlong CRle::UnpackDoubles(double *pDest, const char *pSource, xlong lSize, xlong lCount)
{
    const xlong lBytes = FieldBytes(lCount);
    unsigned char *const pFields = lBytes ? XNEW(unsigned char[lBytes]) : nullptr;
    if (!pFields)
        return 0;
    const int64_t llUnpackedBits = (int64_t)Unpack((const unsigned char *)pSource, pFields, lSize, lBytes) * 8;
    CBitStream from;
    from.InitStream(pFields);
    xlong lDone = 0;
    for (; lDone < lCount && (lDone + (int64_t)1) * m_lTotalBits <= llUnpackedBits; ++lDone)
    {
        const xulong ulValue = from.ReadBits(m_lTotalBits);
        if (m_lFracBits)
            pDest[lDone] = ldexp((double)ulValue, -m_lFracBits);
    }
    XDELETE_ARRAY(pFields);
    return lDone == lCount;
}

// Room for the values and for what a run may write past them. 0 for what is no size.
xlong CRle::FieldBytes(xlong lCount)
{
    const int64_t llBytes = (m_lTotalBits + (int64_t)1) * lCount / 8 + 2;
    return lCount < 0 || m_lTotalBits < 0 || llBytes > 0x7fffff00 ? 0 : (xlong)llBytes;
}
