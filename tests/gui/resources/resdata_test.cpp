#include "tarvix/resdata.h"

#include "core/heap.h"
#include "gui/resources/resdatasupport.h"
#include "slots.h"
#include "tarvix/lzss.h"

#include <algorithm>
#include <random>

namespace
{
// As the tool pres packs.
std::string Packed(const std::string &strText)
{
    CLzss lzss;
    xulong ulLen = (xulong)strText.size();
    char *const pPacked = lzss.CompressBuffer(strText.data(), &ulLen);
    std::string strFile = "PRES";
    for (int n = 0; n < 4; ++n)
        strFile += (char)(ulLen >> 8 * n);
    strFile += "any!" + std::string(pPacked, ulLen);
    xFreeMem(pPacked, nullptr, 0);
    return strFile;
}

const char s_szWhole[] = R"(; script of a test
{ = defines     ; the order of sections plays no part
    ; a comment
    IDW_MAIN = 100

    IDB_OK = 7, "and what follows does not matter"
    IDB_ALSO_OK = 7
    IDB_OK = 9
}
{ = Fonts
    Small = font.xbf
}
{ = Defaults
    Font = small
    Caret = Corner
    Check = WHOLE
    Close = Whole, Corner, Whole, Corner
    drop = Corner, Corner, Corner, Whole
    ArrowUp = Whole, Whole, Corner, Corner
    ArrowDown = Corner, Whole, Whole, Whole
    Titlebar = Ramp, Ramp, Other, Ramp
    Frame = Other, Other, Other, Other
    Unknown = whatever
}
{ = Colors
    Ramp = "1 2 3 4", "5,6 , 7,,8", red, "9 10 11 12", white, "13 14 15 16", "255 300 -1 0", "17 18 19 20"
    Other = Ramp, Ramp, Ramp, Ramp, Ramp, Ramp, Ramp, blue
    Short = grey
}
{ = Strings
    IDS_HELLO = 1, "Hello, {you}"
    IDS_EMPTY = 2, ""
}
{ = Values
    IDV_SPEED = 1, -250
}
{ = Bitmaps
    Whole = pic.bmp, 0, 0, -1, -1
    Corner = pic.bmp, 5, 4, 2, 2
    { = pal.bmp
        Left = 0, 0, 2, 6
        ; between
        All = 3, 3, -1, 5
    }
    Over = pic.bmp, -1, 4, 3, 4
}
{ = Animations
    Spin = pic.bmp, 80, 0, 0, 2, 3, 5, 3, 0
}
{ = Window, IDW_MAIN
    Create = Title, 1, 2, 3, 4, XWIN_TITLEBAR
}
{ = Data
    Flags = "XWIN_TITLEBAR|XWIN_CLOSE", "xwin_titlebar )"
                         "\t"
                         R"( XWIN_CLOSE", 0, "0x10|junk", "XWIN_SIZE|junk", XWIN_SIZ, ""
    Keys = XKEY_F1, null, "XKEY_A|XKEY_SHIFT", XKEY_NOTHING
    Colors = "1 2 3 4", white, ramp, "1 2 3", nothing, " ,, ", "250,,251 252, 253 rest"
    Anim = spin, Turn
    Font = SMALL, Large
    Bitmap = corner, Edge
    Sets = Ramp, white, ramp, Other
}
)";

#if INTPTR_MAX == INT32_MAX
TEST(CResDataRecords, LieWhereHostsExpectThem)
{
    const TResDefine define = {};
    const TResString string = {};
    const TResValue value = {};
    const TResAnim anim = {};
    TBitmapRes bitmap;
    TResColor color;
    TResCntrlColor set;
    TResFont font;
    EXPECT_EQ(4, OffsetOf(define, define.szName));
    EXPECT_EQ(36, OffsetOf(string, string.szText));
    EXPECT_EQ(36, OffsetOf(value, value.lValue));
    EXPECT_EQ(32, OffsetOf(anim, anim.pAnim));
    EXPECT_EQ(32, OffsetOf(bitmap, bitmap.szFile));
    EXPECT_EQ(292, OffsetOf(bitmap, bitmap.Bitmap));
    EXPECT_EQ(32, OffsetOf(color, color.pColors));
    EXPECT_EQ(36, OffsetOf(color, color.lNumColors));
    EXPECT_EQ(40, OffsetOf(color, color.Colors));
    EXPECT_EQ(32, OffsetOf(set, set.Color));
    EXPECT_EQ(32, OffsetOf(font, font.Font));
    const CResData res;
    const CLList *pList = &res.m_listDefines;
    EXPECT_EQ((int)sizeof(CKCBL), OffsetOf(res, res.m_listDefines));
    for (const CLList *pNext : { &res.m_listStrings, &res.m_listBitmaps, &res.m_listAnims, &res.m_listValues,
                                 &res.m_listColors, &res.m_listCntrlColors, &res.m_listFonts })
        EXPECT_EQ(++pList, pNext);
    EXPECT_EQ((const void *)(pList + 1), &res.m_Spare);
}
#endif

