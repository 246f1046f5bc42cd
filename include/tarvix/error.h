#pragma once

#include "tarvix/types.h"

/// Error codes. XERR_TEXT marks a report that carries its own text.
enum
{
    XERR_TEXT = -1,
    XERR_NONE = 0,
    XERR_NOT_IMPLEMENTED = 1,
    XERR_UNDEFINED = 2,
    XERR_SYSTEM = 3,
    XERR_OPEN = 4,
    XERR_END_OF_FILE = 5,
    XERR_READ = 6,
    XERR_WRITE = 7,
    XERR_SEEK = 8,
    XERR_FILE_POS = 9,
    XERR_READ_ONLY = 10,
    XERR_DELETE = 11,
    XERR_NOT_FOUND = 12,
    XERR_RENAME = 13,
    XERR_MEMORY = 14,
    XERR_MEMORY_ENTRY = 15,
    XERR_OVERFLOW_BYTES = 16,
    XERR_SOUND_START = 17,
    XERR_SOUND_FORMAT = 18,
    XERR_SOUND_IN_USE = 19,
    XERR_NOT_WAVE = 20,
    XERR_SAMPLE_NAME = 21,
    XERR_CHANNEL = 22,
    XERR_SOUND_PLAY = 23,
    XERR_PICTURE_FORMAT = 24
};

/// Debug levels, a bit mask; the names are those of the option file.
enum
{
    DBGL_NONE = 0,
    DBGL_MEMORY = 1,
    DBGL_RESDATA = 2,
    DBGL_KCBL = 4,
    DBGL_ALL = -1
};

/// The last failure. A later report overwrites an earlier one. Nothing here
/// owns a text: what is reported must outlive the report. Every operation
/// takes a null object, for reports from before the globals exist.
class TARVIX_API CErrorBase
{
public:
    CErrorBase();

    /// @param plCode  receives m_lSysErrCode; may be null
    /// @return text of the platform's code, null for code 0
    virtual const char *GetSysSpecError(xlong *plCode) = 0;
    virtual xlong GetSysSpecErrCode() = 0;

    /// @return 1
    xlong Clear();
    /// @return lRet; 1 on a null object
    xlong SetError(xlong lCode, xlong lSysCode, xlong lRet, const char *pszFile, xlong lLine);
    /// @param pszText  not copied; null becomes "Undefined error"
    /// @return lRet; 1 on a null object
    xlong SetErrorTxt(const char *pszText, xlong lRet, const char *pszFile, xlong lLine);
    /// Formats into the globals' buffer. A result of 1,949 characters or more
    /// is replaced by a notice.
    /// @return 0; 1 on a null object
    xlong SetErrorf(const char *pszFormat, ...) TARVIX_PRINTF(2, 3);
    /// @param plCode  receives m_lErrCode; may be null
    const char *GetError(xlong *plCode);
    /// Either pointer may be null.
    void GetFileAndLine(const char **ppszFile, xlong *plLine);
    xlong GetErrCode();
    /// Formats the whole report.
    /// @param pszBuffer  large enough for the texts: lSize is not looked at
    /// @return 1; 0 with the buffer untouched when there is no error
    xlong CreateErrorString(char *pszBuffer, xlong lSize);

    xlong m_lErrCode;          ///< XERR_...
    xlong m_lSysErrCode;       ///< the platform's code, 0 for none
    const char *m_pszErrorTxt; ///< not owned
    const char *m_pszFile;     ///< not owned
    xlong m_lLine;
};

class TARVIX_API CError : public CErrorBase
{
public:
    const char *GetSysSpecError(xlong *plCode) override;
    xlong GetSysSpecErrCode() override;
};

/// Stores a code in the globals' error object, if there are globals.
/// @return always 0
TARVIX_API xlong xError_Func(xlong lCode, const char *pszFile, xlong lLine);
/// @param pszText  not copied
/// @return always 0
TARVIX_API xlong xErrorTxt_Func(const char *pszText, const char *pszFile, xlong lLine);

/// The library's own reports carry no place.
#define xError(lCode) xError_Func(lCode, nullptr, 0)
#define xErrorTxt(pszText) xErrorTxt_Func(pszText, nullptr, 0)

/// "[a] b" in a new string; null counts as empty.
/// @return freed by the caller with String_Free; null when memory is exhausted
TARVIX_API char *xErrorMerge(const char *pszA, const char *pszB);

/// Trace output: compiled to nothing.
TARVIX_API void xprintf(const char *pszFile, xlong lLine, void *pObject, xlong lLevel, const char *pszFormat, ...);

/// Reads an option file, one key=value a line. A missing file and bad lines
/// are passed over in silence.
/// @param pfnOption  gets every key that the library does not know, with its
///                   value; both are freed after the call; may be null
TARVIX_API void xGetDebugOptions(const char *pszPath, void (*pfnOption)(char *pszKey, char *pszValue));
/// Non-zero adds source file and line to error strings.
TARVIX_API void xStartStdDebug(xlong lOn);
TARVIX_API void xSetDbgStdOut(void (*pfnOut)(const char *));
TARVIX_API void xSetDbgLvlOut(void (*pfnOut)(const char *));
TARVIX_API void xSetDebugLevel(xlong lLevel);
/// @return 1 if any bit of lMask is set in the level
TARVIX_API xlong xGetDebugLevel(xlong lMask);
/// Deletes DbgStd.txt and DbgLevel.txt where they exist.
TARVIX_API void xDeleteDbgFiles();
