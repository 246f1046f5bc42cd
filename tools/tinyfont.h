// Letters that need no file.
#pragma once

#include "tarvix/bitmap.h"
#include "tarvix/font.h"

/// A font of 5 by 7 pixels, each drawn as a square of 2: all letters are as
/// wide as the blank, so that a mark stands below what it means.
class CTinyFont
{
public:
    enum
    {
        WIDTH = 12, ///< from letter to letter
        HEIGHT = 18 ///< from line to line
    };

    /// For the screen as it is; again after a change of its palette.
    bool Create();
    /// Draws one line; bytes that are no letter become "?".
    /// @param pTarget  in the screen's format
    void Draw(CBitmap *pTarget, const char *pszText, xlong lX, xlong lY);

private:
    CBitmap m_Picture;
    CFont m_Font;
};
