#include "core/debug.h"

#include "core/heap.h"
#include "support.h"

namespace
{
std::string s_strOptions;

void NoteOption(char *pszKey, char *pszValue)
{
    s_strOptions += std::string(pszKey) + "=" + pszValue + ";";
}

class CDebugTest : public CFolderTest
{
protected:
    std::string Read(const std::string &strText)
    {
        s_strOptions.clear();
        WriteFile("options.txt", strText);
        xGetDebugOptions("options.txt", NoteOption);
        return s_strOptions;
    }
};
} // namespace

TEST_F(CDebugTest, LinesAreTrimmedAndBadOnesSkipped)
{
    EXPECT_EQ("key=value;", Read("  key = value \r\n"));
    EXPECT_EQ("a=b=on;", Read("a=b=on\n")) << "the last equals sign divides";
    EXPECT_EQ("", Read("x=1\n"));
    EXPECT_EQ("ab=1;", Read("ab=1"));
    EXPECT_EQ("", Read("none\n=\nab=\n--=--\n\n"));
    EXPECT_EQ("k.e y=v-1;", Read("[k.e y]=\"v-1\"\n"));
    // A line longer than the buffer goes on as another.
    EXPECT_EQ("tail=1;", Read(std::string(98, 'x') + "tail=1\n"));
    xGetDebugOptions("missing.txt", NoteOption);
    xGetDebugOptions("options.txt", nullptr);
}

TEST_F(CDebugTest, SwitchesAndLevels)
{
    Read("validate=off\nDebugScreen=ON\ndebugflag=on\ndebuglevel=dbgl_kcbl\n");
    EXPECT_EQ(1, glb->m_bNoValidate) << "the reverse of the others";
    EXPECT_EQ(1, glb->m_lDebugScreen);
    EXPECT_EQ(1, glb->m_lStdDebug);
    EXPECT_EQ(1, xGetDebugLevel(4));
    EXPECT_EQ(0, xGetDebugLevel(3));
    Read("validate=on\ndebugscreen=x\ndebugflag=x\ndebuglevel=nonsense\n");
    EXPECT_EQ(0, glb->m_bNoValidate);
    EXPECT_EQ(0, glb->m_lDebugScreen);
    EXPECT_EQ(0, glb->m_lStdDebug);
    EXPECT_EQ(4, glb->m_lDebugLevel);
    Read("debuglevel=DBGL_ALL\n");
    EXPECT_EQ(-1, glb->m_lDebugLevel);
}

TEST_F(CDebugTest, FailingAllocationSkipsTheLine)
{
    const size_t ulBefore = HeapState().ulLiveBlocks;
    for (xlong l = 1; l <= 2; ++l)
    {
        HeapFailAt(l);
        EXPECT_EQ("cd=2;", Read("ab=1\ncd=2\n"));
        EXPECT_TRUE(HeapFailed());
    }
    HeapFailAt(0);
    EXPECT_EQ(ulBefore, HeapState().ulLiveBlocks);
}

TEST_F(CDebugTest, OutputIsAppendedAndDeleted)
{
    testing::internal::CaptureStderr();
    glb->m_pfnDbgStdOut("one ");
    glb->m_pfnDbgStdOut("two");
    glb->m_pfnDbgLvlOut("level");
    EXPECT_EQ("one twolevel", testing::internal::GetCapturedStderr());
    EXPECT_EQ("one two", ReadFile("DbgStd.txt"));
    EXPECT_EQ("level", ReadFile("DbgLevel.txt"));
    xDeleteDbgFiles();
    xDeleteDbgFiles();
    EXPECT_EQ("", LastError());
    EXPECT_FALSE(std::filesystem::exists("DbgStd.txt") || std::filesystem::exists("DbgLevel.txt"));
}
