#include "tarvix/byteorder.h"

#include "tarvix/globals.h"

#include <algorithm>
#include <string.h>

namespace
{
const unsigned char s_ucBigEndian = 1;
const unsigned char s_ucLittleEndian = 2;

unsigned char MeasureEndian()
{
    const unsigned char ucBytes[2] = { 0, 1 };
    unsigned short us;
    memcpy(&us, ucBytes, 2);
    return us == 1 ? s_ucBigEndian : s_ucLittleEndian;
}

bool IsBigEndian()
{
    if (!glb)
        return MeasureEndian() == s_ucBigEndian;
    if (!glb->m_bEndian)
        glb->m_bEndian = MeasureEndian();
    return glb->m_bEndian == s_ucBigEndian;
}

template <class T>
T Swap(T value)
{
    if (IsBigEndian())
        return value;
    unsigned char ucBytes[sizeof(T)];
    memcpy(ucBytes, &value, sizeof(T));
    std::reverse(ucBytes, ucBytes + sizeof(T));
    memcpy(&value, ucBytes, sizeof(T));
    return value;
}
} // namespace

xulong XULONG_FromProcToStd(xulong ulValue)
{
    return Swap(ulValue);
}

xulong XULONG_FromStdToProc(xulong ulValue)
{
    return Swap(ulValue);
}

unsigned short XUWORD_FromProcToStd(unsigned short usValue)
{
    return Swap(usValue);
}

unsigned short XUWORD_FromStdToProc(unsigned short usValue)
{
    return Swap(usValue);
}

float XFLOAT_FromProcToStd(float fValue)
{
    return Swap(fValue);
}

float XFLOAT_FromStdToProc(float fValue)
{
    return Swap(fValue);
}

double XDOUBLE_FromProcToStd(double dValue)
{
    return Swap(dValue);
}

double XDOUBLE_FromStdToProc(double dValue)
{
    return Swap(dValue);
}
