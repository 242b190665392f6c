// The catalogue of tests: the one place that lists them.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "config/settings.h"
#include "report/test_record.h"
#include "tests/cpu/temperature_monitor.h"
#include "vorn/vorn.h"

namespace vorn {

/// A test: sets the result, fills the record, appends to the log, returns a copy of the code.
using TestFunction = std::string (*)(VORNTestResult& result, const Settings& settings,
                                     TestRecord& record, std::string& log);

/// A test that puts load on the processor for the rest of a time budget. `startCount` is the
/// performance counter when the overall run started; with `monitor` set it watches the temperature.
using LoadTestFunction = std::string (*)(VORNTestResult& result, const Settings& settings,
                                         TestRecord& record, std::string& log,
                                         std::int64_t startCount, bool monitor);

/// A test that keeps its readings in the monitor of the run.
using TemperatureTestFunction = std::string (*)(VORNTestResult& result, const Settings& settings,
                                                TestRecord& record, std::string& log,
                                                TemperatureMonitor& monitor);

/// What the caller of a runner knows and only some tests are told.
struct TestContext {
    std::int64_t startCount = 0;
    bool monitor = false;
    /// Outlives the call; null for a call that stands alone, which gets a fresh one.
    TemperatureMonitor* temperature = nullptr;
};

/// One row of the catalogue.
struct CatalogueEntry {
    Test test;
    std::variant<TestFunction, LoadTestFunction, TemperatureTestFunction> function;
    std::optional<Test> prerequisite = std::nullopt;  ///< must pass before runTest() runs this one
    const char* completion = nullptr;  ///< words that the common runner prints after it, or null
    /// Words that runTest() prints under a dashed line, in place of passing on whatever the runner
    /// raised; null for a test whose errors are passed on.
    const char* errorLine = nullptr;
    bool registered = true;  ///< whether vorn::VORN knows it; run() knows every test
};

/// The rows, in the order of their test values.
const std::vector<CatalogueEntry>& catalogue();

/// The row of a test; null for a test that is not in the catalogue.
const CatalogueEntry* findInCatalogue(Test test);

}  // namespace vorn
