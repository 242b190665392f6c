// A simulated operating system that presents devices.
#pragma once

#include <functional>
#include <map>
#include <string>
#include <vector>

#include "platform/device_setup.h"

namespace vorn {

/// One device as the system presents it.
struct FakeDevice {
    std::string instanceId;
    std::map<DeviceProperty, std::string> properties;
    int parent = -1;  ///< index of the device that it hangs on; -1 for none
    bool usb = false;
};

/// Device sets over a list of devices. A property asked for while no device of the set is selected
/// and a set that outlives the fake fail the test.
class FakeDeviceSetup : public DeviceSetup {
public:
    ~FakeDeviceSetup() override;

    std::vector<FakeDevice> devices;
    std::vector<std::string> opened;       ///< enumerators of the sets opened, "(usb)" for USB
    int failOpening = -1;                  ///< which opening of a set fails, counted from 0
    int selections = 0;                    ///< over all sets
    int failSelecting = -1;                ///< which of them fails
    std::vector<std::size_t> bufferSizes;  ///< of each request for a property
    std::uint32_t reportedLess = 0;        ///< bytes by which the first reported sizes fall short

    /// Adds a device and returns its index; the hardware identifier is the instance's without its
    /// last part.
    int add(const std::string& instanceId, const std::string& description, int parent = -1);

    std::unique_ptr<DeviceSet> openPresentDevices(const std::string& enumerator) override;
    std::unique_ptr<DeviceSet> openUsbDevices() override;
    bool parentOf(DeviceNode node, DeviceNode& parent) override;
    bool firstChildOf(DeviceNode node, DeviceNode& child) override;
    bool instanceId(DeviceNode node, std::span<char> buffer) override;

private:
    friend class FakeDeviceSet;

    std::unique_ptr<DeviceSet> open(const std::string& name,
                                    const std::function<bool(const FakeDevice&)>& belongs);

    int openSets_ = 0;
};

}  // namespace vorn
