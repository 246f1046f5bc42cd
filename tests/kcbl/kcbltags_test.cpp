#include "kcbl/kcblsupport.h"

namespace
{
class CKCBLTags : public CFolderTest
{
protected:
    // The bytes of the current item behind its keyword, "\xFF" as the last.
    std::string Body()
    {
        const TKCBLKeyword &item = *m_Kcbl.GetCurKeyword();
        return std::string(item.pszKeyword, (size_t)item.lSize).substr(strlen(item.pszKeyword) + 1);
    }

    CTestKCBL m_Kcbl;
};

template <size_t N>
std::string Bytes(const char (&szText)[N])
{
    return std::string(szText, N - 1);
}
} // namespace

TEST_F(CKCBLTags, MakesTheBodiesOfAllTypes)
{
    int abValues[] = { 1, 0, -5 };
    xlong alValues[] = { -1, 2147483647 };
    xulong aulValues[] = { 4294967295u };
    float afValues[] = { 1.5f };
    double adValues[] = { 2.25, 0 };
    ASSERT_EQ(1,
              m_Kcbl.NewItem("Plain", KBOOL, (xlong)7, KBOOL, (xlong)0, KLONG, (xlong)-3, KULONG, (xulong)4294967295u,
                             KFLOAT, xFloatBits(2.5f), KDOUBLE, 0.1, KSTRING, "a b", KSTRING, "", KEND));
    EXPECT_EQ(Bytes("TRUE\0FALSE\0-3\0"
                    "4294967295\0"
                    "2.5\0"
                    "0.100000\0"
                    "a b\0\0\xFF"),
              Body());
    ASSERT_EQ(1, m_Kcbl.NewItem("Arrays", KBOOLARRAY, (xlong)3, abValues, KLONGARRAY, (xlong)2, alValues, KULONGARRAY,
                                (xlong)1, aulValues, KFLOATARRAY, (xlong)1, afValues, KDOUBLEARRAY, (xlong)2, adValues,
                                KEND));
    EXPECT_EQ(Bytes("\xFDTRUE\0FALSE\0TRUE\0\xFE"
                    "\xFD-1\0"
                    "2147483647\0\xFE"
                    "\xFD"
                    "4294967295\0\xFE"
                    "\xFD"
                    "1.500000\0\xFE"
                    "\xFD"
                    "2.250000\0"
                    "0.000000\0\xFF"),
              Body());
    EXPECT_EQ(5, m_Kcbl.GetNumStrings());
    for (xlong l = 0; l < 5; ++l)
        EXPECT_EQ('\xFD', *m_Kcbl.GetString(l));
    ASSERT_EQ(1, m_Kcbl.NewItem("None", KEND));
    EXPECT_EQ("\xFF", Body());
    EXPECT_EQ(nullptr, m_Kcbl.GetString(0));
    // Latin-1 texts may end in the byte that marks an array's end.
    ASSERT_EQ(1, m_Kcbl.NewItem("Thorn", KSTRING, "\xFE", KSTRING, "x\xFE", KEND));
    EXPECT_EQ(Bytes("\xFE\0x\xFE\0\xFF"), Body());
    ASSERT_EQ(1, m_Kcbl.NewItem("Long", KSTRING, std::string(5000, 'x').c_str(), KLONGARRAY, (xlong)0, alValues, KEND));
    EXPECT_EQ(std::string(5000, 'x') + Bytes("\0\0\xFF"), Body());
}

TEST_F(CKCBLTags, FloatsLoseTheirZeros)
{
    const struct
    {
        xlong lDigits;
        float fValue;
        const char *pszText;
    } cases[] = {
        { -1, 0, "0" },
        { -1, -0.0f, "0" },
        { -1, 1, "1" },
        { -1, 0.5f, "0.5" },
        { -1, 100, "100" },
        { -1, 1e-9f, "0" },
        { 0, 100, "1" },
        { 0, 2.5f, "2" },
        { 0, 12, "12" },
        { 3, 1.0625f, "1.062" },
        { 12, 0.1f, "0.1000000015" },
        { 10, 0.1f, "0.1000000015" },
        { -1, -3.25f, "-3.25" },
        { -1, 0x1p67f, "147573952589676412928" },
    };
    for (const auto &c : cases)
    {
        m_Kcbl.SetFloatPrecision(c.lDigits);
        m_Kcbl.SetDoublePrecision(2);
        ASSERT_EQ(1, m_Kcbl.NewItem("k", KFLOAT, xFloatBits(c.fValue), KDOUBLE, 1.0, KEND));
        EXPECT_STREQ(c.pszText, m_Kcbl.GetString(0)) << c.lDigits << ", " << c.fValue;
        EXPECT_STREQ("1.00", m_Kcbl.GetString(1));
    }
}

