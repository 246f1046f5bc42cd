// Fills, lines, polygons and whole frames.

#include "paired.h"

#include "tarvix/dibscreen.h"
#include "tarvix/host.h"

#include <SDL.h>
#include <stdlib.h>
#include <string.h>

#include <random>
#include <vector>

namespace
{
struct TSize
{
    const char *pszName;
    xlong lWidth, lHeight;
};

const TSize s_Sizes[] = { { "8x8", 8, 8 }, { "64x64", 64, 64 }, { "640x480", 640, 480 } };

// SDL's software renderer on a surface of the screen's format.
struct TPeer
{
    explicit TPeer(xlong lDepth)
    {
        pSurface = SDL_CreateRGBSurfaceWithFormat(0, 640, 480, (int)lDepth,
                                                  lDepth == 8    ? SDL_PIXELFORMAT_INDEX8
                                                  : lDepth == 16 ? SDL_PIXELFORMAT_RGB555
                                                                 : SDL_PIXELFORMAT_BGR24);
        // SDL draws no lines at 24 bits: there its 32 bits stand in.
        pCanvas = lDepth == 24 ? SDL_CreateRGBSurfaceWithFormat(0, 640, 480, 32, SDL_PIXELFORMAT_XRGB8888) : pSurface;
        pRenderer = lDepth == 8 ? nullptr : SDL_CreateSoftwareRenderer(pCanvas);
        pBlack = SDL_CreateRGBSurfaceWithFormat(0, 640, 480, (int)lDepth, pSurface->format->format);
        SDL_SetSurfaceBlendMode(pBlack, SDL_BLENDMODE_BLEND);
        SDL_SetSurfaceAlphaMod(pBlack, 40);
    }

    ~TPeer()
    {
        if (pRenderer)
            SDL_DestroyRenderer(pRenderer);
        SDL_FreeSurface(pBlack);
        if (pCanvas != pSurface)
            SDL_FreeSurface(pCanvas);
        SDL_FreeSurface(pSurface);
    }

