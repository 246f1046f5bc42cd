#include "platform/win32.h"

#include "support.h"

#include <sys/stat.h>

namespace
{
class PlatformLink : public CFolderTest
{
protected:
    PlatformLink()
    {
        EXPECT_EQ(S_OK, CoInitialize(nullptr));
        EXPECT_EQ(S_OK,
                  CoCreateInstance(CLSID_ShellLink, nullptr, CLSCTX_INPROC_SERVER, IID_IShellLinkA, (void **)&m_pLink));
        EXPECT_EQ(S_OK, m_pLink->QueryInterface(IID_IPersistFile, (void **)&m_pFile));
    }

    ~PlatformLink() override
    {
        EXPECT_EQ(1u, m_pFile->Release());
        EXPECT_EQ(0u, m_pLink->Release());
        CoUninitialize();
    }

    std::wstring Wide(const std::string &strName) { return (m_Folder / strName).wstring(); }

    IShellLinkA *m_pLink = nullptr;
    IPersistFile *m_pFile = nullptr;
};

struct TLinkCase
{
    const char *pszPath, *pszArguments, *pszDescription;
    const char *pszExec; ///< the line that desktops read
};

const TLinkCase s_Links[] = {
    { "/usr/bin/tool", "", "Plain", "Exec=\"/usr/bin/tool\"" },
    { "/opt/My Tools/tool", "-a \"b c\"", "Line one\nline two", "Exec=\"/opt/My Tools/tool\" \"-a\" \"b c\"" },
    { "/opt/100%/$x`\"\\y", "50% \\\"q\\\"", " leading blank",
      "Exec=\"/opt/100%%/\\\\$x\\\\`\\\\\"\\\\\\\\y\" \"50%%\" \"\\\\\"q\\\\\"\"" },
    { "/x", "two  blanks\t\\end\\", "tab\there \\ back", "Exec=\"/x\" \"two\" \"blanks\" \"\\\\\\\\end\\\\\\\\\"" },
};
} // namespace

TEST_F(PlatformLink, ComesBackAsItWasSaved)
{
    for (const TLinkCase &c : s_Links)
    {
        SCOPED_TRACE(c.pszPath);
        m_pLink->SetPath(c.pszPath);
        m_pLink->SetArguments(c.pszArguments);
        m_pLink->SetDescription(c.pszDescription);
        m_pLink->SetWorkingDirectory("/work folder");
        m_pLink->SetIconLocation("/icon.png", 0);
        EXPECT_EQ(S_OK, m_pFile->IsDirty());
        ASSERT_EQ(S_OK, m_pFile->Save(Wide("My link.LNK").c_str(), TRUE));
        EXPECT_EQ(S_FALSE, m_pFile->IsDirty());
        const std::string strText = ReadFile("My link.desktop");
        EXPECT_EQ(0u, strText.find("[Desktop Entry]\nType=Application\n"));
        EXPECT_NE(std::string::npos, strText.find("\nName=My link\n"));
        EXPECT_NE(std::string::npos, strText.find("\n" + std::string(c.pszExec) + "\n")) << strText;
        struct stat info;
        ASSERT_EQ(0, stat("My link.desktop", &info));
        EXPECT_TRUE(info.st_mode & S_IXUSR);

        m_pLink->SetPath("changed");
        m_pLink->SetArguments("changed");
        m_pLink->SetDescription("changed");
        m_pLink->SetWorkingDirectory("changed");
        ASSERT_EQ(S_OK, m_pFile->Load(Wide("MY LINK.lnk").c_str(), STGM_READ));
        char sz[256];
        EXPECT_EQ(S_OK, m_pLink->GetPath(sz, sizeof(sz), nullptr, SLGP_RAWPATH));
        EXPECT_STREQ(c.pszPath, sz);
        m_pLink->GetArguments(sz, sizeof(sz));
        EXPECT_STREQ(c.pszArguments, sz);
        m_pLink->GetDescription(sz, sizeof(sz));
        EXPECT_STREQ(c.pszDescription, sz);
        m_pLink->GetWorkingDirectory(sz, sizeof(sz));
        EXPECT_STREQ("/work folder", sz);
        m_pLink->GetPath(sz, 3, nullptr, 0);
        EXPECT_EQ(std::string(c.pszPath).substr(0, 2), sz) << "cut to the buffer";
    }
}

TEST_F(PlatformLink, LinksOfOthersAreRead)
{
    WriteFile("other.desktop", "# comment\n[Other]\nExec=wrong\n[Desktop Entry]\r\nName=N\n"
                               "Exec = env \"a b\" %U --x=%% plain\nComment=Says\\nso\n");
    ASSERT_EQ(S_OK, m_pFile->Load(Wide("other.desktop").c_str(), STGM_READ));
    char sz[256];
    m_pLink->GetPath(sz, sizeof(sz), nullptr, 0);
    EXPECT_STREQ("env", sz);
    m_pLink->GetArguments(sz, sizeof(sz));
    EXPECT_STREQ("\"a b\" --x=% plain", sz);
    m_pLink->GetDescription(sz, sizeof(sz));
    EXPECT_STREQ("Says\nso", sz);
}

