#include <gtest/gtest.h>

#include "fakes/fake_platform.h"
#include "fakes/ran_test.h"
#include "tests/cpu/brand_string_test.h"

namespace vorn {
namespace {

TEST(BrandStringTest, ComparesTheWordsThatCount) {
    struct Row {
        const char* expected;
        const char* skip;
        std::string lines;
        const char* verdict;
    };
    const std::string title = "\n --- Reading CPU Brand String --- \n\n";
    const std::string detected = "Detected --> Ovrin(R) Core(TM) CPU 6600 @ 2.40GHz\n";
    const std::string passed = detected + "\nCPU Brand String Test Passed!!!\n\n";
    const std::string failed = detected + "\nCPU Brand String Test Failed!!!\n\n";
    const std::string shown = detected + "..No expected CPU Brand String - Skipping comparison..\n";
    const char* const pass = "0|Pass|0|CPU Brand String Test Passed!!!";
    const char* const fail = "1|Fail|2|CPU Brand String Test Failed!!!";
    for (const Row& row : {Row{"Ovrin Core 6600  processor 2.40GHz", "NO", passed, pass},
                           Row{"Ovrin Core 6601 2.40GHz", "", failed, fail},
                           Row{"ovrin Core 6600 2.40GHz", "", failed, fail},
                           Row{"Ovrin Core 6600", "", failed, fail},
                           Row{"Ovrin Core 6600 2.40GHz X", "", failed, fail},
                           Row{"", "", shown, "2|||"}, Row{"Ovrin", "yes", shown, "2|||"}}) {
        SCOPED_TRACE(row.expected);
        FakePlatform platform;
        platform.processor.setBrand("  Ovrin(R) Core(TM) CPU 6600 @ 2.40GHz");
        Settings settings;
        settings.cpuName = row.expected;
        settings.skipConfig = row.skip;
        const RanTest ran = runTestFunction(testBrandString, settings);
        const std::string expected =
            row.lines == shown ? "" : "Expected --> " + settings.cpuName + "\n";
        EXPECT_EQ(ran.console, title + expected + row.lines);
        EXPECT_EQ(ran.log, ran.console);
        EXPECT_EQ(ran.record, "CPU Brand String|V1");
        EXPECT_EQ(ran.verdict, row.verdict);
    }
}

}  // namespace
}  // namespace vorn
