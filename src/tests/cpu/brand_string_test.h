// The brand string test: is the processor the one that the configuration has an entry for?
#pragma once

#include <string>

#include "config/settings.h"
#include "report/test_record.h"
#include "vorn/vorn.h"

namespace vorn {

/// The test function of the catalogue. Compares the brand string without its leading blanks with
/// the name of the configuration's entry, as the look-up of the entry does; gives no verdict when
/// the look-up is skipped or found no entry.
std::string testBrandString(VORNTestResult& result, const Settings& settings, TestRecord& record,
                            std::string& log);

}  // namespace vorn
