// How parsing scales with threads: one input parsed by one thread, then by two threads at once,
// each with its own copy of the decoded text (CParse::ParseForBuf to a full tree, then delete).
//
// usage: threads_bench [--runs N] INPUT.xml
//
// Each parse is timed by the processor time of its thread, so that on a shared machine what the
// scheduler gives to other processes is left out. Two threads' throughput is both copies' size
// over the slower thread's time: what they reach when each has a core of its own. The wall-clock
// figure beside it is what this machine gave while the run lasted.
#include <time.h>

#include <algorithm>
#include <barrier>
#include <chrono>
#include <cstdio>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "Contenders.h"
#include "vx/dom/XmlDocument.h"
#include "vx/parse/Parse.h"

namespace {

double ThreadSeconds() {
    timespec now{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) + now.tv_nsec / 1e9;
}

double WallSeconds() {
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch())
        .count();
}

struct Run {
    double slowestThread = 0;  // processor seconds of the slower thread
    double wall = 0;
};

double Median(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

// Each thread parses its own copy runs + 1 times, the threads starting each run together; the
// first run warms the thread's caches and memory and is not counted. Medians of the runs.
Run Measure(const std::vector<vx::CVelStrW>& copies, int runs) {
    const std::size_t n = copies.size();
    std::vector<std::vector<double>> seconds(runs + 1, std::vector<double>(n));
    std::barrier sync(static_cast<std::ptrdiff_t>(n) + 1);  // the threads and this one
    std::vector<std::thread> threads;
    for (std::size_t i = 0; i < n; ++i) {
        threads.emplace_back([&, i] {
            for (int run = 0; run <= runs; ++run) {
                sync.arrive_and_wait();
                const double begin = ThreadSeconds();
                delete vx::CParse::ParseForBuf(copies[i]);
                seconds[run][i] = ThreadSeconds() - begin;
                sync.arrive_and_wait();
            }
        });
    }
    std::vector<double> slowest, wall;
    for (int run = 0; run <= runs; ++run) {
        sync.arrive_and_wait();
        const double begin = WallSeconds();
        sync.arrive_and_wait();
        if (run == 0) continue;
        wall.push_back(WallSeconds() - begin);
        slowest.push_back(*std::max_element(seconds[run].begin(), seconds[run].end()));
    }
    for (std::thread& thread : threads)
        thread.join();
    return {Median(slowest), Median(wall)};
}

int Main(int argc, char** argv) {
    int runs = 5;
    std::string path;
    for (int i = 1; i < argc; ++i) {
        const std::string arg = argv[i];
        if (arg == "--runs" && i + 1 < argc) {
            runs = std::max(1, std::stoi(argv[++i]));
        } else {
            path = arg;
        }
    }
    if (path.empty()) {
        std::fputs("usage: threads_bench [--runs N] INPUT.xml\n", stderr);
        return 2;
    }
    const bench::Input input = bench::LoadInput(path, true, true);
    const double mb = input.bytes.size() / 1e6;
    // Distinct buffers, so the threads share nothing but the library.
    std::vector<vx::CVelStrW> copies;
    for (int i = 0; i < 2; ++i)
        copies.emplace_back(input.text.c_str(), input.text.GetLength());
    const Run one = Measure({copies[0]}, runs);
    const Run two = Measure(copies, runs);
    const double oneRate = mb / one.slowestThread;
    const double twoRate = 2 * mb / two.slowestThread;
    std::printf("| input | threads | MB/s (thread time) | × one thread | MB/s (wall) |\n");
    std::printf("| :--- | ---: | ---: | ---: | ---: |\n");
    std::printf("| %s | 1 | %.1f | 1.00 | %.1f |\n", input.name.c_str(), oneRate, mb / one.wall);
    std::printf("| %s | 2 | %.1f | %.2f | %.1f |\n", input.name.c_str(), twoRate, twoRate / oneRate,
                2 * mb / two.wall);
    std::printf("\nMB of the input file per second; median of %d runs.\n", runs);
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    return bench::RunMain("threads_bench", Main, argc, argv);
}
