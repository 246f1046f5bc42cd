#pragma once

#include "tarvix/memory.h"
#include "tarvix/types.h"

/// A file that appears whole or not at all: it is written beside its target,
/// under a name that was free, and takes the target's place when it is complete.
/// Whatever fails before, a full disk among it, leaves the old file as it was.
///
///     CWholeFile whole;
///     CFile file;
///     if (!whole.Begin("save.dat") || !file.Open(whole.GetPath(), FILE_WRITE) || !file.Write(p, ulSize) ||
///         !file.Flush())
///         return 0;
///     file.Close();
///     return whole.Commit();
///
/// Links are followed, and the new file has the mode of the old one. Devices
/// and pipes get the bytes as they come.
class TARVIX_API CWholeFile
{
public:
    TARVIX_HEAP_CLASS

    CWholeFile();
    CWholeFile(const CWholeFile &) = delete;
    CWholeFile &operator=(const CWholeFile &) = delete;
    /// What was begun and not committed goes. The file has to be closed before.
    ~CWholeFile();

    /// @param pszPath  on Linux its last part is taken as it is written: a name
    ///                 in another case is another file
    /// @return 0 with a report: the folder is missing or can't be written to
    xlong Begin(const char *pszPath);
    /// The same, and makes missing folders.
    xlong BeginWithDirs(const char *pszPath);
    /// Where to write, until Commit; null without Begin.
    const char *GetPath() const;
    /// Brings the closed file to the disk and to its name.
    /// @return 0 with a report, and the old file as it was
    xlong Commit();
    /// Drops what was begun.
    void Abandon();

private:
    char *m_pszTarget; // behind links; owned
    char *m_pszPart;   // owned; null when the target is written directly
};
