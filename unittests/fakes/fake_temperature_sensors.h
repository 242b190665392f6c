// Temperature sensors that a test sets.
#pragma once

#include <vector>

#include "platform/temperature_sensors.h"

namespace vorn {

class FakeTemperatureSensors : public TemperatureSensors {
public:
    std::vector<TemperatureSensor> sensors;

    std::vector<TemperatureSensor> processorSensors() override { return sensors; }
};

}  // namespace vorn
