#pragma once

#include "tarvix/types.h"

// Byte order. Data files are big-endian; both directions are one swap.
TARVIX_API xulong XULONG_FromProcToStd(xulong ulValue);
TARVIX_API xulong XULONG_FromStdToProc(xulong ulValue);
TARVIX_API unsigned short XUWORD_FromProcToStd(unsigned short usValue);
TARVIX_API unsigned short XUWORD_FromStdToProc(unsigned short usValue);
TARVIX_API float XFLOAT_FromProcToStd(float fValue);
TARVIX_API float XFLOAT_FromStdToProc(float fValue);
TARVIX_API double XDOUBLE_FromProcToStd(double dValue);
TARVIX_API double XDOUBLE_FromStdToProc(double dValue);
