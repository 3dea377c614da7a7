#pragma once
// Timing shared by the benchmark programs.
#include <time.h>

#include <algorithm>
#include <vector>

namespace bench {

// Seconds of processor time of this thread, user and system: on a shared machine it leaves out
// what the scheduler gave to other processes, which wall time would count.
inline double ThreadSeconds() {
    timespec now{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) + now.tv_nsec / 1e9;
}

// The median time of `runs` calls of run, after one that warms the caches and is not counted.
template <class Run>
double MedianSeconds(int runs, Run run) {
    run();
    std::vector<double> times;
    for (int i = 0; i < runs; ++i) {
        const double start = ThreadSeconds();
        run();
        times.push_back(ThreadSeconds() - start);
    }
    std::sort(times.begin(), times.end());
    return times[times.size() / 2];
}

}  // namespace bench
