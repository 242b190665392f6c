// The FSB test: front-side bus frequency of the processors that have one, against the configured
// bus speed.
#pragma once

#include <string>

#include "config/settings.h"
#include "report/test_record.h"
#include "vorn/vorn.h"

namespace vorn {

/// What measureFsb() returns instead of a frequency.
inline constexpr float fsbNotPresent = 99999.0F;        ///< this processor has no front-side bus
inline constexpr float fsbDriverUnavailable = 9099.0F;  ///< the ring-0 driver could not be opened

/// Measures the front-side bus of the processor with this brand string, in MHz, or returns one of
/// the two values above; 0.0 when the register holds a code that no table lists. Opens and closes
/// the driver around each register; writes its own line to the report stream when that fails. A
/// processor without model-specific registers ends the process with status 0.
float measureFsb(const std::string& brand);

/// The test function of the catalogue. Raises driverFailureError when the driver cannot be opened.
std::string testFsb(VORNTestResult& result, const Settings& settings, TestRecord& record,
                    std::string& log);

}  // namespace vorn
