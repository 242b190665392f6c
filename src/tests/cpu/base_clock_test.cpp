#include "tests/cpu/base_clock_test.h"

#include "hw/cpuid.h"
#include "hw/ring0.h"
#include "report/report.h"
#include "tests/common/base_clock.h"
#include "tests/common/tolerance.h"

namespace vorn {

namespace {

constexpr double defaultTolerance = 5.0;  // percent

bool isAccepted(const BaseClock& clock, const std::string& toleranceText) {
    if (holdsWord(toleranceText, "DISPLAYONLY")) {
        return true;
    }
    const double tolerance =
        toleranceText.empty() ? defaultTolerance : leadingDouble(toleranceText);
    return isWithinPercent(clock.measured, clock.expected, tolerance);
}

std::string stopWithoutVerdict(Report& report, VORNTestResult& result, const char* reason) {
    report.both(reason);
    report.both("Base Clock Test Stop.");
    result = VORN_NOT_RUN;
    return {};
}

}  // namespace

std::string testBaseClock(VORNTestResult& result, const Settings& settings, TestRecord& record,
                          std::string& log) {
    record.description = "Base clock is NOT within its tolerance";
    record.name = "Base Clock Test";
    record.version = "V1";

    Report report(log);
    if (!cpuHasMsr()) {
        return stopWithoutVerdict(report, result, "This CPU does not support MSR");
    }
    BaseClock clock = measureBaseClock();
    while (clock.measured == baseClockDisturbed) {
        clock = measureBaseClock();
    }
    if (clock.measured == driverUnavailable) {
        reportDriverFailure(log, record, result);
        throw std::string(driverFailureError);
    }

    report.header("Reading Base Clock");
    if (clock.measured == 0.0) {
        return stopWithoutVerdict(report, result,
                                  clock.ratio == 0
                                      ? "This CPU does not give its maximum non-turbo ratio"
                                      : "The time-stamp counter of this CPU stands still");
    }
    report.compare(textOf(clock.expected, " MHz"), textOf(clock.measured, " MHz"));
    Report::console();
    if (isAccepted(clock, settings.baseClockTolerance)) {
        report.line("Base Clock Test Passed!!!", "\nBase Clock Test Passed!!!\n\n");
        Report::conclude(result, record,
                         {"Pass", "Code 123", "Base Clock Test Passed!!!", VORN_PASS});
    } else {
        report.line("Base Clock Test Failed!!!", "\nBase Clock Test Failed!!!\n\n");
        Report::conclude(result, record,
                         {"Fail", "Code 123", "Base Clock Test Failed!!!", VORN_FAIL});
    }
    Report::console();
    return record.code;
}

}  // namespace vorn
