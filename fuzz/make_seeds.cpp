// make_seeds FOLDER NAME writes the seeds of the fuzzer fuzz_NAME: files of our
// own writers, and close relatives of them where we only read.
#include "fuzz/support.h"

#include "input/replayhooks.h"
#include "tarvix/archive.h"
#include "tarvix/base64.h"
#include "tarvix/bitmap.h"
#include "tarvix/crypt.h"
#include "tarvix/font.h"
#include "tarvix/kcbl.h"
#include "tarvix/keyboard.h"
#include "tarvix/lzss.h"
#include "tarvix/mouse.h"
#include "tarvix/pictype.h"
#include "tarvix/replay.h"
#include "tarvix/rle.h"
#include "tarvix/xiff.h"
#include "tests/pictures/jpegmaker.h"

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

void MakeJpegSeeds(const std::filesystem::path &folder)
{
    const std::vector<CJpegMaker::TComponent> aSamplings[] = {
        { { 1, 1, 1 } },
        { { 1, 1, 1 }, { 2, 1, 1 }, { 3, 1, 1 } },
        { { 1, 2, 2 }, { 2, 1, 1 }, { 3, 1, 1 } },
        { { 1, 2, 1 }, { 2, 1, 1 }, { 3, 1, 1 }, { 4, 2, 1 } },
        { { 1, 4, 1 }, { 2, 1, 1 }, { 3, 2, 1 } },
    };
    for (const auto &components : aSamplings)
    {
        CJpegMaker maker;
        maker.components = components;
        maker.uSeed = (unsigned)(&components - aSamplings);
        maker.nRestart = (int)maker.uSeed;
        maker.nWidth = 20;
        const std::string strBytes = maker.Make();
        Write(folder / ("seed" + std::to_string(maker.uSeed) + ".jpg"), strBytes);
        std::string strScrambled = strBytes + "XICRYPTEDFILE";
        xDecrypt(strScrambled.data(), (xulong)strScrambled.size());
        if (!maker.uSeed)
            Write(folder / "scrambled.jpg", strScrambled);
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

void MakeXiffSeeds(const std::filesystem::path &folder)
{
    const std::filesystem::path path = folder / "tree.xif";
    CXIFF file;
    file.Open(path.string().c_str(), FILE_WRITE | FILE_LITTLE_ENDIAN);
    for (const char *pszName : { "A", "Inner", "", "A" })
        file.AddChunk(pszName, 0);
    file.WriteLong(7);
    file.Close();
    // The steps of the walk come first.
    const std::string strTree = Read(path);
    Write(path, std::string("\x0c\2\2\x0c\2\4\6\x4c\2\2\2\x0a\x3c\4\4\6", 16) + strTree);
    Write(folder / "find.xif", std::string(16, '\x7c') + strTree);
}

std::string SampleText()
{
    std::string str;
    for (int i = 0; i < 300; ++i)
        str += "Window " + std::to_string(i % 17) + " = { }\r\n";
    return str;
}

void MakeLzssSeeds(const std::filesystem::path &folder)
{
    CLzss lzss;
    Write(folder / "text", SampleText());
    lzss.Compress((folder / "text").string().c_str(), (folder / "text.lzs").string().c_str());
    Write(folder / "run", std::string(100, 'r'));
    lzss.Compress((folder / "run").string().c_str(), (folder / "run.lzs").string().c_str());
}

void MakeArchiveSeeds(const std::filesystem::path &folder)
{
    const std::string strText = (folder / "text").string(), strSmall = (folder / "small").string();
    Write(strText, SampleText());
    Write(strSmall, "stored");
    CArchive archive;
    archive.OpenNew((folder / "two.arc").string().c_str());
    archive.AddFile(strSmall.c_str(), "dir/small");
    archive.AddFile(strText.c_str(), "text");
    archive.Close();
}

void MakeRleSeeds(const std::filesystem::path &folder)
{
    const unsigned char ucValues[] = "aaaaaaaaaaaaaaaaaaaaaaabbbcd";
    unsigned char ucPacked[64] = { 8, 20 };
    CRle rle;
    rle.Init(8, 0);
    const xlong lSize = rle.Pack(ucValues, ucPacked + 2, sizeof(ucValues));
    Write(folder / "bytes", std::string((const char *)ucPacked, (size_t)lSize + 2));
}

void MakeBase64Seeds(const std::filesystem::path &folder)
{
    const std::string strText = SampleText().substr(0, 200);
    for (const int bCRLF : { 0, 1 })
    {
        unsigned char *pText = nullptr;
        xulong ulLen = 0;
        CBase64::Encode((const unsigned char *)strText.data(), (xulong)strText.size() - bCRLF * 2, pText, ulLen, bCRLF);
        Write(folder / ("text" + std::to_string(bCRLF)), std::string((const char *)pText, ulLen));
        xFreeMemFunc(pText, nullptr, 0);
    }
}

void MakeUuSeeds(const std::filesystem::path &folder)
{
    const std::string strText = SampleText().substr(0, 100);
    char szLines[400];
    const xulong ulLen = UUEncode(strText.data(), szLines, (xulong)strText.size());
    Write(folder / "lines", std::string(szLines, ulLen));
}

void MakeDebugSeeds(const std::filesystem::path &folder)
{
    Write(folder / "options", "DebugLevel=DBGL_KCBL\r\nStdDebug=1\nDebugScreen=1\n\nName = a value \n=\nlast=");
}

void MakeKcblSeeds(const std::filesystem::path &folder)
{
    CKCBL kcbl;
    xlong alValues[] = { 1, -2, 3 };
    kcbl.NewItem("; script", KEND);
    kcbl.NewItem("Title", KSTRING, "Hi, \"you\"\n\\", KLONG, (xlong)3, KSTRING, "; note", KEND);
    kcbl.NewItem("", KEND);
    kcbl.NewItem("Sizes", KLONGARRAY, (xlong)3, alValues, KBOOL, (xlong)1, KLONGARRAY, (xlong)2, alValues, KEND);
    kcbl.NewChunk(KSTRING, "Window", KSTRING, "main", KEND);
    kcbl.NewItem("a", KSTRING, std::string(200, 'x').c_str(), KDOUBLE, 2.5, KEND);
    kcbl.NewChunk(KEND);
    kcbl.ExitChunk();
    kcbl.ExitChunk();
    kcbl.NewItem("[", KSTRING, "Notes", KSTRING, "ASCIIDATA", KSTRING, "some text\nmore\n", KEND);
    kcbl.Save((folder / "tree.txt").string().c_str());
    kcbl.SetMaxLineLength(40);
    kcbl.Save((folder / "folded.txt").string().c_str());
    Write(folder / "forms.txt", "a, b = c ; d\r\nk = {1, {2}} ; e\n\"x\", ; f\n y\n} z\n{\n  [ = ASCIIDATA\n q\n  ]\n");
}

// With every section, for the files that the fuzzers make.
const char s_szResources[] = R"(; script
{ = Defines
    IDW = 5 ; note
    IDC = 6
}
{ = Strings
    S = 1, "a text"
}
{ = Values
    V = 1, -2
}
{ = Palette
    P = q.bmp
}
{ = Fonts
    F = f.xbf
}
{ = Bitmaps
    B = p.bmp, 1, 2, 3, 4
    C = p.bmp, 0, 0, -1, -1
    { = q.bmp
        D = -1, 0, 9, 9
    }
}
{ = Animations
    A = p.bmp, 20, 0, 0, 2, 3, 5, 3, 1
}
{ = Colors
    R = "1 2 3 4", red, white, "9,9,,9 9", blue, grey, green, black
}
{ = Defaults
    Font = F
    Caret = B
    Close = B, C, D, B
    Frame = R, R, R, R
}
{ = Window, IDW
    Create = T, 1, 2, 3, 4, XWIN_FRAME|XWIN_TITLEBAR
    { = Button, IDC
        Create = "", 0, 0, 9, 9, XKEY_A, 0
        TextColor = "1 2 3 4"
    }
}
{ = Data
    X = R, F, A, B, S, IDC, "CNTRL_ALPHA CNTRL_TILED"
}
)";

void MakeResdataSeeds(const std::filesystem::path &folder)
{
    Write(folder / "all.rc", s_szResources);
    Write(folder / "faults.rc", "{ = Bitmaps\nB = p.bmp, 0, 0, -2, 0\n{ = none\n}\n}\n{ = Animations\nA = p.bmp, 1\n}\n"
                                "{ = Colors\nR = mauve\n}\n{ = Defaults\nFont = F\n}\n");
}

void MakeDialogSeeds(const std::filesystem::path &folder)
{
    Write(folder / "all.rc",
          "{ = Defines\nW = 1\nV = 2\nA = 3\nB = 4\nC = 5\nD = 6\nE = 7\n}\n{ = Fonts\nF = f.xbf\n}\n"
          "{ = Bitmaps\nP = p.bmp, 0, 0, -1, -1\n}\n{ = Colors\nS = red, red, red, blue, red, red, grey, red\n}\n"
          "{ = Defaults\nFont = F\nCheck = P\nClose = P, P, P, P\n}\n"
          "{ = Window, W\nCreate = \"AA\", 5, 5, 99, 80, XWIN_TITLEBAR|XWIN_FRAME|XWIN_BORDER|XWIN_CLOSE|XWIN_DRAG\n"
          "TitlebarFlags = CNTRL_HASBITMAP|CNTRL_TILED\nTitlebarBitmap = P, P, P, P\n"
          "FrameFlags = CNTRL_HASBITMAP\nFrameBitmap = P, P, P, P\nColors = S, S, S, S\n"
          "{ = Button, A\nCreate = \"AB\", 2, 2, 40, 12, XKEY_ENTER, CNTRL_EXTRUDED|CNTRL_CENTERH\n"
          "Bitmap = P, P, P, P\nTextColor = red\nFont = F\nAlpha = 20\nColors = S, S, S, S\n}\n"
          "{ = Groupbox, B\nCreate = \"A\", 2, 20, 60, 40, CNTRL_EXTRUDED\n"
          "{ = Radio, C\nCreate = \"A B\", 2, 2, 30, 9, 8, 0, 0\n{ = Caption\nFlags = 2\n}\n}\n}\n"
          "{ = Checkbox, D\nCreate = \"B\", 50, 2, 40, 12, 0, XKEY_F1, 0\n}\n}\n");
    Write(folder / "more.rc",
          "{ = Defines\nW = 1\nA = 3\nB = 4\nC = 5\n}\n{ = Fonts\nF = f.xbf\n}\n{ = Defaults\nFont = F\n}\n"
          "{ = Window, W\nCreate = \"\", 0, 0, 99, 80, XWIN_FRAME|XWIN_ALPHA|XWIN_MODAL\n"
          "{ = Scrolltext, A\nCreate = \"ABAB\", 2, 2, 40, 12, 1, CNTRL_TRANSPARENT\nDelay = 30\nText = \"BA\"\n}\n"
          "{ = URL, B\nCreate = \"AB\", \"a@b\", 2, 20, 40, 12, XKEY_TAB, CNTRL_TABSTOP\nTextBufferSize = 9\n}\n"
          "CreateStatic = C, \"A\", 50, 50, 20, 20, CNTRL_EXTRUDED\n}\n");
}

void MakePresSeeds(const std::filesystem::path &folder)
{
    CLzss lzss;
    for (const size_t ulLen : { sizeof(s_szResources) - 1, (size_t)60 })
    {
        xulong ulPacked = (xulong)ulLen;
        char *const pPacked = lzss.CompressBuffer(s_szResources, &ulPacked);
        // The length is put in by the fuzzer.
        Write(folder / std::to_string(ulLen),
              std::string("\2PRES\0\0\0\0\0\0\0\0", 13) + std::string(pPacked, ulPacked));
        xFreeMem(pPacked, nullptr, 0);
    }
}

void MakeXbfSeeds(const std::filesystem::path &folder)
{
    CBMPPic type;
    CBitmap letters;
    CPalette palette;
    TCharData chars[96];
    for (int n = 0; n < 95; ++n)
        chars[n] = { (short)(n % 32 * 2), (short)(n / 32 * 3), 2 };
    chars[95] = { 0, 0, -1 };
    letters.CreateIndex(64, 9, 8, &palette, 0);
    for (xlong l = 0; l < letters.m_lPitch * 9; ++l)
        letters.m_pData[l] = (unsigned char)l;
    CFont font;
    font.SetFont(&letters, chars, ' ', 3, 1);
    font.SetCtrlCode(1, FONT_RIGHT);
    font.SetBasic(2, FONT_DOWN, 9);
    font.Save((folder / "letters.xbf").string().c_str(), 0);
    // Cells that lie outside the picture.
    for (CFont::TChar &c : font.m_Chars)
        c = { (short)(c.sX - 30), (short)(c.sY + 5), 300, c.ucType, c.ucValue };
    font.Save((folder / "wild.xbf").string().c_str(), 0);
}

void MakeReplaySeeds(const std::filesystem::path &folder)
{
    // Recorded by the library itself, through the calls of its input layers.
    glb->m_pMouse = XNEW(CMouse);
    glb->m_pKeyboard = XNEW(CKeyboard);
    CReplay replay;
    for (const char *pszName : { "plain", "full" })
    {
        if (!replay.Record((folder / pszName).string().c_str(), 1))
            abort();
        for (int nFrame = 0; nFrame < 6; ++nFrame)
        {
            ReplayBeginFrame();
            glb->m_pMouse->Feed(nFrame * 7, 100 - nFrame, 0, 0, nFrame & 7);
            replay.OnKey((unsigned short)('a' + nFrame), nFrame & 1);
            if (*pszName == 'f')
            {
                xlong lX = nFrame, lY = -nFrame;
                replay.OnPoint(&lX, &lY);
                replay.OnState((unsigned short)(300 + nFrame), (unsigned char)(nFrame & 3));
                replay.OnPaste("two\nlines \"\\\x80");
            }
            ReplayTakeInput();
            ReplayEndFrame();
        }
        replay.OnClose();
        if (!replay.Stop())
            abort();
    }
    delete glb->m_pKeyboard;
    delete glb->m_pMouse;
    glb->m_pKeyboard = nullptr;
    glb->m_pMouse = nullptr;
}

void MakeRescheckSeeds(const std::filesystem::path &folder)
{
    MakeResdataSeeds(folder);
    std::filesystem::create_directories(folder / "windows");
    MakeDialogSeeds(folder / "windows");
}

// Lives of hosts, of which most are dull.
void MakeChaosSeeds(const std::filesystem::path &folder)
{
    for (unsigned uSeed = 1; uSeed <= 20; ++uSeed)
    {
        std::mt19937 random(uSeed);
        std::string strBytes;
        for (unsigned u = 0; u < 100 * uSeed; ++u)
            strBytes += (char)(random() >> 8);
        Write(folder / std::to_string(uSeed), strBytes);
    }
}

const struct
{
    const char *pszName;
    void (*pfnMake)(const std::filesystem::path &folder);
} s_Makers[] = {
    { "chaos", MakeChaosSeeds },   { "archive", MakeArchiveSeeds },   { "base64", MakeBase64Seeds },
    { "bmp", MakeBmpSeeds },       { "dialog", MakeDialogSeeds },     { "debug", MakeDebugSeeds },
    { "jpeg", MakeJpegSeeds },     { "kcbl", MakeKcblSeeds },         { "lzss", MakeLzssSeeds },
    { "pal", MakePalSeeds },       { "pres", MakePresSeeds },         { "resdata", MakeResdataSeeds },
    { "replay", MakeReplaySeeds }, { "rescheck", MakeRescheckSeeds }, { "rle", MakeRleSeeds },
    { "uu", MakeUuSeeds },         { "xbf", MakeXbfSeeds },           { "xiff", MakeXiffSeeds },
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
