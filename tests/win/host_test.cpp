// The kit that hosts start with.
#include "tarvix/host.h"

#include "support.h"
#include "tarvix/button.h"
#include "tarvix/window.h"

#ifndef _WIN32
#include "platform/testing/testface.h"

namespace
{
class CTarvixHostTest : public testing::Test
{
protected:
    CTarvixHostTest()
    {
        const TFaceDesktop desktop = { 1600, 1200, 32 };
        EXPECT_TRUE(FaceStart(&desktop));
    }
    ~CTarvixHostTest() override { FaceStop(); }

    /// Fills the picture. @return the colours that the window shows then
    static std::set<uint32_t> ShownColours(const CTarvixHost &host, TRGBA Color)
    {
        CScreenBase &screen = *host.Screen();
        screen.FillRect(0, 0, screen.GetActiveMode()->lWidth, screen.GetActiveMode()->lHeight, Color);
        screen.AddClearArea(0, 0, screen.GetActiveMode()->lWidth - 1, screen.GetActiveMode()->lHeight - 1);
        host.Frame();
        int nWidth = 0, nHeight = 0;
        const uint32_t *const pPixels = FaceShownPixels(sglb->m_hWnd, &nWidth, &nHeight);
        const SVmode &mode = *host.Screen()->GetActiveMode();
        EXPECT_EQ(mode.lWidth, nWidth);
        EXPECT_EQ(mode.lHeight, nHeight);
        std::set<uint32_t> colours;
        for (int n = 0; pPixels && n < nWidth * nHeight; ++n)
            colours.insert(pPixels[n] & 0xFFFFFF);
        return colours;
    }
};
} // namespace

// What the window shows, not what the buffer holds: at 8 bits it was black.
TEST_F(CTarvixHostTest, EveryDepthAndSizeIsSeen)
{
    const struct
    {
        xlong lWidth, lHeight, lDepth;
    } cases[] = { { 640, 480, 8 }, { 640, 480, 16 }, { 640, 480, 24 },   { 333, 217, 8 },
                  { 1, 1, 24 },    { 97, 61, 16 },   { 1280, 1024, 24 }, { 333, 217, 8 } };
    CTarvixHost host("Host");
    for (const auto &c : cases)
    {
        SCOPED_TRACE(std::to_string(c.lWidth) + "x" + std::to_string(c.lHeight) + ", " + std::to_string(c.lDepth));
        ASSERT_TRUE(host.SetMode(c.lWidth, c.lHeight, c.lDepth)) << host.Error();
        EXPECT_EQ(XGUIOPT_ALL, glb->m_pWinCtrl->GetOptions());
        // The greys that a palette of them has, or the top bits of 16.
        const uint32_t uWanted = c.lDepth == 16 ? 0xC8C8C8 & 0xF8F8F8 : 0xC8C8C8;
        const std::set<uint32_t> shown = ShownColours(host, TRGBA(200, 200, 200));
        ASSERT_EQ(1u, shown.size()) << testing::PrintToString(shown);
        for (int nByte = 0; nByte < 3; ++nByte)
            EXPECT_NEAR((int)(uWanted >> 8 * nByte & 255), (int)(*shown.begin() >> 8 * nByte & 255), 8);
    }
    CPalette palette;
    const TRGBA Red(255, 0, 0);
    for (int n = 0; n < 256; ++n)
        palette.SetIndex(&Red, n);
    host.SetPalette(palette);
    EXPECT_EQ((std::set<uint32_t>{ 0xFF0000 }), ShownColours(host, Red));
    EXPECT_FALSE(host.SetMode(1700, 100, 24)) << "the desktop has no room";
    EXPECT_FALSE(host.SetMode(0, 100, 24));
    EXPECT_FALSE(host.SetMode(100, 40000, 24));
    EXPECT_FALSE(host.SetMode(640, 480, 15));
    EXPECT_STREQ("There is no such mode.", host.Error());
}

TEST_F(CTarvixHostTest, AFrameTakesItsTime)
{
    CTarvixHost host("Host");
    ASSERT_TRUE(host.SetMode(640, 480, 24));
    host.Frame();
    const DWORD ulStart = timeGetTime();
    for (int n = 0; n < 10; ++n)
        host.Frame();
    EXPECT_EQ(160u, timeGetTime() - ulStart);
}
#endif
