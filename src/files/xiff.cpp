#include "tarvix/xiff.h"

#include "tarvix/error.h"
#include "tarvix/globals.h"

#include <string.h>

CXIFF::CXIFF() : m_lDepth(0), m_pChunkStack(nullptr), m_lReserved(0), m_lOpenChunks(0) {}

xlong CXIFF::Open(const char *pszPath, xlong lFlags)
{
    XDELETE_ARRAY(m_pChunkStack);
    m_pChunkStack = nullptr;
    if (!CFile::Open(pszPath, lFlags))
        return 0;
    m_pChunkStack = XNEW(TXIFFLevel[XIFF_MAX_DEPTH + 1]);
    if (!m_pChunkStack)
    {
        CFile::Close();
        return xError(XERR_MEMORY);
    }
    memset(m_pChunkStack, 0, sizeof(TXIFFLevel) * (XIFF_MAX_DEPTH + 1));
    m_lDepth = 0;
    m_lReserved = 0;
    m_lOpenChunks = 0;
    if (lFlags & (FILE_READ | FILE_READWRITE))
    {
        if (FindChunk("XIFF", nullptr, 0))
            return EnterChunk();
        if (glb)
            glb->m_Error.SetErrorf("\"%s\" isnt a XIFF file", pszPath);
        return 0;
    }
    if (lFlags & FILE_APPEND)
    {
        xulong ulSize = 0;
        if (!GetSize(&ulSize))
            return 0;
        if (ulSize)
            return 1;
    }
    return lFlags & (FILE_WRITE | FILE_APPEND) ? AddChunk("XIFF", 0) : 1;
}

xlong CXIFF::FindChunk(const char *pszName, xlong *plLen, xlong bContinue)
{
    if (!bContinue && !Seek(0, FILE_SEEK_START))
        return 0;
    for (;;)
    {
        xulong ulHeader = 0;
        bool bSame = false;
        xlong lLen = 0;
        if (!GetPos(&ulHeader, 0) || !ReadHeader(pszName, bSame, lLen))
            return 0;
        if (bSame)
        {
            if (!Seek((xlong)ulHeader, FILE_SEEK_START))
                return 0;
            if (plLen)
                *plLen = lLen;
            return 1;
        }
        // A negative length would lead back, and the search round in a circle.
        if (lLen < 0)
            return xError(XERR_SEEK);
        if (!Seek(lLen, FILE_SEEK_CUR))
            return 0;
    }
}

xlong CXIFF::EnterChunk()
{
    if (m_lDepth >= XIFF_MAX_DEPTH)
        return xErrorTxt("You are at the max depth for this XIFF file");
    bool bSame;
    xlong lLen = 0;
    xulong ulStart = 0;
    if (!ReadHeader("", bSame, lLen) || !GetPos(&ulStart, 0))
        return 0;
    ++m_lDepth;
    m_pChunkStack[m_lDepth].ulStart = ulStart + m_ulFileStart;
    m_pChunkStack[m_lDepth].ulLen = (xulong)lLen;
    SetLevel();
    return 1;
}

xlong CXIFF::ExitChunk()
{
    if (!m_lDepth)
        return 0;
    --m_lDepth;
    SetLevel();
    return Seek(0, FILE_SEEK_START);
}

xlong CXIFF::FirstChunk()
{
    return Seek(0, FILE_SEEK_START);
}

xlong CXIFF::NextChunk()
{
    bool bSame;
    xlong lLen = 0;
    // A negative length would lead back to what was read before.
    return ReadHeader("", bSame, lLen) && lLen >= 0 && Seek(lLen, FILE_SEEK_CUR);
}

xlong CXIFF::AddChunk(const char *pszName, xlong lLen)
{
    if (m_lDepth >= XIFF_MAX_DEPTH)
        return xErrorTxt("You are at the max depth for this XIFF file");
    xulong ulStart = 0;
    if (!Write(pszName, (xulong)strlen(pszName) + 1) || !WriteLong(lLen) || !GetPos(&ulStart, FILE_ABSOLUTE))
        return 0;
    ++m_lOpenChunks;
    ++m_lDepth;
    m_pChunkStack[m_lDepth].ulStart = ulStart;
    m_pChunkStack[m_lDepth].ulLen = (xulong)lLen;
    SetLevel();
    return 1;
}

xlong CXIFF::EndChunk()
{
    if (!m_lOpenChunks)
        return 1;
    xulong ulPos = 0, ulLen = 0;
    const xlong lLengthField = (xlong)m_pChunkStack[m_lDepth].ulStart - 4;
    if (!GetPos(&ulPos, 0) || !Seek(0, FILE_SEEK_END) || !GetPos(&ulLen, 0) ||
        !Seek(lLengthField, FILE_SEEK_START | FILE_ABSOLUTE) || !WriteLong((xlong)ulLen) ||
        !Seek((xlong)ulPos, FILE_SEEK_START))
        return 0;
    --m_lDepth;
    --m_lOpenChunks;
    SetLevel();
    return 1;
}

void CXIFF::Close()
{
    if (m_pChunkStack)
        while (m_lOpenChunks && EndChunk())
            ;
    XDELETE_ARRAY(m_pChunkStack);
    m_pChunkStack = nullptr;
    m_lOpenChunks = 0;
    m_lDepth = 0;
    CFile::Close();
}

CXIFF::~CXIFF()
{
    CXIFF::Close();
}

xlong CXIFF::ReadHeader(const char *pszName, bool &bSame, xlong &lLen)
{
    bSame = true;
    signed char c;
    do
    {
        if (!ReadByte(&c))
            return 0;
        bSame = bSame && c == (signed char)*pszName;
        if (bSame)
            ++pszName;
    } while (c);
    return ReadLong(&lLen);
}

void CXIFF::SetLevel()
{
    SetFileBounds(m_pChunkStack[m_lDepth].ulStart, m_pChunkStack[m_lDepth].ulLen);
}
