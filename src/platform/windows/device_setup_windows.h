// Devices on Windows: the device setup interface and the configuration manager.
#pragma once

#include "platform/device_setup.h"

namespace vorn {

class WindowsDeviceSetup : public DeviceSetup {
public:
    std::unique_ptr<DeviceSet> openPresentDevices(const std::string& enumerator) override;
    std::unique_ptr<DeviceSet> openUsbDevices() override;
    bool parentOf(DeviceNode node, DeviceNode& parent) override;
    bool firstChildOf(DeviceNode node, DeviceNode& child) override;
    bool instanceId(DeviceNode node, std::span<char> buffer) override;
};

}  // namespace vorn
