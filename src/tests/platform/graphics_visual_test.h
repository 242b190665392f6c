// The 2D/3D graphics visual test: graphics programs that the configuration names, for somebody who
// watches.
#pragma once

#include <string>

#include "config/settings.h"
#include "report/test_record.h"
#include "vorn/vorn.h"

namespace vorn {

/// The test function of the catalogue. Starts "@GFX2DTestExe" and then "@GFXTestExe", each with
/// "@GFXTime" (seconds) and "@GFXSpin" as its arguments; what the programs show is the operator's
/// to judge. Fails when a named program is missing or ends before nine tenths of its time; gives no
/// verdict when none is named.
std::string testGraphicsVisual(VORNTestResult& result, const Settings& settings, TestRecord& record,
                               std::string& log);

}  // namespace vorn
