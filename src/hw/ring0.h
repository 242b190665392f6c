// Ring-0 access as the tests use it: opening and closing the driver, registers, PCI configuration
// space, and what a test writes when the driver cannot be opened.
//
// The driver is opened for one measurement and closed after it. Who opens closes: no guard object
// does it, since the paths on which a measurement leaves the driver open differ and are part of
// what each measurement does.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "report/report.h"
#include "report/test_record.h"
#include "vorn/vorn.h"

namespace vorn {

/// Starts the library and asks for its status, which must be 0. Whether the driver is open; after
/// a failure nothing was deinitialised.
bool openRing0();

/// Deinitialises the library. Always true.
bool closeRing0();

/// Reads a model-specific register. `value` is stored in either case: a refused read stores 0.
/// Whether the library reported success.
bool readMsr(std::uint32_t index, std::uint64_t& value);

/// Writes a model-specific register. Whether the library reported success.
bool writeMsr(std::uint32_t index, std::uint64_t value);

/// Packs a PCI address: bus in bits 15..8, device in bits 7..3, function in the low bits. The
/// function is masked to four bits, so that a function above 7 reaches into the device bits.
constexpr std::uint32_t pciAddress(std::uint32_t bus, std::uint32_t device,
                                   std::uint32_t function) {
    return ((bus & 0xFFU) << 8U) | ((device & 0x1FU) << 3U) | (function & 0x0FU);
}

/// Vendor and device numbers of a PCI function (configuration registers 0 and 2).
struct PciIdentity {
    std::uint16_t vendor = 0;
    std::uint16_t device = 0;

    bool operator==(const PciIdentity&) const = default;
};

/// The identity of the function at this address; none when it is absent (the read fails or the
/// vendor reads 0xFFFF) or when its device ID cannot be read.
std::optional<PciIdentity> probePciFunction(std::uint32_t address);

/// The secondary bus number of a PCI bridge (register 0x18, bits 15..8); none when the read fails.
std::optional<std::uint8_t> pciSecondaryBus(std::uint32_t address);

/// The text that a test raises after its driver-failure block.
inline constexpr const char* driverFailureError = "VORN encountered problem loading driver..";

/// The parts of the driver-failure block, for tests that write only some of them.
void reportDriverFailureOnConsole();
void reportDriverFailureInLog(std::string& log);
void recordDriverFailure(TestRecord& record, VORNTestResult& result);

/// The driver-failure block of a test that needs the driver: console, log and record, the result
/// set to fail. The status it leaves is not "Fail", so the test raises driverFailureError itself.
void reportDriverFailure(std::string& log, TestRecord& record, VORNTestResult& result);

}  // namespace vorn
