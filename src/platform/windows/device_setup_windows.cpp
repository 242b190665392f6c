#include "platform/windows/device_setup_windows.h"

// clang-format off
#include <windows.h>
#include <cfgmgr32.h>
#include <setupapi.h>
// clang-format on

namespace vorn {

namespace {

constexpr DWORD presentOfAllClasses = DIGCF_PRESENT | DIGCF_ALLCLASSES;
constexpr DWORD presentInterfaces = DIGCF_PRESENT | DIGCF_DEVICEINTERFACE;

// GUID_DEVINTERFACE_USB_DEVICE
constexpr GUID usbDeviceInterface{
    0xA5DCBF10, 0x6530, 0x11D2, {0x90, 0x1F, 0x00, 0xC0, 0x4F, 0xB9, 0x51, 0xED}};

class WindowsDeviceSet : public DeviceSet {
public:
    /// Takes the open set over.
    explicit WindowsDeviceSet(HDEVINFO set) : set_(set) {}
    ~WindowsDeviceSet() override { SetupDiDestroyDeviceInfoList(set_); }
    WindowsDeviceSet(const WindowsDeviceSet&) = delete;
    WindowsDeviceSet& operator=(const WindowsDeviceSet&) = delete;

    SetupAnswer select(std::uint32_t index, DeviceNode& node) override {
        selected_ = {};
        selected_.cbSize = sizeof selected_;
        if (SetupDiEnumDeviceInfo(set_, index, &selected_) == 0) {
            const DWORD error = GetLastError();
            const bool ended = error == ERROR_SUCCESS || error == ERROR_NO_MORE_ITEMS;
            return ended ? SetupAnswer::noMore : SetupAnswer::other;
        }
        node = selected_.DevInst;
        return SetupAnswer::done;
    }

    SetupAnswer property(DeviceProperty property, std::span<char> buffer,
                         std::uint32_t& size) override {
        DWORD needed = 0;
        BYTE* const data = buffer.empty() ? nullptr : reinterpret_cast<BYTE*>(buffer.data());
        if (SetupDiGetDeviceRegistryPropertyA(set_, &selected_, static_cast<DWORD>(property),
                                              nullptr, data, static_cast<DWORD>(buffer.size()),
                                              &needed) != 0) {
            return SetupAnswer::done;
        }
        if (GetLastError() != ERROR_INSUFFICIENT_BUFFER) {
            return SetupAnswer::other;
        }
        size = needed;
        return SetupAnswer::tooSmall;
    }

private:
    HDEVINFO set_;
    SP_DEVINFO_DATA selected_{};
};

std::unique_ptr<DeviceSet> wrapped(HDEVINFO set) {
    if (set == INVALID_HANDLE_VALUE) {
        return nullptr;
    }
    return std::make_unique<WindowsDeviceSet>(set);
}

}  // namespace

std::unique_ptr<DeviceSet> WindowsDeviceSetup::openPresentDevices(const std::string& enumerator) {
    return wrapped(SetupDiGetClassDevsA(nullptr, enumerator.empty() ? nullptr : enumerator.c_str(),
                                        nullptr, presentOfAllClasses));
}

std::unique_ptr<DeviceSet> WindowsDeviceSetup::openUsbDevices() {
    return wrapped(SetupDiGetClassDevsA(&usbDeviceInterface, nullptr, nullptr, presentInterfaces));
}

bool WindowsDeviceSetup::parentOf(DeviceNode node, DeviceNode& parent) {
    DEVINST found = 0;
    if (CM_Get_Parent(&found, node, 0) != CR_SUCCESS) {
        return false;
    }
    parent = found;
    return true;
}

bool WindowsDeviceSetup::firstChildOf(DeviceNode node, DeviceNode& child) {
    DEVINST found = 0;
    if (CM_Get_Child(&found, node, 0) != CR_SUCCESS) {
        return false;
    }
    child = found;
    return true;
}

bool WindowsDeviceSetup::instanceId(DeviceNode node, std::span<char> buffer) {
    return CM_Get_Device_IDA(node, buffer.data(), static_cast<ULONG>(buffer.size()), 0) ==
           CR_SUCCESS;
}

}  // namespace vorn
