#include "platform/face.h"

#include <cstring>

namespace
{
// A desktop of 256 colours.
class PlatformPalette : public CFaceTest
{
protected:
    PlatformPalette()
    {
        m_Desktop.nDepth = 8;
        FaceSetDesktop(&m_Desktop);
    }

    HPALETTE Make(UINT ulCount, BYTE ucRed)
    {
        struct
        {
            WORD usVersion, usCount;
            PALETTEENTRY aEntries[256];
        } log = { 0x300, (WORD)ulCount, {} };
        for (UINT i = 0; i < ulCount; ++i)
            log.aEntries[i] = { ucRed, (BYTE)i, (BYTE)(255 - i), 0 };
        return CreatePalette((const LOGPALETTE *)&log);
    }

    std::vector<PALETTEENTRY> System(HDC hDC)
    {
        std::vector<PALETTEENTRY> entries(256);
        EXPECT_EQ(256u, GetSystemPaletteEntries(hDC, 0, 256, entries.data()));
        return entries;
    }

    LRESULT Handle(HWND hWnd, UINT ulMsg, WPARAM wParam, LPARAM lParam) override
    {
        if (ulMsg == WM_PALETTECHANGED)
            m_hChangedBy = (HWND)wParam;
        return DefWindowProcA(hWnd, ulMsg, wParam, lParam);
    }

    HWND m_hChangedBy = nullptr;
};
} // namespace

TEST_F(PlatformPalette, DeviceTellsOfIt)
{
    const HWND hWnd = OpenShown(WS_POPUP, 0, 0, 10, 10);
    const HDC hDC = GetDC(hWnd);
    EXPECT_EQ(8, GetDeviceCaps(hDC, BITSPIXEL));
    EXPECT_TRUE(GetDeviceCaps(hDC, RASTERCAPS) & RC_PALETTE);
    EXPECT_EQ(20, GetDeviceCaps(hDC, NUMCOLORS));
    EXPECT_EQ(256, GetDeviceCaps(hDC, SIZEPALETTE));
    m_Desktop.nDepth = 32;
    FaceSetDesktop(&m_Desktop);
    EXPECT_EQ(32, GetDeviceCaps(hDC, BITSPIXEL));
    EXPECT_FALSE(GetDeviceCaps(hDC, RASTERCAPS) & RC_PALETTE);
    EXPECT_EQ(-1, GetDeviceCaps(hDC, NUMCOLORS));
    EXPECT_EQ(0, GetDeviceCaps(hDC, SIZEPALETTE));
    EXPECT_EQ(0u, GetSystemPaletteEntries(hDC, 0, 256, nullptr));
    EXPECT_EQ((UINT)SYSPAL_ERROR, SetSystemPaletteUse(hDC, SYSPAL_STATIC));
    EXPECT_EQ(0u, RealizePalette(hDC));
}

TEST_F(PlatformPalette, ActiveWindowGetsItsColoursAndAllAreTold)
{
    const HWND hWnd = OpenShown(WS_POPUP, 0, 0, 10, 10);
    const HDC hDC = GetDC(hWnd);
    const std::vector<PALETTEENTRY> before = System(hDC);
    const HPALETTE hPalette = Make(236, 77);
    const HPALETTE hOld = SelectPalette(hDC, hPalette, FALSE);
    EXPECT_EQ(GetStockObject(DEFAULT_PALETTE), hOld);
    EXPECT_EQ(236u, RealizePalette(hDC));
    EXPECT_EQ(hWnd, m_hChangedBy);
    const std::vector<PALETTEENTRY> after = System(hDC);
    for (int i = 0; i < 256; ++i)
        if (i < 10 || i >= 246)
            EXPECT_EQ(0, memcmp(&before[i], &after[i], 3)) << "the desktop's own colour " << i;
        else
            EXPECT_EQ(i - 10, after[i].peGreen) << i;
    m_hChangedBy = nullptr;
    EXPECT_EQ(0u, RealizePalette(hDC));
    EXPECT_EQ(nullptr, m_hChangedBy) << "nothing changed the second time";
    EXPECT_FALSE(DeleteObject(hPalette)) << "still selected";
    SelectPalette(hDC, hOld, FALSE);
    EXPECT_TRUE(DeleteObject(hPalette));
}

TEST_F(PlatformPalette, WithoutStaticColoursOnlyBlackAndWhiteStay)
{
    const HWND hWnd = OpenShown(WS_POPUP, 0, 0, 10, 10);
    const HDC hDC = GetDC(hWnd);
    EXPECT_EQ((UINT)SYSPAL_STATIC, SetSystemPaletteUse(hDC, SYSPAL_NOSTATIC));
    const HPALETTE hPalette = Make(254, 3);
    const HPALETTE hOld = SelectPalette(hDC, hPalette, FALSE);
    EXPECT_EQ(254u, RealizePalette(hDC));
    const std::vector<PALETTEENTRY> entries = System(hDC);
    EXPECT_EQ(0, entries[0].peBlue);
    EXPECT_EQ(255, entries[255].peRed);
    for (int i = 1; i < 255; ++i)
        EXPECT_EQ(3, entries[i].peRed) << i;
    EXPECT_EQ((UINT)SYSPAL_NOSTATIC, SetSystemPaletteUse(hDC, SYSPAL_STATIC));
    RealizePalette(hDC);
    EXPECT_EQ(192, System(hDC)[7].peRed) << "the desktop has its colours back";
    SelectPalette(hDC, hOld, FALSE);
    DeleteObject(hPalette);
}

