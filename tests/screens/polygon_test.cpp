#include "screensupport.h"

#include <array>

namespace
{
struct TQuad
{
    xlong lX[4], lY[4]; // half pixels, clockwise
    xlong lU[4], lV[4]; // texels in 16.16
};

// The spans of a quad by walking each side edge by edge, as slowly as it goes.
struct TModelSpans
{
    std::vector<std::array<xlong, 6>> rows; // left x, u, v, right x, u, v
    xlong lFirst, lLast;

    explicit TModelSpans(const TQuad &q) : rows(2048), lFirst(INT32_MAX), lLast(INT32_MIN)
    {
        xlong lX[4], lY[4];
        int nTop = 0, nBottom = 0;
        for (int i = 0; i < 4; ++i)
        {
            lX[i] = q.lX[i] >> 1;
            lY[i] = q.lY[i] >> 1;
            nTop = lY[i] < lY[nTop] ? i : nTop;
            nBottom = lY[i] > lY[nBottom] ? i : nBottom;
        }
        for (int nSide = 0; nSide < 2; ++nSide)
        {
            for (int i = nTop; i != nBottom;)
            {
                const int j = (i + (nSide ? 1 : 3)) % 4;
                const xlong n = lY[j] - lY[i];
                for (xlong k = 0; k <= n; ++k)
                {
                    const xlong lRow = lY[i] + k;
                    if (lRow < 0 || lRow > 2047)
                        continue;
                    rows[lRow][nSide * 3] = (lX[i] * 65536 + (n ? k * ((lX[j] - lX[i]) * 65536 / n) : 0)) >> 16;
                    rows[lRow][nSide * 3 + 1] = q.lU[i] + (n ? k * ((q.lU[j] - q.lU[i]) / n) : 0);
                    rows[lRow][nSide * 3 + 2] = q.lV[i] + (n ? k * ((q.lV[j] - q.lV[i]) / n) : 0);
                }
                i = j;
            }
        }
        lFirst = std::max<xlong>(lY[nTop], 0);
        lLast = std::min<xlong>(lY[nBottom], 2047);
    }
};

// A turned square; every texture position lies inside the texture.
TQuad RandomQuad(std::mt19937 &random, xlong lTexture)
{
    static const int s_nCorner[4][2] = { { -1, -1 }, { 1, -1 }, { 1, 1 }, { -1, 1 } };
    TQuad quad;
    const xlong lX = random() % 1400 - 60, lY = random() % 1060 - 50, lSize = 3 + random() % 180;
    for (int i = 0; i < 4; ++i)
    {
        quad.lX[i] = lX + s_nCorner[i][0] * lSize + (xlong)(random() % 60) - 30;
        quad.lY[i] = lY + s_nCorner[i][1] * lSize + (xlong)(random() % 60) - 30;
        quad.lU[i] = (xlong)(random() % (unsigned)(lTexture * 65536));
        quad.lV[i] = (xlong)(random() % (unsigned)(lTexture * 65536));
    }
    return quad;
}

class CPolygonTest : public CScreenTest
{
protected:
    static void Set(const TQuad &q)
    {
        Screen()->SetPolygon(q.lX[0], q.lY[0], 0, q.lX[1], q.lY[1], 0, q.lX[2], q.lY[2], 0, q.lX[3], q.lY[3], 0);
        Screen()->SetTextureCoords(q.lU[0], q.lV[0], q.lU[1], q.lV[1], q.lU[2], q.lV[2], q.lU[3], q.lV[3]);
    }

    void MakeTexture()
    {
        m_Texture.CreateRGB(32, 32, 24, 8, 8, 8, 0, 8, 16, 0);
        std::mt19937 random(9);
        for (int i = 0; i < 32 * 32 * 3; ++i)
            m_Texture.m_pData[i] = (unsigned char)random();
        Screen()->MakeScreenBitmap(&m_Texture, 2);
        Screen()->SetTexture(&m_Texture);
        Screen()->SetPolygonMode(0, 0);
    }

