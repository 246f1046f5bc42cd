#include "platform/face.h"

namespace
{
class PlatformPaint : public CFaceTest
{
protected:
    LRESULT Handle(HWND hWnd, UINT ulMsg, WPARAM wParam, LPARAM lParam) override
    {
        if (ulMsg != WM_PAINT || !m_hSource)
            return DefWindowProcA(hWnd, ulMsg, wParam, lParam);
        PAINTSTRUCT paint;
        const HDC hDC = BeginPaint(hWnd, &paint);
        m_rcPaint = paint.rcPaint;
        BitBlt(hDC, 0, 0, 100, 100, m_hSource, 0, 0, SRCCOPY);
        EndPaint(hWnd, &paint);
        return 0;
    }

    /// 100 by 100 pixels of one colour.
    void MakeSource(BYTE ucRed)
    {
        BITMAPINFO info = {};
        info.bmiHeader = { sizeof(BITMAPINFOHEADER), 100, -100, 1, 24, BI_RGB, 0, 0, 0, 0, 0 };
        m_hSource = CreateCompatibleDC(nullptr);
        void *pBits = nullptr;
        m_hBitmap = CreateDIBSection(nullptr, &info, DIB_RGB_COLORS, &pBits, nullptr, 0);
        ASSERT_NE(nullptr, m_hBitmap);
        m_hOld = SelectObject(m_hSource, m_hBitmap);
        for (int i = 0; i < 100 * 100; ++i)
            ((BYTE *)pBits)[3 * i + 2] = ucRed;
    }

    ~PlatformPaint() override
    {
        if (m_hSource)
        {
            DeleteDC(m_hSource);
            EXPECT_TRUE(DeleteObject(m_hBitmap));
        }
    }

    HDC m_hSource = nullptr;
    HBITMAP m_hBitmap = nullptr;
    HGDIOBJ m_hOld = nullptr;
    RECT m_rcPaint = {};
};
} // namespace

TEST_F(PlatformPaint, DrawingShowsOnceWithTheNextPeek)
{
    const HWND hWnd = OpenShown(WS_POPUP, 0, 0, 200, 200);
    MakeSource(255);
    FaceTakePresented(hWnd, nullptr, 0, nullptr);
    FaceTakePresentCalls(hWnd);
    const HDC hDC = GetDC(hWnd);
    ASSERT_TRUE(BitBlt(hDC, 10, 10, 20, 30, m_hSource, 0, 0, SRCCOPY));
    ASSERT_TRUE(BitBlt(hDC, 12, 12, 5, 5, m_hSource, 0, 0, SRCCOPY));
    ASSERT_TRUE(BitBlt(hDC, 100, 100, 7, 9, m_hSource, 0, 0, SRCCOPY));
    EXPECT_EQ(0u, ShownPixel(hWnd, 10, 10)) << "shown too early";
    Run();
    RECT arc[4];
    long long llPixels;
    EXPECT_EQ(1, FaceTakePresentCalls(hWnd));
    EXPECT_EQ(2, FaceTakePresented(hWnd, arc, 4, &llPixels)) << "an area inside another needs no showing";
    EXPECT_EQ(20 * 30 + 7 * 9, llPixels);
    EXPECT_EQ(0xFF0000u, ShownPixel(hWnd, 10, 10));
    EXPECT_EQ(0xFF0000u, ShownPixel(hWnd, 29, 39));
    EXPECT_EQ(0u, ShownPixel(hWnd, 30, 39));
    EXPECT_EQ(0xFF0000u, ShownPixel(hWnd, 106, 108));
    Run();
    EXPECT_EQ(0, FaceTakePresentCalls(hWnd));
}

TEST_F(PlatformPaint, ManyAreasAreAllShown)
{
    const HWND hWnd = OpenShown(WS_POPUP, 0, 0, 200, 200);
    MakeSource(255);
    const HDC hDC = GetDC(hWnd);
    for (int i = 0; i < 100; ++i)
        BitBlt(hDC, i % 10 * 20, i / 10 * 20, 2, 2, m_hSource, 0, 0, SRCCOPY);
    Run();
    for (int i = 0; i < 100; ++i)
        ASSERT_EQ(0xFF0000u, ShownPixel(hWnd, i % 10 * 20 + 1, i / 10 * 20 + 1)) << i;
}

TEST_F(PlatformPaint, OnlyTheInvalidAreaIsPainted)
{
    const HWND hWnd = OpenShown(WS_POPUP, 0, 0, 200, 200);
    MakeSource(200);
    RECT rcA = { 10, 10, 20, 20 }, rcB = { 40, 15, 50, 30 };
    InvalidateRect(hWnd, &rcA, FALSE);
    InvalidateRect(hWnd, &rcB, FALSE);
    Run();
    EXPECT_EQ("PAINT", TakeLog()) << "two areas make one message, and nobody asked for erasing";
    EXPECT_EQ("10,10,50,30", Text(m_rcPaint));
    EXPECT_EQ(0xC80000u, ShownPixel(hWnd, 15, 15));
    EXPECT_EQ(0u, ShownPixel(hWnd, 5, 5)) << "painted outside the invalid area";
    EXPECT_EQ(0u, ShownPixel(hWnd, 60, 20));

    InvalidateRect(hWnd, nullptr, TRUE);
    ValidateRect(hWnd, nullptr);
    UpdateWindow(hWnd);
    Run();
    EXPECT_EQ("", TakeLog());
    const RECT rcAway = { 500, 500, 600, 600 };
    InvalidateRect(hWnd, &rcAway, TRUE);
    Run();
    EXPECT_EQ("", TakeLog());
}

