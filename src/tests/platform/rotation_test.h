// The rotation test: turns the primary display once round, for somebody who watches.
#pragma once

#include <string>

#include "config/settings.h"
#include "report/test_record.h"
#include "vorn/vorn.h"

namespace vorn {

/// Turns the primary display to 90, 180 and 270 degrees and back to 0, with a pause before the
/// first turn and after each but the last. Whether the display takes part is not looked at.
/// Returns 0.
///
/// The pause is a number of the process that each call replaces by its thousandfold less 1000 and
/// then takes as milliseconds: 3000 in the first call, 2999000 in the second.
int rotateDisplay();

/// The test function of the catalogue. Always passes: the verdict is the operator's.
std::string testRotation(VORNTestResult& result, const Settings& settings, TestRecord& record,
                         std::string& log);

}  // namespace vorn
