// Devices on Linux: the functions of PCI, the devices of USB and the disks that sysfs describes.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "platform/device_setup.h"

namespace vorn {

/// Presents four kinds of device, in the order of their places in the tree: PCI functions, USB
/// devices, disks, and the port (of a controller, a host adapter or a USB device) that a disk hangs
/// on. Identifiers have the form that Windows gives them. Names come from pci.ids and usb.ids where
/// they are installed, from the device itself, or else are made of its numbers.
class LinuxDeviceSetup : public DeviceSetup {
public:
    /// `sysfsRoot` is where the system describes its devices; `nameFolders` may hold pci.ids and
    /// usb.ids, the first that does counts.
    explicit LinuxDeviceSetup(std::string sysfsRoot = "/sys",
                              std::vector<std::string> nameFolders = {"/usr/share/misc",
                                                                      "/usr/share/hwdata"});

    /// Null when there is no sysfs.
    std::unique_ptr<DeviceSet> openPresentDevices(const std::string& enumerator) override;
    std::unique_ptr<DeviceSet> openUsbDevices() override;

    /// The tree is that of the set opened last.
    bool parentOf(DeviceNode node, DeviceNode& parent) override;
    bool firstChildOf(DeviceNode node, DeviceNode& child) override;
    bool instanceId(DeviceNode node, std::span<char> buffer) override;

private:
    friend class LinuxDeviceSet;

    enum class Kind { pciFunction, usbDevice, port, disk };

    struct Device {
        Kind kind;
        std::string path;                  ///< below devices/, without links
        std::optional<DeviceNode> parent;  ///< a PCI function, a USB device or a port
    };

    /// Looks at the system afresh; the present devices in the order of their paths. False when
    /// there is no sysfs.
    bool scan();
    void addBusDevices(const std::string& folder, Kind kind, const char* required);
    void addDisks();
    DeviceNode add(Kind kind, const std::string& path, std::optional<DeviceNode> parent);
    std::optional<DeviceNode> busDeviceAbove(const std::string& path) const;

    std::optional<std::string> propertyOf(const Device& device, DeviceProperty property) const;
    std::string identifierOf(const Device& device) const;
    std::string nameOf(const Device& device) const;

    std::string root_;
    std::vector<std::string> nameFolders_;
    std::vector<Device> devices_;  ///< by node; a node is never given to another device
    std::map<std::string, DeviceNode> present_;
};

}  // namespace vorn
