#include <gtest/gtest.h>

#include "fakes/captured_console.h"
#include "fakes/fake_platform.h"
#include "tests/cpu/temperature_test.h"

namespace vorn {
namespace {

/// A machine whose sensor gives these margins one after the other; negative ones are not valid.
struct Machine : FakePlatform {
    explicit Machine(const std::vector<int>& margins) {
        for (const int margin : margins) {
            ring0.msrs[0x19C].push_back(
                margin < 0 ? 0 : 0x80000000U | static_cast<unsigned>(margin) << 16U);
        }
    }
};

TEST(TemperatureTest, ListsTheSamplesOfAllTestsAndTheFirstOfTheSmallest) {
    Machine machine({45, 38, 38, 44});
    const CapturedConsole console;
    TemperatureMonitor monitor;
    std::string times[4];
    std::string log;
    for (int test = 0; test < 4; ++test) {
        machine.clock.nowNanoseconds = test * 61000000000;
        times[test] = localTimeText(machine.clock.wallSeconds());
        if (test < 3) {
            monitor.sample("Test " + std::to_string(test), log);
        }
    }
    EXPECT_EQ(log, "");
    VORNTestResult result = VORN_NOT_RUN;
    TestRecord record;
    testTemperature(result, Settings(), record, log, monitor);
    EXPECT_EQ(console.text(), "\n --- Reading Temperature --- \n\n - " + times[0] +
                                  " Test 0 --> 45 degrees below maximum\n - " + times[1] +
                                  " Test 1 --> 38 degrees below maximum\n - " + times[2] +
                                  " Test 2 --> 38 degrees below maximum\n - " + times[3] +
                                  " Temperature Test --> 44 degrees below maximum\n"
                                  "Smallest margin --> 38 degrees at " +
                                  times[1] + " (Test 1)\n\nTemperature Test Passed!!!\n\n");
}

TEST(TemperatureMonitor, KeepsValidReadingsUntilItIsClosed) {
    Machine machine({-1, 30, -1, 31});
    TemperatureMonitor monitor;
    std::string text;
    EXPECT_EQ(monitor.sample("a", text), noTemperatureReading);
    EXPECT_FALSE(monitor.holdsReading());
    EXPECT_EQ(monitor.sample("b", text), 30);
    EXPECT_EQ(monitor.sample("c", text), noTemperatureReading);
    EXPECT_TRUE(monitor.holdsReading()) << "one reading that misses does not end the watch";
    monitor.close();
    EXPECT_FALSE(monitor.holdsReading());
    const std::size_t calls = machine.ring0.calls.size();
    EXPECT_EQ(monitor.sample("d", text), noTemperatureReading);
    EXPECT_EQ(machine.ring0.calls.size(), calls);
    EXPECT_EQ(monitor.samples().size(), 1U);
}

}  // namespace
}  // namespace vorn
