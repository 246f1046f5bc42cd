#include "pictures/bitmapblock.h"
#include "pictures/scrambled.h"
#include "tarvix/bitmap.h"
#include "tarvix/crypt.h"
#include "tarvix/error.h"
#include "tarvix/globals.h"
#include "tarvix/pictype.h"
#include "tarvix/strings.h"
#include "tarvix/wholefile.h"

#include <algorithm>
#include <stdint.h>
#include <string.h>
#include <utility>

namespace
{
const char s_szNoError[] = "BMP - No error";

enum
{
    BMP_TYPE = 0x4d42, // "BM"
    BMP_FILE_HEADER = 14,
    BMP_INFO_HEADER = 40,
    BMP_CORE_HEADER = 12,
    BMP_UNPACKED = 0,
    BMP_RLE8 = 1,
    // Blocks up to these sizes are made without asking whether the file can fill them.
    FREE_UNPACKED = 0x100000,
    FREE_PACKED = 0x4000000
};

// The fields of both headers that are looked at.
struct THeaders
{
    xulong ulType;
    xulong ulPixels; // offset of the rows
    xulong ulInfoSize;
    xlong lWidth;
    xlong lHeight;
    xulong ulBitCount;
    xulong ulCompression;
    xulong ulColours; // used entries of the colour table; 0 means 256
};

xulong Get16(const unsigned char *p)
{
    return p[0] | (xulong)p[1] << 8;
}

xulong Get32(const unsigned char *p)
{
    return Get16(p) | Get16(p + 2) << 16;
}

void Put16(unsigned char *p, xulong ulValue)
{
    p[0] = (unsigned char)ulValue;
    p[1] = (unsigned char)(ulValue >> 8);
}

void Put32(unsigned char *p, xulong ulValue)
{
    Put16(p, ulValue);
    Put16(p + 2, ulValue >> 16);
}

void ParseHeaders(const unsigned char *p, THeaders &headers)
{
    const unsigned char *pInfo = p + BMP_FILE_HEADER;
    headers.ulType = Get16(p);
    headers.ulPixels = Get32(p + 10);
    headers.ulInfoSize = Get32(pInfo);
    headers.lWidth = (xlong)Get32(pInfo + 4);
    headers.lHeight = (xlong)Get32(pInfo + 8);
    headers.ulBitCount = Get16(pInfo + 14);
    headers.ulCompression = Get32(pInfo + 16);
    headers.ulColours = Get32(pInfo + 32);
}

// Whether a large block is worth making: a header alone must not cost gigabytes.
bool CanFill(CFile *pFile, const THeaders &headers, xlong lSize)
{
    const bool bPacked = headers.ulCompression == BMP_RLE8;
    if (lSize <= (bPacked ? FREE_PACKED : FREE_UNPACKED))
        return true;
    xulong ulPos, ulFile;
    if (!pFile->GetPos(&ulPos, 0) || !pFile->GetSize(&ulFile))
        return false;
    // A pair of bytes makes 255 pixels at most.
    const int64_t llRest = (int64_t)ulFile - ulPos;
    return (bPacked ? llRest * 128 : llRest) >= lSize;
}

// Writes each row in the form that BMP wants, first and third bytes exchanged.
// A row ends with the pixel that crosses the pitch; what lies behind the block
// is written as 0.
xlong WriteExchanged(CFile *pFile, const CBitmapBase &bitmap, bool bTopFirst)
{
    const size_t ulPitch = (size_t)bitmap.m_lPitch;
    const size_t ulRow = (ulPitch + 2) / 3 * 3;
    const size_t ulBlock = ulPitch * (size_t)bitmap.m_lHeight;
    unsigned char *pRow = XNEW(unsigned char[ulRow + 1]);
    if (!pRow)
        return 0;
    xlong lOk = 1;
    for (xlong i = 0; lOk && i < bitmap.m_lHeight; ++i)
    {
        const size_t ulStart = (size_t)(bTopFirst ? i : bitmap.m_lHeight - 1 - i) * ulPitch;
        const size_t ulThere = std::min(ulRow, ulBlock - ulStart);
        memcpy(pRow, bitmap.m_pData + ulStart, ulThere);
        memset(pRow + ulThere, 0, ulRow - ulThere);
        for (size_t x = 0; x < ulRow; x += 3)
            std::swap(pRow[x], pRow[x + 2]);
        lOk = pFile->Write(pRow, (xulong)ulRow);
    }
    XDELETE_ARRAY(pRow);
    return lOk;
}

xlong WriteRows(CFile *pFile, const CBitmapBase &bitmap)
{
    for (xlong y = bitmap.m_lHeight - 1; y >= 0; --y)
        if (!pFile->Write(bitmap.m_pData + (size_t)y * (size_t)bitmap.m_lPitch, (xulong)bitmap.m_lPitch))
            return 0;
    return 1;
}

xlong WritePalette(CFile *pFile, const CPalette &palette)
{
    unsigned char aucTable[256 * 4];
    for (xlong i = 0; i < 256; ++i)
    {
        aucTable[4 * i] = palette.m_Colors[i].ucBlue;
        aucTable[4 * i + 1] = palette.m_Colors[i].ucGreen;
        aucTable[4 * i + 2] = palette.m_Colors[i].ucRed;
        aucTable[4 * i + 3] = 0;
    }
    return pFile->Write(aucTable, sizeof aucTable);
}
} // namespace

