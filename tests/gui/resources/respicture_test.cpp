// Bitmaps, palettes, fonts and animations of resource data.

#include "tarvix/resdata.h"

#include "gui/resources/resanim.h"
#include "gui/resources/resdatasupport.h"

namespace
{
// Pictures of one colour, from no file, that count how often they are read.
class CCountingPic : public CPicType
{
public:
    xlong Load(CFile *, CBitmapBase *, void *) override { return 0; }
    xlong Load(const char *pszFileName, CBitmapBase *pBitmap, void *) override
    {
        m_strLoads += std::string(pszFileName) + " ";
        return pBitmap->CreateRGB(4, 4, 24, 8, 8, 8, 0, 8, 16, 0);
    }
    xlong Save(CFile *, CBitmapBase *, void *, CRect *, xlong) override { return 0; }
    xlong Save(const char *, CBitmapBase *, void *, CRect *, xlong) override { return 0; }
    xlong IsType(const char *, const char *pszExtension) override
    {
        return pszExtension && !strcmp(pszExtension, "count");
    }
    xlong GetDesc(const char **, const char **) override { return 0; }

    std::string m_strLoads;
};

class CResPictureTest : public CResDataTest
{
};

TEST_F(CResPictureTest, ComeInTheFormatOfTheScreen)
{
    for (const xlong lDepth : { 8, 16, 24 })
    {
        SCOPED_TRACE(lDepth);
        SetMode(640, 480, lDepth);
        CResData res;
        ASSERT_EQ(1, res.Import("{ = Palette\nP = pal.bmp\n}\n{ = Bitmaps\n"
                                "A = pic.bmp, 1, 2, 3, 2\n{ = pal.bmp\nB = 1, 2, 3, 2\n}\n}\n"
                                "{ = Animations\nS = pic.bmp, 5, 0, 0, 2, 2, 2, 0, 0\n}\n"
                                "{ = Data\nAnim = S\n}\n"));
        for (const char *pszName : { "A", "B" })
        {
            EXPECT_EQ(lDepth, res.GetBm(pszName)->m_lDepth);
            EXPECT_EQ(Area(1, 2, 3, 2), Pixels(res.GetBm(pszName))) << pszName;
        }
        GoTo(res, "Anim");
        const TCntrlAnim *const pAnim = res.GetAnim(0);
        ASSERT_NE(nullptr, pAnim);
        EXPECT_EQ(lDepth, ((CBitmap *)pAnim->m_pLast->pData)->m_lDepth);
        EXPECT_EQ(Area(2, 0, 2, 2), Pixels((CBitmap *)pAnim->m_pLast->pData));
        if (lDepth == 8)
            EXPECT_STREQ("pal", Screen()->GetPalette()->m_pszName);
    }
}

TEST_F(CResPictureTest, NamesOfFilesAreThoseOfTheOtherSystemToo)
{
    std::filesystem::create_directories("gfx/in");
    std::filesystem::copy_file("pic.bmp", "gfx/in/picture.bmp");
    std::filesystem::copy_file("pal.bmp", "gfx/in/colours.pal.bmp");
    std::filesystem::copy_file("font.xbf", "gfx/letters.xbf");
    SetMode(640, 480, 8);
    WriteFile("gfx/script.rc", "; script\n{ = Palette\nP = .\\gfx/In/Colours.PAL.bmp\n}\n"
                               "{ = Fonts\nF = GFX\\Letters.XBF\n}\n"
                               "{ = Bitmaps\nB = Gfx\\in\\PICTURE.bmp, 0, 0, 2, 2\n}\n");
    CResData res;
    ASSERT_EQ(1, res.Load("GFX\\Script.RC")) << LastError();
    EXPECT_NE(nullptr, res.GetFont("F"));
    EXPECT_NE(nullptr, res.GetBm("B"));
    EXPECT_STREQ("Colours", Screen()->GetPalette()->m_pszName) << "behind the last slash, before the first dot";
}

TEST_F(CResPictureTest, OneFileIsReadOnceForBitmapsInARow)
{
    CCountingPic type;
    ASSERT_EQ(1, glb->m_pPicTypeList->Register(&type));
    CResData res;
    ASSERT_EQ(1, res.Import("{ = Bitmaps\nA = a.count, 0, 0, 2, 2\nB = a.count, 1, 1, 2, 2\nC = a.count, 0, 0, -1, -1\n"
                            "D = a.count, 2, 2, 1, 1\nE = a.count.count, 0, 0, 2, 2\nF = a.count, 0, 0, 2, 2\n"
                            "{ = c.count\nG = 0, 0, 2, 2\nH = 1, 1, 2, 2\n}\n}\n"));
    EXPECT_EQ("", LastError());
    EXPECT_EQ(8, res.m_listBitmaps.GetNumNodes());
    EXPECT_EQ("a.count a.count a.count.count a.count c.count ", type.m_strLoads) << "C reads its own";
    // Not beyond the section.
    ASSERT_EQ(1, res.Import("{ = Bitmaps\nA = c.count, 0, 0, 2, 2\n}\n"));
    EXPECT_EQ("a.count a.count a.count.count a.count c.count c.count ", type.m_strLoads);
    glb->m_pPicTypeList->Unregister(&type);
}

TEST_F(CResPictureTest, BitmapsThatFailKeepThoseBefore)
{
    CResData res;
    ASSERT_EQ(1, res.Import("{ = Bitmaps\nA = pic.bmp, 0, 0, 2, 2\nB = missing.bmp, 0, 0, 2, 2\n}\n"
                            "{ = Fonts\nF = font.xbf\nG = missing.xbf\n}\n"
                            "{ = Animations\nS = pic.bmp, 5, 0, 0, 2, 2, 2, 0, 0\nT = pic.bmp\n}\n"));
    EXPECT_EQ(1, res.m_listBitmaps.GetNumNodes());
    EXPECT_EQ(1, res.m_listFonts.GetNumNodes());
    EXPECT_EQ(1, res.m_listAnims.GetNumNodes());
    WriteFile("cut.bmp", ReadFile("pic.bmp").substr(0, 80));
    ASSERT_EQ(1, res.Import("{ = Bitmaps\nC = cut.bmp, 0, 0, -1, -1\n}\n{ = Palette\nP = cut.bmp\n}\n"));
    EXPECT_EQ(nullptr, res.GetBm("C"));
    // A picture without a palette changes nothing.
    ASSERT_EQ(1, res.Import("{ = Palette\nP = pic.bmp\n}\n"));
}

TEST_F(CResPictureTest, TheFirstReportIsTheCause)
{
    WriteFile("damaged.xbf", "nothing of a font");
    CResData res;
    glb->m_Error.Clear();
    ASSERT_EQ(1, res.Import("{ = Fonts\nF = damaged.xbf\n}\n{ = Bitmaps\nB = missing.bmp, 0, 0, 1, 1\n}\n"
                            "{ = Defaults\nFont = F\n}\n"));
    EXPECT_EQ("\"damaged.xbf\" isnt a XIFF file", LastError());
    glb->m_Error.SetErrorf("of %s", "before");
    ASSERT_EQ(1, res.Import("{ = Defines\nA = 1\n}\n"));
    EXPECT_EQ("of before", LastError()) << "nothing fails";
}

TEST_F(CResPictureTest, FramesLieRowByRow)
{
    const struct
    {
        const char *pszName;
        xlong lWidth, lHeight, lCount, lPerRow, lRows;
        std::vector<std::pair<int, int>> corners; ///< none: no animation
    } cases[] = {
        { "RowsOfThree", 2, 3, 5, 3, 0, { { 0, 0 }, { 2, 0 }, { 4, 0 }, { 0, 3 }, { 2, 3 } } },
        { "OneRow", 2, 3, 3, 0, 0, { { 0, 0 }, { 2, 0 }, { 4, 0 } } },
        { "CountOfTheRows", 4, 2, 0, 2, 2, { { 0, 0 }, { 4, 0 }, { 0, 2 }, { 4, 2 } } },
        { "BeyondThePicture", 8, 6, 2, 2, 0, { { 0, 0 }, { 8, 0 } } },
        { "NoCount", 2, 2, 0, 0, 5, {} },
        { "NegativeRow", 2, 2, 3, -1, 0, {} },
        { "NegativeRows", 2, 2, 3, 1, -1, {} },
        { "TwiceNegative", 2, 2, 0, -1, -1, {} },
        { "RowsThatWrap", 2, 2, 0, 65536, 65536, {} },
        { "NoWidth", 0, 2, 3, 1, 0, {} },
        { "TooManyPixels", 1024, 1025, 64, 8, 0, {} },
    };
    CBitmap sheet;
    ASSERT_EQ(1, sheet.Load("pic.bmp", 0));
    ASSERT_EQ(1, Screen()->MakeScreenFormat(&sheet, 1));
    for (const auto &c : cases)
        for (const xlong lMode : { 0, 1 })
        {
            SCOPED_TRACE(c.pszName);
            TCntrlAnim *const pAnim =
                MakeCntrlAnim(&sheet, c.lWidth, c.lHeight, c.lCount, c.lPerRow, c.lRows, lMode, 0);
            ASSERT_EQ(c.corners.empty(), !pAnim);
            if (!pAnim)
                continue;
            EXPECT_EQ(20u, pAnim->ulDelay);
            EXPECT_EQ(lMode ? nullptr : &sheet, pAnim->pSheet);
            EXPECT_EQ(pAnim->m_pFirst, pAnim->m_pCurr);
            ASSERT_EQ((xlong)c.corners.size(), pAnim->GetNumNodes());
            for (size_t ul = 0; ul < c.corners.size(); ++ul, pAnim->Next())
            {
                const auto [nX, nY] = c.corners[ul];
                if (lMode)
                {
                    EXPECT_EQ(Area(nX, nY, c.lWidth, c.lHeight), Pixels((CBitmap *)pAnim->Get())) << ul;
                    continue;
                }
                const CRect &rc = *(CRect *)pAnim->Get();
                EXPECT_EQ(nX, rc.m_lLeft);
                EXPECT_EQ(nY, rc.m_lTop);
                EXPECT_EQ(nX + c.lWidth - 1, rc.m_lRight);
                EXPECT_EQ(nY + c.lHeight - 1, rc.m_lBottom);
            }
            FreeCntrlAnim(pAnim);
        }
    FreeCntrlAnim(nullptr);
    // The key is the sheet's first pixel: those that equal it stay black.
    TCntrlAnim *const pAnim = MakeCntrlAnim(&sheet, 2, 1, 1, 1, 1, 1, 1);
    ASSERT_NE(nullptr, pAnim);
    EXPECT_EQ("0,0,0 " + Area(1, 0, 1, 1), Pixels((CBitmap *)pAnim->Get()));
    FreeCntrlAnim(pAnim);
}

TEST_F(CResPictureTest, AnimationsOfScripts)
{
    CResData res;
    ASSERT_EQ(1,
              res.Import(
                  "{ = Animations\nSpin = pic.bmp, 80, 7, 7, 2, 3, 5, 3, 0\nLine = pic.bmp, 0, 0, 0, 1, 1, 8, 0, 1\n}\n"
                  "{ = Data\nA = spin, Line\n}\n"));
    EXPECT_EQ("", LastError());
    GoTo(res, "A");
    const TCntrlAnim *const pSpin = res.GetAnim(0), *const pLine = res.GetAnim(1);
    ASSERT_TRUE(pSpin && pLine);
    EXPECT_EQ(80u, pSpin->ulDelay);
    EXPECT_EQ(nullptr, pSpin->pSheet);
    EXPECT_EQ(5, pSpin->m_lNumNodes);
    EXPECT_EQ(Area(0, 0, 2, 3), Pixels((CBitmap *)pSpin->m_pFirst->pData)) << "x and y have no effect";
    EXPECT_EQ(Area(2, 3, 2, 3), Pixels((CBitmap *)pSpin->m_pLast->pData));
    EXPECT_EQ(8, pLine->m_lNumNodes);
    EXPECT_EQ("0,0,0 ", Pixels((CBitmap *)pLine->m_pFirst->pData));
    EXPECT_EQ(Area(7, 0, 1, 1), Pixels((CBitmap *)pLine->m_pLast->pData));
}
} // namespace
