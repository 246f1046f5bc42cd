#include "tarvix/memory.h"

#include "core/blocktag.h"
#include "core/simd.h"
#include "tarvix/error.h"
#include "tarvix/globals.h"
#include "tarvix/memorytrack.h"

#include <stdint.h>
#include <string.h>

namespace
{
// Stores three vectors again and again. The end is filled backwards from the
// last byte, where the pattern's period ends too: ulPeriod bytes are there at least.
void FillTail(unsigned char *pTo, unsigned char *pEnd, const __m128i *pPattern, size_t ulPeriod)
{
    while (pTo != pEnd)
    {
        if ((size_t)(pEnd - pTo) < ulPeriod)
            pTo = pEnd - ulPeriod;
        for (size_t ul = 0; ul < ulPeriod; ul += 16, pTo += 16)
            _mm_storeu_si128((__m128i *)pTo, pPattern[ul / 16]);
    }
}

TARVIX_TARGET_AVX2 void FillPatternAvx2(unsigned char *pTo, size_t ulBytes, const __m128i *pPattern, size_t ulPeriod)
{
    unsigned char *const pEnd = pTo + ulBytes;
    const __m256i x0 = _mm256_inserti128_si256(_mm256_castsi128_si256(pPattern[0]), pPattern[1], 1);
    const __m256i x1 = _mm256_inserti128_si256(_mm256_castsi128_si256(pPattern[2]), pPattern[0], 1);
    const __m256i x2 = _mm256_inserti128_si256(_mm256_castsi128_si256(pPattern[1]), pPattern[2], 1);
    if (ulPeriod == 16 && !((uintptr_t)pTo & 1))
    {
        // A word fits any even place: from here on no store crosses a line.
        _mm256_storeu_si256((__m256i *)pTo, x0);
        pTo += 32 - ((uintptr_t)pTo & 31);
    }
    for (; pEnd - pTo >= 96; pTo += 96)
    {
        _mm256_storeu_si256((__m256i *)pTo, x0);
        _mm256_storeu_si256((__m256i *)(pTo + 32), x1);
        _mm256_storeu_si256((__m256i *)(pTo + 64), x2);
    }
    FillTail(pTo, pEnd, pPattern, ulPeriod);
}

void FillPattern(unsigned char *pTo, size_t ulBytes, const __m128i *pPattern, size_t ulPeriod)
{
    if (ulBytes >= 192 && HasAvx2())
    {
        FillPatternAvx2(pTo, ulBytes, pPattern, ulPeriod);
        return;
    }
    unsigned char *const pEnd = pTo + ulBytes;
    const __m128i x0 = pPattern[0], x1 = pPattern[1], x2 = pPattern[2];
    for (; pEnd - pTo >= 48; pTo += 48)
    {
        _mm_storeu_si128((__m128i *)pTo, x0);
        _mm_storeu_si128((__m128i *)(pTo + 16), x1);
        _mm_storeu_si128((__m128i *)(pTo + 32), x2);
    }
    FillTail(pTo, pEnd, pPattern, ulPeriod);
}

void *NewBlock(size_t ulSize)
{
    return ulSize > 0x7fffff00 ? nullptr : xAllocMem((xulong)ulSize, __FILE__, __LINE__);
}

void DeleteBlock(void *pMem)
{
    if (pMem)
        xFreeMem(pMem, __FILE__, __LINE__);
}
} // namespace

void *xAllocMemFunc(xulong ulSize, const char *pszFile, xlong lLine)
{
    if (ulSize > 0x7fffff00)
        return nullptr;
    void *pBlock = xSysAllocMem((xlong)(ulSize + s_ulTagHeader));
    return pBlock ? SetTag(pBlock, s_szPlainTag) : nullptr;
}

void *xAllocMem(xulong ulSize, const char *pszFile, xlong lLine)
{
    return xAllocMemFunc(ulSize, pszFile, lLine);
}

int xFreeMem(void *pMem, const char *pszFile, xlong lLine)
{
    if (!pMem)
    {
        if (glb)
            glb->m_Error.SetErrorf("xFreeMem: Invalid pointer (NULL pointer)");
        return 0;
    }
    if (HasTag(pMem, s_szPlainTag))
    {
        xSysFreeMem(TakeTag(pMem));
        return 1;
    }
    if (HasTag(pMem, s_szTrackedTag))
    {
        if (!glb)
            return 0;
        if (glb->m_pMemory)
            return glb->m_pMemory->Free(pMem, pszFile, lLine);
        glb->m_Error.SetErrorf("xFreemem: Memory was allocated with memory class but the memory object do not exists");
        return 0;
    }
    if (glb)
        glb->m_Error.SetErrorf("xFreeMem: invalid memory pointer (no XCAL or XFAL header)\n"
                               "Freed in file %s at line %ld",
                               pszFile ? pszFile : "", (long)lLine);
    return 0;
}

int xFreeMemFunc(void *pMem, const char *pszFile, xlong lLine)
{
    return pMem ? xFreeMem(pMem, pszFile, lLine) : 0;
}

