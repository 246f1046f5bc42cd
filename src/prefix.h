// Put before every source of the library. All memory comes from the private
// heap and all files through CFile, so a slip to the runtime does not compile.
#pragma once

#include <errno.h>
#include <limits.h>
#include <math.h>
#include <stdarg.h>
#include <stddef.h>
#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>
#include <time.h>

#include <algorithm>
#include <new>
#include <type_traits>
#include <utility>

#include <immintrin.h>

#ifdef TARVIX_PLATFORM_CALLS
#include "win/win32.h"
#endif

#pragma GCC poison malloc calloc realloc free strdup
#if !defined(TARVIX_PLATFORM_CALLS) && !defined(TARVIX_MAY_FOPEN)
#pragma GCC poison fopen
#endif