CBMPPic::CBMPPic() : m_bCrypt(0)
{
    m_pszError = s_szNoError;
    if (glb && glb->m_pPicTypeList)
        glb->m_pPicTypeList->Register(this);
}

xlong CBMPPic::Load(CFile *pFile, CBitmapBase *pBitmap, void *pParameters)
{
    if (glb->m_pfnLoadData)
        glb->m_pfnLoadData();
    m_pszError = s_szNoError;
    m_bCrypt = IsScrambled(pFile, BMP_TYPE, 0xffff);
    unsigned char aucHeaders[BMP_FILE_HEADER + BMP_INFO_HEADER];
    if (!FileRead(pFile, aucHeaders, sizeof aucHeaders))
        return SetError("BMP - Failed to read file header", 0);
    THeaders headers;
    ParseHeaders(aucHeaders, headers);
    if (headers.ulType != BMP_TYPE)
        return SetError("BMP - Not a (windows) bitmap file", 0);
    if (headers.ulInfoSize == BMP_CORE_HEADER)
        return SetError("BMP - Unsupported bitmap file format. (BITMAPCOREHEADER)", 0);
    if (headers.ulInfoSize != BMP_INFO_HEADER)
        return SetError("BMP - Unsupported bitmap file format.", 0);
    if (headers.ulBitCount < 8)
        return SetError("BMP - Unsupported number of colors (<256)", 0);
    if (headers.ulCompression != BMP_UNPACKED && headers.ulCompression != BMP_RLE8)
        return SetError("BMP - There is no support for compressed bitmaps which aren't 8bit", 0);
    if (headers.ulBitCount == 8)
    {
        pBitmap->m_bRGB = 0;
        if (!ReadColourTable(pFile, pBitmap, headers.ulColours))
            return 0;
    }
    else
        pBitmap->m_bRGB = 1;

    if (headers.ulPixels > 0x7fffffff || !pFile->Seek((xlong)headers.ulPixels, FILE_SEEK_START))
        return SetError("Error reading file", 0);
    const xlong lBytesPerPixel = (xlong)headers.ulBitCount / 8;
    const int64_t llRowBytes = (int64_t)lBytesPerPixel * headers.lWidth;
    const xlong lSize = RowsSize(llRowBytes, headers.lHeight);
    if (lSize < 0)
        return SetError("Out of memory", 0);
    if (!CanFill(pFile, headers, lSize))
        return SetError("Error reading file", 0);
    unsigned char *pData = XNEW(unsigned char[(size_t)lSize]);
    if (!pData)
        return SetError("Out of memory", 0);
    memset(pData, 0, (size_t)lSize);

    // The members go with the block from here on, so that a picture which turns
    // out to be cut off is still safe to draw.
    XDELETE_ARRAY(pBitmap->m_pData);
    pBitmap->m_pData = pData;
    pBitmap->m_lHeight = headers.lHeight;
    pBitmap->m_lBytesPerPixel = lBytesPerPixel;
    pBitmap->m_lDepth = (xlong)headers.ulBitCount;
    pBitmap->m_lWidth = headers.lWidth;
    pBitmap->m_lRedBits = pBitmap->m_lGreenBits = pBitmap->m_lBlueBits = 8;
    pBitmap->m_lPitch = (xlong)llRowBytes;
    pBitmap->m_lRedShift = 0;
    pBitmap->m_lGreenShift = 8;
    pBitmap->m_lBlueShift = 16;
    pBitmap->m_rcClip.SetXYWH(0, 0, headers.lWidth, headers.lHeight);
    return headers.ulCompression == BMP_RLE8 ? ReadRuns(pFile, pBitmap) : ReadRows(pFile, pBitmap);
}

