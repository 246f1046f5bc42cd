// What the tools share: the library without a screen, and one way to fail.
#pragma once

#include "tarvix/globals.h"
#include "tarvix/start.h"
#include "tarvix/strings.h"
#include "tarvix/wholefile.h"

#include <stdio.h>

#include <fstream>
#include <iterator>
#include <string>
#include <vector>

enum
{
    EXIT_GOOD = 0,
    EXIT_BAD = 1,  ///< a file or its contents
    EXIT_USAGE = 2 ///< the command line
};

/// In small letters: names are compared without regard to case.
inline std::string Lower(std::string str)
{
    xStrLowerCase(str.data());
    return str;
}

/// The globals of a program that opens no window.
class CTool
{
public:
    explicit CTool(const char *pszName) : m_pszName(pszName)
    {
        glb = new SGlobals;
        sglb = new SSysGlobals;
        m_bReady = xCreateGlobals() != 0;
    }
    CTool(const CTool &) = delete;
    CTool &operator=(const CTool &) = delete;
    ~CTool()
    {
        xFreeGlobals();
        delete sglb;
        delete glb;
        sglb = nullptr;
        glb = nullptr;
    }

    bool IsReady() const { return m_bReady; }

    /// One line: the program, the file and what is wrong with it.
    int Fail(const std::string &strFile, const std::string &strWhy) const
    {
        fprintf(stderr, "%s: %s%s%s\n", m_pszName, strFile.c_str(), strFile.empty() ? "" : ": ", strWhy.c_str());
        return EXIT_BAD;
    }

    /// The same with the library's last report, or with strOtherwise if there is none.
    int FailWithReport(const std::string &strFile, const std::string &strOtherwise) const
    {
        return Fail(strFile, glb->m_Error.GetErrCode() ? glb->m_Error.GetError(nullptr) : strOtherwise);
    }

    int Usage(const std::string &strWhy) const
    {
        fprintf(stderr, "%s: %s (%s --help tells more)\n", m_pszName, strWhy.c_str(), m_pszName);
        return EXIT_USAGE;
    }

private:
    const char *m_pszName;
    bool m_bReady;
};

/// Prints the usage when that is what was asked for.
inline bool IsHelp(const std::vector<std::string> &args, const char *pszUsage)
{
    if (args.size() != 1 || (args[0] != "--help" && args[0] != "-h"))
        return false;
    fputs(pszUsage, stdout);
    return true;
}

inline bool ReadWhole(const std::string &strPath, std::string &strBytes)
{
    std::ifstream file(strPath, std::ios::binary);
    strBytes.assign(std::istreambuf_iterator<char>(file), {});
    return file.good() || file.eof();
}

/// The whole file or none: a failure leaves the old one as it was.
inline bool WriteWhole(const std::string &strPath, const std::string &strBytes)
{
    CWholeFile whole;
    if (!whole.Begin(strPath.c_str()))
        return false;
    {
        std::ofstream file(whole.GetPath(), std::ios::binary);
        file << strBytes;
        if (!file.flush())
            return false;
    }
    return whole.Commit() != 0;
}
