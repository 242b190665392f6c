#include <gtest/gtest.h>

#include <set>
#include <string>

#include "fakes/fake_platform.h"
#include "tests/memory/memory_controller_test.h"
#include "tests/memory/stress_console.h"

namespace vorn {
namespace {

const std::string message = "Integrated Memory Controller Test Pass!!!";
const std::string notSupported = " --- IMC NOT Supported on this Processor ---";
const std::string sizeHead = "\n--- Reading Memory Size --- \n\n";

/// A machine with 8 GiB and a processor of the model list.
class MemoryControllerTest : public testing::Test {
protected:
    MemoryControllerTest() {
        platform_.processor.setSignature(6, 58);
        platform_.processor.setBrand("Ovrin(R) CPU");
        settings_.memorySize = "8GB";
        settings_.memoryStressTestSize = "10MB";
        settings_.memoryStressTestTime = "DISABLE";
    }

    void execute(VORNTestResult expectedResult, const std::string& status,
                 const std::string& expectedMessage) {
        const StressConsole console;
        VORNTestResult result = VORN_NOT_RUN;
        TestRecord record;
        log_.clear();
        EXPECT_EQ(testMemoryController(result, settings_, record, log_), "");
        console_ = console.text();
        EXPECT_EQ(result, expectedResult);
        EXPECT_EQ(record.name, "Integrated Memory Controller Test");
        EXPECT_EQ(record.version, "V1");
        EXPECT_EQ(record.status, status);
        EXPECT_EQ(record.code, "Code 123");
        EXPECT_EQ(record.message, expectedMessage);
    }

    FakePlatform platform_;
    Settings settings_;
    std::string console_;
    std::string log_;
};

TEST_F(MemoryControllerTest, PassesBothHalves) {
    execute(VORN_PASS, "Pass", message);
    EXPECT_EQ(console_, sizeHead +
                            "Expected Memory Size is --> 8.00GB\n"
                            "Detected Memory Size is --> 8.00GB\n"
                            "\n--- Memory Size Test Pass!!! --- \n\n" +
                            stressHead + "Memory to be allocated = 10485760 byte\n\n" +
                            stressLegend + stressProgress() + stressPassed + "\n" + message + "\n");
    EXPECT_EQ(log_, sizeHead +
                        "Expected Memory Size is --> 8.00GB\n\n"
                        "\nDetected Memory Size is --> 8.00GB\n\n"
                        "\n--- Memory Size Test Pass!!! --- \n\n" +
                        stressHead + stressPassed + "\n" + message + "\n\n");
}

TEST_F(MemoryControllerTest, LeavesOutTheStressTestAfterAFailedSizeTest) {
    platform_.memory.installed = std::uint64_t{4} << 20U;
    const std::string failure = "Memory Size Test Fail. Expected: 8.00GB Detected: 4.00GB";
    execute(VORN_FAIL, "Fail", failure);
    EXPECT_EQ(console_, sizeHead +
                            "Expected Memory Size is --> 8.00GB\n"
                            "Detected Memory Size is --> 4.00GB\n");
    EXPECT_EQ(log_, sizeHead +
                        "Expected Memory Size is --> 8.00GB\n\n"
                        "\nDetected Memory Size is --> 4.00GB\n\n"
                        "\n" +
                        failure + "\n\n");

    platform_.memory.installed = std::nullopt;
    const std::string unable = "Unable to retrieve memory size";
    execute(VORN_NOT_RUN, "Fail", unable);
    EXPECT_EQ(console_, sizeHead + unable + "\n\n");
    EXPECT_EQ(log_, sizeHead + "\n" + unable + "\n\n" + "\n" + unable + "\n\n");
    EXPECT_TRUE(platform_.memory.calls.empty());
}

TEST_F(MemoryControllerTest, ConcludesWithTheFailureOfTheStressTest) {
    settings_.memorySize = "DISABLE";
    platform_.memory.grantedBlocks = 0;
    execute(VORN_FAIL, "Fail", "Memory Stress Test fail to allocate memory.");
    EXPECT_EQ(console_, stressHead + "Memory to be allocated = 10485760 byte\n\n" + stressLegend +
                            "\nMemory Not Allocated.\n");
    EXPECT_EQ(log_, stressHead +
                        "\nMemory Not Allocated.\n"
                        "\nMemory Stress Test fail to allocate memory.\n\n");
}

TEST_F(MemoryControllerTest, KeepsTheResultWhenBothHalvesAreSwitchedOff) {
    settings_.memorySize = "disable";
    settings_.memoryStressTestSize = "Disable";
    execute(VORN_NOT_RUN, "Pass", message);
    EXPECT_EQ(console_, "\n" + message + "\n");
    EXPECT_EQ(log_, "\n" + message + "\n\n");
}

TEST_F(MemoryControllerTest, AnswersThatAProcessorHasNoControllerUnlessForced) {
    platform_.processor.setSignature(6, 23);
    for (const char* word : {"", "ENABLE", "FORCED"}) {
        settings_.imcTest = word;
        execute(VORN_NOT_RUN, "Pass", notSupported);
        EXPECT_EQ(console_, "\n" + notSupported + "\n");
        EXPECT_EQ(log_, "\n" + notSupported + "\n\n");
    }
    settings_.imcTest = "Force";
    execute(VORN_PASS, "Pass", message);
}

TEST_F(MemoryControllerTest, KnowsProcessorsByModelOrBrand) {
    const std::set<std::uint32_t> models{26, 30, 31, 37, 42, 44, 45, 46, 53, 55,
                                         58, 60, 61, 62, 63, 69, 70, 71, 77};
    for (std::uint32_t model = 0; model < 256; ++model) {
        platform_.processor.setSignature(6, model);
        EXPECT_EQ(hasMemoryController(), models.count(model) == 1) << "model " << model;
    }
    for (const std::uint32_t family : {5U, 15U, 25U}) {
        platform_.processor.setSignature(family, 58);
        EXPECT_FALSE(hasMemoryController()) << "family " << family;
    }
    for (const char* word : {"i7", "i5", "i3"}) {
        platform_.processor.setBrand(std::string("Ovrin(R) Core(TM) ") + word + "-3770");
        EXPECT_TRUE(hasMemoryController()) << word;
    }
    for (const char* word : {"I7", "i9", "i 7"}) {
        platform_.processor.setBrand(std::string("Ovrin(R) Core(TM) ") + word + "-3770");
        EXPECT_FALSE(hasMemoryController()) << word;
    }
}

}  // namespace
}  // namespace vorn
