// The grammar against what the library does with scripts made from it.
#include "tarvix/resgrammar.h"

#include "gui/resources/grammarcases.h"
#include "gui/resources/resdatasupport.h"
#include "tarvix/dialog.h"

#include <set>

namespace
{
class CGrammarTest : public CResDataTest
{
protected:
    /// Whether all of a script is read and its window built.
    static bool IsAccepted(const std::string &strScript)
    {
        glb->m_Error.Clear();
        CResData res;
        if (!res.Import(strScript.c_str()) || !LastError().empty())
            return false;
        // A section can end without a report.
        xlong lValue = 0;
        TRGBA Color;
        bool bWhole = res.GetResId(s_szGrammarLast, &lValue) && res.GetResString(s_szGrammarLast, nullptr) &&
                      res.GetResValue(2) && res.GetFont(s_szGrammarLast) && res.GetBm(s_szGrammarLast) &&
                      res.GetCol(s_szGrammarLast, &Color, 0) &&
                      glb->m_pWinCtrl->m_pDefCaret == res.GetBm(s_szGrammarLast);
        bWhole = bWhole && !strcmp(((TResAnim *)res.m_listAnims.m_pLast->pData)->szName, s_szGrammarLast);
        CDialog dialog;
        return bWhole && dialog.Create(&res, 1, nullptr, 0, nullptr) == 1;
    }
};

TEST_F(CGrammarTest, TheLibraryTakesWhatTheGrammarTellsAndNothingElse)
{
    std::set<std::string> names;
    for (const TGrammarCase &c : MakeGrammarCases())
    {
        EXPECT_TRUE(names.insert(c.strName).second) << c.strName;
        EXPECT_EQ(c.bAccepted, IsAccepted(c.strScript)) << c.strName << ": " << LastError();
    }
    EXPECT_LT(500u, names.size());
}

TEST_F(CGrammarTest, SizesEndAtTheLargestPicture)
{
    const struct
    {
        xlong lRules, lWidth, lHeight, lFrames, lWanted;
    } cases[] = { { 0, 8192, 8192, 1, 1 },  { 0, 8193, 8192, 1, 0 },    { 0, 1024, 1024, 64, 1 },
                  { 0, 1024, 1024, 65, 0 }, { 0, 1, 1, 65536, 1 },      { 0, 1, 1, 65537, 0 },
                  { 0, 1, 1, 0, 0 },        { 0, 65536, 65536, 1, 0 },  { 0, -1, 5, 1, 0 },
                  { 0, 0, 5, 1, 0 },        { XRES_AREA, -1, 5, 1, 1 }, { XRES_AREA, 5, -2, 1, 0 } };
    for (const auto &c : cases)
        EXPECT_EQ(c.lWanted, xIsResSize(c.lRules, c.lWidth, c.lHeight, c.lFrames)) << c.lWidth << "x" << c.lHeight;
}
} // namespace
