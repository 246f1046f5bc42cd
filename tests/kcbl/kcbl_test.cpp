#include "kcbl/kcblsupport.h"

#include "core/heap.h"
#include "slots.h"

#include <climits>

namespace
{
class CKCBLTest : public CFolderTest
{
protected:
    // The keyword under the cursor and the chunk's depth.
    std::string Where()
    {
        std::string str;
        for (const TKCBLChunk *p = m_Kcbl.m_pCurChunk; p->pParent; p = p->pParent)
            str += "/";
        return str + (m_Kcbl.ItemExists() ? m_Kcbl.GetKeyword() : "-");
    }

    CTestKCBL m_Kcbl;
};
} // namespace

TEST_F(CKCBLTest, KeepsTheLayoutThatHostsUse)
{
    const int n = sizeof(void *);
    EXPECT_EQ(0, SlotOf(&CKCBL::Load));
    EXPECT_EQ(n, OffsetOf(m_Kcbl, m_Kcbl.m_pCurChunk));
    EXPECT_EQ(2 * n, OffsetOf(m_Kcbl, m_Kcbl.m_MainChunk));
    const int nBehind = 2 * n + (int)sizeof(TKCBLChunk);
    EXPECT_EQ(nBehind, OffsetOf(m_Kcbl, m_Kcbl.m_bInitialized));
    EXPECT_EQ(nBehind + 4, OffsetOf(m_Kcbl, m_Kcbl.m_szFloatFormat));
    EXPECT_EQ(nBehind + 19, OffsetOf(m_Kcbl, m_Kcbl.m_szDoubleFormat));
    EXPECT_EQ(nBehind + 36, OffsetOf(m_Kcbl, m_Kcbl.m_lMaxLineLength));
    EXPECT_EQ(nBehind + 40, OffsetOf(m_Kcbl, m_Kcbl.m_lRestartMode));
    EXPECT_EQ(n, (int)(sizeof(TKCBLChunk) - sizeof(CLList)));
    EXPECT_EQ(n == 4 ? 20u : 32u, sizeof(TKCBLKeyword));
}

TEST_F(CKCBLTest, NothingHappensWithoutATree)
{
    EXPECT_EQ(0, m_Kcbl.FirstItem());
    EXPECT_EQ(0, m_Kcbl.NextItem(0));
    EXPECT_EQ(0, m_Kcbl.NextItem(1));
    EXPECT_EQ(0, m_Kcbl.EnterChunk());
    EXPECT_EQ(0, m_Kcbl.ExitChunk());
    EXPECT_EQ(0, m_Kcbl.ItemType());
    EXPECT_EQ(0, m_Kcbl.IsComment());
    EXPECT_EQ(nullptr, m_Kcbl.GetKeyword());
    EXPECT_EQ(nullptr, m_Kcbl.GetString(0));
    EXPECT_EQ(0, m_Kcbl.GetNumStrings());
    EXPECT_EQ(0, m_Kcbl.GetDataType(0));
    EXPECT_EQ(0, m_Kcbl.KillItem());
    EXPECT_EQ(0, m_Kcbl.FindItem("a", nullptr, nullptr, nullptr));
    EXPECT_EQ(0, m_Kcbl.ReplaceItem(nullptr, KEND));
    ASSERT_EQ(1, m_Kcbl.Init());
    EXPECT_EQ(0, m_Kcbl.FirstItem()) << "the first of a list is not seen";
    EXPECT_STREQ("; I don't exist", ((TKCBLKeyword *)m_Kcbl.m_MainChunk.m_pFirst->pData)->pszKeyword);
    m_Kcbl.Free();
    m_Kcbl.Free();
    EXPECT_EQ(0, m_Kcbl.m_bInitialized);
}

TEST_F(CKCBLTest, WalksTheTree)
{
    ImportText(m_Kcbl, "a\n{ = one\nb\n{ = empty\n}\n}\nc\n{ = two\nd\n}\n");
    std::string strWalk;
    for (int n = 0; n < 12; ++n)
    {
        strWalk += Where();
        strWalk += m_Kcbl.NextItem(1) ? "1 " : "0 ";
    }
    EXPECT_EQ("a1 {1 /b1 /{1 //-0 /-0 c1 {1 /d0 -0 -0 -0 ", strWalk);

    m_Kcbl.MainChunk();
    EXPECT_EQ(1, m_Kcbl.FirstItem());
    EXPECT_EQ(1, m_Kcbl.ItemType());
    EXPECT_EQ(0, m_Kcbl.EnterChunk());
    EXPECT_EQ(1, m_Kcbl.NextItem(0));
    EXPECT_EQ(2, m_Kcbl.ItemType());
    EXPECT_EQ(1, m_Kcbl.EnterChunk());
    EXPECT_EQ("/b", Where());
    m_Kcbl.NextItem(0);
    m_Kcbl.MainChunk();
    EXPECT_STREQ("one", m_Kcbl.GetString(0)) << "the root kept its current item";
    EXPECT_EQ(1, m_Kcbl.EnterChunk());
    EXPECT_EQ("/b", Where());
    EXPECT_EQ(1, m_Kcbl.ExitChunk());
    EXPECT_STREQ("one", m_Kcbl.GetString(0));
    EXPECT_EQ(0, m_Kcbl.ExitChunk());
}

