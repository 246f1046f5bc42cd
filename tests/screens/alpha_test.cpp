#include "tarvix/alpha.h"

#include "core/heap.h"
#include "support.h"
#include "tarvix/memory.h"

namespace
{
class CAlpha : public testing::Test
{
protected:
    ~CAlpha() override { DeleteShade(); }

    static int Index(int nRed, int nGreen, int nBlue) { return nRed * 1024 + nGreen * 32 + nBlue; }
    static int Low(int n) { return std::clamp(n, 0, 31); }

    CTestGlobals m_Globals;
};

struct TFormatCase
{
    unsigned short aus[6]; // shift and loss of red, green, blue
    int nIndex;
    unsigned short usWord;
};

TEST_F(CAlpha, WordsNeverReachFullWhite)
{
    const TFormatCase aCases[] = {
        { { 11, 3, 5, 2, 0, 3 }, 32767, 0xf7de },    { { 10, 3, 5, 3, 0, 3 }, 32767, 0x7bde },
        { { 11, 3, 5, 2, 0, 3 }, 1 << 5, 2 << 5 },   { { 11, 3, 5, 2, 0, 3 }, 15 << 5, 30 << 5 },
        { { 11, 3, 5, 2, 0, 3 }, 16 << 5, 32 << 5 }, { { 11, 3, 5, 2, 0, 3 }, 1, 0 },
        { { 0, 3, 5, 2, 11, 3 }, 17, 16 << 11 },     { { 11, 3, 5, 2, 0, 3 }, 0, 0 },
    };
    for (const TFormatCase &c : aCases)
    {
        ASSERT_EQ(1, Set16Bit(c.aus[0], c.aus[1], c.aus[2], c.aus[3], c.aus[4], c.aus[5]));
        EXPECT_EQ(c.usWord, glb->m_pIndexToScreen[c.nIndex]) << c.nIndex;
        EXPECT_EQ(c.aus[3], glb->m_uGreenLoss);
        EXPECT_EQ(c.aus[4], glb->m_uBlueShift);
    }
    // Numbers that describe no format are not worse than a wrong picture.
    EXPECT_EQ(1, Set16Bit(65535, 65535, 40, 9, 0, 0));
}

TEST_F(CAlpha, CubesMoveAllChannelsAtOnce)
{
    ASSERT_EQ(1, PreCalcShade());
    EXPECT_EQ(9313 * 31, glb->m_ShadeStepAll[31]);
    EXPECT_EQ(0, *(glb->m_ShadePointers[32767] - glb->m_ShadeStepAll[31]));
    for (int i = 0; i < 32768; i += 7)
    {
        const int r = i >> 10, g = i >> 5 & 31, b = i & 31;
        ASSERT_EQ(i, *glb->m_ShadePointers[i]);
        ASSERT_EQ(i, *glb->m_BrightPointers[i]);
        for (int n = 0; n < 32; n += 5)
        {
            ASSERT_EQ(Index(Low(r - n), Low(g - n), Low(b - n)), *(glb->m_ShadePointers[i] - glb->m_ShadeStepAll[n]));
            ASSERT_EQ(Index(Low(r + n), g, b), *(glb->m_ShadePointers[i] + glb->m_ShadeStepRed[n]));
            ASSERT_EQ(Index(r, Low(g + n), b), *(glb->m_ShadePointers[i] + glb->m_ShadeStepGreen[n]));
            ASSERT_EQ(Index(r, g, Low(b + n)), *(glb->m_ShadePointers[i] + glb->m_ShadeStepBlue[n]));
            ASSERT_EQ(Index(Low(r + n), Low(g + n), Low(b + n)), *(glb->m_BrightPointers[i] + n * (4096 + 64 + 1)));
        }
        ASSERT_EQ(Index(r / 2, g / 2, b / 2), glb->m_ShadowTable[i]);
    }
    EXPECT_EQ(glb->m_pShadeCube, glb->m_ShadePointers[40000]);
    EXPECT_EQ(glb->m_BrightCube, glb->m_BrightPointers[65535]);
    EXPECT_EQ(Index(0, 0, 15), glb->m_ShadowTable[31]);
}

TEST_F(CAlpha, ShadowsDivideEveryIndexButTheLast)
{
    glb->m_ShadowTable[65535] = 4711;
    CalcShadow(4.0f);
    for (int i = 0; i < 65535; ++i)
        ASSERT_EQ((i >> 10) / 4 * 1024 + (i >> 5 & 31) / 4 * 32 + (i & 31) / 4, glb->m_ShadowTable[i]) << i;
    EXPECT_EQ(4711, glb->m_ShadowTable[65535]);
    CalcShadow(0.0f);
    CalcShadow(-1e-30f);
}

TEST_F(CAlpha, ClampTable)
{
    PreCalcShade24();
    for (int i = 0; i < 768; ++i)
        ASSERT_EQ(std::clamp(i - 256, 0, 255), glb->m_ClampTable[i]);
    EXPECT_EQ(99, glb->m_ClampTable[255 + 100]);
}

TEST_F(CAlpha, BuildsOnce)
{
    ASSERT_EQ(1, PreCalcShade());
    ASSERT_EQ(1, Set16Bit(11, 3, 5, 2, 0, 3));
    const unsigned short *pCube = glb->m_pShadeCube;
    EXPECT_EQ(1, PreCalcShade());
    EXPECT_EQ(pCube, glb->m_pShadeCube);
    DeleteShade();
    EXPECT_EQ(nullptr, glb->m_pShadeCube);
    EXPECT_EQ(nullptr, glb->m_pIndexToScreen);
    EXPECT_EQ(1, PreCalcShade());
    EXPECT_EQ(nullptr, glb->m_pShadeCube) << "the mark stays, so nothing is built";
    DeleteShade();
}

TEST_F(CAlpha, FailedAllocations)
{
    HeapFailAt(1);
    EXPECT_EQ(0, PreCalcShade());
    EXPECT_EQ("Couldn't allocate memory for alpha channel table", LastError());
    HeapFailAt(1);
    EXPECT_EQ(0, Set16Bit(11, 3, 5, 2, 0, 3));
    HeapFailAt(0);
    EXPECT_EQ(nullptr, glb->m_pIndexToScreen);
}
} // namespace
