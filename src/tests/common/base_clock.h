// The base clock, which the processor multiplies to its frequency, as the base clock test, the link
// rate test and the frequency test need it.
#pragma once

#include <cstdint>

#include "hw/cpuid.h"

namespace vorn {

/// What a frequency or base clock measurement returns when the ring-0 driver cannot be opened.
inline constexpr double driverUnavailable = 999999999.0;

/// What a base clock measurement returns when something disturbed its interval: measure again.
inline constexpr double baseClockDisturbed = 0.12;

/// The register that holds the processor's ratios (MSR_PLATFORM_INFO).
inline constexpr std::uint32_t msrPlatformInfo = 0xCE;

/// Maximum non-turbo ratio of a value of that register (bits 15..8): the rate of the time-stamp
/// counter in units of the base clock. 0 when the register does not give one.
constexpr std::uint64_t maximumNonTurboRatio(std::uint64_t platformInfo) {
    return (platformInfo >> 8U) & 0xFFU;
}

/// The nominal base clock of a processor, in MHz: 100.0, or 133.33 for the models before it.
double nominalBaseClock(const FamilyModel& processor);

/// Both in MHz.
struct BaseClock {
    double measured = 0.0;
    double expected = 0.0;
    std::uint64_t ratio = 0;  ///< maximum non-turbo ratio; 0 when the register does not give one
};

/// Measures the base clock of this processor: ticks of the time-stamp counter in one second, by the
/// maximum non-turbo ratio. `measured` is 0.0, after no waiting, when the ratio is 0;
/// driverUnavailable when the driver cannot be opened; baseClockDisturbed when the second took more
/// than a tenth too long or the counter ran backwards. After five disturbed intervals in a row the
/// next is taken as it is, so that a caller that repeats while it reads baseClockDisturbed ends.
/// Opens the driver for the register and closes it, also when opening failed.
/// Precondition: cpuHasMsr().
BaseClock measureBaseClock();

/// As measureBaseClock(), for a caller that holds the driver open and goes on with it: opens it
/// again, and leaves closing to that caller in every case.
BaseClock measureBaseClockKeepingDriver();

}  // namespace vorn
