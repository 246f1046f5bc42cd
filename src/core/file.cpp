#include "tarvix/file.h"

#include "core/filefault.h"
#include "core/openfile.h"
#include "tarvix/byteorder.h"
#include "tarvix/error.h"
#include "tarvix/globals.h"
#include "tarvix/systemdirs.h"

#include <stdarg.h>
#include <stdio.h>
#include <string.h>

namespace
{
const int s_nMaxPrint = 10000;

const struct
{
    xlong lFlag;
    const char *pszMode;
    const char *pszAccess;
} s_Modes[] = {
    { FILE_READ, "rb", "read" },
    { FILE_WRITE, "wb", "write" },
    { FILE_READWRITE, "rb+", "read and write" },
    { FILE_APPEND, "a+", "append" },
};

unsigned char MeasureNativeEndian()
{
    const unsigned short usOne = 1;
    unsigned char ucFirst;
    memcpy(&ucFirst, &usOne, 1);
    return ucFirst ? FILE_LITTLE_ENDIAN : FILE_BIG_ENDIAN;
}
} // namespace

CFileBase::~CFileBase() {}

CFile::CFile()
    : m_pFile(nullptr), m_ucNativeEndian(MeasureNativeEndian()), m_bSwapBytes(0), m_ulFileStart(0), m_ulFileLen(0)
{
}

xlong CFile::Open(const char *pszPath, xlong lFlags)
{
    const char *pszMode = nullptr;
    const char *pszAccess = "no";
    for (const auto &mode : s_Modes)
    {
        if (lFlags & mode.lFlag)
        {
            pszMode = mode.pszMode;
            pszAccess = mode.pszAccess;
            break;
        }
    }
    if (lFlags & FILE_LITTLE_ENDIAN)
        m_bSwapBytes = m_ucNativeEndian != FILE_LITTLE_ENDIAN;
    else if (lFlags & FILE_BIG_ENDIAN)
        m_bSwapBytes = m_ucNativeEndian != FILE_BIG_ENDIAN;
    else
        m_bSwapBytes = 0;

    m_pFile = pszMode ? OpenStream(pszPath, pszMode) : nullptr;
    if (!m_pFile && pszMode && pszPath && (lFlags & FILE_MAKE_DIRS) && (lFlags & (FILE_WRITE | FILE_READWRITE)))
    {
        if (!xCreateDirsForFile(pszPath))
            return 0;
        m_pFile = OpenStream(pszPath, pszMode);
    }
    if (!m_pFile)
    {
        if (glb)
            glb->m_Error.SetErrorf("Unable to open file \"%s\" with %s access", pszPath ? pszPath : "", pszAccess);
        return 0;
    }
    m_ulFileStart = 0;
    m_ulFileLen = 0;
    return 1;
}

xlong CFile::Read(void *pBuf, xulong ulLen)
{
    if (!m_pFile || FailsFileCall())
        return xError(XERR_READ);
    if (fread(pBuf, 1, ulLen, m_pFile) == ulLen)
        return 1;
    return xError(feof(m_pFile) ? XERR_END_OF_FILE : XERR_READ);
}

xlong CFile::SetFileBounds(xulong ulStart, xulong ulLen)
{
    m_ulFileStart = ulStart;
    m_ulFileLen = ulLen;
    return 1;
}

xlong CFile::Write(const void *pBuf, xulong ulLen)
{
    if (!m_pFile || FailsFileCall() || fwrite(pBuf, 1, ulLen, m_pFile) != ulLen)
        return xError(XERR_WRITE);
    return 1;
}

xlong CFile::ReadByte(signed char *pcValue)
{
    const bool bFails = FailsFileCall();
    const int nValue = m_pFile && !bFails ? fgetc(m_pFile) : EOF;
    if (bFails)
        return xError(XERR_READ);
    if (nValue == EOF)
        return m_pFile && feof(m_pFile) ? 0 : xError(XERR_READ);
    *pcValue = (signed char)nValue;
    return 1;
}

xlong CFile::WriteByte(signed char cValue)
{
    if (!m_pFile || FailsFileCall() || fputc((unsigned char)cValue, m_pFile) == EOF)
        return xError(XERR_WRITE);
    return 1;
}

xlong CFile::ReadWord(short *psValue)
{
    const xlong lResult = Read(psValue, 2);
    if (m_bSwapBytes)
        *psValue = (short)XUWORD_FromProcToStd((unsigned short)*psValue);
    return lResult;
}

