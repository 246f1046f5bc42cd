#include "tarvix/error.h"

#include "support.h"
#include "tarvix/strings.h"

namespace
{
std::string ErrorString()
{
    char szBuffer[4096] = "untouched";
    return glb->m_Error.CreateErrorString(szBuffer, sizeof(szBuffer)) ? szBuffer : std::string("0:") + szBuffer;
}
} // namespace

TEST(ErrorTest, CodesHaveTheirTexts)
{
    CTestGlobals globals;
    const struct
    {
        xlong lCode;
        const char *pszText;
    } cases[] = { { 0, "No error" },
                  { 14, "Out of memory" },
                  { 16, "The overflow bytes have been changed!" },
                  { 24, "Unknown/unsupported picture format" },
                  { 25, "Unknown error code!" },
                  { 26, "Unknown error code!" },
                  { -5, "Unknown error code!" } };
    for (const auto &c : cases)
    {
        SCOPED_TRACE(c.lCode);
        xlong lCode = 99;
        EXPECT_EQ(0, xError_Func(c.lCode, nullptr, 0));
        EXPECT_STREQ(c.pszText, glb->m_Error.GetError(&lCode));
        EXPECT_EQ(c.lCode, lCode);
    }
    EXPECT_EQ(1, glb->m_Error.Clear());
    EXPECT_EQ(-1, glb->m_Error.m_lLine);
    EXPECT_STREQ("", glb->m_Error.m_pszFile);
}

TEST(ErrorTest, TheWholeReportInEveryForm)
{
    CTestGlobals globals;
    CErrorBase &error = glb->m_Error;
    EXPECT_EQ("0:untouched", ErrorString());
    xErrorTxt("plain text");
    EXPECT_EQ("plain text", ErrorString());
    error.SetError(14, 0, 0, nullptr, 0);
    EXPECT_EQ("Error code 0xe :\nOut of memory", ErrorString());
    error.SetError(3, 7, 0, "a.cpp", 12);
    EXPECT_EQ("Error code 0x3 :\nSystem specific error\n\nSystem specific error (7):\nUnknown error code",
              ErrorString());
    xStartStdDebug(1);
    EXPECT_EQ("Error in : a.cpp\nOn line : 12\n\nError code 0x3 :\nSystem specific error\n\n"
              "System specific error (7):\nUnknown error code",
              ErrorString());
    error.SetError(5, 0, 0, "b.cpp", 3);
    EXPECT_EQ("Error in : b.cpp\nOn line : 3\n\nError code 0x5 :\nEnd of file reached", ErrorString());
    error.SetErrorTxt("text", 0, nullptr, 4);
    EXPECT_EQ("Error in : Unknown file\nOn line : 4\n\ntext", ErrorString());
    error.SetError(5, 0, 0, nullptr, 3);
    EXPECT_EQ("Error code 0x5 :\nEnd of file reached", ErrorString()) << "a null file leaves the place out";
    EXPECT_EQ(9, error.SetErrorTxt(nullptr, 9, nullptr, 0));
    EXPECT_EQ("Undefined error", LastError());
}

TEST(ErrorTest, FormattedTextsAreLimited)
{
    CTestGlobals globals;
    glb->m_Error.SetErrorf("the %s", "cause");
    glb->m_Error.SetErrorf("%s, because of %s", "It failed", glb->m_Error.GetError(nullptr));
    EXPECT_NE(std::string::npos, LastError().find("It failed, because of")) << LastError();
    EXPECT_NE(std::string::npos, LastError().find("the cause")) << LastError();
    EXPECT_EQ(0, glb->m_Error.SetErrorf("%s", std::string(1948, 'x').c_str()));
    EXPECT_EQ(std::string(1948, 'x'), LastError());
    for (size_t ulLen : { 1949u, 2047u, 2048u, 100000u })
    {
        glb->m_Error.SetErrorf("%s", std::string(ulLen, 'x').c_str());
        EXPECT_EQ("CRITICAL ERROR: The real error msg is to big. Please notify the development team about this as soon "
                  "as possible",
                  LastError());
    }
}

// Operations of a null object are part of the interface, whatever the language says of them.
__attribute__((no_sanitize("undefined"))) static void CallNullObject()
{
    CErrorBase *volatile pNull = nullptr;
    char szBuffer[8] = "same";
    EXPECT_EQ(1, pNull->SetError(1, 0, 0, nullptr, 0));
    EXPECT_EQ(1, pNull->SetErrorTxt("x", 0, nullptr, 0));
    EXPECT_EQ(1, pNull->SetErrorf("x"));
    EXPECT_EQ(1, pNull->GetErrCode());
    EXPECT_EQ(1, pNull->CreateErrorString(szBuffer, 8));
    EXPECT_STREQ("Unknown error (error class is undefined)", pNull->GetError(nullptr));
}

TEST(ErrorTest, NullObjectsAndMissingGlobals)
{
    CallNullObject();
    EXPECT_EQ(0, xError_Func(1, nullptr, 0));
    EXPECT_EQ(0, xErrorTxt_Func("x", nullptr, 0));
    EXPECT_EQ(0, xGetDebugLevel(-1));
    EXPECT_EQ("[a] b", TakeString(xErrorMerge("a", "b")));
    EXPECT_EQ("[] ", TakeString(xErrorMerge(nullptr, nullptr)));
}
