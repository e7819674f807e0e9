#pragma once

#include <benchmark/benchmark.h>
#include <algorithm>
#include <chrono>
#include <vector>

namespace tavix::bench {

// Times our path and its baseline alternately, once each per iteration and
// each first in every other iteration, so that both see the same load and
// neither always pays for what the other left behind (dirty pages, a cold
// cache). The iteration time is ours; the counters are
// the medians in milliseconds (ours_ms, base_ms) and their ratio, which
// scripts/bench.sh puts in its table.
template <class Ours, class Baseline>
void timeAgainstBaseline(benchmark::State& state, Ours&& ours, Baseline&& baseline)
{
    using Clock = std::chrono::steady_clock;
    std::vector<double> oursMs, baseMs;
    auto ms = [](Clock::duration d) { return std::chrono::duration<double, std::milli>(d).count(); };
    bool baselineFirst = true;
    auto timed = [](auto& f) {
        const auto t0 = Clock::now();
        f();
        return Clock::now() - t0;
    };
    for (auto _ : state) {
        Clock::duration base{}, our{};
        if (baselineFirst) {
            base = timed(baseline);
            our = timed(ours);
        } else {
            our = timed(ours);
            base = timed(baseline);
        }
        baselineFirst = !baselineFirst;
        baseMs.push_back(ms(base));
        oursMs.push_back(ms(our));
        state.SetIterationTime(std::chrono::duration<double>(our).count());
    }
    auto median = [](std::vector<double>& v) {
        if (v.empty())
            return 0.0;
        std::nth_element(v.begin(), v.begin() + static_cast<long>(v.size() / 2), v.end());
        return v[v.size() / 2];
    };
    const double o = median(oursMs);
    const double b = median(baseMs);
    state.counters["ours_ms"] = o;
    state.counters["base_ms"] = b;
    state.counters["ratio"] = b > 0 ? o / b : 0;
}

}  // namespace tavix::bench
