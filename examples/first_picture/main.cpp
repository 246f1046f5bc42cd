// Shows a picture with things moving over it, in any mode of the list.

#include "scene.h"
#include "tarvix/dibscreen.h"
#include "tarvix/host.h"
#include "tarvix/pictype.h"

#include <stdlib.h>
#include <string.h>

namespace
{
const char s_szUsage[] = "first_picture [PICTURE] [--mode WIDTHxHEIGHTxDEPTH] [--plain]\n"
                         "              [--frames N] [--shot FILE.bmp]\n"
                         "  --mode    640x480, 800x600 or 1024x768, at 8, 16 or 24 bits; 640x480x24 if not given;\n"
                         "            a D at the end centres the picture on the whole desktop\n"
                         "  --plain   the picture alone, nothing moves\n"
                         "  --frames  stop after so many frames, each a fixed step of time\n"
                         "  --shot    write the last frame to a file\n";

struct TOptions
{
    const char *pszPicture = nullptr;
    const char *pszShot = nullptr;
    long lWidth = 640, lHeight = 480, lDepth = 24;
    xlong lKind = XMODE_WINDOW;
    long lFrames = 0;
    bool bPlain = false;
};

// @return 0 to go on, otherwise the exit code plus 1
int ReadOptions(int argc, char **argv, TOptions &options)
{
    for (int i = 1; i < argc; ++i)
    {
        const char *pszValue = i + 1 < argc ? argv[i + 1] : nullptr;
        char cKind = 0;
        if (!strcmp(argv[i], "--help"))
        {
            fputs(s_szUsage, stdout);
            return 1;
        }
        if (!strcmp(argv[i], "--plain"))
            options.bPlain = true;
        else if (!strcmp(argv[i], "--mode") && pszValue &&
                 sscanf(pszValue, "%ldx%ldx%ld%c", &options.lWidth, &options.lHeight, &options.lDepth, &cKind) >= 3)
        {
            options.lKind = cKind == 'D' ? XMODE_DESKTOP : XMODE_WINDOW;
            ++i;
        }
        else if (!strcmp(argv[i], "--frames") && pszValue && atol(pszValue) > 0)
            options.lFrames = atol(argv[++i]);
        else if (!strcmp(argv[i], "--shot") && pszValue)
            options.pszShot = argv[++i];
        else if (argv[i][0] != '-' && !options.pszPicture)
            options.pszPicture = argv[i];
        else
        {
            fprintf(stderr, "first_picture: I do not understand \"%s\".\n%s", argv[i], s_szUsage);
            return 2;
        }
    }
    return 0;
}

xlong DrawPicture(CScreenBase *pScreen, const TOptions &options)
{
    CBitmap picture;
    if (options.pszPicture ? !picture.Load(options.pszPicture, 0)
                           : !PaintLandscape(picture, options.lWidth, options.lHeight))
        return 0;
    if (pScreen->GetActiveMode()->lIndexed)
    {
        CPalette palette;
        MakePalette(palette);
        pScreen->SetPalette(picture.m_pPalette ? picture.m_pPalette : &palette);
        pScreen->SetSystemPalette();
    }
    if (!pScreen->MakeScreenBitmap(&picture, 1))
        return 0;
    const xlong lX = ((xlong)options.lWidth - picture.m_lWidth) / 2;
    const xlong lY = ((xlong)options.lHeight - picture.m_lHeight) / 2;
    pScreen->DrawBitmapPersistent(&picture, 0, 0, lX, lY, -1, -1, 0, 0);
    return 1;
}

// Pixels that the next flip presents.
long CountChanged(CDibScreen *pScreen)
{
    const struct
    {
        const CRect *pAreas;
        xlong lCount;
    } lists[] = { { pScreen->m_DibAreas[pScreen->m_lPage], pScreen->m_lDibCount[pScreen->m_lPage] },
                  { pScreen->m_PersistentAreas[pScreen->m_lPage], pScreen->m_lPersistentCount[pScreen->m_lPage] },
                  { pScreen->m_ClearAreas[pScreen->m_lPage], pScreen->m_lClearCount[pScreen->m_lPage] } };
    CRect rcAll = pScreen->m_rcClip;
    long lPixels = 0;
    for (const auto &list : lists)
    {
        for (xlong i = 0; i < list.lCount; ++i)
        {
            CRect rc = list.pAreas[i];
            if (rc.Intersect(&rc, &rcAll))
                lPixels += (long)(rc.Width() + 1) * (rc.Height() + 1);
        }
    }
    return lPixels;
}

xlong SaveShot(CDibScreen *pScreen, const char *pszFile)
{
    const SVmode &mode = *pScreen->GetActiveMode();
    CBitmap shot;
    if (!shot.CreateRGB(mode.lWidth, mode.lHeight, 24, 8, 8, 8, 0, 8, 16, 0))
        return xError(XERR_MEMORY);
    pScreen->UpdateSpriteRestore(0, 0, mode.lWidth, mode.lHeight, 0, 0, &shot);
    return shot.Save(pszFile, sglb->m_pBMPPic, nullptr, nullptr, 0);
}

void ShowSpeed(CDibScreen *pScreen, long lChanged)
{
    static xulong s_ulSince = 0;
    static long s_lFrames = 0;
    ++s_lFrames;
    const xulong ulPassed = xTimeDiff(s_ulSince, xGetTime());
    if (ulPassed < 500)
        return;
    char szTitle[256];
    snprintf(szTitle, sizeof(szTitle), "First picture - %s - %ld frames per second, %ld pixels changed",
             pScreen->GetActiveMode()->szName, s_ulSince ? s_lFrames * 1000 / (long)ulPassed : 0, lChanged);
    xSetWindowTitle(szTitle);
    s_ulSince = xGetTime();
    s_lFrames = 0;
}
} // namespace

int main(int argc, char **argv)
{
    TOptions options;
    if (const int nStop = ReadOptions(argc, argv, options))
        return nStop - 1;
    CTarvixHost host("First picture");
    if (!host.SetMode((xlong)options.lWidth, (xlong)options.lHeight, (xlong)options.lDepth, options.lKind))
        return host.Fail();
    CDibScreen *pScreen = sglb->m_pDibScreen;
    CScene scene;
    if (!DrawPicture(pScreen, options) || !scene.Create(pScreen, options.bPlain))
        return host.Fail();

    // The buffer shows the picture after the first frame.
    xHandler();
    SetMinimumFrameTime(options.lFrames ? 0 : 16);
    const xulong ulStart = xGetTime();
    xlong lStep = 0;
    for (long lFrame = 0; !options.lFrames || lFrame < options.lFrames; ++lFrame)
    {
        scene.Draw(pScreen, lStep);
        ShowSpeed(pScreen, CountChanged(pScreen));
        if (options.pszShot && lFrame + 1 == options.lFrames && !SaveShot(pScreen, options.pszShot))
            return host.Fail();
        if (!host.Frame())
            break;
        lStep = options.lFrames ? lStep + 1 : (xlong)(xTimeDiff(ulStart, xGetTime()) / 10);
    }
    return 0;
}
