#include "vorn/vorn.h"

#include "config/configuration.h"
#include "interface/catalogue.h"
#include "interface/common_runner.h"
#include "platform/numeric_locale.h"
#include "platform/platform.h"
#include "report/report.h"

namespace vorn {

namespace {

VORNTestResult runRegistered(const CatalogueEntry& entry, TextData& results, TextData& report) {
    VORNTestResult result = VORN_NOT_RUN;
    const Configuration& configuration = processConfiguration();
    TestContext context;
    if (std::holds_alternative<LoadTestFunction>(entry.function)) {
        context = {platform().clock.performanceCounter(), true};
    }
    try {
        return runCommon(entry, result, configuration.settings, configuration.document, results,
                         report, context, nullptr);
    } catch (...) {
        if (entry.errorLine == nullptr) {
            throw;
        }
        Report::console("-------------------------------");
        Report::console(entry.errorLine);
        return VORN_FAIL;
    }
}

/// Runs an entry; an error ends in its line on the report stream and in `resultOnError`.
VORNTestResult runReporting(const VORN::Entry& entry, TextData& results, TextData& report,
                            VORNTestResult resultOnError) {
    try {
        return entry(results, report);
    } catch (const std::string& failure) {
        Report::console("Failure reported from vorn library:", failure);
    } catch (...) {
        Report::console("Unknown error from vorn library in catch (...) block");
    }
    return resultOnError;
}

}  // namespace

VORN::VORN() {
    reloadProcessConfiguration();
    for (const CatalogueEntry& entry : catalogue()) {
        if (entry.registered) {
            registry_.emplace(entry.test, [&entry](TextData& results, TextData& report) {
                return runRegistered(entry, results, report);
            });
        }
    }
}

VORN::VORN(const VORN& other) = default;
VORN& VORN::operator=(const VORN& other) = default;
VORN::~VORN() = default;

VORNTestResult VORN::runTest(Test test, std::streambuf* out) {
    const NumericLocale numbers;
    bindReportStream(out);
    TextData results;
    TextData report;
    const CatalogueEntry* row = findInCatalogue(test);
    if (row != nullptr && row->prerequisite &&
        runReporting(registry_[*row->prerequisite], results, report, VORN_NOT_RUN) != VORN_PASS) {
        return VORN_NOT_RUN;
    }
    return runReporting(registry_[test], results, report, VORN_FAIL);
}

std::vector<std::string> platformAdvice() {
    return platform().advice.lines();
}

}  // namespace vorn
