#include "tests/memory/memory_size.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <vector>

#include "fakes/captured_console.h"
#include "fakes/fake_platform.h"
#include "tests/memory/size_text.h"

namespace vorn {
namespace {

constexpr std::uint64_t kilobyte = 1024;
constexpr std::uint64_t gigabyte = 1073741824;
constexpr std::int64_t largest = std::numeric_limits<std::int64_t>::max();
constexpr std::int64_t smallest = std::numeric_limits<std::int64_t>::min();

TEST(GetInstalledMemoryBytes, ChoosesTheMethodByTheSystemsVersion) {
    struct Row {
        SystemVersion version;
        bool installedMethod;
    };
    const std::vector<Row> rows{{{5, 1, 3}, false}, {{5, 2, 0}, false}, {{6, 0, 0}, false},
                                {{6, 0, 1}, true},  {{6, 1, 0}, true},  {{6, 3, 0}, true},
                                {{7, 0, 1}, false}, {{7, 1, 0}, true},  {{10, 0, 0}, false}};
    for (const Row& row : rows) {
        SCOPED_TRACE(testing::Message() << row.version.major << "." << row.version.minor);
        FakePlatform platform;
        platform.memory.version = row.version;
        const auto offer = [&platform](bool installedMethod) {
            platform.memory.installed.reset();
            platform.memory.managed.reset();
            if (installedMethod) {
                platform.memory.installed = 5;
            } else {
                platform.memory.managed = MemoryStatus{77, 11};
            }
        };
        std::uint64_t bytes = 0;
        offer(row.installedMethod);
        EXPECT_TRUE(GetInstalledMemoryBytes(bytes));
        EXPECT_EQ(bytes, row.installedMethod ? 5 * kilobyte : 77);
        offer(!row.installedMethod);
        EXPECT_FALSE(GetInstalledMemoryBytes(bytes)) << "the other method is no way out";
    }
    FakePlatform platform;
    platform.memory.version = std::nullopt;
    std::uint64_t bytes = 0;
    EXPECT_FALSE(GetInstalledMemoryBytes(bytes));
}

TEST(IsExpectedMemorySize, ExcludesBothBoundsInSinglePrecision) {
    struct Row {
        std::int64_t expected;
        std::uint64_t detected;
        bool fits;
    };
    const std::vector<Row> rows{
        {1000, 900, false},
        {1000, 901, true},
        {1000, 1099, true},
        {1000, 1100, false},
        {10, 9, false},
        {10, 10, true},
        {10, 11, false},
        {0, 0, false},
        {-10, 0, false},
        {-10, 10, false},
        // 0.9 and 1.1 of 4 GiB are 3865470566.4 and 4724464025.6; floats are 256 or 512 apart
        // there.
        {4294967296, 3865470464, false},
        {4294967296, 3865470464 + 128, false},  // rounds to the even neighbour, the bound itself
        {4294967296, 3865470464 + 129, true},
        {4294967296, 4724464128 - 256, true},
        {4294967296, 4724464128, false},
        {largest, 9223372036854775807U, true},
        {largest, gigabyte, false},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(isExpectedMemorySize(row.expected, row.detected), row.fits)
            << row.expected << " expected, " << row.detected << " detected";
    }
}

TEST(SizeText, ReadsEveryForm) {
    struct Row {
        const char* text;
        std::int64_t fractional;
        std::int64_t whole;
    };
    const std::vector<Row> rows{
        {"8GB", 8589934592, 8589934592},
        {"8 GB", 8589934592, 8589934592},
        {" 8GB ", 8589934592, 8589934592},
        {"1.5GB", 1610612736, 1073741824},
        {"0.3KB", 307, 0},
        {"1E1MB", 10485760, 1048576},
        {"+4096MB", 4294967296, 4294967296},
        {"-1GB", -1073741824, -1073741824},
        {"4KB", 4096, 4096},
        {"1KBGB", 1073741824, 1073741824},
        {"4096", 4096, 4096},
        {"-1", -1, -1},
        {" -1 ", -1, -1},
        {"12.9", 12, 12},
        {"GB", 0, 0},
        {"MANYGB", 0, 0},
        {"NANGB", 0, 0},
        {"LOTS", 0, 0},
        {"4TB", 4, 4},
        {"99999999999999999999", largest, largest},
        {"-99999999999999999999", smallest, smallest},
        {"99999999999999GB", largest, largest},
        {"17179869185GB", largest, largest},  // one more than fits: never a small size
        {"-99999999999999GB", smallest, smallest},
        {"1E400GB", largest, 1073741824},
        {"INFGB", largest, 0},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(bytesOfFractionalSize(row.text), row.fractional) << row.text;
        EXPECT_EQ(bytesOfWholeSize(row.text), row.whole) << row.text;
    }
}

/// One run of the size half on a machine with this much memory.
struct SizeRun {
    FakePlatform platform;
    CapturedConsole console;
    std::string log;
    VORNTestResult result = VORN_NOT_RUN;
    WorkingVerdict verdict{.result = result};
    bool goesOn = false;

