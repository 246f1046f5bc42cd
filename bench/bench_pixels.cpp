// Copies and conversions of pixels, and the palette search, against memcpy,
// SDL2, pixman and plain loops. What a peer makes of the same picture is
// compared first, as far as it rounds as we do.
#include "paired.h"

#include "tarvix/bitmap.h"
#include "tarvix/globals.h"
#include "tarvix/start.h"

#include <SDL2/SDL.h>
#include <pixman.h>

#include <cstring>
#include <functional>
#include <memory>
#include <random>
#include <vector>

namespace
{
struct TFormat
{
    const char *pszName;
    int nDepth;
    int anBits[3];   // red, green, blue
    int anShifts[3]; // as CBitmapBase counts them
    Uint32 uSdl;
    pixman_format_code_t pixman; // 0 for none
};

const TFormat s_8 = { "8", 8, {}, {}, SDL_PIXELFORMAT_INDEX8, PIXMAN_c8 };
const TFormat s_555 = { "555", 16, { 5, 5, 5 }, { 10, 5, 0 }, SDL_PIXELFORMAT_RGB555, PIXMAN_x1r5g5b5 };
const TFormat s_565 = { "565", 16, { 5, 6, 5 }, { 11, 5, 0 }, SDL_PIXELFORMAT_RGB565, PIXMAN_r5g6b5 };
const TFormat s_24 = { "24", 24, { 8, 8, 8 }, { 0, 8, 16 }, SDL_PIXELFORMAT_BGR24, PIXMAN_r8g8b8 };
const TFormat s_24R = { "24r", 24, { 8, 8, 8 }, { 16, 8, 0 }, SDL_PIXELFORMAT_RGB24, PIXMAN_b8g8r8 };

struct TSize
{
    const char *pszName;
    int nWidth, nHeight;
};

const TSize s_Sizes[] = { { "8x8", 8, 8 }, { "64x64", 64, 64 }, { "640x480", 640, 480 } };

// One picture in the three libraries' hands: they share the pixels of ours.
class CPicture
{
public:
    CPicture(const TFormat &format, const TSize &size, unsigned uSeed) : m_Format(format)
    {
        const int *b = format.anBits, *s = format.anShifts;
        if (format.nDepth == 8)
        {
            CPalette palette;
            std::mt19937 random(99);
            for (TRGBA &colour : palette.m_Colors)
                colour = TRGBA((unsigned char)random(), (unsigned char)random(), (unsigned char)random(), 255);
            m_Bitmap.CreateIndex(size.nWidth, size.nHeight, 8, &palette, 0);
        }
        else
            m_Bitmap.CreateRGB(size.nWidth, size.nHeight, format.nDepth, b[0], b[1], b[2], s[0], s[1], s[2], 0);
        // Runs of the key colour between other pixels, as in a sprite.
        std::mt19937 random(uSeed);
        const size_t ulPixels = (size_t)size.nWidth * size.nHeight;
        const size_t ulBytes = (size_t)format.nDepth / 8;
        for (size_t i = 0, ulKey = 4; i < ulPixels; ++i)
        {
            if (i >= ulKey + 20)
                ulKey = i + random() % 20;
            for (size_t j = 0; j < ulBytes; ++j)
                m_Bitmap.m_pData[i * ulBytes + j] = i < ulKey ? 0x5a : (unsigned char)random();
            if (format.uSdl == SDL_PIXELFORMAT_RGB555)
                m_Bitmap.m_pData[i * ulBytes + 1] &= 0x7f;
        }
        m_pSurface = SDL_CreateRGBSurfaceWithFormatFrom(m_Bitmap.m_pData, size.nWidth, size.nHeight, format.nDepth,
                                                        m_Bitmap.m_lPitch, format.uSdl);
        SDL_SetSurfaceBlendMode(m_pSurface, SDL_BLENDMODE_NONE);
        if (m_Bitmap.m_pPalette)
        {
            SDL_Color aColors[256];
            for (int i = 0; i < 256; ++i)
            {
                const TRGBA &c = m_Bitmap.m_pPalette->m_Colors[i];
                aColors[i] = { c.ucRed, c.ucGreen, c.ucBlue, 255 };
                m_Indexed.rgba[i] = 0xff000000u | (uint32_t)c.ucRed << 16 | (uint32_t)c.ucGreen << 8 | c.ucBlue;
            }
            m_Indexed.color = 1;
            SDL_SetPaletteColors(m_pSurface->format->palette, aColors, 0, 256);
        }
        m_pImage = pixman_image_create_bits(format.pixman, size.nWidth, size.nHeight, (uint32_t *)m_Bitmap.m_pData,
                                            m_Bitmap.m_lPitch);
        if (m_pImage && format.nDepth == 8)
            pixman_image_set_indexed(m_pImage, &m_Indexed);
    }
    ~CPicture()
    {
        SDL_FreeSurface(m_pSurface);
        if (m_pImage)
            pixman_image_unref(m_pImage);
    }

