#include "tarvix/cachedlog.h"

#include "core/heap.h"
#include "support.h"

#include <regex>

namespace
{
using CCachedLogTest = CFolderTest;

TEST_F(CCachedLogTest, LinesCarryTimeModuleAndMessage)
{
    CCachedLog log;
    log.LogMessage(1, "Early", "nothing happens");
    ASSERT_EQ(1, log.Init("log.txt", 100000, 0));
    EXPECT_EQ(0, log.Init("other.txt", 1, 1));
    EXPECT_EQ("CCachedLog::Init: Already initialized.", LastError());
    log.LogMessage(1, "Net", "connected");
    log.LogMessage(1, nullptr, "no module");
    log.LogMessage(1, "no message", nullptr);
    log.LogMessageF(9, "Gui", "%d windows, %s", 7, "ready");
    const std::string strLog = ReadFile("log.txt");
    EXPECT_TRUE(
        std::regex_match(strLog, std::regex("\\d{8} \\d{6} Net connected\n\\d{8} \\d{6} Gui 7 windows, ready\n")))
        << strLog;

    CCachedLog nameless;
    EXPECT_EQ(0, nameless.Init(nullptr, 1, 1));
    EXPECT_EQ("CCachedLog::Init: Missing log file name.", LastError());
}

TEST_F(CCachedLogTest, LongTextsAreCut)
{
    CCachedLog log;
    ASSERT_EQ(1, log.Init("log.txt", 100000, 0));
    const std::string strLong(5000, 'm');
    const auto LastLine = [&](const char *pszModule, const char *pszMessage)
    {
        std::filesystem::remove("log.txt");
        log.LogMessage(0, pszModule, pszMessage);
        return ReadFile("log.txt");
    };
    EXPECT_EQ("Mod " + strLong.substr(0, 1002) + "\n", LastLine("Mod", strLong.c_str()).substr(16));
    EXPECT_EQ(strLong.substr(0, 1005) + " \n", LastLine(strLong.c_str(), "gone").substr(16));
    std::filesystem::remove("log.txt");
    log.LogMessageF(0, "Mod", "%s", strLong.c_str());
    EXPECT_EQ("Mod " + strLong.substr(0, 1002) + "\n", ReadFile("log.txt").substr(16));
}

TEST_F(CCachedLogTest, CacheIsWrittenWhenFullAndAtTheEnd)
{
    {
        CCachedLog log;
        ASSERT_EQ(1, log.Init("log.txt", 100000, 100));
        log.WriteToLog("start", 5);
        EXPECT_FALSE(std::filesystem::exists("log.txt"));
        log.WriteToLog(std::string(245, 'x').data(), 245);
        EXPECT_EQ("start" + std::string(195, 'x'), ReadFile("log.txt"));
        EXPECT_EQ(50u, log.m_ulCacheUsed);
        // Exactly full is not yet over.
        log.WriteToLog(std::string(50, 'y').data(), 50);
        EXPECT_EQ(100u, log.m_ulCacheUsed);
        EXPECT_EQ(200u, ReadFile("log.txt").size());
    }
    EXPECT_EQ("start" + std::string(245, 'x') + std::string(50, 'y'), ReadFile("log.txt"));
}

TEST_F(CCachedLogTest, TheLimitIsPassedByOneWriteAtMost)
{
    const struct
    {
        xulong ulMax;
        size_t ulExpected;
    } cases[] = { { 0, 0 }, { 1, 10 }, { 10, 10 }, { 11, 20 }, { 1000, 30 } };
    for (const auto &c : cases)
    {
        SCOPED_TRACE(c.ulMax);
        std::filesystem::remove("log.txt");
        CCachedLog log;
        ASSERT_EQ(1, log.Init("log.txt", c.ulMax, 0));
        for (int n = 0; n < 3; ++n)
            log.WriteToLog("0123456789", 10);
        EXPECT_EQ(c.ulExpected, ReadFile("log.txt").size());
    }
    CCachedLog log;
    ASSERT_EQ(1, log.Init("missing/log.txt", 1000, 0));
    glb->m_Error.Clear();
    log.WriteToLog("lost", 4);
    EXPECT_EQ("", LastError());
}

TEST_F(CCachedLogTest, SaysWhatThereWasNoMemoryFor)
{
    const char *const pszParts[] = { "m_pszFileName",      "m_pszTempMessage",    "m_pszTempMessageF",
                                     "m_pszDefaultModule", "m_pszDefaultMessage", "m_pCache" };
    const size_t ulBlocks = HeapState().ulLiveBlocks;
    for (xlong l = 0; l < 6; ++l)
    {
        {
            CCachedLog log;
            HeapFailAt(l + 1);
            EXPECT_EQ(0, log.Init("log.txt", 1000, 10));
            HeapFailAt(0);
            EXPECT_EQ(std::string("CCachedLog::Init: Out of mem (") + pszParts[l] + ").", LastError());
            log.LogMessage(0, "Mod", "works as far as it can");
        }
        EXPECT_EQ(ulBlocks, HeapState().ulLiveBlocks);
    }
}
} // namespace
