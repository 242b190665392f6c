// The seam between the tests and the machine: one small interface for each kind of access, cut at
// the raw call of the operating system or the processor, so that everything above it is our own
// logic and can be tested on simulated hardware.
#pragma once

#include "platform/advice.h"
#include "platform/clock.h"
#include "platform/command_interpreter.h"
#include "platform/device_setup.h"
#include "platform/display.h"
#include "platform/physical_memory.h"
#include "platform/process_control.h"
#include "platform/processor.h"
#include "platform/ring0_library.h"
#include "platform/temperature_sensors.h"

namespace vorn {

/// The interfaces of one machine. Refers to them only: whoever makes a Platform owns them.
struct Platform {
    Processor& processor;
    Ring0Library& ring0;
    Clock& clock;
    PhysicalMemory& memory;
    CommandInterpreter& interpreter;
    ProcessControl& process;
    TemperatureSensors& temperatureSensors;
    DeviceSetup& devices;
    Display& display;
    Advice& advice;
};

/// The platform in force: the machine's own, built at the first call, unless a ScopedPlatform
/// stands in for it.
Platform& platform();

/// The machine's own platform; one for the life of the process.
Platform& nativePlatform();

/// Puts another platform in force for its own lifetime. Scopes must nest; not for use while
/// another thread runs a test.
class ScopedPlatform {
public:
    explicit ScopedPlatform(Platform& replacement);
    ~ScopedPlatform();
    ScopedPlatform(const ScopedPlatform&) = delete;
    ScopedPlatform& operator=(const ScopedPlatform&) = delete;

private:
    Platform* previous_;
};

}  // namespace vorn
