// The CPU frequency test: the frequency at which the processor runs, against the one in its brand
// string.
#pragma once

#include <string>

#include "config/settings.h"
#include "report/test_record.h"
#include "vorn/vorn.h"

namespace vorn {

/// The frequency that a brand string promises.
struct ExpectedFrequency {
    std::string text;        ///< its last word without the units; empty below two words
    float gigahertz = 0.0F;  ///< 0 when the text is no number
};

ExpectedFrequency expectedFrequency(const std::string& brand);

/// Measures the frequency at which the processor runs, in GHz; driverUnavailable when the driver
/// cannot be opened, after a line on the report stream. Processors that have the counters of actual
/// and maximum performance are measured with these, in up to five attempts of one second, each with
/// its own opening and closing of the driver; the others, and those whose counters stay
/// implausible, with the time-stamp counter in ten passes of one second, each of which turns a
/// spinner on the report stream. Occupies the calling thread all that time.
double measureCpuFrequency();

/// The test function of the catalogue. Its report goes to the log alone. "@Site" with "DEPOT" in
/// any letter case also fails a processor that runs faster than promised. When the driver cannot be
/// opened, fails with the driver-failure record and raises nothing.
std::string testCpuFrequency(VORNTestResult& result, const Settings& settings, TestRecord& record,
                             std::string& log);

}  // namespace vorn
