// The ring-0 access library: model-specific registers and PCI configuration space.
#pragma once

#include <cstdint>

namespace vorn {

/// The ten operations of the library, with its own arguments and results. A PCI address is the
/// packed form of pciAddress(); a register is a byte offset into the configuration space.
/// Any access is only meaningful between initialize() and deinitialize().
class Ring0Library {
public:
    virtual ~Ring0Library() = default;

    /// Ordinal 7. Starts the library and its driver; nonzero on success.
    virtual std::uint32_t initialize() = 0;

    /// Ordinal 1. 0 means ready; any other value means that the driver is not usable.
    virtual std::uint32_t status() = 0;

    /// Ordinal 8. Stops the library. Legal at any time, also when it was never started.
    virtual void deinitialize() = 0;

    /// Ordinal 21, RDMSR. Nonzero on success; a refused read leaves both halves as they were.
    virtual std::uint32_t readMsr(std::uint32_t index, std::uint32_t& low, std::uint32_t& high) = 0;

    /// Ordinal 22, WRMSR. Nonzero on success.
    virtual std::uint32_t writeMsr(std::uint32_t index, std::uint32_t low, std::uint32_t high) = 0;

    /// Ordinals 81, 82 and 83. All ones where no function answers.
    virtual std::uint8_t readPciConfigByte(std::uint32_t address, std::uint32_t offset) = 0;
    virtual std::uint16_t readPciConfigWord(std::uint32_t address, std::uint32_t offset) = 0;
    virtual std::uint32_t readPciConfigDword(std::uint32_t address, std::uint32_t offset) = 0;

    /// Ordinals 92 and 93. Nonzero on success; a refused read leaves `value` as it was. A function
    /// that does not exist reads as all ones, with success.
    virtual std::uint32_t readPciConfigWordChecked(std::uint32_t address, std::uint32_t offset,
                                                   std::uint16_t& value) = 0;
    virtual std::uint32_t readPciConfigDwordChecked(std::uint32_t address, std::uint32_t offset,
                                                    std::uint32_t& value) = 0;
};

}  // namespace vorn
