#pragma once

// The whole interface. host.h, the ready start-up, is asked for by name.

#include "tarvix/alpha.h"
#include "tarvix/bitmap.h"
#include "tarvix/dibscreen.h"
#include "tarvix/error.h"
#include "tarvix/file.h"
#include "tarvix/globals.h"
#include "tarvix/llist.h"
#include "tarvix/memory.h"
#include "tarvix/msgsys.h"
#include "tarvix/objpool.h"
#include "tarvix/palette.h"
#include "tarvix/pictype.h"
#include "tarvix/rect.h"
#include "tarvix/screen.h"
#include "tarvix/start.h"
#include "tarvix/strings.h"
#include "tarvix/system.h"
#include "tarvix/timer.h"
#include "tarvix/types.h"
