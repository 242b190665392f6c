#include "tests/compute/mp_stress_test.h"

#include "report/report.h"
#include "tests/common/external_program.h"

namespace vorn {

namespace {

constexpr const char* passed = "..Multi Proc Stress Load Passed..";
constexpr const char* failed = "..Multi Proc Stress Load Failed..";

int runStressProgram(const std::string& path, const std::string& load, const std::string& time) {
    return runExternalProgram(
        path, {load, time}, time,
        {"..Multi-Processor Stress Binary not found..",
         "..Multi-Processor Stress Binary found..",
         "..Executing..",
         {"..Multi-Processor Stress Test window closed unexpectedly..", "..Exiting Test.."}});
}

}  // namespace

std::string testMpStress(VORNTestResult& result, const Settings& settings, TestRecord& record,
                         std::string& log) {
    record.name = "Multi Proc Stress Load";
    record.version = "V1";
    Report report(log);
    report.console();
    report.line(" --- Multi Proc Load ---", "\n --- Multi Proc Load --- \n\n");
    report.console();

    const std::string& load = settings.multiProcStressLoad;
    const std::string& time = settings.multiProcStressTime;
    const int ended = runStressProgram(settings.mpLoadExe, load, time);
    const std::string level =
        " --- Multi Processor Load Level set to -" + load + " - for -" + time + " - minutes ---";
    report.line(level, "\n" + level + "\n\n");
    report.console();

    report.console();
    if (ended == externalProgramNotFound) {
        report.line(failed, "\n..Multi Proc Stress Load Failed..\n\n");
        Report::conclude(result, record, {"Fail", "Code 123", failed, VORN_FAIL});
    } else if (ended == externalProgramEndedEarly) {
        report.line(failed, "\n..Multi Proc Stress Load Failed..\n");
        report.line("..Mulit Proc Stress Window Closed Unexpectedly..",
                    "..Multi Proc Stress Load Failed..\n\n");
        Report::conclude(result, record, {"Fail", "Code 123", failed, VORN_FAIL});
    } else {
        report.line(passed, "\n..Multi Proc Stress Load Passed..\n\n");
        Report::conclude(result, record, {"Pass", "Code 123", passed, VORN_PASS});
    }
    return record.code;
}

}  // namespace vorn
