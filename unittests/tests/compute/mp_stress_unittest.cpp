#include <gtest/gtest.h>

#include "fakes/captured_console.h"
#include "fakes/fake_platform.h"
#include "tests/compute/mp_stress_test.h"

namespace vorn {
namespace {

struct Row {
    const char* what;
    const char* path;
    int seconds;
    const char* console;
    const char* log;
    VORNTestResult result;
    const char* message;
};

TEST(MpStressTest, ReportsEveryEndOfTheProgram) {
    for (const Row& row :
         {Row{"absent", "", 0,
              "\n --- Multi Proc Load ---\n\n"
              "\n ..Multi-Processor Stress Binary not found..\n"
              " --- Multi Processor Load Level set to -80 - for -10 - minutes ---\n\n"
              "\n..Multi Proc Stress Load Failed..\n",
              "\n --- Multi Proc Load --- \n\n"
              "\n --- Multi Processor Load Level set to -80 - for -10 - minutes ---\n\n"
              "\n..Multi Proc Stress Load Failed..\n\n",
              VORN_FAIL, "..Multi Proc Stress Load Failed.."},
          Row{"ends early", "/opt/stress", 8,
              "\n --- Multi Proc Load ---\n\n"
              "\n/opt/stress ..Multi-Processor Stress Binary found..\n"
              "..Executing.. /opt/stress\n"
              "..Multi-Processor Stress Test window closed unexpectedly..\n"
              "..Exiting Test..\n"
              " --- Multi Processor Load Level set to -80 - for -10 - minutes ---\n\n"
              "\n..Multi Proc Stress Load Failed..\n"
              "..Mulit Proc Stress Window Closed Unexpectedly..\n",
              "\n --- Multi Proc Load --- \n\n"
              "\n --- Multi Processor Load Level set to -80 - for -10 - minutes ---\n\n"
              "\n..Multi Proc Stress Load Failed..\n"
              "..Multi Proc Stress Load Failed..\n\n",
              VORN_FAIL, "..Multi Proc Stress Load Failed.."},
          Row{"ends in time", "/opt/stress", 9,
              "\n --- Multi Proc Load ---\n\n"
              "\n/opt/stress ..Multi-Processor Stress Binary found..\n"
              "..Executing.. /opt/stress\n"
              " --- Multi Processor Load Level set to -80 - for -10 - minutes ---\n\n"
              "\n..Multi Proc Stress Load Passed..\n",
              "\n --- Multi Proc Load --- \n\n"
              "\n --- Multi Processor Load Level set to -80 - for -10 - minutes ---\n\n"
              "\n..Multi Proc Stress Load Passed..\n\n",
              VORN_PASS, "..Multi Proc Stress Load Passed.."}}) {
        SCOPED_TRACE(row.what);
        FakePlatform platform;
        const CapturedConsole console;
        platform.interpreter.existingFiles = {"/opt/stress"};
        platform.interpreter.program = [&] {
            platform.clock.nowNanoseconds += row.seconds * 1000000000LL;
        };
        Settings settings;
        settings.mpLoadExe = row.path;
        settings.multiProcStressLoad = "80";
        settings.multiProcStressTime = "10";
        VORNTestResult result = VORN_NOT_RUN;
        TestRecord record;
        std::string log;
        EXPECT_EQ(testMpStress(result, settings, record, log), "Code 123");
        EXPECT_EQ(console.text(), row.console);
        EXPECT_EQ(log, row.log);
        EXPECT_EQ(result, row.result);
        EXPECT_EQ(record.name, "Multi Proc Stress Load");
        EXPECT_EQ(record.status, row.result == VORN_PASS ? "Pass" : "Fail");
        EXPECT_EQ(record.code, "Code 123");
        EXPECT_EQ(record.message, row.message);
        const bool started = *row.path != '\0';
        EXPECT_EQ(
            platform.interpreter.commandLines,
            started ? std::vector<std::string>{"{/opt/stress} 80 10"} : std::vector<std::string>{});
    }
}

}  // namespace
}  // namespace vorn
