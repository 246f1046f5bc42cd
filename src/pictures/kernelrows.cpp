#include "pictures/kernelrows.h"

#include <algorithm>
#include <string.h>

namespace
{
// A format is what Load and Store do with the bytes of one pixel.
struct TIndexed
{
    enum
    {
        BYTES = 1
    };
    static void Load(const unsigned char *pPixel, const TRowCall &call, TRGBA &colour)
    {
        colour = call.pColours[*pPixel];
    }
};

struct TWord
{
    enum
    {
        BYTES = 2
    };
    static void Load(const unsigned char *pPixel, const TRowCall &call, TRGBA &colour)
    {
        call.source16.Unpack(LoadWord(pPixel), colour);
    }
    static void Store(unsigned char *pPixel, const TRowCall &call, const TRGBA &colour)
    {
        StoreWord(pPixel, call.target16.Pack(colour));
    }
};

struct TTriple
{
    enum
    {
        BYTES = 3
    };
    static void Load(const unsigned char *pPixel, const TRowCall &call, TRGBA &colour)
    {
        call.source24.Get(pPixel, colour);
    }
    static void Store(unsigned char *pPixel, const TRowCall &call, const TRGBA &colour)
    {
        call.target24.Put(pPixel, colour);
    }
};

// A pair of formats is what Copy does with one pixel.
template <class TSource, class TTarget>
struct TConvert
{
    enum
    {
        FROM = TSource::BYTES,
        TO = TTarget::BYTES
    };
    static void Copy(const unsigned char *pSource, unsigned char *pTarget, const TRowCall &call)
    {
        TRGBA colour;
        TSource::Load(pSource, call, colour);
        TTarget::Store(pTarget, call, colour);
    }
};

template <int BYTES>
struct TSame
{
    enum
    {
        FROM = BYTES,
        TO = BYTES
    };
    static void Copy(const unsigned char *pSource, unsigned char *pTarget, const TRowCall &call)
    {
        memcpy(pTarget, pSource, BYTES);
    }
};

struct TMapWord
{
    enum
    {
        FROM = 1,
        TO = 2
    };
    static void Copy(const unsigned char *pSource, unsigned char *pTarget, const TRowCall &call)
    {
        StoreWord(pTarget, call.pusMap[*pSource]);
    }
};

struct TPackColour
{
    enum
    {
        FROM = 4,
        TO = 2
    };
    static void Copy(const unsigned char *pSource, unsigned char *pTarget, const TRowCall &call)
    {
        StoreWord(pTarget, call.target16.Pack(pSource[0], pSource[1], pSource[2]));
    }
};

struct TMoveWord
{
    enum
    {
        FROM = 2,
        TO = 2
    };
    static void Copy(const unsigned char *pSource, unsigned char *pTarget, const TRowCall &call)
    {
        const xulong ulWord = LoadWord(pSource);
        xulong ulResult = 0;
        for (const TMove &move : call.aMoves)
            ulResult |= (ulWord & move.usMask) << move.ucLeft >> move.ucRight;
        StoreWord(pTarget, (unsigned short)ulResult);
    }
};

struct TKeepKey
{
    enum
    {
        FROM = 3,
        TO = 2
    };
    static void Copy(const unsigned char *pSource, unsigned char *pTarget, const TRowCall &call)
    {
        if (!memcmp(pSource, call.aucKey, FROM))
            StoreWord(pTarget, call.usKeyWord);
        else if (LoadWord(pTarget) == call.usKeyWord)
            StoreWord(pTarget, call.usOtherWord);
    }
};

template <class TPair, bool TRANSPARENT>
void CopyRows(const TRows &area, const TRowCall &call)
{
    for (xlong y = 0; y < area.lHeight; ++y)
    {
        const unsigned char *pSource = area.pSource + y * area.lSourcePitch;
        unsigned char *pTarget = area.pTarget + y * area.lTargetPitch;
        for (xlong x = 0; x < area.lWidth; ++x, pSource += TPair::FROM, pTarget += TPair::TO)
            if (!TRANSPARENT || memcmp(pSource, call.aucKey, TPair::FROM) != 0)
                TPair::Copy(pSource, pTarget, call);
    }
}

void CopyBytes(const TRows &area, const TRowCall &call)
{
    for (xlong y = 0; y < area.lHeight; ++y)
        memcpy(area.pTarget + y * area.lTargetPitch, area.pSource + y * area.lSourcePitch, (size_t)area.lWidth);
}

// One channel of a dithered pixel; the error becomes what the field can't hold.
xulong DitherChannel(const TChannel16 &channel, xulong ulByte, xulong &ulError)
{
    const xulong ulValue = std::min(ulByte + ulError, (xulong)255);
    ulError = ulValue & ((1u << (8 - channel.ucBits)) - 1);
    return channel.Pack(ulValue);
}

void DitherRows(const TRows &area, const TRowCall &call)
{
    const TFormat24 from = call.source24;
    const TFormat16 to = call.target16;
    for (xlong y = 0; y < area.lHeight; ++y)
    {
        const unsigned char *pSource = area.pSource + y * area.lSourcePitch;
        unsigned char *pTarget = area.pTarget + y * area.lTargetPitch;
        xulong ulRed = 0, ulGreen = 0, ulBlue = 0;
        for (xlong x = 0; x < area.lWidth; ++x, pSource += 3, pTarget += 2)
            StoreWord(pTarget, (unsigned short)(DitherChannel(to.red, pSource[from.ucRed], ulRed) |
                                                DitherChannel(to.green, pSource[from.ucGreen], ulGreen) |
                                                DitherChannel(to.blue, pSource[from.ucBlue], ulBlue)));
    }
}

template <bool TRANSPARENT>
TRowFunction Pick(TRowKind kind)
{
    // In the order of TRowKind.
    static constexpr TRowFunction s_apfn[ROW_KINDS] = {
        CopyBytes,
        CopyRows<TSame<1>, TRANSPARENT>,
        CopyRows<TSame<2>, TRANSPARENT>,
        CopyRows<TSame<3>, TRANSPARENT>,
        CopyRows<TConvert<TIndexed, TWord>, TRANSPARENT>,
        CopyRows<TMapWord, TRANSPARENT>,
        CopyRows<TPackColour, false>,
        CopyRows<TConvert<TIndexed, TTriple>, TRANSPARENT>,
        CopyRows<TMoveWord, TRANSPARENT>,
        CopyRows<TConvert<TWord, TTriple>, TRANSPARENT>,
        CopyRows<TConvert<TTriple, TTriple>, TRANSPARENT>,
        CopyRows<TConvert<TTriple, TWord>, TRANSPARENT>,
        DitherRows,
        CopyRows<TKeepKey, false>,
    };
    return s_apfn[kind];
}

} // namespace

TRowFunction PlainRow(TRowKind kind, bool bTransparent)
{
    return bTransparent ? Pick<true>(kind) : Pick<false>(kind);
}
