#include "platform/linux/device_setup_linux.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <utility>

#include "platform/linux/device_names.h"

namespace vorn {

namespace fs = std::filesystem;

namespace {

// Class GUIDs of Windows; GUID_DEVCLASS_HDC holds the ATA and SATA controllers.
constexpr const char* classAtaController = "{4d36e96a-e325-11ce-bfc1-08002be10318}";
constexpr const char* classDiskDrive = "{4d36e967-e325-11ce-bfc1-08002be10318}";

constexpr unsigned pciClassIde = 0x0101;
constexpr unsigned pciClassSata = 0x0106;
constexpr const char* usbClassHub = "09";  // bDeviceClass

/// The first line of a file without the blanks around it; empty when there is none.
std::string readLine(const std::string& path) {
    std::ifstream file(path);
    std::string line;
    std::getline(file, line);
    const std::size_t first = line.find_first_not_of(" \t");
    if (first == std::string::npos) {
        return {};
    }
    return line.substr(first, line.find_last_not_of(" \t") - first + 1);
}

unsigned readHex(const std::string& path) {
    return static_cast<unsigned>(std::strtoul(readLine(path).c_str(), nullptr, 16));
}

template <typename... Numbers>
std::string formatted(const char* format, Numbers... numbers) {
    std::array<char, 80> text{};
    std::snprintf(text.data(), text.size(), format, numbers...);
    return text.data();
}

std::string lastPart(const std::string& path) {
    return fs::path(path).filename().string();
}

bool exists(const std::string& path) {
    std::error_code ignored;
    return fs::exists(path, ignored);
}

/// The places, free of links, that the entries of a folder lead to.
std::vector<std::string> targetsIn(const std::string& folder) {
    std::vector<std::string> targets;
    std::error_code error;
    for (const fs::directory_entry& entry : fs::directory_iterator(folder, error)) {
        const fs::path target = fs::canonical(entry.path(), error);
        if (!error) {
            targets.push_back(target.string());
        }
    }
    std::sort(targets.begin(), targets.end());
    return targets;
}

bool copyText(const std::string& text, std::span<char> buffer) {
    if (buffer.size() <= text.size()) {
        return false;
    }
    std::copy(text.begin(), text.end(), buffer.begin());
    buffer[text.size()] = '\0';
    return true;
}

}  // namespace

/// Some of the devices, by their nodes.
class LinuxDeviceSet : public DeviceSet {
public:
    LinuxDeviceSet(const LinuxDeviceSetup& setup, std::vector<DeviceNode> nodes)
        : setup_(setup), nodes_(std::move(nodes)) {}

    SetupAnswer select(std::uint32_t index, DeviceNode& node) override {
        if (index >= nodes_.size()) {
            return SetupAnswer::noMore;
        }
        selected_ = nodes_[index];
        node = selected_;
        return SetupAnswer::done;
    }

