// Paired timing of this library against a peer, for all benchmarks that claim
// a ratio: blocks of both run in turn (A B B A) for nine rounds, and the best
// block of each counts, so that a busy machine slows both or neither.
#pragma once

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <string>
#include <thread>

#if defined(__linux__)
#include <fstream>
#endif

namespace paired
{
constexpr int s_nRounds = 9;
constexpr double s_dBlockSeconds = 0.0006;

/// Keeps the compiler from dropping work whose result nobody reads.
inline void Keep(const void *p)
{
    asm volatile("" : : "r"(p) : "memory");
}

template <class TWork>
double TimeBlock(TWork &work, long lRepeats)
{
    const auto start = std::chrono::steady_clock::now();
    for (long i = 0; i < lRepeats; ++i)
        work();
    const std::chrono::duration<double, std::nano> spent = std::chrono::steady_clock::now() - start;
    return spent.count() / (double)lRepeats;
}

/// How often the work fits into a block.
template <class TWork>
long Repeats(TWork &work)
{
    for (long l = 1;; l *= 2)
    {
        const double dSeconds = TimeBlock(work, l) * (double)l * 1e-9;
        if (dSeconds > s_dBlockSeconds / 4)
            return std::max(1L, (long)((double)l * s_dBlockSeconds / dSeconds));
    }
}

struct TTimes
{
    double dOurs; ///< nanoseconds a call
    double dPeer;
};

template <class TOurs, class TPeer>
TTimes Measure(TOurs ours, TPeer peer)
{
    const long lOurs = Repeats(ours), lPeer = Repeats(peer);
    TTimes best = { 1e30, 1e30 };
    for (int i = 0; i < s_nRounds; ++i)
    {
        best.dOurs = std::min(best.dOurs, TimeBlock(ours, lOurs));
        best.dPeer = std::min(best.dPeer, TimeBlock(peer, lPeer));
        best.dPeer = std::min(best.dPeer, TimeBlock(peer, lPeer));
        best.dOurs = std::min(best.dOurs, TimeBlock(ours, lOurs));
    }
    return best;
}

/// Prints rows and counts the goals that were missed.
class CTable
{
public:
    explicit CTable(const char *pszTitle)
    {
        std::printf("%s\n%s, %u threads\n\n", pszTitle, Machine().c_str(), std::thread::hardware_concurrency());
        std::printf("%-28s %-9s %11s  %-14s %11s %7s %5s\n", "name", "size", "ours ns", "peer", "peer ns", "ratio",
                    "goal");
    }

    /// @param dGoal  least ratio of the peer's time to ours; 0 for none
    void Row(const std::string &strName, const std::string &strSize, TTimes times, const std::string &strPeer,
             double dGoal)
    {
        const double dRatio = times.dPeer / times.dOurs;
        const bool bOk = dRatio >= dGoal;
        m_nMissed += !bOk;
        std::printf("%-28s %-9s %11.1f  %-14s %11.1f %7.2f %5.2f %s\n", strName.c_str(), strSize.c_str(), times.dOurs,
                    strPeer.c_str(), times.dPeer, dRatio, dGoal, bOk ? "ok" : "LOSES");
        std::fflush(stdout);
    }

    /// For a result that differs from the peer's: there is nothing to time then.
    void Differs(const std::string &strName, const std::string &strSize, const std::string &strPeer)
    {
        ++m_nMissed;
        std::printf("%-28s %-9s differs from %s\n", strName.c_str(), strSize.c_str(), strPeer.c_str());
    }

    int Missed() const { return m_nMissed; }

private:
    static std::string Machine()
    {
#if defined(__linux__)
        std::ifstream info("/proc/cpuinfo");
        for (std::string strLine; std::getline(info, strLine);)
            if (strLine.compare(0, 10, "model name") == 0)
                return strLine.substr(strLine.find(':') + 2) + ", gcc " __VERSION__;
#endif
        return "unknown processor";
    }

    int m_nMissed = 0;
};
} // namespace paired
