#pragma once

#include "tarvix/memory.h"
#include "tarvix/palette.h"
#include "tarvix/rect.h"
#include "tarvix/types.h"

class CPicType;
struct IDirectDrawSurface;

/// Flags of ConvertRGB, ConvertIndex and Save.
enum
{
    XBMP_SAVE_NUMBERED = 1, ///< Save: date and a counter are put into the name
    XBMP_NO_KEY_PASS = 2    ///< conversions: other pixels may take the key's converted value
};

/// A picture in memory: format, pixels, palette and clip. Data first; the
/// operations are those of CBitmap.
///
/// Rows run from top to bottom, m_lPitch bytes apart. A pixel is
/// -  8 bits: an index into m_pPalette;
/// - 16 bits: a little-endian word, a channel in m_l...Bits bits from bit
///   m_l...Shift on. Read as a byte, its low bits are 0 (5 bits of 31 give 248);
/// - 24 bits: three bytes, counted from the far end: shift 16 is the first byte
///   in memory, 8 the middle one, 0 the last. A BMP picture (blue first) is red
///   0, green 8, blue 16;
/// - 32 bits: four bytes, shift 24 the first, 0 the last.
///
/// There is no stored key colour: a transparent copy leaves out what equals
/// the top left pixel of the whole source.
class TARVIX_API CBitmapBase
{
public:
    TARVIX_HEAP_CLASS

    CBitmapBase() = default;
    CBitmapBase(const CBitmapBase &) = default;
    CBitmapBase &operator=(const CBitmapBase &) = default;
    virtual ~CBitmapBase();

    // What they do is told at CBitmap, the one class that has them.
    virtual xlong CreateIndex(xlong lWidth, xlong lHeight, xlong lDepth, const CPalette *pPalette, xlong lFlags) = 0;
    virtual xlong CreateRGB(xlong lWidth, xlong lHeight, xlong lDepth, xlong lRedBits, xlong lGreenBits,
                            xlong lBlueBits, xlong lRedShift, xlong lGreenShift, xlong lBlueShift, xlong lFlags) = 0;
    virtual xlong CreateRGBA(xlong lWidth, xlong lHeight, xlong lDepth, xlong lRedBits, xlong lGreenBits,
                             xlong lBlueBits, xlong lAlphaBits, xlong lRedShift, xlong lGreenShift, xlong lBlueShift,
                             xlong lAlphaShift, xlong lFlags) = 0;
    virtual xlong Load(const char *pszFileName, xlong lUnused) = 0;
    virtual xlong Save(const char *pszFileName, CPicType *pType, void *pParameters, CRect *pArea, xlong lFlags) = 0;
    virtual xlong ConvertIndex(xlong lWidth, xlong lHeight, xlong lDepth, const CPalette *pPalette, xlong lFlags) = 0;
    virtual xlong ConvertRGB(xlong lWidth, xlong lHeight, xlong lDepth, xlong lRedBits, xlong lGreenBits,
                             xlong lBlueBits, xlong lRedShift, xlong lGreenShift, xlong lBlueShift, xlong lFlags) = 0;
    virtual xlong Blt(CBitmapBase *pSource, xlong lSourceX, xlong lSourceY, xlong lTargetX, xlong lTargetY,
                      xlong lWidth, xlong lHeight, xlong lTransparent, xlong lDither, xlong lUnused) = 0;
    virtual xlong BltScale(CBitmapBase *pSource, CRect *pSourceArea, CRect *pTargetArea, xlong lFlags) = 0;
    virtual xlong Free() = 0;
    /// Before m_pData is written to.
    virtual void LockBitmapData() = 0;
    /// After it has been written to.
    virtual void ReleaseBitmapData() = 0;
    /// Before a back end reads m_pData to bring m_pSurface up to date, and after.
    virtual void ScreenLockBitmapData() = 0;
    virtual void ScreenReleaseBitmapData() = 0;

    xlong m_lWidth;         ///< pixels
    xlong m_lHeight;        ///< pixels
    xlong m_lDepth;         ///< bits per pixel: 8, 16, 24 or 32
    xlong m_lPitch;         ///< bytes from row to row, at no certain alignment
    xlong m_lBytesPerPixel; ///< (depth + 7) / 8
    xlong m_lRedBits;       ///< bits of a channel, 0 where there is none
    xlong m_lGreenBits;
    xlong m_lBlueBits;
    xlong m_lAlphaBits;
    xlong m_lRedShift; ///< place of a channel, as told above
    xlong m_lGreenShift;
    xlong m_lBlueShift;
    xlong m_lAlphaShift;
    unsigned char *m_pData;         ///< owned; null when empty
    unsigned char m_bRGB;           ///< 1 for direct colour, 0 for indexed
    xlong m_bChanged;               ///< 1: changed since the last copy to a display surface
    CPalette *m_pPalette;           ///< owned; null without a palette
    CRect m_rcClip;                 ///< limits blits from and to this bitmap; (0, 0, -1, -1) when empty
    IDirectDrawSurface *m_pSurface; ///< the display's own copy, or null
    unsigned char m_bOnSurface;     ///< 1: the display draws from m_pSurface
};

/// The implementation of CBitmapBase. All results are 1 for success and 0 for
/// failure where nothing else is said. Copying shares pixels and palette, and
/// both copies would free them: hand bitmaps around by pointer.
///
/// Whoever writes to m_pData brackets that with LockBitmapData and
/// ReleaseBitmapData. A pointer into the data does not outlive a conversion,
/// Load, Create or Free.
class TARVIX_API CBitmap : public CBitmapBase
{
public:
    CBitmap();
    CBitmap(const CBitmap &) = default;
    CBitmap &operator=(const CBitmap &) = default;
    ~CBitmap() override;

