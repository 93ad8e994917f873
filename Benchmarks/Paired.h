// Two ways to do the same, measured in turns: what disturbs one run disturbs the other just as well, which
// separate benchmarks of a few milliseconds do not have.
#pragma once

#include <benchmark/benchmark.h>

#include <algorithm>
#include <ctime>
#include <limits>

namespace orvan {

// Seconds of processor time of this thread: what other processes do meanwhile does not count.
inline double processorSeconds() {
    timespec now{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

// Both are functions that answer whether they did it right. The counters "ours" and "peer" are the seconds of
// the fastest run of each.
template <class Ours, class Peer>
void measurePaired(benchmark::State& state, Ours ours, Peer peer) {
    const auto seconds = [&state](auto& run, double fastest) {
        const double start = processorSeconds();
        const bool isRight = run();
        const double taken = processorSeconds() - start;
        if (!isRight) state.SkipWithError("the result is wrong");
        return std::min(taken, fastest);
    };
    double fastestOurs = std::numeric_limits<double>::max();
    double fastestPeer = fastestOurs;
    while (state.KeepRunning()) {
        fastestOurs = seconds(ours, fastestOurs);
        fastestPeer = seconds(peer, fastestPeer);
    }
    state.counters["ours"] = fastestOurs;
    state.counters["peer"] = fastestPeer;
}

} // namespace orvan
