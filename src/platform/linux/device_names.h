// Names of devices by their numbers, from the lists that distributions install.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace vorn {

/// Maker's and device's name as the list (pci.ids or usb.ids) has them: "Maker Device", or, for a
/// device that it does not have, "Maker device 1234". None when the list does not know the maker or
/// cannot be read.
std::optional<std::string> lookUpDeviceName(const std::string& listPath, std::uint16_t vendor,
                                            std::uint16_t device);

}  // namespace vorn
