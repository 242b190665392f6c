#include "platform/windows/ring0_windows.h"

#include "platform/windows/ring0_imports.h"

namespace vorn {

std::uint32_t WindowsRing0Library::initialize() {
    const std::uint32_t result = ring0Initialize();
    if (result == 0) {
        advice_.add(
            "WinRing0x64.dll could not start its driver: run as administrator, with the "
            "driver's file beside the DLL, on a system that does not block it.");
    }
    return result;
}

std::uint32_t WindowsRing0Library::status() {
    return ring0Status();
}

void WindowsRing0Library::deinitialize() {
    ring0Deinitialize();
}

std::uint32_t WindowsRing0Library::readMsr(std::uint32_t index, std::uint32_t& low,
                                           std::uint32_t& high) {
    return ring0ReadMsr(index, &low, &high);
}

std::uint32_t WindowsRing0Library::writeMsr(std::uint32_t index, std::uint32_t low,
                                            std::uint32_t high) {
    return ring0WriteMsr(index, low, high);
}

std::uint8_t WindowsRing0Library::readPciConfigByte(std::uint32_t address, std::uint32_t offset) {
    return ring0ReadPciConfigByte(address, offset);
}

std::uint16_t WindowsRing0Library::readPciConfigWord(std::uint32_t address, std::uint32_t offset) {
    return ring0ReadPciConfigWord(address, offset);
}

std::uint32_t WindowsRing0Library::readPciConfigDword(std::uint32_t address, std::uint32_t offset) {
    return ring0ReadPciConfigDword(address, offset);
}

std::uint32_t WindowsRing0Library::readPciConfigWordChecked(std::uint32_t address,
                                                            std::uint32_t offset,
                                                            std::uint16_t& value) {
    return ring0ReadPciConfigWordChecked(address, offset, &value);
}

std::uint32_t WindowsRing0Library::readPciConfigDwordChecked(std::uint32_t address,
                                                             std::uint32_t offset,
                                                             std::uint32_t& value) {
    return ring0ReadPciConfigDwordChecked(address, offset, &value);
}

}  // namespace vorn
