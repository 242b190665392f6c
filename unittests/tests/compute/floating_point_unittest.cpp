#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>

#include "fakes/captured_console.h"
#include "fakes/fake_platform.h"
#include "report/text.h"
#include "tests/compute/floating_point_recurrence.h"
#include "tests/compute/floating_point_test.h"

namespace vorn {
namespace {

TEST(FloatingPointCycle, ReachesItsSumToTheLastBit) {
    EXPECT_EQ(std::bit_cast<std::uint64_t>(floatingPointCycle()), 0x40051B8468E5685BU);
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

TEST(RunFloatingPoint, GoesOnAfterAnErrorWhenNotToldToStop) {
    FakePlatform platform;
    const CapturedConsole console;
    platform.clock.nanosecondsPerLook = 2000000000;
    EXPECT_EQ(runFloatingPoint(4, false, wrongCycle), 2);
    EXPECT_EQ(console.text(),
              "MFLOPS       CycleRun     CycleVerified     Error       Time(sec)\n"
              "\r7.2          1            1              1           2    \b    "
              "\r7.2          2            2              2           4    \b    ");
}

// No second passes: no status line, and no rate, whatever was measured before.
TEST(FloatingPointTest, FailsOnAWrongSum) {
    const FakePlatform platform;
    const CapturedConsole console;
    Settings settings;
    settings.floatingPointTimer = "3";
    VORNTestResult result = VORN_NOT_RUN;
    TestRecord record;
    std::string log;
    testFloatingPointWith(wrongCycle, result, settings, record, log);
    EXPECT_EQ(console.text(),
              "\n --- Running Floating Point test ---\n\n"
              "MFLOPS       CycleRun     CycleVerified     Error       Time(sec)\n"
              "\nMillion Floating Points per Second, MFLOPS -->0\n"
              "Error -->1\n"
              "\n!!! ---  Floating Point Test Fail --- !!!\n");
    EXPECT_EQ(log,
              "\n --- Running Floating Point test --- \n\n"
              "\nMillion Floating Points per Second, MFLOPS -->0.000000\n"
              "\n!!! ---  Floating Point Test Fail --- !!!\n");
    EXPECT_EQ(textOf(result, "|", record.status, "|", record.code, "|", record.message),
              "1|Fail|00-009-010|Floating Point Test Fail");
}

}  // namespace
}  // namespace vorn
