// Device enumeration: which PCI functions exist, what the operating system calls them, what hangs
// below one of them, and which USB devices are present.
//
// PCI functions are found by configuration reads, so the caller has the ring-0 driver open, and are
// matched with the system's devices by the vendor and device numbers in their hardware identifiers:
// two functions with the same numbers are not told apart. Nothing is printed here; a configuration
// read that is refused counts as an absent function.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "hw/ring0.h"

namespace vorn {

/// Names with their count, owned by whoever asked for them.
using NameList = std::vector<std::string>;

/// No list grows past this; further names are left out.
inline constexpr std::size_t nameLimit = 256;

/// How an operation ends. The output holds a result only with `enumerationFound`; otherwise it is
/// empty.
enum EnumerationStatus : std::int32_t {
    enumerationFailed = -1,  ///< the system's device interface failed
    enumerationEmpty = 0,    ///< nothing was found
    enumerationFound = 1,
};

/// The vendor and device numbers in a hardware or instance identifier: four hexadecimal characters
/// each, after "VEN_" (else "VID_") and "DEV_" (else "PID_"). None when one of them is missing.
std::optional<PciIdentity> parseHardwareId(std::string_view identifier);

/// One name for each function on a bus, in the order of devices and functions. A function that the
/// system does not know is named "Unknown Device. VEN:12ABDEV:00F0", with its own numbers.
EnumerationStatus listPciBusDevices(std::uint32_t bus, NameList& names);

/// The name of one function, as listPciBusDevices() gives it.
EnumerationStatus getPciDeviceName(std::uint32_t bus, std::uint32_t device, std::uint32_t function,
                                   std::string& name);

/// Friendly names of what hangs below a function: of the first child of each device directly below
/// it (the disks behind a controller's channels); when none has one, of all ATA controllers.
EnumerationStatus listChildFriendlyNames(std::uint32_t bus, std::uint32_t device,
                                         std::uint32_t function, NameList& names);

/// Descriptions of what hangs below a function: of the first child of each device directly below
/// it; when there are none, of the devices directly below it.
EnumerationStatus listChildDescriptions(std::uint32_t bus, std::uint32_t device,
                                        std::uint32_t function, NameList& names);

/// Descriptions of the USB devices that are present.
EnumerationStatus listUsbDeviceDescriptions(NameList& names);

}  // namespace vorn
