// One run of a test function, and everything that it left behind.
#pragma once

#include <string>

#include "config/settings.h"
#include "fakes/captured_console.h"
#include "report/test_record.h"
#include "report/text.h"

namespace vorn {

struct RanTest {
    std::string console;
    std::string log;
    std::string record;   ///< "name|version"
    std::string verdict;  ///< "result|status|code|message", the result as its number
    std::string raised;   ///< the text that the test raised, where it did
};

/// Runs `test`, whatever it raises. A code that is not the record's shows in the verdict.
template <typename TestFunction>
RanTest runTestFunction(TestFunction test, const Settings& settings = {}) {
    const CapturedConsole console;
    VORNTestResult result = VORN_NOT_RUN;
    TestRecord record;
    RanTest ran;
    std::string code;
    try {
        code = test(result, settings, record, ran.log);
    } catch (const std::string& text) {
        ran.raised = text;
        code = record.code;
    }
    ran.console = console.text();
    ran.record = record.name + "|" + record.version;
    ran.verdict =
        textOf(static_cast<int>(result), "|", record.status, "|", code, "|", record.message,
               code == record.code ? "" : "|the record's code is " + record.code);
    return ran;
}

}  // namespace vorn
