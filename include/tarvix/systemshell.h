#pragma once

#include "tarvix/types.h"

// Process and shell.

/// Opens a program or document. @return 0 with a text
TARVIX_API xlong xExecuteFile(const char *pszFile, const char *pszArgs);
TARVIX_API xlong xPipeExec(const char *pszFile, const char *pszArgs);
/// Opens a page in the default browser.
/// @param pszUrl  a start of ".\" stands for the working directory
TARVIX_API xlong xShowURL(const char *pszUrl);
TARVIX_API xulong xGetProcessId();
/// 1 if there is a window of this title or class.
TARVIX_API int xFindWindow(const char *pszName);
TARVIX_API int xSetForegroundWindow(const char *pszName);
/// @param pszPath  260 bytes
TARVIX_API int xGetStartMenuForUser(char *pszPath);
/// Gives the user's folder too.
TARVIX_API int xGetStartMenuForAllUsers(char *pszPath);

enum eShortCutFlags
{
    SHORTCUT_CREATE = 1, ///< make it where it is missing
    SHORTCUT_UPDATE = 2  ///< change the one that is there
};

enum eShortReturnFlags
{
    SHORTCUT_FAILED = 0, ///< with a text, unless the flags forbade what was needed
    SHORTCUT_CREATED = 1,
    SHORTCUT_UPDATED = 2,
    SHORTCUT_UNCHANGED = 3 ///< it points there already
};

/// Creates or updates a link of the shell.
/// @param pszLink    the link file, with the extension that the shell wants
///                   (".lnk", elsewhere ".desktop")
/// @param pszTarget  what it opens
/// @param pszText    its description; may be null
TARVIX_API eShortReturnFlags xCreteOrUpdate_ShortCut(const char *pszLink, const char *pszTarget, const char *pszText,
                                                     eShortCutFlags eFlags);
/// "a.b.c.d" of this machine, empty on failure; in a static buffer. Sockets
/// must have been started by the host.
TARVIX_API char *xGetMachineIP();
/// @param pszGuid  129 bytes
TARVIX_API int xCreateGuid(char *pszGuid);
