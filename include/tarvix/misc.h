#pragma once

#include "tarvix/types.h"

// Dates, numbers, flags.

struct TDate
{
    short sSecond;
    short sMinute;
    short sHour;
    short sDay;     ///< of the month, from 1
    short sMonth;   ///< 1 to 12
    short sYear;    ///< full
    short sWeekday; ///< 1 Monday to 6 Saturday; Sunday gives 0
    short sYearday; ///< from 0
};

TARVIX_API void GetCurrentDate(TDate *pDate);
/// 1 if month and day exist in that year; the time is not looked at.
TARVIX_API xlong VerifyDate(const TDate *pDate);
/// "2004-03-31" in a new string for String_Free.
TARVIX_API char *xGetDateString();
/// The fields of localtime in their order.
TARVIX_API xlong xGetDateInfo(xlong &lSecond, xlong &lMinute, xlong &lHour, xlong &lDay, xlong &lMonth, xlong &lYear,
                              xlong &lWeekday, xlong &lYearday, xlong &lDaylight);
TARVIX_API void xSeedRandomizer(xlong lSeed);
/// @return 0 to 32,767
TARVIX_API xulong xSysRand();
TARVIX_API xulong xRand32();
/// @return 0 to ulLimit - 1; 0 for 0
TARVIX_API xulong xRand(xulong ulLimit);
/// A unique id of three parts: counter, process, random.
TARVIX_API void xGetUID(xulong &ulA, xulong &ulB, xulong &ulC);
/// Flags 1 to 4,095; another index reports.
TARVIX_API xlong GlobalVar_IsTrue(xlong lIndex);
TARVIX_API xlong GlobalVar_IsFalse(xlong lIndex);
TARVIX_API void GlobalVar_SetTrue(xlong lIndex);
TARVIX_API void GlobalVar_SetFalse(xlong lIndex);

// What other systems answer for; here it is fixed.

/// Sets lA to 1 and lB to 0.
TARVIX_API xlong TryCreateNewProcess(xlong &lA, xlong &lB);
/// Always 50.
TARVIX_API xlong xGetPriority(xlong &lPriority);
/// Does nothing.
TARVIX_API xlong xSetPriority(xlong lPriority);
TARVIX_API xlong xIncPriority(xlong lBy);
TARVIX_API xlong xDecPriority(xlong lBy);
/// Has no visible effect.
TARVIX_API void xShowVersionInfo(const char *pszVersion, const char *pszBuild);
TARVIX_API void xShowVersionInfoTarvix();
