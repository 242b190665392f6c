// The devices that the operating system presents: sets of them, their properties, their tree.
#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string>

namespace vorn {

/// How the system answers a request for a device or for a text.
enum class SetupAnswer {
    done,      ///< answered
    tooSmall,  ///< the buffer does not hold the text
    noMore,    ///< past the last device of a set
    other,     ///< anything else: no such value, or a failure
};

/// Properties of a device, with the numbers that Windows gives them (SPDRP_*).
enum class DeviceProperty : std::uint32_t {
    description = 0,    ///< SPDRP_DEVICEDESC
    hardwareId = 1,     ///< SPDRP_HARDWAREID; a list, of which the first text counts
    classGuid = 8,      ///< SPDRP_CLASSGUID, "{...}"
    friendlyName = 12,  ///< SPDRP_FRIENDLYNAME
};

/// A device in the tree of devices; meaningful while a set that named it is open.
using DeviceNode = std::uint32_t;

/// An open set of devices, as they were when it was opened. Releases it when destroyed.
class DeviceSet {
public:
    virtual ~DeviceSet() = default;

    /// Selects the device at `index`, from 0, and stores its node. `noMore` past the last one;
    /// `node` is only stored when done.
    virtual SetupAnswer select(std::uint32_t index, DeviceNode& node) = 0;

    /// Copies a property of the selected device, with its terminating NUL, into `buffer`, which may
    /// be empty. `tooSmall` when it does not fit, with the bytes that it takes in `size`; `other`
    /// when the device has no such property. Precondition: the last select() was done.
    virtual SetupAnswer property(DeviceProperty property, std::span<char> buffer,
                                 std::uint32_t& size) = 0;
};

class DeviceSetup {
public:
    virtual ~DeviceSetup() = default;

    /// Opens the set of all devices that are present; with an `enumerator` (a bus, or the instance
    /// identifier of one device) only those below it. Null when the system refuses.
    virtual std::unique_ptr<DeviceSet> openPresentDevices(const std::string& enumerator) = 0;

    /// Opens the set of the present devices that offer the USB device interface, which hubs do
    /// not. Null when the system refuses.
    virtual std::unique_ptr<DeviceSet> openUsbDevices() = 0;

    /// Stores the device that `node` hangs on, or the first one that hangs on it. False, with
    /// nothing stored, when there is none.
    virtual bool parentOf(DeviceNode node, DeviceNode& parent) = 0;
    virtual bool firstChildOf(DeviceNode node, DeviceNode& child) = 0;

    /// Copies the instance identifier of a device, with its terminating NUL, into `buffer`. False
    /// when the system has none or when it does not fit.
    virtual bool instanceId(DeviceNode node, std::span<char> buffer) = 0;
};

}  // namespace vorn