    // Draws the quad into the model the slow way.
    void DrawModel(std::vector<unsigned char> &frame, const TQuad &q, const CBitmap *pAlpha)
    {
        const xlong lBytes = Mode().lBytesPerPixel;
        const CRect &clip = Screen()->m_rcClip;
        const TModelSpans spans(q);
        for (xlong y = std::max(spans.lFirst, clip.m_lTop); y <= std::min(spans.lLast, clip.m_lBottom); ++y)
        {
            const auto &row = spans.rows[y];
            if (row[3] < 0 || row[0] * lBytes > Mode().lRowBytes)
                continue;
            const xlong lCount = row[3] - row[0] < 1 ? 2 : row[3] - row[0];
            const xlong lUStep = (row[4] - row[1]) / lCount, lVStep = (row[5] - row[2]) / lCount;
            for (xlong x = row[0]; x <= std::min(row[3], clip.m_lRight); ++x)
            {
                if (x < clip.m_lLeft)
                    continue;
                const xlong lU = (row[1] + (x - row[0]) * lUStep) >> 16, lV = (row[2] + (x - row[0]) * lVStep) >> 16;
                const unsigned char *pTexel = m_Texture.m_pData + lV * m_Texture.m_lPitch + lU * lBytes;
                unsigned char *pPixel = &frame[(size_t)y * Mode().lRowBytes + x * lBytes];
                const size_t ulAlpha = (size_t)y * Mode().lRowBytes + x; // the target's bytes, not the buffer's
                const unsigned uAlpha =
                    pAlpha && ulAlpha < (size_t)pAlpha->m_lPitch * pAlpha->m_lHeight ? pAlpha->m_pData[ulAlpha] : 255;
                unsigned short us;
                memcpy(&us, pTexel, lBytes == 1 ? 1 : 2);
                if (pAlpha && lBytes == 2)
                {
                    us = *(glb->m_ShadePointers[us] - glb->m_ShadeStepAll[31 - uAlpha / 8]);
                    memcpy(pPixel, &us, 2);
                }
                else
                    for (int i = 0; i < lBytes; ++i)
                        pPixel[i] = pAlpha && lBytes == 3 ? (unsigned char)std::max<int>(pTexel[i] + uAlpha - 256, 0)
                                                          : pTexel[i];
            }
        }
    }

    CBitmap m_Texture;
};
} // namespace

TEST_F(CPolygonTest, TexturedQuadsEqualAPlainModel)
{
    for (xlong lDepth : { 8, 16, 24 })
    {
        SetMode(640, 480, lDepth);
        MakeTexture();
        for (bool bAlpha : { false, true })
        {
            CDibScreen &s = *Screen();
            s.SetAlphaBufferMode(bAlpha);
            if (bAlpha)
                for (int i = 0; i < 640 * 480; ++i)
                    s.m_pAlpha->m_pData[i] = (unsigned char)(i * 7);
            std::mt19937 random(21);
            std::vector<unsigned char> wanted = FillFrame(4);
            for (int n = 0; n < 200; ++n)
            {
                s.SetClip(random() % 300, random() % 200, 300 + random() % 400, 200 + random() % 300);
                const TQuad quad = RandomQuad(random, 32);
                Set(quad);
                CRect rcBounds;
                CRect *pBounds = &rcBounds;
                s.DrawPolygonScreen(pBounds);
                DrawModel(wanted, quad, bAlpha && lDepth != 8 ? s.m_pAlpha : nullptr);
                ASSERT_EQ("", FirstDifference(wanted, Frame(), Mode()))
                    << lDepth << " bits, alpha " << bAlpha << ", quad " << n;
            }
        }
    }
}

