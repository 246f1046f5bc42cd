#include "screens/screenbitmap.h"

#include "tarvix/globals.h"
#include "tarvix/screen.h"

xlong CreateForScreen(CBitmap *pBitmap, xlong lWidth, xlong lHeight)
{
    return pBitmap->CreateRGB(lWidth, lHeight, 24, 8, 8, 8, 16, 8, 0, 1);
}

xlong BringToScreen(CBitmap *pBitmap)
{
    CScreenBase *const pScreen = glb->m_pScreen;
    return !pScreen || pScreen->MakeScreenBitmap(pBitmap, 1) || pScreen->MakeScreenFormat(pBitmap, 1);
}