    SetupAnswer property(DeviceProperty property, std::span<char> buffer,
                         std::uint32_t& size) override {
        const auto text = setup_.propertyOf(setup_.devices_[selected_], property);
        if (!text) {
            return SetupAnswer::other;
        }
        if (copyText(*text, buffer)) {
            return SetupAnswer::done;
        }
        size = static_cast<std::uint32_t>(text->size() + 1);
        return SetupAnswer::tooSmall;
    }

private:
    const LinuxDeviceSetup& setup_;
    std::vector<DeviceNode> nodes_;
    DeviceNode selected_ = 0;
};

LinuxDeviceSetup::LinuxDeviceSetup(std::string sysfsRoot, std::vector<std::string> nameFolders)
    : root_(std::move(sysfsRoot)), nameFolders_(std::move(nameFolders)) {}

std::unique_ptr<DeviceSet> LinuxDeviceSetup::openPresentDevices(const std::string& enumerator) {
    if (!scan()) {
        return nullptr;
    }
    std::vector<DeviceNode> nodes;
    for (const auto& [path, node] : present_) {
        const std::string identifier = identifierOf(devices_[node]);
        const bool below = identifier.compare(0, enumerator.size() + 1, enumerator + "\\") == 0;
        if (enumerator.empty() || identifier == enumerator || below) {
            nodes.push_back(node);
        }
    }
    return std::make_unique<LinuxDeviceSet>(*this, std::move(nodes));
}

std::unique_ptr<DeviceSet> LinuxDeviceSetup::openUsbDevices() {
    if (!scan()) {
        return nullptr;
    }
    std::vector<DeviceNode> nodes;
    for (const auto& [path, node] : present_) {
        if (devices_[node].kind == Kind::usbDevice &&
            readLine(path + "/bDeviceClass") != usbClassHub) {
            nodes.push_back(node);
        }
    }
    return std::make_unique<LinuxDeviceSet>(*this, std::move(nodes));
}

bool LinuxDeviceSetup::parentOf(DeviceNode node, DeviceNode& parent) {
    if (!devices_[node].parent) {
        return false;
    }
    parent = *devices_[node].parent;
    return true;
}

bool LinuxDeviceSetup::firstChildOf(DeviceNode node, DeviceNode& child) {
    for (const auto& [path, candidate] : present_) {
        if (devices_[candidate].parent == node) {
            child = candidate;
            return true;
        }
    }
    return false;
}

bool LinuxDeviceSetup::instanceId(DeviceNode node, std::span<char> buffer) {
    return copyText(identifierOf(devices_[node]), buffer);
}

bool LinuxDeviceSetup::scan() {
    present_.clear();
    if (!exists(root_ + "/bus")) {
        return false;
    }
    addBusDevices(root_ + "/bus/pci/devices", Kind::pciFunction, "/vendor");
    // The interfaces of USB devices stand among them, without numbers of their own.
    addBusDevices(root_ + "/bus/usb/devices", Kind::usbDevice, "/idVendor");
    for (const auto& [path, node] : present_) {
        devices_[node].parent = busDeviceAbove(path);
    }
    addDisks();
    return true;
}

void LinuxDeviceSetup::addBusDevices(const std::string& folder, Kind kind, const char* required) {
    for (const std::string& path : targetsIn(folder)) {
        if (exists(path + required)) {
            add(kind, path, std::nullopt);
        }
    }
}

void LinuxDeviceSetup::addDisks() {
    for (const std::string& path : targetsIn(root_ + "/block")) {
        const bool isVirtual = !exists(path + "/device");
        const auto carrier = busDeviceAbove(path);
        if (isVirtual || !carrier) {
            continue;
        }
        // The port is the place next below the carrier on the way to the disk.
        const std::size_t portEnd = path.find('/', devices_[*carrier].path.size() + 1);
        const DeviceNode port = add(Kind::port, path.substr(0, portEnd), carrier);
        add(Kind::disk, path, port);
    }
}

DeviceNode LinuxDeviceSetup::add(Kind kind, const std::string& path,
                                 std::optional<DeviceNode> parent) {
    auto known = std::find_if(devices_.begin(), devices_.end(),
                              [&path](const Device& device) { return device.path == path; });
    if (known == devices_.end()) {
        known = devices_.insert(devices_.end(), Device{kind, path, parent});
    }
    known->parent = parent;
    const auto node = static_cast<DeviceNode>(known - devices_.begin());
    present_[path] = node;
    return node;
}

std::optional<DeviceNode> LinuxDeviceSetup::busDeviceAbove(const std::string& path) const {
    for (fs::path above = fs::path(path).parent_path(); above.has_relative_path();
         above = above.parent_path()) {
        const auto found = present_.find(above.string());
        if (found != present_.end() && devices_[found->second].kind != Kind::port) {
            return found->second;
        }
    }
    return std::nullopt;
}

std::optional<std::string> LinuxDeviceSetup::propertyOf(const Device& device,
                                                        DeviceProperty property) const {
    const unsigned pciClass =
        device.kind == Kind::pciFunction ? readHex(device.path + "/class") >> 8U : 0;
    const bool ataController = pciClass == pciClassIde || pciClass == pciClassSata;
    switch (property) {
        case DeviceProperty::description:
            return nameOf(device);
        case DeviceProperty::hardwareId:
            if (device.kind == Kind::pciFunction || device.kind == Kind::usbDevice) {
                const std::string identifier = identifierOf(device);
                return identifier.substr(0, identifier.rfind('\\'));
            }
            break;
        case DeviceProperty::classGuid:
            if (ataController) {
                return classAtaController;
            }
            if (device.kind == Kind::disk) {
                return classDiskDrive;
            }
            break;
        case DeviceProperty::friendlyName:
            if (ataController || device.kind == Kind::disk) {
                return nameOf(device);
            }
            break;
    }
    return std::nullopt;
}

std::string LinuxDeviceSetup::identifierOf(const Device& device) const {
    const std::string& path = device.path;
    switch (device.kind) {
        case Kind::pciFunction:
            return formatted("PCI\\VEN_%04X&DEV_%04X&SUBSYS_%04X%04X&REV_%02X\\",
                             readHex(path + "/vendor"), readHex(path + "/device"),
                             readHex(path + "/subsystem_device"),
                             readHex(path + "/subsystem_vendor"), readHex(path + "/revision")) +
                   lastPart(path);
        case Kind::usbDevice:
            return formatted("USB\\VID_%04X&PID_%04X\\", readHex(path + "/idVendor"),
                             readHex(path + "/idProduct")) +
                   lastPart(path);
        case Kind::port:
            return "STORAGE\\PORT\\" + lastPart(fs::path(path).parent_path()) + "&" +
                   lastPart(path);
        case Kind::disk:
            break;
    }
    return "STORAGE\\DISK\\" + lastPart(path);
}

std::string LinuxDeviceSetup::nameOf(const Device& device) const {
    const std::string& path = device.path;
    if (device.kind == Kind::port) {
        return "Port " + lastPart(path);
    }
    if (device.kind == Kind::disk) {
        const std::string model = readLine(path + "/device/model");
        return model.empty() ? lastPart(path) : model;
    }
    const bool pci = device.kind == Kind::pciFunction;
    const auto vendor = static_cast<std::uint16_t>(readHex(path + (pci ? "/vendor" : "/idVendor")));
    const auto number =
        static_cast<std::uint16_t>(readHex(path + (pci ? "/device" : "/idProduct")));
    for (const std::string& folder : nameFolders_) {
        if (auto name =
                lookUpDeviceName(folder + (pci ? "/pci.ids" : "/usb.ids"), vendor, number)) {
            return *name;
        }
    }
    const std::string product = pci ? std::string() : readLine(path + "/product");
    return product.empty()
               ? formatted(pci ? "PCI device %04X:%04X" : "USB device %04X:%04X", vendor, number)
               : product;
}

}  // namespace vorn
