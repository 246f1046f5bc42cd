// What the tests share.
#pragma once

#include "allocations.h"
#include "tarvix/globals.h"
#include "tarvix/strings.h"
#include "tarvix/system.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>
#include <vector>

/// The library's globals for one test, without platform objects.
class CTestGlobals
{
public:
    CTestGlobals() : m_pOldGlobals(glb), m_pOldSys(sglb)
    {
        glb = new SGlobals;
        sglb = new SSysGlobals;
        EXPECT_EQ(1, xCreateGlobals());
    }

    ~CTestGlobals()
    {
        xExit();
        xFreeGlobals();
        delete sglb;
        delete glb;
        glb = m_pOldGlobals;
        sglb = m_pOldSys;
    }

private:
    SGlobals *m_pOldGlobals;
    SSysGlobals *m_pOldSys;
};

/// A test with globals, in an empty folder of its own that is its working
/// directory and is removed behind it.
class CFolderTest : public testing::Test
{
protected:
    CFolderTest() : m_Old(std::filesystem::current_path())
    {
        static int s_nCounter = 0;
        const testing::TestInfo *pInfo = testing::UnitTest::GetInstance()->current_test_info();
        std::string strName = std::string("tarvix-") + pInfo->test_suite_name() + "-" + pInfo->name() + "-" +
                              std::to_string(xGetProcessId()) + "-" + std::to_string(s_nCounter++);
        for (char &c : strName)
            if (c == '/')
                c = '-';
        m_Folder = std::filesystem::temp_directory_path() / strName;
        // Under Wine process ids come again, and a run that was stopped leaves its folder.
        std::error_code ignored;
        std::filesystem::remove_all(m_Folder, ignored);
        std::filesystem::create_directories(m_Folder);
        std::filesystem::current_path(m_Folder);
    }

    ~CFolderTest() override
    {
        std::filesystem::current_path(m_Old);
        std::error_code ignored;
        std::filesystem::remove_all(m_Folder, ignored);
    }

    std::string Path(const std::string &strName) const { return (m_Folder / strName).string(); }

    std::filesystem::path m_Old;
    std::filesystem::path m_Folder;
    CTestGlobals m_Globals;
};

inline void WriteFile(const std::string &strPath, const std::string &strBytes)
{
    std::ofstream(strPath, std::ios::binary) << strBytes;
}

inline std::string ReadFile(const std::string &strPath)
{
    std::ifstream file(strPath, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(file), {});
}

/// The last report's text; empty when there was none.
inline std::string LastError()
{
    return glb->m_Error.GetErrCode() ? glb->m_Error.GetError(nullptr) : "";
}

/// A string of the library's heap as a std::string, freed; "(null)" for null.
inline std::string TakeString(char *psz)
{
    const std::string str = psz ? psz : "(null)";
    if (psz)
        String_Free(psz);
    return str;
}
