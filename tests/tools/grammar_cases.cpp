// Writes the scripts that try the grammar into a folder, one each, with a list:
// file, what tools have to say (good, warning or bad), and what is tried.
#include "gui/resources/grammarcases.h"

#include <stdio.h>

#include <fstream>

int main(int argc, char **argv)
{
    if (argc != 2)
    {
        fprintf(stderr, "usage: grammar_cases FOLDER\n");
        return 2;
    }
    const std::string strFolder = std::string(argv[1]) + "/";
    std::ofstream list(strFolder + "list", std::ios::binary);
    int nCase = 0;
    for (const TGrammarCase &c : MakeGrammarCases())
    {
        const std::string strFile = std::to_string(++nCase) + ".rc";
        std::ofstream(strFolder + strFile, std::ios::binary) << c.strScript;
        list << strFile << ' ' << (!c.bAccepted ? "bad" : c.bWarning ? "warning" : "good") << ' ' << c.strName << '\n';
    }
    return list.flush() ? 0 : 1;
}
