#include <gtest/gtest.h>

#include "fakes/test_scene.h"
#include "tests/cpu/base_clock_test.h"

namespace vorn {
namespace {

const std::string kept = "2|(nothing)|Base Clock Test|V1|||";

/// A processor of this base clock in kHz, nominally 100 MHz, with ratio 29.
struct Scene : TestScene {
    explicit Scene(std::uint64_t kilohertz = 100000) {
        platform.processor.setSignature(6, 0x3E);
        platform.processor.timestamps = {0, kilohertz * 29000};
        platform.ring0.msrs[0xCE] = {29U << 8U};
        platform.clock.nanosecondsPerLook = 250000000;
    }
    void runWith(const std::string& tolerance) {
        Settings settings;
        settings.baseClockTolerance = tolerance;
        run(testBaseClock, settings);
    }
};

TEST(BaseClockTest, ReportsAPassAndAFailure) {
    Scene good(101500);
    good.runWith("1.5");
    const std::string lines =
        "\n --- Reading Base Clock --- \n\nExpected --> 100 MHz\nDetected --> 101.5 MHz\n";
    EXPECT_EQ(good.console.text(), lines + "\nBase Clock Test Passed!!!\n\n");
    EXPECT_EQ(good.log, lines + "\nBase Clock Test Passed!!!\n\n");
    EXPECT_EQ(good.outcome(),
              "0|(nothing)|Base Clock Test|V1|Pass|Code 123|Base Clock Test Passed!!!");
    EXPECT_EQ(good.code, "Code 123");

    Scene bad(101500);
    bad.runWith("1.4");
    EXPECT_EQ(bad.console.text(), lines + "\nBase Clock Test Failed!!!\n\n");
    EXPECT_EQ(bad.log, lines + "\nBase Clock Test Failed!!!\n\n");
    EXPECT_EQ(bad.outcome(),
              "1|(nothing)|Base Clock Test|V1|Fail|Code 123|Base Clock Test Failed!!!");
}

TEST(BaseClockTest, JudgesByTheToleranceOnBothSides) {
    struct Row {
        std::uint64_t kilohertz;
        const char* tolerance;
        bool passes;
    };
    for (const Row& row : {Row{105000, "5", true}, Row{105001, "5", false}, Row{95000, "5 %", true},
                           Row{94999, "5", false}, Row{105000, "", true}, Row{105001, "", false},
                           Row{100000, "tight", true}, Row{100001, "0", false},
                           Row{150000, "DisplayOnly", true}, Row{150000, "DISPLAYONLY ", false}}) {
        SCOPED_TRACE(testing::Message() << row.kilohertz << " " << row.tolerance);
        Scene scene(row.kilohertz);
        scene.runWith(row.tolerance);
        EXPECT_EQ(scene.result, row.passes ? VORN_PASS : VORN_FAIL);
    }
}

TEST(BaseClockTest, EndsWithoutAVerdictWhereNothingCanBeMeasured) {
    Scene withoutRegisters;
    withoutRegisters.platform.processor.setFeatures(0, 0);
    withoutRegisters.runWith("5");
    const std::string lines = "This CPU does not support MSR\nBase Clock Test Stop.\n";
    EXPECT_EQ(withoutRegisters.console.text(), lines);
    EXPECT_EQ(withoutRegisters.log, lines);
    EXPECT_EQ(withoutRegisters.outcome(), kept);
    EXPECT_TRUE(withoutRegisters.platform.ring0.calls.empty());

    Scene withoutRatio;
    withoutRatio.platform.ring0.msrs[0xCE] = {0};
    withoutRatio.runWith("DISPLAYONLY");
    const std::string reason =
        "\n --- Reading Base Clock --- \n\nThis CPU does not give its maximum non-turbo ratio\n"
        "Base Clock Test Stop.\n";
    EXPECT_EQ(withoutRatio.console.text(), reason);
    EXPECT_EQ(withoutRatio.log, reason);
    EXPECT_EQ(withoutRatio.outcome(), kept);
}

TEST(BaseClockTest, MeasuresAgainWhileItsIntervalIsDisturbed) {
    Scene scene;
    scene.platform.processor.timestamps = {9, 0, 9, 0, 0, 2900000000};
    scene.runWith("0");
    EXPECT_EQ(scene.result, VORN_PASS);
    EXPECT_EQ(scene.platform.ring0.calls.size(), 12U) << "three openings";
}

TEST(BaseClockTest, RaisesTheDriverFailureAfterItsBlock) {
    Scene scene;
    scene.platform.ring0.initializeResults = {0};
    scene.runWith("5");
    EXPECT_EQ(scene.console.text(), driverFailureConsole);
    EXPECT_EQ(scene.log, driverFailureLog);
    EXPECT_EQ(scene.outcome(),
              "1|VORN encountered problem loading driver..|Base Clock Test|V1|"
              "VORN load driver error|Fail|VORN load driver error");
}

}  // namespace
}  // namespace vorn
