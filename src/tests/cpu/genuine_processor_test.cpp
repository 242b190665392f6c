#include "tests/cpu/genuine_processor_test.h"

#include "hw/cpuid.h"
#include "report/report.h"

namespace vorn {

GenuineProcessorTest::GenuineProcessorTest() : detectedVendor_(cpuVendor()) {}

std::string GenuineProcessorTest::run(TestRecord& record, std::string& log) {
    record.description = "Processor installed is NOT a Genuine Ovrin Processor";
    record.name = "CPU Manufacturer";
    record.version = "V1";

    Report report(log);
    report.header("Reading CPU Manufacturer");
    report.compare(expectedVendor_, detectedVendor_);

    if (detectedVendor_ == expectedVendor_) {
        report.both("Found --- Genuine Ovrin Processor ---");
        Report::conclude(result_, record, {"Pass", "0", "CPU MFG Test Passed!!!", VORN_PASS});
    } else {
        report.console();
        report.line("!!! ---  Processor installed is NOT a Genuine Ovrin Processor --- !!!",
                    "\n!!! ---  Processor installed is NOT a Genuine Ovrin Processor --- !!! "
                    "--- FAIL\n");
        Report::conclude(result_, record, {"Fail", "1", "CPU MFG Test Failed!!!", VORN_FAIL});
    }
    return record.code;
}

std::string testGenuineProcessor(VORNTestResult& result, const Settings& /*settings*/,
                                 TestRecord& record, std::string& log) {
    GenuineProcessorTest test;
    std::string code = test.run(record, log);
    result = test.result();
    return code;
}

}  // namespace vorn