xlong CFile::WriteWord(short sValue)
{
    if (m_bSwapBytes)
        sValue = (short)XUWORD_FromProcToStd((unsigned short)sValue);
    return Write(&sValue, 2);
}

xlong CFile::ReadLong(xlong *plValue)
{
    const xlong lResult = Read(plValue, 4);
    if (m_bSwapBytes)
        *plValue = (xlong)XULONG_FromProcToStd((xulong)*plValue);
    return lResult;
}

xlong CFile::WriteLong(xlong lValue)
{
    if (m_bSwapBytes)
        lValue = (xlong)XULONG_FromProcToStd((xulong)lValue);
    return Write(&lValue, 4);
}

xlong CFile::ReadFloat(float *pfValue)
{
    const xlong lResult = Read(pfValue, 4);
    if (m_bSwapBytes)
        *pfValue = XFLOAT_FromProcToStd(*pfValue);
    return lResult;
}

xlong CFile::WriteFloat(float fValue)
{
    if (m_bSwapBytes)
        fValue = XFLOAT_FromProcToStd(fValue);
    return Write(&fValue, 4);
}

xlong CFile::ReadDouble(double *pdValue)
{
    const xlong lResult = Read(pdValue, 8);
    if (m_bSwapBytes)
        *pdValue = XDOUBLE_FromProcToStd(*pdValue);
    return lResult;
}

xlong CFile::WriteDouble(double dValue)
{
    if (m_bSwapBytes)
        dValue = XDOUBLE_FromProcToStd(dValue);
    return Write(&dValue, 8);
}

xlong CFile::Seek(xlong lOffset, short sFlags)
{
    int nWhence = sFlags;
    if (sFlags & FILE_SEEK_START)
    {
        nWhence = SEEK_SET;
        if (!(sFlags & FILE_ABSOLUTE))
            lOffset += (xlong)m_ulFileStart;
    }
    else if (sFlags & FILE_SEEK_CUR)
        nWhence = SEEK_CUR;
    else if (sFlags & FILE_SEEK_END)
    {
        nWhence = SEEK_END;
        if (m_ulFileLen && !(sFlags & FILE_ABSOLUTE))
        {
            nWhence = SEEK_SET;
            lOffset += (xlong)(m_ulFileStart + m_ulFileLen);
        }
    }
    if (!m_pFile || fseek(m_pFile, lOffset, nWhence))
        return xError(XERR_SEEK);
    return 1;
}

xlong CFile::GetPos(xulong *pulPos, xlong lFlags)
{
    const long lPos = m_pFile ? ftell(m_pFile) : -1;
    // Places have 31 bits: those behind them would come out as others.
    if (lPos < 0 || lPos > 0x7fffffff)
        return xError(XERR_FILE_POS);
    *pulPos = (xulong)lPos;
    if (!(lFlags & FILE_ABSOLUTE))
        *pulPos -= m_ulFileStart;
    return 1;
}

xlong CFile::GetSize(xulong *pulSize)
{
    xulong ulPos = 0;
    xulong ulSize = 0;
    if (!GetPos(&ulPos, 0) || !Seek(0, FILE_SEEK_END))
        return 0;
    const xlong lResult = GetPos(&ulSize, 0);
    if (!Seek((xlong)ulPos, FILE_SEEK_START) || !lResult)
        return 0;
    *pulSize = ulSize;
    return 1;
}

xlong CFile::ReadString(char *pszBuf, xlong lLen)
{
    if (!m_pFile || lLen < 1 || !fgets(pszBuf, lLen, m_pFile))
        return 0;
    return (xlong)strlen(pszBuf);
}

xlong CFile::Print(const char *pszFormat, ...)
{
    char szText[s_nMaxPrint + 1];
    va_list args;
    va_start(args, pszFormat);
    int nLen = vsnprintf(szText, sizeof(szText), pszFormat, args);
    va_end(args);
    if (nLen < 0 || nLen > s_nMaxPrint)
    {
        strcpy(szText, "**** STRING TO LONG ****\n");
        nLen = (int)strlen(szText);
    }
    return Write(szText, (xulong)nLen);
}

void CFile::Close()
{
    if (m_pFile)
        fclose(m_pFile);
    m_pFile = nullptr;
}

CFile::~CFile()
{
    Close();
}

xlong CFile::Flush()
{
    if (!m_pFile || FailsFileCall() || fflush(m_pFile) || ferror(m_pFile))
        return xError(XERR_WRITE);
    return 1;
}
