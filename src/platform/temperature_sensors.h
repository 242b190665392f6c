// The processor's temperature as the operating system itself measures it.
#pragma once

#include <vector>

namespace vorn {

/// One sensor of the processor, in thousandths of a degree Celsius as the system gives them.
struct TemperatureSensor {
    long current = 0;
    long critical = 0;  ///< the temperature that the processor must not reach
};

class TemperatureSensors {
public:
    virtual ~TemperatureSensors() = default;

    /// Every sensor of the processor that has both values at this moment, read afresh. Empty where
    /// the system has no such sensors or does not let this process read them.
    virtual std::vector<TemperatureSensor> processorSensors() = 0;
};

}  // namespace vorn
