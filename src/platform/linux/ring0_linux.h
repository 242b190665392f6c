// Ring-0 access on Linux: the MSR devices and the PCI configuration files of sysfs.
#pragma once

#include <string>

#include "platform/advice.h"
#include "platform/ring0_library.h"

namespace vorn {

/// Reads /dev/cpu/N/msr of the processor that the thread is on and /sys/bus/pci/devices/*/config.
/// The files are opened for each access: the thread may move, and nothing is kept open.
class LinuxRing0Library : public Ring0Library {
public:
    /// Values of status().
    enum Status : std::uint32_t {
        ready = 0,
        notInitialized = 1,
        noMsrDevice = 2,
        msrNotPermitted = 3,
        pciNotReadable = 4,
    };

    /// `advice` is told what the system withholds; it must outlive this object. The two roots are
    /// the folders that hold the device files and the system's description of its devices.
    explicit LinuxRing0Library(Advice& advice, std::string deviceRoot = "/dev",
                               std::string sysfsRoot = "/sys");

    std::uint32_t initialize() override;
    std::uint32_t status() override;
    void deinitialize() override;
    std::uint32_t readMsr(std::uint32_t index, std::uint32_t& low, std::uint32_t& high) override;
    std::uint32_t writeMsr(std::uint32_t index, std::uint32_t low, std::uint32_t high) override;
    std::uint8_t readPciConfigByte(std::uint32_t address, std::uint32_t offset) override;
    std::uint16_t readPciConfigWord(std::uint32_t address, std::uint32_t offset) override;
    std::uint32_t readPciConfigDword(std::uint32_t address, std::uint32_t offset) override;
    std::uint32_t readPciConfigWordChecked(std::uint32_t address, std::uint32_t offset,
                                           std::uint16_t& value) override;
    std::uint32_t readPciConfigDwordChecked(std::uint32_t address, std::uint32_t offset,
                                            std::uint32_t& value) override;

private:
    Status probe();
    std::string msrPath() const;
    bool readPci(std::uint32_t address, std::uint32_t offset, void* value, std::size_t size);

    Advice& advice_;
    std::string deviceRoot_;
    std::string sysfsRoot_;
    Status status_ = notInitialized;
};

}  // namespace vorn