TEST_F(CKCBLTest, TellsWhatItemsAre)
{
    for (const char *psz : { "; c", "", " x", "\tx", "x;" })
    {
        ASSERT_EQ(1, m_Kcbl.NewItem(psz, KEND));
        EXPECT_EQ(strcmp(psz, "x;") != 0, m_Kcbl.IsComment()) << psz;
    }
    ImportText(m_Kcbl, "a = b, {1}, \"; d\" ; e\n");
    const xlong alTypes[] = { 2, 3, 1, 1, 2 }; // the last is out of range
    for (xlong l = 0; l < 5; ++l)
        EXPECT_EQ(alTypes[l], m_Kcbl.GetDataType(l)) << l;
    EXPECT_EQ(2, m_Kcbl.GetDataType(-1));
    EXPECT_EQ(nullptr, m_Kcbl.GetString(-1));
    EXPECT_EQ(nullptr, m_Kcbl.GetString(4));
    EXPECT_NE(nullptr, m_Kcbl.GetString(3));
}

TEST_F(CKCBLTest, ReadsNumbersAndWords)
{
    const struct
    {
        const char *pszText;
        xlong lResult;
        xlong lValue;
        xlong lFloatResult;
        double dValue;
        int nBool; ///< -1 for none
    } cases[] = {
        { "12", 1, 12, 1, 12, -1 },
        { "\" \\t-7x\"", 1, -7, 1, -7, -1 },
        { "+1", 1, 1, 1, 1, -1 },
        { "0x10", 1, 0, -1, 0, -1 }, // floats in other bases are the runtime's affair
        { "-", 0, 0, 0, 0, -1 },
        { "\"- 1\"", 0, 0, 0, 0, -1 },
        { "\"\"", 0, 0, 0, 0, -1 },
        { "x", 0, 0, 0, 0, -1 },
        { "1.5e2", 1, 1, 1, 150, -1 },
        { ".25", 0, 0, 1, 0.25, -1 },
        { "4294967295", 1, -1, 1, 4294967295.0, -1 },
        { "-2147483648", 1, INT_MIN, 1, -2147483648.0, -1 },
        { "yes", 0, 0, 0, 0, 1 },
        { "True", 0, 0, 0, 0, 1 },
        { "1", 1, 1, 1, 1, 1 },
        { "no", 0, 0, -1, 0, 0 },
        { "FALSE", 0, 0, 0, 0, 0 },
        { "0", 1, 0, 1, 0, 0 },
        { "2", 1, 2, 1, 2, -1 },
        { "\"yes \"", 0, 0, 0, 0, -1 },
    };
    for (const auto &c : cases)
    {
        SCOPED_TRACE(c.pszText);
        ImportText(m_Kcbl, std::string("k = ") + c.pszText);
        xlong lValue = 99;
        EXPECT_EQ(c.lResult, m_Kcbl.GetLong(0, &lValue));
        EXPECT_EQ(c.lResult ? c.lValue : 99, lValue);
        xulong ulValue = 99;
        EXPECT_EQ(c.lResult, m_Kcbl.GetULong(0, &ulValue));
        EXPECT_EQ(c.lResult ? (xulong)c.lValue : 99, ulValue);
        int bValue = 99;
        EXPECT_EQ(c.nBool >= 0, m_Kcbl.GetBool(0, &bValue));
        EXPECT_EQ(c.nBool >= 0 ? c.nBool : 99, bValue);
        if (c.lFloatResult < 0)
            continue;
        float fValue = 99;
        double dValue = 99;
        EXPECT_EQ(c.lFloatResult, m_Kcbl.GetFloat(0, &fValue));
        EXPECT_EQ(c.lFloatResult, m_Kcbl.GetDouble(0, &dValue));
        EXPECT_EQ(c.lFloatResult ? c.dValue : 99, dValue);
        EXPECT_EQ((float)dValue, fValue);
    }
    EXPECT_EQ(0, m_Kcbl.GetLong(0, nullptr));
    EXPECT_EQ(0, m_Kcbl.GetBool(1, nullptr));
}

