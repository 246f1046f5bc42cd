// Windows, controls, text and sprites: what a frame costs.

#include "paired.h"

#include "tarvix/button.h"
#include "tarvix/dialog.h"
#include "tarvix/dibscreen.h"
#include "tarvix/font.h"
#include "tarvix/host.h"
#include "tarvix/resdata.h"
#include "tarvix/sprite.h"
#include "tarvix/static.h"
#include "tarvix/window.h"

#include <SDL.h>
#include <pixman.h>
#include <stdlib.h>
#include <string.h>

#include <memory>
#include <random>
#include <vector>

namespace
{
char s_szText[] = "A button's text";

void Frame()
{
    glb->m_pScreen->FlipPage();
    glb->m_pScreen->ClearBuffer();
}

// One row for what has a goal in time and no peer.
void Show(const std::string &strName, double dTime, double dGoal)
{
    printf("%-38s %12.2f us, goal %.2f %s\n", strName.c_str(), dTime / 1000, dGoal,
           dTime / 1000 <= dGoal ? "ok" : "MISSED");
    fflush(stdout);
}

template <class TWork>
double TimeOf(TWork work)
{
    return paired::Measure(work, work).dOurs;
}

/// Windows of buttons side by side, 20 in each.
class CButtons
{
public:
    explicit CButtons(xlong lWindows, xlong lInEach = 20)
    {
        for (xlong w = 0; w < lWindows; ++w)
        {
            m_Windows.push_back(std::make_unique<CWindow>());
            CWindow &window = *m_Windows.back();
            window.Create(w + 1, nullptr, w % 10 * 80, w / 10 * 100, 80, 100, XWIN_FRAME);
            for (xlong l = 0; l < lInEach; ++l)
            {
                m_Buttons.push_back(std::make_unique<CButton>());
                CButton &button = *m_Buttons.back();
                button.Create(l + 1, nullptr, l % 4 * 20, l / 4 * 20, 18, 18, 0, CNTRL_EXTRUDED);
                window.AddCntrl(&button);
            }
            glb->m_pWinCtrl->AddWindow(&window, nullptr, nullptr);
        }
        for (int n = 0; n < 4; ++n)
            Frame();
    }

