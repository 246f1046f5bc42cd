#include "support.h"

#include "tarvix/strings.h"

#include <ctime>

TEST(MiscTest, DatesAreCheckedByTheGregorianRule)
{
    const struct
    {
        short sYear, sMonth, sDay;
        xlong lValid;
    } cases[] = {
        { 2000, 2, 29, 1 }, { 1900, 2, 29, 0 }, { 2004, 2, 29, 1 }, { 2003, 2, 29, 0 }, { 2003, 12, 31, 1 },
        { 2003, 4, 31, 0 }, { 2003, 0, 1, 0 },  { 2003, 13, 1, 0 }, { 2003, 1, 0, 0 },  { 2003, 1, -1, 0 },
    };
    for (const auto &c : cases)
    {
        TDate date = {};
        date.sYear = c.sYear;
        date.sMonth = c.sMonth;
        date.sDay = c.sDay;
        date.sHour = 99;
        EXPECT_EQ(c.lValid, VerifyDate(&date)) << c.sYear << "-" << c.sMonth << "-" << c.sDay;
    }
    EXPECT_EQ(0, VerifyDate(nullptr));
}

TEST(MiscTest, TheCurrentDateIsTheRuntimes)
{
    CTestGlobals globals;
    GetCurrentDate(nullptr);
    TDate date;
    xlong lFields[9];
    const time_t tBefore = time(nullptr);
    GetCurrentDate(&date);
    EXPECT_EQ(1, xGetDateInfo(lFields[0], lFields[1], lFields[2], lFields[3], lFields[4], lFields[5], lFields[6],
                              lFields[7], lFields[8]));
    const std::string strDate = TakeString(xGetDateString());
    const tm local = *localtime(&tBefore);
    EXPECT_EQ(local.tm_year + 1900, date.sYear);
    EXPECT_EQ(local.tm_wday ? local.tm_wday : 0, date.sWeekday) << "Sunday stays 0";
    EXPECT_EQ(local.tm_yday, date.sYearday);
    EXPECT_EQ(local.tm_mon, lFields[4]);
    EXPECT_EQ(local.tm_year, lFields[5]);
    char szDate[128];
    strftime(szDate, sizeof(szDate), "%Y-%m-%d", &local);
    EXPECT_EQ(szDate, strDate);
}

TEST(MiscTest, RandomNumbersStayInRangeAndReachIt)
{
    CTestGlobals globals;
    xSeedRandomizer(1);
    EXPECT_EQ(0u, xRand(0));
    EXPECT_EQ(0u, xRand(1));
    unsigned uSeen = 0;
    for (int n = 0; n < 5000; ++n)
    {
        ASSERT_GE(32767u, xSysRand());
        const xulong ul = xRand(7);
        ASSERT_GT(7u, ul);
        uSeen |= 1u << ul;
    }
    EXPECT_EQ(127u, uSeen);
}

TEST(MiscTest, IdsCountFromOneAndSkipZero)
{
    CTestGlobals globals;
    xulong ulA, ulB, ulC;
    xGetUID(ulA, ulB, ulC);
    EXPECT_EQ(1u, ulA);
    EXPECT_EQ(xGetProcessId(), ulB);
    xGetUID(ulA, ulB, ulC);
    EXPECT_EQ(2u, ulA);
    memset(glb->m_ulUIDState, 0xff, sizeof(glb->m_ulUIDState));
    xGetUID(ulA, ulB, ulC);
    EXPECT_EQ(1u, ulA);
}

TEST(MiscTest, FlagsHaveIndexes1To4095)
{
    CTestGlobals globals;
    for (xlong lIndex : { 1, 2048, 4095 })
    {
        EXPECT_EQ(0, GlobalVar_IsTrue(lIndex));
        EXPECT_EQ(1, GlobalVar_IsFalse(lIndex));
        GlobalVar_SetTrue(lIndex);
        EXPECT_EQ(1, GlobalVar_IsTrue(lIndex));
        GlobalVar_SetFalse(lIndex);
        EXPECT_EQ(1, GlobalVar_IsFalse(lIndex));
    }
    EXPECT_EQ("", LastError());
    const struct
    {
        xlong (*pfnTest)(xlong);
        void (*pfnSet)(xlong);
        const char *pszName;
    } cases[] = { { GlobalVar_IsTrue, nullptr, "GlobalVar_IsTrue" },
                  { GlobalVar_IsFalse, nullptr, "GlobalVar_IsFalse" },
                  { nullptr, GlobalVar_SetTrue, "GlobalVar_SetTrue" },
                  { nullptr, GlobalVar_SetFalse, "GlobalVar_SetFalse" } };
    for (const auto &c : cases)
    {
        for (xlong lIndex : { 0, 4096, -1 })
        {
            SCOPED_TRACE(c.pszName + std::to_string(lIndex));
            glb->m_Error.Clear();
            if (c.pfnTest)
                EXPECT_EQ(0, c.pfnTest(lIndex));
            else
                c.pfnSet(lIndex);
            EXPECT_EQ(std::string(c.pszName) + ": Index is invalid (should be 1-4095)", LastError());
        }
    }
}

TEST(MiscTest, ByteOrderIsBigEndianInFiles)
{
    EXPECT_EQ(0x04030201u, XULONG_FromProcToStd(0x01020304));
    EXPECT_EQ(0x0201u, XUWORD_FromStdToProc(0x0102));
    CTestGlobals globals;
    EXPECT_EQ(0x04030201u, XULONG_FromStdToProc(0x01020304));
    EXPECT_EQ(2, glb->m_bEndian) << "worked out on first use";
    EXPECT_EQ(1.5f, XFLOAT_FromStdToProc(XFLOAT_FromProcToStd(1.5f)));
    double d = XDOUBLE_FromProcToStd(1.0);
    EXPECT_EQ(0, memcmp(&d, "\x3f\xf0\0\0\0\0\0\0", 8));
    EXPECT_EQ(1.0, XDOUBLE_FromStdToProc(d));
}

TEST(MiscTest, SmallCallsAnswerAsTheyAre)
{
    CTestGlobals globals;
    xlong lA = 9, lB = 9;
    EXPECT_EQ(1, TryCreateNewProcess(lA, lB));
    EXPECT_EQ(1, lA);
    EXPECT_EQ(0, lB);
    EXPECT_EQ(1, xGetPriority(lA));
    EXPECT_EQ(50, lA);
    EXPECT_EQ(1, xIncPriority(70));
    EXPECT_EQ(1, xDecPriority(70));
    xShowVersionInfoTarvix();
    EXPECT_EQ(0xfffffffeu, xTimeDiff(1, 0));
    EXPECT_EQ(5u, xTimeDiff(10, 15));
}
