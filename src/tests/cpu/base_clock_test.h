// The base clock test: the clock that the processor multiplies to its frequency, against its
// nominal value.
#pragma once

#include <string>

#include "config/settings.h"
#include "report/test_record.h"
#include "vorn/vorn.h"

namespace vorn {

/// The test function of the catalogue. "@BaseClockTolerance" is the permitted deviation in percent
/// of the nominal value (inclusive; empty: 5), or "DISPLAYONLY" in any letter case: then any
/// measured value passes. A processor without model-specific registers, or one that gives no
/// ratio, gets no verdict. Raises driverFailureError when the driver cannot be opened.
std::string testBaseClock(VORNTestResult& result, const Settings& settings, TestRecord& record,
                          std::string& log);

}  // namespace vorn
