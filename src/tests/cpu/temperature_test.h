// The temperature test: how far below its maximum junction temperature the processor stays.
#pragma once

#include <string>

#include "config/settings.h"
#include "report/test_record.h"
#include "tests/cpu/temperature_monitor.h"
#include "vorn/vorn.h"

namespace vorn {

/// The temperature test of the catalogue. Takes a reading into `monitor`, lists all that it holds
/// and judges the smallest margin: above 0 it passes, with a warning at or below
/// "@TemperatureWarningTolerance" degrees (empty: 5). No verdict when this reading is not valid.
std::string testTemperature(VORNTestResult& result, const Settings& settings, TestRecord& record,
                            std::string& log, TemperatureMonitor& monitor);

}  // namespace vorn
