// Packs resource files into the form that CResData loads as well, and back.

#include "packed.h"
#include "tool.h"

#include "tarvix/memory.h"

#include <string.h>

namespace
{
const char s_szUsage[] = R"(pres pack IN OUT     packs a resource file
pres unpack IN OUT   unpacks it

A packed file is "PRES", the length of the packed data in four bytes with the
low one first, four zero bytes, and the data. Exit status: 0; 1 for a file that
can't be read, written or unpacked; 2 for a wrong command line.
)";

std::string Pack(const std::string &strPlain)
{
    CLzss lzss;
    xulong ulLen = (xulong)strPlain.size();
    char *pPacked = lzss.CompressBuffer(strPlain.data(), &ulLen);
    if (!pPacked)
        return "";
    std::string strFile = "PRES";
    for (int nByte = 0; nByte < 4; ++nByte)
        strFile += (char)(ulLen >> 8 * nByte);
    strFile.append(4, '\0');
    strFile.append(pPacked, ulLen);
    xFreeMem(pPacked, nullptr, 0);
    return strFile;
}
} // namespace

int main(int argc, char **argv)
{
    const std::vector<std::string> args(argv + 1, argv + argc);
    if (IsHelp(args, s_szUsage))
        return EXIT_GOOD;
    CTool tool("pres");
    const bool bPack = argc > 1 && !strcmp(argv[1], "pack");
    if (argc != 4 || (!bPack && strcmp(argv[1], "unpack")))
        return tool.Usage("this takes pack or unpack and two file names");
    std::string strIn, strOut;
    if (!ReadWhole(argv[2], strIn))
        return tool.Fail(argv[2], "the file can't be read");
    if (bPack)
    {
        if (strIn.empty())
            return tool.Fail(argv[2], "an empty file can't be packed");
        strOut = Pack(strIn);
        if (strOut.empty())
            return tool.Fail(argv[2], "there is not enough memory");
    }
    else if (const char *pszWhy = Unpack(strIn, strOut))
        return tool.Fail(argv[2], pszWhy);
    return WriteWhole(argv[3], strOut) ? EXIT_GOOD : tool.Fail(argv[3], "the file can't be written");
}
