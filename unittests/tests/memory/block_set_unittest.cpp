#include "tests/memory/block_set.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <vector>

#include "fakes/fake_platform.h"

namespace vorn {
namespace {

constexpr std::int64_t nanosecondsPerMillisecond = 1000000;

TEST(AllocateBlocks, KeepsItsNumbersReleasesOnceAndHoldsNothingAfterAFailure) {
    FakePlatform platform;
    BlockSet set;
    EXPECT_EQ(AllocateBlocks(set, 64, -5, true, 0, noDeadline), blocksAllocated);
    EXPECT_TRUE(set.blocks.empty());
    EXPECT_EQ(AllocateBlocks(set, 64, 2, false, 7, 5000), blocksAllocated);
    EXPECT_EQ(set.blockSize, 64);
    EXPECT_EQ(set.blockCount, 2);
    EXPECT_EQ(set.startTime, 7U);
    EXPECT_EQ(set.deadline, 5000);
    EXPECT_EQ(set.blocks, platform.memory.held());
    ReleaseBlocks(set);
    ReleaseBlocks(set);  // of nothing
    EXPECT_EQ(platform.memory.calls,
              (std::vector<std::string>{"allocate 64", "lock 0", "allocate 64", "lock 1",
                                        "release 0", "release 1"}));
    platform.memory.grantedLocks = 1;
    EXPECT_EQ(AllocateBlocks(set, 64, 2, true, 0, noDeadline), lockFailed);
    EXPECT_TRUE(platform.memory.held().empty());
    platform.memory.grantedBlocks = 0;
    EXPECT_EQ(AllocateBlocks(set, 64, 2, true, 0, noDeadline), allocationFailed);
}

TEST(Deadline, ExpiresWhenTheClockReachesItAlsoAcrossTheClocksOverflow) {
    constexpr std::int64_t hour = 3600;
    constexpr std::int64_t clockPeriod = std::int64_t{1} << 32U;  // milliseconds
    struct Row {
        const char* what;
        std::int64_t startMilliseconds;
        std::int64_t seconds;
        std::int64_t expiresAfter;  // milliseconds
    };
    const std::vector<Row> rows{
        {"none", 1234, 0, 0},
        {"one second", 1234, 1, 1000},
        {"negative", 4999, -5, 0},
        {"hours", 1234, 100 * hour, 100 * hour * 1000},
        {"hours over the largest signed time", clockPeriod / 2 - 10, 2 * hour, 2 * hour * 1000},
        {"hours over the largest time", clockPeriod - 10, 2 * hour, 2 * hour * 1000},
        {"the value that stands for no deadline", clockPeriod - 1001, 1, 1001},
        {"longer than the clock", 0, std::numeric_limits<std::int64_t>::max(), 2147483000},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.what);
        FakePlatform platform;
        platform.clock.nowNanoseconds = row.startMilliseconds * nanosecondsPerMillisecond;
        const std::int32_t deadline = deadlineAfter(clockMilliseconds(), row.seconds);
        EXPECT_NE(deadline, noDeadline);
        platform.clock.nowNanoseconds += (row.expiresAfter - 1) * nanosecondsPerMillisecond;
        EXPECT_FALSE(hasExpired(deadline));
        platform.clock.nowNanoseconds += nanosecondsPerMillisecond;
        EXPECT_TRUE(hasExpired(deadline));
        EXPECT_FALSE(hasExpired(noDeadline));
    }
}

}  // namespace
}  // namespace vorn