    /// Empty picture of index 0; rows are padded to 4 bytes.
    /// @param pPalette  cloned; may be null
    /// @param lFlags    unused
    /// @return 0 with the bitmap empty when the memory can't be had
    xlong CreateIndex(xlong lWidth, xlong lHeight, xlong lDepth, const CPalette *pPalette, xlong lFlags) override;
    /// CreateRGBA without alpha.
    xlong CreateRGB(xlong lWidth, xlong lHeight, xlong lDepth, xlong lRedBits, xlong lGreenBits, xlong lBlueBits,
                    xlong lRedShift, xlong lGreenShift, xlong lBlueShift, xlong lFlags) override;
    /// Empty picture of zero bytes; rows are padded to 4 bytes.
    /// @param lDepth  8, 16, 24 or 32; another gives 0 and changes nothing
    /// @return 0 with the bitmap empty when the memory can't be had
    xlong CreateRGBA(xlong lWidth, xlong lHeight, xlong lDepth, xlong lRedBits, xlong lGreenBits, xlong lBlueBits,
                     xlong lAlphaBits, xlong lRedShift, xlong lGreenShift, xlong lBlueShift, xlong lAlphaShift,
                     xlong lFlags) override;
    /// Reads a picture file by the type that its extension names.
    /// @return 0 with XERR_PICTURE_FORMAT or the reader's text
    xlong Load(const char *pszFileName, xlong lUnused) override;
    /// Writes a picture file.
    /// @param pType   null: by the name's extension; 0 without a report if none fits
    /// @param pParameters  handed to the type
    /// @param pArea   handed to the type; null for the whole picture
    /// @param lFlags  XBMP_SAVE_NUMBERED saves under the first free name of
    ///                "stemYYYY-MM-DD_NN.ext", up to number 101; also handed
    ///                to the type
    xlong Save(const char *pszFileName, CPicType *pType, void *pParameters, CRect *pArea, xlong lFlags) override;
    /// Converts in place to 8 bits. A picture of 24 bits goes through 15 bits
    /// and the colour cube of the first palette that was used; one of 16 or 32
    /// becomes 127 everywhere.
    /// @param lWidth   ignored, as lHeight
    /// @param pPalette the colours to use, cloned; at depth 8 it is needed
    /// @param lFlags   not 0 dithers; XBMP_NO_KEY_PASS
    xlong ConvertIndex(xlong lWidth, xlong lHeight, xlong lDepth, const CPalette *pPalette, xlong lFlags) override;
    /// Converts in place to a direct-colour format of 16 or 24 bits. m_bRGB
    /// and the palette stay, so an indexed bitmap is converted once at most.
    /// @param lWidth   ignored, as lHeight
    /// @param lFlags   not 0 dithers from 24 to 16 bits; XBMP_NO_KEY_PASS
    xlong ConvertRGB(xlong lWidth, xlong lHeight, xlong lDepth, xlong lRedBits, xlong lGreenBits, xlong lBlueBits,
                     xlong lRedShift, xlong lGreenShift, xlong lBlueShift, xlong lFlags) override;
    /// Copies an area of another bitmap, converting where the formats differ:
    /// 8 bits to 8, 16 and 24; 16 and 24 bits to 16 and 24. Other pairs copy nothing.
    /// @param pSource  not this bitmap
    /// @param lWidth   pixels; -1 for the source's width, likewise lHeight
    /// @param lTransparent  1 leaves out the pixels equal to the source's first one
    /// @param lDither  not 0 dithers from 24 to 16 bits, unless transparent
    /// @return 1
    xlong Blt(CBitmapBase *pSource, xlong lSourceX, xlong lSourceY, xlong lTargetX, xlong lTargetY, xlong lWidth,
              xlong lHeight, xlong lTransparent, xlong lDither, xlong lUnused) override;
    /// Marks the bitmap as changed and copies nothing.
    /// @return 1
    xlong BltScale(CBitmapBase *pSource, CRect *pSourceArea, CRect *pTargetArea, xlong lFlags) override;
    /// Releases pixels and palette; size, format and clip stay.
    /// @return 1
    xlong Free() override;
    /// Does nothing, the pixels being in memory.
    void LockBitmapData() override;
    /// Marks the bitmap as changed.
    void ReleaseBitmapData() override;

protected:
    /// Does nothing.
    void ScreenLockBitmapData() override;
    /// Marks the bitmap as copied to its display surface.
    void ScreenReleaseBitmapData() override;

public:
    /// Fills the whole bitmap. At 16 bits a grey is stored as its byte twice,
    /// which is exact for black and white only.
    /// @return 0 at a depth other than 8, 16, 24 and 32
    xlong Fill(const TRGBA *pColour);
    /// Writes the pixel that begins lOffset bytes into the data. Alpha counts at 32 bits only.
    /// @return 1
    xlong PutPixel(xlong lOffset, const TRGBA *pColour);
    /// Reads a pixel; alpha is set at 32 bits only.
    /// @return 1
    xlong GetPixel(xlong lOffset, TRGBA *pColour);
    /// The same by column and row, without a test of either.
    xlong PutPixel(xlong lX, xlong lY, const TRGBA *pColour);
    xlong GetPixel(xlong lX, xlong lY, TRGBA *pColour);
};