    void SetKey()
    {
        Uint32 uKey = 0;
        memcpy(&uKey, m_Bitmap.m_pData, (size_t)m_Format.nDepth / 8);
        SDL_SetColorKey(m_pSurface, SDL_TRUE, uKey);
    }
    std::vector<unsigned char> Bytes() const
    {
        return { m_Bitmap.m_pData, m_Bitmap.m_pData + (size_t)m_Bitmap.m_lPitch * m_Bitmap.m_lHeight };
    }

    const TFormat &m_Format;
    CBitmap m_Bitmap;
    SDL_Surface *m_pSurface;
    pixman_image_t *m_pImage;
    pixman_indexed_t m_Indexed;
};

void CompareCopies(paired::CTable &table, const TFormat &format)
{
    for (const TSize &size : s_Sizes)
    {
        CPicture from(format, size, 1), to(format, size, 2);
        const auto Ours = [&] { to.m_Bitmap.Blt(&from.m_Bitmap, 0, 0, 0, 0, -1, -1, 0, 0, 0); };
        const size_t ulRow = (size_t)size.nWidth * format.nDepth / 8, ulPitch = (size_t)from.m_Bitmap.m_lPitch;
        // One call, where the rows lie without gaps; as a loop of rows it would be slower.
        const auto Peer = [&]
        {
            memcpy(to.m_Bitmap.m_pData, from.m_Bitmap.m_pData, ulPitch * (size_t)size.nHeight);
            paired::Keep(to.m_Bitmap.m_pData);
        };
        const auto Rows = [&]
        {
            for (int y = 0; y < size.nHeight; ++y)
            {
                memcpy(to.m_Bitmap.m_pData + (size_t)y * ulPitch, from.m_Bitmap.m_pData + (size_t)y * ulPitch, ulRow);
                paired::Keep(to.m_Bitmap.m_pData);
            }
        };
        Ours();
        const std::string strName = std::string("copy ") + format.pszName;
        if (from.Bytes() != to.Bytes())
        {
            table.Differs(strName, size.pszName, "memcpy");
            continue;
        }
        // A picture that is copied row by row, as from a larger one, is
        // measured against rows; a small one lives on the call.
        if (size.nWidth > 64)
            table.Row(strName, size.pszName, paired::Measure(Ours, Peer), "memcpy", 0.9);
        else
            table.Row(strName, size.pszName, paired::Measure(Ours, Rows), "memcpy rows", 0.9);
    }
}

enum EMode
{
    PLAIN,
    KEYED,
    DITHERED
};

void CompareConversion(paired::CTable &table, const TFormat &fmtFrom, const TFormat &fmtTo, EMode mode, double dGoal)
{
    static const char *const s_apszModes[] = { "", " keyed", " dithered" };
    const std::string strName = std::string(fmtFrom.pszName) + " to " + fmtTo.pszName + s_apszModes[mode];
    for (const TSize &size : s_Sizes)
    {
        CPicture from(fmtFrom, size, 1), to(fmtTo, size, 2), toPeer(fmtTo, size, 2);
        const xlong lKeyed = mode == KEYED, lDither = mode == DITHERED;
        const auto Ours = [&] { to.m_Bitmap.Blt(&from.m_Bitmap, 0, 0, 0, 0, -1, -1, lKeyed, lDither, 0); };
        if (mode == KEYED)
            from.SetKey();
        const auto Sdl = [&] { SDL_BlitSurface(from.m_pSurface, nullptr, toPeer.m_pSurface, nullptr); };
        const auto Pixman = [&]
        {
            pixman_image_composite32(PIXMAN_OP_SRC, from.m_pImage, nullptr, toPeer.m_pImage, 0, 0, 0, 0, 0, 0,
                                     size.nWidth, size.nHeight);
        };
        Ours();
        Sdl();
        // Pictures of 5 bits are widened by the peers to 255, by us to 248.
        const bool bSameRules = fmtFrom.nDepth != 16 && mode != DITHERED;
        if (bSameRules && to.Bytes() != toPeer.Bytes())
        {
            table.Differs(strName, size.pszName, "SDL2");
            continue;
        }
        table.Row(strName, size.pszName, paired::Measure(Ours, Sdl), mode == DITHERED ? "SDL2 plain" : "SDL2", dGoal);
        // pixman knows no colour key.
        if (mode == KEYED || !from.m_pImage || !toPeer.m_pImage)
            continue;
        table.Row(strName, size.pszName, paired::Measure(Ours, Pixman), mode == DITHERED ? "pixman plain" : "pixman",
                  dGoal);
    }
}

// The search as one would write it down: squares from a table, an early end.
unsigned short s_ausSquares[256];

xlong PlainMatch(const CPalette &palette, const TRGBA &colour)
{
    if (palette.m_ucFirst >= palette.m_ucLast)
        return palette.m_ucFirst;
    xlong lBest = 196608, lIndex = palette.m_ucFirst;
    for (xlong i = palette.m_ucFirst; i < palette.m_ucLast; ++i)
    {
        const TRGBA &entry = palette.m_Colors[i];
        const xlong lDistance = s_ausSquares[std::abs(entry.ucRed - colour.ucRed)] +
                                s_ausSquares[std::abs(entry.ucGreen - colour.ucGreen)] +
                                s_ausSquares[std::abs(entry.ucBlue - colour.ucBlue)];
        if (!lDistance)
            return i;
        if (lDistance < lBest)
        {
            lBest = lDistance;
            lIndex = i;
        }
    }
    return lIndex;
}

xlong PlainSecond(const CPalette &palette, const TRGBA &colour)
{
    const xlong lMatch = PlainMatch(palette, colour);
    xlong lBest = 196608, lIndex = palette.m_ucFirst;
    for (xlong i = palette.m_ucFirst; i <= palette.m_ucLast; ++i)
    {
        const TRGBA &entry = palette.m_Colors[i];
        const xlong lDistance = s_ausSquares[std::abs(entry.ucRed - colour.ucRed)] +
                                s_ausSquares[std::abs(entry.ucGreen - colour.ucGreen)] +
                                s_ausSquares[std::abs(entry.ucBlue - colour.ucBlue)];
        if (lDistance < lBest && i != lMatch)
        {
            lBest = lDistance;
            lIndex = i;
        }
    }
    return lIndex;
}

template <class TOurs, class TPlain>
void CompareSearch(paired::CTable &table, const char *pszName, TOurs ours, TPlain plain)
{
    std::mt19937 random(4);
    CPalette palette;
    for (TRGBA &colour : palette.m_Colors)
        colour = TRGBA((unsigned char)random(), (unsigned char)random(), (unsigned char)random());
    std::vector<TRGBA> colours(256, TRGBA(0, 0, 0));
    for (TRGBA &colour : colours)
        colour = TRGBA((unsigned char)random(), (unsigned char)random(), (unsigned char)random());
    for (const TRGBA &colour : colours)
        if (ours(palette, colour) != plain(palette, colour))
        {
            table.Differs(pszName, "256", "plain loop");
            return;
        }
    const auto All = [&](auto &find)
    {
        xlong lSum = 0;
        for (const TRGBA &colour : colours)
            lSum += find(palette, colour);
        paired::Keep(&lSum);
    };
    table.Row(pszName, "256", paired::Measure([&] { All(ours); }, [&] { All(plain); }), "plain loop", 8);
}
} // namespace

