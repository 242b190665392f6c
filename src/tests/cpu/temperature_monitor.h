// The temperature readings of one run, in their order.
#pragma once

#include <string>
#include <vector>

#include "tests/common/temperature.h"

namespace vorn {

/// One valid reading.
struct TemperatureSample {
    std::string time;  ///< local time
    std::string test;  ///< name of the test in or after which it was taken
    double margin;     ///< degrees below the maximum junction temperature
};

/// Takes readings and keeps the valid ones. The first valid one opens it; closed, it takes no more.
class TemperatureMonitor {
public:
    /// Takes a reading and keeps it under `test` when it is valid. Returns it, or
    /// noTemperatureReading, also when closed. What the reading has to say is appended to `text`.
    double sample(const std::string& test, std::string& text);

    /// Whether it is open on a valid reading.
    bool holdsReading() const { return !closed_ && !samples_.empty(); }

    /// The valid readings, also of a monitor that was closed.
    const std::vector<TemperatureSample>& samples() const { return samples_; }

    /// The first of the samples with the smallest margin. Precondition: there is one.
    const TemperatureSample& smallest() const;

    void close() { closed_ = true; }

private:
    std::vector<TemperatureSample> samples_;
    bool closed_ = false;
};

}  // namespace vorn
