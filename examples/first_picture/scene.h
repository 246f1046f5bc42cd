#pragma once

#include "tarvix/bitmap.h"
#include "tarvix/screen.h"

/// Integer sine, so that every target draws the same pixels.
/// @param lAngle  1024 to the circle
/// @return -4096 to 4096
xlong Sine(xlong lAngle);

/// The example's own picture: evening over a lake, 24 bits.
xlong PaintLandscape(CBitmap &bitmap, xlong lWidth, xlong lHeight);
/// A tile of 64 by 64, 24 bits.
xlong PaintTile(CBitmap &bitmap);
/// Colours for a screen of 8 bits: a cube of six steps and a ramp of greys.
void MakePalette(CPalette &palette);

/// What moves over the picture.
class CScene
{
public:
    CScene() : m_bPlain(false) {}

    /// @return 0 with the error stored
    xlong Create(CScreenBase *pScreen, bool bPlain);
    /// Draws one moment on the frame buffer.
    /// @param lStep  counts hundredths of a second
    void Draw(CScreenBase *pScreen, xlong lStep);

private:
    void DrawTile(CScreenBase *pScreen, xlong lStep, xlong lX, xlong lY, xlong lSize);
    void DrawPanel(CScreenBase *pScreen, xlong lStep);

    CBitmap m_Tile;
    bool m_bPlain;
};
