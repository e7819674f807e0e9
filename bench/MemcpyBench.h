#pragma once

#include <benchmark/benchmark.h>
#include <algorithm>
#include <chrono>
#include <cstring>
#include <vector>

namespace tavix::bench {

// The median time of one memcpy of `bytes`, in milliseconds, timed in this
// run: the baseline a frame's display is held to.
inline double memcpyMs(size_t bytes)
{
    std::vector<unsigned char> src(bytes, 1), dst(bytes, 2);
    std::vector<double> copies;
    for (int i = 0; i < 21; ++i) {
        const auto t = std::chrono::steady_clock::now();
        std::memcpy(dst.data(), src.data(), bytes);
        benchmark::ClobberMemory();
        copies.push_back(
            std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - t).count());
    }
    std::sort(copies.begin(), copies.end());
    return copies[copies.size() / 2];
}

}  // namespace tavix::bench
