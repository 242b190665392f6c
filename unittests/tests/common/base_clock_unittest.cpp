#include "tests/common/base_clock.h"

#include <gtest/gtest.h>

#include "fakes/fake_platform.h"
#include "tests/common/busy_wait.h"
#include "tests/common/tolerance.h"

namespace vorn {
namespace {

using Calls = std::vector<std::string>;

constexpr std::int64_t millisecond = 1000000;

/// A processor of ratio 29 whose time-stamp counter gives these readings.
struct Machine : FakePlatform {
    explicit Machine(std::int64_t millisecondsPerLook,
                     const std::deque<std::uint64_t>& timestamps = {7, 2900000007}) {
        processor.setSignature(6, 0x2D);
        processor.timestamps = timestamps;
        ring0.msrs[0xCE] = {0xFFFFFFFFFFFF00FFU | (29U << 8U)};
        clock.nanosecondsPerLook = millisecondsPerLook * millisecond;
    }
};

TEST(BusyWait, PollsUntilTheTimeIsReachedAndNeverSleeps) {
    struct Row {
        std::int64_t perLook;
        std::int64_t moved;
    };
    for (const Row& row : {Row{1, 1000}, Row{250, 1000}, Row{333, 1332}, Row{2000, 2000}}) {
        const Machine machine(row.perLook);
        EXPECT_EQ(busyWait(1000), row.moved);
        EXPECT_TRUE(machine.clock.sleeps.empty());
    }
}

TEST(NominalBaseClock, IsThatOfTheModel) {
    for (const std::uint32_t model : {0x2AU, 0x2DU, 0x3AU, 0x3CU, 0x45U, 0x3FU, 0x46U, 0x3EU}) {
        EXPECT_EQ(nominalBaseClock({6, model}), 100.0) << model;
        EXPECT_EQ(nominalBaseClock({15, model}), 133.33) << model;
    }
    for (const std::uint32_t model : {0x1AU, 0x2CU, 0x2EU, 0x35U, 0x37U, 0x3BU, 0x3DU}) {
        EXPECT_EQ(nominalBaseClock({6, model}), 133.33) << model;
    }
}

TEST(MeasureBaseClock, DividesTheTicksOfASecondByTheRatio) {
    Machine machine(250);
    EXPECT_EQ(measureBaseClock().measured, 100.0);
    EXPECT_EQ(measureBaseClock().expected, 100.0);
    EXPECT_EQ(Calls(machine.ring0.calls.begin(), machine.ring0.calls.begin() + 4),
              (Calls{"initialize", "status", "msr 0xce", "deinitialize"}));
    machine.ring0.calls.clear();
    machine.processor.setSignature(6, 0x1A);
    EXPECT_EQ(measureBaseClockKeepingDriver().expected, 133.33);
    EXPECT_EQ(machine.ring0.calls, (Calls{"initialize", "status", "msr 0xce"}));
}

TEST(MeasureBaseClock, StartsItsSecondAtAStepOfTheProcessClock) {
    // Each reading of the clock moves the time by half a millisecond, so a step is two readings.
    Machine machine(0);
    machine.clock.nanosecondsPerLook = millisecond / 2;
    measureBaseClock();
    EXPECT_EQ(machine.clock.nowNanoseconds % millisecond, 0);
    EXPECT_GE(machine.clock.nowNanoseconds, 1001 * millisecond);
}

TEST(MeasureBaseClock, MeasuresNothingWithoutARatio) {
    for (const bool refused : {false, true}) {
        Machine machine(250);
        machine.ring0.msrs[0xCE] = {0xFFFFFFFFFFFF00FFU};
        if (refused) {
            machine.ring0.msrs.clear();
        }
        EXPECT_EQ(measureBaseClock().measured, 0.0);
        EXPECT_EQ(machine.clock.nowNanoseconds, 0) << "no waiting";
    }
}

TEST(MeasureBaseClock, ReportsADriverThatCannotBeOpened) {
    Machine machine(250);
    machine.ring0.statusResults = {1};
    EXPECT_EQ(measureBaseClock().measured, driverUnavailable);
    EXPECT_EQ(machine.ring0.calls, (Calls{"initialize", "status", "deinitialize"}));
    machine.ring0.calls.clear();
    EXPECT_EQ(measureBaseClockKeepingDriver().measured, driverUnavailable);
    EXPECT_EQ(machine.ring0.calls, (Calls{"initialize", "status"}));
}

TEST(MeasureBaseClock, ToleratesATenthTooLongAndCountsTheTimeItTook) {
    const Machine machine(550, {0, 3190000000});
    EXPECT_DOUBLE_EQ(measureBaseClock().measured, 100.0);
}

TEST(MeasureBaseClock, CallsFiveDisturbedIntervalsInARowAndThenTakesTheNext) {
    struct Row {
        std::int64_t perLook;  // 367: the second takes 1101 ms
        std::uint64_t first;
        std::uint64_t second;
        double measured;
    };
    for (const Row& row : {Row{367, 0, 3192900000, 100}, Row{250, 3900000000, 1000000000, -100}}) {
        Machine machine(row.perLook);
        machine.processor.timestamps.clear();
        for (int interval = 0; interval < 12; ++interval) {
            machine.processor.timestamps.push_back(row.first);
            machine.processor.timestamps.push_back(row.second);
        }
        for (int round = 0; round < 2; ++round) {
            for (int interval = 0; interval < 5; ++interval) {
                EXPECT_EQ(measureBaseClock().measured, baseClockDisturbed);
            }
            EXPECT_DOUBLE_EQ(measureBaseClock().measured, row.measured);
        }
    }
}

TEST(MeasureBaseClock, StartsCountingAgainAfterAGoodInterval) {
    Machine machine(367);
    EXPECT_EQ(measureBaseClock().measured, baseClockDisturbed);
    machine.clock.nanosecondsPerLook = 250 * millisecond;
    EXPECT_NE(measureBaseClock().measured, baseClockDisturbed);
    machine.clock.nanosecondsPerLook = 367 * millisecond;
    for (int interval = 0; interval < 5; ++interval) {
        EXPECT_EQ(measureBaseClock().measured, baseClockDisturbed);
    }
    EXPECT_NE(measureBaseClock().measured, baseClockDisturbed);
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