TEST_F(CKCBLTest, ReadsArrays)
{
    ImportText(m_Kcbl, "k = {1, 2}, {yes, 0}, {1, x}, plain, \"\xFD\", {}, {-1, 2.5}");
    xlong alValues[3] = { 9, 9, 9 };
    EXPECT_EQ(0, m_Kcbl.GetLongArray(0, alValues, 3));
    EXPECT_EQ(2, alValues[1]);
    EXPECT_EQ(9, alValues[2]);
    EXPECT_EQ(1, m_Kcbl.GetLongArray(0, alValues, 2));
    EXPECT_EQ(1, m_Kcbl.GetLongArray(0, nullptr, 0));
    EXPECT_EQ(0, m_Kcbl.GetLongArray(0, nullptr, 1));
    EXPECT_EQ(0, m_Kcbl.GetLongArray(2, alValues, 2));
    EXPECT_EQ(0, m_Kcbl.GetLongArray(3, alValues, 1));
    EXPECT_EQ(0, m_Kcbl.GetLongArray(6, alValues, 3)) << "the last array has another mark behind it";
    xulong aulValues[2];
    EXPECT_EQ(1, m_Kcbl.GetULongArray(6, aulValues, 2));
    EXPECT_EQ(0xFFFFFFFFu, aulValues[0]);
    float afValues[2];
    double adValues[2];
    EXPECT_EQ(1, m_Kcbl.GetFloatArray(6, afValues, 2));
    EXPECT_EQ(1, m_Kcbl.GetDoubleArray(6, adValues, 2));
    EXPECT_EQ(2.5f, afValues[1]);
    EXPECT_EQ(2.5, adValues[1]);
    int abValues[2];
    EXPECT_EQ(1, m_Kcbl.GetBoolArray(1, abValues, 2));
    EXPECT_EQ(1, abValues[0]);
    EXPECT_EQ(0, abValues[1]);
    // String 4 only looks like an array; its elements run on into what follows.
    const xlong alCounts[] = { 2, 2, 2, -1, 2, 1, 2, -1 };
    for (xlong l = 0; l < 8; ++l)
    {
        xlong lCount = -1;
        EXPECT_EQ(alCounts[l] >= 0, m_Kcbl.GetNumArrayItems(l, &lCount)) << l;
        EXPECT_EQ(alCounts[l], lCount) << l;
    }
}

TEST_F(CKCBLTest, FindsItemsFromTheCursorOn)
{
    const std::string strText =
        "a = 1\nB = x, y, z\nb = x, w\n{ = Window, one\na = inner\n}\n{ = window, TWO\n}\na = 2\n";
    struct
    {
        xlong lRestart;
        int nStart; ///< steps from the first item; -1 for the hidden one
        const char *apsz[4];
        const char *pszCursor; ///< keyword and string 0; "-" without a current item
        xlong lFound = 1;
    } cases[] = {
        { 1, -1, { "A" }, "a 1" },
        { 0, -1, { "A" }, "a 1" },
        { 1, 1, { "a" }, "a 2" },
        { 0, 5, { "a" }, "a 2" },
        { 1, 5, { "b" }, "B x" },
        { 0, 5, { "b" }, "-", 0 },
        { 1, 6, { "b", "X" }, "B x" },
        { 0, 6, { "b", "X" }, "-", 0 },
        { 1, 0, { "b", "x", "W" }, "b x" },
        { 1, 0, { "b", nullptr, "x", "w" }, "b x" },
        { 1, 0, { "b", "x", "y", "z" }, "B x" },
        { 1, 0, { "{", "WINDOW", "two" }, "{ window" },
        { 1, 0, { "a", "inner" }, "B x", 0 }, // searched round, and rests behind the start
        { 1, 5, { "a", "1", "1" }, "-", 0 },
        { 1, 6, { "missing" }, "B x", 0 },
        { 0, 0, { "missing" }, "-", 0 },
    };
    for (const auto &c : cases)
    {
        SCOPED_TRACE(std::string(c.apsz[0]) + " from " + std::to_string(c.nStart) + (c.lRestart ? " round" : " on"));
        ImportText(m_Kcbl, strText);
        m_Kcbl.RestartMode(c.lRestart);
        if (c.nStart < 0)
            m_Kcbl.m_pCurChunk->First();
        for (int n = 0; n < c.nStart; ++n)
            m_Kcbl.NextItem(0);
        EXPECT_EQ(c.lFound, m_Kcbl.FindItem(c.apsz[0], c.apsz[1], c.apsz[2], c.apsz[3]));
        EXPECT_EQ(c.pszCursor, m_Kcbl.ItemExists() ? Where() + " " + m_Kcbl.GetString(0) : "-");
        if (c.lFound)
            EXPECT_EQ(1, m_Kcbl.FindItem(c.apsz[0], c.apsz[1], c.apsz[2], c.apsz[3])) << "not the same again";
    }
    ImportText(m_Kcbl, strText + "[ = Notes, ASCIIDATA\nx\n]");
    EXPECT_EQ(1, m_Kcbl.FindSubChunk("Window", "two", nullptr));
    EXPECT_EQ("{", Where());
    EXPECT_EQ(1, m_Kcbl.FindRawdata("notes", nullptr, nullptr));
    EXPECT_STREQ("x\n", m_Kcbl.GetString(2));
    void *pData = nullptr;
    EXPECT_EQ(1, m_Kcbl.GetRawdata(pData, "Notes", nullptr, nullptr));
    EXPECT_EQ(nullptr, pData);
    m_Kcbl.NextItem(0);
    m_Kcbl.RestartMode(0);
    EXPECT_EQ(0, m_Kcbl.FindItem("a", nullptr, nullptr, nullptr)) << "behind the end";
}

