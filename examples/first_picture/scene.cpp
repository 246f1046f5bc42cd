#include "scene.h"

#include "tarvix/globals.h"

xlong CScene::Create(CScreenBase *pScreen, bool bPlain)
{
    m_bPlain = bPlain;
    return PaintTile(m_Tile) && pScreen->MakeScreenBitmap(&m_Tile, 2);
}

void CScene::Draw(CScreenBase *pScreen, xlong lStep)
{
    if (m_bPlain)
        return;
    const SVmode &mode = *pScreen->GetActiveMode();
    const xlong lUnit = mode.lHeight / 12;
    for (xlong i = 0; i < 3; ++i)
    {
        const xlong lAngle = lStep * (2 + i) + i * 340;
        const xlong lX = mode.lWidth / 2 + Sine(lAngle) * (mode.lWidth / 3) / 4096;
        const xlong lY = mode.lHeight * (3 + i) / 9 + Sine(lAngle * 2 + 256) * lUnit / 4096;
        DrawTile(pScreen, lStep * (i & 1 ? -3 : 2) + i * 100, lX, lY, lUnit * (4 - i) / 3);
    }
    DrawPanel(pScreen, lStep);
}

void CScene::DrawTile(CScreenBase *pScreen, xlong lStep, xlong lX, xlong lY, xlong lSize)
{
    // Corners clockwise, in half pixels.
    xlong lXs[4], lYs[4];
    for (int i = 0; i < 4; ++i)
    {
        lXs[i] = 2 * lX + Sine(lStep + i * 256 + 256) * 2 * lSize / 4096;
        lYs[i] = 2 * lY + Sine(lStep + i * 256) * 2 * lSize / 4096;
    }
    const auto setPolygon = [&](xlong lShift)
    {
        pScreen->SetPolygon(lXs[0] + lShift, lYs[0] + lShift, 0, lXs[1] + lShift, lYs[1] + lShift, 0, lXs[2] + lShift,
                            lYs[2] + lShift, 0, lXs[3] + lShift, lYs[3] + lShift, 0);
    };
    CRect *pNowhere = nullptr;
    setPolygon(lSize / 2);
    pScreen->DrawShadowPolygonScreen(pNowhere);

    const xlong lLast = 63 << 16;
    pScreen->SetTexture(&m_Tile);
    pScreen->SetTextureCoords(0, 0, lLast, 0, lLast, lLast, 0, lLast);
    pScreen->SetPolygonMode(0, 1);
    setPolygon(0);
    pScreen->DrawPolygonScreen(pNowhere);
}

void CScene::DrawPanel(CScreenBase *pScreen, xlong lStep)
{
    const SVmode &mode = *pScreen->GetActiveMode();
    const xlong lHeight = mode.lHeight / 9;
    const xlong lMargin = mode.lHeight / 40;
    const xlong lWidth = mode.lWidth - 2 * lMargin;
    const xlong lTop = mode.lHeight - lHeight - lMargin;
    pScreen->FillRectAlpha(lMargin, lTop, lWidth, lHeight, 14);

    // A row of swatches, one of which is lit at a time.
    const xlong lSwatch = lHeight / 3;
    const TRGBA colors[6] = { TRGBA(236, 110, 84),  TRGBA(244, 178, 92), TRGBA(236, 226, 150),
                              TRGBA(110, 196, 150), TRGBA(84, 150, 204), TRGBA(150, 110, 190) };
    for (xlong i = 0; i < 6; ++i)
    {
        const xlong lLift = lStep / 25 % 6 == i ? lSwatch / 4 : 0;
        pScreen->FillRect(lMargin + lSwatch * (2 + 3 * i) / 2, lTop + lSwatch - lLift, lSwatch, lSwatch, colors[i]);
    }

    // A running curve, point by point, from left to right.
    const xlong lStart = lMargin + lSwatch * 11;
    const xlong lCount = (mode.lWidth - lMargin - lSwatch - lStart) / 4;
    const xlong lMiddle = lTop + lHeight / 2;
    xlong lLastY = 0;
    for (xlong i = 0; i <= lCount; ++i)
    {
        const xlong lY = lMiddle + Sine(i * 24 + lStep * 8) * Sine(i * 5 + lStep) / 4096 * (lHeight / 3) / 4096;
        if (i)
            pScreen->DrawLine(lStart + (i - 1) * 4, lLastY, lStart + i * 4, lY, TRGBA(250, 240, 215));
        lLastY = lY;
    }
    const TRGBA border(250, 240, 215);
    const xlong lRight = lMargin + lWidth - 1, lBottom = lTop + lHeight - 1;
    pScreen->DrawLine(lMargin, lTop, lRight, lTop, border);
    pScreen->DrawLine(lMargin, lBottom, lRight, lBottom, border);
    pScreen->DrawLine(lMargin, lTop, lMargin, lBottom, border);
    pScreen->DrawLine(lRight, lTop, lRight, lBottom, border);
    pScreen->AddClearArea(lMargin, lTop, lRight, lBottom);
}
