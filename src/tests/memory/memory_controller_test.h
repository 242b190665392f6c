// The memory controller test: installed memory size, then patterns in memory, on processors with an
// integrated memory controller.
#pragma once

#include <string>

#include "config/settings.h"
#include "report/test_record.h"
#include "vorn/vorn.h"

namespace vorn {

/// The test function of the catalogue. The word "FORCE" in "@IMCTest" takes the controller as
/// present. The code that it returns is empty.
std::string testMemoryController(VORNTestResult& result, const Settings& settings,
                                 TestRecord& record, std::string& log);

}  // namespace vorn
