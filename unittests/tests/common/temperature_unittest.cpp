#include "tests/common/temperature.h"

#include <gtest/gtest.h>

#include "fakes/captured_console.h"
#include "fakes/fake_platform.h"

namespace vorn {
namespace {

using Calls = std::vector<std::string>;

const Calls opened{"initialize", "status", "msr 0x19c", "deinitialize"};

struct Machine {
    FakePlatform platform;
    CapturedConsole console;
    std::string text;
};

TEST(ReadTemperatureMargin, TakesTheReadoutOfAValidRegisterAlone) {
    struct Row {
        std::uint64_t thermalStatus;
        double margin;
    };
    for (const Row& row :
         {Row{0x882D0000, 45}, Row{0x80000000, 0}, Row{0x80010000, 1}, Row{0xFFFFFFFF, 127},
          Row{0x7FFFFFFF, noTemperatureReading}, Row{0, noTemperatureReading},
          Row{0x80000000ULL << 1U, noTemperatureReading}}) {
        SCOPED_TRACE(row.thermalStatus);
        Machine machine;
        machine.platform.ring0.msrs[0x19C] = {row.thermalStatus};
        EXPECT_EQ(readTemperatureMargin(machine.text), row.margin);
        EXPECT_EQ(machine.platform.ring0.calls, opened);
        EXPECT_EQ(machine.console.text() + machine.text, "");
    }
}

TEST(ReadTemperatureMargin, AsksTheSystemsSensorsWhereTheRegisterGivesNothing) {
    Machine machine;
    machine.platform.temperatureSensors.sensors = {
        {40000, 0}, {45500, 100000}, {52250, 100000}, {30000, 90000}};
    EXPECT_EQ(readTemperatureMargin(machine.text), 47.75) << "the register refuses";
    machine.platform.ring0.msrs[0x19C] = {0};
    EXPECT_EQ(readTemperatureMargin(machine.text), 47.75) << "the reading is not valid";
    machine.platform.ring0.statusResults = {1};
    EXPECT_EQ(readTemperatureMargin(machine.text), 47.75) << "the driver is not usable";
    machine.platform.ring0.calls.clear();
    machine.platform.processor.setFeatures(0, 0);
    EXPECT_EQ(readTemperatureMargin(machine.text), 47.75) << "no register at all";
    EXPECT_TRUE(machine.platform.ring0.calls.empty());
    EXPECT_EQ(machine.console.text() + machine.text, "");

    machine.platform.temperatureSensors.sensors = {{101000, 100000}};
    EXPECT_EQ(readTemperatureMargin(machine.text), -1);
    machine.platform.temperatureSensors.sensors = {{0, 0}};
    EXPECT_EQ(readTemperatureMargin(machine.text), noTemperatureReading);
}

TEST(ReadTemperatureMargin, SaysThatNeitherDriverNorSensorAnswers) {
    for (const bool starts : {false, true}) {
        Machine machine;
        machine.platform.ring0.initializeResults = {starts ? 1U : 0U};
        machine.platform.ring0.statusResults = {1};
        EXPECT_EQ(readTemperatureMargin(machine.text), noTemperatureReading);
        EXPECT_EQ(machine.console.text(), "DLL not initialized\n");
        EXPECT_EQ(machine.text, "DLL not initialized\n");
        EXPECT_EQ(machine.platform.ring0.calls,
                  starts ? Calls({"initialize", "status", "deinitialize"})
                         : Calls({"initialize", "deinitialize"}));
    }
}

}  // namespace
}  // namespace vorn