TEST_F(CResDataTest, EverySectionIsReadAndFound)
{
    WriteFile("whole.rc", s_szWhole);
    CResData res;
    ASSERT_EQ(1, res.Load("whole.rc")) << LastError();
    EXPECT_EQ("", LastError());

    xlong lId = 0;
    EXPECT_EQ(1, res.GetResId("idb_OK", &lId));
    EXPECT_EQ(7, lId) << "the first of two";
    EXPECT_EQ(1, res.GetResId("xcntrl_close", &lId));
    EXPECT_EQ(1002, lId);
    EXPECT_EQ(0, res.GetResId("IDB_CANCEL", &lId));
    EXPECT_EQ(1002, lId);
    EXPECT_STREQ("IDB_OK", res.GetResName(7));
    EXPECT_STREQ("IDS_NONE", res.GetResName(0));
    EXPECT_EQ(nullptr, res.GetResName(8));

    char szDefault[] = "default";
    EXPECT_STREQ("Hello, {you}", res.GetResString(1));
    EXPECT_STREQ("", res.GetResString(2, szDefault));
    EXPECT_EQ(szDefault, res.GetResString(3, szDefault));
    EXPECT_EQ(nullptr, res.GetResString(3));
    EXPECT_STREQ("Hello, {you}", res.GetResString("IDS_HELLO", szDefault));
    EXPECT_EQ(szDefault, res.GetResString("ids_hello", szDefault)) << "the case counts here";
    EXPECT_EQ(-250, res.GetResValue(1));
    EXPECT_EQ(0, res.GetResValue(2));
    EXPECT_EQ("No value associated with this is", LastError());

    EXPECT_EQ(Area(0, 0, 8, 6), Pixels(res.GetBm("whole")));
    EXPECT_EQ(Area(5, 4, 2, 2), Pixels(res.GetBm("Corner")));
    EXPECT_EQ(Area(0, 0, 2, 6), Pixels(res.GetBm("Left")));
    EXPECT_EQ(Area(0, 0, 8, 6), Pixels(res.GetBm("All"))) << "-1 in one of the sizes means all";
    EXPECT_EQ(Area(-1, 4, 3, 4), Pixels(res.GetBm("Over")));
    EXPECT_STREQ("pic.bmp", ((TBitmapRes *)res.m_listBitmaps.Get(1))->szFile);
    EXPECT_EQ(5, res.GetFont("small")->m_sHeight);
}

TEST_F(CResDataTest, WhatWindowsAndTheProgramReadStaysInTheTree)
{
    CResData res;
    ASSERT_EQ(1, res.Import(s_szWhole));
    EXPECT_EQ(1, res.m_lRestartMode);
    EXPECT_EQ(&res.m_MainChunk, res.m_pCurChunk);
    std::string strLeft;
    for (res.FirstItem(); res.ItemExists(); res.NextItem(0))
        strLeft += std::string(res.GetKeyword()) + (res.GetString(0) ? res.GetString(0) : "") + " ";
    EXPECT_EQ("; script of a test {Fonts {Defaults {Window {Data ", strLeft);
    EXPECT_EQ(1, res.EnterDataChunk());
    EXPECT_STREQ("Flags", res.GetKeyword());
    EXPECT_EQ(1, res.ExitDataChunk());
    EXPECT_STREQ("Data", res.GetString(0));
    EXPECT_EQ(0, res.ExitDataChunk());
}

