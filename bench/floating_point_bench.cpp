// How near a cycle of the floating point test comes to the latency bound of its dependency chain:
// the latencies of addition, multiplication and division are measured in the same run, and the
// recurrence itself, computed with completion times in place of numbers, says what they add up to.
#include <time.h>

#include <algorithm>
#include <cstdio>

#include "table.h"
#include "tests/compute/floating_point_recurrence.h"
#include "tests/compute/floating_point_test.h"

namespace {

constexpr double limit = 1.05;

/// Seconds that this thread has used of its processor.
double threadSeconds() {
    timespec now{};
    ::clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

double result = 0;  // keeps the loops alive

/// Seconds of one operation in a chain of them.
template <typename Operation>
double secondsOfOne(const Operation& operation) {
    constexpr int count = 200000;
    double value = 1.7320508075688772;
    const double start = threadSeconds();
    for (int index = 0; index < count; ++index) {
        value = operation(value);
    }
    const double seconds = (threadSeconds() - start) / count;
    result += value;
    return seconds;
}

struct Latencies {
    double addition = 1;
    double multiplication = 1;
    double division = 1;
};
Latencies latencies;

/// When a number is ready, as an operand of the recurrence.
struct Ready {
    double time = 0;
};
Ready after(Ready a, Ready b, double latency) {
    return {std::max(a.time, b.time) + latency};
}
Ready operator+(Ready a, Ready b) {
    return after(a, b, latencies.addition);
}
Ready operator-(Ready a, Ready b) {
    return after(a, b, latencies.addition);
}
Ready operator-(double /*a*/, Ready b) {
    return after({}, b, latencies.addition);
}
Ready operator*(Ready a, Ready b) {
    return after(a, b, latencies.multiplication);
}
Ready operator/(Ready a, Ready b) {
    return after(a, b, latencies.division);
}

}  // namespace

int main() {
    double cycle = 1e9;
    for (int round = 0; round < 40; ++round) {
        latencies.addition = std::min(
            latencies.addition, secondsOfOne([](double x) { return x + 0.3819660112501051; }));
        latencies.multiplication = std::min(
            latencies.multiplication, secondsOfOne([](double x) { return x * 0.9999999997; }));
        latencies.division = std::min(
            latencies.division, secondsOfOne([](double x) { return 2.7182818284590451 / x; }));
        const double start = threadSeconds();
        result += vorn::floatingPointCycle();
        cycle = std::min(cycle, threadSeconds() - start);
    }
    const double bound = vorn::floatingPointSum(Ready(), Ready(), Ready(), Ready(), Ready()).time;
    constexpr double steps = 1.0 * vorn::floatingPointRepetitions * vorn::floatingPointSteps;
    std::printf(
        "latencies: addition %.3f ns, multiplication %.3f ns, division %.3f ns\n"
        "one step: bound %.2f ns, measured %.2f ns\n"
        "one cycle: bound %.2f ms, measured %.2f ms, ratio %.3f (at most %.2f)%s\n"
        "(%g)\n",
        latencies.addition * 1e9, latencies.multiplication * 1e9, latencies.division * 1e9,
        bound / steps * 1e9, cycle / steps * 1e9, bound * 1e3, cycle * 1e3, cycle / bound, limit,
        cycle <= bound * limit ? "" : "  EXCEEDED", result);
    char figure[32];
    char peer[64];
    std::snprintf(figure, sizeof figure, "%.2f ms", cycle * 1e3);
    std::snprintf(peer, sizeof peer, "latency bound %.2f ms", bound * 1e3);
    printTableRow("floating point, one cycle", figure, peer, cycle / bound, "at most 1.05");
    return cycle <= bound * limit ? 0 : 1;
}
