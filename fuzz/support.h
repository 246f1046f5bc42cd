// What the fuzzers share.
#pragma once

#include "tarvix/globals.h"
#include "tarvix/start.h"

#include <stddef.h>
#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <unistd.h>

#include <string>

/// The library's globals, made once.
inline void FuzzStart()
{
    if (glb)
        return;
    glb = new SGlobals;
    sglb = new SSysGlobals;
    if (!xCreateGlobals())
        abort();
}

/// A file with the input, on a memory file system where there is one. It is
/// overwritten by the next input and removed at the end.
class CFuzzFile
{
public:
    explicit CFuzzFile(const char *pszExtension)
    {
        const char *pszFolder = access("/dev/shm", W_OK) == 0 ? "/dev/shm" : "/tmp";
        m_strPath = std::string(pszFolder) + "/tarvix-fuzz-" + std::to_string(getpid()) + pszExtension;
    }
    ~CFuzzFile() { remove(m_strPath.c_str()); }

    const char *Write(const uint8_t *pData, size_t ulSize)
    {
        FILE *pFile = fopen(m_strPath.c_str(), "wb");
        if (!pFile || fwrite(pData, 1, ulSize, pFile) != ulSize || fclose(pFile))
            abort();
        return m_strPath.c_str();
    }

private:
    std::string m_strPath;
};
