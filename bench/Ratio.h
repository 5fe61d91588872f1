/// Benchmarks as ratios: ours beside what a user would take instead, measured in turns in one run.
#pragma once

#include <functional>
#include <string>

namespace zk_bench {

/// What a ratio has to be.
enum class EBound {
    eTimesFaster, ///< the peer's time over ours is at least the bound
    eTimesTheTime ///< our time over the peer's is at most the bound
};

/// Registers a pair. Each callable does the whole work once, set-up included only where it belongs to it.
void Add(std::string const & sName, EBound eBound, double dBound, std::function<void()> const & fOurs,
         std::function<void()> const & fPeer);

/// Registers a ratio that is no ratio of times. It is measured once and has to be at most the bound.
void AddFigure(std::string const & sName, double dBound, std::function<double()> const & fRatio);

/// Measures every pair that was registered and prints one line for each:
///
///     ratio Readln, Latin text: 3.10 (at least 2.00) holds
///
/// Both are called in turns, so that what else the machine does falls on both alike, and the medians count. Takes
/// Google Benchmark's arguments.
/// \returns the exit code of the program: 1 when a bound does not hold
int iRun(int iCount, char ** ppArguments);

/// A value that the compiler must not optimise away.
void Keep(void const * pValue);

} // namespace zk_bench
