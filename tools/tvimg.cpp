// Looks into pictures and converts them.

#include "options.h"
#include "tool.h"

#include "tarvix/bitmap.h"
#include "tarvix/jpeg.h"
#include "tarvix/memory.h"
#include "tarvix/palette.h"
#include "tarvix/pictype.h"
#include "tarvix/strings.h"

#include <string.h>

#include <algorithm>
#include <memory>
#include <set>
#include <utility>

namespace
{
const char s_szUsage[] = R"(tvimg info FILE             tells format, size, depth and palette
tvimg convert IN OUT.bmp    writes a picture as BMP

Pictures are read by their extensions, bmp and jpg. Options of convert:
  --depth 8|16|24   bits of the new picture; without it they stay as they are.
                    16 bits have 5 for each colour, 8 bits a palette
  --palette FILE    colours for 8 bits, a RIFF palette; without it they are
                    chosen from the picture
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

/// A part of the colours of a picture, 5 bits a channel.
struct TBox
{
    std::vector<int> colours;
    long long llPixels = 0;
    int nChannel = 0, nSpread = 0; ///< the widest channel

    TBox(const std::vector<long> &counts, const std::vector<int> &within) : colours(within)
    {
        for (int i = 0; i < 3; ++i)
        {
            int nLeast = 31, nMost = 0;
            for (int nColour : colours)
            {
                nLeast = std::min(nLeast, nColour >> 5 * i & 31);
                nMost = std::max(nMost, nColour >> 5 * i & 31);
            }
            if (nMost - nLeast > nSpread)
            {
                nSpread = nMost - nLeast;
                nChannel = i;
            }
        }
        for (int nColour : colours)
            llPixels += counts[(size_t)nColour];
    }
};

// Blue, green and red of 24 bits, as the pictures that become 8 bits are.
const unsigned char *PixelOf(const CBitmap &bitmap, xlong lX, xlong lY)
{
    return bitmap.m_pData + (size_t)lY * (size_t)bitmap.m_lPitch + 3 * (size_t)lX;
}

// The colours of a picture are cut in two at half their pixels, again and
// again where that gains most, until there are 256 parts.
void ChooseColours(const CBitmap &bitmap, CPalette &palette)
{
    std::vector<long> counts(0x8000);
    std::vector<long long> sums(3 * 0x8000);
    for (xlong y = 0; y < bitmap.m_lHeight; ++y)
        for (xlong x = 0; x < bitmap.m_lWidth; ++x)
        {
            const unsigned char *p = PixelOf(bitmap, x, y);
            const size_t ulColour = (size_t)(p[2] >> 3 << 10 | p[1] >> 3 << 5 | p[0] >> 3);
            ++counts[ulColour];
            for (size_t i = 0; i < 3; ++i)
                sums[3 * ulColour + i] += p[i];
        }
    std::vector<int> all;
    for (int i = 0; i < 0x8000; ++i)
        if (counts[(size_t)i])
            all.push_back(i);
    std::vector<TBox> boxes = { TBox(counts, all) };
    while (boxes.size() < 256)
    {
        const auto gain = [](const TBox &box) { return box.llPixels * box.nSpread * box.nSpread; };
        const auto largest = std::max_element(boxes.begin(), boxes.end(),
                                              [&](const TBox &a, const TBox &b) { return gain(a) < gain(b); });
        if (!largest->nSpread)
            break;
        std::vector<int> &colours = largest->colours;
        const int nShift = 5 * largest->nChannel;
        std::sort(colours.begin(), colours.end(),
                  [&](int a, int b) { return std::pair(a >> nShift & 31, a) < std::pair(b >> nShift & 31, b); });
        long long llBelow = 0;
        size_t ulCut = 0;
        do
            llBelow += counts[(size_t)colours[ulCut++]];
        while (ulCut + 1 < colours.size() && llBelow * 2 < largest->llPixels);
        const std::vector<int> upper(colours.begin() + (ptrdiff_t)ulCut, colours.end());
        colours.resize(ulCut);
        *largest = TBox(counts, std::vector<int>(colours));
        boxes.push_back(TBox(counts, upper));
    }
    for (size_t i = 0; i < 256; ++i)
    {
        const TBox &box = boxes[std::min(i, boxes.size() - 1)];
        long long allSums[3] = {};
        for (int nColour : box.colours)
            for (size_t j = 0; j < 3; ++j)
                allSums[j] += sums[3 * (size_t)nColour + j];
        const long long llPixels = std::max(box.llPixels, 1LL);
        palette.m_Colors[i].Set((unsigned char)(allSums[2] / llPixels), (unsigned char)(allSums[1] / llPixels),
                                (unsigned char)(allSums[0] / llPixels), 255);
    }
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

bool ConvertToIndex(CBitmap &bitmap, CPalette &palette, bool bChoose, xlong lFlags)
{
    // Words take the way over 24 bits.
    if (bitmap.m_lDepth == 16 && !bitmap.ConvertRGB(-1, -1, 24, 8, 8, 8, 0, 8, 16, 0))
        return false;
    if (bChoose)
        ChooseColours(bitmap, palette);
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
    if (!options.strPalette.empty() && !palette.Load(options.strPalette.c_str()))
        return tool.FailWithReport(options.strPalette, "the palette can't be read");
    const xlong lDither = options.bDither ? 1 | XBMP_NO_KEY_PASS : 0;
    bool bOk = true;
    if (options.lDepth && bitmap.m_lDepth != 8 && bitmap.m_lDepth != 16 && bitmap.m_lDepth != 24)
        return tool.Fail(options.strIn, std::to_string(bitmap.m_lDepth) + " bits can't be converted");
    if (options.lDepth == 8 && (bitmap.m_lDepth != 8 || !options.strPalette.empty()))
        bOk = ConvertToIndex(bitmap, palette, options.strPalette.empty(), lDither);
    else if (options.lDepth == 16)
        bOk = bitmap.ConvertRGB(-1, -1, 16, 5, 5, 5, 10, 5, 0, lDither) != 0;
    else if (options.lDepth == 24)
        bOk = bitmap.ConvertRGB(-1, -1, 24, 8, 8, 8, 0, 8, 16, 0) != 0;
    if (!bOk || !PadRows(bitmap, padded))
        return tool.Fail(options.strIn, "there is not enough memory");
    if (!padded.Save(options.strOut.c_str(), &types.bmp, nullptr, nullptr, 0))
        return tool.Fail(options.strOut, "the file can't be written");
    return EXIT_GOOD;
}

// @return what is wrong with the command line; empty if nothing is
std::string ReadOptions(const std::vector<std::string> &args, std::vector<std::string> &words, TOptions &options)
{
    COptions known;
    known.Switch("--dither", options.bDither);
    known.Text("--palette", "a palette file", options.strPalette);
    known.Value("--depth", "8, 16 or 24",
                [&options](const std::string &str)
                {
                    options.lDepth = atoi(str.c_str());
                    return str == "8" || str == "16" || str == "24";
                });
    return known.Read(args, words);
}

std::string ReadConvert(const std::vector<std::string> &words, TOptions &options)
{
    if (words.size() > 3)
        return "\"" + words[3] + "\" is one file too many";
    if (words.size() == 3)
    {
        options.strIn = words[1];
        options.strOut = words[2];
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
    const std::vector<std::string> args(argv + 1, argv + argc);
    if (IsHelp(args, s_szUsage))
        return EXIT_GOOD;
    CTool tool("tvimg");
    if (!tool.IsReady())
        return tool.Fail("", "there is not enough memory");
    const std::unique_ptr<TTypes> pTypes = std::make_unique<TTypes>();
    TOptions options;
    std::vector<std::string> words;
    std::string strWhy = ReadOptions(args, words, options);
    if (!strWhy.empty())
        return tool.Usage(strWhy);
    if (words.size() == 2 && words[0] == "info")
        return Info(tool, words[1]);
    if (words.empty() || words[0] != "convert")
        return tool.Usage("this takes info and a file name, or convert and two");
    strWhy = ReadConvert(words, options);
    return strWhy.empty() ? Convert(tool, options, *pTypes) : tool.Usage(strWhy);
}
