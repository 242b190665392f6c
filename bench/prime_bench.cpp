// Cycles a second of the prime number generation test, and the share of each phase of a cycle.
#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <memory>

#include "table.h"
#include "tests/compute/prime_number_test.h"

namespace {

constexpr int rounds = 30;
constexpr double limit = 0.1;

enum Phase { allocate, sieve, candidates, release, phases };

double secondsNow() {
    const auto now = std::chrono::steady_clock::now().time_since_epoch();
    return std::chrono::duration<double>(now).count();
}

}  // namespace

int main() {
    std::array<double, phases> seconds;
    seconds.fill(1e9);
    int disproved = 0;
    for (int round = 0; round < rounds; ++round) {
        std::array<double, phases + 1> at{};
        at[allocate] = secondsNow();
        auto flags = std::make_unique<vorn::PrimeFlags>(vorn::primeSieveSize, 1);
        at[sieve] = secondsNow();
        vorn::sievePrimes(*flags);
        at[candidates] = secondsNow();
        disproved += vorn::countDisprovedPrimes(*flags);
        at[release] = secondsNow();
        flags.reset();
        at[phases] = secondsNow();
        for (std::size_t phase = 0; phase < phases; ++phase) {
            seconds[phase] = std::min(seconds[phase], at[phase + 1] - at[phase]);
        }
    }
    double total = 0;
    for (const double phase : seconds) {
        total += phase;
    }
    constexpr std::array<const char*, phases> names{"allocate and set the flags", "sieve",
                                                    "draw and divide candidates", "free the flags"};
    std::printf("%.1f cycles a second (%d disproved)\n", 1 / total, disproved);
    for (std::size_t phase = 0; phase < phases; ++phase) {
        std::printf("  %-28s %7.2f ms  %5.1f %%\n", names[phase], seconds[phase] * 1e3,
                    100 * seconds[phase] / total);
    }
    const double share = seconds[candidates] / total;
    std::printf("candidates: %.3f of a cycle (at most %.2f)%s\n", share, limit,
                share <= limit ? "" : "  EXCEEDED");
    char figure[32];
    char peer[32];
    std::snprintf(figure, sizeof figure, "%.2f ms", seconds[candidates] * 1e3);
    std::snprintf(peer, sizeof peer, "whole cycle %.1f ms", total * 1e3);
    printTableRow("prime numbers, candidates", figure, peer, share, "at most 0.10");
    return share <= limit ? 0 : 1;
}
