#include "core/filefault.h"

#ifdef TARVIX_TESTING
namespace
{
xlong s_lFailAt = 0;
bool s_bFailed = false;
} // namespace

void FileFailAt(xlong lCount)
{
    s_lFailAt = lCount;
    s_bFailed = false;
}

bool FileFailed()
{
    return s_bFailed;
}

bool FailsFileCall()
{
    if (!s_lFailAt || --s_lFailAt)
        return false;
    return s_bFailed = true;
}
#endif
