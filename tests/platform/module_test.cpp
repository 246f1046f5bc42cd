#include "platform/win32.h"

#include "support.h"

#include <cstdlib>

namespace
{
namespace fs = std::filesystem;

typedef HRESULT (*TGetFolderPath)(HWND, int, HANDLE, DWORD, LPSTR);

/// Sets variables for one test.
class PlatformFolders : public CFolderTest
{
protected:
    PlatformFolders()
    {
        for (const char *psz : { "HOME", "XDG_DATA_HOME", "XDG_CONFIG_HOME" })
        {
            const char *pszOld = getenv(psz);
            m_Old.emplace_back(psz, pszOld ? pszOld : "");
            unsetenv(psz);
        }
        setenv("HOME", m_Folder.c_str(), 1);
        m_hModule = LoadLibraryA("shfolder.dll");
        m_pfnGet = (TGetFolderPath)(void *)GetProcAddress(m_hModule, "SHGetFolderPathA");
    }

    ~PlatformFolders() override
    {
        EXPECT_TRUE(FreeLibrary(m_hModule));
        for (const auto &[strName, strValue] : m_Old)
            strValue.empty() ? unsetenv(strName.c_str()) : setenv(strName.c_str(), strValue.c_str(), 1);
    }

    std::vector<std::pair<std::string, std::string>> m_Old;
    HMODULE m_hModule;
    TGetFolderPath m_pfnGet;
};
} // namespace

TEST_F(PlatformFolders, AreThoseOfTheDesktop)
{
    ASSERT_NE(nullptr, m_pfnGet);
    fs::create_directory(".config");
    WriteFile(".config/user-dirs.dirs",
              "# x\nXDG_MUSIC_DIR=\"$HOME/My \\\"Music\"\nXDG_PICTURES_DIR=\"/srv/pictures\"\n");
    const struct
    {
        int nFolder;
        std::string strPath;
    } cases[] = {
        { CSIDL_STARTMENU, Path(".local/share/applications") },
        { CSIDL_STARTUP, Path(".config/autostart") },
        { CSIDL_PERSONAL, Path("Documents") },
        { CSIDL_MYMUSIC, Path("My \"Music") },
        { CSIDL_MYPICTURES, "/srv/pictures" },
    };
    for (const auto &c : cases)
    {
        char sz[MAX_PATH];
        EXPECT_EQ(S_FALSE, m_pfnGet(nullptr, c.nFolder, nullptr, SHGFP_TYPE_CURRENT, sz)) << "it isn't there yet";
        EXPECT_EQ(c.strPath, sz);
    }
    char sz[MAX_PATH];
    EXPECT_EQ(S_OK, m_pfnGet(nullptr, CSIDL_STARTMENU | CSIDL_FLAG_CREATE, nullptr, 0, sz));
    EXPECT_TRUE(fs::is_directory(sz));
    EXPECT_EQ(S_OK, m_pfnGet(nullptr, CSIDL_STARTMENU, nullptr, 0, sz));
    setenv("XDG_DATA_HOME", "/data", 1);
    m_pfnGet(nullptr, CSIDL_STARTMENU, nullptr, 0, sz);
    EXPECT_STREQ("/data/applications", sz);
    setenv("XDG_DATA_HOME", "relative", 1);
    m_pfnGet(nullptr, CSIDL_STARTMENU, nullptr, 0, sz);
    EXPECT_EQ(Path(".local/share/applications"), sz);
    EXPECT_EQ(E_INVALIDARG, m_pfnGet(nullptr, 0x99, nullptr, 0, sz));
    EXPECT_STREQ("", sz);
}

TEST(PlatformModule, FindsSharedObjects)
{
    const HMODULE hModule = LoadLibraryA("libm.so.6");
    ASSERT_NE(nullptr, hModule);
    EXPECT_EQ(hModule, LoadLibraryA("libm.so.6"));
    const auto pfnCos = (double (*)(double))(void *)GetProcAddress(hModule, "cos");
    ASSERT_NE(nullptr, pfnCos);
    EXPECT_EQ(1.0, pfnCos(0.0));
    EXPECT_EQ(nullptr, GetProcAddress(hModule, "NoSuchFunction"));
    EXPECT_EQ((DWORD)ERROR_PROC_NOT_FOUND, GetLastError());
    EXPECT_EQ(nullptr, GetProcAddress(hModule, (LPCSTR)7)) << "an ordinal";
    EXPECT_TRUE(FreeLibrary(hModule));
    EXPECT_TRUE(FreeLibrary(hModule));
    EXPECT_FALSE(FreeLibrary(hModule));
    EXPECT_EQ(nullptr, GetProcAddress(hModule, "cos"));
    EXPECT_EQ((DWORD)ERROR_INVALID_HANDLE, GetLastError());
    for (const char *psz : { "no-such-module.dll", "/no/such/module.dll", ".\\no-such.dll", "" })
        EXPECT_EQ(nullptr, LoadLibraryA(psz)) << psz;
    EXPECT_EQ(nullptr, LoadLibraryA(std::string(6000, 'x').c_str()));
}

// The tests' own library stands in for a module: it lies beside itself.
TEST(PlatformModule, WindowsNamesMeanTheObjectBeside)
{
    for (const char *psz : { "tarvix_testing", "TARVIX_TESTING.DLL", "libtarvix_testing.so" })
    {
        const HMODULE hModule = LoadLibraryA(psz);
        ASSERT_NE(nullptr, hModule) << psz;
        EXPECT_TRUE(FreeLibrary(hModule));
    }
}

TEST(PlatformErrors, HaveTexts)
{
    char sz[128];
    const DWORD ulLength = FormatMessageA(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr,
                                          ERROR_FILE_NOT_FOUND, 0, sz, sizeof(sz), nullptr);
    ASSERT_EQ(strlen(sz), ulLength);
    EXPECT_STREQ("\r\n", sz + ulLength - 2);
    char *psz = nullptr;
    EXPECT_EQ(ulLength, FormatMessageA(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_ALLOCATE_BUFFER, nullptr,
                                       (DWORD)HRESULT_FROM_WIN32(ERROR_FILE_NOT_FOUND), 0, (LPSTR)&psz, 0, nullptr));
    EXPECT_STREQ(sz, psz);
    LocalFree(psz);
    EXPECT_EQ(0u, FormatMessageA(FORMAT_MESSAGE_FROM_SYSTEM, nullptr, 0x12345, 0, sz, sizeof(sz), nullptr));
    EXPECT_EQ((DWORD)ERROR_MR_MID_NOT_FOUND, GetLastError());
    EXPECT_EQ(0u, FormatMessageA(FORMAT_MESSAGE_FROM_SYSTEM, nullptr, 2, 0, sz, 5, nullptr));
    EXPECT_EQ((DWORD)ERROR_INSUFFICIENT_BUFFER, GetLastError());
}
