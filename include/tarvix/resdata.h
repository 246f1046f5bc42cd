#pragma once

#include "tarvix/bitmap.h"
#include "tarvix/control.h"
#include "tarvix/font.h"
#include "tarvix/kcbl.h"
#include "tarvix/llist.h"
#include "tarvix/palette.h"

struct TResSection;

enum
{
    RES_NAME_SIZE = 32, ///< with the zero, as RES_FILE_SIZE
    RES_FILE_SIZE = 260,
    RES_MAX_PIXELS = 1 << 26, ///< of a picture, and of all frames of an animation
    RES_MAX_FRAMES = 65536    ///< of an animation
};

/// A name and an id of "Defines".
struct TResDefine
{
    xlong lId;
    char szName[RES_NAME_SIZE];
    TResDefine *pNext; ///< of those that the look-up by name walks together
};

struct TResString
{
    xlong lId;
    char szName[RES_NAME_SIZE];
    char szText[1]; ///< the record is made to fit
};

struct TBitmapRes
{
    char szName[RES_NAME_SIZE];
    char szFile[RES_FILE_SIZE];
    CBitmap Bitmap; ///< in the screen's format
};

struct TResAnim
{
    char szName[RES_NAME_SIZE];
    TCntrlAnim *pAnim; ///< owned
};

struct TResValue
{
    xlong lId;
    char szName[RES_NAME_SIZE];
    xlong lValue;
};

/// A ramp of shades.
struct TResColor
{
    char szName[RES_NAME_SIZE];
    TRGBA *pColors; ///< Colors
    xlong lNumColors;
    TRGBA Colors[1]; ///< the record is made to fit
};

struct TResCntrlColor
{
    char szName[RES_NAME_SIZE];
    TCntrlColor Color;
};

struct TResFont
{
    char szName[RES_NAME_SIZE];
    CFont Font;
};

/// A row of a name table for GetData. A null name ends the table.
struct TResData
{
    const char *pszName;
    xlong lValue;
};

/// The resource file of a program: a KCBL tree whose sections declare ids,
/// strings, values, the palette, fonts, pictures, animations, colours and the
/// GUI's defaults. docs/resources.md tells how a script looks.
///
/// Loading makes all of them at once, pictures in the format of the screen in
/// the globals; without a screen they stay as loaded. In the tree stay the
/// windows, which CDialog reads, and the program's own "Data".
///
/// What getters return belongs to this object and lives until Free. Names are
/// compared without regard to case where nothing else is said. Results are 1
/// and 0 with a report. An index is that of a string of the tree's current item.
class TARVIX_API CResData : public CKCBL
{
public:
    CResData();
    CResData(const CResData &) = delete;
    CResData &operator=(const CResData &) = delete;

    /// Reads a resource file: a text that begins with "; script", or a packed
    /// one. Without Free in between, names are added to those of an earlier
    /// file, which are found first, and the tree is replaced.
    /// @return 1 also when a section has faults, the last of which the error
    ///         object then holds; 0 with a text for a file that is none or can't be read
    xlong Load(const char *pszPath) override;
    ~CResData() override;

    /// Load for a text in memory, which needs no first line.
    xlong Import(const char *pszText);
    /// Frees everything, and takes what belongs to it out of the window
    /// manager's defaults. Controls that use it must be gone.
    /// @return 1
    xlong Free();

    /// To the first item of the program's own chunk. @return 0 if there is none
    xlong EnterDataChunk();
    xlong ExitDataChunk();

    /// @return the first name with that id, or null
    char *GetResName(xlong lId);
    /// @return 0 without a report when there is no such name
    xlong GetResId(const char *pszName, xlong *plId);
    /// @return null, or the default, when there is none
    char *GetResString(xlong lId);
    char *GetResString(xlong lId, char *pszDefault);
    /// With regard to case.
    char *GetResString(const char *pszName, char *pszDefault);
    /// @return 0 with a text when there is none
    xlong GetResValue(xlong lId);

    /// Null with a text when there is none, here and for what follows.
    CFont *GetFont(const char *pszName);
    CFont *GetFont(xlong lIndex);
    CBitmap *GetBm(const char *pszName);
    CBitmap *GetBitmap(xlong lIndex);
    TCntrlAnim *GetAnim(xlong lIndex);
    /// Words as "XWIN_TITLEBAR|XWIN_CLOSE", joined by or. A text that begins
    /// with 0, and an empty one, gives 0.
    xlong GetResFlags(xlong lIndex, xlong *plFlags);
    /// A word as "XKEY_F1".
    xlong GetHotkey(xlong lIndex, short *psKey);
    /// @param lShade  of a ramp, when the string is its name; "1 2 3 4" gives red, green, blue and alpha
    xlong GetColor(xlong lIndex, TRGBA *pColor, xlong lShade);
    xlong GetCol(const char *pszName, TRGBA *pColor, xlong lShade);
    /// The colours of a control: a ramp of eight shades or more.
    TCntrlColor *GetCntrlColor(xlong lIndex);

    // Of the records above, owned.
    CLList m_listDefines;
    CLList m_listStrings;
    CLList m_listBitmaps;
    CLList m_listAnims;
    CLList m_listValues;
    CLList m_listColors;
    CLList m_listCntrlColors;
    CLList m_listFonts;
    CKCBL m_Spare; ///< unused

protected:
    /// Reads all sections of the tree and removes those that are used up.
    /// @return 1
    xlong SetupResources();
    // One section each. 0 with a text at the first fault; what came before it stays.
    xlong SetupDefines();
    xlong SetupStrings();
    xlong SetupValues();
    xlong SetupPalette();
    xlong LoadFonts();
    xlong LoadBitmaps();
    /// Makes a record's picture from an area of another one, by strings 0 to 3.
    xlong Copybitmap(TBitmapRes *pRes, CBitmap *pSource);
    /// Makes a record's picture from a file, by strings 1 to 4.
    xlong LoadBitmapA(TBitmapRes *pRes, const char *pszName, const char *pszFile);
    xlong LoadAnimations();
    xlong SetupColors();
    xlong SetupDefaults();
    /// Looks up words in a table.
    /// @return 0 with a text for an unknown one; *plResult is 0 then
    xlong GetData(const TResData *pTable, const char *pszText, xlong *plResult);

private:
    friend class CDialog;
    xlong LoadPacked(const char *pszPath, xulong ulSize, xulong ulPacked);
    xlong LoadBitmapChunk();
    const TResSection *EnterSection(xlong lSection);
    xlong AddDefine(const char *pszName, xlong lId);

    struct TChain
    {
        TResDefine *pFirst, *pLast;
    };
    TChain &ChainOf(const char *pszName);
    void Chain(TResDefine *pDefine);
    void FollowDefines();
    // No host runs in between: the list is looked at once for all look-ups.
    struct TNoChange
    {
        explicit TNoChange(CResData &res) : m_Res(res), m_bBefore(res.m_bNoChange)
        {
            res.FollowDefines();
            res.m_bNoChange = true;
        }
        ~TNoChange() { m_Res.m_bNoChange = m_bBefore; }
        TNoChange(const TNoChange &) = delete;
        TNoChange &operator=(const TNoChange &) = delete;

        CResData &m_Res;
        const bool m_bBefore;
    };
    TChain m_Chains[256]; // of m_listDefines, in their order
    size_t m_ulChained;   // what the list was like then: a host may change it
    bool m_bNoChange;
};
