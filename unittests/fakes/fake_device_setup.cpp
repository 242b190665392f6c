#include "fakes/fake_device_setup.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace vorn {

namespace {

// Nodes are not indices, so that a mix-up of the two shows.
constexpr DeviceNode firstNode = 1000;

DeviceNode nodeOf(std::size_t index) {
    return firstNode + static_cast<DeviceNode>(index);
}

bool copyText(const std::string& text, std::span<char> buffer) {
    if (buffer.size() <= text.size()) {
        return false;
    }
    std::copy(text.c_str(), text.c_str() + text.size() + 1, buffer.begin());
    return true;
}

}  // namespace

class FakeDeviceSet : public DeviceSet {
public:
    FakeDeviceSet(FakeDeviceSetup& setup, std::vector<std::size_t> indices)
        : setup_(setup), indices_(std::move(indices)) {
        ++setup_.openSets_;
    }
    ~FakeDeviceSet() override { --setup_.openSets_; }
    FakeDeviceSet(const FakeDeviceSet&) = delete;
    FakeDeviceSet& operator=(const FakeDeviceSet&) = delete;

    SetupAnswer select(std::uint32_t index, DeviceNode& node) override {
        selected_ = nullptr;
        if (setup_.selections++ == setup_.failSelecting) {
            return SetupAnswer::other;
        }
        if (index >= indices_.size()) {
            return SetupAnswer::noMore;
        }
        selected_ = &setup_.devices[indices_[index]];
        node = nodeOf(indices_[index]);
        return SetupAnswer::done;
    }

    SetupAnswer property(DeviceProperty property, std::span<char> buffer,
                         std::uint32_t& size) override {
        setup_.bufferSizes.push_back(buffer.size());
        if (selected_ == nullptr) {
            ADD_FAILURE() << "a property of no device";
            return SetupAnswer::other;
        }
        const auto found = selected_->properties.find(property);
        if (found == selected_->properties.end()) {
            return SetupAnswer::other;
        }
        if (copyText(found->second, buffer)) {
            return SetupAnswer::done;
        }
        size = static_cast<std::uint32_t>(found->second.size() + 1) -
               (buffer.empty() ? setup_.reportedLess : 0);
        return SetupAnswer::tooSmall;
    }

private:
    FakeDeviceSetup& setup_;
    std::vector<std::size_t> indices_;
    const FakeDevice* selected_ = nullptr;
};

FakeDeviceSetup::~FakeDeviceSetup() {
    EXPECT_EQ(openSets_, 0) << "device sets that were not released";
}

int FakeDeviceSetup::add(const std::string& instanceId, const std::string& description,
                         int parent) {
    devices.push_back({instanceId,
                       {{DeviceProperty::hardwareId, instanceId.substr(0, instanceId.rfind('\\'))},
                        {DeviceProperty::description, description}},
                       parent});
    return static_cast<int>(devices.size()) - 1;
}

std::unique_ptr<DeviceSet> FakeDeviceSetup::open(
    const std::string& name, const std::function<bool(const FakeDevice&)>& belongs) {
    opened.push_back(name);
    if (static_cast<int>(opened.size()) - 1 == failOpening) {
        return nullptr;
    }
    std::vector<std::size_t> indices;
    for (std::size_t index = 0; index < devices.size(); ++index) {
        if (belongs(devices[index])) {
            indices.push_back(index);
        }
    }
    return std::make_unique<FakeDeviceSet>(*this, std::move(indices));
}

std::unique_ptr<DeviceSet> FakeDeviceSetup::openPresentDevices(const std::string& enumerator) {
    return open(enumerator, [&enumerator](const FakeDevice& device) {
        return enumerator.empty() || device.instanceId == enumerator;
    });
}

std::unique_ptr<DeviceSet> FakeDeviceSetup::openUsbDevices() {
    return open("(usb)", [](const FakeDevice& device) { return device.usb; });
}

bool FakeDeviceSetup::parentOf(DeviceNode node, DeviceNode& parent) {
    const int index = devices.at(node - firstNode).parent;
    parent = index < 0 ? parent : nodeOf(static_cast<std::size_t>(index));
    return index >= 0;
}

bool FakeDeviceSetup::firstChildOf(DeviceNode node, DeviceNode& child) {
    for (std::size_t index = 0; index < devices.size(); ++index) {
        if (devices[index].parent == static_cast<int>(node - firstNode)) {
            child = nodeOf(index);
            return true;
        }
    }
    return false;
}

bool FakeDeviceSetup::instanceId(DeviceNode node, std::span<char> buffer) {
    return copyText(devices.at(node - firstNode).instanceId, buffer);
}

}  // namespace vorn