TEST_F(CResDataTest, GettersReadTheCurrentItem)
{
    CResData res;
    ASSERT_EQ(1, res.Import(s_szWhole));
    xlong lFlags = 99;
    GoTo(res, "Flags");
    const struct
    {
        xlong lResult, lFlags;
    } flags[] = { { 1, 5 }, { 1, 5 }, { 1, 0 }, { 1, 0 }, { 0, 0 }, { 0, 0 }, { 1, 0 }, { 0, 0 } };
    for (xlong l = 0; l < 8; ++l)
    {
        lFlags = 99;
        glb->m_Error.Clear();
        EXPECT_EQ(flags[l].lResult, res.GetResFlags(l, &lFlags)) << l;
        EXPECT_EQ(flags[l].lFlags, lFlags) << l;
        EXPECT_EQ(l == 4 || l == 5 ? "Unknown flag" : "", LastError()) << l;
    }
    GoTo(res, "Keys");
    const short keys[] = { 299, 0, 'A' | 266, 0 };
    for (xlong l = 0; l < 4; ++l)
    {
        short sKey = 99;
        EXPECT_EQ(l < 3, res.GetHotkey(l, &sKey)) << l;
        EXPECT_EQ(keys[l], sKey) << l;
    }
    GoTo(res, "Colors");
    const struct
    {
        xlong lShade, lResult;
        TRGBA Color;
        const char *pszText;
    } colors[] = { { 3, 1, { 1, 2, 3, 4 }, "" },
                   { 0, 1, { 255, 255, 255, 0 }, "" },
                   { 1, 1, { 5, 6, 7, 8 }, "" },
                   { 0, 0, {}, "Unable to get the default arrow down bitmaps" },
                   { 0, 0, {}, "Unable to find the specified color (\"nothing\")" },
                   { 0, 0, {}, "" },
                   { 0, 1, { 250, 251, 252, 253 }, "" },
                   { 0, 0, {}, "" } };
    for (xlong l = 0; l < 8; ++l)
    {
        TRGBA Color(9, 9, 9, 9);
        glb->m_Error.Clear();
        EXPECT_EQ(colors[l].lResult, res.GetColor(l, &Color, colors[l].lShade)) << l;
        EXPECT_EQ(colors[l].lResult ? colors[l].Color : TRGBA(9, 9, 9, 9), Color) << l;
        EXPECT_EQ(colors[l].pszText, LastError()) << l;
    }
    TRGBA Color;
    EXPECT_EQ(0, res.GetColor(1, &Color, 1));
    EXPECT_EQ("Unable to find the specified color (\"white\")", LastError());
    EXPECT_EQ(0, res.GetCol("ramp", &Color, 8));
    EXPECT_EQ(0, res.GetCol("ramp", &Color, -1));
    EXPECT_EQ(1, res.GetCol("ramp", &Color, 6));
    EXPECT_EQ(TRGBA(255, 44, 255, 0), Color) << "a byte of each number";

    GoTo(res, "Sets");
    TCntrlColor *const pRamp = res.GetCntrlColor(0);
    ASSERT_NE(nullptr, pRamp);
    EXPECT_EQ(TRGBA(1, 2, 3, 4), pRamp->crBorder);
    EXPECT_EQ(TRGBA(5, 6, 7, 8), pRamp->crLight);
    EXPECT_EQ(TRGBA(17, 18, 19, 20), pRamp->crExtra);
    EXPECT_EQ(nullptr, res.GetCntrlColor(1)) << "one shade is too few";
    EXPECT_EQ(pRamp, res.GetCntrlColor(2));
    EXPECT_EQ(nullptr, res.GetCntrlColor(4));
    EXPECT_EQ(2, res.m_listCntrlColors.GetNumNodes()) << "Ramp and Other";

    const struct
    {
        const char *pszItem, *pszText;
        std::function<void *(xlong)> Get;
    } objects[] = {
        { "Anim", "Unable to find the \"Turn\" anim in the res file", [&](xlong l) { return res.GetAnim(l); } },
        { "Font", "The \"Large\" font hasn't been preloaded in the res file", [&](xlong l) { return res.GetFont(l); } },
        { "Bitmap", "Unable to find the \"Edge\" bitmap in the res file", [&](xlong l) { return res.GetBitmap(l); } },
    };
    for (const auto &c : objects)
    {
        GoTo(res, c.pszItem);
        EXPECT_NE(nullptr, c.Get(0));
        EXPECT_EQ(nullptr, c.Get(2)) << "no such string";
        EXPECT_EQ(nullptr, c.Get(1));
        EXPECT_EQ(c.pszText, LastError());
    }
}

TEST_F(CResDataTest, FlagAndKeyWordsHaveTheirValues)
{
    const struct
    {
        const char *pszWord;
        xlong lValue;
    } flags[] = { { "XWIN_TITLEBAR", 0x1 },
                  { "XWIN_DRAG", 0x20 },
                  { "XWIN_HIGHLIGHTIFINACTIVE", 0x800 },
                  { "XWIN_ALWAYSLAST", 0x10000 },
                  { "CNTRL_EXTRUDED", 0x1 },
                  { "CNTRL_ALPHA", 0x80 },
                  { "CNTRL_TABSTOP", 0x8000 },
                  { "CNTRL_BUTTONBORDER", 0x10000 },
                  { "CNTRL_EDITHSLIDER", 0x40000 },
                  { "CNTRL_PASSWORD", 0x200000 },
                  { "CNTRL_NUMERIC", 0x8000000 },
                  { "XGUI_RELEASED", 2 },
                  { "XGUI_PRESSED", 1 },
                  { "XGUI_HIDDEN", 5 },
                  { "ANIM_ONCE", 1 },
                  { "ANIM_LOOP", 2 },
                  { "ANIM_PINGPONG", 4 } },
      keys[] = { { "XKEY_BSPACE", 8 },      { "XKEY_TAB", 9 },       { "XKEY_ENTER", 13 },  { "XKEY_ESC", 27 },
                 { "XKEY_SPACE", 32 },      { "XKEY_MULTIPLY", 42 }, { "XKEY_DIVIDE", 47 }, { "XKEY_0", '0' },
                 { "XKEY_9", '9' },         { "XKEY_Z", 'Z' },       { "XKEY_TILDE", 115 }, { "XKEY_INSERT", 256 },
                 { "XKEY_NPDECIMAL", 284 }, { "XKEY_NP0", 285 },     { "XKEY_NP9", 294 },   { "XKEY_PRINTSCR", 295 },
                 { "XKEY_CAPSLOCK", 298 },  { "XKEY_F24", 322 } };
    CResData res;
    for (const auto &c : flags)
    {
        xlong lFlags = 0;
        ASSERT_EQ(1, res.Import((std::string("{ = Data\nA = ") + c.pszWord + "\n}\n").c_str()));
        GoTo(res, "A");
        EXPECT_EQ(1, res.GetResFlags(0, &lFlags)) << c.pszWord;
        EXPECT_EQ(c.lValue, lFlags) << c.pszWord;
    }
    for (const auto &c : keys)
    {
        short sKey = 0;
        ASSERT_EQ(1, res.Import((std::string("{ = Data\nA = ") + c.pszWord + "\n}\n").c_str()));
        GoTo(res, "A");
        EXPECT_EQ(1, res.GetHotkey(0, &sKey)) << c.pszWord;
        EXPECT_EQ(c.lValue, sKey) << c.pszWord;
    }
}

