#include "platform/codepage.h"
#include "platform/face.h"

#include <cstring>
#include <iconv.h>

namespace
{
class PlatformClipboard : public CFaceTest
{
protected:
    PlatformClipboard() { m_hWnd = OpenShown(WS_POPUP, 0, 0, 10, 10); }

    std::string Paste()
    {
        EXPECT_TRUE(OpenClipboard(m_hWnd));
        const HANDLE hText = GetClipboardData(CF_TEXT);
        const char *pszText = (const char *)GlobalLock(hText);
        const std::string strText = pszText ? pszText : "(null)";
        GlobalUnlock(hText);
        EXPECT_TRUE(CloseClipboard());
        return strText;
    }

    bool Copy(const char *pszText)
    {
        EXPECT_TRUE(OpenClipboard(m_hWnd));
        EXPECT_TRUE(EmptyClipboard());
        const HGLOBAL hText = GlobalAlloc(GMEM_MOVEABLE, strlen(pszText) + 1);
        strcpy((char *)GlobalLock(hText), pszText);
        GlobalUnlock(hText);
        const bool bTaken = SetClipboardData(CF_TEXT, hText) != nullptr;
        if (!bTaken)
            GlobalFree(hText);
        EXPECT_TRUE(CloseClipboard());
        return bTaken;
    }

    HWND m_hWnd;
};
} // namespace

TEST_F(PlatformClipboard, TextComesInTheProgramsCodePage)
{
    EXPECT_FALSE(IsClipboardFormatAvailable(CF_TEXT));
    EXPECT_EQ("(null)", Paste());
    const std::pair<const char *, const char *> cases[] = {
        { "plain", "plain" },
        { "\xC3\xA4\xE2\x82\xAC\xC5\xB8", "\xE4\x80\x9F" },   // ae, euro sign, Y with dots
        { "\xE6\xBC\xA2 \xF0\x9F\x98\x80!", "? ?!" },         // what the page lacks
        { "one\ntwo\r\nthree\n", "one\r\ntwo\r\nthree\r\n" }, // line ends
        { "bad \xC3( \xFF end \xE2\x82", "bad ?( ? end ??" }, // no UTF-8
    };
    for (const auto &[pszDesktop, pszProgram] : cases)
    {
        SCOPED_TRACE(pszDesktop);
        FaceSetClipboard(pszDesktop);
        EXPECT_TRUE(IsClipboardFormatAvailable(CF_TEXT));
        EXPECT_FALSE(IsClipboardFormatAvailable(2));
        EXPECT_EQ(pszProgram, Paste());
    }
}

TEST_F(PlatformClipboard, CopiedTextComesBack)
{
    std::string strAll;
    for (int i = 1; i < 256; ++i)
        if (i != '\r' && i != '\n')
            strAll += (char)i;
    strAll += "\r\nend";
    ASSERT_TRUE(Copy(strAll.c_str()));
    EXPECT_EQ(strAll, Paste());
    EXPECT_EQ(std::string::npos, std::string(FaceClipboard()).find('\r'));
    ASSERT_TRUE(Copy("second"));
    EXPECT_EQ("second", Paste());
    EXPECT_STREQ("second", FaceClipboard());
    FaceFailClipboard(true);
    EXPECT_FALSE(Copy("third"));
    EXPECT_EQ("(null)", Paste());
}

TEST_F(PlatformClipboard, ClosedIsClosed)
{
    FaceSetClipboard("text");
    EXPECT_EQ(nullptr, GetClipboardData(CF_TEXT));
    EXPECT_EQ((DWORD)ERROR_CLIPBOARD_NOT_OPEN, GetLastError());
    EXPECT_FALSE(EmptyClipboard());
    EXPECT_EQ(nullptr, SetClipboardData(CF_TEXT, nullptr));
    EXPECT_FALSE(CloseClipboard());
    const HWND hOther = Open(WS_POPUP, 0, 0, 10, 10);
    ASSERT_TRUE(OpenClipboard(m_hWnd));
    EXPECT_TRUE(OpenClipboard(m_hWnd));
    EXPECT_FALSE(OpenClipboard(hOther));
    EXPECT_EQ((DWORD)ERROR_ACCESS_DENIED, GetLastError());
    EXPECT_EQ(nullptr, GetClipboardData(2));
    EXPECT_EQ(nullptr, SetClipboardData(CF_TEXT, nullptr));
    EXPECT_TRUE(EmptyClipboard());
    EXPECT_FALSE(IsClipboardFormatAvailable(CF_TEXT));
    EXPECT_TRUE(CloseClipboard());
    EXPECT_FALSE(OpenClipboard((HWND)this));
}

// The runtime's own tables say what the page has.
TEST(PlatformCodePage, AgreesWithTheRuntime)
{
    iconv_t hConvert = iconv_open("CP1252", "UTF-32LE");
    ASSERT_NE((iconv_t)-1, hConvert);
    for (uint32_t ulChar = 1; ulChar < 0x3000; ++ulChar)
    {
        char *pIn = (char *)&ulChar, acOut[8], *pOut = acOut;
        size_t ulIn = 4, ulOut = sizeof(acOut);
        iconv(hConvert, nullptr, nullptr, nullptr, nullptr);
        const bool bHas = iconv(hConvert, &pIn, &ulIn, &pOut, &ulOut) == 0;
        // Windows gives the five holes of the page to the control characters of their number.
        const bool bHole = ulChar == 0x81 || ulChar == 0x8D || ulChar == 0x8F || ulChar == 0x90 || ulChar == 0x9D;
        const int nWanted = bHas ? (unsigned char)acOut[0] : bHole ? (int)ulChar : 0;
        ASSERT_EQ(nWanted, ToCodePage1252(ulChar)) << ulChar;
        if (nWanted)
            ASSERT_EQ(ulChar, FromCodePage1252((unsigned char)nWanted));
    }
    iconv_close(hConvert);
}

TEST(PlatformCodePage, Utf8ThereAndBack)
{
    for (uint32_t ulChar = 1; ulChar < 0x110000; ulChar += ulChar < 0x1000 ? 1 : 37)
    {
        if (ulChar >= 0xD800 && ulChar < 0xE000)
            continue;
        char szChar[4];
        const size_t ulLength = EncodeUtf8(ulChar, szChar);
        uint32_t ulBack = 0;
        bool bInvalid = false;
        ASSERT_EQ(ulLength, DecodeUtf8((const unsigned char *)szChar, ulLength, &ulBack, &bInvalid));
        ASSERT_EQ(ulChar, ulBack);
        ASSERT_FALSE(bInvalid);
        for (size_t ulCut = 1; ulCut < ulLength; ++ulCut)
        {
            bInvalid = false;
            EXPECT_EQ(1u, DecodeUtf8((const unsigned char *)szChar, ulCut, &ulBack, &bInvalid));
            EXPECT_TRUE(bInvalid);
        }
    }
}