void *xMemchr(const void *pMem, short sValue, xulong ulLen)
{
    return (void *)memchr(pMem, sValue, ulLen);
}

xlong xMemcmp(const void *pA, const void *pB, xulong ulLen)
{
    const int nResult = ulLen ? memcmp(pA, pB, ulLen) : 0;
    return (nResult > 0) - (nResult < 0);
}

void *xMemcpy(void *pTo, const void *pFrom, xulong ulLen)
{
    if (ulLen)
        memcpy(pTo, pFrom, ulLen);
    return pTo;
}

void *xMemset(void *pMem, short sValue, xulong ulLen)
{
    if (ulLen)
        memset(pMem, sValue, ulLen);
    return pMem;
}

void *xMemset16(void *pMem, unsigned short usValue, xulong ulCount)
{
    unsigned char *pTo = (unsigned char *)pMem;
    if (ulCount < 8)
    {
        for (; ulCount; --ulCount, pTo += 2)
            memcpy(pTo, &usValue, 2);
        return pMem;
    }
    const __m128i xValue = _mm_set1_epi16((short)usValue);
    const __m128i xPattern[3] = { xValue, xValue, xValue };
    FillPattern(pTo, (size_t)ulCount * 2, xPattern, 16);
    return pMem;
}

void *xMemset24(void *pMem, xulong ulValue, xulong ulCount)
{
    unsigned char *pTo = (unsigned char *)pMem;
    const unsigned char ucBytes[3] = { (unsigned char)(ulValue >> 16), (unsigned char)(ulValue >> 8),
                                       (unsigned char)ulValue };
    if (ulCount < 16)
    {
        do
        {
            memcpy(pTo, ucBytes, 3);
            pTo += 3;
        } while (ulCount-- > 1);
        return pMem;
    }
    // Sixteen pixels fill three vectors; three words of eight bytes repeat in them.
    const uint64_t ullPixel = ucBytes[0] | (uint64_t)ucBytes[1] << 8 | (uint64_t)ucBytes[2] << 16;
    const uint64_t ull0 = ullPixel | ullPixel << 24 | ullPixel << 48;
    const uint64_t ull1 = ullPixel >> 16 | ullPixel << 8 | ullPixel << 32 | ullPixel << 56;
    const uint64_t ull2 = ullPixel >> 8 | ullPixel << 16 | ullPixel << 40;
    const __m128i xPattern[3] = { _mm_set_epi64x((long long)ull1, (long long)ull0),
                                  _mm_set_epi64x((long long)ull0, (long long)ull2),
                                  _mm_set_epi64x((long long)ull2, (long long)ull1) };
    FillPattern(pTo, (size_t)ulCount * 3, xPattern, 48);
    return pMem;
}

void xMemZero(void *pMem, xulong ulLen)
{
    if (ulLen)
        memset(pMem, 0, ulLen);
}

xlong xCheckForCharInBlock(const char *pStart, const char *pEnd, char c)
{
    return pStart < pEnd && memchr(pStart, (unsigned char)c, (size_t)(pEnd - pStart));
}

xlong xCheckForCharInBlock(const char *pStart, xulong ulLen, char c)
{
    return ulLen && memchr(pStart, (unsigned char)c, ulLen);
}

void xStampBegin(const char *pszFile, xlong lLine)
{
    if (glb)
    {
        glb->m_pszNewFile = pszFile;
        glb->m_lNewLine = lLine;
    }
}

void xStampEnd()
{
    if (glb)
    {
        glb->m_pszNewFile = nullptr;
        glb->m_lNewLine = 0;
    }
}

// The library's own operators. They are not exported; a plain new that finds
// no memory gives null too, since nothing here throws.
#pragma GCC diagnostic ignored "-Wreturn-type"
#pragma GCC diagnostic ignored "-Wpragmas"
#pragma GCC diagnostic ignored "-Wnonnull"

void *operator new(size_t ulSize)
{
    return NewBlock(ulSize);
}

void *operator new[](size_t ulSize)
{
    return NewBlock(ulSize);
}

void *operator new(size_t ulSize, const std::nothrow_t &) noexcept
{
    return NewBlock(ulSize);
}

void *operator new[](size_t ulSize, const std::nothrow_t &) noexcept
{
    return NewBlock(ulSize);
}

void operator delete(void *pMem) noexcept
{
    DeleteBlock(pMem);
}

void operator delete[](void *pMem) noexcept
{
    DeleteBlock(pMem);
}

void operator delete(void *pMem, size_t) noexcept
{
    DeleteBlock(pMem);
}

void operator delete[](void *pMem, size_t) noexcept
{
    DeleteBlock(pMem);
}

void operator delete(void *pMem, const std::nothrow_t &) noexcept
{
    DeleteBlock(pMem);
}

void operator delete[](void *pMem, const std::nothrow_t &) noexcept
{
    DeleteBlock(pMem);
}
