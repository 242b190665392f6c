// Temperature sensors on Windows: the system has none of the processor's own.
#pragma once

#include "platform/temperature_sensors.h"

namespace vorn {

/// Always empty: on this system the processor's sensor is read through its registers alone.
class WindowsTemperatureSensors : public TemperatureSensors {
public:
    std::vector<TemperatureSensor> processorSensors() override { return {}; }
};

}  // namespace vorn
