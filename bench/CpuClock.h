#pragma once

#include <ctime>

namespace tavix::bench {

inline double cpuMs(clockid_t clock)
{
    timespec t{};
    clock_gettime(clock, &t);
    return static_cast<double>(t.tv_sec) * 1e3 + static_cast<double>(t.tv_nsec) / 1e6;
}

// CPU time of the whole process, in milliseconds.
inline double processCpuMs()
{
    return cpuMs(CLOCK_PROCESS_CPUTIME_ID);
}

// CPU time of the calling thread, in milliseconds.
inline double threadCpuMs()
{
    return cpuMs(CLOCK_THREAD_CPUTIME_ID);
}

}  // namespace tavix::bench
