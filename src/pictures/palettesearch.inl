// The search loops, included once for each width of vector. The including file
// defines SEARCH_TARGET and the struct TVec with its operations.

// Key of an entry: 256 times its distance, plus its index. The least key is the
// nearest entry, the lowest index first.
template <bool SECOND>
struct TSearch
{
    typedef TVec::T T;

    SEARCH_TARGET explicit TSearch(const TRGBA &colour)
        : redBlue(TVec::Set(colour.ucRed << 4 | colour.ucBlue << 20)), green(TVec::Set(colour.ucGreen << 4)),
          best(TVec::Set(INT_MAX)), second(best)
    {
    }
    // Channels times 16, so that the squares come out times 256.
    SEARCH_TARGET T Keys(const TRGBA *pEntries, T index) const
    {
        const T entries = TVec::Load(pEntries);
        const T a = TVec::Sub16(TVec::RedBlue(entries), redBlue), b = TVec::Sub16(TVec::Green(entries), green);
        return TVec::Add(TVec::Add(TVec::Madd(a, a), index), TVec::Madd(b, b));
    }
    SEARCH_TARGET void Take(T key)
    {
        if (SECOND)
            second = TVec::Min(second, TVec::Max(best, key));
        best = TVec::Min(best, key);
    }

    T redBlue, green;
    T best, second;
};

template <bool SECOND>
SEARCH_TARGET xulong SearchEntries(const TRGBA *pColours, xlong lFirst, xlong lLast, const TRGBA &colour,
                                   xulong &ulSecond)
{
    typedef TVec::T T;
    TSearch<SECOND> search(colour);
    xlong i = lFirst;
    for (; i + TVec::LANES <= lLast; i += TVec::LANES)
        search.Take(search.Keys(pColours + i, TVec::Load(s_Indices.an + i)));
    if (i < lLast)
    {
        // The last entries once more, those that were seen without a chance.
        const xlong lAt = lLast - TVec::LANES;
        const T index = TVec::Load(s_Indices.an + lAt);
        const T seen = TVec::ShiftRight(TVec::Greater(TVec::Set(i), index), 1);
        search.Take(TVec::Or(search.Keys(pColours + lAt, index), seen));
    }
    if (!SECOND)
        return (xulong)TVec::Least(search.best);
    int anKeys[2 * TVec::LANES];
    TVec::Store(anKeys, search.best);
    TVec::Store(anKeys + TVec::LANES, search.second);
    int nBest = INT_MAX, nSecond = INT_MAX;
    for (const int nKey : anKeys)
    {
        nSecond = std::min(nSecond, std::max(nBest, nKey));
        nBest = std::min(nBest, nKey);
    }
    ulSecond = (xulong)nSecond;
    return (xulong)nBest;
}

// Distances less the square of the colour, which is the same for all entries.
SEARCH_TARGET xulong SearchPrepared(const short *psRedGreen, const short *psBlue, const int *pnSquares, xlong lEntries,
                                    xulong ulRed, xulong ulGreen, xulong ulBlue)
{
    typedef TVec::T T;
    const T redGreen = TVec::Set((int)(ulRed << 7 | ulGreen << 23)), blue = TVec::Set((int)(ulBlue << 7));
    T best = TVec::Set(INT_MAX), other = best;
    for (xlong i = 0; i < lEntries; i += 2 * TVec::LANES)
    {
        const xlong j = i + TVec::LANES;
        best = TVec::Min(
            best, TVec::Sub(TVec::Load(pnSquares + i), TVec::Add(TVec::Madd(redGreen, TVec::Load(psRedGreen + 2 * i)),
                                                                 TVec::Madd(blue, TVec::Load(psBlue + 2 * i)))));
        other = TVec::Min(
            other, TVec::Sub(TVec::Load(pnSquares + j), TVec::Add(TVec::Madd(redGreen, TVec::Load(psRedGreen + 2 * j)),
                                                                  TVec::Madd(blue, TVec::Load(psBlue + 2 * j)))));
    }
    return (xulong)TVec::Least(TVec::Min(best, other)) & 255;
}
