#include "tests/compute/floating_point_test.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>

#include "platform/platform.h"
#include "report/report.h"
#include "tests/compute/floating_point_recurrence.h"

namespace vorn {

namespace {

// Several, because code generators that differ in evaluation round differently. Strict evaluation
// in double precision, as here, reaches the last one.
constexpr std::array<std::uint64_t, 5> acceptedSums{
    0x40051B8468E56CC7,  // 2.638436145307057
    0x40051B8468E56CC3,  // 2.6384361453070553
    0x40051B8468E568FB,  // 2.6384361453066254
    0x40051B8468E5684F,  // 2.638436145306549
    0x40051B8468E5685B,  // 2.6384361453065543
};

constexpr double operationsPerCycle =
    1.0 * floatingPointOperationsPerStep * floatingPointSteps * floatingPointRepetitions;

/// Millions of operations a second, as last measured.
double& lastMflops() {
    static double mflops = 0;
    return mflops;
}

void showStatus(double mflops, int cycle, int errors, std::int64_t seconds) {
    reportStream() << "\r" << mflops << std::string(10, ' ') << cycle << std::string(12, ' ')
                   << cycle << std::string(14, ' ') << errors << std::string(11, ' ') << seconds
                   << "    \b    " << std::flush;
}

}  // namespace

double floatingPointCycle() {
    FloatingPointOperands operands;
    // The values are opaque, so that no compiler computes a cycle beforehand or only once.
    asm volatile(""
                 : "+x"(operands.x1), "+x"(operands.x2), "+x"(operands.x3), "+x"(operands.x4),
                   "+x"(operands.t));
    return floatingPointSum(operands.x1, operands.x2, operands.x3, operands.x4, operands.t);
}

bool isAcceptedFloatingPointSum(double sum) {
    const auto bits = std::bit_cast<std::uint64_t>(sum);
    return std::find(acceptedSums.begin(), acceptedSums.end(), bits) != acceptedSums.end();
}

int runFloatingPoint(int seconds, bool stopOnError, FloatingPointCycle cycle) {
    lastMflops() = 0;
    Clock& clock = platform().clock;
    const std::int64_t start = clock.wallSeconds();
    reportStream() << "MFLOPS       CycleRun     CycleVerified     Error       Time(sec)\n"
                   << std::flush;
    double operations = 0;
    std::int64_t reported = 0;
    int errors = 0;
    for (int cycleNumber = 1;; ++cycleNumber) {
        if (!isAcceptedFloatingPointSum(cycle())) {
            ++errors;
        }
        operations += operationsPerCycle;
        const std::int64_t elapsed = clock.wallSeconds() - start;
        if (elapsed > reported) {
            lastMflops() = operations / 1000000 / static_cast<double>(elapsed - reported);
            operations = 0;
            showStatus(lastMflops(), cycleNumber, errors, elapsed);
            reported = elapsed;
        }
        if ((elapsed > 1 && elapsed >= seconds) || (errors > 0 && stopOnError)) {
            return errors;
        }
    }
}

std::string testFloatingPointWith(FloatingPointCycle cycle, VORNTestResult& result,
                                  const Settings& settings, TestRecord& record, std::string& log) {
    record.name = "Floating Point test";
    record.version = "V1";
    Report report(log);
    report.console();
    report.line(" --- Running Floating Point test ---",
                "\n --- Running Floating Point test --- \n\n");
    report.console();

    const int seconds = integerOf(settings, &Settings::floatingPointTimer);
    const int errors = runFloatingPoint(seconds, true, cycle);
    const std::string mflops = std::to_string(lastMflops());
    report.console();
    report.console("Million Floating Points per Second, MFLOPS -->", lastMflops());
    report.console("Error -->", errors);
    report.log("\nMillion Floating Points per Second, MFLOPS -->", mflops, "\n");

    if (errors == 0) {
        report.line("Floating Point Test Pass---", "Floating Point Test Pass ---\n");
        Report::conclude(
            result, record,
            {"Pass", "",
             "Floating Point Test Pass with Million Floating Points per Second, MFLOPS =" + mflops,
             VORN_PASS});
    } else {
        report.console();
        report.line("!!! ---  Floating Point Test Fail --- !!!",
                    "\n!!! ---  Floating Point Test Fail --- !!!\n");
        Report::conclude(result, record,
                         {"Fail", "00-009-010", "Floating Point Test Fail", VORN_FAIL});
    }
    return record.code;
}

std::string testFloatingPoint(VORNTestResult& result, const Settings& settings, TestRecord& record,
                              std::string& log) {
    return testFloatingPointWith(floatingPointCycle, result, settings, record, log);
}

}  // namespace vorn
