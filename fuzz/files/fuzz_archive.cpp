// Any bytes as an archive; names stay below the folder.
#include "fuzz/support.h"

#include "tarvix/archive.h"

#include <filesystem>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *pData, size_t ulSize)
{
    FuzzStart();
    static CFuzzFile s_File(".arc");
    const std::string strArchive = s_File.Write(pData, ulSize), strFolder = strArchive + ".d/in/side";
    CArchive archive;
    archive.SetSafeNames(1);
    archive.ExtractArchive(strArchive.c_str(), strFolder.c_str(), 0);
    // Nothing may lie outside.
    size_t ulEntries = 0;
    if (std::filesystem::exists(strArchive + ".d"))
        for (const auto &entry : std::filesystem::recursive_directory_iterator(strArchive + ".d"))
            ulEntries += entry.path().string().compare(0, strFolder.size(), strFolder) != 0;
    std::filesystem::remove_all(strArchive + ".d");
    if (ulEntries > 1)
        abort();
    return 0;
}
