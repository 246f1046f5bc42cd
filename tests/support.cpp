#include "support.h"

#include "tarvix/strings.h"

std::string TakeString(char *psz)
{
    if (!psz)
        return "(null)";
    std::string str = psz;
    String_Free(psz);
    return str;
}
