// LZSS beside a plain coder and zlib, Base64 beside a plain loop.

#include "paired.h"
#include "tests/coders/plainlzss.h"

#include "tarvix/base64.h"
#include "tarvix/globals.h"
#include "tarvix/lzss.h"
#include "tarvix/memory.h"

#include <string.h>
#include <zlib.h>

#include <fstream>
#include <iterator>
#include <random>
#include <vector>

namespace
{
std::string Script()
{
    std::mt19937 random(1);
    std::string str = "; script\r\n";
    for (int nWindow = 0; str.size() < 200000; ++nWindow)
    {
        str += "Window\r\n{\r\n\tId = " + std::to_string(nWindow) + "\r\n\tTitle = \"Window " +
               std::to_string(nWindow) + "\"\r\n";
        for (int n = 0; n < 20; ++n)
            str += "\tButton { Id = " + std::to_string(n) + " Pos = " + std::to_string(random() % 800) + ", " +
                   std::to_string(random() % 600) + ", 80, 24 Text = \"" + (random() % 2 ? "Cancel" : "Continue") +
                   "\" }\r\n";
        str += "}\r\n";
    }
    return str;
}

// A picture of 24 bits: gradients with a little noise, and flat areas.
std::string Picture()
{
    std::mt19937 random(2);
    std::string str;
    for (int y = 0; y < 256; ++y)
        for (int x = 0; x < 256; ++x)
            for (int n = 0; n < 3; ++n)
                str += (char)(y / 64 % 2 ? 40 * n : x / 2 + y / 4 + n * 10 + (int)(random() % 3));
    return str;
}

std::string Program()
{
    std::ifstream file("/proc/self/exe", std::ios::binary);
    std::string str((std::istreambuf_iterator<char>(file)), {});
    return str.substr(0, 200000);
}

std::string RandomBytes()
{
    std::mt19937 random(3);
    std::string str;
    while (str.size() < 200000)
        str += (char)random();
    return str;
}

void CompareLzss(paired::CTable &table, const char *pszName, const std::string &strPlain)
{
    const std::string strSize = std::to_string(strPlain.size() / 1024) + " KB";
    const std::string strRow = std::string("lzss ") + pszName;
    CLzss ours;
    CPlainLzss plain;
    xulong ulPacked = (xulong)strPlain.size();
    char *pPacked = ours.CompressBuffer(strPlain.data(), &ulPacked);
    const std::string strStream(pPacked, ulPacked);
    xFreeMem(pPacked, nullptr, 0);
    std::vector<char> room(strPlain.size());
    xulong ulRoom = (xulong)room.size();
    const bool bBack = ours.ExpandBuffer(strStream.data(), room.data(), &ulRoom, ulPacked) != 0;
    if (!bBack || plain.Compress(strPlain) != strStream || memcmp(room.data(), strPlain.data(), room.size()))
        return table.Differs(strRow, strSize, "plain");

    uLongf ulZ = compressBound(strPlain.size());
    std::vector<unsigned char> z(ulZ), zRoom(strPlain.size());
    compress2(z.data(), &ulZ, (const unsigned char *)strPlain.data(), strPlain.size(), 6);
    const auto oursPack = [&]
    {
        xulong ulLen = (xulong)strPlain.size();
        xFreeMem(ours.CompressBuffer(strPlain.data(), &ulLen), nullptr, 0);
    };
    const auto oursExpand = [&]
    {
        xulong ulLen = (xulong)room.size();
        ours.ExpandBuffer(strStream.data(), room.data(), &ulLen, (xulong)strStream.size());
    };
    std::string strPlainOut;
    const auto zPack = [&]
    {
        uLongf ulLen = z.size();
        std::vector<unsigned char> to(ulLen);
        compress2(to.data(), &ulLen, (const unsigned char *)strPlain.data(), strPlain.size(), 6);
    };
    const auto zExpand = [&]
    {
        uLongf ulLen = zRoom.size();
        uncompress(zRoom.data(), &ulLen, z.data(), ulZ);
    };
    table.Row(strRow + ", pack", strSize, paired::Measure(oursPack, [&] { plain.Compress(strPlain); }), "plain", 3);
    table.Row(strRow + ", pack", strSize, paired::Measure(oursPack, zPack), "zlib 6", 0);
    table.Row(strRow + ", expand", strSize, paired::Measure(oursExpand, [&] { plain.Expand(strStream, strPlainOut); }),
              "plain", 3);
    table.Row(strRow + ", expand", strSize, paired::Measure(oursExpand, zExpand), "zlib inflate", 1);
}

const char s_szAlphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

void PlainEncode(const std::string &strFrom, char *pTo)
{
    for (size_t ul = 0; ul + 3 <= strFrom.size(); ul += 3)
    {
        const unsigned char *p = (const unsigned char *)strFrom.data() + ul;
        *pTo++ = s_szAlphabet[p[0] >> 2];
        *pTo++ = s_szAlphabet[(p[0] & 3) << 4 | p[1] >> 4];
        *pTo++ = s_szAlphabet[(p[1] & 15) << 2 | p[2] >> 6];
        *pTo++ = s_szAlphabet[p[2] & 63];
    }
}

bool PlainDecode(const std::string &strFrom, const unsigned char *pTable, char *pTo)
{
    for (size_t ul = 0; ul + 4 <= strFrom.size(); ul += 4)
    {
        const unsigned char *p = (const unsigned char *)strFrom.data() + ul;
        const unsigned char uc[4] = { pTable[p[0]], pTable[p[1]], pTable[p[2]], pTable[p[3]] };
        if ((uc[0] | uc[1] | uc[2] | uc[3]) > 63)
            return false;
        *pTo++ = (char)(uc[0] << 2 | uc[1] >> 4);
        *pTo++ = (char)(uc[1] << 4 | uc[2] >> 2);
        *pTo++ = (char)(uc[2] << 6 | uc[3]);
    }
    return true;
}

void CompareBase64(paired::CTable &table, size_t ulBytes)
{
    const std::string strPlain = RandomBytes().substr(0, ulBytes);
    const std::string strSize = std::to_string(ulBytes) + " B";
    unsigned char ucTable[256];
    memset(ucTable, 255, sizeof(ucTable));
    for (int n = 0; n < 64; ++n)
        ucTable[(unsigned char)s_szAlphabet[n]] = (unsigned char)n;
    std::string strText(strPlain.size() / 3 * 4, ' '), strBack(strPlain.size(), ' ');
    const auto plainEncode = [&] { PlainEncode(strPlain, strText.data()); };
    const auto plainDecode = [&] { PlainDecode(strText, ucTable, strBack.data()); };
    unsigned char *pTo = nullptr;
    xulong ulTo = 0;
    const auto oursEncode = [&]
    {
        xFreeMemFunc(pTo, nullptr, 0);
        CBase64::Encode((const unsigned char *)strPlain.data(), (xulong)strPlain.size(), pTo, ulTo, 0);
    };
    const auto oursDecode = [&]
    {
        xFreeMemFunc(pTo, nullptr, 0);
        CBase64::Decode((const unsigned char *)strText.data(), (xulong)strText.size(), pTo, ulTo);
    };
    plainEncode();
    oursEncode();
    if (std::string((const char *)pTo, ulTo) != strText)
        return table.Differs("base64 encode", strSize, "plain");
    table.Row("base64 encode", strSize, paired::Measure(oursEncode, plainEncode), "plain", 4);
    oursDecode();
    plainDecode();
    if (strBack != strPlain || memcmp(pTo, strPlain.data(), strPlain.size()))
        return table.Differs("base64 decode", strSize, "plain");
    table.Row("base64 decode", strSize, paired::Measure(oursDecode, plainDecode), "plain", 4);
    xFreeMemFunc(pTo, nullptr, 0);
}
} // namespace

int main()
{
    glb = new SGlobals;
    sglb = new SSysGlobals;
    paired::CTable table("Coders");
    CompareLzss(table, "script", Script());
    CompareLzss(table, "picture", Picture());
    CompareLzss(table, "program", Program());
    CompareLzss(table, "random bytes", RandomBytes());
    for (const size_t ulBytes : { 300, 6000, 60000, 180000 })
        CompareBase64(table, ulBytes);
    return 0;
}
