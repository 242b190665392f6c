#include "tests/platform/graphics_visual_test.h"

#include "report/report.h"
#include "tests/common/external_program.h"

namespace vorn {

namespace {

/// One of the programs: what it is called in the report, and its path.
struct Program {
    std::string name;
    const std::string& path;
};

/// Starts a program; whether it ran for its time, or is not named.
bool runProgram(Report& report, const Program& program, const Settings& settings) {
    if (program.path.empty()) {
        report.both(".." + program.name + " program not named - Skipping..");
        return true;
    }
    const int outcome =
        runExternalProgram(program.path, {settings.gfxTime, settings.gfxSpin}, settings.gfxTime,
                           {.notFound = ".." + program.name + " Binary not found..",
                            .found = ".." + program.name + " Binary found..",
                            .executing = "..Executing..",
                            .endedEarly = {".." + program.name + " window closed unexpectedly..",
                                           "..Exiting Test.."}});
    const bool ran = outcome == externalProgramRan;
    report.both(".." + program.name + (ran ? " Passed.." : " Failed.."));
    return ran;
}

}  // namespace

std::string testGraphicsVisual(VORNTestResult& result, const Settings& settings, TestRecord& record,
                               std::string& log) {
    record.description = "A graphics test program did NOT run for its time";
    record.name = "2D/3D Graphics Visual Test";
    record.version = "V1";

    Report report(log);
    report.header("Running 2D/3D Graphics Visual Test");
    const bool passed2d =
        runProgram(report, {"2D Graphics Visual Test", settings.gfx2dTestExe}, settings);
    const bool passed3d =
        runProgram(report, {"3D Graphics Visual Test", settings.gfxTestExe}, settings);
    if (settings.gfx2dTestExe.empty() && settings.gfxTestExe.empty()) {
        result = VORN_NOT_RUN;
        return record.code;
    }

    const bool passed = passed2d && passed3d;
    const std::string sentence =
        passed ? "2D/3D Graphics Visual Test Passed!!!" : "2D/3D Graphics Visual Test Failed!!!";
    Report::console();
    report.line(sentence, "\n" + sentence + "\n\n");
    Report::console();
    Report::conclude(result, record,
                     passed ? Verdict{"Pass", "Code 123", sentence, VORN_PASS}
                            : Verdict{"Fail", "Code 123", sentence, VORN_FAIL});
    return record.code;
}

}  // namespace vorn
