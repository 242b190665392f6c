#include <gtest/gtest.h>

#include <algorithm>
#include <ctime>
#include <deque>
#include <sstream>
#include <string>

#include "driver/sequence.h"
#include "fakes/captured_console.h"
#include "fakes/fake_platform.h"
#include "fakes/temporary_directory.h"
#include "vorn/vorn.h"

namespace vorn {
namespace {

const std::string desktopBrand = "Ovrin(R) Core2 CPU";

/// A run on a simulated machine: a processor with a bus of 1333 MHz and a wall clock that stands.
class RunTest : public testing::Test {
protected:
    RunTest() {
        platform_.processor.setBrand(desktopBrand);
        platform_.processor.setSignature(6, 0x17);
        platform_.ring0.msrs[0xCD] = {4};
        const auto start = static_cast<std::time_t>(platform_.clock.wallStart);
        char text[32];
        std::strftime(text, sizeof text, "%Y-%m-%d %H:%M:%S", std::localtime(&start));
        time_ = text;
    }

    int runWith(const std::string& attributes, const std::string& argument = "") {
        TemporaryDirectory::write("VORNconfig.xml", "<VORN " + attributes +
                                                        "><P CPUName='Ovrin Core2' BUSSpeed='" +
                                                        busSpeed_ + "'/></VORN>");
        console_.clear();
        platform_.interpreter.commandLines.clear();
        std::string program = "vorn";
        std::string label = argument;
        char* arguments[] = {program.data(), label.data(), nullptr};
        return run(argument.empty() ? 1 : 2, arguments);
    }

    std::ptrdiff_t temperatureReadings() const {
        const std::vector<std::string>& calls = platform_.ring0.calls;
        return std::count(calls.begin(), calls.end(), "msr 0x19c");
    }

    std::string head(const std::string& label) const {
        return "\n---------------------------\n--- Testing Processor " + label +
               " ---\n---------------------------\n\n";
    }