    explicit SizeRun(const std::string& setting, std::optional<std::uint64_t> kilobytes) {
        platform.memory.installed = kilobytes;
        Settings settings;
        settings.memorySize = setting;
        Report report(log);
        goesOn = testMemorySize(settings, report, verdict);
    }
};

const std::string head = "\n--- Reading Memory Size --- \n\n";
const std::string passed = "\n--- Memory Size Test Pass!!! --- \n\n";

TEST(MemorySize, ComparesInTheUnitOfTheExpectedSize) {
    struct Row {
        const char* setting;
        std::uint64_t kilobytes;
        const char* expected;
        const char* detected;
        bool passes;
    };
    const std::vector<Row> rows{
        {"8gb", 8 << 20, "8.00GB", "8.00GB", true},
        {"4096mb", 4 << 20, "4.00GB", "4.00GB", true},
        {"4 GB", 4000000, "4.00GB", "3.81GB", true},
        {"7.99GB", 8 << 20, "7.99GB", "8.00GB", true},
        {"8GB", 7 << 20, "8.00GB", "7.00GB", false},
        {"1GB", 2 << 20, "1.00GB", "2.00GB", false},
        {"1023mb", 8 << 20, "1023.00MB", "8192.00MB", false},
        {"1024kB", 1024, "1.00MB", "1.00MB", true},
        {"1023KB", 1024, "1023.00kB", "1024.00kB", true},
        {"1024", 1, "1.00kB", "1.00kB", true},
        {"1023", 1, "1023B", "1024B", true},
        {"none", 1, "0B", "1024B", false},
        {"-2", 1, "-2B", "1024B", false},
        {"1e30GB", 1, "8589934592.00GB", "0.00GB", false},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.setting);
        const SizeRun run(row.setting, row.kilobytes);
        const std::string expected = std::string("Expected Memory Size is --> ") + row.expected;
        const std::string detected = std::string("Detected Memory Size is --> ") + row.detected;
        EXPECT_EQ(run.console.text(),
                  textOf(head, expected, "\n", detected, "\n", row.passes ? passed : ""));
        EXPECT_EQ(run.log,
                  textOf(head, expected, "\n\n\n", detected, "\n\n", row.passes ? passed : ""));
        EXPECT_EQ(run.goesOn, row.passes);
        EXPECT_EQ(run.result, row.passes ? VORN_PASS : VORN_FAIL);
        EXPECT_EQ(run.verdict.status, row.passes ? "Pass" : "Fail");
        EXPECT_EQ(run.verdict.message, row.passes
                                           ? "Integrated Memory Controller Test Pass!!!"
                                           : std::string("Memory Size Test Fail. Expected: ") +
                                                 row.expected + " Detected: " + row.detected);
    }
}

TEST(MemorySize, ShowsOnlyOrSkipsWhenTheSettingSaysSo) {
    struct Row {
        const char* setting;
        std::optional<std::uint64_t> kilobytes;
        std::string console;
        std::string log;
    };
    const std::string detected = "Detected Memory Size is --> ";
    const std::vector<Row> rows{
        {"", 8 << 20, head + detected + "8.00GB\n", head + "\n" + detected + "8.00GB\n\n"},
        {"enable", 512, head + detected + "512.00kB\n", head + "\n" + detected + "512.00kB\n\n"},
        {"ENABLE", std::nullopt, head + detected + "0B\n", head + "\n" + detected + "0B\n\n"},
        {"-1", 8 << 20, head, head},
        {"-1", std::nullopt, head, head},
        {"Disable", 8 << 20, "", ""},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.setting);
        const SizeRun run(row.setting, row.kilobytes);
        EXPECT_EQ(run.console.text(), row.console);
        EXPECT_EQ(run.log, row.log);
        EXPECT_TRUE(run.goesOn);
        EXPECT_EQ(run.result, VORN_NOT_RUN);
        EXPECT_EQ(run.verdict.status, "Pass");
    }
}

TEST(MemorySize, FailsWithoutAVerdictOnTheMemoryWhenItCannotBeRead) {
    const SizeRun run("8GB", std::nullopt);
    EXPECT_EQ(run.console.text(), head + "Unable to retrieve memory size\n\n");
    EXPECT_EQ(run.log, head + "\nUnable to retrieve memory size\n\n");
    EXPECT_FALSE(run.goesOn);
    EXPECT_EQ(run.result, VORN_NOT_RUN);
    EXPECT_EQ(run.verdict.status, "Fail");
    EXPECT_EQ(run.verdict.message, "Unable to retrieve memory size");
}

}  // namespace
}  // namespace vorn
