// make_seeds FOLDER NAME writes the seeds of the fuzzer fuzz_NAME: files of our
// own writers, and close relatives of them where we only read.
#include "support.h"

#include "tarvix/bitmap.h"
#include "tarvix/pictype.h"
#include "tarvix/system.h"

#include <string.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>

namespace
{
void Write(const std::filesystem::path &path, const std::string &strBytes)
{
    std::ofstream(path, std::ios::binary) << strBytes;
}

std::string Read(const std::filesystem::path &path)
{
    std::ifstream file(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(file), {});
}

void MakeBmpSeeds(const std::filesystem::path &folder)
{
    CBMPPic type;
    std::mt19937 random(1);
    for (xlong lDepth : { 8, 16, 24, 32 })
    {
        CBitmap bitmap;
        CPalette palette;
        if (lDepth == 8)
            bitmap.CreateIndex(5, 4, 8, &palette, 0);
        else
            bitmap.CreateRGB(5, 4, lDepth, 8, 8, 8, 0, 8, 16, 0);
        for (xlong i = 0; i < bitmap.m_lPitch * 4; ++i)
            bitmap.m_pData[i] = (unsigned char)random();
        const std::filesystem::path path = folder / ("depth" + std::to_string(lDepth) + ".bmp");
        bitmap.Save(path.string().c_str(), &type, nullptr, nullptr, 0);
        if (lDepth != 8)
            continue;
        const std::string strPlain = Read(path);
        std::string strScrambled = strPlain + "XICRYPTEDFILE";
        xDecrypt(strScrambled.data(), (xulong)strScrambled.size());
        Write(folder / "scrambled.bmp", strScrambled);
        // The same picture's head with runs; we write none.
        std::string strRuns = strPlain.substr(0, 54 + 1024);
        strRuns[30] = 1;
        strRuns += std::string("\5a\0\0\0\4bcde\1f\0\0\0\2\1\1\2g\0\1", 22);
        Write(folder / "runs.bmp", strRuns);
    }
}

void MakePalSeeds(const std::filesystem::path &folder)
{
    std::string strBytes("RIFF\x10\4\0\0PAL data\4\4\0\0\0\3\0\1", 24);
    for (int i = 0; i < 256; ++i)
        strBytes += { (char)(i * 7), (char)(i * 3), (char)i, 0 };
    Write(folder / "ramp.pal", strBytes);
    Write(folder / "short.pal", strBytes.substr(0, 100));
}
const struct
{
    const char *pszName;
    void (*pfnMake)(const std::filesystem::path &folder);
} s_Makers[] = {
    { "bmp", MakeBmpSeeds },
    { "pal", MakePalSeeds },
};
} // namespace

int main(int argc, char **argv)
{
    if (argc != 3)
    {
        fprintf(stderr, "usage: make_seeds FOLDER NAME\n");
        return 2;
    }
    FuzzStart();
    std::filesystem::create_directories(argv[1]);
    for (const auto &maker : s_Makers)
        if (!strcmp(maker.pszName, argv[2]))
        {
            maker.pfnMake(argv[1]);
            return 0;
        }
    fprintf(stderr, "make_seeds: no seeds are known for \"%s\"\n", argv[2]);
    return 1;
}
