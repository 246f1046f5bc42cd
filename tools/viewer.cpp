#include "viewer.h"

#include "scripttext.h"

#include "tarvix/globals.h"
#include "tarvix/resgrammar.h"
#include "tarvix/screen.h"
#include "tarvix/start.h"
#include "tarvix/strings.h"
#include "tarvix/winctrl.h"

#include <stdio.h>
#include <string.h>

#include <algorithm>

namespace fs = std::filesystem;

namespace
{
const xulong s_ulLook = 200; // milliseconds from one look at the files to the next
const size_t s_ulMostLines = 12;
const xlong s_lMargin = 8; // pixels around the text of a fault

// A callback gets no pointer of its own with every message.
CViewer *s_pViewer;

const struct
{
    xlong lMsg;
    const char *pszName;
} s_Messages[] = {
    { XGUIMSG_KEY, "XGUIMSG_KEY" },
    { XGUIMSG_PRESSED, "XGUIMSG_PRESSED" },
    { XGUIMSG_RELEASED, "XGUIMSG_RELEASED" },
    { XGUIMSG_HIGHLIGHT, "XGUIMSG_HIGHLIGHT" },
    { XGUIMSG_CHECKED, "XGUIMSG_CHECKED" },
    { XGUIMSG_UNCHECKED, "XGUIMSG_UNCHECKED" },
    { XGUIMSG_MOUSE, "XGUIMSG_MOUSE" },
    { XGUIMSG_DRAGBEGIN, "XGUIMSG_DRAGBEGIN" },
    { XGUIMSG_DRAGEND, "XGUIMSG_DRAGEND" },
    { XGUIMSG_ACTIVATE, "XGUIMSG_ACTIVATE" },
    { XGUIMSG_RADIOSELECT, "XGUIMSG_RADIOSELECT" },
    { XGUIMSG_VALUE, "XGUIMSG_VALUE" },
    { XGUIMSG_SELECT, "XGUIMSG_SELECT" },
    { XGUIMSG_FOCUS, "XGUIMSG_FOCUS" },
    { XGUIMSG_TOFRONT, "XGUIMSG_TOFRONT" },
    { XGUIMSG_ENABLE, "XGUIMSG_ENABLE" },
    { XGUIMSG_UNHIGHLIGHT, "XGUIMSG_UNHIGHLIGHT" },
    { XGUIMSG_CHANGED, "XGUIMSG_CHANGED" },
    { XGUIMSG_PASTE, "XGUIMSG_PASTE" },
    { XGUIMSG_MOUSEENTER, "XGUIMSG_MOUSEENTER" },
    { XGUIMSG_MOUSELEAVE, "XGUIMSG_MOUSELEAVE" },
};

const char *NameOf(xlong lMsg)
{
    for (const auto &message : s_Messages)
        if (message.lMsg == lMsg)
            return message.pszName;
    return "message";
}

// The manager's default look, which a script changes when it is loaded.
struct TDefaults
{
    TDefaults() { Copy(*glb->m_pWinCtrl, *this); }
    void Restore() const { Copy(*this, *glb->m_pWinCtrl); }