TEST_F(CKCBLTags, NewItemsFollowTheCursor)
{
    ASSERT_EQ(1, m_Kcbl.NewChunk(KSTRING, "name", KEND));
    ASSERT_EQ(1, m_Kcbl.NewItem("a", KLONG, (xlong)1, KEND));
    ASSERT_EQ(1, m_Kcbl.NewItem("c", KEND));
    ASSERT_EQ(1, m_Kcbl.FirstItem());
    ASSERT_EQ(1, m_Kcbl.NewItem("b", KEND));
    ASSERT_EQ(1, m_Kcbl.ExitChunk());
    EXPECT_STREQ("name", m_Kcbl.GetString(0));
    ASSERT_EQ(1, m_Kcbl.NewItem("d", KEND));
    m_Kcbl.NextItem(0);
    ASSERT_EQ(0, m_Kcbl.ItemExists());
    ASSERT_EQ(1, m_Kcbl.NewItem("{", KEND)) << "behind the last without a current item";
    ASSERT_EQ(1, m_Kcbl.NewItem("f", KEND));
    EXPECT_EQ("{ = name\n    a = 1\n    b\n    c\n}\nd\n{\n    f\n}", ExportText(m_Kcbl));
}

TEST_F(CKCBLTags, RefusesBadLists)
{
    ASSERT_EQ(1, m_Kcbl.NewItem("a", KLONG, (xlong)1, KEND));
    const std::string strBefore = Dump(m_Kcbl.m_MainChunk);
    EXPECT_EQ(0, m_Kcbl.NewItem("b", KLONG, (xlong)1, 5, KEND));
    EXPECT_EQ("Unknown data type (Missing KEND?) in keyword \"b\"", LastError());
    EXPECT_EQ(0, m_Kcbl.NewItem("c", KARGS, KEND));
    EXPECT_EQ("Unknown data type (Missing KEND?) in keyword \"c\"", LastError());
    EXPECT_EQ(0, m_Kcbl.NewChunk(KSTRING, (char *)nullptr, KEND));
    EXPECT_EQ("Tried to add NULL string in keyword \"{\"", LastError());
    EXPECT_EQ(strBefore, Dump(m_Kcbl.m_MainChunk));
    EXPECT_EQ(0, m_Kcbl.GetItem("a", 0x1000000D));
    EXPECT_EQ("Unknown data type (Missing KEND?) in keyword \"a\"", LastError());
}

TEST_F(CKCBLTags, GetsItemsByTags)
{
    ImportText(m_Kcbl, "n\nk = yes, -2, 3, 1.5, 2.5, text, {1, 0}, {4, 5}, {6}, {7.5}, {8.5}");
    int bValue = 0, abValues[2];
    xlong lValue = 0, alValues[2];
    xulong ulValue = 0, aulValues[1];
    float fValue = 0, afValues[1];
    double dValue = 0, adValues[1];
    char szText[5];
    ASSERT_EQ(1, m_Kcbl.GetItem("K", KBOOL, &bValue, KLONG, &lValue, KULONG, &ulValue, KFLOAT, &fValue, KDOUBLE,
                                &dValue, KSTRING, (xlong)4, szText, KBOOLARRAY, (xlong)2, abValues, KLONGARRAY,
                                (xlong)2, alValues, KULONGARRAY, (xlong)1, aulValues, KFLOATARRAY, (xlong)1, afValues,
                                KDOUBLEARRAY, (xlong)1, adValues, KEND));
    EXPECT_EQ(1, bValue);
    EXPECT_EQ(-2, lValue);
    EXPECT_EQ(3u, ulValue);
    EXPECT_EQ(1.5f, fValue);
    EXPECT_EQ(2.5, dValue);
    EXPECT_STREQ("text", szText);
    EXPECT_EQ(0, abValues[1]);
    EXPECT_EQ(5, alValues[1]);
    EXPECT_EQ(6u, aulValues[0]);
    EXPECT_EQ(7.5f, afValues[0]);
    EXPECT_EQ(8.5, adValues[0]);

    EXPECT_EQ(1, m_Kcbl.GetItem(nullptr, KBOOL, &bValue, KEND));
    EXPECT_EQ(1, m_Kcbl.GetItem("k", KEND));
    EXPECT_EQ(0, m_Kcbl.GetItem("missing", KEND));
    EXPECT_EQ(0, m_Kcbl.GetItem("n", KLONG, &lValue, KEND));
    EXPECT_EQ(0, m_Kcbl.GetItem("k", KSTRING, (xlong)2, szText, KEND)) << "one longer than the target";
    EXPECT_EQ(0, m_Kcbl.GetItem("k", KSTRING, (xlong)65536, szText, KEND)) << "a forgotten length";
    EXPECT_EQ(1, m_Kcbl.GetItem("k", KSTRING, (xlong)3, szText, KEND));
    lValue = 0;
    EXPECT_EQ(0, m_Kcbl.GetItem("k", KBOOL, &bValue, KLONG, &lValue, KLONG, &lValue, KLONG, &lValue, KLONG, &lValue,
                                KLONG, &lValue, KEND));
    EXPECT_EQ(2, lValue) << "what was read before the fault stays";
}

