#include <gtest/gtest.h>

#include <algorithm>

#include "fakes/captured_console.h"
#include "fakes/fake_platform.h"
#include "tests/compute/cpu_load_test.h"

namespace vorn {
namespace {

constexpr std::int64_t second = 1000000000;

TEST(LoadSeconds, IsTheBudgetLessTheWholeSecondsUsed) {
    struct Row {
        const char* minutes;
        std::int64_t used;  // ticks of a counter of 10 MHz
        std::int32_t seconds;
    };
    for (const Row& row :
         {Row{"1", 0, 60}, Row{"2 min", 0, 120}, Row{"1", 9999999, 60}, Row{"1", 10000000, 59},
          Row{"1", 900000000, -30}, Row{"0", 0, 0}, Row{"", 0, 0}, Row{"soon", 0, 0},
          Row{"-1", 0, -60}, Row{"2147483647", 0, 2147483647},
          Row{"-2147483647", 0, -2147483647 - 1}}) {
        EXPECT_EQ(loadSeconds(row.minutes, 5000, 5000 + row.used, 10000000), row.seconds)
            << row.minutes << ", " << row.used;
    }
}

TEST(MultiMath, LooksAtTheCounterUntilItsTimeIsOver) {
    struct Row {
        std::int32_t seconds;
        std::int32_t index;
        bool monitor;
        std::int64_t endsAt;  // seconds; the task's first look is at 1
        int occasions;
        std::size_t temperatures;
    };
    for (const Row& row :
         {Row{12, 0, true, 13, 2, 2},  // samples after 6 and 12 seconds
          Row{12, 1, true, 13, 2, 0}, Row{12, 0, false, 13, 0, 0}, Row{5, 0, true, 6, 0, 0},
          Row{0, 0, true, 1, 0, 0}, Row{-7, 0, true, 1, 0, 0}}) {
        SCOPED_TRACE(testing::Message() << row.seconds << " s, task " << row.index);
        FakePlatform platform;
        const CapturedConsole console;
        platform.clock.nanosecondsPerLook = second;
        platform.ring0.msrs[0x19C] = {0x88200000};
        MultiMath task(row.seconds, row.index, row.monitor, 80);
        EXPECT_EQ(task.execute(), nullptr);
        EXPECT_EQ(platform.clock.nowNanoseconds, row.endsAt * second);
        EXPECT_EQ(task.sampleOccasions(), row.occasions);
        EXPECT_EQ(static_cast<std::size_t>(std::count(platform.ring0.calls.begin(),
                                                      platform.ring0.calls.end(), "msr 0x19c")),
                  row.temperatures);
        EXPECT_EQ(console.text(), "");
    }
}

TEST(RunCpuLoad, LastsForItsBudgetOnEveryWorker) {
    FakePlatform platform;
    const CapturedConsole console;
    platform.clock.nowNanoseconds = 20 * second;
    platform.clock.nanosecondsPerLook = second / 1000;
    runCpuLoad(4, "1", 0, false, 0);
    // All at once or one after the other, as the threads come: 40 seconds each.
    EXPECT_GE(platform.clock.nowNanoseconds, 60 * second);
    EXPECT_LE(platform.clock.nowNanoseconds, 181 * second);
}

}  // namespace
}  // namespace vorn
