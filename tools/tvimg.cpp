// Looks into pictures and converts them.

#include "tool.h"

#include "tarvix/bitmap.h"
#include "tarvix/jpeg.h"
#include "tarvix/memory.h"
#include "tarvix/palette.h"
#include "tarvix/pictype.h"
#include "tarvix/strings.h"

#include <string.h>

#include <memory>
#include <set>

namespace
{
const char s_szUsage[] = R"(tvimg info FILE             tells format, size, depth and palette
tvimg convert IN OUT.bmp    writes a picture as BMP

Pictures are read by their extensions, bmp and jpg. Options of convert:
  --depth 8|16|24   bits of the new picture; without it they stay as they are.
                    16 bits have 5 for each colour, 8 bits a palette
  --palette FILE    colours for 8 bits, a RIFF palette; without it 6 levels of
                    red, 7 of green and 6 of blue
  --dither          spread what the smaller depth can't hold

Exit status: 0; 1 for a file that can't be read, converted or written; 2 for a
wrong command line.
)";

struct TOptions
{
    std::string strIn, strOut, strPalette;
    long lDepth = 0; // as it is
    bool bDither = false;
};

/// The picture types, which a program with a window has from its start.
struct TTypes
{
    CJPGPic jpg;
    CBMPPic bmp;
};

// BMP words without further notice have 5 bits a colour, which the reader does not tell.
void TellFormat(CBitmap &bitmap)
{
    if (bitmap.m_lDepth != 16)
        return;
    bitmap.m_lRedBits = bitmap.m_lGreenBits = bitmap.m_lBlueBits = 5;
    bitmap.m_lRedShift = 10;
    bitmap.m_lGreenShift = 5;
    bitmap.m_lBlueShift = 0;
}

int Load(const CTool &tool, const std::string &strFile, CBitmap &bitmap)
{
    glb->m_Error.Clear();
    if (bitmap.Load(strFile.c_str(), 0))
    {
        TellFormat(bitmap);
        return EXIT_GOOD;
    }
    const char *pszText = glb->m_Error.GetErrCode() ? glb->m_Error.GetError(nullptr) : "No error";
    // The JPEG reader gives no reasons for most of what it refuses.
    if (strstr(pszText, "No error"))
        pszText = "the file is missing or damaged, or no JPEG that begins with a JFIF header";
    return tool.Fail(strFile, pszText);
}

int Info(const CTool &tool, const std::string &strFile)
{
    CBitmap bitmap;
    if (const int nCode = Load(tool, strFile, bitmap))
        return nCode;
    const char *pszName = "";
    glb->m_pPicTypeList->GetType(strFile.c_str())->GetDesc(nullptr, &pszName);
    printf("format   %s\nsize     %ld x %ld pixels\ndepth    %ld bits\n", pszName, (long)bitmap.m_lWidth,
           (long)bitmap.m_lHeight, (long)bitmap.m_lDepth);
    if (!bitmap.m_pPalette)
    {
        printf("palette  none\n");
        return EXIT_GOOD;
    }
    std::set<unsigned char> used;
    for (xlong y = 0; y < bitmap.m_lHeight; ++y)
    {
        const unsigned char *pRow = bitmap.m_pData + (size_t)y * (size_t)bitmap.m_lPitch;
        used.insert(pRow, pRow + bitmap.m_lWidth);
    }
    printf("palette  256 colours, %d in use\n", (int)used.size());
    return EXIT_GOOD;
}

void MakeLevels(CPalette &palette)
{
    for (TRGBA &colour : palette.m_Colors)
        colour.Set(255, 255, 255, 255);
    for (int i = 0; i < 6 * 7 * 6; ++i)
        palette.m_Colors[i].Set((unsigned char)(i / 42 * 51), (unsigned char)(i / 6 % 7 * 255 / 6),
                                (unsigned char)(i % 6 * 51), 255);
}

// The table through which 24 bits become 8. The library would keep one in a
// file in the present folder and believe the one that it finds there.
bool MakeIndexMap(const CPalette &palette)
{
    glb->m_pColourIndexMap = (unsigned char *)xAllocMem(0x8000, nullptr, 0);
    for (xlong i = 0; glb->m_pColourIndexMap && i < 0x8000; ++i)
    {
        const TRGBA colour((unsigned char)(i >> 10 << 3), (unsigned char)(i >> 5 << 3), (unsigned char)(i << 3));
        glb->m_pColourIndexMap[i] = (unsigned char)palette.FindMatch(&colour);
    }
    return glb->m_pColourIndexMap != nullptr;
}

bool ConvertToIndex(CBitmap &bitmap, const CPalette &palette, xlong lFlags)
{
    // Words take the way over 24 bits.
    if (bitmap.m_lDepth == 16 && !bitmap.ConvertRGB(-1, -1, 24, 8, 8, 8, 0, 8, 16, 0))
        return false;
    if (!MakeIndexMap(palette))
        return false;
    const bool bOk = bitmap.ConvertIndex(-1, -1, 8, &palette, lFlags) != 0;
    xFreeMem(glb->m_pColourIndexMap, nullptr, 0);
    glb->m_pColourIndexMap = nullptr;
    return bOk;
}

