// JPEG pictures beside libjpeg-turbo with the same transform and upsampling:
// its wide code as it is, and its plain code with JSIMD_FORCENONE=1.

#include "paired.h"

#include "tarvix/bitmap.h"
#include "tarvix/globals.h"
#include "tarvix/jpeg.h"

#include <stddef.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

#include <jpeglib.h>

#include <cmath>
#include <vector>

namespace
{
// Light and shade in all sizes, edges of shapes, and the noise of a sensor:
// about as many bits as a photograph takes.
class CPicture
{
public:
    CPicture(int nWidth, int nHeight) : m_nWidth(nWidth), m_nHeight(nHeight)
    {
        m_Pixels.resize((size_t)nWidth * (size_t)nHeight * 3);
        const double dScale = 1000.0 / nWidth;
        size_t i = 0;
        for (int y = 0; y < nHeight; ++y)
            for (int x = 0; x < nWidth; ++x, i += 3)
            {
                const double dX = x * dScale, dY = y * dScale;
                // The far half is smooth, the near one full of detail.
                const double dHorizon = 260 + 120 * Fractal(dX / 300, 7, 5);
                double dLight = 190 - dY / 6 + 30 * Fractal(dX / 200, dY / 120, 4),
                       dWarm = 20 * Fractal(dX / 400, dY / 400, 3);
                if (dY > dHorizon)
                {
                    dLight = 60 + 130 * Fractal(dX / 90, dY / 50, 8) + 40 * Fractal(x / 6.0, y / 5.0, 3);
                    dWarm = 40 * Fractal(dX / 120 + 50, dY / 120, 5);
                }
                const double dRound = std::hypot(std::fmod(dX, 220) - 110, std::fmod(dY, 260) - 130);
                if (dY > dHorizon + 60 && dRound < 40)
                    dLight += 70 - dRound;
                const double dNoise = (Random((unsigned)x * 7919u + (unsigned)y * 104729u) - 0.5) * 12;
                Put(i, dLight + dWarm + dNoise);
                Put(i + 1, dLight + dNoise);
                Put(i + 2, dLight - dWarm * 1.4 + dNoise);
            }
    }

    std::vector<unsigned char> Encode(int nH, int nV, bool bGrey, int nQuality) const
    {
        jpeg_compress_struct info;
        jpeg_error_mgr error;
        info.err = jpeg_std_error(&error);
        jpeg_create_compress(&info);
        unsigned char *pBytes = nullptr;
        unsigned long ulSize = 0;
        jpeg_mem_dest(&info, &pBytes, &ulSize);
        info.image_width = (JDIMENSION)m_nWidth;
        info.image_height = (JDIMENSION)m_nHeight;
        info.input_components = 3;
        info.in_color_space = JCS_RGB;
        jpeg_set_defaults(&info);
        if (bGrey)
            jpeg_set_colorspace(&info, JCS_GRAYSCALE);
        jpeg_set_quality(&info, nQuality, TRUE);
        info.comp_info[0].h_samp_factor = nH;
        info.comp_info[0].v_samp_factor = nV;
        jpeg_start_compress(&info, TRUE);
        while (info.next_scanline < info.image_height)
        {
            JSAMPROW pRow = (JSAMPROW)&m_Pixels[(size_t)info.next_scanline * (size_t)m_nWidth * 3];
            jpeg_write_scanlines(&info, &pRow, 1);
        }
        jpeg_finish_compress(&info);
        std::vector<unsigned char> bytes(pBytes, pBytes + ulSize);
        jpeg_destroy_compress(&info);
        free(pBytes);
        return bytes;
    }

private:
    static double Random(unsigned u)
    {
        u ^= u >> 16;
        u *= 0x7feb352d;
        u ^= u >> 15;
        u *= 0x846ca68b;
        return (u ^ u >> 16) / 4294967296.0;
    }
    static double Smooth(double dX, double dY)
    {
        const double dLeft = std::floor(dX), dTop = std::floor(dY);
        const auto at = [&](int nX, int nY)
        { return Random((unsigned)((int)dLeft + nX) * 31u + (unsigned)((int)dTop + nY) * 65537u + 77); };
        double dU = dX - dLeft, dV = dY - dTop;
        dU = dU * dU * (3 - 2 * dU);
        dV = dV * dV * (3 - 2 * dV);
        return (at(0, 0) * (1 - dU) + at(1, 0) * dU) * (1 - dV) + (at(0, 1) * (1 - dU) + at(1, 1) * dU) * dV;
    }
    static double Fractal(double dX, double dY, int nOctaves)
    {
        double dSum = 0, dWeight = 0.5;
        for (; nOctaves; --nOctaves, dX *= 2.03, dY *= 2.03, dWeight /= 2)
            dSum += Smooth(dX, dY) * dWeight;
        return dSum;
    }
    void Put(size_t i, double d) { m_Pixels[i] = (unsigned char)std::clamp(d, 0.0, 255.0); }

