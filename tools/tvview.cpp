// Shows the windows of a resource script while it is written.

#include "options.h"
#include "tool.h"
#include "viewer.h"

#include "tarvix/host.h"
#include "tarvix/pictype.h"

#include <stdlib.h>

#include <algorithm>
#include <string.h>

namespace fs = std::filesystem;

namespace
{
const char s_szUsage[] = R"(tvview [OPTIONS] SCRIPT [WINDOW...]   shows the windows of a resource script
    --mode WIDTHxHEIGHTxDEPTH  the screen; 800x600x24 if not given
    --list                     only lists the windows and their controls
    --check                    only lists the faults, as kcbl check does
    --shot FILE.bmp            draws without a display, writes the picture and ends
    --frames N                 ends after so many frames of 20 milliseconds

Without names all windows are shown. SCRIPT may be a text or a packed file; the
files that it names are looked for from its folder. When it or one of them
changes, the windows are made anew; while there is a fault, the last good ones
stay and the fault stands below them. A closed window comes back with the next
change. Each message of a window is printed: window, control, message, number.
--list prints window, id and title, and indented word, name and id of controls.
Exit status: 0; 1 for a script that can't be read, or that has a fault with
--list, --check or --shot; 2 for a wrong command line.
)";

struct TOptions
{
    xlong lWidth = 800, lHeight = 600, lDepth = 24;
    bool bList = false, bCheck = false;
    long lFrames = 0;
    std::string strShot, strScript, strShown;
    std::vector<std::string> windows;
};

bool ReadMode(const std::string &str, TOptions &options)
{
    long lWidth = 0, lHeight = 0, lDepth = 0;
    int nUsed = 0;
    if (sscanf(str.c_str(), "%ldx%ldx%ld%n", &lWidth, &lHeight, &lDepth, &nUsed) != 3 || (size_t)nUsed != str.size())
        return false;
    options.lWidth = (xlong)lWidth;
    options.lHeight = (xlong)lHeight;
    options.lDepth = (xlong)lDepth;
    return lWidth >= 160 && lWidth <= 4096 && lHeight >= 120 && lHeight <= CScreenBase::MAX_ROWS &&
           (lDepth == 8 || lDepth == 16 || lDepth == 24);
}

// @return what is wrong with the command line, or an empty text
std::string ReadOptions(const std::vector<std::string> &args, TOptions &options)
{
    COptions known;
    known.Switch("--list", options.bList);
    known.Switch("--check", options.bCheck);
    known.Text("--shot", "the name of a BMP file", options.strShot);
    known.Number("--frames", 1, 1000000, options.lFrames);
    known.Value("--mode", "width, height and depth, as 800x600x24; depths are 8, 16 and 24",
                [&options](const std::string &str) { return ReadMode(str, options); });
    const std::string strWhy = known.Read(args, options.windows);
    if (!strWhy.empty())
        return strWhy;
    if (!options.windows.empty())
    {
        options.strShown = options.windows.front();
        options.windows.erase(options.windows.begin());
    }
    if (options.strShown.empty())
        return "this takes a resource script";
    if (options.bList + options.bCheck + !options.strShot.empty() > 1)
        return "only one of --list, --check and --shot can be done";
    return "";
}

// The script's files are named from its folder, so that becomes the working
// directory; the picture stays where the user named it.
bool EnterFolder(TOptions &options)
{
    std::error_code error;
    if (!options.strShot.empty())
        options.strShot = fs::absolute(options.strShot, error).string();
    const fs::path script = fs::absolute(options.strShown, error);
    options.strScript = script.filename().string();
    if (fs::is_directory(script, error) || !fs::exists(script, error))
        return false;
    fs::current_path(script.parent_path(), error);
    return !error;
}

