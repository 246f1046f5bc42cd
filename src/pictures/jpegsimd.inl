// Steps of the JPEG reader for one width of registers. V, STEP and OP(name) are
// the register, the attributes of a function and the intrinsic of a name.

// One pass of the transform on rows that are interleaved in pairs. It is a sum
// of products throughout, so any order gives the same 32 bits.
STEP void Butterfly(V e04, V e26, V o13, V o57, V round, V *pOut)
{
#define PAIR(a, b) OP(set1_epi32)((int)((unsigned)(a)&0xffff) | (int)((unsigned)(b) << 16))
    const V even0 = OP(add_epi32)(OP(madd_epi16)(e04, PAIR(8192, 8192)), round);
    const V even1 = OP(add_epi32)(OP(madd_epi16)(e04, PAIR(8192, -8192)), round);
    const V even2 = OP(madd_epi16)(e26, PAIR(4433, 4433 - 15137));
    const V even3 = OP(madd_epi16)(e26, PAIR(4433 + 6270, 4433));
    const V odd0 = OP(add_epi32)(OP(madd_epi16)(o13, PAIR(2260, -6436)), OP(madd_epi16)(o57, PAIR(9633, -11363)));
    const V odd1 = OP(add_epi32)(OP(madd_epi16)(o13, PAIR(6437, -11362)), OP(madd_epi16)(o57, PAIR(2261, 9633)));
    const V odd2 = OP(add_epi32)(OP(madd_epi16)(o13, PAIR(9633, -2259)), OP(madd_epi16)(o57, PAIR(-11362, -6436)));
    const V odd3 = OP(add_epi32)(OP(madd_epi16)(o13, PAIR(11363, 9633)), OP(madd_epi16)(o57, PAIR(6437, 2260)));
#undef PAIR
    const V sum0 = OP(add_epi32)(even0, even3), sum3 = OP(sub_epi32)(even0, even3);
    const V sum1 = OP(add_epi32)(even1, even2), sum2 = OP(sub_epi32)(even1, even2);
    pOut[0] = OP(add_epi32)(sum0, odd3);
    pOut[7] = OP(sub_epi32)(sum0, odd3);
    pOut[1] = OP(add_epi32)(sum1, odd2);
    pOut[6] = OP(sub_epi32)(sum1, odd2);
    pOut[2] = OP(add_epi32)(sum2, odd1);
    pOut[5] = OP(sub_epi32)(sum2, odd1);
    pOut[3] = OP(add_epi32)(sum3, odd0);
    pOut[4] = OP(sub_epi32)(sum3, odd0);
}

// What chroma adds to luma, 16 bits each.
struct TTerms
{
    V red;
    V green;
    V blue;
};

// x * lFactor / 65536, rounded.
STEP V Scale(V x, short sFactor)
{
    const V twice = OP(mulhi_epi16)(OP(add_epi16)(x, x), OP(set1_epi16)(sFactor));
    return OP(srai_epi16)(OP(add_epi16)(twice, OP(set1_epi16)(1)), 1);
}

// Whole multiples of 65536 are taken out of the factors, which then have 16 bits.
STEP TTerms Terms(V cb, V cr)
{
    cb = OP(sub_epi16)(cb, OP(set1_epi16)(128));
    cr = OP(sub_epi16)(cr, OP(set1_epi16)(128));
    TTerms terms;
    terms.red = OP(add_epi16)(cr, Scale(cr, 91881 - 65536));
    terms.blue = OP(add_epi16)(OP(add_epi16)(cb, cb), Scale(cb, (short)(116130 - 2 * 65536)));
    const V factors = OP(set1_epi32)((int)((unsigned)-22554 & 0xffff) | (65536 - 46802) << 16);
    const V half = OP(set1_epi32)(32768);
    const V low = OP(add_epi32)(OP(madd_epi16)(OP(unpacklo_epi16)(cb, cr), factors), half);
    const V high = OP(add_epi32)(OP(madd_epi16)(OP(unpackhi_epi16)(cb, cr), factors), half);
    terms.green = OP(sub_epi16)(OP(packs_epi32)(OP(srai_epi32)(low, 16), OP(srai_epi32)(high, 16)), cr);
    return terms;
}

struct TBytes
{
    V red;
    V green;
    V blue;
};

// Luma's bytes with the terms for their lower and upper halves.
STEP TBytes Pixels(V luma, const TTerms &low, const TTerms &high)
{
    const V zero = OP(set1_epi16)(0);
    const V lumaLow = OP(unpacklo_epi8)(luma, zero), lumaHigh = OP(unpackhi_epi8)(luma, zero);
    TBytes bytes;
    bytes.red = OP(packus_epi16)(OP(add_epi16)(lumaLow, low.red), OP(add_epi16)(lumaHigh, high.red));
    bytes.green = OP(packus_epi16)(OP(add_epi16)(lumaLow, low.green), OP(add_epi16)(lumaHigh, high.green));
    bytes.blue = OP(packus_epi16)(OP(add_epi16)(lumaLow, low.blue), OP(add_epi16)(lumaHigh, high.blue));
    return bytes;
}

STEP TBytes PixelsFull(V luma, V cb, V cr)
{
    const V zero = OP(set1_epi16)(0);
    return Pixels(luma, Terms(OP(unpacklo_epi8)(cb, zero), OP(unpacklo_epi8)(cr, zero)),
                  Terms(OP(unpackhi_epi8)(cb, zero), OP(unpackhi_epi8)(cr, zero)));
}

// Chroma as 16-bit values, one for two pixels.
STEP TBytes PixelsHalf(V luma, V cb, V cr)
{
    const TTerms terms = Terms(cb, cr);
    const TTerms low = { OP(unpacklo_epi16)(terms.red, terms.red), OP(unpacklo_epi16)(terms.green, terms.green),
                         OP(unpacklo_epi16)(terms.blue, terms.blue) };
    const TTerms high = { OP(unpackhi_epi16)(terms.red, terms.red), OP(unpackhi_epi16)(terms.green, terms.green),
                          OP(unpackhi_epi16)(terms.blue, terms.blue) };
    return Pixels(luma, low, high);
}
