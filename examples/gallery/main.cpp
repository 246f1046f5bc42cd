// A desktop of windows from one script, with every control in every state.

#include "art.h"
#include "gallery.h"
#include "tarvix/bitmap.h"
#include "tarvix/host.h"
#include "tarvix/pictype.h"
#include "tarvix/systemfiles.h"

#include <filesystem>
#include <stdlib.h>
#include <string.h>
#include <string>

namespace
{
const char s_szUsage[] = "gallery [--depth 8|16|24] [--script FILE] [--play FILE | --record FILE] [--real-time]\n"
                         "        [--frames N] [--shot FILE.bmp] [--messages]\n"
                         "  --depth     bits of a pixel; 24 if not given\n"
                         "  --script    another script in the place of gallery.txt; its pictures lie beside it\n"
                         "  --play      do what a recording says, and stop at its end\n"
                         "  --real-time play at the pace of the recording\n"
                         "  --record    keep what the user does in a file that --play takes\n"
                         "  --frames    stop after so many frames, each a fixed step of time\n"
                         "  --shot      write the last frame to a file\n"
                         "  --messages  print each message of the windows: number, window, control\n"
                         "  --art DIR   only paint the pictures, into a folder\n";

const long s_lFrameTime = 20; // milliseconds

struct TOptions
{
    long lDepth = 24;
    long lFrames = 0;
    std::string strScript, strShot, strArt, strPlay, strRecord;
    bool bMessages = false;
    bool bRealTime = false;
};

// @return 0 to go on, otherwise the exit code plus 1
int ReadOptions(int argc, char **argv, TOptions &options)
{
    for (int i = 1; i < argc; ++i)
    {
        const char *const pszValue = i + 1 < argc ? argv[i + 1] : "";
        if (!strcmp(argv[i], "--help"))
        {
            fputs(s_szUsage, stdout);
            return 1;
        }
        if (!strcmp(argv[i], "--messages"))
            options.bMessages = true;
        else if (!strcmp(argv[i], "--real-time"))
            options.bRealTime = true;
        else if (!strcmp(argv[i], "--play") && *pszValue && options.strRecord.empty())
            options.strPlay = argv[++i];
        else if (!strcmp(argv[i], "--record") && *pszValue && options.strPlay.empty())
            options.strRecord = argv[++i];
        else if (!strcmp(argv[i], "--depth") &&
                 (!strcmp(pszValue, "8") || !strcmp(pszValue, "16") || !strcmp(pszValue, "24")))
            options.lDepth = atol(argv[++i]);
        else if (!strcmp(argv[i], "--frames") && atol(pszValue) > 0)
            options.lFrames = atol(argv[++i]);
        else if (!strcmp(argv[i], "--script") && *pszValue)
            options.strScript = argv[++i];
        else if (!strcmp(argv[i], "--shot") && *pszValue)
            options.strShot = argv[++i];
        else if (!strcmp(argv[i], "--art") && *pszValue)
            options.strArt = argv[++i];
        else
        {
            fprintf(stderr, "gallery: I do not understand \"%s\".\n%s", argv[i], s_szUsage);
            return 2;
        }
    }
    return 0;
}

// The script's pictures are named relative to its folder, so that becomes the
// working directory; files that the user named stay where they are.
bool EnterFolder(TOptions &options, const char *pszProgram)
{
    namespace fs = std::filesystem;
    std::error_code error;
    for (std::string *pName : { &options.strShot, &options.strPlay, &options.strRecord })
        if (!pName->empty())
            *pName = fs::absolute(*pName, error).string();
    fs::path script = options.strScript;
    if (script.empty())
        script = fs::path(pszProgram).parent_path() / "gallery_files" / "gallery.txt";
    options.strScript = script.filename().string();
    const fs::path folder = fs::absolute(script, error).parent_path();
    fs::current_path(folder, error);
    if (error)
        fprintf(stderr, "gallery: There is no folder %s.\n", folder.string().c_str());
    return !error;
}

// A number of frames without a user is a recording in which nothing happens.
bool StartReplay(CTarvixHost &host, const TOptions &options)
{
    if (!options.strRecord.empty())
        return host.Record(options.strRecord.c_str());
    if (!options.strPlay.empty())
        return host.Play(options.strPlay.c_str(), options.bRealTime);
    if (!options.lFrames)
        return true;
    const std::string strText = "tarvix-replay 1\nstep " + std::to_string(s_lFrameTime) + "\nstart 799 599\n" +
                                std::to_string(options.lFrames) + " end\n";
    return host.PlayText(strText.c_str(), "--frames", options.bRealTime);
}
} // namespace

int main(int argc, char **argv)
{
    TOptions options;
    if (const int nEnd = ReadOptions(argc, argv, options))
        return nEnd - 1;
    // On Windows the library looks for its runtime in the folder of the start.
    CTarvixHost host("Gallery");
    if (options.strArt.empty() && !EnterFolder(options, argv[0]))
        return 1;
    if (!options.strArt.empty())
        return PaintArt(options.strArt.c_str()) ? 0 : host.Fail();
    if (!host.SetMode(800, 600, options.lDepth))
        return host.Fail();
    if (!xFileExists("desktop.bmp") && !PaintArt("."))
        return host.Fail();
    SetMinimumFrameTime(s_lFrameTime); // which a recording takes for its step
    if (!StartReplay(host, options))
        return host.Fail();
    CGallery gallery(options.bMessages);
    if (!gallery.Load(options.strScript.c_str()))
        return host.Fail();
    const bool bPlaying = host.IsPlaying();
    if (bPlaying)
        SetMinimumFrameTime(0);
    for (long lFrame = 1;; ++lFrame)
    {
        gallery.Step();
        if (!host.Frame() || (bPlaying && !host.IsPlaying()) || (options.lFrames && lFrame >= options.lFrames))
            break;
    }
    if (!options.strShot.empty() && !host.SaveShot(options.strShot.c_str()))
        return host.Fail();
    return host.StopReplay() ? 0 : host.Fail();
}