// A section ends at its first fault, whose text stays; what came before it is kept.
TEST_F(CResDataTest, FaultsAreReportedAndTheOtherSectionsRead)
{
    const std::string strLong(32, 'n'), strLongFile(260, 'f');
    const std::string strFits(31, 'n'), strEndless(100000, 'e');
    const std::string strFields = "Failed to read in the x,y,w,h data fields for bitmap";
    const std::string strAnimFields =
        "Failed to read in the frame delay,x,y,w,h,col,row,transFlag data fields for animation \"A\"";
    const struct
    {
        std::string strSection, strItems, strText;
    } cases[] = {
        { "Defines", strFits + " = 1\n" + strLong + " = 1", "Define name to big : \"" + strLong + "\"" },
        { "Defines", "A = word", "Unable to get define id for \"A\"" },
        { "Defines", "A", "Unable to get define id for \"A\"" },
        { "Strings", strLong + " = 1, x", "Define name to big : \"" + strLong + "\"" },
        { "Strings", "A = x, y", "Unable to get id/string for \"A\"" },
        { "Strings", "A = 1", "Unable to get id/string for \"A\"" },
        { "Values", strLong + " = 1, 1", "Define name to big : \"" + strLong + "\"" },
        { "Values", "A = 1, y", "Unable to get id/value for \"A\"" },
        { "Values", "A = 1", "Unable to get id/value for \"A\"" },
        { "Palette", "A", "Unable to get string for \"A\"" },
        { "Fonts", strLong + " = font.xbf", "Bitmap define name to big : \"" + strLong + "\"" },
        { "Fonts", "A", "fname is invalid" },
        { "Fonts", "A = damaged.xbf", "Not a XBF file" },
        { "Bitmaps", strLong + " = pic.bmp, 0, 0, 1, 1", "Bitmap define name to big : \"" + strLong + "\"" },
        { "Bitmaps", "A", "fname is invalid" },
        { "Bitmaps", "A = " + strLongFile + ", 0, 0, 1, 1", "Bitmap filename to big : \"" + strLongFile + "\"" },
        { "Bitmaps", "A = pic.bmp, 0, 0, 1", strFields + " \"A\"" },
        { "Bitmaps", "A = pic.bmp, 0, 0, -2, 1", strFields + " \"A\"" },
        { "Bitmaps", "A = pic.bmp, 0, 0, 1, 0", strFields + " \"A\"" },
        { "Bitmaps", "A = pic.bmp, 0, 0, 8193, 8192", strFields + " \"A\"" },
        { "Bitmaps", "A = pic.bmp, 0, 0, 65536, 65536", strFields + " \"A\"" },
        { "Bitmaps", "{ = missing.bmp\n}", "Couldn't load bitmap" },
        { "Bitmaps", "{\n}", "fname is invalid" },
        { "Bitmaps", "{ = pic.bmp\nA = 0, 0, 1\n}", strFields },
        { "Bitmaps", "{ = pic.bmp\nA = 0, 0, 1, -7\n}", strFields },
        { "Bitmaps", "{ = pic.bmp\n" + strLong + " = 0, 0, 1, 1\n}",
          "Bitmap define name to big : \"" + strLong + "\"" },
        { "Animations", strLong + " = pic.bmp", "Bitmap define name to big : \"" + strLong + "\"" },
        { "Animations", "A", "fname is invalid" },
        { "Animations", "A = pic.bmp, 1, 0, 0, 2, 2, 2, 2", strAnimFields },
        { "Animations", "A = missing.bmp, 1, 0, 0, 2, 2, 2, 2, 0", "Failed to load temporary bitmap for anim\n" },
        { "Animations", "A = pic.bmp, 1, 0, 0, 2, 2, 0, 0, 0", "Failed to create the \"A\" animation" },
        { "Animations", "A = pic.bmp, 1, 0, 0, 2, 2, -1, 1, 0", "Failed to create the \"A\" animation" },
        { "Animations", "A = pic.bmp, 1, 0, 0, -2, 2, 1, 1, 0", "Failed to create the \"A\" animation" },
        { "Animations", "A = pic.bmp, 1, 0, 0, 1, 1, 65537, 1, 0", "Failed to create the \"A\" animation" },
        { "Animations", "A = pic.bmp, 1, 0, 0, 8192, 4096, 3, 1, 0", "Failed to create the \"A\" animation" },
        { "Animations", "A = pic.bmp, 1, 0, 0, 2147483647, 2147483647, 1, 1, 0",
          "Failed to create the \"A\" animation" },
        { "Colors", strLong + " = red", "Color define name to big : \"" + strLong + "\"" },
        { "Colors", "A = red, mauve", "Unable to find the specified color (\"mauve\")" },
        { "Colors", "A = red ; a note is a string too",
          "Unable to find the specified color (\"; a note is a string too\")" },
        { "Colors", "A = 1 2 3 4", "Unable to get the default arrow down bitmaps" }, // without quotes
        { "Defaults", "Font = A", "Unable to get the default font" },
        { "Defaults", "Caret", "Unable to get the default caret bitmap" },
        { "Defaults", "Check = A", "Unable to get the default check bitmap" },
        { "Defaults", "Close = A", "Unable to get the default close bitmaps" },
        { "Defaults", "Drop = A", "Unable to get the default drop bitmaps" },
        { "Defaults", "ArrowUp = A", "Unable to get the default arrow up bitmaps" },
        { "Defaults", "ArrowDown = A", "Unable to get the default arrow down bitmaps" },
        { "Defaults", "Titlebar = white", "Unable to find the specified color (\"white\")" },
        { "Defaults", "Frame", "" },
        { "Defaults", "Button = mauve", "Unable to find the specified color (\"mauve\")" },
        { "Defaults", "Static", "" },
    };
    WriteFile("damaged.xbf", std::string("XIFF\0\4\0\0\0abcd", 13));
    for (const auto &c : cases)
    {
        SCOPED_TRACE(c.strSection + ": " + c.strItems.substr(0, 100));
        std::string strScript;
        for (const char *pszSection : { "Defines", "Strings", "Values", "Animations", "Colors" })
            if (c.strSection != pszSection)
                strScript += std::string("{ = ") + pszSection + "\n}\n";
        strScript += "{ = " + c.strSection + "\n" + c.strItems + "\nNever = 1, 1\n}\n{ = Data\n}\n";
        size_t ulBlocks = 0;
        for (const int nRound : { 1, 2 })
        {
            glb->m_Error.Clear();
            {
                CResData res;
                EXPECT_EQ(1, res.Import(strScript.c_str()));
                EXPECT_EQ(c.strText, LastError());
                EXPECT_EQ(1, res.EnterDataChunk());
                xlong lId;
                EXPECT_EQ(0, res.GetResId("Never", &lId));
                EXPECT_NE(nullptr, res.GetResName(1002)) << "those before the fault";
            }
            if (nRound == 2)
                EXPECT_EQ(ulBlocks, HeapState().ulLiveBlocks);
            ulBlocks = HeapState().ulLiveBlocks;
        }
    }
    // The report of a name without an end is cut or replaced, never overrun.
    CResData res;
    EXPECT_EQ(1, res.Import(
                     ("{ = Defines\n" + strEndless + " = 1\n}\n{ = Strings\nOK = 1, " + strEndless + "\n}\n").c_str()));
    EXPECT_EQ(strEndless, res.GetResString(1));
}

