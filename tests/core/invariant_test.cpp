#include "core/invariant.h"

#include <gtest/gtest.h>

// A program that aborts under Wine asks for a debugger.
#ifndef _WIN32
TEST(InvariantDeathTest, EndsTheProgramWithPlaceAndText)
{
    const int nPieces = 2;
    TARVIX_INVARIANT(nPieces == 2);
    EXPECT_DEATH(TARVIX_INVARIANT(nPieces == 3), "invariant_test\\.cpp:[0-9]+: invariant broken: nPieces == 3");
}
#endif
