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

/// Runs a test with its completion words; what was returned or raised, and shown.
std::string runIt(TestFunction function, TestObserver* observer = nullptr) {
    const CapturedConsole console;
    VORNTestResult result = VORN_NOT_RUN;
    TextData first;
    TextData second;
    const ConfigurationDocument document;
    std::string end;
    try {
        end = std::to_string(runCommon({FSB, function, std::nullopt, "Complete!"}, result,
                                       Settings(), document, first, second, {}, observer));
    } catch (const std::string& message) {
        end = "raised " + message;
    } catch (const std::runtime_error& error) {
        end = std::string("error ") + error.what();
    }
    return end + "\n" + console.text();
}

TEST(RunCommon, RaisesTheMessageOfAFailedRecordInAnyLetterCase) {
    for (const char* status : {"FAIL", "Fail", "fail"}) {
        statusToSet = status;
        EXPECT_EQ(runIt(recordedTest), "raised the message\n");
    }
    for (const char* status : {"Failed", "Fail ", "", "Pass", "VORN load driver error"}) {
        statusToSet = status;
        for (const VORNTestResult result : {VORN_PASS, VORN_FAIL, VORN_NOT_RUN}) {
            resultToSet = result;
            EXPECT_EQ(runIt(recordedTest), std::to_string(result) + "\nComplete!\nPASS\n")
                << status;
        }
    }
}

TEST(RunCommon, ShowsItsObserverEveryEnd) {
    Recorder recorder;
    resultToSet = VORN_PASS;
    statusToSet = "Pass";
    runIt(recordedTest, &recorder);
    resultToSet = VORN_FAIL;
    statusToSet = "Fail";
    runIt(recordedTest, &recorder);
    EXPECT_EQ(runIt(brokenTest, &recorder), "error broken\n");
    EXPECT_EQ(recorder.seen, (std::vector<std::string>{"begins 7", "Pass, the log, 0", "begins 7",
                                                       "Fail, the log, 1, raised", "begins 7",
                                                       "broken, , 2, raised"}));
}

}  // namespace
}  // namespace vorn
