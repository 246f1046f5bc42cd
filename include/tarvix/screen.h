#pragma once

#include "tarvix/bitmap.h"
#include "tarvix/llist.h"
#include "tarvix/memory.h"
#include "tarvix/palette.h"
#include "tarvix/rect.h"
#include "tarvix/types.h"

/// A video mode. Sizes in pixels; channels as in CBitmapBase, all 0 in a
/// palette mode.
struct SVmode
{
    xlong lWidth;
    xlong lRowBytes; ///< of the frame buffer
    xlong lHeight;
    xlong lBytesPerPixel;
    xlong lDepth;
    xlong lRedBits;
    xlong lGreenBits;
    xlong lBlueBits;
    xlong lRedShift;
    xlong lGreenShift;
    xlong lBlueShift;
    xlong lIndexed; ///< 1 for a palette mode
    xlong lKind;    ///< XMODE_...
    xlong lId;
    char szName[128];
};

enum
{
    XMODE_FULL_SCREEN = 0,
    XMODE_WINDOW = 1,
    XMODE_DESKTOP = 2 ///< a window over the whole desktop, the picture in its centre
};

/// Bits of SetScreenWindowProperties.
enum
{
    XWINDOW_CAPTION = 1,
    XWINDOW_THICK_FRAME = 2
};

/// The drawing surface. A back end derives from it and owns the frame buffer.
///
/// "Screen" operations draw on the frame buffer, and what they draw lasts one
/// frame. "Persistent" operations draw on the picture that the frame buffer is
/// restored from. Both note the changed areas, per page, so that a frame costs
/// what has changed. No drawing call may be made without a mode. Areas have
/// inclusive corners. Drawing clips to m_rcClip and says nothing when that
/// leaves nothing; results are 1 or 0 where nothing else is said.
class TARVIX_API CScreenBase
{
public:
    enum
    {
        PAGES = 3,
        MAX_AREAS = 128,
        MAX_CLIPS = 32,
        MAX_ROWS = 2048
    };

    TARVIX_HEAP_CLASS

    CScreenBase();
    CScreenBase(const CScreenBase &) = delete;
    CScreenBase &operator=(const CScreenBase &) = delete;

