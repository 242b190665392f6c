#include "tests/isa/avx_aes_pclmulqdq_test.h"

#include <cstdint>

#include "platform/platform.h"
#include "report/report.h"
#include "tests/isa/aes_pclmulqdq.h"
#include "tests/isa/avx_race.h"

namespace vorn {

namespace {

// CPUID leaf 1, ECX.
constexpr std::uint32_t leafFeatures = 1;
constexpr std::uint32_t featurePclmulqdq = 0x2;
constexpr std::uint32_t featureAes = 0x2000000;
constexpr std::uint32_t featureOsxsave = 0x8000000;
constexpr std::uint32_t featureAvx = 0x10000000;
// Extended control register 0: SSE and AVX state enabled by the operating system.
constexpr std::uint64_t enabledSseAndAvx = 0x6;

/// Whether CPUID reports all features of the mask.
bool isReported(std::uint32_t mask) {
    return (platform().processor.cpuid(leafFeatures).ecx & mask) == mask;
}

bool systemSupportsAvx() {
    if (!isReported(featureAvx) || !isReported(featureOsxsave | featureAvx)) {
        return false;
    }
    const std::uint64_t enabled = platform().processor.extendedControlRegister0();
    return (enabled & enabledSseAndAvx) == enabledSseAndAvx;
}

struct Capabilities {
    bool avx;
    bool avxOfSystem;  ///< the processor has AVX and the operating system keeps its registers
    bool aes;
    bool pclmulqdq;
};

Capabilities readCapabilities() {
    return {isReported(featureAvx), systemSupportsAvx(), isReported(featureAes),
            isReported(featurePclmulqdq)};
}

void reportCapabilities(Report& report, const Capabilities& has) {
    const auto yesNo = [](bool flag) { return std::string(flag ? "Yes" : "No"); };
    const auto required = [](bool flag) {
        return std::string(flag ? "Yes\n" : "No ---> No Test Required\n");
    };
    report.line(" (AVX)\t\t - Advanced Vector Extension Supported --> \t" + yesNo(has.avx),
                "AVX\t\t - Advanced Vector Extensions Supported -->\t" +
                    std::string(has.avx ? "Yes\n" : "No \n"));
    report.line(
        " (AVX OS Support)- AVX Operating System Supported -->\t\t" + yesNo(has.avxOfSystem),
        "AVX OS Support   - AVX Operating System Supported -->\t\t" + required(has.avxOfSystem));
    report.line(" (AES)\t\t - Advanced Encryption Standard Supported -->\t" + yesNo(has.aes),
                "AES\t\t - Advanced Encryption Standard Supported -->\t" + required(has.aes));
    report.line(
        " (PCLMULQDQ)\t - Polys Carry-Less Multiply Supported -->\t" + yesNo(has.pclmulqdq),
        "PCLMULQDQ\t - Polys Carry-Less Multiply Supported -->\t" + required(has.pclmulqdq));
    report.line("\t--- AVX AES PCLMULQDQ capabilities check complete ---\n",
                "\t--- AVX AES PCLMULQDQ capabilities check complete ---\n\n");
}

/// Runs one check where it is required, with its line in the log. False only when it failed.
bool runCheck(Report& report, bool required, const std::function<bool()>& check,
              const char* label) {
    if (!required) {
        report.log(label, "--- Not Tested\n");
        return true;
    }
    const bool passed = check();
    report.log(label, passed ? "--- PASS\n" : "--- FAIL\n");
    return passed;
}

void reportMissingSystemSupport(Report& report) {
    report.both("AVX Compare Test - Not Tested");
    report.both("AVX support detected on your Processor");
    report.both("AVX not supported by your Operating System");
    report.both("Minimum Operating System requirements are ");
    report.both("Windows 7 SP1, Windows Server 2008 R2 SP1");
    report.both("Linux kernel version 2.6.30\n");
}

void concludeWith(VORNTestResult& result, TestRecord& record, const std::string& message,
                  VORNTestResult verdict) {
    const bool passed = message.starts_with("Pass") || message.starts_with("No Tests Required");
    Report::conclude(result, record,
                     {passed ? "Pass" : "Fail", "Code - Undefined", message, verdict});
}

/// The sums of the most recent race of this process.
KernelResults& processKernelResults() {
    static KernelResults results;
    return results;
}

}  // namespace

std::string testAvxAesPclmulqdqWith(const AvxAesPclmulqdqChecks& checks, VORNTestResult& result,
                                    TestRecord& record, std::string& log) {
    record.message = "Fail --- AVX AES PCLMULQDQ Testing complete ---";
    record.name = "AVX Manager";
    record.version = "V2";

    Report report(log);
    report.header("Determining AVX AES PCLMULQDQ capabilities");
    report.both("\n\t\t --- CPU FEATURES DETECTION FOR ---");
    report.line("\t            --- AVX/AES/PCLMULQDQ ---",
                "\t           --- AVX/AES/PCLMULQDQ ---\n");
    const Capabilities has = readCapabilities();
    reportCapabilities(report, has);

    const std::string names = std::string(has.avxOfSystem ? "AVX " : "") + (has.aes ? "AES " : "") +
                              (has.pclmulqdq ? "PCLMULQDQ " : "");
    const bool avxPassed =
        runCheck(report, has.avxOfSystem, checks.avx, "AVX Compare Test Result ");
    const bool aesPassed = runCheck(report, has.aes, checks.aes, "AES Test Result ");
    const bool pclmulqdqPassed =
        runCheck(report, has.pclmulqdq, checks.pclmulqdq, "PCLMULQDQ Test Result ");
    const bool passed = avxPassed && aesPassed && pclmulqdqPassed;
    const bool allRun = has.avxOfSystem && has.aes && has.pclmulqdq;

    if (has.avx && !has.avxOfSystem) {
        reportMissingSystemSupport(report);
    }
    if (names.empty()) {
        report.line("No AVX AES PCLMULQDQ Tests required",
                    "No AVX AES PCLMULQDQ Tests required \n");
        concludeWith(result, record, "No Tests Required --- AVX AES PCLMULQDQ  ---", VORN_NOT_RUN);
    } else if (passed) {
        report.line(names + "Testing Passed !!", names + "Testing Passed !! \n");
        concludeWith(result, record, "Pass --- " + names + "Testing complete ---", VORN_PASS);
    } else {
        report.line(names + "Testing Failed !!", names + "Testing Failed !! \n");
        if (allRun) {
            // Shown twice, on the console alone, when every check was run.
            Report::console(names, "Testing Failed !!");
        }
        concludeWith(result, record, "Fail --- " + names + "Testing complete ---", VORN_FAIL);
    }
    return record.code;
}

std::string testAvxAesPclmulqdq(VORNTestResult& result, const Settings& /*settings*/,
                                TestRecord& record, std::string& log) {
    const AvxAesPclmulqdqChecks checks{
        [] { return runAvxRace({processKernelResults()}); },
        [] { return runAesChecks(aesChecks()); },
        [] { return runCarrylessChecks(carrylessChecks()); },
    };
    return testAvxAesPclmulqdqWith(checks, result, record, log);
}

}  // namespace vorn