TEST_F(CPolygonTest, ShadowsEqualAPlainModel)
{
    for (xlong lDepth : { 8, 16, 24 })
    {
        SetMode(640, 480, lDepth);
        CDibScreen &s = *Screen();
        std::mt19937 random(23);
        std::vector<unsigned char> wanted = FillFrame(6);
        TRGBA black(0, 0, 0);
        const unsigned char ucBlack = (unsigned char)s.m_Palette.FindMatch(&black);
        for (int n = 0; n < 150; ++n)
        {
            const TQuad quad = RandomQuad(random, 1);
            Set(quad);
            CRect rc;
            CRect *pArea = &rc;
            s.DrawShadowPolygonScreen(pArea);
            const TModelSpans spans(quad);
            for (xlong y = spans.lFirst; y <= std::min<xlong>(spans.lLast, 479); ++y)
            {
                const xlong lLeft = spans.rows[y][0], lRight = spans.rows[y][3];
                if (lRight < 0 || lLeft > 640 || lRight - lLeft < 1)
                    continue;
                for (xlong x = std::max<xlong>(lLeft, 0); x <= std::min<xlong>(lRight, 639); ++x)
                {
                    unsigned char *pPixel = &wanted[(size_t)y * Mode().lRowBytes + x * Mode().lBytesPerPixel];
                    if (lDepth == 8)
                    {
                        if (x < std::min<xlong>(lRight, 639) && (x - std::max<xlong>(lLeft, 0)) % 2 == (y & 1))
                            *pPixel = ucBlack;
                    }
                    else if (lDepth == 16)
                    {
                        unsigned short us;
                        memcpy(&us, pPixel, 2);
                        us = glb->m_pIndexToScreen[*(glb->m_ShadePointers[us] - glb->m_ShadeStepAll[7])];
                        memcpy(pPixel, &us, 2);
                    }
                    else
                        for (int i = 0; i < 3; ++i)
                            pPixel[i] = (unsigned char)std::max(pPixel[i] - 56, 0);
                }
            }
            ASSERT_EQ("", FirstDifference(wanted, Frame(), Mode())) << lDepth << " bits, quad " << n;
        }
    }
}

// A texture of one colour: inside it shows as it is, at the edges between it
// and what was there, and nothing changes outside the reported area.
TEST_F(CPolygonTest, FilteredQuadsBlendTheirEdges)
{
    for (xlong lDepth : { 16, 24 })
    {
        SetMode(640, 480, lDepth);
        CDibScreen &s = *Screen();
        MakeTexture();
        memset(m_Texture.m_pData, lDepth == 16 ? 0 : 200, (size_t)m_Texture.m_lPitch * 32);
        std::mt19937 random(25);
        for (int n = 0; n < 60; ++n)
        {
            memset(s.LockScreenBuffer(), lDepth == 16 ? 0 : 40, (size_t)Mode().lRowBytes * 480);
            if (lDepth == 16)
                for (int i = 0; i < 640 * 480; ++i)
                    ((unsigned short *)s.LockScreenBuffer())[i] = 0x7fff;
            const std::vector<unsigned char> before = Frame();
            s.SetClip(random() % 100, random() % 100, 400 + random() % 240, 300 + random() % 180);
            s.SetPolygonMode(0, 1);
            Set(RandomQuad(random, 32));
            s.m_lClearCount[0] = 0;
            CRect rcBounds;
            CRect *pBounds = &rcBounds;
            s.DrawPolygonScreen(pBounds);
            CRect rcQueued = s.m_lClearCount[0] ? s.m_ClearAreas[0][0] : CRect();
            const std::vector<unsigned char> after = Frame();
            for (xlong y = 0; y < 480; ++y)
            {
                for (xlong x = 0; x < 640; ++x)
                {
                    const size_t ulAt = (size_t)y * Mode().lRowBytes + x * Mode().lBytesPerPixel;
                    if (!memcmp(&before[ulAt], &after[ulAt], Mode().lBytesPerPixel))
                        continue;
                    ASSERT_TRUE(s.m_rcClip.IsPntInRect(x, y)) << n << ": " << x << ", " << y;
                    ASSERT_TRUE(rcQueued.IsPntInRect(x, y)) << n << ": " << x << ", " << y;
                    if (lDepth == 24)
                        ASSERT_TRUE(after[ulAt] >= 40 && after[ulAt] <= 200);
                }
            }
        }
    }
}