    /// Starts the mode that the mode list's cursor stands on.
    virtual xlong InitMode() = 0;
    /// Finds a mode, starts it and sets the default palette.
    /// @param lKind  XMODE_..., or -1 for any
    virtual xlong InitModeRez(xlong lWidth, xlong lHeight, xlong lDepth, xlong lKind);
    /// By width, height and depth of the record; the palette is left alone.
    virtual xlong InitModeMode(SVmode *pMode);
    /// @return null when no mode is set
    virtual SVmode *GetActiveMode();
    /// Ends the mode; its records, buffers and lists go too.
    virtual xlong ExitMode() = 0;
    /// Fills the mode list with what the back end can show.
    virtual xlong GetVideoModes() = 0;
    /// Adds a mode in a window to the list, and its twin over the desktop.
    /// @param lDepth  8, 16 or 24
    /// @param lId     of the windowed mode, the next one goes to its desktop
    ///                twin; -1 takes the next free ones
    virtual xlong AddWindowVideoMode(xlong lWidth, xlong lHeight, xlong lDepth, xlong lId) = 0;
    /// Sizes and styles the window.
    /// @param ulFlags  XWINDOW_...
    /// @param lWidth   of the picture; -1 for the mode's, as lHeight
    virtual xlong SetScreenWindowProperties(xulong ulFlags, xlong lWidth, xlong lHeight) = 0;
    /// Notes the flags for a host that asks for none.
    virtual xlong SetDefaultScreenWindowProperties(xulong ulFlags) = 0;
    /// The walk over the mode list: ModeFirst, then while ModeExists: ModeGet, ModeNext.
    virtual xlong ModeFirst();
    virtual xlong ModeExists();
    virtual xlong ModeNext();
    virtual SVmode *ModeGet();
    /// Whether the back end can show the mode at the cursor.
    virtual xlong ModeAvailable() = 0;
    /// Whether the back end can run on this machine.
    virtual xlong ScreenAvailable() = 0;
    /// Bits per pixel of the desktop.
    virtual xlong GetDepth() = 0;
    /// The application has the focus: the whole picture is queued.
    virtual void Activate();
    /// The focus is lost.
    virtual void DeActivate();
    virtual xlong GetActive();
    /// Turns presenting on and off. Once it is on again, all of the picture is shown.
    virtual xlong SetFlipScreen(xlong lOn) = 0;
    virtual xlong IsFullScreen();
    /// Converts a bitmap to the screen's format.
    /// @param lFlags  dither argument; bit 1 leaves the key-keeping pass out
    virtual xlong MakeScreenFormat(CBitmap *pBitmap, xlong lFlags);
    /// MakeScreenFormat, and a copy in the display's own memory where there is one.
    virtual xlong MakeScreenBitmap(CBitmap *pBitmap, xlong lFlags) = 0;
    /// Does nothing: a texture is a bitmap in the target's format.
    virtual xlong MakeScreenTexture(CBitmap *pBitmap, xlong lFlags) = 0;
    /// Draws into the frame buffer.
    /// @param lWidth        pixels; -1 for the bitmap's, as lHeight
    /// @param lTransparent  1 skips pixels of the key colour
    virtual void DrawBitmapScreen(CBitmap *pBitmap, xlong lSourceX, xlong lSourceY, xlong lX, xlong lY, xlong lWidth,
                                  xlong lHeight, xlong lTransparent, xlong lFlags) = 0;
    /// Draws into the persistent picture, in persistent mode alone. At 8 bits
    /// the picture takes the bitmap's palette.
    virtual void DrawBitmapPersistent(CBitmap *pBitmap, xlong lSourceX, xlong lSourceY, xlong lX, xlong lY,
                                      xlong lWidth, xlong lHeight, xlong lTransparent, xlong lFlags);
    /// Queues the target area; scaling itself copies nothing.
    virtual void DrawBitmapPersistentScale(CBitmap *pBitmap, CRect *pSource, CRect *pTarget, xlong lFlags);
    /// As DrawBitmapScreen, but queues nothing.
    virtual void DrawBitmapScreenGui(CBitmap *pBitmap, xlong lSourceX, xlong lSourceY, xlong lX, xlong lY, xlong lWidth,
                                     xlong lHeight, xlong lTransparent, xlong lFlags) = 0;
    /// As DrawBitmapScreen, but what it drew is shown and not restored: that is
    /// the caller's, with RestoreSpriteScreen.
    virtual void DrawSpriteScreen(CBitmap *pBitmap, xlong lSourceX, xlong lSourceY, xlong lX, xlong lY, xlong lWidth,
                                  xlong lHeight, xlong lTransparent, xlong lFlags) = 0;
    /// Draws a saved area back; a null bitmap is passed over.
    virtual void RestoreSpriteScreen(CBitmap *pBitmap, xlong lX, xlong lY, xlong lWidth, xlong lHeight) = 0;
    /// Reads an area of the frame buffer into a bitmap.
    virtual void UpdateSpriteRestore(xlong lX, xlong lY, xlong lWidth, xlong lHeight, xlong lUnused, xlong lFlags,
                                     CBitmap *pBitmap) = 0;
    /// @param pTexture  in the target's format; not owned
    virtual void SetTexture(CBitmap *pTexture) = 0;
    /// Texture positions u, v of the four vertices, texels in 16.16.
    virtual void SetTextureCoords(xlong lU0, xlong lV0, xlong lU1, xlong lV1, xlong lU2, xlong lV2, xlong lU3,
                                  xlong lV3);
    /// Vertices in order, clockwise on the screen, in half pixels; z is not read.
    virtual void SetPolygon(xlong lX0, xlong lY0, float fZ0, xlong lX1, xlong lY1, float fZ1, xlong lX2, xlong lY2,
                            float fZ2, xlong lX3, xlong lY3, float fZ3);
    /// @param lFilter  non-zero smooths by drawing at twice the size, not at 8 bits
    virtual void SetPolygonMode(xlong lMode, xlong lFilter);
    /// Draws the textured polygon and queues its area. Without SetPolygon in
    /// between, the next one comes out at half the size.
    /// @param pBounds  receives the extent before clipping, if not null
    virtual xlong DrawPolygonScreen(CRect *&pBounds) = 0;
    /// The same on the persistent picture.
    virtual xlong DrawPolygonPersistent(CRect *&pBounds);
    /// The same on a bitmap; nothing is queued.
    virtual xlong DrawPolygonBitmap(CBitmap *pBitmap, CRect *&pBounds);
    /// Darkens the polygon's area.
    /// @param pArea  receives the area, if not null
    virtual xlong DrawShadowPolygonScreen(CRect *&pArea) = 0;
    virtual xlong DrawShadowPolygonPersistent(CRect *&pArea);
    /// @param pBitmap  of the mode's depth and row bytes
    virtual xlong DrawShadowPolygonBitmap(CBitmap *pBitmap, CRect *&pArea);
    /// Halves the vertices, which makes them pixels, and goes on with CalcDrawList.
    virtual xlong MakeDrawList(xlong &lMinX, xlong &lMinY, xlong &lMaxX, xlong &lMaxY);
    /// Moves the vertices to the origin, by what the offsets tell, and goes on
    /// with CalcDrawList in half pixels.
    virtual xlong MakeFilterDrawList(xlong &lOffsetX, xlong &lOffsetY, xlong &lMinX, xlong &lMinY, xlong &lMaxX,
                                     xlong &lMaxY);
    /// Fills the span tables of the polygon's rows and tells its extent.
    /// @return 1 when any row can be drawn
    virtual xlong CalcDrawList(xlong &lMinX, xlong &lMinY, xlong &lMaxX, xlong &lMaxY);
    /// Scales a block of twice the size down into the target, which must hold
    /// the result: nothing is clipped. At 16 and 24 bits only.
    virtual void CopyFiltered(int nX, int nY, unsigned char *pTarget, int nPitch, int nHeight, unsigned char *pSource,
                              int nSourcePitch, int nSourceRows);
    /// 1 creates the buffer in the mode's format, anything else deletes it.
    virtual xlong SetPersistent(xlong lOn);
    /// @param lMode  1 creates the buffer if need be and uses it
    virtual xlong SetPersistentMode(xlong lMode);
    /// The same for a second picture, for hosts to keep one behind the persistent one.
    virtual xlong SetBackground(xlong lOn);
    virtual xlong SetBackgroundMode(xlong lMode);
    /// Copies the persistent picture to the background, all but the last column and row.
    virtual void SetPersistentToBackground();
    /// Copies the background to the persistent picture: 640 by 480 pixels,
    /// whatever the arguments.
    virtual void UpdateFromBackgroundToPersistent(xlong lLeft, xlong lTop, xlong lRight, xlong lBottom) = 0;
    /// The pictures to draw on directly, null without; the area is not looked at.
    virtual CBitmap *LockPersistentBitmap(xlong lLeft, xlong lTop, xlong lRight, xlong lBottom) = 0;
    virtual void UnlockPersistentBitmap() = 0;
    virtual CBitmap *LockBackgroundBitmap(xlong lLeft, xlong lTop, xlong lRight, xlong lBottom) = 0;
    virtual void UnlockBackgroundBitmap() = 0;
    /// @return the first pixel of the frame buffer, rows of lRowBytes; null if it can't be locked
    virtual unsigned char *LockScreenBuffer() = 0;
    virtual void ReleaseScreenBuffer() = 0;
    /// MakeScreenBitmap on the persistent picture.
    virtual xlong CachePersistentBitmap();
    /// As SetPersistent and its mode, for the 8-bit buffer that modulates textured polygons.
    virtual xlong SetAlphaBuffer(xlong lOn);
    virtual xlong SetAlphaBufferMode(xlong lMode);
    /// Copies a bitmap into the alpha buffer. The bitmap becomes a grey one of
    /// 8 bits. Does nothing unless the alpha mode is 1.
    virtual void DrawBitmapAlpha(CBitmap *pBitmap, xlong lSourceX, xlong lSourceY, xlong lX, xlong lY, xlong lWidth,
                                 xlong lHeight, xlong lTransparent, xlong lFlags);
    /// Does nothing.
    virtual void ClearAlpha(signed char cValue, xlong lLeft, xlong lTop, xlong lRight, xlong lBottom);
    /// Sends frame message 2 and presents what has changed.
    virtual xlong FlipPage() = 0;
    /// Sends frame message 3 and restores what has changed.
    virtual xlong ClearBuffer() = 0;
    /// Offers the changed areas to the GUI.
    virtual void Validate() = 0;
    /// Rasterises the polygon into a block.
    /// @param pClip    pixels inside the block
    /// @param lPitch   bytes per row
    /// @param pArea    receives the clipped extent, zero when nothing is left
    /// @param pBounds  receives the extent, if not null
    virtual xlong DrawPolygonSoftware(unsigned char *pTarget, CRect *pClip, xlong lPitch, xlong lHeight,
                                      xlong lBytesPerPixel, CRect *&pArea, CRect *&pBounds);
    /// Darkens the polygon's area in a block of the mode's size and row bytes.
    virtual xlong DrawShadowPolygonSoftware(unsigned char *pTarget, CRect *&pArea);
    /// Queues what is to be shown, and then restored from the persistent
    /// picture, on the present page; in persistent mode alone.
    virtual void AddClearArea(xlong lLeft, xlong lTop, xlong lRight, xlong lBottom);
    /// The same on each page; in a window, where all pages are one picture, on
    /// the present page alone.
    virtual void AddClearAreaGui(xlong lLeft, xlong lTop, xlong lRight, xlong lBottom);
    /// Queues what has changed on the persistent picture, on each page that shows it.
    virtual void AddClearAreaPersistent(xlong lLeft, xlong lTop, xlong lRight, xlong lBottom);
    /// Queues what lies in the clip for the GUI to repaint, on each page.
    virtual void AddShadowArea(xlong lLeft, xlong lTop, xlong lRight, xlong lBottom);
    /// Queues what the GUI has to repaint, on the present page.
    virtual void ASA(xlong lLeft, xlong lTop, xlong lRight, xlong lBottom);
    /// Clips a line to m_rcClip. @return 0 when nothing is left
    virtual xlong ClipLine(xlong &lX1, xlong &lY1, xlong &lX2, xlong &lY2);
    /// The clip becomes the area, as far as it lies in the mode's picture;
    /// (0, 0, 0, 0) when nothing is left.
    virtual void SetClip(xlong lLeft, xlong lTop, xlong lRight, xlong lBottom);
    /// The same within the present clip.
    virtual void SetSubClip(xlong lLeft, xlong lTop, xlong lRight, xlong lBottom);
    /// Saves the clip. @return 0 when 32 are saved already
    virtual xlong PushClip();
    /// Takes the last saved clip back. @return 0 when none is saved
    virtual xlong PopClip();
    /// At 8 bits only. It is seen when SetSystemPalette has given it to the
    /// platform: until the first time the picture is black.
    /// @param pPalette  cloned
    virtual void SetPalette(CPalette *pPalette);
    virtual CPalette *GetPalette();
    /// The window's place on the desktop; any pointer may be null.
    virtual void GetScreenPos(xlong *plX, xlong *plY, xlong *plWidth, xlong *plHeight);
    virtual void SetScreenPos(xlong lX, xlong lY);
    virtual void SetScreenSize(xlong lWidth, xlong lHeight);
    /// Gives the screen's palette to the platform.
    virtual void SetSystemPalette();
    virtual ~CScreenBase();