    SDL_Surface *pSurface;
    SDL_Surface *pCanvas;
    SDL_Surface *pBlack;
    SDL_Renderer *pRenderer;
};

void CompareFills(paired::CTable &table, CScreenBase *pScreen, xlong lDepth)
{
    const std::string strBits = std::to_string(lDepth) + " bits";
    std::vector<unsigned char> block((size_t)640 * 480 * 3);
    for (const TSize &size : s_Sizes)
    {
        const size_t ulRow = (size_t)size.lWidth * pScreen->GetActiveMode()->lBytesPerPixel;
        const size_t ulPitch = (size_t)pScreen->GetActiveMode()->lRowBytes;
        const auto ours = [&] { pScreen->FillRect(0, 0, size.lWidth, size.lHeight, TRGBA(10, 120, 230)); };
        const auto theirs = [&]
        {
            for (xlong y = 0; y < size.lHeight; ++y)
                memset(&block[(size_t)y * ulPitch], 7, ulRow);
            paired::Keep(block.data());
        };
        const bool bGoal = size.lWidth == 640;
        table.Row("FillRect, " + strBits, size.pszName, paired::Measure(ours, theirs), "memset",
                  !bGoal         ? 0
                  : lDepth == 24 ? 0.5
                                 : 0.9);
    }
}

void CompareAlpha(paired::CTable &table, CScreenBase *pScreen, TPeer &peer, xlong lDepth)
{
    SDL_SetRenderDrawBlendMode(peer.pRenderer, SDL_BLENDMODE_BLEND);
    SDL_SetRenderDrawColor(peer.pRenderer, 0, 0, 0, 40);
    for (const TSize &size : s_Sizes)
    {
        const SDL_Rect rect = { 0, 0, (int)size.lWidth, (int)size.lHeight };
        const auto ours = [&] { pScreen->FillRectAlpha(0, 0, size.lWidth, size.lHeight, 16); };
        // Its fill knows no 24 bits either, but its blit with a constant alpha does.
        const auto theirs = [&]
        {
            if (lDepth == 24)
            {
                SDL_Rect rcTo = rect;
                SDL_BlitSurface(peer.pBlack, &rect, peer.pSurface, &rcTo);
                return;
            }
            SDL_RenderFillRect(peer.pRenderer, &rect);
            SDL_RenderFlush(peer.pRenderer);
        };
        table.Row("FillRectAlpha, " + std::to_string(lDepth) + " bits", size.pszName, paired::Measure(ours, theirs),
                  "SDL2", lDepth == 24 ? 10 : 1);
    }
}

// The two draw the same lines by rules of their own, so their pixels differ.
void CompareLines(paired::CTable &table, CScreenBase *pScreen, TPeer &peer, xlong lDepth)
{
    struct TLine
    {
        int nX1, nY1, nX2, nY2;
    };
    std::minstd_rand random(5);
    std::vector<TLine> lines(100);
    for (TLine &line : lines)
        line = { (int)(random() % 320), (int)(random() % 240), (int)(320 + random() % 320),
                 (int)(240 + random() % 240) };
    SDL_SetRenderDrawBlendMode(peer.pRenderer, SDL_BLENDMODE_NONE);
    SDL_SetRenderDrawColor(peer.pRenderer, 250, 100, 30, 255);
    const auto ours = [&]
    {
        for (const TLine &line : lines)
            pScreen->DrawLine(line.nX1, line.nY1, line.nX2, line.nY2, TRGBA(250, 100, 30));
    };
    const auto theirs = [&]
    {
        for (const TLine &line : lines)
            SDL_RenderDrawLine(peer.pRenderer, line.nX1, line.nY1, line.nX2, line.nY2);
        SDL_RenderFlush(peer.pRenderer);
    };
    table.Row("100 lines, " + std::to_string(lDepth) + " bits", "", paired::Measure(ours, theirs),
              lDepth == 24 ? "SDL2, 32 bits" : "SDL2", 1);
}

double CyclesPerNanosecond()
{
    const auto start = std::chrono::steady_clock::now();
    const unsigned long long ullStart = __builtin_ia32_rdtsc();
    while (std::chrono::steady_clock::now() - start < std::chrono::milliseconds(20))
        ;
    const std::chrono::duration<double, std::nano> spent = std::chrono::steady_clock::now() - start;
    return (double)(__builtin_ia32_rdtsc() - ullStart) / spent.count();
}

// A square of 200 by 200, turned a little.
void SetSquare(CScreenBase *pScreen)
{
    pScreen->SetPolygon(260, 200, 0, 660, 220, 0, 640, 620, 0, 240, 600, 0);
}

void ShowPolygons(CScreenBase *pScreen, xlong lDepth)
{
    CBitmap texture;
    texture.CreateRGB(64, 64, 24, 8, 8, 8, 0, 8, 16, 0);
    pScreen->MakeScreenBitmap(&texture, 2);
    pScreen->SetTexture(&texture);
    pScreen->SetTextureCoords(0, 0, 63 << 16, 0, 63 << 16, 63 << 16, 0, 63 << 16);
    const double dCycles = CyclesPerNanosecond();
    const auto show = [&](const char *pszName, auto draw)
    {
        const auto work = [&]
        {
            SetSquare(pScreen);
            CRect *pNone = nullptr;
            draw(pNone);
        };
        const double dTime = paired::Measure(work, work).dOurs;
        printf("%-28s %-9s %11.1f ns, %.2f cycles a pixel\n",
               (std::string(pszName) + ", " + std::to_string(lDepth) + " bits").c_str(), "200x200", dTime,
               dTime * dCycles / 40000);
    };
    show("shadow polygon", [&](CRect *&pNone) { pScreen->DrawShadowPolygonScreen(pNone); });
    pScreen->SetPolygonMode(0, 0);
    show("textured polygon", [&](CRect *&pNone) { pScreen->DrawPolygonScreen(pNone); });
    if (lDepth == 8)
        return;
    pScreen->SetAlphaBufferMode(1);
    show("textured polygon, alpha", [&](CRect *&pNone) { pScreen->DrawPolygonScreen(pNone); });
    pScreen->SetAlphaBufferMode(0);
    pScreen->SetPolygonMode(0, 1);
    show("textured polygon, filtered", [&](CRect *&pNone) { pScreen->DrawPolygonScreen(pNone); });
}

void ShowFrames(CScreenBase *pScreen, xlong lDepth)
{
    const SVmode &mode = *pScreen->GetActiveMode();
    const auto show = [&](const char *pszName, long lPixels, auto change)
    {
        const auto work = [&]
        {
            change();
            xHandler();
        };
        for (int n = 0; n < 4; ++n)
            work();
        const double dTime = paired::Measure(work, work).dOurs;
        const auto parts = [&]
        {
            change();
            pScreen->FlipPage();
            pScreen->ClearBuffer();
        };
        const double dLibrary = paired::Measure(parts, parts).dOurs;
        xHandler();
        printf("frame, %-21s %-9s %11.1f ns, of it %.1f in the screen; %ld pixels changed\n",
               (std::string(pszName) + ", " + std::to_string(lDepth) + " bits").c_str(), "640x480", dTime, dLibrary,
               lPixels);
    };
    show("nothing", 0, [] {});
    show("one 32x32", 1024, [&] { pScreen->AddClearArea(100, 100, 131, 131); });
    show("128 of 8x8", 8192,
         [&]
         {
             for (xlong i = 0; i < 128; ++i)
                 pScreen->AddClearArea(i % 16 * 40, i / 16 * 60, i % 16 * 40 + 7, i / 16 * 60 + 7);
         });
    show("everything", (long)mode.lWidth * mode.lHeight,
         [&] { pScreen->AddClearArea(0, 0, mode.lWidth - 1, mode.lHeight - 1); });
}
} // namespace

int main()
{
    setenv("SDL_VIDEODRIVER", "dummy", 0);
    SDL_version version;
    SDL_GetVersion(&version);
    paired::CTable table("Drawing and frames");
    CTarvixHost host("Benchmark");
    for (xlong lDepth : { 8, 16, 24 })
    {
        if (!host.SetMode(640, 480, lDepth))
            return host.Fail();
        SetMinimumFrameTime(0);
        xHandler();
        TPeer peer(lDepth);
        CompareFills(table, host.Screen(), lDepth);
        if (peer.pRenderer)
        {
            CompareLines(table, host.Screen(), peer, lDepth);
            CompareAlpha(table, host.Screen(), peer, lDepth);
        }
        ShowPolygons(host.Screen(), lDepth);
        ShowFrames(host.Screen(), lDepth);
    }
    printf("\nSDL %d.%d.%d\n", version.major, version.minor, version.patch);
    return 0;
}
