#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>
#include <stdexcept>

#include "fakes/captured_console.h"
#include "fakes/fake_platform.h"
#include "tests/compute/floating_point_recurrence.h"
#include "tests/compute/floating_point_test.h"

namespace vorn {
namespace {

const std::string head = "MFLOPS       CycleRun     CycleVerified     Error       Time(sec)\n";

TEST(FloatingPointCycle, ReachesItsSumToTheLastBit) {
    EXPECT_EQ(std::bit_cast<std::uint64_t>(floatingPointCycle()), 0x40051B8468E5685BU);
}

TEST(FloatingPointCycle, ShowsALastBitChangeOfTheFactor) {
    const FloatingPointOperands from;
    for (const double t : {std::nextafter(from.t, 0), std::nextafter(from.t, 1)}) {
        EXPECT_FALSE(
            isAcceptedFloatingPointSum(floatingPointSum(from.x1, from.x2, from.x3, from.x4, t)));
    }
}

TEST(FloatingPointCycle, AcceptsFiveSumsAndNoNeighbour) {
    for (const std::uint64_t bits : {0x40051B8468E56CC7U, 0x40051B8468E56CC3U, 0x40051B8468E568FBU,
                                     0x40051B8468E5684FU, 0x40051B8468E5685BU}) {
        EXPECT_TRUE(isAcceptedFloatingPointSum(std::bit_cast<double>(bits)));
        EXPECT_FALSE(isAcceptedFloatingPointSum(std::bit_cast<double>(bits - 1)));
        EXPECT_FALSE(isAcceptedFloatingPointSum(std::bit_cast<double>(bits + 1)));
        EXPECT_FALSE(isAcceptedFloatingPointSum(-std::bit_cast<double>(bits)));
    }
    EXPECT_FALSE(isAcceptedFloatingPointSum(0));
    EXPECT_FALSE(isAcceptedFloatingPointSum(std::numeric_limits<double>::quiet_NaN()));
}

/// A double of a processor that gets the last bit of one operation of each step wrong.
struct FaultyDouble {
    double value;
};
constexpr int operationsOfAStep = 28;
int faultyOperation = 0;
int operation = 0;

FaultyDouble result(double value) {
    operation = operation + 1 == operationsOfAStep ? 0 : operation + 1;
    return {operation == faultyOperation ? std::nextafter(value, 10) : value};
}
FaultyDouble operator+(FaultyDouble a, FaultyDouble b) {
    return result(a.value + b.value);
}
FaultyDouble operator-(FaultyDouble a, FaultyDouble b) {
    return result(a.value - b.value);
}
FaultyDouble operator*(FaultyDouble a, FaultyDouble b) {
    return result(a.value * b.value);
}
FaultyDouble operator/(FaultyDouble a, FaultyDouble b) {
    return result(a.value / b.value);
}
FaultyDouble operator-(double a, FaultyDouble b) {
    return {a - b.value};
}

double faultyCycle() {
    const FloatingPointOperands from;
    return floatingPointSum(FaultyDouble{from.x1}, FaultyDouble{from.x2}, FaultyDouble{from.x3},
                            FaultyDouble{from.x4}, FaultyDouble{from.t})
        .value;
}

TEST(RunFloatingPoint, ReportsAWrongLastBitInAnyLine) {
    FakePlatform platform;
    const CapturedConsole console;
    platform.clock.nanosecondsPerLook = 2000000000;
    faultyOperation = -1;
    EXPECT_EQ(runFloatingPoint(0, true, faultyCycle), 0) << "the faulty type without its fault";
    for (const int lastOfALine : {4, 8, 12, 16, 19, 22, 0}) {
        faultyOperation = lastOfALine;
        EXPECT_EQ(runFloatingPoint(0, true, faultyCycle), 1) << faultyOperation;
    }
}

double wrongCycle() {
    return std::nextafter(floatingPointCycle(), 0);
}

TEST(RunFloatingPoint, ReportsOnceASecondAndStopsAfterTwoAtLeast) {
    struct Row {
        int seconds;
        double secondsPerCycle;
        const char* status;
    };
    for (const Row& row :
         {Row{0, 0.4,
              "\r28.8          2            2              0           1    \b    "
              "\r28.8          4            4              0           2    \b    "},
          Row{-5, 1,
              "\r14.4          1            1              0           1    \b    "
              "\r14.4          2            2              0           2    \b    "},
          Row{3, 1.5,
              "\r7.2          1            1              0           2    \b    "
              "\r14.4          2            2              0           3    \b    "},
          Row{2, 10, "\r1.44          1            1              0           10    \b    "}}) {
        FakePlatform platform;
        const CapturedConsole console;
        platform.clock.nanosecondsPerLook = static_cast<std::int64_t>(row.secondsPerCycle * 1e9);
        EXPECT_EQ(runFloatingPoint(row.seconds, true), 0);
        EXPECT_EQ(console.text(), head + row.status);
    }
    FakePlatform platform;
    const CapturedConsole console;
    platform.clock.nanosecondsPerLook = 2000000000;
    EXPECT_EQ(runFloatingPoint(4, false, wrongCycle), 2) << "goes on when not told to stop";
    EXPECT_EQ(console.text(),
              head +
                  "\r7.2          1            1              1           2    \b    "
                  "\r7.2          2            2              2           4    \b    ");
}

struct Ran {
    VORNTestResult result = VORN_NOT_RUN;
    TestRecord record;
    std::string log;
    std::string code = "nothing returned";
};

TEST(FloatingPointTest, PassesWithItsRateAndFailsOnAWrongSum) {
    FakePlatform platform;
    platform.clock.nanosecondsPerLook = 3000000000;
    Settings settings;
    settings.floatingPointTimer = "3s";
    {
        const CapturedConsole console;
        Ran ran;
        ran.code = testFloatingPoint(ran.result, settings, ran.record, ran.log);
        EXPECT_EQ(console.text(),
                  "\n --- Running Floating Point test ---\n\n"
                  "MFLOPS       CycleRun     CycleVerified     Error       Time(sec)\n"
                  "\r4.8          1            1              0           3    \b    \n"
                  "Million Floating Points per Second, MFLOPS -->4.8\n"
                  "Error -->0\n"
                  "Floating Point Test Pass---\n");
        EXPECT_EQ(ran.log,
                  "\n --- Running Floating Point test --- \n\n"
                  "\nMillion Floating Points per Second, MFLOPS -->4.800000\n"
                  "Floating Point Test Pass ---\n");
        EXPECT_EQ(ran.result, VORN_PASS);
        EXPECT_EQ(ran.code, "");
        EXPECT_EQ(ran.record.name, "Floating Point test");
        EXPECT_EQ(ran.record.version, "V1");
        EXPECT_EQ(ran.record.status, "Pass");
        EXPECT_EQ(ran.record.message,
                  "Floating Point Test Pass with Million Floating Points per Second, MFLOPS "
                  "=4.800000");
    }
    platform.clock.nanosecondsPerLook = 0;
    const CapturedConsole console;
    Ran ran;
    ran.code = testFloatingPointWith(wrongCycle, ran.result, settings, ran.record, ran.log);
    EXPECT_EQ(console.text(),
              "\n --- Running Floating Point test ---\n\n"
              "MFLOPS       CycleRun     CycleVerified     Error       Time(sec)\n"
              "\nMillion Floating Points per Second, MFLOPS -->0\n"
              "Error -->1\n"
              "\n!!! ---  Floating Point Test Fail --- !!!\n");
    EXPECT_EQ(ran.log,
              "\n --- Running Floating Point test --- \n\n"
              "\nMillion Floating Points per Second, MFLOPS -->0.000000\n"
              "\n!!! ---  Floating Point Test Fail --- !!!\n");
    EXPECT_EQ(ran.result, VORN_FAIL);
    EXPECT_EQ(ran.code, "00-009-010");
    EXPECT_EQ(ran.record.status, "Fail");
    EXPECT_EQ(ran.record.code, "00-009-010");
    EXPECT_EQ(ran.record.message, "Floating Point Test Fail");
}

TEST(FloatingPointTest, RaisesForATimerThatIsNoNumberBeforeAnyCycle) {
    FakePlatform platform;
    const CapturedConsole console;
    Ran ran;
    Settings settings;
    EXPECT_THROW(testFloatingPoint(ran.result, settings, ran.record, ran.log),
                 std::invalid_argument);
    settings.floatingPointTimer = "4294967296";
    EXPECT_THROW(testFloatingPoint(ran.result, settings, ran.record, ran.log), std::out_of_range);
    EXPECT_EQ(console.text().find(head), std::string::npos);
    EXPECT_EQ(ran.result, VORN_NOT_RUN);
    EXPECT_EQ(ran.record.status, "");
}

}  // namespace
}  // namespace vorn
