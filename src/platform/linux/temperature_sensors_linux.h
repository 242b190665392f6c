// Temperature sensors on Linux: the hardware monitoring class of sysfs.
#pragma once

#include <string>
#include <vector>

#include "platform/temperature_sensors.h"

namespace vorn {

/// Reads <sysfs>/class/hwmon/hwmon*/temp*_input and temp*_crit of the drivers that measure the
/// processor itself.
class LinuxTemperatureSensors : public TemperatureSensors {
public:
    /// `sysfsRoot` is the folder that holds the system's description of its devices.
    explicit LinuxTemperatureSensors(std::string sysfsRoot = "/sys");

    std::vector<TemperatureSensor> processorSensors() override;

private:
    std::string sysfsRoot_;
};

}  // namespace vorn
