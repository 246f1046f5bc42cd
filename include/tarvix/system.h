#pragma once

// What hosts ask the system for, by subject.

#include "tarvix/byteorder.h"
#include "tarvix/crc.h"
#include "tarvix/crypt.h"
#include "tarvix/misc.h"
#include "tarvix/systemdirs.h"
#include "tarvix/systemfiles.h"
#include "tarvix/systemshell.h"
