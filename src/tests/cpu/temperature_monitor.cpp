#include "tests/cpu/temperature_monitor.h"

#include <algorithm>

#include "platform/platform.h"
#include "report/text.h"

namespace vorn {

double TemperatureMonitor::sample(const std::string& test, std::string& text) {
    if (closed_) {
        return noTemperatureReading;
    }
    const double margin = readTemperatureMargin(text);
    if (margin != noTemperatureReading) {
        samples_.push_back({localTimeText(platform().clock.wallSeconds()), test, margin});
    }
    return margin;
}

const TemperatureSample& TemperatureMonitor::smallest() const {
    return *std::min_element(samples_.begin(), samples_.end(),
                             [](const TemperatureSample& one, const TemperatureSample& other) {
                                 return one.margin < other.margin;
                             });
}

}  // namespace vorn
