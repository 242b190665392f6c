#include "tests/memory/memory_stress.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <random>
#include <string>
#include <utility>

#include "fakes/captured_console.h"
#include "fakes/fake_platform.h"

namespace vorn {
namespace {

/// The report stream for one scope. Calls `act` when the progress line of this number was shown.
class WatchedConsole : public std::stringbuf {
public:
    WatchedConsole(int line, std::function<void()> act) : linesLeft_(line), act_(std::move(act)) {
        bindReportStream(this);
    }
    int sync() override {
        const std::size_t former = std::exchange(shown_, str().size());
        if (str().compare(former, 1, "\r") == 0 && --linesLeft_ == 0) {
            act_();
        }
        return 0;
    }

private:
    CapturedConsole former_;  // puts the stream back
    int linesLeft_;
    std::function<void()> act_;
    std::size_t shown_ = 0;
};

TEST(MemoryStress, ReportsADamagedBlockByTheTestThatReadsIt) {
    std::mt19937 random(7);
    const auto run = [](const FakePlatform& platform, int line, const std::function<void()>& act) {
        WatchedConsole console(line, act);
        Settings settings;
        settings.memoryStressTestSize = "20MB";
        settings.memoryStressTestTime = "DISABLE";
        VORNTestResult result = VORN_NOT_RUN;
        WorkingVerdict verdict{.result = result};
        std::string log;
        Report report(log);
        testMemoryStress(settings, report, verdict);
        EXPECT_TRUE(platform.memory.held().empty());
        const std::string shown = console.str();
        return textOf(result, "|", verdict.status, "|", verdict.message,
                      log.substr(std::min(log.find("\nTest"), log.size())),
                      shown.substr(shown.rfind('\t')));
    };
    for (int trial = 0; trial < 24; ++trial) {
        const int test = 1 + trial % 3;
        SCOPED_TRACE(testing::Message() << "test " << test << ", trial " << trial);
        FakePlatform platform;
        const std::size_t block = random() % 2;
        const std::size_t offset = trial < 3 ? 10485759 : random() % 10485760;
        unsigned char damaged = 0;
        const std::string failure =
            textOf("1|Fail|Memory Stress Test ", test, " Verification Fail.\nTest ", test,
                   " Verification Fail.\n\t    0\nTest ", test, " Verification Fail.\n");
        EXPECT_EQ(run(platform, 2 * test,
                      [&] {
                          unsigned char& byte = platform.memory.held()[block][offset];
                          byte = damaged = static_cast<unsigned char>(byte ^ (1U << random() % 8));
                      }),
                  failure);
        ASSERT_TRUE(lastMemoryFault().has_value());
        EXPECT_EQ(lastMemoryFault()->test, test);
        const Mismatch& mismatch = lastMemoryFault()->mismatch;
        EXPECT_EQ(mismatch.block, static_cast<std::int32_t>(block));
        EXPECT_EQ(mismatch.offset, offset - offset % mismatch.width);
        EXPECT_EQ((mismatch.found >> (8 * (offset % mismatch.width))) & 0xFFU, damaged);
    }
    const FakePlatform sound;
    run(sound, 0, nullptr);
    EXPECT_FALSE(lastMemoryFault().has_value()) << "of the most recent test only";
}

}  // namespace
}  // namespace vorn
