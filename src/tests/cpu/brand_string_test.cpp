#include "tests/cpu/brand_string_test.h"

#include <algorithm>

#include "config/configuration.h"
#include "hw/cpuid.h"
#include "report/report.h"
#include "report/text.h"

namespace vorn {

namespace {

std::string detectBrand() {
    const std::string brand = cpuBrandString();
    return brand.substr(std::min(brand.find_first_not_of(' '), brand.size()));
}

}  // namespace

std::string testBrandString(VORNTestResult& result, const Settings& settings, TestRecord& record,
                            std::string& log) {
    record.description = "CPU brand string is NOT the expected one";
    record.name = "CPU Brand String";
    record.version = "V1";
    const std::string detected = detectBrand();

    Report report(log);
    report.header("Reading CPU Brand String");
    if (holdsWord(settings.skipConfig, "YES") || settings.cpuName.empty()) {
        report.both(textOf("Detected --> ", detected));
        report.both("..No expected CPU Brand String - Skipping comparison..");
        result = VORN_NOT_RUN;
        return record.code;
    }
    report.compare(settings.cpuName, detected);

    const bool same = compareText(settings.cpuName, detected, brandRemovals()) == "SAME";
    const std::string sentence =
        same ? "CPU Brand String Test Passed!!!" : "CPU Brand String Test Failed!!!";
    Report::console();
    report.line(sentence, "\n" + sentence + "\n\n");
    Report::console();
    Report::conclude(result, record,
                     same ? Verdict{"Pass", "0", sentence, VORN_PASS}
                          : Verdict{"Fail", "2", sentence, VORN_FAIL});
    return record.code;
}

}  // namespace vorn
