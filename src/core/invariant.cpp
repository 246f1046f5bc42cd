#include "core/invariant.h"

#ifdef TARVIX_INVARIANTS
#include <stdio.h>
#include <stdlib.h>

void InvariantFailed(const char *pszFile, int nLine, const char *pszText)
{
    // Not through the debug files: the state that failed may be theirs.
    fprintf(stderr, "%s:%d: invariant broken: %s\n", pszFile, nLine, pszText);
    abort();
}
#endif
