#include "tests/isa/mmx_sse_test.h"

#include <cstddef>

#include "platform/platform.h"
#include "report/report.h"

namespace vorn {

namespace {

constexpr std::uint32_t leafFeatures = 1;

bool isReported(const Extension& extension) {
    const CpuidRegisters leaf = platform().processor.cpuid(leafFeatures);
    return ((leaf.*extension.flags >> extension.bit) & 1U) != 0;
}

}  // namespace

std::string testExtensions(const std::vector<Extension>& extensions, VORNTestResult& result,
                           TestRecord& record, std::string& log) {
    record.message = "Fail --- MMX SSE Testing complete ---";
    record.name = "MMXSSE";
    record.version = "2.0.0.0";

    Report report(log);
    report.line(" --- Determining MMX - SSE capabilities ---",
                "\n --- Determining MMX - SSE capabilities --- \n\n");
    report.both("\n\t\t --- CPU FEATURES DETECTION FOR ---");
    report.both("\t            ---        MMX SSE       ---");

    std::vector<bool> reported;
    reported.reserve(extensions.size());
    for (const Extension& extension : extensions) {
        reported.push_back(isReported(extension));
    }
    for (std::size_t i = 0; i < extensions.size(); ++i) {
        report.line(extensions[i].consoleLine + std::string(reported[i] ? "Yes" : "No"),
                    extensions[i].logLine + std::string(reported[i] ? "Yes\n" : "No \n"));
    }
    report.line("\t\t--- MMX SSE capabilities check complete ---\n",
                "\t\t--- MMX SSE - capabilities check complete ---\n\n");

    bool passed = true;
    for (std::size_t i = 0; i < extensions.size(); ++i) {
        report.log(extensions[i].resultLabel);
        if (!reported[i]) {
            report.log(" --- Not Tested\n");
            continue;
        }
        const bool extensionPassed = runRoutine(extensions[i].routine);
        report.log(extensionPassed ? "--- PASS\n" : "--- FAIL\n");
        passed = passed && extensionPassed;
    }

    if (passed) {
        report.line("MMX SSE Testing Passed !!", "MMX SSE Testing Passed !! \n");
        Report::conclude(
            result, record,
            {"Pass", "Code - Undefined", "Pass --- MMX SSE Testing complete ---", VORN_PASS});
    } else {
        report.line("MMX SSE Testing Failed !!", "MMX SSE Testing Failed !! \n");
        Report::conclude(
            result, record,
            {"Fail", "Code - Undefined", "Fail --- MMX SSE Testing complete ---", VORN_FAIL});
    }
    return record.code;
}

std::string testMmxSse(VORNTestResult& result, const Settings& /*settings*/, TestRecord& record,
                       std::string& log) {
    return testExtensions(mmxSseExtensions(), result, record, log);
}

}  // namespace vorn