xlong CBMPPic::Load(const char *pszFileName, CBitmapBase *pBitmap, void *pParameters)
{
    CFile file;
    if (!file.Open(pszFileName, FILE_READ))
    {
        // CBitmap::Load hands on the type's text.
        m_pszError = glb->m_szErrorBuffer;
        return glb->m_Error.SetErrorf("BMP - Unable to open \"%s\"", pszFileName);
    }
    const xlong lOk = Load(&file, pBitmap, nullptr);
    file.Close();
    return lOk;
}

xlong CBMPPic::Save(CFile *pFile, CBitmapBase *pBitmap, void *pParameters, CRect *pArea, xlong lFlags)
{
    if (pArea)
        return SetError("BMP - Feature isnt implemented yet", 0);
    if (!pBitmap->m_pData)
        return SetError("BMP - Failed to write the file header", 0);
    unsigned char aucHeaders[BMP_FILE_HEADER + BMP_INFO_HEADER] = {};
    unsigned char *pInfo = aucHeaders + BMP_FILE_HEADER;
    Put16(aucHeaders, BMP_TYPE);
    Put32(pInfo, BMP_INFO_HEADER);
    Put32(pInfo + 4, (xulong)pBitmap->m_lWidth);
    Put32(pInfo + 8, (xulong)pBitmap->m_lHeight);
    Put16(pInfo + 12, 1); // planes
    Put16(pInfo + 14, (xulong)pBitmap->m_lDepth);
    if (!pFile->Write(aucHeaders, sizeof aucHeaders))
        return SetError("BMP - Failed to write the file header", 0);
    if (pBitmap->m_lDepth == 8 && (!pBitmap->m_pPalette || !WritePalette(pFile, *pBitmap->m_pPalette)))
        return 0;
    xulong ulPixels = 0, ulSize = 0;
    const bool bRedFirst = pBitmap->m_lDepth == 24 && pBitmap->m_lRedShift == 16 && pBitmap->m_lGreenShift == 8 &&
                           pBitmap->m_lBlueShift == 0;
    xlong lOk = pFile->GetPos(&ulPixels, 0);
    if (lOk)
        lOk = bRedFirst ? WriteExchanged(pFile, *pBitmap, (lFlags & 2) != 0) : WriteRows(pFile, *pBitmap);
    Put32(aucHeaders + 10, ulPixels);
    lOk = lOk && pFile->GetPos(&ulSize, 0);
    Put32(aucHeaders + 2, ulSize);
    if (!lOk || !pFile->Seek(0, FILE_SEEK_START) || !pFile->Write(aucHeaders, BMP_FILE_HEADER))
        return SetError("BMP - Failed to write the file header", 0);
    return 1;
}

xlong CBMPPic::Save(const char *pszFileName, CBitmapBase *pBitmap, void *pParameters, CRect *pArea, xlong lFlags)
{
    CWholeFile whole;
    CFile file;
    if (!whole.BeginWithDirs(pszFileName) || !file.Open(whole.GetPath(), FILE_WRITE))
        return SetError("BMP - Unable to open file", 0);
    xlong lOk = Save(&file, pBitmap, pParameters, pArea, lFlags);
    if (lOk && !file.Flush())
        lOk = SetError("BMP - Failed to write the file header", 0);
    file.Close();
    return lOk && !whole.Commit() ? SetError("BMP - Failed to write the file header", 0) : lOk;
}

xlong CBMPPic::IsType(const char *pszName, const char *pszExtension)
{
    return pszExtension && !xStricmp(pszExtension, "bmp");
}