TEST_F(CKCBLTags, ReplacesInPlace)
{
    ImportText(m_Kcbl, "a = 1\n{ = b\nx\n}\nc = 3\n");
    EXPECT_EQ(1, m_Kcbl.ReplaceItem("A", KSTRING, "one", KEND));
    EXPECT_EQ(1, m_Kcbl.FindItem("c", nullptr, nullptr, nullptr));
    EXPECT_EQ(1, m_Kcbl.ReplaceItem(nullptr, KSTRING, "new", KSTRING, m_Kcbl.GetString(0), KEND));
    EXPECT_EQ("A = one\n{ = b\n    x\n}\nc = new, 3", ExportText(m_Kcbl));
    EXPECT_EQ(1, m_Kcbl.ReplaceItem("{", KEND));
    EXPECT_EQ(1, m_Kcbl.NewItem("y", KEND)) << "the cursor is in the new chunk";
    EXPECT_EQ("A = one\n{\n    y\n}\nc = new, 3", ExportText(m_Kcbl));
    m_Kcbl.MainChunk();
    EXPECT_EQ(0, m_Kcbl.ReplaceItem("missing", KEND));
    EXPECT_EQ(0, m_Kcbl.ReplaceItem("c", KSTRING, (char *)nullptr, KEND));
    EXPECT_EQ(0, m_Kcbl.FindItem("c", nullptr, nullptr, nullptr)) << "the old one is gone all the same";
    for (size_t ulLen : { 90, 91 })
    {
        ASSERT_EQ(1, m_Kcbl.NewItem(std::string(ulLen, 'k').c_str(), KEND));
        EXPECT_EQ(ulLen == 90, m_Kcbl.ReplaceItem(nullptr, KLONG, (xlong)1, KEND));
        EXPECT_EQ(ulLen == 90, m_Kcbl.GetNumStrings());
    }
    m_Kcbl.m_pCurChunk->First();
    EXPECT_EQ(0, m_Kcbl.ReplaceItem(nullptr, KEND)) << "the hidden first item";
}

TEST_F(CKCBLTags, ExhaustionAddsNothing)
{
    const std::string strLong(3000, 'x');
    ImportText(m_Kcbl, "a");
    const std::string strBefore = Dump(m_Kcbl.m_MainChunk);
    for (const bool bChunk : { false, true })
        FailEachAllocation(
            [&]
            {
                const bool bWorked = (bChunk ? m_Kcbl.NewChunk(KSTRING, strLong.c_str(), KEND)
                                             : m_Kcbl.NewItem("b", KSTRING, strLong.c_str(), KEND)) == 1;
                EXPECT_EQ(HeapFailed(), !bWorked);
                if (bWorked)
                {
                    m_Kcbl.ExitChunk();
                    EXPECT_EQ(1, m_Kcbl.KillItem());
                }
                else
                    EXPECT_EQ(XERR_MEMORY, glb->m_Error.GetErrCode());
                EXPECT_EQ(strBefore, Dump(m_Kcbl.m_MainChunk));
                return bWorked;
            });
}
