#include "tests/common/base_clock.h"

#include <gtest/gtest.h>

#include "fakes/fake_platform.h"
#include "tests/common/busy_wait.h"
#include "tests/common/tolerance.h"

namespace vorn {
namespace {

using Calls = std::vector<std::string>;

constexpr std::int64_t millisecond = 1000000;

TEST(BusyWait, PollsUntilTheTimeIsReachedAndNeverSleeps) {
    for (const auto& [perLook, moved] :
         {std::pair(1, 1000), {250, 1000}, {333, 1332}, {2000, 2000}}) {
        FakePlatform machine;
        machine.clock.nanosecondsPerLook = perLook * millisecond;
        EXPECT_EQ(busyWait(1000), moved);
        EXPECT_TRUE(machine.clock.sleeps.empty());
    }
}

TEST(MeasureBaseClock, LeavesClosingToACallerThatKeepsTheDriver) {
    FakePlatform machine;
    machine.ring0.msrs[0xCE] = {29U << 8U};
    machine.ring0.statusResults = {0, 1};
    machine.processor.timestamps = {7, 2900000007};
    machine.clock.nanosecondsPerLook = 250 * millisecond;
    EXPECT_EQ(measureBaseClockKeepingDriver().measured, 100.0);
    EXPECT_EQ(measureBaseClockKeepingDriver().measured, driverUnavailable);
    EXPECT_EQ(machine.ring0.calls,
              (Calls{"initialize", "status", "msr 0xce", "initialize", "status"}));
}

TEST(MeasureBaseClock, StartsItsSecondAtAStepOfTheProcessClock) {
    // Each reading of the clock moves the time by half a millisecond, so a step is two readings.
    FakePlatform machine;
    machine.ring0.msrs[0xCE] = {29U << 8U};
    machine.clock.nanosecondsPerLook = millisecond / 2;
    measureBaseClock();
    EXPECT_EQ(machine.clock.nowNanoseconds % millisecond, 0);
    EXPECT_GE(machine.clock.nowNanoseconds, 1001 * millisecond);
}

TEST(IsWithinPercent, IncludesTheBoundWhateverTheRounding) {
    for (const double expected : {5.6, 6.4, 7.2, 8.0, 9.6, 100.0, 133.33}) {
        EXPECT_TRUE(isWithinPercent(expected / 100 * 105, expected, 5));
        EXPECT_TRUE(isWithinPercent(expected / 100 * 95, expected, 5));
        EXPECT_FALSE(isWithinPercent(expected * 1.05000001, expected, 5));
        EXPECT_FALSE(isWithinPercent(expected * 0.94999999, expected, 5));
        EXPECT_TRUE(isWithinPercent(expected, expected, 0));
        EXPECT_FALSE(isWithinPercent(expected * (1 + 1e-15), expected, 0));
        EXPECT_FALSE(isWithinPercent(expected, expected, -1));
    }
    EXPECT_FALSE(isWithinPercent(0, 0, 1000)) << "not a number";
}

}  // namespace
}  // namespace vorn