TEST_F(PlatformPaint, ValidatingTakesStripsOff)
{
    const HWND hWnd = OpenShown(WS_POPUP, 0, 0, 200, 200);
    MakeSource(200);
    const RECT rcInvalid = { 10, 10, 50, 30 };
    const struct
    {
        const char *pszName;
        RECT rcValid, rcLeft;
    } cases[] = {
        { "left", { 0, 0, 20, 100 }, { 20, 10, 50, 30 } },
        { "right", { 40, 5, 60, 40 }, { 10, 10, 40, 30 } },
        { "top", { 10, 0, 50, 15 }, { 10, 15, 50, 30 } },
        { "bottom", { 0, 25, 99, 30 }, { 10, 10, 50, 25 } },
        { "middle", { 20, 0, 30, 99 }, { 10, 10, 50, 30 } },
        { "corner", { 0, 0, 20, 20 }, { 10, 10, 50, 30 } },
        { "beside left", { 0, 0, 10, 99 }, { 10, 10, 50, 30 } },
        { "beside right", { 50, 0, 60, 99 }, { 10, 10, 50, 30 } },
        { "above", { 0, 0, 99, 10 }, { 10, 10, 50, 30 } },
        { "below", { 0, 30, 99, 40 }, { 10, 10, 50, 30 } },
        { "all", { 10, 10, 50, 30 }, {} },
    };
    for (const auto &c : cases)
    {
        m_rcPaint = {};
        InvalidateRect(hWnd, &rcInvalid, FALSE);
        ValidateRect(hWnd, &c.rcValid);
        Run();
        EXPECT_EQ(0, memcmp(&c.rcLeft, &m_rcPaint, sizeof m_rcPaint))
            << c.pszName << ": " << m_rcPaint.left << ", " << m_rcPaint.top << ", " << m_rcPaint.right << ", "
            << m_rcPaint.bottom;
    }
}

TEST_F(PlatformPaint, SizeAndExposureBringThePictureBack)
{
    const HWND hWnd = OpenShown(WS_POPUP, 0, 0, 200, 200);
    MakeSource(90);
    FaceExpose(hWnd);
    Run();
    EXPECT_EQ("PAINT ERASEBKGND", TakeLog());
    EXPECT_EQ(0x5A0000u, ShownPixel(hWnd, 99, 99));
    FaceResize(hWnd, 150, 120);
    Run();
    int nWidth, nHeight;
    ASSERT_NE(nullptr, FaceShownPixels(hWnd, &nWidth, &nHeight));
    EXPECT_EQ(150, nWidth);
    EXPECT_EQ(120, nHeight);
    EXPECT_EQ(0x5A0000u, ShownPixel(hWnd, 99, 99));
    EXPECT_EQ(0u, ShownPixel(hWnd, 100, 100)) << "the background is black";
}

TEST_F(PlatformPaint, HiddenWindowTakesAndForgets)
{
    const HWND hWnd = Open(WS_POPUP, 0, 0, 200, 200);
    MakeSource(90);
    EXPECT_TRUE(BitBlt(GetDC(hWnd), 0, 0, 50, 50, m_hSource, 0, 0, SRCCOPY));
    Run();
    EXPECT_EQ(nullptr, FaceShownPixels(hWnd, nullptr, nullptr));
    EXPECT_EQ(0, FaceTakePresentCalls(hWnd));
}

TEST_F(PlatformPaint, ContextsBelongToTheirWindow)
{
    const HWND hWnd = OpenShown(WS_POPUP, 0, 0, 20, 20, 0);
    const HDC hA = GetDC(hWnd), hB = GetDC(hWnd);
    EXPECT_NE(hA, hB) << "a class without CS_OWNDC gives a new one each time";
    EXPECT_EQ(1, ReleaseDC(hWnd, hA));
    EXPECT_EQ(1, ReleaseDC(hWnd, hB));
    EXPECT_EQ(0, ReleaseDC(hWnd, hB));
    EXPECT_FALSE(DeleteDC(nullptr));
    DestroyWindow(hWnd);
    UnregisterClassA("FaceTest", nullptr);
    const HWND hOwn = OpenShown(WS_POPUP, 0, 0, 20, 20, CS_OWNDC);
    const HDC hOwnDC = GetDC(hOwn);
    EXPECT_EQ(1, ReleaseDC(hOwn, hOwnDC));
    EXPECT_EQ(hOwnDC, GetDC(hOwn));
}
