#include "bench/Ratio.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <deque>
#include <vector>

namespace zk_bench {

namespace {

constexpr double dSeconds = 3; // for each pair

struct TPair {
    std::string sName;
    EBound eBound;
    double dBound;
    std::function<void()> fOurs;
    std::function<void()> fPeer;
    double dRatio = 0; ///< 0 when it was not measured

    [[nodiscard]] bool fHolds() const { return eBound == EBound::eTimesFaster ? dRatio >= dBound : dRatio <= dBound; }
};

std::deque<TPair> & tGetPairs() {
    static std::deque<TPair> tAll;
    return tAll;
}

/// Milliseconds of one call.
double dTime(std::function<void()> const & fWork) {
    auto const tStart = std::chrono::steady_clock::now();
    fWork();
    return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - tStart).count();
}

double dGetMedian(std::vector<double> & dTimes) {
    auto const pMiddle = dTimes.begin() + static_cast<std::ptrdiff_t>(dTimes.size() / 2);
    std::nth_element(dTimes.begin(), pMiddle, dTimes.end());
    return *pMiddle;
}

void Measure(benchmark::State & tState, TPair & tPair) {
    std::vector<double> dOurs;
    std::vector<double> dPeer;
    for ([[maybe_unused]] auto const & tStep : tState) {
        // Who comes second may find what the first one left in the caches.
        bool const fOursFirst = dOurs.size() % 2 == 0;
        if (fOursFirst) dOurs.push_back(dTime(tPair.fOurs));
        dPeer.push_back(dTime(tPair.fPeer));
        if (!fOursFirst) dOurs.push_back(dTime(tPair.fOurs));
    }
    double const dOursMedian = dGetMedian(dOurs);
    double const dPeerMedian = dGetMedian(dPeer);
    tPair.dRatio = tPair.eBound == EBound::eTimesFaster ? dPeerMedian / dOursMedian : dOursMedian / dPeerMedian;
    tState.counters["ours_ms"] = dOursMedian;
    tState.counters["peer_ms"] = dPeerMedian;
}

} // namespace

void Add(std::string const & sName, EBound eBound, double dBound, std::function<void()> const & fOurs,
         std::function<void()> const & fPeer) {
    TPair & tPair = tGetPairs().emplace_back(TPair{sName, eBound, dBound, fOurs, fPeer});
    benchmark::RegisterBenchmark(sName.c_str(), [&tPair](benchmark::State & tState) { Measure(tState, tPair); })
        ->UseRealTime()
        ->MinTime(dSeconds)
        ->Unit(benchmark::kMillisecond);
}

void AddFigure(std::string const & sName, double dBound, std::function<double()> const & fRatio) {
    TPair & tPair = tGetPairs().emplace_back(TPair{sName, EBound::eTimesTheTime, dBound, {}, {}});
    benchmark::RegisterBenchmark(sName.c_str(), [&tPair, fRatio](benchmark::State & tState) {
        for ([[maybe_unused]] auto const & tStep : tState)
            tPair.dRatio = fRatio();
    })->Iterations(1);
}

int iRun(int iCount, char ** ppArguments) {
    benchmark::Initialize(&iCount, ppArguments);
    benchmark::RunSpecifiedBenchmarks();

    bool fAllHold = true;
    for (TPair const & tPair : tGetPairs()) {
        if (tPair.dRatio == 0) continue; // filtered out
        std::printf("ratio %s: %.2f (%s %.2f) %s\n", tPair.sName.c_str(), tPair.dRatio,
                    tPair.eBound == EBound::eTimesFaster ? "at least" : "at most", tPair.dBound,
                    tPair.fHolds() ? "holds" : "MISSED");
        fAllHold = fAllHold && tPair.fHolds();
    }
    return fAllHold ? 0 : 1;
}

void Keep(void const * pValue) {
    benchmark::DoNotOptimize(pValue);
}

} // namespace zk_bench