xlong CBMPPic::GetDesc(const char **ppszExtension, const char **ppszDescription)
{
    if (ppszExtension)
        *ppszExtension = "bmp";
    if (ppszDescription)
        *ppszDescription = "Windows Bitmap";
    return 1;
}

xlong CBMPPic::FileRead(CFile *pFile, void *pBuffer, xulong ulLen)
{
    if (!pFile->Read(pBuffer, ulLen))
        return 0;
    if (m_bCrypt)
        xDecrypt(pBuffer, ulLen);
    return 1;
}

xlong CBMPPic::FileReadbyte(CFile *pFile, unsigned char *pucValue)
{
    if (!pFile->ReadByte((signed char *)pucValue))
        return 0;
    if (m_bCrypt)
        xDecrypt(pucValue, 1);
    return 1;
}

// Replaces the palette without deleting the earlier one, which its maker may still use.
xlong CBMPPic::ReadColourTable(CFile *pFile, CBitmapBase *pBitmap, xulong ulColours)
{
    CPalette *pPalette = XNEW(CPalette);
    if (!pPalette)
        return SetError("Out of memory", 0);
    pBitmap->m_pPalette = pPalette;
    if (!ulColours)
        ulColours = 256;
    unsigned char aucTable[256 * 4];
    if (ulColours > 256 || !FileRead(pFile, aucTable, ulColours * 4))
        return SetError("BMP - Failed to read colortable", 0);
    for (xulong i = 0; i < ulColours; ++i)
        pPalette->m_Colors[i].Set(aucTable[4 * i + 2], aucTable[4 * i + 1], aucTable[4 * i], 255);
    return 1;
}

xlong CBMPPic::ReadRows(CFile *pFile, CBitmapBase *pBitmap)
{
    const xlong lRowBytes = pBitmap->m_lPitch;
    const xlong lPadding = lRowBytes % 4 ? 4 - lRowBytes % 4 : 0;
    for (xlong y = pBitmap->m_lHeight - 1; lRowBytes && y >= 0; --y)
        if (!FileRead(pFile, pBitmap->m_pData + (size_t)y * (size_t)lRowBytes, (xulong)lRowBytes) ||
            (lPadding && !pFile->Seek(lPadding, FILE_SEEK_CUR)))
            return SetError("Error reading file", 0);
    return 1;
}

// Some writers count the padding of a row among its pixels: it is dropped. A
// run that goes farther, or lies above the picture, is bad data.
xlong CBMPPic::ReadRuns(CFile *pFile, CBitmapBase *pBitmap)
{
    enum
    {
        END_OF_LINE = 0,
        END_OF_BITMAP = 1,
        DELTA = 2
    };
    const int64_t llRowBytes = pBitmap->m_lPitch, llPadded = (llRowBytes + 3) & ~(int64_t)3;
    int64_t llX = 0, llY = (int64_t)pBitmap->m_lHeight - 1;
    for (;;)
    {
        unsigned char ucCount, ucValue;
        if (!FileReadbyte(pFile, &ucCount) || !FileReadbyte(pFile, &ucValue))
            return SetError("Error reading file", 0);
        const bool bLiteral = !ucCount && ucValue > DELTA;
        if (ucCount || bLiteral)
        {
            const xulong ulRun = bLiteral ? ucValue : ucCount;
            unsigned char aucRun[256];
            if (!bLiteral)
                memset(aucRun, ucValue, ulRun);
            else if (!FileRead(pFile, aucRun, ulRun + ulRun % 2))
                return SetError("Error reading file", 0);
            if (llY < 0 || llX + ulRun > llPadded)
                return SetError("Error reading file", 0);
            if (llX < llRowBytes)
                memcpy(pBitmap->m_pData + llY * llRowBytes + llX, aucRun,
                       (size_t)std::min((int64_t)ulRun, llRowBytes - llX));
            llX += ulRun;
        }
        else if (ucValue == END_OF_LINE)
        {
            llX = 0;
            --llY;
        }
        else if (ucValue == END_OF_BITMAP)
            return 1;
        else
        {
            unsigned char ucRight, ucUp;
            if (!FileReadbyte(pFile, &ucRight) || !FileReadbyte(pFile, &ucUp))
                return SetError("Error reading file", 0);
            llX += ucRight;
            llY -= ucUp;
        }
    }
}