int Check(const CTool &tool, const TOptions &options)
{
    const TScript script = ReadScript(options.strScript);
    for (const TFault &fault : script.faults)
        PrintFault(script.strText, options.strShown, fault);
    if (!script.strWhy.empty())
        return tool.Fail(options.strShown, script.strWhy);
    if (const size_t ulFaults = CountFaults(script.faults))
        return tool.Fail(options.strShown, std::to_string(ulFaults) + (ulFaults == 1 ? " fault" : " faults"));
    const CScriptMap map(script.strText);
    for (const std::string &strName : options.windows)
        if (!map.FindWindow(strName))
            return tool.Fail(options.strShown, "window " + strName + ": the script has none of that name");
    if (!options.bList)
        return EXIT_GOOD;
    for (const TScriptWindow &window : map.m_Windows)
    {
        if (!options.windows.empty() &&
            std::none_of(options.windows.begin(), options.windows.end(),
                         [&](const std::string &strName) { return map.FindWindow(strName) == &window; }))
            continue;
        printf("%s %ld \"%s\"\n", window.strName.c_str(), (long)window.lID, window.strTitle.c_str());
        for (const TScriptControl &control : window.controls)
            printf("%*s%s %s %ld\n", 4 * (control.nDepth + 1), "", control.strWord.c_str(), control.strName.c_str(),
                   (long)control.lID);
    }
    return EXIT_GOOD;
}

// A size that the screens don't offer of themselves is added first.
bool SetMode(CTarvixHost &host, const TOptions &options)
{
    if (!host.IsReady())
        return false;
    if (host.SetMode(options.lWidth, options.lHeight, options.lDepth))
        return true;
    CScreenBaseList *const pScreens = glb->m_pScreenList;
    for (pScreens->First(); pScreens->Exists(); pScreens->Next())
        pScreens->Get()->AddWindowVideoMode(options.lWidth, options.lHeight, options.lDepth, -1);
    return host.SetMode(options.lWidth, options.lHeight, options.lDepth);
}

int Show(const TOptions &options)
{
#ifndef _WIN32
    if (!options.strShot.empty())
        setenv("SDL_VIDEODRIVER", "dummy", 1);
#endif
#ifdef _WIN32
    // To start, the library wants the system's msvcrt.dll in the working directory.
    std::error_code error;
    const fs::path folder = fs::current_path(error);
    const char *const pszRoot = getenv("SystemRoot");
    fs::current_path(fs::path(pszRoot ? pszRoot : "C:\\Windows") / "System32", error);
#endif
    CTarvixHost host("tvview");
#ifdef _WIN32
    fs::current_path(folder, error);
#endif
    if (!SetMode(host, options))
        return host.Fail();
    CViewer viewer(options.strScript, options.strShown, options.windows);
    const bool bLoaded = viewer.Load();
    if (!bLoaded && !options.strShot.empty())
    {
        fprintf(stderr, "tvview: %s: %s\n", options.strShown.c_str(), viewer.Fault().c_str());
        return EXIT_BAD;
    }
    xSetWindowTitle(("tvview " + options.strScript).c_str());
    SetMinimumFrameTime(20);
    const long lFrames = options.lFrames || options.strShot.empty() ? options.lFrames : 2;
    for (long lFrame = 0; !lFrames || lFrame < lFrames; ++lFrame)
    {
        if (!host.Frame())
            break;
        viewer.Poll();
    }
    if (!options.strShot.empty() && !host.SaveShot(options.strShot.c_str()))
        return host.Fail();
    return EXIT_GOOD;
}
} // namespace

int main(int argc, char **argv)
{
    const std::vector<std::string> args(argv + 1, argv + argc);
    if (IsHelp(args, s_szUsage))
        return EXIT_GOOD;
    TOptions options;
    {
        CTool tool("tvview");
        if (!tool.IsReady())
            return tool.FailWithReport("", "the library could not be started");
        if (const std::string strWhy = ReadOptions(args, options); !strWhy.empty())
            return tool.Usage(strWhy);
        if (!EnterFolder(options))
            return tool.Fail(options.strShown, "the file can't be read");
        if (options.bList || options.bCheck)
            return Check(tool, options);
    }
    return Show(options);
}
