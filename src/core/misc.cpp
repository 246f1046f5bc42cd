#include "tarvix/misc.h"

#include "tarvix/error.h"
#include "tarvix/globals.h"
#include "tarvix/memory.h"
#include "tarvix/strings.h"
#include "tarvix/systemshell.h"
#include "tarvix/version.h"

#include <algorithm>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <time.h>

namespace
{
const xlong s_lNumFlags = 4096;

// The local time of now; false where the platform can't tell it.
bool LocalTime(tm &local)
{
    const time_t tNow = time(nullptr);
    const tm *pLocal = localtime(&tNow);
    if (pLocal)
        local = *pLocal;
    return pLocal != nullptr;
}

bool IsLeapYear(xlong lYear)
{
    return lYear % 4 == 0 && (lYear % 100 != 0 || lYear % 400 == 0);
}

// The flag's byte, or null with a report that names the caller.
unsigned char *FindFlag(xlong lIndex, const char *pszCaller)
{
    if (!glb)
        return nullptr;
    if (lIndex >= 1 && lIndex < s_lNumFlags)
        return &glb->globalVars[lIndex];
    glb->m_Error.SetErrorf("%s: Index is invalid (should be 1-4095)", pszCaller);
    return nullptr;
}

// Two generators whose difference is drawn, seeded anew now and then.
struct TRandom
{
    bool bSeeded;
    xulong ulNextSeed; ///< milliseconds
    xlong lState1;
    xlong lState2;
};

TRandom s_Random;

xlong SeedState()
{
    return (xlong)((xulong)(rand() & 0x7fff) * 2147483562u / 32767u);
}
} // namespace

void GetCurrentDate(TDate *pDate)
{
    tm local;
    if (!pDate || !LocalTime(local))
        return;
    pDate->sSecond = (short)local.tm_sec;
    pDate->sMinute = (short)local.tm_min;
    pDate->sHour = (short)local.tm_hour;
    pDate->sDay = (short)local.tm_mday;
    pDate->sMonth = (short)(local.tm_mon + 1);
    pDate->sYear = (short)(local.tm_year + 1900);
    pDate->sWeekday = (short)((local.tm_wday - 1) % 7 + 1);
    pDate->sYearday = (short)local.tm_yday;
}

xlong VerifyDate(const TDate *pDate)
{
    static const short s_sDays[12] = { 31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31 };
    if (!pDate || pDate->sMonth < 1 || pDate->sMonth > 12)
        return 0;
    const xlong lDays = s_sDays[pDate->sMonth - 1] + (pDate->sMonth == 2 && IsLeapYear(pDate->sYear));
    return pDate->sDay >= 1 && pDate->sDay <= lDays;
}

char *xGetDateString()
{
    tm local;
    char *psz = LocalTime(local) ? (char *)String_Alloc(128) : nullptr;
    if (psz)
        strftime(psz, 128, "%Y-%m-%d", &local);
    return psz;
}

xlong xGetDateInfo(xlong &lSecond, xlong &lMinute, xlong &lHour, xlong &lDay, xlong &lMonth, xlong &lYear,
                   xlong &lWeekday, xlong &lYearday, xlong &lDaylight)
{
    tm local;
    if (!LocalTime(local))
        return 0;
    lSecond = local.tm_sec;
    lMinute = local.tm_min;
    lHour = local.tm_hour;
    lDay = local.tm_mday;
    lMonth = local.tm_mon;
    lYear = local.tm_year;
    lWeekday = local.tm_wday;
    lYearday = local.tm_yday;
    lDaylight = local.tm_isdst;
    return 1;
}

void xSeedRandomizer(xlong lSeed)
{
    srand((unsigned)lSeed);
}

