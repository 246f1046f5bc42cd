#pragma once

#include <stddef.h>
#include <string.h>

/// Every block tells by the four bytes before it which layer made it. They end
/// a header that keeps the caller's pointer as aligned as a block of the
/// system layer, which on 32 bits is no more than the tag itself.
const size_t s_ulTagHeader = sizeof(void *) == 4 ? 4 : 16;
const char s_szPlainTag[] = "XFAL";
const char s_szTrackedTag[] = "XCAL";

inline bool HasTag(const void *pMem, const char *pszTag)
{
    return !memcmp((const char *)pMem - 4, pszTag, 4);
}

/// @return the caller's pointer
inline char *SetTag(void *pBlock, const char *pszTag)
{
    char *const pMem = (char *)pBlock + s_ulTagHeader;
    memcpy(pMem - 4, pszTag, 4);
    return pMem;
}

/// Clears the tag, so that a second free does not find it again. @return the system layer's block
inline void *TakeTag(void *pMem)
{
    memset((char *)pMem - 4, 0, 4);
    return (char *)pMem - s_ulTagHeader;
}
