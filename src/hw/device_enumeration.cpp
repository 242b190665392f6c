#include "hw/device_enumeration.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <utility>

#include "platform/platform.h"
#include "report/text.h"

namespace vorn {

namespace {

constexpr std::uint32_t devicesOnBus = 32;
constexpr std::uint32_t functionsOfDevice = 8;
constexpr std::size_t instanceIdCapacity = 200;

// GUID_DEVCLASS_HDC, the IDE ATA/ATAPI controllers, under which SATA controllers register.
constexpr const char* ataControllerClass = "{4D36E96A-E325-11CE-BFC1-08002BE10318}";

/// The number in the four characters after the first of the two markers that is there.
std::optional<std::uint16_t> numberAfter(std::string_view text, std::string_view marker,
                                         std::string_view otherMarker) {
    std::size_t position = text.find(marker);
    if (position == std::string_view::npos) {
        position = text.find(otherMarker);
    }
    if (position == std::string_view::npos) {
        return std::nullopt;
    }
    const std::string digits(text.substr(position + marker.size(), 4));
    char* end = nullptr;
    const unsigned long number = std::strtoul(digits.c_str(), &end, 16);
    if (end == digits.c_str()) {
        return std::nullopt;
    }
    return static_cast<std::uint16_t>(number);
}

/// A property of the selected device of a set up to its first NUL; none when it has none.
std::optional<std::string> propertyOf(DeviceSet& set, DeviceProperty property) {
    std::vector<char> buffer;
    std::uint32_t size = 0;
    SetupAnswer answer = set.property(property, buffer, size);
    while (answer == SetupAnswer::tooSmall) {
        // Twice the size: some systems report characters where they need bytes.
        const std::size_t larger = 2 * static_cast<std::size_t>(size);
        if (larger <= buffer.size()) {
            return std::nullopt;
        }
        buffer.assign(larger, '\0');
        answer = set.property(property, buffer, size);
    }
    if (answer != SetupAnswer::done) {
        return std::nullopt;
    }
    return std::string(buffer.begin(), std::find(buffer.begin(), buffer.end(), '\0'));
}

std::optional<std::string> instanceIdOf(DeviceNode node) {
    std::array<char, instanceIdCapacity> buffer{};
    if (!platform().devices.instanceId(node, buffer)) {
        return std::nullopt;
    }
    return std::string(buffer.begin(), std::find(buffer.begin(), buffer.end(), '\0'));
}

/// Selects each device of a set and hands its node to `visit`, which says whether to go on. Whether
/// the walk came to the end of the set.
template <typename Visit>
bool visitDevices(DeviceSet& set, const Visit& visit) {
    for (std::uint32_t index = 0;; ++index) {
        DeviceNode node = 0;
        const SetupAnswer answer = set.select(index, node);
        if (answer != SetupAnswer::done) {
            return answer == SetupAnswer::noMore;
        }
        if (!visit(node)) {
            return false;
        }
    }
}

void append(NameList& names, std::optional<std::string> name) {
    if (name && names.size() < nameLimit) {
        names.push_back(std::move(*name));
    }
}

/// Appends this property of every device of the set; false when there is no set or it fails.
bool appendAll(std::unique_ptr<DeviceSet> set, DeviceProperty property, NameList& names) {
    return set != nullptr && visitDevices(*set, [&](DeviceNode) {
               append(names, propertyOf(*set, property));
               return true;
           });
}

/// The description of the last device with these numbers; none when the system fails.
std::optional<std::string> describe(const PciIdentity& function) {
    const auto set = platform().devices.openPresentDevices("");
    if (set == nullptr) {
        return std::nullopt;
    }
    std::array<char, 48> unknown{};
    std::snprintf(unknown.data(), unknown.size(), "Unknown Device. VEN:%.4XDEV:%.4X",
                  static_cast<unsigned>(function.vendor), static_cast<unsigned>(function.device));
    std::string name = unknown.data();
    const bool complete = visitDevices(*set, [&](DeviceNode) {
        const auto identifier = propertyOf(*set, DeviceProperty::hardwareId);
        if (identifier && parseHardwareId(*identifier) == function) {
            name = propertyOf(*set, DeviceProperty::description).value_or(name);
        }
        return true;
    });
    return complete ? std::optional(name) : std::nullopt;
}

bool isDirectlyBelow(DeviceNode node, const PciIdentity& function) {
    DeviceNode parent = 0;
    if (!platform().devices.parentOf(node, parent)) {
        return false;
    }
    const auto identifier = instanceIdOf(parent);
    return identifier && parseHardwareId(*identifier) == function;
}

std::optional<std::string> firstChildId(DeviceNode node) {
    DeviceNode child = 0;
    return platform().devices.firstChildOf(node, child) ? instanceIdOf(child) : std::nullopt;
}

/// Appends the friendly name of the device with this instance identifier; false when the system
/// fails.
bool appendFriendlyName(const std::string& instanceId, NameList& names) {
    const auto set = platform().devices.openPresentDevices("");
    return set != nullptr && visitDevices(*set, [&](DeviceNode node) {
               if (instanceIdOf(node) == instanceId) {
                   append(names, propertyOf(*set, DeviceProperty::friendlyName));
               }
               return true;
           });
}

EnumerationStatus handOver(NameList found, NameList& names) {
    names = std::move(found);
    return names.empty() ? enumerationEmpty : enumerationFound;
}

/// The walk over the present devices on behalf of a function: `visit` gets the set with a device
/// selected, its node, whether it is directly below the function, the list that counts and the one
/// that counts when the first stays empty; it returns false when the system fails.
template <typename Visit>
EnumerationStatus listBelow(std::uint32_t address, NameList& names, const Visit& visit) {
    names.clear();
    const auto function = probePciFunction(address);
    if (!function) {
        return enumerationEmpty;
    }
    const auto set = platform().devices.openPresentDevices("");
    NameList children;
    NameList others;
    if (set == nullptr || !visitDevices(*set, [&](DeviceNode node) {
            return visit(*set, node, isDirectlyBelow(node, *function), children, others);
        })) {
        return enumerationFailed;
    }
    return handOver(std::move(children.empty() ? others : children), names);
}

}  // namespace

std::optional<PciIdentity> parseHardwareId(std::string_view identifier) {
    const auto vendor = numberAfter(identifier, "VEN_", "VID_");
    const auto device = numberAfter(identifier, "DEV_", "PID_");
    if (!vendor || !device) {
        return std::nullopt;
    }
    return PciIdentity{*vendor, *device};
}

EnumerationStatus listPciBusDevices(std::uint32_t bus, NameList& names) {
    names.clear();
    std::vector<PciIdentity> present;
    for (std::uint32_t device = 0; device < devicesOnBus; ++device) {
        for (std::uint32_t function = 0; function < functionsOfDevice; ++function) {
            if (const auto identity = probePciFunction(pciAddress(bus, device, function))) {
                present.push_back(*identity);
            }
        }
    }
    NameList found;
    for (const PciIdentity& function : present) {
        auto name = describe(function);
        if (!name) {
            return enumerationFailed;
        }
        append(found, std::move(name));
    }
    return handOver(std::move(found), names);
}

EnumerationStatus getPciDeviceName(std::uint32_t bus, std::uint32_t device, std::uint32_t function,
                                   std::string& name) {
    name.clear();
    const auto identity = probePciFunction(pciAddress(bus, device, function));
    if (!identity) {
        return enumerationEmpty;
    }
    const auto found = describe(*identity);
    name = found.value_or("");
    return found ? enumerationFound : enumerationFailed;
}

EnumerationStatus listChildFriendlyNames(std::uint32_t bus, std::uint32_t device,
                                         std::uint32_t function, NameList& names) {
    return listBelow(
        pciAddress(bus, device, function), names,
        [](DeviceSet& set, DeviceNode node, bool below, NameList& children, NameList& controllers) {
            const auto childId = below ? firstChildId(node) : std::nullopt;
            if (childId && !appendFriendlyName(*childId, children)) {
                return false;
            }
            const auto classGuid = propertyOf(set, DeviceProperty::classGuid);
            if (classGuid && upperCase(*classGuid) == ataControllerClass) {
                append(controllers, propertyOf(set, DeviceProperty::friendlyName));
            }
            return true;
        });
}

EnumerationStatus listChildDescriptions(std::uint32_t bus, std::uint32_t device,
                                        std::uint32_t function, NameList& names) {
    return listBelow(
        pciAddress(bus, device, function), names,
        [](DeviceSet& set, DeviceNode node, bool below, NameList& children, NameList& direct) {
            if (!below) {
                return true;
            }
            const auto childId = firstChildId(node);
            if (childId && !appendAll(platform().devices.openPresentDevices(*childId),
                                      DeviceProperty::description, children)) {
                return false;
            }
            append(direct, propertyOf(set, DeviceProperty::description));
            return true;
        });
}

EnumerationStatus listUsbDeviceDescriptions(NameList& names) {
    names.clear();
    NameList found;
    if (!appendAll(platform().devices.openUsbDevices(), DeviceProperty::description, found)) {
        return enumerationFailed;
    }
    return handOver(std::move(found), names);
}

}  // namespace vorn