TEST_F(CResDataTest, FormsOfFiles)
{
    const std::string strGood = Packed("{ = Values\nA = 1, 5\n}\n");
    std::string strDamaged = strGood, strBinary = Packed("A = \001\n"), strNoEnd = strGood;
    strNoEnd.resize(strNoEnd.size() - 3);
    strNoEnd[4] = (char)(strNoEnd.size() - 12);
    const struct
    {
        const char *pszName;
        std::string strBytes;
        const char *pszText; ///< null: loads
    } cases[] = {
        { "Script", "; SCRIPT and more\n{ = Values\nA = 1, 5\n}\n", nullptr },
        { "Packed", strGood, nullptr },
        { "Empty", "", "CResData::Load: The file specified is not a valid res file." },
        { "EightBytes", "; script", "CResData::Load: The file specified is not a valid res file." },
        { "Other", "; scripz\n{ = Values\nA = 1, 5\n}\n",
          "CResData::Load: The file specified is not a valid res file." },
        { "TwelveBytes", "PRES12345678", "CResData::Load: The file specified is not a valid res file." },
        { "LowerCase", "pres" + strGood.substr(4), "CResData::Load: The file specified is not a valid res file." },
        { "OneByteMore", strGood + "x",
          "CResData::Load: (PRES RES) Unable to read file, the packed filesize is not correct." },
        { "OneByteLess", strGood.substr(0, strGood.size() - 1),
          "CResData::Load: (PRES RES) Unable to read file, the packed filesize is not correct." },
        { "LengthThatWraps", std::string("PRES\xfb\xff\xff\xff") + "any!" + "12345",
          "CResData::Load: (PRES RES) Unable to read file, the packed filesize is not correct." },
        { "NoEnd", strNoEnd, "CResData::Load: (PRES RES) Unable to unpack data." },
        { "BinaryText", strBinary, "CResData::Load: (PRES RES) Unable to import kcbl packet data." },
        { "BinaryScript", "; script\nA = \001\n", "CResData::Load: (ASCII RES) Unable to load kcbl packet data." },
    };
    for (const auto &c : cases)
    {
        SCOPED_TRACE(c.pszName);
        WriteFile("form.rc", c.strBytes);
        glb->m_Error.Clear();
        CResData res;
        EXPECT_EQ(!c.pszText, res.Load("form.rc"));
        EXPECT_EQ(c.pszText ? c.pszText : "", LastError());
        EXPECT_EQ(c.pszText ? 0 : 5, res.GetResValue(1));
    }
    CResData res;
    EXPECT_EQ(0, res.Load("missing.rc"));
    EXPECT_EQ("CResData::Load: Res file do not exist.", LastError());

    // Cut off and changed at every byte: loads or is refused, and that is all.
    WriteFile("script.rc", s_szWhole);
    for (size_t ul = 0; ul < strGood.size(); ++ul)
        for (const std::string &str :
             { strGood.substr(0, ul), strGood.substr(0, ul) + "\xff" + strGood.substr(ul + 1) })
        {
            WriteFile("form.rc", str);
            CResData damaged;
            damaged.Load("form.rc");
        }
}

