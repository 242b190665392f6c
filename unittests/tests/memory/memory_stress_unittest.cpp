#include "tests/memory/memory_stress.h"

#include <gtest/gtest.h>

#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "fakes/fake_platform.h"
#include "tests/memory/stress_console.h"

namespace vorn {
namespace {

constexpr std::int64_t second = 1000000000;  // nanoseconds
constexpr std::uint64_t megabyte = 1048576;
constexpr int blockSize = 10485760;

/// One run of the stress half on a simulated machine.
struct StressRun {
    FakePlatform platform;
    std::string log;
    VORNTestResult result = VORN_NOT_RUN;
    WorkingVerdict verdict{.result = result};

    std::string execute(const std::string& size, const std::string& time,
                        const std::function<void(const std::string&)>& onShown = nullptr) {
        const StressConsole console(onShown);
        Settings settings;
        settings.memoryStressTestSize = size;
        settings.memoryStressTestTime = time;
        Report report(log);
        testMemoryStress(settings, report, verdict);
        EXPECT_TRUE(platform.memory.held().empty());
        return console.text();
    }
    void expectPassed() const {
        EXPECT_EQ(result, VORN_PASS);
        EXPECT_EQ(verdict.status, "Pass");
        EXPECT_EQ(verdict.message, "Integrated Memory Controller Test Pass!!!");
        EXPECT_EQ(log, stressHead + stressPassed);
        EXPECT_FALSE(lastMemoryFault().has_value());
    }
    void expectFailed(const std::string& message, const std::string& logLine) const {
        EXPECT_EQ(result, VORN_FAIL);
        EXPECT_EQ(verdict.status, "Fail");
        EXPECT_EQ(verdict.message, message);
        EXPECT_EQ(log, stressHead + logLine);
    }
};

std::string announced(const std::string& bytes) {
    return "Memory to be allocated = " + bytes + " byte\n\n" + stressLegend;
}

TEST(MemoryStress, RunsOneCycleWithoutATimer) {
    for (const char* time : {"DISABLE", "Disable"}) {
        StressRun run;
        EXPECT_EQ(run.execute("29mb", time),
                  textOf(stressHead, announced("30408704"), stressProgress(), stressPassed));
        run.expectPassed();
        EXPECT_EQ(run.platform.memory.calls,
                  (std::vector<std::string>{"working set 41943040", "allocate 10485760 uncached",
                                            "lock 0", "allocate 10485760 uncached", "lock 1",
                                            "release 0", "release 1"}));
    }
}

TEST(MemoryStress, RunsCyclesUntilItsTimerExpires) {
    StressRun run;
    run.platform.clock.nowNanoseconds = 5 * second;
    int lines = 0;
    const auto expireAfterTwoCycles = [&](const std::string& shown) {
        lines += shown.front() == '\r' ? 1 : 0;
        run.platform.clock.nowNanoseconds += lines == 16 ? 60 * second : 0;
    };
    EXPECT_EQ(run.execute("10MB", "60", expireAfterTwoCycles),
              stressHead + "Timer = 60 seconds\n" + announced("10485760") + stressProgress() +
                  stressProgress(8, 2) + stressPassed);
    run.expectPassed();
}

TEST(MemoryStress, EndsWithTheTimerBeforeEachStep) {
    for (int done = 1; done <= 7; ++done) {
        SCOPED_TRACE(done);
        StressRun run;
        const auto expire = [&](const std::string& shown) {
            if (shown == stressProgress(done).substr(stressProgress(done - 1).size())) {
                run.platform.clock.nowNanoseconds = 125 * second;
            }
        };
        std::string last = stressProgress(done).substr(stressProgress(done - 1).size());
        last.replace(last.size() - 5, 5, "  123");
        EXPECT_EQ(run.execute("10MB", " 123 s", expire),
                  textOf(stressHead, "Timer = 123 seconds\n", announced("10485760"),
                         stressProgress(done), last, stressPassed));
        run.expectPassed();
    }
}

TEST(MemoryStress, LeavesBlocksOutThatItsTimerExpiresOver) {
    StressRun run;
    // The looks at the clock: start, first check, each block; the third block is one too many.
    run.platform.clock.nanosecondsPerLook = second / 10;
    const std::string text = run.execute("100MB", "1");
    EXPECT_EQ(std::count(run.platform.memory.calls.begin(), run.platform.memory.calls.end(),
                         "allocate 10485760 uncached"),
              9);
    const std::string end =
        "\r1\t0\t0\t0\t0\t0\t0\t0\t    1\r1\t0\t0\t0\t0\t0\t0\t0\t    1" + stressPassed;
    EXPECT_EQ(text.substr(text.size() - end.size()), end);
    run.expectPassed();
}

TEST(MemoryStress, TakesATimerOfNothingAsExpired) {
    struct Row {
        const char* setting;
        const char* shown;
    };
    for (const Row& row :
         {Row{"0", "0"}, {"", "0"}, {"soon", "0"}, {"ENABLE", "0"}, {"-5", "-5"}}) {
        StressRun run;
        run.platform.clock.nowNanoseconds = 5 * second - 1000000;
        EXPECT_EQ(run.execute("10MB", row.setting),
                  textOf(stressHead, "Timer = ", row.shown, " seconds\n", announced("10485760"),
                         stressPassed));
        run.expectPassed();
        EXPECT_TRUE(run.platform.memory.calls.empty());
    }
}

TEST(MemoryStress, ReadsEveryFormOfItsSize) {
    struct Row {
        const char* setting;
        const char* bytes;
        std::uint64_t workingSet;
    };
    const std::uint64_t cap = 184 * std::uint64_t{blockSize};
    const std::vector<Row> rows{
        // Of 4 GiB available, 100 MiB stay out.
        {"50%", "2095054848", cap},
        {"150 %", "6285164544", cap},
        {" 1%", "41901096", 3 * std::uint64_t{blockSize}},
        {"99.9%", "4148208599", cap},
        {"3GB", "3221225472", cap},
        {"1932735282", "1932735282", cap},
        {"1536mb", "1610612736", 153 * std::uint64_t{blockSize}},
        {"10240KB", "10485760", blockSize},
        {"10485759", "10485759", 0},
        {"1.9GB", "1073741824", 102 * std::uint64_t{blockSize}},
        {"", "0", 0},
        {"lots", "0", 0},
        {"-500MB", "-524288000", 0},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.setting);
        StressRun run;
        run.platform.memory.grantedBlocks = 0;  // what is asked for is enough here
        const std::string text = run.execute(row.setting, "DISABLE");
        const std::string start = stressHead + announced(row.bytes);
        EXPECT_EQ(text.substr(0, start.size()), start);
        ASSERT_FALSE(run.platform.memory.calls.empty());
        EXPECT_EQ(run.platform.memory.calls.front(),
                  "working set " + std::to_string(row.workingSet + 20 * megabyte));
        if (row.workingSet == 0) {
            EXPECT_EQ(text, textOf(start, stressProgress(), stressPassed))
                << "a cycle of no blocks";
            run.expectPassed();
        }
    }
}

TEST(MemoryStress, FailsWhenThereIsNotEnoughMemory) {
    struct Row {
        const char* setting;
        std::uint64_t available;
        const char* bytes;
    };
    const std::vector<Row> rows{
        {"200MB", 300 * megabyte - 1, "209715200"},
        {"0%", 300 * megabyte, "0"},
        {"%", 300 * megabyte, "0"},
        {"-1%", 300 * megabyte, "-2097152"},
        {"50%", 100 * megabyte, "0"},
        {"50%", 99 * megabyte, "0"},
        {"-50%", 0, "0"},
        {"0", 99 * megabyte, "0"},
        {"10MB", 0, "10485760"},
        {"99999999999GB", 300 * megabyte, "9223372036854775807"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.setting);
        StressRun run;
        run.platform.memory.managed->available = row.available;
        EXPECT_EQ(run.execute(row.setting, "1"), stressHead);
        const std::string message =
            std::string("Memory Stress Test Fail. Not enough free memory to allocate ") +
            row.bytes + " byte";
        run.expectFailed(message, "\n" + message + "\n");
        EXPECT_TRUE(run.platform.memory.calls.empty());
    }
    StressRun unknown;
    unknown.platform.memory.managed = std::nullopt;
    unknown.execute("10MB", "1");
    EXPECT_EQ(unknown.result, VORN_FAIL);

    StressRun exact;
    exact.platform.memory.managed->available = 110 * megabyte;
    exact.execute("10MB", "DISABLE");
    exact.expectPassed();
}

TEST(MemoryStress, FailsAndHoldsNothingWhenBlocksAreRefused) {
    for (const bool lock : {false, true}) {
        StressRun run;
        (lock ? run.platform.memory.grantedLocks : run.platform.memory.grantedBlocks) = 1;
        const std::string refused = "\nMemory Not Allocated.\n";
        EXPECT_EQ(run.execute("20MB", "9"),
                  textOf(stressHead, "Timer = 9 seconds\n", announced("20971520"), refused));
        run.expectFailed("Memory Stress Test fail to allocate memory.", refused);
        EXPECT_EQ(run.platform.memory.calls.back(), lock ? "release 1" : "release 0");
    }
}

TEST(MemoryStress, ReportsADamagedBlockByTheTestThatReadsIt) {
    std::mt19937 random(7);
    for (int trial = 0; trial < 24; ++trial) {
        const int test = 1 + trial % 3;
        SCOPED_TRACE(testing::Message() << "test " << test << ", trial " << trial);
        StressRun run;
        const std::size_t block = random() % 2;
        const std::size_t offset = trial < 3 ? blockSize - 1 : random() % blockSize;
        const std::string written =
            stressProgress(2 * test).substr(stressProgress(2 * test - 1).size());
        unsigned char damaged = 0;
        const auto damage = [&](const std::string& shown) {
            if (shown == written) {
                unsigned char& byte = run.platform.memory.held()[block][offset];
                byte = damaged = static_cast<unsigned char>(byte ^ (1U << (random() % 8)));
            }
        };
        const std::string line = textOf("\nTest ", test, " Verification Fail.\n");
        EXPECT_EQ(run.execute("20MB", "DISABLE", damage),
                  textOf(stressHead, announced("20971520"), stressProgress(2 * test), line));
        run.expectFailed(textOf("Memory Stress Test ", test, " Verification Fail."), line);
        ASSERT_TRUE(lastMemoryFault().has_value());
        EXPECT_EQ(lastMemoryFault()->test, test);
        const Mismatch& mismatch = lastMemoryFault()->mismatch;
        EXPECT_EQ(mismatch.block, static_cast<std::int32_t>(block));
        EXPECT_EQ(mismatch.offset, offset - offset % mismatch.width);
        EXPECT_EQ((mismatch.found >> (8 * (offset % mismatch.width))) & 0xFFU, damaged);
    }
    StressRun sound;
    sound.execute("10MB", "DISABLE");
    EXPECT_FALSE(lastMemoryFault().has_value()) << "of the most recent test only";
}

TEST(MemoryStress, IsSkippedByItsSize) {
    for (const char* size : {"DISABLE", "disable"}) {
        StressRun run;
        EXPECT_EQ(run.execute(size, "1"), "");
        EXPECT_EQ(run.log, "");
        EXPECT_EQ(run.result, VORN_NOT_RUN);
    }
}

}  // namespace
}  // namespace vorn