TEST_F(CPolygonTest, AFilteredQuadCoversItsInside)
{
    SetMode(640, 480, 24);
    CDibScreen &s = *Screen();
    MakeTexture();
    memset(m_Texture.m_pData, 200, (size_t)m_Texture.m_lPitch * 32);
    memset(s.LockScreenBuffer(), 40, 640 * 480 * 3);
    s.SetPolygonMode(0, 1);
    Set({ { 200, 300, 300, 200 }, { 100, 100, 200, 200 }, { 0, 65536, 65536, 0 }, { 0, 0, 65536, 65536 } });
    CRect *pNone = nullptr;
    ASSERT_EQ(1, s.DrawPolygonScreen(pNone));
    const std::vector<unsigned char> frame = Frame();
    for (xlong y = 51; y < 99; ++y)
        for (xlong x = 101; x < 149; ++x)
            ASSERT_EQ(200, frame[(y * 640 + x) * 3]) << x << ", " << y;
    EXPECT_EQ(40, frame[(49 * 640 + 120) * 3]);
    EXPECT_EQ(40, frame[(60 * 640 + 98) * 3]);
}

// By hand: every half row has a shade of its own. The clip cuts the quad at half
// row 39 of it, and drawing begins with the next even one.
TEST_F(CPolygonTest, AFilteredQuadThatIsCutBeginsWithAnEvenRow)
{
    SetMode(640, 480, 24);
    CDibScreen &s = *Screen();
    CBitmap ramp;
    ASSERT_EQ(1, ramp.CreateRGB(8, 128, 24, 8, 8, 8, 0, 8, 16, 0));
    for (int y = 0; y < 128; ++y)
        memset(ramp.m_pData + y * ramp.m_lPitch, 2 * y, (size_t)ramp.m_lPitch);
    s.SetTexture(&ramp);
    s.SetPolygonMode(0, 1);
    s.SetClip(0, 70, 639, 479);
    Set({ { 200, 300, 300, 200 }, { 101, 101, 201, 201 }, { 0, 65536, 65536, 0 }, { 0, 0, 100 << 16, 100 << 16 } });
    CRect *pNone = nullptr;
    ASSERT_EQ(1, s.DrawPolygonScreen(pNone));
    for (int y = 70; y < 90; ++y)
        EXPECT_EQ(81 + 4 * (y - 70), Frame()[(size_t)(y * 640 + 120) * 3]) << y;
}