    TCntrlColor *m_pDefFrameColors[4], *m_pDefTitlebarColors[4], *m_pDefButtonColors[4];
    CFont *m_pDefFont;
    CBitmap *m_pDefCaret, *m_pDefCheck;
    CBitmap *m_pDefClose[4], *m_pDefDrop[4], *m_pDefArrowUp[4], *m_pDefArrowDown[4];

private:
    template <class TFrom, class TTo>
    static void Copy(const TFrom &from, TTo &to)
    {
        for (int n = 0; n < 4; ++n)
        {
            to.m_pDefFrameColors[n] = from.m_pDefFrameColors[n];
            to.m_pDefTitlebarColors[n] = from.m_pDefTitlebarColors[n];
            to.m_pDefButtonColors[n] = from.m_pDefButtonColors[n];
            to.m_pDefClose[n] = from.m_pDefClose[n];
            to.m_pDefDrop[n] = from.m_pDefDrop[n];
            to.m_pDefArrowUp[n] = from.m_pDefArrowUp[n];
            to.m_pDefArrowDown[n] = from.m_pDefArrowDown[n];
        }
        to.m_pDefFont = from.m_pDefFont;
        to.m_pDefCaret = from.m_pDefCaret;
        to.m_pDefCheck = from.m_pDefCheck;
    }
};

// As it was before the first script.
const TDefaults &FirstDefaults()
{
    static const TDefaults s_Defaults;
    return s_Defaults;
}

std::string LineOf(const std::string &strText, const TFault &fault)
{
    const size_t ulStart = (size_t)(fault.fault.lOffset - fault.fault.lColumn + 1);
    return strText.substr(ulStart, strText.find_first_of("\r\n", ulStart) - ulStart);
}

void Wrap(const std::string &str, size_t ulColumns, std::vector<std::string> &lines)
{
    for (size_t ul = 0; ul == 0 || ul < str.size(); ul += ulColumns)
        lines.push_back(str.substr(ul, ulColumns));
}

// The place, the fault, its line and a mark below; long lines are cut around it.
void Describe(const std::string &strText, const std::string &strFile, const TFault &fault, size_t ulColumns,
              std::vector<std::string> &lines)
{
    Wrap(PlaceOf(strFile, fault), ulColumns, lines);
    Wrap(TextOf(fault), ulColumns, lines);
    const size_t ulColumn = (size_t)fault.fault.lColumn - 1;
    const size_t ulFrom = ulColumn < ulColumns - 4 ? 0 : ulColumn - ulColumns / 2;
    const std::string strLine = LineOf(strText, fault);
    lines.push_back(ulFrom < strLine.size() ? strLine.substr(ulFrom, ulColumns) : "");
    lines.push_back(std::string(ulColumn - ulFrom, ' ') + '^');
}

// The files in which the library keeps what it has worked out for a palette.
std::set<fs::path> ColorTables()
{
    std::set<fs::path> tables;
    std::error_code error;
    for (const fs::directory_entry &entry : fs::directory_iterator(".", error))
        if (entry.path().extension() == ".tab" || entry.path().filename() == ".tab")
            tables.insert(entry.path());
    return tables;
}

std::string LibraryError()
{
    return glb->m_Error.GetErrCode() ? glb->m_Error.GetError(nullptr) : "";
}

// Where a file's name stands first in a text.
TKCBLFault PlaceOfName(const std::string &strText, const std::string &strFile)
{
    const size_t ulFound = strText.find(strFile);
    return CPlaces(strText).At(ulFound == std::string::npos ? 0 : ulFound);
}

// Files that are there and can't be used: the library does not always name them.
void FindBadFiles(TScript &script, const CScriptMap &map)
{
    for (const std::string &strFile : map.m_Files)
    {
        const std::string strType = fs::path(strFile).extension().string();
        const bool bPicture = !xStricmp(strType.c_str(), ".bmp") || !xStricmp(strType.c_str(), ".jpg");
        CBitmap picture;
        CFont font;
        glb->m_Error.Clear();
        if (bPicture ? picture.Load(strFile.c_str(), 0) : font.Load(strFile.c_str(), 0))
            continue;
        const std::string strWhy = LibraryError();
        script.faults.push_back({ PlaceOfName(script.strText, strFile),
                                  strFile + ": " + (strWhy.empty() ? "the file can't be used" : strWhy) });
    }
}
} // namespace

fs::path FindFile(const std::string &strName)
{
    std::string strSlashes = strName;
    std::replace(strSlashes.begin(), strSlashes.end(), '\\', '/');
    std::error_code error;
    fs::path found;
    for (const fs::path &part : fs::path(strSlashes))
    {
        fs::path next = found / part;
        if (!fs::exists(next, error))
            for (const fs::directory_entry &entry : fs::directory_iterator(found.empty() ? "." : found, error))
                if (!xStricmp(entry.path().filename().string().c_str(), part.string().c_str()))
                    next = found / entry.path().filename();
        found = next;
    }
    return found;
}

CViewer::CViewer(const std::string &strFile, const std::string &strShown, const std::vector<std::string> &windows)
    : m_strFile(strFile), m_strShown(strShown), m_WindowNames(windows), m_Tables(ColorTables())
{
    s_pViewer = this;
    FirstDefaults();
}

CViewer::~CViewer()
{
    m_bQuiet = true;
    m_pFaultSprite.reset();
    m_pShown.reset();
    s_pViewer = nullptr;
    // They would outlive a change of the palette.
    if (!glb->m_pScreen->GetActiveMode()->lIndexed)
        return;
    for (const fs::path &table : ColorTables())
        if (std::error_code error; !m_Tables.count(table))
            fs::remove(table, error);
}

