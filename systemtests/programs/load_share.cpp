// Does the CPU load test keep its workers busy? Lets it load this machine in turns with as many
// plain spinning threads, and compares the processor time that the process gets in a second of
// each.
#include <time.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <functional>
#include <iostream>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "platform/platform.h"
#include "tests/compute/cpu_load_test.h"

namespace {

constexpr double limit = 0.95;
constexpr int rounds = 5;
constexpr int attempts = 4;          // on a machine that has other work too
constexpr std::int64_t seconds = 1;  // of each turn

using SteadyClock = std::chrono::steady_clock;

double processSeconds() {
    timespec now{};
    ::clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

/// Processor time over wall time while this goes on.
double share(const std::function<void()>& work) {
    const double before = processSeconds();
    const auto start = SteadyClock::now();
    work();
    const std::chrono::duration<double> wall = SteadyClock::now() - start;
    return (processSeconds() - before) / wall.count();
}

/// The load of a run of one minute that began so long ago that only a turn of it is left.
void load(int threads) {
    vorn::Clock& clock = vorn::platform().clock;
    const std::int64_t used = (60 - seconds) * clock.performanceFrequency();
    vorn::runCpuLoad(threads, "1", clock.performanceCounter() - used, false, 0);
}

void spin(int threads) {
    std::vector<std::thread> spinning;
    const auto end = SteadyClock::now() + std::chrono::seconds(seconds);
    for (int thread = 0; thread < threads; ++thread) {
        spinning.emplace_back([end] {
            while (SteadyClock::now() < end) {
            }
        });
    }
    for (std::thread& thread : spinning) {
        thread.join();
    }
}

double median(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

/// Loads and spins in turns; returns the median of the ratios.
double measure(int threads) {
    std::ostringstream report;  // the load test's own lines
    std::vector<double> ofLoad;
    std::vector<double> ofSpinning;
    std::vector<double> ratios;
    for (int round = 0; round < rounds; ++round) {
        std::streambuf* console = std::cout.rdbuf(report.rdbuf());
        ofLoad.push_back(share([threads] { load(threads); }));
        std::cout.rdbuf(console);
        ofSpinning.push_back(share([threads] { spin(threads); }));
        ratios.push_back(ofLoad.back() / ofSpinning.back());
    }
    std::printf(
        "%d threads, processor time over wall time: load %.3f, spinning %.3f, ratio %.3f (at least "
        "%.2f)\n",
        threads, median(ofLoad), median(ofSpinning), median(ratios), limit);
    return median(ratios);
}

}  // namespace

int main() {
    const int threads = std::max(2, static_cast<int>(std::thread::hardware_concurrency()));
    for (int attempt = 0; attempt < attempts; ++attempt) {
        if (measure(threads) >= limit) {
            return 0;
        }
    }
    return 1;
}
