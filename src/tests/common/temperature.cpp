#include "tests/common/temperature.h"

#include <algorithm>
#include <cstdint>
#include <optional>

#include "hw/cpuid.h"
#include "hw/ring0.h"
#include "platform/platform.h"
#include "report/report.h"

namespace vorn {

namespace {

constexpr std::uint32_t msrThermalStatus = 0x19C;  // IA32_THERM_STATUS
constexpr std::uint64_t readingValid = 1ULL << 31U;
constexpr unsigned readoutShift = 16;
constexpr std::uint64_t readoutMask = 0x7F;

/// The margin in the thermal status of an opened driver; none without a valid reading.
std::optional<double> marginOfRegister() {
    std::uint64_t thermalStatus = 0;
    readMsr(msrThermalStatus, thermalStatus);
    if ((thermalStatus & readingValid) == 0) {
        return std::nullopt;
    }
    return static_cast<double>((thermalStatus >> readoutShift) & readoutMask);
}

/// The smallest margin of the system's sensors. A critical temperature of 0 or less is a field that
/// the firmware left empty.
std::optional<double> marginOfSensors() {
    std::optional<double> margin;
    for (const TemperatureSensor& sensor : platform().temperatureSensors.processorSensors()) {
        if (sensor.critical > 0) {
            const double degrees = static_cast<double>(sensor.critical - sensor.current) / 1000.0;
            margin = std::min(margin.value_or(degrees), degrees);
        }
    }
    return margin;
}

}  // namespace

double readTemperatureMargin(std::string& text) {
    std::optional<double> margin;
    if (cpuHasMsr()) {
        if (openRing0()) {
            margin = marginOfRegister();
        } else {
            Report(text).both("DLL not initialized");
        }
        closeRing0();
    }
    if (!margin) {
        margin = marginOfSensors();
    }
    return margin.value_or(noTemperatureReading);
}

}  // namespace vorn