TEST_F(PlatformLink, FailuresSayWhy)
{
    EXPECT_EQ(E_FAIL, m_pFile->Save(Wide("empty.lnk").c_str(), TRUE)) << "a link to nothing";
    m_pLink->SetPath("/x");
    EXPECT_EQ(E_INVALIDARG, m_pFile->Save(nullptr, TRUE)) << "it has no file yet";
    EXPECT_EQ(STG_E_FILENOTFOUND, m_pFile->Load(Wide("none.lnk").c_str(), STGM_READ));
    EXPECT_EQ(STG_E_PATHNOTFOUND, m_pFile->Load(Wide("no/none.lnk").c_str(), STGM_READ));
    EXPECT_EQ(STG_E_PATHNOTFOUND, m_pFile->Save(Wide("no/none.lnk").c_str(), TRUE));
    for (const char *pszText : { "", "binary", "[Desktop Entry]\nName=x\n", "[Desktop Entry]\nExec=\n" })
    {
        WriteFile("bad.desktop", pszText);
        EXPECT_EQ(STG_E_INVALIDHEADER, m_pFile->Load(Wide("bad.lnk").c_str(), STGM_READ)) << pszText;
    }
    void *p = this;
    EXPECT_EQ(E_NOINTERFACE, m_pLink->QueryInterface(CLSID_ShellLink, &p));
    EXPECT_EQ(nullptr, p);
}

TEST(PlatformCom, ObjectsNeedInitialisationAndAClass)
{
    void *p;
    EXPECT_EQ(CO_E_NOTINITIALIZED, CoCreateInstance(CLSID_ShellLink, nullptr, CLSCTX_INPROC_SERVER, IID_IUnknown, &p));
    EXPECT_EQ(S_OK, CoInitialize(nullptr));
    EXPECT_EQ(S_FALSE, CoInitialize(nullptr));
    EXPECT_EQ(REGDB_E_CLASSNOTREG, CoCreateInstance(IID_IUnknown, nullptr, CLSCTX_INPROC_SERVER, IID_IUnknown, &p));
    EXPECT_EQ(nullptr, p);
    EXPECT_EQ(E_NOINTERFACE, CoCreateInstance(CLSID_ShellLink, nullptr, CLSCTX_INPROC_SERVER, CLSID_ShellLink, &p));
    CoUninitialize();
    CoUninitialize();
    CoUninitialize();
}

TEST(PlatformCom, IdentifiersAreRandomAndOfVersionFour)
{
    GUID a, b;
    ASSERT_EQ(S_OK, CoCreateGuid(&a));
    ASSERT_EQ(S_OK, CoCreateGuid(&b));
    EXPECT_FALSE(a == b);
    RPC_CSTR psz;
    ASSERT_EQ(RPC_S_OK, UuidToStringA(&a, &psz));
    const std::string str = (char *)psz;
    ASSERT_EQ(36u, str.size());
    EXPECT_EQ('4', str[14]);
    EXPECT_NE(std::string::npos, std::string("89ab").find(str[19]));
    EXPECT_EQ(RPC_S_OK, RpcStringFreeA(&psz));
    EXPECT_EQ(nullptr, psz);
    const GUID known = { 0x00021401, 0xABCD, 0x00EF, { 0xC0, 1, 2, 3, 4, 5, 6, 0x46 } };
    UuidToStringA(&known, &psz);
    EXPECT_STREQ("00021401-abcd-00ef-c001-020304050646", (char *)psz);
    RpcStringFreeA(&psz);
}

TEST(PlatformCom, TextsBecomeWide)
{
    const struct
    {
        std::string strText;
        std::wstring strWide;
        bool bValid;
    } cases[] = {
        { "abc", L"abc", true },
        { "\xC3\xA5\xE2\x82\xAC\xF0\x9F\x98\x80", L"\u00E5\u20AC\U0001F600", true },
        { "a\xFF"
          "b",
          std::wstring(L"a") + (wchar_t)0xDCFF + L"b", false },
        { "\xC3", std::wstring(1, (wchar_t)0xDCC3), false },
        { "\xC0\x80", { (wchar_t)0xDCC0, (wchar_t)0xDC80 }, false },
        { "\xED\xA0\x80", { (wchar_t)0xDCED, (wchar_t)0xDCA0, (wchar_t)0xDC80 }, false },
    };
    for (const auto &c : cases)
    {
        SCOPED_TRACE(c.strText);
        wchar_t sz[32];
        const int n = MultiByteToWideChar(CP_ACP, 0, c.strText.c_str(), -1, sz, 32);
        ASSERT_EQ((int)c.strWide.size() + 1, n);
        EXPECT_EQ(c.strWide, sz);
        EXPECT_EQ(n, MultiByteToWideChar(CP_UTF8, 0, c.strText.c_str(), -1, nullptr, 0));
        EXPECT_EQ(n - 1, MultiByteToWideChar(CP_UTF8, 0, c.strText.c_str(), (int)c.strText.size(), sz, 32));
        EXPECT_EQ(c.bValid, MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, c.strText.c_str(), -1, nullptr, 0) != 0);
        EXPECT_EQ(0, MultiByteToWideChar(CP_UTF8, 0, c.strText.c_str(), -1, sz, n - 1));
        EXPECT_EQ((DWORD)ERROR_INSUFFICIENT_BUFFER, GetLastError());
    }
}

TEST(PlatformCom, SocketsAreCounted)
{
    WSADATA data;
    EXPECT_EQ(SOCKET_ERROR, WSACleanup());
    EXPECT_EQ(0, WSAStartup(MAKEWORD(1, 1), &data));
    EXPECT_EQ(MAKEWORD(1, 1), data.wVersion);
    EXPECT_EQ(WSAVERNOTSUPPORTED, WSAStartup(0, &data));
    EXPECT_EQ(0, WSACleanup());
    EXPECT_EQ(SOCKET_ERROR, WSACleanup());
}
