// One test function on a simulated machine, and everything that it left behind.
#pragma once

#include <string>

#include "fakes/captured_console.h"
#include "fakes/fake_platform.h"
#include "report/test_record.h"
#include "vorn/vorn.h"

namespace vorn {

/// The driver-failure block as the console and the log show it.
inline const std::string driverFailureLines =
    "This could be related to VORN.exe not having administrator privileges.\n"
    "Check the property settings for VORN.exe and set privilege setting to\n"
    "adminstrator and re-run VORN.\n";
inline const std::string driverFailureConsole =
    "\n --- VORN encountered problem loading driver ---\n" + driverFailureLines;
inline const std::string driverFailureLog =
    "\n --- VORN encountered problem loading driver --- \n" + driverFailureLines;

struct TestScene {
    FakePlatform platform;
    CapturedConsole console;
    VORNTestResult result = VORN_NOT_RUN;
    TestRecord record;
    std::string log;
    std::string code;
    std::string raised = "(nothing)";

    /// Runs a test function with these settings and whatever else it takes.
    template <typename Function, typename Settings, typename... More>
    void run(Function function, const Settings& settings, More&... more) {
        try {
            code = function(result, settings, record, log, more...);
        } catch (const std::string& text) {
            raised = text;
        }
    }

    /// Result, raised text and record in one line:
    /// "result|raised|name|version|status|code|message".
    std::string outcome() const {
        return std::to_string(result) + "|" + raised + "|" + record.name + "|" + record.version +
               "|" + record.status + "|" + record.code + "|" + record.message;
    }
};

}  // namespace vorn
