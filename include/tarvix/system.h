#pragma once

#include "tarvix/types.h"

class CFile;
class CLList;

// Files. Results are 1 or 0; what reports is said.

/// 1 if the file can be opened for reading.
TARVIX_API xlong xFileExists(const char *pszPath);
/// @return 0 with code 10 when access is denied, otherwise code 11
TARVIX_API xlong xFileDelete(const char *pszPath);
/// The new name comes first.
/// @return 0 with code 12 when the old one is missing, otherwise code 13
TARVIX_API xlong xFileRename(const char *pszNewName, const char *pszOldName);
TARVIX_API xlong xFileSize(const char *pszPath, xulong *pulSize);
/// Makes missing directories of pszTo. On failure pszTo may be left behind, incomplete.
TARVIX_API xlong xCopyFile(const char *pszTo, const char *pszFrom);
TARVIX_API xlong xReadFile(const char *pszPath, void *pBuf, xulong ulLen);
TARVIX_API xlong xWriteFile(const char *pszPath, const void *pBuf, xulong ulLen);
/// Time of the last write, in 100 ns since 1601, as low and high part.
TARVIX_API xlong xFileGetLastWriteTime(const char *pszPath, xulong &ulLow, xulong &ulHigh);
/// Makes an existing file readable and writable for its owner.
TARVIX_API void xRemoveReadOnly(const char *pszPath);
/// Scrambles or unscrambles in place: each byte is combined with 0x3C.
TARVIX_API void xDecrypt(void *pData, xulong ulSize);
/// Tests the end of a buffer for the mark of a scrambled file.
TARVIX_API xlong xIsCrypt(const void *pData, xulong ulSize);
/// Tests an open file and leaves it at its start.
TARVIX_API xlong xIsFileCrypt(CFile *pFile);
/// 32-bit CRC, top bit first, from all ones, inverted at the end. Bytes are
/// signed, and the table is built only when the stored polynomial equals
/// ulPoly already: for a defined CRC use xCalcFileCrc.
TARVIX_API xlong xCalcCrc(const signed char *pData, xulong ulSize, xulong *pulCrc, xulong ulPoly);
/// The same over a file's unsigned bytes with a table that is always built. The last error is cleared.
TARVIX_API xlong xCalcFileCrc(const char *pszPath, xulong *pulCrc, xulong ulPoly);

// Directories and drives.

/// Creates all directories of a file's path; the working directory is kept.
/// @return 0 with a text
TARVIX_API xlong xCreateDirsForFile(const char *pszPath);
/// @return new string for String_Free
TARVIX_API char *xGetWorkingDirectory();
TARVIX_API xlong xSetWorkingDirectory(const char *pszDir);
TARVIX_API xlong xDoDirectoryExists(const char *pszDir);
TARVIX_API int xFolderExists(const char *pszPath);
/// One place to save the working directory; there is no nesting.
TARVIX_API xlong xSys_SaveCurrDir();
TARVIX_API xlong xSys_RestoreCurrDir();
TARVIX_API xlong xSys_SetCurrDir(const char *pszDir);
/// Appends a new string "C:\ (Label)" for each drive letter of the range.
TARVIX_API void xAddDrives(CLList *pList, char cFirst, char cLast);
/// Appends a new string for each match, in the platform's order. Hidden,
/// system and temporary entries are passed over.
/// @param pszPattern  with * and ?
/// @param nFullPath   non-zero puts the directory before the name
TARVIX_API void xAddFolderContent(CLList *pList, const char *pszDir, const char *pszPattern, int nFiles, int nFolders,
                                  int nFullPath);

// Process and shell.

/// Opens a program or document. @return 0 with a text
TARVIX_API xlong xExecuteFile(const char *pszFile, const char *pszArgs);
TARVIX_API xlong xPipeExec(const char *pszFile, const char *pszArgs);
/// Opens a page in the default browser.
/// @param pszUrl  a start of ".\" stands for the working directory
TARVIX_API xlong xShowURL(const char *pszUrl);
TARVIX_API xulong xGetProcessId();
/// Sets lA to 1 and lB to 0.
TARVIX_API xlong TryCreateNewProcess(xlong &lA, xlong &lB);
/// Always 50.
TARVIX_API xlong xGetPriority(xlong &lPriority);
/// Does nothing.
TARVIX_API xlong xSetPriority(xlong lPriority);
TARVIX_API xlong xIncPriority(xlong lBy);
TARVIX_API xlong xDecPriority(xlong lBy);
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
/// Has no visible effect.
TARVIX_API void xShowVersionInfo(const char *pszVersion, const char *pszBuild);
TARVIX_API void xShowVersionInfoTarvix();

// Dates, numbers, flags.

struct TDate
{
    short sSecond;
    short sMinute;
    short sHour;
    short sDay;     ///< of the month, from 1
    short sMonth;   ///< 1 to 12
    short sYear;    ///< full
    short sWeekday; ///< 1 Monday to 6 Saturday; Sunday gives 0
    short sYearday; ///< from 0
};

TARVIX_API void GetCurrentDate(TDate *pDate);
/// 1 if month and day exist in that year; the time is not looked at.
TARVIX_API xlong VerifyDate(const TDate *pDate);
/// "2004-03-31" in a new string for String_Free.
TARVIX_API char *xGetDateString();
/// The fields of localtime in their order.
TARVIX_API xlong xGetDateInfo(xlong &lSecond, xlong &lMinute, xlong &lHour, xlong &lDay, xlong &lMonth, xlong &lYear,
                              xlong &lWeekday, xlong &lYearday, xlong &lDaylight);
TARVIX_API void xSeedRandomizer(xlong lSeed);
/// @return 0 to 32,767
TARVIX_API xulong xSysRand();
TARVIX_API xulong xRand32();
/// @return 0 to ulLimit - 1; 0 for 0
TARVIX_API xulong xRand(xulong ulLimit);
/// A unique id of three parts: counter, process, random.
TARVIX_API void xGetUID(xulong &ulA, xulong &ulB, xulong &ulC);
/// Flags 1 to 4,095; another index reports.
TARVIX_API xlong GlobalVar_IsTrue(xlong lIndex);
TARVIX_API xlong GlobalVar_IsFalse(xlong lIndex);
TARVIX_API void GlobalVar_SetTrue(xlong lIndex);
TARVIX_API void GlobalVar_SetFalse(xlong lIndex);

// Byte order. Data files are big-endian; both directions are one swap.
TARVIX_API xulong XULONG_FromProcToStd(xulong ulValue);
TARVIX_API xulong XULONG_FromStdToProc(xulong ulValue);
TARVIX_API unsigned short XUWORD_FromProcToStd(unsigned short usValue);
TARVIX_API unsigned short XUWORD_FromStdToProc(unsigned short usValue);
TARVIX_API float XFLOAT_FromProcToStd(float fValue);
TARVIX_API float XFLOAT_FromStdToProc(float fValue);
TARVIX_API double XDOUBLE_FromProcToStd(double dValue);
TARVIX_API double XDOUBLE_FromStdToProc(double dValue);
