// What a resource script names: windows, controls and files.
#pragma once

#include "rescheck.h"

#include "tarvix/kcbl.h"

#include <map>
#include <string>
#include <vector>

struct TScriptControl
{
    std::string strWord; ///< as "Button"
    std::string strName;
    xlong lID;
    int nDepth; ///< of controls in controls
};

struct TScriptWindow
{
    std::string strName;
    std::string strTitle;
    xlong lID;
    std::vector<TScriptControl> controls;
};

class CScriptMap
{
public:
    CScriptMap() = default;
    /// @param strText  without faults of the language
    explicit CScriptMap(const std::string &strText);

    /// @return null when there is none; names are found without regard to case
    const TScriptWindow *FindWindow(const std::string &strName) const;
    const TScriptWindow *FindWindow(xlong lID) const;
    /// The control's name in its window, that of the library's own parts, or the number.
    std::string ControlName(xlong lWindowID, xlong lID) const;
    std::string WindowName(xlong lID) const;

    std::vector<TScriptWindow> m_Windows;
    std::vector<std::string> m_Files; ///< as written, once each
    std::map<xlong, xlong> m_Loaded;  ///< how many items of a section, by XRES_..., name files

private:
    void Section(CKCBL &kcbl, xlong lSection);
    void Files(CKCBL &kcbl, xlong &lCount);
    void Controls(CKCBL &kcbl, TScriptWindow &window, int nDepth);
    xlong IdOf(const std::string &strName) const;

    std::map<std::string, xlong> m_Ids; ///< by the name in small letters
};

/// A script as it was read, and what is wrong with it.
struct TScript
{
    std::string strText; ///< unpacked
    std::string strWhy;  ///< why there is no text; or empty
    std::vector<TFault> faults;
    bool bLanguage = false; ///< no faults of the language: a map can be made

    bool IsGood() const { return strWhy.empty() && !CountFaults(faults); }
};

/// Reads a text or a packed file of the working directory and checks it.
TScript ReadScript(const std::string &strFile);
