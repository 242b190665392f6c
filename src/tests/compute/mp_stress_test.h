// The multi-processor stress test: an external program puts the load on, and only the time that it
// stays counts.
#pragma once

#include <string>

#include "config/settings.h"
#include "report/test_record.h"
#include "vorn/vorn.h"

namespace vorn {

/// The test function of the catalogue.
std::string testMpStress(VORNTestResult& result, const Settings& settings, TestRecord& record,
                         std::string& log);

}  // namespace vorn
