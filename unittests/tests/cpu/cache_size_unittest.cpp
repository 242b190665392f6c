#include <gtest/gtest.h>

#include <fstream>

#include "fakes/fake_platform.h"
#include "fakes/ran_test.h"
#include "tests/cpu/cache_size_test.h"

namespace vorn {
namespace {

/// The parameters of one cache as CPUID returns them.
CpuidRegisters cache(std::uint32_t type, std::uint32_t level, std::uint32_t ways,
                     std::uint32_t sets, std::uint32_t partitions = 1) {
    return {type | (level << 5U) | 0x4000U, ((ways - 1) << 22U) | ((partitions - 1) << 12U) | 63U,
            sets - 1, 0};
}

/// A processor of 256 KB and 8 MB that describes its caches in this leaf.
struct Machine : FakePlatform {
    std::map<std::pair<std::uint32_t, std::uint32_t>, CpuidRegisters>& leaves = processor.leaves;

    explicit Machine(std::uint32_t leaf = 4) {
        leaves[{0, 0}].eax = 4;
        leaves[{0x80000000, 0}].eax = 0x8000001D;
        leaves[{0x80000001, 0}].ecx = leaf == 4 ? 0 : 1U << 22U;  // topology extensions
        leaves[{leaf, 0}] = cache(1, 1, 8, 64);
        leaves[{leaf, 1}] = cache(2, 2, 8, 128);  // of instructions: not the one meant
        leaves[{leaf, 2}] = cache(3, 2, 8, 512);
        leaves[{leaf, 3}] = cache(3, 3, 16, 4096, 2);
    }
};

TEST(ReadCacheSizes, TakesTheLeafThatTheProcessorDescribesItsCachesIn) {
    for (const std::uint32_t leaf : {4U, 0x8000001DU}) {
        Machine machine(leaf);
        EXPECT_EQ(readCacheSizes().l2, 256U);
        EXPECT_EQ(readCacheSizes().l3, 8192U);
        machine.leaves[{leaf == 4 ? 0 : 0x80000000, 0}].eax = leaf - 1;
        EXPECT_FALSE(readCacheSizes().known) << "a leaf beyond the last one";
    }
    Machine machine(0x8000001D);
    machine.leaves[{0x80000001, 0}].ecx = 0;
    EXPECT_FALSE(readCacheSizes().known) << "a leaf that the processor does not have";
    for (std::uint32_t subleaf = 0; subleaf < 300; ++subleaf) {
        machine.leaves[{4, subleaf}] = cache(1, 1, 1, 16);
    }
    EXPECT_EQ(readCacheSizes().l2, 0U) << "caches without an end";
}

TEST(CacheSizeInKb, ReadsKilobytesMegabytesAndBytes) {
    const std::map<std::string, std::uint64_t> sizes{
        {"256KB", 256},    {"256 kb", 256},  {" 1.25 MB", 1280},
        {"8388608", 8192}, {"1GB", 1048576}, {"262144 bytes", 256},
        {"", 0},           {"large", 0},     {"-5MB", 0},
        {"1e300", 0},      {"inf", 0}};
    for (const auto& [text, kb] : sizes) {
        EXPECT_EQ(cacheSizeInKb(text), kb) << text;
    }
}

TEST(CacheSizeTest, ComparesTheLevelsThatAreAskedFor) {
    struct Row {
        const char* l2Switch;
        const char* l2;
        const char* l3;
        std::string lines;
        VORNTestResult result;
    };
    const std::string expectedL2 = " - Expected L2 Cache Size --> 256 KB\n";
    const std::string l2 = " - Detected L2 Cache Size --> 256 KB\n";
    const std::string expectedL3 = " - Expected L3 Cache Size --> 8192 KB\n";
    const std::string l3 = " - Detected L3 Cache Size --> 8192 KB\n";
    const std::vector<Row> rows{
        {"Enable", "256KB", "8MB", expectedL2 + l2 + expectedL3 + l3, VORN_PASS},
        {"ENABLE", "512 KB", "8MB", " - Expected L2 Cache Size --> 512 KB\n" + l2 + expectedL3 + l3,
         VORN_FAIL},
        {"ENABLE", "256KB", "8193KB",
         expectedL2 + l2 + " - Expected L3 Cache Size --> 8193 KB\n" + l3, VORN_FAIL},
        {"ENABLE", "", "8MB", l2 + expectedL3 + l3, VORN_PASS},
        {"ENABLE", "256KB", "", expectedL2 + l2 + l3, VORN_PASS},
        {"DISABLE", "1KB", "8388608", expectedL3 + l3, VORN_PASS},
        {"ENABLE", "", "", l2 + l3, VORN_NOT_RUN},
        {"", "1KB", "", l3, VORN_NOT_RUN},
        {"ENABLE", "256KB", "8MB", "", VORN_NOT_RUN},  // describes no caches
    };
    const std::string verdicts[] = {"0|Pass|Code 123|Cache Size Test Passed!!!",
                                    "1|Fail|Code 123|Cache Size Test Failed", "2|||"};
    const std::string ends[] = {"\nCache Size Test Passed!!!\n\n", "\nCache Size Test Failed\n\n",
                                "..No expected Cache Size - Skipping comparison..\n"};
    for (const Row& row : rows) {
        SCOPED_TRACE(row.lines);
        Machine machine;
        Settings settings;
        settings.l2CacheTest = row.l2Switch;
        settings.l2Cache = row.l2;
        settings.l3Cache = row.l3;
        std::string end = ends[row.result];
        if (row.lines.empty()) {
            machine.leaves[{4, 0}] = {};
            end = "Cache test not supported on this model processor.\n";
        }
        const RanTest ran = runTestFunction(testCacheSize, settings);
        EXPECT_EQ(ran.console, "\n --- Reading Cache Size --- \n\n" + row.lines + end);
        EXPECT_EQ(ran.log, ran.console);
        EXPECT_EQ(ran.record, "Cache|V1");
        EXPECT_EQ(ran.verdict, verdicts[row.result]);
    }
}

TEST(ReadCacheSizes, AgreesWithTheKernelOnThisMachine) {
    std::map<std::string, std::uint64_t> kernel;  // by level
    for (int index = 0; index < 8; ++index) {
        std::string words[3];
        for (const auto& [word, name] : {std::pair(0, "level"), {1, "size"}, {2, "type"}}) {
            std::ifstream("/sys/devices/system/cpu/cpu0/cache/index" + std::to_string(index) + "/" +
                          name) >>
                words[word];
        }
        if (words[2] != "Instruction") {
            kernel[words[0]] = cacheSizeInKb(words[1]);
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