TEST_F(PlatformPalette, BackgroundTakesWhatIsLeft)
{
    const HWND hWnd = OpenShown(WS_POPUP, 0, 0, 10, 10);
    const HDC hDC = GetDC(hWnd);
    const HPALETTE hFront = Make(200, 100), hBack = Make(200, 50);
    const HPALETTE hOld = SelectPalette(hDC, hFront, FALSE);
    RealizePalette(hDC);
    SelectPalette(hDC, hBack, TRUE);
    RealizePalette(hDC);
    const auto CountOf = [&](int nRed)
    {
        int nCount = 0;
        for (const PALETTEENTRY &entry : System(hDC))
            nCount += entry.peRed == nRed;
        return nCount;
    };
    EXPECT_EQ(200, CountOf(100));
    EXPECT_EQ(36, CountOf(50));
    SelectPalette(hDC, hBack, FALSE);
    RealizePalette(hDC);
    EXPECT_EQ(200, CountOf(50)) << "in front it takes what the other had";
    SelectPalette(hDC, hOld, FALSE);
    DeleteObject(hFront);
    DeleteObject(hBack);
}

TEST_F(PlatformPalette, EntriesThatChangeHaveSlotsOfTheirOwn)
{
    const HDC hDC = GetDC(OpenShown(WS_POPUP, 0, 0, 10, 10));
    for (const int nFlags : { 0, (int)PC_NOCOLLAPSE, (int)PC_RESERVED })
    {
        const HPALETTE hPalette = Make(2, 0);
        const PALETTEENTRY same[] = { { 1, 2, 3, (BYTE)nFlags }, { 1, 2, 3, (BYTE)nFlags } };
        SetPaletteEntries(hPalette, 0, 2, same);
        const HPALETTE hOld = SelectPalette(hDC, hPalette, FALSE);
        RealizePalette(hDC);
        int nSlots = 0;
        for (const PALETTEENTRY &entry : System(hDC))
            nSlots += entry.peRed == 1 && entry.peGreen == 2 && entry.peBlue == 3;
        EXPECT_EQ(nFlags ? 2 : 1, nSlots) << "flags " << nFlags;
        SelectPalette(hDC, hOld, FALSE);
        DeleteObject(hPalette);
    }
}

TEST_F(PlatformPalette, EntriesCanBeChangedAndAdded)
{
    const HPALETTE hPalette = Make(4, 9);
    PALETTEENTRY aEntries[8];
    EXPECT_TRUE(ResizePalette(hPalette, 6));
    EXPECT_EQ(6u, GetPaletteEntries(hPalette, 0, 8, aEntries));
    EXPECT_EQ(9, aEntries[3].peRed);
    EXPECT_EQ(0, aEntries[5].peRed);
    aEntries[0] = { 1, 2, 3, 0 };
    EXPECT_EQ(1u, SetPaletteEntries(hPalette, 5, 8, aEntries)) << "cut at the end";
    EXPECT_EQ(1u, GetPaletteEntries(hPalette, 5, 1, aEntries + 1));
    EXPECT_EQ(3, aEntries[1].peBlue);
    EXPECT_EQ(0u, SetPaletteEntries(hPalette, 6, 1, aEntries));
    EXPECT_FALSE(ResizePalette(hPalette, 0));
    EXPECT_FALSE(ResizePalette(hPalette, 5000));
    EXPECT_TRUE(DeleteObject(hPalette));
    const LOGPALETTE bad = { 0x200, 1, { {} } };
    EXPECT_EQ(nullptr, CreatePalette(&bad));
}

TEST_F(PlatformPalette, PicturesShowTheNearestColours)
{
    const HWND hWnd = OpenShown(WS_POPUP, 0, 0, 10, 10);
    BITMAPINFO info = {};
    info.bmiHeader = { sizeof(BITMAPINFOHEADER), 1, -1, 1, 24, BI_RGB, 0, 0, 0, 0, 0 };
    void *pBits;
    const HDC hMemory = CreateCompatibleDC(nullptr);
    const HBITMAP hBitmap = CreateDIBSection(nullptr, &info, DIB_RGB_COLORS, &pBits, nullptr, 0);
    SelectObject(hMemory, hBitmap);
    const BYTE aucAlmostRed[] = { 8, 3, 250 };
    memcpy(pBits, aucAlmostRed, 3);
    BitBlt(GetDC(hWnd), 0, 0, 1, 1, hMemory, 0, 0, SRCCOPY);
    Run();
    EXPECT_EQ(0xFF0000u, ShownPixel(hWnd, 0, 0));
    EXPECT_TRUE(UpdateColors(GetDC(hWnd)));
    DeleteDC(hMemory);
    DeleteObject(hBitmap);
}
