#include "tests/common/base_clock.h"

#include <algorithm>
#include <array>

#include "hw/ring0.h"
#include "platform/platform.h"
#include "tests/common/busy_wait.h"

namespace vorn {

namespace {

constexpr std::int64_t interval = 1000;  // milliseconds
constexpr std::int64_t longestInterval = interval * 11 / 10;
constexpr int disturbedInARow = 5;

/// Disturbed intervals since the last good one, the process's only count.
int& disturbedIntervals() {
    static int count = 0;
    return count;
}

/// Rate of the time-stamp counter in MHz, or baseClockDisturbed.
double timestampRate() {
    busyWait(1);  // to the next step of the process clock, whose steps may be many milliseconds
    Processor& processor = platform().processor;
    const std::uint64_t first = processor.timestampCounter();
    const std::int64_t elapsed = busyWait(interval);
    const auto ticks = static_cast<std::int64_t>(processor.timestampCounter() - first);

    int& disturbed = disturbedIntervals();
    if ((elapsed > longestInterval || ticks < 0) && disturbed < disturbedInARow) {
        ++disturbed;
        return baseClockDisturbed;
    }
    disturbed = 0;
    return static_cast<double>(ticks) / (static_cast<double>(elapsed) * 1000.0);
}

enum class Closing { closes, keeps };

BaseClock measure(Closing closing) {
    BaseClock clock;
    clock.expected = nominalBaseClock(cpuFamilyModel());
    std::uint64_t platformInfo = 0;
    const bool opened = openRing0();
    if (opened) {
        readMsr(msrPlatformInfo, platformInfo);
    }
    if (closing == Closing::closes) {
        closeRing0();
    }
    if (!opened) {
        clock.measured = driverUnavailable;
        return clock;
    }
    clock.ratio = maximumNonTurboRatio(platformInfo);
    if (clock.ratio == 0) {
        return clock;
    }
    const double rate = timestampRate();
    clock.measured =
        rate == baseClockDisturbed ? baseClockDisturbed : rate / static_cast<double>(clock.ratio);
    return clock;
}

}  // namespace

double nominalBaseClock(const FamilyModel& processor) {
    constexpr std::array<std::uint32_t, 8> models{0x2A, 0x2D, 0x3A, 0x3C, 0x45, 0x3F, 0x46, 0x3E};
    const bool listed = std::find(models.begin(), models.end(), processor.model) != models.end();
    return processor.family == 6 && listed ? 100.0 : 133.33;
}

BaseClock measureBaseClock() {
    return measure(Closing::closes);
}

BaseClock measureBaseClockKeepingDriver() {
    return measure(Closing::keeps);
}

}  // namespace vorn
