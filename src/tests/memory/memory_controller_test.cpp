#include "tests/memory/memory_controller_test.h"

#include <algorithm>
#include <array>
#include <cstdint>

#include "hw/cpuid.h"
#include "report/report.h"
#include "report/text.h"
#include "tests/memory/memory_size.h"
#include "tests/memory/memory_stress.h"
#include "tests/memory/working_verdict.h"

namespace vorn {

namespace {

bool isListed(const FamilyModel& processor) {
    constexpr std::array<std::uint32_t, 19> models{60, 58, 42, 62, 45, 26, 30, 31, 46, 37,
                                                   44, 70, 53, 55, 61, 71, 77, 69, 63};
    return processor.family == 6 &&
           std::find(models.begin(), models.end(), processor.model) != models.end();
}

/// Whether the memory controller is part of the processor: by its model, or by the words of its
/// brand string.
bool hasMemoryController() {
    const std::string brand = cpuBrandString();
    const auto brandHolds = [&brand](const char* word) {
        return brand.find(word) != std::string::npos;
    };
    return isListed(cpuFamilyModel()) || brandHolds("i7") || brandHolds("i5") || brandHolds("i3");
}

void conclude(const WorkingVerdict& verdict, TestRecord& record, Report& report) {
    if (upperCase(verdict.status) == "PASS") {
        Report::console("\n", verdict.message);
    }
    report.log("\n", verdict.message, "\n\n");
    record.status = verdict.status;
    record.code = verdict.code;
    record.message = verdict.message;
}

}  // namespace

std::string testMemoryController(VORNTestResult& result, const Settings& settings,
                                 TestRecord& record, std::string& log) {
    record.name = "Integrated Memory Controller Test";
    record.version = "V1";
    Report report(log);
    WorkingVerdict verdict{.result = result};
    if (!holdsWord(settings.imcTest, "FORCE") && !hasMemoryController()) {
        verdict.message = " --- IMC NOT Supported on this Processor ---";
        result = VORN_NOT_RUN;
    } else if (testMemorySize(settings, report, verdict)) {
        testMemoryStress(settings, report, verdict);
    }
    conclude(verdict, record, report);
    return {};
}

}  // namespace vorn
