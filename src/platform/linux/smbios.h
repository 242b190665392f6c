// What the firmware says of the machine in its SMBIOS table (DMTF DSP0134).
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace vorn {

/// Installed memory by the structure table `table`, in units of 1024 bytes: the memory devices
/// (type 17) of all arrays (type 16) but those with another use than system memory. Nothing when
/// the table describes none, holds a device that does not know its size, or is cut short.
std::optional<std::uint64_t> installedKilobytesOfSmbios(std::string_view table);

}  // namespace vorn
