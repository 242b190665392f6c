#include <gtest/gtest.h>

#include <algorithm>
#include <stdexcept>

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

struct Ran {
    VORNTestResult result = VORN_NOT_RUN;
    TestRecord record;
    std::string log;
};

std::string runLoad(Ran& ran, const char* level, const char* minutes) {
    Settings settings;
    settings.stressLoadLevel = level;
    settings.stressTestTime = minutes;
    return testCpuLoad(ran.result, settings, ran.record, ran.log, 0, false);
}

TEST(CpuLoadTest, PassesWithTwoTasksAtLeast) {
    struct Row {
        const char* level;
        const char* shown;
    };
    for (const Row& row :
         {Row{"1", "2"}, Row{"0", "2"}, Row{"", "2"}, Row{"-4", "2"}, Row{"3 threads", "3"}}) {
        FakePlatform platform;
        const CapturedConsole console;
        Ran ran;
        EXPECT_EQ(runLoad(ran, row.level, "0"), "Code 123");
        EXPECT_EQ(console.text(), std::string("\n --- CPU Load ---\n\n"
                                              " --- Load Level =") +
                                      row.shown +
                                      "\n\n"
                                      "Executing CPU Load ... \n"
                                      "CPU Load Passed!!!\n");
        EXPECT_EQ(ran.log, std::string("\n --- CPU Load --- \n\n"
                                       "\n --- Load Level =") +
                               row.level + "\n\nCPU Load Passed!!!\n\n");
        EXPECT_EQ(ran.result, VORN_PASS);
        EXPECT_EQ(ran.record.name, "Simple CPU Load");
        EXPECT_EQ(ran.record.status, "Pass");
        EXPECT_EQ(ran.record.code, "Code 123");
        EXPECT_EQ(ran.record.message, "CPU Load Passed!!!");
    }
}

TEST(CpuLoadTest, LastsForItsBudgetOnEveryWorker) {
    FakePlatform platform;
    const CapturedConsole console;
    platform.clock.nowNanoseconds = 20 * second;  // used since the run started
    platform.clock.nanosecondsPerLook = second / 1000;
    Ran ran;
    runLoad(ran, "3", "1");
    // All at once or one after the other, as the threads come: 40 seconds each.
    EXPECT_GE(platform.clock.nowNanoseconds, 60 * second);
    EXPECT_LE(platform.clock.nowNanoseconds, 141 * second);
}

TEST(CpuLoadTest, RaisesATasksErrorWithAllWorkersEnded) {
    FakePlatform platform;
    const CapturedConsole console;
    platform.clock.nanosecondsPerLook = second / 1000;
    platform.clock.breaksAt = second;
    Ran ran;
    EXPECT_THROW(runLoad(ran, "4", "1"), std::runtime_error);
    EXPECT_EQ(ran.record.status, "");
    EXPECT_EQ(console.text().find("Passed"), std::string::npos);
}

}  // namespace
}  // namespace vorn