std::vector<CViewer::TStamp> CViewer::Stamps() const
{
    std::vector<TStamp> stamps;
    const auto Add = [&](const std::string &strName)
    {
        std::error_code error;
        const fs::path path = FindFile(strName);
        const fs::file_time_type time = fs::last_write_time(path, error);
        const std::uintmax_t ullSize = fs::file_size(path, error);
        stamps.push_back(error ? TStamp() : TStamp(time, ullSize));
    };
    Add(m_strFile);
    for (const std::string &strFile : m_Files)
        Add(strFile);
    return stamps;
}

void CViewer::Poll()
{
    m_lDragged = 0;
    if (m_pShown)
        for (const auto &pDialog : m_pShown->dialogs)
            if (pDialog->m_lFlags & XWIN_DRAGGING)
                m_lDragged = pDialog->GetID();
    if (xTimeDiff(m_ulLastLook, xGetTime()) < s_ulLook)
        return;
    m_ulLastLook = xGetTime();
    const std::vector<TStamp> stamps = Stamps();
    // A file that is just being written changes until the next look.
    if (stamps != m_Stamps && stamps == m_LastStamps)
        Load();
    m_LastStamps = stamps;
}

bool CViewer::Load()
{
    // Before the files are read: what changes in between is loaded next time.
    m_Stamps = Stamps();
    TScript script = ReadScript(m_strFile);
    CScriptMap map;
    if (script.bLanguage)
    {
        map = CScriptMap(script.strText);
        if (map.m_Files != m_Files)
        {
            m_Files = map.m_Files;
            m_Stamps = Stamps();
        }
    }
    const size_t ulColumns = (size_t)((glb->m_pScreen->GetActiveMode()->lWidth - 2 * s_lMargin) / CTinyFont::WIDTH);
    std::vector<std::string> lines;
    m_strFault = script.strWhy;
    if (script.IsGood())
    {
        m_strFault = Exchange(script, map);
        if (!m_strFault.empty())
            FindBadFiles(script, map);
    }
    if (const size_t ulFaults = CountFaults(script.faults))
        m_strFault = std::to_string(ulFaults) + (ulFaults == 1 ? " fault" : " faults");
    for (const TFault &fault : script.faults)
    {
        PrintFault(script.strText, m_strShown, fault);
        if (!fault.bWarning && lines.size() < s_ulMostLines)
            Describe(script.strText, m_strFile, fault, ulColumns, lines);
    }
    if (lines.empty() && !m_strFault.empty())
        Wrap(m_strFile + ": " + m_strFault, ulColumns, lines);
    if (m_strFault.empty())
        printf("%s: shows %u of %u windows\n", m_strShown.c_str(), (unsigned)m_pShown->dialogs.size(),
               (unsigned)map.m_Windows.size());
    else
        printf("%s: %s%s\n", m_strShown.c_str(), m_strFault.c_str(), m_pShown ? "; the windows before stay" : "");
    fflush(stdout);
    ShowBackground();
    ShowFault(lines);
    return m_strFault.empty();
}

// The windows of the new script in the place of the old ones; or what is wrong, and the old ones.
std::string CViewer::Exchange(const TScript &script, const CScriptMap &map)
{
    const TDefaults defaults;
    CLList &windows = glb->m_pWinCtrl->m_Windows;
    std::vector<TWinEntry> entries;
    for (windows.First(); windows.Exists(); windows.Next())
        entries.push_back(*(TWinEntry *)windows.Get());
    m_bQuiet = true;
    for (const TWinEntry &entry : entries)
        glb->m_pWinCtrl->TakeWindow(entry.pWindow);
    FirstDefaults().Restore();

    auto pNew = std::make_unique<TShown>();
    pNew->map = map;
    std::string strWhy = Build(*pNew, script.strText);
    if (strWhy.empty())
        m_pShown = std::move(pNew);
    else
    {
        pNew.reset();
        defaults.Restore();
        for (size_t ul = entries.size(); ul-- > 0;)
            glb->m_pWinCtrl->AddWindow(entries[ul].pWindow, entries[ul].pfnCallback, entries[ul].pUser);
    }
    m_bQuiet = false;
    glb->m_pWinCtrl->Validate();
    return strWhy;
}

