// Scripts that try every word of the grammar, and what has to become of them.
#pragma once

#include <string>
#include <vector>

/// A script that is right but for one thing. It names the files pic.bmp and
/// font.xbf, which have to be there.
struct TGrammarCase
{
    std::string strName;   ///< what is tried, and how
    std::string strScript; ///< with the window WIN
    bool bAccepted;
    bool bWarning; ///< accepted, and something in it is passed over
};

/// The item that stands behind the tried one in each section: where it is not
/// read, the section has ended before it.
const char s_szGrammarLast[] = "Last";

/// Each word and item as it should be, with one string too few and one too
/// many, with each string wrong, and where it may not stand.
std::vector<TGrammarCase> MakeGrammarCases();