int main()
{
    glb = new SGlobals;
    for (int i = 0; i < 256; ++i)
        s_ausSquares[i] = (unsigned short)(i * i);
    SDL_version sdl;
    SDL_GetVersion(&sdl);
    char szTitle[100];
    snprintf(szTitle, sizeof szTitle, "Pixels: SDL2 %d.%d.%d, pixman %s", sdl.major, sdl.minor, sdl.patch,
             pixman_version_string());
    paired::CTable table(szTitle);
    CompareCopies(table, s_8);
    CompareCopies(table, s_565);
    CompareCopies(table, s_24);
    CompareConversion(table, s_8, s_8, KEYED, 1);
    CompareConversion(table, s_565, s_565, KEYED, 1);
    CompareConversion(table, s_24, s_24, KEYED, 3);
    CompareConversion(table, s_8, s_565, PLAIN, 1);
    CompareConversion(table, s_8, s_565, KEYED, 1);
    CompareConversion(table, s_8, s_24, PLAIN, 1);
    CompareConversion(table, s_8, s_24, KEYED, 1);
    CompareConversion(table, s_555, s_565, PLAIN, 1);
    CompareConversion(table, s_565, s_555, PLAIN, 1);
    CompareConversion(table, s_565, s_24, PLAIN, 3);
    CompareConversion(table, s_555, s_24R, PLAIN, 3);
    CompareConversion(table, s_565, s_24, KEYED, 1);
    CompareConversion(table, s_24, s_565, PLAIN, 3);
    CompareConversion(table, s_24R, s_555, PLAIN, 3);
    CompareConversion(table, s_24, s_565, KEYED, 3);
    CompareConversion(table, s_24, s_565, DITHERED, 3);
    CompareConversion(table, s_24, s_24R, PLAIN, 1);
    CompareSearch(
        table, "FindMatch", [](const CPalette &palette, const TRGBA &colour) { return palette.FindMatch(&colour); },
        PlainMatch);
    CompareSearch(
        table, "FindSecondBest",
        [](const CPalette &palette, const TRGBA &colour) { return palette.FindSecondBest(&colour); }, PlainSecond);
    std::printf("\n%d of the goals missed\n", table.Missed());
    return 0;
}
