#include "interface/common_runner.h"

#include "report/report.h"
#include "report/text.h"

namespace vorn {

VORNTestResult runCommon(const CatalogueEntry& entry, VORNTestResult& result,
                         const Settings& settings, const ConfigurationDocument& /*document*/,
                         TextData& /*results*/, TextData& /*report*/, const TestContext& context,
                         TestObserver* observer) {
    TestRecord record;
    std::string log;
    if (observer != nullptr) {
        observer->testBegins(entry.test);
    }
    try {
        if (const auto* load = std::get_if<LoadTestFunction>(&entry.function)) {
            (*load)(result, settings, record, log, context.startCount, context.monitor);
        } else if (const auto* temperature =
                       std::get_if<TemperatureTestFunction>(&entry.function)) {
            TemperatureMonitor fresh;
            (*temperature)(result, settings, record, log,
                           context.temperature != nullptr ? *context.temperature : fresh);
        } else {
            std::get<TestFunction>(entry.function)(result, settings, record, log);
        }
        if (upperCase(record.status) == "FAIL") {
            throw record.message;
        }
    } catch (...) {
        if (observer != nullptr) {
            observer->testEnded({entry.test, record, log, result, true});
        }
        throw;
    }
    if (observer != nullptr) {
        observer->testEnded({entry.test, record, log, result, false});
    }
    if (entry.completion != nullptr) {
        Report::console(entry.completion);
        Report::console("PASS");
    }
    return result;
}

}  // namespace vorn