// Rows of whole longs, as the file wants them; those from a file have none.
bool PadRows(const CBitmap &bitmap, CBitmap &padded)
{
    const bool bOk =
        bitmap.m_lDepth == 8
            ? padded.CreateIndex(bitmap.m_lWidth, bitmap.m_lHeight, 8, bitmap.m_pPalette, 0) != 0
            : padded.CreateRGB(bitmap.m_lWidth, bitmap.m_lHeight, bitmap.m_lDepth, 8, 8, 8, 0, 8, 16, 0) != 0;
    for (xlong y = 0; bOk && y < bitmap.m_lHeight; ++y)
        memcpy(padded.m_pData + (size_t)y * (size_t)padded.m_lPitch,
               bitmap.m_pData + (size_t)y * (size_t)bitmap.m_lPitch,
               (size_t)bitmap.m_lWidth * (size_t)bitmap.m_lBytesPerPixel);
    return bOk;
}

int Convert(const CTool &tool, const TOptions &options, TTypes &types)
{
    CBitmap bitmap, padded;
    if (const int nCode = Load(tool, options.strIn, bitmap))
        return nCode;
    CPalette palette;
    MakeLevels(palette);
    if (!options.strPalette.empty() && !palette.Load(options.strPalette.c_str()))
        return tool.FailWithReport(options.strPalette, "the palette can't be read");
    const xlong lDither = options.bDither ? 1 | XBMP_NO_KEY_PASS : 0;
    bool bOk = true;
    if (options.lDepth && bitmap.m_lDepth != 8 && bitmap.m_lDepth != 16 && bitmap.m_lDepth != 24)
        return tool.Fail(options.strIn, std::to_string(bitmap.m_lDepth) + " bits can't be converted");
    if (options.lDepth == 8 && (bitmap.m_lDepth != 8 || !options.strPalette.empty()))
        bOk = ConvertToIndex(bitmap, palette, lDither);
    else if (options.lDepth == 16)
        bOk = bitmap.ConvertRGB(-1, -1, 16, 5, 5, 5, 10, 5, 0, lDither) != 0;
    else if (options.lDepth == 24)
        bOk = bitmap.ConvertRGB(-1, -1, 24, 8, 8, 8, 0, 8, 16, 0) != 0;
    if (!bOk || !PadRows(bitmap, padded))
        return tool.Fail(options.strIn, "there is not enough memory");
    // Under another name first: a failure leaves the old file as it was.
    const std::string strPart = options.strOut + ".part";
    if (!padded.Save(strPart.c_str(), &types.bmp, nullptr, nullptr, 0))
    {
        remove(strPart.c_str());
        return tool.Fail(options.strOut, "the file can't be written");
    }
#ifdef _WIN32
    remove(options.strOut.c_str());
#endif
    if (rename(strPart.c_str(), options.strOut.c_str()))
    {
        remove(strPart.c_str());
        return tool.Fail(options.strOut, "the file can't be replaced");
    }
    return EXIT_GOOD;
}

// @return what is wrong with the command line; empty if nothing is
std::string ReadOptions(int argc, char **argv, TOptions &options)
{
    for (int i = 2; i < argc; ++i)
    {
        const std::string strWord = argv[i];
        const bool bMore = i + 1 < argc;
        if (strWord == "--dither")
            options.bDither = true;
        else if (strWord == "--palette" && bMore)
            options.strPalette = argv[++i];
        else if (strWord == "--depth" && bMore)
        {
            const std::string strDepth = argv[++i];
            if (strDepth != "8" && strDepth != "16" && strDepth != "24")
                return "--depth takes 8, 16 or 24";
            options.lDepth = std::stol(strDepth);
        }
        else if (strWord.empty() || strWord[0] == '-')
            return "\"" + strWord + "\" is not understood";
        else if (options.strIn.empty())
            options.strIn = strWord;
        else if (options.strOut.empty())
            options.strOut = strWord;
        else
            return "\"" + strWord + "\" is one file too many";
    }
    if (options.strOut.size() < 5 || xStricmp(options.strOut.c_str() + options.strOut.size() - 4, ".bmp"))
        return "convert takes a picture and the name of a BMP file";
    if (!options.strPalette.empty() && options.lDepth != 8)
        return "--palette is for --depth 8";
    return "";
}
} // namespace

int main(int argc, char **argv)
{
    const std::string strCommand = argc > 1 ? argv[1] : "";
    if (strCommand == "--help" || strCommand == "-h")
    {
        fputs(s_szUsage, stdout);
        return EXIT_GOOD;
    }
    CTool tool("tvimg");
    if (!tool.IsReady())
        return tool.Fail("", "there is not enough memory");
    const std::unique_ptr<TTypes> pTypes = std::make_unique<TTypes>();
    if (strCommand == "info" && argc == 3)
        return Info(tool, argv[2]);
    if (strCommand != "convert")
        return tool.Usage(s_szUsage, "this takes info and a file name, or convert and two");
    TOptions options;
    const std::string strWhy = ReadOptions(argc, argv, options);
    return strWhy.empty() ? Convert(tool, options, *pTypes) : tool.Usage(s_szUsage, strWhy);
}