TEST_F(CResDataTest, PackedFilesEqualTheirText)
{
    WriteFile("text.rc", s_szWhole);
    WriteFile("packed.rc", Packed(s_szWhole));
    CResData text, packed;
    ASSERT_EQ(1, text.Load("text.rc"));
    ASSERT_EQ(1, packed.Load("packed.rc"));
    ASSERT_EQ(1, text.Save("text.out"));
    ASSERT_EQ(1, packed.Save("packed.out"));
    EXPECT_EQ(ReadFile("text.out"), ReadFile("packed.out"));
    EXPECT_EQ(text.m_listDefines.GetNumNodes(), packed.m_listDefines.GetNumNodes());
    EXPECT_EQ(Pixels(text.GetBm("Corner")), Pixels(packed.GetBm("Corner")));
}

// The look-up walks chains by a hash; a plain walk over the list is what it has to agree with.
TEST_F(CResDataTest, NamesAreFoundAsAWalkOverTheListFindsThem)
{
    std::mt19937 random(11);
    const auto Name = [&]
    {
        std::string str = "n";
        for (unsigned u = random() % 4 + (random() % 9 ? 0 : 26); u; --u)
            str += "aAbB1_zZ"[random() % 8];
        return str;
    };
    const auto IsSame = [](const std::string &a, const char *psz)
    {
        return a.size() == strlen(psz) &&
               std::equal(a.begin(), a.end(), psz, [](char x, char y) { return tolower(x) == tolower(y); });
    };
    CResData res;
    std::vector<std::string> names;
    for (int nFile = 0; nFile < 2; ++nFile)
    {
        std::string strScript = "{ = Defines\n";
        for (int n = 0; n < 700; ++n)
        {
            names.push_back(Name());
            strScript += names.back() + " = " + std::to_string(nFile * 1000 + n) + "\n";
        }
        ASSERT_EQ(1, res.Import((strScript + "}\n").c_str()));
        names.push_back(names.back() + "2");
        names.push_back("");
        int nFound = 0;
        for (const std::string &strName : names)
        {
            const CNode *pNode = res.m_listDefines.m_pFirst;
            while (pNode && !IsSame(strName, ((TResDefine *)pNode->pData)->szName))
                pNode = pNode->pNext;
            xlong lId = -1;
            ASSERT_EQ(pNode != nullptr, res.GetResId(strName.c_str(), &lId)) << strName;
            ASSERT_EQ(pNode ? ((TResDefine *)pNode->pData)->lId : -1, lId) << strName;
            nFound += pNode != nullptr;
        }
        EXPECT_EQ((nFile + 1) * 700, nFound);
    }
    res.Free();
    xlong lId = 0;
    EXPECT_EQ(0, res.GetResId(names[0].c_str(), &lId));
}