    int m_nWidth, m_nHeight;
    std::vector<unsigned char> m_Pixels;
};

// From the bytes of the file in memory into a bitmap that is there already.
// (Ours reads the file, and makes and clears a bitmap each time.)
void DecodeTheirs(const std::vector<unsigned char> &file, CBitmap &bitmap)
{
    jpeg_decompress_struct info;
    jpeg_error_mgr error;
    info.err = jpeg_std_error(&error);
    jpeg_create_decompress(&info);
    jpeg_mem_src(&info, file.data(), (unsigned long)file.size());
    jpeg_read_header(&info, TRUE);
    info.dct_method = JDCT_ISLOW;
    info.do_fancy_upsampling = FALSE;
    info.out_color_space = JCS_EXT_BGR;
    jpeg_start_decompress(&info);
    while (info.output_scanline < info.output_height)
    {
        JSAMPROW apRows[4];
        for (size_t i = 0; i < 4; ++i)
            apRows[i] = bitmap.m_pData +
                        std::min<size_t>(info.output_scanline + i, info.output_height - 1) * (size_t)bitmap.m_lPitch;
        jpeg_read_scanlines(&info, apRows, 4);
    }
    jpeg_finish_decompress(&info);
    jpeg_destroy_decompress(&info);
}

const struct
{
    const char *pszName;
    int nH, nV;
    bool bGrey;
} s_Samplings[] = {
    { "4:4:4", 1, 1, false }, { "4:2:2", 2, 1, false }, { "4:2:0", 2, 2, false }, { "grey", 1, 1, true }
};

const struct
{
    const char *pszName;
    int nWidth, nHeight;
} s_Sizes[] = { { "0.03 MP", 200, 150 }, { "0.3 MP", 640, 480 }, { "2 MP", 1600, 1200 }, { "12 MP", 4000, 3000 } };

int Compare(bool bPlain)
{
    paired::CTable table(bPlain ? "JPEG, the peer's plain code" : "JPEG, the peer's wide code");
    const std::string strPath = "/tmp/tarvix-bench-" + std::to_string(getpid()) + ".jpg";
    CJPGPic type;
    for (const auto &size : s_Sizes)
    {
        const CPicture picture(size.nWidth, size.nHeight);
        for (const auto &sampling : s_Samplings)
        {
            const std::vector<unsigned char> file = picture.Encode(sampling.nH, sampling.nV, sampling.bGrey, 88);
            FILE *pFile = fopen(strPath.c_str(), "wb");
            if (!pFile || fwrite(file.data(), 1, file.size(), pFile) != file.size() || fclose(pFile))
                return 1;
            CFile open;
            if (!open.Open(strPath.c_str(), FILE_READ))
                return 1;
            CBitmap bitmap;
            const auto ours = [&]
            {
                open.Seek(0, FILE_SEEK_START);
                if (!type.Load(&open, &bitmap, nullptr))
                    abort();
            };
            ours();
            CBitmap peer;
            if (!peer.CreateRGB(size.nWidth, size.nHeight, 24, 8, 8, 8, 0, 8, 16, 0))
                return 1;
            const auto theirs = [&] { DecodeTheirs(file, peer); };
            theirs();
            char szName[80];
            snprintf(szName, sizeof szName, "%s, %.1f bits a pixel", sampling.pszName,
                     (double)file.size() * 8 / size.nWidth / size.nHeight);
            if (memcmp(peer.m_pData, bitmap.m_pData, (size_t)bitmap.m_lPitch * (size_t)size.nHeight))
                table.Differs(szName, size.pszName, "libjpeg-turbo");
            else
                table.Row(szName, size.pszName, paired::Measure(ours, theirs), bPlain ? "turbo, plain" : "turbo, wide",
                          bPlain ? 1 : 0.8);
        }
    }
    remove(strPath.c_str());
    return table.Missed() != 0;
}
} // namespace

// The peer looks at the environment once, so each of its ways has a run.
int main(int argc, char **argv)
{
    glb = new SGlobals;
    sglb = new SSysGlobals;
    if (!xCreateGlobals())
        return 1;
    if (argc > 1 && !strcmp(argv[1], "--plain"))
        return Compare(true);
    const int nMissed = Compare(false);
    fflush(stdout);
    setenv("JSIMD_FORCENONE", "1", 1);
    const int nPlain = system(("\"" + std::string(argv[0]) + "\" --plain").c_str());
    return nMissed || nPlain;
}