    /// Fills on the frame buffer; nothing is queued.
    void FillRect(xlong lX, xlong lY, xlong lWidth, xlong lHeight, TRGBA color);
    /// Darkens on the frame buffer through the shade tables; nothing is queued.
    /// @param lPercent  0 to 100; at 24 bits 0 blackens
    void FillRectAlpha(xlong lX, xlong lY, xlong lWidth, xlong lHeight, xlong lPercent);
    /// Both ends are drawn. Lines run from left to right and top to bottom: one
    /// given against its long axis comes out mirrored.
    void DrawLine(xlong lX1, xlong lY1, xlong lX2, xlong lY2, TRGBA color);
    /// The next flip copies the screen to the persistent buffer in grey.
    xlong SetScreenToPersistentGrey();

    struct TVertex
    {
        xlong lX;
        xlong lY;
        float fZ;
    };

    CBitmap *m_pPersistent;                  ///< owned, or null
    xlong m_lPage;                           ///< the one that is drawn on
    CRect m_rcClip;                          ///< of all drawing on frame buffer and persistent picture
    CRect m_ValidateAreas[PAGES][MAX_AREAS]; ///< what the GUI has to repaint
    xlong m_bActive;
    xlong m_bGreyPending; ///< of SetScreenToPersistentGrey
    xlong m_bFlipScreen;
    CPalette m_Palette;
    CPalette m_DefaultPalette;
    TRGBA m_SysColors[256];
    SVmode *m_pMode; ///< owned, null when no mode is set
    xlong m_lNumPages;
    CLList m_Modes; ///< of SVmode, owned
    xlong m_bPersistentMode;
    CBitmap *m_pBackground; ///< owned, or null
    xlong m_bBackgroundMode;
    xlong m_lPolygonFilter;
    xlong m_lPolygonMode;
    CBitmap *m_pTexture; ///< not owned
    xlong m_lTextureCoords[8];
    CBitmap *m_pAlpha; ///< owned, 8 bits deep, or null
    xlong m_bAlphaMode;
    CRect m_ClearAreas[PAGES][MAX_AREAS]; ///< what is to be restored
    xlong m_lClearCount[PAGES];
    CRect m_PersistentAreas[PAGES][MAX_AREAS]; ///< what has changed behind it
    xlong m_lPersistentCount[PAGES];
    xlong m_lValidateCount[PAGES];
    CRect m_ClipStack[MAX_CLIPS];
    xlong m_lClipDepth;
    TVertex m_Polygon[4];
    CRect m_rcReserved1;
    CRect m_rcReserved2;
    xlong m_lFirstRow; ///< of the span tables
    xlong m_lLastRow;
    xlong m_lLeftX[MAX_ROWS];
    xlong m_lRightX[MAX_ROWS];
    xlong m_lLeftU[MAX_ROWS];
    xlong m_lRightU[MAX_ROWS];
    xlong m_lLeftV[MAX_ROWS];
    xlong m_lRightV[MAX_ROWS];
    xlong m_lClearFirst[PAGES]; ///< of the lists of areas: those before are cancelled
    xlong m_lPersistentFirst[PAGES];
    xlong m_lValidateFirst[PAGES];

protected:
    /// Outside bits of a point: 1 below, 2 above, 4 right, 8 left.
    xlong CompOutCode(xlong lX, xlong lY);
    /// Turns the frame buffer into a grey persistent picture.
    void ScreenToPersistentGray();
    /// Leaves the mode's buffers, lists and mode records.
    void CleanUp();
};

/// The screens that can be chosen, in order of registration. Not owned.
class TARVIX_API CScreenBaseList
{
public:
    TARVIX_HEAP_CLASS

    CScreenBaseList();
    virtual ~CScreenBaseList();

    xlong Register(CScreenBase *pScreen);
    xlong Unregister(CScreenBase *pScreen);
    xlong UnregisterAll();
    xlong First();
    xlong Next();
    xlong Exists();
    xlong NumTypes();
    /// @return the screen at the cursor, null past the end
    CScreenBase *Get();

    CLList m_List;
};
