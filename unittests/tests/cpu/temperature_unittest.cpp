#include <gtest/gtest.h>

#include "fakes/test_scene.h"
#include "tests/cpu/temperature_test.h"

namespace vorn {
namespace {

/// A machine whose sensor gives these margins one after the other; negative ones are not valid.
struct Scene : TestScene {
    explicit Scene(const std::vector<int>& margins) {
        for (const int margin : margins) {
            platform.ring0.msrs[0x19C].push_back(
                margin < 0 ? 0 : 0x80000000U | static_cast<unsigned>(margin) << 16U);
        }
    }
    void runWith(const std::string& tolerance) {
        Settings settings;
        settings.temperatureWarningTolerance = tolerance;
        run(testTemperature, settings, monitor);
    }
    std::string now() { return localTimeText(platform.clock.wallSeconds()); }

    TemperatureMonitor monitor;
    std::string unused;
};

TEST(TemperatureTest, ListsTheSamplesAndTheFirstOfTheSmallest) {
    Scene scene({45, 38, 38, 44});
    const std::string first = scene.now();
    scene.monitor.sample("Temperature Test", scene.unused);
    scene.platform.clock.nowNanoseconds = 61000000000;
    const std::string second = scene.now();
    scene.monitor.sample("FSB", scene.unused);
    scene.platform.clock.nowNanoseconds = 62000000000;
    scene.monitor.sample("Base Clock Test", scene.unused);
    const std::string third = scene.now();
    scene.runWith("");
    const std::string lines = "\n --- Reading Temperature --- \n\n - " + first +
                              " Temperature Test --> 45 degrees below maximum\n - " + second +
                              " FSB --> 38 degrees below maximum\n - " + third +
                              " Base Clock Test --> 38 degrees below maximum\n - " + third +
                              " Temperature Test --> 44 degrees below maximum\n"
                              "Smallest margin --> 38 degrees at " +
                              second + " (FSB)\n";
    EXPECT_EQ(scene.console.text(), lines + "\nTemperature Test Passed!!!\n\n");
    EXPECT_EQ(scene.log, lines + "\nTemperature Test Passed!!!\n\n");
    EXPECT_EQ(scene.outcome(),
              "0|(nothing)|Temperature Test|V1|Pass|Code 123|Temperature Test Passed!!!");
    EXPECT_NE(first, second);
}

TEST(TemperatureTest, WarnsAtTheToleranceAndFailsAtZero) {
    struct Row {
        int margin;
        const char* tolerance;
        bool warns;
        bool passes;
    };
    for (const Row& row :
         {Row{6, "", false, true}, Row{5, "", true, true}, Row{21, "20.5", false, true},
          Row{20, "20.5", true, true}, Row{1, "0", false, true}, Row{1, "", true, true},
          Row{0, "", false, false}, Row{0, "0", false, false}}) {
        SCOPED_TRACE(testing::Message() << row.margin << " by " << row.tolerance);
        Scene scene({row.margin});
        scene.runWith(row.tolerance);
        const std::string degrees = std::to_string(row.margin) + " degrees";
        const std::string bound = *row.tolerance == 0 ? "5" : row.tolerance;
        const std::string verdict =
            row.passes ? "Temperature Test Passed!!!" : "Temperature Test Failed!!!";
        const std::string text =
            "\n --- Reading Temperature --- \n\n - " + scene.now() + " Temperature Test --> " +
            degrees + " below maximum\nSmallest margin --> " + degrees + " at " + scene.now() +
            " (Temperature Test)\n" +
            (row.warns ? "Warning: the margin is not above " + bound + " degrees!!!\n" : "") +
            "\n" + verdict + "\n\n";
        EXPECT_EQ(scene.console.text(), text);
        EXPECT_EQ(scene.log, text);
        EXPECT_EQ(scene.outcome(), std::string(row.passes ? "0" : "1") +
                                       "|(nothing)|Temperature Test|V1|" +
                                       (row.passes ? "Pass" : "Fail") + "|Code 123|" + verdict);
    }
    Scene recovered({0, 40});
    recovered.monitor.sample("FSB", recovered.unused);
    recovered.runWith("");
    EXPECT_EQ(recovered.result, VORN_FAIL) << "the smallest margin counts, not the last";
    Scene tooHot({});
    tooHot.platform.temperatureSensors.sensors = {{100500, 100000}};
    tooHot.runWith("");
    EXPECT_EQ(tooHot.result, VORN_FAIL);
}

TEST(TemperatureTest, EndsWithoutAVerdictWithoutAReading) {
    const std::string header = "\n --- Reading Temperature --- \n\n";
    const std::string reason =
        "There is no valid temperature reading on this machine\nTemperature Test Stop.\n";
    Scene invalid({-1});
    invalid.runWith("");
    EXPECT_EQ(invalid.console.text(), header + reason);
    EXPECT_EQ(invalid.log, header + reason);
    EXPECT_EQ(invalid.outcome(), "2|(nothing)|Temperature Test|V1|||");
    EXPECT_FALSE(invalid.monitor.holdsReading());

    Scene withoutDriver({40});
    withoutDriver.platform.ring0.statusResults = {1};
    withoutDriver.runWith("");
    EXPECT_EQ(withoutDriver.console.text(), header + "DLL not initialized\n" + reason);
    EXPECT_EQ(withoutDriver.log, header + "DLL not initialized\n" + reason);
    EXPECT_EQ(withoutDriver.outcome(), "2|(nothing)|Temperature Test|V1|||");
}

TEST(TemperatureMonitor, KeepsValidReadingsUntilItIsClosed) {
    Scene scene({-1, 30, -1, 31});
    TemperatureMonitor& monitor = scene.monitor;
    EXPECT_EQ(monitor.sample("a", scene.unused), noTemperatureReading);
    EXPECT_FALSE(monitor.holdsReading());
    EXPECT_EQ(monitor.sample("b", scene.unused), 30);
    EXPECT_TRUE(monitor.holdsReading());
    EXPECT_EQ(monitor.sample("c", scene.unused), noTemperatureReading);
    EXPECT_TRUE(monitor.holdsReading()) << "one reading that misses does not end the watch";
    monitor.close();
    EXPECT_FALSE(monitor.holdsReading());
    const std::size_t calls = scene.platform.ring0.calls.size();
    EXPECT_EQ(monitor.sample("d", scene.unused), noTemperatureReading);
    EXPECT_EQ(scene.platform.ring0.calls.size(), calls);
    EXPECT_EQ(monitor.samples().size(), 1U);
}

}  // namespace
}  // namespace vorn
