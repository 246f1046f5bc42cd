#include "core/simd.h"

#ifdef TARVIX_TESTING
xlong s_lSimdLimit = SIMD_ALL;
#endif