TEST_F(CPolygonTest, OddPolygonsDrawNothingOrLittle)
{
    SetMode(640, 480, 16);
    CDibScreen &s = *Screen();
    MakeTexture();
    const std::vector<unsigned char> before = FillFrame(8);
    CRect *pNone = nullptr;
    const TQuad reversed = { { 200, 200, 300, 300 }, { 100, 200, 200, 100 }, {}, {} };
    Set(reversed);
    EXPECT_EQ(1, s.DrawPolygonScreen(pNone)) << "wound the other way";
    EXPECT_EQ("", FirstDifference(before, Frame(), Mode()));
    for (const TQuad &quad : { TQuad{ { 0, 9, 9, 0 }, { -20, -20, -5, -5 }, {}, {} },
                               TQuad{ { 0, 9, 9, 0 }, { 4097, 4097, 5000, 5000 }, {}, {} } })
    {
        Set(quad);
        EXPECT_EQ(0, s.DrawPolygonScreen(pNone)) << "outside the rows that there are";
    }
    // Without height the first corner's pixel, without width a column: in the first row and column too.
    const struct
    {
        TQuad quad;
        xlong lX, lY, lRows;
    } flat[] = {
        { { { 200, 220, 220, 200 }, { 0, 0, 0, 0 }, { 9 << 16 }, { 5 << 16 } }, 100, 0, 1 },
        { { { 200, 220, 220, 200 }, { 14, 14, 14, 14 }, { 9 << 16 }, { 5 << 16 } }, 100, 7, 1 },
        { { { 0, 0, 0, 0 }, { 10, 10, 30, 30 }, {}, {} }, 0, 5, 11 },
    };
    for (const auto &row : flat)
    {
        std::vector<unsigned char> wanted = FillFrame(8);
        Set(row.quad);
        EXPECT_EQ(1, s.DrawPolygonScreen(pNone));
        std::vector<unsigned char> now = Frame();
        for (xlong y = row.lY; y < row.lY + row.lRows; ++y)
        {
            const size_t ulPixel = (size_t)y * Mode().lRowBytes + row.lX * 2;
            EXPECT_NE(0, memcmp(&wanted[ulPixel], &now[ulPixel], 2)) << row.lX << ", " << y;
            memcpy(&wanted[ulPixel], &now[ulPixel], 2);
        }
        EXPECT_EQ("", FirstDifference(wanted, now, Mode())) << row.lX << ", " << row.lY;
    }
    // Corners at the ends of the numbers, and texture positions far outside.
    for (xlong lFilter : { 0, 1 })
    {
        s.SetPolygonMode(0, lFilter);
        Set({ { -2000000000, 2000000000, 2000000000, -2000000000 },
              { -1000000000, -1000000000, 1000000000, 1000000000 },
              { -2000000000, 2000000000, 0, 5 },
              { 2000000000, -5, 77, -2000000000 } });
        s.DrawPolygonScreen(pNone);
        Set({ { 0, 1200, 1200, 0 }, { 0, 0, 900, 900 }, { 0, 64 << 16, 64 << 16, 0 }, { 0, 0, 90 << 16, 90 << 16 } });
        EXPECT_EQ(1, s.DrawPolygonScreen(pNone));
    }
    s.SetTexture(nullptr);
    EXPECT_EQ(0, s.DrawPolygonScreen(pNone));
}

TEST_F(CPolygonTest, EachDrawHalvesTheStoredPolygon)
{
    SetMode(640, 480, 8);
    CDibScreen &s = *Screen();
    MakeTexture();
    Set({ { 400, 480, 480, 400 }, { 400, 400, 480, 480 }, {}, {} });
    CRect rc;
    CRect *pBounds = &rc;
    EXPECT_EQ(1, s.DrawPolygonScreen(pBounds));
    EXPECT_EQ(200, rc.m_lLeft);
    EXPECT_EQ(1, s.DrawPolygonScreen(pBounds));
    EXPECT_EQ(100, rc.m_lLeft);
    EXPECT_EQ(120, rc.m_lBottom);

    // The persistent picture and a bitmap take the same polygon.
    Set({ { 40, 48, 48, 40 }, { 40, 40, 48, 48 }, {}, {} });
    s.m_lPersistentCount[0] = 0;
    EXPECT_EQ(1, s.DrawPolygonPersistent(pBounds));
    EXPECT_EQ(1, s.m_lPersistentCount[0]);
    EXPECT_EQ(26, s.m_PersistentAreas[0][0].m_lRight) << "two more than the extent";
    CBitmap bitmap;
    bitmap.CreateIndex(30, 30, 8, nullptr, 0);
    Set({ { 40, 48, 48, 40 }, { 40, 40, 48, 48 }, {}, {} });
    bitmap.m_pData[22 * bitmap.m_lPitch + 22] = 255;
    EXPECT_EQ(1, s.DrawPolygonBitmap(&bitmap, pBounds));
    EXPECT_EQ(m_Texture.m_pData[0], bitmap.m_pData[22 * bitmap.m_lPitch + 22]);
    EXPECT_EQ(0, s.DrawShadowPolygonBitmap(&bitmap, pBounds)) << "it has not the screen's rows";
}