    TemporaryDirectory directory_;
    FakePlatform platform_;
    CapturedConsole console_;
    std::string busSpeed_ = "1333";
    std::string time_;
};

const std::string fsbPassed =
    "\n --- Reading FSB --- \n\n\nExpected FSB : --> 1333\n\nDetected FSB : --> 1333\n"
    "\nCPU FSB Test Passed!!!\n\n";
const std::string fsbFailed =
    "\n --- Reading FSB --- \n\n\nExpected FSB : --> 800\n\nDetected FSB : --> 1333\n"
    "CPU FSB Test Failed!!!\n\n";

// Everything but the test in the table that always runs.
const std::string allOff = "IMCTest='DISABLE' ";

TEST_F(RunTest, PassesWithItsReportOnTheConsoleAndInTheFile) {
    EXPECT_EQ(runWith(allOff + "OutputResultsText='ENABLE'"), 0);
    const std::string console = console_.text();
    const std::string start = head("1") +
                              "--- VORN64 - rev2.20.0.0.W.MP ---\n--- Start Time:" + time_ +
                              "---\n" + fsbPassed;
    EXPECT_EQ(console.substr(0, start.size()), start);
    const std::string end = "--- Test End Time:" + time_ +
                            "---\nTotal VORN test execution time was0 seconds\n"
                            "\t\t--- VORN64 PASSED ---\n";
    EXPECT_EQ(console.substr(console.size() - end.size()), end);

    const std::string report = TemporaryDirectory::read("CPUOut.txt");
    const std::string reportStart = head("1") + "\n--- VORN64 - rev2.20.0.0.W.MP ---\n\n" +
                                    "\n--- Start Time:" + time_ + "---\n\n" + fsbPassed;
    EXPECT_EQ(report.substr(0, reportStart.size()), reportStart);
    const std::string reportEnd = "\n--- Test End Time:" + time_ + "---\n\n\n\n";
    EXPECT_EQ(report.substr(report.size() - reportEnd.size()), reportEnd);
    EXPECT_EQ(TemporaryDirectory::read("CPUSummary.txt"),
              "\n    ---------------\n    --- Summary ---\n    ---------------\n"
              "\nProcessor\tStatus\n");
    EXPECT_TRUE(platform_.interpreter.commandLines.empty());
}

TEST_F(RunTest, LeavesTestLogsOutOfTheReportFileUnlessAskedFor) {
    runWith(allOff);
    EXPECT_EQ(TemporaryDirectory::read("CPUOut.txt").find("FSB"), std::string::npos);
}

TEST_F(RunTest, EndsAtTheFirstFailureWithItsOwnLineEnds) {
    busSpeed_ = "800";
    EXPECT_EQ(runWith("OutFileFormat='XML' OutputPassFailText='YES' OutputResultsText='YES' "
                      "GeneratePauseApp='TRUE'",
                      "CPU 7"),
              0);
    EXPECT_EQ(console_.text(), head("CPU 7") +
                                   "--- VORN64 - rev2.20.0.0.W.MP ---\n--- Start Time:" + time_ +
                                   "---\n" + fsbFailed + "\n\t\t--- VORN64 FAILED ---\n\n");
    std::string log = fsbFailed;
    log.insert(log.find("CPU FSB Test Failed"), "\n");
    EXPECT_EQ(TemporaryDirectory::read("CPUOut.txt"),
              head("CPU 7") + "\n--- VORN64 - rev2.20.0.0.W.MP ---\n\n\n--- Start Time:" + time_ +
                  "---\n\n" + log + "\n--- Test End Time: " + time_ + "---\n\n");
    EXPECT_EQ(TemporaryDirectory::read("t_passfail.txt"), "FAIL\n");
    EXPECT_TRUE(platform_.interpreter.commandLines.empty());
    const std::string results = TemporaryDirectory::read("CPUResults.xml");
    EXPECT_NE(results.find("result=\"FAIL\""), std::string::npos);
    EXPECT_NE(results.find("<Verdict>FAILED</Verdict>"), std::string::npos);
}

TEST_F(RunTest, GoesOnAfterAFailureWhenTold) {
    busSpeed_ = "800";
    for (const char* word : {"NO", "false", "Disable"}) {
        runWith(allOff + "CPUCount='2' OutputPassFailText='YES' StopOnFail='" + word + "'");
        const std::string end = "\t\t--- VORN64 FAILED ---\n";
        EXPECT_EQ(console_.text().substr(console_.text().size() - end.size()), end);
        EXPECT_NE(console_.text().find("Total VORN test execution time was0 seconds\n"),
                  std::string::npos);
        EXPECT_EQ(TemporaryDirectory::read("t_passfail.txt"), "FAIL\n");
        EXPECT_EQ(platform_.interpreter.commandLines,
                  (std::vector<std::string>{"move t_passfail.txt passfail.txt"}));
    }
    EXPECT_EQ(TemporaryDirectory::read("CPUSummary.txt"),
              "    1\t\tFail\n    1\t\tFail\n    1\t\tFail\n");
}

TEST_F(RunTest, AccumulatesTheRunsOfAMultiProcessorSystem) {
    platform_.processor.packages = 2;
    TemporaryDirectory::write("CPUOut.txt", "earlier\n");
    runWith(allOff, "1");
    busSpeed_ = "800";
    runWith(allOff + "MPSummary='YES' MPFailText='REPLACE'", "2");
    const std::string shown = "    1\t\tPass\n    2\t\tREPLACE\n";
    EXPECT_EQ(console_.text().substr(console_.text().size() - shown.size()), shown);
    EXPECT_EQ(TemporaryDirectory::read("CPUSummary.txt"), "    1\t\tPass\n    2\t\tFail\n");
    EXPECT_EQ(TemporaryDirectory::read("CPUOut.txt").substr(0, 8), "earlier\n");

    platform_.processor.packages = 1;  // the machine has one package again: replaced
    runWith(allOff + "CPUCount='0' StopOnFail='NO'");
    EXPECT_EQ(TemporaryDirectory::read("CPUSummary.txt").find("Fail"), std::string::npos);
}

TEST_F(RunTest, ShowsResultsAndMovesThePassFailFileAfterACompleteRun) {
    runWith(allOff + "OutFileFormat='text' OutputPassFailText='ENABLE' TrackCPU='YES'");
    EXPECT_EQ(
        platform_.interpreter.commandLines,
        (std::vector<std::string>{"move t_passfail.txt passfail.txt", "type CPUResults.txt"}));
    EXPECT_EQ(TemporaryDirectory::read("t_passfail.txt"), "PASS\n");
    const std::string results = TemporaryDirectory::read("CPUResults.txt");
    EXPECT_NE(results.find("Logical processors: 0 to 0\n"), std::string::npos);
    EXPECT_NE(results.find("\nVerdict: PASSED\n"), std::string::npos);
}

TEST_F(RunTest, ShowsTheGraphicsTestsOnlyAfterTheGraphicsDevicePassed) {
    const std::string off = "--- Integrated Graphics Device Test Disabled ---\n";
    const std::string steps =
        "--- 2D/3D Graphics Visual Test Disabled ---\n--- Rotation Visual Test Disabled ---\n";
    const auto consoleOf = [this](const std::string& attributes) {
        runWith(allOff + attributes);
        return console_.text();
    };
    platform_.processor.setSignature(6, 0x2A);
    EXPECT_NE(consoleOf("GFXTest='ENABLE' Rotation='ENABLE'").find(off), std::string::npos);
    EXPECT_EQ(console_.text().find("Graphics Visual"), std::string::npos);
    EXPECT_EQ(console_.text().find("Rotation"), std::string::npos);
    EXPECT_EQ(consoleOf("IGDTest='ENABLE'").find(steps), std::string::npos) << "not detected";

    platform_.ring0.setPciWord(0x10, 0, 0x7A6E);
    platform_.ring0.setPciWord(0, 0x50, 0);
    const std::string passed = "Presence Detection Passed..\n\n";
    EXPECT_NE(consoleOf("IGDTest='ENABLE'").find(passed + steps), std::string::npos);
    const std::string shown = consoleOf("IGDTest='ENABLE' GFXTest='enable' Rotation='enable'");
    EXPECT_LT(shown.find(passed), shown.find("--- Running 2D/3D Graphics Visual Test ---"));
    EXPECT_LT(shown.find("3D Graphics Visual Test program not named"),
              shown.find("--- Preparing for Rotation Test ---"));
    EXPECT_NE(shown.find("..Rotating Display Passed..\n\n"), std::string::npos);
}

TEST_F(RunTest, RunsTheMultiProcessorStressTestAloneInItsMode) {
    const std::string attributes =
        "MPLoadExe='/opt/stress' MultiProcStressLoad='80' MultiProcStressTime='10' "
        "OutputResultsText='YES'";
    const std::string dashes(35, '-');
    const std::string start =
        "\n" + dashes + "\n--- Multi Processor Stress Test ---\n" + dashes + "\n\n";
    const std::string fileStart = start + "\n--- VORN64 - rev2.20.0.0.W.MP ---\n\n" +
                                  "\n--- Start Time:" + time_ + "---\n\n" +
                                  "\n --- Multi Proc Load --- \n\n\n";
    const std::string level =
        " --- Multi Processor Load Level set to -80 - for -10 - minutes ---\n\n";
    for (const char* mode : {"MP", "mp"}) {
        EXPECT_EQ(runWith(attributes, mode), 0);
        EXPECT_EQ(console_.text(),
                  start + "--- VORN64 - rev2.20.0.0.W.MP ---\n--- Start Time:" + time_ +
                      "---\n\n --- Multi Proc Load ---\n\n" +
                      "\n/opt/stress ..Multi-Processor Stress Binary not found..\n" + level +
                      "\n..Multi Proc Stress Load Failed..\n" + "\n\t\t--- VORN64 FAILED ---\n\n");
        EXPECT_EQ(TemporaryDirectory::read("CPUOut.txt"),
                  fileStart + level + "\n..Multi Proc Stress Load Failed..\n\n" +
                      "\n--- Test End Time: " + time_ + "---\n\n");
    }
    platform_.interpreter.existingFiles = {"/opt/stress"};
    platform_.interpreter.program = [this] {
        platform_.clock.nowNanoseconds = platform_.clock.nowNanoseconds + 10000000000;
        platform_.clock.wallStart -= 10;
    };
    EXPECT_EQ(runWith(attributes, "MP"), 0);
    const std::string end =
        "\n..Multi Proc Stress Load Passed..\nMulti Processor Stress Load Complete!\nPASS\n"
        "--- Test End Time:" +
        time_ + "---\nTotal VORN test execution time was10 seconds\n\t\t--- VORN64 PASSED ---\n";
    EXPECT_EQ(console_.text().substr(console_.text().size() - end.size()), end);
    runWith(allOff, "Mp");
    EXPECT_EQ(console_.text().substr(0, head("Mp").size()), head("Mp"));
}

TEST_F(RunTest, KeepsTheCpuLoadToASystemOfOneProcessor) {
    const std::string load = allOff + "StressTest='enable' StressTestTime='0' ";
    runWith(load);
    EXPECT_NE(console_.text().find("CPU Load Passed!!!\nCPU Load Complete!\nPASS\n--- Test End"),
              std::string::npos);
    runWith(allOff);
    EXPECT_NE(console_.text().find("\n--- CPU Stress Test Disabled ---\n--- Test End"),
              std::string::npos);
    for (const std::string& attributes : {load, allOff}) {
        runWith(attributes + "CPUCount='2'");
        const std::string line =
            "--- Detected Multi-Processor System - CPU Stress Test Disabled ---\n";
        EXPECT_NE(console_.text().find("\n" + line + "--- Test End"), std::string::npos);
        EXPECT_NE(TemporaryDirectory::read("CPUOut.txt").find("\n" + line + "\n"),
                  std::string::npos);
        EXPECT_EQ(console_.text().find("Load Level"), std::string::npos);
        EXPECT_EQ(console_.text().find("--- CPU Stress Test"), std::string::npos);
    }
}

TEST_F(RunTest, EndsWithTheErrorOfATimerAndWithoutAPass) {
    EXPECT_THROW(runWith(allOff + "OutFileFormat='XML' OutputPassFailText='YES' "
                                  "PrimeNumGen='ENABLE' PrimeNumGenTimer='soon'"),
                 std::exception);
    EXPECT_EQ(console_.text().find("PASSED"), std::string::npos);
    EXPECT_EQ(TemporaryDirectory::read("t_passfail.txt"), "FAIL\n");
    const std::string results = TemporaryDirectory::read("CPUResults.xml");
    EXPECT_NE(results.find("<Verdict>INCOMPLETE</Verdict>"), std::string::npos) << results;
}

TEST_F(RunTest, SaysThatTheConfigurationIsSkipped) {
    runWith(allOff + "SkipConfig='yes'");
    EXPECT_NE(console_.text().find("---\n--- Skipping Config ---\n"), std::string::npos);
    EXPECT_NE(TemporaryDirectory::read("CPUOut.txt").find("\n\n\n--- Skipping Config ---\n\n"),
              std::string::npos);
}

TEST_F(RunTest, WaitsForQWhenAsked) {
    std::istringstream answers("no\n quit\nleft");
    std::streambuf* former = std::cin.rdbuf(answers.rdbuf());
    runWith(allOff + "GeneratePauseApp='true'");
    std::cin.rdbuf(former);
    const std::string prompt = "Please press 'q' <ENTER> to quit:";
    EXPECT_EQ(console_.text().substr(console_.text().size() - prompt.size()), prompt);
    std::string left;
    answers >> left;
    EXPECT_EQ(left, "left");
}

TEST_F(RunTest, CountsWholeSecondsOfTheRun) {
    platform_.clock.nanosecondsPerLook = 1900000000;
    runWith(allOff);
    // Two looks after the first: the end's wall clock, then the counter.
    EXPECT_NE(console_.text().find("execution time was5 seconds"), std::string::npos)
        << console_.text();
}

/// What the results file holds of the samples: test and margin of each.
std::string samplesWritten() {
    std::istringstream results(TemporaryDirectory::read("CPUResults.xml"));
    std::string samples;
    for (std::string line; std::getline(results, line);) {
        if (line.starts_with("  <Temperature time=")) {
            samples += line.substr(line.find(" test="));
        }
    }
    return samples;
}

TEST_F(RunTest, SamplesTheTemperatureAfterEveryTestThatRan) {
    const std::string watched = allOff + "OutFileFormat='XML' TemperatureTest='enable' ";
    const std::deque<std::uint64_t> cooling{0x802D0000, 0x802E0000, 0x802F0000};
    platform_.ring0.msrs[0x19C] = cooling;
    runWith(watched);
    EXPECT_EQ(samplesWritten(),
              " test=\"Temperature Test\" margin=\"45\"/>"
              " test=\"Temperature Test\" margin=\"46\"/> test=\"FSB\" margin=\"47\"/>");
    const std::string reported = "Temperature Test Passed!!!\n\n" + fsbPassed +
                                 "--- Base Clock Test Disabled ---\n--- QPI Test Disabled ---\n";
    EXPECT_NE(console_.text().find(reported), std::string::npos);

    platform_.ring0.msrs[0x19C] = cooling;
    busSpeed_ = "800";
    runWith(watched + "StopOnFail='NO'");
    EXPECT_NE(samplesWritten().find("test=\"FSB\" margin=\"47\"/>"), std::string::npos)
        << "also after a failure that does not stop the run";

    platform_.ring0.msrs[0x19C] = {0x80000000};
    runWith(watched);
    EXPECT_EQ(samplesWritten(), " test=\"Temperature Test\" margin=\"0\"/>");
    EXPECT_NE(console_.text().find("Temperature Test Failed!!!\n\n\n\t\t--- VORN64 FAILED ---"),
              std::string::npos);
}

TEST_F(RunTest, RepeatsTheTemperatureTestAfterTheLoadWhenItIsWatched) {
    const std::string load = allOff + "OutFileFormat='XML' StressTest='ENABLE' StressTestTime='0' ";
    const auto reports = [this] {
        const std::string text = console_.text();
        std::size_t count = 0;
        for (std::size_t at = text.find("Reading Temperature"); at != std::string::npos;
             at = text.find("Reading Temperature", at + 1)) {
            ++count;
        }
        return count;
    };
    platform_.ring0.msrs[0x19C] = {0x80090000, 0x80080000, 0x80070000,
                                   0x80060000, 0x80050000, 0x80040000};
    runWith(load + "TemperatureTest='ENABLE'");
    EXPECT_EQ(samplesWritten(),
              " test=\"Temperature Test\" margin=\"9\"/> test=\"Temperature Test\" margin=\"8\"/>"
              " test=\"FSB\" margin=\"7\"/> test=\"Simple CPU Load\" margin=\"6\"/>"
              " test=\"Temperature Test\" margin=\"5\"/> test=\"Temperature Test\" margin=\"4\"/>");
    EXPECT_EQ(reports(), 2U);
    EXPECT_NE(console_.text().find(" Simple CPU Load --> 6 degrees below maximum\n"),
              std::string::npos);

    runWith(load + "TemperatureTest='DISABLE'");
    EXPECT_EQ(reports(), 0U);
    platform_.ring0.msrs[0x19C] = {0};
    runWith(load + "TemperatureTest='ENABLE'");
    EXPECT_EQ(reports(), 1U);

    // A load of ten minutes, in which every look at the time takes six seconds, reads by itself.
    platform_.ring0.msrs[0x19C] = {0x80090000};
    platform_.ring0.calls.clear();
    platform_.clock.nanosecondsPerLook = 6000000000;
    runWith(allOff + "TemperatureTest='ENABLE' StressTest='ENABLE' StressTestTime='10'");
    EXPECT_GT(temperatureReadings(), 6);
}

TEST_F(RunTest, TakesNoSamplesWithoutTheSwitchOrAValidReading) {
    platform_.ring0.msrs[0x19C] = {0x802D0000};
    runWith(allOff + "TemperatureTest='DISABLE'");
    EXPECT_EQ(temperatureReadings(), 0);
    EXPECT_EQ(console_.text().find("Temperature"), std::string::npos) << "and no disabled line";
    platform_.ring0.msrs[0x19C] = {0x002D0000, 0x802D0000};
    runWith(allOff + "TemperatureTest='ENABLE'");
    EXPECT_EQ(temperatureReadings(), 1);
}

TEST(RunSequence, ReadsSwitchesAsEachStepSays) {
    Settings settings;
    const RunStep ordinary{FSB, SwitchRule::enabled, &Settings::baseClock, StepGuard::none, ""};
    const RunStep inverted{FSB, SwitchRule::unlessDisabled, &Settings::imcTest, StepGuard::none,
                           ""};
    EXPECT_FALSE(isStepEnabled(ordinary, settings));
    EXPECT_TRUE(isStepEnabled(inverted, settings));
    settings.baseClock = "Enable";
    settings.imcTest = "disable";
    EXPECT_TRUE(isStepEnabled(ordinary, settings));
    EXPECT_TRUE(isStepEnabled(inverted, settings)) << "only the exact word disables";
    settings.baseClock = "ENABLED";
    settings.imcTest = "DISABLE";
    EXPECT_FALSE(isStepEnabled(ordinary, settings));
    EXPECT_FALSE(isStepEnabled(inverted, settings));
}

}  // namespace
}  // namespace vorn
