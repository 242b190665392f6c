// The QPI link rate test: the transfer rate of the processors' links, corrected by the measured
// base clock, against their nominal rate.
#pragma once

#include <string>
#include <vector>

#include "config/settings.h"
#include "report/test_record.h"
#include "vorn/vorn.h"

namespace vorn {

/// One processor's link, in GT/s.
struct QpiRate {
    double expected = 0.0;  ///< nominal rate; 0.0 for a code that stands for none
    double detected = 0.0;  ///< nominal rate corrected by the measured base clock
};

/// What measureQpiRates() returns instead of a count.
inline constexpr int qpiNoReadSucceeded = -1;
inline constexpr int qpiNoLinkFound = -2;
inline constexpr int qpiDriverUnavailable = 999999999;

/// Finds the link devices of the processors, fills `rates` in bus order (at most nine) and returns
/// their number, or one of the values above. Takes a base clock measurement of a second or more for
/// each link. Precondition: the caller holds the driver open; it stays open.
int measureQpiRates(std::vector<QpiRate>& rates);

/// The test function of the catalogue. "@QPITolerance" is the permitted deviation in percent of the
/// nominal rate (inclusive), or "DISPLAYONLY" in any letter case. One processor within it passes.
/// Raises driverFailureError when the driver cannot be opened.
std::string testQpi(VORNTestResult& result, const Settings& settings, TestRecord& record,
                    std::string& log);

}  // namespace vorn