std::string CViewer::Build(TShown &shown, const std::string &strText)
{
    glb->m_Error.Clear();
    const xlong lRead = shown.res.Import(strText.c_str());
    const std::string strWhy = LibraryError();
    const bool bComplete = shown.res.m_listFonts.m_lNumNodes >= shown.map.m_Loaded[XRES_FONTS] &&
                           shown.res.m_listBitmaps.m_lNumNodes >= shown.map.m_Loaded[XRES_BITMAPS] &&
                           shown.res.m_listAnims.m_lNumNodes >= shown.map.m_Loaded[XRES_ANIMATIONS];
    // A palette that is met for the first time has no table on the disk, which is reported but no fault.
    if (!lRead || !bComplete || (!strWhy.empty() && strWhy.find(".tab\"") == std::string::npos))
        return strWhy.empty() ? "the script can't be read" : strWhy;
    if (glb->m_pScreen->GetActiveMode()->lIndexed)
        glb->m_pScreen->SetSystemPalette();
    std::vector<std::string> names = m_WindowNames;
    if (names.empty())
        for (const TScriptWindow &window : shown.map.m_Windows)
            names.push_back(window.strName);
    for (const std::string &strName : names)
        if (const std::string strFault = BuildWindow(shown, strName); !strFault.empty())
            return "window " + strName + ": " + strFault;
    return "";
}

std::string CViewer::BuildWindow(TShown &shown, const std::string &strName)
{
    const TScriptWindow *const pWindow = shown.map.FindWindow(strName);
    if (!pWindow)
        return "the script has none of that name";
    glb->m_Error.Clear();
    shown.dialogs.push_back(std::make_unique<CDialog>());
    if (shown.dialogs.back()->Create(&shown.res, pWindow->lID, OnMessage, 0, nullptr))
        return "";
    const std::string strWhy = LibraryError();
    return strWhy.empty() ? "it can't be made" : strWhy;
}

void CViewer::OnMessage(xlong lMsg, xlong lWindowID, xlong lCntrlID, xparam, void *)
{
    if (s_pViewer)
        s_pViewer->Take(lMsg, lWindowID, lCntrlID);
}

void CViewer::Take(xlong lMsg, xlong lWindowID, xlong lCntrlID)
{
    // A title bar under the mouse ends a drag in every frame, whether there was one or not.
    if (m_bQuiet || !m_pShown || (lMsg == XGUIMSG_DRAGEND && lWindowID != m_lDragged))
        return;
    printf("%s %s %s %ld\n", m_pShown->map.WindowName(lWindowID).c_str(),
           m_pShown->map.ControlName(lWindowID, lCntrlID).c_str(), NameOf(lMsg), (long)lMsg);
    fflush(stdout);
    if (lMsg != XGUIMSG_RELEASED || lCntrlID != XCNTRL_CLOSE)
        return;
    for (const auto &pDialog : m_pShown->dialogs)
        if (pDialog->GetID() == lWindowID)
        {
            // Hidden, a modal window would still take all input.
            pDialog->HideWindow();
            glb->m_pWinCtrl->TakeWindow(pDialog.get());
        }
}

void CViewer::ShowBackground()
{
    const SVmode &mode = *glb->m_pScreen->GetActiveMode();
    const TRGBA color(72, 88, 104);
    CBitmap picture;
    if (picture.CreateRGB(mode.lWidth, mode.lHeight, 24, 8, 8, 8, 0, 8, 16, 0) && picture.Fill(&color) &&
        glb->m_pScreen->MakeScreenFormat(&picture, 1))
        glb->m_pScreen->DrawBitmapPersistent(&picture, 0, 0, 0, 0, -1, -1, 0, 0);
}

void CViewer::ShowFault(const std::vector<std::string> &lines)
{
    m_pFaultSprite.reset();
    if (lines.empty())
        return;
    const SVmode &mode = *glb->m_pScreen->GetActiveMode();
    const TRGBA color(112, 16, 16);
    const xlong lHeight = (xlong)lines.size() * CTinyFont::HEIGHT + 2 * s_lMargin;
    if (!m_FaultPicture.CreateRGB(mode.lWidth, lHeight, 24, 8, 8, 8, 0, 8, 16, 0) || !m_FaultPicture.Fill(&color) ||
        !glb->m_pScreen->MakeScreenFormat(&m_FaultPicture, 1) || !m_Font.Create())
        return;
    for (size_t ul = 0; ul < lines.size(); ++ul)
        m_Font.Draw(&m_FaultPicture, lines[ul].c_str(), s_lMargin, s_lMargin + (xlong)ul * CTinyFont::HEIGHT);
    m_pFaultSprite = std::make_unique<CSprite>();
    m_pFaultSprite->Create(&m_FaultPicture, nullptr, 0, 0, 0, mode.lHeight - lHeight, XSPRITE_LOOP, 1, 0);
}
