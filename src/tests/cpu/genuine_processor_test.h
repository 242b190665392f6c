// The genuine processor test: is the vendor of the processor the expected one?
#pragma once

#include <string>

#include "config/settings.h"
#include "report/test_record.h"
#include "vorn/vorn.h"

namespace vorn {

/// One run of the test. Building it reads the vendor string with CPUID.
class GenuineProcessorTest {
public:
    GenuineProcessorTest();

    /// Compares the vendor read at construction with the expected one, byte by byte, and writes the
    /// report. Fills `record`, sets result(), and returns a copy of the record's code.
    std::string run(TestRecord& record, std::string& log);

    /// VORN_NOT_RUN until run() gave a verdict.
    VORNTestResult result() const { return result_; }

private:
    VORNTestResult result_ = VORN_NOT_RUN;
    std::string detectedVendor_;
    std::string expectedVendor_ = "GenuineOvrin";
};

/// The test function of the catalogue.
std::string testGenuineProcessor(VORNTestResult& result, const Settings& settings,
                                 TestRecord& record, std::string& log);

}  // namespace vorn
