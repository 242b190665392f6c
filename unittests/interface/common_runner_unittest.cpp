#include "interface/common_runner.h"

#include <gtest/gtest.h>

#include <stdexcept>

#include "fakes/captured_console.h"

namespace vorn {
namespace {

std::string statusToSet;
VORNTestResult resultToSet = VORN_PASS;

std::string recordedTest(VORNTestResult& result, const Settings& /*settings*/, TestRecord& record,
                         std::string& log) {
    record.status = statusToSet;
    record.message = "the message";
    log = "the log";
    result = resultToSet;
    return "code";
}

std::string brokenTest(VORNTestResult& /*result*/, const Settings& /*settings*/, TestRecord& record,
                       std::string& /*log*/) {
    record.name = "broken";
    throw std::runtime_error("broken");
}

struct Recorder : TestObserver {
    std::vector<std::string> seen;
    void testBegins(vorn::Test test) override { seen.push_back("begins " + std::to_string(test)); }
    void testEnded(const TestOutcome& outcome) override {
        seen.push_back(outcome.record.name + outcome.record.status + ", " + outcome.log + ", " +
                       std::to_string(outcome.result) + (outcome.raised ? ", raised" : ""));
    }
};

VORNTestResult runIt(TestFunction function, const char* completion = nullptr,
                     TestObserver* observer = nullptr) {
    VORNTestResult result = VORN_NOT_RUN;
    TextData first;
    TextData second;
    const ConfigurationDocument document;
    return runCommon({FSB, function, std::nullopt, completion}, result, Settings(), document, first,
                     second, TestContext(), observer);
}

TEST(RunCommon, RaisesTheMessageOfAFailedRecordInAnyLetterCase) {
    for (const char* status : {"FAIL", "Fail", "fail"}) {
        statusToSet = status;
        try {
            runIt(recordedTest);
            FAIL() << status;
        } catch (const std::string& message) {
            EXPECT_EQ(message, "the message");
        }
    }
    for (const char* status : {"Failed", "Fail ", "", "Pass", "VORN load driver error"}) {
        statusToSet = status;
        EXPECT_NO_THROW(runIt(recordedTest)) << status;
    }
}

TEST(RunCommon, ReturnsTheResultAndThenPrintsTheCompletionWords) {
    statusToSet = "";
    for (const VORNTestResult result : {VORN_PASS, VORN_FAIL, VORN_NOT_RUN}) {
        const CapturedConsole console;
        resultToSet = result;
        EXPECT_EQ(runIt(recordedTest, "Load Complete!"), result);
        EXPECT_EQ(console.text(), "Load Complete!\nPASS\n");
    }
    const CapturedConsole console;
    statusToSet = "Fail";
    EXPECT_THROW(runIt(recordedTest, "Load Complete!"), std::string);
    EXPECT_THROW(runIt(brokenTest, "Load Complete!"), std::runtime_error);
    EXPECT_EQ(console.text(), "");
}

TEST(RunCommon, TellsALoadTestWhenTheRunStartedAndWhetherToMonitor) {
    const LoadTestFunction load = [](VORNTestResult& result, const Settings&, TestRecord&,
                                     std::string&, std::int64_t startCount, bool monitor) {
        result = startCount == 77 && monitor ? VORN_PASS : VORN_FAIL;
        return std::string();
    };
    VORNTestResult result = VORN_NOT_RUN;
    TextData first;
    TextData second;
    const ConfigurationDocument document;
    EXPECT_EQ(runCommon({CPU_LOAD, load, std::nullopt, nullptr}, result, Settings(), document,
                        first, second, {77, true}, nullptr),
              VORN_PASS);
}

TEST(RunCommon, ShowsItsObserverEveryEnd) {
    Recorder recorder;
    resultToSet = VORN_PASS;
    statusToSet = "Pass";
    runIt(recordedTest, nullptr, &recorder);
    resultToSet = VORN_FAIL;
    statusToSet = "Fail";
    EXPECT_THROW(runIt(recordedTest, nullptr, &recorder), std::string);
    EXPECT_THROW(runIt(brokenTest, nullptr, &recorder), std::runtime_error);
    EXPECT_EQ(recorder.seen, (std::vector<std::string>{"begins 7", "Pass, the log, 0", "begins 7",
                                                       "Fail, the log, 1, raised", "begins 7",
                                                       "broken, , 2, raised"}));
}

}  // namespace
}  // namespace vorn
