// The windows of a script on the screen, and of its next versions.
#pragma once

#include "scriptmap.h"
#include "tinyfont.h"

#include "tarvix/dialog.h"
#include "tarvix/resdata.h"
#include "tarvix/sprite.h"

#include <filesystem>
#include <memory>
#include <set>

/// Where a file's name stands in the working directory, with either separator
/// and without regard to case; the name itself when there is none.
std::filesystem::path FindFile(const std::string &strName);

/// Shows a script of the working directory. While a version is broken, the
/// windows of the last good one stay, with the fault below them.
class CViewer
{
public:
    /// @param strShown  how messages name the script
    /// @param windows   those to show; empty for all
    CViewer(const std::string &strFile, const std::string &strShown, const std::vector<std::string> &windows);
    CViewer(const CViewer &) = delete;
    CViewer &operator=(const CViewer &) = delete;
    ~CViewer();

    /// Reads the script and prints what became of it.
    /// @return false when it is broken
    bool Load();
    /// Loads again when a file has changed; behind every frame.
    void Poll();
    /// What is wrong, in one line; empty when nothing is.
    const std::string &Fault() const { return m_strFault; }

private:
    struct TShown
    {
        CScriptMap map;
        CResData res; // outlives the dialogs
        std::vector<std::unique_ptr<CDialog>> dialogs;
    };
    using TStamp = std::pair<std::filesystem::file_time_type, std::uintmax_t>;

    static void OnMessage(xlong lMsg, xlong lWindowID, xlong lCntrlID, xparam lP3, void *pUser);
    void Take(xlong lMsg, xlong lWindowID, xlong lCntrlID);
    std::vector<TStamp> Stamps() const;
    std::string Exchange(const TScript &script, const CScriptMap &map);
    std::string Build(TShown &shown, const std::string &strText);
    std::string BuildWindow(TShown &shown, const std::string &strName);
    void ShowBackground();
    void ShowFault(const std::vector<std::string> &lines);

    const std::string m_strFile, m_strShown;
    const std::vector<std::string> m_WindowNames;
    std::unique_ptr<TShown> m_pShown;
    std::vector<std::string> m_Files;
    std::vector<TStamp> m_Stamps, m_LastStamps; ///< as loaded, and at the last look
    xulong m_ulLastLook = 0;
    bool m_bQuiet = false;
    xlong m_lDragged = 0;                           ///< the window that was being dragged at the last frame's end
    const std::set<std::filesystem::path> m_Tables; ///< that were there before
    std::string m_strFault;
    CTinyFont m_Font;
    CBitmap m_FaultPicture;
    std::unique_ptr<CSprite> m_pFaultSprite;
};