TEST_F(CResDataTest, LoadsAgainAndWithoutSomeSections)
{
    WriteFile("whole.rc", s_szWhole);
    WriteFile("small.rc", "; script\n{ = Values\nA = 1, 77\n}\n");
    CResData res;
    xlong lId = 0;
    ASSERT_EQ(1, res.Load("small.rc"));
    EXPECT_EQ(0, res.GetResId("IDS_NONE", &lId)) << "there are no built-in names without a section";
    EXPECT_EQ(6, res.m_listColors.GetNumNodes());
    ASSERT_EQ(1, res.Load("whole.rc"));
    EXPECT_EQ(77, res.GetResValue(1)) << "the earlier file comes first";
    EXPECT_EQ(1, res.GetResId("IDS_NONE", &lId));
    EXPECT_EQ(0, lId);
    ASSERT_EQ(1, res.Free());
    EXPECT_EQ(nullptr, res.GetBm("Corner"));
    EXPECT_EQ(0, res.EnterDataChunk());
    ASSERT_EQ(1, res.Load("whole.rc"));
    EXPECT_EQ(-250, res.GetResValue(1));
    EXPECT_EQ(9, res.m_listColors.GetNumNodes());
    EXPECT_EQ(1, res.Free());
    EXPECT_EQ(1, res.Free());
}

TEST_F(CResDataTest, DefaultsAreSetAndGoWithTheirOwner)
{
    CWinCtrl &manager = *glb->m_pWinCtrl;
    const TCntrlColor *const pOwnFrame = manager.m_pDefFrameColors[2];
    const std::vector<TCntrlColor *> ownTitle(manager.m_pDefTitlebarColors, manager.m_pDefTitlebarColors + 4);
    ASSERT_NE(ownTitle[2], ownTitle[3]);
    CBitmap mine;
    CResData res, other;
    ASSERT_EQ(1, other.Import("{ = Bitmaps\nB = pic.bmp, 0, 0, 1, 1\n}\n{ = Defaults\nCheck = B\n}\n"));
    ASSERT_EQ(1, res.Import(s_szWhole));
    EXPECT_EQ(res.GetFont("Small"), manager.m_pDefFont);
    CBitmap *const pWhole = res.GetBm("Whole"), *const pCorner = res.GetBm("Corner");
    const struct
    {
        CBitmap **ppBitmaps;
        std::vector<CBitmap *> wanted;
    } cases[] = { { &manager.m_pDefCaret, { pCorner } },
                  { &manager.m_pDefCheck, { pWhole } },
                  { manager.m_pDefClose, { pWhole, pCorner, pWhole, pCorner } },
                  { manager.m_pDefDrop, { pCorner, pCorner, pCorner, pWhole } },
                  { manager.m_pDefArrowUp, { pWhole, pWhole, pCorner, pCorner } },
                  { manager.m_pDefArrowDown, { pCorner, pWhole, pWhole, pWhole } } };
    for (const auto &c : cases)
        EXPECT_EQ(c.wanted, std::vector<CBitmap *>(c.ppBitmaps, c.ppBitmaps + c.wanted.size()));
    GoTo(res, "Sets");
    EXPECT_EQ(res.GetCntrlColor(0), manager.m_pDefTitlebarColors[0]);
    EXPECT_EQ(res.GetCntrlColor(3), manager.m_pDefTitlebarColors[2]);
    for (const TCntrlColor *pColor : manager.m_pDefFrameColors)
        EXPECT_EQ(res.GetCntrlColor(3), pColor);

    manager.m_pDefDrop[1] = &mine;
    res.Free();
    EXPECT_EQ(nullptr, manager.m_pDefFont);
    for (const auto &c : cases)
        for (size_t ul = 0; ul < c.wanted.size(); ++ul)
            EXPECT_EQ(c.ppBitmaps + ul == manager.m_pDefDrop + 1 ? &mine : nullptr, c.ppBitmaps[ul]);
    EXPECT_EQ(pOwnFrame, manager.m_pDefFrameColors[2]);
    EXPECT_EQ(ownTitle, std::vector<TCntrlColor *>(manager.m_pDefTitlebarColors, manager.m_pDefTitlebarColors + 4));

    ASSERT_EQ(1, res.Import("{ = Colors\nC = red, red, red, red, red, red, red, red\n}\n"
                            "{ = Defaults\nButton = C, C, C, C\n}\n"));
    EXPECT_EQ(TRGBA(255, 0, 0), manager.m_pDefFrameColors[0]->crFace) << "a button sets the frame's colours";
}