    std::vector<std::unique_ptr<CButton>> m_Buttons; // they leave their windows when they die
    std::vector<std::unique_ptr<CWindow>> m_Windows;
};

void Point(xlong lX, xlong lY)
{
    glb->m_pMouse->m_lX = lX;
    glb->m_pMouse->m_lY = lY;
}

void ShowIdle()
{
    Point(799, 599);
    double dOne;
    {
        CButtons one(1);
        dOne = TimeOf(Frame);
        Show("idle frame, 1 window of 20", dOne, 1);
    }
    CButtons many(50);
    const double dMany = TimeOf(Frame);
    printf("%-38s %12.2f us, %.1f ns for each further control\n", "idle frame, 50 windows of 20", dMany / 1000,
           (dMany - dOne) / 980);
}

void ShowChange()
{
    CButtons buttons(50);
    bool bIn = false;
    const double dIdle = TimeOf(Frame);
    const double dTime = TimeOf(
        [&]
        {
            bIn = !bIn;
            Point(bIn ? 5 : 799, bIn ? 5 : 599);
            Frame();
        });
    Show("one button of 1000 changes", dTime, 16);
    printf("%-38s %12.2f us\n", "  of it the walk of the mouse", dIdle / 1000);
    Point(799, 599);
}

std::unique_ptr<CBitmap> MakeGlyphs()
{
    auto pGlyphs = std::make_unique<CBitmap>();
    pGlyphs->CreateRGB(96 * 8, 16, 24, 8, 8, 8, 16, 8, 0, 0);
    pGlyphs->m_rcClip.Set(0, 0, 96 * 8 - 1, 15);
    std::mt19937 random(1);
    const TRGBA White(255, 255, 255);
    for (xlong y = 0; y < 16; ++y)
        for (xlong x = 0; x < 96 * 8; ++x)
            if (x % 8 < 7 && y > 1 && y < 14 && random() % 3 == 0)
                pGlyphs->PutPixel(x, y, &White);
    glb->m_pScreen->MakeScreenFormat(pGlyphs.get(), 1);
    return pGlyphs;
}

void SetUpFont(CFont &font, CBitmap &glyphs)
{
    TCharData cells[95];
    for (int n = 0; n < 94; ++n)
        cells[n] = { (short)(n * 8 + 8), 0, 8 };
    cells[94].sWidth = -1;
    font.SetFont(&glyphs, cells, 33, 16, 0);
    font.SetBasic(10, FONT_NEWLINE, 16);
}

void ShowRedraw(xlong lDepth)
{
    auto pGlyphs = MakeGlyphs();
    CFont font;
    SetUpFont(font, *pGlyphs);
    CWindow window;
    window.Create(1, nullptr, 0, 0, 800, 600, XWIN_FRAME);
    std::vector<std::unique_ptr<CControlBase>> controls;
    for (xlong l = 0; l < 40; ++l)
    {
        auto pButton = std::make_unique<CButton>();
        pButton->Create(l + 1, s_szText, 20 + l % 5 * 155, 20 + l / 5 * 60, 140, 40, 0,
                        CNTRL_EXTRUDED | CNTRL_CENTERH | CNTRL_CENTERV);
        pButton->SetFont(&font, nullptr);
        controls.push_back(std::move(pButton));
    }
    for (xlong l = 0; l < 2; ++l) // a label, and the frame of a slider
    {
        auto pStatic = std::make_unique<CStatic>();
        pStatic->Create(l ? nullptr : s_szText, 20 + 400 * l, 540, 300, 24, l ? CNTRL_EXTRUDED : CNTRL_TRANSPARENT);
        pStatic->SetFont(&font, nullptr);
        controls.push_back(std::move(pStatic));
    }
    for (const auto &pControl : controls)
        window.AddCntrl(pControl.get());
    glb->m_pWinCtrl->AddWindow(&window, nullptr, nullptr);
    Point(799, 599);
    for (int n = 0; n < 4; ++n)
        Frame();
    Show("full redraw of 40 buttons, " + std::to_string(lDepth) + " bits",
         TimeOf(
             [&]
             {
                 glb->m_pScreen->ASA(0, 0, 799, 599);
                 Frame();
             }),
         300);
    controls.clear();
}

// SDL copying the same glyphs with a colour key, and pixman's glyph cache.
void CompareText(paired::CTable &table, xlong lDepth)
{
    auto pGlyphs = MakeGlyphs();
    CFont font;
    SetUpFont(font, *pGlyphs);
    std::string strScreen;
    for (int y = 0; y < 30; ++y)
    {
        for (int x = 0; x < 80; ++x)
            strScreen += (char)('!' + (x * 7 + y * 3) % 94);
        strScreen += '\n';
    }
    const auto ours = [&]
    { font.Text((CBitmap *)(xparam)FONT_TARGET_GUI, strScreen.c_str(), 0, 0, 640, 480, nullptr, nullptr, 0); };
    const auto ours2 = [&]
    {
        glb->m_pScreen->FillRect(0, 0, 640, 480, TRGBA(0, 0, 64));
        ours();
    };

    const Uint32 ulFormat = lDepth == 8    ? SDL_PIXELFORMAT_INDEX8
                            : lDepth == 16 ? SDL_PIXELFORMAT_RGB555
                                           : SDL_PIXELFORMAT_BGR24;
    SDL_Surface *const pTarget = SDL_CreateRGBSurfaceWithFormat(0, 800, 600, (int)lDepth, ulFormat);
    SDL_Surface *const pSource = SDL_CreateRGBSurfaceWithFormat(0, 96 * 8, 16, (int)lDepth, ulFormat);
    for (xlong y = 0; y < 16; ++y)
        memcpy((char *)pSource->pixels + y * pSource->pitch, pGlyphs->m_pData + (size_t)y * pGlyphs->m_lPitch,
               (size_t)(96 * 8 * lDepth / 8));
    SDL_SetColorKey(pSource, SDL_TRUE, 0);
    const auto sdl = [&]
    {
        int n = 0;
        for (int y = 0; y < 30; ++y)
            for (int x = 0; x < 80; ++x, ++n)
            {
                SDL_Rect from = { ((x * 7 + y * 3) % 94 + 1) * 8, 0, 8, 16 }, to = { x * 8, y * 16, 8, 16 };
                SDL_BlitSurface(pSource, &from, pTarget, &to);
            }
    };
    const auto sdl2 = [&]
    {
        SDL_Rect all = { 0, 0, 640, 480 };
        SDL_FillRect(pTarget, &all, 5);
        sdl();
    };
    const std::string strBits = std::to_string(lDepth) + " bits";
    table.Row("80x30 glyphs, transparent", strBits, paired::Measure(ours, sdl), "SDL2", 2);
    table.Row("80x30 glyphs, on a fill", strBits, paired::Measure(ours2, sdl2), "SDL2", 2);
    SDL_FreeSurface(pSource);
    SDL_FreeSurface(pTarget);
    if (lDepth == 8)
        return;

    // Coverage masks, as pixman's users keep glyphs.
    pixman_image_t *const pImage =
        pixman_image_create_bits(lDepth == 16 ? PIXMAN_r5g6b5 : PIXMAN_x8r8g8b8, 800, 600, nullptr, 0);
    pixman_glyph_cache_t *const pCache = pixman_glyph_cache_create();
    pixman_glyph_cache_freeze(pCache);
    std::vector<pixman_glyph_t> list;
    std::vector<const void *> cached;
    static int s_nKeys[96];
    for (int n = 0; n < 94; ++n)
    {
        pixman_image_t *const pMask = pixman_image_create_bits(PIXMAN_a8, 8, 16, nullptr, 0);
        unsigned char *const pBits = (unsigned char *)pixman_image_get_data(pMask);
        for (int y = 0; y < 16; ++y)
            for (int x = 0; x < 8; ++x)
                pBits[y * pixman_image_get_stride(pMask) + x] = (x + y * n) % 3 ? 0 : 255;
        cached.push_back(pixman_glyph_cache_insert(pCache, &s_nKeys[0], &s_nKeys[n], 0, 0, pMask));
        pixman_image_unref(pMask);
    }
    for (int y = 0; y < 30; ++y)
        for (int x = 0; x < 80; ++x)
            list.push_back({ x * 8, y * 16, cached[(size_t)((x * 7 + y * 3) % 94)] });
    const pixman_color_t white = { 0xffff, 0xffff, 0xffff, 0xffff };
    pixman_image_t *const pWhite = pixman_image_create_solid_fill(&white);
    table.Row("80x30 glyphs, transparent", strBits,
              paired::Measure(ours,
                              [&]
                              {
                                  pixman_composite_glyphs_no_mask(PIXMAN_OP_OVER, pWhite, pImage, 0, 0, 0, 0, pCache,
                                                                  (int)list.size(), list.data());
                              }),
              "pixman glyphs", 2);
    pixman_image_unref(pWhite);
    pixman_image_unref(pImage);
    pixman_glyph_cache_thaw(pCache);
    pixman_glyph_cache_destroy(pCache);
}

// 500 of 32 by 32: the library restores and draws those that move, SDL's
// renderer draws the picture and all of them anew.
void CompareSprites(paired::CTable &table, xlong lDepth)
{
    CBitmap ball;
    ball.CreateRGB(32, 32, 24, 8, 8, 8, 16, 8, 0, 0);
    const TRGBA Orange(255, 160, 60);
    for (xlong y = 0; y < 32; ++y)
        for (xlong x = 0; x < 32; ++x)
            if ((x - 16) * (x - 16) + (y - 16) * (y - 16) < 200)
                ball.PutPixel(x, y, &Orange);
    glb->m_pScreen->MakeScreenFormat(&ball, 1);
    std::mt19937 random(2);
    std::vector<std::unique_ptr<CSprite>> sprites;
    std::vector<SDL_Rect> places;
    for (int n = 0; n < 500; ++n)
    {
        const int nX = (int)(random() % 760), nY = (int)(random() % 560);
        places.push_back({ nX, nY, 32, 32 });
        sprites.push_back(std::make_unique<CSprite>());
        sprites.back()->Create(&ball, nullptr, 32, 32, nX, nY, XSPRITE_LOOP, 0, 1);
    }
    int nTick = 0;
    const auto Move = [&](int n) {
        return SDL_Point{ places[n].x + (nTick + n) % 9 - 4, places[n].y + (nTick + 2 * n) % 7 - 3 };
    };
    const auto ours = [&]
    {
        ++nTick;
        for (int n = 0; n < 500; ++n)
            sprites[n]->SetPosition(Move(n).x, Move(n).y);
        Frame();
    };
    const Uint32 ulFormat = lDepth == 16 ? SDL_PIXELFORMAT_RGB555 : SDL_PIXELFORMAT_XRGB8888;
    SDL_Surface *const pCanvas = SDL_CreateRGBSurfaceWithFormat(0, 800, 600, 32, ulFormat);
    SDL_Renderer *const pRenderer = SDL_CreateSoftwareRenderer(pCanvas);
    SDL_Surface *const pBall = SDL_CreateRGBSurfaceWithFormat(0, 32, 32, 32, ulFormat);
    SDL_Rect inner = { 4, 4, 24, 24 };
    SDL_FillRect(pBall, &inner, 0x00ffa03c);
    SDL_SetColorKey(pBall, SDL_TRUE, 0);
    SDL_Surface *const pBack = SDL_CreateRGBSurfaceWithFormat(0, 800, 600, 32, ulFormat);
    SDL_Texture *const pTexture = SDL_CreateTextureFromSurface(pRenderer, pBall);
    SDL_Texture *const pPicture = SDL_CreateTextureFromSurface(pRenderer, pBack);
    const auto peer = [&]
    {
        ++nTick;
        SDL_RenderCopy(pRenderer, pPicture, nullptr, nullptr);
        for (int n = 0; n < 500; ++n)
        {
            const SDL_Rect to = { Move(n).x, Move(n).y, 32, 32 };
            SDL_RenderCopy(pRenderer, pTexture, nullptr, &to);
        }
        SDL_RenderPresent(pRenderer);
    };
    for (int n = 0; n < 4; ++n)
        ours();
    table.Row("500 sprites", std::to_string(lDepth) + " bits", paired::Measure(ours, peer), "SDL2 renderer", 1);
    SDL_DestroyTexture(pTexture);
    SDL_DestroyTexture(pPicture);
    SDL_FreeSurface(pBack);
    SDL_FreeSurface(pBall);
    SDL_DestroyRenderer(pRenderer);
    SDL_FreeSurface(pCanvas);
}

void ShowLoading()
{
    std::string strScript = "; script\n{ = Defines\n";
    for (int w = 1; w <= 200; ++w)
        strScript += "W" + std::to_string(w) + " = " + std::to_string(w) + "\n";
    for (int c = 1; c <= 20; ++c)
        strScript += "C" + std::to_string(c) + " = " + std::to_string(1000 + c) + "\n";
    strScript += "}\n";
    for (int w = 1; w <= 200; ++w)
    {
        strScript +=
            "{ = Window, W" + std::to_string(w) + "\nCreate = \"Window\", 10, 10, 300, 200, XWIN_TITLEBAR|XWIN_FRAME\n";
        for (int c = 1; c <= 20; ++c)
            strScript += "{ = Button, C" + std::to_string(c) + "\nCreate = \"Text\", 10, " + std::to_string(c * 8) +
                         ", 80, 8, NULL, CNTRL_EXTRUDED|CNTRL_CENTERH\n}\n";
        strScript += "}\n";
    }
    Show("script of 200 windows, 4000 controls",
         TimeOf(
             [&]
             {
                 CResData res;
                 res.Import(strScript.c_str());
                 std::vector<std::unique_ptr<CDialog>> dialogs;
                 for (xlong w = 1; w <= 200; ++w)
                 {
                     dialogs.push_back(std::make_unique<CDialog>());
                     if (!dialogs.back()->Create(&res, w, nullptr, 0, nullptr))
                         printf("%s\n", glb->m_Error.GetError(nullptr));
                 }
                 // Taking them down again is not what is asked for.
                 glb->m_pWinCtrl->RemoveAll();
             }),
         25000);
}
} // namespace

int main()
{
    setenv("SDL_VIDEODRIVER", "dummy", 0);
    paired::CTable table("Windows and controls");
    CTarvixHost host("Benchmark");
    for (xlong lDepth : { 8, 16, 24 })
    {
        if (!host.SetMode(800, 600, lDepth))
            return host.Fail();
        SetMinimumFrameTime(0);
        xHandler();
        CompareText(table, lDepth);
        if (lDepth > 8)
            CompareSprites(table, lDepth);
        ShowRedraw(lDepth);
    }
    ShowIdle();
    ShowChange();
    ShowLoading();
    return 0;
}