TEST_F(CKCBLTest, KillsAsItWalks)
{
    ImportText(m_Kcbl, "a\nb\n{ = c\nd\n{ = e\nf\n}\n}\ng\n");
    EXPECT_EQ(1, m_Kcbl.KillItem());
    EXPECT_EQ(m_Kcbl.m_MainChunk.m_pFirst, m_Kcbl.m_MainChunk.m_pCurr);
    EXPECT_EQ(0, m_Kcbl.KillItem()) << "the hidden item went";
    EXPECT_EQ(1, m_Kcbl.NextItem(0));
    EXPECT_EQ("b", Where());
    EXPECT_EQ(1, m_Kcbl.NextItem(0));
    EXPECT_EQ(1, m_Kcbl.KillItem());
    EXPECT_EQ("b", Where());
    EXPECT_EQ(1, m_Kcbl.NextItem(0));
    EXPECT_EQ("g", Where());
    EXPECT_EQ(1, m_Kcbl.KillItem());
    EXPECT_EQ("b", Where());
    EXPECT_EQ(0, m_Kcbl.NextItem(0));
    EXPECT_EQ(0, m_Kcbl.KillItem()) << "there is no current item";
    EXPECT_EQ(2, m_Kcbl.m_MainChunk.GetNumNodes());
}

TEST_F(CKCBLTest, FreesItemsThatAHostPutIn)
{
    {
        // The pool of list nodes keeps some.
        CLList list;
        for (int n = 0; n < 3; ++n)
            list.InsertLast(&list);
    }
    const size_t ulBlocks = HeapState().ulLiveBlocks;
    ImportText(m_Kcbl, "a\n{ = c\n}\n");
    for (TKCBLChunk *pChunk : { &m_Kcbl.m_MainChunk, &m_Kcbl.m_MainChunk,
                                m_Kcbl.FindSubChunk("c", nullptr, nullptr) ? m_Kcbl.GetCurKeyword()->pChunk : nullptr })
    {
        TKCBLKeyword *pItem = (TKCBLKeyword *)xAllocMem(sizeof(TKCBLKeyword) + 4, nullptr, 0);
        *pItem = { (char *)(pItem + 1), (char **)(pItem + 1), 0, 4, nullptr };
        memcpy(pItem + 1, "b\0\xFF", 4);
        pChunk->InsertLast(pItem);
    }
    EXPECT_EQ(1, m_Kcbl.FindItem("b", nullptr, nullptr, nullptr));
    EXPECT_EQ(1, m_Kcbl.KillItem());
    EXPECT_EQ(1, m_Kcbl.FindItem("b", nullptr, nullptr, nullptr));
    m_Kcbl.Free();
    EXPECT_EQ(ulBlocks, HeapState().ulLiveBlocks);
}

TEST_F(CKCBLTest, BuffersGrowAndKeepTheirContents)
{
    void *pBuf = nullptr;
    xlong lSize = 0;
    ASSERT_EQ(1, m_Kcbl.ReallocBuffer(&pBuf, &lSize, 8, 0, 0));
    EXPECT_EQ(8, lSize);
    memcpy(pBuf, "1234567", 8);
    void *const pOld = pBuf;
    EXPECT_EQ(2, m_Kcbl.ReallocBuffer(&pBuf, &lSize, 8, 1, 100));
    EXPECT_EQ(pOld, pBuf);
    EXPECT_EQ(1, m_Kcbl.ReallocBuffer(&pBuf, &lSize, 9, 1, 100));
    EXPECT_EQ(100, lSize);
    EXPECT_STREQ("1234567", (char *)pBuf);
    EXPECT_EQ(0, m_Kcbl.ReallocBuffer(&pBuf, &lSize, INT_MAX, 1, 0));
    EXPECT_EQ(XERR_MEMORY, glb->m_Error.GetErrCode());
    EXPECT_STREQ("1234567", (char *)pBuf);
    xFreeMem(pBuf, nullptr, 0);
}