TEST_F(CResDataTest, LookUpsFollowWhatAHostChanges)
{
    CResData res;
    ASSERT_EQ(1, res.Import("{ = Defines\nA = 1\nB = 2\nC = 3\n}\n"));
    CLList &defines = res.m_listDefines;
    xlong lId = 0;
    for (defines.First(); std::string(((TResDefine *)defines.Get())->szName) != "B"; defines.Next())
        continue;
    // One goes and another comes in its place, as many as before.
    TResDefine mine = { 7, "New", nullptr };
    defines.DeleteData();
    defines.Delete();
    defines.InsertFirst(&mine);
    EXPECT_EQ(0, res.GetResId("B", &lId));
    EXPECT_EQ(1, res.GetResId("new", &lId));
    EXPECT_EQ(7, lId);
    EXPECT_EQ(1, res.GetResId("C", &lId));
    EXPECT_EQ(3, lId);
    defines.DeleteItem(&mine);
    EXPECT_EQ(0, res.GetResId("new", &lId));
    defines.KillAllData();
    EXPECT_EQ(0, res.GetResId("C", &lId));
}

TEST_F(CResDataTest, LoadRunsOutOfMemoryWithoutLoss)
{
    WriteFile("whole.rc", s_szWhole);
    WriteFile("packed.rc", Packed(s_szWhole));
    for (const char *pszFile : { "whole.rc", "packed.rc" })
    {
        {
            CResData first; // what is made once and kept
            ASSERT_EQ(1, first.Load(pszFile));
        }
        const size_t ulBlocks = HeapState().ulLiveBlocks;
        bool bDone = false;
        xlong lFailures = 0;
        for (xlong l = 1; !bDone; ++l)
        {
            {
                CResData res;
                glb->m_Error.Clear();
                HeapFailAt(l);
                const xlong lResult = res.Load(pszFile);
                bDone = !HeapFailed();
                HeapFailAt(0);
                EXPECT_TRUE(!bDone || lResult);
                EXPECT_TRUE(bDone || LastError() != "" || res.GetBm("Over")) << l;
                lFailures += !bDone;
                for (CNode *pNode = res.m_listAnims.m_pFirst; pNode; pNode = pNode->pNext)
                    EXPECT_EQ(5, ((TResAnim *)pNode->pData)->pAnim->GetNumNodes());
            }
            ASSERT_EQ(ulBlocks, HeapState().ulLiveBlocks) << l;
        }
        EXPECT_LT(60, lFailures);
    }
}

// Freed list nodes stay in a pool, and hide that there may be none: here it is empty.
TEST_F(CResDataTest, ListsRunOutOfMemoryWithoutLoss)
{
    const char *const pszScript = "{ = Defines\nA = 1\n}\n{ = Strings\nS = 1, x\n}\n{ = Values\nV = 1, 1\n}\n"
                                  "{ = Bitmaps\nB = pic.bmp, 0, 0, 1, 1\n}\n{ = Fonts\nF = font.xbf\n}\n"
                                  "{ = Animations\nM = pic.bmp, 1, 0, 0, 1, 1, 2, 0, 0\n}\n{ = Colors\nC = red\n}\n";
    CLList filler;
    // @return the nodes that were in the pool
    const auto EmptyPool = [&]
    {
        const size_t ulBlocks = HeapState().ulLiveBlocks;
        size_t ulNodes = 0;
        for (; HeapState().ulLiveBlocks == ulBlocks; ++ulNodes)
            filler.InsertLast(nullptr);
        return ulNodes - 1;
    };
    CResData().Import(pszScript);
    int nFailures = 0;
    bool bDone = false;
    for (xlong l = 1; !bDone; ++l)
    {
        EmptyPool();
        const size_t ulBlocks = HeapState().ulLiveBlocks;
        {
            CResData res;
            HeapFailAt(l);
            res.Import(pszScript);
            bDone = !HeapFailed();
            HeapFailAt(0);
            nFailures += !bDone;
        }
        const size_t ulAfter = HeapState().ulLiveBlocks;
        ASSERT_EQ(ulBlocks + EmptyPool(), ulAfter) << l;
    }
    EXPECT_LT(80, nFailures);
}

TEST_F(CResDataTest, TenThousandControls)
{
    std::string strScript = "; script\n{ = Defines\n";
    for (int n = 0; n < 10000; ++n)
        strScript += "IDC_" + std::to_string(n) + " = " + std::to_string(n + 5000) + "\n";
    strScript += "}\n{ = Window, IDW\n";
    for (int n = 0; n < 10000; ++n)
        strScript += "{ = Button, IDC_" + std::to_string(n) + "\nCreate = \"\", 0, 0, 5, 5, 0, 0\n}\n";
    WriteFile("large.rc", strScript + "}\n");
    CResData res;
    ASSERT_EQ(1, res.Load("large.rc"));
    xlong lId = 0;
    EXPECT_EQ(1, res.GetResId("idc_9999", &lId));
    EXPECT_EQ(14999, lId);
    ASSERT_EQ(1, res.FindSubChunk("Window", "IDW", nullptr));
    ASSERT_EQ(1, res.EnterChunk());
    EXPECT_EQ(1, res.FindSubChunk("Button", "IDC_9999", nullptr));
}
} // namespace
