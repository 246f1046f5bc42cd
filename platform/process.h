// Starting programs, and the two ways to write their arguments in one line.
#pragma once

#include "platform/text.h"
#include "tarvix/types.h"

/// Splits a command line as Windows programs do: blanks part arguments, quotes
/// keep blanks, a backslash before a quote makes it an ordinary character.
/// @param ppszFirst  goes before the arguments, or null
/// @return a null-ended array in one block to free, null without memory
TARVIX_INTERNAL char **SplitArguments(const char *pszLine, const char *pszFirst);

/// Starts a program that lives on its own.
/// @param ppszArguments  its name first, as for execv; the name may be a path
/// @param pszFolder      to start in, or null
/// @param nWait          milliseconds to wait for a program that ends at once
/// @param pnExit         its exit code, -1 when it is still running, or null
/// @return 0, or the errno of the failed start
int StartProgram(char *const *ppszArguments, const char *pszFolder, int nWait, int *pnExit);

/// Looks for a program on PATH.
/// @param pszFound  PATH_MAX bytes
bool FindOnPath(const char *pszName, char *pszFound);
