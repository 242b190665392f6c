#include <gtest/gtest.h>

#include <fstream>

#include "fakes/fake_platform.h"
#include "tests/cpu/cache_size_test.h"

namespace vorn {
namespace {

TEST(ReadCacheSizes, ReadsCachesWithoutAnEnd) {
    FakePlatform machine;
    machine.processor.leaves[{0, 0}].eax = 4;
    for (std::uint32_t subleaf = 0; subleaf < 300; ++subleaf) {
        machine.processor.leaves[{4, subleaf}].eax = 1U | (1U << 5U);
    }
    EXPECT_TRUE(readCacheSizes().known);
    EXPECT_LT(machine.processor.leavesRead.size(), 100U);
}

TEST(ReadCacheSizes, AgreesWithTheKernelOnThisMachine) {
    std::map<std::string, std::uint64_t> kernel;  // by level
    for (int index = 0; index < 8; ++index) {
        const auto word = [index](const std::string& name) {
            std::string text;
            std::ifstream("/sys/devices/system/cpu/cpu0/cache/index" + std::to_string(index) + "/" +
                          name) >>
                text;
            return text;
        };
        if (word("type") != "Instruction") {
            kernel[word("level")] = cacheSizeInKb(word("size"));
        }
    }
    if (kernel["2"] == 0) {
        GTEST_SKIP() << "the kernel describes no caches";
    }
    const CacheSizes sizes = readCacheSizes();
    EXPECT_TRUE(sizes.known);
    EXPECT_EQ(sizes.l2, kernel["2"]);
    EXPECT_EQ(sizes.l3, kernel["3"]);
}

}  // namespace
}  // namespace vorn
