// The common runner: the frame that every test runs in.
#pragma once

#include <string>

#include "config/configuration.h"
#include "config/settings.h"
#include "interface/catalogue.h"
#include "report/test_record.h"
#include "vorn/vorn.h"

namespace vorn {

/// What a test left behind, as its runner saw it end.
struct TestOutcome {
    Test test;
    const TestRecord& record;
    const std::string& log;
    VORNTestResult result;
    bool raised;  ///< the test or its runner raised an error: a failure, whatever the result says
};

/// Whoever wants the records and logs that a runner would otherwise drop.
class TestObserver {
public:
    virtual ~TestObserver() = default;
    virtual void testBegins(Test test) = 0;
    virtual void testEnded(const TestOutcome& outcome) = 0;
};

/// Runs one test. `result` holds VORN_NOT_RUN when called and the test's result afterwards, which
/// is also returned. A record whose status is "FAIL" in any letter case is raised as a std::string,
/// its message. `context` is for the tests that take more than the settings. Any other error of the
/// test passes through. The document and the two texts are carried for the tests' sake and left as
/// they are. `observer` may be null.
VORNTestResult runCommon(const CatalogueEntry& entry, VORNTestResult& result,
                         const Settings& settings, const ConfigurationDocument& document,
                         TextData& results, TextData& report, const TestContext& context,
                         TestObserver* observer);

}  // namespace vorn