xulong xSysRand()
{
    TRandom &random = s_Random;
    const xulong ulNow = xGetTime();
    if (!random.bSeeded || (xlong)(ulNow - random.ulNextSeed) > 0)
    {
        random.bSeeded = true;
        random.ulNextSeed = ulNow + 1000;
        random.lState1 = SeedState();
        random.lState2 = SeedState();
    }
    random.lState1 = 40014 * random.lState1 - random.lState1 / 53668 * 2147483563;
    random.lState2 = 40692 * random.lState2 - random.lState2 / 52774 * 2147483399;
    xlong lDraw = random.lState1 - random.lState2;
    if (lDraw < 1)
        lDraw += 2147483562;
    // The wrapping of 32 bits leaves a few draws outside the range.
    const double dResult = lDraw * 4.656613e-10 * 32767.0;
    return (xulong)std::clamp(dResult, 0.0, 32767.0);
}

xulong xRand32()
{
    xulong ulResult = 0;
    for (int nShift = 0; nShift < 32; nShift += 8)
        ulResult |= (xSysRand() & 0xff) << nShift;
    return ulResult;
}

xulong xRand(xulong ulLimit)
{
    if (!ulLimit)
        return 0;
    const xulong ulLast = 0xffffffff / ulLimit * ulLimit;
    xulong ulDraw;
    do
        ulDraw = xRand32();
    while (ulDraw > ulLast);
    return ulDraw % ulLimit;
}

void xGetUID(xulong &ulA, xulong &ulB, xulong &ulC)
{
    if (glb)
    {
        memcpy(&ulA, glb->m_ulUIDState, 4);
        if (!++ulA)
            ulA = 1;
        memcpy(glb->m_ulUIDState, &ulA, 4);
    }
    else
    {
        ulA = xRand(32768);
        if (!ulA)
            ulA = 1;
    }
    ulB = xGetProcessId();
    ulC = xRand(32768);
    ulC = (ulC + xRand(32768)) << 10;
    ulC += xRand(32768);
}

xlong GlobalVar_IsTrue(xlong lIndex)
{
    const unsigned char *pFlag = FindFlag(lIndex, "GlobalVar_IsTrue");
    return pFlag && *pFlag;
}

xlong GlobalVar_IsFalse(xlong lIndex)
{
    const unsigned char *pFlag = FindFlag(lIndex, "GlobalVar_IsFalse");
    return pFlag && !*pFlag;
}

void GlobalVar_SetTrue(xlong lIndex)
{
    if (unsigned char *pFlag = FindFlag(lIndex, "GlobalVar_SetTrue"))
        *pFlag = 1;
}

void GlobalVar_SetFalse(xlong lIndex)
{
    if (unsigned char *pFlag = FindFlag(lIndex, "GlobalVar_SetFalse"))
        *pFlag = 0;
}

void xShowVersionInfo(const char *pszVersion, const char *pszBuild)
{
    char *pszText = (char *)String_Alloc(1024);
    if (!pszText)
        return;
    snprintf(pszText, 1024, "%s (%s)\n", pszVersion, pszBuild);
    String_Free(pszText);
}

void xShowVersionInfoTarvix()
{
    xShowVersionInfo("Version Info: Tarvix v2.4", "build " TARVIX_VERSION);
}

xlong TryCreateNewProcess(xlong &lA, xlong &lB)
{
    lA = 1;
    lB = 0;
    return 1;
}

xlong xGetPriority(xlong &lPriority)
{
    lPriority = 50;
    return 1;
}

xlong xSetPriority(xlong lPriority)
{
    return 1;
}

xlong xIncPriority(xlong lBy)
{
    xlong lPriority;
    if (!xGetPriority(lPriority))
        return xErrorTxt("xIncPriority: xGetPriority failed.");
    if (!xSetPriority(std::min<xlong>(lPriority + lBy, 100)))
        return xErrorTxt("xIncPriority: xSetPriority failed.");
    return 1;
}

xlong xDecPriority(xlong lBy)
{
    xlong lPriority;
    if (!xGetPriority(lPriority))
        return xErrorTxt("xDecPriority: xGetPriority failed.");
    if (!xSetPriority(std::max<xlong>(lPriority - lBy, 0)))
        return xErrorTxt("xDecPriority: xSetPriority failed.");
    return 1;
}
